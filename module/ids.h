// Interned identifier strings: every attribute, method, module and type name the runtime looks
// up in Python, created once at module start so lookups never build a string per call.
// Each global holds a strong reference to an interned str that lives until the process ends;
// all are NULL until fn_intern_static_ucso / wrpPyj_mlof_FFFFFF_dynamic_ucso have run.
#pragma once

#include <Python.h>

// ---- fixed identifiers: the runtime's own names (built by fn_intern_static_ucso)
extern PyObject* PyWrpIdStr_Empty;

extern PyObject* PyWrpIdRawIo_Write;
extern PyObject* PyWrpIdRawIo_ReadInto;
extern PyObject* PyWrpIdRawIo_Seek;
extern PyObject* PyWrpIdRawIo_Flush;
extern PyObject* PyWrpIdRawIo_Close;
extern PyObject* PyWrpIdRawIo_Closed;
extern PyObject* PyWrpIdRawIo_Readable;
extern PyObject* PyWrpIdRawIo_Writable;
extern PyObject* PyWrpIdRawIo_Seekable;
extern PyObject* PyWrpIdRawIo_Tell;
extern PyObject* PyWrpIdRawIo_Truncate;

extern PyObject* PyWrpIdMarkattr_QuorixClrHost;
extern PyObject* PyWrpIdMarkattr_QuorixClrCastableObj;
extern PyObject* PyWrpIdMarkattr_Handle;

extern PyObject* PyWrpIdTypeName_EnumType;
extern PyObject* PyWrpIdTypeName_IntEnum;
extern PyObject* PyWrpIdTypeName_IntFlag;
extern PyObject* PyWrpIdTypeName_Uuid;
extern PyObject* PyWrpIdTypeName_Decimal;
extern PyObject* PyWrpIdTypeName_DecimalTuple;
extern PyObject* PyWrpIdTypeName_RawIOBase;
extern PyObject* PyWrpIdTypeName_BufferedIOBase;
extern PyObject* PyWrpIdTypeName_BytesAsStream;
extern PyObject* PyWrpIdTypeName_DateTime;
extern PyObject* PyWrpIdTypeName_TimeZone;
extern PyObject* PyWrpIdTypeName_PurePath;

extern PyObject* PyWrpIdUuid_BytesLe;

extern PyObject* PyWrpIdDecimal_Exponent;
extern PyObject* PyWrpIdDecimal_Sign;
extern PyObject* PyWrpIdDecimal_Digits;
extern PyObject* PyWrpIdDecimal_AsTuple;

extern PyObject* PyWrpIdDateTime_Tzinfo;
extern PyObject* PyWrpIdDateTime_UtcOffset;
extern PyObject* PyWrpIdDateTime_Utc;

extern PyObject* PyWrpIdList_Extend;
extern PyObject* PyWrpIdList_Pop;
extern PyObject* PyWrpIdList_Clear;
extern PyObject* PyWrpIdList_Remove;
extern PyObject* PyWrpIdList_Index;

extern PyObject* PyWrpIdOsPath_DirName;
extern PyObject* PyWrpIdOsPath_Join;

extern PyObject* PyWrpIdTraceBack_FormatException;
extern PyObject* PyWrpIdTraceBack_FormatExceptionOnly;
extern PyObject* PyWrpIdTraceBack_FormatExceptionWarning;
extern PyObject* PyWrpIdTraceBack_Unknown;

extern PyObject* PyWrpIdType_Qualname;

extern PyObject* PyWrpIdWeakref_Finalize;

extern PyObject* PyWrpIdOwn_Version;
extern PyObject* PyWrpIdOwn_BackwardCompatibilityThreshold;

extern PyObject* PyWrpIdCastMeth_TypeOf;
extern PyObject* PyWrpIdCastMeth_AsUniEnum;
extern PyObject* PyWrpIdCastMeth_AssertTp;
extern PyObject* PyWrpIdCastMeth_GetTpExtraBind;
extern PyObject* PyWrpIdCastMeth_GetTpExtraTie;

extern PyObject* PyWrpIdModuleName_Enum;
extern PyObject* PyWrpIdModuleName_Uuid;
extern PyObject* PyWrpIdModuleName_Decimal;
extern PyObject* PyWrpIdModuleName_Io;
extern PyObject* PyWrpIdModuleName_DateTime;
extern PyObject* PyWrpIdModuleName_PathLib;
extern PyObject* PyWrpIdModuleName_QuorixPyFund;
extern PyObject* PyWrpIdModuleName_Weakref;
extern PyObject* PyWrpIdModuleName_Builtins;
extern PyObject* PyWrpIdModuleName_OsPath;

