// The embedded interpreter shared by every test in the process, with the interned identifiers
// built as the module's start-up builds them.
#include "tests/cpp/embedded_python.h"

#include "module/ids.h"

namespace {

class EmbeddedPython : public ::testing::Environment {
public:
    void SetUp() override {
        Py_InitializeEx(0);
        fn_intern_static_ucso();
        wrpPyj_mlof_FFFFFF_dynamic_ucso();
    }
    void TearDown() override { Py_FinalizeEx(); }
};

::testing::Environment* const embedded_python = ::testing::AddGlobalTestEnvironment(new EmbeddedPython);

}  // namespace

void PyTest::TearDown() {
    if (PyErr_Occurred()) {
        PyShRef leaked = take_error();
        ADD_FAILURE() << "exception left pending: " << describe(leaked.get());
    }
}

PyShRef py_namespace() {
    PyShRef ns(PyDict_New());
    if (ns)
        PyDict_SetItemString(ns.get(), "__builtins__", PyEval_GetBuiltins());
    return ns;
}

static void report_python_failure(const char* code) {
    PyShRef exc = take_error();
    std::string text = describe(exc.get());
    PyShRef traceback(PyImport_ImportModule("traceback"));
    if (traceback && exc) {
        PyShRef lines(PyObject_CallMethod(traceback.get(), "format_exception", "O", exc.get()));
        PyShRef empty(PyUnicode_FromString(""));
        if (lines && empty) {
            PyShRef joined(PyUnicode_Join(empty.get(), lines.get()));
            if (joined)
                text = py_str(joined.get());
        }
    }
    PyErr_Clear();
    ADD_FAILURE() << "Python code failed:\n" << code << "\n" << text;
}

bool py_exec(PyObject* ns, const char* code) {
    PyShRef result(PyRun_String(code, Py_file_input, ns, ns));
    if (!result) {
        report_python_failure(code);
        return false;
    }
    return true;
}

PyShRef py_eval(PyObject* ns, const char* expr) {
    PyShRef result(PyRun_String(expr, Py_eval_input, ns, ns));
    if (!result)
        report_python_failure(expr);
    return result;
}

std::string py_str(PyObject* obj) {
    if (obj == NULL)
        return "<NULL>";
    PyShRef text(PyObject_Str(obj));
    const char* utf8 = text ? PyUnicode_AsUTF8(text.get()) : NULL;
    if (utf8 == NULL) {
        PyErr_Clear();
        return "<str failed>";
    }
    return utf8;
}

PyShRef take_error() {
    PyObject *type, *value, *tb;
    PyErr_Fetch(&type, &value, &tb);
    if (type == NULL)
        return PyShRef();
    PyErr_NormalizeException(&type, &value, &tb);
    if (tb != NULL && value != NULL)
        PyException_SetTraceback(value, tb);
    Py_XDECREF(type);
    Py_XDECREF(tb);
    return PyShRef(value);
}

std::string describe(PyObject* exc) {
    if (exc == NULL)
        return "<no error>";
    return std::string(Py_TYPE(exc)->tp_name) + ": " + py_str(exc);
}
