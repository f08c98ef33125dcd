// Argument and result forms of the generated bindings beyond plain scalars and handles:
// nullable values, values returned as Python objects or handles (System.Object results), and
// ref/out parameters whose value after the call goes back into the caller's list.
#pragma once

#include <Python.h>
#include <cstdint>
#include <initializer_list>

#include "marshal/conv_regex.h"
#include "marshal/records.h"

// A Nullable<T>: has_value 0 stands for None. Same layout as the managed PyOptional<T>.
template <typename T>
struct PyOptional {
    int32_t has_value;
    int32_t reserved;
    T value;
};

// O& conversion of a nullable parameter: None gives no value, anything else goes through
// the value's own converter. 1, or 0 with that converter's error.
template <typename T, int (*Convert)(PyObject*, T*)>
int PyShOptional_Conv(PyObject* obj, PyOptional<T>* out) {
    out->has_value = obj != Py_None;
    return obj == Py_None ? 1 : Convert(obj, &out->value);
}

// The Python value of a System.Object result (consumed): a Python object the stub built is
// returned, a handle wrapped as quorix.pyintro.Object; NULL when the stub raised or the
// wrapping failed (whatever the record held is released).
PyObject* PyShBound_ObjectResult(VariantArg& value);
// Releases what such a record holds, unconverted: a Python object or a handle.
void PyShBound_ReleaseObjectRecord(VariantArg& value);

// How the value of one by-reference parameter becomes Python after the call.
enum PyShOutForm : int32_t {
    PyShOutForm_Value = 0,   // a finished Python value (scalars, strings, dates, ...)
    PyShOutForm_Bound = 1,   // a handle wrapped as `type`
    PyShOutForm_Enum = 2,    // an int turned into a member of `*enum_type`
    PyShOutForm_Object = 3,  // a System.Object: Python value or a quorix.pyintro.Object wrapper
};

// The value of one ref/out parameter between the managed call and the caller's list. What
// the stub left in the record is released unless it was delivered.
class PyShOutValue {
public:
    explicit PyShOutValue(PyObject* list, PyShOutForm form = PyShOutForm_Value, PyTypeObject* type = nullptr,
                          int32_t kind = 0, PyObject* const* enum_type = nullptr)
        : list_(list), form_(form), type_(type), kind_(kind), enum_type_(enum_type) {}
    PyShOutValue(const PyShOutValue&) = delete;
    PyShOutValue& operator=(const PyShOutValue&) = delete;
    ~PyShOutValue() { drop(); }

    // Where the stub writes the value after the call.
    VariantArg* record() { return &value_; }
    // Stores the value as item 0 of the list (or its only item): 0, or -1 with an error.
    int deliver();

private:
    void drop();

    PyObject* list_;  // borrowed from the caller's arguments
    PyShOutForm form_;
    PyTypeObject* type_;
    int32_t kind_;
    PyObject* const* enum_type_;
    VariantArg value_ = {};
};

// `result` (a new reference, or NULL) once every out-value reached its list; NULL when the
// result was NULL or a delivery failed (the result released).
PyObject* PyShBound_DeliverOuts(PyObject* result, std::initializer_list<PyShOutValue*> outs);

// A Regex argument; the pattern text it lends is released on exit.
struct PyShRegexHolder {
    PyRegexArg arg = {};
    PyShRegexHolder() = default;
    PyShRegexHolder(const PyShRegexHolder&) = delete;
    PyShRegexHolder& operator=(const PyShRegexHolder&) = delete;
    ~PyShRegexHolder() { Py_XDECREF(arg.keep_alive); }
    PyRegexArg* get() { return &arg; }
};
