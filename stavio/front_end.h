// Where the host's alerts and dialogs meet a person or a script.
//
// The host resolves an alert's text before it reaches the front end: the text given by the
// caller, or for a string id the entry of the string list found through the resource chain.
//
// Dialogs: the host makes a plug-in's dialog from its layout, initialises it and hands it to
// the front end as a DialogSession (stavio/dialogs/dialog_session.h); the front end shows it
// and acts on it until it ends. A front end that shows no dialogs makes the host refuse them:
// SX_Dialog then answers 0 and the plug-in's dialog is never made.
#pragma once

#include "sdk/funcs.h"
#include "toolbox/events.h"
#include "toolbox/geometry.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace stavio {

class DialogSession;

struct AlertRequest {
    int32_t style = 0;      // 16 stop, 48 warning, 36 Yes/No question, 0 plain notice
    int32_t stringId = 0;   // 0 when the caller gave the text itself
    std::string text;       // the resolved text
};

// An alert as shown, and the button that answered it.
struct AlertRecord {
    AlertRequest request;
    int32_t answer = 0;
};

// Alert styles that ask a question; every other style is a notice with one button.
bool IsQuestion(int32_t style);

// What became of one dialog request.
struct DialogOutcome {
    int32_t dialogId = 0;
    bool opened = false;              // made from its layout and initialised
    bool shown = false;               // the program showed it
    int32_t result = 0;               // the dialog's result (what SX_Dialog answered)
    std::string problem;              // why it was not opened
    std::vector<std::string> notes;   // what the front end had to report while running it
};

class FrontEnd {
public:
    virtual ~FrontEnd() = default;
    // Shows the alert and returns the button: 6 Yes / 7 No for a question, 1 for a notice.
    virtual int32_t Alert(const AlertRequest& request) = 0;

    // Whether this front end shows dialogs; by default it does not.
    virtual bool ShowsDialogs() const { return false; }
    // Runs an initialised dialog until it ends (or until the front end gives up: the host then
    // closes it). Called only when ShowsDialogs(); may be called again from inside a message of
    // the same dialog (a plug-in that opens a dialog from its dialog).
    virtual void RunDialog(DialogSession& session);

    // Every dialog request, oldest first, as the host's dialog service recorded it.
    const std::vector<DialogOutcome>& DialogLog() const { return dialogLog_; }
    void NoteDialog(DialogOutcome outcome) { dialogLog_.push_back(std::move(outcome)); }

private:
    std::vector<DialogOutcome> dialogLog_;
};

// One step of a dialog script, done as a person would do it: through the dialog's own items.
struct DialogAction {
    enum class Kind {
        Press,           // press button, radio button or checkbox `item`
        Choose,          // choose entry `number` (from 1) of pop-up `item`
        ChooseNamed,     // choose the entry of pop-up `item` that reads `text`
        ClickRow,        // click row `number` (from 1) of the list inside item `item`
        ClickRowNamed,   // click the row of that list that reads `text`
        Click,           // press the mouse at `point` with `modifiers`
        CloseBox,        // the window's close box
        WaitForTimers,   // let time pass until the next timer fires
    };
    Kind kind = Kind::Press;
    int16_t item = 0;
    int number = 0;
    std::string text;
    toolbox::Point point;
    toolbox::Modifiers modifiers = toolbox::kNoModifiers;

    static DialogAction PressItem(int16_t item);
    static DialogAction ChooseEntry(int16_t item, int entry);
    static DialogAction ChooseEntryNamed(int16_t item, std::string text);
    static DialogAction ClickListRow(int16_t item, int row);
    static DialogAction ClickListRowNamed(int16_t item, std::string text);
    static DialogAction ClickAt(toolbox::Point point, toolbox::Modifiers modifiers = toolbox::kNoModifiers);
    static DialogAction PressCloseBox();
    static DialogAction LetTimersFire();

    // "press item 1", "choose \"Drums\" in pop-up 8" ... for reports.
    std::string Describe() const;
};

// What the scripted front end does with a dialog: its actions, in order. When the dialog is
// still open after the last one (the program refused to close it), the front end notes it and
// presses Cancel (item 2), then the close box. A dialog that the program does not show and that
// has a timer running is given time until it ends by itself.
struct DialogScript {
    int32_t dialogId = 0;   // the layout the script is for; 0 for any. Other dialogs are cancelled.
    std::vector<DialogAction> actions;
};

// Answers questions from a list given in advance, in order, and records every alert. A question
// with no answer left gets the default answer: No, unless changed. The script never says "yes"
// on its own. With a dialog script it also runs dialogs (stavio/dialogs/scripted_dialog.cpp).
class ScriptedFrontEnd : public FrontEnd {
public:
    using Record = AlertRecord;

    ScriptedFrontEnd() = default;
    explicit ScriptedFrontEnd(std::vector<int32_t> answers);

    void AddAnswer(int32_t answer) { answers_.push_back(answer); }
    // The answer to questions once the list is used up (kAlertAnswerNo at first).
    void SetDefaultAnswer(int32_t answer) { defaultAnswer_ = answer; }
    int32_t Alert(const AlertRequest& request) override;

    const std::vector<Record>& Alerts() const { return alerts_; }
    size_t AnswersLeft() const { return answers_.size(); }
    void ClearAlerts() { alerts_.clear(); }

    void SetDialogScript(DialogScript script) { dialogScript_ = std::move(script); }
    bool ShowsDialogs() const override { return dialogScript_.has_value(); }
    void RunDialog(DialogSession& session) override;

private:
    std::deque<int32_t> answers_;
    int32_t defaultAnswer_ = kAlertAnswerNo;
    std::vector<Record> alerts_;
    std::optional<DialogScript> dialogScript_;
};

}   // namespace stavio
