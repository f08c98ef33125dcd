// qrx_bindtest: the binding fixture's generated types as a module of their own, for tests
// that drive every conversion and failure path through real managed calls. It joins the
// runtime quorix.folio started, through its own interop assembly.
#include <Python.h>

#include <cstring>

#include "host/clr_host.h"
#include "host/exchange_host.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/handle_release.h"
#include "objects/pyhold_api.h"
#include "wrpgen_registration.h"

namespace {

constexpr const char* kModuleName = "qrx_bindtest";
constexpr const char* kInteropAssembly = "WrpInterop.Quorix.BindTest";
constexpr const char* kCapsuleName = "quorix.pyhold._C_APIF";

PyModuleDef bindtest_module = {PyModuleDef_HEAD_INIT, kModuleName, nullptr, -1, nullptr,
                               nullptr, nullptr, nullptr, nullptr};

void free_gc_handle(void* handle) {
    if (handle != nullptr)
        ExchangeHost::get_instance().free_instance(handle);
}

// Borrowed module for a dotted name under the root, created (with its parents) on first
// request and kept alive by its parent; NULL with an error.
PyObject* module_for(PyObject* root, const char* full_name) {
    const size_t root_length = std::strlen(kModuleName);
    if (std::strcmp(full_name, kModuleName) == 0)
        return root;
    if (std::strncmp(full_name, kModuleName, root_length) != 0 || full_name[root_length] != '.') {
        PyErr_Format(PyExc_ImportError, "module '%s' is outside %s", full_name, kModuleName);
        return nullptr;
    }
    PyObject* parent = root;
    const char* part = full_name + root_length + 1;
    while (true) {
        const char* dot = std::strchr(part, '.');
        size_t length = dot != nullptr ? static_cast<size_t>(dot - part) : std::strlen(part);
        PyShRef short_name(PyUnicode_FromStringAndSize(part, static_cast<Py_ssize_t>(length)));
        if (!short_name)
            return nullptr;
        PyShRef child(PyObject_GetAttr(parent, short_name.get()));
        if (!child) {
            PyErr_Clear();
            PyShRef qualified(PyUnicode_FromStringAndSize(full_name, dot != nullptr ? dot - full_name
                                                                                   : static_cast<Py_ssize_t>(std::strlen(full_name))));
            if (!qualified)
                return nullptr;
            child.reset(PyModule_NewObject(qualified.get()));
            if (!child || PyObject_SetAttr(parent, short_name.get(), child.get()) < 0)
                return nullptr;
        }
        parent = child.get();  // borrowed: its parent holds it
        if (dot == nullptr)
            return parent;
        part = dot + 1;
    }
}

}  // namespace

PyMODINIT_FUNC PyInit_qrx_bindtest() {
    fn_intern_static_ucso();
    wrpPyj_mlof_FFFFFF_dynamic_ucso();

    // Derived-class wrappers hold quorix.pyhold's safe handles.
    PyShRef pyhold(PyImport_ImportModule("quorix.pyhold"));
    if (!pyhold)
        return nullptr;
    auto* api = static_cast<const PyHoldCApi*>(PyCapsule_Import(kCapsuleName, 0));
    if (api == nullptr)
        return nullptr;
    pyhold_capi_store(api);

    if (initialize_clr_host("", kInteropAssembly, false, "quorix", "folio") < 0)
        return nullptr;
    g_free_gc_handle = &free_gc_handle;

    PyShRef root(PyModule_Create(&bindtest_module));
    if (!root)
        return nullptr;
    PyObject* modules[WRPGEN_MODULE_COUNT];
    for (int i = 0; i < WRPGEN_MODULE_COUNT; ++i) {
        modules[i] = module_for(root.get(), WRPGEN_MODULE_NAMES[i]);
        if (modules[i] == nullptr)
            return nullptr;
    }
    if (WRPGEN_REGISTER(modules) < 0)
        return nullptr;
    return root.release();
}
