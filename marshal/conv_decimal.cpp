#include "marshal/conv_decimal.h"

#include <climits>
#include <cstdint>
#include <vector>

#include "marshal/conv_errors.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"

namespace {

using uint128 = unsigned __int128;

constexpr int kMaxScale = 28;
constexpr int kMaxMantissaDigits = 29;  // 2^96 - 1 has 29 decimal digits
constexpr uint128 kMantissaEnd = uint128(1) << 96;
constexpr uint32_t kSignBit = 0x80000000u;

// decimal.Decimal by name: found in the loaded module on the usual path, imported otherwise.
// New reference, or NULL with an error.
PyObject*
decimal_type()
{
    PyShRef module(PyImport_GetModule(PyWrpIdModuleName_Decimal));
    if (module) {
        PyObject* type = PyObject_GetAttr(module.get(), PyWrpIdTypeName_Decimal);
        if (type != nullptr && PyType_Check(type))
            return type;
        Py_XDECREF(type);
        PyErr_Clear();  // the import below reports what is wrong
    }
    else if (PyErr_Occurred()) {
        return nullptr;
    }
    return PyShImport_ImportType(PyWrpIdModuleName_Decimal, PyWrpIdTypeName_Decimal);
}

[[gnu::cold, gnu::noinline]] int
fail_too_large()
{
    PyErr_Format(PyExc_OverflowError, "value too large for .Net '%s'", "Decimal");
    return 0;
}

[[gnu::cold, gnu::noinline]] int
fail_not_a_number()
{
    return marshal_fail_text(PyExc_ValueError, "value is not a number");
}

// The value of digits[0, keep) rounded half to even by the digits after it (zeros beyond the
// end). keep <= digits.size() and keep <= kMaxMantissaDigits + 1.
uint128
round_prefix(const std::vector<uint8_t>& digits, size_t keep)
{
    uint128 m = 0;
    for (size_t i = 0; i < keep; ++i)
        m = m * 10 + digits[i];
    if (keep >= digits.size())
        return m;
    uint8_t first_dropped = digits[keep];
    bool sticky = false;
    for (size_t i = keep + 1; i < digits.size() && !sticky; ++i)
        sticky = digits[i] != 0;
    if (first_dropped > 5 || (first_dropped == 5 && (sticky || (m & 1) != 0)))
        ++m;
    return m;
}

// 1 with out filled from sign, significant digits (no leading zeros) and exponent, or 0 with
// OverflowError.
int
assemble(bool negative, const std::vector<uint8_t>& digits, long long exponent, PyDecimalArg* out)
{
    uint128 mantissa = 0;
    long long scale = 0;
    const long long length = static_cast<long long>(digits.size());
    if (length == 0) {
        // Zero keeps its scale, as far as the managed type can hold it.
        scale = exponent < 0 ? (exponent < -kMaxScale ? kMaxScale : -exponent) : 0;
    }
    else if (exponent >= 0) {
        if (exponent > kMaxMantissaDigits - length)
            return fail_too_large();
        mantissa = round_prefix(digits, digits.size());
        for (long long i = 0; i < exponent; ++i)
            mantissa *= 10;
        if (mantissa >= kMantissaEnd)
            return fail_too_large();
    }
    else {
        const long long s = -exponent;
        long long drop = 0;
        if (s - kMaxScale > drop)
            drop = s - kMaxScale;
        if (length - kMaxMantissaDigits > drop)
            drop = length - kMaxMantissaDigits;
        for (;; ++drop) {
            // Dropping more places than the number has decimals would cut into the integer part.
            if (drop > s)
                return fail_too_large();
            size_t keep = drop >= length ? 0 : static_cast<size_t>(length - drop);
            if (drop > length) {
                mantissa = 0;  // every digit lies below the half of the last kept place
            }
            else {
                mantissa = round_prefix(digits, keep);
            }
            if (mantissa < kMantissaEnd)
                break;
        }
        scale = s - drop;
    }
    out->flags = static_cast<int32_t>((static_cast<uint32_t>(scale) << 16) | (negative ? kSignBit : 0u));
    out->hi32 = static_cast<uint32_t>(mantissa >> 64);
    out->lo64 = static_cast<uint64_t>(mantissa);
    return 1;
}

// 1 with the significant digits of a digit sequence, or 0 with an error.
int
read_digits(PyObject* sequence, std::vector<uint8_t>* digits)
{
    PyShRef fast(PySequence_Fast(sequence, "value is not a number"));
    if (!fast)
        return 0;
    Py_ssize_t n = PySequence_Fast_GET_SIZE(fast.get());
    PyObject** items = PySequence_Fast_ITEMS(fast.get());
    digits->reserve(static_cast<size_t>(n));
    for (Py_ssize_t i = 0; i < n; ++i) {
        if (!PyLong_Check(items[i]))
            return fail_not_a_number();
        long d = PyLong_AsLong(items[i]);
        if (d < 0 || d > 9) {
            PyErr_Clear();
            return fail_not_a_number();
        }
        if (digits->empty() && d == 0)
            continue;
        digits->push_back(static_cast<uint8_t>(d));
    }
    return 1;
}

// 1 with the exponent, or 0 with an error; letter codes (NaN, infinities) are refused.
int
read_exponent(PyObject* exponent, long long* out)
{
    if (PyUnicode_Check(exponent))
        return fail_not_a_number();
    if (!PyLong_Check(exponent))
        return marshal_fail_typename(PyExc_TypeError, "unknown exponent type '%s'", exponent);
    int overflow = 0;
    long long e = PyLong_AsLongLongAndOverflow(exponent, &overflow);
    if (e == -1 && PyErr_Occurred())
        return 0;
    // Beyond 64 bits the value is either far too large or rounds to zero; both are decided
    // by the sign alone.
    if (overflow > 0)
        e = LLONG_MAX;
    else if (overflow < 0)
        e = LLONG_MIN + 1;
    *out = e;
    return 1;
}

// 1 if `obj` is an instance of decimal.<type_name>, 0 if not, -1 with an error.
int
is_decimal_instance(PyObject* obj, PyObject* type_name)
{
    PyShRef type(PyShImport_ImportType(PyWrpIdModuleName_Decimal, type_name));
    if (!type)
        return -1;
    return PyObject_IsInstance(obj, type.get());
}

}  // namespace

