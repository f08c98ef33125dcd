// Characters, strings and buffers: storage borrowed without copies on the way in, UTF-16
// decoded with its deliberate quirks on the way back, byte arrays and buffer views.
#include <cstring>
#include <memory>
#include <string>

#include "marshal/conv_bytes.h"
#include "marshal/conv_text.h"
#include "tests/cpp/embedded_python.h"

namespace {

class MarshalText : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import array, pathlib, sys\n"
                                       "class S(str): pass\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    // The code points a borrowed string record describes, read back by its char size.
    static std::u32string code_points(const PyStringArg& arg) {
        std::u32string out;
        for (int32_t i = 0; i < arg.length; ++i) {
            const char* p = static_cast<const char*>(arg.data) + i * arg.char_size;
            uint32_t cp = 0;
            if (arg.char_size == 1)
                cp = static_cast<uint8_t>(*p);
            else if (arg.char_size == 2)
                cp = *reinterpret_cast<const uint16_t*>(p);
            else
                cp = *reinterpret_cast<const uint32_t*>(p);
            out.push_back(cp);
        }
        return out;
    }
    PyShRef ns_;
};

TEST_F(MarshalText, StringsOfEveryStorageKindAreBorrowedNotCopied) {
    const struct {
        const char* expr;
        int32_t char_size;
        std::u32string expected;
    } cases[] = {
        {"'plain'", 1, U"plain"},
        {"'caf\\xe9'", 1, U"caf\u00e9"},
        {"'\\u0416\\u20ac'", 2, U"\u0416\u20ac"},
        {"'a\\U0001F600b'", 4, U"a\U0001F600b"},
        {"S('sub')", 1, U"sub"},
        {"''", 1, U""},
    };
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        PyStringArg arg{};
        ASSERT_EQ(fn_conv_py_string_to_clr_string(obj.get(), &arg), 1) << c.expr;
        EXPECT_EQ(arg.char_size, c.char_size) << c.expr;
        EXPECT_EQ(arg.length, static_cast<int32_t>(c.expected.size())) << c.expr;
        // No copy: the record points into the str object's own storage.
        EXPECT_EQ(arg.data, PyUnicode_DATA(obj.get())) << c.expr;
        EXPECT_EQ(code_points(arg), c.expected) << c.expr;
    }
}

TEST_F(MarshalText, NoneIsANullStringAndOtherTypesAreRefused) {
    PyStringArg arg{5, 2, &arg};
    ASSERT_EQ(fn_conv_py_string_to_clr_string(Py_None, &arg), 1);
    EXPECT_EQ(arg.length, -1);
    PyShRef raw = value("b'x'");
    EXPECT_EQ(fn_conv_py_string_to_clr_string(raw.get(), &arg), 0);
    EXPECT_EQ(failure(), "TypeError: can't build String from 'bytes'");
}

TEST_F(MarshalText, PathLikesAreDecodedAndKeptAlive) {
    PyShRef path = value("pathlib.PurePosixPath('/tmp/a b.docx')");
    PyEphStrArg arg{};
    ASSERT_EQ(fn_conv_py_strorpath_to_clr_string(path.get(), &arg), 1);
    ASSERT_NE(arg.keep_alive, nullptr);
    EXPECT_EQ(py_str(arg.keep_alive), "/tmp/a b.docx");
    EXPECT_EQ(arg.str.data, PyUnicode_DATA(arg.keep_alive));
    Py_CLEAR(arg.keep_alive);

    PyShRef raw = value("b'/tmp/x'");
    ASSERT_EQ(fn_conv_py_strorpath_to_clr_string(raw.get(), &arg), 1);
    EXPECT_EQ(py_str(arg.keep_alive), "/tmp/x");
    Py_CLEAR(arg.keep_alive);

    // A plain str needs nothing kept alive.
    PyShRef text = value("'name'");
    ASSERT_EQ(fn_conv_py_strorpath_to_clr_string(text.get(), &arg), 1);
    EXPECT_EQ(arg.keep_alive, nullptr);
    EXPECT_EQ(arg.str.data, PyUnicode_DATA(text.get()));

    PyShRef number = value("3");
    EXPECT_EQ(fn_conv_py_strorpath_to_clr_string(number.get(), &arg), 0);
    EXPECT_EQ(arg.keep_alive, nullptr);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_TypeError), 1);
    PyErr_Clear();
}

