#include "tamberlyne/ui/dialog_lists.h"

#include "tamberlyne/platform/dialog_items.h"
#include "toolbox/dialogs.h"

int32_t gListDoubleClick = 0;
toolbox::Cell gListLastClick = toolbox::kNoCell;

namespace {

constexpr toolbox::RGBColor kFrameGrey{0x8000, 0x8000, 0x8000};
constexpr toolbox::Modifiers kModifierKeys =
    toolbox::kCommandKey | toolbox::kShiftKey | toolbox::kOptionKey | toolbox::kControlKey;

// The list's view with its scroll bars.
toolbox::DialogRect ListBounds(const toolbox::ListControl& list)
{
    toolbox::DialogRect bounds = list.View();
    if (list.VerticalScrollBar()) {
        bounds.right = static_cast<int16_t>(bounds.right + toolbox::kScrollBarWidth);
    }
    if (list.HorizontalScrollBar()) {
        bounds.bottom = static_cast<int16_t>(bounds.bottom + toolbox::kScrollBarWidth);
    }
    return bounds;
}

void DeselectAllCells(ListHandle list)
{
    toolbox::Cell cell{0, 0};
    if (!list->IsCell(cell)) {
        return;
    }
    do {
        LSetSelectWhite(false, cell, list);
    } while (list->NextCell(cell));
}

}   // namespace

void QVPaintOneList(ListHandle list)
{
    if (list == nullptr || list->Port() == nullptr) {
        return;
    }
    toolbox::DrawingPort& port = *list->Port();
    const toolbox::DialogRect bounds = ListBounds(*list);
    const toolbox::DialogRect region = port.VisibleRegion();
    const toolbox::PenState pen = port.GetPenState();
    port.SetPenSize(1, 1);
    port.UseThemeFont(toolbox::kSmallSystemFont, toolbox::kSystemScript);
    port.SetForeground(kFrameGrey);
    port.FrameRect(toolbox::InsetRect(bounds, -1, -2));
    port.SetForeground(toolbox::kBlack);
    LUpdateWhite(region, list);
    port.SetPenState(pen);
}

bool QVMacPaintHandlerForDialogsWithList(EDLG dialog, ListHandle listA, ListHandle listB)
{
    if (toolbox::Dialog* model = DialogModel(dialog)) {
        model->DrawItems(model->Port().VisibleRegion());
    }
    QVPaintOneList(listA);
    QVPaintOneList(listB);
    return true;
}

bool QVMacLButtonDownHandlerForLists(EDLG dialog, ListHandle list, int16_t item, const DialogEvent& event,
                                     toolbox::Point point, bool clearOnPlainClick)
{
    const toolbox::Dialog* model = DialogModel(dialog);
    if (list == nullptr || model == nullptr || model->FindItem(point) != item) {
        return false;
    }
    if (clearOnPlainClick && (event.modifiers & kModifierKeys) == 0 && toolbox::PointInRect(point, list->View())) {
        DeselectAllCells(list);
    }
    gListDoubleClick = LClickWhite(point, event.modifiers, list, event.when) ? 1 : 0;
    gListLastClick = list->LastClick();
    return true;
}
