// The fill options as a person's actions on the plug-in's groove dialog. The item numbers come
// from the dialog's own layout ('DLOG' 20129 in the plug-in's resource file), found there by
// their kind and title, so that the script follows the dialog wherever its items are.
#pragma once

#include "stavio/app/fill_options.h"
#include "stavio/front_end.h"
#include "toolbox/status.h"

#include <string>

namespace stavio::app {

constexpr int16_t kGrooveDialogId = 20129;

// The groove (a row of the list in the dialog's user item), the staff ("Staff:" pop-up), the
// style ("Style:" pop-up), the "A new staff" radio button, then "OK". A failure names the
// resource file and the layout or item it lacks.
toolbox::Result<DialogScript> GrooveDialogScript(const FillOptions& options, const std::string& resourcePath);

}   // namespace stavio::app
