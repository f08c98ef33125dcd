// quorix.pygfx: the managed drawing structures (System.Drawing) as wrapper types that
// native code instantiates; Python cannot construct them.
#include "siblings/sealed_placeholder.h"

static PyTypeObject PyGfxColor_Type = PySibSealed_MakeType(
    "quorix.pygfx.Color", "A managed ARGB color (System.Drawing.Color).");
static PyTypeObject PyGfxPoint_Type = PySibSealed_MakeType(
    "quorix.pygfx.Point", "A managed integer point (System.Drawing.Point).");
static PyTypeObject PyGfxPointF_Type = PySibSealed_MakeType(
    "quorix.pygfx.PointF", "A managed floating-point point (System.Drawing.PointF).");
static PyTypeObject PyGfxSize_Type = PySibSealed_MakeType(
    "quorix.pygfx.Size", "A managed integer size (System.Drawing.Size).");
static PyTypeObject PyGfxSizeF_Type = PySibSealed_MakeType(
    "quorix.pygfx.SizeF", "A managed floating-point size (System.Drawing.SizeF).");
static PyTypeObject PyGfxRectangle_Type = PySibSealed_MakeType(
    "quorix.pygfx.Rectangle", "A managed integer rectangle (System.Drawing.Rectangle).");
static PyTypeObject PyGfxRectangleF_Type = PySibSealed_MakeType(
    "quorix.pygfx.RectangleF",
    "A managed floating-point rectangle (System.Drawing.RectangleF).");

static PyTypeObject* const pygfx_types[] = {
    &PyGfxColor_Type, &PyGfxPoint_Type, &PyGfxPointF_Type, &PyGfxSize_Type,
    &PyGfxSizeF_Type, &PyGfxRectangle_Type, &PyGfxRectangleF_Type,
};

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
    PyShRef module(PyModule_Create(&pygfx_module));
    if (!module) {
        return nullptr;
    }
    if (PySib_AddVersionAttributes(module.get(), "quorix.pygfx._ModuleVersionType") < 0) {
        return nullptr;
    }
    for (PyTypeObject* type : pygfx_types) {
        if (PySibSealed_AddType(module.get(), type, HandleKind_Struct) < 0) {
            return nullptr;
        }
    }
    return module.release();
}
