// A dialog written out as text, for a terminal: its title and its visible items in layout
// order, each control with its number, its state and (for a pop-up menu) its entries, and each
// list with its rows numbered from 1.
#pragma once

#include "toolbox/dialogs.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stavio {

std::string DescribeDialog(const toolbox::Dialog& dialog);

// The text with its ASCII letters in lower case, to compare what a person typed with what a
// dialog shows.
std::string Lowered(std::string text);

// Which of `texts` a person means by `wanted`: the first that reads it exactly, else the only
// one that reads it ignoring case; -1 when none does (or several do, ignoring case only).
int FindNamed(const std::vector<std::string>& texts, const std::string& wanted);

// The word for an alert's style in reports: "stop", "warning", "question" or "notice".
const char* AlertStyleWord(int32_t style);

// A JSON string literal of `text`.
std::string JsonQuoted(const std::string& text);

}   // namespace stavio
