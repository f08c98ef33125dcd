// Variant classification, by-reference parameters, and managed objects coming back as
// System.Object, with handle ownership tracked by a recording releaser.
#include <string>

#include "marshal/conv_scalar.h"
#include "marshal/conv_variant.h"
#include "objects/handle_lookup.h"
#include "objects/seal_object.h"
#include "tests/cpp/embedded_python.h"
#include "tests/cpp/fake_handles.h"

namespace {

class MarshalVariant : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import array, decimal, uuid, sys, types\n"
                                       "from datetime import datetime, date, time, timedelta\n"
                                       "class S(str): pass\n"
                                       "class B(bytes): pass\n"
                                       "class L(list): pass\n"
                                       "class Plain: pass\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    // A new instance of `type` (sealed layout) holding `handle` of `kind`.
    static PyShRef wrapper_of(PyTypeObject* type, void* handle, int32_t kind) {
        PyShRef obj(type->tp_alloc(type, 0));
        if (obj) {
            reinterpret_cast<PySealTpObject*>(obj.get())->handle = handle;
            reinterpret_cast<PySealTpObject*>(obj.get())->handle_kind = kind;
        }
        return obj;
    }
    PyShRef ns_;
};

TEST_F(MarshalVariant, PythonValuesAreClassifiedByKind) {
    const struct {
        const char* expr;
        int32_t tag;
    } cases[] = {
        {"True", VariantTag_Bool},
        {"1", VariantTag_Int},
        {"2**100", VariantTag_Int},
        {"1.0", VariantTag_Float},
        {"decimal.Decimal('1.5')", VariantTag_Decimal},
        {"decimal.Decimal('1.5').as_tuple()", VariantTag_DecimalTuple},
        {"datetime(2020, 1, 1)", VariantTag_DateTime},
        {"date(2020, 1, 1)", VariantTag_Date},
        {"time(1)", VariantTag_Time},
        {"timedelta(1)", VariantTag_TimeDelta},
        {"uuid.uuid4()", VariantTag_Uuid},
        {"'text'", VariantTag_Str},
        {"S('sub')", VariantTag_Str},
        {"b'raw'", VariantTag_Bytes},
        {"B(b'sub')", VariantTag_Bytes},
        {"bytearray(2)", VariantTag_Bytes},
        {"memoryview(b'x')", VariantTag_Bytes},
        {"[1]", VariantTag_List},
        {"(1,)", VariantTag_Tuple},
    };
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        VariantArg arg{-1, 0, nullptr};
        ASSERT_EQ(fn_conv_py_variant_to_clr_variant(obj.get(), &arg), 1) << c.expr;
        EXPECT_EQ(arg.tag, c.tag) << c.expr;
        EXPECT_EQ(arg.value, obj.get()) << c.expr;  // borrowed, never copied
    }
    VariantArg none{-1, 0, &none};
    ASSERT_EQ(fn_conv_py_variant_to_clr_variant(Py_None, &none), 1);
    EXPECT_EQ(none.tag, 0);
    EXPECT_EQ(none.value, nullptr);
}

TEST_F(MarshalVariant, UnknownObjectsAreRefused) {
    // A list subclass is neither the exact list kind nor a managed object; array.array is a
    // buffer but not one of the byte kinds.
    for (const char* expr : {"array.array('b', [1])", "L()", "Plain()", "{}", "object"}) {
        PyShRef obj = value(expr);
        VariantArg arg{};
        EXPECT_EQ(fn_conv_py_variant_to_clr_variant(obj.get(), &arg), 0) << expr;
        EXPECT_EQ(failure(), "TypeError: unknown variant type") << expr;
    }
}

TEST_F(MarshalVariant, WrappersPassTheirHandleAndKind) {
    FakeHandleRuntime runtime;
    PyShRef sealed = wrapper_of(fake_sealed_type(), fake_handle(1), HandleKind_Object);
    VariantArg arg{};
    ASSERT_EQ(fn_conv_py_variant_to_clr_variant(sealed.get(), &arg), 1);
    EXPECT_EQ(arg.tag, 0);
    EXPECT_EQ(arg.value, fake_handle(1));

    // A structure type: the inline handle marker on the type, the kind from the object.
    PyShRef struct_type(fake_sealed_heap_type("fake.Struct"));
    ASSERT_TRUE(struct_type);
    ASSERT_EQ(PyObject_SetAttrString(struct_type.get(), "_qrxsc2p_handle", Py_Ellipsis), 0);
    PyShRef boxed = wrapper_of(reinterpret_cast<PyTypeObject*>(struct_type.get()), fake_handle(2), HandleKind_Struct);
    ASSERT_EQ(fn_conv_py_variant_to_clr_variant(boxed.get(), &arg), 1);
    EXPECT_EQ(arg.tag, 1);
    EXPECT_EQ(arg.value, fake_handle(2));
    void* handle = nullptr;
    EXPECT_EQ(fn_conv_py_obj_to_clr_refobj_not_null_handle(boxed.get(), &handle), 0);
    EXPECT_EQ(fn_conv_py_obj_to_clr_refobj_not_null_handle(sealed.get(), &handle), 1);
    EXPECT_EQ(handle, fake_handle(1));

    // An instance of a Python subclass keeps its handle in a safe handle attribute.
    PyShRef derived = value("Plain()");
    PyShRef safe(fake_safe_handle(fake_handle(3)));
    ASSERT_EQ(PyObject_SetAttrString(derived.get(), "_qrxsc2p_handle", safe.get()), 0);
    ASSERT_EQ(fn_conv_py_variant_to_clr_variant(derived.get(), &arg), 1);
    EXPECT_EQ(arg.tag, 0);
    EXPECT_EQ(arg.value, fake_handle(3));
    EXPECT_EQ(fn_get_clr_obj_handle_from_attr(derived.get(), &handle), 1);
    EXPECT_EQ(handle, fake_handle(3));
    EXPECT_EQ(fn_get_clr_obj_handle_from_attr(sealed.get(), &handle), 0);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_TRUE(runtime.freed().empty());
}

