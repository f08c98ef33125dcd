// The Python object of every bound managed class or structure: it owns one GC handle.
#pragma once

#include <Python.h>
#include <cstdint>

enum HandleKind : int32_t {
    HandleKind_Object = 0,  // a managed reference-type object
    HandleKind_Struct = 1,  // a boxed managed structure
};

struct PySealTpObject {
    PyObject_HEAD
    void* handle;         // managed GC handle, owned; NULL only transiently
    int32_t handle_kind;  // HandleKind; copied into a VariantArg tag when passed generically
};
