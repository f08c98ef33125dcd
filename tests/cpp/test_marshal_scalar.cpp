// Scalars crossing into managed code: the integer rule, every width's limits with the exact
// messages, floats, sizes and the argument-count message.
#include <cmath>
#include <string>

#include "marshal/conv_scalar.h"
#include "tests/cpp/embedded_python.h"

namespace {

class MarshalScalar : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import enum\n"
                                       "class Small(int): pass\n"
                                       "class Color(enum.IntEnum):\n    RED = 7\n"
                                       "class Idx:\n    def __index__(self): return 42\n"
                                       "class F(float): pass\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }

    // "ExcType: message" of the error a failed conversion left, which must be exactly one.
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }

    PyShRef ns_;
};

TEST_F(MarshalScalar, BoolAcceptsOnlyBool) {
    int32_t out = 7;
    ASSERT_EQ(fn_conv_py_bool_to_clr_bool(Py_True, &out), 1);
    EXPECT_EQ(out, 1);
    ASSERT_EQ(fn_conv_py_bool_to_clr_bool(Py_False, &out), 1);
    EXPECT_EQ(out, 0);
    PyShRef one = value("1");
    EXPECT_EQ(fn_conv_py_bool_to_clr_bool(one.get(), &out), 0);
    EXPECT_EQ(failure(), "TypeError: can't build bool from 'int'");
}

TEST_F(MarshalScalar, IntegerRuleRefusesBoolAndNonIntegers) {
    int32_t out = 0;
    EXPECT_EQ(fn_conv_py_long_to_clr_int32(Py_True, &out), 0);
    EXPECT_EQ(failure(), "TypeError: integer argument expected, got 'bool'");
    PyShRef text = value("'5'");
    EXPECT_EQ(fn_conv_py_long_to_clr_int32(text.get(), &out), 0);
    EXPECT_EQ(failure(), "TypeError: integer argument expected, got 'str'");
    PyShRef index_only = value("Idx()");
    EXPECT_EQ(fn_conv_py_long_to_clr_int32(index_only.get(), &out), 0);
    EXPECT_EQ(failure(), "TypeError: integer argument expected, got 'Idx'");
}

TEST_F(MarshalScalar, SignedWidthsAcceptTheirLimitsAndRefuseOneBeyond) {
    const struct {
        const char* inside_low;
        const char* inside_high;
        const char* beyond;
        const char* message;
        int (*convert)(PyObject*, int64_t*);
    } widths[] = {
        {"-128", "127", "128", "OverflowError: value '128' is out of the INT8 range",
         [](PyObject* o, int64_t* v) { int8_t x = 0; int r = fn_conv_py_long_to_clr_int8(o, &x); *v = x; return r; }},
        {"-32768", "32767", "-32769", "OverflowError: value '-32769' is out of the INT16 range",
         [](PyObject* o, int64_t* v) { int16_t x = 0; int r = fn_conv_py_long_to_clr_int16(o, &x); *v = x; return r; }},
        {"-2**31", "2**31-1", "2**31", "OverflowError: value '2147483648' is out of the INT32 range",
         [](PyObject* o, int64_t* v) { int32_t x = 0; int r = fn_conv_py_long_to_clr_int32(o, &x); *v = x; return r; }},
    };
    for (const auto& w : widths) {
        for (const char* expr : {w.inside_low, w.inside_high}) {
            PyShRef obj = value(expr);
            int64_t got = 0;
            ASSERT_EQ(w.convert(obj.get(), &got), 1) << expr;
            EXPECT_EQ(got, PyLong_AsLongLong(obj.get())) << expr;
        }
        PyShRef beyond = value(w.beyond);
        int64_t got = 0;
        EXPECT_EQ(w.convert(beyond.get(), &got), 0) << w.beyond;
        EXPECT_EQ(failure(), w.message);
    }
}

