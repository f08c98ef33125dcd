// Static-field and mixed-method descriptors placed on a class, used from Python.
#include "module/pysh.h"
#include "tests/cpp/embedded_python.h"

namespace {

int limit_value = 42;

PyObject* get_limit(PyObject* self, void* closure) {
    if (self != NULL) {
        PyErr_SetString(PyExc_AssertionError, "a static field getter got a self");
        return NULL;
    }
    return PyLong_FromLong(*(int*)closure);
}

PyGetSetDef limit_def = {"LIMIT", get_limit, NULL, "The upper bound.", &limit_value};
PyGetSetDef undocumented_def = {"QUIET", get_limit, NULL, "", &limit_value};

PyObject* describe_static(PyObject* self, PyObject*) {
    return Py_BuildValue("(sO)", "static", self != NULL ? self : Py_None);
}

PyObject* describe_instance(PyObject* self, PyObject*) {
    return Py_BuildValue("(sO)", "instance", self);
}

PyMethodDef describe_static_def = {"describe", describe_static, METH_NOARGS, NULL};
PyMethodDef describe_instance_def = {"describe", describe_instance, METH_NOARGS, "Says which form ran."};

class Descriptors : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "class Widget: pass\nclass Gadget(Widget): pass\n"));
        PyShRef widget = py_eval(ns_.get(), "Widget");
        PyTypeObject* owner = (PyTypeObject*)widget.get();
        PyShRef field(PyShDescr_NewStaticField(owner, &limit_def));
        PyShRef quiet(PyShDescr_NewStaticField(owner, &undocumented_def));
        PyShRef method(PyShDescr_NewMixedMethod(owner, &describe_static_def, &describe_instance_def));
        ASSERT_TRUE(field && quiet && method);
        ASSERT_EQ(PyObject_SetAttrString(widget.get(), "LIMIT", field.get()), 0);
        ASSERT_EQ(PyObject_SetAttrString(widget.get(), "QUIET", quiet.get()), 0);
        ASSERT_EQ(PyObject_SetAttrString(widget.get(), "describe", method.get()), 0);
    }
    std::string eval(const char* expr) { return py_str(py_eval(ns_.get(), expr).get()); }
    // The exception an expression raises, as "Type: message".
    std::string raised_by(const char* expr) {
        PyShRef result(PyRun_String(expr, Py_eval_input, ns_.get(), ns_.get()));
        EXPECT_FALSE(result) << expr << " returned " << py_str(result.get());
        return describe(take_error().get());
    }
    PyShRef ns_;
};

TEST_F(Descriptors, StaticFieldReadsTheSameThroughClassAndInstance) {
    EXPECT_EQ(eval("(Widget.LIMIT, Widget().LIMIT, Gadget().LIMIT)"), "(42, 42, 42)");
    limit_value = 7;
    EXPECT_EQ(eval("(Widget.LIMIT, Gadget.LIMIT)"), "(7, 7)");
    limit_value = 42;
    EXPECT_EQ(eval("Widget.__dict__['LIMIT'].__get__(Widget())"), "42");
    EXPECT_EQ(eval("type(Widget.__dict__['LIMIT']).__name__"), "_FieldDescrType");
    EXPECT_EQ(eval("repr(Widget.__dict__['LIMIT'])"), "<attribute 'LIMIT' of 'Widget' objects>");
    EXPECT_EQ(eval("(Widget.__dict__['LIMIT'].__doc__, Widget.__dict__['QUIET'].__doc__)"),
              "('The upper bound.', None)");
    EXPECT_EQ(raised_by("Widget.__dict__['LIMIT'].__get__(None, 5)"),
              "TypeError: descriptor 'LIMIT' needs a type, not 'int', as arg 2");
}

TEST_F(Descriptors, MixedMethodIsStaticOnTheClassAndBoundOnAnInstance) {
    EXPECT_EQ(eval("Widget.describe()"), "('static', None)");
    ASSERT_TRUE(py_exec(ns_.get(), "g = Gadget()\nform, target = g.describe()\n"));
    EXPECT_EQ(eval("(form, target is g)"), "('instance', True)");
    EXPECT_EQ(eval("repr(Widget.__dict__['describe'])"), "<method 'describe' of 'Widget' objects>");
    EXPECT_EQ(eval("Widget.__dict__['describe'].__doc__"), "Says which form ran.");
    EXPECT_EQ(eval("type(Widget.__dict__['describe']).__name__"), "_MixMethodDescrType");
    EXPECT_EQ(raised_by("Widget.__dict__['describe'].__get__(5)"),
              "TypeError: descriptor 'describe' for 'Widget' objects doesn't apply to a 'int' object");
    EXPECT_EQ(raised_by("Widget.__dict__['describe'].__get__(None, 'Widget')"),
              "TypeError: descriptor 'describe' needs a type, not 'str', as arg 2");
}

TEST_F(Descriptors, ClassesHoldingDescriptorsAreCollectable) {
    // Each descriptor refers back to its class: only the cycle collector can free them.
    ASSERT_TRUE(py_exec(ns_.get(), "import gc, weakref\n"
                                   "ref = weakref.ref(Widget)\n"
                                   "del Widget, Gadget\n"
                                   "gc.collect()\n"));
    EXPECT_EQ(eval("ref() is None"), "True");
}

}  // namespace
