// Dispatch over the overloads of one managed member: the first candidate whose arguments all
// convert wins; when none does, one TypeError carries the list of every candidate's message,
// unless a candidate failed on a value alone (a ValueError: NaN, a negative limit): its types
// matched, so that error is the answer.
#pragma once

#include <Python.h>

// The parse failures of the candidates tried so far in one call; released on every exit.
class PyOverloadFailures {
public:
    PyOverloadFailures(PyObject** slots, int capacity) noexcept : slots_(slots), capacity_(capacity) {}
    PyOverloadFailures(const PyOverloadFailures&) = delete;
    PyOverloadFailures& operator=(const PyOverloadFailures&) = delete;
    ~PyOverloadFailures() { release(); }

    // Takes the pending error of the candidate that just failed to parse, keeping its value.
    void keep() noexcept;
    // Keeps an error value handed over by another dispatcher (owned; NULL keeps nothing).
    void keep_value(PyObject* value) noexcept;
    // Raises the first kept ValueError, else TypeError([str(value), ...]) in candidate order; NULL.
    [[gnu::cold, gnu::noinline]] PyObject* raise();
    // The same for slots returning an int: -1.
    int raise_int() {
        raise();
        return -1;
    }
    // Hands the last kept value to the caller (or NULL), releasing the others.
    PyObject* take_last() noexcept;

private:
    void release() noexcept;

    PyObject** slots_;
    int capacity_;
    int count_ = 0;
    PyObject* value_error_ = nullptr;  // owned, normalised
};

// Storage for the failures of a dispatcher with N candidates, on the caller's stack.
template <int N>
class PyOverloadFailureSlots : public PyOverloadFailures {
public:
    PyOverloadFailureSlots() noexcept : PyOverloadFailures(storage_, N) {}

private:
    PyObject* storage_[N] = {};
};
