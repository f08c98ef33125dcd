// The runtime pieces generated bindings stand on: overload failure lists, validity states
// and their chained errors, enumeration classes and their conversions, class-typed arguments,
// stream arguments and the argument holders that must give back what they borrowed.
#include <cstring>

#include "builtins/stream_wrapper.h"
#include "host/managed_binding.h"
#include "marshal/conv_bytes.h"
#include "marshal/conv_text.h"
#include "objects/bound_args.h"
#include "objects/bound_class.h"
#include "objects/enum_builder.h"
#include "objects/host_table.h"
#include "objects/overload_dispatch.h"
#include "objects/stream_arg.h"
#include "objects/wrapper_slots.h"
#include "tests/cpp/embedded_python.h"
#include "tests/cpp/fake_handles.h"

namespace {

// Raises TypeError(text) as a parser would.
void fail_parse(const char* text) { PyErr_SetString(PyExc_TypeError, text); }

// The single argument of a raised exception, as a Python object.
PyShRef sole_argument(PyObject* exc) {
    PyShRef args(PyObject_GetAttrString(exc, "args"));
    EXPECT_TRUE(args && PyTuple_Check(args.get()) && PyTuple_GET_SIZE(args.get()) == 1);
    return PyShRef::borrow(PyTuple_GET_ITEM(args.get(), 0));
}

class OverloadFailures : public PyTest {};

TEST_F(OverloadFailures, EveryCandidateMessageInOrderAsOneListArgument) {
    {
        PyOverloadFailureSlots<3> failures;
        fail_parse("function takes at most 1 argument (2 given)");
        failures.keep();
        fail_parse("can't build SaveFormat value from 'int'");
        failures.keep();
        PyErr_SetString(PyExc_OverflowError, "value '300' is out of the UINT8 range");
        failures.keep();
        EXPECT_FALSE(PyErr_Occurred());
        EXPECT_EQ(failures.raise(), nullptr);
    }
    PyShRef exc = take_error();
    ASSERT_TRUE(exc);
    EXPECT_TRUE(PyErr_GivenExceptionMatches(exc.get(), PyExc_TypeError));
    PyShRef list = sole_argument(exc.get());
    ASSERT_TRUE(PyList_Check(list.get()));
    EXPECT_EQ(py_str(list.get()),
              "['function takes at most 1 argument (2 given)', \"can't build SaveFormat value from 'int'\", "
              "\"value '300' is out of the UINT8 range\"]");
}

TEST_F(OverloadFailures, KeptValuesAreReleasedWhenALaterCandidateWins) {
    PyShRef marker(PyUnicode_FromString("a parse failure"));
    Py_ssize_t before = Py_REFCNT(marker.get());
    {
        PyOverloadFailureSlots<2> failures;
        PyErr_SetObject(PyExc_TypeError, marker.get());
        failures.keep();
        EXPECT_GT(Py_REFCNT(marker.get()), before);
    }
    EXPECT_EQ(Py_REFCNT(marker.get()), before);
}

TEST_F(OverloadFailures, ValuesBeyondTheCapacityAreDroppedNotWritten) {
    PyShRef marker(PyUnicode_FromString("extra"));
    Py_ssize_t before = Py_REFCNT(marker.get());
    PyOverloadFailureSlots<1> failures;
    failures.keep_value(PyUnicode_FromString("first"));
    failures.keep_value(Py_NewRef(marker.get()));
    EXPECT_EQ(Py_REFCNT(marker.get()), before);
    PyShRef last(failures.take_last());
    EXPECT_EQ(py_str(last.get()), "first");
}

TEST_F(OverloadFailures, IntSlotsGetMinusOneWithTheSameError) {
    PyOverloadFailureSlots<1> failures;
    fail_parse("function takes at most 0 arguments (1 given)");
    failures.keep();
    EXPECT_EQ(failures.raise_int(), -1);
    PyShRef exc = take_error();
    EXPECT_EQ(py_str(sole_argument(exc.get()).get()), "['function takes at most 0 arguments (1 given)']");
}

// A table of the given stubs, bound against whatever host the process has (none, or the mock).
class ProbeTable : public PyHostTable {
public:
    explicit ProbeTable(bool with_stub) : PyHostTable("WrpNs_Quorix.WrpCs_Probe_00000000") {
        const PyHostStubSlot stubs[] = {{"call_000_First", slot_of(first_)}, {"call_000_Second", slot_of(second_)}};
        bind_all(stubs, with_stub ? 2 : 0);
    }
    void (*first_)() = nullptr;
    void (*second_)() = nullptr;
};

bool referenced_ok(std::string&) { return false; }

bool referenced_broken(std::string& message) {
    message = "the base type failed";
    return true;
}

bool never_asked(std::string& message) {
    message = "asked after a failure";
    return true;
}

class HostStates : public PyTest {};

TEST_F(HostStates, AStubThatCannotBeBoundMakesTheTableInvalidWithItsName) {
    ProbeTable table(true);
    EXPECT_TRUE(table.is_not_valid());
    EXPECT_EQ(table.first_, nullptr);
    EXPECT_EQ(table.second_, nullptr);
    std::string text = table.error_msg();
    EXPECT_NE(text.find("'WrpNs_Quorix.WrpCs_Probe_00000000 (Assembly="), std::string::npos) << text;
    EXPECT_NE(text.find("Method 'call_000_First' not found"), std::string::npos) << text;
    EXPECT_EQ(text.find("call_000_Second"), std::string::npos) << "binding stops at the first failure";
}

TEST_F(HostStates, AnInvalidTableRaisesItsOwnTextUnchained) {
    ProbeTable table(true);
    PyHostState state = PyHostState_Build(table, {&referenced_broken});
    EXPECT_TRUE(state.failed);
    EXPECT_FALSE(state.referenced_failed);
    EXPECT_TRUE(PyHostState_Check(state));
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), std::string("TypeError: ") + table.error_msg());
    EXPECT_EQ(PyException_GetCause(exc.get()), nullptr);
}

