// One running plug-in dialog as a front end sees it: the toolbox model to show, and the
// actions a person can take, each turned into the message the dialog's program expects.
//
// The session sends a message only while the dialog is open and no message of it is being
// handled (a plug-in that calls back into the host from its handler cannot be re-entered
// through its own dialog). After every message the caller can ask Ended(); once it has, no
// message but the final close is sent, and the host sends that one (Finish).
#pragma once

#include "sdk/funcs.h"
#include "stavio/front_end.h"
#include "toolbox/dialogs.h"
#include "toolbox/status.h"

#include <string>
#include <vector>

namespace stavio {

// The items every dialog keeps in the same place: OK is item 1, Cancel item 2.
constexpr int16_t kOKItem = 1;
constexpr int16_t kCancelItem = 2;

// Sends the dialog's first message when made and its last when it goes, however the run ends:
// the plug-in's handler always sees the pair.
class DialogSession {
public:
    DialogSession(toolbox::Dialog& dialog, SXDialogHandler handler, uint32_t* flags);
    ~DialogSession() { Finish(); }
    DialogSession(const DialogSession&) = delete;
    DialogSession& operator=(const DialogSession&) = delete;

    toolbox::Dialog& Dialog() { return dialog_; }
    const toolbox::Dialog& Dialog() const { return dialog_; }
    bool Ended() const { return dialog_.HasEnded(); }
    bool Shown() const { return dialog_.IsShown(); }
    // True while a message of this dialog is being handled.
    bool Busy() const { return depth_ > 0; }

    // ---- Messages ------------------------------------------------------------------------------
    // The first message; the host sends it once, before the front end runs the dialog.
    void Initialise();
    // Redraw: the program repaints its lists and frames.
    void Paint();

    // ---- A person's actions. Each answers a failure saying why when it cannot be done: the
    // dialog is not shown or has ended, the item is missing, hidden, disabled or of another kind.
    // A press on a button, radio button or checkbox.
    toolbox::Status Press(int16_t item);
    // Choosing entry `entry` (from 1) of a pop-up menu: its value changes, then the command.
    toolbox::Status Choose(int16_t item, int entry);
    toolbox::Status ChooseNamed(int16_t item, const std::string& text);
    // A mouse press anywhere in the dialog (not on a control: those are Press and Choose).
    toolbox::Status Click(toolbox::Point point, toolbox::Modifiers modifiers);
    // A press on row `row` (from 0) of `list`, scrolling it into view first with its scroll bar.
    toolbox::Status ClickListRow(const toolbox::ListControl& list, int row, toolbox::Modifiers modifiers);
    // The row that reads `text` exactly, else the only row that does ignoring case.
    toolbox::Status ClickListRowNamed(const toolbox::ListControl& list, const std::string& text);
    // The window's close box: a close request; if the program does not end the dialog, Cancel
    // (item 2) when it is an enabled, visible button; if that does not end it either, the dialog
    // is ended with result 0.
    void CloseBox();
    // When the dialog's program never showed it: a note saying so, then the close box. Says
    // whether it did so.
    bool CloseIfNeverShown();

    // ---- Time ------------------------------------------------------------------------------------
    // Sends a timer message for each timer due at `nowMs`.
    void FireDueTimers(uint64_t nowMs);
    // Jumps to the next timer's time and fires what is due then; false when no timer runs.
    bool LetTimePass();

    // ---- Lists -----------------------------------------------------------------------------------
    // The list shown within dialog item `item` (the first whose bounds overlap the item); null
    // when there is none.
    const toolbox::ListControl* ListInItem(int16_t item) const;

    // ---- Reports ---------------------------------------------------------------------------------
    void Note(std::string note) { notes_.push_back(std::move(note)); }
    const std::vector<std::string>& Notes() const { return notes_; }
    bool WasShown() const { return wasShown_; }

    // The last message: sent once, however the dialog ended (also when it has not).
    void Finish();

private:
    bool Send(uint32_t message, intptr_t wParam, intptr_t lParam);
    toolbox::Status Sent(uint32_t message, intptr_t wParam, intptr_t lParam);
    toolbox::Status CanAct() const;
    toolbox::Result<const toolbox::DialogItem*> UsableItem(int16_t item) const;

    toolbox::Dialog& dialog_;
    SXDialogHandler handler_;
    uint32_t* flags_;
    int depth_ = 0;
    bool initialised_ = false;
    bool finished_ = false;
    bool wasShown_ = false;
    std::vector<std::string> notes_;
};

// The text of a pop-up's entries for messages: "1 Piano, 2 Drums".
std::string DescribeEntries(const toolbox::DialogItem& popup);

}   // namespace stavio
