#include "objects/exception_crossing.h"

#include "marshal/conv_text.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"

namespace {

// The fetched (normalised) pieces of one exception; all owned.
struct FetchedError {
    PyShRef type;
    PyShRef value;
    PyShRef traceback;

    void fetch()
    {
        PyObject* t = nullptr;
        PyObject* v = nullptr;
        PyObject* tb = nullptr;
        PyErr_Fetch(&t, &v, &tb);
        PyErr_NormalizeException(&t, &v, &tb);
        type.reset(t);
        value.reset(v);
        traceback.reset(tb);
    }

    void restore()
    {
        PyErr_Restore(type.release(), value.release(), traceback.release());
    }

    bool empty() const { return !type; }
};

[[gnu::cold, gnu::noinline]] PyObject*
import_traceback_module()
{
    PyShRef name(PyUnicode_FromString("traceback"));
    if (!name)
        return nullptr;
    PyObject* module = PyImport_Import(name.get());
    if (module == nullptr && !PyErr_Occurred())
        PyShlErr_UnableToImportModule(name.get());
    return module;
}

// The traceback module's rendering of the error, lines joined; NULL with an error pending,
// or NULL without one when the formatter is not callable.
PyObject*
format_with_traceback_module(const FetchedError& error)
{
    PyShRef module(import_traceback_module());
    if (!module)
        return nullptr;
    PyObject* name = error.traceback ? PyWrpIdTraceBack_FormatException : PyWrpIdTraceBack_FormatExceptionOnly;
    PyShRef formatter(PyObject_GetAttr(module.get(), name));
    if (!formatter || !PyCallable_Check(formatter.get()))
        return nullptr;
    PyShRef lines(error.traceback ? PyObject_CallFunctionObjArgs(formatter.get(), error.type.get(),
                                                                 error.value.get(), error.traceback.get(), nullptr)
                                  : PyObject_CallFunctionObjArgs(formatter.get(), error.type.get(),
                                                                 error.value.get(), nullptr));
    if (!lines)
        return nullptr;
    return PyUnicode_Join(PyWrpIdStr_Empty, lines.get());
}

// The exception type's qualified name, or str(type); NULL with an error.
PyObject*
type_display_name(PyObject* type)
{
    PyObject* qualname = PyObject_GetAttr(type, PyWrpIdType_Qualname);
    if (qualname != nullptr && PyUnicode_Check(qualname))
        return qualname;
    Py_XDECREF(qualname);
    PyErr_Clear();
    return PyObject_Str(type);
}

// The message built without the traceback module; NULL (possibly with an error) when even
// that is impossible.
PyObject*
format_fallback(const FetchedError& error)
{
    PyShRef name(type_display_name(error.type.get()));
    if (!name)
        return nullptr;
    PyShRef value_text;
    if (error.value) {
        value_text.reset(PyObject_Str(error.value.get()));
        if (!value_text)
            return nullptr;
    }
    if (!error.traceback) {
        return value_text ? PyUnicode_FromFormat("%U: %U", name.get(), value_text.get())
                          : PyUnicode_FromFormat("%U:", name.get());
    }
    PyShRef tb_text(PyObject_Str(error.traceback.get()));
    if (!tb_text)
        return nullptr;
    if (PyUnicode_GET_LENGTH(tb_text.get()) != 0) {
        return value_text ? PyUnicode_FromFormat("%U: %U", name.get(), value_text.get())
                          : PyUnicode_FromFormat("%U:", name.get());
    }
    return PyUnicode_FromFormat("%U: %U\n%U", name.get(), value_text ? value_text.get() : PyWrpIdStr_Empty,
                                tb_text.get());
}

}  // namespace

PyObject*
on_clr_exception(PyObject* type_name, PyObject* message)
{
    PyShRef type_owner(type_name);
    PyShRef message_owner(message);
    return PyErr_Format(PyExc_RuntimeError, "Proxy error(%U): %U",
                        type_name != nullptr ? type_name : PyWrpIdTraceBack_Unknown,
                        message != nullptr ? message : PyWrpIdTraceBack_Unknown);
}

int
fn_catch_and_clear_py_error(PyObject** slot, PyStringArg* text)
{
    if (!PyErr_Occurred())
        return -1;
    FetchedError error;
    error.fetch();

    FetchedError secondary;
    PyShRef message;
    if (error.value) {
        message.reset(format_with_traceback_module(error));
        if (!message && PyErr_Occurred())
            secondary.fetch();
    }
    if (!message)
        message.reset(format_fallback(error));

    error = FetchedError();

    int result = -1;
    if (message && fn_conv_py_string_to_clr_string_value(message.get(), text)) {
        *slot = message.release();
        result = 0;
    }
    if (!secondary.empty()) {
        if (!PyErr_Occurred())
            secondary.restore();
    }
    if (PyErr_Occurred())
        PyErr_WriteUnraisable(PyWrpIdTraceBack_FormatExceptionWarning);
    return result;
}
