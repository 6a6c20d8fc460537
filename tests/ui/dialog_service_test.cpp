// The host's dialog service and its two front ends, driven with a probe program: what messages
// a dialog's program receives and when, the item services on the toolbox model, timers, the
// close box, nested dialogs, and a person at a terminal (an injected input stream).
#include "stavio/dialogs/terminal_front_end.h"
#include "tests/ui/ui_test_support.h"
#include "toolbox/dialogs.h"
#include "toolbox/resources.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <tuple>

using stavio::DialogAction;
using namespace ui_test;

namespace {

constexpr int32_t kProbeDialog = 300;
constexpr int32_t kNestedDialog = 301;

const char kLayouts[] = "resource 'DLOG' 300 \"Probe\" {\n"
                        "    title = \"Probe\"\n"
                        "    size = 300 200\n"
                        "    item 6 = static 150 80 280 100 \"A note\"\n"
                        "    item 4 = user 20 50 135 150\n"
                        "    item 3 = checkbox 20 20 180 38 \"Loud\"\n"
                        "    item 5 = popup 150 50 280 70 \"Kit:\"\n"
                        "    entries 5 = \"Rock\" \"Jazz\"\n"
                        "    item 2 = button 110 160 190 180 \"Cancel\"\n"
                        "    item 1 = button 200 160 280 180 \"OK\"\n"
                        "}\n"
                        "resource 'DLOG' 301 {\n"
                        "    item 1 = button 10 10 60 30 \"OK\"\n"
                        "    item 2 = button 70 10 130 30 \"Cancel\"\n"
                        "}\n";

// What the probe program does and what it was told.
struct Probe {
    const StavioFuncs* table = nullptr;
    std::vector<std::string> messages;
    bool show = true;
    int32_t timerPeriod = 0;   // started at initialisation when not 0
    bool endOnCancel = true;
    bool endOnCloseRequest = false;
    int listRows = 0;   // a list in item 4 with this many rows
    bool nestOnOK = false;
    std::string onOK;   // what the probe saw when OK was pressed
    EDLG dialog = nullptr;
};
Probe gProbe;

toolbox::ListControl* ProbeList(EDLG dialog)
{
    toolbox::Dialog* model = toolbox::LiveDialog(dialog);
    return model == nullptr || model->Lists().empty() ? nullptr : model->Lists().front().get();
}

int32_t NestedHandler(EDLG dialog, uint32_t message, intptr_t wParam, intptr_t, void*)
{
    gProbe.messages.push_back("nested " + std::to_string(message) +
                              (message == kDlgMsgCommand ? " " + std::to_string(wParam) : ""));
    if (message == kDlgMsgInit) {
        toolbox::LiveDialog(dialog)->SetShown(true);
    } else if (message == kDlgMsgCommand && wParam == 2) {
        gProbe.table->SX_EndDialog(dialog, 2, kPluginApiVersion);
    }
    return 0;
}

int32_t ProbeHandler(EDLG dialog, uint32_t message, intptr_t wParam, intptr_t lParam, void* flags)
{
    static const std::map<uint32_t, std::string> kNames{{kDlgMsgInit, "init"},
                                                        {kDlgMsgCommand, "command "},
                                                        {kDlgMsgTimer, "timer "},
                                                        {kDlgMsgPaint, "paint"},
                                                        {kDlgMsgClose, "close"},
                                                        {kDlgMsgMouseDown, "mouse"},
                                                        {kDlgMsgCloseRequest, "close request"}};
    if (const auto name = kNames.find(message); name != kNames.end())
        gProbe.messages.push_back(name->second + (name->second.back() == ' ' ? std::to_string(wParam) : ""));
    const StavioFuncs& host = *gProbe.table;
    gProbe.dialog = dialog;
    switch (message) {
        case kDlgMsgInit:
            if (gProbe.listRows > 0) {
                toolbox::ListSpec spec;
                spec.view = toolbox::DialogRect{20, 50, 120, 150};
                spec.singleSelection = true;
                toolbox::ListControl* list = nullptr;
                toolbox::LiveDialog(dialog)->NewList(spec, list);
                list->AddRows(gProbe.listRows, 0);
                for (int row = 0; row < gProbe.listRows; ++row)
                    list->SetCellText(toolbox::Cell{row, 0}, "Row " + std::to_string(row + 1));
            }
            if (gProbe.timerPeriod > 0) host.SX_SetTimer(dialog, 1, gProbe.timerPeriod, kPluginApiVersion);
            if (gProbe.show) toolbox::LiveDialog(dialog)->SetShown(true);
            break;
        case kDlgMsgCommand:
            if (wParam == 3) {
                host.SX_SetDlgCntlVal(dialog, 3, host.SX_GetDlgCntlVal(dialog, 3, kPluginApiVersion) == 0 ? 1 : 0,
                                      kPluginApiVersion);
            } else if (wParam == 1) {
                toolbox::Cell cell{0, 0};
                const toolbox::ListControl* list = ProbeList(dialog);
                gProbe.onOK = "loud " + std::to_string(host.SX_GetDlgItemVal(dialog, 3, kPluginApiVersion)) + ", kit " +
                              std::to_string(host.SX_GetDlgCntlVal(dialog, 5, kPluginApiVersion)) + ", row " +
                              std::to_string(list != nullptr && list->FindSelectedCell(cell) ? cell.row + 1 : 0);
                if (gProbe.nestOnOK)
                    host.SX_Dialog(kNestedDialog, reinterpret_cast<void*>(&NestedHandler), nullptr, 1, nullptr,
                                   kPluginApiVersion);
                host.SX_EndDialog(dialog, 7, kPluginApiVersion);
            } else if (wParam == 2 && gProbe.endOnCancel) {
                *static_cast<uint32_t*>(flags) |= 0x10000;
                host.SX_EndDialog(dialog, 2, kPluginApiVersion);
            }
            break;
        case kDlgMsgTimer:
            host.SX_KillTimer(dialog, static_cast<int32_t>(wParam), kPluginApiVersion);
            host.SX_EndDialog(dialog, 0, kPluginApiVersion);
            break;
        case kDlgMsgMouseDown:
            if (toolbox::ListControl* list = ProbeList(dialog))
                list->Click(toolbox::Point{static_cast<int>(wParam), toolbox::MouseDownY(lParam)},
                            toolbox::MouseDownModifiers(lParam), toolbox::NowMilliseconds());
            break;
        case kDlgMsgCloseRequest:
            if (gProbe.endOnCloseRequest) host.SX_EndDialog(dialog, 9, kPluginApiVersion);
            break;
        default: break;
    }
    return 0;
}

using Messages = std::vector<std::string>;

// A person at a terminal who types `input`.
struct Terminal {
    explicit Terminal(const std::string& input) : in(input) {}
    std::istringstream in;
    std::ostringstream out;
    stavio::TerminalFrontEnd frontEnd{in, out};
};

class DialogService : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetProbe();
        WriteFile(folder_ / "probe.rsrc", kLayouts);
        ASSERT_GE(toolbox::OpenResFile(toolbox::FileSpec{folder_.Path(), "probe.rsrc"}, true), 0);
    }
    void TearDown() override
    {
        toolbox::DisposeAllDialogs();
        toolbox::CloseAllResFiles();
    }
    // The older pose's transition vector is met by the groove dialog's tests in both poses.
    int32_t Run(stavio::FrontEnd& frontEnd, int32_t id = kProbeDialog)
    {
        stavio::Host host(stavio::HostSettings{}, &frontEnd);
        table_ = host.FunctionTable();
        return table_.SX_Dialog(id, reinterpret_cast<void*>(&ProbeHandler), nullptr, 1, &flags_, kPluginApiVersion);
    }
    int32_t RunScript(std::vector<DialogAction> actions)
    {
        script_.SetDialogScript(stavio::DialogScript{kProbeDialog, std::move(actions)});
        return Run(script_);
    }
    std::string Notes() const { return AllNotes(script_); }
    void ResetProbe()
    {
        gProbe = Probe{};
        gProbe.table = &table_;
    }

    TempFolder folder_;
    StavioFuncs table_{};
    uint32_t flags_ = 0;
    stavio::ScriptedFrontEnd script_;
};

}   // namespace

