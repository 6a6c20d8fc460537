// The host's dialog service (SX_Dialog): makes a plug-in's dialog from the 'DLOG' resource
// found through the resource chain (the plug-in's resource file is current during its calls),
// initialises it, lets the front end run it, always sends the final close, and answers the
// dialog's result. Every request is noted in the front end's DialogLog.
#pragma once

#include "stavio/front_end.h"
#include "stavio/host.h"

namespace stavio {

// Answers the dialog's result; 0 when it was not opened (the front end shows no dialogs, the
// handler is missing or the layout cannot be read: the log says which).
int32_t RunDialogRequest(const DialogRequest& request, FrontEnd& frontEnd);

}   // namespace stavio
