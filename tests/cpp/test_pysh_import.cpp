// Imports by name: the sibling version rule, type and function imports, and adding types.
#include "module/ids.h"
#include "module/pysh.h"
#include "tests/cpp/embedded_python.h"

namespace {

const char kDep[] = "qrx_fake_dependency";
const int kReferenced[4] = {25, 8, 0, 0};

struct Version {
    int major, minor, patch, sub;
    const char* text;
};

class ImportRefModule : public PyTest {
protected:
    void SetUp() override { name_.reset(PyUnicode_InternFromString(kDep)); }
    void TearDown() override {
        PyObject* modules = PyImport_GetModuleDict();
        if (PyDict_GetItemString(modules, kDep) != NULL)
            PyDict_DelItemString(modules, kDep);
        PyTest::TearDown();
    }

    // Puts a module into sys.modules with the given attributes; NULL leaves one out.
    PyObject* install(const Version* version, const Version* threshold) {
        module_.reset(PyModule_New(kDep));
        set_version("VERSION", version);
        set_version("_BACKWARD_COMPATIBILITY_THRESHOLD", threshold);
        PyDict_SetItemString(PyImport_GetModuleDict(), kDep, module_.get());
        return module_.get();
    }

    void set_version(const char* attr, const Version* v) {
        if (v == NULL)
            return;
        PyShRef obj(PyShVersionAttr_Create(v->major, v->minor, v->patch, v->sub, v->text));
        ASSERT_TRUE(obj);
        ASSERT_EQ(PyObject_SetAttrString(module_.get(), attr, obj.get()), 0);
    }

    // The text of the ImportError the import raised, or "<accepted>".
    std::string import_outcome() {
        Py_ssize_t refs_before = module_ ? Py_REFCNT(module_.get()) : 0;
        PyShRef got(PyShImport_ImportRefModule(name_.get(), kReferenced));
        if (got) {
            EXPECT_EQ(got.get(), module_.get());
            return "<accepted>";
        }
        PyShRef exc = take_error();
        EXPECT_TRUE(exc && PyErr_GivenExceptionMatches(exc.get(), PyExc_ImportError)) << describe(exc.get());
        if (module_) {
            EXPECT_EQ(Py_REFCNT(module_.get()), refs_before) << "module reference leaked on a refusal";
        }
        return py_str(exc.get());
    }

