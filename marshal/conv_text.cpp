#include "marshal/conv_text.h"

#include <cstring>
#include <new>
#include <stdexcept>

#include "module/ids.h"
#include "module/pysh_ref.h"

int
marshal_fail_unicode_kind(int kind)
{
    PyErr_Format(PyExc_TypeError, "unknown unicode encoding '%i'", kind);
    return 0;
}

int
marshal_fail_length32(Py_ssize_t length)
{
    return marshal_fail_size("the value of 'length' (%zi) is out of the INT32 range", length);
}

int
fn_read_py_string(PyObject* obj, PyStringArg* out)
{
    return fn_conv_py_string_to_clr_string_value(obj, out);
}

int
fn_conv_py_strorpath_to_clr_string(PyObject* obj, PyEphStrArg* out)
{
    out->keep_alive = nullptr;
    if (obj == Py_None || PyUnicode_Check(obj))
        return fn_conv_py_string_to_clr_string(obj, &out->str);
    PyObject* decoded = nullptr;
    if (!PyUnicode_FSDecoder(obj, &decoded))
        return 0;
    if (!fn_conv_py_string_to_clr_string_value(decoded, &out->str)) {
        Py_DECREF(decoded);
        return 0;
    }
    out->keep_alive = decoded;
    return 1;
}

int
fn_conv_py_string_to_clr_char(PyObject* obj, uint16_t* out)
{
    if (!PyUnicode_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, "can't build Char from '%s'", obj);
#if PY_VERSION_HEX < 0x030C0000
    if (PyUnicode_READY(obj) < 0)
        return marshal_fail_chained(PyExc_TypeError, "unicode object is not ready");
#endif
    PyShRef encoded(PyUnicode_AsUTF16String(obj));
    if (!encoded) {
        if (!PyErr_Occurred())
            marshal_fail_text(PyExc_TypeError, "cannot convert unicode object to byte string");
        return 0;
    }
    if (!PyBytes_Check(encoded.get()))
        return marshal_fail_typename_or_none(PyExc_TypeError,
                                             "converted string must be bytes-like object, not '%s'", obj);
    // The encoder writes a two-byte byte-order mark first, in native order.
    if (PyBytes_GET_SIZE(encoded.get()) != 4)
        return marshal_fail_text(PyExc_TypeError, "string must contain one UTF-16 code unit");
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(PyBytes_AS_STRING(encoded.get()));
    uint16_t unit;
    memcpy(&unit, bytes + 2, sizeof unit);
    *out = unit;
    return 1;
}

PyObject*
fn_conv_clr_char_to_py_string(uint16_t unit)
{
    const char bytes[2] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    int byteorder = -1;
    return PyUnicode_DecodeUTF16(bytes, 2, "", &byteorder);
}

PyObject*
fn_write_py_char(int32_t unit)
{
    return fn_conv_clr_char_to_py_string(static_cast<uint16_t>(unit & 0xFFFF));
}

PyObject*
fn_conv_clr_string_to_py_string_value(const char16_t* data, int32_t length)
{
    if (length < 0) {
        PyErr_BadInternalCall();
        return nullptr;
    }
    // Most managed strings hold no surrogate: build the compact str directly, which is what
    // decoding would give, without the codec machinery on this hot path.
    char16_t max_unit = 0;
    for (int32_t i = 0; i < length; ++i) {
        char16_t unit = data[i];
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            max_unit = 0xFFFF;
            break;
        }
        if (unit > max_unit)
            max_unit = unit;
    }
    if (max_unit != 0xFFFF || length == 0) {
        PyObject* text = PyUnicode_New(length, max_unit);
        if (text == nullptr)
            return nullptr;
        if (PyUnicode_KIND(text) == PyUnicode_1BYTE_KIND) {
            Py_UCS1* out = PyUnicode_1BYTE_DATA(text);
            for (int32_t i = 0; i < length; ++i)
                out[i] = static_cast<Py_UCS1>(data[i]);
        } else {
            memcpy(PyUnicode_2BYTE_DATA(text), data, 2 * static_cast<size_t>(length));
        }
        return text;
    }
    // Byte order fixed to little-endian, so a leading U+FEFF stays a character. The empty
    // error-handler name is deliberate: malformed input fails with the handler lookup error.
    int byteorder = -1;
    return PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(data), 2 * static_cast<Py_ssize_t>(length), "",
                                 &byteorder);
}

PyObject*
fn_conv_clr_string_to_py_string(const char16_t* data, int32_t length)
{
    if (length < 0)
        Py_RETURN_NONE;
    return fn_conv_clr_string_to_py_string_value(data, length);
}

PyObject*
fn_conv_clr_string_to_py_unraisable(const char16_t* data, int32_t length)
{
    PyObject* text = fn_conv_clr_string_to_py_string(data, length);
    if (text == nullptr)
        PyErr_WriteUnraisable(PyWrpIdTraceBack_FormatExceptionWarning);
    return text;
}

std::u16string*
fn_create_u16_buffer(const char16_t* data, int32_t count)
{
    if (count < 0 || (data == nullptr && count > 0))
        return nullptr;
    // Managed code is on the other side of this call: nothing may be thrown across it.
    try {
        return count == 0 ? new std::u16string() : new std::u16string(data, static_cast<size_t>(count));
    }
    catch (const std::exception&) {
        return nullptr;
    }
}
