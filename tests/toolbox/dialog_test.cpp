// Dialogs built from the layouts in tests/toolbox/files/dialogs.rsrc, found through the resource
// chain: items and their states, controls, pop-up menus, ending, and the handles that travel
// through other interfaces.
#include "tests/support/test_support.h"
#include "toolbox/dialogs.h"

#include <array>

using namespace toolbox;
using support::Ints;

namespace {

constexpr int16_t kGrooveLayout = 20129;

class ToolboxDialogs : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_GT(OpenResFile(FileSpec{support::SourceDir() + "/tests/toolbox/files", "dialogs.rsrc"}, true), 0);
        const Result<Dialog*> made = NewDialog(kGrooveLayout);
        ASSERT_TRUE(made) << made.Message();
        dialog_ = *made;
    }
    void TearDown() override
    {
        DisposeAllDialogs();
        CloseAllResFiles();
    }

    Dialog* dialog_ = nullptr;
};

}   // namespace

TEST_F(ToolboxDialogs, AreBuiltFromTheLayoutResourceInTheChain)
{
    EXPECT_EQ(dialog_->LayoutId(), kGrooveLayout);
    EXPECT_EQ(dialog_->Title(), "Fill with Drum Groove");
    EXPECT_EQ(dialog_->ContentRect(), (DialogRect{0, 0, 420, 300}));
    EXPECT_FALSE(dialog_->IsShown());
    ASSERT_EQ(dialog_->Items().size(), 8u);
    EXPECT_EQ(dialog_->Items()[6].Number(), 8);   // layout order, not number order
    const DialogItem* ok = dialog_->Item(1);
    ASSERT_NE(ok, nullptr);
    EXPECT_EQ(ok->Kind(), DialogItemKind::kButton);
    EXPECT_EQ(ok->Label(), "OK");
    EXPECT_EQ(ok->Rect(), (DialogRect{330, 260, 400, 280}));
    EXPECT_EQ(dialog_->Item(7), nullptr);
    EXPECT_EQ(dialog_->Port().VisibleRegion(), dialog_->ContentRect());

    // Without a size the content area is the items' extent; a pop-up's entries come from the layout.
    const Result<Dialog*> small = NewDialog(7);
    ASSERT_TRUE(small);
    EXPECT_EQ((*small)->ContentRect(), (DialogRect{0, 0, 90, 90}));
    const DialogItem* popup = (*small)->Item(3);
    EXPECT_EQ(Ints(popup->MenuEntryCount(), popup->Maximum(), popup->Value()), Ints(3, 3, 1));
    EXPECT_EQ(*popup->MenuEntryText(3), "Slashes");
}

TEST_F(ToolboxDialogs, MissingOrBrokenLayoutsAreRefusedWithAReason)
{
    const Result<Dialog*> missing = NewDialog(999);
    EXPECT_FALSE(missing);
    EXPECT_EQ(missing.Code(), kResourceNotFound);
    EXPECT_EQ(missing.Message(), "dialog layout 'DLOG' 999: not found");

    Resource broken;
    broken.type = kDialogLayoutType;
    broken.id = 30;
    broken.strings = {"title = \"Broken\"", "item 1 = slider 0 0 10 10"};
    ASSERT_EQ(AddResource(broken), kNoErr);
    const Result<Dialog*> broken30 = NewDialog(30);
    EXPECT_EQ(broken30.Code(), kBadResourceFile);
    EXPECT_EQ(
        broken30.Message(),
        "dialog layout 'DLOG' 30: line 2: unknown item kind 'slider' (known: button, radio, checkbox, popup, user, "
        "static)");
    EXPECT_EQ(LiveDialogs().size(), 1u);
}

TEST_F(ToolboxDialogs, ControlValuesStayWithinTheirRange)
{
    EXPECT_EQ(dialog_->ItemValue(6), 0);
    for (const auto& [item, set, value] : std::vector<std::array<int16_t, 3>>{{6, 1, 1}, {9, 5, 1}, {9, -3, 0}}) {
        EXPECT_EQ(dialog_->SetItemValue(item, set), kNoErr);
        EXPECT_EQ(dialog_->ItemValue(item), value) << item << " set to " << set;
    }

    DialogItem* popup = dialog_->Item(8);
    EXPECT_EQ(popup->Value(), 1);
    popup->SetMaximum(5);
    popup->SetValue(4);
    popup->SetMaximum(3);   // the value follows the range down
    EXPECT_EQ(popup->Value(), 3);
    popup->SetMinimum(7);   // a minimum above the maximum raises it
    EXPECT_EQ(Ints(popup->Maximum(), popup->Value()), Ints(7, 7));
    popup->SetMaximum(2);   // a maximum below the minimum lowers it
    EXPECT_EQ(Ints(popup->Minimum(), popup->Value()), Ints(2, 2));

    // User items and static text hold no value; missing items answer 0 and kParamErr.
    EXPECT_EQ(Ints(dialog_->SetItemValue(4, 3), dialog_->SetItemValue(5, 3), dialog_->SetItemValue(77, 1)),
              Ints(kItemNotControl, kItemNotControl, kParamErr));
    dialog_->Item(4)->SetMaximum(10);
    dialog_->Item(4)->SetValue(3);
    EXPECT_EQ(Ints(dialog_->ItemValue(4), dialog_->ItemValue(77)), Ints(0, 0));
}

