// Registration of the built-in protocol types and the bound types into the submodules.
#pragma once

#include <Python.h>

// Indices of the submodules that registration addresses directly.
enum FolioSubmodule {
    FolioSubmodule_Wrpgen = 31,
    FolioSubmodule_Interop = 32,
    FolioSubmodule_Generic = 33,
};

// Borrowed submodule object, valid once the root module exists.
PyObject* folio_submodule(int index);

// 0, or -1 with an ImportError: every type readied, marked and added to its submodule.
int register_folio_types(PyObject* root);

// Makes wrappers and quorix.pyhold's safe handles free their GC handles through the exchange host.
void install_handle_releasers();

// Lets threads that wait for a document held by another thread release the interpreter lock
// meanwhile (folio_threads.cpp). 0, or -1 with an ImportError.
int folio_install_document_waits();
