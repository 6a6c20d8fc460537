// List operations that always draw on a plain white background with a black pen, whatever
// drawing state the dialog's port is in: each saves the port's drawing state, makes it plain,
// performs the list operation and puts the state back. Each takes the arguments of the list
// call in its name and answers what that call answers.
#pragma once

#include "toolbox/events.h"
#include "toolbox/lists.h"

using ListHandle = toolbox::ListControl*;

bool LSetSelectWhite(bool setIt, toolbox::Cell cell, ListHandle list);
void LAutoScrollWhite(ListHandle list);
void LScrollWhite(int columns, int rows, ListHandle list);
void LUpdateWhite(const toolbox::DialogRect& region, ListHandle list);
void LDelRowWhite(int count, int fromRow, ListHandle list);
// The number of the first new row, -1 when no row could be added.
int LAddRowWhite(int count, int beforeRow, ListHandle list);
// True for a double click. `when` is the press's time on the toolbox clock.
bool LClickWhite(toolbox::Point point, toolbox::Modifiers modifiers, ListHandle list,
                 uint64_t when = toolbox::NowMilliseconds());
void LActivateWhite(bool active, ListHandle list);
void LSizeWhite(int width, int height, ListHandle list);
// `dataLength` bytes of `data` become the cell's text.
void LSetCellWhite(const void* data, int dataLength, toolbox::Cell cell, ListHandle list);

// How often a drawing state could not be saved or put back (a list without a port). Each
// failure is also reported on the standard error stream.
int WhiteListAssertionFailures();
