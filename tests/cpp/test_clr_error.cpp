// Managed exceptions of bound types: their Python classes, the objects built for them, and
// the handle of each managed exception owned exactly once on every path.
#include "objects/clr_error.h"
#include "objects/seal_object.h"
#include "tests/cpp/embedded_python.h"
#include "tests/cpp/fake_handles.h"

namespace {

class ClrErrors : public PyTest {
protected:
    // Index 0: a root exception class, 1: a class derived from it, 2: a bound non-exception.
    void SetUp() override {
        static PyTypeObject* types[3];
        types[0] = types[1] = types[2] = fake_sealed_type();
        module_.reset(PyModule_New("fake"));
        ASSERT_TRUE(module_);
        ASSERT_EQ(PyShClrError_Install(types, 3), 0);
        ASSERT_EQ(PyShClrError_Bind(module_.get(), 0, -1, "Base"), 0);
        ASSERT_EQ(PyShClrError_Bind(module_.get(), 1, 0, "Derived"), 0);
        base_ = PyObject_GetAttrString(module_.get(), "Base");
        derived_ = PyObject_GetAttrString(module_.get(), "Derived");
        Py_XDECREF(base_);  // the module keeps them
        Py_XDECREF(derived_);
        ASSERT_NE(base_, nullptr);
        ASSERT_NE(derived_, nullptr);
    }
    static PyObject* str(const char* text) { return PyUnicode_FromString(text); }

    FakeHandleRuntime fakes_;
    PyShRef module_;
    PyObject* base_ = nullptr;
    PyObject* derived_ = nullptr;
};

TEST_F(ClrErrors, ClassesDeriveFromRuntimeErrorAndFromTheirBoundBase) {
    EXPECT_EQ(PyObject_IsSubclass(base_, PyExc_RuntimeError), 1);
    EXPECT_EQ(PyObject_IsSubclass(derived_, base_), 1);
    EXPECT_EQ(PyObject_IsSubclass(base_, derived_), 0);
    PyShRef wrapper(PyObject_GetAttrString(derived_, "_qrxsc2p_wrapper"));
    EXPECT_EQ(wrapper.get(), reinterpret_cast<PyObject*>(fake_sealed_type()));
    EXPECT_EQ(PyShClrError_Bind(module_.get(), 3, -1, "Outside"), -1);
    EXPECT_TRUE(take_error());
}

TEST_F(ClrErrors, ABoundExceptionKeepsItsTextMessageWrapperAndInner) {
    PyObject* inner = fn_conv_clr_exception_to_py(str("System.IO.IOException"), str("disk"), fake_handle(1), -1, nullptr);
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(describe(inner), "RuntimeError: Proxy error(System.IO.IOException): disk");
    EXPECT_EQ(fakes_.freed().size(), 1u);  // no class: the handle is not kept

    PyShRef exc(fn_conv_clr_exception_to_py(str("N.Derived"), str("bad"), fake_handle(2), 1, inner));
    ASSERT_TRUE(exc);
    EXPECT_EQ(reinterpret_cast<PyObject*>(Py_TYPE(exc.get())), derived_);
    EXPECT_EQ(describe(exc.get()), "Sealed: Proxy error(N.Derived): bad");  // named after the wrapper type
    PyShRef message(PyObject_GetAttrString(exc.get(), "message"));
    EXPECT_EQ(py_str(message.get()), "bad");
    PyShRef got_inner(PyObject_GetAttrString(exc.get(), "inner_exception"));
    EXPECT_EQ(got_inner.get(), inner);
    PyShRef managed(PyObject_GetAttrString(exc.get(), "_qrxsc2p_object"));
    EXPECT_EQ(Py_TYPE(managed.get()), fake_sealed_type());
    EXPECT_EQ(reinterpret_cast<PySealTpObject*>(managed.get())->handle, fake_handle(2));  // the wrapper owns it
    managed.reset();
    got_inner.reset();

    EXPECT_EQ(on_clr_exception_object(exc.release()), nullptr);
    PyShRef raised = take_error();
    EXPECT_EQ(reinterpret_cast<PyObject*>(Py_TYPE(raised.get())), derived_);
    EXPECT_EQ(fakes_.freed().size(), 1u);
}

TEST_F(ClrErrors, WithoutAnExceptionClassOrWithAnErrorPendingTheHandleIsFreed) {
    PyShRef plain(fn_conv_clr_exception_to_py(nullptr, nullptr, fake_handle(3), 2, nullptr));
    EXPECT_EQ(describe(plain.get()), "RuntimeError: Proxy error(<unknown>): <unknown>");
    PyErr_SetString(PyExc_MemoryError, "no text");
    EXPECT_EQ(fn_conv_clr_exception_to_py(str("T"), nullptr, fake_handle(4), 0, str("inner")), nullptr);
    EXPECT_EQ(describe(take_error().get()), "MemoryError: no text");
    ASSERT_EQ(fakes_.freed().size(), 2u);
    EXPECT_EQ(fakes_.freed()[1], fake_handle(4));
}

TEST_F(ClrErrors, MembersOfTheManagedSideAreReadThroughTheWrapper) {
    PyShRef exc(fn_conv_clr_exception_to_py(str("N.Base"), str("m"), fake_handle(5), 0, nullptr));
    // the fake wrapper type has what object has: its __class__ is reached through the exception
    PyShRef missing(PyObject_GetAttrString(exc.get(), "no_such_member"));
    EXPECT_FALSE(missing);
    EXPECT_EQ(describe(take_error().get()), "AttributeError: 'fake.Sealed' object has no attribute 'no_such_member'");
    PyShRef made(PyObject_CallFunction(base_, "s", "from Python"));
    PyShRef none(PyObject_GetAttrString(made.get(), "message"));
    EXPECT_EQ(none.get(), Py_None);
}

}  // namespace
