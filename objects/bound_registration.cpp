#include "objects/bound_registration.h"

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/host_markattr.h"

namespace {

[[gnu::cold, gnu::noinline]] int fail(int code, const char* name) {
    PyShlErr_TypeInitializationInternalError(code, name);
    return -1;
}

[[gnu::cold, gnu::noinline]] int fail(int code, const char* first, const char* second) {
    PyShlErr_TypeInitializationInternalError(code, first, second);
    return -1;
}

// Adds a new reference to `obj` to the module; 0, or -1 with the -1014 error.
int add(PyObject* module, PyObject* obj, const char* name, const char* shown_name) {
    Py_INCREF(obj);
    if (PyModule_AddObject(module, name, obj) < 0) {
        Py_DECREF(obj);
        return fail(-1014, PyModule_GetName(module), shown_name);
    }
    return 0;
}

// The functional enum call guesses the defining module from the caller's frame; the class
// belongs to the module it is added to, which is where pickle and help() look for it. Where
// the guess failed, enum also blocked pickling; lift that. 0, or -1 with an error.
int set_enum_module(PyObject* cls, PyObject* module) {
    PyShRef name(PyModule_GetNameObject(module));
    if (!name || PyObject_SetAttrString(cls, "__module__", name.get()) < 0)
        return -1;
    PyObject* dict = reinterpret_cast<PyTypeObject*>(cls)->tp_dict;
    if (PyDict_GetItemString(dict, "__reduce_ex__") != nullptr && PyObject_DelAttrString(cls, "__reduce_ex__") < 0)
        return -1;
    return 0;
}

}  // namespace

int PyShBound_RegisterType(PyObject* module, PyTypeObject* type, PyTypeObject* base, bool is_struct,
                           int (*extra)(), const char* name) {
    if (base != nullptr)
        type->tp_base = base;
    if (PyType_Ready(type) < 0)
        return fail(-1015, type->tp_name);
    int marked = is_struct ? fn_set_stc_type_host_markattr(type) : fn_set_obj_type_host_markattr(type);
    if (!marked)
        return fail(-1016, type->tp_name);
    if (PyObject_GenericSetAttr(reinterpret_cast<PyObject*>(type), PyWrpIdMarkattr_Handle, Py_Ellipsis) != 0)
        return fail(-1022, type->tp_name);
    if (extra != nullptr && extra() < 0)
        return -1;
    return add(module, reinterpret_cast<PyObject*>(type), name, type->tp_name);
}

int PyShBound_RegisterEnum(PyObject* module, PyObject* (*build)(), PyObject** slot, const char* full_name,
                           const char* name) {
    PyObject* cls = build();
    if (cls == nullptr)
        return fail(-1013, full_name);
    Py_XSETREF(*slot, cls);
    if (set_enum_module(cls, module) < 0)
        return fail(-1013, full_name);
    return add(module, cls, name, full_name);
}

int PyShBound_InstallStaticFields(PyTypeObject* type, PyGetSetDef* const* fields, Py_ssize_t count) {
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyShRef descr(PyShDescr_NewStaticField(type, fields[i]));
        if (!descr || PyDict_SetItemString(type->tp_dict, fields[i]->name, descr.get()) < 0)
            return fail(-1020, type->tp_name, fields[i]->name);
    }
    PyType_Modified(type);
    return 0;
}

int PyShBound_InstallMixedMethods(PyTypeObject* type, PyShMixedMethodDef* methods, Py_ssize_t count) {
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyMethodDef* instance_form = &methods[i].instance_form;
        PyShRef descr(PyShDescr_NewMixedMethod(type, &methods[i].static_form, instance_form));
        if (!descr || PyDict_SetItemString(type->tp_dict, instance_form->ml_name, descr.get()) < 0)
            return fail(-1020, type->tp_name, instance_form->ml_name);
    }
    PyType_Modified(type);
    return 0;
}
