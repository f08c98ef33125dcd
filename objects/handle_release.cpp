#include "objects/handle_release.h"

void (*g_free_gc_handle)(void* handle) = nullptr;

void
PyShWrp_FreeGcHandlePtr(void* handle)
{
    if (handle != nullptr && g_free_gc_handle != nullptr) {
        g_free_gc_handle(handle);
    }
}

void
PyShWrp_FreeTwinOriginObj(const VariantArg& twin)
{
    if (twin.tag == 0) {
        PyShWrp_FreeGcHandlePtr(twin.value);
    }
    else if (twin.tag == 6) {
        Py_XDECREF(static_cast<PyObject*>(twin.value));
    }
}