TEST_F(DialogService, SendsEachActionAsTheProgramsMessageAndClosesLast)
{
    EXPECT_EQ(
        RunScript({DialogAction::PressItem(3), DialogAction::ChooseEntryNamed(5, "jazz"), DialogAction::PressItem(1)}),
        7);
    EXPECT_EQ(gProbe.messages, (Messages{"init", "paint", "command 3", "command 5", "command 1", "close"}));
    EXPECT_EQ(gProbe.onOK, "loud 1, kit 2, row 0");
    ASSERT_EQ(script_.DialogLog().size(), 1u);
    EXPECT_EQ(support::Ints(script_.DialogLog()[0].shown, script_.DialogLog()[0].result), support::Ints(true, 7));
    EXPECT_TRUE(Notes().empty()) << Notes();

    // The model is gone with the dialog: the services refuse the stale handle.
    EXPECT_EQ(toolbox::LiveDialog(gProbe.dialog), nullptr);
    EXPECT_EQ(support::Ints(table_.SX_GetDlgCntlVal(gProbe.dialog, 3, kPluginApiVersion),
                            table_.SX_EndDialog(gProbe.dialog, 1, kPluginApiVersion),
                            table_.SX_SetTimer(gProbe.dialog, 1, 10, kPluginApiVersion)),
              support::Ints(0, 0, 0));
}

