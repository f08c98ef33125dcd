#include "builtins/str_dict.h"

#include "host/managed_binding.h"
#include "marshal/conv_text.h"
#include "marshal/sequences.h"
#include "module/ids.h"
#include "module/pysh_ref.h"
#include "objects/bound_class.h"
#include "objects/handle_release.h"
#include "objects/host_markattr.h"
#include "objects/host_table.h"
#include "objects/wrap_handle.h"
#include "objects/wrapper_slots.h"

namespace {

// ---- the kind's method table

class PyHost_ph_StrDict final : public PyHostTable {
public:
    static const PyHost_ph_StrDict& get_instance() {
        static const PyHost_ph_StrDict table;
        return table;
    }

    int32_t count(void* h) const { return count_(h); }
    int32_t try_get(void* h, PyStringArg* key, PyObject** out) const { return try_get_(h, key, out); }
    int32_t set(void* h, PyStringArg* key, PyStringArg* value) const { return set_(h, key, value); }
    int32_t remove(void* h, PyStringArg* key) const { return remove_(h, key); }
    int32_t clear(void* h) const { return clear_(h); }
    void snapshot(void* h, int32_t values, PySeqSink* sink) const { snapshot_(h, values, sink); }

private:
    PyHost_ph_StrDict() : PyHostTable("Quorix.WrpGen.Interop.SiApiStrDict") {
        const PyHostStubSlot stubs[] = {
            {"Count", slot_of(count_)},   {"TryGet", slot_of(try_get_)}, {"Set", slot_of(set_)},
            {"Remove", slot_of(remove_)}, {"Clear", slot_of(clear_)},    {"Snapshot", slot_of(snapshot_)},
        };
        bind_all(stubs, sizeof stubs / sizeof stubs[0]);
    }

