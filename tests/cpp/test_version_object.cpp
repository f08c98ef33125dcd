// The version object: display, attributes, hash, ordering and its exact-type comparison rule.
#include <array>
#include <vector>

#include "module/pysh.h"
#include "tests/cpp/embedded_python.h"

namespace {

class VersionObject : public PyTest {
protected:
    void SetUp() override { ns_ = py_namespace(); }
    PyShRef make(int a, int b, int c, int d, const char* text) {
        PyShRef v(PyShVersionAttr_Create(a, b, c, d, text));
        EXPECT_TRUE(v) << describe(take_error().get());
        return v;
    }
    void bind(const char* name, PyObject* value) { PyDict_SetItemString(ns_.get(), name, value); }
    std::string eval(const char* expr) { return py_str(py_eval(ns_.get(), expr).get()); }
    PyShRef ns_;
};

TEST_F(VersionObject, ShowsItsViewTextAndTypeName) {
    PyShRef v = make(26, 10, 0, 0, "26.10.0.0");
    bind("v", v.get());
    EXPECT_EQ(eval("str(v)"), "26.10.0.0");
    EXPECT_EQ(eval("repr(v)"), "<quorix.folio._ModuleVersionType: 26.10.0.0>");
    EXPECT_EQ(eval("(v.major, v.minor, v.patch, v.sub, v.view)"), "(26, 10, 0, 0, '26.10.0.0')");

    // The view is the creator's text, never recomputed from the numbers.
    PyShRef odd = make(1, 2, 3, -4, "not the numbers");
    bind("odd", odd.get());
    EXPECT_EQ(eval("str(odd)"), "not the numbers");
    EXPECT_EQ(eval("(odd.major, odd.sub)"), "(1, -4)");
    PyShRef numbers = make(7, 0, 1, 2, NULL);
    EXPECT_EQ(py_str(numbers.get()), "7.0.1.2");

    // Once readied, the type keeps the name it was readied under.
    PyShVersion_SetTypeName("qrx_test._ModuleVersionType");
    EXPECT_STREQ(PyShVersion_Type()->tp_name, "quorix.folio._ModuleVersionType");
}

TEST_F(VersionObject, IsReadOnlyAndNotConstructibleFromPython) {
    PyShRef v = make(1, 2, 3, 4, "1.2.3.4");
    bind("v", v.get());
    ASSERT_TRUE(py_exec(ns_.get(), "errors = []\n"
                                   "for action in (lambda: setattr(v, 'major', 9), lambda: type(v)(),\n"
                                   "               lambda: type('Sub', (type(v),), {})):\n"
                                   "    try:\n        action()\n"
                                   "    except TypeError: errors.append('TypeError')\n"
                                   "    except AttributeError: errors.append('AttributeError')\n"));
    EXPECT_EQ(eval("errors"), "['AttributeError', 'TypeError', 'TypeError']");
    EXPECT_EQ(eval("v.major"), "1");
}

TEST_F(VersionObject, HashIsFnv1aOfTheLittleEndianFields) {
    ASSERT_TRUE(py_exec(ns_.get(), "import struct\n"
                                   "def fnv(fields):\n"
                                   "    h = 0x811C9DC5\n"
                                   "    for b in struct.pack('<4i', *fields):\n"
                                   "        h = ((h ^ b) * 16777619) % (1 << 32)\n"
                                   "    h = h - (1 << 32) if h >= (1 << 31) else h\n"
                                   "    return -2 if h == -1 else h\n"));
    const int samples[][4] = {{26, 10, 0, 0}, {0, 0, 0, 0}, {-1, 0, 7, 2147483647}, {-2147483647 - 1, 1, 2, 3}};
    for (const auto& f : samples) {
        PyShRef v = make(f[0], f[1], f[2], f[3], "x");
        bind("v", v.get());
        EXPECT_EQ(eval("hash(v) == fnv((v.major, v.minor, v.patch, v.sub))"), "True")
            << f[0] << "." << f[1] << "." << f[2] << "." << f[3] << " hash " << eval("hash(v)");
    }
    PyShRef a = make(1, 2, 3, 4, "a"), b = make(1, 2, 3, 4, "b");
    EXPECT_EQ(PyObject_Hash(a.get()), PyObject_Hash(b.get()));
}

TEST_F(VersionObject, OrdersLikeItsFourNumbers) {
    const std::vector<std::array<int, 4>> versions = {
        {25, 8, 0, 0}, {25, 8, 0, 1}, {25, 7, 99, 99}, {26, 0, 0, 0}, {-1, 5, 5, 5}, {25, 8, -1, 0}, {25, 8, 0, 0}};
    const int ops[] = {Py_LT, Py_LE, Py_EQ, Py_NE, Py_GT, Py_GE};
    for (const auto& x : versions) {
        for (const auto& y : versions) {
            PyShRef a = make(x[0], x[1], x[2], x[3], "a"), b = make(y[0], y[1], y[2], y[3], "b");
            const bool expected[] = {x < y, x <= y, x == y, x != y, x > y, x >= y};
            for (int i = 0; i < 6; ++i)
                EXPECT_EQ(PyObject_RichCompareBool(a.get(), b.get(), ops[i]), expected[i] ? 1 : 0)
                    << "op " << ops[i] << " on " << x[0] << "." << x[1] << "." << x[2] << "." << x[3] << " vs "
                    << y[0] << "." << y[1] << "." << y[2] << "." << y[3];
            EXPECT_EQ(PyShVersionAttr_Compare(x.data(), b.get()), x < y ? -1 : (x == y ? 0 : 1));
        }
    }
}

// Same layout, derived from the version type: stands for a subclass or another module's copy.
PyTypeObject version_subtype = {PyVarObject_HEAD_INIT(NULL, 0) "qrx_test.VersionSub", sizeof(PyShVersionObject)};

TEST_F(VersionObject, ComparesOnlyWithItsExactType) {
    version_subtype.tp_base = PyShVersion_Type();
    version_subtype.tp_flags = Py_TPFLAGS_DEFAULT;
    ASSERT_EQ(PyType_Ready(&version_subtype), 0);
    PyShRef sub(PyType_GenericAlloc(&version_subtype, 0));
    ASSERT_TRUE(sub);
    PyShVersionObject* fields = (PyShVersionObject*)sub.get();
    fields->major = 26;
    fields->minor = 10;
    fields->view = PyUnicode_FromString("26.10.0.0");

    PyShRef v = make(26, 10, 0, 0, "26.10.0.0");
    PyShRef tuple = py_eval(ns_.get(), "(26, 10, 0, 0)");
    richcmpfunc compare = PyShVersion_Type()->tp_richcompare;
    for (int op = Py_LT; op <= Py_GE; ++op) {
        PyShRef r1(compare(v.get(), tuple.get(), op));
        PyShRef r2(compare(v.get(), sub.get(), op));
        PyShRef r3(compare(sub.get(), v.get(), op));
        EXPECT_EQ(r1.get(), Py_NotImplemented);
        EXPECT_EQ(r2.get(), Py_NotImplemented);
        EXPECT_EQ(r3.get(), Py_NotImplemented);
    }
    PyShRef bad_op(compare(v.get(), v.get(), 6));
    EXPECT_EQ(bad_op.get(), Py_NotImplemented);

    bind("v", v.get());
    bind("t", tuple.get());
    EXPECT_EQ(eval("(v == t, v != t)"), "(False, True)");
    ASSERT_TRUE(py_exec(ns_.get(), "try:\n    v < t\n    outcome = 'ordered'\n"
                                   "except TypeError:\n    outcome = 'TypeError'\n"));
    EXPECT_EQ(eval("outcome"), "TypeError");
}

}  // namespace
