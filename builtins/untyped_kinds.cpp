#include "builtins/untyped_kinds.h"

#include "builtins/builtin_tables.h"
#include "builtins/seq_access.h"
#include "builtins/seq_edit.h"
#include "host/object_host.h"
#include "marshal/conv_variant.h"
#include "module/ids.h"
#include "module/pysh_ref.h"
#include "objects/bound_class.h"
#include "objects/casting.h"
#include "objects/collection_arg.h"
#include "objects/handle_lookup.h"
#include "objects/handle_release.h"
#include "objects/host_markattr.h"
#include "objects/wrapper_slots.h"

namespace {

// What a kind reaches managed code through: its own table, and the collection and list tables
// it is presented through. NULL where the kind has no such operation.
struct PyUkOps {
    const char* kind_name;  // in "can't build <kind_name> value from '%s'"
    bool (*invalidate)();
    int (*is_assignable)(void* handle);  // of the kind's own table, for conversions
    bool lends_sequences;                // accepts Python lists and sequences as parameters
    bool lends_iterables;                // accepts any Python iterable as a parameter

    int32_t (*length)(void*);
    PyObject* (*item)(void*, int32_t);
    int32_t (*set_item)(void*, int32_t, VariantArg*);
    int32_t (*set_item_nocheck)(void*, int32_t, VariantArg*);
    int32_t (*set_items)(void*, VariantArg*, int32_t, int32_t, int32_t);
    int32_t (*contains)(void*, VariantArg*);
    int32_t (*count_of)(void*, VariantArg*);
    int32_t (*index_by)(void*, int32_t, int32_t, int32_t, int32_t, VariantArg*);
    int32_t (*reverse)(void*);
    int32_t (*sort)(void*, int32_t);

    int32_t (*add)(void*, VariantArg*);
    int32_t (*insert)(void*, int32_t, VariantArg*);
    int32_t (*remove)(void*, VariantArg*);
    int32_t (*remove_at)(void*, int32_t);
    int32_t (*remove_items)(void*, int32_t, int32_t, int32_t);
    int32_t (*pop)(void*, int32_t, int32_t, PyObject**);
    int32_t (*clear)(void*);
    int32_t (*concat)(void*, VariantArg*);
    int32_t (*repeat)(void*, int32_t);
    int32_t (*ensure_capacity)(void*, int32_t);

