// Managed lists edited as Python lists: append, insert, extend, remove, pop, clear, item and
// slice deletion, in-place concatenation and repetition. Like seq_access, the rules and texts
// are written once here; each list kind describes its managed operations in a PySeqEdit.
#pragma once

#include <Python.h>

#include "builtins/seq_access.h"

struct PySeqEdit {
    // Each converts its value itself; 0, or -1 with an error.
    int (*add)(PyObject* self, PyObject* value);
    int (*insert)(PyObject* self, Py_ssize_t i, PyObject* value);
    // 1 removed, 0 not there, -1 with an error.
    int (*remove)(PyObject* self, PyObject* value);
    // 0, 2 out of range, -1 with an error.
    int (*remove_at)(PyObject* self, Py_ssize_t i);
    // Removes the n items at start, start+step, ... (highest index first); 0 or -1.
    int (*remove_items)(PyObject* self, Py_ssize_t start, Py_ssize_t n, Py_ssize_t step);
    // The removed item (new reference); NULL with *status 1 empty, 2 out of range, or -1 with an error.
    PyObject* (*pop)(PyObject* self, Py_ssize_t i, int has_index, int* status);
    int (*clear)(PyObject* self);
    // The whole of a managed enumerable appended: 1 done, 0 declined, -1 with an error.
    int (*extend_managed)(PyObject* self, PyObject* other);
    // x *= n on the managed side; 0 or -1.
    int (*repeat_in_place)(PyObject* self, Py_ssize_t n);
    // Room for `more` items before they are added, when the count is known; may be NULL.
    int (*reserve)(PyObject* self, Py_ssize_t more);
};

// The Python methods and slots; `access` gives the length and the items.
PyObject* PySeq_Append(PyObject* self, PyObject* value, const PySeqEdit& edit);
PyObject* PySeq_Insert(PyObject* self, PyObject* args, const PySeqEdit& edit);
PyObject* PySeq_Extend(PyObject* self, PyObject* other, const PySeqEdit& edit);
PyObject* PySeq_Remove(PyObject* self, PyObject* value, const PySeqEdit& edit);
PyObject* PySeq_Pop(PyObject* self, PyObject* args, const PySeqEdit& edit);
PyObject* PySeq_Clear(PyObject* self, const PySeqEdit& edit);
// del x[i] with i already adjusted by the interpreter.
int PySeq_DelItem(PyObject* self, Py_ssize_t i, const PySeqEdit& edit);
// x[key] = value, and del x[key] (an index or a slice).
int PySeq_AssSubscriptList(PyObject* self, PyObject* key, PyObject* value, const PySeqAccess& access,
                           const PySeqStore& store, const PySeqEdit& edit);
// x += other and x *= n: the same object (new reference), or NULL.
PyObject* PySeq_InplaceConcat(PyObject* self, PyObject* other, const PySeqEdit& edit);
PyObject* PySeq_InplaceRepeat(PyObject* self, Py_ssize_t n, const PySeqEdit& edit);

// The arguments of sort(key=None, reverse=False): 0 with *reverse, or -1 with an error
// (ValueError "custom sorting key is not supported" for any key but None).
int PySeq_SortArgs(PyObject* args, PyObject* kwargs, int* reverse);

// O& converter of an index argument: its value within int32 in *(Py_ssize_t*)out; 1, or 0
// with OverflowError.
int PySeq_IndexArg(PyObject* obj, void* out);
