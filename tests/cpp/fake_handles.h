// Stand-ins for what the runtime and quorix.pyhold provide at start-up, so that handle
// ownership can be checked without a managed runtime: a recording GC-handle releaser, a
// safe-handle type with the sibling's layout, and wrapper types with the sealed layout.
#pragma once

#include <Python.h>

#include <vector>

// Installs the fakes for the lifetime of the object and restores what was there before.
class FakeHandleRuntime {
public:
    FakeHandleRuntime();
    ~FakeHandleRuntime();
    FakeHandleRuntime(const FakeHandleRuntime&) = delete;
    FakeHandleRuntime& operator=(const FakeHandleRuntime&) = delete;

    // Handles freed through the installed releaser, in order.
    const std::vector<void*>& freed() const;
};

// A static (non-heap) type with the sealed wrapper layout, marked as wrapping objects.
PyTypeObject* fake_sealed_type();
// A new heap type named `name` derived from the static one; its own markers are left to the test.
PyObject* fake_sealed_heap_type(const char* name);
// New safe handle owning `handle` (freed through the fake releaser on deallocation).
PyObject* fake_safe_handle(void* handle);
// The handle a fake safe handle holds.
void* fake_safe_handle_value(PyObject* safe_handle);
// Fake managed handles: distinct, never dereferenced.
inline void* fake_handle(uintptr_t n) { return reinterpret_cast<void*>(0x1000 + 16 * n); }
