// quorix.pyfund: foundation types offered to Python code, starting with BytesAsStream.
#include "siblings/pyfund/bytes_stream.h"

#include "siblings/sibling_support.h"

PyDoc_STRVAR(pyfund_doc, "Foundation types: BytesAsStream, an in-memory binary stream.");

static PyModuleDef pyfund_module = {
    PyModuleDef_HEAD_INIT,
    "quorix.pyfund",  // m_name
    pyfund_doc,       // m_doc
    -1,               // m_size: all state is process-wide
    nullptr,          // m_methods
};

PyMODINIT_FUNC
PyInit_pyfund(void)
{
    PyShRef module(PyModule_Create(&pyfund_module));
    if (!module) {
        return nullptr;
    }
    if (PySib_AddVersionAttributes(module.get(), "quorix.pyfund._ModuleVersionType") < 0 ||
        PyModule_AddType(module.get(), &PyBytesAsStream_Type) < 0) {
        return nullptr;
    }
    return module.release();
}
