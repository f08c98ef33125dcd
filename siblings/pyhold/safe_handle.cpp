// SafeTargetHandle: a Python object that owns one managed GC handle and frees it, through
// the releaser the runtime's owner installed, when it is deallocated.
#include "siblings/pyhold/pyhold.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "siblings/sibling_support.h"

// Process-wide: one runtime, one way to free its handles.
static PyHoldReleaser safe_handle_releaser = nullptr;

void
PyShSafeTargetHandle_SetReleaser(PyHoldReleaser release)
{
    safe_handle_releaser = release;
}

void
PyShTargetHandle_Free(void* handle)
{
    if (handle == nullptr || safe_handle_releaser == nullptr) {
        return;
    }
    // Deallocation may run while an exception propagates; the releaser must neither see
    // it nor replace it.
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    safe_handle_releaser(handle);
    PyErr_Restore(type, value, traceback);
}

PyObject*
PyShSafeTargetHandle_New(void* handle, PyTypeObject* type)
{
    auto* self = PyObject_GC_New(PySafeTargetHandleObject, &PySafeTargetHandle_Type);
    if (self == nullptr) {
        return nullptr;
    }
    self->handle = handle;
    Py_XINCREF(type);
    self->type = type;
    PyObject_GC_Track(self);
    return reinterpret_cast<PyObject*>(self);
}

int
PyShSafeTargetHandle_IsType(PyObject* obj)
{
    return obj != nullptr && PyObject_TypeCheck(obj, &PySafeTargetHandle_Type);
}

static PySafeTargetHandleObject*
as_safe_handle(PyObject* self)
{
    return reinterpret_cast<PySafeTargetHandleObject*>(self);
}

static int
safe_handle_traverse(PyObject* self, visitproc visit, void* arg)
{
    Py_VISIT(as_safe_handle(self)->type);
    return 0;
}

// Breaks cycles through the type only: the handle stays owned until deallocation.
static int
safe_handle_clear(PyObject* self)
{
    Py_CLEAR(as_safe_handle(self)->type);
    return 0;
}

static void
safe_handle_dealloc(PyObject* self)
{
    PySafeTargetHandleObject* sh = as_safe_handle(self);
    PyObject_GC_UnTrack(self);
    void* handle = sh->handle;
    sh->handle = nullptr;
    PyShTargetHandle_Free(handle);
    Py_CLEAR(sh->type);
    Py_TYPE(self)->tp_free(self);
}

static PyObject*
safe_handle_repr(PyObject* self)
{
    PySafeTargetHandleObject* sh = as_safe_handle(self);
    // %p would spell a null handle as "(nil)"; the hex text stays uniform instead.
    char handle_text[2 + 2 * sizeof(void*) + 1];
    std::snprintf(handle_text, sizeof handle_text, "0x%" PRIxPTR,
                  reinterpret_cast<uintptr_t>(sh->handle));
    if (sh->type == nullptr) {
        return PyUnicode_FromFormat("<%s handle=%s>", Py_TYPE(self)->tp_name, handle_text);
    }
    return PyUnicode_FromFormat("<%s handle=%s for '%s'>", Py_TYPE(self)->tp_name, handle_text,
                                sh->type->tp_name);
}

static PyObject*
safe_handle_get_handle(PyObject* self, void*)
{
    return PyLong_FromVoidPtr(as_safe_handle(self)->handle);
}

static PyObject*
safe_handle_get_is_invalid(PyObject* self, void*)
{
    return PyBool_FromLong(as_safe_handle(self)->handle == nullptr);
}

static PyObject*
safe_handle_get_target_type(PyObject* self, void*)
{
    PyTypeObject* type = as_safe_handle(self)->type;
    if (type == nullptr) {
        Py_RETURN_NONE;
    }
    return Py_NewRef(reinterpret_cast<PyObject*>(type));
}

static PyGetSetDef safe_handle_getset[] = {
    {"handle", safe_handle_get_handle, nullptr,
     "The managed GC handle as an integer (0 when invalid).", nullptr},
    {"is_invalid", safe_handle_get_is_invalid, nullptr,
     "True when the object holds no handle.", nullptr},
    {"target_type", safe_handle_get_target_type, nullptr,
     "The Python type the handle was made for, or None.", nullptr},
    {nullptr},
};

PyDoc_STRVAR(safe_handle_doc,
"An owned handle of a managed object, freed when this object is deallocated.\n"
"\n"
"Instances are made by native code only.");

PyTypeObject PySafeTargetHandle_Type = {
    PyVarObject_HEAD_INIT(nullptr, 0)
    "quorix.pyhold.SafeTargetHandle",          // tp_name
    sizeof(PySafeTargetHandleObject),          // tp_basicsize
    0,                                         // tp_itemsize
    safe_handle_dealloc,                       // tp_dealloc
    0,                                         // tp_vectorcall_offset
    nullptr,                                   // tp_getattr
    nullptr,                                   // tp_setattr
    nullptr,                                   // tp_as_async
    safe_handle_repr,                          // tp_repr
    nullptr,                                   // tp_as_number
    nullptr,                                   // tp_as_sequence
    nullptr,                                   // tp_as_mapping
    nullptr,                                   // tp_hash
    nullptr,                                   // tp_call
    nullptr,                                   // tp_str
    nullptr,                                   // tp_getattro
    nullptr,                                   // tp_setattro
    nullptr,                                   // tp_as_buffer
    Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC,   // tp_flags
    safe_handle_doc,                           // tp_doc
    safe_handle_traverse,                      // tp_traverse
    safe_handle_clear,                         // tp_clear
    nullptr,                                   // tp_richcompare
    0,                                         // tp_weaklistoffset
    nullptr,                                   // tp_iter
    nullptr,                                   // tp_iternext
    nullptr,                                   // tp_methods
    nullptr,                                   // tp_members
    safe_handle_getset,                        // tp_getset
    nullptr,                                   // tp_base
    nullptr,                                   // tp_dict
    nullptr,                                   // tp_descr_get
    nullptr,                                   // tp_descr_set
    0,                                         // tp_dictoffset
    nullptr,                                   // tp_init
    nullptr,                                   // tp_alloc
    PySib_tp_new_refused,                      // tp_new
};
