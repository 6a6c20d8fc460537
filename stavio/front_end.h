// Where the host's alerts (and later its dialogs) meet a person or a script.
//
// The host resolves an alert's text before it reaches the front end: the text given by the
// caller, or for a string id the entry of the string list found through the resource chain.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace stavio {

struct AlertRequest {
    int32_t style = 0;        // 16 stop, 48 warning, 36 Yes/No question, 0 plain notice
    int32_t stringId = 0;     // 0 when the caller gave the text itself
    std::string text;         // the resolved text
};

// Alert styles that ask a question; every other style is a notice with one button.
bool IsQuestion(int32_t style);

class FrontEnd {
public:
    virtual ~FrontEnd() = default;
    // Shows the alert and returns the button: 6 Yes / 7 No for a question, 1 for a notice.
    virtual int32_t Alert(const AlertRequest& request) = 0;
};

// Answers questions from a list given in advance, in order, and records every alert. A question
// with no answer left is answered No: the script never says "yes" on its own.
class ScriptedFrontEnd : public FrontEnd {
public:
    struct Record {
        AlertRequest request;
        int32_t answer = 0;
    };

    ScriptedFrontEnd() = default;
    explicit ScriptedFrontEnd(std::vector<int32_t> answers);

    void AddAnswer(int32_t answer) { answers_.push_back(answer); }
    int32_t Alert(const AlertRequest& request) override;

    const std::vector<Record>& Alerts() const { return alerts_; }
    size_t AnswersLeft() const { return answers_.size(); }
    void ClearAlerts() { alerts_.clear(); }

private:
    std::deque<int32_t> answers_;
    std::vector<Record> alerts_;
};

}  // namespace stavio
