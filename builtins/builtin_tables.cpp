#include "builtins/builtin_tables.h"

// Each table binds its stubs in the order of the list; slots after a failed one stay NULL.
#define QRX_STUB_SLOT(fwd, name, R, P) {name, &slots_[k_##fwd]},
#define QRX_DEFINE_TABLE(kind, managed_class, STUBS)                      \
    PyHost_ph_##kind::PyHost_ph_##kind() : PyHostTable(managed_class) {   \
        const PyHostStubSlot stubs[] = {STUBS(QRX_STUB_SLOT)};            \
        bind_all(stubs, sizeof stubs / sizeof stubs[0]);                  \
    }                                                                     \
    const PyHost_ph_##kind& PyHost_ph_##kind::get_instance() {            \
        static const PyHost_ph_##kind table;                              \
        return table;                                                     \
    }

QRX_BUILTIN_KINDS(QRX_DEFINE_TABLE)

#undef QRX_DEFINE_TABLE
#undef QRX_STUB_SLOT

// ---- validity: the own table first, then the kinds the kind is presented through

#define QRX_KIND_STATE(code, query, check, Table, ...)                                          \
    namespace {                                                                                 \
    const PyHostState& code##_state() {                                                         \
        static const PyHostState state = PyHostState_Build(Table::get_instance(), {__VA_ARGS__}); \
        return state;                                                                           \
    }                                                                                           \
    }                                                                                           \
    bool query(std::string& message) { return PyHostState_Query(code##_state(), message); }     \
    bool check() { return PyHostState_Check(code##_state()); }

QRX_KIND_STATE(idisposable, wrpPye_bltp_idisposable_is_not_valid, wrpPye_uafn_idisposable_invalidate,
               PyHost_ph_Disposable)
QRX_KIND_STATE(iter, wrpPye_bltp_iter_is_not_valid, wrpPye_uafn_iter_invalidate, PyHost_ph_Iter)
QRX_KIND_STATE(iterable, wrpPye_bltp_iterable_is_not_valid, wrpPye_uafn_iterable_invalidate, PyHost_ph_Iterable)
QRX_KIND_STATE(stream, wrpPye_bltp_stream_is_not_valid, wrpPye_uafn_stream_invalidate, PyHost_ph_Stream)
QRX_KIND_STATE(icol, wrpPye_bltp_icollection_is_not_valid, wrpPye_uafn_icol_invalidate, PyHost_ph_ICol,
               wrpPye_bltp_iterable_is_not_valid)
QRX_KIND_STATE(ilist, wrpPye_bltp_ilist_is_not_valid, wrpPye_uafn_ilist_invalidate, PyHost_ph_IList,
               wrpPye_bltp_icollection_is_not_valid, wrpPye_bltp_iterable_is_not_valid)
QRX_KIND_STATE(array, wrpPye_bltp_array_is_not_valid, wrpPye_uafn_array_invalidate, PyHost_ph_Array,
               wrpPye_bltp_iterable_is_not_valid)
QRX_KIND_STATE(arrlist, wrpPye_bltp_arrlist_is_not_valid, wrpPye_uafn_arrlist_invalidate, PyHost_ph_ArrList,
               wrpPye_bltp_iterable_is_not_valid)
QRX_KIND_STATE(rocolbase, wrpPye_bltp_rocolbase_is_not_valid, wrpPye_uafn_rocolbase_invalidate,
               PyHost_ph_RoColBase, wrpPye_bltp_icollection_is_not_valid, wrpPye_bltp_iterable_is_not_valid)
QRX_KIND_STATE(colbase, wrpPye_bltp_colbase_is_not_valid, wrpPye_uafn_colbase_invalidate, PyHost_ph_ColBase,
               wrpPye_bltp_ilist_is_not_valid, wrpPye_bltp_icollection_is_not_valid,
               wrpPye_bltp_iterable_is_not_valid)

#undef QRX_KIND_STATE
