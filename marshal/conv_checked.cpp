#include "marshal/conv_checked.h"

int marshal_fail_not_finite(double value) {
    PyObject* number = PyFloat_FromDouble(value);
    if (number == nullptr)
        return 0;
    PyErr_Format(PyExc_ValueError, "a finite number is required, not %R", number);
    Py_DECREF(number);
    return 0;
}

int marshal_fail_negative(const char* name, long long value) {
    PyErr_Format(PyExc_ValueError, "%s must not be negative, not %lld", name, value);
    return 0;
}