TEST_F(HostStates, AFailedReferenceIsChainedUnderTheMisspeltNotice) {
    ProbeTable table(false);
    ASSERT_FALSE(table.is_not_valid());
    PyHostState state = PyHostState_Build(table, {&referenced_ok, &referenced_broken, &never_asked});
    EXPECT_TRUE(state.failed && state.referenced_failed);
    EXPECT_EQ(state.message, "the base type failed");
    EXPECT_TRUE(PyHostState_Check(state));
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "TypeError: one or more refereced type is not initialized");
    PyShRef cause(PyException_GetCause(exc.get()));
    ASSERT_TRUE(cause);
    EXPECT_EQ(describe(cause.get()), "TypeError: the base type failed");
    std::string copied;
    EXPECT_TRUE(PyHostState_Query(state, copied));
    EXPECT_EQ(copied, "the base type failed");
}

TEST_F(HostStates, AUsableTypePassesWithoutError) {
    ProbeTable table(false);
    PyHostState state = PyHostState_Build(table, {&referenced_ok});
    EXPECT_FALSE(PyHostState_Check(state));
    EXPECT_FALSE(PyErr_Occurred());
    std::string untouched = "kept";
    EXPECT_FALSE(PyHostState_Query(state, untouched));
    EXPECT_EQ(untouched, "kept");
}

const PyShEnumMember kLayout[] = {{"HORIZONTAL", "0"}, {"DIAGONAL", "315"}, {"BACKWARD", "-1"}};
const PyShEnumMember kGlyphs[] = {{"NONE", "0"}, {"UNSAFE_TO_BREAK", "1"}, {"UNSAFE_TO_CONCAT", "2"}, {"HIGH", "2147483648"}};
PyMethodDef kAssert = {"_qrxsc2p_asserttp", wrapPySealTp_qrxsc2p_asserttp, METH_NOARGS | METH_CLASS, ""};
const PyShEnumExtra kExtras[] = {{&kAssert, true}};