    PyShCastOps cast;
};

struct PyUkTypeObject {
    PyTypeObject type;
    const PyUkOps* ops;
};

PyUkTypeObject g_types[kPyUkKindCount];

inline const PyUkOps& ops_of(PyObject* self) { return *reinterpret_cast<PyUkTypeObject*>(Py_TYPE(self))->ops; }
inline void* handle(PyObject* self) { return PyShBound_Handle(self); }

[[gnu::cold, gnu::noinline]] int no_result() {
    if (!PyErr_Occurred())
        PyErr_SetString(PyExc_SystemError, "a managed collection call failed without an error");
    return -1;
}

[[gnu::cold, gnu::noinline]] int out_of_range() {
    PyErr_SetString(PyExc_IndexError, "list index out of range");
    return -1;
}

// A stub's status: 0 for success, else -1 with the pending error (IndexError for status 2).
int checked(int32_t status) {
    if (status == 0 && !PyErr_Occurred())
        return 0;
    return status == 2 && !PyErr_Occurred() ? out_of_range() : no_result();
}

// A Python value as a variant record (borrowed into `out`): 1, or 0 with the conversion's error.
inline int to_variant(PyObject* value, VariantArg* out) { return fn_conv_py_variant_to_clr_variant(value, out); }

// ---- items and stores

Py_ssize_t length(PyObject* self) {
    if (PyShBound_Unbound(self))
        return -1;
    int32_t n = ops_of(self).length(handle(self));
    if (n < 0 && PyErr_Occurred())
        return -1;
    return n;
}

PyObject* item(PyObject* self, Py_ssize_t i) { return ops_of(self).item(handle(self), static_cast<int32_t>(i)); }

int store(PyObject* self, Py_ssize_t i, PyObject* value) {
    VariantArg v = {};
    if (!to_variant(value, &v))
        return -1;
    return checked(ops_of(self).set_item_nocheck(handle(self), static_cast<int32_t>(i), &v));
}

int store_managed(PyObject* self, PyObject* value, Py_ssize_t start, Py_ssize_t n, Py_ssize_t step) {
    if (PySeq_CheckIndex(start) < 0 || PySeq_CheckIndex(n) < 0 || PySeq_CheckIndex(step) < 0)
        return -1;
    VariantArg v = {};
    if (!fn_conv_py_obj_to_clr_gen_not_null_handle(value, &v))
        return 0;
    int32_t done = ops_of(self).set_items(handle(self), &v, static_cast<int32_t>(start), static_cast<int32_t>(n),
                                          static_cast<int32_t>(step));
    if (PyErr_Occurred())
        return -1;
    return done == 1 ? 1 : 0;
}

constexpr PySeqAccess kIndexed = {length, item, nullptr};
constexpr PySeqStore kStore = {store, store_managed};

// ---- edits of the list kinds

int edit_add(PyObject* self, PyObject* value) {
    VariantArg v = {};
    if (!to_variant(value, &v))
        return -1;
    int32_t status = ops_of(self).add(handle(self), &v);
    return status < 0 || PyErr_Occurred() ? no_result() : 0;
}

int edit_insert(PyObject* self, Py_ssize_t i, PyObject* value) {
    VariantArg v = {};
    if (!to_variant(value, &v))
        return -1;
    int32_t status = ops_of(self).insert(handle(self), static_cast<int32_t>(i), &v);
    return status < 0 || PyErr_Occurred() ? no_result() : 0;
}

int edit_remove(PyObject* self, PyObject* value) {
    VariantArg v = {};
    if (!to_variant(value, &v))
        return -1;
    int32_t found = ops_of(self).remove(handle(self), &v);
    return found < 0 || PyErr_Occurred() ? no_result() : found != 0;
}

int edit_remove_at(PyObject* self, Py_ssize_t i) {
    int32_t status = ops_of(self).remove_at(handle(self), static_cast<int32_t>(i));
    if (status == 2 && !PyErr_Occurred())
        return 2;
    return status != 0 || PyErr_Occurred() ? no_result() : 0;
}

int edit_remove_items(PyObject* self, Py_ssize_t start, Py_ssize_t n, Py_ssize_t step) {
    int32_t status = ops_of(self).remove_items(handle(self), static_cast<int32_t>(start), static_cast<int32_t>(n),
                                               static_cast<int32_t>(step));
    return status != 0 || PyErr_Occurred() ? no_result() : 0;
}

PyObject* edit_pop(PyObject* self, Py_ssize_t i, int has_index, int* status) {
    PyObject* item = nullptr;
    *status = ops_of(self).pop(handle(self), static_cast<int32_t>(i), has_index, &item);
    if (*status == 0 && !PyErr_Occurred())
        return item;
    Py_XDECREF(item);
    if (*status < 0 || *status > 2)
        no_result();
    return nullptr;
}

int edit_clear(PyObject* self) {
    int32_t status = ops_of(self).clear(handle(self));
    return status != 0 || PyErr_Occurred() ? no_result() : 0;
}

int edit_extend_managed(PyObject* self, PyObject* other) {
    VariantArg v = {};
    if (!fn_conv_py_obj_to_clr_gen_not_null_handle(other, &v))
        return 0;
    int32_t done = ops_of(self).concat(handle(self), &v);
    if (done < 0 || PyErr_Occurred())
        return no_result();
    return done == 1 ? 1 : 0;
}

int edit_repeat(PyObject* self, Py_ssize_t n) {
    int32_t status = ops_of(self).repeat(handle(self), static_cast<int32_t>(n));
    return status != 0 || PyErr_Occurred() ? no_result() : 0;
}

int edit_reserve(PyObject* self, Py_ssize_t more) {
    const PyUkOps& ops = ops_of(self);
    if (ops.ensure_capacity == nullptr || more <= 0 || more > INT32_MAX)
        return 0;
    int32_t status = ops.ensure_capacity(handle(self), static_cast<int32_t>(more));
    return status != 0 || PyErr_Occurred() ? no_result() : 0;
}

constexpr PySeqEdit kEdit = {edit_add,    edit_insert, edit_remove,         edit_remove_at, edit_remove_items,
                             edit_pop,    edit_clear,  edit_extend_managed, edit_repeat,    edit_reserve};

// ---- the collection kinds: no positional access, items come from the Python iterator

// The items as a new list of exactly len(self) items, or NULL with an error.
PyObject* collected(PyObject* self) {
    Py_ssize_t n = length(self);
    if (n < 0)
        return nullptr;
    PyShRef it(PyObject_GetIter(self));
    if (!it) {
        if (!PyErr_Occurred())
            PyErr_SetString(PyExc_ValueError, "the collection was modified during the operation");
        return nullptr;
    }
    PyShRef list(PyList_New(n));
    if (!list)
        return nullptr;
    Py_ssize_t k = 0;
    while (PyObject* x = PyIter_Next(it.get())) {
        if (k == n) {
            Py_DECREF(x);
            PyErr_SetString(PyExc_ValueError, "argument must be iterable or sequence");
            return nullptr;
        }
        PyList_SET_ITEM(list.get(), k++, x);
    }
    if (PyErr_Occurred())
        return nullptr;
    if (k != n) {
        PyErr_SetString(PyExc_ValueError, "the collection was modified during the operation");
        return nullptr;
    }
    return list.release();
}

PyObject* col_concat(PyObject* self, PyObject* other) {
    PyShRef list(collected(self));
    if (!list)
        return nullptr;
    // the other operand follows the rules of the indexed kinds, after our items
    static constexpr PySeqAccess kList = {[](PyObject* l) { return PyList_GET_SIZE(l); },
                                          [](PyObject* l, Py_ssize_t i) { return Py_NewRef(PyList_GET_ITEM(l, i)); },
                                          nullptr};
    return PySeq_Concat(list.get(), other, kList);
}

PyObject* col_repeat(PyObject* self, Py_ssize_t n) {
    PyShRef list(collected(self));
    if (!list)
        return nullptr;
    return PySequence_Repeat(list.get(), n < 0 ? 0 : n);
}

// ---- slots

PyObject* sq_item(PyObject* self, Py_ssize_t i) { return PySeq_Item(self, i, kIndexed); }
PyObject* mp_subscript(PyObject* self, PyObject* key) { return PySeq_Subscript(self, key, kIndexed); }
PyObject* sq_concat(PyObject* self, PyObject* other) { return PySeq_Concat(self, other, kIndexed); }
PyObject* sq_repeat(PyObject* self, Py_ssize_t n) { return PySeq_Repeat(self, n, kIndexed); }

int set_item(PyObject* self, Py_ssize_t i, PyObject* value) {
    if (PySeq_CheckIndex(i) < 0 || PyShBound_Unbound(self))
        return -1;
    VariantArg v = {};
    if (!to_variant(value, &v))
        return -1;
    return checked(ops_of(self).set_item(handle(self), static_cast<int32_t>(i), &v));
}

int array_ass_item(PyObject* self, Py_ssize_t i, PyObject* value) {
    if (value == nullptr) {
        PyErr_SetString(PyExc_ValueError, "elements removing not supported");
        return -1;
    }
    return set_item(self, i, value);
}

int list_ass_item(PyObject* self, Py_ssize_t i, PyObject* value) {
    if (value != nullptr)
        return set_item(self, i, value);
    if (PyShBound_Unbound(self))
        return -1;
    return PySeq_DelItem(self, i, kEdit);
}

int array_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    if (PyShBound_Unbound(self))
        return -1;
    return PySeq_AssSubscript(self, key, value, kIndexed, kStore);
}

