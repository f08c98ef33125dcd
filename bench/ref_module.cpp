// The yardstick of the call-overhead benchmark: a plain C extension doing the same shapes of
// work as the bound calls (a float and a str attribute, a method taking one str, a call that
// returns a new object, a static method taking an enumeration member, a datetime and a Decimal
// built afresh on each get, a sequence whose items are new objects), with nothing behind them.
#include <Python.h>
#include <datetime.h>

namespace {

struct RefObject {
    PyObject_HEAD
    double size;
    PyObject* name;
};

PyTypeObject RefType = {PyVarObject_HEAD_INIT(nullptr, 0)};
PyObject* DecimalType = nullptr;  // decimal.Decimal, imported with the module

PyObject* ref_new(PyTypeObject* type, PyObject*, PyObject*) {
    auto* self = reinterpret_cast<RefObject*>(type->tp_alloc(type, 0));
    if (self != nullptr) {
        self->size = 14.0;
        self->name = PyUnicode_FromString("Normal");
    }
    return reinterpret_cast<PyObject*>(self);
}

void ref_dealloc(PyObject* self) {
    Py_XDECREF(reinterpret_cast<RefObject*>(self)->name);
    Py_TYPE(self)->tp_free(self);
}

PyObject* get_size(PyObject* self, void*) { return PyFloat_FromDouble(reinterpret_cast<RefObject*>(self)->size); }

PyObject* get_name(PyObject* self, void*) { return Py_NewRef(reinterpret_cast<RefObject*>(self)->name); }

// The same object a bound DateTime property of kind UTC gives: built from its fields each time.
PyObject* get_created(PyObject*, void*) {
    return PyDateTimeAPI->DateTime_FromDateAndTime(2024, 2, 29, 13, 14, 15, 123456, PyDateTimeAPI->TimeZone_UTC,
                                                   PyDateTimeAPI->DateTimeType);
}

// The same object a bound Decimal property gives: Decimal('12.50'), built from text each time.
PyObject* get_amount(PyObject*, void*) {
    PyObject* text = PyUnicode_FromStringAndSize("1250E-2", 7);
    if (text == nullptr)
        return nullptr;
    PyObject* value = PyObject_CallOneArg(DecimalType, text);
    Py_DECREF(text);
    return value;
}

// Reads the argument the way a bound call does: the str's own storage, no copy.
PyObject* write(PyObject*, PyObject* text) {
    if (!PyUnicode_Check(text)) {
        PyErr_Format(PyExc_TypeError, "can't build String from '%s'", Py_TYPE(text)->tp_name);
        return nullptr;
    }
    volatile const void* data = PyUnicode_DATA(text);
    (void)data;
    Py_RETURN_NONE;
}

PyObject* make(PyObject*, PyObject*) { return ref_new(&RefType, nullptr, nullptr); }

PyObject* width_of(PyObject*, PyObject* member) {
    long value = PyLong_AsLong(member);
    if (value == -1 && PyErr_Occurred())
        return nullptr;
    return PyLong_FromLong(value * 2);
}

// A sequence of `length` items, each a new Ref made when read: len(), s[i] and iteration (the
// interpreter's sequence iterator over sq_item) as plain C does them.
struct RefSeqObject {
    PyObject_HEAD
    Py_ssize_t length;
};

PyTypeObject RefSeqType = {PyVarObject_HEAD_INIT(nullptr, 0)};

Py_ssize_t seq_length(PyObject* self) { return reinterpret_cast<RefSeqObject*>(self)->length; }

PyObject* seq_item(PyObject* self, Py_ssize_t i) {
    if (i < 0 || i >= seq_length(self)) {
        PyErr_SetString(PyExc_IndexError, "list index out of range");
        return nullptr;
    }
    return ref_new(&RefType, nullptr, nullptr);
}

PySequenceMethods seq_as_sequence = {seq_length, nullptr, nullptr, seq_item, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr};

PyObject* seq(PyObject*, PyObject* arg) {
    Py_ssize_t n = PyLong_AsSsize_t(arg);
    if (n == -1 && PyErr_Occurred())
        return nullptr;
    auto* s = PyObject_New(RefSeqObject, &RefSeqType);
    if (s != nullptr)
        s->length = n;
    return reinterpret_cast<PyObject*>(s);
}

PyGetSetDef ref_getset[] = {
    {"size", get_size, nullptr, nullptr, nullptr},
    {"name", get_name, nullptr, nullptr, nullptr},
    {"created", get_created, nullptr, nullptr, nullptr},
    {"amount", get_amount, nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMethodDef ref_methods[] = {
    {"write", write, METH_O, nullptr},
    {"make", make, METH_NOARGS, nullptr},
    {"width_of", width_of, METH_O | METH_STATIC, nullptr},
    {"seq", seq, METH_O | METH_STATIC, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef ref_module = {PyModuleDef_HEAD_INIT, "qrx_benchref", nullptr, -1, nullptr,
                          nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_qrx_benchref() {
    RefType.tp_name = "qrx_benchref.Ref";
    RefType.tp_basicsize = sizeof(RefObject);
    RefType.tp_flags = Py_TPFLAGS_DEFAULT;
    RefType.tp_new = ref_new;
    RefType.tp_dealloc = ref_dealloc;
    RefType.tp_getset = ref_getset;
    RefType.tp_methods = ref_methods;
    if (PyType_Ready(&RefType) < 0)
        return nullptr;
    PyDateTime_IMPORT;
    if (PyDateTimeAPI == nullptr)
        return nullptr;
    PyObject* decimal = PyImport_ImportModule("decimal");
    if (decimal == nullptr)
        return nullptr;
    DecimalType = PyObject_GetAttrString(decimal, "Decimal");
    Py_DECREF(decimal);
    if (DecimalType == nullptr)
        return nullptr;
    RefSeqType.tp_name = "qrx_benchref.RefSeq";
    RefSeqType.tp_basicsize = sizeof(RefSeqObject);
    RefSeqType.tp_flags = Py_TPFLAGS_DEFAULT;
    RefSeqType.tp_as_sequence = &seq_as_sequence;
    if (PyType_Ready(&RefSeqType) < 0)
        return nullptr;
    PyObject* module = PyModule_Create(&ref_module);
    if (module != nullptr && PyModule_AddType(module, &RefType) < 0) {
        Py_DECREF(module);
        return nullptr;
    }
    return module;
}
