// The front end for a person at a terminal: alerts are printed and questions asked Yes/No; a
// dialog is written out as text (list rows numbered, pop-ups with their entries, radio buttons
// and buttons with their item numbers) and the person types what to do:
//
//   <n>                 click row n of the list
//   set <item> <entry>  choose an entry of a pop-up menu, by number or by its text
//   press <item>        press a button, radio button or checkbox
//   ok, cancel          press OK (item 1) or Cancel (item 2)
//   close               the window's close box
//   show, help
//
// The end of the input answers No to a question and closes a dialog with its close box.
#pragma once

#include "stavio/front_end.h"

#include <iosfwd>
#include <vector>

namespace stavio {

class TerminalFrontEnd : public FrontEnd {
public:
    // `inputFd`, when not -1, is the descriptor behind `in`: while a shown dialog waits for the
    // person, its timers keep firing. Without it they fire between commands.
    TerminalFrontEnd(std::istream& in, std::ostream& out, int inputFd = -1);

    int32_t Alert(const AlertRequest& request) override;
    bool ShowsDialogs() const override { return true; }
    void RunDialog(DialogSession& session) override;

    const std::vector<AlertRecord>& Alerts() const { return alerts_; }
    // Tells how often the last notice was given in a row, if more than once (a notice given
    // again right after itself is not printed again).
    void EndRepeats();

private:
    // The output, after the count of a run of repeated notices that has ended.
    std::ostream& Out();

    bool ReadLine(std::string& line);
    bool WaitForInput(DialogSession& session);
    void Act(DialogSession& session, const std::string& line);

    std::istream& in_;
    std::ostream& out_;
    int inputFd_;
    std::vector<AlertRecord> alerts_;
    int repeats_ = 0;   // times the last notice printed was given in a row (0: something else came after)
};

}   // namespace stavio
