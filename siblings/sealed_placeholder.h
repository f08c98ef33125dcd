// Placeholder types for managed types that native code wraps before their generated
// bindings exist: the wrapper layout (PySealTpObject), no Python constructor, and the
// inline handle freed through quorix.pyhold when the wrapper goes away.
#pragma once

#include <Python.h>

#include "objects/seal_object.h"
#include "siblings/pyhold/pyhold_capi.h"
#include "siblings/sibling_support.h"

// This extension module's view of the quorix.pyhold table, taken on first need: importing
// it eagerly would make this module fail whenever quorix.pyhold does.
inline const PyHoldCApi* sealed_placeholder_capi = nullptr;

// The handle interface, or NULL with the import error reported as unraisable.
inline const PyHoldCApi*
PySibSealed_Capi()
{
    if (sealed_placeholder_capi == nullptr) {
        PyObject *type, *value, *traceback;
        PyErr_Fetch(&type, &value, &traceback);
        sealed_placeholder_capi = PyHoldCApi_Import();
        if (sealed_placeholder_capi == nullptr) {
            PyErr_WriteUnraisable(nullptr);
        }
        PyErr_Restore(type, value, traceback);
    }
    return sealed_placeholder_capi;
}

inline void
PySibSealed_tp_dealloc(PyObject* self)
{
    auto* wrapper = reinterpret_cast<PySealTpObject*>(self);
    void* handle = wrapper->handle;
    wrapper->handle = nullptr;
    if (handle != nullptr) {
        // Without the interface the handle cannot be freed: kept rather than crash.
        if (const PyHoldCApi* capi = PySibSealed_Capi()) {
            capi->target_handle_free(handle);
        }
    }
    Py_TYPE(self)->tp_free(self);
}

// A static type object for one placeholder; `name` and `doc` must be static strings.
inline PyTypeObject
PySibSealed_MakeType(const char* name, const char* doc)
{
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = name;
    type.tp_basicsize = sizeof(PySealTpObject);
    type.tp_dealloc = PySibSealed_tp_dealloc;
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    type.tp_doc = doc;
    type.tp_new = PySib_tp_new_refused;
    return type;
}

// Readies `type`, marks it as a wrapper of managed objects (kind 0) or structures (kind 1)
// whose instances carry their handle inline, and adds it to `module`; 0 or -1.
inline int
PySibSealed_AddType(PyObject* module, PyTypeObject* type, HandleKind kind)
{
    if (PyType_Ready(type) < 0) {
        return -1;
    }
    PyObject* host_marker = kind == HandleKind_Struct ? Py_Ellipsis : Py_None;
    if (PyDict_SetItemString(type->tp_dict, "_quorix_clr_host", host_marker) < 0 ||
        PyDict_SetItemString(type->tp_dict, "_qrxsc2p_handle", Py_Ellipsis) < 0) {
        return -1;
    }
    PyType_Modified(type);
    return PyModule_AddType(module, type);
}
