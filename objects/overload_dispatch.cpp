#include "objects/overload_dispatch.h"

#include "module/pysh_ref.h"

void PyOverloadFailures::keep() noexcept {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
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
}

PyObject* PyOverloadFailures::raise() {
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
