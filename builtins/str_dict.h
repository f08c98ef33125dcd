// _StrDictWrapper: a managed IDictionary<string, string> that belongs to a document, seen
// from Python as a live mutable mapping of str to str. Reads and writes go to the managed
// dictionary at once, so what the document reads (DOCVARIABLE fields, say) is what Python set.
#pragma once

#include <Python.h>
#include <string>

// The type object "quorix.folio._wrpgen._interop._StrDictWrapper" (not readied here).
PyTypeObject* PyStrDict_Type();
// Readies the type and marks it as a wrapper type, once: 0, or -1 with an error.
int PyStrDict_Ready();
// A new wrapper owning `handle`; None for NULL; NULL with an error (handle freed).
PyObject* PyStrDict_FromHandle(void* handle);
// The kind's validity query: true with `message` when its stubs could not be bound.
bool wrpPye_bltp_strdict_is_not_valid(std::string& message);