extern PyObject* PyWrpIdFuncName_Super;

extern PyObject* PyWrpIdObject_Repr;
extern PyObject* PyWrpIdObject_Hash;
extern PyObject* PyWrpIdObject_LT;
extern PyObject* PyWrpIdObject_LE;
extern PyObject* PyWrpIdObject_EQ;
extern PyObject* PyWrpIdObject_NE;
extern PyObject* PyWrpIdObject_GT;
extern PyObject* PyWrpIdObject_GE;
extern PyObject* PyWrpIdObject_Init;

// ---- generated identifiers: names the class bindings need (built by
// wrpPyj_mlof_FFFFFF_dynamic_ucso). The suffix is the 32-bit FNV-1a hash of the UTF-8 text.
extern PyObject* PyWrpIdUcsO_DAA68086;  // "quorix.pyintro"
extern PyObject* PyWrpIdUcsO_9E40A91F;  // "quorix.pygfx"
extern PyObject* PyWrpIdUcsO_494CB7C9;  // "quorix.pyhold"
extern PyObject* PyWrpIdUcsO_D155D06D;  // "Type"
extern PyObject* PyWrpIdUcsO_E5B43CF8;  // "Color"
extern PyObject* PyWrpIdUcsO_E58E64DA;  // "Object"
extern PyObject* PyWrpIdUcsO_E84DDA20;  // "Enum"
extern PyObject* PyWrpIdUcsO_98D551B8;  // "RectangleF"
extern PyObject* PyWrpIdUcsO_A6478E7C;  // "Size"
extern PyObject* PyWrpIdUcsO_16FD5A2E;  // "Rectangle"
extern PyObject* PyWrpIdUcsO_FCA4E54E;  // "SizeF"
extern PyObject* PyWrpIdUcsO_DEF0F855;  // "PointF"
extern PyObject* PyWrpIdUcsO_EAA8EF31;  // "Point"
extern PyObject* PyWrpIdUcsO_6239B678;  // "convert"
extern PyObject* PyWrpIdUcsO_5365B73F;  // "convert_to_images"
extern PyObject* PyWrpIdUcsO_B9764627;  // "merge"
extern PyObject* PyWrpIdUcsO_E60759E9;  // "load"
extern PyObject* PyWrpIdUcsO_069982E1;  // "append"
extern PyObject* PyWrpIdUcsO_CCFF7E48;  // "save"
extern PyObject* PyWrpIdUcsO_BBB3F083;  // "to_pages"
extern PyObject* PyWrpIdUcsO_95973D36;  // "set_text_watermark"
extern PyObject* PyWrpIdUcsO_A07A6990;  // "set_image_watermark"
extern PyObject* PyWrpIdUcsO_A932E2B8;  // "to_document"
extern PyObject* PyWrpIdUcsO_CEDFA3C5;  // "read"
extern PyObject* PyWrpIdUcsO_B994014F;  // "request_dictionary"
extern PyObject* PyWrpIdUcsO_164465E7;  // "should_skip_index"
extern PyObject* PyWrpIdUcsO_56C9D9B1;  // "node_inserting"
extern PyObject* PyWrpIdUcsO_70C946C6;  // "node_inserted"
extern PyObject* PyWrpIdUcsO_00837015;  // "node_removing"
extern PyObject* PyWrpIdUcsO_D91BDA02;  // "node_removed"
extern PyObject* PyWrpIdUcsO_A8CF4B37;  // "is_match"
extern PyObject* PyWrpIdUcsO_792112EF;  // "warning"
extern PyObject* PyWrpIdUcsO_02BB1FE0;  // "explosion"
extern PyObject* PyWrpIdUcsO_FB404229;  // "invert_if_negative"
extern PyObject* PyWrpIdUcsO_B7F83197;  // "marker"
extern PyObject* PyWrpIdUcsO_F1942F47;  // "bubble_3d"
extern PyObject* PyWrpIdUcsO_EEBE5DDE;  // "get_barcode_image"
extern PyObject* PyWrpIdUcsO_DAA3B248;  // "get_old_barcode_image"
extern PyObject* PyWrpIdUcsO_CC21FAED;  // "get_style"
extern PyObject* PyWrpIdUcsO_ACE4360A;  // "evaluate"
extern PyObject* PyWrpIdUcsO_ED168A78;  // "get_query_result"
extern PyObject* PyWrpIdUcsO_A0428D8A;  // "format_numeric"
extern PyObject* PyWrpIdUcsO_E345DB05;  // "format_date_time"
extern PyObject* PyWrpIdUcsO_B99D8552;  // "format"
extern PyObject* PyWrpIdUcsO_27765D9A;  // "field_updating"
extern PyObject* PyWrpIdUcsO_474188B7;  // "field_updated"
extern PyObject* PyWrpIdUcsO_A06D7E3C;  // "notify"
extern PyObject* PyWrpIdUcsO_098B3B26;  // "respond"
extern PyObject* PyWrpIdUcsO_3D8B3072;  // "resource_loading"
extern PyObject* PyWrpIdUcsO_987D85F7;  // "field_merging"
extern PyObject* PyWrpIdUcsO_AE146625;  // "image_field_merging"
extern PyObject* PyWrpIdUcsO_D579D31D;  // "tags_replaced"
extern PyObject* PyWrpIdUcsO_87D4223C;  // "move_next"
extern PyObject* PyWrpIdUcsO_E5253229;  // "get_value"
extern PyObject* PyWrpIdUcsO_5F76F569;  // "get_child_data_source"
extern PyObject* PyWrpIdUcsO_43B48003;  // "table_name"
extern PyObject* PyWrpIdUcsO_7BBAA510;  // "get_data_source"
extern PyObject* PyWrpIdUcsO_5CF7CE8F;  // "remove_self_only"
extern PyObject* PyWrpIdUcsO_DFB304C0;  // "get_child_nodes"
extern PyObject* PyWrpIdUcsO_2F918A1F;  // "is_multi_section"
extern PyObject* PyWrpIdUcsO_B1C14E0D;  // "node"
extern PyObject* PyWrpIdUcsO_37386AE0;  // "id"
extern PyObject* PyWrpIdUcsO_95F72993;  // "tag"
extern PyObject* PyWrpIdUcsO_9865B509;  // "title"
extern PyObject* PyWrpIdUcsO_7D0B279A;  // "placeholder"
extern PyObject* PyWrpIdUcsO_E1287F1C;  // "placeholder_name"
extern PyObject* PyWrpIdUcsO_EE11C37F;  // "appearance"
extern PyObject* PyWrpIdUcsO_3A7AC0CB;  // "is_showing_placeholder_text"
extern PyObject* PyWrpIdUcsO_9B99E7DD;  // "level"
extern PyObject* PyWrpIdUcsO_3665B1EF;  // "sdt_type"
extern PyObject* PyWrpIdUcsO_4FDA9F46;  // "lock_content_control"
extern PyObject* PyWrpIdUcsO_CB0BD9F9;  // "lock_contents"
extern PyObject* PyWrpIdUcsO_3D7E6258;  // "color"
extern PyObject* PyWrpIdUcsO_6B5E750F;  // "xml_mapping"
extern PyObject* PyWrpIdUcsO_0F734C90;  // "word_open_xml"
extern PyObject* PyWrpIdUcsO_AB1D75E4;  // "replacing"
extern PyObject* PyWrpIdUcsO_DCA9998B;  // "css_saving"
extern PyObject* PyWrpIdUcsO_F332ED13;  // "document_part_saving"
extern PyObject* PyWrpIdUcsO_0FD8209B;  // "font_saving"
extern PyObject* PyWrpIdUcsO_0D685A0D;  // "image_saving"
extern PyObject* PyWrpIdUcsO_FF7D6251;  // "page_saving"
extern PyObject* PyWrpIdUcsO_766FA71C;  // "resource_saving"
extern PyObject* PyWrpIdUcsO_F3219B45;  // "get_text_shaper"

