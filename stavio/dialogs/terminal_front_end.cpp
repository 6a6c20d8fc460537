#include "stavio/dialogs/terminal_front_end.h"

#include "stavio/dialogs/dialog_session.h"
#include "stavio/dialogs/dialog_text.h"

#include <poll.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <istream>
#include <ostream>
#include <sstream>
#include <thread>

namespace stavio {

namespace {

// A hidden dialog that keeps ticking without ending is given up on after this long.
constexpr uint64_t kLongestHiddenWaitMs = 10000;

const char kHelp[] =
    "Type a row number to choose it, \"set ITEM ENTRY\" to choose a pop-up entry (by number or\n"
    "text), \"press ITEM\" for a button or radio button, \"ok\", \"cancel\", \"close\", \"show\" or \"help\".\n";

const char* StyleName(int32_t style)
{
    switch (style) {
        case kAlertStop: return "Stop";
        case kAlertWarning: return "Warning";
        case kAlertQuestion: return "Question";
        default: return "Note";
    }
}

std::string Trimmed(const std::string& text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c); });
    const auto last = std::find_if_not(text.rbegin(), text.rend(), [](unsigned char c) { return std::isspace(c); });
    return first < last.base() ? std::string(first, last.base()) : std::string();
}

bool ReadNumber(const std::string& text, int& number)
{
    if (text.empty() || text.size() > 6 ||
        !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; })) {
        return false;
    }
    number = std::stoi(text);
    return true;
}

void SleepUntil(uint64_t dueMs)
{
    const uint64_t now = toolbox::NowMilliseconds();
    if (dueMs > now) {
        std::this_thread::sleep_for(std::chrono::milliseconds(dueMs - now));
    }
}

// While the program keeps its dialog hidden with a timer running, it is waiting to close itself:
// wait for its timers in real time.
void WaitWhileHidden(DialogSession& session)
{
    const uint64_t giveUp = toolbox::NowMilliseconds() + kLongestHiddenWaitMs;
    while (!session.Ended() && !session.Shown() && toolbox::NowMilliseconds() < giveUp) {
        const std::optional<uint64_t> next = session.Dialog().Timers().NextDue();
        if (!next) {
            return;
        }
        SleepUntil(*next);
        session.FireDueTimers(toolbox::NowMilliseconds());
    }
}

}   // namespace

TerminalFrontEnd::TerminalFrontEnd(std::istream& in, std::ostream& out, int inputFd)
    : in_(in), out_(out), inputFd_(inputFd)
{}

bool TerminalFrontEnd::ReadLine(std::string& line)
{
    return static_cast<bool>(std::getline(in_, line));
}

std::ostream& TerminalFrontEnd::Out()
{
    if (repeats_ > 1) {
        out_ << "(repeated " << repeats_ << " times)\n";
    }
    repeats_ = 0;
    return out_;
}

void TerminalFrontEnd::EndRepeats()
{
    Out() << std::flush;
}

int32_t TerminalFrontEnd::Alert(const AlertRequest& request)
{
    // A notice given again right after itself is told once, with its count when the run ends.
    const bool again = repeats_ > 0 && !IsQuestion(request.style) && !alerts_.empty() &&
                       alerts_.back().request.style == request.style && alerts_.back().request.text == request.text;
    if (again) {
        ++repeats_;
        alerts_.push_back(AlertRecord{request, kAlertAnswerOk});
        return kAlertAnswerOk;
    }
    Out() << "\n" << StyleName(request.style) << ": " << request.text << "\n";
    repeats_ = IsQuestion(request.style) ? 0 : 1;
    int32_t answer = kAlertAnswerOk;
    if (IsQuestion(request.style)) {
        answer = 0;
        while (answer == 0) {
            Out() << "Yes or No? [y/n] " << std::flush;
            std::string line;
            if (!ReadLine(line)) {
                Out() << "\n(no answer: No)\n";
                answer = kAlertAnswerNo;
                break;
            }
            const std::string reply = Lowered(Trimmed(line));
            if (reply == "y" || reply == "yes") {
                answer = kAlertAnswerYes;
            } else if (reply == "n" || reply == "no") {
                answer = kAlertAnswerNo;
            }
        }
    }
    out_ << std::flush;
    alerts_.push_back(AlertRecord{request, answer});
    return answer;
}

