#include "builtins/buffer_view.h"

static int
shlbuffer_view_getbuffer(PyObject* self, Py_buffer* view, int flags)
{
    PyShlBufferViewObject* obj = reinterpret_cast<PyShlBufferViewObject*>(self);
    return PyBuffer_FillInfo(view, self, obj->data, obj->length, obj->readonly, flags);
}

static PyBufferProcs shlbuffer_view_as_buffer = {
    shlbuffer_view_getbuffer,
    nullptr,
};

static PyTypeObject shlbuffer_view_type = {
    PyVarObject_HEAD_INIT(nullptr, 0)
    "quorix.folio._wrpgen._interop._ShlBufferView",  // tp_name
    sizeof(PyShlBufferViewObject),                    // tp_basicsize
};

static bool
shlbuffer_view_type_init()
{
    // Only native code may make one: it alone knows how long the memory stays valid.
    shlbuffer_view_type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    shlbuffer_view_type.tp_as_buffer = &shlbuffer_view_as_buffer;
    shlbuffer_view_type.tp_doc = "A region of managed memory seen through the buffer protocol.";
    return true;
}

PyTypeObject*
PyShlBufferView_Type()
{
    static const bool initialised = shlbuffer_view_type_init();
    (void)initialised;
    return &shlbuffer_view_type;
}

PyObject*
fn_create_shlbuffer_view(void* data, long length, int readonly)
{
    PyTypeObject* type = PyShlBufferView_Type();
    if (!PyType_HasFeature(type, Py_TPFLAGS_READY) && PyType_Ready(type) < 0)
        return nullptr;
    if (length < 0 || (data == nullptr && length > 0)) {
        PyErr_BadInternalCall();
        return nullptr;
    }
    PyShlBufferViewObject* obj = PyObject_New(PyShlBufferViewObject, type);
    if (obj == nullptr)
        return nullptr;
    obj->data = data;
    obj->length = length;
    obj->readonly = readonly != 0;
    return reinterpret_cast<PyObject*>(obj);
}

void
fn_detach_shlbuffer_view(PyObject* view)
{
    PyShlBufferViewObject* obj = reinterpret_cast<PyShlBufferViewObject*>(view);
    obj->data = nullptr;
    obj->length = 0;
}
