// Argument records of one candidate call that hold something to release afterwards: a
// decoded path string or an acquired buffer view. Zeroed on construction, so a candidate
// whose parsing stopped half-way releases exactly what was converted.
#pragma once

#include <Python.h>
#include <cstring>

#include "marshal/records.h"

// A string-or-path argument; the keep-alive of a decoded path-like is dropped on exit.
struct PyShEphStrHolder {
    PyEphStrArg arg = {};
    PyShEphStrHolder() = default;
    PyShEphStrHolder(const PyShEphStrHolder&) = delete;
    PyShEphStrHolder& operator=(const PyShEphStrHolder&) = delete;
    ~PyShEphStrHolder() { Py_XDECREF(arg.keep_alive); }
    PyStringArg* get() { return &arg.str; }
};

// A byte-array argument with its view storage; an acquired view is released on exit.
struct PyShBytesHolder {
    PyBytesArg arg;
    Py_buffer view;
    PyShBytesHolder() {
        std::memset(&arg, 0, sizeof arg);
        std::memset(&view, 0, sizeof view);
        arg.view = &view;
    }
    PyShBytesHolder(const PyShBytesHolder&) = delete;
    PyShBytesHolder& operator=(const PyShBytesHolder&) = delete;
    ~PyShBytesHolder() {
        if (arg.acquired)
            PyBuffer_Release(&view);
    }
    PyBytesArg* get() { return &arg; }
};

// The O& converter signature of the argument parser.
using PyShArgConverter = int (*)(PyObject*, void*);

// A typed converter in the form the argument parser calls.
template <typename T>
inline PyShArgConverter PyShArg_Converter(int (*fn)(PyObject*, T*)) {
    return reinterpret_cast<PyShArgConverter>(fn);
}
