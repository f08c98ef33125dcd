// Booleans, integers of every managed width, floating-point numbers, sizes and the
// argument-count check. Python-to-managed conversions return 1, or 0 with an exception set;
// managed-to-Python ones return a new reference or NULL. The hot ones are inline: generated
// methods call them once per argument.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/conv_errors.h"
#include "module/pysh.h"

constexpr const char kMsgIntegerExpected[] = "integer argument expected, got '%s'";
constexpr const char kMsgNumericExpected[] = "numeric argument expected, got '%s'";

// 1 when `obj` is an integer the binding accepts (exact int; bool refused; other int
// subclasses as PyShLong_Check decides), else 0 with TypeError `format` naming its type.
inline int
marshal_check_integer(PyObject* obj, const char* format)
{
    if (PyLong_CheckExact(obj))
        return 1;
    int accepted = PyShLong_Check(obj);
    if (accepted > 0)
        return 1;
    if (accepted == 0)
        marshal_fail_typename(PyExc_TypeError, format, obj);
    return 0;
}

// 1 with *value in [lo, hi], or 0 with an error; `range_format` prints the 64-bit value.
inline int
marshal_read_signed(PyObject* obj, long lo, long hi, const char* range_format, long* value)
{
    if (!marshal_check_integer(obj, kMsgIntegerExpected))
        return 0;
    long v = PyLong_AsLong(obj);
    if (v == -1 && PyErr_Occurred())
        return 0;
    if (v < lo || v > hi)
        return marshal_fail_signed(range_format, v);
    *value = v;
    return 1;
}

// 1 with *value <= hi, or 0 with an error. Negative numbers keep the interpreter's own error.
inline int
marshal_read_unsigned(PyObject* obj, unsigned long hi, const char* range_format, unsigned long* value)
{
    if (!marshal_check_integer(obj, kMsgIntegerExpected))
        return 0;
    unsigned long v = PyLong_AsUnsignedLong(obj);
    if (v == static_cast<unsigned long>(-1) && PyErr_Occurred())
        return 0;
    if (v > hi)
        return marshal_fail_unsigned(range_format, v);
    *value = v;
    return 1;
}

inline int
fn_conv_py_bool_to_clr_bool(PyObject* obj, int32_t* out)
{
    if (!PyBool_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, "can't build bool from '%s'", obj);
    *out = obj == Py_True;
    return 1;
}

inline int
fn_conv_py_long_to_clr_int8(PyObject* obj, int8_t* out)
{
    long v = 0;
    if (!marshal_read_signed(obj, INT8_MIN, INT8_MAX, "value '%li' is out of the INT8 range", &v))
        return 0;
    *out = static_cast<int8_t>(v);
    return 1;
}

inline int
fn_conv_py_ulong_to_clr_uint8(PyObject* obj, uint8_t* out)
{
    unsigned long v = 0;
    if (!marshal_read_unsigned(obj, UINT8_MAX, "value '%lu' is out of the UINT8 range", &v))
        return 0;
    *out = static_cast<uint8_t>(v);
    return 1;
}

inline int
fn_conv_py_long_to_clr_int16(PyObject* obj, int16_t* out)
{
    long v = 0;
    if (!marshal_read_signed(obj, INT16_MIN, INT16_MAX, "value '%li' is out of the INT16 range", &v))
        return 0;
    *out = static_cast<int16_t>(v);
    return 1;
}

inline int
fn_conv_py_ulong_to_clr_uint16(PyObject* obj, uint16_t* out)
{
    unsigned long v = 0;
    if (!marshal_read_unsigned(obj, UINT16_MAX, "value '%lu' is out of the UINT16 range", &v))
        return 0;
    *out = static_cast<uint16_t>(v);
    return 1;
}

inline int
fn_conv_py_long_to_clr_int32(PyObject* obj, int32_t* out)
{
    long v = 0;
    if (!marshal_read_signed(obj, INT32_MIN, INT32_MAX, "value '%li' is out of the INT32 range", &v))
        return 0;
    *out = static_cast<int32_t>(v);
    return 1;
}

inline int
fn_conv_py_ulong_to_clr_uint32(PyObject* obj, uint32_t* out)
{
    unsigned long v = 0;
    if (!marshal_read_unsigned(obj, UINT32_MAX, "value '%lu' is out of the UINT32 range", &v))
        return 0;
    *out = static_cast<uint32_t>(v);
    return 1;
}

inline int
fn_conv_py_long_to_clr_int64(PyObject* obj, int64_t* out)
{
    if (!marshal_check_integer(obj, kMsgIntegerExpected))
        return 0;
    long long v = PyLong_AsLongLong(obj);
    if (v == -1 && PyErr_Occurred())
        return 0;
    *out = v;
    return 1;
}

inline int
fn_conv_py_ulong_to_clr_uint64(PyObject* obj, uint64_t* out)
{
    if (!marshal_check_integer(obj, kMsgIntegerExpected))
        return 0;
    unsigned long long v = PyLong_AsUnsignedLongLong(obj);
    if (v == static_cast<unsigned long long>(-1) && PyErr_Occurred())
        return 0;
    *out = v;
    return 1;
}

// 1 with an integer widened to double (up to 2^64-1, rounded), or 0 with an error.
int marshal_integer_to_double(PyObject* obj, double* out);

inline int
fn_conv_py_float_to_clr_double(PyObject* obj, double* out)
{
    if (PyFloat_Check(obj)) {
        *out = PyFloat_AS_DOUBLE(obj);
        return 1;
    }
    return marshal_integer_to_double(obj, out);
}

// Narrowed without a range check: managed float has no error path for large values either.
inline int
fn_conv_py_float_to_clr_float(PyObject* obj, float* out)
{
    double v = 0;
    if (!fn_conv_py_float_to_clr_double(obj, &v))
        return 0;
    *out = static_cast<float>(v);
    return 1;
}

// Any object with __index__; 1 with the value, or 0 with TypeError / OverflowError.
int fn_conv_py_obj_to_ssize_t(PyObject* obj, Py_ssize_t* out);
// The first item of `args`, when present and not None, by fn_conv_py_obj_to_ssize_t;
// otherwise *out keeps the caller's default. 1, or 0 with an error.
int fn_conv_py_optional_to_ssize_t(PyObject* args, Py_ssize_t* out);
// 0 when min <= given <= max, else 1 with TypeError "<name>() takes ... (<given> given)".
int fn_check_args_count_out_of_range(Py_ssize_t given, const char* name, Py_ssize_t min, Py_ssize_t max);

// ---- element converters of the generic tables
// PyObject_IsTrue: 1, 0, or -1 with an error.
int fn_read_py_bool(PyObject* obj);
// 1 when the int fits signed 32 bits, 2 signed 64 bits, 3 unsigned 64 bits (bits stored as
// they are); 0 with an error.
int fn_read_py_vers_long(PyObject* obj, int64_t* out);
// Whatever PyFloat_AsDouble accepts; 1, or 0 with an error.
int fn_read_py_double(PyObject* obj, double* out);
// New reference to True or False.
PyObject* fn_write_py_bool(int32_t value);
// New int, or NULL.
PyObject* fn_write_py_long(int32_t value);
PyObject* fn_write_py_ulong(uint32_t value);
PyObject* fn_write_py_longlong(int64_t value);
PyObject* fn_write_py_ulonglong(uint64_t value);
// New float, or NULL.
PyObject* fn_write_py_double(double value);
