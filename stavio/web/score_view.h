// The score as the page draws it when the engraver cannot be loaded: the measures with their
// lengths and every staff's entries, as JSON.
//
//   {"name":"Demo score","measures":[{"number":1,"duration":4096}, ...],
//    "staves":[{"slot":1,"name":"Piano","drum":false,"entries":[ <views::StaffEntriesJson> ]}]}
#pragma once

#include "stavio/document/document.h"

#include <string>

namespace stavio::web {

std::string ScoreViewJson(const Document& doc, const std::string& name);

}   // namespace stavio::web
