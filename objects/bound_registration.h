// The registration steps of generated types: each readies or builds one type and adds it to
// its module. 0, or -1 with an ImportError carrying the step's code.
#pragma once

#include <Python.h>

// Sets the base (NULL keeps `object`), readies the type (-1015), marks it as a host type of
// objects or structures (-1016), sets _qrxsc2p_handle = Ellipsis (-1022), runs `extra`
// (static attributes and mixed methods; its own error) and adds it under `name` (-1014).
int PyShBound_RegisterType(PyObject* module, PyTypeObject* type, PyTypeObject* base, bool is_struct,
                           int (*extra)(), const char* name);

// Calls `build` (-1013 with `full_name`), keeps the class in *slot (an extra reference for
// the process's life) and adds it under `name` (-1014).
int PyShBound_RegisterEnum(PyObject* module, PyObject* (*build)(), PyObject** slot, const char* full_name,
                           const char* name);

// Installs static-attribute descriptors into the readied `type`; -1020 names the attribute.
int PyShBound_InstallStaticFields(PyTypeObject* type, PyGetSetDef* const* fields, Py_ssize_t count);

// One Python name with a static and an instance form. The static form is called without a
// receiver, so its flags carry no METH_STATIC.
struct PyShMixedMethodDef {
    PyMethodDef static_form;
    PyMethodDef instance_form;
};

// Installs a mixed-method descriptor per entry into the readied `type`, under the instance
// form's name; -1020 names the method.
int PyShBound_InstallMixedMethods(PyTypeObject* type, PyShMixedMethodDef* methods, Py_ssize_t count);
