// Python lists, sequences and iterators serving managed collections: every result
// convention, with reference counts checked so that nothing handed over leaks.
#include <string>

#include "builtins/py_callbacks.h"
#include "tests/cpp/embedded_python.h"

namespace {

class CollectionCallbacks : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(),
                            "class Angry:\n"
                            "    def __eq__(self, other): raise RuntimeError('no comparing')\n"
                            "class Huge:\n"
                            "    def __len__(self): return 2**31\n"
                            "class Liar:\n"
                            "    # Claims three items but holds one.\n"
                            "    def __len__(self): return 3\n"
                            "    def __getitem__(self, i):\n"
                            "        if i == 0: return 'only'\n"
                            "        raise IndexError(i)\n"
                            "class Squares:\n"
                            "    def __len__(self): return 4\n"
                            "    def __getitem__(self, i):\n"
                            "        if 0 <= i < 4: return [i * i]\n"
                            "        raise IndexError(i)\n"
                            "def gen():\n"
                            "    yield 1\n"
                            "    yield 'two'\n"
                            "    raise KeyError('broken')\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    PyShRef ns_;
};

TEST_F(CollectionCallbacks, LengthsStayWithin32Bits) {
    PyShRef list = value("[1, 2, 3]");
    PyShRef text = value("'abcd'");
    PyShRef huge = value("Huge()");
    EXPECT_EQ(fn_clbk_ucol_list_length(list.get()), 3);
    EXPECT_EQ(fn_clbk_ucol_sequence_length(text.get()), 4);
    EXPECT_EQ(fn_clbk_ucol_object_length(huge.get()), -1);
    EXPECT_EQ(failure(), "OverflowError: the value of 'length' (2147483648) is out of the INT32 range");
    EXPECT_EQ(fn_clbk_ucol_list_length(text.get()), -1);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_SystemError), 1);
    PyErr_Clear();
    PyShRef number = value("5");
    EXPECT_EQ(fn_clbk_ucol_object_length(number.get()), -1);
    EXPECT_EQ(failure(), "TypeError: object of type 'int' has no len()");
}

TEST_F(CollectionCallbacks, RemovingAndClearing) {
    PyShRef list = value("['a', 'b', 'c']");
    EXPECT_EQ(fn_clbk_ucol_remove_at(list.get(), 1), 0);
    EXPECT_EQ(py_str(list.get()), "['a', 'c']");
    EXPECT_EQ(fn_clbk_ucol_remove_at(list.get(), 5), -2);
    EXPECT_EQ(failure(), "IndexError: pop index out of range");
    PyShRef frozen = value("(1,)");
    EXPECT_EQ(fn_clbk_ucol_remove_at(frozen.get(), 0), -1);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_AttributeError), 1);
    PyErr_Clear();
    EXPECT_EQ(fn_clbk_ucol_clear(list.get()), 0);
    EXPECT_EQ(py_str(list.get()), "[]");
    EXPECT_EQ(fn_clbk_ucol_clear(frozen.get()), -1);
    PyErr_Clear();
}

TEST_F(CollectionCallbacks, EnumeratorsAndCharacterCollections) {
    PyShRef set = value("{1}");
    PyObject* iterator = nullptr;
    ASSERT_EQ(fn_clbk_ucol_get_enumerator(set.get(), &iterator), 0);
    ASSERT_NE(iterator, nullptr);
    EXPECT_TRUE(PyIter_Check(iterator));
    Py_DECREF(iterator);
    PyShRef number = value("5");
    EXPECT_EQ(fn_clbk_ucol_get_enumerator(number.get(), &iterator), -1);
    EXPECT_EQ(failure(), "TypeError: 'int' object is not iterable");

    PyShRef text = value("'\\u20acx'");
    PyStringArg chars{};
    ASSERT_EQ(fn_clbk_ucol_get_unicode_bytes(text.get(), &chars), 0);
    EXPECT_EQ(chars.length, 2);
    EXPECT_EQ(chars.char_size, 2);
    EXPECT_EQ(fn_clbk_ucol_get_unicode_bytes(number.get(), &chars), -1);
    EXPECT_EQ(failure(), "TypeError: can't build String from 'int'");
}

TEST_F(CollectionCallbacks, IteratorsHandOutItemsWithTheirReference) {
    PyShRef gen = value("gen()");
    PyObject* item = nullptr;
    VariantArg variant{};
    ASSERT_EQ(fn_clbk_iter_next(gen.get(), &item, &variant), 0);
    EXPECT_EQ(variant.tag, VariantTag_Int);
    EXPECT_EQ(variant.value, item);
    Py_DECREF(item);
    ASSERT_EQ(fn_clbk_iter_next(gen.get(), &item, &variant), 0);
    EXPECT_EQ(variant.tag, VariantTag_Str);
    Py_DECREF(item);
    EXPECT_EQ(fn_clbk_iter_next(gen.get(), &item, &variant), 2);
    EXPECT_EQ(failure(), "KeyError: 'broken'");
    EXPECT_EQ(fn_clbk_iter_next(gen.get(), &item, &variant), 1);
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    PyShRef unknown = value("iter([object()])");
    EXPECT_EQ(fn_clbk_iter_next(unknown.get(), &item, &variant), 2);
    EXPECT_EQ(failure(), "TypeError: unknown variant type");
}

