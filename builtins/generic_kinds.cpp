#include "builtins/generic_kinds.h"

#include "builtins/seq_access.h"
#include "builtins/seq_edit.h"
#include "module/pysh_ref.h"
#include "objects/host_table.h"
#include "objects/bound_class.h"
#include "objects/handle_lookup.h"
#include "objects/handle_release.h"
#include "objects/seal_object.h"
#include "objects/wrap_handle.h"
#include "objects/wrapper_slots.h"

namespace {

inline const PyGnOps& ops_of(PyObject* self) { return *reinterpret_cast<PyGnTypeObject*>(Py_TYPE(self))->ops; }

[[gnu::cold, gnu::noinline]] PyObject* no_result() {
    if (!PyErr_Occurred())
        PyErr_SetString(PyExc_SystemError, "a managed collection call failed without an error");
    return nullptr;
}

[[gnu::cold, gnu::noinline]] PyObject* index_error(const char* text) {
    PyErr_SetString(PyExc_IndexError, text);
    return nullptr;
}

// The element's handle for a stub (borrowed from its wrapper); 0 with the converter's TypeError.
int element_of(const PyGnOps& ops, PyObject* value, void** out) { return ops.element_to_clr(value, out); }

// A stub's element result: the wrapper, or NULL (with the pending error, handle freed).
PyObject* element_result(const PyGnOps& ops, int32_t status, void* item, int32_t index) {
    if (status != 0 || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(item);
        return status == 2 && !PyErr_Occurred() ? index_error("list index out of range") : no_result();
    }
    return PyGn_ElementToPy(ops, item, index);
}

// ---- iteration

PyObject* iter_next(PyObject* self) {
    if (PyShBound_Unbound(self))
        return nullptr;
    const PyGnOps& ops = ops_of(self);
    void* item = nullptr;
    int32_t index = -1;
    int32_t status = ops.move_next(PyShBound_Handle(self), &item, &index);
    if (status == 0 && !PyErr_Occurred())
        return PyGn_ElementToPy(ops, item, index);
    PyShWrp_FreeGcHandlePtr(item);
    if (status == 1 && !PyErr_Occurred())
        return nullptr;  // the end: StopIteration without a value
    return no_result();
}

PyObject* iterable_iter(PyObject* self) { return PyGn_IterableIter(self, ops_of(self)); }

// ---- indexed kinds

Py_ssize_t length(PyObject* self) {
    if (PyShBound_Unbound(self))
        return -1;
    int32_t n = ops_of(self).sq_length(PyShBound_Handle(self));
    if (n < 0 && PyErr_Occurred())
        return -1;
    return n;
}

PyObject* item_unchecked(PyObject* self, Py_ssize_t i) {
    const PyGnOps& ops = ops_of(self);
    void* item = nullptr;
    int32_t index = -1;
    int32_t status = ops.sq_get_item_no_check(PyShBound_Handle(self), static_cast<int32_t>(i), &item, &index);
    return element_result(ops, status, item, index);
}

constexpr PySeqAccess kAccess = {length, item_unchecked, nullptr};

int store(PyObject* self, Py_ssize_t i, PyObject* value) {
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return -1;
    int32_t status = ops.sq_set_item_no_check(PyShBound_Handle(self), static_cast<int32_t>(i), element);
    return status != 0 || PyErr_Occurred() ? (no_result(), -1) : 0;
}

int store_managed(PyObject* self, PyObject* value, Py_ssize_t start, Py_ssize_t n, Py_ssize_t step) {
    if (PySeq_CheckIndex(start) < 0 || PySeq_CheckIndex(n) < 0 || PySeq_CheckIndex(step) < 0)
        return -1;
    int32_t done = ops_of(self).mp_set_items(PyShBound_Handle(self), PyShBound_Handle(value), static_cast<int32_t>(start),
                                             static_cast<int32_t>(n), static_cast<int32_t>(step));
    if (PyErr_Occurred())
        return -1;
    return done == 1 ? 1 : 0;
}

constexpr PySeqStore kStore = {store, store_managed};

// ---- edits of lists that grow and shrink

int status_of(int32_t status) { return status != 0 || PyErr_Occurred() ? (no_result(), -1) : 0; }

int edit_add(PyObject* self, PyObject* value) {
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return -1;
    return status_of(ops.add(PyShBound_Handle(self), element));
}

int edit_insert(PyObject* self, Py_ssize_t i, PyObject* value) {
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return -1;
    return status_of(ops.insert(PyShBound_Handle(self), static_cast<int32_t>(i), element));
}

int edit_remove(PyObject* self, PyObject* value) {
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return -1;
    int32_t found = ops.remove(PyShBound_Handle(self), element);
    return found < 0 || PyErr_Occurred() ? (no_result(), -1) : found != 0;
}

int edit_remove_at(PyObject* self, Py_ssize_t i) {
    int32_t status = ops_of(self).remove_at(PyShBound_Handle(self), static_cast<int32_t>(i));
    return status == 2 && !PyErr_Occurred() ? 2 : status_of(status);
}

int edit_remove_items(PyObject* self, Py_ssize_t start, Py_ssize_t n, Py_ssize_t step) {
    return status_of(ops_of(self).remove_items(PyShBound_Handle(self), static_cast<int32_t>(start),
                                               static_cast<int32_t>(n), static_cast<int32_t>(step)));
}

PyObject* edit_pop(PyObject* self, Py_ssize_t i, int has_index, int* status) {
    const PyGnOps& ops = ops_of(self);
    void* item = nullptr;
    int32_t index = -1;
    *status = ops.pop(PyShBound_Handle(self), static_cast<int32_t>(i), has_index, &item, &index);
    if (*status == 0 && !PyErr_Occurred())
        return PyGn_ElementToPy(ops, item, index);
    PyShWrp_FreeGcHandlePtr(item);
    if (*status < 0 || *status > 2)
        no_result();
    return nullptr;
}

int edit_clear(PyObject* self) { return status_of(ops_of(self).clear(PyShBound_Handle(self))); }

int edit_extend_managed(PyObject* self, PyObject* other) {
    VariantArg found = {};
    if (!fn_conv_py_obj_to_clr_gen_not_null_handle(other, &found))
        return 0;
    int32_t done = ops_of(self).concat(PyShBound_Handle(self), found.value);
    if (done < 0 || PyErr_Occurred())
        return no_result(), -1;
    return done == 1 ? 1 : 0;
}

int edit_repeat(PyObject* self, Py_ssize_t n) {
    return status_of(ops_of(self).repeat(PyShBound_Handle(self), static_cast<int32_t>(n)));
}

constexpr PySeqEdit kEdit = {edit_add,    edit_insert, edit_remove,         edit_remove_at, edit_remove_items,
                             edit_pop,    edit_clear,  edit_extend_managed, edit_repeat,    nullptr};

int list_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    if (PyShBound_Unbound(self))
        return -1;
    return PySeq_AssSubscriptList(self, key, value, kAccess, kStore, kEdit);
}

