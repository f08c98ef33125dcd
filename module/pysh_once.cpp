#include "module/pysh_once.h"

#include <sched.h>
#include <time.h>

void PyShOnce::wait_a_little() noexcept {
    // The initialiser runs Python code: it finishes in milliseconds, so a short sleep suffices.
    const timespec pause = {0, 200 * 1000};
    nanosleep(&pause, nullptr);
}

int PyShOnce::fail_recursive() {
    PyErr_SetString(PyExc_RuntimeError, "a one-time initialisation called itself");
    return -1;
}