TEST_F(MarshalScalar, UnsignedWidthsRangeAndNegativeNumbers) {
    uint8_t u8 = 0;
    PyShRef max8 = value("255");
    ASSERT_EQ(fn_conv_py_ulong_to_clr_uint8(max8.get(), &u8), 1);
    EXPECT_EQ(u8, 255);
    PyShRef over8 = value("256");
    EXPECT_EQ(fn_conv_py_ulong_to_clr_uint8(over8.get(), &u8), 0);
    EXPECT_EQ(failure(), "OverflowError: value '256' is out of the UINT8 range");

    // A negative number keeps the interpreter's own wording.
    PyShRef minus_one = value("-1");
    EXPECT_EQ(fn_conv_py_ulong_to_clr_uint8(minus_one.get(), &u8), 0);
    EXPECT_EQ(failure(), "OverflowError: can't convert negative value to unsigned int");

    uint16_t u16 = 0;
    PyShRef over16 = value("65536");
    EXPECT_EQ(fn_conv_py_ulong_to_clr_uint16(over16.get(), &u16), 0);
    EXPECT_EQ(failure(), "OverflowError: value '65536' is out of the UINT16 range");

    // All ones is a real value here, not an error marker.
    uint32_t u32 = 0;
    PyShRef all_ones = value("2**64-1");
    EXPECT_EQ(fn_conv_py_ulong_to_clr_uint32(all_ones.get(), &u32), 0);
    EXPECT_EQ(failure(), "OverflowError: value '18446744073709551615' is out of the UINT32 range");
    PyShRef max32 = value("2**32-1");
    ASSERT_EQ(fn_conv_py_ulong_to_clr_uint32(max32.get(), &u32), 1);
    EXPECT_EQ(u32, 4294967295u);
}

TEST_F(MarshalScalar, SixtyFourBitWidthsUseTheInterpretersLimits) {
    int64_t i64 = 0;
    PyShRef min64 = value("-2**63");
    ASSERT_EQ(fn_conv_py_long_to_clr_int64(min64.get(), &i64), 1);
    EXPECT_EQ(i64, INT64_MIN);
    PyShRef over64 = value("2**63");
    EXPECT_EQ(fn_conv_py_long_to_clr_int64(over64.get(), &i64), 0);
    EXPECT_EQ(failure(), "OverflowError: int too big to convert");

    uint64_t u64 = 0;
    PyShRef max_u64 = value("2**64-1");
    ASSERT_EQ(fn_conv_py_ulong_to_clr_uint64(max_u64.get(), &u64), 1);
    EXPECT_EQ(u64, UINT64_MAX);
    PyShRef over_u64 = value("2**64");
    EXPECT_EQ(fn_conv_py_ulong_to_clr_uint64(over_u64.get(), &u64), 0);
    EXPECT_EQ(failure(), "OverflowError: int too big to convert");
}

TEST_F(MarshalScalar, IntSubclassesFollowTheProbe) {
    int32_t out = 0;
    PyShRef member = value("Color.RED");
    PyShRef subclass = value("Small(3)");
    for (PyObject* obj : {member.get(), subclass.get()}) {
        int accepted = PyShLong_Check(obj);
        ASSERT_GE(accepted, 0);
        EXPECT_EQ(fn_conv_py_long_to_clr_int32(obj, &out), accepted);
        if (!accepted) {
            EXPECT_EQ(failure(), std::string("TypeError: integer argument expected, got '") + Py_TYPE(obj)->tp_name + "'");
        }
    }
}

TEST_F(MarshalScalar, FloatsTakeIntegersUpToTwoToTheSixtyFour) {
    double d = 0;
    PyShRef sub = value("F(2.5)");
    ASSERT_EQ(fn_conv_py_float_to_clr_double(sub.get(), &d), 1);
    EXPECT_EQ(d, 2.5);
    PyShRef big = value("2**63");
    ASSERT_EQ(fn_conv_py_float_to_clr_double(big.get(), &d), 1);
    EXPECT_EQ(d, 9.223372036854775808e18);
    PyShRef top = value("2**64-1");
    ASSERT_EQ(fn_conv_py_float_to_clr_double(top.get(), &d), 1);
    EXPECT_EQ(d, 18446744073709551615.0);
    PyShRef beyond = value("2**64");
    EXPECT_EQ(fn_conv_py_float_to_clr_double(beyond.get(), &d), 0);
    EXPECT_EQ(failure(), "OverflowError: int too big to convert");
    PyShRef negative = value("-2**63 - 1");
    EXPECT_EQ(fn_conv_py_float_to_clr_double(negative.get(), &d), 0);
    EXPECT_EQ(failure(), "OverflowError: can't convert negative int to unsigned");
    EXPECT_EQ(fn_conv_py_float_to_clr_double(Py_True, &d), 0);
    EXPECT_EQ(failure(), "TypeError: numeric argument expected, got 'bool'");

    float f = 0;
    PyShRef huge = value("1e300");
    ASSERT_EQ(fn_conv_py_float_to_clr_float(huge.get(), &f), 1);
    EXPECT_TRUE(std::isinf(f));
}

