#include "tamberlyne/platform/dialog_items.h"

toolbox::Dialog* DialogModel(EDLG dialog)
{
    return toolbox::LiveDialog(dialog);
}

namespace {

bool IsItemNumber(int32_t item)
{
    return item >= 1 && item <= INT16_MAX;
}

}   // namespace

void ShowDialogItem(EDLG dialog, int32_t item)
{
    if (toolbox::Dialog* model = DialogModel(dialog); model != nullptr && IsItemNumber(item)) {
        model->ShowItem(static_cast<int16_t>(item), true);
    }
}

void HideDialogItem(EDLG dialog, int32_t item)
{
    if (toolbox::Dialog* model = DialogModel(dialog); model != nullptr && IsItemNumber(item)) {
        model->ShowItem(static_cast<int16_t>(item), false);
    }
}

toolbox::OSErr GetDialogItemAsControl(EDLG dialog, int32_t item, ECONTROL* control)
{
    if (control != nullptr) {
        *control = nullptr;
    }
    toolbox::Dialog* model = DialogModel(dialog);
    if (model == nullptr || !IsItemNumber(item)) {
        return toolbox::kParamErr;
    }
    toolbox::DialogItem* found = nullptr;
    const toolbox::OSErr status = model->ItemAsControl(static_cast<int16_t>(item), found);
    if (control != nullptr) {
        *control = found;
    }
    return status;
}

bool GetDialogItemRect(EDLG dialog, int32_t item, toolbox::DialogRect& rect)
{
    const toolbox::Dialog* model = DialogModel(dialog);
    return model != nullptr && IsItemNumber(item) &&
           model->ItemRect(static_cast<int16_t>(item), rect) == toolbox::kNoErr;
}

void ShowDialogWindow(EDLG dialog)
{
    if (toolbox::Dialog* model = DialogModel(dialog)) {
        model->SetShown(true);
    }
}

void AppendPopupEntry(ECONTROL control, std::string_view text)
{
    if (toolbox::DialogItem* item = toolbox::LiveControl(control)) {
        item->AppendMenuEntry(text);
    }
}

void SetControlRange(ECONTROL control, int32_t minimum, int32_t maximum)
{
    if (toolbox::DialogItem* item = toolbox::LiveControl(control)) {
        item->SetMinimum(minimum);
        item->SetMaximum(maximum);
    }
}
