#include "marshal/conv_variant.h"

#include "marshal/conv_errors.h"
#include "marshal/datetime_api.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/handle_lookup.h"
#include "objects/handle_release.h"
#include "objects/seal_object.h"
#include "objects/wrap_handle.h"

namespace {

constexpr int32_t kTagPythonObject = 2;

// 1 if `obj` is an instance of <module>.<type>, 0 if not, -1 with an error. The type is
// imported by name on each call, so a reloaded module is honoured.
int
is_instance_of(PyObject* obj, PyObject* module_name, PyObject* type_name)
{
    PyShRef type(PyShImport_ImportType(module_name, type_name));
    if (!type)
        return -1;
    return PyObject_IsInstance(obj, type.get());
}

int
classified(VariantArg* out, VariantTag tag)
{
    out->tag = tag;
    return 1;
}

// Tag of the decimal and uuid kinds: 1 with *tag set, 0 when none matched, -1 with an error.
int
classify_imported_kinds(PyObject* obj, VariantTag* tag)
{
    struct Candidate {
        PyObject* module;
        PyObject* type;
        VariantTag tag;
    };
    // DecimalTuple before Decimal, as the more specific of the two.
    const Candidate candidates[] = {
        {PyWrpIdModuleName_Decimal, PyWrpIdTypeName_DecimalTuple, VariantTag_DecimalTuple},
        {PyWrpIdModuleName_Decimal, PyWrpIdTypeName_Decimal, VariantTag_Decimal},
        {PyWrpIdModuleName_Uuid, PyWrpIdTypeName_Uuid, VariantTag_Uuid},
    };
    for (const Candidate& candidate : candidates) {
        int match = is_instance_of(obj, candidate.module, candidate.type);
        if (match != 0) {
            *tag = candidate.tag;
            return match;
        }
    }
    return 0;
}

bool
is_bytes_like(PyObject* obj)
{
    if (!PyBytes_Check(obj) && !PyByteArray_Check(obj) && !PyMemoryView_Check(obj))
        return false;
    if (PyMemoryView_Check(obj) && !Py_IS_TYPE(obj, &PyMemoryView_Type))
        return false;
    PyBufferProcs* procs = Py_TYPE(obj)->tp_as_buffer;
    return procs != nullptr && procs->bf_getbuffer != nullptr;
}

[[gnu::cold, gnu::noinline]] int
fail_parbyref(PyObject* obj)
{
    return marshal_fail_typename(PyExc_TypeError, "argument should be list contains default value, not '%.200s'",
                                 obj);
}

// Classifies `obj` as fn_conv_py_variant_to_clr_variant does: 1 classified, 0 a kind it does
// not know (no error set), -1 with an error.
int
classify(PyObject* obj, VariantArg* out)
{
    out->value = obj;
    if (obj == Py_None) {
        out->value = nullptr;
        return classified(out, VariantTag_Handle);
    }
    if (PyBool_Check(obj))
        return classified(out, VariantTag_Bool);
    if (PyLong_CheckExact(obj))
        return classified(out, VariantTag_Int);
    if (int is_int = PyShLong_Check(obj)) {
        // An int subclass the probe could not decide on still travels as an int; the managed
        // side's integer read asks again and reports the failure then.
        if (is_int < 0)
            PyErr_Clear();
        return classified(out, VariantTag_Int);
    }
    if (PyFloat_Check(obj))
        return classified(out, VariantTag_Float);
    // The exact built-ins most often passed are settled before the imports below; none of
    // them can also be a Decimal, DecimalTuple or UUID, so the outcome is the same.
    if (PyUnicode_CheckExact(obj))
        return classified(out, VariantTag_Str);
    if (PyList_CheckExact(obj))
        return classified(out, VariantTag_List);
    if (PyTuple_CheckExact(obj))
        return classified(out, VariantTag_Tuple);

    VariantTag tag;
    int imported = classify_imported_kinds(obj, &tag);
    if (imported < 0)
        return -1;
    if (imported > 0)
        return classified(out, tag);

    // Without the datetime interface no value can be a datetime; the other kinds still count.
    if (marshal_datetime_api()) {
        if (PyDelta_Check(obj))
            return classified(out, VariantTag_TimeDelta);
        if (PyDateTime_Check(obj))
            return classified(out, VariantTag_DateTime);
        if (PyDate_Check(obj))
            return classified(out, VariantTag_Date);
        if (PyTime_Check(obj))
            return classified(out, VariantTag_Time);
    }
    else {
        PyErr_Clear();
    }

    if (PyUnicode_Check(obj))
        return classified(out, VariantTag_Str);
    if (is_bytes_like(obj))
        return classified(out, VariantTag_Bytes);

    if (fn_conv_py_obj_to_clr_gen_not_null_handle(obj, out))
        return 1;
    out->value = nullptr;
    return PyErr_Occurred() ? -1 : 0;
}

}  // namespace

int
fn_conv_py_variant_to_clr_variant(PyObject* obj, VariantArg* out)
{
    int found = classify(obj, out);
    if (found == 0)
        return marshal_fail_text(PyExc_TypeError, "unknown variant type");
    return found > 0 ? 1 : 0;
}

int
fn_conv_py_anyobj_to_clr_variant(PyObject* obj, VariantArg* out)
{
    int found = classify(obj, out);
    if (found != 0)
        return found > 0 ? 1 : 0;
    out->tag = VariantTag_PyRef;
    out->value = obj;
    return 1;
}

PyObject*
fn_write_py_sysobj(const VariantArg* value)
{
    if (value->tag == kTagPythonObject) {
        PyObject* obj = static_cast<PyObject*>(value->value);
        return Py_NewRef(obj != nullptr ? obj : Py_None);
    }
    if (value->tag != HandleKind_Object && value->tag != HandleKind_Struct) {
        marshal_fail_text(PyExc_TypeError, "unknown variant type");
        return nullptr;
    }
    if (value->value == nullptr)
        Py_RETURN_NONE;
    PyShRef type(PyShImport_ImportType(PyWrpIdUcsO_Module_quorix_pyintro, PyWrpIdUcsO_Type_Object));
    if (!type) {
        PyShWrp_FreeGcHandlePtr(value->value);
        return nullptr;
    }
    PyObject* obj = fn_conv_clr_sealtp_to_py_sealtp(value->value, reinterpret_cast<PyTypeObject*>(type.get()));
    if (obj != nullptr && value->tag == HandleKind_Struct)
        reinterpret_cast<PySealTpObject*>(obj)->handle_kind = HandleKind_Struct;
    return obj;
}

int
fn_conv_py_parbyref_to_clr_parbyref(PyObject* obj, PyParamByRef* param)
{
    if (!PyList_CheckExact(obj) || PyList_GET_SIZE(obj) == 0)
        return fail_parbyref(obj);
    param->list = obj;
    return param->converter(PyList_GET_ITEM(obj, 0), param->output) == 1;
}

int
fn_conv_py_orefpar_to_clr_orefpar(PyObject* obj, PyObject** list)
{
    if (!PyList_CheckExact(obj))
        return marshal_fail_typename(PyExc_TypeError, "argument should be empty list, not '%.200s'", obj);
    *list = obj;
    return 1;
}

int
fn_push_parbyref_outvalue(PyObject* list, PyObject* value)
{
    if (PyList_GET_SIZE(list) > 0)
        return PyList_SetItem(list, 0, value);
    int status = PyList_Append(list, value);
    Py_DECREF(value);
    return status;
}
