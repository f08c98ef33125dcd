#include "objects/twin_binding.h"

#include <atomic>
#include <mutex>
#include <vector>

#include "module/ids.h"
#include "module/pysh_ref.h"
#include "objects/derived_object.h"
#include "objects/pyhold_api.h"

namespace {

// References that twins collected on the finalizer thread hand back; released on a Python
// thread through a pending call.
std::mutex g_release_mutex;
std::vector<PyObject*> g_release_queue;
std::atomic<bool> g_release_pending{false};

int drain_pending(void*) {
    PyShTwin_DrainReleases();
    return 0;
}

// The weak handle a Python implementation keeps to its twin, or NULL (borrowed from its dictionary).
void* weak_handle_of(PyObject* obj) {
    PyObject* dict = reinterpret_cast<PyDerivlTpObject*>(obj)->dict;
    if (dict == nullptr)
        return nullptr;
    PyObject* held = PyDict_GetItemWithError(dict, PyWrpIdMarkattr_Handle);
    if (held == nullptr || PyShSafeTargetHandle_IsType == nullptr || PyShSafeTargetHandle_IsType(held) <= 0) {
        PyErr_Clear();
        return nullptr;
    }
    return reinterpret_cast<PySafeTargetHandleObject*>(held)->handle;
}

int bind_once(PyShTwinBinding& binding) {
    return binding.once.run([&binding]() -> int {
        void* factory = nullptr;
        if (binding.bind(&binding.table, &factory) < 0 || PyErr_Occurred()) {
            PyShWrp_FreeGcHandlePtr(factory);
            if (!PyErr_Occurred())
                PyErr_SetString(PyExc_TypeError, "the managed twin of the interface could not be bound");
            return -1;
        }
        binding.factory = factory;
        return 0;
    });
}

// The twin of `obj`, an instance of a Python subclass: 1 with a handle for this call in *out, or 0.
int twin_of(PyObject* obj, PyShTwinBinding& binding, PyTwinArg* out) {
    if (g_release_pending.load(std::memory_order_relaxed))
        PyShTwin_DrainReleases();
    if (bind_once(binding) < 0)
        return 0;
    void* new_weak = nullptr;
    void* strong = nullptr;
    int32_t made = binding.table.acquire(binding.factory, obj, weak_handle_of(obj), &new_weak, &strong);
    if (made < 0)
        return 0;
    out->handle = out->temporary = strong;
    if (made == 0)
        return 1;
    Py_INCREF(obj);  // the new twin's reference, handed back when it is collected
    PyShRef safe(PyShSafeTargetHandle_New(new_weak, Py_TYPE(obj)));
    if (!safe) {
        PyShWrp_FreeGcHandlePtr(new_weak);
        return 0;
    }
    return PyObject_GenericSetAttr(obj, PyWrpIdMarkattr_Handle, safe.get()) < 0 ? 0 : 1;
}

}  // namespace

PyShTwinHolder::~PyShTwinHolder() { PyShWrp_FreeGcHandlePtr(arg.temporary); }

void PyShTwin_ReleaseRefs(PyObject** refs, int32_t count) {
    for (int32_t i = 0; i < count; ++i)
        Py_CLEAR(refs[i]);
}

void PyShTwin_ReleaseLater(PyObject* obj) {
    if (obj == nullptr || !Py_IsInitialized())
        return;  // at exit the reference no longer matters
    {
        std::lock_guard<std::mutex> lock(g_release_mutex);
        g_release_queue.push_back(obj);
    }
    if (!g_release_pending.exchange(true) && Py_AddPendingCall(drain_pending, nullptr) < 0)
        g_release_pending.store(false);  // the queue waits for the next conversion or release
}

void PyShTwin_DrainReleases() {
    std::vector<PyObject*> due;
    {
        std::lock_guard<std::mutex> lock(g_release_mutex);
        due.swap(g_release_queue);
        g_release_pending.store(false);
    }
    for (PyObject* obj : due)
        Py_DECREF(obj);
}

int PyShTwin_ConvPyToClr(PyObject* obj, PyTypeObject* type, const char* class_name, PyShAssignableTest assignable,
                         PyShTwinBinding& binding, PyTwinArg* out) {
    out->temporary = nullptr;
    if (Py_TYPE(obj) != type && PyObject_TypeCheck(obj, type))
        return twin_of(obj, binding, out);
    return PyShBound_ConvPyToClr(obj, type, class_name, assignable, &out->handle);
}

int PyShTwin_BindingHandle(PyShTwinBinding& binding, void** out) {
    if (bind_once(binding) < 0)
        return -1;
    *out = nullptr;
    if (binding.bind(&binding.table, out) < 0 || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(*out);
        return -1;
    }
    return 0;
}

PyObject* PyShTwin_GetTpExtraBind(PyShTwinBinding& binding, PyTypeObject* type) {
    void* handle = nullptr;
    if (PyShTwin_BindingHandle(binding, &handle) < 0)
        return nullptr;
    PyObject* safe = PyShSafeTargetHandle_New(handle, type);
    if (safe == nullptr)
        PyShWrp_FreeGcHandlePtr(handle);
    return safe;
}

int PyShTwin_BytesResult(PyObject* obj, PyTwinBlob* out) {
    if (obj == Py_None) {
        *out = {nullptr, -1};
        return 1;
    }
    if (PyBytes_Check(obj)) {
        *out = {PyBytes_AS_STRING(obj), PyBytes_GET_SIZE(obj)};
        return 1;
    }
    if (PyByteArray_Check(obj)) {
        *out = {PyByteArray_AS_STRING(obj), PyByteArray_GET_SIZE(obj)};
        return 1;
    }
    PyErr_Format(PyExc_TypeError, "can't build Byte[] from '%.200s'", Py_TYPE(obj)->tp_name);
    return 0;
}

PyObject* PyShTwin_OutList() {
    PyObject* list = PyList_New(1);
    if (list != nullptr)
        PyList_SET_ITEM(list, 0, Py_NewRef(Py_None));
    return list;
}

int PyShTwin_SequenceResult(PyObject* obj, VariantArg* out) {
    out->value = obj;
    if (obj == Py_None) {
        out->tag = VariantTag_Handle;
        out->value = nullptr;
        return 1;
    }
    if (PyUnicode_Check(obj) || PyBytes_Check(obj) || PyByteArray_Check(obj) || PyDict_Check(obj) || !PySequence_Check(obj)) {
        PyErr_Format(PyExc_TypeError, "can't build an array from '%.200s'", Py_TYPE(obj)->tp_name);
        return 0;
    }
    out->tag = PyList_CheckExact(obj) ? VariantTag_List : VariantTag_Tuple;
    return 1;
}

PyObject* PyShTwin_RefList(PyObject* item) {
    if (item == nullptr)
        return nullptr;
    PyObject* list = PyList_New(1);
    if (list == nullptr) {
        Py_DECREF(item);
        return nullptr;
    }
    PyList_SET_ITEM(list, 0, item);
    return list;
}

int PyShTwin_InternNames(PyObject** ids, const char* const* names, int count) {
    for (int i = 0; i < count; ++i) {
        if (ids[i] == nullptr && (ids[i] = PyUnicode_InternFromString(names[i])) == nullptr)
            return -1;
    }
    return 0;
}
