// Releasing managed GC handles that reach native code. Until the runtime host installs the
// real releaser a handle cannot be freed; it is then kept (leaked) rather than crash.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// Frees one managed GC handle; installed by the runtime host at start-up, NULL before that.
extern void (*g_free_gc_handle)(void* handle);

// Frees `handle`; NULL is ignored.
void PyShWrp_FreeGcHandlePtr(void* handle);

// Releases what an unused twin record holds: a managed handle (tag 0) or one reference to a
// Python object (tag 6); other tags hold nothing.
void PyShWrp_FreeTwinOriginObj(const VariantArg& twin);
