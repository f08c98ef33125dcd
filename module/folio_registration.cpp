#include "module/folio_registration.h"

#include "builtins/buffer_view.h"
#include "builtins/str_dict.h"
#include "builtins/stream_wrapper.h"
#include "builtins/untyped_kinds.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "objects/host_markattr.h"

#include <cstring>

#ifdef QRX_WITH_GENERATED_BINDINGS
#include "wrpgen_registration.h"
#endif

namespace {

[[gnu::cold]] int fail_type(int code, const char* name) {
    PyShlErr_TypeInitializationInternalError(code, name);
    return -1;
}

[[gnu::cold]] int fail_type(int code, const char* module_name, const char* type_name) {
    PyShlErr_TypeInitializationInternalError(code, module_name, type_name);
    return -1;
}

// 0, or -1 with the -1014 error; the module takes the reference given.
int add_to_module(PyObject* module, PyTypeObject* type, const char* name) {
    Py_INCREF(type);
    if (PyModule_AddObject(module, name, reinterpret_cast<PyObject*>(type)) < 0) {
        Py_DECREF(type);
        return fail_type(-1014, PyModule_GetName(module), type->tp_name);
    }
    return 0;
}

}  // namespace

// 0, or -1 with an ImportError: a static type of the binding readied, marked as a host type,
// given the inline-handle marker and added to its module.
int register_static_class_type(PyObject* module, PyTypeObject* type, const char* name) {
    if (PyType_Ready(type) < 0)
        return fail_type(-1015, type->tp_name);
    if (!fn_set_obj_type_host_markattr(type))
        return fail_type(-1016, type->tp_name);
    if (PyObject_GenericSetAttr(reinterpret_cast<PyObject*>(type), PyWrpIdMarkattr_Handle, Py_Ellipsis) != 0)
        return fail_type(-1022, type->tp_name);
    return add_to_module(module, type, name);
}

// 0, or -1 with an ImportError: the built-in protocol types of quorix.folio._wrpgen._interop.
int wrpPyj_mlof_FFFFFFFF_interop_wrappers(PyObject* module) {
    for (int k = 0; k < kPyUkKindCount; ++k)
        if (register_static_class_type(module, PyUk_Type(static_cast<PyUkKind>(k)), PyUk_Name(static_cast<PyUkKind>(k))) < 0)
            return -1;
    // The buffer view is no managed type: readied and added only.
    PyTypeObject* view = PyShlBufferView_Type();
    if (PyType_Ready(view) < 0)
        return fail_type(-1015, view->tp_name);
    if (add_to_module(module, view, "_ShlBufferView") < 0)
        return -1;
    if (PyStreamWrapper_Ready() < 0)
        return fail_type(-1015, PyStreamWrapper_Type()->tp_name);
    if (add_to_module(module, PyStreamWrapper_Type(), "_StreamWrapper") < 0)
        return -1;
    if (PyStrDict_Ready() < 0)
        return fail_type(-1015, PyStrDict_Type()->tp_name);
    return add_to_module(module, PyStrDict_Type(), "_StrDictWrapper");
}

#ifdef QRX_WITH_GENERATED_BINDINGS
// Borrowed module object of a dotted name: the root or one of its submodules; NULL if none.
static PyObject* module_named(PyObject* root, const char* name) {
    const char* root_name = PyModule_GetName(root);
    if (root_name != nullptr && std::strcmp(root_name, name) == 0)
        return root;
    PyErr_Clear();
    for (int i = 0; i <= FolioSubmodule_Generic; ++i) {
        const char* sub_name = PyModule_GetName(folio_submodule(i));
        if (sub_name != nullptr && std::strcmp(sub_name, name) == 0)
            return folio_submodule(i);
        PyErr_Clear();
    }
    return nullptr;
}

// 0, or -1 with an ImportError: the generated types, each into the module of its namespace.
static int register_generated_types(PyObject* root) {
    PyObject* modules[WRPGEN_MODULE_COUNT];
    for (int i = 0; i < WRPGEN_MODULE_COUNT; ++i) {
        modules[i] = module_named(root, WRPGEN_MODULE_NAMES[i]);
        if (modules[i] == nullptr)
            return fail_type(-1014, WRPGEN_MODULE_NAMES[i]);
    }
    return WRPGEN_REGISTER(modules);
}
#endif

int register_folio_types(PyObject* root) {
    if (wrpPyj_mlof_FFFFFFFF_interop_wrappers(folio_submodule(FolioSubmodule_Interop)) < 0)
        return -1;
#ifdef QRX_WITH_GENERATED_BINDINGS
    if (register_generated_types(root) < 0)
        return -1;
#else
    (void)root;
#endif
    return 0;
}
