// One-time initialisation that may run Python code (imports, attribute lookups).
//
// A function-local static cannot be used for it: Python code may let the interpreter switch
// threads, and a second thread arriving at the C++ guard would then wait there holding the
// interpreter lock that the first thread needs to finish. Here a late thread waits with the
// interpreter lock released, and a failed initialisation is retried by the next caller.
#pragma once

#include <Python.h>

#include <atomic>

class PyShOnce {
public:
    constexpr PyShOnce() noexcept = default;
    PyShOnce(const PyShOnce&) = delete;
    PyShOnce& operator=(const PyShOnce&) = delete;

    bool done() const noexcept { return state_.load(std::memory_order_acquire) == kDone; }

    // Runs `init` (returning 0, or -1 with an error set) unless it already succeeded; called
    // with the interpreter lock held. 0, or -1 with an error set.
    template <class Init>
    int run(Init&& init) {
        if (done())
            return 0;
        return run_slow(init);
    }

private:
    enum State : int { kIdle, kRunning, kDone };

    template <class Init>
    int run_slow(Init& init) {
        unsigned long me = PyThread_get_thread_ident();
        for (;;) {
            int expected = kIdle;
            if (state_.compare_exchange_strong(expected, kRunning, std::memory_order_acq_rel)) {
                owner_.store(me, std::memory_order_relaxed);
                int rc = init();
                owner_.store(0, std::memory_order_relaxed);
                state_.store(rc < 0 ? kIdle : kDone, std::memory_order_release);
                return rc < 0 ? -1 : 0;
            }
            if (expected == kDone)
                return 0;
            if (owner_.load(std::memory_order_relaxed) == me)
                return fail_recursive();
            Py_BEGIN_ALLOW_THREADS
            while (state_.load(std::memory_order_acquire) == kRunning)
                wait_a_little();
            Py_END_ALLOW_THREADS
        }
    }

    static void wait_a_little() noexcept;
    [[gnu::cold, gnu::noinline]] static int fail_recursive();

    std::atomic<int> state_{kIdle};
    std::atomic<unsigned long> owner_{0};
};
