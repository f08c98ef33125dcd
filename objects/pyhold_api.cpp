#include "objects/pyhold_api.h"

PyHoldCastOpResultNewFunc PyShCastOpResult_New = nullptr;
PyHoldSafeTargetHandleNewFunc PyShSafeTargetHandle_New = nullptr;
PyHoldSafeTargetHandleIsTypeFunc PyShSafeTargetHandle_IsType = nullptr;

static PyHoldSafeTargetHandleSetReleaserFunc g_set_releaser = nullptr;

void pyhold_capi_store(const PyHoldCApi* api) {
    PyShCastOpResult_New = api->cast_op_result_new;
    PyShSafeTargetHandle_New = api->safe_target_handle_new;
    PyShSafeTargetHandle_IsType = api->safe_target_handle_is_type;
    g_set_releaser = api->safe_target_handle_set_releaser;
}

void pyhold_install_releaser(PyHoldReleaser release) {
    if (g_set_releaser != nullptr)
        g_set_releaser(release);
}
