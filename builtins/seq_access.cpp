#include "builtins/seq_access.h"

#include <climits>

#include "module/pysh_ref.h"
#include "objects/handle_lookup.h"

namespace {

[[gnu::cold, gnu::noinline]] PyObject* index_error() {
    PyErr_SetString(PyExc_IndexError, "list index out of range");
    return nullptr;
}

[[gnu::cold, gnu::noinline]] int size_mismatch(Py_ssize_t size, Py_ssize_t n) {
    PyErr_Format(PyExc_ValueError, "attempt to assign sequence of size %zd to extended slice of size %zd", size, n);
    return -1;
}

// The slice clipped to the length: 0 with start, step and count; -1 with an error.
int clip_slice(PyObject* self, PyObject* slice, const PySeqAccess& access, Py_ssize_t* start, Py_ssize_t* step,
               Py_ssize_t* n) {
    Py_ssize_t stop;
    if (PySlice_Unpack(slice, start, &stop, step) < 0)
        return -1;
    Py_ssize_t length = access.length(self);
    if (length < 0)
        return -1;
    *n = PySlice_AdjustIndices(length, start, &stop, *step);
    return 0;
}

// An integer key made absolute against the length: 0, or -1 with IndexError/OverflowError.
int absolute_index(PyObject* self, PyObject* key, const PySeqAccess& access, Py_ssize_t* index) {
    Py_ssize_t length = access.length(self);
    if (length < 0)
        return -1;
    Py_ssize_t i = PyNumber_AsSsize_t(key, PyExc_IndexError);
    if (i == -1 && PyErr_Occurred())
        return -1;
    if (i < 0)
        i += length;
    if (PySeq_CheckIndex(i) < 0)
        return -1;
    if (i < 0 || i >= length) {
        index_error();
        return -1;
    }
    *index = i;
    return 0;
}

// Items 0 .. length-1 placed `times` over into a new list, item k at k, k+len, ...
PyObject* repeated(PyObject* self, Py_ssize_t times, const PySeqAccess& access) {
    Py_ssize_t length = access.length(self);
    if (length < 0)
        return nullptr;
    if (times <= 0 || length == 0)
        return PyList_New(0);
    if (length > PY_SSIZE_T_MAX / times)
        return PyErr_NoMemory();
    PyShRef list(PyList_New(length * times));
    if (!list)
        return nullptr;
    for (Py_ssize_t k = 0; k < length; ++k) {
        PyObject* item = access.item(self, k);
        if (item == nullptr)
            return nullptr;
        for (Py_ssize_t r = 0; r < times; ++r)
            PyList_SET_ITEM(list.get(), k + r * length, r == 0 ? item : Py_NewRef(item));
    }
    return list.release();
}

}  // namespace

PyObject* PySeq_RefuseKey(PyObject* key) {
    PyErr_Format(PyExc_TypeError, "list indices must be integers or slices, not %.200s", Py_TYPE(key)->tp_name);
    return nullptr;
}

int PySeq_RefuseDelete(PyObject* self) {
    PyErr_Format(PyExc_TypeError, "'%.200s' object doesn't support item deletion", Py_TYPE(self)->tp_name);
    return -1;
}

int PySeq_CheckIndex(Py_ssize_t i) {
    if (i < INT32_MIN || i > INT32_MAX) {
        PyErr_Format(PyExc_OverflowError, "the index (%zi) is out of the INT32 range", i);
        return -1;
    }
    return 0;
}

PyObject* PySeq_Item(PyObject* self, Py_ssize_t i, const PySeqAccess& access) {
    if (PySeq_CheckIndex(i) < 0)
        return nullptr;
    Py_ssize_t length = access.length(self);
    if (length < 0)
        return nullptr;
    if (i < 0 || i >= length)
        return index_error();
    return access.item(self, i);
}

PyObject* PySeq_Subscript(PyObject* self, PyObject* key, const PySeqAccess& access) {
    if (access.by_key != nullptr && !PySlice_Check(key)) {
        PyObject* found = access.by_key(self, key);
        if (found != nullptr || PyErr_Occurred())
            return found;
    }
    if (access.item == nullptr)
        return PySeq_RefuseKey(key);
    if (PyIndex_Check(key)) {
        Py_ssize_t i;
        if (absolute_index(self, key, access, &i) < 0)
            return nullptr;
        return access.item(self, i);
    }
    if (!PySlice_Check(key))
        return PySeq_RefuseKey(key);
    Py_ssize_t start, step, n;
    if (clip_slice(self, key, access, &start, &step, &n) < 0)
        return nullptr;
    if (n <= 0)
        return PyList_New(0);
    PyShRef list(PyList_New(n));
    if (!list)
        return nullptr;
    for (Py_ssize_t k = 0, i = start; k < n; ++k, i += step) {
        PyObject* item = access.item(self, i);
        if (item == nullptr)
            return nullptr;
        PyList_SET_ITEM(list.get(), k, item);
    }
    return list.release();
}

