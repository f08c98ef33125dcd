// Python iterables, lists and sequences serving managed enumerators, collections and lists.
#include "builtins/py_callbacks.h"
#include "marshal/conv_errors.h"
#include "marshal/conv_text.h"
#include "marshal/conv_variant.h"
#include "module/ids.h"
#include "module/pysh_ref.h"

namespace {

[[gnu::cold, gnu::noinline]] int32_t
fail_index_range(Py_ssize_t index)
{
    PyErr_Format(PyExc_OverflowError, "the index (%zi) is out of the INT32 range", index);
    return -2;
}

[[gnu::cold, gnu::noinline]] void
raise_item_is_null()
{
    PyErr_SetString(PyExc_SystemError, "item is null");
}

// A size within 32 bits, or -1 with an error.
int32_t
length_result(Py_ssize_t size)
{
    if (size < 0)
        return -1;
    if (size > INT32_MAX) {
        marshal_fail_size("the value of 'length' (%zi) is out of the INT32 range", size);
        return -1;
    }
    return static_cast<int32_t>(size);
}

// -2 when the pending error is an IndexError (left pending), else -1.
int32_t
index_failure()
{
    return PyErr_ExceptionMatches(PyExc_IndexError) ? -2 : -1;
}

// Hands `item` (a new reference) out with its variant record: 0, or -1 with the item released.
int32_t
hand_out_item(PyObject* item, PyObject** out_item, VariantArg* variant)
{
    if (!fn_conv_py_variant_to_clr_variant(item, variant)) {
        Py_DECREF(item);
        return -1;
    }
    *out_item = item;
    return 0;
}

// obj.name(index); new reference or NULL.
PyObject*
call_with_index(PyObject* obj, PyObject* name, int32_t index)
{
    PyShRef arg(PyLong_FromLong(index));
    if (!arg)
        return nullptr;
    return PyObject_CallMethodOneArg(obj, name, arg.get());
}

// Position of the first item equal to `item`: the index, -1 when none, -2 on failure.
Py_ssize_t
find_in_sequence(PyObject* seq, PyObject* item)
{
    Py_ssize_t size = PySequence_Size(seq);
    if (size < 0)
        return -2;
    for (Py_ssize_t i = 0; i < size; ++i) {
        PyShRef candidate(PySequence_GetItem(seq, i));
        if (!candidate) {
            if (!PyErr_Occurred())
                raise_item_is_null();
            return -2;
        }
        int equal = PyObject_RichCompareBool(candidate.get(), item, Py_EQ);
        if (equal < 0)
            return -2;
        if (equal)
            return i;
    }
    return -1;
}

}  // namespace

int32_t
fn_clbk_ucol_list_length(PyObject* obj)
{
    return length_result(PyList_Size(obj));
}

int32_t
fn_clbk_ucol_sequence_length(PyObject* obj)
{
    return length_result(PySequence_Size(obj));
}

int32_t
fn_clbk_ucol_object_length(PyObject* obj)
{
    return length_result(PyObject_Size(obj));
}

int32_t
fn_clbk_ucol_remove_at(PyObject* obj, int32_t index)
{
    PyShRef popped(call_with_index(obj, PyWrpIdList_Pop, index));
    return popped ? 0 : index_failure();
}

int32_t
fn_clbk_ucol_clear(PyObject* obj)
{
    PyShRef result(PyObject_CallMethodNoArgs(obj, PyWrpIdList_Clear));
    return result ? 0 : -1;
}

int32_t
fn_clbk_ucol_get_enumerator(PyObject* obj, PyObject** iterator)
{
    PyObject* it = PyObject_GetIter(obj);
    if (it == nullptr) {
        if (!PyErr_Occurred())
            marshal_fail_typename(PyExc_TypeError, "No iterator in '%s'", obj);
        return -1;
    }
    *iterator = it;
    return 0;
}

int32_t
fn_clbk_ucol_get_unicode_bytes(PyObject* obj, PyStringArg* text)
{
    if (!PyUnicode_Check(obj)) {
        marshal_fail_typename(PyExc_TypeError, "can't build String from '%s'", obj);
        return -1;
    }
    return fn_conv_py_string_to_clr_string_value(obj, text) ? 0 : -1;
}

int32_t
fn_clbk_iter_next(PyObject* iterator, PyObject** item, VariantArg* variant)
{
    PyObject* next = PyIter_Next(iterator);
    if (next == nullptr)
        return PyErr_Occurred() ? 2 : 1;
    return hand_out_item(next, item, variant) == 0 ? 0 : 2;
}

int32_t
fn_clbk_olist_get_item(PyObject* list, int32_t index, PyObject** item, VariantArg* variant)
{
    PyObject* borrowed = PyList_GetItem(list, index);
    if (borrowed == nullptr)
        return index_failure();
    return hand_out_item(Py_NewRef(borrowed), item, variant);
}

int32_t
fn_clbk_olist_set_item(PyObject* list, int32_t index, PyObject* item)
{
    return PyList_SetItem(list, index, item) == 0 ? 0 : index_failure();
}

int32_t
fn_clbk_olist_add(PyObject* list, PyObject* item)
{
    if (PyList_Append(list, item) < 0)
        return -1;
    return length_result(PyList_GET_SIZE(list));
}

int32_t
fn_clbk_olist_insert(PyObject* list, int32_t index, PyObject* item)
{
    return PyList_Insert(list, index, item) == 0 ? 0 : index_failure();
}

int32_t
fn_clbk_olist_remove(PyObject* list, PyObject* item)
{
    PyShRef result(PyObject_CallMethodOneArg(list, PyWrpIdList_Remove, item));
    return result ? 0 : -1;
}

int32_t
fn_clbk_olist_contains(PyObject* list, PyObject* item)
{
    PyShRef index(PyObject_CallMethodOneArg(list, PyWrpIdList_Index, item));
    if (index)
        return 1;
    if (!PyErr_ExceptionMatches(PyExc_ValueError))
        return -1;
    PyErr_Clear();
    return 0;
}

int32_t
fn_clbk_olist_index_of(PyObject* list, PyObject* item)
{
    PyShRef index(PyObject_CallMethodOneArg(list, PyWrpIdList_Index, item));
    if (!index) {
        if (!PyErr_ExceptionMatches(PyExc_ValueError))
            return -2;
        PyErr_Clear();
        return -1;
    }
    Py_ssize_t position = PyLong_AsSsize_t(index.get());
    if (position == -1 && PyErr_Occurred())
        return -2;
    if (position < 0 || position > INT32_MAX)
        return fail_index_range(position);
    return static_cast<int32_t>(position);
}

int32_t
fn_clbk_oseq_get_item(PyObject* seq, int32_t index, PyObject** item, VariantArg* variant)
{
    PyObject* value = PySequence_GetItem(seq, index);
    if (value == nullptr)
        return index_failure();
    return hand_out_item(value, item, variant);
}

int32_t
fn_clbk_oseq_contains(PyObject* seq, PyObject* item)
{
    Py_ssize_t found = find_in_sequence(seq, item);
    if (found == -2)
        return -1;
    return found >= 0 ? 1 : 0;
}

int32_t
fn_clbk_oseq_index_of(PyObject* seq, PyObject* item)
{
    Py_ssize_t found = find_in_sequence(seq, item);
    if (found > INT32_MAX)
        return fail_index_range(found);
    return static_cast<int32_t>(found);
}