bool TerminalFrontEnd::WaitForInput(DialogSession& session)
{
    if (inputFd_ < 0) {
        return true;
    }
    while (!session.Ended()) {
        const std::optional<uint64_t> next = session.Dialog().Timers().NextDue();
        if (!next || in_.rdbuf()->in_avail() > 0) {
            return true;
        }
        const uint64_t now = toolbox::NowMilliseconds();
        pollfd input{inputFd_, POLLIN, 0};
        const int waitMs = static_cast<int>(std::min<uint64_t>(*next > now ? *next - now : 0, 1000));
        if (poll(&input, 1, waitMs) != 0) {
            return true;   // input, or an error that the read will report
        }
        session.FireDueTimers(toolbox::NowMilliseconds());
    }
    return false;
}

void TerminalFrontEnd::RunDialog(DialogSession& session)
{
    session.FireDueTimers(toolbox::NowMilliseconds());
    WaitWhileHidden(session);
    if (session.Ended()) {
        return;
    }
    if (!session.Shown()) {
        Out() << "(the dialog did not appear; it is closed)\n";
        session.CloseIfNeverShown();
        return;
    }
    session.Paint();
    Out() << "\n" << DescribeDialog(session.Dialog()) << kHelp;
    while (!session.Ended()) {
        session.FireDueTimers(toolbox::NowMilliseconds());
        if (session.Ended()) {
            break;
        }
        Out() << "> " << std::flush;
        std::string line;
        if (!WaitForInput(session)) {
            break;
        }
        if (!ReadLine(line)) {
            Out() << "\n(end of input: the dialog is closed)\n";
            session.CloseBox();
            break;
        }
        Act(session, Trimmed(line));
    }
    Out() << std::flush;
}

void TerminalFrontEnd::Act(DialogSession& session, const std::string& line)
{
    std::istringstream words(line);
    std::string command;
    words >> command;
    command = Lowered(command);
    bool acted = false;
    toolbox::Status done;
    int number = 0;
    if (command.empty()) {
        return;
    }
    if (command == "help" || command == "?") {
        Out() << kHelp;
        return;
    }
    if (command == "show") {
        Out() << DescribeDialog(session.Dialog());
        return;
    }
    if (command == "ok" || command == "cancel") {
        acted = true;
        done = session.Press(command == "ok" ? kOKItem : kCancelItem);
    } else if (command == "close") {
        acted = true;
        session.CloseBox();
    } else if (command == "press") {
        std::string item;
        words >> item;
        acted = ReadNumber(item, number);
        if (acted) {
            done = session.Press(static_cast<int16_t>(number));
        }
    } else if (command == "set") {
        std::string item;
        words >> item;
        std::string entry;
        std::getline(words, entry);
        entry = Trimmed(entry);
        int entryNumber = 0;
        acted = ReadNumber(item, number) && !entry.empty();
        if (acted) {
            done = ReadNumber(entry, entryNumber) ? session.Choose(static_cast<int16_t>(number), entryNumber)
                                                  : session.ChooseNamed(static_cast<int16_t>(number), entry);
        }
    } else if (ReadNumber(command, number)) {
        acted = true;
        const auto& lists = session.Dialog().Lists();
        done = lists.empty() ? toolbox::Status::Failure("the dialog has no list")
                             : session.ClickListRow(*lists.front(), number - 1, toolbox::kNoModifiers);
    }
    if (!acted) {
        Out() << "Unknown command \"" << line << "\". " << kHelp;
        return;
    }
    if (!done) {
        Out() << "Cannot do that: " << done.Message() << "\n";
        return;
    }
    session.FireDueTimers(toolbox::NowMilliseconds());
    WaitWhileHidden(session);
    if (!session.Ended()) {
        Out() << DescribeDialog(session.Dialog());
    }
}

}   // namespace stavio