class Enumerations : public PyTest {
protected:
    void SetUp() override {
        layout_.reset(PyShEnum_Build("WatermarkLayout", kLayout, 3, false, kExtras, 1));
        glyphs_.reset(PyShEnum_Build("GlyphFlags", kGlyphs, 4, true, nullptr, 0));
        ASSERT_TRUE(layout_ && glyphs_) << describe(take_error().get());
        ns_ = py_namespace();
        PyDict_SetItemString(ns_.get(), "WatermarkLayout", layout_.get());
        PyDict_SetItemString(ns_.get(), "GlyphFlags", glyphs_.get());
    }
    PyShRef layout_, glyphs_, ns_;
};

TEST_F(Enumerations, FunctionalClassesWithTheirMembersAndBases) {
    PyShRef facts = py_eval(ns_.get(),
                            "(WatermarkLayout.__name__, [(m.name, m.value) for m in WatermarkLayout],"
                            " WatermarkLayout(315) is WatermarkLayout.DIAGONAL,"
                            " __import__('enum').IntEnum in WatermarkLayout.__mro__,"
                            " __import__('enum').IntFlag in GlyphFlags.__mro__,"
                            " WatermarkLayout._qrxsc2p_asserttp())");
    EXPECT_EQ(py_str(facts.get()),
              "('WatermarkLayout', [('HORIZONTAL', 0), ('DIAGONAL', 315), ('BACKWARD', -1)], True, True, True, True)");
}

TEST_F(Enumerations, OnlyMembersConvertAPlainIntIsRefused) {
    PyShRef member = py_eval(ns_.get(), "WatermarkLayout.DIAGONAL");
    int32_t value = 0;
    EXPECT_EQ(PyShEnum_ConvPyToClr(member.get(), layout_.get(), "WatermarkLayout", &value), 1);
    EXPECT_EQ(value, 315);
    PyShRef plain(PyLong_FromLong(315));
    EXPECT_EQ(PyShEnum_ConvPyToClr(plain.get(), layout_.get(), "WatermarkLayout", &value), 0);
    EXPECT_EQ(describe(take_error().get()), "TypeError: can't build WatermarkLayout value from 'int'");
    PyShRef other = py_eval(ns_.get(), "GlyphFlags.NONE");
    EXPECT_EQ(PyShEnum_ConvPyToClr(other.get(), layout_.get(), "WatermarkLayout", &value), 0);
    EXPECT_EQ(describe(take_error().get()), "TypeError: can't build WatermarkLayout value from 'GlyphFlags'");
}

TEST_F(Enumerations, HighFlagBitCrossesAsTheSame32BitsBothWays) {
    PyShRef combined = py_eval(ns_.get(), "GlyphFlags.HIGH | GlyphFlags.UNSAFE_TO_BREAK");
    int32_t value = 0;
    ASSERT_EQ(PyShEnum_ConvPyToClr(combined.get(), glyphs_.get(), "GlyphFlags", &value), 1);
    EXPECT_EQ(static_cast<uint32_t>(value), 0x80000001u);
    PyShRef back(PyShEnum_ConvClrToPy(glyphs_.get(), value, true));
    ASSERT_TRUE(back);
    EXPECT_EQ(PyObject_RichCompareBool(back.get(), combined.get(), Py_EQ), 1);
    EXPECT_TRUE(PyObject_IsInstance(back.get(), glyphs_.get()));
}

TEST_F(Enumerations, AnUnknownValueIsTheEnumModulesValueError) {
    EXPECT_EQ(PyShEnum_ConvClrToPy(layout_.get(), 7, false), nullptr);
    PyShRef exc = take_error();
    EXPECT_TRUE(PyErr_GivenExceptionMatches(exc.get(), PyExc_ValueError)) << describe(exc.get());
    EXPECT_EQ(PyShEnum_ConvClrToPy(nullptr, 0, false), nullptr);
    EXPECT_EQ(describe(take_error().get()), "TypeError: the enumeration type is not initialized");
}

class BoundArguments : public PyTest {
protected:
    FakeHandleRuntime fakes_;
};