TEST_F(MarshalText, CharIsExactlyOneUtf16CodeUnit) {
    uint16_t unit = 0;
    PyShRef euro = value("'\\u20ac'");
    ASSERT_EQ(fn_conv_py_string_to_clr_char(euro.get(), &unit), 1);
    EXPECT_EQ(unit, 0x20AC);
    for (const char* refused : {"''", "'\\U0001F600'", "'ab'"}) {
        PyShRef obj = value(refused);
        EXPECT_EQ(fn_conv_py_string_to_clr_char(obj.get(), &unit), 0) << refused;
        EXPECT_EQ(failure(), "TypeError: string must contain one UTF-16 code unit") << refused;
    }
    PyShRef number = value("65");
    EXPECT_EQ(fn_conv_py_string_to_clr_char(number.get(), &unit), 0);
    EXPECT_EQ(failure(), "TypeError: can't build Char from 'int'");

    PyShRef back(fn_write_py_char(0x10041));  // only the low 16 bits count
    EXPECT_EQ(py_str(back.get()), "A");
    PyShRef lone(fn_conv_clr_char_to_py_string(0xD800));
    EXPECT_EQ(lone.get(), nullptr);
    EXPECT_EQ(failure(), "LookupError: unknown error handler name ''");
}

TEST_F(MarshalText, ManagedStringsDecodeAsLittleEndianUtf16) {
    const char16_t with_mark[] = u"\uFEFFhi\U0001F600";
    PyShRef text(fn_conv_clr_string_to_py_string(with_mark, 5));
    ASSERT_TRUE(text);
    PyShRef expected = value("'\\ufeffhi\\U0001F600'");
    // The leading U+FEFF stays a character: the byte order is fixed, never sniffed.
    EXPECT_EQ(PyUnicode_Compare(text.get(), expected.get()), 0);
    EXPECT_EQ(PyUnicode_GET_LENGTH(text.get()), 4);

    PyShRef null_string(fn_conv_clr_string_to_py_string(nullptr, -1));
    EXPECT_EQ(null_string.get(), Py_None);
    PyShRef empty(fn_conv_clr_string_to_py_string(nullptr, 0));
    EXPECT_EQ(py_str(empty.get()), "");

    const char16_t unpaired[] = {u'a', 0xDC00, u'b'};
    PyShRef broken(fn_conv_clr_string_to_py_string(unpaired, 3));
    EXPECT_EQ(broken.get(), nullptr);
    EXPECT_EQ(failure(), "LookupError: unknown error handler name ''");
}

TEST_F(MarshalText, SurrogateFreeStringsMatchTheDecoderInValueAndStorage) {
    const std::u16string samples[] = {u"", u"plain", u"caf\u00e9 \u00ff", u"\u0100x", u"\uFEFF",
                                      u"\uFFFF", u"\u0416\u4e2d", std::u16string(1000, u'z') + u"\u00e9"};
    for (const std::u16string& sample : samples) {
        PyShRef direct(fn_conv_clr_string_to_py_string(sample.data(), static_cast<int32_t>(sample.size())));
        ASSERT_TRUE(direct);
        int byteorder = -1;
        PyShRef decoded(PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(sample.data()),
                                              2 * static_cast<Py_ssize_t>(sample.size()), "strict", &byteorder));
        ASSERT_TRUE(decoded);
        EXPECT_EQ(PyUnicode_Compare(direct.get(), decoded.get()), 0);
        // the narrowest storage, as every str must have: equal strings hash and compare alike
        EXPECT_EQ(PyUnicode_KIND(direct.get()), PyUnicode_KIND(decoded.get()));
        EXPECT_EQ(PyUnicode_IS_ASCII(direct.get()), PyUnicode_IS_ASCII(decoded.get()));
        EXPECT_EQ(PyObject_Hash(direct.get()), PyObject_Hash(decoded.get()));
    }
}

TEST_F(MarshalText, UnraisableDecodingReportsThroughTheHookAndLeavesNothingPending) {
    ASSERT_TRUE(py_exec(ns_.get(), "seen = []\nsys.unraisablehook = lambda u: seen.append((u.exc_type, u.object))\n"));
    const char16_t unpaired[] = {0xD83D};
    PyShRef broken(fn_conv_clr_string_to_py_unraisable(unpaired, 1));
    EXPECT_EQ(broken.get(), nullptr);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    PyShRef seen = value("[(t.__name__, o) for t, o in seen]");
    EXPECT_EQ(py_str(seen.get()), "[('LookupError', 'FormatCallbackException')]");
    ASSERT_TRUE(py_exec(ns_.get(), "sys.unraisablehook = sys.__unraisablehook__\n"));
}

