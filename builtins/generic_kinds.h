// The Python types of the generic instantiations (an iterator, an enumerable, an array or a
// read-only list over one bound element type). Their slots are written once here; each
// instantiation is a static type object followed by its operations, which reach its own
// method table, so a slot finds them from the object's type without a lookup.
#pragma once

#include <Python.h>
#include <cstdint>

#include "objects/casting.h"

struct PyGnOps {
    const char* kind_name;  // in "can't build <kind_name> value from '%s'"
    bool (*invalidate)();   // the kind's entry check: true with the TypeError raised

    // elements: wrapped as their most derived bound type; from Python by the element converter
    PyTypeObject* element_type;
    int32_t element_kind;  // HandleKind of element_type
    PyTypeObject* const* index_table;
    int32_t index_count;
    int (*element_to_clr)(PyObject* obj, void** out);
    // elements that are no bound objects (enumerations only): what MoveNext handed back, as a
    // new Python value, or NULL with an error (what it held released); NULL for bound elements
    PyObject* (*element_to_py)(void* item, int32_t index);

    // iteration: the enumerable's GetEnumerator wraps into iter_type, whose MoveNext yields elements
    int32_t (*get_enumerator)(void* self, void** out);
    PyTypeObject* iter_type;
    int32_t (*move_next)(void* self, void** item, int32_t* index);

    // indexed kinds; the stores are NULL on read-only kinds
    int32_t (*sq_length)(void* self);
    int32_t (*sq_get_item)(void* self, int32_t i, void** item, int32_t* index);
    int32_t (*sq_get_item_no_check)(void* self, int32_t i, void** item, int32_t* index);
    int32_t (*sq_set_item)(void* self, int32_t i, void* value);
    int32_t (*sq_set_item_no_check)(void* self, int32_t i, void* value);
    int32_t (*mp_set_items)(void* self, void* items, int32_t start, int32_t n, int32_t step);
    int32_t (*sq_contains)(void* self, void* value);
    int32_t (*count_of)(void* self, void* value);
    int32_t (*index_by)(void* self, int32_t has_start, int32_t start, int32_t has_stop, int32_t stop, void* value);
    int32_t (*reverse)(void* self);
    int32_t (*sort)(void* self, int32_t reverse);

    // lists that grow and shrink; NULL on the other kinds
    int32_t (*add)(void* self, void* value);
    int32_t (*insert)(void* self, int32_t i, void* value);
    int32_t (*remove)(void* self, void* value);
    int32_t (*remove_at)(void* self, int32_t i);
    int32_t (*remove_items)(void* self, int32_t start, int32_t n, int32_t step);
    int32_t (*pop)(void* self, int32_t i, int32_t has_index, void** item, int32_t* index);
    int32_t (*clear)(void* self);
    int32_t (*concat)(void* self, void* items);
    int32_t (*repeat)(void* self, int32_t n);

    PyShCastOps cast;
};

struct PyGnTypeObject {
    PyTypeObject type;
    const PyGnOps* ops;
};

enum class PyGnKind { Iter, Iterable, Array, List };

class PyHostTable;

// -1 with TypeError carrying the binding message of a table that failed to bind.
[[gnu::cold, gnu::noinline]] int32_t PyGn_TableFailed(const PyHostTable& table);

// Fills the slots of an instantiation's type before it is readied.
void PyGn_DescribeType(PyGnTypeObject* type, const char* tp_name, PyGnKind kind);

// __iter__ of an enumerable (a bound collection class or an enumerable wrapper): a new
// iterator of `ops`' iterator type over the managed enumerator, or NULL with an error.
PyObject* PyGn_IterableIter(PyObject* self, const PyGnOps& ops);

// A managed result of the instantiation's type: None for NULL, else a new wrapper (handle
// owned), or NULL (handle freed).
PyObject* PyGn_Wrap(void* handle, PyGnTypeObject* type);

// An element handed back by a stub: its wrapper, None for NULL, or NULL (handle freed).
PyObject* PyGn_ElementToPy(const PyGnOps& ops, void* handle, int32_t index);

// The methods of the indexed kinds, for the generated method tables (with the casting block).
PyObject* PyGn_Index(PyObject* self, PyObject* args);
PyObject* PyGn_Count(PyObject* self, PyObject* value);
PyObject* PyGn_Contains(PyObject* self, PyObject* value);
PyObject* PyGn_Sort(PyObject* self, PyObject* args, PyObject* kwargs);
PyObject* PyGn_Reverse(PyObject* self, PyObject* unused);
PyObject* PyGn_Copy(PyObject* self, PyObject* unused);
// The edits of a list that grows and shrinks.
PyObject* PyGn_Append(PyObject* self, PyObject* value);
PyObject* PyGn_Insert(PyObject* self, PyObject* args);
PyObject* PyGn_Extend(PyObject* self, PyObject* other);
PyObject* PyGn_Remove(PyObject* self, PyObject* value);
PyObject* PyGn_Pop(PyObject* self, PyObject* args);
PyObject* PyGn_Clear(PyObject* self, PyObject* unused);
