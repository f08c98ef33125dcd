#include "marshal/sequences.h"

#include <cstring>

#include "marshal/conv_errors.h"
#include "marshal/conv_variant.h"
#include "module/pysh_ref.h"
#include "objects/seal_object.h"

namespace {

// 0, with TypeError "can't build <item>[] from '<type>'".
[[gnu::cold, gnu::noinline]] int
fail_not_sequence(const char* item_name, PyObject* obj)
{
    PyErr_Format(PyExc_TypeError, "can't build %s[] from '%.200s'", item_name,
                 obj == Py_None ? "None" : Py_TYPE(obj)->tp_name);
    return 0;
}

// 0, with the element converter's error re-raised as the same type naming the item's index;
// the converter's exception stays reachable as the cause.
[[gnu::cold, gnu::noinline]] int
fail_item(Py_ssize_t index)
{
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    if (value == nullptr) {
        PyErr_Restore(type, value, traceback);
        return 0;
    }
    if (traceback != nullptr)
        PyException_SetTraceback(value, traceback);
    PyErr_Format(type, "item %zd: %S", index, value);
    PyObject* type2 = nullptr;
    PyObject* value2 = nullptr;
    PyObject* traceback2 = nullptr;
    PyErr_Fetch(&type2, &value2, &traceback2);
    PyErr_NormalizeException(&type2, &value2, &traceback2);
    if (value2 != nullptr)
        PyException_SetCause(value2, Py_NewRef(value));
    PyErr_Restore(type2, value2, traceback2);
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
    return 0;
}

// Text and byte strings are sequences of characters and small ints, and a mapping iterates its
// keys: as an array of values each is far likelier a mistake than meant.
bool
is_refused_iterable(PyObject* obj)
{
    return PyUnicode_Check(obj) || PyBytes_Check(obj) || PyByteArray_Check(obj) || PyDict_Check(obj);
}

}  // namespace

PyShSeqHolder::~PyShSeqHolder()
{
    PyMem_Free(heap_);
    Py_XDECREF(owner_);
}

int
PyShSeqHolder::fill(PyObject* obj, bool not_none)
{
    if (obj == Py_None) {
        if (not_none)
            return fail_not_sequence(item_name_, obj);
        arg_.count = -1;
        return 1;
    }
    if (is_refused_iterable(obj))
        return fail_not_sequence(item_name_, obj);
    PyObject* iterator_probe = nullptr;
    if (!PyList_Check(obj) && !PyTuple_Check(obj)) {
        // anything iterable serves; what is not gets the array's own message
        iterator_probe = PyObject_GetIter(obj);
        if (iterator_probe == nullptr) {
            if (!PyErr_ExceptionMatches(PyExc_TypeError))
                return 0;
            PyErr_Clear();
            return fail_not_sequence(item_name_, obj);
        }
    }
    PyShRef fast(PySequence_Fast(iterator_probe != nullptr ? iterator_probe : obj, "can't build an array"));
    Py_XDECREF(iterator_probe);
    if (!fast)
        return 0;
    Py_ssize_t n = PySequence_Fast_GET_SIZE(fast.get());
    if (n > INT32_MAX)
        return marshal_fail_size("the sequence's length (%zd) is out of the INT32 range", n);
    size_t bytes = static_cast<size_t>(n) * static_cast<size_t>(arg_.item_size);
    void* storage = inline_;
    if (bytes > kInlineBytes) {
        heap_ = PyMem_Malloc(bytes);
        if (heap_ == nullptr) {
            PyErr_NoMemory();
            return 0;
        }
        storage = heap_;
    }
    std::memset(storage, 0, bytes);
    PyObject** items = PySequence_Fast_ITEMS(fast.get());
    auto* record = static_cast<unsigned char*>(storage);
    for (Py_ssize_t i = 0; i < n; i++, record += arg_.item_size) {
        if (convert_(items[i], record) != 1)
            return fail_item(i);
    }
    owner_ = fast.release();
    arg_.count = static_cast<int32_t>(n);
    arg_.items = storage;
    return 1;
}

int
fn_conv_py_seq_to_clr_array(PyObject* obj, PyShSeqHolder* holder)
{
    return holder->fill(obj, false);
}

int
fn_conv_py_seq_to_clr_array_not_none(PyObject* obj, PyShSeqHolder* holder)
{
    return holder->fill(obj, true);
}

// ---- results

PyObject*
PyShSeqSink::take()
{
    if (PyErr_Occurred())
        return nullptr;
    if (sink_.list == nullptr)
        Py_RETURN_NONE;
    PyObject* list = sink_.list;
    sink_.list = nullptr;
    return list;
}

namespace {

[[gnu::cold, gnu::noinline]] int32_t
fail_slot(int32_t index)
{
    if (!PyErr_Occurred())
        PyErr_Format(PyExc_IndexError, "sequence result slot %d is out of range", static_cast<int>(index));
    return -1;
}

// Puts a new reference (or the NULL of a failed conversion) into slot `index`.
int32_t
put(PySeqSink* sink, int32_t index, PyObject* item)
{
    if (item == nullptr)
        return -1;
    if (sink->list == nullptr || index < 0 || index >= PyList_GET_SIZE(sink->list)) {
        Py_DECREF(item);
        return fail_slot(index);
    }
    PyObject* old = PyList_GET_ITEM(sink->list, index);
    PyList_SET_ITEM(sink->list, index, item);
    Py_XDECREF(old);
    return 0;
}

}  // namespace

int32_t
fn_clbk_pylist_begin(PySeqSink* sink, int32_t count)
{
    Py_CLEAR(sink->list);
    if (count < 0)
        return 0;
    sink->list = PyList_New(count);
    return sink->list != nullptr ? 0 : -1;
}

int32_t
fn_clbk_pylist_put_object(PySeqSink* sink, int32_t index, PyObject* item)
{
    return put(sink, index, item);
}

int32_t
fn_clbk_pylist_put_handle(PySeqSink* sink, int32_t index, void* handle, int32_t type_index)
{
    if (sink->wrap_handle != nullptr)
        return put(sink, index, sink->wrap_handle(handle, type_index));
    VariantArg value = {HandleKind_Object, 0, handle};
    return put(sink, index, fn_write_py_sysobj(&value));
}

int32_t
fn_clbk_pylist_put_int(PySeqSink* sink, int32_t index, int32_t value)
{
    return put(sink, index, sink->wrap_int != nullptr ? sink->wrap_int(value) : PyLong_FromLong(value));
}

PyObject*
PyShParams_Fold(PyObject* args, Py_ssize_t count)
{
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given <= count)
        return Py_NewRef(args);
    PyShRef folded(PyTuple_New(count));
    if (!folded)
        return nullptr;
    for (Py_ssize_t i = 0; i < count - 1; i++)
        PyTuple_SET_ITEM(folded.get(), i, Py_NewRef(PyTuple_GET_ITEM(args, i)));
    PyObject* items = PyTuple_GetSlice(args, count - 1, given);
    if (items == nullptr)
        return nullptr;
    PyTuple_SET_ITEM(folded.get(), count - 1, items);
    return folded.release();
}
