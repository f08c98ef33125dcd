#include "objects/handle_lookup.h"

#include "module/ids.h"
#include "module/pysh_ref.h"
#include "objects/pyhold_api.h"
#include "objects/seal_object.h"

namespace {

// The markers alone are no proof: any Python class can carry them. An inline handle is read
// only from an instance of a type built in C with the wrapper layout and a host marker of its
// own; classes defined in Python (heap types) qualify through such a base only, and no Python
// code can add the marker to a static type's dictionary afterwards.
bool
has_inline_layout(PyObject* obj)
{
    PyTypeObject* type = Py_TYPE(obj);
    while (type != nullptr && PyType_HasFeature(type, Py_TPFLAGS_HEAPTYPE))
        type = type->tp_base;
    if (type == nullptr || type->tp_basicsize < static_cast<Py_ssize_t>(sizeof(PySealTpObject)))
        return false;
    PyObject* dict = type->tp_dict;
    return dict != nullptr && PyDict_GetItemWithError(dict, PyWrpIdMarkattr_QuorixClrHost) != nullptr;
}

bool
is_safe_handle(PyObject* obj)
{
    return PyShSafeTargetHandle_IsType != nullptr && PyShSafeTargetHandle_IsType(obj) > 0;
}

void*
safe_handle_value(PyObject* safe_handle)
{
    return reinterpret_cast<PySafeTargetHandleObject*>(safe_handle)->handle;
}

// The type-dictionary marker of wrapper types: Py_None (objects), Py_Ellipsis (structures),
// or NULL (not a wrapper type; any lookup error cleared). Borrowed.
PyObject*
host_marker_of(PyObject* obj)
{
    PyObject* dict = Py_TYPE(obj)->tp_dict;
    if (dict == nullptr)
        return nullptr;
    PyObject* marker = PyDict_GetItemWithError(dict, PyWrpIdMarkattr_QuorixClrHost);
    if (marker == nullptr)
        PyErr_Clear();
    return marker;
}

// The `_qrxsc2p_handle` attribute of `obj`, or an empty owner (lookup error cleared).
PyShRef
handle_attribute_of(PyObject* obj)
{
    PyShRef attr(PyObject_GetAttr(obj, PyWrpIdMarkattr_Handle));
    if (!attr)
        PyErr_Clear();
    return attr;
}

}  // namespace

int
fn_conv_py_obj_to_clr_gen_handle(PyObject* obj, VariantArg* out)
{
    if (obj == Py_None) {
        out->tag = 0;
        out->value = nullptr;
        return 1;
    }
    return fn_conv_py_obj_to_clr_gen_not_null_handle(obj, out);
}

int
fn_conv_py_obj_to_clr_gen_not_null_handle(PyObject* obj, VariantArg* out)
{
    PySealTpObject* inline_obj = reinterpret_cast<PySealTpObject*>(obj);
    {
        PyShRef attr = handle_attribute_of(obj);
        if (attr) {
            if (attr.get() == Py_Ellipsis) {
                if (has_inline_layout(obj) && inline_obj->handle != nullptr) {
                    out->tag = inline_obj->handle_kind;
                    out->value = inline_obj->handle;
                    return 1;
                }
            }
            else if (is_safe_handle(attr.get())) {
                void* handle = safe_handle_value(attr.get());
                if (handle != nullptr) {
                    out->tag = 0;
                    out->value = handle;
                    return 1;
                }
            }
        }
    }
    PyObject* marker = host_marker_of(obj);
    if ((marker == Py_None || marker == Py_Ellipsis) && has_inline_layout(obj)) {
        out->tag = marker == Py_None ? 0 : 1;
        out->value = inline_obj->handle;
        return 1;
    }
    return 0;
}

int
fn_conv_py_obj_to_clr_refobj_not_null_handle(PyObject* obj, void** handle)
{
    PySealTpObject* inline_obj = reinterpret_cast<PySealTpObject*>(obj);
    {
        PyShRef attr = handle_attribute_of(obj);
        if (attr) {
            if (attr.get() == Py_Ellipsis) {
                if (has_inline_layout(obj) && inline_obj->handle != nullptr &&
                    inline_obj->handle_kind == HandleKind_Object) {
                    *handle = inline_obj->handle;
                    return 1;
                }
            }
            else if (is_safe_handle(attr.get())) {
                void* value = safe_handle_value(attr.get());
                if (value != nullptr) {
                    *handle = value;
                    return 1;
                }
            }
        }
    }
    if (host_marker_of(obj) == Py_None && has_inline_layout(obj)) {
        *handle = inline_obj->handle;
        return 1;
    }
    return 0;
}

int
fn_get_clr_obj_handle_from_attr(PyObject* obj, void** handle)
{
    PyShRef attr = handle_attribute_of(obj);
    if (!attr || !is_safe_handle(attr.get()))
        return 0;
    void* value = safe_handle_value(attr.get());
    if (value == nullptr)
        return 0;
    *handle = value;
    return 1;
}
