// The fixed table of interned identifiers and the small reference companions.
#include "module/ids.h"

PyObject* fn_intern_from_string(const char* text) {
    return PyUnicode_InternFromString(text);
}

void fn_xinc_ref(PyObject* obj) {
    Py_XINCREF(obj);
}

void fn_xdec_ref(PyObject* obj) {
    Py_XDECREF(obj);
}

PyObject* fn_get_py_none() {
    Py_RETURN_NONE;
}

PyObject* fn_py_return_none(PyObject* /*self*/, PyObject* /*unused*/) {
    Py_RETURN_NONE;
}

PyObject* PyWrpIdStr_Empty = NULL;

PyObject* PyWrpIdRawIo_Write = NULL;
PyObject* PyWrpIdRawIo_ReadInto = NULL;
PyObject* PyWrpIdRawIo_Seek = NULL;
PyObject* PyWrpIdRawIo_Flush = NULL;
PyObject* PyWrpIdRawIo_Close = NULL;
PyObject* PyWrpIdRawIo_Closed = NULL;
PyObject* PyWrpIdRawIo_Readable = NULL;
PyObject* PyWrpIdRawIo_Writable = NULL;
PyObject* PyWrpIdRawIo_Seekable = NULL;
PyObject* PyWrpIdRawIo_Tell = NULL;
PyObject* PyWrpIdRawIo_Truncate = NULL;

PyObject* PyWrpIdMarkattr_QuorixClrHost = NULL;
PyObject* PyWrpIdMarkattr_QuorixClrCastableObj = NULL;
PyObject* PyWrpIdMarkattr_Handle = NULL;

PyObject* PyWrpIdTypeName_EnumType = NULL;
PyObject* PyWrpIdTypeName_IntEnum = NULL;
PyObject* PyWrpIdTypeName_IntFlag = NULL;
PyObject* PyWrpIdTypeName_Uuid = NULL;
PyObject* PyWrpIdTypeName_Decimal = NULL;
PyObject* PyWrpIdTypeName_DecimalTuple = NULL;
PyObject* PyWrpIdTypeName_RawIOBase = NULL;
PyObject* PyWrpIdTypeName_BufferedIOBase = NULL;
PyObject* PyWrpIdTypeName_BytesAsStream = NULL;
PyObject* PyWrpIdTypeName_DateTime = NULL;
PyObject* PyWrpIdTypeName_TimeZone = NULL;
PyObject* PyWrpIdTypeName_PurePath = NULL;

PyObject* PyWrpIdUuid_BytesLe = NULL;

PyObject* PyWrpIdDecimal_Exponent = NULL;
PyObject* PyWrpIdDecimal_Sign = NULL;
PyObject* PyWrpIdDecimal_Digits = NULL;
PyObject* PyWrpIdDecimal_AsTuple = NULL;

PyObject* PyWrpIdDateTime_Tzinfo = NULL;
PyObject* PyWrpIdDateTime_UtcOffset = NULL;
PyObject* PyWrpIdDateTime_Utc = NULL;

PyObject* PyWrpIdList_Extend = NULL;
PyObject* PyWrpIdList_Pop = NULL;
PyObject* PyWrpIdList_Clear = NULL;
PyObject* PyWrpIdList_Remove = NULL;
PyObject* PyWrpIdList_Index = NULL;

PyObject* PyWrpIdOsPath_DirName = NULL;
PyObject* PyWrpIdOsPath_Join = NULL;

PyObject* PyWrpIdTraceBack_FormatException = NULL;
PyObject* PyWrpIdTraceBack_FormatExceptionOnly = NULL;
PyObject* PyWrpIdTraceBack_FormatExceptionWarning = NULL;
PyObject* PyWrpIdTraceBack_Unknown = NULL;

PyObject* PyWrpIdType_Qualname = NULL;

PyObject* PyWrpIdWeakref_Finalize = NULL;

PyObject* PyWrpIdOwn_Version = NULL;
PyObject* PyWrpIdOwn_BackwardCompatibilityThreshold = NULL;