TEST_F(CollectionCallbacks, PythonListsServeManagedLists) {
    PyShRef list = value("['a', 'b', 'c']");
    PyObject* element = PyList_GET_ITEM(list.get(), 1);
    Py_ssize_t refs = Py_REFCNT(element);
    PyObject* item = nullptr;
    VariantArg variant{};
    ASSERT_EQ(fn_clbk_olist_get_item(list.get(), 1, &item, &variant), 0);
    EXPECT_EQ(item, element);
    EXPECT_EQ(Py_REFCNT(element), refs + 1);
    Py_DECREF(item);
    EXPECT_EQ(fn_clbk_olist_get_item(list.get(), 3, &item, &variant), -2);
    EXPECT_EQ(failure(), "IndexError: list index out of range");

    // Setting takes over the reference whether or not the index exists.
    PyObject* replacement = PyUnicode_FromString("bee");
    Py_INCREF(replacement);
    EXPECT_EQ(fn_clbk_olist_set_item(list.get(), 1, replacement), 0);
    EXPECT_EQ(Py_REFCNT(replacement), 2);
    Py_INCREF(replacement);
    EXPECT_EQ(fn_clbk_olist_set_item(list.get(), 10, replacement), -2);
    EXPECT_EQ(failure(), "IndexError: list assignment index out of range");
    EXPECT_EQ(Py_REFCNT(replacement), 2);
    Py_DECREF(replacement);

    PyShRef d = value("'d'");
    EXPECT_EQ(fn_clbk_olist_add(list.get(), d.get()), 4);
    EXPECT_EQ(fn_clbk_olist_insert(list.get(), 0, d.get()), 0);
    EXPECT_EQ(py_str(list.get()), "['d', 'a', 'bee', 'c', 'd']");
    EXPECT_EQ(fn_clbk_olist_remove(list.get(), d.get()), 0);
    PyShRef absent = value("'zz'");
    EXPECT_EQ(fn_clbk_olist_remove(list.get(), absent.get()), -1);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_ValueError), 1);
    PyErr_Clear();
    EXPECT_EQ(py_str(list.get()), "['a', 'bee', 'c', 'd']");
    PyShRef tuple = value("()");
    EXPECT_EQ(fn_clbk_olist_add(tuple.get(), d.get()), -1);
    PyErr_Clear();
}

TEST_F(CollectionCallbacks, ListSearchesAgreeOnTheirConventions) {
    PyShRef list = value("['a', 'b', 'a']");
    PyShRef a = value("'a'");
    PyShRef b = value("'b'");
    PyShRef absent = value("'zz'");
    PyShRef angry = value("Angry()");
    EXPECT_EQ(fn_clbk_olist_contains(list.get(), b.get()), 1);
    EXPECT_EQ(fn_clbk_olist_contains(list.get(), absent.get()), 0);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(fn_clbk_olist_index_of(list.get(), a.get()), 0);
    EXPECT_EQ(fn_clbk_olist_index_of(list.get(), b.get()), 1);
    EXPECT_EQ(fn_clbk_olist_index_of(list.get(), absent.get()), -1);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(fn_clbk_olist_contains(list.get(), angry.get()), -1);
    EXPECT_EQ(failure(), "RuntimeError: no comparing");
    EXPECT_EQ(fn_clbk_olist_index_of(list.get(), angry.get()), -2);
    EXPECT_EQ(failure(), "RuntimeError: no comparing");
}

TEST_F(CollectionCallbacks, SequencesAreWalkedByIndex) {
    PyShRef squares = value("Squares()");
    PyObject* item = nullptr;
    VariantArg variant{};
    ASSERT_EQ(fn_clbk_oseq_get_item(squares.get(), 3, &item, &variant), 0);
    EXPECT_EQ(variant.tag, VariantTag_List);
    EXPECT_EQ(py_str(item), "[9]");
    EXPECT_EQ(Py_REFCNT(item), 1);  // made on demand: the handed-out reference is the only one
    Py_DECREF(item);
    EXPECT_EQ(fn_clbk_oseq_get_item(squares.get(), 4, &item, &variant), -2);
    EXPECT_EQ(failure(), "IndexError: 4");

    PyShRef nine = value("[9]");
    PyShRef seven = value("[7]");
    EXPECT_EQ(fn_clbk_oseq_contains(squares.get(), nine.get()), 1);
    EXPECT_EQ(fn_clbk_oseq_contains(squares.get(), seven.get()), 0);
    EXPECT_EQ(fn_clbk_oseq_index_of(squares.get(), nine.get()), 3);
    EXPECT_EQ(fn_clbk_oseq_index_of(squares.get(), seven.get()), -1);
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    PyShRef angry = value("Angry()");
    EXPECT_EQ(fn_clbk_oseq_contains(squares.get(), angry.get()), -1);
    EXPECT_EQ(failure(), "RuntimeError: no comparing");
    EXPECT_EQ(fn_clbk_oseq_index_of(squares.get(), angry.get()), -2);
    EXPECT_EQ(failure(), "RuntimeError: no comparing");

    // A sequence whose length overstates its items fails instead of reading past them.
    PyShRef liar = value("Liar()");
    EXPECT_EQ(fn_clbk_oseq_contains(liar.get(), seven.get()), -1);
    EXPECT_EQ(failure(), "IndexError: 1");
    EXPECT_EQ(fn_clbk_oseq_index_of(liar.get(), seven.get()), -2);
    EXPECT_EQ(failure(), "IndexError: 1");
}

}  // namespace
