// A dialog written out as text, for a terminal: its title and its visible items in layout
// order, each control with its number, its state and (for a pop-up menu) its entries, and each
// list with its rows numbered from 1.
#pragma once

#include "toolbox/dialogs.h"

#include <string>

namespace stavio {

std::string DescribeDialog(const toolbox::Dialog& dialog);

}   // namespace stavio
