// Declarations shared by the files of quorix.pyhold.
#pragma once

#include <Python.h>

#include "siblings/pyhold/pyhold_capi.h"

extern PyTypeObject PySafeTargetHandle_Type;
extern PyTypeObject PyCastOpResult_Type;

// The capsule table's functions; contracts as in pyhold_capi.h.
PyObject* PyShCastOpResult_New(int code, PyObject* obj);
int PyShCastOpResult_IsType(PyObject* obj);
PyObject* PyShSafeTargetHandle_New(void* handle, PyTypeObject* type);
int PyShSafeTargetHandle_IsType(PyObject* obj);
void PyShSafeTargetHandle_SetReleaser(PyHoldReleaser release);
void PyShTargetHandle_Free(void* handle);
