// Imports by interned name: sibling modules with their version rule, types, functions, and
// adding readied types to a module.
#include <cstring>

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"

// Sibling modules link their own copy of the version type, so a foreign VERSION cannot be
// checked by identity; 1 when `obj` at least has the version object's layout and name.
static int looks_like_version_object(PyObject* obj) {
    static const char suffix[] = "._ModuleVersionType";
    PyTypeObject* type = Py_TYPE(obj);
    if (type->tp_basicsize != (Py_ssize_t)sizeof(PyShVersionObject) || type->tp_name == NULL)
        return 0;
    size_t name_len = strlen(type->tp_name);
    size_t suffix_len = sizeof(suffix) - 1;
    return name_len > suffix_len && strcmp(type->tp_name + name_len - suffix_len, suffix) == 0;
}

PySh_COLD static void raise_missing_version(PyObject* name) {
    PyErr_Format(PyExc_ImportError,
                 "Unable to import module dependencies. Cannot import the %U module. The %U module found "
                 "does not have 'VERSION' attribute to check version compatibility.",
                 name, name);
}

PySh_COLD static void raise_missing_threshold(PyObject* name) {
    PyErr_Format(PyExc_ImportError,
                 "Unable to import module dependencies. Cannot import the %U module. The %U module found "
                 "does not have 'BACKWARD_COMPATIBILITY_THRESHOLD' attribute to check version "
                 "compatibility.",
                 name, name);
}

PySh_COLD static void raise_not_a_version(PyObject* name, PyObject* attr_name, PyObject* value) {
    PyErr_Format(PyExc_ImportError,
                 "Unable to import module dependencies. Cannot import the %U module. Its '%U' attribute "
                 "is a '%.200s' object, not a module version object.",
                 name, attr_name, Py_TYPE(value)->tp_name);
}

PySh_COLD static void raise_version_too_low(PyObject* name, PyObject* found, const int referenced[4]) {
    PyErr_Format(PyExc_ImportError,
                 "Unable to import module dependencies. Cannot import the %U module. The %U module found "
                 "has a version ('%U') that is lower than the referenced version of that module "
                 "('%i.%i.%i.%i').",
                 name, name, PyShVersionAttr_GetView(found), referenced[0], referenced[1], referenced[2],
                 referenced[3]);
}

PySh_COLD static void raise_not_compatible(PyObject* name, PyObject* found, const int referenced[4],
                                           PyObject* threshold) {
    PyErr_Format(PyExc_ImportError,
                 "Unable to import module dependencies. Cannot import the %U module. The installed version "
                 "of the module ('%U') is not compatible with the referenced version of the module "
                 "('%i.%i.%i.%i'). The installed version of the module is not compatible with the module "
                 "versions < '%U'.",
                 name, PyShVersionAttr_GetView(found), referenced[0], referenced[1], referenced[2],
                 referenced[3], PyShVersionAttr_GetView(threshold));
}

// New reference to the module's version attribute, or NULL with the given "missing" error
// (replacing the AttributeError) or a layout error.
static PyObject* get_version_attr(PyObject* module, PyObject* name, PyObject* attr_name,
                                  void (*raise_missing)(PyObject*)) {
    PyObject* value = PyObject_GetAttr(module, attr_name);
    if (value == NULL) {
        PyErr_Clear();
        raise_missing(name);
        return NULL;
    }
    if (!looks_like_version_object(value)) {
        raise_not_a_version(name, attr_name, value);
        Py_DECREF(value);
        return NULL;
    }
    return value;
}

PyObject* PyShImport_ImportRefModule(PyObject* name, const int referenced[4]) {
    PyShRef module(PyImport_Import(name));
    if (!module) {
        PyShlErr_DependencyImportError(name);
        return NULL;
    }
    PyShRef found(get_version_attr(module.get(), name, PyWrpIdOwn_Version, raise_missing_version));
    if (!found)
        return NULL;
    if (PyShVersionAttr_Compare(referenced, found.get()) > 0) {
        raise_version_too_low(name, found.get(), referenced);
        return NULL;
    }
    PyShRef threshold(get_version_attr(module.get(), name, PyWrpIdOwn_BackwardCompatibilityThreshold,
                                       raise_missing_threshold));
    if (!threshold)
        return NULL;
    if (PyShVersionAttr_Compare(referenced, threshold.get()) < 0) {
        raise_not_compatible(name, found.get(), referenced, threshold.get());
        return NULL;
    }
    return module.release();
}

