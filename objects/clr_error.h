// Managed exceptions of bound types as Python exceptions. Each bound exception class gets a
// Python class deriving from RuntimeError (or from its bound base's class), registered under
// the bound name; its instances keep the managed exception's wrapper, message and inner
// exception. The tables are per extension module: one module binds one assembly.
#pragma once

#include <Python.h>
#include <cstdint>

// Remembers the module's bound type index table (index -> wrapper type); -1 with an error.
int PyShClrError_Install(PyTypeObject* const* index_table, int32_t count);

// Builds the exception class of the bound type at `index` (deriving from the class at
// `base_index`, or from RuntimeError when -1) and adds it to `module` under `name` in place of
// the wrapper type; -1 with ImportError code -1014.
int PyShClrError_Bind(PyObject* module, int32_t index, int32_t base_index, const char* name);

// Callback: a new exception object for a managed exception. Its class is the bound exception
// class at `index`, or RuntimeError when there is none; its text is "Proxy error(T): m".
// Consumes the references and the handle (NULL allowed for each); NULL with an error.
PyObject* fn_conv_clr_exception_to_py(PyObject* type_name, PyObject* message, void* handle, int32_t index,
                                      PyObject* inner);

// Callback: raises `exc` (consumed) as the pending error; returns NULL.
PyObject* on_clr_exception_object(PyObject* exc);
