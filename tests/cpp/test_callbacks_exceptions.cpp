// Exceptions crossing the boundary: managed failures raised as RuntimeError, Python failures
// captured as one formatted text with nothing left pending.
#include <string>

#include "objects/exception_crossing.h"
#include "tests/cpp/embedded_python.h"

namespace {

class ExceptionCrossing : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import sys\n"
                                       "seen = []\n"
                                       "def hook(u): seen.append((u.exc_type.__name__, u.object))\n"
                                       "def inner(): raise ValueError('bad value x')\n"
                                       "def outer(): inner()\n"
                                       "class Unprintable(Exception):\n"
                                       "    def __str__(self): raise KeyError('no text')\n"));
    }
    // Leaves the exception of `code` pending, as a failed Python callback would.
    void raise_in_python(const char* code) {
        PyShRef result(PyRun_String(code, Py_file_input, ns_.get(), ns_.get()));
        ASSERT_FALSE(result);
        ASSERT_NE(PyErr_Occurred(), nullptr);
    }
    // The captured text, read back from the borrowed record.
    static std::string text_of(const PyStringArg& text) {
        PyShRef str(PyUnicode_FromKindAndData(text.char_size, text.data, text.length));
        return py_str(str.get());
    }
    PyShRef ns_;
};

TEST_F(ExceptionCrossing, ManagedExceptionsBecomeRuntimeErrors) {
    PyObject* type_name = PyUnicode_FromString("System.IO.IOException");
    PyObject* message = PyUnicode_FromString("disk full");
    Py_INCREF(type_name);
    Py_INCREF(message);
    EXPECT_EQ(on_clr_exception(type_name, message), nullptr);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "RuntimeError: Proxy error(System.IO.IOException): disk full");
    // Both references were consumed: only ours remain.
    EXPECT_EQ(Py_REFCNT(type_name), 1);
    EXPECT_EQ(Py_REFCNT(message), 1);
    Py_DECREF(type_name);
    Py_DECREF(message);

    EXPECT_EQ(on_clr_exception(nullptr, nullptr), nullptr);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()), "RuntimeError: Proxy error(<unknown>): <unknown>");
    EXPECT_EQ(on_clr_exception(PyUnicode_FromString("T"), nullptr), nullptr);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()), "RuntimeError: Proxy error(T): <unknown>");
}

TEST_F(ExceptionCrossing, PythonErrorsAreCapturedWithTheirTraceback) {
    raise_in_python("outer()");
    PyObject* slot = nullptr;
    PyStringArg text{};
    ASSERT_EQ(fn_catch_and_clear_py_error(&slot, &text), 0);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    ASSERT_NE(slot, nullptr);
    EXPECT_EQ(text.data, PyUnicode_DATA(slot));  // the record borrows the slot's storage
    std::string captured = text_of(text);
    EXPECT_EQ(captured.rfind("Traceback (most recent call last):\n", 0), 0u) << captured;
    EXPECT_NE(captured.find("in inner"), std::string::npos) << captured;
    const std::string last_line = "ValueError: bad value x\n";
    ASSERT_GE(captured.size(), last_line.size());
    EXPECT_EQ(captured.substr(captured.size() - last_line.size()), last_line) << captured;
    Py_DECREF(slot);
}

TEST_F(ExceptionCrossing, NothingPendingLeavesTheOutputsAlone) {
    PyObject* sentinel = Py_None;
    PyObject* slot = sentinel;
    PyStringArg text{3, 2, &text};
    EXPECT_EQ(fn_catch_and_clear_py_error(&slot, &text), -1);
    EXPECT_EQ(slot, sentinel);
    EXPECT_EQ(text.length, 3);
    EXPECT_EQ(text.char_size, 2);
    EXPECT_EQ(text.data, &text);
}

TEST_F(ExceptionCrossing, ErrorsWithoutTracebackAreFormattedAlone) {
    PyErr_SetString(PyExc_KeyError, "k");
    PyObject* slot = nullptr;
    PyStringArg text{};
    ASSERT_EQ(fn_catch_and_clear_py_error(&slot, &text), 0);
    EXPECT_EQ(text_of(text), "KeyError: 'k'\n");
    Py_DECREF(slot);
}

TEST_F(ExceptionCrossing, WithoutTheTracebackModuleAFallbackTextIsMadeAndTheFailureReported) {
    ASSERT_TRUE(py_exec(ns_.get(), "saved = sys.modules.get('traceback')\nsys.modules['traceback'] = None\n"
                                   "sys.unraisablehook = hook\n"));
    raise_in_python("outer()");
    PyObject* slot = nullptr;
    PyStringArg text{};
    int result = fn_catch_and_clear_py_error(&slot, &text);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    ASSERT_TRUE(py_exec(ns_.get(), "sys.modules['traceback'] = saved\nsys.unraisablehook = sys.__unraisablehook__\n"));
    ASSERT_EQ(result, 0);
    EXPECT_EQ(text_of(text), "ValueError: bad value x");
    Py_DECREF(slot);
    PyShRef seen = py_eval(ns_.get(), "seen");
    EXPECT_EQ(py_str(seen.get()), "[('ModuleNotFoundError', 'FormatCallbackException')]");
}

TEST_F(ExceptionCrossing, AnUnformattableErrorStillLeavesNothingPending) {
    ASSERT_TRUE(py_exec(ns_.get(), "saved = sys.modules.get('traceback')\nsys.modules['traceback'] = None\n"
                                   "sys.unraisablehook = hook\n"));
    raise_in_python("raise Unprintable()");
    PyObject* slot = Py_None;
    PyStringArg text{};
    int result = fn_catch_and_clear_py_error(&slot, &text);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    ASSERT_TRUE(py_exec(ns_.get(), "sys.modules['traceback'] = saved\nsys.unraisablehook = sys.__unraisablehook__\n"));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(slot, Py_None);
    // The failure of str() wins over the remembered import failure.
    PyShRef seen = py_eval(ns_.get(), "seen");
    EXPECT_EQ(py_str(seen.get()), "[('KeyError', 'FormatCallbackException')]");
}

}  // namespace