    int32_t (*count_)(void*) = nullptr;
    int32_t (*try_get_)(void*, PyStringArg*, PyObject**) = nullptr;
    int32_t (*set_)(void*, PyStringArg*, PyStringArg*) = nullptr;
    int32_t (*remove_)(void*, PyStringArg*) = nullptr;
    int32_t (*clear_)(void*) = nullptr;
    void (*snapshot_)(void*, int32_t, PySeqSink*) = nullptr;
};

const PyHostState& strdict_state() {
    static const PyHostState state = PyHostState_Build(PyHost_ph_StrDict::get_instance(), {});
    return state;
}

const PyHost_ph_StrDict& table() { return PyHost_ph_StrDict::get_instance(); }

// True with the TypeError raised when the kind cannot be used or the wrapper has no object.
bool refused(PyObject* self) { return PyHostState_Check(strdict_state()) || PyShBound_Unbound(self); }

[[gnu::cold, gnu::noinline]] int fail_key(PyObject* key) {
    PyErr_Format(PyExc_TypeError, "keys are str, not '%.200s'", Py_TYPE(key)->tp_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_value(PyObject* value) {
    PyErr_Format(PyExc_TypeError, "values are str or None, not '%.200s'", Py_TYPE(value)->tp_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] void missing(PyObject* key) { PyErr_SetObject(PyExc_KeyError, key); }

// The key's storage for a stub: 1, or 0 with TypeError.
int key_arg(PyObject* key, PyStringArg* out) {
    return PyUnicode_Check(key) ? fn_conv_py_string_to_clr_string_value(key, out) : fail_key(key);
}

// The value at `key`: 1 with *value (new reference), 0 when absent, -1 with an error.
int lookup(PyObject* self, PyObject* key, PyObject** value) {
    PyStringArg k;
    if (!key_arg(key, &k))
        return -1;
    *value = nullptr;
    int32_t found = table().try_get(PyShBound_Handle(self), &k, value);
    if (found < 0 || PyErr_Occurred()) {
        Py_CLEAR(*value);
        return -1;
    }
    return found;
}

// Keys (values = 0) or values (1) in the dictionary's order as a new list; NULL with an error.
PyObject* snapshot(PyObject* self, int32_t values) {
    PyShSeqSink sink;
    table().snapshot(PyShBound_Handle(self), values, sink.record());
    return sink.take();
}

// ---- mapping slots

Py_ssize_t strdict_length(PyObject* self) {
    if (refused(self))
        return -1;
    int32_t n = table().count(PyShBound_Handle(self));
    return n < 0 || PyErr_Occurred() ? -1 : n;
}

PyObject* strdict_subscript(PyObject* self, PyObject* key) {
    if (refused(self))
        return nullptr;
    PyObject* value = nullptr;
    int found = lookup(self, key, &value);
    if (found == 0)
        missing(key);
    return found == 1 ? value : nullptr;
}

int strdict_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    if (refused(self))
        return -1;
    PyStringArg k;
    if (!key_arg(key, &k))
        return -1;
    if (value == nullptr) {
        int32_t removed = table().remove(PyShBound_Handle(self), &k);
        if (removed < 0 || PyErr_Occurred())
            return -1;
        if (removed == 0) {
            missing(key);
            return -1;
        }
        return 0;
    }
    PyStringArg v;
    if (value != Py_None && !PyUnicode_Check(value)) {
        fail_value(value);
        return -1;
    }
    if (!fn_conv_py_string_to_clr_string(value, &v))
        return -1;
    return table().set(PyShBound_Handle(self), &k, &v) < 0 || PyErr_Occurred() ? -1 : 0;
}

int strdict_contains(PyObject* self, PyObject* key) {
    if (refused(self))
        return -1;
    if (!PyUnicode_Check(key))
        return 0;  // as a dict answers for a key of another type: not there
    PyObject* value = nullptr;
    int found = lookup(self, key, &value);
    Py_XDECREF(value);
    return found;
}

PyObject* strdict_iter(PyObject* self) {
    if (refused(self))
        return nullptr;
    PyShRef keys(snapshot(self, 0));
    return keys ? PyObject_GetIter(keys.get()) : nullptr;
}

// ---- methods

PyObject* strdict_keys(PyObject* self, PyObject*) { return refused(self) ? nullptr : snapshot(self, 0); }

PyObject* strdict_values(PyObject* self, PyObject*) { return refused(self) ? nullptr : snapshot(self, 1); }

PyObject* strdict_items(PyObject* self, PyObject*) {
    if (refused(self))
        return nullptr;
    PyShRef keys(snapshot(self, 0));
    if (!keys)
        return nullptr;
    PyShRef values(snapshot(self, 1));
    if (!values)
        return nullptr;
    Py_ssize_t n = PyList_GET_SIZE(keys.get());
    PyShRef items(PyList_New(n));
    if (!items)
        return nullptr;
    for (Py_ssize_t i = 0; i < n && i < PyList_GET_SIZE(values.get()); i++) {
        PyObject* pair = PyTuple_Pack(2, PyList_GET_ITEM(keys.get(), i), PyList_GET_ITEM(values.get(), i));
        if (pair == nullptr)
            return nullptr;
        PyList_SET_ITEM(items.get(), i, pair);
    }
    return items.release();
}

PyObject* strdict_get(PyObject* self, PyObject* args) {
    PyObject* key = nullptr;
    PyObject* fallback = Py_None;
    if (!PyArg_UnpackTuple(args, "get", 1, 2, &key, &fallback) || refused(self))
        return nullptr;
    PyObject* value = nullptr;
    int found = lookup(self, key, &value);
    if (found < 0)
        return nullptr;
    return found == 1 ? value : Py_NewRef(fallback);
}

PyObject* strdict_clear(PyObject* self, PyObject*) {
    if (refused(self))
        return nullptr;
    if (table().clear(PyShBound_Handle(self)) < 0 || PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyMappingMethods strdict_mapping = {strdict_length, strdict_subscript, strdict_ass_subscript};

PySequenceMethods strdict_sequence = {};

PyMethodDef strdict_methods[] = {
    {"keys", strdict_keys, METH_NOARGS, "The keys, as a list of the moment."},
    {"values", strdict_values, METH_NOARGS, "The values, as a list of the moment."},
    {"items", strdict_items, METH_NOARGS, "(key, value) pairs, as a list of the moment."},
    {"get", strdict_get, METH_VARARGS, ""},
    {"clear", strdict_clear, METH_NOARGS, ""},
    {"get_type", wrapClrObject_get_type, METH_NOARGS, ""},
    {"_qrxsc2p_asserttp", wrapPySealTp_qrxsc2p_asserttp, METH_NOARGS | METH_CLASS, ""},
    {nullptr, nullptr, 0, nullptr},
};

PyObject* strdict_tp_new(PyTypeObject* type, PyObject*, PyObject*) {
    if (PyHostState_Check(strdict_state()))
        return nullptr;
    return PyShBound_Alloc(type);
}

PyTypeObject strdict_type = {PyVarObject_HEAD_INIT(nullptr, 0)};

bool strdict_type_init() {
    PyShBound_DescribeType(&strdict_type, "quorix.folio._wrpgen._interop._StrDictWrapper", false, strdict_methods,
                           nullptr, strdict_tp_new, nullptr);
    strdict_sequence.sq_contains = strdict_contains;
    strdict_type.tp_as_mapping = &strdict_mapping;
    strdict_type.tp_as_sequence = &strdict_sequence;
    strdict_type.tp_iter = strdict_iter;
    // a live mapping has no managed equality worth asking: identity, as for other views
    strdict_type.tp_richcompare = nullptr;
    strdict_type.tp_hash = PyObject_HashNotImplemented;
    return true;
}

}  // namespace

PyTypeObject* PyStrDict_Type() {
    static const bool initialised = strdict_type_init();
    (void)initialised;
    return &strdict_type;
}

bool wrpPye_bltp_strdict_is_not_valid(std::string& message) { return PyHostState_Query(strdict_state(), message); }

int PyStrDict_Ready() {
    PyTypeObject* type = PyStrDict_Type();
    if (PyType_HasFeature(type, Py_TPFLAGS_READY))
        return 0;
    if (PyType_Ready(type) < 0 || !fn_set_obj_type_host_markattr(type) ||
        PyObject_GenericSetAttr(reinterpret_cast<PyObject*>(type), PyWrpIdMarkattr_Handle, Py_Ellipsis) < 0)
        return -1;
    return 0;
}

PyObject* PyStrDict_FromHandle(void* handle) {
    if (PyStrDict_Ready() < 0) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    return fn_conv_clr_sealtp_to_py_sealtp(handle, PyStrDict_Type());
}
