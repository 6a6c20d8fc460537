#include "tamberlyne/ui/white_lists.h"

#include <cstdio>
#include <string_view>

namespace {

int gAssertionFailures = 0;

void AssertionFailed(int line)
{
    ++gAssertionFailures;
    std::fprintf(stderr, "Tamberlyne: assertion \"err == noErr\" failed in MoreLists, line %d\n", line);
}

// Runs `operation` on the list with the port's drawing state made plain, then puts the state
// back. Without a port the state cannot be saved, and the operation is left undone.
template <typename Operation>
void WithWhiteBackground(ListHandle list, int line, Operation operation)
{
    if (list == nullptr) {
        return;
    }
    toolbox::DrawingPort* port = list->Port();
    if (port == nullptr) {
        AssertionFailed(line);
        return;
    }
    const toolbox::DrawingState saved = port->SaveState();
    port->Normalize();
    operation(*list);
    port->RestoreState(saved);
}

}   // namespace

bool LSetSelectWhite(bool setIt, toolbox::Cell cell, ListHandle list)
{
    bool done = false;
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { done = l.SetSelected(cell, setIt); });
    return done;
}

void LAutoScrollWhite(ListHandle list)
{
    WithWhiteBackground(list, __LINE__, [](toolbox::ListControl& l) { l.AutoScroll(); });
}

void LScrollWhite(int columns, int rows, ListHandle list)
{
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { l.Scroll(columns, rows); });
}

void LUpdateWhite(const toolbox::DialogRect& region, ListHandle list)
{
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { l.Update(region); });
}

void LDelRowWhite(int count, int fromRow, ListHandle list)
{
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { l.DeleteRows(count, fromRow); });
}

int LAddRowWhite(int count, int beforeRow, ListHandle list)
{
    int first = -1;
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { first = l.AddRows(count, beforeRow); });
    return first;
}

bool LClickWhite(toolbox::Point point, toolbox::Modifiers modifiers, ListHandle list, uint64_t when)
{
    bool doubleClick = false;
    WithWhiteBackground(list, __LINE__,
                        [&](toolbox::ListControl& l) { doubleClick = l.Click(point, modifiers, when); });
    return doubleClick;
}

void LActivateWhite(bool active, ListHandle list)
{
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { l.Activate(active); });
}

void LSizeWhite(int width, int height, ListHandle list)
{
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { l.Resize(width, height); });
}

void LSetCellWhite(const void* data, int dataLength, toolbox::Cell cell, ListHandle list)
{
    const size_t length = data != nullptr && dataLength > 0 ? static_cast<size_t>(dataLength) : 0;
    const std::string_view text(static_cast<const char*>(data), length);
    WithWhiteBackground(list, __LINE__, [&](toolbox::ListControl& l) { l.SetCellText(cell, text); });
}

int WhiteListAssertionFailures()
{
    return gAssertionFailures;
}
