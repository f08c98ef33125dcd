// Converters for parameters whose managed signature rules out some values the plain converter
// lets through: None where null is not allowed, NaN and infinities where a measure is expected,
// negative numbers for limits. The generator picks them from the metadata; refusing here means
// the managed code never sees the value, and a dispatcher moves on to the next overload.
#pragma once

#include <Python.h>

#include <cmath>
#include <cstdint>

#include "marshal/conv_bytes.h"
#include "marshal/conv_errors.h"
#include "marshal/conv_scalar.h"
#include "marshal/conv_text.h"

// ---- None refused with the text any other unsuitable value gets; 1, or 0 with TypeError

inline int
fn_conv_py_string_to_clr_string_not_none(PyObject* obj, PyStringArg* out)
{
    if (obj == Py_None)
        return marshal_fail_typename(PyExc_TypeError, "can't build String from '%s'", obj);
    return fn_conv_py_string_to_clr_string(obj, out);
}

inline int
fn_conv_py_strorpath_to_clr_string_not_none(PyObject* obj, PyEphStrArg* out)
{
    if (obj == Py_None)
        return marshal_fail_typename(PyExc_TypeError, "can't build String from '%s'", obj);
    return fn_conv_py_strorpath_to_clr_string(obj, out);
}

inline int
fn_conv_py_bytes_to_clr_bytes_not_none(PyObject* obj, PyBytesArg* out)
{
    if (obj == Py_None)
        return marshal_fail_typename(PyExc_TypeError, "can't build byte[] from '%s'", obj);
    return fn_conv_py_bytes_to_clr_bytes(obj, out);
}

// ---- a file name where an overload at the same position takes bytes: the bytes are data, so
// only a str or a path-like names a file; 1, or 0 with TypeError

inline int
fn_conv_py_pathname_to_clr_string(PyObject* obj, PyEphStrArg* out)
{
    if (obj != Py_None && !PyUnicode_Check(obj) && PyObject_CheckBuffer(obj))
        return marshal_fail_typename(PyExc_TypeError, "can't build String from '%s'", obj);
    return fn_conv_py_strorpath_to_clr_string(obj, out);
}

inline int
fn_conv_py_pathname_to_clr_string_not_none(PyObject* obj, PyEphStrArg* out)
{
    if (obj == Py_None)
        return marshal_fail_typename(PyExc_TypeError, "can't build String from '%s'", obj);
    return fn_conv_py_pathname_to_clr_string(obj, out);
}

// ---- measures: a number that is not finite has no place in a document; 1, or 0 with ValueError

// 0, with ValueError "a finite number is required, not %R".
[[gnu::cold, gnu::noinline]] int marshal_fail_not_finite(double value);

inline int
fn_conv_py_float_to_clr_double_finite(PyObject* obj, double* out)
{
    if (!fn_conv_py_float_to_clr_double(obj, out))
        return 0;
    return std::isfinite(*out) ? 1 : marshal_fail_not_finite(*out);
}

inline int
fn_conv_py_float_to_clr_float_finite(PyObject* obj, float* out)
{
    double value = 0;
    if (!fn_conv_py_float_to_clr_double(obj, &value))
        return 0;
    // a finite double beyond the float range would become an infinity on the way
    float narrowed = static_cast<float>(value);
    if (!std::isfinite(narrowed))
        return marshal_fail_not_finite(value);
    *out = narrowed;
    return 1;
}

// ---- limits; 1, or 0 with ValueError

// 0, with ValueError "%s must not be negative, not %lld" (the Python name, the value).
[[gnu::cold, gnu::noinline]] int marshal_fail_negative(const char* name, long long value);