TEST_F(MarshalVariant, ByReferenceParameters) {
    PyShRef list = value("[7, 'keep']");
    int32_t in_value = 0;
    PyParamByRef param{nullptr, reinterpret_cast<PyParamConverter>(&fn_conv_py_long_to_clr_int32), &in_value};
    ASSERT_EQ(fn_conv_py_parbyref_to_clr_parbyref(list.get(), &param), 1);
    EXPECT_EQ(in_value, 7);
    EXPECT_EQ(param.list, list.get());
    ASSERT_EQ(fn_push_parbyref_outvalue(list.get(), PyLong_FromLong(8)), 0);
    EXPECT_EQ(py_str(list.get()), "[8, 'keep']");

    PyShRef wrong_item = value("['x']");
    EXPECT_EQ(fn_conv_py_parbyref_to_clr_parbyref(wrong_item.get(), &param), 0);
    EXPECT_EQ(failure(), "TypeError: integer argument expected, got 'str'");
    for (const char* expr : {"L([1])", "[]", "(1,)"}) {
        PyShRef obj = value(expr);
        EXPECT_EQ(fn_conv_py_parbyref_to_clr_parbyref(obj.get(), &param), 0) << expr;
        std::string expected = std::string("TypeError: argument should be list contains default value, not '") +
                               Py_TYPE(obj.get())->tp_name + "'";
        EXPECT_EQ(failure(), expected) << expr;
    }

    PyShRef out_list = value("[]");
    PyObject* recorded = nullptr;
    ASSERT_EQ(fn_conv_py_orefpar_to_clr_orefpar(out_list.get(), &recorded), 1);
    EXPECT_EQ(recorded, out_list.get());
    PyObject* result = PyUnicode_FromString("out");
    Py_INCREF(result);
    ASSERT_EQ(fn_push_parbyref_outvalue(out_list.get(), result), 0);
    EXPECT_EQ(py_str(out_list.get()), "['out']");
    EXPECT_EQ(Py_REFCNT(result), 2);  // the list's and ours: the pushed one was consumed
    Py_DECREF(result);
    PyShRef tuple = value("()");
    EXPECT_EQ(fn_conv_py_orefpar_to_clr_orefpar(tuple.get(), &recorded), 0);
    EXPECT_EQ(failure(), "TypeError: argument should be empty list, not 'tuple'");
}

TEST_F(MarshalVariant, ManagedObjectsComeBackAsPyintroObjects) {
    FakeHandleRuntime runtime;
    PyShRef object_type(fake_sealed_heap_type("quorix.pyintro.Object"));
    ASSERT_TRUE(object_type);
    ASSERT_TRUE(py_exec(ns_.get(), "saved = {n: sys.modules.get(n) for n in ('quorix', 'quorix.pyintro')}\n"
                                   "fake = types.ModuleType('quorix.pyintro')\n"
                                   "sys.modules.setdefault('quorix', types.ModuleType('quorix'))\n"
                                   "sys.modules['quorix.pyintro'] = fake\n"));
    PyShRef fake = value("fake");
    ASSERT_EQ(PyObject_SetAttrString(fake.get(), "Object", object_type.get()), 0);

    VariantArg managed{HandleKind_Struct, 0, fake_handle(5)};
    PyShRef obj(fn_write_py_sysobj(&managed));
    ASSERT_TRUE(obj);
    EXPECT_EQ(Py_TYPE(obj.get()), reinterpret_cast<PyTypeObject*>(object_type.get()));
    EXPECT_EQ(reinterpret_cast<PySealTpObject*>(obj.get())->handle, fake_handle(5));
    EXPECT_EQ(reinterpret_cast<PySealTpObject*>(obj.get())->handle_kind, HandleKind_Struct);

    PyShRef text = value("'already Python'");
    VariantArg twin{2, 0, text.get()};
    Py_ssize_t before = Py_REFCNT(text.get());
    PyShRef same(fn_write_py_sysobj(&twin));
    EXPECT_EQ(same.get(), text.get());
    EXPECT_EQ(Py_REFCNT(text.get()), before + 1);

    VariantArg null_object{0, 0, nullptr};
    PyShRef none(fn_write_py_sysobj(&null_object));
    EXPECT_EQ(none.get(), Py_None);

    // Nothing can own the handle when the type cannot be imported: it is freed at once.
    ASSERT_TRUE(py_exec(ns_.get(), "del fake.Object\n"));
    VariantArg orphan{0, 0, fake_handle(6)};
    EXPECT_EQ(fn_write_py_sysobj(&orphan), nullptr);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_ImportError), 1);
    PyErr_Clear();
    ASSERT_EQ(runtime.freed().size(), 1u);
    EXPECT_EQ(runtime.freed()[0], fake_handle(6));
    ASSERT_TRUE(py_exec(ns_.get(), "for n, m in saved.items():\n"
                                   "    if m is None: del sys.modules[n]\n"
                                   "    else: sys.modules[n] = m\n"));
}

}  // namespace