PyObject* inplace_concat(PyObject* self, PyObject* other) {
    return PyShBound_Unbound(self) ? nullptr : PySeq_InplaceConcat(self, other, kEdit);
}

PyObject* inplace_repeat(PyObject* self, Py_ssize_t n) {
    return PyShBound_Unbound(self) ? nullptr : PySeq_InplaceRepeat(self, n, kEdit);
}

PyObject* sq_item(PyObject* self, Py_ssize_t i) { return PySeq_Item(self, i, kAccess); }
PyObject* mp_subscript(PyObject* self, PyObject* key) { return PySeq_Subscript(self, key, kAccess); }
PyObject* sq_concat(PyObject* self, PyObject* other) { return PySeq_Concat(self, other, kAccess); }
PyObject* sq_repeat(PyObject* self, Py_ssize_t n) { return PySeq_Repeat(self, n, kAccess); }

int mp_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    return PySeq_AssSubscript(self, key, value, kAccess, kStore);
}

int sq_ass_item(PyObject* self, Py_ssize_t i, PyObject* value) {
    if (value == nullptr) {
        PyErr_SetString(PyExc_ValueError, "elements removing not supported");
        return -1;
    }
    if (PySeq_CheckIndex(i) < 0)
        return -1;
    if (PyShBound_Unbound(self))
        return -1;
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return -1;
    int32_t status = ops.sq_set_item(PyShBound_Handle(self), static_cast<int32_t>(i), element);
    if (status == 2 && !PyErr_Occurred()) {
        index_error("list index out of range");
        return -1;
    }
    return status != 0 || PyErr_Occurred() ? (no_result(), -1) : 0;
}

