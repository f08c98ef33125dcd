// The handle functions quorix.folio takes from quorix.pyhold's capsule at start-up.
#pragma once

#include "siblings/pyhold/pyhold_capi.h"

extern PyHoldCastOpResultNewFunc PyShCastOpResult_New;
extern PyHoldSafeTargetHandleNewFunc PyShSafeTargetHandle_New;
extern PyHoldSafeTargetHandleIsTypeFunc PyShSafeTargetHandle_IsType;

// Keeps entries 0, 2 and 3 of the capsule table, and its releaser slot for later installation.
void pyhold_capi_store(const PyHoldCApi* api);
// Makes quorix.pyhold's safe handles free their GC handles through `release`.
void pyhold_install_releaser(PyHoldReleaser release);