PySh_COLD static void raise_not_a_type(PyObject* attr) {
    PyErr_Format(PyExc_TypeError, "Attribute must be %.200s object, not '%.200s'", PyType_Type.tp_name,
                 Py_TYPE(attr)->tp_name);
}

PyObject* PyShImport_ImportType(PyObject* module_name, PyObject* type_name) {
    PyObject* module = PyImport_Import(module_name);
    if (module == NULL) {
        PyShlErr_UnableToImportModule(module_name);
        return NULL;
    }
    PyObject* attr = PyObject_GetAttr(module, type_name);
    Py_DECREF(module);
    if (attr == NULL) {
        PyShlErr_UnableToImportType(type_name, module_name);
        return NULL;
    }
    if (!PyType_Check(attr)) {
        raise_not_a_type(attr);
        Py_DECREF(attr);
        return NULL;
    }
    return attr;
}

PyObject* PyShImport_ImportTypeEx(PyObject* const* names) {
    if (names == NULL || names[0] == NULL || names[1] == NULL) {
        PyErr_BadInternalCall();
        return NULL;
    }
    PyObject* current = PyShImport_ImportType(names[0], names[1]);
    for (PyObject* const* nested = names + 2; current != NULL && *nested != NULL; ++nested) {
        PyObject* attr = PyObject_GetAttr(current, *nested);
        if (attr == NULL)
            PyShlErr_UnableToImportNestedType(((PyTypeObject*)current)->tp_name, *nested);
        else if (!PyType_Check(attr)) {
            raise_not_a_type(attr);
            Py_CLEAR(attr);
        }
        Py_DECREF(current);
        current = attr;
    }
    return current;
}

PySh_COLD static void raise_not_callable(PyObject* attr) {
    PyErr_Format(PyExc_TypeError, "Attribute must be a callable object, not '%.200s'", Py_TYPE(attr)->tp_name);
}

PyObject* PyShImport_ImportFunction(PyObject* module_name, PyObject* function_name) {
    PyObject* module = PyImport_Import(module_name);
    if (module == NULL) {
        PyShlErr_UnableToImportModule(module_name);
        return NULL;
    }
    PyObject* attr = PyObject_GetAttr(module, function_name);
    Py_DECREF(module);
    if (attr == NULL) {
        PyShlErr_UnableToImportFunction(function_name, module_name);
        return NULL;
    }
    // A non-callable attribute is still handed back, with the TypeError pending: callers
    // decide by checking for the error, and own the reference either way.
    if (!PyCallable_Check(attr))
        raise_not_callable(attr);
    return attr;
}

// Borrowed-text name of `module` for messages; never disturbs the pending error.
static const char* module_name_for_message(PyObject* module) {
    if (PyModule_Check(module)) {
        PyModuleDef* def = PyModule_GetDef(module);
        if (def != NULL && def->m_name != NULL)
            return def->m_name;
        PyObject *exc_type, *exc_value, *exc_tb;
        PyErr_Fetch(&exc_type, &exc_value, &exc_tb);
        const char* name = PyModule_GetName(module);
        if (name == NULL)
            PyErr_Clear();
        PyErr_Restore(exc_type, exc_value, exc_tb);
        if (name != NULL)
            return name;
    }
    return "<unknown>";
}

int PyShModule_AddType(PyObject* module, PyTypeObject* type, const char* name) {
    if (PyType_Ready(type) < 0) {
        PyShlErr_TypeInitializationInternalError(-1015, type->tp_name);
        return -1;
    }
    Py_INCREF(type);
    if (PyModule_AddObject(module, name, (PyObject*)type) < 0) {
        PyShlErr_TypeInitializationInternalError(-1014, module_name_for_message(module), type->tp_name);
        Py_DECREF(type);
        return -1;
    }
    return 0;
}
