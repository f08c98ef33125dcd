#include "marshal/conv_version.h"

#include "marshal/conv_errors.h"
#include "marshal/conv_scalar.h"

namespace {

constexpr Py_ssize_t kMinParts = 2;
constexpr Py_ssize_t kMaxParts = 4;

[[gnu::cold, gnu::noinline]] int
fail_part_count(Py_ssize_t given)
{
    PyErr_Format(PyExc_ValueError,
                 "a version number tuple must contains at least 2 and at most %zd elements (%zd given)",
                 kMaxParts, given);
    return 0;
}

[[gnu::cold, gnu::noinline]] int
fail_negative_part(Py_ssize_t value)
{
    PyErr_Format(PyExc_ValueError, "an element of a version number tuple must be greater or equal zero, not %zd",
                 value);
    return 0;
}

}  // namespace

int
fn_conv_py_tuple_to_clr_version(PyObject* obj, PySysVersionArg* out)
{
    if (obj == Py_None) {
        out->count = -1;
        return 1;
    }
    if (!PyTuple_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, "a tuple or None is required, not '%.200s'", obj);
    Py_ssize_t n = PyTuple_GET_SIZE(obj);
    if (n < kMinParts || n > kMaxParts)
        return fail_part_count(n);
    int32_t parts[kMaxParts] = {0, 0, 0, 0};
    for (Py_ssize_t i = 0; i < n; ++i) {
        PyObject* item = PyTuple_GET_ITEM(obj, i);
        int is_int = PyLong_CheckExact(item) ? 1 : PyShLong_Check(item);
        if (is_int < 0)
            return 0;
        if (is_int == 0)
            return marshal_fail_typename(PyExc_ValueError,
                                         "an element of a version number tuple must be integer, not %.200s", item);
        Py_ssize_t v = PyLong_AsSsize_t(item);
        if (v == -1 && PyErr_Occurred())
            return 0;
        if (v < 0)
            return fail_negative_part(v);
        if (v > INT32_MAX)
            return marshal_fail_signed("value '%li' is out of the INT32 range", static_cast<long>(v));
        parts[i] = static_cast<int32_t>(v);
    }
    out->count = static_cast<int32_t>(n);
    for (Py_ssize_t i = 0; i < kMaxParts; ++i)
        out->parts[i] = parts[i];
    return 1;
}

PyObject*
fn_write_py_sysversion(const PySysVersionArg* value)
{
    if (value->count < 0)
        Py_RETURN_NONE;
    if (value->count < kMinParts || value->count > kMaxParts) {
        fail_part_count(value->count);
        return nullptr;
    }
    PyObject* tuple = PyTuple_New(value->count);
    if (tuple == nullptr)
        return nullptr;
    for (int32_t i = 0; i < value->count; ++i) {
        PyObject* part = PyLong_FromLong(value->parts[i]);
        if (part == nullptr) {
            Py_DECREF(tuple);
            return nullptr;
        }
        PyTuple_SET_ITEM(tuple, i, part);
    }
    return tuple;
}
