// Built documents hold what the builder was told, in the records a plug-in reads.
#include "stavio/document_builder.h"
#include "tests/support/test_support.h"

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
    using support::Ints;
    EXPECT_EQ(Ints(doc.MeasureCount(), doc.MeasureDuration(8), doc.MeasureDuration(9), doc.MeasureDuration(16)),
              Ints(16, 4096, 3072, 3072));

    EDTMeasureSpec spec{};
    for (const auto& [meas, flag] : {std::pair<uint16_t, int>{5, kMeasureAuxRefused}, {6, 0}}) {
        ASSERT_TRUE(doc.Read(kTagMeasureSpec, RecordKey::Other(meas, 0), spec, 0x09000000));
        EXPECT_EQ(spec.auxflag, flag) << meas;
    }

    EXPECT_EQ(doc.StaffCount(), 2);
    EDTStaffSpec2003 staff{};
    ASSERT_TRUE(doc.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(doc.SlotToInst(1, 0)), 0), staff));
    EXPECT_EQ(TextBlockText(doc, staff.fullName), "Drum Set");
    EXPECT_EQ(TextBlockText(doc, staff.abbrvName), "Dr.");
    ASSERT_TRUE(doc.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(doc.SlotToInst(2, 0)), 0), staff));
    EXPECT_EQ(TextBlockText(doc, staff.fullName), "Cowbell");
    EXPECT_EQ(staff.abbrvName, 0);

    const EREGION whole = doc.WholeRegion();
    EXPECT_EQ(Ints(whole.start.IUslot, whole.end.IUslot, whole.start.meas, whole.end.meas, whole.start.duraPos,
                   whole.end.duraPos),
              Ints(1, 2, 1, 16, 0, kEndOfMeasure));
}

}   // namespace
}   // namespace stavio
