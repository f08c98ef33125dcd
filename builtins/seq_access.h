// Managed collections read as Python sequences: the index, slice, key and list-building rules
// shared by the bound collection classes and the generic array and list wrappers. Each user
// describes its item access once in a PySeqAccess; the functions here never call managed code
// except through it.
#pragma once

#include <Python.h>

struct PySeqAccess {
    // The length; -1 with an error.
    lenfunc length;
    // Item i with 0 <= i < length (the caller checked): a new reference, or NULL with an error;
    // NULL for a collection without positional access (integer keys then go to by_key).
    PyObject* (*item)(PyObject* self, Py_ssize_t i);
    // Keyed access, asked first for every key but a slice (an enumeration member is also an
    // integer): a new reference; NULL with an error; NULL without one when the key is none of
    // its types. NULL when the collection has no keyed access.
    PyObject* (*by_key)(PyObject* self, PyObject* key);
};

// -1 with TypeError "'<type>' object doesn't support item deletion", as Python's own types say it.
[[gnu::cold, gnu::noinline]] int PySeq_RefuseDelete(PyObject* self);

// 0, or -1 with OverflowError "the index (%zi) is out of the INT32 range".
int PySeq_CheckIndex(Py_ssize_t i);

// NULL with TypeError "list indices must be integers or slices, not <type of key>".
[[gnu::cold, gnu::noinline]] PyObject* PySeq_RefuseKey(PyObject* key);

// x[key]: a key of by_key, an integer (negative counts from the end) or a slice (a new list).
PyObject* PySeq_Subscript(PyObject* self, PyObject* key, const PySeqAccess& access);
// sq_item: i already adjusted by the interpreter; IndexError outside [0, length).
PyObject* PySeq_Item(PyObject* self, Py_ssize_t i, const PySeqAccess& access);
// The items of `list` (consumed; NULL passes an error through) as a new tuple; NULL with an error.
PyObject* PySeq_TupleFromList(PyObject* list);

// x + other, x * n and copy(): new Python lists of the items.
PyObject* PySeq_Concat(PyObject* self, PyObject* other, const PySeqAccess& access);
PyObject* PySeq_Repeat(PyObject* self, Py_ssize_t n, const PySeqAccess& access);

// Stores of a fixed-size sequence: each stores an item already checked against the length.
struct PySeqStore {
    // -1 with an error.
    int (*store)(PyObject* self, Py_ssize_t i, PyObject* value);
    // The whole of a managed sequence into the slice: 1 done, 0 declined, -1 with an error; may be NULL.
    int (*store_managed)(PyObject* self, PyObject* value, Py_ssize_t start, Py_ssize_t n, Py_ssize_t step);
};

// x[key] = value and del x[key] on a fixed-size sequence (deletion refused).
int PySeq_AssSubscript(PyObject* self, PyObject* key, PyObject* value, const PySeqAccess& access,
                       const PySeqStore& store);

// del x[i] through remove_at (which returns -1 with an error): an integer key only, negative
// counting from the end; a slice is refused as in PySeq_AssSubscript.
int PySeq_DelItem(PyObject* self, PyObject* key, const PySeqAccess& access,
                  int (*remove_at)(PyObject* self, Py_ssize_t i));
