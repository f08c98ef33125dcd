// Managed arrays and lists of one element type that cross whole: a Python sequence becomes a
// managed array for the call (each item through the element's own converter), and a managed
// sequence result becomes a new Python list (each item through the element's converter the
// other way). Nothing stays shared: these are copies, for values the managed side hands over
// fresh or takes as a snapshot.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"

// ---- Python sequence to managed array

// An array argument: `count` records of `item_size` bytes each. The records borrow from the
// items of the sequence that PyShSeqHolder keeps alive until the call returned.
struct PySeqArg {
    int32_t count;      // -1 stands for a null array
    int32_t item_size;
    void* items;
};

static_assert(sizeof(PySeqArg) == 16 && offsetof(PySeqArg, items) == 8, "PySeqArg layout");

// The O& converter of one element: 1, or 0 with an error.
using PySeqItemConverter = int (*)(PyObject*, void*);

// The records of one array argument and what they borrow from; zeroed on construction so a
// candidate whose parsing stopped half-way releases exactly what was made.
class PyShSeqHolder {
public:
    // `item_name` names the element in messages ("String" gives "can't build String[] from ...").
    PyShSeqHolder(int32_t item_size, PySeqItemConverter convert, const char* item_name) noexcept
        : convert_(convert), item_name_(item_name) {
        arg_.count = -1;
        arg_.item_size = item_size;
        arg_.items = nullptr;
    }
    PyShSeqHolder(const PyShSeqHolder&) = delete;
    PyShSeqHolder& operator=(const PyShSeqHolder&) = delete;
    ~PyShSeqHolder();

    PySeqArg* get() noexcept { return &arg_; }

    // Records of every item of `obj` (None: a null array unless `not_none`): 1, or 0 with an error.
    int fill(PyObject* obj, bool not_none);

private:
    static constexpr size_t kInlineBytes = 8 * 16;

    PySeqArg arg_;
    PySeqItemConverter convert_;
    const char* item_name_;
    PyObject* owner_ = nullptr;  // the list or tuple whose items the records borrow
    void* heap_ = nullptr;       // record storage beyond the inline area
    alignas(16) unsigned char inline_[kInlineBytes];
};

// O& converters of an array parameter (the holder is the target). The second refuses None.
int fn_conv_py_seq_to_clr_array(PyObject* obj, PyShSeqHolder* holder);
int fn_conv_py_seq_to_clr_array_not_none(PyObject* obj, PyShSeqHolder* holder);

// ---- managed sequence to Python list

// Where a stub puts the items of a sequence result. The element conversions are those of the
// result's element type; either may be NULL where the stub never uses it.
struct PySeqSink {
    PyObject* list;                                   // owned; NULL stands for a null sequence
    PyObject* (*wrap_handle)(void* handle, int32_t index);  // consumes the handle, also on failure
    PyObject* (*wrap_int)(int32_t value);
};

static_assert(sizeof(PySeqSink) == 24, "PySeqSink layout");

// Owner of a result's sink: the list is released unless taken.
class PyShSeqSink {
public:
    explicit PyShSeqSink(PyObject* (*wrap_handle)(void*, int32_t) = nullptr,
                         PyObject* (*wrap_int)(int32_t) = nullptr) noexcept
        : sink_{nullptr, wrap_handle, wrap_int} {}
    PyShSeqSink(const PyShSeqSink&) = delete;
    PyShSeqSink& operator=(const PyShSeqSink&) = delete;
    ~PyShSeqSink() { Py_XDECREF(sink_.list); }

    PySeqSink* record() noexcept { return &sink_; }
    // The finished list (None for a null sequence); NULL when an error is pending.
    PyObject* take();

private:
    PySeqSink sink_;
};

// Callbacks of the list-builder table (managed code fills a sink through them).
// A new list of `count` empty slots in sink->list (-1: none, the result is None): 0, or -1.
int32_t fn_clbk_pylist_begin(PySeqSink* sink, int32_t count);
// Stores `item` (a new reference, consumed; NULL stands for a failure already raised) at `index`: 0, or -1.
int32_t fn_clbk_pylist_put_object(PySeqSink* sink, int32_t index, PyObject* item);
// Stores the element a handle stands for (consumed; NULL gives None), wrapped by the sink's
// element conversion, or as quorix.pyintro.Object where it has none: 0, or -1.
int32_t fn_clbk_pylist_put_handle(PySeqSink* sink, int32_t index, void* handle, int32_t type_index);
// Stores the element an integer stands for (an enumeration member where the sink has a
// conversion, else an int): 0, or -1.
int32_t fn_clbk_pylist_put_int(PySeqSink* sink, int32_t index, int32_t value);

// ---- params arrays

// The positional arguments of a call whose last of `count` parameters is a params array: the
// arguments from position count-1 on folded into one tuple when there are more than `count`,
// else `args` itself. A new reference, or NULL with an error.
PyObject* PyShParams_Fold(PyObject* args, Py_ssize_t count);
