// Type services for managed code: binding objects of sibling types, enumeration members and
// objects of types named by vectors, with every handle's fate tracked by a recording releaser.
#include <string>

#include "builtins/tpfuncs_callbacks.h"
#include "module/ids.h"
#include "objects/seal_object.h"
#include "tests/cpp/embedded_python.h"
#include "tests/cpp/fake_handles.h"

namespace {

class TypeCallbacks : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(),
                            "import enum, sys, types\n"
                            "mod = types.ModuleType('qrxtest_types')\n"
                            "sys.modules['qrxtest_types'] = mod\n"
                            "handles = {}\n"
                            "class Color(enum.IntEnum):\n    RED = 1\n"
                            "class Good:\n"
                            "    @staticmethod\n"
                            "    def _qrxsc2p_gettpextratie(): return handles['good']\n"
                            "class Empty:\n"
                            "    @staticmethod\n"
                            "    def _qrxsc2p_gettpextratie(): return handles['empty']\n"
                            "class Wrong:\n"
                            "    @staticmethod\n"
                            "    def _qrxsc2p_gettpextratie(): return 42\n"
                            "class Failing:\n"
                            "    @staticmethod\n"
                            "    def _qrxsc2p_gettpextratie(): raise OSError('no binding')\n"
                            "class Derived: pass\n"
                            "for c in (Color, Good, Empty, Wrong, Failing, Derived): setattr(mod, c.__name__, c)\n"));
        module_ = PyShRef(PyUnicode_InternFromString("qrxtest_types"));
    }
    void TearDown() override {
        py_exec(ns_.get(), "del sys.modules['qrxtest_types']\nhandles.clear()\n");
        PyTest::TearDown();
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    // {module, type, NULL} for a type of the test module; the names live in the fixture.
    PyObject* const* names(const char* type) {
        type_.reset(PyUnicode_InternFromString(type));
        vector_[0] = module_.get();
        vector_[1] = type_.get();
        vector_[2] = nullptr;
        return vector_;
    }
    void set_module_attr(const char* name, PyObject* obj) {
        PyShRef mod = value("mod");
        ASSERT_EQ(PyObject_SetAttrString(mod.get(), name, obj), 0);
    }
    PyShRef ns_;
    PyShRef module_;
    PyShRef type_;
    PyObject* vector_[3] = {};
};

TEST_F(TypeCallbacks, BindingHandlesComeWithTheirOwner) {
    FakeHandleRuntime runtime;
    PyShRef handles = value("handles");
    PyShRef good(fake_safe_handle(fake_handle(1)));
    PyShRef empty(fake_safe_handle(nullptr));
    PyDict_SetItemString(handles.get(), "good", good.get());
    PyDict_SetItemString(handles.get(), "empty", empty.get());

    PyObject* holder = nullptr;
    EXPECT_EQ(fn_gettpextratie(names("Good"), 0, &holder), fake_handle(1));
    EXPECT_EQ(holder, good.get());
    Py_XDECREF(holder);

    // Not a safe handle: an error only when not quiet.
    holder = nullptr;
    EXPECT_EQ(fn_gettpextratie(names("Wrong"), 1, &holder), nullptr);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(fn_gettpextratie(names("Wrong"), 0, &holder), nullptr);
    EXPECT_EQ(failure(),
              "TypeError: The _qrxsc2p_gettpextratie method is expected to return a target object safe handle, not 'int'");

    // A safe handle holding nothing: the other way round.
    EXPECT_EQ(fn_gettpextratie(names("Empty"), 0, &holder), nullptr);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(fn_gettpextratie(names("Empty"), 1, &holder), nullptr);
    EXPECT_EQ(failure(), "ValueError: The method '_qrxsc2p_gettpextratie' returned a handle that is not set to an "
                         "object instance (NULL)");

    EXPECT_EQ(fn_gettpextratie(names("Failing"), 1, &holder), nullptr);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(fn_gettpextratie(names("Failing"), 0, &holder), nullptr);
    EXPECT_EQ(failure(), "OSError: no binding");
    EXPECT_EQ(fn_gettpextratie(names("Missing"), 0, &holder), nullptr);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_ImportError), 1);
    PyErr_Clear();
    EXPECT_EQ(holder, nullptr);
}

