// The byte image: big-endian and variable-length reads, writes, chunk bracketing and edits.
#include "midi_test_support.h"
#include "tamberlyne/midi/midi_image.h"

namespace {
const std::string kEof = "Parsing error - trying to read beyond EOF.";

using MidiBytes = MidiTest;

TEST_F(MidiBytes, NumbersAreBigEndianAndVariableLength)
{
    ReaderHarness h(
        {0x01, 0x80, 0x00, 0x00, 0x01, 0xE0, 0x81, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0x7F, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F});
    TMidiRead& r = h.reader;
    EXPECT_EQ(r.ReadWord(), 384);
    EXPECT_EQ(r.ReadLongInt(), 480);
    for (const int32_t number : {128, 0, 268435455, -1}) EXPECT_EQ(r.ReadNumber(), number);   // -1: five bytes wrap
    EXPECT_EQ(support::Ints(r.LastNumberRead, r.BytesRead), support::Ints(-1, 18));
    EXPECT_TRUE(Alerts().empty());
}

TEST_F(MidiBytes, ReadingPastTheEndGivesZerosAndOneAlertPerByte)
{
    ReaderHarness h({0x81});
    TMidiRead& r = h.reader;
    EXPECT_EQ(r.ReadNumber(), 128);   // the missing byte reads 0 and ends the quantity
    EXPECT_EQ(Alerts(), std::vector<std::string>{kEof});
    EXPECT_EQ(r.ReadLongInt(), 0);
    EXPECT_EQ(support::Ints(Alerts().size(), r.inptr, r.BytesRead, r.TotalBytesRead), support::Ints(5, 1, 6, 6));
}

TEST_F(MidiBytes, WritesAreBigEndianAndStayInsideTheImage)
{
    ReaderHarness h(Bytes(6, 0));
    h.reader.WriteLongInt(0x12345678);
    EXPECT_EQ(h.reader.outptr, 4);
    h.reader.WriteWord(0xABCD);
    h.reader.Write2Bytes(1, 2);   // past the image: dropped
    EXPECT_EQ(h.Image(), (Bytes{0x12, 0x34, 0x56, 0x78, 0xAB, 0xCD}));
    EXPECT_EQ(h.size, 6);
}

TEST_F(MidiBytes, InsertingKeepsTheChunkConsistent)
{
    const Bytes file = Concat({Chunk("MTrk", Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), Chunk("MTrk", {})});
    ReaderHarness h(file);
    TMidiRead& r = h.reader;
    EXPECT_EQ(r.StartChunk(), 10);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(r.ChunkName)), "MTrk");
    EXPECT_EQ(r.NextOffset, 18);
    unsigned char a, b, c;
    r.Read3Bytes(a, b, c);
    EXPECT_EQ(c, 3);
    ASSERT_TRUE(r.InsertByte());
    EXPECT_EQ(r.inptr, 12);
    EXPECT_EQ(r.ReadByte(), 4);   // the cursor still stands on the byte it stood on
    EXPECT_EQ(support::Ints(r.ChunkLength, r.NextOffset), support::Ints(11, 19));
    r.TerminateChunk();
    EXPECT_EQ(r.StartChunk(), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(r.ChunkName)), "MTrk");
    const Bytes image = h.Image();
    EXPECT_EQ(Bytes(image.begin(), image.begin() + 19), Concat({Chunk("MTrk", {1, 2, 3, 0, 4, 5, 6, 7, 8, 9, 10})}));
    EXPECT_EQ(h.size, 27);
}

TEST_F(MidiBytes, RemovingAWholeChunkBringsTheNextOneForward)
{
    const Bytes second = Chunk("MTrk", {0xAA});
    ReaderHarness h(Concat({Chunk("MThd", {1, 2}), Chunk("MTrk", {5, 6, 7}), second}));
    TMidiRead& r = h.reader;
    r.StartChunk();
    r.TerminateChunk();
    const int32_t start = r.inptr;
    r.StartChunk();
    r.TerminateChunk();
    r.RemoveUpToHereFrom(start);
    EXPECT_EQ(support::Ints(r.inptr, r.NextOffset), support::Ints(start, start));
    EXPECT_EQ(h.Image(), Concat({Chunk("MThd", {1, 2}), second}));
    EXPECT_EQ(r.StartChunk(), 1);
}

// The gap-keeping image against a plain vector, over many random edits.
TEST(MidiImage, BehavesLikeAPlainArrayUnderRandomEdits)
{
    std::mt19937 rng(7);
    std::vector<char> block(4000);
    std::vector<uint8_t> model(1000);
    for (size_t i = 0; i < model.size(); ++i) {
        model[i] = static_cast<uint8_t>(rng());
        block[i] = static_cast<char>(model[i]);
    }
    MidiImage image(block.data(), 1000, 4000);
    for (int step = 0; step < 20000; ++step) {
        const int32_t size = image.Size();
        const int32_t pos = int32_t(rng() % uint32_t(size + 1));
        switch (rng() % 4) {
            case 0:
                ASSERT_EQ(image.Insert(pos, uint8_t(step)), size < 4000);
                if (size < 4000) model.insert(model.begin() + pos, uint8_t(step));
                break;
            case 1: {
                const int32_t to = std::min(size, pos + int32_t(rng() % 5));
                image.Remove(pos, to);
                model.erase(model.begin() + pos, model.begin() + to);
                break;
            }
            case 2:
                if (pos < size) image.Set(pos, 0xF7), model[size_t(pos)] = 0xF7;
                break;
            default: {
                const auto hit = std::find(model.begin() + pos, model.end(), 0xF7);
                ASSERT_EQ(image.Find(pos, size, 0xF7), int32_t(hit - model.begin()));
            }
        }
        ASSERT_EQ(image.Size(), int32_t(model.size()));
        for (int32_t i = 0; step % 1000 == 0 && i < image.Size(); ++i) ASSERT_EQ(image.At(i), model[size_t(i)]);
    }
    image.Settle();
    EXPECT_TRUE(std::equal(model.begin(), model.end(), reinterpret_cast<uint8_t*>(block.data())));
}
}   // namespace