TEST_F(ToolboxDialogs, ItemAsControlRefusesUserItemsStaticTextAndMissingItems)
{
    DialogItem* control = nullptr;
    EXPECT_EQ(dialog_->ItemAsControl(8, control), kNoErr);
    EXPECT_EQ(control, dialog_->Item(8));
    EXPECT_EQ(LiveControl(static_cast<void*>(control)), control);
    EXPECT_EQ(dialog_->ItemAsControl(4, control), kItemNotControl);
    EXPECT_EQ(control, nullptr);
    ASSERT_EQ(dialog_->ItemAsControl(1, control), kNoErr);
    EXPECT_EQ(dialog_->ItemAsControl(5, control), kItemNotControl);
    EXPECT_EQ(control, nullptr);
    EXPECT_EQ(dialog_->ItemAsControl(0, control), kParamErr);
    EXPECT_EQ(LiveControl(dialog_->Item(4)), nullptr);
}

TEST_F(ToolboxDialogs, EnablingShowingAndFindingItems)
{
    // Right edges lie outside, item 3 lies behind, the first in layout order wins.
    EXPECT_EQ(Ints(dialog_->FindItem(Point{350, 270}), dialog_->FindItem(Point{400, 270}),
                   dialog_->FindItem(Point{50, 100}), dialog_->FindItem(Point{415, 295})),
              Ints(1, 3, 4, 0));

    EXPECT_EQ(dialog_->EnableItem(1, false), kNoErr);
    EXPECT_FALSE(dialog_->Item(1)->IsEnabled());
    EXPECT_EQ(dialog_->FindItem(Point{350, 270}), 1);   // disabled items are found
    EXPECT_EQ(dialog_->ShowItem(4, false), kNoErr);
    EXPECT_EQ(dialog_->FindItem(Point{50, 100}), 3);   // hidden ones are not
    EXPECT_EQ(dialog_->ShowItem(4, true), kNoErr);
    EXPECT_EQ(dialog_->FindItem(Point{50, 100}), 4);
    DialogRect rect;
    EXPECT_EQ(Ints(dialog_->EnableItem(99, true), dialog_->ShowItem(99, true), dialog_->ItemRect(99, rect)),
              Ints(kParamErr, kParamErr, kParamErr));
    EXPECT_EQ(dialog_->ItemRect(4, rect), kNoErr);
    EXPECT_EQ(rect, (DialogRect{20, 40, 220, 240}));
}

TEST_F(ToolboxDialogs, PopupMenusCollectEntriesAndWidenTheirRange)
{
    DialogItem* popup = dialog_->Item(8);
    for (const char* entry : {"Drums", "Bass", "Piano"}) EXPECT_EQ(popup->AppendMenuEntry(entry), kNoErr);
    EXPECT_EQ(Ints(popup->MenuEntryCount(), popup->Maximum()), Ints(3, 3));
    EXPECT_EQ(*popup->MenuEntryText(2), "Bass");
    EXPECT_TRUE(popup->MenuEntryText(0) == nullptr && popup->MenuEntryText(4) == nullptr);
    popup->SetValue(3);
    EXPECT_EQ(popup->Value(), 3);

    // A range set wider by the program is not narrowed by appending.
    popup->SetMaximum(10);
    popup->AppendMenuEntry("Guitar");
    EXPECT_EQ(popup->Maximum(), 10);
    popup->ClearMenu();
    EXPECT_EQ(popup->MenuEntryCount(), 0);
    EXPECT_EQ(dialog_->Item(1)->AppendMenuEntry("nope"), kItemNotControl);
}

TEST_F(ToolboxDialogs, EndingIsFinalAndHandlesDieWithTheDialog)
{
    int flags = 0;
    dialog_->SetUserData(&flags);
    EXPECT_EQ(dialog_->UserData(), &flags);
    dialog_->SetShown(true);
    EXPECT_TRUE(dialog_->IsShown());

    EXPECT_FALSE(dialog_->HasEnded());
    dialog_->End(2);
    dialog_->End(1);
    EXPECT_EQ(Ints(dialog_->HasEnded(), dialog_->Result()), Ints(true, 2));

    void* handle = dialog_;
    void* control = dialog_->Item(1);
    EXPECT_EQ(LiveDialog(handle), dialog_);
    EXPECT_TRUE(LiveDialog(&flags) == nullptr && LiveDialog(nullptr) == nullptr);
    DisposeDialog(dialog_);
    DisposeDialog(dialog_);   // a second time is ignored
    EXPECT_TRUE(LiveDialog(handle) == nullptr && LiveControl(control) == nullptr && LiveDialogs().empty());
}

TEST(ToolboxMouseDownWords, CarryYAndModifiersBothWays)
{
    for (int y : {0, 1, 299, -5, 32767, -32768}) {
        const intptr_t word = PackMouseDownWord(y, kShiftKey | kCommandKey);
        EXPECT_EQ(Ints(MouseDownY(word), MouseDownModifiers(word)), Ints(y, kShiftKey | kCommandKey));
    }
    EXPECT_EQ(MouseDownModifiers(PackMouseDownWord(-1, kNoModifiers)), kNoModifiers);
}