int list_ass_item(PyObject* self, Py_ssize_t i, PyObject* value) {
    if (value != nullptr)
        return sq_ass_item(self, i, value);
    if (PyShBound_Unbound(self))
        return -1;
    return PySeq_DelItem(self, i, kEdit);
}

int sq_contains(PyObject* self, PyObject* value) {
    if (PyShBound_Unbound(self))
        return -1;
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return -1;
    int32_t found = ops.sq_contains(PyShBound_Handle(self), element);
    if (found < 0 || PyErr_Occurred())
        return PyErr_Occurred() ? -1 : 0;
    return found != 0;
}

PyObject* get_length(PyObject* self, void*) {
    Py_ssize_t n = length(self);
    return n < 0 && PyErr_Occurred() ? nullptr : PyLong_FromSsize_t(n);
}

PyGetSetDef kLengthGetSet[] = {
    {"length", get_length, nullptr, "", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PySequenceMethods kArraySequence = {length, sq_concat, sq_repeat, sq_item, nullptr, sq_ass_item, nullptr, sq_contains,
                                    nullptr, nullptr};
PySequenceMethods kListSequence = {length, sq_concat, sq_repeat, sq_item, nullptr, list_ass_item, nullptr, sq_contains,
                                   inplace_concat, inplace_repeat};
PyMappingMethods kArrayMapping = {length, mp_subscript, mp_ass_subscript};
PyMappingMethods kListMapping = {length, mp_subscript, list_ass_subscript};

PyObject* tp_new(PyTypeObject* type, PyObject*, PyObject*) {
    if (reinterpret_cast<PyGnTypeObject*>(type)->ops->invalidate())
        return nullptr;
    return PyShBound_Alloc(type);
}


}  // namespace

int32_t PyGn_TableFailed(const PyHostTable& table) {
    PyErr_SetString(PyExc_TypeError, table.error_msg());
    return -1;
}

void PyGn_DescribeType(PyGnTypeObject* gn, const char* tp_name, PyGnKind kind) {
    PyTypeObject* type = &gn->type;
    type->tp_name = tp_name;
    type->tp_basicsize = sizeof(PySealTpObject);
    type->tp_flags = Py_TPFLAGS_DEFAULT;
    type->tp_dealloc = wrapClrObject_tp_dealloc;
    type->tp_hash = wrapClrObject_tp_hash;
    type->tp_richcompare = wrapClrObject_tp_richcompare;
    type->tp_str = wrapClrObject_tp_str;
    type->tp_new = tp_new;
    type->tp_init = wrapClrObject_tp_init_fault;
    switch (kind) {
    case PyGnKind::Iter:
        type->tp_iter = PyObject_SelfIter;
        type->tp_iternext = iter_next;
        break;
    case PyGnKind::Iterable:
        type->tp_iter = iterable_iter;
        break;
    case PyGnKind::Array:
    case PyGnKind::List:
        type->tp_iter = iterable_iter;
        type->tp_as_sequence = kind == PyGnKind::Array ? &kArraySequence : &kListSequence;
        type->tp_as_mapping = kind == PyGnKind::Array ? &kArrayMapping : &kListMapping;
        type->tp_getset = kLengthGetSet;
        break;
    }
}

PyObject* PyGn_IterableIter(PyObject* self, const PyGnOps& ops) {
    if (PyShBound_Unbound(self))
        return nullptr;
    void* enumerator = nullptr;
    int32_t status = ops.get_enumerator(PyShBound_Handle(self), &enumerator);
    if (status < 0 || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(enumerator);
        return no_result();
    }
    return fn_conv_clr_sealtp_to_py_sealtp(enumerator, ops.iter_type);
}

PyObject* PyGn_Wrap(void* handle, PyGnTypeObject* type) { return fn_conv_clr_sealtp_to_py_sealtp(handle, &type->type); }

PyObject* PyGn_ElementToPy(const PyGnOps& ops, void* handle, int32_t index) {
    if (ops.element_to_py != nullptr)
        return ops.element_to_py(handle, index);
    if (ops.element_kind == HandleKind_Struct)
        return PyShBound_ConvClrToPy(handle, ops.element_type, HandleKind_Struct);
    return PyShBound_ConvClrToPyIndexed(handle, index, ops.element_type, ops.index_table, ops.index_count);
}

PyObject* PyGn_Index(PyObject* self, PyObject* args) {
    if (PyShBound_Unbound(self))
        return nullptr;
    const PyGnOps& ops = ops_of(self);
    PyObject* value = nullptr;
    Py_ssize_t start = 0, stop = 0;
    if (!PyArg_ParseTuple(args, "O|O&O&:index", &value, PySeq_IndexArg, &start, PySeq_IndexArg, &stop))
        return nullptr;
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return nullptr;
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    int32_t found = ops.index_by(PyShBound_Handle(self), given > 1, static_cast<int32_t>(start), given > 2,
                                 static_cast<int32_t>(stop), element);
    if (PyErr_Occurred())
        return nullptr;
    if (found < 0) {
        PyErr_SetString(PyExc_ValueError, "value is not in list");
        return nullptr;
    }
    return PyLong_FromLong(found);
}

PyObject* PyGn_Count(PyObject* self, PyObject* value) {
    if (PyShBound_Unbound(self))
        return nullptr;
    const PyGnOps& ops = ops_of(self);
    void* element = nullptr;
    if (!element_of(ops, value, &element))
        return nullptr;
    int32_t n = ops.count_of(PyShBound_Handle(self), element);
    if (n < 0 || PyErr_Occurred())
        return no_result();
    return PyLong_FromLong(n);
}

PyObject* PyGn_Contains(PyObject* self, PyObject* value) {
    int found = sq_contains(self, value);
    return found < 0 ? nullptr : PyBool_FromLong(found);
}

PyObject* PyGn_Sort(PyObject* self, PyObject* args, PyObject* kwargs) {
    int reverse = 0;
    if (PySeq_SortArgs(args, kwargs, &reverse) < 0 || PyShBound_Unbound(self))
        return nullptr;
    ops_of(self).sort(PyShBound_Handle(self), reverse);
    if (PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* PyGn_Reverse(PyObject* self, PyObject*) {
    if (PyShBound_Unbound(self))
        return nullptr;
    ops_of(self).reverse(PyShBound_Handle(self));
    if (PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* PyGn_Copy(PyObject* self, PyObject*) { return PySeq_Repeat(self, 1, kAccess); }

PyObject* PyGn_Append(PyObject* self, PyObject* v) { return PyShBound_Unbound(self) ? nullptr : PySeq_Append(self, v, kEdit); }
PyObject* PyGn_Insert(PyObject* self, PyObject* a) { return PyShBound_Unbound(self) ? nullptr : PySeq_Insert(self, a, kEdit); }
PyObject* PyGn_Extend(PyObject* self, PyObject* o) { return PyShBound_Unbound(self) ? nullptr : PySeq_Extend(self, o, kEdit); }
PyObject* PyGn_Remove(PyObject* self, PyObject* v) { return PyShBound_Unbound(self) ? nullptr : PySeq_Remove(self, v, kEdit); }
PyObject* PyGn_Pop(PyObject* self, PyObject* a) { return PyShBound_Unbound(self) ? nullptr : PySeq_Pop(self, a, kEdit); }
PyObject* PyGn_Clear(PyObject* self, PyObject*) { return PyShBound_Unbound(self) ? nullptr : PySeq_Clear(self, kEdit); }
