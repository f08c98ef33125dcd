// The interpreter lock around managed code.
//
// Long managed work that the generator marks (loading, saving, conversions) runs with the lock
// released, so that other Python threads keep running. Managed code may still call back into
// Python while it runs (a Python stream argument, a string result, an exception to report), so
// every callback handed to managed code takes the lock for its own duration: PyGILState_Ensure
// restores the calling thread's own state, so an error it sets is the one the caller tests after
// the managed call returns. On a thread that holds the lock already it only counts.
#pragma once

#include <Python.h>

#include <type_traits>

// Runs `call` with the interpreter lock released; returns what it returned. The lock is held
// again before this returns, whatever `call` did.
template <class Call>
inline auto PyShUnlocked_Call(Call&& call) {
    PyThreadState* saved = PyEval_SaveThread();
    if constexpr (std::is_void_v<decltype(call())>) {
        call();
        PyEval_RestoreThread(saved);
    } else {
        auto result = call();
        PyEval_RestoreThread(saved);
        return result;
    }
}

// A callback for managed code: `Function` run with the interpreter lock held.
template <auto Function>
struct PyShLocked;

template <typename Result, typename... Args, Result (*Function)(Args...)>
struct PyShLocked<Function> {
    static Result call(Args... args) {
        PyGILState_STATE state = PyGILState_Ensure();
        if constexpr (std::is_void_v<Result>) {
            Function(args...);
            PyGILState_Release(state);
        } else {
            Result result = Function(args...);
            PyGILState_Release(state);
            return result;
        }
    }
};

// A callback that must never wait for the lock (it runs on the managed finalizer thread)
// specialises this to true and is handed over as itself.
template <auto Function>
inline constexpr bool kPyShLockFree = false;

// The untyped pointer managed code receives for a callback that may run without the lock.
template <auto Function>
inline void* PyShLocked_Entry() {
    if constexpr (kPyShLockFree<Function>)
        return reinterpret_cast<void*>(Function);
    else
        return reinterpret_cast<void*>(&PyShLocked<Function>::call);
}
