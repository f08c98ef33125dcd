// What a sibling module of generated bindings adds to them: it joins the runtime on the first
// managed call of one of its types, never at import (quorix.folio imports the siblings before
// it starts the runtime), and frees wrapper handles through quorix.pyhold, whose releaser the
// module that started the runtime installed, so a wrapper can die before the sibling joined.
#pragma once

#include <Python.h>

#include <cstring>

#include "host/clr_host.h"
#include "module/ids.h"
#include "module/pysh_once.h"
#include "objects/handle_release.h"
#include "objects/pyhold_api.h"
#include "siblings/sealed_placeholder.h"
#include "siblings/sibling_support.h"
#include "wrpgen_registration.h"

// The interop assembly of this sibling; each sibling defines it.
extern const char* const kPySibInteropAssembly;

namespace pysib_detail {

// Joining imports quorix.pyhold and may run managed start-up code: threads arriving meanwhile
// must wait without the interpreter lock (see PyShOnce).
inline PyShOnce host_start;

inline void free_through_pyhold(void* handle) {
    if (handle == nullptr)
        return;
    // Without the interface the handle cannot be freed: kept rather than crash.
    if (const PyHoldCApi* capi = PySibSealed_Capi())
        capi->target_handle_free(handle);
}

}  // namespace pysib_detail

// Called by the generated bindings before any managed call: 0 once the runtime runs with this
// module's callbacks handed to its interop assembly, else -1 with the error set.
int PySib_StartHost();

inline int PySib_StartHostOnce() {
    return pysib_detail::host_start.run([] {
        // Derived-class results are held by quorix.pyhold's safe handles.
        const PyHoldCApi* capi = PyHoldCApi_Import();
        if (capi == nullptr)
            return -1;
        pyhold_capi_store(capi);
        return initialize_clr_host("", kPySibInteropAssembly, false, "quorix", "folio") < 0 ? -1 : 0;
    });
}

// Module body shared by the siblings: version attributes, then every generated type added to
// the module itself (the bindings have exactly one module: this one). NULL with an error.
inline PyObject* PySib_CreateBoundModule(PyModuleDef* def, const char* version_type_name) {
    fn_intern_static_ucso();
    wrpPyj_mlof_FFFFFF_dynamic_ucso();
    g_free_gc_handle = &pysib_detail::free_through_pyhold;
    // Taken now when it can be: a wrapper freed while the interpreter shuts down cannot import.
    if (sealed_placeholder_capi == nullptr && (sealed_placeholder_capi = PyHoldCApi_Import()) == nullptr)
        PyErr_Clear();

    PyShRef module(PyModule_Create(def));
    if (!module)
        return nullptr;
    if (PySib_AddVersionAttributes(module.get(), version_type_name) < 0)
        return nullptr;
    static_assert(WRPGEN_MODULE_COUNT == 1, "a sibling binds types of its own module only");
    if (std::strcmp(WRPGEN_MODULE_NAMES[0], def->m_name) != 0) {
        PyErr_Format(PyExc_ImportError, "bindings of '%s' built into %s", WRPGEN_MODULE_NAMES[0], def->m_name);
        return nullptr;
    }
    PyObject* modules[1] = {module.get()};
    if (WRPGEN_REGISTER(modules) < 0)
        return nullptr;
    return module.release();
}
