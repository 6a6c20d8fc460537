// The scripted front end's dialogs: the script's actions, done through the dialog's own items.
#include "stavio/dialogs/dialog_session.h"
#include "stavio/front_end.h"

namespace stavio {

namespace {

constexpr int16_t kCancelItem = 2;
// A dialog that closes itself with a timer does so within a few ticks; one that keeps ticking
// without ending is given up on.
constexpr int kMostTicksWhileHidden = 100;

// Fires the timers that are due, and while the program keeps its dialog hidden with a timer
// running, lets time pass: such a dialog is waiting to close itself.
void Settle(DialogSession& session)
{
    session.FireDueTimers(toolbox::NowMilliseconds());
    for (int tick = 0; tick < kMostTicksWhileHidden && !session.Ended() && !session.Shown(); ++tick) {
        if (!session.LetTimePass()) {
            break;
        }
    }
}

bool Perform(DialogSession& session, const DialogAction& action, std::string& why)
{
    switch (action.kind) {
        case DialogAction::Kind::Press: return session.Press(action.item, why);
        case DialogAction::Kind::Choose: return session.Choose(action.item, action.number, why);
        case DialogAction::Kind::ChooseNamed: return session.ChooseNamed(action.item, action.text, why);
        case DialogAction::Kind::ClickRow:
        case DialogAction::Kind::ClickRowNamed: {
            const toolbox::ListControl* list = session.ListInItem(action.item);
            if (list == nullptr) {
                why = "there is no list in item " + std::to_string(action.item);
                return false;
            }
            if (action.kind == DialogAction::Kind::ClickRow) {
                return session.ClickListRow(*list, action.number - 1, action.modifiers, why);
            }
            return session.ClickListRowNamed(*list, action.text, why);
        }
        case DialogAction::Kind::Click: return session.Click(action.point, action.modifiers, why);
        case DialogAction::Kind::CloseBox: session.CloseBox(); return true;
        case DialogAction::Kind::WaitForTimers:
            if (!session.LetTimePass()) {
                why = "no timer runs";
                return false;
            }
            return true;
    }
    return false;
}

// The action with the label of the item it presses, when it has one: press "OK" (item 1).
std::string Describe(const DialogAction& action, const toolbox::Dialog& dialog)
{
    const toolbox::DialogItem* item = dialog.Item(action.item);
    if (action.kind == DialogAction::Kind::Press && item != nullptr && !item->Label().empty()) {
        return "press \"" + item->Label() + "\" (item " + std::to_string(action.item) + ")";
    }
    return action.Describe();
}

// Cancel, as a person would: the Cancel button when it can be pressed, else the close box.
void GiveUp(DialogSession& session)
{
    std::string why;
    if (!session.Ended() && !session.Press(kCancelItem, why)) {
        session.CloseBox();
    }
    Settle(session);
}

}   // namespace

void ScriptedFrontEnd::RunDialog(DialogSession& session)
{
    Settle(session);
    if (session.Ended()) {
        return;
    }
    if (!session.Shown()) {
        session.Note("the dialog's program did not show the dialog; it was closed");
        session.CloseBox();
        return;
    }
    session.Paint();
    const bool scripted =
        dialogScript_ && (dialogScript_->dialogId == 0 || dialogScript_->dialogId == session.Dialog().LayoutId());
    // The script is copied: a message may open another dialog that runs with this front end.
    const std::vector<DialogAction> actions = scripted ? dialogScript_->actions : std::vector<DialogAction>();
    std::string lastDone;
    for (const DialogAction& action : actions) {
        if (session.Ended()) {
            session.Note("the dialog ended before the script could " + Describe(action, session.Dialog()));
            return;
        }
        std::string why;
        if (!Perform(session, action, why)) {
            session.Note("could not " + Describe(action, session.Dialog()) + ": " + why + "; the dialog was cancelled");
            GiveUp(session);
            return;
        }
        lastDone = Describe(action, session.Dialog());
        Settle(session);
    }
    if (session.Ended()) {
        return;
    }
    if (!scripted) {
        session.Note("no script for dialog " + std::to_string(session.Dialog().LayoutId()) + "; it was cancelled");
    } else if (lastDone.empty()) {
        session.Note("the script has no actions; the dialog was cancelled");
    } else {
        session.Note("the dialog stayed open after the last scripted action, " + lastDone + "; it was cancelled");
    }
    GiveUp(session);
}

}   // namespace stavio
