#include "builtins/callback_tables.h"

#include "builtins/py_callbacks.h"
#include "builtins/tpfuncs_callbacks.h"
#include "marshal/conv_bytes.h"
#include "marshal/conv_decimal.h"
#include "marshal/conv_guid.h"
#include "marshal/conv_scalar.h"
#include "marshal/conv_text.h"
#include "marshal/conv_time.h"
#include "marshal/conv_variant.h"
#include "marshal/conv_version.h"
#include "marshal/sequences.h"
#include "module/ids.h"
#include "module/pysh_lock.h"
#include "objects/clr_error.h"
#include "objects/exception_crossing.h"

// Managed code receives every callback as an untyped function pointer, entered with the
// interpreter lock held: a long managed call may have released it (module/pysh_lock.h).
#define entry(function) PyShLocked_Entry<function>()

void* const m_py_obj_api_callbacks[kPyObjApiCallbacks] = {
    entry(&fn_get_py_none),
    entry(&fn_xinc_ref),
    entry(&fn_xdec_ref),
    entry(&fn_intern_from_string),
};

void* const m_py_exception_callbacks[kPyExceptionCallbacks] = {
    entry(&fn_conv_clr_exception_to_py),
    entry(&on_clr_exception_object),
};

void* const m_py_tpfuncs_callbacks[kPyTpFuncsCallbacks] = {
    entry(&fn_gettpextrabind_of),
    entry(&fn_gettpextratie),
    entry(&fn_from_obj_and_pytype),
    entry(&fn_from_enum_and_pytype),
};

void* const m_py_pylist_callbacks[kPyListCallbacks] = {
    entry(&fn_clbk_pylist_begin),
    entry(&fn_clbk_pylist_put_object),
    entry(&fn_clbk_pylist_put_handle),
    entry(&fn_clbk_pylist_put_int),
};

void* const m_py_read_callbacks[kPyReadCallbacks] = {
    entry(&fn_read_py_string),
    entry(&fn_read_py_bool),
    entry(&fn_read_py_vers_long),
    entry(&fn_read_py_double),
    entry(&fn_read_py_decimal),
    entry(&fn_read_py_decimal_tuple),
    entry(&fn_read_py_vers_datetime),
    entry(&fn_read_py_vers_date),
    entry(&fn_read_py_vers_time),
    entry(&fn_read_py_datetimedelta),
    entry(&fn_read_py_guid),
};

void* const m_py_write_callbacks[kPyWriteCallbacks] = {
    entry(&fn_write_py_sysobj),
    entry(&fn_write_py_bool),
    entry(&fn_write_py_long),
    entry(&fn_write_py_ulong),
    entry(&fn_write_py_longlong),
    entry(&fn_write_py_ulonglong),
    entry(&fn_write_py_double),
    entry(&fn_write_py_decimal),
    entry(&fn_write_py_date_time),
    entry(&fn_write_py_date_time_offset),
    entry(&fn_write_py_datetimedelta),
    entry(&fn_write_py_timezone),
    entry(&fn_write_py_guid),
    entry(&fn_write_py_char),
    entry(&fn_write_py_sysversion),
};

void* const m_py_buffer_callbacks[kPyBufferCallbacks] = {
    entry(&fn_get_sizeof_py_byffer),
    entry(&fn_create_py_byffer),
    entry(&fn_read_py_buffer),
    entry(&fn_release_py_buffer),
};

void* const m_py_iter_callbacks[kPyIterCallbacks] = {
    entry(&fn_clbk_iter_next),
};

void* const m_py_ucol_callbacks[kPyUcolCallbacks] = {
    entry(&fn_clbk_ucol_list_length),
    entry(&fn_clbk_ucol_remove_at),
    entry(&fn_clbk_ucol_clear),
    entry(&fn_clbk_ucol_sequence_length),
    entry(&fn_clbk_ucol_get_enumerator),
    entry(&fn_clbk_ucol_object_length),
    entry(&fn_clbk_ucol_get_unicode_bytes),
};

void* const m_py_olist_callbacks[kPyOlistCallbacks] = {
    entry(&fn_clbk_olist_get_item),
    entry(&fn_clbk_olist_set_item),
    entry(&fn_clbk_olist_add),
    entry(&fn_clbk_olist_insert),
    entry(&fn_clbk_olist_remove),
    entry(&fn_clbk_olist_contains),
    entry(&fn_clbk_olist_index_of),
};

void* const m_py_oseq_callbacks[kPyOseqCallbacks] = {
    entry(&fn_clbk_oseq_get_item),
    entry(&fn_clbk_oseq_contains),
    entry(&fn_clbk_oseq_index_of),
};

void* const m_py_rawio_callbacks[kPyRawIoCallbacks] = {
    entry(&fn_clbk_rawio_write),
    entry(&fn_clbk_rawio_write_byte),
    entry(&fn_clbk_rawio_read),
    entry(&fn_clbk_rawio_readbyte),
    entry(&fn_clbk_rawio_seek),
    entry(&fn_clbk_rawio_truncate),
    entry(&fn_clbk_rawio_flush),
    entry(&fn_clbk_rawio_close),
    entry(&fn_clbk_rawio_readable),
    entry(&fn_clbk_rawio_writable),
    entry(&fn_clbk_rawio_seekable),
    entry(&fn_clbk_rawio_tell),
    entry(&fn_clbk_rawio_length),
};

void* const m_all_statconceptp_pytocsfx[kStatConceptTables] = {
    const_cast<void**>(m_py_read_callbacks),
    const_cast<void**>(m_py_write_callbacks),
    const_cast<void**>(m_py_buffer_callbacks),
    const_cast<void**>(m_py_iter_callbacks),
    const_cast<void**>(m_py_ucol_callbacks),
    const_cast<void**>(m_py_olist_callbacks),
    const_cast<void**>(m_py_oseq_callbacks),
    const_cast<void**>(m_py_rawio_callbacks),
    const_cast<void**>(m_py_tpfuncs_callbacks),
    const_cast<void**>(m_py_pylist_callbacks),
};

void* m_all_genconcptp_pytocsfx[kGenConceptTables] = {};

void* m_all_regltp_pytocsfx[kReglTpFunctions] = {};

#undef entry
