#include "stavio/front_end.h"

#include "sdk/funcs.h"

#include <sstream>

namespace stavio {

bool IsQuestion(int32_t style)
{
    return style == kAlertQuestion;
}

void FrontEnd::RunDialog(DialogSession&)
{}

ScriptedFrontEnd::ScriptedFrontEnd(std::vector<int32_t> answers) : answers_(answers.begin(), answers.end())
{}

int32_t ScriptedFrontEnd::Alert(const AlertRequest& request)
{
    int32_t answer = kAlertAnswerOk;
    if (IsQuestion(request.style)) {
        answer = defaultAnswer_;
        if (!answers_.empty()) {
            answer = answers_.front();
            answers_.pop_front();
        }
    }
    alerts_.push_back(Record{request, answer});
    return answer;
}

namespace {

// An action of `kind`: on item `item`, naming an entry or row by number or by text where it
// names one.
DialogAction MakeAction(DialogAction::Kind kind, int16_t item = 0, int number = 0, std::string text = {})
{
    DialogAction action;
    action.kind = kind;
    action.item = item;
    action.number = number;
    action.text = std::move(text);
    return action;
}

}   // namespace

DialogAction DialogAction::PressItem(int16_t item)
{
    return MakeAction(Kind::Press, item);
}

DialogAction DialogAction::ChooseEntry(int16_t item, int entry)
{
    return MakeAction(Kind::Choose, item, entry);
}

DialogAction DialogAction::ChooseEntryNamed(int16_t item, std::string text)
{
    return MakeAction(Kind::ChooseNamed, item, 0, std::move(text));
}

DialogAction DialogAction::ClickListRow(int16_t item, int row)
{
    return MakeAction(Kind::ClickRow, item, row);
}

DialogAction DialogAction::ClickListRowNamed(int16_t item, std::string text)
{
    return MakeAction(Kind::ClickRowNamed, item, 0, std::move(text));
}

DialogAction DialogAction::ClickAt(toolbox::Point point, toolbox::Modifiers modifiers)
{
    DialogAction action;
    action.kind = Kind::Click;
    action.point = point;
    action.modifiers = modifiers;
    return action;
}

DialogAction DialogAction::PressCloseBox()
{
    return MakeAction(Kind::CloseBox);
}

DialogAction DialogAction::LetTimersFire()
{
    return MakeAction(Kind::WaitForTimers);
}

std::string DialogAction::Describe() const
{
    std::ostringstream description;
    switch (kind) {
        case Kind::Press: description << "press item " << item; break;
        case Kind::Choose: description << "choose entry " << number << " of pop-up " << item; break;
        case Kind::ChooseNamed: description << "choose \"" << text << "\" in pop-up " << item; break;
        case Kind::ClickRow: description << "click row " << number << " of the list in item " << item; break;
        case Kind::ClickRowNamed: description << "click \"" << text << "\" in the list in item " << item; break;
        case Kind::Click: description << "click at (" << point.x << ", " << point.y << ")"; break;
        case Kind::CloseBox: description << "press the close box"; break;
        case Kind::WaitForTimers: description << "wait for the dialog's timers"; break;
    }
    return description.str();
}

}   // namespace stavio
