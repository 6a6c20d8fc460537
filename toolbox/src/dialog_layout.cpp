#include "dialog_layout.h"

#include "text_syntax.h"

#include <algorithm>

namespace toolbox {

namespace {

struct KindName {
    DialogItemKind kind;
    const char* name;
};

constexpr KindName kKindNames[] = {
    {DialogItemKind::kButton, "button"}, {DialogItemKind::kRadio, "radio"},   {DialogItemKind::kCheckbox, "checkbox"},
    {DialogItemKind::kPopup, "popup"},   {DialogItemKind::kUserItem, "user"}, {DialogItemKind::kStaticText, "static"},
};

const char* NameOf(DialogItemKind kind)
{
    for (const KindName& entry : kKindNames) {
        if (entry.kind == kind) return entry.name;
    }
    return "user";
}

bool KindNamed(const std::string& name, DialogItemKind& kind)
{
    for (const KindName& entry : kKindNames) {
        if (name == entry.name) {
            kind = entry.kind;
            return true;
        }
    }
    return false;
}

std::string KnownKinds()
{
    std::string list;
    for (const KindName& entry : kKindNames) list += (list.empty() ? "" : ", ") + std::string(entry.name);
    return list;
}

bool ReadRect(text::LineCursor& cursor, DialogRect& rect, std::string& error)
{
    if (!cursor.ReadInt16("left edge", rect.left, error) || !cursor.ReadInt16("top edge", rect.top, error) ||
        !cursor.ReadInt16("right edge", rect.right, error) || !cursor.ReadInt16("bottom edge", rect.bottom, error))
        return false;
    if (rect.right < rect.left) {
        error = "the right edge lies left of the left edge";
        return false;
    }
    if (rect.bottom < rect.top) {
        error = "the bottom edge lies above the top edge";
        return false;
    }
    return true;
}

bool ExpectEnd(text::LineCursor& cursor, std::string& error)
{
    if (cursor.AtEnd()) return true;
    error = "unexpected " + cursor.Upcoming() + " at the end of the line";
    return false;
}

std::string FormatItem(const DialogItemSpec& item)
{
    std::string line = "item " + std::to_string(item.number) + " = " + NameOf(item.kind);
    for (int16_t edge : {item.rect.left, item.rect.top, item.rect.right, item.rect.bottom})
        line += " " + std::to_string(edge);
    if (!item.label.empty()) line += " " + text::Quote(item.label);
    return line;
}

}   // namespace

bool DialogLayoutReader::ReadLine(const std::string& line, std::string& normalized, std::string& error)
{
    text::LineCursor cursor(line);
    const std::string key = cursor.ReadWord();
    if (key == "title") {
        if (haveTitle_) {
            error = "the dialog has a title already";
            return false;
        }
        std::string title;
        if (!cursor.Expect('=', "after 'title'", error) || !cursor.ReadQuoted(title, error) ||
            !ExpectEnd(cursor, error))
            return false;
        layout_.title = title;
        haveTitle_ = true;
        normalized = "title = " + text::Quote(title);
        return true;
    }
    if (key == "size") {
        if (haveSize_) {
            error = "the dialog has a size already";
            return false;
        }
        long width = 0;
        long height = 0;
        if (!cursor.Expect('=', "after 'size'", error) || !cursor.ReadNumber(1, INT16_MAX, "width", width, error) ||
            !cursor.ReadNumber(1, INT16_MAX, "height", height, error) || !ExpectEnd(cursor, error))
            return false;
        layout_.width = static_cast<int16_t>(width);
        layout_.height = static_cast<int16_t>(height);
        haveSize_ = true;
        normalized = "size = " + std::to_string(width) + " " + std::to_string(height);
        return true;
    }
    if (key == "item") {
        DialogItemSpec item;
        long number = 0;
        if (!cursor.ReadNumber(1, INT16_MAX, "item number", number, error) ||
            !cursor.Expect('=', "after the item number", error))
            return false;
        item.number = static_cast<int16_t>(number);
        const bool duplicate = std::any_of(layout_.items.begin(), layout_.items.end(),
                                           [&](const DialogItemSpec& other) { return other.number == item.number; });
        if (duplicate) {
            error = "item " + std::to_string(number) + " appears twice";
            return false;
        }
        const std::string kind = cursor.ReadWord();
        if (!KindNamed(kind, item.kind)) {
            error = "unknown item kind " + (kind.empty() ? cursor.Upcoming() : "'" + kind + "'") +
                    " (known: " + KnownKinds() + ")";
            return false;
        }
        if (!ReadRect(cursor, item.rect, error)) return false;
        if (cursor.NextIsQuote() && !cursor.ReadQuoted(item.label, error)) return false;
        if (!ExpectEnd(cursor, error)) return false;
        normalized = FormatItem(item);
        layout_.items.push_back(std::move(item));
        return true;
    }
    if (key == "entries") return ReadEntries(cursor, normalized, error);
    error = key.empty() ? "expected a dialog line (title, size, item or entries), found " + cursor.Upcoming()
                        : "unknown dialog key '" + key + "' (known: title, size, item, entries)";
    return false;
}

// entries <n> = "<text>" ["<text>" ...]: the entries of pop-up item n, which an earlier line made.
bool DialogLayoutReader::ReadEntries(text::LineCursor& cursor, std::string& normalized, std::string& error)
{
    long number = 0;
    if (!cursor.ReadNumber(1, INT16_MAX, "item number", number, error) ||
        !cursor.Expect('=', "after the item number", error))
        return false;
    const auto item = std::find_if(layout_.items.begin(), layout_.items.end(),
                                   [&](const DialogItemSpec& spec) { return spec.number == number; });
    if (item == layout_.items.end()) {
        error = "entries for item " + std::to_string(number) + ", which no earlier line makes";
        return false;
    }
    if (item->kind != DialogItemKind::kPopup) {
        error = "entries for item " + std::to_string(number) + ", which is not a pop-up menu";
        return false;
    }
    if (!item->entries.empty()) {
        error = "item " + std::to_string(number) + " has its entries already";
        return false;
    }
    std::vector<std::string> entries;
    while (cursor.NextIsQuote()) {
        std::string entry;
        if (!cursor.ReadQuoted(entry, error)) return false;
        entries.push_back(std::move(entry));
    }
    if (entries.empty()) {
        error = "expected at least one quoted entry, found " + cursor.Upcoming();
        return false;
    }
    if (!ExpectEnd(cursor, error)) return false;
    normalized = "entries " + std::to_string(number) + " =";
    for (const std::string& entry : entries) normalized += " " + text::Quote(entry);
    item->entries = std::move(entries);
    return true;
}

Result<DialogLayout> ReadDialogLayout(const Resource& resource)
{
    try {
        DialogLayoutReader reader;
        for (size_t i = 0; i < resource.strings.size(); ++i) {
            std::string normalized;
            std::string what;
            if (!reader.ReadLine(resource.strings[i], normalized, what)) {
                return Status::Failure("line " + std::to_string(i + 1) + ": " + what, kBadResourceFile);
            }
        }
        return reader.Layout();
    } catch (...) {
        return Status::Failure("out of memory", kMemFull);
    }
}

const DialogItemSpec* FindDialogItem(const DialogLayout& layout, DialogItemKind kind, const std::string& label)
{
    for (const DialogItemSpec& item : layout.items) {
        if (item.kind == kind && (label.empty() || item.label == label)) return &item;
    }
    return nullptr;
}

}   // namespace toolbox
