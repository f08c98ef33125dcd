// _FieldDescrType and _MixMethodDescrType: class-level descriptors of bound types. A static
// field reads the same through the class and through an instance; a mixed method is the
// static form on the class and a bound instance form on an instance.
#include "module/pysh.h"

struct PyShFieldDescrObject {
    PyObject_HEAD
    PyTypeObject* owner;  // owned
    PyGetSetDef* def;     // static data
};

struct PyShMixMethodDescrObject {
    PyObject_HEAD
    PyTypeObject* owner;        // owned
    PyObject* static_function;  // owned built-in function of the static form
    PyMethodDef* instance_def;  // static data
};

PySh_COLD static PyObject* raise_needs_type(const char* name, PyObject* arg) {
    PyErr_Format(PyExc_TypeError, "descriptor '%s' needs a type, not '%s', as arg 2", name,
                 arg != NULL ? Py_TYPE(arg)->tp_name : "NoneType");
    return NULL;
}

// New reference to the doc text, or to None when there is none.
static PyObject* doc_or_none(const char* doc) {
    if (doc == NULL || doc[0] == '\0')
        Py_RETURN_NONE;
    return PyUnicode_FromString(doc);
}

// 0 when the type is ready (readying it on first use), -1 with an error.
static int ensure_ready(PyTypeObject* type) {
    if (type->tp_flags & Py_TPFLAGS_READY)
        return 0;
    return PyType_Ready(type);
}

// ---- _FieldDescrType

static int field_traverse(PyShFieldDescrObject* self, visitproc visit, void* arg) {
    Py_VISIT(self->owner);
    return 0;
}

static int field_clear(PyShFieldDescrObject* self) {
    Py_CLEAR(self->owner);
    return 0;
}

static void field_dealloc(PyShFieldDescrObject* self) {
    PyObject_GC_UnTrack(self);
    field_clear(self);
    Py_TYPE(self)->tp_free((PyObject*)self);
}

static PyObject* field_repr(PyShFieldDescrObject* self) {
    return PyUnicode_FromFormat("<attribute '%s' of '%s' objects>", self->def->name, self->owner->tp_name);
}

static PyObject* field_descr_get(PyShFieldDescrObject* self, PyObject* instance, PyObject* owner) {
    // descr.__get__(obj) arrives without an owner: the instance's type stands in for it.
    if (owner == NULL && instance != NULL)
        owner = (PyObject*)Py_TYPE(instance);
    if (owner == NULL || !PyType_Check(owner))
        return raise_needs_type(self->def->name, owner);
    if (self->def->get == NULL) {
        PyErr_Format(PyExc_AttributeError, "attribute '%s' of '%s' objects is not readable", self->def->name,
                     self->owner->tp_name);
        return NULL;
    }
    return self->def->get(NULL, self->def->closure);
}

static PyObject* field_get_doc(PyShFieldDescrObject* self, void*) {
    return doc_or_none(self->def->doc);
}

static PyObject* field_get_name(PyShFieldDescrObject* self, void*) {
    return PyUnicode_FromString(self->def->name);
}

static PyObject* field_get_objclass(PyShFieldDescrObject* self, void*) {
    return Py_NewRef((PyObject*)self->owner);
}

static PyGetSetDef field_getset[] = {
    {"__doc__", (getter)field_get_doc, NULL, NULL, NULL},
    {"__name__", (getter)field_get_name, NULL, NULL, NULL},
    {"__objclass__", (getter)field_get_objclass, NULL, NULL, NULL},
    {NULL, NULL, NULL, NULL, NULL},
};

static PyTypeObject field_descr_type = {
    PyVarObject_HEAD_INIT(NULL, 0)
    "quorix.folio._FieldDescrType",           // tp_name
    sizeof(PyShFieldDescrObject),             // tp_basicsize
    0,                                        // tp_itemsize
    (destructor)field_dealloc,                // tp_dealloc
    0,                                        // tp_vectorcall_offset
    NULL,                                     // tp_getattr
    NULL,                                     // tp_setattr
    NULL,                                     // tp_as_async
    (reprfunc)field_repr,                     // tp_repr
    NULL,                                     // tp_as_number
    NULL,                                     // tp_as_sequence
    NULL,                                     // tp_as_mapping
    NULL,                                     // tp_hash
    NULL,                                     // tp_call
    NULL,                                     // tp_str
    NULL,                                     // tp_getattro
    NULL,                                     // tp_setattro
    NULL,                                     // tp_as_buffer
    Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC,  // tp_flags
    NULL,                                     // tp_doc
    (traverseproc)field_traverse,             // tp_traverse
    (inquiry)field_clear,                     // tp_clear
    NULL,                                     // tp_richcompare
    0,                                        // tp_weaklistoffset
    NULL,                                     // tp_iter
    NULL,                                     // tp_iternext
    NULL,                                     // tp_methods
    NULL,                                     // tp_members
    field_getset,                             // tp_getset
    NULL,                                     // tp_base
    NULL,                                     // tp_dict
    (descrgetfunc)field_descr_get,            // tp_descr_get
    // No tp_descr_set: assigning through the class replaces the descriptor.
};

PyTypeObject* PyShFieldDescr_Type() {
    return &field_descr_type;
}

