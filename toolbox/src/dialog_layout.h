// Reading the lines of a dialog layout ('DLOG') one at a time, so that the file parser can check
// them where they stand and ReadDialogLayout can read a whole resource.
#pragma once

#include "text_syntax.h"
#include "toolbox/resources.h"

#include <string>

namespace toolbox {

class DialogLayoutReader {
public:
    // Reads one line into the layout. On success `normalized` is the line in its printed spelling;
    // on failure `error` says what is wrong (without file or line).
    bool ReadLine(const std::string& line, std::string& normalized, std::string& error);
    const DialogLayout& Layout() const { return layout_; }

private:
    bool ReadEntries(text::LineCursor& cursor, std::string& normalized, std::string& error);

    DialogLayout layout_;
    bool haveTitle_ = false;
    bool haveSize_ = false;
};

}   // namespace toolbox
