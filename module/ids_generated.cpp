// Interned identifiers needed by the class bindings, and the sibling type-name vectors.
// This file mirrors the binding generator's output: one identifier per text, named by the
// 32-bit FNV-1a hash of its UTF-8 bytes; keep it plain and regular so it diffs cleanly
// against generated tables.
#include "module/ids.h"

PyObject* PyWrpIdUcsO_DAA68086 = NULL;
PyObject* PyWrpIdUcsO_9E40A91F = NULL;
PyObject* PyWrpIdUcsO_494CB7C9 = NULL;
PyObject* PyWrpIdUcsO_D155D06D = NULL;
PyObject* PyWrpIdUcsO_E5B43CF8 = NULL;
PyObject* PyWrpIdUcsO_E58E64DA = NULL;
PyObject* PyWrpIdUcsO_E84DDA20 = NULL;
PyObject* PyWrpIdUcsO_98D551B8 = NULL;
PyObject* PyWrpIdUcsO_A6478E7C = NULL;
PyObject* PyWrpIdUcsO_16FD5A2E = NULL;
PyObject* PyWrpIdUcsO_FCA4E54E = NULL;
PyObject* PyWrpIdUcsO_DEF0F855 = NULL;
PyObject* PyWrpIdUcsO_EAA8EF31 = NULL;
PyObject* PyWrpIdUcsO_6239B678 = NULL;
PyObject* PyWrpIdUcsO_5365B73F = NULL;
PyObject* PyWrpIdUcsO_B9764627 = NULL;
PyObject* PyWrpIdUcsO_E60759E9 = NULL;
PyObject* PyWrpIdUcsO_069982E1 = NULL;
PyObject* PyWrpIdUcsO_CCFF7E48 = NULL;
PyObject* PyWrpIdUcsO_BBB3F083 = NULL;
PyObject* PyWrpIdUcsO_95973D36 = NULL;
PyObject* PyWrpIdUcsO_A07A6990 = NULL;
PyObject* PyWrpIdUcsO_A932E2B8 = NULL;
PyObject* PyWrpIdUcsO_CEDFA3C5 = NULL;
PyObject* PyWrpIdUcsO_B994014F = NULL;
PyObject* PyWrpIdUcsO_164465E7 = NULL;
PyObject* PyWrpIdUcsO_56C9D9B1 = NULL;
PyObject* PyWrpIdUcsO_70C946C6 = NULL;
PyObject* PyWrpIdUcsO_00837015 = NULL;
PyObject* PyWrpIdUcsO_D91BDA02 = NULL;
PyObject* PyWrpIdUcsO_A8CF4B37 = NULL;
PyObject* PyWrpIdUcsO_792112EF = NULL;
PyObject* PyWrpIdUcsO_02BB1FE0 = NULL;
PyObject* PyWrpIdUcsO_FB404229 = NULL;
PyObject* PyWrpIdUcsO_B7F83197 = NULL;
PyObject* PyWrpIdUcsO_F1942F47 = NULL;
PyObject* PyWrpIdUcsO_EEBE5DDE = NULL;
PyObject* PyWrpIdUcsO_DAA3B248 = NULL;
PyObject* PyWrpIdUcsO_CC21FAED = NULL;
PyObject* PyWrpIdUcsO_ACE4360A = NULL;
PyObject* PyWrpIdUcsO_ED168A78 = NULL;
PyObject* PyWrpIdUcsO_A0428D8A = NULL;
PyObject* PyWrpIdUcsO_E345DB05 = NULL;
PyObject* PyWrpIdUcsO_B99D8552 = NULL;
PyObject* PyWrpIdUcsO_27765D9A = NULL;
PyObject* PyWrpIdUcsO_474188B7 = NULL;
PyObject* PyWrpIdUcsO_A06D7E3C = NULL;
PyObject* PyWrpIdUcsO_098B3B26 = NULL;
PyObject* PyWrpIdUcsO_3D8B3072 = NULL;
PyObject* PyWrpIdUcsO_987D85F7 = NULL;
PyObject* PyWrpIdUcsO_AE146625 = NULL;
PyObject* PyWrpIdUcsO_D579D31D = NULL;
PyObject* PyWrpIdUcsO_87D4223C = NULL;
PyObject* PyWrpIdUcsO_E5253229 = NULL;
PyObject* PyWrpIdUcsO_5F76F569 = NULL;
PyObject* PyWrpIdUcsO_43B48003 = NULL;
PyObject* PyWrpIdUcsO_7BBAA510 = NULL;
PyObject* PyWrpIdUcsO_5CF7CE8F = NULL;
PyObject* PyWrpIdUcsO_DFB304C0 = NULL;
PyObject* PyWrpIdUcsO_2F918A1F = NULL;
PyObject* PyWrpIdUcsO_B1C14E0D = NULL;
PyObject* PyWrpIdUcsO_37386AE0 = NULL;
PyObject* PyWrpIdUcsO_95F72993 = NULL;
PyObject* PyWrpIdUcsO_9865B509 = NULL;
PyObject* PyWrpIdUcsO_7D0B279A = NULL;
PyObject* PyWrpIdUcsO_E1287F1C = NULL;
PyObject* PyWrpIdUcsO_EE11C37F = NULL;
PyObject* PyWrpIdUcsO_3A7AC0CB = NULL;
PyObject* PyWrpIdUcsO_9B99E7DD = NULL;
PyObject* PyWrpIdUcsO_3665B1EF = NULL;
PyObject* PyWrpIdUcsO_4FDA9F46 = NULL;
PyObject* PyWrpIdUcsO_CB0BD9F9 = NULL;
PyObject* PyWrpIdUcsO_3D7E6258 = NULL;
PyObject* PyWrpIdUcsO_6B5E750F = NULL;
PyObject* PyWrpIdUcsO_0F734C90 = NULL;
PyObject* PyWrpIdUcsO_AB1D75E4 = NULL;
PyObject* PyWrpIdUcsO_DCA9998B = NULL;
PyObject* PyWrpIdUcsO_F332ED13 = NULL;
PyObject* PyWrpIdUcsO_0FD8209B = NULL;
PyObject* PyWrpIdUcsO_0D685A0D = NULL;
PyObject* PyWrpIdUcsO_FF7D6251 = NULL;
PyObject* PyWrpIdUcsO_766FA71C = NULL;
PyObject* PyWrpIdUcsO_F3219B45 = NULL;

