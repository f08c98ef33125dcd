// The built-in kinds' method tables without a runtime: every table fails at its first stub,
// its slots stay empty, and a forwarder reached anyway answers with the binding message
// instead of calling through a null slot. Each kind's state reports its own table first.
#include "builtins/builtin_tables.h"
#include "tests/cpp/embedded_python.h"

namespace {

class BuiltinTables : public PyTest {};

TEST_F(BuiltinTables, EachTableIsBuiltOnceAndStopsAtItsFirstStub) {
    const PyHost_ph_ArrList& table = PyHost_ph_ArrList::get_instance();
    EXPECT_EQ(&table, &PyHost_ph_ArrList::get_instance());
    EXPECT_TRUE(table.is_not_valid());
    std::string text = table.error_msg();
    EXPECT_NE(text.find("'Quorix.WrpGen.Interop.SiApiArrayList (Assembly="), std::string::npos) << text;
    EXPECT_NE(text.find("Method 'SqLength' not found"), std::string::npos) << text;
    for (int s = 0; s < PyHost_ph_ArrList::kSlotCount; ++s)
        EXPECT_EQ(table.slot(static_cast<PyHost_ph_ArrList::Slot>(s)), nullptr);
    EXPECT_EQ(PyHost_ph_ArrList::kSlotCount, 26);
    EXPECT_EQ(PyHost_ph_IList::kSlotCount, 23);
    EXPECT_EQ(PyHost_ph_Stream::kSlotCount, 16);
    // the array kinds keep the interop classes' spelling of the unchecked store
    EXPECT_EQ(PyHost_ph_Array::k_sq_ssitem_nocheck, 5);
}

TEST_F(BuiltinTables, AnUnboundForwarderRaisesTheBindingMessage) {
    const PyHost_ph_IList& table = PyHost_ph_IList::get_instance();
    EXPECT_EQ(table.sq_getitem_nocheck(nullptr, 0), nullptr);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), std::string("TypeError: ") + table.error_msg());
    EXPECT_EQ(table.remove_at(nullptr, 0), -1);
    take_error();
    void* type = nullptr;
    table.btp_TypeOf(&type);
    EXPECT_EQ(type, nullptr);
    take_error();
}

TEST_F(BuiltinTables, AKindFailsWithItsOwnTableBeforeItsReferencedKinds) {
    std::string message;
    ASSERT_TRUE(wrpPye_bltp_colbase_is_not_valid(message));
    EXPECT_NE(message.find("SiApiCollectionBase"), std::string::npos) << message;
    EXPECT_TRUE(wrpPye_uafn_colbase_invalidate());
    PyShRef exc = take_error();
    EXPECT_EQ(PyException_GetCause(exc.get()), nullptr);
    // computed once: the same answer and text afterwards
    std::string again;
    EXPECT_TRUE(wrpPye_bltp_colbase_is_not_valid(again));
    EXPECT_EQ(again, message);
}

}  // namespace
