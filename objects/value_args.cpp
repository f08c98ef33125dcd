#include "objects/value_args.h"

#include "marshal/conv_variant.h"
#include "objects/bound_class.h"
#include "objects/enum_builder.h"
#include "objects/handle_release.h"

namespace {

constexpr int32_t kTagPythonObject = 2;

}  // namespace

void
PyShBound_ReleaseObjectRecord(VariantArg& value)
{
    if (value.tag == kTagPythonObject)
        Py_XDECREF(static_cast<PyObject*>(value.value));
    else
        PyShWrp_FreeGcHandlePtr(value.value);
    value.tag = 0;
    value.value = nullptr;
}

PyObject*
PyShBound_ObjectResult(VariantArg& value)
{
    if (PyErr_Occurred()) {
        PyShBound_ReleaseObjectRecord(value);
        return nullptr;
    }
    if (value.tag == kTagPythonObject) {
        auto* obj = static_cast<PyObject*>(value.value);
        value.value = nullptr;
        return obj != nullptr ? obj : Py_NewRef(Py_None);
    }
    // the wrapper owns the handle from here, also when wrapping fails
    PyObject* obj = fn_write_py_sysobj(&value);
    value.value = nullptr;
    return obj;
}

void
PyShOutValue::drop()
{
    PyShBound_ReleaseObjectRecord(value_);
}

int
PyShOutValue::deliver()
{
    PyObject* item = nullptr;
    switch (form_) {
    case PyShOutForm_Object:
        item = PyShBound_ObjectResult(value_);
        break;
    case PyShOutForm_Enum:
        item = PyShBound_StaticValue(value_, nullptr, 0);
        value_.value = nullptr;
        item = item == nullptr ? nullptr : PyShEnum_FromPyLong(*enum_type_, item);
        break;
    default:
        item = PyShBound_StaticValue(value_, form_ == PyShOutForm_Bound ? type_ : nullptr, kind_);
        value_.value = nullptr;
        break;
    }
    if (item == nullptr)
        return -1;
    return fn_push_parbyref_outvalue(list_, item);
}

PyObject*
PyShBound_DeliverOuts(PyObject* result, std::initializer_list<PyShOutValue*> outs)
{
    if (result == nullptr)
        return nullptr;
    for (PyShOutValue* out : outs) {
        if (out->deliver() < 0) {
            Py_DECREF(result);
            return nullptr;
        }
    }
    return result;
}
