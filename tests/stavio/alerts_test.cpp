// Alerts reach the front end with their text resolved through the resource chain, and the
// scripted front end answers only what it was told.
#include "stavio/host.h"
#include "tests/stavio/test_support.h"
#include "toolbox/resources.h"

#include <tuple>

namespace stavio {
namespace {

TEST(StavioScriptedFrontEnd, AnswersQuestionsInOrderThenNoAndNoticesWithOne)
{
    ScriptedFrontEnd script({kAlertAnswerYes, kAlertAnswerNo, kAlertAnswerYes});
    // A notice takes no answer; no answer left means No.
    for (const auto& [style, text, answer] :
         std::vector<std::tuple<int32_t, const char*, int32_t>>{{kAlertQuestion, "First?", kAlertAnswerYes},
                                                                {kAlertStop, "Stop.", kAlertAnswerOk},
                                                                {kAlertQuestion, "Second?", kAlertAnswerNo},
                                                                {kAlertQuestion, "Third?", kAlertAnswerYes},
                                                                {kAlertQuestion, "Fourth?", kAlertAnswerNo},
                                                                {kAlertWarning, "Careful.", kAlertAnswerOk}})
        EXPECT_EQ(script.Alert({style, 0, text}), answer) << text;
    ASSERT_EQ(script.Alerts().size(), 6u);
    EXPECT_EQ(script.Alerts()[1].request.text, "Stop.");
    EXPECT_EQ(script.Alerts()[4].answer, kAlertAnswerNo);
}

// Resolved through the chain, a text of the plug-in's file; without a front end every question
// is answered No.
TEST(StavioHostAlerts, StringIdsAreResolvedFromTheCurrentResourceChain)
{
    test::TempFolder folder;
    test::WriteStringList(folder.Path() + "/Alerts.rsrc", 20001,
                          {"Nothing is selected. Use the whole score?", "Second text"});
    const toolbox::ResFileRef before = toolbox::CurResFile();
    const toolbox::Result<toolbox::ResFileRef> opened =
        toolbox::OpenResourceFile(toolbox::FileSpec{folder.Path(), "Alerts.rsrc"}, true);
    ASSERT_TRUE(opened) << opened.Message();

    ScriptedFrontEnd script({kAlertAnswerYes});
    Host host(HostSettings{}, &script);
    const StavioFuncs& table = host.FunctionTable();
    EXPECT_EQ(table.SX_AlertMessage(nullptr, kAlertQuestion, 0x4E210001, nullptr, kPluginApiVersion), kAlertAnswerYes);
    EXPECT_EQ(table.SX_AlertMessage(nullptr, kAlertWarning, 0x4E210002, nullptr, kPluginApiVersion), kAlertAnswerOk);
    EXPECT_EQ(table.SX_AlertMessage(nullptr, 0, 0, "Warning to plug-in developer", kPluginApiVersion), kAlertAnswerOk);
    EXPECT_EQ(table.SX_AlertMessage(nullptr, kAlertQuestion, 0x4E210063, nullptr, kPluginApiVersion), kAlertAnswerNo);

    std::vector<std::string> texts;
    for (const auto& alert : script.Alerts()) texts.push_back(alert.request.text);   // a missing text is never empty
    EXPECT_EQ(texts, (std::vector<std::string>{"Nothing is selected. Use the whole score?", "Second text",
                                               "Warning to plug-in developer", "(text 0x4E210063 not found)"}));
    EXPECT_EQ(support::Ints(script.Alerts()[0].request.stringId, script.Alerts()[1].request.style),
              support::Ints(0x4E210001, kAlertWarning));

    EXPECT_EQ(Host().Alert(kAlertQuestion, 0x4E210001, nullptr), kAlertAnswerNo);
    EXPECT_EQ(ResolveAlertText(0x4E220001), "");
    toolbox::CloseResFile(*opened);
    toolbox::UseResFile(before);
}

}   // namespace
}   // namespace stavio