TEST_F(TypeCallbacks, SiblingTypesByTableIndex) {
    FakeHandleRuntime runtime;
    PyShRef safe(fake_safe_handle(fake_handle(2)));
    ASSERT_TRUE(py_exec(ns_.get(), "saved = {n: sys.modules.get(n) for n in ('quorix', 'quorix.pygfx')}\n"
                                   "gfx = types.ModuleType('quorix.pygfx')\n"
                                   "sys.modules.setdefault('quorix', types.ModuleType('quorix'))\n"
                                   "sys.modules['quorix.pygfx'] = gfx\n"
                                   "class GfxColor:\n"
                                   "    @staticmethod\n"
                                   "    def _qrxsc2p_gettpextrabind(): return handles['color']\n"
                                   "gfx.Color = GfxColor\n"));
    PyShRef handles = value("handles");
    PyDict_SetItemString(handles.get(), "color", safe.get());
    PyObject* holder = nullptr;
    void* handle = fn_gettpextrabind_of(PyWrpIdUcsbTpNames_Color, 0, &holder);
    void* missing = fn_gettpextrabind_of(PyWrpIdUcsbTpNames_Point, 1, &holder);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    void* out_of_range = fn_gettpextrabind_of(PyWrpIdUcsbTpNames_Count, 0, &holder);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_IndexError), 1);
    PyErr_Clear();
    ASSERT_TRUE(py_exec(ns_.get(), "for n, m in saved.items():\n"
                                   "    if m is None: del sys.modules[n]\n"
                                   "    else: sys.modules[n] = m\n"));
    EXPECT_EQ(handle, fake_handle(2));
    EXPECT_EQ(holder, safe.get());
    Py_XDECREF(holder);
    EXPECT_EQ(missing, nullptr);
    EXPECT_EQ(out_of_range, nullptr);
}

TEST_F(TypeCallbacks, EnumerationMembersConsumeTheValue) {
    PyObject* one = PyLong_FromLong(1);
    PyShRef member(fn_from_enum_and_pytype(names("Color"), one));
    EXPECT_EQ(py_str(member.get()), "1");
    PyShRef red = value("Color.RED");
    EXPECT_EQ(member.get(), red.get());

    PyObject* big = PyLong_FromString("1000000000000000000000", nullptr, 10);
    Py_INCREF(big);
    EXPECT_EQ(fn_from_enum_and_pytype(names("Color"), big), nullptr);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_ValueError), 1);
    PyErr_Clear();
    EXPECT_EQ(Py_REFCNT(big), 1);
    Py_INCREF(big);
    EXPECT_EQ(fn_from_enum_and_pytype(names("Missing"), big), nullptr);
    PyErr_Clear();
    EXPECT_EQ(Py_REFCNT(big), 1);
    Py_DECREF(big);
}

TEST_F(TypeCallbacks, ManagedObjectsBecomeWrappersOrDerivedInstances) {
    FakeHandleRuntime runtime;
    set_module_attr("Sealed", reinterpret_cast<PyObject*>(fake_sealed_type()));
    VariantArg structure{HandleKind_Struct, 0, fake_handle(3)};
    PyShRef wrapper(fn_from_obj_and_pytype(names("Sealed"), &structure));
    ASSERT_TRUE(wrapper);
    EXPECT_EQ(Py_TYPE(wrapper.get()), fake_sealed_type());
    EXPECT_EQ(reinterpret_cast<PySealTpObject*>(wrapper.get())->handle, fake_handle(3));
    EXPECT_EQ(reinterpret_cast<PySealTpObject*>(wrapper.get())->handle_kind, HandleKind_Struct);

    // A Python class keeps the handle in a safe handle that frees it with the instance.
    VariantArg object{0, 0, fake_handle(4)};
    PyShRef derived(fn_from_obj_and_pytype(names("Derived"), &object));
    ASSERT_TRUE(derived);
    PyShRef attr(PyObject_GetAttrString(derived.get(), "_qrxsc2p_handle"));
    ASSERT_TRUE(attr);
    EXPECT_EQ(fake_safe_handle_value(attr.get()), fake_handle(4));
    attr.reset();
    EXPECT_TRUE(runtime.freed().empty());
    derived.reset();
    ASSERT_EQ(runtime.freed().size(), 1u);
    EXPECT_EQ(runtime.freed()[0], fake_handle(4));

    PyShRef twin = value("Derived()");
    VariantArg python_origin{2, 0, twin.get()};
    PyShRef same(fn_from_obj_and_pytype(names("Derived"), &python_origin));
    EXPECT_EQ(same.get(), twin.get());
}

TEST_F(TypeCallbacks, HandlesThatFindNoOwnerAreFreedExactlyOnce) {
    FakeHandleRuntime runtime;
    VariantArg object{0, 0, fake_handle(5)};
    EXPECT_EQ(fn_from_obj_and_pytype(names("Missing"), &object), nullptr);
    PyErr_Clear();
    ASSERT_EQ(runtime.freed().size(), 1u);
    EXPECT_EQ(runtime.freed()[0], fake_handle(5));

    // A heap type without an instance dictionary cannot take the attribute: the safe handle
    // made for it frees the handle, and nothing frees it a second time.
    PyShRef no_dict(fake_sealed_heap_type("qrxtest_types.NoDict"));
    set_module_attr("NoDict", no_dict.get());
    VariantArg orphan{0, 0, fake_handle(6)};
    EXPECT_EQ(fn_from_obj_and_pytype(names("NoDict"), &orphan), nullptr);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_AttributeError), 1);
    PyErr_Clear();
    ASSERT_EQ(runtime.freed().size(), 2u);
    EXPECT_EQ(runtime.freed()[1], fake_handle(6));
}

}  // namespace
