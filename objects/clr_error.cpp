#include "objects/clr_error.h"

#include <structmember.h>

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/bound_class.h"
#include "objects/handle_release.h"

namespace {

// The layout every bound exception class shares: RuntimeError's, plus what the managed
// exception carried. The wrapper owns the GC handle; the exception only references it.
struct ClrErrorObject {
    PyBaseExceptionObject base;
    PyObject* managed;  // the bound wrapper of the managed exception, or NULL
    PyObject* message;  // str, or NULL
    PyObject* inner;    // the inner exception's Python exception, or NULL
};

int clr_error_traverse(PyObject* self, visitproc visit, void* arg) {
    auto* e = reinterpret_cast<ClrErrorObject*>(self);
    Py_VISIT(e->managed);
    Py_VISIT(e->message);
    Py_VISIT(e->inner);
    return reinterpret_cast<PyTypeObject*>(PyExc_RuntimeError)->tp_traverse(self, visit, arg);
}

int clr_error_clear(PyObject* self) {
    auto* e = reinterpret_cast<ClrErrorObject*>(self);
    Py_CLEAR(e->managed);
    Py_CLEAR(e->message);
    Py_CLEAR(e->inner);
    return reinterpret_cast<PyTypeObject*>(PyExc_RuntimeError)->tp_clear(self);
}

void clr_error_dealloc(PyObject* self) {
    PyObject_GC_UnTrack(self);
    auto* e = reinterpret_cast<ClrErrorObject*>(self);
    Py_CLEAR(e->managed);
    Py_CLEAR(e->message);
    Py_CLEAR(e->inner);
    reinterpret_cast<PyTypeObject*>(PyExc_RuntimeError)->tp_dealloc(self);
}

// The managed exception's own members (those its bound class declares) read through its wrapper.
PyObject* clr_error_getattro(PyObject* self, PyObject* name) {
    PyObject* found = PyObject_GenericGetAttr(self, name);
    PyObject* managed = reinterpret_cast<ClrErrorObject*>(self)->managed;
    if (found != nullptr || managed == nullptr || !PyErr_ExceptionMatches(PyExc_AttributeError))
        return found;
    PyErr_Clear();
    return PyObject_GetAttr(managed, name);
}

PyObject* get_or_none(PyObject* value) {
    return Py_NewRef(value != nullptr ? value : Py_None);
}

PyObject* clr_error_get_message(PyObject* self, void*) {
    return get_or_none(reinterpret_cast<ClrErrorObject*>(self)->message);
}

PyObject* clr_error_get_inner(PyObject* self, void*) {
    return get_or_none(reinterpret_cast<ClrErrorObject*>(self)->inner);
}

PyObject* clr_error_get_managed(PyObject* self, void*) {
    return get_or_none(reinterpret_cast<ClrErrorObject*>(self)->managed);
}

PyGetSetDef clr_error_getset[] = {
    {"message", clr_error_get_message, nullptr, "The managed exception's message, or None.", nullptr},
    {"inner_exception", clr_error_get_inner, nullptr,
     "The managed inner exception as a Python exception (its bound class, else RuntimeError), or None.", nullptr},
    {"_qrxsc2p_object", clr_error_get_managed, nullptr,
     "The managed exception as a wrapper of its bound class, or None for an exception raised in Python.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyTypeObject ClrError_Type = {
    PyVarObject_HEAD_INIT(nullptr, 0)
    "quorix._ManagedError",  // tp_name
    sizeof(ClrErrorObject),  // tp_basicsize
};

// Set once per extension module under the GIL: index -> wrapper type, index -> exception class.
PyTypeObject* const* s_types = nullptr;
PyObject** s_classes = nullptr;
int32_t s_count = 0;

[[gnu::cold, gnu::noinline]] int fail_bind(PyObject* module, const char* name) {
    PyShlErr_TypeInitializationInternalError(-1014, PyModule_GetName(module), name);
    return -1;
}

}  // namespace

int
PyShClrError_Install(PyTypeObject* const* index_table, int32_t count)
{
    if (ClrError_Type.tp_flags == 0) {
        ClrError_Type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC;
        ClrError_Type.tp_doc = "A managed exception of a bound type.";
        ClrError_Type.tp_base = reinterpret_cast<PyTypeObject*>(PyExc_RuntimeError);
        ClrError_Type.tp_dealloc = clr_error_dealloc;
        ClrError_Type.tp_traverse = clr_error_traverse;
        ClrError_Type.tp_clear = clr_error_clear;
        ClrError_Type.tp_getattro = clr_error_getattro;
        ClrError_Type.tp_getset = clr_error_getset;
    }
    if (PyType_Ready(&ClrError_Type) < 0)
        return -1;
    if (s_classes == nullptr) {
        s_classes = new PyObject*[count > 0 ? count : 1]();
        s_types = index_table;
        s_count = count;
    }
    return 0;
}

int
PyShClrError_Bind(PyObject* module, int32_t index, int32_t base_index, const char* name)
{
    if (index < 0 || index >= s_count)
        return fail_bind(module, name);
    PyObject* base = base_index >= 0 && base_index < s_count && s_classes[base_index] != nullptr
                         ? s_classes[base_index]
                         : reinterpret_cast<PyObject*>(&ClrError_Type);
    PyTypeObject* wrapper = s_types[index];
    PyShRef cls(PyErr_NewExceptionWithDoc(wrapper->tp_name, wrapper->tp_doc, base, nullptr));
    if (!cls)
        return -1;
    // the wrapper type stays reachable for casts and managed-typed values
    if (PyObject_SetAttrString(cls.get(), "_qrxsc2p_wrapper", reinterpret_cast<PyObject*>(wrapper)) < 0)
        return -1;
    Py_INCREF(cls.get());
    if (PyModule_AddObject(module, name, cls.get()) < 0) {
        Py_DECREF(cls.get());
        return fail_bind(module, name);
    }
    Py_XSETREF(s_classes[index], cls.release());
    return 0;
}

PyObject*
fn_conv_clr_exception_to_py(PyObject* type_name, PyObject* message, void* handle, int32_t index, PyObject* inner)
{
    PyShRef type_owner(type_name);
    PyShRef message_owner(message);
    PyShRef inner_owner(inner);
    PyObject* cls = index >= 0 && index < s_count ? s_classes[index] : nullptr;
    if (cls == nullptr || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(handle);
        if (PyErr_Occurred())
            return nullptr;
        cls = PyExc_RuntimeError;
    }
    PyShRef text(PyUnicode_FromFormat("Proxy error(%U): %U", type_name != nullptr ? type_name : PyWrpIdTraceBack_Unknown,
                                      message != nullptr ? message : PyWrpIdTraceBack_Unknown));
    if (!text) {
        if (cls != PyExc_RuntimeError)
            PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    PyShRef managed;
    if (cls != PyExc_RuntimeError) {
        managed.reset(PyShBound_ConvClrToPy(handle, s_types[index], HandleKind_Object));  // frees on failure
        if (!managed)
            return nullptr;
    }
    PyObject* exc = PyObject_CallOneArg(cls, text.get());
    if (exc == nullptr || cls == PyExc_RuntimeError)
        return exc;
    auto* e = reinterpret_cast<ClrErrorObject*>(exc);
    Py_XSETREF(e->managed, managed.release());
    Py_XSETREF(e->message, message_owner.release());
    Py_XSETREF(e->inner, inner_owner.release());
    return exc;
}

PyObject*
on_clr_exception_object(PyObject* exc)
{
    PyShRef owner(exc);
    if (exc != nullptr)
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exc)), exc);
    return nullptr;
}
