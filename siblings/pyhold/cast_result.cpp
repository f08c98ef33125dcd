// CastOpResult: the outcome of a managed cast, a result code and the converted object.
// A code of 0 means no cast was possible, so the object is false exactly then.
#include "siblings/pyhold/pyhold.h"

#include "siblings/sibling_support.h"

struct PyCastOpResultObject {
    PyObject_HEAD
    int code;
    PyObject* value;  // owned, or NULL for no value
};

static PyCastOpResultObject*
as_cast_result(PyObject* self)
{
    return reinterpret_cast<PyCastOpResultObject*>(self);
}

PyObject*
PyShCastOpResult_New(int code, PyObject* obj)
{
    auto* self = PyObject_GC_New(PyCastOpResultObject, &PyCastOpResult_Type);
    if (self == nullptr) {
        return nullptr;
    }
    self->code = code;
    Py_XINCREF(obj);
    self->value = obj;
    PyObject_GC_Track(self);
    return reinterpret_cast<PyObject*>(self);
}

int
PyShCastOpResult_IsType(PyObject* obj)
{
    return obj != nullptr && PyObject_TypeCheck(obj, &PyCastOpResult_Type);
}

static int
cast_result_traverse(PyObject* self, visitproc visit, void* arg)
{
    Py_VISIT(as_cast_result(self)->value);
    return 0;
}

static int
cast_result_clear(PyObject* self)
{
    Py_CLEAR(as_cast_result(self)->value);
    return 0;
}

static void
cast_result_dealloc(PyObject* self)
{
    PyObject_GC_UnTrack(self);
    Py_CLEAR(as_cast_result(self)->value);
    Py_TYPE(self)->tp_free(self);
}

static PyObject*
cast_result_repr(PyObject* self)
{
    PyCastOpResultObject* result = as_cast_result(self);
    PyObject* value = result->value != nullptr ? result->value : Py_None;
    // The value may refer back to this result; show the cycle instead of recursing.
    int entered = Py_ReprEnter(self);
    if (entered != 0) {
        return entered > 0 ? PyUnicode_FromFormat("<%s ...>", Py_TYPE(self)->tp_name) : nullptr;
    }
    PyObject* text = PyUnicode_FromFormat("<%s code=%d value=%R>", Py_TYPE(self)->tp_name,
                                          result->code, value);
    Py_ReprLeave(self);
    return text;
}

static int
cast_result_bool(PyObject* self)
{
    return as_cast_result(self)->code != 0;
}

static PyObject*
cast_result_get_code(PyObject* self, void*)
{
    return PyLong_FromLong(as_cast_result(self)->code);
}

static PyObject*
cast_result_get_value(PyObject* self, void*)
{
    PyObject* value = as_cast_result(self)->value;
    return Py_NewRef(value != nullptr ? value : Py_None);
}

static PyGetSetDef cast_result_getset[] = {
    {"code", cast_result_get_code, nullptr,
     "The managed cast's result code; 0 when no cast was possible.", nullptr},
    {"value", cast_result_get_value, nullptr,
     "The converted object, or None.", nullptr},
    {nullptr},
};

static PyNumberMethods cast_result_as_number = {
    nullptr,           // nb_add
    nullptr,           // nb_subtract
    nullptr,           // nb_multiply
    nullptr,           // nb_remainder
    nullptr,           // nb_divmod
    nullptr,           // nb_power
    nullptr,           // nb_negative
    nullptr,           // nb_positive
    nullptr,           // nb_absolute
    cast_result_bool,  // nb_bool
};

PyDoc_STRVAR(cast_result_doc,
"The result of a cast between managed types: `code` and the converted `value`.\n"
"\n"
"True when a cast was possible (a non-zero code).");

PyTypeObject PyCastOpResult_Type = {
    PyVarObject_HEAD_INIT(nullptr, 0)
    "quorix.pyhold.CastOpResult",              // tp_name
    sizeof(PyCastOpResultObject),              // tp_basicsize
    0,                                         // tp_itemsize
    cast_result_dealloc,                       // tp_dealloc
    0,                                         // tp_vectorcall_offset
    nullptr,                                   // tp_getattr
    nullptr,                                   // tp_setattr
    nullptr,                                   // tp_as_async
    cast_result_repr,                          // tp_repr
    &cast_result_as_number,                    // tp_as_number
    nullptr,                                   // tp_as_sequence
    nullptr,                                   // tp_as_mapping
    nullptr,                                   // tp_hash
    nullptr,                                   // tp_call
    nullptr,                                   // tp_str
    nullptr,                                   // tp_getattro
    nullptr,                                   // tp_setattro
    nullptr,                                   // tp_as_buffer
    Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC,   // tp_flags
    cast_result_doc,                           // tp_doc
    cast_result_traverse,                      // tp_traverse
    cast_result_clear,                         // tp_clear
    nullptr,                                   // tp_richcompare
    0,                                         // tp_weaklistoffset
    nullptr,                                   // tp_iter
    nullptr,                                   // tp_iternext
    nullptr,                                   // tp_methods
    nullptr,                                   // tp_members
    cast_result_getset,                        // tp_getset
    nullptr,                                   // tp_base
    nullptr,                                   // tp_dict
    nullptr,                                   // tp_descr_get
    nullptr,                                   // tp_descr_set
    0,                                         // tp_dictoffset
    nullptr,                                   // tp_init
    nullptr,                                   // tp_alloc
    PySib_tp_new_refused,                      // tp_new
};
