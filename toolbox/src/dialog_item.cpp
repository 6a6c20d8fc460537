// One item of a dialog: its place, label, state and, for pop-up menus, its entries.
#include "toolbox/dialogs.h"

#include <algorithm>

namespace toolbox {

DialogItem::DialogItem(const DialogItemSpec& spec, Dialog* owner)
    : number_(spec.number), kind_(spec.kind), rect_(spec.rect), label_(spec.label), owner_(owner)
{
    if (kind_ == DialogItemKind::kPopup) {
        value_ = 1;
        minimum_ = 1;
        maximum_ = 1;
        for (const std::string& entry : spec.entries) AppendMenuEntry(entry);
    } else if (IsControl()) {
        maximum_ = 1;
    }
}

OSErr DialogItem::SetLabel(std::string_view label) noexcept
{
    try {
        label_.assign(label);
    } catch (...) {
        return kMemFull;
    }
    return kNoErr;
}

bool DialogItem::IsControl() const
{
    return kind_ == DialogItemKind::kButton || kind_ == DialogItemKind::kRadio || kind_ == DialogItemKind::kCheckbox ||
           kind_ == DialogItemKind::kPopup;
}

void DialogItem::SetValue(int32_t value)
{
    if (IsControl()) value_ = std::clamp(value, minimum_, maximum_);
}

void DialogItem::SetMinimum(int32_t minimum)
{
    if (!IsControl()) return;
    minimum_ = minimum;
    maximum_ = std::max(maximum_, minimum_);
    value_ = std::clamp(value_, minimum_, maximum_);
}

void DialogItem::SetMaximum(int32_t maximum)
{
    if (!IsControl()) return;
    maximum_ = maximum;
    minimum_ = std::min(minimum_, maximum_);
    value_ = std::clamp(value_, minimum_, maximum_);
}

OSErr DialogItem::AppendMenuEntry(std::string_view text) noexcept
{
    if (kind_ != DialogItemKind::kPopup) return kItemNotControl;
    try {
        menuEntries_.emplace_back(text);
    } catch (...) {
        return kMemFull;
    }
    if (maximum_ < MenuEntryCount()) SetMaximum(MenuEntryCount());
    return kNoErr;
}

const std::string* DialogItem::MenuEntryText(int entry) const
{
    if (entry < 1 || entry > MenuEntryCount()) return nullptr;
    return &menuEntries_[static_cast<size_t>(entry - 1)];
}

}   // namespace toolbox