TEST_F(DialogService, ItemServicesWorkOnTheLiveModel)
{
    struct Checker : stavio::ScriptedFrontEnd {
        const StavioFuncs* table;
        std::vector<int32_t> answers;
        void RunDialog(stavio::DialogSession& session) override
        {
            EDLG dialog = &session.Dialog();
            const StavioFuncs& t = *table;
            answers = {t.SX_SetDlgCntlVal(dialog, 5, 2, kPluginApiVersion),
                       t.SX_GetDlgCntlVal(dialog, 5, kPluginApiVersion),
                       t.SX_SetDlgItemVal(dialog, 5, 9, kPluginApiVersion),
                       t.SX_GetDlgItemVal(dialog, 5, kPluginApiVersion),
                       t.SX_SetDlgCntlVal(dialog, 6, 1, kPluginApiVersion),
                       t.SX_EnableDlgItem(dialog, 3, 0, kPluginApiVersion),
                       t.SX_EnableDlgItem(dialog, 99, 0, kPluginApiVersion),
                       t.SX_ShowHideDlgItem(dialog, 1, 0, kPluginApiVersion),
                       t.SX_KillTimer(dialog, 4, kPluginApiVersion)};
            EXPECT_EQ(t.SX_GetDlgCntl(dialog, 6, kPluginApiVersion), nullptr) << "static text is no control";
            EXPECT_EQ(toolbox::LiveControl(t.SX_GetDlgCntl(dialog, 5, kPluginApiVersion)), session.Dialog().Item(5));
            for (const auto& [item, problem] : std::vector<std::pair<int16_t, std::string>>{
                     {3, "item 3 (\"Loud\") is disabled"},
                     {1, "item 1 (\"OK\") is hidden"},
                     {5, "item 5 (\"Kit:\") is not a button, radio button or checkbox"}}) {
                EXPECT_EQ(session.Press(item).Message(), problem);
            }
            EXPECT_FALSE(session.Click(toolbox::Point{400, 10}, 0));
            EXPECT_TRUE(t.SX_EndDialog(dialog, 4, kPluginApiVersion));
            EXPECT_EQ(session.Press(2).Message(), "the dialog has ended");
        }
    } checker;
    stavio::Host host(stavio::HostSettings{}, &checker);
    table_ = host.FunctionTable();
    checker.table = &table_;
    checker.SetDialogScript({});
    EXPECT_EQ(
        table_.SX_Dialog(kProbeDialog, reinterpret_cast<void*>(&ProbeHandler), nullptr, 1, &flags_, kPluginApiVersion),
        4);
    EXPECT_EQ(checker.answers, (std::vector<int32_t>{1, 2, 1, 2, 0, 1, 0, 1, 0}));
    EXPECT_EQ(gProbe.messages, (Messages{"init", "close"}));
}

TEST_F(DialogService, DialogsAreRefusedWhenTheyCannotRun)
{
    stavio::ScriptedFrontEnd alertsOnly;
    EXPECT_EQ(Run(alertsOnly), 0);
    EXPECT_TRUE(gProbe.messages.empty()) << "the program is never initialised";
    ASSERT_EQ(alertsOnly.DialogLog().size(), 1u);
    EXPECT_FALSE(alertsOnly.DialogLog()[0].opened);
    EXPECT_EQ(alertsOnly.DialogLog()[0].problem, "this front end shows no dialogs");

    script_.SetDialogScript({});
    EXPECT_EQ(Run(script_, 999), 0);
    EXPECT_TRUE(gProbe.messages.empty());
    support::ExpectHas(script_.DialogLog().back().problem, {"999"});

    stavio::Host host(stavio::HostSettings{}, &script_);
    EXPECT_EQ(host.FunctionTable().SX_Dialog(kProbeDialog, nullptr, nullptr, 1, &flags_, kPluginApiVersion), 0);
    EXPECT_EQ(script_.DialogLog().back().problem, "the plug-in gave no dialog handler");
}

// (A hidden dialog ended by its timer under a script: the groove dialog without grooves.)
TEST_F(DialogService, AHiddenDialogIsClosedByTheScriptOrWaitedForAtTheTerminal)
{
    // Without a timer, a dialog its program never shows is closed by the front end.
    gProbe.show = false;
    EXPECT_EQ(RunScript({DialogAction::PressItem(1)}), 2);
    EXPECT_EQ(gProbe.messages, (Messages{"init", "close request", "command 2", "close"}));
    support::ExpectHas(Notes(), {"did not show the dialog"});

    // At the terminal the same dialog waits for its timer, showing nothing.
    ResetProbe();
    gProbe.show = false;
    gProbe.timerPeriod = 20;
    Terminal person("");
    EXPECT_EQ(Run(person.frontEnd), 0);
    EXPECT_EQ(gProbe.messages, (Messages{"init", "timer 1", "close"}));
    EXPECT_TRUE(person.out.str().empty()) << person.out.str();
}

