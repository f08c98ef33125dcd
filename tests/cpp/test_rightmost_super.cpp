// Rightmost super on small Python hierarchies standing in for a bound type T and its bases.
#include "module/pysh.h"
#include "tests/cpp/embedded_python.h"

namespace {

class RightmostSuper : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(),
                            "class Root:\n    def __repr__(self): return 'Root'\n"
                            "class Base(Root):\n    def __repr__(self): return 'Base'\n"
                            "class T(Base):\n    def __repr__(self): return 'T'\n"
                            "class Mixin:\n"
                            "    def __repr__(self): return 'Mixin'\n"
                            "    def __hash__(self): return 1234\n"
                            "    def __eq__(self, other): return ('Mixin.eq', other)\n"
                            "    def __lt__(self, other): return ('Mixin.lt', other)\n"
                            "    def __init__(self, *args, **kwargs): self.seen = (args, kwargs)\n"
                            "class Other(Base):\n    def __repr__(self): return 'Other'\n"
                            "class Mid(Root):\n    def __repr__(self): return 'Mid'\n"
                            "class Unhashable:\n    __hash__ = None\n"
                            "class MinusOne:\n    def __hash__(self): return -1\n"
                            "class Failing:\n    def __init__(self): raise KeyError('init')\n"
                            "class P(T, Mixin): pass\n"        // P T Base Root Mixin object
                            "class Q(T, Other): pass\n"        // Q T Other Base Root object
                            "class R(T, Mid): pass\n"          // R T Base Mid Root object
                            "class U(T, Unhashable): pass\n"
                            "class V(T, MinusOne): pass\n"
                            "class W(T, Failing): pass\n"
                            "class Lone: pass\n"));
        t_ = py_eval(ns_.get(), "T");
    }
    PyTypeObject* t() { return (PyTypeObject*)t_.get(); }
    // The class super() was started from, by name.
    std::string start_of(const char* instance_expr) {
        PyShRef obj = py_eval(ns_.get(), instance_expr);
        PyShRef sup(super_rightmost_of(t(), obj.get()));
        if (!sup)
            return describe(take_error().get());
        PyShRef cls(PyObject_GetAttrString(sup.get(), "__thisclass__"));
        return py_str(PyShRef(PyObject_GetAttrString(cls.get(), "__name__")).get());
    }
    PyShRef ns_;
    PyShRef t_;
};

TEST_F(RightmostSuper, SkipsTheBoundTypesChainAsFarAsTheMroFollowsIt) {
    EXPECT_EQ(start_of("P()"), "Root");  // whole chain except object: next is Mixin
    EXPECT_EQ(start_of("Q()"), "T");     // chain diverges right after T
    EXPECT_EQ(start_of("R()"), "Base");  // diverges after Base: next is Mid
    EXPECT_EQ(start_of("T()"), "Root");  // the walk never takes the final `object`
    EXPECT_EQ(start_of("Lone()").rfind("TypeError: super(type, obj)", 0), 0u);
}

TEST_F(RightmostSuper, ForwardersReachTheNextClassToTheRight) {
    PyShRef p = py_eval(ns_.get(), "P()"), q = py_eval(ns_.get(), "Q()"), r = py_eval(ns_.get(), "R()");
    EXPECT_EQ(py_str(PyShRef(PyShRightmostSuper_Repr(t(), p.get())).get()), "Mixin");
    EXPECT_EQ(py_str(PyShRef(PyShRightmostSuper_Repr(t(), q.get())).get()), "Other");
    EXPECT_EQ(py_str(PyShRef(PyShRightmostSuper_Repr(t(), r.get())).get()), "Mid");
    EXPECT_EQ(PyShRightmostSuper_Hash(t(), p.get()), 1234);

    PyShRef other(PyLong_FromLong(9));
    PyShRef eq(PyShRightmostSuper_RichCompare(t(), p.get(), other.get(), Py_EQ));
    PyShRef lt(PyShRightmostSuper_RichCompare(t(), p.get(), other.get(), Py_LT));
    PyShRef bad(PyShRightmostSuper_RichCompare(t(), p.get(), other.get(), 6));
    EXPECT_EQ(py_str(eq.get()), "('Mixin.eq', 9)");
    EXPECT_EQ(py_str(lt.get()), "('Mixin.lt', 9)");
    EXPECT_EQ(bad.get(), Py_NotImplemented);

    PyShRef args = py_eval(ns_.get(), "(1, 2)"), kwargs = py_eval(ns_.get(), "{'k': 3}");
    EXPECT_EQ(PyShRightmostSuper_Init(t(), p.get(), args.get(), kwargs.get()), 0);
    PyShRef seen(PyObject_GetAttrString(p.get(), "seen"));
    EXPECT_EQ(py_str(seen.get()), "((1, 2), {'k': 3})");
    EXPECT_EQ(PyShRightmostSuper_Init(t(), p.get(), NULL, NULL), 0);
    seen.reset(PyObject_GetAttrString(p.get(), "seen"));
    EXPECT_EQ(py_str(seen.get()), "((), {})");
}

TEST_F(RightmostSuper, ForwardersReportFailures) {
    PyShRef u = py_eval(ns_.get(), "U()"), v = py_eval(ns_.get(), "V()"), w = py_eval(ns_.get(), "W.__new__(W)");
    PyShRef lone = py_eval(ns_.get(), "Lone()");
    EXPECT_EQ(PyShRightmostSuper_Hash(t(), u.get()), -1);
    EXPECT_EQ(describe(take_error().get()), "TypeError: unhashable type: 'U'");
    EXPECT_EQ(PyShRightmostSuper_Hash(t(), v.get()), -2);  // -1 is the error signal
    EXPECT_FALSE(PyErr_Occurred());
    PyShRef empty(PyTuple_New(0));
    EXPECT_EQ(PyShRightmostSuper_Init(t(), w.get(), empty.get(), NULL), -1);
    EXPECT_EQ(describe(take_error().get()), "KeyError: 'init'");
    EXPECT_EQ(PyShRightmostSuper_Repr(t(), lone.get()), nullptr);
    EXPECT_TRUE(PyErr_ExceptionMatches(PyExc_TypeError));
    PyErr_Clear();
}

}  // namespace
