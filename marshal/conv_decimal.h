// decimal.Decimal and decimal.DecimalTuple against managed System.Decimal (a 96-bit mantissa
// with a decimal scale of 0..28 and a sign).
#pragma once

#include <Python.h>

#include "marshal/records.h"

// A DecimalTuple directly, a Decimal through its as_tuple(); 1, or 0 with an error.
int fn_conv_py_decimal_to_clr_decimal(PyObject* obj, PyDecimalArg* out);
// Anything with sign, digits and exponent attributes. Digits beyond what 96 bits and 28
// decimal places hold are rounded half to even; an integer part that does not fit fails with
// OverflowError. 1, or 0 with an error.
int fn_conv_py_decimal_tuple_to_clr_decimal(PyObject* obj, PyDecimalArg* out);
// New decimal.Decimal with the managed value's digits and scale, or NULL.
PyObject* fn_conv_clr_decimal_to_py_decimal(const PyDecimalArg* value);

int fn_read_py_decimal(PyObject* obj, PyDecimalArg* out);
int fn_read_py_decimal_tuple(PyObject* obj, PyDecimalArg* out);
PyObject* fn_write_py_decimal(const PyDecimalArg* value);
