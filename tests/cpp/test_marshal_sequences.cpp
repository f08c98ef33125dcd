// Sequences crossing whole: Python iterables into record arrays (items borrowed, failures
// named by index, nothing kept after a failure), the list-builder callbacks that make a
// result list, and the folding of trailing arguments into a params array.
#include <string>

#include "marshal/conv_scalar.h"
#include "marshal/conv_text.h"
#include "marshal/sequences.h"
#include "objects/bound_args.h"
#include "tests/cpp/embedded_python.h"

namespace {

class MarshalSequences : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import sys\n"
                                       "words = ['alpha', 'b\\u00e9ta', 'g\\U0001d11e']\n"
                                       "def gen(): yield 1; yield 2; yield 3\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    PyShRef ns_;
};

TEST_F(MarshalSequences, StringsBorrowTheirStorageWhileTheHolderLives) {
    PyShRef words = value("words");
    Py_ssize_t before = Py_REFCNT(PyList_GET_ITEM(words.get(), 0));
    {
        PyShSeqHolder holder(sizeof(PyStringArg), PyShArg_Converter(&fn_conv_py_string_to_clr_string), "String");
        ASSERT_EQ(fn_conv_py_seq_to_clr_array(words.get(), &holder), 1);
        PySeqArg* arg = holder.get();
        ASSERT_EQ(arg->count, 3);
        auto* items = static_cast<PyStringArg*>(arg->items);
        EXPECT_EQ(items[0].char_size, 1);
        EXPECT_EQ(items[1].char_size, 1);
        EXPECT_EQ(items[2].char_size, 4);
        EXPECT_EQ(items[0].data, PyUnicode_DATA(PyList_GET_ITEM(words.get(), 0)));
    }
    EXPECT_EQ(Py_REFCNT(PyList_GET_ITEM(words.get(), 0)), before);
}

TEST_F(MarshalSequences, IterablesBeyondTheInlineAreaAndNoneConvert) {
    PyShRef many = value("range(100)");
    PyShSeqHolder holder(sizeof(int32_t), PyShArg_Converter(&fn_conv_py_long_to_clr_int32), "Int32");
    ASSERT_EQ(fn_conv_py_seq_to_clr_array(many.get(), &holder), 1);
    ASSERT_EQ(holder.get()->count, 100);
    EXPECT_EQ(static_cast<int32_t*>(holder.get()->items)[99], 99);

    PyShRef generated = value("gen()");
    PyShSeqHolder from_gen(sizeof(int32_t), PyShArg_Converter(&fn_conv_py_long_to_clr_int32), "Int32");
    ASSERT_EQ(fn_conv_py_seq_to_clr_array(generated.get(), &from_gen), 1);
    EXPECT_EQ(from_gen.get()->count, 3);

    PyShSeqHolder none(sizeof(int32_t), PyShArg_Converter(&fn_conv_py_long_to_clr_int32), "Int32");
    ASSERT_EQ(fn_conv_py_seq_to_clr_array(Py_None, &none), 1);
    EXPECT_EQ(none.get()->count, -1);
    EXPECT_EQ(fn_conv_py_seq_to_clr_array_not_none(Py_None, &none), 0);
    EXPECT_EQ(failure(), "TypeError: can't build Int32[] from 'None'");
}

TEST_F(MarshalSequences, AFailingItemIsNamedAndItsErrorIsTheCause) {
    PyShRef mixed = value("[1, 2, 'x', 4]");
    Py_ssize_t before = Py_REFCNT(mixed.get());
    {
        PyShSeqHolder holder(sizeof(int32_t), PyShArg_Converter(&fn_conv_py_long_to_clr_int32), "Int32");
        ASSERT_EQ(fn_conv_py_seq_to_clr_array(mixed.get(), &holder), 0);
        PyShRef exc = take_error();
        EXPECT_EQ(describe(exc.get()), "TypeError: item 2: integer argument expected, got 'str'");
        PyShRef cause(PyException_GetCause(exc.get()));
        EXPECT_EQ(describe(cause.get()), "TypeError: integer argument expected, got 'str'");
        EXPECT_EQ(holder.get()->count, -1);
    }
    EXPECT_EQ(Py_REFCNT(mixed.get()), before);

    PyShRef big = value("[1, 2**40]");
    PyShSeqHolder overflow(sizeof(int32_t), PyShArg_Converter(&fn_conv_py_long_to_clr_int32), "Int32");
    ASSERT_EQ(fn_conv_py_seq_to_clr_array(big.get(), &overflow), 0);
    EXPECT_EQ(failure(), "OverflowError: item 1: value '1099511627776' is out of the INT32 range");
}

