#include "builtins/seq_edit.h"

#include "module/pysh_ref.h"
#include "objects/handle_lookup.h"

namespace {

[[gnu::cold, gnu::noinline]] PyObject* fail(PyObject* type, const char* text) {
    PyErr_SetString(type, text);
    return nullptr;
}

[[gnu::cold, gnu::noinline]] int fail_status(PyObject* type, const char* text) {
    PyErr_SetString(type, text);
    return -1;
}

// Appends the items of a list or tuple; 0 or -1 (the items before a failure stay).
int extend_fast(PyObject* self, PyObject* other, const PySeqEdit& edit) {
    PyShRef fast(PySequence_Fast(other, "argument must be iterable"));
    if (!fast)
        return -1;
    Py_ssize_t n = PySequence_Fast_GET_SIZE(fast.get());
    if (edit.reserve != nullptr && edit.reserve(self, n) < 0)
        return -1;
    PyObject** items = PySequence_Fast_ITEMS(fast.get());
    for (Py_ssize_t k = 0; k < n; ++k)
        if (edit.add(self, items[k]) < 0)
            return -1;
    return 0;
}

int extend_sized(PyObject* self, PyObject* other, const PySeqEdit& edit) {
    Py_ssize_t n = PySequence_Size(other);
    if (n < 0)
        return -1;
    if (edit.reserve != nullptr && edit.reserve(self, n) < 0)
        return -1;
    for (Py_ssize_t k = 0; k < n; ++k) {
        PyShRef item(PySequence_GetItem(other, k));
        if (!item || edit.add(self, item.get()) < 0)
            return -1;
    }
    return 0;
}

int extend_iterated(PyObject* self, PyObject* other, const PySeqEdit& edit) {
    PyShRef it(PyObject_GetIter(other));
    if (!it)
        return PyErr_Occurred() ? -1 : fail_status(PyExc_ValueError, "argument must be iterable");
    while (PyObject* item = PyIter_Next(it.get())) {
        PyShRef owned(item);
        if (edit.add(self, item) < 0)
            return -1;
    }
    return PyErr_Occurred() ? -1 : 0;
}

int extend(PyObject* self, PyObject* other, const PySeqEdit& edit) {
    VariantArg managed = {};
    if (fn_conv_py_obj_to_clr_gen_not_null_handle(other, &managed)) {
        int done = edit.extend_managed(self, other);
        if (done != 0)
            return done < 0 ? -1 : 0;
    }
    if (PyList_Check(other) || PyTuple_Check(other))
        return extend_fast(self, other, edit);
    if (PySequence_Check(other) && Py_TYPE(other)->tp_as_sequence->sq_length != nullptr)
        return extend_sized(self, other, edit);
    if (Py_TYPE(other)->tp_iter != nullptr)
        return extend_iterated(self, other, edit);
    return fail_status(PyExc_ValueError, "argument must be iterable or sequence");
}

int del_slice(PyObject* self, PyObject* slice, const PySeqAccess& access, const PySeqEdit& edit) {
    Py_ssize_t start, stop, step;
    if (PySlice_Unpack(slice, &start, &stop, &step) < 0)
        return -1;
    Py_ssize_t length = access.length(self);
    if (length < 0)
        return -1;
    Py_ssize_t n = PySlice_AdjustIndices(length, &start, &stop, step);
    if (n <= 0)
        return 0;
    if (step > 0) {
        // from the highest index down, so that each removal leaves the next index in place
        start += (n - 1) * step;
        step = -step;
    }
    if (start < 0)
        start = 0;
    if (PySeq_CheckIndex(start) < 0 || PySeq_CheckIndex(n) < 0 || PySeq_CheckIndex(step) < 0)
        return -1;
    return edit.remove_items(self, start, n, step);
}

}  // namespace

int PySeq_IndexArg(PyObject* obj, void* out) {
    Py_ssize_t i = PyNumber_AsSsize_t(obj, PyExc_OverflowError);
    if (i == -1 && PyErr_Occurred())
        return 0;
    if (PySeq_CheckIndex(i) < 0)
        return 0;
    *static_cast<Py_ssize_t*>(out) = i;
    return 1;
}