PyObject* PyShDescr_NewStaticField(PyTypeObject* owner, PyGetSetDef* def) {
    if (ensure_ready(&field_descr_type) < 0)
        return NULL;
    PyShFieldDescrObject* self =
        (PyShFieldDescrObject*)field_descr_type.tp_alloc(&field_descr_type, 0);
    if (self == NULL)
        return NULL;
    self->owner = (PyTypeObject*)Py_NewRef((PyObject*)owner);
    self->def = def;
    return (PyObject*)self;
}

// ---- _MixMethodDescrType

static int mixmethod_traverse(PyShMixMethodDescrObject* self, visitproc visit, void* arg) {
    Py_VISIT(self->owner);
    Py_VISIT(self->static_function);
    return 0;
}

static int mixmethod_clear(PyShMixMethodDescrObject* self) {
    Py_CLEAR(self->owner);
    Py_CLEAR(self->static_function);
    return 0;
}

static void mixmethod_dealloc(PyShMixMethodDescrObject* self) {
    PyObject_GC_UnTrack(self);
    mixmethod_clear(self);
    Py_TYPE(self)->tp_free((PyObject*)self);
}

static PyObject* mixmethod_repr(PyShMixMethodDescrObject* self) {
    return PyUnicode_FromFormat("<method '%s' of '%s' objects>", self->instance_def->ml_name,
                                self->owner->tp_name);
}

PySh_COLD static PyObject* raise_does_not_apply(PyShMixMethodDescrObject* self, PyObject* instance) {
    PyErr_Format(PyExc_TypeError, "descriptor '%s' for '%.100s' objects doesn't apply to a '%.100s' object",
                 self->instance_def->ml_name, self->owner->tp_name, Py_TYPE(instance)->tp_name);
    return NULL;
}

static PyObject* mixmethod_descr_get(PyShMixMethodDescrObject* self, PyObject* instance, PyObject* owner) {
    if (instance != NULL) {
        if (!PyObject_TypeCheck(instance, self->owner))
            return raise_does_not_apply(self, instance);
        return PyCFunction_NewEx(self->instance_def, instance, NULL);
    }
    if (owner == NULL || !PyType_Check(owner))
        return raise_needs_type(self->instance_def->ml_name, owner);
    return Py_NewRef(self->static_function);
}

static PyObject* mixmethod_get_doc(PyShMixMethodDescrObject* self, void*) {
    return doc_or_none(self->instance_def->ml_doc);
}

static PyObject* mixmethod_get_name(PyShMixMethodDescrObject* self, void*) {
    return PyUnicode_FromString(self->instance_def->ml_name);
}

static PyObject* mixmethod_get_objclass(PyShMixMethodDescrObject* self, void*) {
    return Py_NewRef((PyObject*)self->owner);
}

static PyGetSetDef mixmethod_getset[] = {
    {"__doc__", (getter)mixmethod_get_doc, NULL, NULL, NULL},
    {"__name__", (getter)mixmethod_get_name, NULL, NULL, NULL},
    {"__objclass__", (getter)mixmethod_get_objclass, NULL, NULL, NULL},
    {NULL, NULL, NULL, NULL, NULL},
};

static PyTypeObject mixmethod_descr_type = {
    PyVarObject_HEAD_INIT(NULL, 0)
    "quorix.folio._MixMethodDescrType",       // tp_name
    sizeof(PyShMixMethodDescrObject),         // tp_basicsize
    0,                                        // tp_itemsize
    (destructor)mixmethod_dealloc,            // tp_dealloc
    0,                                        // tp_vectorcall_offset
    NULL,                                     // tp_getattr
    NULL,                                     // tp_setattr
    NULL,                                     // tp_as_async
    (reprfunc)mixmethod_repr,                 // tp_repr
    NULL,                                     // tp_as_number
    NULL,                                     // tp_as_sequence
    NULL,                                     // tp_as_mapping
    NULL,                                     // tp_hash
    NULL,                                     // tp_call
    NULL,                                     // tp_str
    NULL,                                     // tp_getattro
    NULL,                                     // tp_setattro
    NULL,                                     // tp_as_buffer
    Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC,  // tp_flags
    NULL,                                     // tp_doc
    (traverseproc)mixmethod_traverse,         // tp_traverse
    (inquiry)mixmethod_clear,                 // tp_clear
    NULL,                                     // tp_richcompare
    0,                                        // tp_weaklistoffset
    NULL,                                     // tp_iter
    NULL,                                     // tp_iternext
    NULL,                                     // tp_methods
    NULL,                                     // tp_members
    mixmethod_getset,                         // tp_getset
    NULL,                                     // tp_base
    NULL,                                     // tp_dict
    (descrgetfunc)mixmethod_descr_get,        // tp_descr_get
};

PyTypeObject* PyShMixMethodDescr_Type() {
    return &mixmethod_descr_type;
}

PyObject* PyShDescr_NewMixedMethod(PyTypeObject* owner, PyMethodDef* static_def, PyMethodDef* instance_def) {
    if (ensure_ready(&mixmethod_descr_type) < 0)
        return NULL;
    PyObject* function = PyCFunction_NewEx(static_def, NULL, NULL);
    if (function == NULL)
        return NULL;
    PyShMixMethodDescrObject* self =
        (PyShMixMethodDescrObject*)mixmethod_descr_type.tp_alloc(&mixmethod_descr_type, 0);
    if (self == NULL) {
        Py_DECREF(function);
        return NULL;
    }
    self->owner = (PyTypeObject*)Py_NewRef((PyObject*)owner);
    self->static_function = function;
    self->instance_def = instance_def;
    return (PyObject*)self;
}
