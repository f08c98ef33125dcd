#include "marshal/conv_scalar.h"

int
marshal_integer_to_double(PyObject* obj, double* out)
{
    if (!marshal_check_integer(obj, kMsgNumericExpected))
        return 0;
    long long v = PyLong_AsLongLong(obj);
    if (v != -1 || !PyErr_Occurred()) {
        *out = static_cast<double>(v);
        return 1;
    }
    if (!PyErr_ExceptionMatches(PyExc_OverflowError))
        return 0;
    // Above the signed range there is still room up to 2^64-1; beyond it the interpreter's
    // OverflowError stands.
    PyErr_Clear();
    unsigned long long u = PyLong_AsUnsignedLongLong(obj);
    if (u == static_cast<unsigned long long>(-1) && PyErr_Occurred())
        return 0;
    *out = static_cast<double>(u);
    return 1;
}

int
fn_conv_py_obj_to_ssize_t(PyObject* obj, Py_ssize_t* out)
{
    PyNumberMethods* nb = Py_TYPE(obj)->tp_as_number;
    if (nb == nullptr || nb->nb_index == nullptr)
        return marshal_fail_typename(PyExc_TypeError, "argument should be integer or None, not '%.200s'", obj);
    Py_ssize_t v = PyNumber_AsSsize_t(obj, PyExc_OverflowError);
    if (v == -1 && PyErr_Occurred())
        return 0;
    *out = v;
    return 1;
}

int
fn_conv_py_optional_to_ssize_t(PyObject* args, Py_ssize_t* out)
{
    if (PyTuple_GET_SIZE(args) < 1)
        return 1;
    PyObject* first = PyTuple_GET_ITEM(args, 0);
    if (first == Py_None)
        return 1;
    return fn_conv_py_obj_to_ssize_t(first, out);
}

[[gnu::cold, gnu::noinline]] static int
raise_args_count(Py_ssize_t given, const char* name, Py_ssize_t min, Py_ssize_t max)
{
    bool too_few = given < min;
    Py_ssize_t bound = too_few ? min : max;
    const char* qualifier = (min == max) ? "exactly" : (too_few ? "at least" : "at most");
    PyErr_Format(PyExc_TypeError, "%.150s%s takes %s %d argument%s (%zd given)",
                 name == nullptr ? "function" : name, name == nullptr ? "" : "()", qualifier,
                 static_cast<int>(bound), bound == 1 ? "" : "s", given);
    return 1;
}

int
fn_check_args_count_out_of_range(Py_ssize_t given, const char* name, Py_ssize_t min, Py_ssize_t max)
{
    if (given >= min && given <= max)
        return 0;
    return raise_args_count(given, name, min, max);
}

int
fn_read_py_bool(PyObject* obj)
{
    return PyObject_IsTrue(obj);
}

[[gnu::cold, gnu::noinline]] static int
read_beyond_signed(PyObject* obj, int overflow, int64_t* out)
{
    if (overflow < 0) {
        // Let the interpreter word the negative overflow.
        PyLong_AsLongLong(obj);
        return 0;
    }
    unsigned long long u = PyLong_AsUnsignedLongLong(obj);
    if (u == static_cast<unsigned long long>(-1) && PyErr_Occurred())
        return 0;
    *out = static_cast<int64_t>(u);
    return 3;
}

int
fn_read_py_vers_long(PyObject* obj, int64_t* out)
{
    if (!marshal_check_integer(obj, "can't build integer value from '%s'"))
        return 0;
    int overflow = 0;
    long long v = PyLong_AsLongLongAndOverflow(obj, &overflow);
    if (overflow != 0)
        return read_beyond_signed(obj, overflow, out);
    if (v == -1 && PyErr_Occurred())
        return 0;
    *out = v;
    return (v >= INT32_MIN && v <= INT32_MAX) ? 1 : 2;
}

int
fn_read_py_double(PyObject* obj, double* out)
{
    double v = PyFloat_AsDouble(obj);
    if (v == -1.0 && PyErr_Occurred())
        return 0;
    *out = v;
    return 1;
}

PyObject*
fn_write_py_bool(int32_t value)
{
    return PyBool_FromLong(value);
}

PyObject*
fn_write_py_long(int32_t value)
{
    return PyLong_FromLong(value);
}

PyObject*
fn_write_py_ulong(uint32_t value)
{
    return PyLong_FromUnsignedLong(value);
}

PyObject*
fn_write_py_longlong(int64_t value)
{
    return PyLong_FromLongLong(value);
}

PyObject*
fn_write_py_ulonglong(uint64_t value)
{
    return PyLong_FromUnsignedLongLong(value);
}

PyObject*
fn_write_py_double(double value)
{
    return PyFloat_FromDouble(value);
}
