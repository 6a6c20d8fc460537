// The front end for a web page: the plug-in runs on the host's thread, which blocks here while
// the page shows the question or the dialog and sends back what the person did. What is being
// asked is published as JSON (Pending); the page's answers arrive from the server's threads
// (Answer). The dialog is the toolbox's model of the plug-in's dialog resource: its items with
// their kinds, rectangles, values and states, and its lists' rows, for the page to draw.
//
//   {"kind":"alert","style":"question","text":"...","question":true}
//   {"kind":"dialog","title":"...","width":420,"height":300,"problem":"",
//    "items":[{"number":1,"kind":"button","label":"OK","rect":[l,t,r,b],"value":0,
//              "enabled":true,"visible":true,"entries":[...]}, ...],
//    "lists":[{"index":0,"view":[l,t,r,b],"cellHeight":16,"topRow":0,
//              "rows":[{"text":"Rock 8ths","selected":true}, ...]}]}
#pragma once

#include "stavio/front_end.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace toolbox {
class Dialog;
}

namespace stavio {

// One thing the person did in the page.
struct WebAction {
    enum class Kind {
        Answer,     // the alert's button: `number` is 6 Yes, 7 No or 1 OK
        Press,      // press item `item`
        Choose,     // choose entry `number` (from 1) of pop-up `item`
        ClickRow,   // click row `number` (from 0) of list `item` (its index among the dialog's lists)
        CloseBox,   // the dialog's close box
    };
    Kind kind = Kind::Press;
    int16_t item = 0;
    int number = 0;
};

class WebFrontEnd : public FrontEnd {
public:
    int32_t Alert(const AlertRequest& request) override;
    bool ShowsDialogs() const override { return true; }
    void RunDialog(DialogSession& session) override;

    // ---- From the server's threads -------------------------------------------------------------
    // What the plug-in is asking now, as JSON; "null" when it asks nothing.
    std::string Pending() const;
    // Hands the person's action to the waiting plug-in. Fails (with a message) when nothing is
    // asked or the action does not fit what is asked (a Yes for a dialog ...).
    bool Answer(const WebAction& action, std::string& problem);
    // The page is gone or the server stops: every question now and later is answered No and
    // every dialog is closed with its close box, so that the plug-in's command finishes.
    void Abandon();
    void Resume();   // for the next command, after Abandon
    // A count that grows whenever what is asked changes and when a command ends: a page that
    // waits on it learns of the change at once, without asking again and again.
    uint64_t Changes() const;
    // Waits until the count is no longer `seen`, or Abandon, for at most `longestMs`.
    void WaitForChange(uint64_t seen, uint64_t longestMs);
    // The host's command has finished and its result is in place (host's thread).
    void CommandEnded();

    // The alerts shown during the host's commands, with their answers (host's thread only).
    std::vector<AlertRecord> TakeAlerts();

private:
    enum class Asking {
        Nothing,
        Alert,
        Dialog
    };
    void Publish(Asking asking, std::string json);
    // Waits for the page's action until `deadlineMs` (0: no deadline); false when none came.
    bool WaitForAction(WebAction& action, uint64_t deadlineMs);

    mutable std::mutex mutex_;
    std::condition_variable actionArrived_;
    std::condition_variable changed_;
    uint64_t changes_ = 0;
    Asking asking_ = Asking::Nothing;
    std::string pending_ = "null";
    std::deque<WebAction> actions_;
    bool abandoned_ = false;
    std::vector<AlertRecord> alerts_;
};

// The dialog's model as the page draws it (the JSON above); `problem` says why the person's
// last action could not be done ("" when it could).
std::string DialogJson(const toolbox::Dialog& dialog, const std::string& problem);

}   // namespace stavio
