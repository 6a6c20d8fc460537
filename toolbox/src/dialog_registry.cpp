// The dialogs the toolbox has made and keeps, once per process so that the host and the plug-in
// it loads see the same ones. Everything runs on the user-interface thread.
#include "toolbox/dialogs.h"

#include <algorithm>

namespace toolbox {

namespace {

std::vector<std::unique_ptr<Dialog>>& TheDialogs()
{
    static std::vector<std::unique_ptr<Dialog>> dialogs;
    return dialogs;
}

Dialog* Keep(const DialogLayout& layout, int16_t layoutId) noexcept
{
    try {
        auto& dialogs = TheDialogs();
        dialogs.reserve(dialogs.size() + 1);   // so that push_back below cannot fail
        dialogs.push_back(std::make_unique<Dialog>(layout, layoutId));
        return dialogs.back().get();
    } catch (...) {
        return nullptr;
    }
}

std::string DescribeLayout(int16_t layoutId)
{
    return "dialog layout 'DLOG' " + std::to_string(layoutId);
}

}   // namespace

Result<Dialog*> NewDialog(int16_t layoutId)
{
    try {
        const Resource* resource = GetResource(kDialogLayoutType, layoutId);
        if (resource == nullptr) {
            return Status::Failure(DescribeLayout(layoutId) + ": not found", kResourceNotFound);
        }
        const Result<DialogLayout> layout = ReadDialogLayout(*resource);
        if (!layout) {
            return layout.status().Within(DescribeLayout(layoutId));
        }
        Dialog* dialog = Keep(*layout, layoutId);
        if (dialog == nullptr) {
            return Status::Failure(DescribeLayout(layoutId) + ": out of memory", kMemFull);
        }
        return dialog;
    } catch (...) {
        return Status::Failure(DescribeLayout(layoutId) + ": out of memory", kMemFull);
    }
}

Dialog* NewDialogFromLayout(const DialogLayout& layout) noexcept
{
    return Keep(layout, 0);
}

void DisposeDialog(Dialog* dialog)
{
    auto& dialogs = TheDialogs();
    const auto found = std::find_if(dialogs.begin(), dialogs.end(),
                                    [dialog](const std::unique_ptr<Dialog>& kept) { return kept.get() == dialog; });
    if (found == dialogs.end()) return;
    // Taken out first, so that nothing finds it while it goes.
    std::unique_ptr<Dialog> going = std::move(*found);
    dialogs.erase(found);
}

void DisposeAllDialogs()
{
    std::vector<std::unique_ptr<Dialog>> going;
    going.swap(TheDialogs());
}

Dialog* LiveDialog(const void* handle)
{
    if (handle == nullptr) return nullptr;
    for (const std::unique_ptr<Dialog>& dialog : TheDialogs()) {
        if (dialog.get() == handle) return dialog.get();
    }
    return nullptr;
}

DialogItem* LiveControl(const void* handle)
{
    if (handle == nullptr) return nullptr;
    for (const std::unique_ptr<Dialog>& dialog : TheDialogs()) {
        for (const DialogItem& item : dialog->Items()) {
            if (&item == handle && item.IsControl()) return dialog->Item(item.Number());
        }
    }
    return nullptr;
}

std::vector<Dialog*> LiveDialogs() noexcept
{
    try {
        std::vector<Dialog*> live;
        for (const std::unique_ptr<Dialog>& dialog : TheDialogs()) live.push_back(dialog.get());
        return live;
    } catch (...) {
        return {};
    }
}

}   // namespace toolbox
