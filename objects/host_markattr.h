// Marker attributes in a bound type's own dictionary that tell the kinds of wrapper apart.
#pragma once

#include <Python.h>

// _quorix_clr_host = None: instances wrap managed reference-type objects. 1, or 0 if the store failed.
int fn_set_obj_type_host_markattr(PyTypeObject* type);
// _quorix_clr_host = Ellipsis: instances wrap boxed managed structures. 1, or 0 if the store failed.
int fn_set_stc_type_host_markattr(PyTypeObject* type);
// _qrxsc2p_handle = Ellipsis: instances carry their handle inline. The dictionary store's status.
int fn_set_fnlt_handle_markattr(PyTypeObject* type);
