#include "objects/collection_arg.h"

#include "marshal/conv_errors.h"
#include "objects/handle_lookup.h"

namespace {

bool
is_sized_sequence(PyObject* obj)
{
    PySequenceMethods* seq = Py_TYPE(obj)->tp_as_sequence;
    return PySequence_Check(obj) && seq != nullptr && seq->sq_length != nullptr;
}

// 1 with *out set, 0 when `obj` is none of the accepted kinds (nothing raised).
int
lend(PyObject* obj, bool iterables, VariantArg* out)
{
    void* handle = nullptr;
    out->value = obj;
    if (obj == Py_None || fn_conv_py_obj_to_clr_refobj_not_null_handle(obj, &handle)) {
        out->tag = 0;
        out->value = handle;
        return 1;
    }
    if (PyList_CheckExact(obj)) {
        out->tag = PyCollectionTag_List;
        return 1;
    }
    if (is_sized_sequence(obj)) {
        out->tag = PyCollectionTag_Sequence;
        return 1;
    }
    if (iterables && Py_TYPE(obj)->tp_iter != nullptr) {
        out->tag = PyCollectionTag_Iterable;
        return 1;
    }
    out->value = nullptr;
    return 0;
}

}  // namespace

int
fn_conv_py_iterable_to_clr_enumerable(PyObject* obj, VariantArg* out)
{
    return lend(obj, true, out) ? 1 : marshal_fail_typename(PyExc_TypeError, "can't build IEnumerable value from '%s'", obj);
}

int
fn_conv_py_sequence_to_clr_collection(PyObject* obj, VariantArg* out)
{
    return lend(obj, false, out) ? 1 : marshal_fail_typename(PyExc_TypeError, "can't build List value from '%s'", obj);
}

int
fn_conv_py_sequence_to_clr_list(PyObject* obj, VariantArg* out)
{
    return lend(obj, false, out) ? 1 : marshal_fail_typename(PyExc_TypeError, "can't build List value from '%s'", obj);
}
