#include "objects/stream_arg.h"

#include <initializer_list>

#include "builtins/stream_wrapper.h"
#include "marshal/conv_errors.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_once.h"
#include "objects/handle_lookup.h"

namespace {

constexpr int32_t kTagPythonObject = 2;

// The file classes a Python stream argument may be, imported once; NULL entries are types
// that could not be imported (quorix.pyfund is optional).
struct FileTypes {
    PyObject* raw;
    PyObject* buffered;
    PyObject* bytes_as_stream;
};

PyObject* import_or_null(PyObject* module, PyObject* name) {
    PyObject* type = PyShImport_ImportType(module, name);
    if (type == nullptr)
        PyErr_Clear();
    return type;
}

// The references are kept for the life of the process.
FileTypes g_file_types = {};
PyShOnce g_file_types_once;

// The file classes, imported on first need; NULL with an error only if the imports raised
// something other than a missing module or type (they run Python code: see PyShOnce).
const FileTypes* file_types() {
    int rc = g_file_types_once.run([] {
        g_file_types = {
            import_or_null(PyWrpIdModuleName_Io, PyWrpIdTypeName_RawIOBase),
            import_or_null(PyWrpIdModuleName_Io, PyWrpIdTypeName_BufferedIOBase),
            import_or_null(PyWrpIdModuleName_QuorixPyFund, PyWrpIdTypeName_BytesAsStream),
        };
        return 0;
    });
    return rc < 0 ? nullptr : &g_file_types;
}

[[gnu::cold, gnu::noinline]] int fail_not_a_stream(PyObject* obj) {
    return marshal_fail_typename(PyExc_TypeError, "can't build Stream from '%s'", obj);
}

// 1 when `obj` is an instance of `type`, 0 if not (or no such type), -1 on error.
int is_instance(PyObject* obj, PyObject* type) {
    return type == nullptr ? 0 : PyObject_IsInstance(obj, type);
}

}  // namespace

int fn_conv_py_stream_to_clr_stream(PyObject* obj, VariantArg* out) {
    if (obj == Py_None) {
        out->tag = 0;
        out->value = nullptr;
        return 1;
    }
    void* handle = nullptr;
    if (fn_conv_py_obj_to_clr_refobj_not_null_handle(obj, &handle)) {
        // a wrapper of another type passes only when its managed object is a stream
        int accepted = PyObject_TypeCheck(obj, PyStreamWrapper_Type()) ? 1 : PyStreamWrapper_IsAssignable(handle);
        if (accepted < 0)
            return 0;
        if (!accepted)
            return fail_not_a_stream(obj);
        out->tag = 0;
        out->value = handle;
        return 1;
    }
    const FileTypes* types = file_types();
    if (types == nullptr)
        return 0;
    for (PyObject* type : {types->raw, types->buffered, types->bytes_as_stream}) {
        int found = is_instance(obj, type);
        if (found < 0)
            return 0;
        if (found) {
            out->tag = kTagPythonObject;
            out->value = obj;
            return 1;
        }
    }
    return fail_not_a_stream(obj);
}

int fn_conv_py_stream_to_clr_stream_not_none(PyObject* obj, VariantArg* out) {
    return obj == Py_None ? fail_not_a_stream(obj) : fn_conv_py_stream_to_clr_stream(obj, out);
}