int list_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    if (PyShBound_Unbound(self))
        return -1;
    return PySeq_AssSubscriptList(self, key, value, kIndexed, kStore, kEdit);
}

int sq_contains(PyObject* self, PyObject* value) {
    if (PyShBound_Unbound(self))
        return -1;
    VariantArg v = {};
    if (!to_variant(value, &v))
        return -1;
    int32_t found = ops_of(self).contains(handle(self), &v);
    if (found < 0 || PyErr_Occurred())
        return PyErr_Occurred() ? -1 : 0;
    return found != 0;
}

PyObject* inplace_concat(PyObject* self, PyObject* other) {
    return PyShBound_Unbound(self) ? nullptr : PySeq_InplaceConcat(self, other, kEdit);
}

PyObject* inplace_repeat(PyObject* self, Py_ssize_t n) {
    return PyShBound_Unbound(self) ? nullptr : PySeq_InplaceRepeat(self, n, kEdit);
}

PyObject* iterable_iter(PyObject* self) {
    if (PyShBound_Unbound(self))
        return nullptr;
    VariantArg out = {};
    int32_t status = PyHost_ph_Iterable::get_instance().get_enumerator(handle(self), &out);
    if (status < 0 || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(out.value);
        no_result();
        return nullptr;
    }
    return wrpPye_conv_clr_to_py(PyUkKind::Iter, out.value);
}

PyObject* iter_next(PyObject* self) {
    if (PyShBound_Unbound(self))
        return nullptr;
    PyObject* item = nullptr;
    int32_t status = PyHost_ph_Iter::get_instance().move_next(handle(self), &item);
    if (status == 0 && !PyErr_Occurred())
        return item;
    Py_XDECREF(item);
    if (status == 1 && !PyErr_Occurred())
        return nullptr;  // the end: StopIteration without a value
    no_result();
    return nullptr;
}

PyObject* get_length(PyObject* self, void*) {
    Py_ssize_t n = length(self);
    return n < 0 && PyErr_Occurred() ? nullptr : PyLong_FromSsize_t(n);
}

