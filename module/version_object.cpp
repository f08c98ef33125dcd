// _ModuleVersionType: the read-only four-part version of VERSION and
// _BACKWARD_COMPATIBILITY_THRESHOLD. Each extension module of the family links its own copy of
// this static type and names it after itself.
#include <cstddef>

#include "module/pysh.h"

static void version_dealloc(PyShVersionObject* self) {
    Py_CLEAR(self->view);
    Py_TYPE(self)->tp_free((PyObject*)self);
}

static PyObject* version_get_major(PyShVersionObject* self, void*) {
    return PyLong_FromLong(self->major);
}

static PyObject* version_get_minor(PyShVersionObject* self, void*) {
    return PyLong_FromLong(self->minor);
}

static PyObject* version_get_patch(PyShVersionObject* self, void*) {
    return PyLong_FromLong(self->patch);
}

static PyObject* version_get_sub(PyShVersionObject* self, void*) {
    return PyLong_FromLong(self->sub);
}

static PyObject* version_get_view(PyShVersionObject* self, void*) {
    return Py_NewRef(self->view);
}

static PyObject* version_str(PyShVersionObject* self) {
    return Py_NewRef(self->view);
}

static PyObject* version_repr(PyShVersionObject* self) {
    return PyUnicode_FromFormat("<%s: %U>", Py_TYPE(self)->tp_name, self->view);
}

// 32-bit FNV-1a over the four fields as little-endian bytes, so the value does not depend on
// the host's byte order.
static Py_hash_t version_hash(PyShVersionObject* self) {
    const int32_t fields[4] = {self->major, self->minor, self->patch, self->sub};
    uint32_t hash = 0x811C9DC5u;
    for (int32_t field : fields) {
        uint32_t bits = (uint32_t)field;
        for (int shift = 0; shift < 32; shift += 8) {
            hash ^= (bits >> shift) & 0xFFu;
            hash *= 0x01000193u;
        }
    }
    Py_hash_t result = (Py_hash_t)(int32_t)hash;
    // -1 is the slot's error signal; returning it without an exception breaks hash().
    return result == -1 ? -2 : result;
}

static PyObject* version_richcompare(PyObject* a, PyObject* b, int op) {
    // Exact type only: a sibling module's copy or a subtype does not compare with ours.
    PyTypeObject* own = PyShVersion_Type();
    if (Py_TYPE(a) != own || Py_TYPE(b) != own || op < Py_LT || op > Py_GE)
        Py_RETURN_NOTIMPLEMENTED;
    const PyShVersionObject* va = (const PyShVersionObject*)a;
    const int fields[4] = {va->major, va->minor, va->patch, va->sub};
    int cmp = PyShVersionAttr_Compare(fields, b);
    Py_RETURN_RICHCOMPARE(cmp, 0, op);
}

static PyGetSetDef version_getset[] = {
    {"major", (getter)version_get_major, NULL, NULL, NULL},
    {"minor", (getter)version_get_minor, NULL, NULL, NULL},
    {"patch", (getter)version_get_patch, NULL, NULL, NULL},
    {"sub", (getter)version_get_sub, NULL, NULL, NULL},
    {"view", (getter)version_get_view, NULL, NULL, NULL},
    {NULL, NULL, NULL, NULL, NULL},
};

static PyTypeObject version_type = {
    PyVarObject_HEAD_INIT(NULL, 0)
    "quorix.folio._ModuleVersionType",  // tp_name
    sizeof(PyShVersionObject),          // tp_basicsize
    0,                                  // tp_itemsize
    (destructor)version_dealloc,        // tp_dealloc
    0,                                  // tp_vectorcall_offset
    NULL,                               // tp_getattr
    NULL,                               // tp_setattr
    NULL,                               // tp_as_async
    (reprfunc)version_repr,             // tp_repr
    NULL,                               // tp_as_number
    NULL,                               // tp_as_sequence
    NULL,                               // tp_as_mapping
    (hashfunc)version_hash,             // tp_hash
    NULL,                               // tp_call
    (reprfunc)version_str,              // tp_str
    NULL,                               // tp_getattro
    NULL,                               // tp_setattro
    NULL,                               // tp_as_buffer
    Py_TPFLAGS_DEFAULT,                 // tp_flags
    NULL,                               // tp_doc
    NULL,                               // tp_traverse
    NULL,                               // tp_clear
    version_richcompare,                // tp_richcompare
    0,                                  // tp_weaklistoffset
    NULL,                               // tp_iter
    NULL,                               // tp_iternext
    NULL,                               // tp_methods
    NULL,                               // tp_members
    version_getset,                     // tp_getset
    // No tp_new: instances come only from PyShVersionAttr_Create, never from Python code.
};

PyTypeObject* PyShVersion_Type() {
    return &version_type;
}

void PyShVersion_SetTypeName(const char* tp_name) {
    if (tp_name != NULL && !(version_type.tp_flags & Py_TPFLAGS_READY))
        version_type.tp_name = tp_name;
}

PyObject* PyShVersionAttr_Create(int major, int minor, int patch, int sub, const char* text) {
    if (!(version_type.tp_flags & Py_TPFLAGS_READY) && PyType_Ready(&version_type) < 0)
        return NULL;
    PyShVersionObject* self = (PyShVersionObject*)PyType_GenericAlloc(&version_type, 0);
    if (self == NULL)
        return NULL;
    self->major = major;
    self->minor = minor;
    self->patch = patch;
    self->sub = sub;
    self->view = text != NULL ? PyUnicode_FromString(text)
                              : PyUnicode_FromFormat("%i.%i.%i.%i", major, minor, patch, sub);
    if (self->view == NULL) {
        Py_DECREF(self);
        return NULL;
    }
    return (PyObject*)self;
}

int PyShVersionAttr_Compare(const int a[4], PyObject* b) {
    const PyShVersionObject* vb = (const PyShVersionObject*)b;
    const int32_t fields[4] = {vb->major, vb->minor, vb->patch, vb->sub};
    for (int i = 0; i < 4; ++i) {
        if (a[i] != fields[i])
            return a[i] < fields[i] ? -1 : 1;
    }
    return 0;
}

PyObject* PyShVersionAttr_GetView(PyObject* version) {
    return ((PyShVersionObject*)version)->view;
}
