// Protocol probes: the integer rule, length/iteration tests, and slice unpacking checked
// against the interpreter's own slice arithmetic.
#include "module/pysh.h"
#include "tests/cpp/embedded_python.h"

namespace {

class Probes : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import enum, sys\n"
                                       "class Color(enum.IntEnum):\n    RED = 1\n"
                                       "class Bits(enum.IntFlag):\n    A = 1\n"
                                       "class MyInt(int): pass\n"
                                       "class Sized:\n    def __len__(self): return 3\n"
                                       "class OldSeq:\n    def __getitem__(self, i): raise IndexError\n"
                                       "class Idx:\n    def __init__(self, v): self.v = v\n"
                                       "    def __index__(self): return self.v\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    PyShRef ns_;
};

TEST_F(Probes, IntegerRuleAcceptsOnlyExactInts) {
    const struct {
        const char* expr;
        int expected;
    } cases[] = {{"0", 1},           {"5", 1},           {"-2**80", 1},      {"True", 0},   {"False", 0},
                 {"Color.RED", 0},   {"Bits.A", 0},      {"MyInt(3)", 0},    {"3.0", 0},    {"'3'", 0},
                 {"None", 0},        {"Idx(3)", 0}};
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        EXPECT_EQ(PyShLong_Check(obj.get()), c.expected) << c.expr;
    }
}

TEST_F(Probes, IntegerRuleReportsAnUnimportableEnumModule) {
    PyShRef member = value("Color.RED");
    ASSERT_TRUE(py_exec(ns_.get(), "saved_enum = sys.modules['enum']\nsys.modules['enum'] = None\n"));
    int result = PyShLong_Check(member.get());
    PyShRef exc = take_error();
    ASSERT_TRUE(py_exec(ns_.get(), "sys.modules['enum'] = saved_enum\n"));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(describe(exc.get()), "ImportError: Unable to import the specified module enum. The module not "
                                   "found or errors occurred while initializing it.");
    // Exact ints and bools are decided without the import.
    PyShRef five = value("5"), yes = value("True");
    ASSERT_TRUE(py_exec(ns_.get(), "sys.modules['enum'] = None\n"));
    EXPECT_EQ(PyShLong_Check(five.get()), 1);
    EXPECT_EQ(PyShLong_Check(yes.get()), 0);
    ASSERT_TRUE(py_exec(ns_.get(), "sys.modules['enum'] = saved_enum\n"));
}

TEST_F(Probes, LengthAndIterationTests) {
    const struct {
        const char* expr;
        int has_length, has_iter;
    } cases[] = {{"[1]", 1, 1},     {"{}", 1, 1},         {"'ab'", 1, 1},         {"Sized()", 1, 0},
                 {"OldSeq()", 0, 1}, {"iter([])", 0, 1}, {"(x for x in [])", 0, 1}, {"7", 0, 0}};
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        EXPECT_EQ(PyShlObject_HasLength(obj.get()), c.has_length) << c.expr;
        EXPECT_EQ(PyShlObject_HasIter(obj.get()), c.has_iter) << c.expr;
    }
}

TEST_F(Probes, SliceArithmeticMatchesTheInterpreter) {
    PyShRef slices = value("[slice(a, b, c)"
                           " for a in (None, 0, 1, 3, -1, -4, 9, -9, 10**30, -10**30, True)"
                           " for b in (None, 0, 2, 5, -1, -6, 8, -8, 10**30, -10**30)"
                           " for c in (None, 1, 2, 3, -1, -2, -3, 10**30, -10**30, Idx(-7))]");
    ASSERT_TRUE(slices);
    int compared = 0;
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(slices.get()); ++i) {
        PyObject* slice = PyList_GET_ITEM(slices.get(), i);
        Py_ssize_t start, stop, step, ref_start, ref_stop, ref_step;
        ASSERT_EQ(PyShlSlice_Unpack35(slice, &start, &stop, &step), 0) << py_str(slice);
        ASSERT_EQ(PySlice_Unpack(slice, &ref_start, &ref_stop, &ref_step), 0);
        ASSERT_EQ(start, ref_start) << py_str(slice);
        ASSERT_EQ(stop, ref_stop) << py_str(slice);
        ASSERT_EQ(step, ref_step) << py_str(slice);
        for (Py_ssize_t length = 0; length <= 7; ++length) {
            Py_ssize_t a = start, b = stop, ra = ref_start, rb = ref_stop;
            Py_ssize_t count = PyShlSlice_AdjustIndices35(length, &a, &b, step);
            Py_ssize_t ref_count = PySlice_AdjustIndices(length, &ra, &rb, ref_step);
            ASSERT_EQ(count, ref_count) << py_str(slice) << " over " << length;
            ASSERT_EQ(a, ra) << py_str(slice) << " over " << length;
            ASSERT_EQ(b, rb) << py_str(slice) << " over " << length;
            // slice.indices works in unbounded integers: an independent check of the clamping.
            PyShRef indices(PyObject_CallMethod(slice, "indices", "n", length));
            PyShRef range(PyObject_Call((PyObject*)&PyRange_Type, indices.get(), NULL));
            ASSERT_TRUE(range);
            EXPECT_EQ(PyLong_AsSsize_t(PyTuple_GET_ITEM(indices.get(), 0)), a) << py_str(slice) << " over " << length;
            EXPECT_EQ(PyLong_AsSsize_t(PyTuple_GET_ITEM(indices.get(), 1)), b) << py_str(slice) << " over " << length;
            EXPECT_EQ(PyObject_Length(range.get()), count) << py_str(slice) << " over " << length;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 11 * 10 * 10 * 8);
}

TEST_F(Probes, SliceUnpackRejectsBadComponents) {
    Py_ssize_t start, stop, step;
    const struct {
        const char* expr;
        const char* error;
    } cases[] = {
        {"slice(1, 2, 0)", "ValueError: slice step cannot be zero"},
        {"slice(None, None, Idx(0))", "ValueError: slice step cannot be zero"},
        {"slice('a', 2)", "TypeError: slice indices must be integers or None or have an __index__ method"},
        {"slice(1, 2.5)", "TypeError: slice indices must be integers or None or have an __index__ method"},
        {"slice(1, 2, 'x')", "TypeError: slice indices must be integers or None or have an __index__ method"},
        {"(1, 2)", "TypeError: expected a slice, not 'tuple'"},
    };
    for (const auto& c : cases) {
        PyShRef obj = value(c.expr);
        EXPECT_EQ(PyShlSlice_Unpack35(obj.get(), &start, &stop, &step), -1) << c.expr;
        EXPECT_EQ(describe(take_error().get()), c.error) << c.expr;
    }
}

}  // namespace
