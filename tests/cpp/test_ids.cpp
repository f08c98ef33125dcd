// Interned identifiers: texts, interning, naming of the generated table, and the vectors.
#include <cctype>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "module/ids.h"
#include "tests/cpp/embedded_python.h"

namespace {

#define QRX_STR_(x) #x
#define QRX_STR(x) QRX_STR_(x)

struct Id {
    PyObject* const* slot;
    const char* spelled;  // the name hand-written code uses
    const char* defined;  // the global it stands for
};

#define ID(name) Id{&name, #name, QRX_STR(name)}

const Id kFixed[] = {
    ID(PyWrpIdStr_Empty), ID(PyWrpIdRawIo_Write), ID(PyWrpIdRawIo_ReadInto),
    ID(PyWrpIdRawIo_Seek), ID(PyWrpIdRawIo_Flush), ID(PyWrpIdRawIo_Close),
    ID(PyWrpIdRawIo_Closed), ID(PyWrpIdRawIo_Readable), ID(PyWrpIdRawIo_Writable),
    ID(PyWrpIdRawIo_Seekable), ID(PyWrpIdRawIo_Tell), ID(PyWrpIdRawIo_Truncate),
    ID(PyWrpIdMarkattr_QuorixClrHost), ID(PyWrpIdMarkattr_QuorixClrCastableObj), ID(PyWrpIdMarkattr_Handle),
    ID(PyWrpIdTypeName_EnumType), ID(PyWrpIdTypeName_IntEnum), ID(PyWrpIdTypeName_IntFlag),
    ID(PyWrpIdTypeName_Uuid), ID(PyWrpIdTypeName_Decimal), ID(PyWrpIdTypeName_DecimalTuple),
    ID(PyWrpIdTypeName_RawIOBase), ID(PyWrpIdTypeName_BufferedIOBase), ID(PyWrpIdTypeName_BytesAsStream),
    ID(PyWrpIdTypeName_DateTime), ID(PyWrpIdTypeName_TimeZone), ID(PyWrpIdTypeName_PurePath),
    ID(PyWrpIdUuid_BytesLe), ID(PyWrpIdDecimal_Exponent), ID(PyWrpIdDecimal_Sign),
    ID(PyWrpIdDecimal_Digits), ID(PyWrpIdDecimal_AsTuple), ID(PyWrpIdDateTime_Tzinfo),
    ID(PyWrpIdDateTime_UtcOffset), ID(PyWrpIdDateTime_Utc), ID(PyWrpIdList_Extend),
    ID(PyWrpIdList_Pop), ID(PyWrpIdList_Clear), ID(PyWrpIdList_Remove),
    ID(PyWrpIdList_Index), ID(PyWrpIdOsPath_DirName), ID(PyWrpIdOsPath_Join),
    ID(PyWrpIdTraceBack_FormatException), ID(PyWrpIdTraceBack_FormatExceptionOnly), ID(PyWrpIdTraceBack_FormatExceptionWarning),
    ID(PyWrpIdTraceBack_Unknown), ID(PyWrpIdType_Qualname), ID(PyWrpIdWeakref_Finalize),
    ID(PyWrpIdOwn_Version), ID(PyWrpIdOwn_BackwardCompatibilityThreshold), ID(PyWrpIdCastMeth_TypeOf),
    ID(PyWrpIdCastMeth_AsUniEnum), ID(PyWrpIdCastMeth_AssertTp), ID(PyWrpIdCastMeth_GetTpExtraBind),
    ID(PyWrpIdCastMeth_GetTpExtraTie), ID(PyWrpIdModuleName_Enum), ID(PyWrpIdModuleName_Uuid),
    ID(PyWrpIdModuleName_Decimal), ID(PyWrpIdModuleName_Io), ID(PyWrpIdModuleName_DateTime),
    ID(PyWrpIdModuleName_PathLib), ID(PyWrpIdModuleName_QuorixPyFund), ID(PyWrpIdModuleName_Weakref),
    ID(PyWrpIdModuleName_Builtins), ID(PyWrpIdModuleName_OsPath), ID(PyWrpIdFuncName_Super),
    ID(PyWrpIdObject_Repr), ID(PyWrpIdObject_Hash), ID(PyWrpIdObject_LT),
    ID(PyWrpIdObject_LE), ID(PyWrpIdObject_EQ), ID(PyWrpIdObject_NE),
    ID(PyWrpIdObject_GT), ID(PyWrpIdObject_GE), ID(PyWrpIdObject_Init)
};

const Id kGenerated[] = {
    ID(PyWrpIdUcsO_Module_quorix_pyintro), ID(PyWrpIdUcsO_Module_quorix_pygfx), ID(PyWrpIdUcsO_Module_quorix_pyhold),
    ID(PyWrpIdUcsO_Type_Type), ID(PyWrpIdUcsO_Type_Color), ID(PyWrpIdUcsO_Type_Object),
    ID(PyWrpIdUcsO_Type_Enum), ID(PyWrpIdUcsO_Type_RectangleF), ID(PyWrpIdUcsO_Type_Size),
    ID(PyWrpIdUcsO_Type_Rectangle), ID(PyWrpIdUcsO_Type_SizeF), ID(PyWrpIdUcsO_Type_PointF),
    ID(PyWrpIdUcsO_Type_Point), ID(PyWrpIdUcsO_Name_convert), ID(PyWrpIdUcsO_Name_convert_to_images),
    ID(PyWrpIdUcsO_Name_merge), ID(PyWrpIdUcsO_Name_load), ID(PyWrpIdUcsO_Name_append),
    ID(PyWrpIdUcsO_Name_save), ID(PyWrpIdUcsO_Name_to_pages), ID(PyWrpIdUcsO_Name_set_text_watermark),
    ID(PyWrpIdUcsO_Name_set_image_watermark), ID(PyWrpIdUcsO_Name_to_document), ID(PyWrpIdUcsO_Name_read),
    ID(PyWrpIdUcsO_Name_request_dictionary), ID(PyWrpIdUcsO_Name_should_skip_index), ID(PyWrpIdUcsO_Name_node_inserting),
    ID(PyWrpIdUcsO_Name_node_inserted), ID(PyWrpIdUcsO_Name_node_removing), ID(PyWrpIdUcsO_Name_node_removed),
    ID(PyWrpIdUcsO_Name_is_match), ID(PyWrpIdUcsO_Name_warning), ID(PyWrpIdUcsO_Name_explosion),
    ID(PyWrpIdUcsO_Name_invert_if_negative), ID(PyWrpIdUcsO_Name_marker), ID(PyWrpIdUcsO_Name_bubble_3d),
    ID(PyWrpIdUcsO_Name_get_barcode_image), ID(PyWrpIdUcsO_Name_get_old_barcode_image), ID(PyWrpIdUcsO_Name_get_style),
    ID(PyWrpIdUcsO_Name_evaluate), ID(PyWrpIdUcsO_Name_get_query_result), ID(PyWrpIdUcsO_Name_format_numeric),
    ID(PyWrpIdUcsO_Name_format_date_time), ID(PyWrpIdUcsO_Name_format), ID(PyWrpIdUcsO_Name_field_updating),
    ID(PyWrpIdUcsO_Name_field_updated), ID(PyWrpIdUcsO_Name_notify), ID(PyWrpIdUcsO_Name_respond),
    ID(PyWrpIdUcsO_Name_resource_loading), ID(PyWrpIdUcsO_Name_field_merging), ID(PyWrpIdUcsO_Name_image_field_merging),
    ID(PyWrpIdUcsO_Name_tags_replaced), ID(PyWrpIdUcsO_Name_move_next), ID(PyWrpIdUcsO_Name_get_value),
    ID(PyWrpIdUcsO_Name_get_child_data_source), ID(PyWrpIdUcsO_Name_table_name), ID(PyWrpIdUcsO_Name_get_data_source),
    ID(PyWrpIdUcsO_Name_remove_self_only), ID(PyWrpIdUcsO_Name_get_child_nodes), ID(PyWrpIdUcsO_Name_is_multi_section),
    ID(PyWrpIdUcsO_Name_node), ID(PyWrpIdUcsO_Name_id), ID(PyWrpIdUcsO_Name_tag),
    ID(PyWrpIdUcsO_Name_title), ID(PyWrpIdUcsO_Name_placeholder), ID(PyWrpIdUcsO_Name_placeholder_name),
    ID(PyWrpIdUcsO_Name_appearance), ID(PyWrpIdUcsO_Name_is_showing_placeholder_text), ID(PyWrpIdUcsO_Name_level),
    ID(PyWrpIdUcsO_Name_sdt_type), ID(PyWrpIdUcsO_Name_lock_content_control), ID(PyWrpIdUcsO_Name_lock_contents),
    ID(PyWrpIdUcsO_Name_color), ID(PyWrpIdUcsO_Name_xml_mapping), ID(PyWrpIdUcsO_Name_word_open_xml),
    ID(PyWrpIdUcsO_Name_replacing), ID(PyWrpIdUcsO_Name_css_saving), ID(PyWrpIdUcsO_Name_document_part_saving),
    ID(PyWrpIdUcsO_Name_font_saving), ID(PyWrpIdUcsO_Name_image_saving), ID(PyWrpIdUcsO_Name_page_saving),
    ID(PyWrpIdUcsO_Name_resource_saving), ID(PyWrpIdUcsO_Name_get_text_shaper)
};

std::string text_of(PyObject* obj) {
    const char* utf8 = obj != NULL ? PyUnicode_AsUTF8(obj) : NULL;
    return utf8 != NULL ? utf8 : "<not a str>";
}

// Lower-case letters and digits only: "ReadInto" and "readinto" agree, so do "AsTuple" and "as_tuple".
std::string folded(const std::string& s) {
    std::string out;
    for (char c : s)
        if (isalnum((unsigned char)c))
            out += (char)tolower((unsigned char)c);
    return out;
}

class Identifiers : public PyTest {};

TEST_F(Identifiers, EmptyStringJoinsLinesWithoutSeparator) {
    ASSERT_NE(PyWrpIdStr_Empty, nullptr);
    EXPECT_EQ(PyUnicode_GetLength(PyWrpIdStr_Empty), 0);
    PyShRef lines(Py_BuildValue("[sss]", "Traceback:\n", "  line 1\n", "Error: x"));
    PyShRef joined(PyUnicode_Join(PyWrpIdStr_Empty, lines.get()));
    EXPECT_EQ(text_of(joined.get()), "Traceback:\n  line 1\nError: x");
}

TEST_F(Identifiers, SameTextInTwoFamiliesStaysTwoGlobals) {
    EXPECT_NE(&PyWrpIdTypeName_DateTime, &PyWrpIdModuleName_DateTime);
    EXPECT_EQ(text_of(PyWrpIdTypeName_DateTime), "datetime");
    EXPECT_EQ(text_of(PyWrpIdModuleName_DateTime), "datetime");
}

TEST_F(Identifiers, FixedTextsAreInternedAndMatchTheirNames) {
    // Names whose text is not a spelling of the name itself.
    const std::set<std::string> free_text = {"PyWrpIdStr_Empty", "PyWrpIdTraceBack_FormatExceptionWarning"};
    for (const Id& id : kFixed) {
        PyObject* obj = *id.slot;
        ASSERT_TRUE(obj != NULL && PyUnicode_CheckExact(obj)) << id.spelled;
        EXPECT_TRUE(PyUnicode_CHECK_INTERNED(obj)) << id.spelled;
        std::string name = id.spelled;
        std::string tail = folded(name.substr(name.find('_') + 1));
        std::string text = folded(text_of(obj));
        if (free_text.count(name) == 0) {
            EXPECT_TRUE(text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0)
                << id.spelled << " holds '" << text_of(obj) << "'";
        }
    }
}

TEST_F(Identifiers, FixedTextsNameRealInterpreterObjects) {
    PyShRef ns = py_namespace();
    PyShRef ids(PyDict_New());
    for (const Id& id : kFixed)
        PyDict_SetItemString(ids.get(), id.spelled + strlen("PyWrpId"), *id.slot);
    PyDict_SetItemString(ns.get(), "ids", ids.get());
    // Each family names things of one kind in the standard library; a mistyped text names nothing.
    ASSERT_TRUE(py_exec(ns.get(),
                        "import builtins, datetime, decimal, enum, importlib, io, os.path, pathlib, traceback\n"
                        "import uuid, weakref\n"
                        "homes = {'RawIo': [io.RawIOBase], 'List': [list], 'Object': [object],\n"
                        "         'OsPath': [os.path], 'Uuid': [uuid.UUID], 'Weakref': [weakref],\n"
                        "         'FuncName': [builtins], 'Type': [int], 'TraceBack': [traceback],\n"
                        "         'Decimal': [decimal.Decimal('1.5').as_tuple(), decimal.Decimal],\n"
                        "         'DateTime': [datetime.datetime, datetime.timezone],\n"
                        "         'TypeName': [enum, uuid, decimal, io, datetime, pathlib]}\n"
                        "missing = []\n"
                        "for key, text in ids.items():\n"
                        "    family = key.split('_')[0]\n"
                        "    if family == 'ModuleName' and not text.startswith('quorix.'):\n"
                        "        importlib.import_module(text)\n"
                        "    elif family in homes and text not in ('FormatCallbackException', '<unknown>',\n"
                        "                                          'BytesAsStream'):\n"
                        "        if not any(hasattr(home, text) for home in homes[family]):\n"
                        "            missing.append(key)\n"));
    PyShRef missing = py_eval(ns.get(), "missing");
    EXPECT_EQ(py_str(missing.get()), "[]");
}

TEST_F(Identifiers, GeneratedNamesAreTheHashOfTheirDistinctTexts) {
    PyShRef ns = py_namespace();
    ASSERT_TRUE(py_exec(ns.get(), "def fnv(text):\n"
                                  "    h = 0x811C9DC5\n"
                                  "    for b in text.encode('utf-8'):\n"
                                  "        h = ((h ^ b) * 0x01000193) & 0xFFFFFFFF\n"
                                  "    return 'PyWrpIdUcsO_%08X' % h\n"));
    PyShRef fnv = PyShRef::borrow(PyDict_GetItemString(ns.get(), "fnv"));
    std::set<std::string> texts, names;
    for (const Id& id : kGenerated) {
        PyObject* obj = *id.slot;
        ASSERT_TRUE(obj != NULL && PyUnicode_CheckExact(obj)) << id.spelled;
        EXPECT_TRUE(PyUnicode_CHECK_INTERNED(obj)) << id.spelled;
        PyShRef expected(PyObject_CallOneArg(fnv.get(), obj));
        EXPECT_EQ(text_of(expected.get()), id.defined) << id.spelled << " holds '" << text_of(obj) << "'";
        // The readable spelling carries the text after its category word.
        std::string spelled = id.spelled;
        std::string tail = spelled.substr(spelled.find('_', strlen("PyWrpIdUcsO_")) + 1);
        std::string text = text_of(obj);
        for (char& c : text)
            if (c == '.')
                c = '_';
        EXPECT_EQ(tail, text) << id.spelled;
        texts.insert(text_of(obj));
        names.insert(id.defined);
    }
    EXPECT_EQ(sizeof(kGenerated) / sizeof(kGenerated[0]), 83u);
    EXPECT_EQ(texts.size(), 83u);
    EXPECT_EQ(names.size(), 83u);
}

TEST_F(Identifiers, TypeNameVectorsPairTheDrawingModuleWithEachType) {
    ASSERT_NE(PyWrpIdUcsbTpNamesGlobAreaSign, nullptr);
    const char* const expected[] = {"Color", "RectangleF", "Size", "Rectangle", "SizeF", "PointF", "Point"};
    static_assert(sizeof(expected) / sizeof(expected[0]) == PyWrpIdUcsbTpNames_Count, "one vector per type");
    std::vector<PyObject**> before;
    for (int i = 0; i < PyWrpIdUcsbTpNames_Count; ++i) {
        PyObject** vec = PyWrpIdUcsbTpNamesGlobAreaSign[i];
        EXPECT_EQ(vec[0], PyWrpIdUcsO_Module_quorix_pygfx);
        EXPECT_EQ(text_of(vec[1]), expected[i]);
        EXPECT_EQ(vec[2], nullptr);
        before.push_back(vec);
    }
    // Building the tables again (a second module initialisation) reuses the same objects.
    PyObject* color = PyWrpIdUcsO_Type_Color;
    wrpPyj_mlof_FFFFFF_dynamic_ucso();
    fn_intern_static_ucso();
    EXPECT_EQ(PyWrpIdUcsO_Type_Color, color);
    for (int i = 0; i < PyWrpIdUcsbTpNames_Count; ++i)
        EXPECT_EQ(PyWrpIdUcsbTpNamesGlobAreaSign[i], before[i]);
    EXPECT_EQ(PyWrpIdUcsbTpNamesGlobAreaSign[PyWrpIdUcsbTpNames_Color][1], color);
}

TEST_F(Identifiers, ReferenceCompanions) {
    PyShRef none(fn_get_py_none());
    EXPECT_EQ(none.get(), Py_None);
    PyShRef none2(fn_py_return_none(NULL, NULL));
    EXPECT_EQ(none2.get(), Py_None);
    PyShRef text(fn_intern_from_string("readinto"));
    EXPECT_EQ(text.get(), PyWrpIdRawIo_ReadInto);
    Py_ssize_t refs = Py_REFCNT(text.get());
    fn_xinc_ref(text.get());
    EXPECT_EQ(Py_REFCNT(text.get()), refs + 1);
    fn_xdec_ref(text.get());
    EXPECT_EQ(Py_REFCNT(text.get()), refs);
    fn_xinc_ref(NULL);
    fn_xdec_ref(NULL);
}

}  // namespace
