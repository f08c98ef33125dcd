// Protocol probes: the integer test used by argument conversion, length and iteration tests,
// and slice unpacking kept local so the module needs no newer slice entry points.
#include "module/ids.h"
#include "module/pysh.h"

int PyShLong_Check(PyObject* obj) {
    if (PyLong_CheckExact(obj))
        return 1;
    if (!PyLong_Check(obj) || PyBool_Check(obj))
        return 0;
    // Other int subclasses are tested against the enum metaclass, imported on each call: the
    // helper layer keeps no state of its own.
    PyObject* enum_type = PyShImport_ImportType(PyWrpIdModuleName_Enum, PyWrpIdTypeName_EnumType);
    if (enum_type == NULL)
        return -1;
    int result = PyObject_IsInstance(obj, enum_type);
    Py_DECREF(enum_type);
    return result;
}

int PyShlObject_HasLength(PyObject* obj) {
    PyTypeObject* type = Py_TYPE(obj);
    if (type->tp_as_sequence != NULL && type->tp_as_sequence->sq_length != NULL)
        return 1;
    if (type->tp_as_mapping != NULL && type->tp_as_mapping->mp_length != NULL)
        return 1;
    return 0;
}

int PyShlObject_HasIter(PyObject* obj) {
    if (Py_TYPE(obj)->tp_iter != NULL)
        return 1;
    return PySequence_Check(obj);
}

PySh_COLD static int raise_bad_slice_index() {
    PyErr_SetString(PyExc_TypeError, "slice indices must be integers or None or have an __index__ method");
    return -1;
}

// 0 with *out set (saturated to the Py_ssize_t range), -1 with an error; None leaves *out alone.
static int slice_index(PyObject* value, Py_ssize_t* out) {
    if (value == Py_None)
        return 0;
    if (!PyIndex_Check(value))
        return raise_bad_slice_index();
    Py_ssize_t x = PyNumber_AsSsize_t(value, NULL);
    if (x == -1 && PyErr_Occurred())
        return -1;
    *out = x;
    return 0;
}

int PyShlSlice_Unpack35(PyObject* slice, Py_ssize_t* start, Py_ssize_t* stop, Py_ssize_t* step) {
    if (!PySlice_Check(slice)) {
        PyErr_Format(PyExc_TypeError, "expected a slice, not '%.200s'", Py_TYPE(slice)->tp_name);
        return -1;
    }
    PySliceObject* s = (PySliceObject*)slice;

    *step = 1;
    if (slice_index(s->step, step) < 0)
        return -1;
    if (*step == 0) {
        PyErr_SetString(PyExc_ValueError, "slice step cannot be zero");
        return -1;
    }
    // Keeps -step representable for the reversed walk.
    if (*step < -PY_SSIZE_T_MAX)
        *step = -PY_SSIZE_T_MAX;

    *start = *step < 0 ? PY_SSIZE_T_MAX : 0;
    if (slice_index(s->start, start) < 0)
        return -1;
    *stop = *step < 0 ? PY_SSIZE_T_MIN : PY_SSIZE_T_MAX;
    if (slice_index(s->stop, stop) < 0)
        return -1;
    return 0;
}

// Clamps one bound into [0, length] (or [-1, length-1] when walking backwards).
static void adjust_bound(Py_ssize_t length, Py_ssize_t* bound, Py_ssize_t step) {
    if (*bound < 0) {
        *bound += length;
        if (*bound < 0)
            *bound = step < 0 ? -1 : 0;
    } else if (*bound >= length) {
        *bound = step < 0 ? length - 1 : length;
    }
}

Py_ssize_t PyShlSlice_AdjustIndices35(Py_ssize_t length, Py_ssize_t* start, Py_ssize_t* stop, Py_ssize_t step) {
    adjust_bound(length, start, step);
    adjust_bound(length, stop, step);
    if (step < 0) {
        if (*stop < *start)
            return (*start - *stop - 1) / (-step) + 1;
    } else if (*start < *stop) {
        return (*stop - *start - 1) / step + 1;
    }
    return 0;
}