    PyShRef name_;
    PyShRef module_;
};

const std::string kPrefix = "Unable to import module dependencies. Cannot import the qrx_fake_dependency module. ";

TEST_F(ImportRefModule, AcceptsThresholdUpToReferencedUpToFound) {
    const Version exact = {25, 8, 0, 0, "25.8.0.0"};
    install(&exact, &exact);
    EXPECT_EQ(import_outcome(), "<accepted>");

    const Version newer = {26, 0, 0, 0, "26.0.0.0"}, older = {22, 6, 0, 0, "22.6.0.0"};
    install(&newer, &older);
    EXPECT_EQ(import_outcome(), "<accepted>");
}

TEST_F(ImportRefModule, RefusesAFoundVersionBelowTheReferencedOne) {
    const Version lower = {25, 7, 99, 99, "25.7.99.99"}, threshold = {22, 6, 0, 0, "22.6.0.0"};
    install(&lower, &threshold);
    EXPECT_EQ(import_outcome(), kPrefix + "The qrx_fake_dependency module found has a version ('25.7.99.99') that is "
                                          "lower than the referenced version of that module ('25.8.0.0').");
    // 0.0.0.1 below, with a view text that disagrees with the numbers: the view is what is quoted.
    const Version just_below = {25, 7, 255, 2147483647, "old"};
    install(&just_below, &threshold);
    EXPECT_NE(import_outcome().find("has a version ('old') that is lower"), std::string::npos);
}

TEST_F(ImportRefModule, RefusesAThresholdAboveTheReferencedVersion) {
    const Version found = {30, 0, 0, 0, "30.0.0.0"}, threshold = {25, 8, 0, 1, "25.8.0.1"};
    install(&found, &threshold);
    EXPECT_EQ(import_outcome(),
              kPrefix + "The installed version of the module ('30.0.0.0') is not compatible with the referenced "
                        "version of the module ('25.8.0.0'). The installed version of the module is not "
                        "compatible with the module versions < '25.8.0.1'.");
}

TEST_F(ImportRefModule, MissingAttributesAreReportedWithoutChaining) {
    const Version found = {25, 8, 0, 0, "25.8.0.0"};
    install(NULL, &found);
    std::string no_version = import_outcome();
    EXPECT_EQ(no_version, kPrefix + "The qrx_fake_dependency module found does not have 'VERSION' attribute to "
                                    "check version compatibility.");
    install(&found, NULL);
    EXPECT_EQ(import_outcome(), kPrefix + "The qrx_fake_dependency module found does not have "
                                          "'BACKWARD_COMPATIBILITY_THRESHOLD' attribute to check version "
                                          "compatibility.");

    install(NULL, &found);
    PyShRef got(PyShImport_ImportRefModule(name_.get(), kReferenced));
    PyShRef exc = take_error();
    ASSERT_TRUE(exc);
    PyShRef cause(PyException_GetCause(exc.get()));
    PyShRef context(PyException_GetContext(exc.get()));
    EXPECT_FALSE(cause);
    EXPECT_FALSE(context);
}

TEST_F(ImportRefModule, AForeignVersionAttributeIsRefusedNotRead) {
    install(NULL, NULL);
    PyShRef not_a_version(PyList_New(0));
    PyObject_SetAttrString(module_.get(), "VERSION", not_a_version.get());
    Py_ssize_t refs = Py_REFCNT(not_a_version.get());
    EXPECT_EQ(import_outcome(), kPrefix + "Its 'VERSION' attribute is a 'list' object, not a module version object.");
    EXPECT_EQ(Py_REFCNT(not_a_version.get()), refs);
}

TEST_F(ImportRefModule, AMissingModuleIsChainedOntoTheImportFailure) {
    EXPECT_EQ(import_outcome(), kPrefix + "The module not found or errors occurred while initializing it.");
    PyShRef got(PyShImport_ImportRefModule(name_.get(), kReferenced));
    PyShRef exc = take_error();
    PyShRef cause(PyException_GetCause(exc.get()));
    ASSERT_TRUE(cause);
    EXPECT_TRUE(PyErr_GivenExceptionMatches(cause.get(), PyExc_ModuleNotFoundError)) << describe(cause.get());
}

class ImportHelpers : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(), "import sys, types\n"
                                       "m = types.ModuleType('qrx_fake_types')\n"
                                       "class Outer:\n    class Inner: pass\n    not_a_type = 3\n"
                                       "m.Outer = Outer\nm.value = 7\nm.func = len\n"
                                       "sys.modules['qrx_fake_types'] = m\n"));
        module_.reset(PyUnicode_InternFromString("qrx_fake_types"));
    }
    void TearDown() override {
        py_exec(ns_.get(), "del sys.modules['qrx_fake_types']\nsys.modules.pop('quorix.pygfx', None)\n"
                           "sys.modules.pop('quorix', None)");
        PyTest::TearDown();
    }
    static PyShRef id(const char* text) { return PyShRef(PyUnicode_InternFromString(text)); }

    PyShRef ns_;
    PyShRef module_;
};

TEST_F(ImportHelpers, TypeImportFindsTypesAndNamesWhatIsMissing) {
    PyShRef outer_name = id("Outer");
    PyShRef outer(PyShImport_ImportType(module_.get(), outer_name.get()));
    PyShRef expected = py_eval(ns_.get(), "Outer");
    EXPECT_EQ(outer.get(), expected.get());

    PyShRef missing_name = id("Missing");
    EXPECT_EQ(PyShImport_ImportType(module_.get(), missing_name.get()), nullptr);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "ImportError: Unable to import the specified type Missing from the module "
                                   "qrx_fake_types. The type not found or errors occurred while initializing it.");
    PyShRef cause(PyException_GetCause(exc.get()));
    EXPECT_TRUE(PyErr_GivenExceptionMatches(cause.get(), PyExc_AttributeError));

    PyShRef value_name = id("value");
    EXPECT_EQ(PyShImport_ImportType(module_.get(), value_name.get()), nullptr);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()), "TypeError: Attribute must be type object, not 'int'");

    PyShRef nowhere = id("qrx_no_such_module");
    EXPECT_EQ(PyShImport_ImportType(nowhere.get(), outer_name.get()), nullptr);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()), "ImportError: Unable to import the specified module qrx_no_such_module. The "
                                   "module not found or errors occurred while initializing it.");
}

