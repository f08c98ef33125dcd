// The interface types' object: layout, slots on exact and subclass instances, and the queue
// through which twins collected on other threads hand their Python references back.
#include <thread>

#include "module/pysh.h"
#include "objects/derived_object.h"
#include "objects/twin_binding.h"
#include "tests/cpp/embedded_python.h"

namespace {

PyTypeObject* g_iface = nullptr;
bool g_invalid = false;

bool invalidate() {
    if (g_invalid)
        PyErr_SetString(PyExc_TypeError, "unusable");
    return g_invalid;
}

PyObject* tp_new(PyTypeObject* type, PyObject*, PyObject*) { return PyShDerivl_New(type, g_iface, invalidate); }
int tp_init(PyObject* self, PyObject* args, PyObject* kwargs) { return PyShDerivl_Init(g_iface, self, args, kwargs); }
void tp_dealloc(PyObject* self) { wrapPyDerivlTp_tp_dealloc(self, g_iface); }
Py_hash_t tp_hash(PyObject* self) {
    return Py_TYPE(self) == g_iface ? wrapPyDerivlTp_tp_hash(self) : PyShRightmostSuper_Hash(g_iface, self);
}
PyObject* tp_richcompare(PyObject* self, PyObject* other, int op) {
    return Py_TYPE(self) == g_iface ? wrapPyDerivlTp_tp_richcompare(self, other, op)
                                     : PyShRightmostSuper_RichCompare(g_iface, self, other, op);
}
PyObject* tp_repr(PyObject* self) {
    return Py_TYPE(self) == g_iface ? wrapPyDerivlTp_tp_str(self) : PyShRightmostSuper_Repr(g_iface, self);
}
int set_dict(PyObject* self, PyObject* value, void*) { return PyShDerivl_SetDict(g_iface, self, value); }

PyObject* forward(PyObject* self, PyObject*) {
    void* handle = nullptr;
    if (PyShDerivl_Receiver(self, g_iface, "work", &handle) < 0)
        return nullptr;
    Py_RETURN_NONE;
}

PyMethodDef g_methods[] = {{"work", forward, METH_NOARGS, ""}, {nullptr, nullptr, 0, nullptr}};
PyGetSetDef g_getset[] = {{"__dict__", PyObject_GenericGetDict, set_dict, "", nullptr}, {nullptr, nullptr, nullptr, nullptr, nullptr}};
const PyShDerivlSlots g_slots = {tp_new, tp_init, tp_dealloc, tp_hash, tp_richcompare, tp_repr};

class DerivedObject : public PyTest {
protected:
    void SetUp() override {
        if (g_iface == nullptr) {
            PyShRef module(PyModule_New("tests"));
            ASSERT_EQ(PyShDerivl_CreateType(module.get(), &g_iface, "tests.IWork", g_methods, g_getset, g_slots, "IWork"), 0);
            Py_INCREF(g_iface);  // outlives the module, as the process-wide globals do
        }
        ns_ = py_namespace();
        ASSERT_EQ(PyDict_SetItemString(ns_.get(), "IWork", reinterpret_cast<PyObject*>(g_iface)), 0);
        ASSERT_TRUE(py_exec(ns_.get(),
                            "class Impl(IWork):\n"
                            "    def __init__(self, n): self.n = n\n"
                            "class Partial(IWork): pass\n"));
    }
    std::string error_of(const char* code) {
        if (PyRun_String(code, Py_file_input, ns_.get(), ns_.get()) != nullptr)
            return "<no error>";
        return describe(take_error().get());
    }
    PyShRef ns_;
};

TEST_F(DerivedObject, LayoutPutsTheDictionaryAndWeakReferencesAtFixedOffsets) {
    EXPECT_EQ(g_iface->tp_dictoffset, 16);
    EXPECT_EQ(g_iface->tp_weaklistoffset, 24);
    EXPECT_TRUE(PyShDerivl_HasLayout(g_iface));
    EXPECT_EQ(py_str(PyShRef(py_eval(ns_.get(), "(lambda o: (o.n, __import__('weakref').ref(o)() is o))(Impl(3))")).get()),
              "(3, True)");
}

TEST_F(DerivedObject, ItIsAHeapTypeThatEveryInstanceHoldsForItsLifetime) {
    EXPECT_TRUE(PyType_HasFeature(g_iface, Py_TPFLAGS_HEAPTYPE));
    EXPECT_EQ(py_str(PyShRef(py_eval(ns_.get(), "(IWork.__module__, IWork.__name__)")).get()), "('tests', 'IWork')");
    PyShRef impl(py_eval(ns_.get(), "Impl"));
    Py_ssize_t base_refs = Py_REFCNT(g_iface), impl_refs = Py_REFCNT(impl.get());
    {
        PyShRef bare(py_eval(ns_.get(), "IWork.__new__(IWork)"));
        PyShRef sub(py_eval(ns_.get(), "Impl(2)"));
        EXPECT_EQ(Py_REFCNT(g_iface), base_refs + 1);
        EXPECT_EQ(Py_REFCNT(impl.get()), impl_refs + 1);
    }
    EXPECT_EQ(Py_REFCNT(g_iface), base_refs);
    EXPECT_EQ(Py_REFCNT(impl.get()), impl_refs);
    // a cycle through a subclass instance's dictionary is collected
    EXPECT_EQ(error_of("import gc, weakref\n"
                       "o = Impl(1); o.me = o; r = weakref.ref(o); del o; gc.collect()\n"
                       "assert r() is None\n"),
              "<no error>");
}

TEST_F(DerivedObject, TheExactTypeRefusesConstructionAndDictAssignment) {
    EXPECT_EQ(error_of("IWork()"),
              "TypeError: Can't directly instantiate the 'tests.IWork' abstract class. 'tests.IWork' must be subclassed.");
    EXPECT_EQ(error_of("IWork.__new__(IWork).__dict__ = {}"), "AttributeError: the __dict__ attribute is read-only");
    EXPECT_EQ(error_of("i = Impl(1); i.__dict__ = {'n': 2}; assert i.n == 2"), "<no error>");
}

TEST_F(DerivedObject, SubclassesCompareHashAndPrintLikePlainObjects) {
    EXPECT_EQ(error_of("a, b = Impl(1), Impl(1)\n"
                       "assert a != b and a == a and hash(a) == object.__hash__(a)\n"
                       "assert 'Impl object at' in repr(a)\n"),
              "<no error>");
}

TEST_F(DerivedObject, ForwardedOperationsNameWhatIsMissing) {
    const char* unbound = "NotImplementedError: the method cannot be invoked on an object that is not bound to the clr object";
    EXPECT_EQ(error_of("hash(IWork.__new__(IWork))"), unbound);
    EXPECT_EQ(error_of("str(IWork.__new__(IWork))"), unbound);
    EXPECT_EQ(error_of("IWork.__new__(IWork).work()"),
              "NotImplementedError: the method cannot be invoked on an object that is not bound to clr object");
    EXPECT_EQ(error_of("Partial().work()"), "NotImplementedError: 'work' abstract method should be implemented in subclasses");
}

TEST_F(DerivedObject, TheEntryCheckRunsForTheExactTypeOnly) {
    g_invalid = true;
    EXPECT_EQ(error_of("IWork.__new__(IWork)"), "TypeError: unusable");
    EXPECT_EQ(error_of("Impl(1)"), "<no error>");
    g_invalid = false;
}

TEST_F(DerivedObject, ReferencesQueuedOnAnotherThreadAreReleasedOnAPythonThread) {
    PyObject* obj = PyList_New(0);
    Py_INCREF(obj);  // the reference a twin would own
    Py_ssize_t before = Py_REFCNT(obj);
    Py_BEGIN_ALLOW_THREADS
    std::thread([obj] { PyShTwin_ReleaseLater(obj); }).join();
    Py_END_ALLOW_THREADS
    EXPECT_EQ(Py_REFCNT(obj), before);  // nothing released without the interpreter lock
    PyShTwin_DrainReleases();
    EXPECT_EQ(Py_REFCNT(obj), before - 1);
    PyShTwin_DrainReleases();  // a second drain finds nothing
    EXPECT_EQ(Py_REFCNT(obj), before - 1);
    Py_DECREF(obj);
}

TEST_F(DerivedObject, ReverseReferenceArraysAreReleasedAndZeroed) {
    PyObject* refs[3] = {PyList_New(0), nullptr, PyLong_FromLong(123456)};
    PyShTwin_ReleaseRefs(refs, 3);
    EXPECT_EQ(refs[0], nullptr);
    EXPECT_EQ(refs[1], nullptr);
    EXPECT_EQ(refs[2], nullptr);
}

}  // namespace