int
fn_conv_py_decimal_tuple_to_clr_decimal(PyObject* obj, PyDecimalArg* out)
{
    PyShRef sign(PyObject_GetAttr(obj, PyWrpIdDecimal_Sign));
    if (!sign)
        return 0;
    PyShRef digits(PyObject_GetAttr(obj, PyWrpIdDecimal_Digits));
    if (!digits)
        return 0;
    PyShRef exponent(PyObject_GetAttr(obj, PyWrpIdDecimal_Exponent));
    if (!exponent)
        return 0;
    int negative = PyObject_IsTrue(sign.get());
    if (negative < 0)
        return 0;
    long long e = 0;
    if (!read_exponent(exponent.get(), &e))
        return 0;
    std::vector<uint8_t> significant;
    if (!read_digits(digits.get(), &significant))
        return 0;
    return assemble(negative != 0, significant, e, out);
}

int
fn_conv_py_decimal_to_clr_decimal(PyObject* obj, PyDecimalArg* out)
{
    int is_tuple = is_decimal_instance(obj, PyWrpIdTypeName_DecimalTuple);
    if (is_tuple < 0)
        return 0;
    if (is_tuple)
        return fn_conv_py_decimal_tuple_to_clr_decimal(obj, out);
    int is_decimal = is_decimal_instance(obj, PyWrpIdTypeName_Decimal);
    if (is_decimal < 0)
        return 0;
    if (!is_decimal)
        return marshal_fail_typename(PyExc_TypeError, "can't build Decimal from '%s'", obj);
    PyShRef as_tuple(PyObject_CallMethodNoArgs(obj, PyWrpIdDecimal_AsTuple));
    if (!as_tuple)
        return 0;
    return fn_conv_py_decimal_tuple_to_clr_decimal(as_tuple.get(), out);
}

PyObject*
fn_conv_clr_decimal_to_py_decimal(const PyDecimalArg* value)
{
    uint32_t flags = static_cast<uint32_t>(value->flags);
    int scale = static_cast<int>((flags >> 16) & 0xFF);
    uint128 mantissa = (uint128(value->hi32) << 64) | value->lo64;

    // "[-]<digits>E-<scale>": the decimal module keeps that exponent, so 12.50 stays 12.50.
    char text[1 + kMaxMantissaDigits + 5];
    char* end = text + sizeof text;
    char* p = end;
    if (scale > 0) {
        *--p = static_cast<char>('0' + scale % 10);
        if (scale >= 10)
            *--p = static_cast<char>('0' + scale / 10);
        *--p = '-';
        *--p = 'E';
    }
    do {
        *--p = static_cast<char>('0' + static_cast<int>(mantissa % 10));
        mantissa /= 10;
    } while (mantissa != 0);
    if (flags & kSignBit)
        *--p = '-';
    PyShRef digits(PyUnicode_FromStringAndSize(p, end - p));
    if (!digits)
        return nullptr;
    PyShRef type(decimal_type());
    if (!type)
        return nullptr;
    return PyObject_CallOneArg(type.get(), digits.get());
}

int
fn_read_py_decimal(PyObject* obj, PyDecimalArg* out)
{
    return fn_conv_py_decimal_to_clr_decimal(obj, out);
}

int
fn_read_py_decimal_tuple(PyObject* obj, PyDecimalArg* out)
{
    return fn_conv_py_decimal_tuple_to_clr_decimal(obj, out);
}

PyObject*
fn_write_py_decimal(const PyDecimalArg* value)
{
    return fn_conv_clr_decimal_to_py_decimal(value);
}
