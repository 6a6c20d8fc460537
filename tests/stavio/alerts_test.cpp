// Alerts reach the front end with their text resolved through the resource chain, and the
// scripted front end answers only what it was told.
#include "stavio/host.h"
#include "tests/stavio/test_support.h"
#include "toolbox/resources.h"

#include <gtest/gtest.h>

namespace stavio {
namespace {

TEST(StavioScriptedFrontEnd, AnswersQuestionsInOrderThenNoAndNoticesWithOne)
{
    ScriptedFrontEnd script({kAlertAnswerYes, kAlertAnswerNo, kAlertAnswerYes});
    EXPECT_EQ(script.Alert({kAlertQuestion, 0, "First?"}), kAlertAnswerYes);
    EXPECT_EQ(script.Alert({kAlertStop, 0, "Stop."}), kAlertAnswerOk) << "a notice takes no answer";
    EXPECT_EQ(script.Alert({kAlertQuestion, 0, "Second?"}), kAlertAnswerNo);
    EXPECT_EQ(script.Alert({kAlertQuestion, 0, "Third?"}), kAlertAnswerYes);
    EXPECT_EQ(script.Alert({kAlertQuestion, 0, "Fourth?"}), kAlertAnswerNo) << "no answer left means No";
    EXPECT_EQ(script.Alert({kAlertWarning, 0, "Careful."}), kAlertAnswerOk);
    ASSERT_EQ(script.Alerts().size(), 6u);
    EXPECT_EQ(script.Alerts()[1].request.text, "Stop.");
    EXPECT_EQ(script.Alerts()[4].answer, kAlertAnswerNo);
}

class StavioHostAlerts : public ::testing::Test {
protected:
    void SetUp() override
    {
        const std::string path = folder_.Path() + "/Alerts.rsrc";
        test::WriteStringList(path, 20001, {"Nothing is selected. Use the whole score?", "Second text"});
        before_ = toolbox::CurResFile();
        file_ = toolbox::OpenResFile(toolbox::FileSpec{folder_.Path(), "Alerts.rsrc"}, true);
        ASSERT_GE(file_, 0) << toolbox::ResErrorText();
    }
    void TearDown() override
    {
        toolbox::CloseResFile(file_);
        toolbox::UseResFile(before_);
    }

    test::TempFolder folder_;
    toolbox::ResFileRef before_ = -1;
    toolbox::ResFileRef file_ = -1;
};

TEST_F(StavioHostAlerts, StringIdsAreResolvedFromTheCurrentResourceChain)
{
    ScriptedFrontEnd script({kAlertAnswerYes});
    Host host(HostSettings{}, &script);
    const StavioFuncs& table = host.FunctionTable();
    EXPECT_EQ(table.SX_AlertMessage(nullptr, kAlertQuestion, 0x4E210001, nullptr, kPluginApiVersion), kAlertAnswerYes);
    EXPECT_EQ(table.SX_AlertMessage(nullptr, kAlertWarning, 0x4E210002, nullptr, kPluginApiVersion), kAlertAnswerOk);
    EXPECT_EQ(table.SX_AlertMessage(nullptr, 0, 0, "Warning to plug-in developer", kPluginApiVersion), kAlertAnswerOk);
    EXPECT_EQ(table.SX_AlertMessage(nullptr, kAlertQuestion, 0x4E210063, nullptr, kPluginApiVersion), kAlertAnswerNo);

    ASSERT_EQ(script.Alerts().size(), 4u);
    EXPECT_EQ(script.Alerts()[0].request.text, "Nothing is selected. Use the whole score?");
    EXPECT_EQ(script.Alerts()[0].request.stringId, 0x4E210001);
    EXPECT_EQ(script.Alerts()[1].request.text, "Second text");
    EXPECT_EQ(script.Alerts()[1].request.style, kAlertWarning);
    EXPECT_EQ(script.Alerts()[2].request.text, "Warning to plug-in developer");
    EXPECT_EQ(script.Alerts()[3].request.text, "(text 0x4E210063 not found)") << "a missing text is never empty";
}

TEST_F(StavioHostAlerts, WithoutAFrontEndEveryQuestionIsAnsweredNo)
{
    Host host;
    EXPECT_EQ(host.Alert(kAlertQuestion, 0x4E210001, nullptr), kAlertAnswerNo);
    EXPECT_EQ(ResolveAlertText(0x4E210002), "Second text");
    EXPECT_EQ(ResolveAlertText(0x4E220001), "");
}

}  // namespace
}  // namespace stavio
