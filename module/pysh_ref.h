// A move-only owner of one strong PyObject* reference, for functions with several exits.
#pragma once

#include <Python.h>

class PyShRef {
public:
    PyShRef() noexcept = default;
    // Takes over a new reference (or NULL).
    explicit PyShRef(PyObject* owned) noexcept : obj_(owned) {}
    PyShRef(const PyShRef&) = delete;
    PyShRef& operator=(const PyShRef&) = delete;
    PyShRef(PyShRef&& other) noexcept : obj_(other.release()) {}
    PyShRef& operator=(PyShRef&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~PyShRef() { Py_XDECREF(obj_); }

    // New owner holding an extra reference to a borrowed object (or NULL).
    static PyShRef borrow(PyObject* borrowed) noexcept {
        Py_XINCREF(borrowed);
        return PyShRef(borrowed);
    }

    PyObject* get() const noexcept { return obj_; }
    explicit operator bool() const noexcept { return obj_ != nullptr; }
    // Hands the reference to the caller; the owner is left empty.
    PyObject* release() noexcept {
        PyObject* out = obj_;
        obj_ = nullptr;
        return out;
    }
    // Drops the held reference and takes over `owned`.
    void reset(PyObject* owned = nullptr) noexcept {
        PyObject* old = obj_;
        obj_ = owned;
        Py_XDECREF(old);
    }

private:
    PyObject* obj_ = nullptr;
};