TEST_F(MarshalText, Utf16HoldersAreOwnedCopies) {
    std::u16string source = u"copy me";
    std::unique_ptr<std::u16string> held(fn_create_u16_buffer(source.data(), static_cast<int32_t>(source.size())));
    ASSERT_TRUE(held);
    source[0] = u'X';
    EXPECT_EQ(*held, u"copy me");
    std::unique_ptr<std::u16string> empty(fn_create_u16_buffer(nullptr, 0));
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->empty());
    EXPECT_EQ(fn_create_u16_buffer(source.data(), -1), nullptr);
}

TEST_F(MarshalText, ManagedBytesComeBackAsBytearrayCopies) {
    uint8_t data[] = {0, 1, 255};
    PyShRef copy(fn_conv_clr_bytes_to_py_bytes(data, 3));
    ASSERT_TRUE(copy);
    EXPECT_TRUE(PyByteArray_CheckExact(copy.get()));
    data[0] = 9;
    EXPECT_EQ(py_str(copy.get()), "bytearray(b'\\x00\\x01\\xff')");
    PyShRef null_array(fn_conv_clr_bytes_to_py_bytes(nullptr, -1));
    EXPECT_EQ(null_array.get(), Py_None);
}

class BufferArgs : public MarshalText {
protected:
    // Runs the conversion with view storage made as the managed side makes it.
    int convert(PyObject* obj, bool via_bytes_conversion = true) {
        memset(&view_, 0xAB, sizeof view_);
        fn_create_py_byffer(&view_);
        arg_ = PyBytesArg{};
        arg_.view = &view_;
        return via_bytes_conversion ? fn_conv_py_bytes_to_clr_bytes(obj, &arg_) : fn_read_py_buffer(obj, &arg_);
    }
    void release() {
        if (arg_.acquired)
            fn_release_py_buffer(&view_);
        arg_.acquired = 0;
    }
    Py_buffer view_;
    PyBytesArg arg_;
};

TEST_F(BufferArgs, ContiguousExportersAreBorrowed) {
    EXPECT_EQ(fn_get_sizeof_py_byffer(), 80);
    PyShRef raw = value("b'abc'");
    ASSERT_EQ(convert(raw.get()), 1);
    EXPECT_EQ(arg_.acquired, 1);
    EXPECT_EQ(arg_.length, 3);
    EXPECT_EQ(static_cast<const void*>(arg_.data), PyBytes_AS_STRING(raw.get()));
    Py_ssize_t held = Py_REFCNT(raw.get());
    release();
    EXPECT_EQ(Py_REFCNT(raw.get()), held - 1);

    PyShRef ints = value("array.array('i', [1, 2])");
    ASSERT_EQ(convert(ints.get()), 1);
    EXPECT_EQ(arg_.length, 8);
    release();
}

TEST_F(BufferArgs, NoneAndNonBuffers) {
    ASSERT_EQ(convert(Py_None), 1);
    EXPECT_EQ(arg_.acquired, 0);
    EXPECT_EQ(arg_.length, -1);
    PyShRef text = value("'abc'");
    EXPECT_EQ(convert(text.get()), 0);
    EXPECT_EQ(arg_.acquired, 0);
    EXPECT_EQ(failure(), "TypeError: can't build byte[] from 'str'");
    EXPECT_EQ(convert(text.get(), false), 0);
    EXPECT_EQ(failure(), "BufferError: can't get internal buffer");
}

TEST_F(BufferArgs, NonContiguousViewsAreRefusedButStillReleasable) {
    PyShRef strided = value("memoryview(bytearray(b'abcdef'))[::2]");
    ASSERT_TRUE(strided);
    Py_ssize_t before = Py_REFCNT(strided.get());
    EXPECT_EQ(convert(strided.get()), 0);
    EXPECT_EQ(failure(), "BufferError: buffer is not contiguous");
    // The view was acquired before the refusal: the caller must release it.
    EXPECT_EQ(arg_.acquired, 1);
    release();
    EXPECT_EQ(Py_REFCNT(strided.get()), before);
}

}  // namespace
