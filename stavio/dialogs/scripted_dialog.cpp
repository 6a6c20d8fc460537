// The scripted front end's dialogs: the script's actions, done through the dialog's own items.
#include "stavio/dialogs/dialog_session.h"
#include "stavio/front_end.h"

namespace stavio {

namespace {

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

toolbox::Status Perform(DialogSession& session, const DialogAction& action)
{
    switch (action.kind) {
        case DialogAction::Kind::Press: return session.Press(action.item);
        case DialogAction::Kind::Choose: return session.Choose(action.item, action.number);
        case DialogAction::Kind::ChooseNamed: return session.ChooseNamed(action.item, action.text);
        case DialogAction::Kind::ClickRow:
        case DialogAction::Kind::ClickRowNamed: {
            const toolbox::ListControl* list = session.ListInItem(action.item);
            if (list == nullptr) {
                return toolbox::Status::Failure("there is no list in item " + std::to_string(action.item));
            }
            if (action.kind == DialogAction::Kind::ClickRow) {
                return session.ClickListRow(*list, action.number - 1, action.modifiers);
            }
            return session.ClickListRowNamed(*list, action.text);
        }
        case DialogAction::Kind::Click: return session.Click(action.point, action.modifiers);
        case DialogAction::Kind::CloseBox: session.CloseBox(); return toolbox::Status::Ok();
        case DialogAction::Kind::WaitForTimers:
            return session.LetTimePass() ? toolbox::Status::Ok() : toolbox::Status::Failure("no timer runs");
    }
    return toolbox::Status::Failure("the action is unknown");
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
    if (!session.Ended() && !session.Press(kCancelItem)) {
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
    if (session.CloseIfNeverShown()) {
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
        const toolbox::Status done = Perform(session, action);
        if (!done) {
            session.Note("could not " + Describe(action, session.Dialog()) + ": " + done.Message() +
                         "; the dialog was cancelled");
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
