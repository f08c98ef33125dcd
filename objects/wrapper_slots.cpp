#include "objects/wrapper_slots.h"

#include "host/exchange_host.h"
#include "host/object_host.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/bound_class.h"
#include "objects/handle_lookup.h"
#include "objects/handle_release.h"
#include "objects/seal_object.h"
#include "objects/wrap_handle.h"

namespace {

inline PySealTpObject* seal(PyObject* self) { return reinterpret_cast<PySealTpObject*>(self); }

// Managed member functions of the object host that differ between objects and structures.
struct Flavour {
    int (ObjectHost::*to_string)(void*, void**) const;
    int32_t (ObjectHost::*hash)(void*) const;
    int (ObjectHost::*equals)(void*, const VariantArg*) const;
    int (ObjectHost::*get_type)(void*, void**) const;
};

constexpr Flavour kObject = {&ObjectHost::to_string_of_obj, &ObjectHost::get_hash_code_of_obj,
                             &ObjectHost::equals_of_obj, &ObjectHost::get_obj_type};
constexpr Flavour kStruct = {&ObjectHost::to_string_of_stc, &ObjectHost::get_hash_code_of_stc,
                             &ObjectHost::equals_of_stc, &ObjectHost::get_stc_type};

void dealloc(PyObject* self, void (ExchangeHost::*free)(void*) const) {
    void* handle = seal(self)->handle;
    if (handle != nullptr) {
        seal(self)->handle = nullptr;
        (ExchangeHost::get_instance().*free)(handle);
    }
    Py_TYPE(self)->tp_free(self);
}

// 0 when the object host may be asked about `self`; else -1 with the error set: a forked
// child cannot run the runtime, and an object made by __new__ alone has nothing to ask about.
int check_usable(PyObject* self) {
    if (host_in_forked_child()) {
        PyShlErr_ForkedChild();
        return -1;
    }
    return seal(self)->handle == nullptr ? PyShBound_FailUnbound(self) : 0;
}

Py_hash_t hash_of(void* handle, const Flavour& f) {
    int32_t code = (ObjectHost::get_instance().*f.hash)(handle);
    if (PyErr_Occurred())
        return -1;
    if (code == -1 || code == -2)
        return -2;
    return static_cast<Py_hash_t>(code);
}

Py_hash_t hash(PyObject* self, const Flavour& f) {
    if (check_usable(self) < 0)
        return -1;
    return hash_of(seal(self)->handle, f);
}

PyObject* richcompare_of(void* handle, PyObject* other, int op, const Flavour& f) {
    VariantArg theirs = {};
    if (!fn_conv_py_obj_to_clr_gen_handle(other, &theirs))
        Py_RETURN_NOTIMPLEMENTED;
    int equal = (ObjectHost::get_instance().*f.equals)(handle, &theirs);
    if (equal < 0 || PyErr_Occurred())
        return nullptr;
    return PyBool_FromLong(op == Py_EQ ? equal != 0 : equal == 0);
}

PyObject* richcompare(PyObject* self, PyObject* other, int op, const Flavour& f) {
    if (op != Py_EQ && op != Py_NE)
        Py_RETURN_NOTIMPLEMENTED;
    if (self == other)
        return PyBool_FromLong(op == Py_EQ);
    if (check_usable(self) < 0)
        return nullptr;
    return richcompare_of(seal(self)->handle, other, op, f);
}

[[gnu::cold, gnu::noinline]] PyObject* default_text(PyObject* self) {
    return PyUnicode_FromFormat("<%s object at %p>", Py_TYPE(self)->tp_name, self);
}

PyObject* str_of(PyObject* self, void* handle, const Flavour& f) {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);  // the host call must not see an earlier error
    void* text = nullptr;
    PyObject* result = nullptr;
    if ((ObjectHost::get_instance().*f.to_string)(handle, &text) == 1 && text != nullptr)
        result = static_cast<PyObject*>(text);
    else if (!PyErr_Occurred())
        result = default_text(self);
    if (type != nullptr) {
        if (PyErr_Occurred()) {
            PyShRef context(PyUnicode_FromString("FormatCallbackException"));
            PyErr_WriteUnraisable(context.get());
        }
        PyErr_Restore(type, value, traceback);
    }
    return result;
}

