#include "stavio/dialogs/web_front_end.h"

#include "stavio/dialogs/dialog_session.h"
#include "stavio/dialogs/dialog_text.h"
#include "toolbox/dialogs.h"

#include <chrono>
#include <cstdio>
#include <sstream>
#include <thread>

namespace stavio {

namespace {

// A hidden dialog that keeps ticking without ending is given up on after this long.
constexpr uint64_t kLongestHiddenWaitMs = 10000;

const char* KindWord(toolbox::DialogItemKind kind)
{
    switch (kind) {
        case toolbox::DialogItemKind::kButton: return "button";
        case toolbox::DialogItemKind::kRadio: return "radio";
        case toolbox::DialogItemKind::kCheckbox: return "checkbox";
        case toolbox::DialogItemKind::kPopup: return "popup";
        case toolbox::DialogItemKind::kUserItem: return "user";
        case toolbox::DialogItemKind::kStaticText: return "static";
    }
    return "user";
}

void WriteRect(std::ostream& out, const toolbox::DialogRect& rect)
{
    out << "[" << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom << "]";
}

// While the program keeps its dialog hidden with a timer running, it is waiting to close itself.
void WaitWhileHidden(DialogSession& session)
{
    const uint64_t giveUp = toolbox::NowMilliseconds() + kLongestHiddenWaitMs;
    while (!session.Ended() && !session.Shown() && toolbox::NowMilliseconds() < giveUp) {
        const std::optional<uint64_t> next = session.Dialog().Timers().NextDue();
        if (!next) {
            return;
        }
        const uint64_t now = toolbox::NowMilliseconds();
        if (*next > now) {
            std::this_thread::sleep_for(std::chrono::milliseconds(*next - now));
        }
        session.FireDueTimers(toolbox::NowMilliseconds());
    }
}

toolbox::Status Act(DialogSession& session, const WebAction& action)
{
    switch (action.kind) {
        case WebAction::Kind::Press: return session.Press(action.item);
        case WebAction::Kind::Choose: return session.Choose(action.item, action.number);
        case WebAction::Kind::ClickRow: {
            const auto& lists = session.Dialog().Lists();
            if (action.item < 0 || static_cast<size_t>(action.item) >= lists.size()) {
                return toolbox::Status::Failure("the dialog has no list " + std::to_string(action.item));
            }
            return session.ClickListRow(*lists[static_cast<size_t>(action.item)], action.number, toolbox::kNoModifiers);
        }
        case WebAction::Kind::CloseBox: session.CloseBox(); return toolbox::Status::Ok();
        case WebAction::Kind::Answer: break;
    }
    return toolbox::Status::Failure("a dialog is open, not a question");
}

}   // namespace

std::string DialogJson(const toolbox::Dialog& dialog, const std::string& problem)
{
    std::ostringstream out;
    const toolbox::DialogRect& content = dialog.ContentRect();
    out << "{\"kind\":\"dialog\",\"title\":" << JsonQuoted(dialog.Title())
        << ",\"width\":" << content.right - content.left << ",\"height\":" << content.bottom - content.top
        << ",\"problem\":" << JsonQuoted(problem) << ",\"items\":[";
    bool first = true;
    for (const toolbox::DialogItem& item : dialog.Items()) {
        out << (first ? "" : ",") << "{\"number\":" << item.Number() << ",\"kind\":\"" << KindWord(item.Kind())
            << "\",\"label\":" << JsonQuoted(item.Label()) << ",\"rect\":";
        WriteRect(out, item.Rect());
        out << ",\"value\":" << item.Value() << ",\"enabled\":" << (item.IsEnabled() ? "true" : "false")
            << ",\"visible\":" << (item.IsVisible() ? "true" : "false") << ",\"entries\":[";
        for (int entry = 1; entry <= item.MenuEntryCount(); ++entry) {
            const std::string* text = item.MenuEntryText(entry);
            out << (entry > 1 ? "," : "") << JsonQuoted(text != nullptr ? *text : std::string());
        }
        out << "]}";
        first = false;
    }
    out << "],\"lists\":[";
    for (size_t index = 0; index < dialog.Lists().size(); ++index) {
        const toolbox::ListControl& list = *dialog.Lists()[index];
        out << (index > 0 ? "," : "") << "{\"index\":" << index << ",\"view\":";
        WriteRect(out, list.View());
        out << ",\"cellHeight\":" << list.CellHeight() << ",\"topRow\":" << list.TopRow() << ",\"rows\":[";
        for (int row = 0; row < list.Rows(); ++row) {
            const std::string* text = list.CellText(toolbox::Cell{row, 0});
            out << (row > 0 ? "," : "") << "{\"text\":" << JsonQuoted(text != nullptr ? *text : std::string())
                << ",\"selected\":" << (list.IsSelected(toolbox::Cell{row, 0}) ? "true" : "false") << "}";
        }
        out << "]}";
    }
    out << "]}";
    return out.str();
}

void WebFrontEnd::Publish(Asking asking, std::string json)
{
    std::lock_guard<std::mutex> lock(mutex_);
    asking_ = asking;
    pending_ = std::move(json);
    actions_.clear();
    ++changes_;
    changed_.notify_all();
}

uint64_t WebFrontEnd::Changes() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return changes_;
}

