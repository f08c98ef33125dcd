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

// Tables of function pointers, expanded from builtins/callback_tables.def, where their slot
// order is written once for both sides.
#include "builtins/callback_tables.def"

#define QRX_COUNT_SLOT(name, function) +1
#define QRX_DECLARE_CALLBACK_TABLE(name, array, SLOTS) \
    constexpr int k##name##Callbacks = 0 SLOTS(QRX_COUNT_SLOT); \
    extern void* const array[k##name##Callbacks];
QRX_STATIC_CALLBACK_TABLES(QRX_DECLARE_CALLBACK_TABLE)
QRX_SINGLE_CALLBACK_TABLES(QRX_DECLARE_CALLBACK_TABLE)
#undef QRX_DECLARE_CALLBACK_TABLE

#define QRX_COUNT_TABLE(name, array, SLOTS) +1
constexpr int kStatConceptTables = 0 QRX_STATIC_CALLBACK_TABLES(QRX_COUNT_TABLE);
#undef QRX_COUNT_TABLE
#undef QRX_COUNT_SLOT

constexpr int kGenConceptTables = 42;
constexpr int kReglTpFunctions = 86;

// The static tables, in the order of the list.
extern void* const m_all_statconceptp_pytocsfx[kStatConceptTables];
// One callback table per generic instantiation; filled by the generated bindings.
extern void* m_all_genconcptp_pytocsfx[kGenConceptTables];
// One reverse-call function per method of a Python-implementable interface; filled by the generated bindings.
extern void* m_all_regltp_pytocsfx[kReglTpFunctions];
