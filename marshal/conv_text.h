// Characters and strings. A Python str goes to managed code as a pointer into the
// interpreter's own compact storage (no copy, no transcoding); managed strings come back as
// little-endian UTF-16.
#pragma once

#include <Python.h>
#include <cstdint>
#include <string>

#include "marshal/conv_errors.h"
#include "marshal/records.h"

[[gnu::cold, gnu::noinline]] int marshal_fail_unicode_kind(int kind);
[[gnu::cold, gnu::noinline]] int marshal_fail_length32(Py_ssize_t length);

// `obj` must be a str. 1 with `out` describing its storage, or 0 with TypeError.
inline int
fn_conv_py_string_to_clr_string_value(PyObject* obj, PyStringArg* out)
{
#if PY_VERSION_HEX < 0x030C0000
    if (PyUnicode_READY(obj) < 0)
        return marshal_fail_chained(PyExc_TypeError, "unicode object is not ready");
#endif
    Py_ssize_t length = PyUnicode_GET_LENGTH(obj);
    if (length > INT32_MAX)
        return marshal_fail_length32(length);
    int kind = PyUnicode_KIND(obj);
    if (kind != PyUnicode_1BYTE_KIND && kind != PyUnicode_2BYTE_KIND && kind != PyUnicode_4BYTE_KIND)
        return marshal_fail_unicode_kind(kind);
    out->length = static_cast<int32_t>(length);
    out->char_size = kind;
    out->data = PyUnicode_DATA(obj);
    return 1;
}

// None (a null managed string, length -1) or a str; 1, or 0 with TypeError.
inline int
fn_conv_py_string_to_clr_string(PyObject* obj, PyStringArg* out)
{
    if (obj == Py_None) {
        out->length = -1;
        out->char_size = 1;
        out->data = nullptr;
        return 1;
    }
    if (!PyUnicode_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, "can't build String from '%s'", obj);
    return fn_conv_py_string_to_clr_string_value(obj, out);
}

// None, a str, or a path-like decoded by the interpreter's file-system decoder; a decoded str
// is owned by out->keep_alive, which the caller releases after the managed call.
// 1, or 0 with an error (nothing left to release).
int fn_conv_py_strorpath_to_clr_string(PyObject* obj, PyEphStrArg* out);

// Table form of fn_conv_py_string_to_clr_string_value.
int fn_read_py_string(PyObject* obj, PyStringArg* out);

// A str of exactly one UTF-16 code unit; 1, or 0 with TypeError.
int fn_conv_py_string_to_clr_char(PyObject* obj, uint16_t* out);
// New one-character str, or NULL (a lone surrogate fails the decoding).
PyObject* fn_conv_clr_char_to_py_string(uint16_t unit);
// The same, for the table of element writers; only the low 16 bits count.
PyObject* fn_write_py_char(int32_t unit);

// New str from `length` little-endian UTF-16 units; None for a negative length (a null
// managed string); NULL with an error for malformed input.
PyObject* fn_conv_clr_string_to_py_string(const char16_t* data, int32_t length);
// New str from `length` (>= 0) little-endian UTF-16 units, or NULL.
PyObject* fn_conv_clr_string_to_py_string_value(const char16_t* data, int32_t length);
// New str, or NULL with the decoding error already reported as unraisable.
PyObject* fn_conv_clr_string_to_py_unraisable(const char16_t* data, int32_t length);
// Heap copy of UTF-16 text owned by the receiver; NULL for a negative count or no memory.
std::u16string* fn_create_u16_buffer(const char16_t* data, int32_t count);
