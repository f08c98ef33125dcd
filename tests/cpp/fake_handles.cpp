#include "tests/cpp/fake_handles.h"

#include "objects/handle_release.h"
#include "objects/pyhold_api.h"
#include "objects/seal_object.h"

namespace {

std::vector<void*> g_freed;

void
record_free(void* handle)
{
    g_freed.push_back(handle);
}

void
safe_handle_dealloc(PyObject* self)
{
    record_free(reinterpret_cast<PySafeTargetHandleObject*>(self)->handle);
    Py_XDECREF(reinterpret_cast<PySafeTargetHandleObject*>(self)->type);
    Py_TYPE(self)->tp_free(self);
}

PyTypeObject safe_handle_type = {PyVarObject_HEAD_INIT(nullptr, 0) "fake.SafeTargetHandle",
                                 sizeof(PySafeTargetHandleObject)};
PyTypeObject sealed_type = {PyVarObject_HEAD_INIT(nullptr, 0) "fake.Sealed", sizeof(PySealTpObject)};

bool
ready_types()
{
    if (PyType_HasFeature(&safe_handle_type, Py_TPFLAGS_READY))
        return true;
    safe_handle_type.tp_flags = Py_TPFLAGS_DEFAULT;
    safe_handle_type.tp_dealloc = safe_handle_dealloc;
    sealed_type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
    sealed_type.tp_new = PyType_GenericNew;
    if (PyType_Ready(&safe_handle_type) < 0 || PyType_Ready(&sealed_type) < 0)
        return false;
    return PyDict_SetItemString(sealed_type.tp_dict, "_quorix_clr_host", Py_None) == 0;
}

PyObject*
fake_new(void* handle, PyTypeObject* type)
{
    PySafeTargetHandleObject* obj = PyObject_New(PySafeTargetHandleObject, &safe_handle_type);
    if (obj == nullptr)
        return nullptr;
    obj->handle = handle;
    Py_XINCREF(type);
    obj->type = type;
    return reinterpret_cast<PyObject*>(obj);
}

int
fake_is_type(PyObject* obj)
{
    return Py_IS_TYPE(obj, &safe_handle_type);
}

struct Saved {
    void (*free_gc_handle)(void*);
    PyHoldSafeTargetHandleNewFunc safe_new;
    PyHoldSafeTargetHandleIsTypeFunc safe_is_type;
};
Saved g_saved;

}  // namespace

FakeHandleRuntime::FakeHandleRuntime()
{
    ready_types();
    g_freed.clear();
    g_saved = {g_free_gc_handle, PyShSafeTargetHandle_New, PyShSafeTargetHandle_IsType};
    g_free_gc_handle = record_free;
    PyShSafeTargetHandle_New = fake_new;
    PyShSafeTargetHandle_IsType = fake_is_type;
}

FakeHandleRuntime::~FakeHandleRuntime()
{
    g_free_gc_handle = g_saved.free_gc_handle;
    PyShSafeTargetHandle_New = g_saved.safe_new;
    PyShSafeTargetHandle_IsType = g_saved.safe_is_type;
}

const std::vector<void*>&
FakeHandleRuntime::freed() const
{
    return g_freed;
}

PyTypeObject*
fake_sealed_type()
{
    ready_types();
    return &sealed_type;
}

PyObject*
fake_sealed_heap_type(const char* name)
{
    // Derived from the static wrapper type: only such types' instances are read for a handle.
    ready_types();
    PyType_Slot slots[] = {{0, nullptr}};
    PyType_Spec spec = {name, static_cast<int>(sizeof(PySealTpObject)), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE,
                        slots};
    return PyType_FromSpecWithBases(&spec, reinterpret_cast<PyObject*>(&sealed_type));
}

PyObject*
fake_safe_handle(void* handle)
{
    ready_types();
    return fake_new(handle, nullptr);
}

void*
fake_safe_handle_value(PyObject* safe_handle)
{
    return reinterpret_cast<PySafeTargetHandleObject*>(safe_handle)->handle;
}
