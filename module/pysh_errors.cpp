// Error builders: a fixed vocabulary of import-time and initialisation errors. A new error
// never hides one already pending; it is chained on top of it instead.
#include <cstdarg>

#include "module/pysh.h"

// Raises type(format % args) with the pending exception, if any, as its cause and context.
PySh_COLD static void chain_format_v(PyObject* exc_type, const char* format, va_list args) {
    PyObject* old_type = NULL;
    PyObject* old_value = NULL;
    PyObject* old_tb = NULL;
    PyErr_Fetch(&old_type, &old_value, &old_tb);
    PyErr_NormalizeException(&old_type, &old_value, &old_tb);
    // The traceback travels on the value from here on, so the chained report shows where the
    // original failure happened.
    if (old_value != NULL && old_tb != NULL)
        PyException_SetTraceback(old_value, old_tb);
    Py_XDECREF(old_type);
    Py_XDECREF(old_tb);

    PyErr_FormatV(exc_type, format, args);

    PyObject* new_type = NULL;
    PyObject* new_value = NULL;
    PyObject* new_tb = NULL;
    PyErr_Fetch(&new_type, &new_value, &new_tb);
    PyErr_NormalizeException(&new_type, &new_value, &new_tb);
    if (new_value != NULL && old_value != NULL) {
        // Both setters steal a reference.
        Py_INCREF(old_value);
        PyException_SetCause(new_value, old_value);
        PyException_SetContext(new_value, old_value);
    } else {
        Py_XDECREF(old_value);
    }
    PyErr_Restore(new_type, new_value, new_tb);
}

PySh_COLD static void chain_or_format_v(PyObject* exc_type, const char* format, va_list args) {
    if (PyErr_Occurred())
        chain_format_v(exc_type, format, args);
    else
        PyErr_FormatV(exc_type, format, args);
}

PySh_COLD static void chain_or_format(PyObject* exc_type, const char* format, ...) {
    va_list args;
    va_start(args, format);
    chain_or_format_v(exc_type, format, args);
    va_end(args);
}

void PyShlErr_ChainFormat(PyObject* exc_type, const char* format, ...) {
    va_list args;
    va_start(args, format);
    chain_format_v(exc_type, format, args);
    va_end(args);
}

void PyShlErr_ChainOrFormat(PyObject* exc_type, const char* message) {
    chain_or_format(exc_type, message);
}

void PyShlErr_ModuleInitializationInternalError(int code) {
    chain_or_format(PyExc_ImportError, "Module initialization internal error (%i)", code);
}

void PyShlErr_ModuleInitializationInternalError(int code, const char* text) {
    chain_or_format(PyExc_ImportError, "Module initialization internal error (%i) <%s>", code, text);
}

void PyShlErr_ModuleInitializationInternalError(int code, const char* text1, const char* text2) {
    chain_or_format(PyExc_ImportError, "Module initialization internal error (%i) <%s,%s>", code, text1,
                    text2);
}

void PyShlErr_ModulePyInitError(const char* module_name, int code) {
    chain_or_format(PyExc_ImportError, "One or more errors occurred while loading the module '%s' (%i)",
                    module_name, code);
}

void PyShlErr_DependencyImportError(PyObject* module_name) {
    chain_or_format(PyExc_ImportError,
                    "Unable to import module dependencies. Cannot import the %U module. The module not "
                    "found or errors occurred while initializing it.",
                    module_name);
}

void PyShlErr_UnableToImportModule(PyObject* module_name) {
    chain_or_format(PyExc_ImportError,
                    "Unable to import the specified module %U. The module not found or errors occurred "
                    "while initializing it.",
                    module_name);
}

void PyShlErr_CapsuleImportError(const char* capsule_name) {
    chain_or_format(PyExc_ImportError, "can't import capsule '%s'", capsule_name);
}

void PyShlErr_TypeInitializationInternalError(int code, const char* text) {
    chain_or_format(PyExc_ImportError, "Type initialization internal error (%i) <%s>", code, text);
}

void PyShlErr_TypeInitializationInternalError(int code, const char* text1, const char* text2) {
    chain_or_format(PyExc_ImportError, "Type initialization internal error (%i) <%s,%s>", code, text1,
                    text2);
}

void PyShlErr_UnableToImportType(PyObject* type_name, PyObject* module_name) {
    chain_or_format(PyExc_ImportError,
                    "Unable to import the specified type %U from the module %U. The type not found or "
                    "errors occurred while initializing it.",
                    type_name, module_name);
}

void PyShlErr_UnableToImportNestedType(const char* outer_name, PyObject* nested_name) {
    chain_or_format(PyExc_ImportError, "%s does not contain nested type %U", outer_name, nested_name);
}

void PyShlErr_UnableToImportFunction(PyObject* function_name, PyObject* module_name) {
    chain_or_format(PyExc_ImportError,
                    "Unable to import the specified function %U from the module %U. The function not "
                    "found.",
                    function_name, module_name);
}

void PyShlErr_ForkedChild() {
    PyShlErr_ChainOrFormat(PyExc_RuntimeError,
                           "the .NET runtime does not survive fork(): this process was forked from one in which "
                           "the runtime ran; start worker processes with the 'spawn' or 'forkserver' start method "
                           "(multiprocessing.get_context('spawn'))");
}

void PyShlErr_EnumTypeInitialization(const char* message, const char* enum_name) {
    // The TypeError carries the reason; an error already pending stays reachable beneath it.
    if (PyErr_Occurred())
        PyShlErr_ChainFormat(PyExc_TypeError, "%s", message);
    else
        PyErr_SetString(PyExc_TypeError, message);
    PyShlErr_ChainFormat(PyExc_ImportError, "enum type '%s' is not initialized", enum_name);
}
