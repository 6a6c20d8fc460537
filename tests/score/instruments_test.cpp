// The instrument list of a staff system loaded, changed and written back.
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/score/instruments.h"
#include "tests/score/score_test_support.h"

using Instruments = score_test::ScoreTest;

TEST_F(Instruments, LoadsTheListAndSavingAShorterOneDeletesTheExtraSlots)
{
    Start(stavio::DocumentBuilder().Measures(1).Staff("A").Staff("B").Staff("C").Staff("D").Build());
    TInstruments list(0, false);
    ASSERT_EQ(list.data.size(), 4u);
    EXPECT_EQ(score_test::Ints(list.maxsize, list.data[2].IU.inst, list.data[2].userbool),
              score_test::Ints(4, 3, false));

    list.data[1].IU.separ = list.data[0].IU.separ - 250;
    EXPECT_FALSE(list.SaveSystem(0));
    EDTInstrumentUsed record{};
    ASSERT_TRUE(sx_loadIU(0, 1, record));
    EXPECT_EQ(record.separ, list.data[0].IU.separ - 250);
    EXPECT_TRUE(sx_loadIU(0, 3, record));

    list.data.resize(1);
    list.SaveSystem(0);
    EXPECT_FALSE(sx_loadIU(0, 1, record));
    EXPECT_EQ(TInstruments(0, false).maxsize, 1u);
    TInstruments empty(5, false);
    EXPECT_EQ(score_test::Ints(empty.maxsize, empty._system), score_test::Ints(0, 5));
}
