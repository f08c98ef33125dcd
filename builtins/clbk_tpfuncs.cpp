#include "builtins/tpfuncs_callbacks.h"

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/handle_release.h"
#include "objects/pyhold_api.h"
#include "objects/wrap_handle.h"

namespace {

[[gnu::cold, gnu::noinline]] void*
fail_not_safe_handle(PyObject* method, PyObject* result)
{
    PyErr_Format(PyExc_TypeError, "The %U method is expected to return a target object safe handle, not '%.200s'",
                 method, Py_TYPE(result)->tp_name);
    return nullptr;
}

[[gnu::cold, gnu::noinline]] void*
fail_null_handle(PyObject* method)
{
    PyErr_Format(PyExc_ValueError, "The method '%U' returned a handle that is not set to an object instance (NULL)",
                 method);
    return nullptr;
}

void*
quiet_failure(int32_t quiet)
{
    if (quiet)
        PyErr_Clear();
    return nullptr;
}

void*
call_binding_method(PyObject* const* names, PyObject* method, int32_t quiet, PyObject** holder)
{
    PyShRef type(PyShImport_ImportTypeEx(names));
    if (!type)
        return quiet_failure(quiet);
    PyShRef result(PyObject_CallMethodNoArgs(type.get(), method));
    if (!result)
        return quiet_failure(quiet);
    if (PyShSafeTargetHandle_IsType == nullptr || PyShSafeTargetHandle_IsType(result.get()) <= 0)
        return quiet ? nullptr : fail_not_safe_handle(method, result.get());
    void* handle = reinterpret_cast<PySafeTargetHandleObject*>(result.get())->handle;
    if (handle == nullptr)
        return quiet ? fail_null_handle(method) : nullptr;
    *holder = result.release();
    return handle;
}

}  // namespace

void*
fn_gettpextrabind_of(int32_t index, int32_t quiet, PyObject** holder)
{
    if (PyWrpIdUcsbTpNamesGlobAreaSign == nullptr || index < 0 || index >= PyWrpIdUcsbTpNames_Count) {
        PyErr_Format(PyExc_IndexError, "type-name vector %d is not known", static_cast<int>(index));
        return quiet_failure(quiet);
    }
    return call_binding_method(PyWrpIdUcsbTpNamesGlobAreaSign[index], PyWrpIdCastMeth_GetTpExtraBind, quiet, holder);
}

void*
fn_gettpextratie(PyObject* const* names, int32_t quiet, PyObject** holder)
{
    return call_binding_method(names, PyWrpIdCastMeth_GetTpExtraTie, quiet, holder);
}

PyObject*
fn_from_obj_and_pytype(PyObject* const* names, const VariantArg* value)
{
    PyShRef type(PyShImport_ImportTypeEx(names));
    if (!type) {
        if (value->tag == 0)
            PyShWrp_FreeGcHandlePtr(value->value);
        return nullptr;
    }
    return fn_conv_clr_twinorgntp_to_py_twinorgntp_of_externtp(*value, reinterpret_cast<PyTypeObject*>(type.get()));
}

PyObject*
fn_from_enum_and_pytype(PyObject* const* names, PyObject* value)
{
    PyShRef owned_value(value);
    PyShRef type(PyShImport_ImportTypeEx(names));
    if (!type)
        return nullptr;
    return PyObject_CallOneArg(type.get(), value);
}
