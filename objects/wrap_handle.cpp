#include "objects/wrap_handle.h"

#include "module/ids.h"
#include "objects/derived_object.h"
#include "module/pysh_ref.h"
#include "objects/handle_release.h"
#include "objects/pyhold_api.h"
#include "objects/seal_object.h"

namespace {

constexpr int32_t kTagPythonObject = 2;

[[gnu::cold, gnu::noinline]] PyObject*
fail_and_free(void* handle, PyObject* exc, const char* format, const char* name)
{
    PyShWrp_FreeGcHandlePtr(handle);
    PyErr_Format(exc, format, name);
    return nullptr;
}

PyObject*
python_object_of(const VariantArg& value)
{
    PyObject* obj = static_cast<PyObject*>(value.value);
    return Py_NewRef(obj != nullptr ? obj : Py_None);
}

}  // namespace

PyObject*
fn_conv_clr_sealtp_to_py_sealtp(void* handle, PyTypeObject* type)
{
    if (handle == nullptr)
        Py_RETURN_NONE;
    if (PyShDerivl_HasLayout(type))
        return fn_conv_clr_derivltp_to_py_derivltp(handle, type);  // an interface type: no inline handle
    if (type->tp_basicsize < static_cast<Py_ssize_t>(sizeof(PySealTpObject)))
        return fail_and_free(handle, PyExc_TypeError, "type '%.200s' cannot hold a managed object", type->tp_name);
    PyObject* obj = type->tp_alloc(type, 0);
    if (obj == nullptr) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    reinterpret_cast<PySealTpObject*>(obj)->handle = handle;
    return obj;
}

PyObject*
fn_conv_clr_derivltp_to_py_derivltp(void* handle, PyTypeObject* type)
{
    if (handle == nullptr)
        Py_RETURN_NONE;
    if (PyShSafeTargetHandle_New == nullptr)
        return fail_and_free(handle, PyExc_SystemError, "%s is not loaded", "quorix.pyhold._C_APIF");
    PyShRef safe_handle(PyShSafeTargetHandle_New(handle, type));
    if (!safe_handle) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    // From here the safe handle owns the managed handle: dropping it frees the handle, so no
    // path below frees it a second time.
    PyShRef obj(type->tp_alloc(type, 0));
    if (!obj)
        return nullptr;
    if (PyObject_SetAttr(obj.get(), PyWrpIdMarkattr_Handle, safe_handle.get()) < 0)
        return nullptr;
    return obj.release();
}

PyObject*
fn_conv_clr_twinorgntp_to_py_twinorgntp(const VariantArg& value, PyTypeObject* type)
{
    if (value.tag == kTagPythonObject)
        return python_object_of(value);
    return fn_conv_clr_derivltp_to_py_derivltp(value.value, type);
}

PyObject*
fn_conv_clr_twinorgntp_to_py_twinorgntp_of_externtp(const VariantArg& value, PyTypeObject* type)
{
    if (value.tag == kTagPythonObject)
        return python_object_of(value);
    if (PyType_HasFeature(type, Py_TPFLAGS_HEAPTYPE))
        return fn_conv_clr_derivltp_to_py_derivltp(value.value, type);
    PyObject* obj = fn_conv_clr_sealtp_to_py_sealtp(value.value, type);
    if (obj != nullptr && obj != Py_None && value.tag == HandleKind_Struct)
        reinterpret_cast<PySealTpObject*>(obj)->handle_kind = HandleKind_Struct;
    return obj;
}
