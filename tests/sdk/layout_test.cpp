// The table layout is the host's binary interface: both sides must agree on where each slot is
// and how wide the records are, whatever the compiler does with alignment.
#include "sdk/sdk.h"

#include <gtest/gtest.h>

TEST(SdkLayout, TagsSpellTheirFourCharacters)
{
    EXPECT_EQ(MakeTag('S', 'O', 'M', 'S'), kTagMeasureSpec);
    EXPECT_EQ(MakeTag('p', 'f', 'P', 'L'), 0x7066504Cu);
    EXPECT_EQ(MakeTag('S', 'D', 'G', 'F'), kTagGfhold);
    EXPECT_EQ(MakeTag('o', 't', 'O', 'C'), kTagChannelDef);
}

TEST(SdkLayout, FunctionTableHasOnePointerSlotPerHostFunction)
{
    EXPECT_EQ(sizeof(StavioFuncs), 8 + 104 * sizeof(void*));
    EXPECT_EQ(offsetof(StavioFuncs, SX_ProcessMidiData), SlotOffset(91));
    EXPECT_EQ(offsetof(StavioFuncs, SX_ShowHideDlgItem), SlotOffset(104));
    EXPECT_EQ(offsetof(StavioFuncs, SX_SetOrmegaDocumentDirty), SlotOffset(82));
}

TEST(SdkLayout, PackedRecordsKeepTheirFieldOffsets)
{
    EXPECT_EQ(offsetof(EXENTRY, note), 16u);
    EXPECT_EQ(offsetof(EXENTRY, elldur), 136u);
    EXPECT_EQ(offsetof(EDTStaffStyle2003, mask1), 72u);
    EXPECT_EQ(offsetof(EDTStaffStyle2003, styleName), 84u);
    EXPECT_EQ(offsetof(EDTInstrumentUsed, separ), 8u);
    EXPECT_EQ(offsetof(EDTStaffStyleAssign, range), 12u);
    EXPECT_EQ(offsetof(SxpMidiData, midiFile), 20u);
}
