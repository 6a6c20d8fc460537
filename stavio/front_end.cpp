#include "stavio/front_end.h"

#include "sdk/funcs.h"

namespace stavio {

bool IsQuestion(int32_t style) { return style == kAlertQuestion; }

ScriptedFrontEnd::ScriptedFrontEnd(std::vector<int32_t> answers) : answers_(answers.begin(), answers.end()) {}

int32_t ScriptedFrontEnd::Alert(const AlertRequest& request)
{
    int32_t answer = kAlertAnswerOk;
    if (IsQuestion(request.style)) {
        answer = kAlertAnswerNo;
        if (!answers_.empty()) {
            answer = answers_.front();
            answers_.pop_front();
        }
    }
    alerts_.push_back(Record{request, answer});
    return answer;
}

}  // namespace stavio
