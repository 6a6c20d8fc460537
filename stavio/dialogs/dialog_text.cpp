#include "stavio/dialogs/dialog_text.h"

#include "sdk/funcs.h"
#include "stavio/dialogs/dialog_session.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <sstream>

namespace stavio {

namespace {

const toolbox::ListControl* ListInside(const toolbox::Dialog& dialog, const toolbox::DialogRect& rect)
{
    for (const auto& list : dialog.Lists()) {
        if (toolbox::RectsOverlap(list->Bounds(), rect)) {
            return list.get();
        }
    }
    return nullptr;
}

void WriteList(std::ostream& out, const toolbox::ListControl& list)
{
    if (list.Rows() == 0) {
        out << "      (empty list)\n";
    }
    for (int row = 0; row < list.Rows(); ++row) {
        const std::string* text = list.CellText(toolbox::Cell{row, 0});
        out << (list.IsSelected(toolbox::Cell{row, 0}) ? "   > " : "     ") << (row < 9 ? " " : "") << row + 1 << "  "
            << (text != nullptr ? *text : std::string()) << "\n";
    }
}

void WriteControl(std::ostream& out, const toolbox::DialogItem& item)
{
    out << "  [" << item.Number() << "] ";
    switch (item.Kind()) {
        case toolbox::DialogItemKind::kButton: out << "<" << item.Label() << ">"; break;
        case toolbox::DialogItemKind::kRadio: out << (item.Value() != 0 ? "(*) " : "( ) ") << item.Label(); break;
        case toolbox::DialogItemKind::kCheckbox: out << (item.Value() != 0 ? "[x] " : "[ ] ") << item.Label(); break;
        case toolbox::DialogItemKind::kPopup: {
            const std::string* chosen = item.MenuEntryText(item.Value());
            out << item.Label() << (item.Label().empty() ? "" : " ") << (chosen != nullptr ? *chosen : "(nothing)")
                << "   [" << DescribeEntries(item) << "]";
            break;
        }
        default: break;
    }
    out << (item.IsEnabled() ? "" : "  (disabled)") << "\n";
}

}   // namespace

std::string DescribeDialog(const toolbox::Dialog& dialog)
{
    std::ostringstream out;
    out << "== " << (dialog.Title().empty() ? "Dialog" : dialog.Title()) << " ==\n";
    for (const toolbox::DialogItem& item : dialog.Items()) {
        if (!item.IsVisible()) {
            continue;
        }
        if (item.Kind() == toolbox::DialogItemKind::kStaticText) {
            out << item.Label() << "\n";
        } else if (item.Kind() == toolbox::DialogItemKind::kUserItem) {
            if (const toolbox::ListControl* list = ListInside(dialog, item.Rect())) {
                WriteList(out, *list);
            }
        } else {
            WriteControl(out, item);
        }
    }
    return out.str();
}

std::string Lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int FindNamed(const std::vector<std::string>& texts, const std::string& wanted)
{
    const auto exact = std::find(texts.begin(), texts.end(), wanted);
    if (exact != texts.end()) {
        return static_cast<int>(exact - texts.begin());
    }
    const std::string lowered = Lowered(wanted);
    int found = -1;
    for (size_t i = 0; i < texts.size(); ++i) {
        if (Lowered(texts[i]) == lowered) {
            if (found >= 0) {
                return -1;
            }
            found = static_cast<int>(i);
        }
    }
    return found;
}

const char* AlertStyleWord(int32_t style)
{
    switch (style) {
        case kAlertStop: return "stop";
        case kAlertWarning: return "warning";
        case kAlertQuestion: return "question";
        default: return "notice";
    }
}

std::string JsonQuoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        switch (c) {
            case '"': quoted += "\\\""; break;
            case '\\': quoted += "\\\\"; break;
            case '\n': quoted += "\\n"; break;
            case '\r': quoted += "\\r"; break;
            case '\t': quoted += "\\t"; break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
                    quoted += escaped;
                } else {
                    quoted += c;
                }
        }
    }
    return quoted + "\"";
}

}   // namespace stavio
