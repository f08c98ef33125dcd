// Decimals, GUIDs and version tuples. Expected decimals are rounded by Python's decimal
// module itself, which knows nothing of the 96-bit mantissa code under test.
#include <string>

#include "marshal/conv_decimal.h"
#include "marshal/conv_guid.h"
#include "marshal/conv_version.h"
#include "tests/cpp/embedded_python.h"

namespace {

class MarshalValues : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(),
                            "import decimal, uuid\n"
                            "from decimal import Decimal, DecimalTuple\n"
                            "MAX = Decimal(2**96 - 1)\n"
                            "def managed(d):\n"
                            "    # What a 96-bit mantissa with 0..28 decimal places holds, rounded half to even.\n"
                            "    ctx = decimal.Context(prec=200, rounding=decimal.ROUND_HALF_EVEN)\n"
                            "    places = max(0, min(-d.as_tuple().exponent, 28))\n"
                            "    while places >= 0:\n"
                            "        q = d.quantize(Decimal(1).scaleb(-places), context=ctx)\n"
                            "        if abs(int(q.scaleb(places, context=ctx))) < 2**96:\n"
                            "            return q\n"
                            "        places -= 1\n"
                            "    raise OverflowError\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    // Python's repr of decimal -> managed -> decimal.
    std::string round_trip(const char* expr) {
        PyShRef obj = value(expr);
        PyDecimalArg arg{};
        if (!obj || !fn_conv_py_decimal_to_clr_decimal(obj.get(), &arg))
            return "failed: " + failure();
        PyShRef back(fn_write_py_decimal(&arg));
        return back ? py_str(PyShRef(PyObject_Repr(back.get())).get()) : "failed back: " + failure();
    }
    std::string expected_repr(const char* expr) {
        std::string code = std::string("repr(managed(") + expr + "))";
        PyShRef r = value(code.c_str());
        return r ? py_str(r.get()) : "";
    }
    PyShRef ns_;
};

TEST_F(MarshalValues, DecimalsRoundTripWithTheirScale) {
    for (const char* expr : {"Decimal('0')", "Decimal('-0.000')", "Decimal('1.50')", "Decimal('-123456.789')",
                             "MAX", "Decimal(1 - 2**96)", "Decimal('7.9228162514264337593543950335')",
                             "Decimal('0.0000000000000000000000000001')", "Decimal('1E+5')", "Decimal(12345678901234567890)"}) {
        EXPECT_EQ(round_trip(expr), expected_repr(expr)) << expr;
    }
    // The scale survives: 1.50 is not 1.5.
    EXPECT_EQ(round_trip("Decimal('1.50')"), "Decimal('1.50')");
}

TEST_F(MarshalValues, ExcessDigitsAreRoundedHalfToEven) {
    for (const char* expr : {"Decimal('0.' + '1' * 30)", "Decimal('1E-30')", "Decimal('5E-29')", "Decimal('1.5E-28')",
                             "Decimal('2.5E-28')", "Decimal('79228162514264337593543950334.5')",
                             "Decimal('7.92281625142643375935439503355')", "Decimal('-3.14159265358979323846264338327950288')",
                             "Decimal('1' + '0' * 28 + '.25')"}) {
        EXPECT_EQ(round_trip(expr), expected_repr(expr)) << expr;
    }
}

TEST_F(MarshalValues, DecimalsBeyondTheManagedRangeAreRefused) {
    const struct {
        const char* expr;
        const char* message;
    } cases[] = {
        {"Decimal(2**96)", "OverflowError: value too large for .Net 'Decimal'"},
        {"Decimal('1E+29')", "OverflowError: value too large for .Net 'Decimal'"},
        {"Decimal('79228162514264337593543950335.5')", "OverflowError: value too large for .Net 'Decimal'"},
        {"DecimalTuple(0, (1,), 10**30)", "OverflowError: value too large for .Net 'Decimal'"},
        {"Decimal('NaN')", "ValueError: value is not a number"},
        {"Decimal('-Infinity')", "ValueError: value is not a number"},
        {"DecimalTuple(0, (1,), 2.5)", "TypeError: unknown exponent type 'float'"},
        {"DecimalTuple(0, (1, 12), 0)", "ValueError: value is not a number"},
        {"1.5", "TypeError: can't build Decimal from 'float'"},
    };
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        PyDecimalArg arg{};
        EXPECT_EQ(fn_conv_py_decimal_to_clr_decimal(obj.get(), &arg), 0) << c.expr;
        EXPECT_EQ(failure(), c.message) << c.expr;
    }
    // Far below the last place everything rounds to zero rather than failing.
    EXPECT_EQ(round_trip("DecimalTuple(0, (1,), -10**30)"), "Decimal('0E-28')");
}

