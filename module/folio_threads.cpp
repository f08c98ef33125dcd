// A Python thread that must wait for a document another thread holds waits without the
// interpreter lock: the holder may be inside a long call that runs a Python callback.
#include <Python.h>

#include "host/host_environment.h"
#include "host/managed_binding.h"
#include "module/folio_registration.h"

namespace {

// The interpreter lock let go by the calling thread, or NULL if it did not hold it.
void* release_if_held() {
    return PyGILState_Check() ? static_cast<void*>(PyEval_SaveThread()) : nullptr;
}

void restore(void* saved) {
    if (saved != nullptr)
        PyEval_RestoreThread(static_cast<PyThreadState*>(saved));
}

}  // namespace

int folio_install_document_waits() {
    void (*set_callbacks)(void*, void*) = nullptr;
    std::string error;
    if (!bind_managed_method(HostEnvironment::current(), "WrpInterop.Quorix.Folio", "Quorix.WrpGen.Interop.DocumentThreads",
                             "SetLockCallbacks", slot_of(set_callbacks), &error)) {
        PyErr_SetString(PyExc_ImportError, error.c_str());
        return -1;
    }
    set_callbacks(reinterpret_cast<void*>(&release_if_held), reinterpret_cast<void*>(&restore));
    return 0;
}