// Readable spellings of the generated identifiers for hand-written code: the tail is the text
// itself ('.' written as '_'), under Module_, Type_ (sibling types) or Name_ (members).
#define PyWrpIdUcsO_Module_quorix_pyintro            PyWrpIdUcsO_DAA68086
#define PyWrpIdUcsO_Module_quorix_pygfx              PyWrpIdUcsO_9E40A91F
#define PyWrpIdUcsO_Module_quorix_pyhold             PyWrpIdUcsO_494CB7C9
#define PyWrpIdUcsO_Type_Type                        PyWrpIdUcsO_D155D06D
#define PyWrpIdUcsO_Type_Color                       PyWrpIdUcsO_E5B43CF8
#define PyWrpIdUcsO_Type_Object                      PyWrpIdUcsO_E58E64DA
#define PyWrpIdUcsO_Type_Enum                        PyWrpIdUcsO_E84DDA20
#define PyWrpIdUcsO_Type_RectangleF                  PyWrpIdUcsO_98D551B8
#define PyWrpIdUcsO_Type_Size                        PyWrpIdUcsO_A6478E7C
#define PyWrpIdUcsO_Type_Rectangle                   PyWrpIdUcsO_16FD5A2E
#define PyWrpIdUcsO_Type_SizeF                       PyWrpIdUcsO_FCA4E54E
#define PyWrpIdUcsO_Type_PointF                      PyWrpIdUcsO_DEF0F855
#define PyWrpIdUcsO_Type_Point                       PyWrpIdUcsO_EAA8EF31
#define PyWrpIdUcsO_Name_convert                     PyWrpIdUcsO_6239B678
#define PyWrpIdUcsO_Name_convert_to_images           PyWrpIdUcsO_5365B73F
#define PyWrpIdUcsO_Name_merge                       PyWrpIdUcsO_B9764627
#define PyWrpIdUcsO_Name_load                        PyWrpIdUcsO_E60759E9
#define PyWrpIdUcsO_Name_append                      PyWrpIdUcsO_069982E1
#define PyWrpIdUcsO_Name_save                        PyWrpIdUcsO_CCFF7E48
#define PyWrpIdUcsO_Name_to_pages                    PyWrpIdUcsO_BBB3F083
#define PyWrpIdUcsO_Name_set_text_watermark          PyWrpIdUcsO_95973D36
#define PyWrpIdUcsO_Name_set_image_watermark         PyWrpIdUcsO_A07A6990
#define PyWrpIdUcsO_Name_to_document                 PyWrpIdUcsO_A932E2B8
#define PyWrpIdUcsO_Name_read                        PyWrpIdUcsO_CEDFA3C5
#define PyWrpIdUcsO_Name_request_dictionary          PyWrpIdUcsO_B994014F
#define PyWrpIdUcsO_Name_should_skip_index           PyWrpIdUcsO_164465E7
#define PyWrpIdUcsO_Name_node_inserting              PyWrpIdUcsO_56C9D9B1
#define PyWrpIdUcsO_Name_node_inserted               PyWrpIdUcsO_70C946C6
#define PyWrpIdUcsO_Name_node_removing               PyWrpIdUcsO_00837015
#define PyWrpIdUcsO_Name_node_removed                PyWrpIdUcsO_D91BDA02
#define PyWrpIdUcsO_Name_is_match                    PyWrpIdUcsO_A8CF4B37
#define PyWrpIdUcsO_Name_warning                     PyWrpIdUcsO_792112EF
#define PyWrpIdUcsO_Name_explosion                   PyWrpIdUcsO_02BB1FE0
#define PyWrpIdUcsO_Name_invert_if_negative          PyWrpIdUcsO_FB404229
#define PyWrpIdUcsO_Name_marker                      PyWrpIdUcsO_B7F83197
#define PyWrpIdUcsO_Name_bubble_3d                   PyWrpIdUcsO_F1942F47
#define PyWrpIdUcsO_Name_get_barcode_image           PyWrpIdUcsO_EEBE5DDE
#define PyWrpIdUcsO_Name_get_old_barcode_image       PyWrpIdUcsO_DAA3B248
#define PyWrpIdUcsO_Name_get_style                   PyWrpIdUcsO_CC21FAED
#define PyWrpIdUcsO_Name_evaluate                    PyWrpIdUcsO_ACE4360A
#define PyWrpIdUcsO_Name_get_query_result            PyWrpIdUcsO_ED168A78
#define PyWrpIdUcsO_Name_format_numeric              PyWrpIdUcsO_A0428D8A
#define PyWrpIdUcsO_Name_format_date_time            PyWrpIdUcsO_E345DB05
#define PyWrpIdUcsO_Name_format                      PyWrpIdUcsO_B99D8552
#define PyWrpIdUcsO_Name_field_updating              PyWrpIdUcsO_27765D9A
#define PyWrpIdUcsO_Name_field_updated               PyWrpIdUcsO_474188B7
#define PyWrpIdUcsO_Name_notify                      PyWrpIdUcsO_A06D7E3C
#define PyWrpIdUcsO_Name_respond                     PyWrpIdUcsO_098B3B26
#define PyWrpIdUcsO_Name_resource_loading            PyWrpIdUcsO_3D8B3072
#define PyWrpIdUcsO_Name_field_merging               PyWrpIdUcsO_987D85F7
#define PyWrpIdUcsO_Name_image_field_merging         PyWrpIdUcsO_AE146625
#define PyWrpIdUcsO_Name_tags_replaced               PyWrpIdUcsO_D579D31D
#define PyWrpIdUcsO_Name_move_next                   PyWrpIdUcsO_87D4223C
#define PyWrpIdUcsO_Name_get_value                   PyWrpIdUcsO_E5253229
#define PyWrpIdUcsO_Name_get_child_data_source       PyWrpIdUcsO_5F76F569
#define PyWrpIdUcsO_Name_table_name                  PyWrpIdUcsO_43B48003
#define PyWrpIdUcsO_Name_get_data_source             PyWrpIdUcsO_7BBAA510
#define PyWrpIdUcsO_Name_remove_self_only            PyWrpIdUcsO_5CF7CE8F
#define PyWrpIdUcsO_Name_get_child_nodes             PyWrpIdUcsO_DFB304C0
#define PyWrpIdUcsO_Name_is_multi_section            PyWrpIdUcsO_2F918A1F
#define PyWrpIdUcsO_Name_node                        PyWrpIdUcsO_B1C14E0D
#define PyWrpIdUcsO_Name_id                          PyWrpIdUcsO_37386AE0
#define PyWrpIdUcsO_Name_tag                         PyWrpIdUcsO_95F72993
#define PyWrpIdUcsO_Name_title                       PyWrpIdUcsO_9865B509
#define PyWrpIdUcsO_Name_placeholder                 PyWrpIdUcsO_7D0B279A
#define PyWrpIdUcsO_Name_placeholder_name            PyWrpIdUcsO_E1287F1C
#define PyWrpIdUcsO_Name_appearance                  PyWrpIdUcsO_EE11C37F
#define PyWrpIdUcsO_Name_is_showing_placeholder_text PyWrpIdUcsO_3A7AC0CB
#define PyWrpIdUcsO_Name_level                       PyWrpIdUcsO_9B99E7DD
#define PyWrpIdUcsO_Name_sdt_type                    PyWrpIdUcsO_3665B1EF
#define PyWrpIdUcsO_Name_lock_content_control        PyWrpIdUcsO_4FDA9F46
#define PyWrpIdUcsO_Name_lock_contents               PyWrpIdUcsO_CB0BD9F9
#define PyWrpIdUcsO_Name_color                       PyWrpIdUcsO_3D7E6258
#define PyWrpIdUcsO_Name_xml_mapping                 PyWrpIdUcsO_6B5E750F
#define PyWrpIdUcsO_Name_word_open_xml               PyWrpIdUcsO_0F734C90
#define PyWrpIdUcsO_Name_replacing                   PyWrpIdUcsO_AB1D75E4
#define PyWrpIdUcsO_Name_css_saving                  PyWrpIdUcsO_DCA9998B
#define PyWrpIdUcsO_Name_document_part_saving        PyWrpIdUcsO_F332ED13
#define PyWrpIdUcsO_Name_font_saving                 PyWrpIdUcsO_0FD8209B
#define PyWrpIdUcsO_Name_image_saving                PyWrpIdUcsO_0D685A0D
#define PyWrpIdUcsO_Name_page_saving                 PyWrpIdUcsO_FF7D6251
#define PyWrpIdUcsO_Name_resource_saving             PyWrpIdUcsO_766FA71C
#define PyWrpIdUcsO_Name_get_text_shaper             PyWrpIdUcsO_F3219B45

