// Built documents hold what the builder was told, in the records a plug-in reads.
#include "stavio/document_builder.h"

#include <gtest/gtest.h>

namespace stavio {
namespace {

TEST(StavioDocumentBuilder, BuildsMeasuresMetersFlagsAndNamedStavesInListZero)
{
    Document doc = DocumentBuilder()
                       .Measures(16)
                       .TimeSignatureFrom(9, 3, 1024)
                       .MeasureFlags(5, kMeasureAuxRefused)
                       .MeasureFlags(40, kMeasureAuxRefused)   // beyond the last measure: ignored
                       .Staff("Drum Set", "Dr.")
                       .Staff("Cowbell")
                       .Build();
    EXPECT_EQ(doc.MeasureCount(), 16);
    EXPECT_EQ(doc.MeasureDuration(8), 4096);
    EXPECT_EQ(doc.MeasureDuration(9), 3072);
    EXPECT_EQ(doc.MeasureDuration(16), 3072);

    EDTMeasureSpec spec{};
    ASSERT_TRUE(doc.Read(kTagMeasureSpec, RecordKey::Other(5, 0), spec, 0x09000000));
    EXPECT_EQ(spec.auxflag, kMeasureAuxRefused);
    ASSERT_TRUE(doc.Read(kTagMeasureSpec, RecordKey::Other(6, 0), spec, 0x09000000));
    EXPECT_EQ(spec.auxflag, 0);

    EXPECT_EQ(doc.StaffCount(), 2);
    EDTStaffSpec2003 staff{};
    ASSERT_TRUE(doc.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(doc.SlotToInst(1, 0)), 0), staff));
    EXPECT_EQ(TextBlockText(doc, staff.fullName), "Drum Set");
    EXPECT_EQ(TextBlockText(doc, staff.abbrvName), "Dr.");
    ASSERT_TRUE(doc.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(doc.SlotToInst(2, 0)), 0), staff));
    EXPECT_EQ(TextBlockText(doc, staff.fullName), "Cowbell");
    EXPECT_EQ(staff.abbrvName, 0);

    const EREGION whole = doc.WholeRegion();
    EXPECT_EQ(whole.start.IUslot, 1);
    EXPECT_EQ(whole.end.IUslot, 2);
    EXPECT_EQ(whole.start.meas, 1);
    EXPECT_EQ(whole.end.meas, 16);
    EXPECT_EQ(TIME_EDU{whole.start.duraPos}, 0);
    EXPECT_EQ(TIME_EDU{whole.end.duraPos}, kEndOfMeasure);
}

}  // namespace
}  // namespace stavio
