#include "objects/host_markattr.h"

#include "module/ids.h"

static int set_marker(PyTypeObject* type, PyObject* name, PyObject* value) {
    return PyDict_SetItem(type->tp_dict, name, value);
}

int fn_set_obj_type_host_markattr(PyTypeObject* type) {
    return set_marker(type, PyWrpIdMarkattr_QuorixClrHost, Py_None) == 0 ? 1 : 0;
}

int fn_set_stc_type_host_markattr(PyTypeObject* type) {
    return set_marker(type, PyWrpIdMarkattr_QuorixClrHost, Py_Ellipsis) == 0 ? 1 : 0;
}

int fn_set_fnlt_handle_markattr(PyTypeObject* type) { return set_marker(type, PyWrpIdMarkattr_Handle, Py_Ellipsis); }
