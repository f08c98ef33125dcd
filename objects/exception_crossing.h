// Exceptions crossing between managed code and Python, as text, in both directions. Both
// functions are callbacks that managed code calls on the Python thread holding the lock.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// Raises RuntimeError "Proxy error(<type name>): <message>" ("<unknown>" for NULL parts);
// consumes both references; returns NULL.
PyObject* on_clr_exception(PyObject* type_name, PyObject* message);

// Captures and clears the pending Python error as one formatted text with its traceback.
// 0 with *slot owning the message str and *text describing its storage; -1 when no error was
// pending (slot and text untouched) or no text could be made. Never leaves an error pending:
// failures of the formatting itself go to the unraisable hook.
int fn_catch_and_clear_py_error(PyObject** slot, PyStringArg* text);
