#include "objects/bound_class.h"

#include "objects/derived_object.h"

#include <cstring>

#include "host/exchange_host.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/handle_lookup.h"
#include "objects/handle_release.h"
#include "objects/wrap_handle.h"
#include "objects/wrapper_slots.h"

namespace {

constexpr int32_t kTagPythonObject = 2;

[[gnu::cold, gnu::noinline]] PyObject* fail_no_result() {
    PyErr_SetString(PyExc_SystemError, "a managed call returned no object and raised no error");
    return nullptr;
}

}  // namespace

PyObject* PyShBound_Alloc(PyTypeObject* type) {
    PyObject* self = type->tp_alloc(type, 0);
    if (self != nullptr)
        PyShBound_SetHandle(self, nullptr, HandleKind_Object);
    return self;
}

void PyShBound_Attach(PyObject* self, void* handle, int32_t kind) {
    auto* obj = reinterpret_cast<PySealTpObject*>(self);
    void* old = obj->handle;
    int32_t old_kind = obj->handle_kind;
    PyShBound_SetHandle(self, handle, kind);
    if (old != nullptr) {
        const ExchangeHost& host = ExchangeHost::get_instance();
        old_kind == HandleKind_Struct ? host.free_struct(old) : host.free_instance(old);
    }
}

PyObject* PyShBound_WrapAsObject(void* handle) {
    if (handle == nullptr)
        Py_RETURN_NONE;
    PyObject* const names[] = {PyWrpIdUcsO_Module_quorix_pyintro, PyWrpIdUcsO_Type_Object, nullptr};
    PyShRef type(PyShImport_ImportTypeEx(names));
    if (!type) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    return fn_conv_clr_sealtp_to_py_sealtp(handle, reinterpret_cast<PyTypeObject*>(type.get()));
}

void PyShBound_DescribeType(PyTypeObject* type, const char* tp_name, bool is_struct, PyMethodDef* methods,
                            PyGetSetDef* getset, newfunc tp_new, initproc init) {
    type->tp_name = tp_name;
    type->tp_basicsize = sizeof(PySealTpObject);
    type->tp_flags = Py_TPFLAGS_DEFAULT;
    type->tp_dealloc = is_struct ? wrapClrStruct_tp_dealloc : wrapClrObject_tp_dealloc;
    type->tp_hash = is_struct ? wrapClrStruct_tp_hash : wrapClrObject_tp_hash;
    type->tp_richcompare = is_struct ? wrapClrStruct_tp_richcompare : wrapClrObject_tp_richcompare;
    type->tp_str = is_struct ? wrapClrStruct_tp_str : wrapClrObject_tp_str;
    type->tp_methods = methods;
    type->tp_getset = getset;
    type->tp_new = tp_new;
    type->tp_init = init != nullptr ? init : wrapClrObject_tp_init_fault;
}

int PyShBound_FailUnbound(PyObject* self) {
    PyErr_Format(PyExc_TypeError, "this %s object has no managed object: it was made by __new__ without __init__",
                 Py_TYPE(self)->tp_name);
    return 0;
}

int PyShBound_FailConv(const char* name, PyObject* obj) {
    PyErr_Format(PyExc_TypeError, "can't build %s value from '%s'", name, Py_TYPE(obj)->tp_name);
    return 0;
}

int PyShBound_ConvPyToClr(PyObject* obj, PyTypeObject* type, const char* class_name, PyShAssignableTest assignable,
                          void** out) {
    if (obj == Py_None) {
        *out = nullptr;
        return 1;
    }
    VariantArg found = {};
    int has_handle = fn_conv_py_obj_to_clr_gen_not_null_handle(obj, &found);
    if (PyObject_TypeCheck(obj, type)) {
        // An instance made by __new__ alone has no handle: managed code would see a null.
        if (!has_handle || found.value == nullptr)
            return PyShBound_FailUnbound(obj);
        *out = found.value;
        return 1;
    }
    if (has_handle && assignable != nullptr) {
        // A wrapper of another bound type (an implementation of an interface, say).
        int accepted = assignable(found.value);
        if (accepted < 0)
            return 0;
        if (accepted) {
            *out = found.value;
            return 1;
        }
    }
    return PyShBound_FailConv(class_name, obj);
}

PyObject* PyShBound_ConvClrToPy(void* handle, PyTypeObject* type, int32_t kind) {
    if (PyShDerivl_HasLayout(type))
        return fn_conv_clr_derivltp_to_py_derivltp(handle, type);
    PyObject* obj = fn_conv_clr_sealtp_to_py_sealtp(handle, type);
    if (obj != nullptr && handle != nullptr)
        reinterpret_cast<PySealTpObject*>(obj)->handle_kind = kind;
    return obj;
}

PyObject* PyShBound_PassResult(PyObject* result) {
    if (PyErr_Occurred()) {
        Py_XDECREF(result);
        return nullptr;
    }
    return result != nullptr ? result : fail_no_result();
}

PyObject* PyShBound_StaticValue(const VariantArg& value, PyTypeObject* type, int32_t kind) {
    if (PyErr_Occurred()) {
        if (value.tag == kTagPythonObject)
            Py_XDECREF(static_cast<PyObject*>(value.value));
        else
            PyShWrp_FreeGcHandlePtr(value.value);
        return nullptr;
    }
    if (value.tag == kTagPythonObject)
        return value.value != nullptr ? static_cast<PyObject*>(value.value) : fail_no_result();
    if (type == nullptr) {
        PyShWrp_FreeGcHandlePtr(value.value);
        return fail_no_result();
    }
    return PyShBound_ConvClrToPy(value.value, type, kind);
}

int PyShBound_RefuseDelete(PyObject* self, const char* name) {
    // The simple name, as the interpreter shows a class: "Font", not "quorix.folio.Font".
    const char* type_name = Py_TYPE(self)->tp_name;
    if (const char* dot = std::strrchr(type_name, '.'))
        type_name = dot + 1;
    PyErr_Format(PyExc_AttributeError, "'%.100s' object does not support deletion of '%s' property", type_name,
                 name);
    return -1;
}
