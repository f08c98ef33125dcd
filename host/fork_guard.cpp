#include "host/fork_guard.h"

#include <dlfcn.h>
#include <pthread.h>

#include <initializer_list>

namespace host_fork_detail {
bool forked_child = false;
}  // namespace host_fork_detail

namespace {

// Decided before each fork, in the parent, where the dynamic loader may be asked: the child
// handler may only copy it.
bool g_runtime_at_fork = false;

// The wrapper library is process-wide, whichever module of the family loaded it; a sibling
// that never joined the runtime must still know that the runtime ran.
bool runtime_running() {
    for (const char* name : {"libquorix.embed.coreclrwrap.so", "libquorix.embed.coreclrwrap.debug.so"}) {
        void* library = dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
        if (library == nullptr)
            continue;
        auto is_initialized = reinterpret_cast<int (*)()>(dlsym(library, "coreclr_wrap_is_domain_initialized"));
        bool running = is_initialized != nullptr && is_initialized() != 0;
        dlclose(library);  // drops only the reference NOLOAD took
        if (running)
            return true;
    }
    return false;
}

void before_fork() { g_runtime_at_fork = g_runtime_at_fork || runtime_running(); }

void in_child() { host_fork_detail::forked_child = g_runtime_at_fork; }

// Registered when the module is loaded, so that a fork before any managed call is seen too.
const int g_registered = pthread_atfork(before_fork, nullptr, in_child);

}  // namespace
