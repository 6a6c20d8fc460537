// Edit brackets opened by a plug-in become whole undo steps of the document.
#include "stavio/document_builder.h"
#include "stavio/host.h"

#include <gtest/gtest.h>

namespace stavio {
namespace {

class StavioEditBrackets : public ::testing::Test {
protected:
    StavioEditBrackets() { host_.SetDocument(DocumentBuilder().Measures(2).Staff("Piano").Build()); }

    void Start(const char* name) { EXPECT_EQ(Table().SX_StartStavioEdit(name, kPluginApiVersion), 1); }
    int32_t End() { return Table().SX_EndStavioEdit(kPluginApiVersion); }
    void Cancel() { Table().SX_CancelStavioEdit(kPluginApiVersion); }
    void AddStaff()
    {
        EDataID key{};
        key.other.cmper = kPickNumber;
        ASSERT_EQ(Table().SX_CreateEData(kTagStaffSpec, &key, nullptr, 102, kPluginApiVersion), 1);
    }
    int32_t Staves() const { return host_.document().StaffCount(); }
    const StavioFuncs& Table() const { return host_.FunctionTable(); }

    Host host_;
};

TEST_F(StavioEditBrackets, ABracketIsOneStepThatUndoesAndRedoesWhole)
{
    Start("Add two");
    AddStaff();
    AddStaff();
    EXPECT_EQ(End(), 1);
    EXPECT_EQ(Staves(), 3);
    EXPECT_EQ(host_.document().UndoCount(), 1u);
    EXPECT_EQ(host_.document().UndoName(), "Add two");

    ASSERT_TRUE(host_.document().Undo());
    EXPECT_EQ(Staves(), 1);
    EXPECT_FALSE(host_.document().Undo()) << "nothing more to undo";
    ASSERT_TRUE(host_.document().Redo());
    EXPECT_EQ(Staves(), 3);
    EXPECT_FALSE(host_.document().Redo());
}

TEST_F(StavioEditBrackets, NestedBracketsMakeOneStep)
{
    Start("Outer");
    AddStaff();
    Start("Inner");
    AddStaff();
    EXPECT_EQ(End(), 1);
    EXPECT_EQ(host_.document().UndoCount(), 0u) << "the outer bracket is still open";
    AddStaff();
    EXPECT_EQ(End(), 1);
    EXPECT_EQ(host_.document().UndoCount(), 1u);
    EXPECT_EQ(host_.document().UndoName(), "Outer");
    ASSERT_TRUE(host_.document().Undo());
    EXPECT_EQ(Staves(), 1);
}

TEST_F(StavioEditBrackets, CancelPutsBackTheStateOfItsBracketOnly)
{
    Start("Cancelled");
    AddStaff();
    Cancel();
    EXPECT_EQ(Staves(), 1);
    EXPECT_EQ(host_.document().UndoCount(), 0u);

    Start("Outer");
    AddStaff();
    Start("Inner");
    AddStaff();
    Cancel();
    EXPECT_EQ(Staves(), 2) << "the outer bracket's change stays";
    EXPECT_EQ(End(), 1);
    ASSERT_TRUE(host_.document().Undo());
    EXPECT_EQ(Staves(), 1);
}

TEST_F(StavioEditBrackets, UnmatchedEndFailsAndANewStepClearsRedo)
{
    EXPECT_EQ(End(), 0);
    Cancel();   // harmless
    Start("First");
    AddStaff();
    End();
    ASSERT_TRUE(host_.document().Undo());
    EXPECT_EQ(host_.document().RedoCount(), 1u);
    Start("Second");
    AddStaff();
    End();
    EXPECT_EQ(host_.document().RedoCount(), 0u);
    EXPECT_FALSE(host_.document().Redo());
}

}  // namespace
}  // namespace stavio
