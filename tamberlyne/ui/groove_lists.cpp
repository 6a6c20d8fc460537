#include "tamberlyne/ui/groove_lists.h"

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/staff_record.h"
#include "tamberlyne/host/text_object.h"
#include "tamberlyne/platform/dialog_items.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tamberlyne/plugin/staff_preparation.h"
#include "tamberlyne/ui/groove_dialog.h"
#include "toolbox/files.h"

#include <cstring>

namespace {

constexpr size_t kExtensionLength = 4;

std::string FieldText(const char* field, size_t capacity)
{
    return std::string(field, strnlen(field, capacity));
}

// The folder "Tamberlyne" inside the host application's folder; false when the host cannot
// say where it lives or either folder is missing.
bool FindGrooveFolder(std::string& grooveFolder)
{
    EFSSPEC application{};
    if (SX_GetStavioPathMac(&application, kPluginApiVersion) == 0) {
        return false;
    }
    const toolbox::FileSpec applicationSpec{FieldText(application.folder, sizeof(application.folder)),
                                            FieldText(application.name, sizeof(application.name))};
    const std::string applicationFolder = applicationSpec.Path();
    if (applicationFolder.empty() || !toolbox::IsFolder(applicationFolder)) {
        return false;
    }
    grooveFolder = toolbox::FileSpec{applicationFolder, kGrooveFolderName}.Path();
    return toolbox::IsFolder(grooveFolder);
}

// A new, empty groove list inside item 4 (its right 15 pixels hold the scroll bar), framed.
void BuildGrooveList(EDLG dialog)
{
    toolbox::Dialog* model = DialogModel(dialog);
    toolbox::DialogRect frame;
    if (model == nullptr || !GetDialogItemRect(dialog, kItemGrooveList, frame)) {
        return;
    }
    model->DisposeList(g_hStaffList);
    g_hStaffList = nullptr;
    toolbox::ListSpec spec;
    spec.view = frame;
    spec.view.right = static_cast<int16_t>(frame.right - toolbox::kScrollBarWidth);
    spec.columns = 1;
    spec.rows = 0;
    spec.verticalScrollBar = true;
    spec.singleSelection = true;
    spec.drawing = true;
    toolbox::ListControl* list = nullptr;
    if (model->NewList(spec, list) == toolbox::kNoErr) {
        g_hStaffList = list;
    }
    model->Port().FrameRect(toolbox::InsetRect(frame, -1, -2));
}

void AppendGrooveRow(const std::string& text)
{
    if (g_hStaffList == nullptr) {
        return;
    }
    const int row = LAddRowWhite(1, g_hStaffList->Rows(), g_hStaffList);
    if (row >= 0) {
        LSetCellWhite(text.data(), static_cast<int>(text.size()), toolbox::Cell{row, 0}, g_hStaffList);
    }
}

}   // namespace

bool IsGrooveFileName(const std::string& name)
{
    if (name.size() <= kExtensionLength || name == TempFileNameDotMid) {
        return false;
    }
    const std::string extension = name.substr(name.size() - kExtensionLength);
    return extension == ".mid" || extension == ".MID" || extension == ".Mid";
}

int FillSelectionLists(EDLG dialog)
{
    SetTheFont(dialog);
    FillStaffSelectionList(dialog);
    BuildGrooveList(dialog);

    std::string grooveFolder;
    if (FindGrooveFolder(grooveFolder)) {
        toolbox::MakeFileSpec(grooveFolder, TempFileNameDotMid, TempFileSpec);
        Files.clear();
        // The rows follow the folder's own order: row n is Files[n].
        for (int index = 1;; ++index) {
            const std::optional<toolbox::FolderItem> item = toolbox::FolderItemAt(grooveFolder, index);
            if (!item) {
                break;
            }
            if (item->isFolder || !IsGrooveFileName(item->name)) {
                continue;
            }
            toolbox::FileSpec spec;
            toolbox::MakeFileSpec(grooveFolder, item->name, spec);
            Files.push_back(spec);
            AppendGrooveRow(item->name.substr(0, item->name.size() - kExtensionLength));
        }
        if (!Files.empty()) {
            SX_SetDlgCntlVal(dialog, kItemStylePopup, stylenum + 1, kPluginApiVersion);
            return 1;
        }
    }
    SX_AlertMessage(nullptr, kAlertWarning, kAlertNoGrooves, nullptr, kPluginApiVersion);
    return 0;
}

void FillStaffSelectionList(EDLG dialog)
{
    const ECONTROL popup = SX_GetDlgCntl(dialog, kItemStaffPopup, kPluginApiVersion);
    int entries = 0;
    int drumEntry = 0;
    for (int slot = SelRegion.start.IUslot; slot <= SelRegion.end.IUslot; ++slot) {
        ++entries;
        const int inst = SX_SlotToInst(slot, SelRegion.start.IUlist);
        CStaffSpec staff;
        staff.Load(static_cast<int16_t>(inst));
        CTextObject name;
        if (staff.GetFullName(&name) == 1) {
            staff.GetAbbrivName(&name);
        }
        AppendPopupEntry(popup, name.GetPlainText());
        if (IsDrumStaff(inst)) {
            drumEntry = entries;
        }
    }
    SetControlRange(popup, 1, entries);
    SX_SetDlgCntlVal(dialog, kItemStaffPopup, drumEntry > 0 ? drumEntry : 1, kPluginApiVersion);
    SX_SetDlgCntlVal(dialog, kItemNewStaff, 0, kPluginApiVersion);
    SX_SetDlgCntlVal(dialog, kItemChosenStaff, 1, kPluginApiVersion);
    SX_ShowHideDlgItem(dialog, kItemStaffPopup, 1, kPluginApiVersion);
    SX_EnableDlgItem(dialog, kItemStaffPopup, 1, kPluginApiVersion);
}

int MacList_GetSelNum()
{
    toolbox::Cell cell{0, 0};
    if (g_hStaffList == nullptr || !g_hStaffList->FindSelectedCell(cell)) {
        return 0;
    }
    return cell.row + 1;
}
