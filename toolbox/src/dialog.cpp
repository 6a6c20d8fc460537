// A dialog: its window state, items, lists, port and timers.
#include "toolbox/dialogs.h"

#include <algorithm>

namespace toolbox {

namespace {

// The layout's size, else the extent of its items.
DialogRect ContentOf(const DialogLayout& layout)
{
    if (layout.width > 0 && layout.height > 0) return DialogRect{0, 0, layout.width, layout.height};
    int16_t right = 0;
    int16_t bottom = 0;
    for (const DialogItemSpec& item : layout.items) {
        right = std::max(right, item.rect.right);
        bottom = std::max(bottom, item.rect.bottom);
    }
    return DialogRect{0, 0, right, bottom};
}

// kParamErr when the dialog has no such item; otherwise `use` is done with it.
template <typename ItemType, typename Use>
OSErr WithItem(ItemType* item, Use use)
{
    if (item == nullptr) return kParamErr;
    use(*item);
    return kNoErr;
}

}   // namespace

Dialog::Dialog(const DialogLayout& layout, int16_t layoutId)
    : layoutId_(layoutId), title_(layout.title), content_(ContentOf(layout))
{
    items_.reserve(layout.items.size());
    for (const DialogItemSpec& spec : layout.items) items_.emplace_back(spec, this);
    port_.SetVisibleRegion(content_);
}

void Dialog::End(int32_t result)
{
    if (ended_) return;
    ended_ = true;
    result_ = result;
}

DialogItem* Dialog::Item(int16_t number)
{
    return const_cast<DialogItem*>(static_cast<const Dialog*>(this)->Item(number));
}

const DialogItem* Dialog::Item(int16_t number) const
{
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [number](const DialogItem& item) { return item.Number() == number; });
    return found == items_.end() ? nullptr : &*found;
}

int16_t Dialog::FindItem(Point point) const
{
    for (const DialogItem& item : items_) {
        if (item.IsVisible() && PointInRect(point, item.Rect())) return item.Number();
    }
    return 0;
}

OSErr Dialog::ItemRect(int16_t number, DialogRect& rect) const
{
    return WithItem(Item(number), [&rect](const DialogItem& item) { rect = item.Rect(); });
}

OSErr Dialog::ItemAsControl(int16_t number, DialogItem*& control)
{
    control = nullptr;
    DialogItem* item = Item(number);
    if (item == nullptr) return kParamErr;
    if (!item->IsControl()) return kItemNotControl;
    control = item;
    return kNoErr;
}

int32_t Dialog::ItemValue(int16_t number) const
{
    const DialogItem* item = Item(number);
    return item != nullptr ? item->Value() : 0;
}

OSErr Dialog::SetItemValue(int16_t number, int32_t value)
{
    DialogItem* control = nullptr;
    const OSErr err = ItemAsControl(number, control);
    if (err != kNoErr) return err;
    control->SetValue(value);
    return kNoErr;
}

OSErr Dialog::EnableItem(int16_t number, bool enable)
{
    return WithItem(Item(number), [enable](DialogItem& item) { item.SetEnabled(enable); });
}

OSErr Dialog::ShowItem(int16_t number, bool show)
{
    return WithItem(Item(number), [show](DialogItem& item) { item.SetVisible(show); });
}

OSErr Dialog::NewList(const ListSpec& spec, ListControl*& list) noexcept
{
    list = nullptr;
    if (!ListControl::IsValidListSpec(spec)) return kParamErr;
    try {
        lists_.push_back(std::make_unique<ListControl>(spec, &port_));
    } catch (...) {
        return kMemFull;
    }
    list = lists_.back().get();
    return kNoErr;
}

void Dialog::DisposeList(ListControl* list)
{
    lists_.erase(std::remove_if(lists_.begin(), lists_.end(),
                                [list](const std::unique_ptr<ListControl>& owned) { return owned.get() == list; }),
                 lists_.end());
}

bool Dialog::OwnsList(const ListControl* list) const
{
    return list != nullptr &&
           std::any_of(lists_.begin(), lists_.end(),
                       [list](const std::unique_ptr<ListControl>& owned) { return owned.get() == list; });
}

void Dialog::DrawItems(const DialogRect& region)
{
    const DialogRect drawn = IntersectRects(content_, region);
    if (IsEmptyRect(drawn)) return;
    port_.Record(DrawKind::kDialogItems, drawn);
    ++itemsDrawCount_;
}

}   // namespace toolbox
