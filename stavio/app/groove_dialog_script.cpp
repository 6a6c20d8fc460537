#include "stavio/app/groove_dialog_script.h"

#include "stavio/dialogs/dialog_session.h"
#include "stavio/dialogs/dialog_text.h"
#include "toolbox/resources.h"

#include <algorithm>
#include <cctype>

namespace stavio::app {

namespace {

bool IsNumber(const std::string& text)
{
    return !text.empty() && text.size() < 6 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// "Rock.mid" names the row "Rock": the list shows names without their extension.
std::string GrooveRowName(const std::string& groove)
{
    const size_t stem = groove.size() > 4 ? groove.size() - 4 : 0;
    return stem > 0 && Lowered(groove.substr(stem)) == ".mid" ? groove.substr(0, stem) : groove;
}

struct GrooveItems {
    int16_t grooveList = 0;
    int16_t newStaff = 0;
    int16_t staffPopup = 0;
    int16_t stylePopup = 0;
    int16_t ok = kOKItem;
};

toolbox::Result<GrooveItems> FindGrooveItems(const std::string& resourcePath)
{
    const std::string layoutName = "dialog layout 'DLOG' " + std::to_string(kGrooveDialogId);
    const toolbox::Result<toolbox::ResourceFile> file = toolbox::LoadResourceFile(resourcePath);
    if (!file) {
        return file.status();
    }
    const toolbox::Resource* resource = file->Find(toolbox::kDialogLayoutType, kGrooveDialogId);
    if (resource == nullptr) {
        return toolbox::Status::Failure(resourcePath + ": no " + layoutName, toolbox::kResourceNotFound);
    }
    const toolbox::Result<toolbox::DialogLayout> layout = toolbox::ReadDialogLayout(*resource);
    if (!layout) {
        return layout.status().Within(resourcePath + ": " + layoutName);
    }
    GrooveItems items;
    std::string missing;
    const auto number = [&](toolbox::DialogItemKind kind, const std::string& label, const char* what) -> int16_t {
        const toolbox::DialogItemSpec* item = toolbox::FindDialogItem(*layout, kind, label);
        if (item == nullptr && missing.empty()) {
            missing = what;
        }
        return item != nullptr ? item->number : int16_t{0};
    };
    items.grooveList = number(toolbox::DialogItemKind::kUserItem, "", "the groove list (a user item)");
    items.newStaff = number(toolbox::DialogItemKind::kRadio, "A new staff", "the \"A new staff\" radio button");
    items.staffPopup = number(toolbox::DialogItemKind::kPopup, "Staff:", "the \"Staff:\" pop-up menu");
    items.stylePopup = number(toolbox::DialogItemKind::kPopup, "Style:", "the \"Style:\" pop-up menu");
    items.ok = number(toolbox::DialogItemKind::kButton, "OK", "the \"OK\" button");
    if (!missing.empty()) {
        return toolbox::Status::Failure(resourcePath + ": " + layoutName + " has no " + missing,
                                        toolbox::kResourceNotFound);
    }
    return items;
}

}   // namespace

toolbox::Result<DialogScript> GrooveDialogScript(const FillOptions& options, const std::string& resourcePath)
{
    const toolbox::Result<GrooveItems> items = FindGrooveItems(resourcePath);
    if (!items) {
        return items.status();
    }
    DialogScript script;
    script.dialogId = kGrooveDialogId;
    if (options.groove) {
        script.actions.push_back(DialogAction::ClickListRowNamed(items->grooveList, GrooveRowName(*options.groove)));
    }
    if (options.staff) {
        script.actions.push_back(IsNumber(*options.staff)
                                     ? DialogAction::ChooseEntry(items->staffPopup, std::stoi(*options.staff))
                                     : DialogAction::ChooseEntryNamed(items->staffPopup, *options.staff));
    }
    if (options.style) {
        script.actions.push_back(DialogAction::ChooseEntry(items->stylePopup, static_cast<int>(*options.style) + 1));
    }
    if (options.newStaff) {
        script.actions.push_back(DialogAction::PressItem(items->newStaff));
    }
    script.actions.push_back(DialogAction::PressItem(items->ok));
    return script;
}

}   // namespace stavio::app