TEST_F(MarshalScalar, SizesAndOptionalSizes) {
    Py_ssize_t n = -7;
    PyShRef idx = value("Idx()");
    ASSERT_EQ(fn_conv_py_obj_to_ssize_t(idx.get(), &n), 1);
    EXPECT_EQ(n, 42);
    PyShRef text = value("'x'");
    EXPECT_EQ(fn_conv_py_obj_to_ssize_t(text.get(), &n), 0);
    EXPECT_EQ(failure(), "TypeError: argument should be integer or None, not 'str'");
    PyShRef huge = value("2**70");
    EXPECT_EQ(fn_conv_py_obj_to_ssize_t(huge.get(), &n), 0);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_OverflowError), 1);
    PyErr_Clear();

    Py_ssize_t size = -1;
    PyShRef none_args = value("(None,)");
    PyShRef no_args = value("()");
    ASSERT_EQ(fn_conv_py_optional_to_ssize_t(none_args.get(), &size), 1);
    ASSERT_EQ(fn_conv_py_optional_to_ssize_t(no_args.get(), &size), 1);
    EXPECT_EQ(size, -1);
    PyShRef five = value("(5, 'ignored')");
    ASSERT_EQ(fn_conv_py_optional_to_ssize_t(five.get(), &size), 1);
    EXPECT_EQ(size, 5);
}

TEST_F(MarshalScalar, ArgumentCountMessages) {
    EXPECT_EQ(fn_check_args_count_out_of_range(1, "read", 0, 1), 0);
    const struct {
        Py_ssize_t given;
        const char* name;
        Py_ssize_t min, max;
        const char* message;
    } cases[] = {
        {0, nullptr, 1, 1, "TypeError: function takes exactly 1 argument (0 given)"},
        {3, "save", 1, 2, "TypeError: save() takes at most 2 arguments (3 given)"},
        {0, "seek", 1, 2, "TypeError: seek() takes at least 1 argument (0 given)"},
        {1, "close", 0, 0, "TypeError: close() takes exactly 0 arguments (1 given)"},
        {4, "pop", 2, 3, "TypeError: pop() takes at most 3 arguments (4 given)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fn_check_args_count_out_of_range(c.given, c.name, c.min, c.max), 1);
        EXPECT_EQ(failure(), c.message);
    }
}

TEST_F(MarshalScalar, ElementReadersClassifyIntegerWidths) {
    const struct {
        const char* expr;
        int kind;
    } cases[] = {{"0", 1}, {"-2**31", 1}, {"2**31", 2}, {"-2**63", 2}, {"2**63", 3}, {"2**64-1", 3}};
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        int64_t out = 0;
        ASSERT_EQ(fn_read_py_vers_long(obj.get(), &out), c.kind) << c.expr;
        if (c.kind == 3)
            EXPECT_EQ(static_cast<uint64_t>(out), PyLong_AsUnsignedLongLong(obj.get())) << c.expr;
        else
            EXPECT_EQ(out, PyLong_AsLongLong(obj.get())) << c.expr;
    }
    int64_t out = 0;
    PyShRef too_big = value("2**64");
    EXPECT_EQ(fn_read_py_vers_long(too_big.get(), &out), 0);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_OverflowError), 1);
    PyErr_Clear();
    PyShRef too_small = value("-2**63-1");
    EXPECT_EQ(fn_read_py_vers_long(too_small.get(), &out), 0);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_OverflowError), 1);
    PyErr_Clear();
    PyShRef text = value("'1'");
    EXPECT_EQ(fn_read_py_vers_long(text.get(), &out), 0);
    EXPECT_EQ(failure(), "TypeError: can't build integer value from 'str'");
}

TEST_F(MarshalScalar, ElementReadersOfBoolsAndDoublesTakeWhatPythonConverts) {
    double d = 0;
    PyShRef idx = value("Idx()");
    ASSERT_EQ(fn_read_py_double(idx.get(), &d), 1);
    EXPECT_EQ(d, 42.0);
    EXPECT_EQ(fn_read_py_bool(idx.get()), 1);
    PyShRef text = value("'x'");
    EXPECT_EQ(fn_read_py_double(text.get(), &d), 0);
    EXPECT_EQ(failure(), "TypeError: must be real number, not str");
    PyShRef all_ones(fn_write_py_ulonglong(UINT64_MAX));
    EXPECT_EQ(py_str(all_ones.get()), "18446744073709551615");
}

}  // namespace