PyObject* PyWrpIdCastMeth_TypeOf = NULL;
PyObject* PyWrpIdCastMeth_AsUniEnum = NULL;
PyObject* PyWrpIdCastMeth_AssertTp = NULL;
PyObject* PyWrpIdCastMeth_GetTpExtraBind = NULL;
PyObject* PyWrpIdCastMeth_GetTpExtraTie = NULL;

PyObject* PyWrpIdModuleName_Enum = NULL;
PyObject* PyWrpIdModuleName_Uuid = NULL;
PyObject* PyWrpIdModuleName_Decimal = NULL;
PyObject* PyWrpIdModuleName_Io = NULL;
PyObject* PyWrpIdModuleName_DateTime = NULL;
PyObject* PyWrpIdModuleName_PathLib = NULL;
PyObject* PyWrpIdModuleName_QuorixPyFund = NULL;
PyObject* PyWrpIdModuleName_Weakref = NULL;
PyObject* PyWrpIdModuleName_Builtins = NULL;
PyObject* PyWrpIdModuleName_OsPath = NULL;

PyObject* PyWrpIdFuncName_Super = NULL;

PyObject* PyWrpIdObject_Repr = NULL;
PyObject* PyWrpIdObject_Hash = NULL;
PyObject* PyWrpIdObject_LT = NULL;
PyObject* PyWrpIdObject_LE = NULL;
PyObject* PyWrpIdObject_EQ = NULL;
PyObject* PyWrpIdObject_NE = NULL;
PyObject* PyWrpIdObject_GT = NULL;
PyObject* PyWrpIdObject_GE = NULL;
PyObject* PyWrpIdObject_Init = NULL;

