#include "objects/enum_builder.h"

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/bound_class.h"

namespace {

[[gnu::cold, gnu::noinline]] PyObject* fail_store(const char* class_name, const char* member) {
    PyShlErr_TypeInitializationInternalError(-1020, class_name, member);
    return nullptr;
}

// New (name, value) pair, or NULL.
PyObject* member_pair(const PyShEnumMember& member) {
    PyObject* value = PyLong_FromString(member.value, nullptr, 10);
    if (value == nullptr)
        return nullptr;
    return Py_BuildValue("(sN)", member.name, value);
}

}  // namespace

PyObject* PyShEnum_Build(const char* name, const PyShEnumMember* members, Py_ssize_t count, bool is_flags,
                         const PyShEnumExtra* extras, Py_ssize_t extra_count) {
    PyShRef pairs(PyTuple_New(count));
    if (!pairs)
        return nullptr;
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyObject* pair = member_pair(members[i]);
        if (pair == nullptr)
            return nullptr;
        PyTuple_SET_ITEM(pairs.get(), i, pair);
    }
    PyShRef base(PyShImport_ImportType(PyWrpIdModuleName_Enum,
                                       is_flags ? PyWrpIdTypeName_IntFlag : PyWrpIdTypeName_IntEnum));
    if (!base)
        return nullptr;
    PyShRef cls(PyObject_CallFunction(base.get(), "sO", name, pairs.get()));
    if (!cls)
        return nullptr;
    PyTypeObject* type = reinterpret_cast<PyTypeObject*>(cls.get());
    for (Py_ssize_t i = 0; i < extra_count; ++i) {
        PyMethodDef* def = extras[i].def;
        PyShRef descr(extras[i].is_class_method ? PyDescr_NewClassMethod(type, def) : PyDescr_NewMethod(type, def));
        if (!descr)
            return nullptr;
        if (PyObject_SetAttrString(cls.get(), def->ml_name, descr.get()) < 0)
            return fail_store(name, def->ml_name);
    }
    return cls.release();
}

int PyShEnum_ConvPyToClr(PyObject* obj, PyObject* type, const char* name, int32_t* out) {
    if (type == nullptr || !PyObject_TypeCheck(obj, reinterpret_cast<PyTypeObject*>(type)))
        return PyShBound_FailConv(name, obj);
    long long value = PyLong_AsLongLong(obj);
    if (value == -1 && PyErr_Occurred())
        return 0;
    // Unsigned 32-bit flags (bit 31 set) cross as the same bit pattern.
    *out = static_cast<int32_t>(static_cast<uint32_t>(value));
    return 1;
}

PyObject* PyShEnum_FromPyLong(PyObject* type, PyObject* value) {
    if (value == nullptr)
        return nullptr;
    if (type == nullptr) {
        Py_DECREF(value);
        PyErr_SetString(PyExc_TypeError, "the enumeration type is not initialized");
        return nullptr;
    }
    PyObject* member = PyObject_CallOneArg(type, value);
    Py_DECREF(value);
    return member;
}

PyObject* PyShEnum_ConvClrToPy(PyObject* type, int32_t value, bool is_unsigned) {
    PyObject* number = is_unsigned ? PyLong_FromUnsignedLong(static_cast<uint32_t>(value)) : PyLong_FromLong(value);
    return PyShEnum_FromPyLong(type, number);
}
