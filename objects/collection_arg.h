// Arguments typed as managed enumerables, collections and lists: a managed collection goes as
// its handle, a Python list, sequence or iterable as itself, and the managed side drives it
// through the collection callbacks for the length of the call.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// How a Python object is lent (the managed side picks its adapter by the tag).
enum PyCollectionTag : int32_t {
    PyCollectionTag_Iterable = 2,   // anything iter() accepts
    PyCollectionTag_List = 14,      // exactly a list: read and written in place
    PyCollectionTag_Sequence = 15,  // another sized sequence: read only
};

// None: tag 0, NULL. A wrapper of a managed object: tag 0 with its handle. A list, a sized
// sequence or (for enumerables) any iterable: its tag and the object, borrowed for the call.
// Anything else: TypeError "can't build IEnumerable value from '%s'", or for collections and
// lists "can't build List value from '%s'". 1, or 0 with an error.
int fn_conv_py_iterable_to_clr_enumerable(PyObject* obj, VariantArg* out);
int fn_conv_py_sequence_to_clr_collection(PyObject* obj, VariantArg* out);
int fn_conv_py_sequence_to_clr_list(PyObject* obj, VariantArg* out);
