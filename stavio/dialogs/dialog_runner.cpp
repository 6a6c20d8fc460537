#include "stavio/dialogs/dialog_runner.h"

#include "stavio/dialogs/dialog_session.h"
#include "toolbox/dialogs.h"

namespace stavio {

namespace {

// Disposes of the dialog however the run ends.
class DialogOwner {
public:
    explicit DialogOwner(toolbox::Dialog* dialog) : dialog_(dialog) {}
    ~DialogOwner() { toolbox::DisposeDialog(dialog_); }
    DialogOwner(const DialogOwner&) = delete;
    DialogOwner& operator=(const DialogOwner&) = delete;

private:
    toolbox::Dialog* dialog_;
};

}   // namespace

int32_t RunDialogRequest(const DialogRequest& request, FrontEnd& frontEnd)
{
    DialogOutcome outcome;
    outcome.dialogId = request.dialogId;
    if (!frontEnd.ShowsDialogs()) {
        outcome.problem = "this front end shows no dialogs";
        frontEnd.NoteDialog(std::move(outcome));
        return 0;
    }
    if (request.handler == nullptr) {
        outcome.problem = "the plug-in gave no dialog handler";
        frontEnd.NoteDialog(std::move(outcome));
        return 0;
    }
    if (request.dialogId < INT16_MIN || request.dialogId > INT16_MAX) {
        outcome.problem = "there is no dialog layout " + std::to_string(request.dialogId);
        frontEnd.NoteDialog(std::move(outcome));
        return 0;
    }
    const toolbox::Result<toolbox::Dialog*> made = toolbox::NewDialog(static_cast<int16_t>(request.dialogId));
    if (!made) {
        outcome.problem = made.Message();
        frontEnd.NoteDialog(std::move(outcome));
        return 0;
    }
    toolbox::Dialog* dialog = *made;
    const DialogOwner owner(dialog);
    dialog->SetUserData(request.userData);
    outcome.opened = true;

    // The session goes before the dialog does: its last message reaches a dialog that is there.
    DialogSession session(*dialog, request.handler, request.flags);
    session.Initialise();
    try {
        frontEnd.RunDialog(session);
    } catch (...) {
        session.Note("the front end failed while running the dialog");
    }
    if (!session.Ended()) {
        session.Note("the front end left the dialog open; the host closed it");
        dialog->End(0);
    }
    session.Finish();

    outcome.shown = session.WasShown();
    outcome.result = dialog->Result();
    outcome.notes = session.Notes();
    frontEnd.NoteDialog(std::move(outcome));
    return dialog->Result();
}

}   // namespace stavio
