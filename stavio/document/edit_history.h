// Edit brackets as undo steps. Opening the outermost bracket takes a snapshot; closing it puts
// the step on the undo history; nested brackets belong to the outermost one. Cancel puts back
// the state from the start of the bracket it closes.
#pragma once

#include <string>
#include <vector>

namespace stavio {

template <typename State>
class EditHistory {
public:
    struct Step {
        std::string name;
        State before;   // the state the step started from
    };

    // Opens a bracket over `current`. Returns the new depth.
    int Start(const std::string& name, const State& current)
    {
        open_.push_back(Step{name, current});
        return static_cast<int>(open_.size());
    }
    // Closes the innermost bracket; the outermost one becomes an undo step. False when none is open.
    bool End()
    {
        if (open_.empty()) {
            return false;
        }
        Step step = std::move(open_.back());
        open_.pop_back();
        if (open_.empty()) {
            undo_.push_back(std::move(step));
            redo_.clear();
        }
        return true;
    }
    // Closes the innermost bracket and puts back the state it started from. False when none is open.
    bool Cancel(State& current)
    {
        if (open_.empty()) {
            return false;
        }
        current = std::move(open_.back().before);
        open_.pop_back();
        return true;
    }
    // Undo and redo move the last step of one history onto the other, trading its state with
    // `current`: a step on the redo history holds the state after it. Refused while a bracket is open.
    bool Undo(State& current) { return MoveStep(undo_, redo_, current); }
    bool Redo(State& current) { return MoveStep(redo_, undo_, current); }

    int Depth() const { return static_cast<int>(open_.size()); }
    size_t UndoCount() const { return undo_.size(); }
    size_t RedoCount() const { return redo_.size(); }
    std::string UndoName() const { return undo_.empty() ? std::string() : undo_.back().name; }
    std::string RedoName() const { return redo_.empty() ? std::string() : redo_.back().name; }

private:
    bool MoveStep(std::vector<Step>& from, std::vector<Step>& to, State& current)
    {
        if (from.empty() || !open_.empty()) {
            return false;
        }
        Step step = std::move(from.back());
        from.pop_back();
        std::swap(current, step.before);
        to.push_back(std::move(step));
        return true;
    }

    std::vector<Step> open_;
    std::vector<Step> undo_;
    std::vector<Step> redo_;
};

}   // namespace stavio
