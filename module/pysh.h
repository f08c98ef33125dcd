// Interpreter helper layer: error builders with chaining, imports by interned name with
// the sibling version rule, the module's small auxiliary types, and protocol probes.
// Every helper runs with the interpreter lock held; failure is NULL or -1 with an error set.
#pragma once

#include <Python.h>
#include <cstdint>

// Error-building paths: kept out of line so the callers' fast paths stay compact.
#define PySh_COLD __attribute__((cold, noinline))

// ---- error builders: each leaves exactly one exception pending, chained onto a pending one
void PyShlErr_ChainFormat(PyObject* exc_type, const char* format, ...);
void PyShlErr_ChainOrFormat(PyObject* exc_type, const char* message);
void PyShlErr_ModuleInitializationInternalError(int code);
void PyShlErr_ModuleInitializationInternalError(int code, const char* text);
void PyShlErr_ModuleInitializationInternalError(int code, const char* text1, const char* text2);
void PyShlErr_ModulePyInitError(const char* module_name, int code);
void PyShlErr_DependencyImportError(PyObject* module_name);
void PyShlErr_UnableToImportModule(PyObject* module_name);
void PyShlErr_CapsuleImportError(const char* capsule_name);
void PyShlErr_TypeInitializationInternalError(int code, const char* text);
void PyShlErr_TypeInitializationInternalError(int code, const char* text1, const char* text2);
void PyShlErr_UnableToImportType(PyObject* type_name, PyObject* module_name);
void PyShlErr_UnableToImportNestedType(const char* outer_name, PyObject* nested_name);
void PyShlErr_UnableToImportFunction(PyObject* function_name, PyObject* module_name);
void PyShlErr_EnumTypeInitialization(const char* message, const char* enum_name);
// RuntimeError: the process is a forked child of one that ran the runtime (host/fork_guard.h).
void PyShlErr_ForkedChild();

// ---- imports (names are interned str objects)
// New reference to the module, or NULL; accepted when threshold <= referenced <= VERSION.
PyObject* PyShImport_ImportRefModule(PyObject* name, const int referenced[4]);
// New reference to a type object, or NULL.
PyObject* PyShImport_ImportType(PyObject* module_name, PyObject* type_name);
// names: {module, type, nested..., NULL}; new reference to the innermost type, or NULL.
PyObject* PyShImport_ImportTypeEx(PyObject* const* names);
// New reference to the attribute; a non-callable one comes back with a TypeError pending.
PyObject* PyShImport_ImportFunction(PyObject* module_name, PyObject* function_name);
// 0, or -1 with an ImportError (-1015 readying, -1014 adding).
int PyShModule_AddType(PyObject* module, PyTypeObject* type, const char* name);

// ---- version objects (_ModuleVersionType)
struct PyShVersionObject {
    PyObject_HEAD
    int32_t major;
    int32_t minor;
    int32_t patch;
    int32_t sub;
    PyObject* view;  // owned str, the display text
};
// The version type of this extension module; its tp_name names the module that owns it.
PyTypeObject* PyShVersion_Type();
// Sets the version type's full name ("quorix.pyhold._ModuleVersionType") before it is readied;
// the text is kept by pointer and must outlive the type (a literal). No effect once readied.
void PyShVersion_SetTypeName(const char* tp_name);
// New version object, or NULL; readies the type on first use. A NULL text shows the numbers.
PyObject* PyShVersionAttr_Create(int major, int minor, int patch, int sub, const char* text);
// -1, 0 or 1 for a < b; b's fields are read without a type check.
int PyShVersionAttr_Compare(const int a[4], PyObject* b);
// Borrowed view string.
PyObject* PyShVersionAttr_GetView(PyObject* version);

// ---- descriptors (_FieldDescrType, _MixMethodDescrType)
PyTypeObject* PyShFieldDescr_Type();
PyTypeObject* PyShMixMethodDescr_Type();
// New descriptor, or NULL.
PyObject* PyShDescr_NewStaticField(PyTypeObject* owner, PyGetSetDef* def);
// New descriptor, or NULL.
PyObject* PyShDescr_NewMixedMethod(PyTypeObject* owner, PyMethodDef* static_def, PyMethodDef* instance_def);

// ---- protocol probes
// 1 for an exact int, 0 for bool and non-ints, isinstance(obj, enum.EnumType) for other int subclasses; -1 on error.
int PyShLong_Check(PyObject* obj);
int PyShlObject_HasLength(PyObject* obj);
int PyShlObject_HasIter(PyObject* obj);
int PyShlSlice_Unpack35(PyObject* slice, Py_ssize_t* start, Py_ssize_t* stop, Py_ssize_t* step);
Py_ssize_t PyShlSlice_AdjustIndices35(Py_ssize_t length, Py_ssize_t* start, Py_ssize_t* stop, Py_ssize_t step);

// ---- rightmost super, for Python classes deriving from bound types
// New reference to super(X, obj), or NULL.
PyObject* super_rightmost_of(PyTypeObject* type, PyObject* obj);
PyObject* PyShRightmostSuper_Repr(PyTypeObject* type, PyObject* obj);
Py_hash_t PyShRightmostSuper_Hash(PyTypeObject* type, PyObject* obj);
PyObject* PyShRightmostSuper_RichCompare(PyTypeObject* type, PyObject* obj, PyObject* other, int op);
int PyShRightmostSuper_Init(PyTypeObject* type, PyObject* obj, PyObject* args, PyObject* kwargs);