PyGetSetDef kLengthGetSet[] = {
    {"length", get_length, nullptr, "", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PySequenceMethods kColSequence = {length, col_concat, col_repeat, nullptr, nullptr,
                                  nullptr, nullptr,   sq_contains, nullptr, nullptr};
PySequenceMethods kListSequence = {length, sq_concat, sq_repeat, sq_item, nullptr, list_ass_item, nullptr,
                                   sq_contains, inplace_concat, inplace_repeat};
PySequenceMethods kArraySequence = {length, sq_concat, sq_repeat, sq_item, nullptr, array_ass_item, nullptr,
                                    sq_contains, nullptr, nullptr};
PyMappingMethods kListMapping = {length, mp_subscript, list_ass_subscript};
PyMappingMethods kArrayMapping = {length, mp_subscript, array_ass_subscript};

// ---- methods

PyObject* m_append(PyObject* self, PyObject* v) { return PyShBound_Unbound(self) ? nullptr : PySeq_Append(self, v, kEdit); }
PyObject* m_insert(PyObject* self, PyObject* a) { return PyShBound_Unbound(self) ? nullptr : PySeq_Insert(self, a, kEdit); }
PyObject* m_extend(PyObject* self, PyObject* o) { return PyShBound_Unbound(self) ? nullptr : PySeq_Extend(self, o, kEdit); }
PyObject* m_remove(PyObject* self, PyObject* v) { return PyShBound_Unbound(self) ? nullptr : PySeq_Remove(self, v, kEdit); }
PyObject* m_pop(PyObject* self, PyObject* a) { return PyShBound_Unbound(self) ? nullptr : PySeq_Pop(self, a, kEdit); }
PyObject* m_clear(PyObject* self, PyObject*) { return PyShBound_Unbound(self) ? nullptr : PySeq_Clear(self, kEdit); }

PyObject* m_index(PyObject* self, PyObject* args) {
    PyObject* value = nullptr;
    Py_ssize_t start = 0, stop = 0;
    if (!PyArg_ParseTuple(args, "O|O&O&:index", &value, PySeq_IndexArg, &start, PySeq_IndexArg, &stop))
        return nullptr;
    if (PyShBound_Unbound(self))
        return nullptr;
    VariantArg v = {};
    if (!to_variant(value, &v))
        return nullptr;
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    int32_t found = ops_of(self).index_by(handle(self), given > 1, static_cast<int32_t>(start), given > 2,
                                          static_cast<int32_t>(stop), &v);
    if (PyErr_Occurred())
        return nullptr;
    if (found < 0) {
        PyErr_SetString(PyExc_ValueError, "value is not in list");
        return nullptr;
    }
    return PyLong_FromLong(found);
}

PyObject* m_count(PyObject* self, PyObject* value) {
    if (PyShBound_Unbound(self))
        return nullptr;
    VariantArg v = {};
    if (!to_variant(value, &v))
        return nullptr;
    int32_t n = ops_of(self).count_of(handle(self), &v);
    if (n < 0 || PyErr_Occurred())
        return no_result(), nullptr;
    return PyLong_FromLong(n);
}

PyObject* m_contains(PyObject* self, PyObject* value) {
    int found = sq_contains(self, value);
    return found < 0 ? nullptr : PyBool_FromLong(found);
}

PyObject* m_sort(PyObject* self, PyObject* args, PyObject* kwargs) {
    int reverse = 0;
    if (PySeq_SortArgs(args, kwargs, &reverse) < 0 || PyShBound_Unbound(self))
        return nullptr;
    int32_t status = ops_of(self).sort(handle(self), reverse);
    if (status < 0 || PyErr_Occurred())
        return no_result(), nullptr;
    Py_RETURN_NONE;
}

PyObject* m_reverse(PyObject* self, PyObject*) {
    if (PyShBound_Unbound(self))
        return nullptr;
    int32_t status = ops_of(self).reverse(handle(self));
    if (status < 0 || PyErr_Occurred())
        return no_result(), nullptr;
    Py_RETURN_NONE;
}

PyObject* m_copy(PyObject* self, PyObject*) {
    if (PyShBound_Unbound(self))
        return nullptr;
    return ops_of(self).item != nullptr ? PySeq_Repeat(self, 1, kIndexed) : collected(self);
}

PyObject* m_enter(PyObject* self, PyObject*) { return Py_NewRef(self); }

PyObject* m_exit(PyObject* self, PyObject*) {
    // never suppresses the body's exception: the result is None, not true
    int status = ObjectHost::get_instance().dispose(handle(self));
    if (status < 0 || PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

#define QRX_KW(f) reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(f))

// ---- the casting block, one set of functions per kind (static methods get no class)

template <PyUkKind K>
const PyShCastOps& cast_ops() {
    return g_types[static_cast<int>(K)].ops->cast;
}
template <PyUkKind K>
PyObject* c_type_of(PyObject*, PyObject*) { return PyShCast_TypeOf(cast_ops<K>()); }
template <PyUkKind K>
PyObject* c_cast_to(PyObject*, PyObject* o) { return PyShCast_CastTo(cast_ops<K>(), o); }
template <PyUkKind K>
PyObject* c_is_assignable(PyObject*, PyObject* o) { return PyShCast_IsAssignable(cast_ops<K>(), o); }
template <PyUkKind K>
PyObject* c_reinterpret(PyObject*, PyObject* o) { return PyShCast_Reinterpret(cast_ops<K>(), o); }
template <PyUkKind K>
PyObject* c_cast_as(PyObject*, PyObject* o) { return PyShCast_CastAs(cast_ops<K>(), o); }

// The casting block: the collection kinds list _cast_from after the static functions, the
// iterator, enumerable and disposable kinds right after _cast_to.
#define QRX_CAST_HEAD(K)                                           \
    {"get_type", wrapClrObject_get_type, METH_NOARGS, ""},         \
        {"_type_of", c_type_of<K>, METH_NOARGS | METH_STATIC, ""}, \
        {"_cast_to", c_cast_to<K>, METH_O | METH_STATIC, ""}
#define QRX_CAST_TAIL(K)                                                                \
    {"_is_assignable", c_is_assignable<K>, METH_O | METH_STATIC, ""},                   \
        {"_reinterpret_obj", c_reinterpret<K>, METH_O | METH_STATIC, ""},               \
        {"_cast_as", c_cast_as<K>, METH_O | METH_STATIC, ""}
#define QRX_CAST_FROM {"_cast_from", PyShCast_NoCast, METH_O, ""}
#define QRX_CAST_END                                                                    \
    {"_qrxsc2p_asserttp", wrapPySealTp_qrxsc2p_asserttp, METH_NOARGS | METH_CLASS, ""}, \
    {                                                                                   \
        nullptr, nullptr, 0, nullptr                                                    \
    }
#define QRX_CAST_BLOCK(K) QRX_CAST_HEAD(K), QRX_CAST_TAIL(K), QRX_CAST_FROM, QRX_CAST_END
#define QRX_PROTOCOL_CAST_BLOCK(K) QRX_CAST_HEAD(K), QRX_CAST_FROM, QRX_CAST_TAIL(K), QRX_CAST_END

#define QRX_COL_METHODS                                       \
    {"count", m_count, METH_O, ""}, {"copy", m_copy, METH_NOARGS, ""}, {"contains", m_contains, METH_O, ""}

#define QRX_LIST_METHODS                                                                                    \
    {"append", m_append, METH_O, ""}, {"insert", m_insert, METH_VARARGS, ""}, {"extend", m_extend, METH_O, ""}, \
        {"remove", m_remove, METH_O, ""}, {"pop", m_pop, METH_VARARGS, ""}, {"clear", m_clear, METH_NOARGS, ""}, \
        {"index", m_index, METH_VARARGS, ""}, {"count", m_count, METH_O, ""}, {"contains", m_contains, METH_O, ""}, \
        {"sort", QRX_KW(m_sort), METH_VARARGS | METH_KEYWORDS, ""}, {"reverse", m_reverse, METH_NOARGS, ""},   \
        {"copy", m_copy, METH_NOARGS, ""}

PyMethodDef kDisposableMethods[] = {{"__enter__", m_enter, METH_NOARGS, ""},
                                    {"__exit__", m_exit, METH_VARARGS, ""},
                                    QRX_PROTOCOL_CAST_BLOCK(PyUkKind::Disposable)};
PyMethodDef kIterMethods[] = {QRX_PROTOCOL_CAST_BLOCK(PyUkKind::Iter)};
PyMethodDef kIterableMethods[] = {QRX_PROTOCOL_CAST_BLOCK(PyUkKind::Iterable)};
PyMethodDef kIColMethods[] = {QRX_COL_METHODS, QRX_CAST_BLOCK(PyUkKind::ICol)};
PyMethodDef kRoColBaseMethods[] = {QRX_COL_METHODS, QRX_CAST_BLOCK(PyUkKind::RoColBase)};
PyMethodDef kIListMethods[] = {QRX_LIST_METHODS, QRX_CAST_BLOCK(PyUkKind::IList)};
PyMethodDef kColBaseMethods[] = {QRX_LIST_METHODS, QRX_CAST_BLOCK(PyUkKind::ColBase)};
PyMethodDef kArrayMethods[] = {{"index", m_index, METH_VARARGS, ""},
                               {"count", m_count, METH_O, ""},
                               {"sort", QRX_KW(m_sort), METH_VARARGS | METH_KEYWORDS, ""},
                               {"reverse", m_reverse, METH_NOARGS, ""},
                               {"copy", m_copy, METH_NOARGS, ""},
                               {"contains", m_contains, METH_O, ""},
                               QRX_CAST_BLOCK(PyUkKind::Array)};
PyMethodDef kArrListMethods[] = {{"extend", m_extend, METH_O, ""},
                                 {"append", m_append, METH_O, ""},
                                 {"insert", m_insert, METH_VARARGS, ""},
                                 {"remove", m_remove, METH_O, ""},
                                 {"pop", m_pop, METH_VARARGS, ""},
                                 {"clear", m_clear, METH_NOARGS, ""},
                                 {"index", m_index, METH_VARARGS, ""},
                                 {"count", m_count, METH_O, ""},
                                 {"sort", QRX_KW(m_sort), METH_VARARGS | METH_KEYWORDS, ""},
                                 {"reverse", m_reverse, METH_NOARGS, ""},
                                 {"copy", m_copy, METH_NOARGS, ""},
                                 {"contains", m_contains, METH_O, ""},
                                 QRX_CAST_BLOCK(PyUkKind::ArrList)};

#undef QRX_LIST_METHODS
#undef QRX_COL_METHODS
#undef QRX_PROTOCOL_CAST_BLOCK
#undef QRX_CAST_BLOCK
#undef QRX_CAST_END
#undef QRX_CAST_FROM
#undef QRX_CAST_TAIL
#undef QRX_CAST_HEAD
#undef QRX_KW

PyObject* tp_new(PyTypeObject* type, PyObject*, PyObject*) {
    if (reinterpret_cast<PyUkTypeObject*>(type)->ops->invalidate())
        return nullptr;
    return PyShBound_Alloc(type);
}

// ---- the kinds' operations, by table

template <class T>
const T& tb() {
    return T::get_instance();
}

// The casting stubs of a table, with the kind's entry check.
template <class T, PyUkKind K, bool Reinterprets>
PyShCastOps cast_of(bool (*invalidate)()) {
    PyShCastOps c = {};
    c.invalidate = invalidate;
    c.target = &g_types[static_cast<int>(K)].type;
    c.target_kind = HandleKind_Object;
    c.type_of = [](void** o) { tb<T>().btp_TypeOf(o); };
    c.cast_to = [](void* h, void** o) { return tb<T>().btp_CastTo(h, o); };
    c.cast_as = [](void* h, void** o) { return tb<T>().btp_CastAs(h, o); };
    c.is_assignable = [](void* h) { return tb<T>().btp_IsAssignable(h); };
    if constexpr (Reinterprets)
        c.reinterpret = [](void* h, void** o) { return tb<T>().btp_ReInterpretObj(h, o); };
    return c;
}

// The collection table gives the length, membership and counts of lists and collections.
void collection_ops(PyUkOps& o) {
    using C = PyHost_ph_ICol;
    o.length = [](void* h) { return tb<C>().sq_length(h); };
    o.contains = [](void* h, VariantArg* v) { return tb<C>().sq_contains(h, v); };
    o.count_of = [](void* h, VariantArg* v) { return tb<C>().count_of(h, v); };
}

void list_ops(PyUkOps& o) {
    using L = PyHost_ph_IList;
    collection_ops(o);
    o.item = [](void* h, int32_t i) { return tb<L>().sq_getitem_nocheck(h, i); };
    o.set_item = [](void* h, int32_t i, VariantArg* v) { return tb<L>().sq_setitem(h, i, v); };
    o.set_item_nocheck = [](void* h, int32_t i, VariantArg* v) { return tb<L>().sq_setitem_nocheck(h, i, v); };
    o.set_items = [](void* h, VariantArg* v, int32_t a, int32_t n, int32_t s) { return tb<L>().mp_set_items(h, v, a, n, s); };
    o.index_by = [](void* h, int32_t hs, int32_t s, int32_t he, int32_t e, VariantArg* v) {
        return tb<L>().index_by(h, hs, s, he, e, v);
    };
    o.reverse = [](void* h) { return tb<L>().reverse(h); };
    o.sort = [](void* h, int32_t r) { return tb<L>().sort(h, r); };
    o.add = [](void* h, VariantArg* v) { return tb<L>().add(h, v); };
    o.insert = [](void* h, int32_t i, VariantArg* v) { return tb<L>().insert(h, i, v); };
    o.remove = [](void* h, VariantArg* v) { return tb<L>().remove(h, v); };
    o.remove_at = [](void* h, int32_t i) { return tb<L>().remove_at(h, i); };
    o.remove_items = [](void* h, int32_t a, int32_t n, int32_t s) { return tb<L>().mp_remove_items(h, a, n, s); };
    o.pop = [](void* h, int32_t i, int32_t has, PyObject** out) { return tb<L>().pop(h, i, has, out); };
    o.clear = [](void* h) { return tb<L>().clear(h); };
    o.concat = [](void* h, VariantArg* v) { return tb<L>().sq_inplaceconcat(h, v); };
    o.repeat = [](void* h, int32_t n) { return tb<L>().sq_inplacerepeat(h, n); };
}

void array_ops(PyUkOps& o) {
    using A = PyHost_ph_Array;
    o.length = [](void* h) { return tb<A>().sq_length(h); };
    o.contains = [](void* h, VariantArg* v) { return tb<A>().sq_contains(h, v); };
    o.count_of = [](void* h, VariantArg* v) { return tb<A>().count_of(h, v); };
    o.item = [](void* h, int32_t i) { return tb<A>().sq_item_nocheck(h, i); };
    o.set_item = [](void* h, int32_t i, VariantArg* v) { return tb<A>().sq_ssitem(h, i, v); };
    o.set_item_nocheck = [](void* h, int32_t i, VariantArg* v) { return tb<A>().sq_ssitem_nocheck(h, i, v); };
    o.set_items = [](void* h, VariantArg* v, int32_t a, int32_t n, int32_t s) { return tb<A>().mp_subscript(h, v, a, n, s); };
    o.index_by = [](void* h, int32_t hs, int32_t s, int32_t he, int32_t e, VariantArg* v) {
        return tb<A>().index_by(h, hs, s, he, e, v);
    };
    o.reverse = [](void* h) { return tb<A>().reverse(h); };
    o.sort = [](void* h, int32_t r) { return tb<A>().sort(h, r); };
}

void arrlist_ops(PyUkOps& o) {
    using R = PyHost_ph_ArrList;
    o.length = [](void* h) { return tb<R>().sq_length(h); };
    o.contains = [](void* h, VariantArg* v) { return tb<R>().sq_contains(h, v); };
    o.count_of = [](void* h, VariantArg* v) { return tb<R>().count_of(h, v); };
    o.item = [](void* h, int32_t i) { return tb<R>().sq_item_nocheck(h, i); };
    o.set_item = [](void* h, int32_t i, VariantArg* v) { return tb<R>().sq_ssitem(h, i, v); };
    o.set_item_nocheck = [](void* h, int32_t i, VariantArg* v) { return tb<R>().sq_ssitem_nocheck(h, i, v); };
    o.set_items = [](void* h, VariantArg* v, int32_t a, int32_t n, int32_t s) { return tb<R>().mp_subscript(h, v, a, n, s); };
    o.index_by = [](void* h, int32_t hs, int32_t s, int32_t he, int32_t e, VariantArg* v) {
        return tb<R>().index_by(h, hs, s, he, e, v);
    };
    o.reverse = [](void* h) { return tb<R>().reverse(h); };
    o.sort = [](void* h, int32_t r) { return tb<R>().sort(h, r); };
    o.add = [](void* h, VariantArg* v) { return tb<R>().add(h, v); };
    o.insert = [](void* h, int32_t i, VariantArg* v) { return tb<R>().insert(h, i, v); };
    o.remove = [](void* h, VariantArg* v) { return tb<R>().remove(h, v); };
    o.remove_at = [](void* h, int32_t i) { return tb<R>().remove_at(h, i); };
    o.remove_items = [](void* h, int32_t a, int32_t n, int32_t s) { return tb<R>().mp_remove(h, a, n, s); };
    o.pop = [](void* h, int32_t i, int32_t has, PyObject** out) { return tb<R>().pop(h, i, has, out); };
    o.clear = [](void* h) { return tb<R>().clear(h); };
    o.concat = [](void* h, VariantArg* v) { return tb<R>().sq_inplace_concat(h, v); };
    o.repeat = [](void* h, int32_t n) { return tb<R>().sq_inplace_repeat(h, n); };
    o.ensure_capacity = [](void* h, int32_t n) { return tb<R>().ensure_capacity(h, n); };
}

// What a kind's parameters accept besides managed objects.
enum class Lends { Nothing, Sequences, Iterables };

template <class T, PyUkKind K, bool Reinterprets>
PyUkOps ops_for(const char* kind_name, bool (*invalidate)(), Lends lends, void (*fill)(PyUkOps&)) {
    PyUkOps o = {};
    o.kind_name = kind_name;
    o.invalidate = invalidate;
    o.lends_sequences = lends == Lends::Sequences;
    o.lends_iterables = lends == Lends::Iterables;
    o.is_assignable = [](void* h) { return static_cast<int>(tb<T>().btp_IsAssignable(h)); };
    if (fill != nullptr)
        fill(o);
    o.cast = cast_of<T, K, Reinterprets>(invalidate);
    return o;
}

struct KindInfo {
    const char* name;
    const char* tp_name;
    PyMethodDef* methods;
};

const KindInfo kInfo[kPyUkKindCount] = {
    {"_IDisposableWrapper", "quorix.folio._wrpgen._interop._IDisposableWrapper", kDisposableMethods},
    {"_IterWrapper", "quorix.folio._wrpgen._interop._IterWrapper", kIterMethods},
    {"_IterableWrapper", "quorix.folio._wrpgen._interop._IterableWrapper", kIterableMethods},
    {"_IColWrapper", "quorix.folio._wrpgen._interop._IColWrapper", kIColMethods},
    {"_IListWrapper", "quorix.folio._wrpgen._interop._IListWrapper", kIListMethods},
    {"_RoColBaseWrapper", "quorix.folio._wrpgen._interop._RoColBaseWrapper", kRoColBaseMethods},
    {"_ColBaseWrapper", "quorix.folio._wrpgen._interop._ColBaseWrapper", kColBaseMethods},
    {"_ArrayWrapper", "quorix.folio._wrpgen._interop._ArrayWrapper", kArrayMethods},
    {"_ArrListWrapper", "quorix.folio._wrpgen._interop._ArrListWrapper", kArrListMethods},
};

const PyUkOps kOps[kPyUkKindCount] = {
    ops_for<PyHost_ph_Disposable, PyUkKind::Disposable, false>("IDisposable", wrpPye_uafn_idisposable_invalidate,
                                                               Lends::Nothing, nullptr),
    ops_for<PyHost_ph_Iter, PyUkKind::Iter, false>("IEnumerator", wrpPye_uafn_iter_invalidate, Lends::Nothing, nullptr),
    ops_for<PyHost_ph_Iterable, PyUkKind::Iterable, false>("IEnumerable", wrpPye_uafn_iterable_invalidate,
                                                           Lends::Iterables, nullptr),
    // the collection kind names the list in its message, as the list kind does
    ops_for<PyHost_ph_ICol, PyUkKind::ICol, false>("List", wrpPye_uafn_icol_invalidate, Lends::Iterables,
                                                   collection_ops),
    ops_for<PyHost_ph_IList, PyUkKind::IList, false>("List", wrpPye_uafn_ilist_invalidate, Lends::Sequences, list_ops),
    ops_for<PyHost_ph_RoColBase, PyUkKind::RoColBase, true>("ReadOnlyCollectionBase", wrpPye_uafn_rocolbase_invalidate,
                                                            Lends::Sequences, collection_ops),
    ops_for<PyHost_ph_ColBase, PyUkKind::ColBase, true>("CollectionBase", wrpPye_uafn_colbase_invalidate,
                                                        Lends::Sequences, list_ops),
    ops_for<PyHost_ph_Array, PyUkKind::Array, true>("Array", wrpPye_uafn_array_invalidate, Lends::Sequences, array_ops),
    ops_for<PyHost_ph_ArrList, PyUkKind::ArrList, true>("ArrayList", wrpPye_uafn_arrlist_invalidate, Lends::Sequences,
                                                        arrlist_ops),
};

void describe(PyUkKind kind) {
    int k = static_cast<int>(kind);
    PyTypeObject* type = &g_types[k].type;
    g_types[k].ops = &kOps[k];
    PyShBound_DescribeType(type, kInfo[k].tp_name, false, kInfo[k].methods, nullptr, tp_new, nullptr);
    switch (kind) {
    case PyUkKind::Disposable:
        break;
    case PyUkKind::Iter:
        type->tp_iter = PyObject_SelfIter;
        type->tp_iternext = iter_next;
        break;
    case PyUkKind::Iterable:
        type->tp_iter = iterable_iter;
        break;
    case PyUkKind::ICol:
    case PyUkKind::RoColBase:
        type->tp_iter = iterable_iter;
        type->tp_as_sequence = &kColSequence;
        type->tp_getset = kLengthGetSet;
        break;
    case PyUkKind::IList:
    case PyUkKind::ColBase:
    case PyUkKind::ArrList:
        type->tp_iter = iterable_iter;
        type->tp_as_sequence = &kListSequence;
        type->tp_as_mapping = &kListMapping;
        type->tp_getset = kLengthGetSet;
        break;
    case PyUkKind::Array:
        type->tp_iter = iterable_iter;
        type->tp_as_sequence = &kArraySequence;
        type->tp_as_mapping = &kArrayMapping;
        type->tp_getset = kLengthGetSet;
        break;
    }
}

bool describe_all() {
    for (int k = 0; k < kPyUkKindCount; ++k)
        describe(static_cast<PyUkKind>(k));
    return true;
}

}  // namespace

PyTypeObject* PyUk_Type(PyUkKind kind) {
    static const bool described = describe_all();
    (void)described;
    return &g_types[static_cast<int>(kind)].type;
}

const char* PyUk_Name(PyUkKind kind) { return kInfo[static_cast<int>(kind)].name; }

int PyUk_Ready(PyUkKind kind) {
    PyTypeObject* type = PyUk_Type(kind);
    if (PyType_HasFeature(type, Py_TPFLAGS_READY))
        return 0;
    // marked as a wrapper type, so that handle lookups find the object behind it
    if (PyType_Ready(type) < 0 || !fn_set_obj_type_host_markattr(type) ||
        PyObject_GenericSetAttr(reinterpret_cast<PyObject*>(type), PyWrpIdMarkattr_Handle, Py_Ellipsis) < 0)
        return -1;
    return 0;
}

PyObject* wrpPye_conv_clr_to_py(PyUkKind kind, void* handle) {
    if (PyUk_Ready(kind) < 0) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    return PyShBound_ConvClrToPy(handle, PyUk_Type(kind), HandleKind_Object);
}

int wrpPye_conv_py_to_clr(PyUkKind kind, PyObject* obj, VariantArg* out) {
    const PyUkOps& ops = kOps[static_cast<int>(kind)];
    *out = {};
    if (obj == Py_None)
        return 1;
    if (Py_TYPE(obj) == PyUk_Type(kind)) {
        out->value = PyShBound_Handle(obj);
        return 1;
    }
    VariantArg found = {};
    if (fn_conv_py_obj_to_clr_gen_not_null_handle(obj, &found)) {
        if (ops.invalidate())
            return 0;
        int accepted = ops.is_assignable(found.value);
        if (PyErr_Occurred())
            return 0;
        if (accepted) {
            *out = found;
            return 1;
        }
    } else if (ops.lends_sequences || ops.lends_iterables) {
        if (ops.lends_sequences && PyList_Check(obj)) {
            *out = {PyCollectionTag_List, 0, obj};
            return 1;
        }
        if (ops.lends_sequences && PySequence_Check(obj) && Py_TYPE(obj)->tp_as_sequence->sq_length != nullptr) {
            *out = {PyCollectionTag_Sequence, 0, obj};
            return 1;
        }
        if (ops.lends_iterables && Py_TYPE(obj)->tp_iter != nullptr) {
            *out = {PyCollectionTag_Iterable, 0, obj};
            return 1;
        }
    }
    return PyShBound_FailConv(ops.kind_name, obj);
}
