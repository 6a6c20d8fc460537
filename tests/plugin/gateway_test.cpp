// Start-up on both table paths and the wrapper families, with the plug-in's core linked in.
// The pure version gates use a table of stand-in addresses that is never called through.
#include "tamberlyne/host/callbacks.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/host_function_names.h"
#include "tamberlyne/host/startup.h"
#include "tamberlyne/host/table_slots.h"
#include "tamberlyne/plugin/entry_points.h"
#include "tests/plugin/plugin_test_support.h"
#include "toolbox/symbols.h"

#include <tuple>

using plugin_test::HostSession;
using stavio::HostPose;
using support::Ints;

namespace {

void* StandIn(int slot)
{
    return reinterpret_cast<void*>(static_cast<uintptr_t>(0x10000 + slot * 16));
}

SXPluginFuncs StartOnStandIns(uint32_t version, uint32_t size = sizeof(StavioFuncs))
{
    StavioFuncs table{};
    table.size = size;
    table.version = version;
    for (int slot = kFirstFunctionSlot; slot <= kLastFunctionSlot; ++slot) SetSlot(table, slot, StandIn(slot));
    return support::StartPluginCore(table);
}

// The filled slots as runs "first-last".
std::string FilledSlots()
{
    std::string runs;
    for (int slot = kFirstFunctionSlot; slot <= kLastFunctionSlot; ++slot) {
        if (GetSlot(gStavioFuncs, slot) == nullptr) continue;
        int last = slot;
        while (last < kLastFunctionSlot && GetSlot(gStavioFuncs, last + 1) != nullptr) ++last;
        runs += (runs.empty() ? "" : " ") + std::to_string(slot) + "-" + std::to_string(last);
        slot = last;
    }
    return runs;
}

}   // namespace

TEST(PluginStartup, CopyPathVersionGatesAndReply)
{
    SXPluginFuncs reply = StartOnStandIns(0x08ffffff);
    EXPECT_EQ(FilledSlots(), "2-76");
    EXPECT_EQ(gStavioFuncs.SX_ExecuteMenuItem, reinterpret_cast<SXProc>(StandIn(76)));
    EXPECT_EQ(reply.fpInvoke, &Ext_invoke);   // all six: see the bundle's own test

    for (const auto& [version, size, filled] : std::vector<std::tuple<uint32_t, size_t, std::string>>{
             {0x04000106, sizeof(StavioFuncs), "2-60"},
             {0x04000107, sizeof(StavioFuncs), "2-61"},
             {0x07ffffff, sizeof(StavioFuncs), "2-61"},
             {0x08000000, sizeof(StavioFuncs), "2-76"},
             {0x08ffffff, SlotOffset(31), "2-30"}}) {   // the last: a shorter table
        StartOnStandIns(version, static_cast<uint32_t>(size));
        EXPECT_EQ(FilledSlots(), filled) << std::hex << version;
    }
}

TEST(PluginStartup, NullArgumentsRefuseToStart)
{
    StavioFuncs table{};
    SXPluginFuncs reply{};
    EXPECT_EQ(Ints(PluginMain(nullptr, &reply), PluginMain(&table, nullptr)), Ints(0, 0));
    ASSERT_EQ(InitializeGlobals(), 0);
    EXPECT_EQ(GetStavioBundleRef(), &gStavioFSSpec);
}

// On the name path the table's own slots are ignored; every function comes from the process's
// exports (the reference host linked into this test).
TEST(PluginStartup, NamePathLooksFunctionsUpByVersionAndLeavesTheReplyAlone)
{
    stavio::Host host(stavio::HostSettings{HostPose::Newer, "", ""});
    SXPluginFuncs reply = StartOnStandIns(0x09000000);
    EXPECT_TRUE(reply.fpGetversion == nullptr && reply.fpGetMenuStatus == nullptr);
    // Slot 62 has a name the host does not export; 77-78 are never looked up; 82 has no name;
    // 101-103 wait for 0x0b000000; 104-105 come with the first block.
    EXPECT_EQ(FilledSlots(), "2-61 63-76 79-81 83-100 104-105");
    for (int slot : {9, 56, 61, 89, 100, 104}) {
        EXPECT_EQ(GetSlot(gStavioFuncs, slot), toolbox::FunctionPointerForName(HostFunctionName(slot))) << slot;
    }

    HostSession newest(HostPose::Newer);   // 0x0c000000
    EXPECT_EQ(FilledSlots(), "2-61 63-76 79-81 83-105");
    EXPECT_NE(toolbox::FunctionPointerForName("SX_SetOrmegaDocumentDirty"), nullptr);
}

