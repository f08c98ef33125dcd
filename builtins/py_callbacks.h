// Callbacks through which managed code drives Python objects that serve managed interfaces:
// binary files as streams, lists and sequences as lists, iterables as enumerables. They run
// on the thread that holds the interpreter lock and never throw across the boundary.
//
// Results: 0 or a non-negative count / index / position is success; -1 means a Python
// exception is pending; -2 marks the expected condition named per function (its exception,
// when there is one, is left pending for the managed side to fetch). fn_clbk_iter_next
// answers 0 (item), 1 (end), 2 (failure) instead.
//
// Items handed out (`item` out-slots) are new references the managed side releases with
// fn_xdec_ref once it has converted the variant record that points into them.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"

// ---- raw I/O: a Python binary file object behind a managed stream
// readinto() over the managed buffer: bytes read, 0 for a None answer, or -1.
int32_t fn_clbk_rawio_read(PyObject* file, void* buffer, int32_t count);
// One byte through readinto(): its value 0..255, -1 at the end of the stream, or -2 with an
// exception (OSError "no bytes are available for reading" for a None answer).
int32_t fn_clbk_rawio_readbyte(PyObject* file);
// write() of the managed data: bytes written, 0 for a None answer, or -1.
int32_t fn_clbk_rawio_write(PyObject* file, const void* buffer, int32_t count);
// write() of one byte, as fn_clbk_rawio_write.
int32_t fn_clbk_rawio_write_byte(PyObject* file, uint8_t value);
// seek(offset, origin): the new position, or -1.
int64_t fn_clbk_rawio_seek(PyObject* file, int64_t offset, int32_t origin);
// tell(): the position, or -1.
int64_t fn_clbk_rawio_tell(PyObject* file);
// truncate(length), then moves a position left beyond the new end back to it (best effort,
// errors cleared): 0, or -1 when truncate() failed.
int32_t fn_clbk_rawio_truncate(PyObject* file, int64_t length);
// flush(): 0, or -1.
int32_t fn_clbk_rawio_flush(PyObject* file);
// close(); its failure goes to the unraisable hook and a pending exception survives the call.
void fn_clbk_rawio_close(PyObject* file);
// 0 for a closed file, else the method's answer as 1 or 0; -1 on any failure.
int32_t fn_clbk_rawio_readable(PyObject* file);
int32_t fn_clbk_rawio_writable(PyObject* file);
int32_t fn_clbk_rawio_seekable(PyObject* file);
// The length found by seeking to the end and back: -3 closed, -2 not seekable, -1 failure.
int64_t fn_clbk_rawio_length(PyObject* file);

// ---- unsized collections
// PyList_Size / PySequence_Size / PyObject_Size within 32 bits, or -1.
int32_t fn_clbk_ucol_list_length(PyObject* obj);
int32_t fn_clbk_ucol_sequence_length(PyObject* obj);
int32_t fn_clbk_ucol_object_length(PyObject* obj);
// pop(index): 0, -2 for an IndexError, -1.
int32_t fn_clbk_ucol_remove_at(PyObject* obj, int32_t index);
// clear(): 0, or -1.
int32_t fn_clbk_ucol_clear(PyObject* obj);
// iter(obj) into *iterator (new reference): 0, or -1.
int32_t fn_clbk_ucol_get_enumerator(PyObject* obj, PyObject** iterator);
// The characters of a str serving as a collection of chars, borrowed into *text: 0, or -1.
int32_t fn_clbk_ucol_get_unicode_bytes(PyObject* obj, PyStringArg* text);

// ---- iterators
// next(iterator): 0 with *item (new reference) and its variant record, 1 at the end, 2 with
// an exception.
int32_t fn_clbk_iter_next(PyObject* iterator, PyObject** item, VariantArg* variant);

// ---- Python lists
// list[index] with *item (new reference) and its variant record: 0, -2 out of range, -1.
int32_t fn_clbk_olist_get_item(PyObject* list, int32_t index, PyObject** item, VariantArg* variant);
// list[index] = item, taking over the reference to `item` in every case: 0, -2, -1.
int32_t fn_clbk_olist_set_item(PyObject* list, int32_t index, PyObject* item);
// list.append(item) (item borrowed): the new length, or -1.
int32_t fn_clbk_olist_add(PyObject* list, PyObject* item);
// list.insert(index, item) (item borrowed): 0, -2, -1.
int32_t fn_clbk_olist_insert(PyObject* list, int32_t index, PyObject* item);
// list.remove(item): 0, or -1.
int32_t fn_clbk_olist_remove(PyObject* list, PyObject* item);
// 1 when list.index(item) finds it, 0 when not, -1 on another failure.
int32_t fn_clbk_olist_contains(PyObject* list, PyObject* item);
// list.index(item), -1 when absent, -2 on any failure.
int32_t fn_clbk_olist_index_of(PyObject* list, PyObject* item);

// ---- Python sequences
// seq[index] with *item (new reference) and its variant record: 0, -2 out of range, -1.
int32_t fn_clbk_oseq_get_item(PyObject* seq, int32_t index, PyObject** item, VariantArg* variant);
// 1 when an item equals `item`, 0 when none does, -1 on failure.
int32_t fn_clbk_oseq_contains(PyObject* seq, PyObject* item);
// Index of the first equal item, -1 when none, -2 on any failure.
int32_t fn_clbk_oseq_index_of(PyObject* seq, PyObject* item);
