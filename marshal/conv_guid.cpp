#include "marshal/conv_guid.h"

#include <cstring>

#include "marshal/conv_errors.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"

static PyObject*
import_uuid_type()
{
    return PyShImport_ImportType(PyWrpIdModuleName_Uuid, PyWrpIdTypeName_Uuid);
}

int
fn_conv_py_uuid_to_clr_guid_value(PyObject* obj, PyGuidArg* out)
{
    PyShRef type(import_uuid_type());
    if (!type)
        return 0;
    int is_uuid = PyObject_IsInstance(obj, type.get());
    if (is_uuid < 0)
        return 0;
    if (!is_uuid)
        return marshal_fail_typename(PyExc_TypeError, "can't build Guid from '%s'", obj);
    PyShRef bytes(PyObject_GetAttr(obj, PyWrpIdUuid_BytesLe));
    if (!bytes)
        return 0;
    if (!PyBytes_Check(bytes.get()) || PyBytes_GET_SIZE(bytes.get()) != sizeof out->bytes)
        return marshal_fail_typename(PyExc_TypeError, "can't build Guid from '%s'", obj);
    memcpy(out->bytes, PyBytes_AS_STRING(bytes.get()), sizeof out->bytes);
    return 1;
}

int
fn_read_py_guid(PyObject* obj, PyGuidArg* out)
{
    return fn_conv_py_uuid_to_clr_guid_value(obj, out);
}

PyObject*
fn_conv_clr_guid_to_py_uuid(const PyGuidArg* value)
{
    PyShRef type(import_uuid_type());
    if (!type)
        return nullptr;
    PyShRef bytes(PyBytes_FromStringAndSize(reinterpret_cast<const char*>(value->bytes), sizeof value->bytes));
    if (!bytes)
        return nullptr;
    PyObject* args[] = {bytes.get()};
    PyShRef kwnames(PyTuple_Pack(1, PyWrpIdUuid_BytesLe));
    if (!kwnames)
        return nullptr;
    return PyObject_Vectorcall(type.get(), args, 0, kwnames.get());
}

PyObject*
fn_write_py_guid(const PyGuidArg* value)
{
    return fn_conv_clr_guid_to_py_uuid(value);
}