TEST(PluginEditBrackets, CountersAgainstTheHostsBrackets)
{
    HostSession session(HostPose::Older);
    EXPECT_EQ(SX_EndStavioEdit(), 1);   // unmatched: harmless, the host is not asked
    SX_CancelStavioEdit();
    EXPECT_EQ(StavioEditDepth, 0);

    EXPECT_NE(SX_StartStavioEdit("outer"), 0);
    EXPECT_NE(SX_StartStavioEdit("inner"), 0);
    EXPECT_EQ(session.document().EditDepth(), 2);
    SX_CancelStavioEdit();
    EXPECT_EQ(StavioEditDepth, 1);
    EXPECT_NE(SX_EndStavioEdit(), 0);
    EXPECT_EQ(session.document().EditDepth(), 0);
    EXPECT_EQ(session.document().UndoName(), "outer");

    // Without the host's bracket calls the start still counts.
    gStavioFuncs.SX_StartStavioEdit = nullptr;
    gStavioFuncs.SX_EndStavioEdit = nullptr;
    EXPECT_EQ(SX_StartStavioEdit("x"), 0);
    EXPECT_EQ(StavioEditDepth, 1);
    EXPECT_EQ(SX_EndStavioEdit(), 0);
    EXPECT_EQ(StavioEditDepth, 0);

    SX_StartMassEdit(kPluginApiVersion);
    EXPECT_EQ(MassEditDepth, 1);
    SX_EndMassEdit(kPluginApiVersion);
    SX_EndMassEdit(kPluginApiVersion);
    EXPECT_EQ(MassEditDepth, -1);   // no floor
}

namespace {
EVERSION gChordVersion = 0;
int32_t RecordChordVersion(const EREGION*, char*, int32_t, EVERSION version)
{
    gChordVersion = version;
    return 1;
}
int gShowHideCalls = 0;
int32_t RecordShowHide(EDLG, int32_t, int32_t, EVERSION)
{
    return ++gShowHideCalls;
}
int gHostControl = 0;   // stands for the host's answer to SX_GetDlgCntl
ECONTROL HostControl(EDLG, int32_t, EVERSION)
{
    return static_cast<ECONTROL>(&gHostControl);
}
}   // namespace

// The older pose is a host of version 0x08ffffff: slots 77-105 are empty.
TEST(PluginDefaults, MissingSlotsAnswerTheirDefaultsAndChordAnalysisTellsTheUser)
{
    HostSession session(HostPose::Older);
    gStavioFuncs.SX_GetStavioPathMac = nullptr;
    EXPECT_EQ(Ints(SX_GetMaxLayers(), SX_IsMachO(), SX_ProcessMidiData(nullptr),
                   SX_KillTimer(nullptr, 1, kPluginApiVersion), SX_GetWindowCount(), SX_GetStavioPathMac(nullptr)),
              Ints(4, 0, -1, 0, 0, 0));
    EXPECT_TRUE(session.frontEnd.Alerts().empty());

    EXPECT_EQ(SX_AnalyzeChord(nullptr, nullptr, 0, kPluginApiVersion), 0);
    EXPECT_EQ(session.AlertTexts(),
              std::vector<std::string>{"Chord Analysis API not present in this version of Stavio."});

    gStavioFuncs.SX_AnalyzeChord = &RecordChordVersion;
    EXPECT_EQ(SX_AnalyzeChord(nullptr, nullptr, 0, 0x0a000000), 1);
    EXPECT_EQ(gChordVersion, 0x0b000000u);
    SX_AnalyzeChord(nullptr, nullptr, 0, 0x0c000000);
    EXPECT_EQ(gChordVersion, 0x0c000000u);
}

// The only test that calls the dialog-item wrappers: their slot is read once, on the first call.
TEST(PluginVersionGated, DialogItemCallsUseTheHostOnlyAboveTheirVersion)
{
    HostSession session(HostPose::Newer);
    EXPECT_EQ(SX_GetMaxLayers(), stavio::kMaxLayers);
    gStavioFuncs.SX_ShowHideDlgItem = &RecordShowHide;
    EXPECT_EQ(SX_ShowHideDlgItem(nullptr, 3, 0, 0x0b01ffff), 0);
    EXPECT_EQ(gShowHideCalls, 0);
    EXPECT_EQ(SX_ShowHideDlgItem(nullptr, 3, 1, 0x0b020000), 1);
    gStavioFuncs.SX_ShowHideDlgItem = nullptr;   // not seen: the slot was taken on the first call
    EXPECT_EQ(SX_ShowHideDlgItem(nullptr, 3, 1, kPluginApiVersion), 2);
    gStavioFuncs.SX_GetDlgCntl = &HostControl;
    EXPECT_EQ(SX_GetDlgCntl(nullptr, 3, 0x0b01ffff), nullptr);   // the toolbox finds no dialog
    EXPECT_EQ(SX_GetDlgCntl(nullptr, 3, 0x0b020000), static_cast<ECONTROL>(&gHostControl));
}

TEST(PluginCallbacks, OlderHostGetsATransitionVectorNewerTheHandlerItself)
{
    SXDialogHandler handler = [](EDLG, uint32_t, intptr_t, intptr_t, void*) -> int32_t { return 5; };
    {
        HostSession session(HostPose::Older);
        ASSERT_TRUE(IsStavioCFM());
        SXDialogHandlerRef ref = NewDialogHandlerProc(handler);
        ASSERT_NE(ref, reinterpret_cast<void*>(handler));
        const auto* vector = static_cast<const SXTransitionVector*>(ref);
        EXPECT_TRUE(vector->code == handler && vector->toc == nullptr);
        DisposeDialogHandlerProc(ref);   // the sanitizer reports a leak otherwise
    }
    HostSession session(HostPose::Newer);
    EXPECT_FALSE(IsStavioCFM());
    EXPECT_EQ(NewDialogHandlerProc(handler), reinterpret_cast<void*>(handler));
    EXPECT_GT(GetGestaltResult(0x73797376), 0x0fffu);   // 'sysv': a modern system
}
