// Out-values of ref/out parameters reaching the caller's lists, results of object type,
// nullable parameters, and Python patterns rewritten for the managed regular expressions.
#include <string>

#include "marshal/conv_regex.h"
#include "marshal/conv_scalar.h"
#include "objects/value_args.h"
#include "tests/cpp/embedded_python.h"
#include "tests/cpp/fake_handles.h"

namespace {

constexpr int32_t kTagPythonObject = 2;

class ValueArgs : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import re\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    // The pattern text and options a Python value converts to, or the error text.
    std::string regex(const char* expr, int32_t* options = nullptr) {
        PyShRef obj = value(expr);
        PyShRegexHolder holder;
        if (!fn_conv_py_pattern_to_clr_regex(obj.get(), holder.get()))
            return failure();
        if (options != nullptr)
            *options = holder.arg.options;
        const PyStringArg& p = holder.arg.pattern;
        PyShRef text(PyUnicode_FromKindAndData(p.char_size, p.data, p.length));
        return py_str(text.get());
    }
    PyShRef ns_;
};

TEST_F(ValueArgs, OutValuesReplaceItemZeroOrFillAnEmptyList) {
    PyShRef empty = value("[]");
    PyShRef full = value("['old', 'kept']");
    PyShOutValue first(empty.get());
    PyShOutValue second(full.get());
    *first.record() = {kTagPythonObject, 0, PyLong_FromLong(7)};
    *second.record() = {kTagPythonObject, 0, PyUnicode_FromString("new")};
    PyShRef result(PyShBound_DeliverOuts(Py_NewRef(Py_True), {&first, &second}));
    ASSERT_EQ(result.get(), Py_True);
    EXPECT_EQ(py_str(empty.get()), "[7]");
    EXPECT_EQ(py_str(full.get()), "['new', 'kept']");
}

TEST_F(ValueArgs, AFailedCallReleasesEveryOutValueAndLeavesTheListsAlone) {
    FakeHandleRuntime fakes;
    PyShRef list = value("[1]");
    PyObject* item = PyUnicode_FromString("orphan");
    Py_INCREF(item);  // one for the out-value, one to watch it
    {
        PyShOutValue py_out(list.get());
        PyShOutValue handle_out(list.get(), PyShOutForm_Bound, fake_sealed_type(), 0);
        *py_out.record() = {kTagPythonObject, 0, item};
        *handle_out.record() = {0, 0, fake_handle(3)};
        EXPECT_EQ(PyShBound_DeliverOuts(nullptr, {&py_out, &handle_out}), nullptr);
    }
    EXPECT_EQ(Py_REFCNT(item), 1);
    Py_DECREF(item);
    ASSERT_EQ(fakes.freed().size(), 1u);
    EXPECT_EQ(fakes.freed()[0], fake_handle(3));
    EXPECT_EQ(py_str(list.get()), "[1]");
}

TEST_F(ValueArgs, ObjectResultsPassPythonValuesAndNoneForNothing) {
    VariantArg none = {kTagPythonObject, 0, nullptr};
    PyShRef a(PyShBound_ObjectResult(none));
    EXPECT_EQ(a.get(), Py_None);
    VariantArg text = {kTagPythonObject, 0, PyUnicode_FromString("t")};
    PyShRef b(PyShBound_ObjectResult(text));
    EXPECT_EQ(py_str(b.get()), "t");
    EXPECT_EQ(text.value, nullptr);  // the reference moved into the result
}

TEST_F(ValueArgs, NullableParametersTakeNoneOrTheValuesOwnConversion) {
    PyOptional<int32_t> out = {7, 0, 7};
    PyShRef none = value("None");
    ASSERT_EQ((PyShOptional_Conv<int32_t, fn_conv_py_long_to_clr_int32>(none.get(), &out)), 1);
    EXPECT_EQ(out.has_value, 0);
    PyShRef five = value("5");
    ASSERT_EQ((PyShOptional_Conv<int32_t, fn_conv_py_long_to_clr_int32>(five.get(), &out)), 1);
    EXPECT_EQ(out.has_value, 1);
    EXPECT_EQ(out.value, 5);
    PyShRef text = value("'5'");
    EXPECT_EQ((PyShOptional_Conv<int32_t, fn_conv_py_long_to_clr_int32>(text.get(), &out)), 0);
    EXPECT_EQ(failure(), "TypeError: integer argument expected, got 'str'");
}

TEST_F(ValueArgs, PatternsAreRewrittenWhereTheDialectsDiffer) {
    EXPECT_EQ(regex("r'(?P<year>\\d{4})-(?P=year)'"), "(?<year>\\d{4})-\\k<year>");
    EXPECT_EQ(regex("r'end\\Z'"), "end\\z");
    EXPECT_EQ(regex("r'[\\Z(?P<]x{,3}'"), "[\\Z(?P<]x{0,3}");
    EXPECT_EQ(regex("r'[]a]+?'"), "[]a]+?");
    EXPECT_EQ(regex("'caf\\u00e9 \\U0001F600'"), "caf\xc3\xa9 \xf0\x9f\x98\x80");
    int32_t options = 0;
    EXPECT_EQ(regex("re.compile('a', re.I | re.X)", &options), "a");
    EXPECT_EQ(options, 1 | 32 | 512);
    EXPECT_EQ(regex("'a'", &options), "a");
    EXPECT_EQ(options, 512);
}

TEST_F(ValueArgs, WhatTheManagedDialectCannotHonourIsNamed) {
    EXPECT_EQ(regex("r'a*+'"), "ValueError: the regular expression possessive quantifier has no .NET equivalent");
    EXPECT_EQ(regex("r'(?L)a'"), "ValueError: the regular expression inline flag L (LOCALE) has no .NET equivalent");
    EXPECT_EQ(regex("r'(?a:x)'"), "ValueError: the regular expression inline flag a (ASCII) has no .NET equivalent");
    EXPECT_EQ(regex("r'\\N{DASH}'"), "ValueError: the regular expression escape \\N has no .NET equivalent");
    EXPECT_EQ(regex("re.compile(b'x')"), "TypeError: a bytes pattern cannot become a .NET Regex");
    EXPECT_EQ(regex("[1]"), "TypeError: can't build Regex from 'list'");
}

}  // namespace
