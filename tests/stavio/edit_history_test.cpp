// Edit brackets opened by a plug-in become whole undo steps of the document.
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/stavio/test_support.h"

namespace stavio {
namespace {

using support::Ints;
using test::OtherKey;

class StavioEditBrackets : public ::testing::Test {
protected:
    StavioEditBrackets() { host_.SetDocument(DocumentBuilder().Measures(2).Staff("Piano").Build()); }

    void Start(const char* name) { EXPECT_EQ(Table().SX_StartStavioEdit(name, kPluginApiVersion), 1); }
    int32_t End() { return Table().SX_EndStavioEdit(kPluginApiVersion); }
    void Cancel() { Table().SX_CancelStavioEdit(kPluginApiVersion); }
    void AddStaff()
    {
        EDataID key = OtherKey(kPickNumber);
        ASSERT_EQ(Table().SX_CreateEData(kTagStaffSpec, &key, nullptr, 102, kPluginApiVersion), 1);
    }
    int32_t Staves() const { return host_.document().StaffCount(); }
    Document& Doc() { return host_.document(); }
    const StavioFuncs& Table() const { return host_.FunctionTable(); }

    Host host_;
};

TEST_F(StavioEditBrackets, ABracketIsOneStepThatUndoesAndRedoesWhole)
{
    Start("Add two");
    AddStaff();
    AddStaff();
    EXPECT_EQ(End(), 1);
    EXPECT_EQ(Ints(Staves(), Doc().UndoCount()), Ints(3, 1));
    EXPECT_EQ(Doc().UndoName(), "Add two");

    ASSERT_TRUE(Doc().Undo());
    EXPECT_EQ(Staves(), 1);
    EXPECT_FALSE(Doc().Undo()) << "nothing more to undo";
    ASSERT_TRUE(Doc().Redo());
    EXPECT_EQ(Staves(), 3);
    EXPECT_FALSE(Doc().Redo());
}

// A nested bracket is part of the outer one's step; cancelling it puts back its own changes only.
TEST_F(StavioEditBrackets, NestedBracketsMakeOneStepAndCancelOnlyTheirOwnChanges)
{
    Start("Cancelled");
    AddStaff();
    Cancel();
    EXPECT_EQ(Ints(Staves(), Doc().UndoCount()), Ints(1, 0));

    Start("Outer");
    AddStaff();
    Start("Kept");
    AddStaff();
    EXPECT_EQ(End(), 1);
    EXPECT_EQ(Doc().UndoCount(), 0u) << "the outer bracket is still open";
    Start("Inner");
    AddStaff();
    Cancel();
    EXPECT_EQ(Staves(), 3) << "the outer bracket's changes stay";
    EXPECT_EQ(End(), 1);
    EXPECT_EQ(Ints(Doc().UndoCount(), Doc().UndoName() == "Outer"), Ints(1, true));
    ASSERT_TRUE(Doc().Undo());
    EXPECT_EQ(Staves(), 1);
}

TEST_F(StavioEditBrackets, UnmatchedEndFailsAndANewStepClearsRedo)
{
    EXPECT_EQ(End(), 0);
    Cancel();   // harmless
    Start("First");
    AddStaff();
    End();
    ASSERT_TRUE(Doc().Undo());
    EXPECT_EQ(Doc().RedoCount(), 1u);
    Start("Second");
    AddStaff();
    End();
    EXPECT_EQ(Doc().RedoCount(), 0u);
    EXPECT_FALSE(Doc().Redo());
}

}   // namespace
}   // namespace stavio