PyObject* str(PyObject* self, const Flavour& f) {
    if (seal(self)->handle == nullptr && !host_in_forked_child())
        return default_text(self);
    if (check_usable(self) < 0)
        return nullptr;
    return str_of(self, seal(self)->handle, f);
}

PyObject* get_type_of(void* handle, const Flavour& f) {
    void* type_handle = nullptr;
    if ((ObjectHost::get_instance().*f.get_type)(handle, &type_handle) != 1 || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(type_handle);
        if (!PyErr_Occurred())
            PyErr_SetString(PyExc_RuntimeError, "the managed type of the object is not available");
        return nullptr;
    }
    PyObject* const names[] = {PyWrpIdUcsO_Module_quorix_pyintro, PyWrpIdUcsO_Type_Type, nullptr};
    PyShRef type(PyShImport_ImportTypeEx(names));
    if (!type) {
        PyShWrp_FreeGcHandlePtr(type_handle);
        return nullptr;
    }
    return fn_conv_clr_sealtp_to_py_sealtp(type_handle, reinterpret_cast<PyTypeObject*>(type.get()));
}

PyObject* get_type(PyObject* self, const Flavour& f) {
    if (check_usable(self) < 0)
        return nullptr;
    return get_type_of(seal(self)->handle, f);
}

}  // namespace

void wrapClrObject_tp_dealloc(PyObject* self) { dealloc(self, &ExchangeHost::free_instance); }
void wrapClrStruct_tp_dealloc(PyObject* self) { dealloc(self, &ExchangeHost::free_struct); }

Py_hash_t wrapClrObject_tp_hash(PyObject* self) { return hash(self, kObject); }
Py_hash_t wrapClrStruct_tp_hash(PyObject* self) { return hash(self, kStruct); }

PyObject* wrapClrObject_tp_richcompare(PyObject* self, PyObject* other, int op) {
    return richcompare(self, other, op, kObject);
}
PyObject* wrapClrStruct_tp_richcompare(PyObject* self, PyObject* other, int op) {
    return richcompare(self, other, op, kStruct);
}

PyObject* wrapClrObject_tp_str(PyObject* self) { return str(self, kObject); }
PyObject* wrapClrStruct_tp_str(PyObject* self) { return str(self, kStruct); }

Py_hash_t PyShWrp_HashOf(void* handle) { return hash_of(handle, kObject); }
PyObject* PyShWrp_RichCompareOf(void* handle, PyObject* other, int op) { return richcompare_of(handle, other, op, kObject); }
PyObject* PyShWrp_StrOf(PyObject* self, void* handle) { return str_of(self, handle, kObject); }
PyObject* PyShWrp_GetTypeOf(void* handle) { return get_type_of(handle, kObject); }

PyObject* wrapClrObject_get_type(PyObject* self, PyObject*) { return get_type(self, kObject); }
PyObject* wrapClrStruct_get_type(PyObject* self, PyObject*) { return get_type(self, kStruct); }

int wrapClrObject_tp_init_fault(PyObject*, PyObject*, PyObject*) {
    PyErr_SetString(PyExc_TypeError, "type has no available constructor");
    return -1;
}

PyObject* wrapPySealTp_qrxsc2p_asserttp(PyObject*, PyObject*) { Py_RETURN_TRUE; }

PyObject* wrapClrObject_conv_py_to_clr_capsifc(PyObject*, PyObject*) {
    PyErr_SetString(PyExc_NotImplementedError,
                    "The type object convert function is deprecated. The Python extension you use is not "
                    "compatible with the satellite module.");
    return nullptr;
}

PyObject* wrapClrObject_conv_clr_to_py_capsifc(PyObject*, PyObject*) {
    PyErr_SetString(PyExc_NotImplementedError,
                    "The type factory function is deprecated. The Python extension you use is not compatible "
                    "with the satellite module.");
    return nullptr;
}
