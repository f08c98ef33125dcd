// Error builders: exact texts, exception classes, and chaining onto a pending error.
#include <functional>

#include "module/pysh.h"
#include "tests/cpp/embedded_python.h"

namespace {

class ErrorBuilders : public PyTest {};

// Leaves a ValueError pending that was raised two frames deep in Python code.
void raise_from_python() {
    PyShRef ns = py_namespace();
    PyShRef result(PyRun_String("def inner():\n    raise ValueError('disk on fire')\n"
                                "def outer():\n    inner()\n"
                                "outer()\n",
                                Py_file_input, ns.get(), ns.get()));
    ASSERT_FALSE(result);
    ASSERT_TRUE(PyErr_ExceptionMatches(PyExc_ValueError));
}

TEST_F(ErrorBuilders, MessagesAndClassesWithNothingPending) {
    PyShRef name(PyUnicode_FromString("quorix.pygfx"));
    PyShRef type_name(PyUnicode_FromString("Color"));
    struct Case {
        std::function<void()> raise;
        PyObject* cls;
        const char* text;
    };
    const Case cases[] = {
        {[] { PyShlErr_ModuleInitializationInternalError(-1003); }, PyExc_ImportError,
         "Module initialization internal error (-1003)"},
        {[] { PyShlErr_ModuleInitializationInternalError(-1003, "quorix.folio.ai"); }, PyExc_ImportError,
         "Module initialization internal error (-1003) <quorix.folio.ai>"},
        {[] { PyShlErr_ModuleInitializationInternalError(-1002, "quorix.folio", "drawing"); },
         PyExc_ImportError, "Module initialization internal error (-1002) <quorix.folio,drawing>"},
        {[] { PyShlErr_ModulePyInitError("quorix.folio", -1009); }, PyExc_ImportError,
         "One or more errors occurred while loading the module 'quorix.folio' (-1009)"},
        {[&] { PyShlErr_DependencyImportError(name.get()); }, PyExc_ImportError,
         "Unable to import module dependencies. Cannot import the quorix.pygfx module. The module not found "
         "or errors occurred while initializing it."},
        {[&] { PyShlErr_UnableToImportModule(name.get()); }, PyExc_ImportError,
         "Unable to import the specified module quorix.pygfx. The module not found or errors occurred while "
         "initializing it."},
        {[] { PyShlErr_CapsuleImportError("quorix.pyhold._C_APIF"); }, PyExc_ImportError,
         "can't import capsule 'quorix.pyhold._C_APIF'"},
        {[] { PyShlErr_TypeInitializationInternalError(-1015, "quorix.folio.Document"); }, PyExc_ImportError,
         "Type initialization internal error (-1015) <quorix.folio.Document>"},
        {[] { PyShlErr_TypeInitializationInternalError(-1014, "quorix.folio", "Document"); },
         PyExc_ImportError, "Type initialization internal error (-1014) <quorix.folio,Document>"},
        {[&] { PyShlErr_UnableToImportType(type_name.get(), name.get()); }, PyExc_ImportError,
         "Unable to import the specified type Color from the module quorix.pygfx. The type not found or "
         "errors occurred while initializing it."},
        {[&] { PyShlErr_UnableToImportNestedType("Outer", type_name.get()); }, PyExc_ImportError,
         "Outer does not contain nested type Color"},
        {[&] { PyShlErr_UnableToImportFunction(type_name.get(), name.get()); }, PyExc_ImportError,
         "Unable to import the specified function Color from the module quorix.pygfx. The function not "
         "found."},
        {[] { PyShlErr_ChainOrFormat(PyExc_TypeError, "plain 100%% text"); }, PyExc_TypeError,
         "plain 100% text"},
    };
    for (const Case& c : cases) {
        c.raise();
        PyShRef exc = take_error();
        ASSERT_TRUE(exc) << c.text;
        EXPECT_EQ(Py_TYPE(exc.get()), (PyTypeObject*)c.cls) << describe(exc.get());
        EXPECT_EQ(py_str(exc.get()), c.text);
        PyShRef cause(PyException_GetCause(exc.get()));
        EXPECT_FALSE(cause) << c.text;
    }
}

TEST_F(ErrorBuilders, ChainKeepsThePendingErrorAsCauseAndContextWithItsTraceback) {
    raise_from_python();
    PyShlErr_ModulePyInitError("quorix.folio", -1007);
    PyShRef outer = take_error();
    ASSERT_TRUE(outer);
    EXPECT_EQ(describe(outer.get()), "ImportError: One or more errors occurred while loading the module "
                                     "'quorix.folio' (-1007)");

    PyShRef cause(PyException_GetCause(outer.get()));
    PyShRef context(PyException_GetContext(outer.get()));
    ASSERT_TRUE(cause);
    EXPECT_EQ(cause.get(), context.get());
    EXPECT_EQ(describe(cause.get()), "ValueError: disk on fire");

    PyShRef ns = py_namespace();
    PyDict_SetItemString(ns.get(), "e", outer.get());
    PyShRef frames = py_eval(ns.get(), "[f.name for f in __import__('traceback').extract_tb(e.__cause__.__traceback__)]");
    EXPECT_EQ(py_str(frames.get()), "['<module>', 'outer', 'inner']");
}

TEST_F(ErrorBuilders, ChainsStackOneOnTopOfAnother) {
    PyShRef name(PyUnicode_FromString("quorix.pyhold"));
    raise_from_python();
    PyShlErr_DependencyImportError(name.get());
    PyShlErr_ModulePyInitError("quorix.folio", -1008);
    PyShRef top = take_error();
    ASSERT_TRUE(top);
    PyShRef ns = py_namespace();
    PyDict_SetItemString(ns.get(), "e", top.get());
    PyShRef chain = py_eval(ns.get(), "[type(x).__name__ for x in (e, e.__cause__, e.__cause__.__cause__)]");
    EXPECT_EQ(py_str(chain.get()), "['ImportError', 'ImportError', 'ValueError']");
    EXPECT_FALSE(PyErr_Occurred());
}

TEST_F(ErrorBuilders, EnumFailureIsATypeErrorBeneathAnImportError) {
    PyShlErr_EnumTypeInitialization("bad member table", "quorix.folio.SaveFormat");
    PyShRef exc = take_error();
    ASSERT_TRUE(exc);
    EXPECT_EQ(describe(exc.get()), "ImportError: enum type 'quorix.folio.SaveFormat' is not initialized");
    PyShRef cause(PyException_GetCause(exc.get()));
    EXPECT_EQ(describe(cause.get()), "TypeError: bad member table");
}

TEST_F(ErrorBuilders, EnumFailureKeepsAnEarlierError) {
    raise_from_python();
    PyShlErr_EnumTypeInitialization("bad member table", "quorix.folio.SaveFormat");
    PyShRef exc = take_error();
    ASSERT_TRUE(exc);
    PyShRef cause(PyException_GetCause(exc.get()));
    ASSERT_TRUE(cause);
    PyShRef root(PyException_GetCause(cause.get()));
    EXPECT_EQ(describe(root.get()), "ValueError: disk on fire");
}

}  // namespace