TEST_F(BoundArguments, ClassArgumentsAreNoneInstancesOrAnError) {
    PyTypeObject* type = fake_sealed_type();
    void* handle = fake_handle(1);
    EXPECT_EQ(PyShBound_ConvPyToClr(Py_None, type, "Font", nullptr, &handle), 1);
    EXPECT_EQ(handle, nullptr);

    PyShRef obj(PyType_GenericNew(type, nullptr, nullptr));
    PyShBound_SetHandle(obj.get(), fake_handle(7), HandleKind_Object);
    EXPECT_EQ(PyShBound_ConvPyToClr(obj.get(), type, "Font", nullptr, &handle), 1);
    EXPECT_EQ(handle, fake_handle(7));
    PyShBound_SetHandle(obj.get(), nullptr, HandleKind_Object);

    PyShRef number(PyLong_FromLong(3));
    EXPECT_EQ(PyShBound_ConvPyToClr(number.get(), type, "Font", nullptr, &handle), 0);
    EXPECT_EQ(describe(take_error().get()), "TypeError: can't build Font value from 'int'");
}

int accept_only_handle_5(void* handle) { return handle == fake_handle(5); }

int assignability_fails(void*) {
    PyErr_SetString(PyExc_RuntimeError, "Proxy error(System.Exception): test failed");
    return -1;
}

TEST_F(BoundArguments, OtherWrappersPassWhenTheManagedTestAcceptsThem) {
    PyShRef shape_type(fake_sealed_heap_type("tests.IShape"));
    PyTypeObject* interface_type = reinterpret_cast<PyTypeObject*>(shape_type.get());
    PyShRef square(PyType_GenericNew(fake_sealed_type(), nullptr, nullptr));
    void* handle = nullptr;

    PyShBound_SetHandle(square.get(), fake_handle(5), HandleKind_Object);
    EXPECT_EQ(PyShBound_ConvPyToClr(square.get(), interface_type, "IShape", accept_only_handle_5, &handle), 1);
    EXPECT_EQ(handle, fake_handle(5));

    PyShBound_SetHandle(square.get(), fake_handle(6), HandleKind_Object);
    EXPECT_EQ(PyShBound_ConvPyToClr(square.get(), interface_type, "IShape", accept_only_handle_5, &handle), 0);
    std::string refused = describe(take_error().get());
    EXPECT_EQ(refused.rfind("TypeError: can't build IShape value from '", 0), 0u) << refused;

    EXPECT_EQ(PyShBound_ConvPyToClr(square.get(), interface_type, "IShape", assignability_fails, &handle), 0);
    EXPECT_EQ(describe(take_error().get()), "RuntimeError: Proxy error(System.Exception): test failed");
    PyShBound_SetHandle(square.get(), nullptr, HandleKind_Object);
}

TEST_F(BoundArguments, DeletionMessageNamesTheSimpleTypeAndProperty) {
    PyTypeObject* type = fake_sealed_type();
    PyShRef obj(PyType_GenericNew(type, nullptr, nullptr));
    EXPECT_EQ(PyShBound_RefuseDelete(obj.get(), "size"), -1);
    const char* simple = std::strrchr(type->tp_name, '.');
    std::string name = simple != nullptr ? simple + 1 : type->tp_name;
    EXPECT_EQ(describe(take_error().get()),
              "AttributeError: '" + name + "' object does not support deletion of 'size' property");
}

TEST_F(BoundArguments, ConstructionRefusedForTypesWithoutConstructors) {
    EXPECT_EQ(wrapClrObject_tp_init_fault(Py_None, nullptr, nullptr), -1);
    EXPECT_EQ(describe(take_error().get()), "TypeError: type has no available constructor");
}

TEST_F(BoundArguments, OnlyEqualityIsComparedAndIdentityNeedsNoManagedCall) {
    PyShRef obj(PyType_GenericNew(fake_sealed_type(), nullptr, nullptr));
    PyShRef same(wrapClrObject_tp_richcompare(obj.get(), obj.get(), Py_EQ));
    EXPECT_EQ(same.get(), Py_True);
    PyShRef differs(wrapClrObject_tp_richcompare(obj.get(), obj.get(), Py_NE));
    EXPECT_EQ(differs.get(), Py_False);
    PyShRef ordered(wrapClrObject_tp_richcompare(obj.get(), obj.get(), Py_LT));
    EXPECT_EQ(ordered.get(), Py_NotImplemented);
    PyShRef unrelated(wrapClrStruct_tp_richcompare(obj.get(), PyShRef(PyLong_FromLong(1)).get(), Py_EQ));
    EXPECT_EQ(unrelated.get(), Py_NotImplemented);
}

