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
    bool Undo(State& current)
    {
        if (undo_.empty() || !open_.empty()) {
            return false;
        }
        Step step = std::move(undo_.back());
        undo_.pop_back();
        std::swap(current, step.before);
        redo_.push_back(std::move(step));   // now holds the state after the step
        return true;
    }
    bool Redo(State& current)
    {
        if (redo_.empty() || !open_.empty()) {
            return false;
        }
        Step step = std::move(redo_.back());
        redo_.pop_back();
        std::swap(current, step.before);
        undo_.push_back(std::move(step));
        return true;
    }

    int Depth() const { return static_cast<int>(open_.size()); }
    size_t UndoCount() const { return undo_.size(); }
    size_t RedoCount() const { return redo_.size(); }
    std::string UndoName() const { return undo_.empty() ? std::string() : undo_.back().name; }
    std::string RedoName() const { return redo_.empty() ? std::string() : redo_.back().name; }

private:
    std::vector<Step> open_;
    std::vector<Step> undo_;
    std::vector<Step> redo_;
};

}  // namespace stavio