// ---- type-name vectors {module, type, NULL} for PyShImport_ImportTypeEx, by table index
enum PyWrpIdUcsbTpNamesIndex {
    PyWrpIdUcsbTpNames_Color = 0,
    PyWrpIdUcsbTpNames_RectangleF = 1,
    PyWrpIdUcsbTpNames_Size = 2,
    PyWrpIdUcsbTpNames_Rectangle = 3,
    PyWrpIdUcsbTpNames_SizeF = 4,
    PyWrpIdUcsbTpNames_PointF = 5,
    PyWrpIdUcsbTpNames_Point = 6,
    PyWrpIdUcsbTpNames_Count = 7,
};
// The table of vectors; NULL until wrpPyj_mlof_FFFFFF_dynamic_ucso has run.
extern PyObject** const* PyWrpIdUcsbTpNamesGlobAreaSign;

// ---- building the tables (interning failures are not checked: a NULL shows at first use)
void fn_intern_static_ucso();
void wrpPyj_mlof_FFFFFF_dynamic_ucso();

// ---- small companions
// New reference to the interned str, or NULL.
PyObject* fn_intern_from_string(const char* text);
void fn_xinc_ref(PyObject* obj);
void fn_xdec_ref(PyObject* obj);
// New reference to None.
PyObject* fn_get_py_none();
// New reference to None; shaped as a PyCFunction so it can fill a method-table slot.
PyObject* fn_py_return_none(PyObject* self = nullptr, PyObject* unused = nullptr);
