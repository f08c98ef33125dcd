// The common part of every bound type's method table, and the cached validity state that
// each generated entry point tests first. A table binds all of its stubs once, on first use;
// a stub that cannot be bound makes the type unusable for the life of the process.
#pragma once

#include <Python.h>

#include <initializer_list>
#include <string>

#include "host/fork_guard.h"

class HostEnvironment;

// A type's aggregate validity, computed once from its own table and its referenced types.
struct PyHostState {
    bool failed = false;
    bool referenced_failed = false;  // the message is a referenced type's
    std::string message;
};

// The query each bound type exports for the types that reference it: true with `message`
// filled when the type is unusable.
using PyHostValidityQuery = bool (*)(std::string& message);

// One stub of a table: its managed name and the slot it fills.
struct PyHostStubSlot {
    const char* name;
    void** slot;
};

class PyHostTable {
public:
    bool is_not_valid() const { return is_not_valid_; }
    const char* error_msg() const { return error_.c_str(); }
    const char* assembly() const { return assembly_; }
    const char* stub_class() const { return stub_class_; }

protected:
    // Takes the interop assembly name from the exchange host; `stub_class` must be a literal.
    explicit PyHostTable(const char* stub_class);
    PyHostTable(const PyHostTable&) = delete;
    PyHostTable& operator=(const PyHostTable&) = delete;

    // The host the stubs are bound through; NULL when no runtime runs (every stub then fails).
    const HostEnvironment* host() const { return host_; }
    // True with *slot bound; false with the table marked invalid and its error text set.
    bool set_method_ptr(const HostEnvironment* host, const char* method_name, void** slot);
    // Binds the stubs in order, stopping at the first failure.
    void bind_all(const PyHostStubSlot* stubs, size_t count);

private:
    const char* assembly_;
    bool is_not_valid_ = false;
    std::string error_;
    const char* stub_class_;
    const HostEnvironment* host_;
};

// The state of a type whose table is `table`, testing `referenced` in order when it is valid.
PyHostState PyHostState_Build(const PyHostTable& table, std::initializer_list<PyHostValidityQuery> referenced);

// Raises the stored TypeError (with the chained referenced-type error where it applies); true.
[[gnu::cold, gnu::noinline]] bool PyHostState_Raise(const PyHostState& state);

// The entry check: false when the type is usable, else true with the TypeError raised.
// A forked child of a process that ran the runtime fails every entry here (host/fork_guard.h).
inline bool PyHostState_Check(const PyHostState& state) {
    return state.failed || host_in_forked_child() ? PyHostState_Raise(state) : false;
}

// The query form of a state: true with the message copied when the type is unusable.
inline bool PyHostState_Query(const PyHostState& state, std::string& message) {
    if (!state.failed)
        return false;
    message = state.message;
    return true;
}