PyObject** const* PyWrpIdUcsbTpNamesGlobAreaSign = NULL;

// Each vector is filled on the first call only: a later initialisation interns the very same
// objects, so the first fill stays valid.

static PyObject** tp_names_Color() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_E5B43CF8, NULL};
    return names;
}

static PyObject** tp_names_RectangleF() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_98D551B8, NULL};
    return names;
}

static PyObject** tp_names_Size() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_A6478E7C, NULL};
    return names;
}

static PyObject** tp_names_Rectangle() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_16FD5A2E, NULL};
    return names;
}

static PyObject** tp_names_SizeF() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_FCA4E54E, NULL};
    return names;
}

static PyObject** tp_names_PointF() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_DEF0F855, NULL};
    return names;
}

static PyObject** tp_names_Point() {
    static PyObject* names[3] = {PyWrpIdUcsO_9E40A91F, PyWrpIdUcsO_EAA8EF31, NULL};
    return names;
}

static PyObject** tp_names_table[PyWrpIdUcsbTpNames_Count];

void wrpPyj_mlof_FFFFFF_dynamic_ucso() {
    PyWrpIdUcsO_DAA68086 = PyUnicode_InternFromString("quorix.pyintro");
    PyWrpIdUcsO_9E40A91F = PyUnicode_InternFromString("quorix.pygfx");
    PyWrpIdUcsO_494CB7C9 = PyUnicode_InternFromString("quorix.pyhold");
    PyWrpIdUcsO_D155D06D = PyUnicode_InternFromString("Type");
    PyWrpIdUcsO_E5B43CF8 = PyUnicode_InternFromString("Color");
    PyWrpIdUcsO_E58E64DA = PyUnicode_InternFromString("Object");
    PyWrpIdUcsO_E84DDA20 = PyUnicode_InternFromString("Enum");
    PyWrpIdUcsO_98D551B8 = PyUnicode_InternFromString("RectangleF");
    PyWrpIdUcsO_A6478E7C = PyUnicode_InternFromString("Size");
    PyWrpIdUcsO_16FD5A2E = PyUnicode_InternFromString("Rectangle");
    PyWrpIdUcsO_FCA4E54E = PyUnicode_InternFromString("SizeF");
    PyWrpIdUcsO_DEF0F855 = PyUnicode_InternFromString("PointF");
    PyWrpIdUcsO_EAA8EF31 = PyUnicode_InternFromString("Point");
    PyWrpIdUcsO_6239B678 = PyUnicode_InternFromString("convert");
    PyWrpIdUcsO_5365B73F = PyUnicode_InternFromString("convert_to_images");
    PyWrpIdUcsO_B9764627 = PyUnicode_InternFromString("merge");
    PyWrpIdUcsO_E60759E9 = PyUnicode_InternFromString("load");
    PyWrpIdUcsO_069982E1 = PyUnicode_InternFromString("append");
    PyWrpIdUcsO_CCFF7E48 = PyUnicode_InternFromString("save");
    PyWrpIdUcsO_BBB3F083 = PyUnicode_InternFromString("to_pages");
    PyWrpIdUcsO_95973D36 = PyUnicode_InternFromString("set_text_watermark");
    PyWrpIdUcsO_A07A6990 = PyUnicode_InternFromString("set_image_watermark");
    PyWrpIdUcsO_A932E2B8 = PyUnicode_InternFromString("to_document");
    PyWrpIdUcsO_CEDFA3C5 = PyUnicode_InternFromString("read");
    PyWrpIdUcsO_B994014F = PyUnicode_InternFromString("request_dictionary");
    PyWrpIdUcsO_164465E7 = PyUnicode_InternFromString("should_skip_index");
    PyWrpIdUcsO_56C9D9B1 = PyUnicode_InternFromString("node_inserting");
    PyWrpIdUcsO_70C946C6 = PyUnicode_InternFromString("node_inserted");
    PyWrpIdUcsO_00837015 = PyUnicode_InternFromString("node_removing");
    PyWrpIdUcsO_D91BDA02 = PyUnicode_InternFromString("node_removed");
    PyWrpIdUcsO_A8CF4B37 = PyUnicode_InternFromString("is_match");
    PyWrpIdUcsO_792112EF = PyUnicode_InternFromString("warning");
    PyWrpIdUcsO_02BB1FE0 = PyUnicode_InternFromString("explosion");
    PyWrpIdUcsO_FB404229 = PyUnicode_InternFromString("invert_if_negative");
    PyWrpIdUcsO_B7F83197 = PyUnicode_InternFromString("marker");
    PyWrpIdUcsO_F1942F47 = PyUnicode_InternFromString("bubble_3d");
    PyWrpIdUcsO_EEBE5DDE = PyUnicode_InternFromString("get_barcode_image");
    PyWrpIdUcsO_DAA3B248 = PyUnicode_InternFromString("get_old_barcode_image");
    PyWrpIdUcsO_CC21FAED = PyUnicode_InternFromString("get_style");
    PyWrpIdUcsO_ACE4360A = PyUnicode_InternFromString("evaluate");
    PyWrpIdUcsO_ED168A78 = PyUnicode_InternFromString("get_query_result");
    PyWrpIdUcsO_A0428D8A = PyUnicode_InternFromString("format_numeric");
    PyWrpIdUcsO_E345DB05 = PyUnicode_InternFromString("format_date_time");
    PyWrpIdUcsO_B99D8552 = PyUnicode_InternFromString("format");
    PyWrpIdUcsO_27765D9A = PyUnicode_InternFromString("field_updating");
    PyWrpIdUcsO_474188B7 = PyUnicode_InternFromString("field_updated");
    PyWrpIdUcsO_A06D7E3C = PyUnicode_InternFromString("notify");
    PyWrpIdUcsO_098B3B26 = PyUnicode_InternFromString("respond");
    PyWrpIdUcsO_3D8B3072 = PyUnicode_InternFromString("resource_loading");
    PyWrpIdUcsO_987D85F7 = PyUnicode_InternFromString("field_merging");
    PyWrpIdUcsO_AE146625 = PyUnicode_InternFromString("image_field_merging");
    PyWrpIdUcsO_D579D31D = PyUnicode_InternFromString("tags_replaced");
    PyWrpIdUcsO_87D4223C = PyUnicode_InternFromString("move_next");
    PyWrpIdUcsO_E5253229 = PyUnicode_InternFromString("get_value");
    PyWrpIdUcsO_5F76F569 = PyUnicode_InternFromString("get_child_data_source");
    PyWrpIdUcsO_43B48003 = PyUnicode_InternFromString("table_name");
    PyWrpIdUcsO_7BBAA510 = PyUnicode_InternFromString("get_data_source");
    PyWrpIdUcsO_5CF7CE8F = PyUnicode_InternFromString("remove_self_only");
    PyWrpIdUcsO_DFB304C0 = PyUnicode_InternFromString("get_child_nodes");
    PyWrpIdUcsO_2F918A1F = PyUnicode_InternFromString("is_multi_section");
    PyWrpIdUcsO_B1C14E0D = PyUnicode_InternFromString("node");
    PyWrpIdUcsO_37386AE0 = PyUnicode_InternFromString("id");
    PyWrpIdUcsO_95F72993 = PyUnicode_InternFromString("tag");
    PyWrpIdUcsO_9865B509 = PyUnicode_InternFromString("title");
    PyWrpIdUcsO_7D0B279A = PyUnicode_InternFromString("placeholder");
    PyWrpIdUcsO_E1287F1C = PyUnicode_InternFromString("placeholder_name");
    PyWrpIdUcsO_EE11C37F = PyUnicode_InternFromString("appearance");
    PyWrpIdUcsO_3A7AC0CB = PyUnicode_InternFromString("is_showing_placeholder_text");
    PyWrpIdUcsO_9B99E7DD = PyUnicode_InternFromString("level");
    PyWrpIdUcsO_3665B1EF = PyUnicode_InternFromString("sdt_type");
    PyWrpIdUcsO_4FDA9F46 = PyUnicode_InternFromString("lock_content_control");
    PyWrpIdUcsO_CB0BD9F9 = PyUnicode_InternFromString("lock_contents");
    PyWrpIdUcsO_3D7E6258 = PyUnicode_InternFromString("color");
    PyWrpIdUcsO_6B5E750F = PyUnicode_InternFromString("xml_mapping");
    PyWrpIdUcsO_0F734C90 = PyUnicode_InternFromString("word_open_xml");
    PyWrpIdUcsO_AB1D75E4 = PyUnicode_InternFromString("replacing");
    PyWrpIdUcsO_DCA9998B = PyUnicode_InternFromString("css_saving");
    PyWrpIdUcsO_F332ED13 = PyUnicode_InternFromString("document_part_saving");
    PyWrpIdUcsO_0FD8209B = PyUnicode_InternFromString("font_saving");
    PyWrpIdUcsO_0D685A0D = PyUnicode_InternFromString("image_saving");
    PyWrpIdUcsO_FF7D6251 = PyUnicode_InternFromString("page_saving");
    PyWrpIdUcsO_766FA71C = PyUnicode_InternFromString("resource_saving");
    PyWrpIdUcsO_F3219B45 = PyUnicode_InternFromString("get_text_shaper");

    tp_names_table[PyWrpIdUcsbTpNames_Color] = tp_names_Color();
    tp_names_table[PyWrpIdUcsbTpNames_RectangleF] = tp_names_RectangleF();
    tp_names_table[PyWrpIdUcsbTpNames_Size] = tp_names_Size();
    tp_names_table[PyWrpIdUcsbTpNames_Rectangle] = tp_names_Rectangle();
    tp_names_table[PyWrpIdUcsbTpNames_SizeF] = tp_names_SizeF();
    tp_names_table[PyWrpIdUcsbTpNames_PointF] = tp_names_PointF();
    tp_names_table[PyWrpIdUcsbTpNames_Point] = tp_names_Point();
    PyWrpIdUcsbTpNamesGlobAreaSign = tp_names_table;
}
