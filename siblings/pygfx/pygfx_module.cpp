// quorix.pygfx: the managed drawing structures (System.Drawing colors, points, sizes and
// rectangles) as generated bindings of structures. Importing it never starts the runtime; the
// first managed call does.
#include "siblings/bound_sibling.h"

const char* const kPySibInteropAssembly = "WrpInterop.Quorix.PyGfx";

int PySib_StartHost() { return PySib_StartHostOnce(); }

PyDoc_STRVAR(pygfx_doc, "Managed drawing structures: colors, points, sizes and rectangles.");

static PyModuleDef pygfx_module = {
    PyModuleDef_HEAD_INIT,
    "quorix.pygfx",  // m_name
    pygfx_doc,       // m_doc
    -1,              // m_size: all state is process-wide
    nullptr,         // m_methods
};

PyMODINIT_FUNC
PyInit_pygfx(void)
{
    return PySib_CreateBoundModule(&pygfx_module, "quorix.pygfx._ModuleVersionType");
}
