#include "builtins/callback_tables.h"

#include "builtins/py_callbacks.h"
#include "builtins/tpfuncs_callbacks.h"
#include "marshal/conv_bytes.h"
#include "marshal/conv_decimal.h"
#include "marshal/conv_guid.h"
#include "marshal/conv_scalar.h"
#include "marshal/conv_text.h"
#include "marshal/conv_time.h"
#include "marshal/conv_variant.h"
#include "marshal/conv_version.h"
#include "marshal/sequences.h"
#include "module/ids.h"
#include "module/pysh_lock.h"
#include "objects/clr_error.h"
#include "objects/exception_crossing.h"
#include "objects/twin_binding.h"

// Managed code receives every callback as an untyped function pointer, entered with the
// interpreter lock held: a long managed call may have released it (module/pysh_lock.h).
#define entry(function) PyShLocked_Entry<function>()

#define QRX_SLOT_ENTRY(name, function) entry(&function),
#define QRX_DEFINE_CALLBACK_TABLE(name, array, SLOTS) void* const array[k##name##Callbacks] = {SLOTS(QRX_SLOT_ENTRY)};
QRX_STATIC_CALLBACK_TABLES(QRX_DEFINE_CALLBACK_TABLE)
QRX_SINGLE_CALLBACK_TABLES(QRX_DEFINE_CALLBACK_TABLE)
#undef QRX_DEFINE_CALLBACK_TABLE
#undef QRX_SLOT_ENTRY

#define QRX_TABLE_ENTRY(name, array, SLOTS) const_cast<void**>(array),
void* const m_all_statconceptp_pytocsfx[kStatConceptTables] = {QRX_STATIC_CALLBACK_TABLES(QRX_TABLE_ENTRY)};
#undef QRX_TABLE_ENTRY

void* m_all_genconcptp_pytocsfx[kGenConceptTables] = {};

void* m_all_regltp_pytocsfx[kReglTpFunctions] = {};

#undef entry
