#include "marshal/conv_errors.h"

#include "module/pysh.h"

int
marshal_fail_typename(PyObject* exc, const char* format, PyObject* obj)
{
    PyErr_Format(exc, format, Py_TYPE(obj)->tp_name);
    return 0;
}

int
marshal_fail_typename_or_none(PyObject* exc, const char* format, PyObject* obj)
{
    const char* name = (obj == nullptr || obj == Py_None) ? "None" : Py_TYPE(obj)->tp_name;
    PyErr_Format(exc, format, name);
    return 0;
}

int
marshal_fail_text(PyObject* exc, const char* text)
{
    PyErr_SetString(exc, text);
    return 0;
}

int
marshal_fail_chained(PyObject* exc, const char* text)
{
    PyShlErr_ChainOrFormat(exc, text);
    return 0;
}

int
marshal_fail_signed(const char* format, long value)
{
    PyErr_Format(PyExc_OverflowError, format, value);
    return 0;
}

int
marshal_fail_unsigned(const char* format, unsigned long value)
{
    PyErr_Format(PyExc_OverflowError, format, value);
    return 0;
}

int
marshal_fail_size(const char* format, Py_ssize_t value)
{
    PyErr_Format(PyExc_OverflowError, format, value);
    return 0;
}
