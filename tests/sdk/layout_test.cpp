// The table layout is the host's binary interface: both sides must agree on where each slot is
// and how wide the records are, whatever the compiler does with alignment.
#include "tests/support/test_support.h"

using support::Ints;

TEST(SdkLayout, TagsSpellTheirFourCharacters)
{
    EXPECT_EQ(Ints(MakeTag('S', 'O', 'M', 'S'), MakeTag('p', 'f', 'P', 'L'), MakeTag('S', 'D', 'G', 'F'),
                   MakeTag('o', 't', 'O', 'C')),
              Ints(kTagMeasureSpec, 0x7066504Cu, kTagGfhold, kTagChannelDef));
}

TEST(SdkLayout, FunctionTableHasOnePointerSlotPerHostFunction)
{
    EXPECT_EQ(Ints(offsetof(StavioFuncs, SX_ProcessMidiData), offsetof(StavioFuncs, SX_ShowHideDlgItem),
                   offsetof(StavioFuncs, SX_SetOrmegaDocumentDirty)),
              Ints(SlotOffset(91), SlotOffset(104), SlotOffset(82)));
}

TEST(SdkLayout, PackedRecordsKeepTheirFieldOffsets)
{
    EXPECT_EQ(Ints(offsetof(EXENTRY, note), offsetof(EXENTRY, elldur), offsetof(EDTStaffStyle2003, mask1),
                   offsetof(EDTStaffStyle2003, styleName), offsetof(EDTInstrumentUsed, separ),
                   offsetof(EDTStaffStyleAssign, range), offsetof(SxpMidiData, midiFile)),
              Ints(16, 136, 72, 84, 8, 12, 20));
}
