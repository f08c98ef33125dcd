// The registration steps of generated types: each readies or builds one type and adds it to
// its module. 0, or -1 with an ImportError carrying the step's code.
#pragma once

#include <Python.h>

// Sets the base (NULL keeps `object`), readies the type (-1015), marks it as a host type of
// objects or structures (-1016), sets _qrxsc2p_handle = Ellipsis (-1022), runs `extra`
// (static attributes; its own error) and adds it under `name` (-1014).
int PyShBound_RegisterType(PyObject* module, PyTypeObject* type, PyTypeObject* base, bool is_struct,
                           int (*extra)(), const char* name);

// Calls `build` (-1013 with `full_name`), keeps the class in *slot (an extra reference for
// the process's life) and adds it under `name` (-1014).
int PyShBound_RegisterEnum(PyObject* module, PyObject* (*build)(), PyObject** slot, const char* full_name,
                           const char* name);

// Installs static-attribute descriptors into the readied `type`; -1020 names the attribute.
int PyShBound_InstallStaticFields(PyTypeObject* type, PyGetSetDef* const* fields, Py_ssize_t count);