PyObject* PySeq_TupleFromList(PyObject* list) {
    PyShRef owned(list);
    if (list == nullptr)
        return nullptr;
    if (!PyList_CheckExact(list)) {
        PyErr_Format(PyExc_SystemError, "a tuple crossed as a '%.200s', not a list", Py_TYPE(list)->tp_name);
        return nullptr;
    }
    return PyList_AsTuple(list);
}

PyObject* PySeq_Repeat(PyObject* self, Py_ssize_t n, const PySeqAccess& access) { return repeated(self, n, access); }

PyObject* PySeq_Concat(PyObject* self, PyObject* other, const PySeqAccess& access) {
    PyShRef list(repeated(self, 1, access));
    if (!list)
        return nullptr;
    if (PyList_Check(other) || PyTuple_Check(other)) {
        PyShRef fast(PySequence_Fast(other, "argument must be iterable"));
        if (!fast)
            return nullptr;
        PyObject** items = PySequence_Fast_ITEMS(fast.get());
        for (Py_ssize_t k = 0, n = PySequence_Fast_GET_SIZE(fast.get()); k < n; ++k)
            if (PyList_Append(list.get(), items[k]) < 0)
                return nullptr;
        return list.release();
    }
    if (PySequence_Check(other) && Py_TYPE(other)->tp_as_sequence->sq_length != nullptr) {
        Py_ssize_t n = PySequence_Size(other);
        if (n < 0)
            return nullptr;
        for (Py_ssize_t k = 0; k < n; ++k) {
            PyShRef item(PySequence_GetItem(other, k));
            if (!item || PyList_Append(list.get(), item.get()) < 0)
                return nullptr;
        }
        return list.release();
    }
    if (Py_TYPE(other)->tp_iter == nullptr && !PySequence_Check(other)) {
        PyErr_SetString(PyExc_ValueError, "argument must be iterable or sequence");
        return nullptr;
    }
    PyShRef it(PyObject_GetIter(other));
    if (!it) {
        if (!PyErr_Occurred())
            PyErr_SetString(PyExc_ValueError, "argument must be iterable");
        return nullptr;
    }
    while (PyObject* item = PyIter_Next(it.get())) {
        PyShRef owned(item);
        if (PyList_Append(list.get(), item) < 0)
            return nullptr;
    }
    return PyErr_Occurred() ? nullptr : list.release();
}

int PySeq_DelItem(PyObject* self, PyObject* key, const PySeqAccess& access,
                  int (*remove_at)(PyObject* self, Py_ssize_t i)) {
    if (!PyIndex_Check(key)) {
        if (!PySlice_Check(key))
            PySeq_RefuseKey(key);
        else
            PyErr_SetString(PyExc_ValueError, "elements removing not supported");
        return -1;
    }
    Py_ssize_t i;
    if (absolute_index(self, key, access, &i) < 0)
        return -1;
    return remove_at(self, i);
}

int PySeq_AssSubscript(PyObject* self, PyObject* key, PyObject* value, const PySeqAccess& access,
                       const PySeqStore& store) {
    if (value == nullptr) {
        PyErr_SetString(PyExc_ValueError, "elements removing not supported");
        return -1;
    }
    if (PyIndex_Check(key)) {
        Py_ssize_t i;
        if (absolute_index(self, key, access, &i) < 0)
            return -1;
        return store.store(self, i, value);
    }
    if (!PySlice_Check(key)) {
        PySeq_RefuseKey(key);
        return -1;
    }
    Py_ssize_t start, step, n;
    if (clip_slice(self, key, access, &start, &step, &n) < 0)
        return -1;
    if (n < 0)
        n = 0;
    if (PyList_Check(value) || PyTuple_Check(value)) {
        PyShRef fast(PySequence_Fast(value, "must assign iterable to extended slice"));
        if (!fast)
            return -1;
        Py_ssize_t size = PySequence_Fast_GET_SIZE(fast.get());
        if (size != n)
            return size_mismatch(size, n);
        PyObject** items = PySequence_Fast_ITEMS(fast.get());
        for (Py_ssize_t k = 0; k < n; ++k)
            if (store.store(self, start + k * step, items[k]) < 0)
                return -1;
        return 0;
    }
    if (!PySequence_Check(value) || Py_TYPE(value)->tp_as_sequence->sq_length == nullptr) {
        PyErr_SetString(PyExc_TypeError, "must assign iterable to extended slice");
        return -1;
    }
    Py_ssize_t size = PySequence_Size(value);
    if (size < 0)
        return -1;
    if (size != n)
        return size_mismatch(size, n);
    VariantArg found = {};
    if (store.store_managed != nullptr && fn_conv_py_obj_to_clr_gen_not_null_handle(value, &found)) {
        int done = store.store_managed(self, value, start, n, step);
        if (done != 0)
            return done < 0 ? -1 : 0;
    }
    for (Py_ssize_t k = 0; k < n; ++k) {
        PyShRef item(PySequence_GetItem(value, k));
        if (!item || store.store(self, start + k * step, item.get()) < 0)
            return -1;
    }
    return 0;
}