TEST_F(DialogService, TheCloseBoxFallsBackOnCancelAndThenEndsTheDialogItself)
{
    // The program ends on Cancel; it does not; it ends on the close request itself.
    using Case = std::tuple<bool, bool, int32_t, Messages>;
    for (const auto& [endOnCancel, endOnCloseRequest, result, messages] :
         std::vector<Case>{{true, false, 2, {"init", "paint", "close request", "command 2", "close"}},
                           {false, false, 0, {"init", "paint", "close request", "command 2", "close"}},
                           {false, true, 9, {"init", "paint", "close request", "close"}}}) {
        ResetProbe();
        gProbe.endOnCancel = endOnCancel;
        gProbe.endOnCloseRequest = endOnCloseRequest;
        EXPECT_EQ(RunScript({DialogAction::PressCloseBox()}), result);
        EXPECT_EQ(gProbe.messages, messages);
    }
    EXPECT_EQ(flags_, 0x10000u);
}

TEST_F(DialogService, ADialogOpenedFromADialogRunsAndClosesInside)
{
    gProbe.nestOnOK = true;
    EXPECT_EQ(RunScript({DialogAction::PressItem(1)}), 7);
    auto nested = [](uint32_t message) { return "nested " + std::to_string(message); };
    EXPECT_EQ(gProbe.messages, (Messages{"init", "paint", "command 1", nested(kDlgMsgInit), nested(kDlgMsgPaint),
                                         nested(kDlgMsgCommand) + " 2", nested(kDlgMsgClose), "close"}));
    ASSERT_EQ(script_.DialogLog().size(), 2u);
    EXPECT_EQ(script_.DialogLog()[0].dialogId, kNestedDialog);
    support::ExpectHas(script_.DialogLog()[0].notes.at(0), {"no script for dialog 301"});
}

// ---- A person at a terminal ---------------------------------------------------------------------

TEST_F(DialogService, ThePersonSeesTheDialogAndTypesWhatToDo)
{
    gProbe.listRows = 3;
    Terminal person("5\n2\nset 5 Jazz\npress 3\nbogus\npress 9\nset 5 4\nok\n");
    EXPECT_EQ(Run(person.frontEnd), 7);
    EXPECT_EQ(gProbe.onOK, "loud 1, kit 2, row 2");
    support::ExpectHas(person.out.str(),
                       {"== Probe ==\nA note\n", "      1  Row 1\n   >  2  Row 2\n", "  [3] [x] Loud\n",
                        "  [5] Kit: Jazz   [1 Rock, 2 Jazz]\n", "  [1] <OK>\n", "Unknown command \"bogus\"",
                        "Cannot do that: the dialog has no item 9", "Cannot do that: item 5 (\"Kit:\") has no entry 4",
                        "the list has no row 5 (it has 3)"});
    EXPECT_EQ(gProbe.messages.back(), "close");
}

TEST_F(DialogService, TheEndOfTheInputClosesTheDialogAndAnswersNo)
{
    Terminal person("cancel-not\n");
    EXPECT_EQ(Run(person.frontEnd), 2);
    EXPECT_EQ(gProbe.messages, (Messages{"init", "paint", "close request", "command 2", "close"}));
    support::ExpectHas(person.out.str(), {"(end of input: the dialog is closed)"});

    EXPECT_EQ(person.frontEnd.Alert(stavio::AlertRequest{kAlertQuestion, 0, "Go on?"}), kAlertAnswerNo);
    ASSERT_EQ(person.frontEnd.Alerts().size(), 1u);
    EXPECT_EQ(person.frontEnd.Alerts()[0].answer, kAlertAnswerNo);
}

TEST(TerminalFrontEnd, AsksQuestionsUntilAnsweredAndShowsNotices)
{
    Terminal person("maybe\n YES \nn\n");
    stavio::TerminalFrontEnd& terminal = person.frontEnd;
    EXPECT_EQ(terminal.Alert(stavio::AlertRequest{kAlertQuestion, 0x4E210001, "Fill everything?"}), kAlertAnswerYes);
    EXPECT_EQ(terminal.Alert(stavio::AlertRequest{kAlertStop, 0, "Choose a groove."}), kAlertAnswerOk);
    EXPECT_EQ(terminal.Alert(stavio::AlertRequest{kAlertQuestion, 0, "Replace?"}), kAlertAnswerNo);
    EXPECT_EQ(person.out.str(),
              "\nQuestion: Fill everything?\nYes or No? [y/n] Yes or No? [y/n] \nStop: Choose a groove.\n"
              "\nQuestion: Replace?\nYes or No? [y/n] ");
}
