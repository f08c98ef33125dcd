// Fixed-layout records that cross into managed code. The managed interop assembly declares
// the same structs (sequential layout); the sizes here and its size test keep both in step.
#pragma once

#include <Python.h>
#include <cstddef>
#include <cstdint>

// A Python str passed without copying: the interpreter's own compact storage.
struct PyStringArg {
    int32_t length;     // code points; -1 stands for a null managed string
    int32_t char_size;  // 1, 2 or 4: Latin-1, UCS-2 or UCS-4 storage
    const void* data;   // the str object's own character storage (borrowed)
};

// A string-or-path argument; keep_alive owns a str decoded from a path-like, or is null.
struct PyEphStrArg {
    PyStringArg str;
    PyObject* keep_alive;
};

// A contiguous byte buffer borrowed from a buffer exporter for the duration of one call.
struct PyBytesArg {
    int32_t acquired;   // 1 once `view` holds an acquired buffer: the caller must release it
    int32_t reserved;
    Py_buffer* view;    // caller-provided view storage
    const uint8_t* data;
    int64_t length;     // below 2^31
};

// A value whose managed type is not fixed by the signature: a managed GC handle (tag 0 or
// a wrapper's handle kind) or a borrowed Python object for the other tags.
struct VariantArg {
    int32_t tag;
    int32_t reserved;
    void* value;
};

enum VariantTag : int32_t {
    VariantTag_Handle = 0,
    VariantTag_Str = 2,
    VariantTag_Bytes = 3,
    VariantTag_Bool = 4,
    VariantTag_Int = 5,
    VariantTag_Float = 6,
    VariantTag_Decimal = 7,
    VariantTag_DecimalTuple = 8,
    VariantTag_DateTime = 9,
    VariantTag_Date = 10,
    VariantTag_Time = 11,
    VariantTag_TimeDelta = 12,
    VariantTag_Uuid = 13,
    VariantTag_List = 14,
    VariantTag_Tuple = 15,
    VariantTag_PyRef = 16,  // any other Python object, which managed code holds as itself
};

static_assert(sizeof(PyStringArg) == 16 && offsetof(PyStringArg, data) == 8, "PyStringArg layout");
static_assert(sizeof(PyEphStrArg) == 24 && offsetof(PyEphStrArg, keep_alive) == 16, "PyEphStrArg layout");
static_assert(sizeof(PyBytesArg) == 32 && offsetof(PyBytesArg, view) == 8 &&
              offsetof(PyBytesArg, data) == 16 && offsetof(PyBytesArg, length) == 24, "PyBytesArg layout");
static_assert(sizeof(VariantArg) == 16 && offsetof(VariantArg, value) == 8, "VariantArg layout");
static_assert(sizeof(Py_buffer) == 80, "the managed side sizes buffer views as 80 bytes");

// Managed DateTime / DateTimeOffset: ticks in bits 0-61, kind in bits 62-63 (0 unspecified,
// 1 UTC, 2 local), and the UTC offset in ticks for local values and every DateTimeOffset.
struct PyDateTimeArg {
    uint64_t ticks_and_kind;
    int64_t offset;
};

// Managed System.Decimal in its own memory order: flags (scale in bits 16-23, sign in bit 31),
// then the 96-bit mantissa as its high 32 bits and low 64 bits.
struct PyDecimalArg {
    int32_t flags;
    uint32_t hi32;
    uint64_t lo64;
};

// Managed System.Version: count 2..4 of the components major, minor, build, revision; -1 for null.
struct PySysVersionArg {
    int32_t count;
    int32_t parts[4];
};

// Managed System.Guid: 16 bytes in the managed in-memory order (uuid.UUID.bytes_le).
struct PyGuidArg {
    uint8_t bytes[16];
};

static_assert(sizeof(PyDateTimeArg) == 16, "PyDateTimeArg layout");
static_assert(sizeof(PyDecimalArg) == 16 && offsetof(PyDecimalArg, lo64) == 8, "PyDecimalArg layout");
static_assert(sizeof(PySysVersionArg) == 20, "PySysVersionArg layout");
static_assert(sizeof(PyGuidArg) == 16, "PyGuidArg layout");
