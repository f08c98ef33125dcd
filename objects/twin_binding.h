// Python objects behind managed interfaces: the table through which a generated managed twin
// reaches the reverse wrappers of its interface, the conversion that gives a Python
// implementation its twin, and the helpers the generated reverse wrappers share.
//
// Lifetime: the twin owns a reference to the Python object; the Python object keeps a weak
// handle to its twin in `_qrxsc2p_handle`. A twin that managed code dropped is collected and
// its reference released later (its finalizer runs without the interpreter lock), so no
// reference cycle spans the two runtimes.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"
#include "module/pysh_lock.h"
#include "module/pysh_once.h"
#include "objects/bound_class.h"
#include "objects/handle_release.h"

// Shared with the managed PyTwinTable: the native side fills the first three entries, the
// managed binding the fourth.
struct PyTwinTable {
    void* const* reverse;                       // locked entries of the reverse wrappers, member order
    void (*release_refs)(PyObject** refs, int32_t count);   // locked entry
    void (*release_later)(PyObject* obj);       // lock-free
    int32_t (*acquire)(void* factory, PyObject* obj, void* weak, void** new_weak, void** strong);
};

// One interface's binding: the shared table, the managed factory of its twins (a GC handle kept
// for the life of the process) and the one-time binding through the "btp_GetTpExtraBind" stub.
struct PyShTwinBinding {
    PyTwinTable table;
    void* factory;
    int (*bind)(PyTwinTable* table, void** factory);  // the stub, entry check included; 0 or -1
    PyShOnce once;
};

// A handle converted for one call: `handle` to pass, `temporary` to free afterwards (or NULL).
struct PyTwinArg {
    void* handle;
    void* temporary;
};

struct PyShTwinHolder {
    PyTwinArg arg = {};
    PyShTwinHolder() = default;
    PyShTwinHolder(const PyShTwinHolder&) = delete;
    PyShTwinHolder& operator=(const PyShTwinHolder&) = delete;
    ~PyShTwinHolder();
    void* get() const { return arg.handle; }
};

// Releases `count` references of a reverse call's array and zeroes them (entered through PyShLocked).
void PyShTwin_ReleaseRefs(PyObject** refs, int32_t count);
// Queues one reference for release on a Python thread; any thread, no lock needed.
void PyShTwin_ReleaseLater(PyObject* obj);
template <>
inline constexpr bool kPyShLockFree<&PyShTwin_ReleaseLater> = true;

// O& conversion of an argument typed as the interface `type`: an instance of a Python subclass
// passes its twin (created on first use); anything else as PyShBound_ConvPyToClr. 1, or 0
// with the error.
int PyShTwin_ConvPyToClr(PyObject* obj, PyTypeObject* type, const char* class_name, PyShAssignableTest assignable,
                         PyShTwinBinding& binding, PyTwinArg* out);

// The handle of the binding object for "_qrxsc2p_gettpextrabind" (a fresh factory handle): 0
// with *out, or -1 with the error.
int PyShTwin_BindingHandle(PyShTwinBinding& binding, void** out);

// "_qrxsc2p_gettpextrabind": the binding object as a safe handle of `type`, or NULL.
PyObject* PyShTwin_GetTpExtraBind(PyShTwinBinding& binding, PyTypeObject* type);

// Runs the releases that twins collected on other threads queued; called with the lock held.
void PyShTwin_DrainReleases();

// ---- helpers of the generated reverse wrappers

// Frees the handle of an argument that will not be converted (a twin's Python object is borrowed).
inline void PyShTwin_FreeArg(void* handle, int32_t index) {
    if (index != kPyShTwinIndex)
        PyShWrp_FreeGcHandlePtr(handle);
}
// Bytes a Python implementation returned, borrowed from the result object; length -1 for None.
struct PyTwinBlob {
    const char* data;
    int64_t length;
};
// A bytes or bytearray result (or None) as a blob: 1, or 0 with TypeError.
int PyShTwin_BytesResult(PyObject* obj, PyTwinBlob* out);
// A fresh one-element list [None] that receives an out value.
PyObject* PyShTwin_OutList();
// A sequence result, lent to managed code for as long as the call's references live: None as a
// NULL handle, an exact list as tag VariantTag_List, another sequence as VariantTag_Tuple (read
// by index). Text, bytes, mappings and objects that are not sequences raise TypeError "can't
// build an array from '%.200s'". 1, or 0 with the error.
int PyShTwin_SequenceResult(PyObject* obj, VariantArg* out);
// A one-element list around `item` (a new reference, consumed; NULL passes through) that
// carries a `ref` value in and out.
PyObject* PyShTwin_RefList(PyObject* item);
// The item an out list holds after the call (borrowed).
inline PyObject* PyShTwin_OutItem(PyObject* list) { return PyList_GET_ITEM(list, 0); }
// The interned method names of an interface: 0, or -1 with an error.
int PyShTwin_InternNames(PyObject** ids, const char* const* names, int count);
