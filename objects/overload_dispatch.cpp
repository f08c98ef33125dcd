#include "objects/overload_dispatch.h"

#include "module/pysh_ref.h"

void PyOverloadFailures::keep() noexcept {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    if (value_error_ == nullptr && type != nullptr && PyErr_GivenExceptionMatches(type, PyExc_ValueError)) {
        PyErr_NormalizeException(&type, &value, &traceback);
        Py_XINCREF(value);
        value_error_ = value;
    }
    Py_XDECREF(type);
    Py_XDECREF(traceback);
    keep_value(value);
}

void PyOverloadFailures::keep_value(PyObject* value) noexcept {
    if (count_ < capacity_)
        slots_[count_++] = value;
    else
        Py_XDECREF(value);
}

PyObject* PyOverloadFailures::take_last() noexcept {
    PyObject* last = nullptr;
    if (count_ > 0) {
        last = slots_[count_ - 1];
        slots_[--count_] = nullptr;
    }
    release();
    return last;
}

void PyOverloadFailures::release() noexcept {
    for (int i = 0; i < count_; ++i)
        Py_CLEAR(slots_[i]);
    count_ = 0;
    Py_CLEAR(value_error_);
}

PyObject* PyOverloadFailures::raise() {
    if (value_error_ != nullptr) {
        PyShRef error(value_error_);
        value_error_ = nullptr;
        release();
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.get())), error.get());
        return nullptr;
    }
    PyShRef messages(PyList_New(count_));
    if (!messages) {
        release();
        return nullptr;
    }
    for (int i = 0; i < count_; ++i) {
        // A parse error can be left unnormalized: its value is then the message itself.
        PyObject* text = PyObject_Str(slots_[i] != nullptr ? slots_[i] : Py_None);
        if (text == nullptr) {
            release();
            return nullptr;
        }
        PyList_SET_ITEM(messages.get(), i, text);
    }
    release();
    // A list, not a tuple: it becomes the exception's single argument.
    PyErr_SetObject(PyExc_TypeError, messages.get());
    return nullptr;
}
