// Error raisers of the conversions. They sit on the cold path, out of line, so that the hot
// conversions inline to a few tests and loads.
#pragma once

#include <Python.h>

// 0, with `exc` raised from `format` and the type name of `obj`.
[[gnu::cold, gnu::noinline]] int marshal_fail_typename(PyObject* exc, const char* format, PyObject* obj);
// 0, with `exc` raised from `format` and the type name of `obj`, or "None" for NULL and None.
[[gnu::cold, gnu::noinline]] int marshal_fail_typename_or_none(PyObject* exc, const char* format, PyObject* obj);
// 0, with `exc` raised with a fixed text.
[[gnu::cold, gnu::noinline]] int marshal_fail_text(PyObject* exc, const char* text);
// 0, with `exc` raised with a fixed text, chained onto a pending error.
[[gnu::cold, gnu::noinline]] int marshal_fail_chained(PyObject* exc, const char* text);
// 0, with OverflowError from `format` and a signed value.
[[gnu::cold, gnu::noinline]] int marshal_fail_signed(const char* format, long value);
// 0, with OverflowError from `format` and an unsigned value.
[[gnu::cold, gnu::noinline]] int marshal_fail_unsigned(const char* format, unsigned long value);
// 0, with OverflowError from `format` and a size.
[[gnu::cold, gnu::noinline]] int marshal_fail_size(const char* format, Py_ssize_t value);
