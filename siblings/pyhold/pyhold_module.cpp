// quorix.pyhold: safe handles and cast results, and the capsule through which the other
// modules of the family create and recognise them.
#include "siblings/pyhold/pyhold.h"

#include "siblings/sibling_support.h"

static const PyHoldCApi pyhold_capi = {
    PyShCastOpResult_New,
    PyShCastOpResult_IsType,
    PyShSafeTargetHandle_New,
    PyShSafeTargetHandle_IsType,
    PyShSafeTargetHandle_SetReleaser,
    PyShTargetHandle_Free,
};

PyDoc_STRVAR(pyhold_doc, "Owned handles of managed objects and results of managed casts.");

static PyModuleDef pyhold_module = {
    PyModuleDef_HEAD_INIT,
    "quorix.pyhold",  // m_name
    pyhold_doc,       // m_doc
    -1,               // m_size: all state is process-wide
    nullptr,          // m_methods
};

PyMODINIT_FUNC
PyInit_pyhold(void)
{
    PyShRef module(PyModule_Create(&pyhold_module));
    if (!module) {
        return nullptr;
    }
    if (PySib_AddVersionAttributes(module.get(), "quorix.pyhold._ModuleVersionType") < 0) {
        return nullptr;
    }
    if (PyModule_AddType(module.get(), &PySafeTargetHandle_Type) < 0 ||
        PyModule_AddType(module.get(), &PyCastOpResult_Type) < 0) {
        return nullptr;
    }
    // The table is read-only; the capsule interface only speaks void*.
    PyShRef capsule(PyCapsule_New(const_cast<PyHoldCApi*>(&pyhold_capi), PYHOLD_CAPSULE_NAME,
                                  nullptr));
    if (!capsule || PyModule_AddObjectRef(module.get(), "_C_APIF", capsule.get()) < 0) {
        return nullptr;
    }
    return module.release();
}
