#include "objects/type_arg.h"

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/handle_release.h"
#include "objects/seal_object.h"
#include "objects/wrap_handle.h"

namespace {

[[gnu::cold, gnu::noinline]] int refuse(PyObject* obj) {
    PyErr_Format(PyExc_TypeError, "can't build Type value from '%s'", Py_TYPE(obj)->tp_name);
    return 0;
}

// The managed type a class stands for: a new reference to its _type_of() result, or NULL
// (no error) when the class is no managed type or cannot tell.
PyObject* type_of_class(PyObject* cls) {
    PyShRef probe(PyObject_CallMethodNoArgs(cls, PyWrpIdCastMeth_AssertTp));
    if (!probe) {
        PyErr_Clear();
        return nullptr;
    }
    if (probe.get() == Py_False)
        return nullptr;
    PyObject* type = PyObject_CallMethodNoArgs(cls, PyWrpIdCastMeth_TypeOf);
    if (type == nullptr)
        PyErr_Clear();
    return type;
}

PyObject* import_type_class() {
    PyObject* const names[] = {PyWrpIdUcsO_Module_quorix_pyintro, PyWrpIdUcsO_Type_Type, nullptr};
    return PyShImport_ImportTypeEx(names);
}

}  // namespace

PyObject* wrpPye_conv_clr_to_py_FFFFFFF_Type(void* handle) {
    PyShRef type_class(import_type_class());
    if (!type_class) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    return fn_conv_clr_sealtp_to_py_sealtp(handle, reinterpret_cast<PyTypeObject*>(type_class.get()));
}

int wrpPye_conv_py_to_clr_FFFFFFF_Type(PyObject* obj, PyEphObjArg* out) {
    PyShRef type_class(import_type_class());
    if (!type_class)
        return 0;
    auto* type = reinterpret_cast<PyTypeObject*>(type_class.get());
    out->handle = nullptr;
    if (obj == Py_None)
        return 1;
    PyObject* arg = obj;
    if (!PyObject_TypeCheck(arg, type) && PyType_Check(arg) && PyObject_HasAttr(arg, PyWrpIdCastMeth_AssertTp)) {
        PyObject* managed = type_of_class(arg);
        if (managed != nullptr) {
            Py_XSETREF(out->keep_alive, managed);
            arg = managed;
        }
    }
    if (!PyObject_TypeCheck(arg, type))
        return refuse(obj);
    out->handle = reinterpret_cast<PySealTpObject*>(arg)->handle;
    return 1;
}
