// The native interface of quorix.pyhold, published as the capsule "quorix.pyhold._C_APIF".
// The capsule pointer designates a PyHoldCApi: a table of function pointers whose slot
// order is fixed for every module of the family. Append only; never reorder.
#pragma once

#include <Python.h>

#define PYHOLD_CAPSULE_NAME "quorix.pyhold._C_APIF"

// Frees one managed GC handle; installed by whoever started the runtime.
typedef void (*PyHoldReleaser)(void* handle);

// New cast result, or NULL. `obj` is borrowed and may be NULL (no value).
typedef PyObject* (*PyHoldCastOpResultNewFunc)(int code, PyObject* obj);
// 1 if `obj` is a cast result, else 0.
typedef int (*PyHoldCastOpResultIsTypeFunc)(PyObject* obj);
// New safe handle that owns `handle` from then on, or NULL, in which case the caller
// still owns `handle`. `type` is referenced by the safe handle and may be NULL.
typedef PyObject* (*PyHoldSafeTargetHandleNewFunc)(void* handle, PyTypeObject* type);
// 1 if `obj` is a safe handle, else 0.
typedef int (*PyHoldSafeTargetHandleIsTypeFunc)(PyObject* obj);
// Installs the function that frees handles (NULL uninstalls); until one is installed,
// handles are kept rather than freed.
typedef void (*PyHoldSafeTargetHandleSetReleaserFunc)(PyHoldReleaser release);
// Frees `handle` through the installed releaser; NULL is ignored. For placeholder types
// of other siblings whose instances carry a handle inline.
typedef void (*PyHoldTargetHandleFreeFunc)(void* handle);

struct PyHoldCApi {
    PyHoldCastOpResultNewFunc cast_op_result_new;                    // [0]
    PyHoldCastOpResultIsTypeFunc cast_op_result_is_type;             // [1]
    PyHoldSafeTargetHandleNewFunc safe_target_handle_new;            // [2]
    PyHoldSafeTargetHandleIsTypeFunc safe_target_handle_is_type;     // [3]
    PyHoldSafeTargetHandleSetReleaserFunc safe_target_handle_set_releaser;  // [4]
    PyHoldTargetHandleFreeFunc target_handle_free;                   // [5]
};
static_assert(sizeof(PyHoldCApi) == 6 * sizeof(void*), "the table is read slot by slot");

// Instance layout of quorix.pyhold.SafeTargetHandle; readers rely on `handle` coming
// first after the header.
struct PySafeTargetHandleObject {
    PyObject_HEAD
    void* handle;        // managed GC handle, owned; NULL means invalid
    PyTypeObject* type;  // owned, or NULL: the Python type the handle was made for
};

// Borrowed table, or NULL with an ImportError; imports quorix.pyhold if needed.
inline const PyHoldCApi*
PyHoldCApi_Import()
{
    // The capsule lookup walks attributes from the top package: the submodule must be imported.
    PyObject* module = PyImport_ImportModule("quorix.pyhold");
    if (module == NULL)
        return NULL;
    Py_DECREF(module);
    return static_cast<const PyHoldCApi*>(PyCapsule_Import(PYHOLD_CAPSULE_NAME, 0));
}
