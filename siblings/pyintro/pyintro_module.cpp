// quorix.pyintro: the managed reflection roots (System.Type, System.Object, System.Enum) as
// generated bindings. Importing it never starts the runtime; the first managed call does.
#include "siblings/bound_sibling.h"

const char* const kPySibInteropAssembly = "WrpInterop.Quorix.PyIntro";

int PySib_StartHost() { return PySib_StartHostOnce(); }

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
    return PySib_CreateBoundModule(&pyintro_module, "quorix.pyintro._ModuleVersionType");
}
