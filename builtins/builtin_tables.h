// The method tables of the ten built-in kinds (PyHost_ph_<Kind>), expanded from the one list
// in builtin_tables.def, with each kind's aggregate validity state. A table binds all of its
// stubs once, on first use; its slots are reached through typed forwarders named after the
// stubs. The entry checks run in a kind's __new__, conversions and casting functions; the
// sequence, stream and iterator slots call the tables directly.
#pragma once

#include <Python.h>
#include <cstdint>
#include <string>
#include <type_traits>

#include "marshal/records.h"
#include "objects/host_table.h"

namespace qrx_builtin_types {
using H = void*;
using I32 = int32_t;
using I64 = int64_t;
using VA = VariantArg*;
using OH = void**;
using OO = PyObject**;
using O = PyObject*;
using BUF = void*;
using CBUF = const void*;
using V = void;

// What a forwarder answers for a slot left unbound by an earlier failed binding: the table's
// binding message as a TypeError, and the failure value of the result type.
template <class R>
[[gnu::cold, gnu::noinline]] R unbound(const PyHostTable& table) {
    PyErr_SetString(PyExc_TypeError, table.error_msg());
    if constexpr (std::is_pointer_v<R>)
        return nullptr;
    else if constexpr (!std::is_void_v<R>)
        return static_cast<R>(-1);
}
}  // namespace qrx_builtin_types

#include "builtins/builtin_tables.def"

#define QRX_SLOT_ENUM(fwd, name, R, P) k_##fwd,
#define QRX_FORWARDER(fwd, name, R, P)                                                   \
    template <class... A>                                                                \
    R fwd(A... a) const {                                                                \
        using namespace qrx_builtin_types;                                               \
        void* slot = slots_[k_##fwd];                                                    \
        if (slot == nullptr)                                                             \
            return unbound<R>(*this);                                                    \
        return reinterpret_cast<R(*) P>(slot)(a...);                                     \
    }
#define QRX_DECLARE_TABLE(kind, managed_class, STUBS)                                    \
    class PyHost_ph_##kind final : public PyHostTable {                                  \
        using H = qrx_builtin_types::H;                                                  \
        using I32 = qrx_builtin_types::I32;                                              \
        using I64 = qrx_builtin_types::I64;                                              \
        using VA = qrx_builtin_types::VA;                                                \
        using OH = qrx_builtin_types::OH;                                                \
        using OO = qrx_builtin_types::OO;                                                \
        using O = qrx_builtin_types::O;                                                  \
        using BUF = qrx_builtin_types::BUF;                                              \
        using CBUF = qrx_builtin_types::CBUF;                                            \
        using V = qrx_builtin_types::V;                                                  \
                                                                                         \
    public:                                                                              \
        enum Slot : int { STUBS(QRX_SLOT_ENUM) kSlotCount };                             \
        static constexpr const char* kManagedClass = managed_class;                      \
        static const PyHost_ph_##kind& get_instance();                                   \
        STUBS(QRX_FORWARDER)                                                             \
        /* the slot of a stub (NULL while unbound), for tests of partial binding */      \
        void* slot(Slot s) const { return slots_[s]; }                                   \
                                                                                         \
    private:                                                                             \
        PyHost_ph_##kind();                                                              \
        void* slots_[kSlotCount] = {};                                                   \
    };

QRX_BUILTIN_KINDS(QRX_DECLARE_TABLE)

#undef QRX_DECLARE_TABLE
#undef QRX_FORWARDER
#undef QRX_SLOT_ENUM

// The kinds' validity: the query (true with `message` filled when unusable) and the entry
// check (true with the TypeError raised, the referenced-kind error chained where it applies).
bool wrpPye_bltp_idisposable_is_not_valid(std::string& message);
bool wrpPye_bltp_iter_is_not_valid(std::string& message);
bool wrpPye_bltp_iterable_is_not_valid(std::string& message);
bool wrpPye_bltp_icollection_is_not_valid(std::string& message);
bool wrpPye_bltp_ilist_is_not_valid(std::string& message);
bool wrpPye_bltp_array_is_not_valid(std::string& message);
bool wrpPye_bltp_arrlist_is_not_valid(std::string& message);
bool wrpPye_bltp_colbase_is_not_valid(std::string& message);
bool wrpPye_bltp_rocolbase_is_not_valid(std::string& message);
bool wrpPye_bltp_stream_is_not_valid(std::string& message);

bool wrpPye_uafn_idisposable_invalidate();
bool wrpPye_uafn_iter_invalidate();
bool wrpPye_uafn_iterable_invalidate();
bool wrpPye_uafn_icol_invalidate();
bool wrpPye_uafn_ilist_invalidate();
bool wrpPye_uafn_array_invalidate();
bool wrpPye_uafn_arrlist_invalidate();
bool wrpPye_uafn_colbase_invalidate();
bool wrpPye_uafn_rocolbase_invalidate();
bool wrpPye_uafn_stream_invalidate();
