// Access to the interpreter's datetime C interface ("datetime.datetime_CAPI").
#pragma once

#include <Python.h>
#include <datetime.h>

// datetime.h gives every translation unit its own PyDateTimeAPI pointer; this fills the
// unit's copy on first use. 1 once it is set, 0 with the import error.
static inline int
marshal_datetime_api()
{
    if (PyDateTimeAPI == nullptr)
        PyDateTime_IMPORT;
    return PyDateTimeAPI != nullptr;
}
