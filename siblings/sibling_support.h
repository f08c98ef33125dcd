// Pieces every sibling extension module of the family shares: its version pair and the
// refusing constructor of types that only native code may instantiate.
#pragma once

#include <Python.h>

#include "module/pysh.h"
#include "module/pysh_ref.h"

// The version these siblings publish, and the oldest version a dependant may have been
// built against and still load them.
constexpr int kSiblingVersion[4] = {25, 8, 0, 0};
constexpr const char kSiblingVersionText[] = "25.8.0.0";
constexpr int kSiblingThreshold[4] = {22, 6, 0, 0};
constexpr const char kSiblingThresholdText[] = "22.6.0.0";

// tp_new of types without a Python constructor; always NULL with a TypeError.
[[gnu::cold, gnu::noinline]] inline PyObject*
PySib_tp_new_refused(PyTypeObject*, PyObject*, PyObject*)
{
    PyErr_SetString(PyExc_TypeError, "type has no available constructor");
    return nullptr;
}

// Adds _ModuleVersionType, VERSION and _BACKWARD_COMPATIBILITY_THRESHOLD to `module`;
// 0, or -1 with an exception set. `version_type_name` must be a static string.
inline int
PySib_AddVersionAttributes(PyObject* module, const char* version_type_name)
{
    // Each sibling links its own copy of the version type; naming it must precede readying.
    PyShVersion_SetTypeName(version_type_name);
    if (PyShModule_AddType(module, PyShVersion_Type(), "_ModuleVersionType") < 0) {
        return -1;
    }
    PyShRef version(PyShVersionAttr_Create(kSiblingVersion[0], kSiblingVersion[1],
                                           kSiblingVersion[2], kSiblingVersion[3],
                                           kSiblingVersionText));
    if (!version || PyModule_AddObjectRef(module, "VERSION", version.get()) < 0) {
        return -1;
    }
    PyShRef threshold(PyShVersionAttr_Create(kSiblingThreshold[0], kSiblingThreshold[1],
                                             kSiblingThreshold[2], kSiblingThreshold[3],
                                             kSiblingThresholdText));
    if (!threshold ||
        PyModule_AddObjectRef(module, "_BACKWARD_COMPATIBILITY_THRESHOLD", threshold.get()) < 0) {
        return -1;
    }
    return 0;
}
