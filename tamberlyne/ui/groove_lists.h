// What the groove dialog lists: the groove files of the groove folder beside the host
// application, and the staves of the selection.
#pragma once

#include "sdk/types.h"

#include <string>

constexpr char kGrooveFolderName[] = "Tamberlyne";

// A groove file's name: longer than its 4-character extension, which is exactly ".mid", ".MID"
// or ".Mid", and not the temporary file's name.
bool IsGrooveFileName(const std::string& name);

// Fills the staff pop-up, builds the groove list in item 4 and fills it with the groove folder's
// files in the folder's own order (Files and TempFileSpec follow). 1 when at least one groove
// file was found; otherwise tells the user and answers 0.
int FillSelectionLists(EDLG dialog);

// One pop-up entry per staff of the selection, named by the staff's full name (else its
// abbreviated one) without formatting; the last drum staff is chosen, else the first entry.
void FillStaffSelectionList(EDLG dialog);

// The selected row of the groove list from 1; 0 when none is selected.
int MacList_GetSelNum();