TEST_F(ImportHelpers, TypeImportWalksNestedNames) {
    PyShRef outer = id("Outer"), inner = id("Inner"), absent = id("Absent"), not_type = id("not_a_type");
    PyObject* const found_names[] = {module_.get(), outer.get(), inner.get(), NULL};
    PyShRef found(PyShImport_ImportTypeEx(found_names));
    PyShRef expected = py_eval(ns_.get(), "Outer.Inner");
    EXPECT_EQ(found.get(), expected.get());

    PyObject* const absent_names[] = {module_.get(), outer.get(), absent.get(), inner.get(), NULL};
    EXPECT_EQ(PyShImport_ImportTypeEx(absent_names), nullptr);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "ImportError: Outer does not contain nested type Absent");

    PyObject* const non_type_names[] = {module_.get(), outer.get(), not_type.get(), NULL};
    EXPECT_EQ(PyShImport_ImportTypeEx(non_type_names), nullptr);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()), "TypeError: Attribute must be type object, not 'int'");
}

TEST_F(ImportHelpers, FunctionImportHandsBackANonCallableWithTheErrorPending) {
    PyShRef func = id("func"), value = id("value"), missing = id("missing");
    PyShRef got(PyShImport_ImportFunction(module_.get(), func.get()));
    EXPECT_EQ(got.get(), PyDict_GetItemString(PyEval_GetBuiltins(), "len"));
    EXPECT_FALSE(PyErr_Occurred());

    got.reset(PyShImport_ImportFunction(module_.get(), value.get()));
    ASSERT_TRUE(got);
    EXPECT_EQ(PyLong_AsLong(got.get()), 7);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "TypeError: Attribute must be a callable object, not 'int'");

    got.reset(PyShImport_ImportFunction(module_.get(), missing.get()));
    EXPECT_FALSE(got);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()), "ImportError: Unable to import the specified function missing from the module "
                                   "qrx_fake_types. The function not found.");
}

TEST_F(ImportHelpers, SiblingTypeNameVectorsImportFromTheDrawingModule) {
    ASSERT_TRUE(py_exec(ns_.get(), "g = types.ModuleType('quorix.pygfx')\n"
                                   "for n in ('Color', 'RectangleF', 'Size', 'Rectangle', 'SizeF', 'PointF', 'Point'):\n"
                                   "    setattr(g, n, type(n, (), {}))\n"
                                   "sys.modules['quorix.pygfx'] = g\n"
                                   "sys.modules['quorix'] = types.ModuleType('quorix')\n"));
    for (int i = 0; i < PyWrpIdUcsbTpNames_Count; ++i) {
        PyShRef type(PyShImport_ImportTypeEx(PyWrpIdUcsbTpNamesGlobAreaSign[i]));
        ASSERT_TRUE(type) << describe(take_error().get());
        PyShRef type_name(PyObject_GetAttrString(type.get(), "__name__"));
        EXPECT_EQ(PyObject_RichCompareBool(type_name.get(), PyWrpIdUcsbTpNamesGlobAreaSign[i][1], Py_EQ), 1);
    }
}

PyTypeObject broken_gc_type = {PyVarObject_HEAD_INIT(NULL, 0) "qrx_test.BrokenGc", sizeof(PyObject)};

PyModuleDef owner_def = {PyModuleDef_HEAD_INIT, "qrx_test_owner", NULL, -1, NULL};

TEST_F(ImportHelpers, AddTypeReadiesAndAddsOrExplainsWhichStepFailed) {
    PyShRef module(PyModule_Create(&owner_def));
    PyTypeObject* field = PyShFieldDescr_Type();
    ASSERT_EQ(PyShModule_AddType(module.get(), field, "_FieldDescrType"), 0);
    PyShRef added(PyObject_GetAttrString(module.get(), "_FieldDescrType"));
    EXPECT_EQ(added.get(), (PyObject*)field);

    // A GC type without a traverse function cannot be readied.
    broken_gc_type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
    EXPECT_EQ(PyShModule_AddType(module.get(), &broken_gc_type, "BrokenGc"), -1);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "ImportError: Type initialization internal error (-1015) <qrx_test.BrokenGc>");
    PyShRef cause(PyException_GetCause(exc.get()));
    EXPECT_TRUE(PyErr_GivenExceptionMatches(cause.get(), PyExc_SystemError));

    Py_ssize_t refs = Py_REFCNT(field);
    PyShRef not_a_module(PyDict_New());
    EXPECT_EQ(PyShModule_AddType(not_a_module.get(), field, "_FieldDescrType"), -1);
    exc = take_error();
    EXPECT_EQ(describe(exc.get()),
              "ImportError: Type initialization internal error (-1014) <<unknown>,quorix.folio._FieldDescrType>");
    EXPECT_EQ(Py_REFCNT(field), refs);
}

}  // namespace