int PySeq_SortArgs(PyObject* args, PyObject* kwargs, int* reverse) {
    static const char* const kw[] = {"key", "reverse", nullptr};
    PyObject* key = Py_None;
    *reverse = 0;
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "|Op:sort", const_cast<char**>(kw), &key, reverse))
        return -1;
    if (key != Py_None) {
        PyErr_SetString(PyExc_ValueError, "custom sorting key is not supported");
        return -1;
    }
    return 0;
}

PyObject* PySeq_Append(PyObject* self, PyObject* value, const PySeqEdit& edit) {
    if (edit.add(self, value) < 0)
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* PySeq_Insert(PyObject* self, PyObject* args, const PySeqEdit& edit) {
    Py_ssize_t i = 0;
    PyObject* value = nullptr;
    if (!PyArg_ParseTuple(args, "O&O:insert", PySeq_IndexArg, &i, &value))
        return nullptr;
    if (edit.insert(self, i, value) < 0)
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* PySeq_Extend(PyObject* self, PyObject* other, const PySeqEdit& edit) {
    if (extend(self, other, edit) < 0)
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* PySeq_Remove(PyObject* self, PyObject* value, const PySeqEdit& edit) {
    int found = edit.remove(self, value);
    if (found < 0)
        return nullptr;
    if (found == 0)
        return fail(PyExc_ValueError, "list.remove(x): x not in list");
    Py_RETURN_NONE;
}

PyObject* PySeq_Pop(PyObject* self, PyObject* args, const PySeqEdit& edit) {
    Py_ssize_t i = 0;
    if (!PyArg_ParseTuple(args, "|O&:pop", PySeq_IndexArg, &i))
        return nullptr;
    int status = -1;
    PyObject* item = edit.pop(self, i, PyTuple_GET_SIZE(args) > 0, &status);
    if (item != nullptr || PyErr_Occurred())
        return item;
    if (status == 1)
        return fail(PyExc_IndexError, "pop from empty list");
    if (status == 2)
        return fail(PyExc_IndexError, "pop index out of range");
    return fail(PyExc_SystemError, "a managed list's pop failed without an error");
}

PyObject* PySeq_Clear(PyObject* self, const PySeqEdit& edit) {
    if (edit.clear(self) < 0)
        return nullptr;
    Py_RETURN_NONE;
}

int PySeq_DelItem(PyObject* self, Py_ssize_t i, const PySeqEdit& edit) {
    if (PySeq_CheckIndex(i) < 0)
        return -1;
    int status = edit.remove_at(self, i);
    if (status == 2)
        return fail_status(PyExc_IndexError, "list index out of range");
    return status < 0 ? -1 : 0;
}

int PySeq_AssSubscriptList(PyObject* self, PyObject* key, PyObject* value, const PySeqAccess& access,
                           const PySeqStore& store, const PySeqEdit& edit) {
    if (value != nullptr)
        return PySeq_AssSubscript(self, key, value, access, store);
    if (PySlice_Check(key))
        return del_slice(self, key, access, edit);
    if (!PyIndex_Check(key)) {
        PySeq_RefuseKey(key);
        return -1;
    }
    Py_ssize_t i = PyNumber_AsSsize_t(key, PyExc_IndexError);
    if (i == -1 && PyErr_Occurred())
        return -1;
    if (i < 0) {
        Py_ssize_t length = access.length(self);
        if (length < 0)
            return -1;
        i += length;
    }
    return PySeq_DelItem(self, i, edit);
}

PyObject* PySeq_InplaceConcat(PyObject* self, PyObject* other, const PySeqEdit& edit) {
    if (extend(self, other, edit) < 0)
        return nullptr;
    return Py_NewRef(self);
}

PyObject* PySeq_InplaceRepeat(PyObject* self, Py_ssize_t n, const PySeqEdit& edit) {
    if (n < INT32_MIN || n > INT32_MAX) {
        PyErr_Format(PyExc_OverflowError, "the value of 'count' (%zi) is out of the INT32 range", n);
        return nullptr;
    }
    if (edit.repeat_in_place(self, n) < 0)
        return nullptr;
    return Py_NewRef(self);
}