void fn_intern_static_ucso() {
    PyWrpIdStr_Empty                          = fn_intern_from_string("");
    PyWrpIdRawIo_Write                        = fn_intern_from_string("write");
    PyWrpIdRawIo_ReadInto                     = fn_intern_from_string("readinto");
    PyWrpIdRawIo_Seek                         = fn_intern_from_string("seek");
    PyWrpIdRawIo_Flush                        = fn_intern_from_string("flush");
    PyWrpIdRawIo_Close                        = fn_intern_from_string("close");
    PyWrpIdRawIo_Closed                       = fn_intern_from_string("closed");
    PyWrpIdRawIo_Readable                     = fn_intern_from_string("readable");
    PyWrpIdRawIo_Writable                     = fn_intern_from_string("writable");
    PyWrpIdRawIo_Seekable                     = fn_intern_from_string("seekable");
    PyWrpIdRawIo_Tell                         = fn_intern_from_string("tell");
    PyWrpIdRawIo_Truncate                     = fn_intern_from_string("truncate");
    PyWrpIdMarkattr_QuorixClrHost             = fn_intern_from_string("_quorix_clr_host");
    PyWrpIdMarkattr_QuorixClrCastableObj      = fn_intern_from_string("_quorix_clr_castable_obj");
    PyWrpIdTypeName_EnumType                  = fn_intern_from_string("EnumType");
    PyWrpIdTypeName_IntEnum                   = fn_intern_from_string("IntEnum");
    PyWrpIdTypeName_IntFlag                   = fn_intern_from_string("IntFlag");
    PyWrpIdTypeName_Uuid                      = fn_intern_from_string("UUID");
    PyWrpIdTypeName_Decimal                   = fn_intern_from_string("Decimal");
    PyWrpIdTypeName_DecimalTuple              = fn_intern_from_string("DecimalTuple");
    PyWrpIdTypeName_RawIOBase                 = fn_intern_from_string("RawIOBase");
    PyWrpIdTypeName_BufferedIOBase            = fn_intern_from_string("BufferedIOBase");
    PyWrpIdTypeName_BytesAsStream             = fn_intern_from_string("BytesAsStream");
    PyWrpIdTypeName_DateTime                  = fn_intern_from_string("datetime");
    PyWrpIdTypeName_TimeZone                  = fn_intern_from_string("timezone");
    PyWrpIdUuid_BytesLe                       = fn_intern_from_string("bytes_le");
    PyWrpIdDecimal_Exponent                   = fn_intern_from_string("exponent");
    PyWrpIdDecimal_Sign                       = fn_intern_from_string("sign");
    PyWrpIdDecimal_Digits                     = fn_intern_from_string("digits");
    PyWrpIdDecimal_AsTuple                    = fn_intern_from_string("as_tuple");
    PyWrpIdDateTime_Tzinfo                    = fn_intern_from_string("tzinfo");
    PyWrpIdDateTime_UtcOffset                 = fn_intern_from_string("utcoffset");
    PyWrpIdDateTime_Utc                       = fn_intern_from_string("utc");
    PyWrpIdList_Extend                        = fn_intern_from_string("extend");
    PyWrpIdList_Pop                           = fn_intern_from_string("pop");
    PyWrpIdList_Clear                         = fn_intern_from_string("clear");
    PyWrpIdList_Remove                        = fn_intern_from_string("remove");
    PyWrpIdList_Index                         = fn_intern_from_string("index");
    PyWrpIdOsPath_DirName                     = fn_intern_from_string("dirname");
    PyWrpIdOsPath_Join                        = fn_intern_from_string("join");
    PyWrpIdTraceBack_FormatException          = fn_intern_from_string("format_exception");
    PyWrpIdTraceBack_FormatExceptionOnly      = fn_intern_from_string("format_exception_only");
    PyWrpIdTraceBack_FormatExceptionWarning   = fn_intern_from_string("FormatCallbackException");
    PyWrpIdTraceBack_Unknown                  = fn_intern_from_string("<unknown>");
    PyWrpIdType_Qualname                      = fn_intern_from_string("__qualname__");
    PyWrpIdWeakref_Finalize                   = fn_intern_from_string("finalize");
    PyWrpIdOwn_Version                        = fn_intern_from_string("VERSION");
    PyWrpIdOwn_BackwardCompatibilityThreshold = fn_intern_from_string("_BACKWARD_COMPATIBILITY_THRESHOLD");
    PyWrpIdCastMeth_TypeOf                    = fn_intern_from_string("_type_of");
    PyWrpIdCastMeth_AsUniEnum                 = fn_intern_from_string("_as_uni_enum");
    PyWrpIdTypeName_PurePath                  = fn_intern_from_string("PurePath");
    PyWrpIdCastMeth_AssertTp                  = fn_intern_from_string("_qrxsc2p_asserttp");
    PyWrpIdCastMeth_GetTpExtraBind            = fn_intern_from_string("_qrxsc2p_gettpextrabind");
    PyWrpIdCastMeth_GetTpExtraTie             = fn_intern_from_string("_qrxsc2p_gettpextratie");
    PyWrpIdMarkattr_Handle                    = fn_intern_from_string("_qrxsc2p_handle");
    PyWrpIdModuleName_Enum                    = fn_intern_from_string("enum");
    PyWrpIdModuleName_Uuid                    = fn_intern_from_string("uuid");
    PyWrpIdModuleName_Decimal                 = fn_intern_from_string("decimal");
    PyWrpIdModuleName_Io                      = fn_intern_from_string("io");
    PyWrpIdModuleName_DateTime                = fn_intern_from_string("datetime");
    PyWrpIdModuleName_PathLib                 = fn_intern_from_string("pathlib");
    PyWrpIdModuleName_QuorixPyFund            = fn_intern_from_string("quorix.pyfund");
    PyWrpIdModuleName_Weakref                 = fn_intern_from_string("weakref");
    PyWrpIdFuncName_Super                     = fn_intern_from_string("super");
    PyWrpIdModuleName_Builtins                = fn_intern_from_string("builtins");
    PyWrpIdObject_Repr                        = fn_intern_from_string("__repr__");
    PyWrpIdObject_Hash                        = fn_intern_from_string("__hash__");
    PyWrpIdObject_LT                          = fn_intern_from_string("__lt__");
    PyWrpIdObject_LE                          = fn_intern_from_string("__le__");
    PyWrpIdObject_EQ                          = fn_intern_from_string("__eq__");
    PyWrpIdObject_NE                          = fn_intern_from_string("__ne__");
    PyWrpIdObject_GT                          = fn_intern_from_string("__gt__");
    PyWrpIdObject_GE                          = fn_intern_from_string("__ge__");
    PyWrpIdObject_Init                        = fn_intern_from_string("__init__");
    PyWrpIdModuleName_OsPath                  = fn_intern_from_string("os.path");
}