void WebFrontEnd::WaitForChange(uint64_t seen, uint64_t longestMs)
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, std::chrono::milliseconds(longestMs),
                      [this, seen] { return abandoned_ || changes_ != seen; });
}

void WebFrontEnd::CommandEnded()
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++changes_;
    changed_.notify_all();
}

std::string WebFrontEnd::Pending() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return pending_;
}

bool WebFrontEnd::Answer(const WebAction& action, std::string& problem)
{
    std::lock_guard<std::mutex> lock(mutex_);
    const bool isAnswer = action.kind == WebAction::Kind::Answer;
    if (asking_ == Asking::Nothing) {
        problem = "nothing is being asked";
        return false;
    }
    if (isAnswer != (asking_ == Asking::Alert)) {
        problem = isAnswer ? "a dialog is open, not a question" : "a question is being asked, not a dialog";
        return false;
    }
    actions_.push_back(action);
    actionArrived_.notify_all();
    return true;
}

void WebFrontEnd::Abandon()
{
    std::lock_guard<std::mutex> lock(mutex_);
    abandoned_ = true;
    actionArrived_.notify_all();
    changed_.notify_all();
}

void WebFrontEnd::Resume()
{
    std::lock_guard<std::mutex> lock(mutex_);
    abandoned_ = false;
}

std::vector<AlertRecord> WebFrontEnd::TakeAlerts()
{
    std::vector<AlertRecord> alerts;
    alerts.swap(alerts_);
    return alerts;
}

bool WebFrontEnd::WaitForAction(WebAction& action, uint64_t deadlineMs)
{
    std::unique_lock<std::mutex> lock(mutex_);
    const auto ready = [this] { return abandoned_ || !actions_.empty(); };
    if (deadlineMs == 0) {
        actionArrived_.wait(lock, ready);
    } else {
        const uint64_t now = toolbox::NowMilliseconds();
        actionArrived_.wait_for(lock, std::chrono::milliseconds(deadlineMs > now ? deadlineMs - now : 0), ready);
    }
    if (abandoned_ || actions_.empty()) {
        return false;
    }
    action = actions_.front();
    actions_.pop_front();
    return true;
}

int32_t WebFrontEnd::Alert(const AlertRequest& request)
{
    const bool question = IsQuestion(request.style);
    Publish(Asking::Alert, std::string("{\"kind\":\"alert\",\"style\":\"") + AlertStyleWord(request.style) +
                               "\",\"text\":" + JsonQuoted(request.text) +
                               ",\"question\":" + (question ? "true" : "false") + "}");
    int32_t answer = question ? kAlertAnswerNo : kAlertAnswerOk;
    WebAction action;
    if (WaitForAction(action, 0) && question) {
        answer = action.number == kAlertAnswerYes ? kAlertAnswerYes : kAlertAnswerNo;
    }
    Publish(Asking::Nothing, "null");
    alerts_.push_back(AlertRecord{request, answer});
    return answer;
}

void WebFrontEnd::RunDialog(DialogSession& session)
{
    session.FireDueTimers(toolbox::NowMilliseconds());
    WaitWhileHidden(session);
    if (session.Ended()) {
        return;
    }
    if (session.CloseIfNeverShown()) {
        return;
    }
    session.Paint();
    std::string problem;
    while (!session.Ended()) {
        session.FireDueTimers(toolbox::NowMilliseconds());
        if (session.Ended()) {
            break;
        }
        Publish(Asking::Dialog, DialogJson(session.Dialog(), problem));
        const std::optional<uint64_t> nextTimer = session.Dialog().Timers().NextDue();
        WebAction action;
        if (!WaitForAction(action, nextTimer.value_or(0))) {
            bool abandoned = false;
            {
                std::lock_guard<std::mutex> lock(mutex_);
                abandoned = abandoned_;
            }
            if (abandoned) {
                session.Note("the page went away; the dialog was closed");
                session.CloseBox();
            }
            continue;
        }
        const toolbox::Status done = Act(session, action);
        problem = done ? std::string() : done.Message();
    }
    Publish(Asking::Nothing, "null");
}

}   // namespace stavio