TEST_F(MarshalValues, DecimalTuplesAndTheManagedLayout) {
    PyShRef tuple = value("DecimalTuple(1, (0, 0, 4, 2), -1)");
    PyDecimalArg arg{};
    ASSERT_EQ(fn_read_py_decimal_tuple(tuple.get(), &arg), 1);
    EXPECT_EQ(arg.lo64, 42u);
    EXPECT_EQ(arg.hi32, 0u);
    EXPECT_EQ(static_cast<uint32_t>(arg.flags), 0x80010000u);  // sign bit, scale 1

    PyDecimalArg big{0x001C0000, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF};  // (2^96-1) / 10^28
    PyShRef back(fn_conv_clr_decimal_to_py_decimal(&big));
    EXPECT_EQ(py_str(back.get()), "7.9228162514264337593543950335");
}

TEST_F(MarshalValues, GuidsRoundTripThroughTheManagedByteOrder) {
    PyShRef id = value("uuid.UUID('00112233-4455-6677-8899-aabbccddeeff')");
    PyGuidArg guid{};
    ASSERT_EQ(fn_conv_py_uuid_to_clr_guid_value(id.get(), &guid), 1);
    // Managed Guid order: the first three groups little-endian.
    const uint8_t expected[16] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                  0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
    EXPECT_EQ(memcmp(guid.bytes, expected, 16), 0);
    PyShRef back(fn_write_py_guid(&guid));
    ASSERT_TRUE(back);
    EXPECT_EQ(PyObject_RichCompareBool(back.get(), id.get(), Py_EQ), 1);

    PyShRef text = value("'00112233-4455-6677-8899-aabbccddeeff'");
    EXPECT_EQ(fn_read_py_guid(text.get(), &guid), 0);
    EXPECT_EQ(failure(), "TypeError: can't build Guid from 'str'");
}

TEST_F(MarshalValues, VersionTuples) {
    PySysVersionArg version{};
    PyShRef full = value("(1, 2, 3, 4)");
    ASSERT_EQ(fn_conv_py_tuple_to_clr_version(full.get(), &version), 1);
    EXPECT_EQ(version.count, 4);
    EXPECT_EQ(version.parts[3], 4);
    PyShRef back(fn_write_py_sysversion(&version));
    EXPECT_EQ(py_str(back.get()), "(1, 2, 3, 4)");

    ASSERT_EQ(fn_conv_py_tuple_to_clr_version(Py_None, &version), 1);
    EXPECT_EQ(version.count, -1);
    PyShRef none_back(fn_write_py_sysversion(&version));
    EXPECT_EQ(none_back.get(), Py_None);

    const struct {
        const char* expr;
        const char* message;
    } cases[] = {
        {"(1, 2, 3, 4, 5)",
         "ValueError: a version number tuple must contains at least 2 and at most 4 elements (5 given)"},
        {"(1,)", "ValueError: a version number tuple must contains at least 2 and at most 4 elements (1 given)"},
        {"[1, 2]", "TypeError: a tuple or None is required, not 'list'"},
        {"(1, '2')", "ValueError: an element of a version number tuple must be integer, not str"},
        {"(1, -2)", "ValueError: an element of a version number tuple must be greater or equal zero, not -2"},
    };
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        EXPECT_EQ(fn_conv_py_tuple_to_clr_version(obj.get(), &version), 0) << c.expr;
        EXPECT_EQ(failure(), c.message) << c.expr;
    }
}

}  // namespace
