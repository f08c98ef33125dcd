// Entry point of quorix.folio: checks the sibling modules, starts the runtime host, builds the
// root module with its version attributes and submodules, then registers every bound type.
#include <Python.h>

#include "host/clr_host.h"
#include "module/folio_registration.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/pyhold_api.h"

namespace {

constexpr const char* kModuleName = "quorix.folio";
constexpr const char* kCapsuleName = "quorix.pyhold._C_APIF";
constexpr int kApiVersion = 1013;
constexpr int kSiblingVersion[4] = {25, 8, 0, 0};

PyObject* get_pyinstaller_hook_dirs(PyObject* self, PyObject* unused);

PyMethodDef folio_methods[] = {
    {"get_pyinstaller_hook_dirs", get_pyinstaller_hook_dirs, METH_NOARGS,
     "Function required by PyInstaller. Returns paths to module\nPyInstaller hooks. Not intended to be called "
     "explicitly.\n\n"},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef folio_module = {PyModuleDef_HEAD_INIT, kModuleName, nullptr, -1, folio_methods,
                            nullptr, nullptr, nullptr, nullptr};

// One managed namespace each; a parent always precedes its children.
struct Submodule {
    PyModuleDef def;
    const char* short_name;
    int parent;  // index into g_submodules, -1 for the root
    const char* package;
    bool is_package;
};

PyMethodDef no_methods[] = {{nullptr, nullptr, 0, nullptr}};

#define QRX_SUBMODULE(full, short_name, parent, package, is_package) \
    {{PyModuleDef_HEAD_INIT, full, nullptr, -1, no_methods, nullptr, nullptr, nullptr, nullptr}, \
     short_name, parent, package, is_package}

Submodule g_submodules[] = {
    QRX_SUBMODULE("quorix.folio.ai", "ai", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.bibliography", "bibliography", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.buildingblocks", "buildingblocks", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.comparing", "comparing", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.digitalsignatures", "digitalsignatures", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.drawing", "drawing", -1, "quorix.folio.drawing", true),
    QRX_SUBMODULE("quorix.folio.drawing.charts", "charts", 5, "quorix.folio.drawing", false),
    QRX_SUBMODULE("quorix.folio.drawing.ole", "ole", 5, "quorix.folio.drawing", false),
    QRX_SUBMODULE("quorix.folio.fields", "fields", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.fonts", "fonts", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.framesets", "framesets", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.layout", "layout", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.lists", "lists", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.loading", "loading", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.lowcode", "lowcode", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.mailmerging", "mailmerging", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.markup", "markup", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.math", "math", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.notes", "notes", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.properties", "properties", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.rendering", "rendering", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.replacing", "replacing", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.reporting", "reporting", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.saving", "saving", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.settings", "settings", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.shaping", "shaping", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.tables", "tables", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.themes", "themes", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.vba", "vba", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.webextensions", "webextensions", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio.xattr", "xattr", -1, "quorix.folio", false),
    // "_wrpgen" keeps the root's package and no __path__, although it has children.
    QRX_SUBMODULE("quorix.folio._wrpgen", "_wrpgen", -1, "quorix.folio", false),
    QRX_SUBMODULE("quorix.folio._wrpgen._interop", "_interop", 31, "quorix.folio._wrpgen", false),
    QRX_SUBMODULE("quorix.folio._wrpgen._generic", "_generic", 31, "quorix.folio._wrpgen", false),
};
constexpr int kSubmoduleCount = sizeof(g_submodules) / sizeof(g_submodules[0]);
static_assert(kSubmoduleCount == 34, "one submodule per managed namespace");

// Borrowed submodule objects, kept alive by their parents; read by the type registration.
PyObject* g_submodule_objects[kSubmoduleCount];

[[gnu::cold]] PyObject* fail_module(int code) {
    PyShlErr_ModulePyInitError(kModuleName, code);
    return nullptr;
}

[[gnu::cold]] PyObject* fail_internal(int code, const char* name) {
    PyShlErr_ModuleInitializationInternalError(code, name);
    return nullptr;
}

[[gnu::cold]] PyObject* fail_internal(int code, const char* parent, const char* child) {
    PyShlErr_ModuleInitializationInternalError(code, parent, child);
    return nullptr;
}

// 0, or -1 with the -1023 error: sets __package__ and, for packages, an empty __path__.
int set_package_attributes(PyObject* module, const char* module_name, const char* package, bool is_package) {
    PyShRef package_name(PyUnicode_FromString(package));
    if (!package_name || PyObject_SetAttrString(module, "__package__", package_name.get()) < 0) {
        fail_internal(-1023, module_name);
        return -1;
    }
    if (is_package) {
        PyShRef path(PyList_New(0));
        if (!path || PyObject_SetAttrString(module, "__path__", path.get()) < 0) {
            fail_internal(-1023, module_name);
            return -1;
        }
    }
    return 0;
}

// 0, or -1 with an error: every submodule created and added to its parent.
int create_submodules(PyObject* root) {
    for (int i = 0; i < kSubmoduleCount; ++i) {
        Submodule& sub = g_submodules[i];
        PyShRef module(PyModule_Create2(&sub.def, kApiVersion));
        if (!module) {
            fail_internal(-1003, sub.def.m_name);
            return -1;
        }
        PyObject* parent = sub.parent < 0 ? root : g_submodule_objects[sub.parent];
        const char* parent_name = sub.parent < 0 ? kModuleName : g_submodules[sub.parent].def.m_name;
        PyObject* borrowed = module.get();
        if (PyModule_AddObject(parent, sub.short_name, module.get()) < 0) {
            fail_internal(-1002, parent_name, sub.short_name);
            return -1;
        }
        module.release();  // the parent holds it now
        g_submodule_objects[i] = borrowed;
        if (set_package_attributes(borrowed, sub.def.m_name, sub.package, sub.is_package) < 0)
            return -1;
    }
    return 0;
}

// 0, or -1 with the -1023 error: every submodule entered in sys.modules under its dotted name,
// with a spec, so that `import quorix.folio.saving`, `from quorix.folio.tables import Table` and
// pickling by module name find it. Done last, so that a failed import leaves no stale entries.
int publish_submodules() {
    PyObject* modules = PyImport_GetModuleDict();  // borrowed
    PyShRef machinery(PyImport_ImportModule("importlib.machinery"));
    if (!machinery)
        return -1;
    PyShRef spec_type(PyObject_GetAttrString(machinery.get(), "ModuleSpec"));
    if (!spec_type)
        return -1;
    for (int i = 0; i < kSubmoduleCount; ++i) {
        PyObject* module = g_submodule_objects[i];
        const char* name = g_submodules[i].def.m_name;
        PyShRef spec(PyObject_CallFunction(spec_type.get(), "sO", name, Py_None));
        if (!spec || PyObject_SetAttrString(module, "__spec__", spec.get()) < 0 ||
            PyDict_SetItemString(modules, name, module) < 0) {
            fail_internal(-1023, name);
            return -1;
        }
    }
    return 0;
}

int add_version(PyObject* root, const char* name, int major, int minor, int patch, int sub, const char* text) {
    PyObject* version = PyShVersionAttr_Create(major, minor, patch, sub, text);
    if (version == nullptr)
        return -1;
    if (PyModule_AddObject(root, name, version) < 0) {
        Py_DECREF(version);
        return -1;
    }
    return 0;
}

// 0 when quorix.pyintro and quorix.pygfx import at the required version, else -1 with the error.
int wrpPyj_mlof_FFFFFF_rslv_stll() {
    PyObject* const siblings[] = {PyWrpIdUcsO_DAA68086 /* quorix.pyintro */, PyWrpIdUcsO_9E40A91F /* quorix.pygfx */};
    for (PyObject* name : siblings) {
        PyShRef module(PyShImport_ImportRefModule(name, kSiblingVersion));
        if (!module)
            return -1;
    }
    return 0;
}

// 0 with the handle functions stored, or -1 with the -1008 error.
int import_pyhold() {
    PyShRef module(PyShImport_ImportRefModule(PyWrpIdUcsO_494CB7C9 /* quorix.pyhold */, kSiblingVersion));
    if (!module) {
        fail_module(-1008);
        return -1;
    }
    auto* api = static_cast<const PyHoldCApi*>(PyCapsule_Import(kCapsuleName, 0));
    if (api == nullptr) {
        module.reset();
        PyShlErr_CapsuleImportError(kCapsuleName);
        fail_module(-1008);
        return -1;
    }
    pyhold_capi_store(api);
    return 0;
}

PyObject* get_pyinstaller_hook_dirs(PyObject* /*self*/, PyObject* /*unused*/) {
    PyObject* module = PyState_FindModule(&folio_module);
    if (module == nullptr)
        return nullptr;
    PyShRef file(PyModule_GetFilenameObject(module));
    if (!file)
        return nullptr;
    PyShRef os_path(PyImport_Import(PyWrpIdModuleName_OsPath));
    if (!os_path) {
        PyShlErr_UnableToImportModule(PyWrpIdModuleName_OsPath);
        return nullptr;
    }
    PyShRef dir(PyObject_CallMethodObjArgs(os_path.get(), PyWrpIdOsPath_DirName, file.get(), nullptr));
    if (!dir)
        return nullptr;
    PyShRef join(PyObject_GetAttr(os_path.get(), PyWrpIdOsPath_Join));
    if (!join)
        return nullptr;
    static const char* const siblings[] = {"folio", "pyintro", "pygfx", "pyhold", "pyfund"};
    constexpr int count = 1 + sizeof(siblings) / sizeof(siblings[0]);
    PyShRef result(PyList_New(count));
    if (!result)
        return nullptr;
    for (int i = 0; i < count; ++i) {
        PyShRef entry(i == 0 ? PyObject_CallFunction(join.get(), "Os", dir.get(), "__pyinstaller")
                             : PyObject_CallFunction(join.get(), "Oss", dir.get(), siblings[i - 1], "__pyinstaller"));
        if (!entry)
            return nullptr;
        PyList_SET_ITEM(result.get(), i, entry.release());
    }
    return result.release();
}

}  // namespace

PyObject* folio_submodule(int index) { return g_submodule_objects[index]; }

PyMODINIT_FUNC PyInit_folio() {
    fn_intern_static_ucso();
    wrpPyj_mlof_FFFFFF_dynamic_ucso();

    if (wrpPyj_mlof_FFFFFF_rslv_stll() < 0)
        return fail_module(-1009);
    if (import_pyhold() < 0)
        return nullptr;

    if (initialize_clr_host("", "WrpInterop.Quorix.Folio", false, "quorix", "folio") < 0)
        return fail_module(-1007);
    install_handle_releasers();  // wrappers and safe handles free through the exchange host from now on
    if (folio_install_document_waits() < 0)
        return nullptr;

    PyShRef root(PyModule_Create2(&folio_module, kApiVersion));
    if (!root)
        return fail_internal(-1003, kModuleName);

    if (PyShModule_AddType(root.get(), PyShFieldDescr_Type(), "_FieldDescrType") < 0)
        return nullptr;
    if (PyShModule_AddType(root.get(), PyShMixMethodDescr_Type(), "_MixMethodDescrType") < 0)
        return nullptr;
    if (PyShModule_AddType(root.get(), PyShVersion_Type(), "_ModuleVersionType") < 0)
        return fail_module(-1004);

    if (add_version(root.get(), "VERSION", 26, 10, 0, 0, "26.10.0.0") < 0)
        return fail_module(-1001);
    if (add_version(root.get(), "_BACKWARD_COMPATIBILITY_THRESHOLD", 22, 6, 0, 0, "22.6.0.0") < 0)
        return fail_module(-1019);

    if (set_package_attributes(root.get(), kModuleName, kModuleName, true) < 0)
        return nullptr;
    if (create_submodules(root.get()) < 0)
        return nullptr;

    if (register_folio_types(root.get()) < 0)
        return nullptr;
    if (publish_submodules() < 0)
        return nullptr;
    return root.release();
}