TEST_F(BoundArguments, StreamsAreHandlesPythonFilesOrRefused) {
    PyShRef ns = py_namespace();
    PyShRef buffer = py_eval(ns.get(), "__import__('io').BytesIO(b'abc')");
    VariantArg arg = {7, 0, fake_handle(9)};
    ASSERT_EQ(fn_conv_py_stream_to_clr_stream(buffer.get(), &arg), 1);
    EXPECT_EQ(arg.tag, 2);
    EXPECT_EQ(arg.value, buffer.get());

    ASSERT_EQ(fn_conv_py_stream_to_clr_stream(Py_None, &arg), 1);
    EXPECT_EQ(arg.tag, 0);
    EXPECT_EQ(arg.value, nullptr);

    // A stream wrapper passes its handle as it is; another wrapper must be asked about, which
    // needs the stream table: without a runtime that is the table's error, never a guess.
    ASSERT_EQ(PyStreamWrapper_Ready(), 0);
    PyShRef stream(PyType_GenericNew(PyStreamWrapper_Type(), nullptr, nullptr));
    PyShBound_SetHandle(stream.get(), fake_handle(5), HandleKind_Object);
    ASSERT_EQ(fn_conv_py_stream_to_clr_stream(stream.get(), &arg), 1);
    EXPECT_EQ(arg.tag, 0);
    EXPECT_EQ(arg.value, fake_handle(5));
    PyShBound_SetHandle(stream.get(), nullptr, HandleKind_Object);

    PyShRef wrapper(PyType_GenericNew(fake_sealed_type(), nullptr, nullptr));
    PyShBound_SetHandle(wrapper.get(), fake_handle(4), HandleKind_Object);
    EXPECT_EQ(fn_conv_py_stream_to_clr_stream(wrapper.get(), &arg), 0);
    EXPECT_NE(describe(take_error().get()).find("SiApiStream"), std::string::npos);
    PyShBound_SetHandle(wrapper.get(), nullptr, HandleKind_Object);

    PyShRef text = py_eval(ns.get(), "__import__('io').StringIO('abc')");
    EXPECT_EQ(fn_conv_py_stream_to_clr_stream(text.get(), &arg), 0);
    EXPECT_EQ(describe(take_error().get()), "TypeError: can't build Stream from '_io.StringIO'");
}

class ArgumentHolders : public PyTest {};

TEST_F(ArgumentHolders, ABufferViewIsGivenBackWhenTheCandidateEnds) {
    PyShRef ns = py_namespace();
    PyShRef data = py_eval(ns.get(), "bytearray(b'xyz')");
    {
        PyShBytesHolder holder;
        ASSERT_EQ(fn_conv_py_bytes_to_clr_bytes(data.get(), holder.get()), 1);
        EXPECT_EQ(holder.arg.length, 3);
        // An exported buffer pins the bytearray's size.
        EXPECT_LT(PyByteArray_Resize(data.get(), 10), 0);
        PyErr_Clear();
    }
    EXPECT_EQ(PyByteArray_Resize(data.get(), 10), 0);
}

TEST_F(ArgumentHolders, ADecodedPathIsDroppedWhenTheCandidateEnds) {
    PyShRef ns = py_namespace();
    PyShRef path = py_eval(ns.get(), "__import__('pathlib').PurePosixPath('/tmp/out.docx')");
    PyShRef decoded;
    Py_ssize_t held = 0;
    {
        PyShEphStrHolder holder;
        ASSERT_EQ(fn_conv_py_strorpath_to_clr_string(path.get(), &holder.arg), 1);
        ASSERT_NE(holder.arg.keep_alive, nullptr);
        EXPECT_EQ(holder.get()->length, 13);
        decoded = PyShRef::borrow(holder.arg.keep_alive);
        held = Py_REFCNT(decoded.get());
    }
    EXPECT_EQ(Py_REFCNT(decoded.get()), held - 1);
}

}  // namespace