TEST_F(MarshalSequences, TextBytesMappingsAndScalarsAreNoArrays) {
    for (const char* expr : {"'abc'", "b'abc'", "bytearray(b'a')", "{'a': 1}", "5"}) {
        PyShRef obj = value(expr);
        PyShSeqHolder holder(sizeof(PyStringArg), PyShArg_Converter(&fn_conv_py_string_to_clr_string), "String");
        EXPECT_EQ(fn_conv_py_seq_to_clr_array(obj.get(), &holder), 0) << expr;
        EXPECT_EQ(failure(), std::string("TypeError: can't build String[] from '") + Py_TYPE(obj.get())->tp_name + "'");
    }
}

TEST_F(MarshalSequences, TheSinkBuildsAListAndDropsItUnlessTaken) {
    PyShRef text = value("'kept'");
    Py_ssize_t before = Py_REFCNT(text.get());
    {
        PyShSeqSink sink(nullptr, [](int32_t v) { return PyLong_FromLong(v * 10); });
        ASSERT_EQ(fn_clbk_pylist_begin(sink.record(), 2), 0);
        ASSERT_EQ(fn_clbk_pylist_put_object(sink.record(), 0, Py_NewRef(text.get())), 0);
        ASSERT_EQ(fn_clbk_pylist_put_int(sink.record(), 1, 4), 0);
        // a slot outside the list refuses the item and releases it
        EXPECT_EQ(fn_clbk_pylist_put_object(sink.record(), 2, Py_NewRef(text.get())), -1);
        EXPECT_EQ(failure(), "IndexError: sequence result slot 2 is out of range");
        PyShRef list(sink.take());
        ASSERT_TRUE(list);
        EXPECT_EQ(py_str(list.get()), "['kept', 40]");
    }
    EXPECT_EQ(Py_REFCNT(text.get()), before);
    {
        // a stub that failed half-way: the list and what it held go away
        PyShSeqSink sink;
        ASSERT_EQ(fn_clbk_pylist_begin(sink.record(), 3), 0);
        ASSERT_EQ(fn_clbk_pylist_put_object(sink.record(), 0, Py_NewRef(text.get())), 0);
        EXPECT_EQ(fn_clbk_pylist_put_object(sink.record(), 1, nullptr), -1);
        PyErr_SetString(PyExc_RuntimeError, "managed failure");
        EXPECT_FALSE(sink.take());
        EXPECT_EQ(failure(), "RuntimeError: managed failure");
    }
    EXPECT_EQ(Py_REFCNT(text.get()), before);
    PyShSeqSink null_result;
    ASSERT_EQ(fn_clbk_pylist_begin(null_result.record(), -1), 0);
    PyShRef none(null_result.take());
    EXPECT_EQ(none.get(), Py_None);
}

TEST_F(MarshalSequences, TrailingArgumentsFoldIntoTheParamsArray) {
    PyShRef args = value("('a', 1, 2, 3)");
    PyShRef folded(PyShParams_Fold(args.get(), 2));
    EXPECT_EQ(py_str(folded.get()), "('a', (1, 2, 3))");
    PyShRef exact(PyShParams_Fold(args.get(), 4));
    EXPECT_EQ(exact.get(), args.get());
    PyShRef single = value("(5, 6)");
    PyShRef all(PyShParams_Fold(single.get(), 1));
    EXPECT_EQ(py_str(all.get()), "((5, 6),)");
}

}  // namespace
