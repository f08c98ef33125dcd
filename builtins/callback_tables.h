// The callback functions and tables handed to managed code at start-up. The slot order of
// every table is the contract with the interop assembly: reorder nothing; new roles come as
// tables of their own after the existing ones.
#pragma once

#include <Python.h>
#include <cstdint>
#include <string>

#include "marshal/records.h"

// Single callbacks (handed over one by one, in this order, by initialize_clr_host).
// Raises RuntimeError "Proxy error(T): m"; consumes both references; returns NULL.
PyObject* on_clr_exception(PyObject* type_name, PyObject* message);
// 0 when a pending Python error was captured into *slot / *text, else -1; never leaves an error pending.
int fn_catch_and_clear_py_error(PyObject** slot, PyStringArg* text);
// Heap copy of UTF-16 text, owned by whoever receives it.
std::u16string* fn_create_u16_buffer(const char16_t* data, int32_t count);
// New str from little-endian UTF-16, or NULL.
PyObject* fn_conv_clr_string_to_py_string(const char16_t* data, int32_t length);
// New str, or NULL with the decoding error already reported as unraisable.
PyObject* fn_conv_clr_string_to_py_unraisable(const char16_t* data, int32_t length);
// New bytearray copy, or NULL.
PyObject* fn_conv_clr_bytes_to_py_bytes(const uint8_t* data, int32_t length);

// Tables of function pointers.
constexpr int kPyObjApiCallbacks = 4;
constexpr int kPyExceptionCallbacks = 2;
constexpr int kPyReadCallbacks = 11;
constexpr int kPyWriteCallbacks = 15;
constexpr int kPyBufferCallbacks = 4;
constexpr int kPyIterCallbacks = 1;
constexpr int kPyUcolCallbacks = 7;
constexpr int kPyOlistCallbacks = 7;
constexpr int kPyOseqCallbacks = 3;
constexpr int kPyRawIoCallbacks = 13;
constexpr int kPyTpFuncsCallbacks = 4;
constexpr int kPyListCallbacks = 4;
constexpr int kStatConceptTables = 10;
constexpr int kGenConceptTables = 42;
constexpr int kReglTpFunctions = 86;

extern void* const m_py_obj_api_callbacks[kPyObjApiCallbacks];
// Managed exceptions of bound types: the exception object builder, then its raiser (objects/clr_error.h).
extern void* const m_py_exception_callbacks[kPyExceptionCallbacks];
extern void* const m_py_read_callbacks[kPyReadCallbacks];
extern void* const m_py_write_callbacks[kPyWriteCallbacks];
extern void* const m_py_buffer_callbacks[kPyBufferCallbacks];
extern void* const m_py_iter_callbacks[kPyIterCallbacks];
extern void* const m_py_ucol_callbacks[kPyUcolCallbacks];
extern void* const m_py_olist_callbacks[kPyOlistCallbacks];
extern void* const m_py_oseq_callbacks[kPyOseqCallbacks];
extern void* const m_py_rawio_callbacks[kPyRawIoCallbacks];
extern void* const m_py_tpfuncs_callbacks[kPyTpFuncsCallbacks];
// Managed sequences handed back as new Python lists (marshal/sequences.h).
extern void* const m_py_pylist_callbacks[kPyListCallbacks];
// The ten tables above from read to pylist, in that order.
extern void* const m_all_statconceptp_pytocsfx[kStatConceptTables];
// One callback table per generic instantiation; filled by the generated bindings.
extern void* m_all_genconcptp_pytocsfx[kGenConceptTables];
// One reverse-call function per method of a Python-implementable interface; filled by the generated bindings.
extern void* m_all_regltp_pytocsfx[kReglTpFunctions];
