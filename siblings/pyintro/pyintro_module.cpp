// quorix.pyintro: the managed reflection roots (System.Type, System.Object, System.Enum)
// as wrapper types that native code instantiates; Python cannot construct them.
#include "siblings/sealed_placeholder.h"

static PyTypeObject PyIntroType_Type = PySibSealed_MakeType(
    "quorix.pyintro.Type", "A managed type object (System.Type).");
static PyTypeObject PyIntroObject_Type = PySibSealed_MakeType(
    "quorix.pyintro.Object", "A managed object of no more specific bound type (System.Object).");
static PyTypeObject PyIntroEnum_Type = PySibSealed_MakeType(
    "quorix.pyintro.Enum", "A boxed managed enumeration value (System.Enum).");

PyDoc_STRVAR(pyintro_doc, "Managed reflection types: Type, Object and Enum.");

static PyModuleDef pyintro_module = {
    PyModuleDef_HEAD_INIT,
    "quorix.pyintro",  // m_name
    pyintro_doc,       // m_doc
    -1,                // m_size: all state is process-wide
    nullptr,           // m_methods
};

PyMODINIT_FUNC
PyInit_pyintro(void)
{
    PyShRef module(PyModule_Create(&pyintro_module));
    if (!module) {
        return nullptr;
    }
    if (PySib_AddVersionAttributes(module.get(), "quorix.pyintro._ModuleVersionType") < 0 ||
        PySibSealed_AddType(module.get(), &PyIntroType_Type, HandleKind_Object) < 0 ||
        PySibSealed_AddType(module.get(), &PyIntroObject_Type, HandleKind_Object) < 0 ||
        PySibSealed_AddType(module.get(), &PyIntroEnum_Type, HandleKind_Object) < 0) {
        return nullptr;
    }
    return module.release();
}
