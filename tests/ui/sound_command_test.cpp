// The sound of grooves and filled scores as a person gets it: `fill --midi/--audio`,
// `grooves play` and `export`, checked against the groove files themselves. The MIDI is read
// with the tests' own SMF reader; the audio with libsndfile, with an energy onset detector of
// its own.
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/smf.h"
#include "tests/ui/ui_test_support.h"

#include <sndfile.h>

#include <cmath>
#include <filesystem>
#include <set>

using namespace ui_test;
using support::CommandRun;
using support::ExpectHas;

namespace {

constexpr int kGrooveDivision = 480;   // the bundled grooves' ticks to the quarter
constexpr double kOnsetTolerance = 0.04;

struct Audio {
    int channels = 0;
    int rate = 0;
    int format = 0;             // libsndfile's container and encoding
    std::vector<double> mono;   // -1..1
    double Seconds() const { return rate > 0 ? static_cast<double>(mono.size()) / rate : 0.0; }
};

// A sound file read with libsndfile: its format and its samples mixed to one channel.
Audio ReadAudio(const std::string& path)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    Audio audio;
    if (file == nullptr) {
        ADD_FAILURE() << path << ": " << sf_strerror(nullptr);
        return audio;
    }
    audio.channels = info.channels;
    audio.rate = info.samplerate;
    audio.format = info.format;
    std::vector<double> frames(static_cast<size_t>(info.frames * info.channels));
    const auto read = static_cast<size_t>(sf_readf_double(file, frames.data(), info.frames));
    sf_close(file);
    for (size_t frame = 0; frame < read; ++frame) {
        double sum = 0.0;
        for (size_t channel = 0; channel < static_cast<size_t>(info.channels); ++channel)
            sum += frames[frame * static_cast<size_t>(info.channels) + channel];
        audio.mono.push_back(sum / info.channels);
    }
    return audio;
}

// Onsets in seconds: 10 ms frames whose energy is more than twice that of the three frames
// before (silence before the start) and above a floor, at least 60 ms apart.
std::vector<double> Onsets(const Audio& audio)
{
    const size_t hop = static_cast<size_t>(audio.rate) / 100;
    std::vector<double> energy = {0.0};
    for (size_t at = 0; hop > 0 && at + hop <= audio.mono.size(); at += hop) {
        double sum = 0.0;
        for (size_t i = at; i < at + hop; ++i) sum += audio.mono[i] * audio.mono[i];
        energy.push_back(sum / static_cast<double>(hop));
    }
    std::vector<double> onsets;
    for (size_t frame = 1; frame < energy.size(); ++frame) {
        const double before = *std::max_element(energy.begin() + static_cast<long>(frame > 3 ? frame - 3 : 0),
                                                energy.begin() + static_cast<long>(frame));
        const double time = static_cast<double>(frame - 1) / 100.0;
        if (energy[frame] > 1e-5 && energy[frame] > 2.0 * before && (onsets.empty() || time - onsets.back() > 0.06)) {
            onsets.push_back(time);
        }
    }
    return onsets;
}

// (tick, key) of the channel-10 note-ons of a file, scaled to `division` ticks a quarter.
std::vector<std::pair<int64_t, int>> DrumOnsets(const support::SmfListing& file, int division)
{
    std::vector<std::pair<int64_t, int>> onsets;
    for (const auto& track : file.tracks) {
        for (const support::SmfEvent& event : track) {
            if (event.IsNoteOn() && event.Channel() == 10) {
                onsets.emplace_back(int64_t{event.tick} * division / file.division, event.data1);
            }
        }
    }
    std::sort(onsets.begin(), onsets.end());
    return onsets;
}

// `music` seconds of sound and its ring-out (FluidSynth renders until the last notes have rung
// out, two seconds at least); every expected onset is heard within the tolerance, and nothing
// is heard where none is expected.
void ExpectSoundsAt(const Audio& audio, double music, const std::set<double>& expected)
{
    EXPECT_GE(audio.Seconds(), music + 1.9);
    EXPECT_LE(audio.Seconds(), music + 2.6);
    const std::vector<double> heard = Onsets(audio);
    for (double time : expected) {
        EXPECT_TRUE(
            std::any_of(heard.begin(), heard.end(), [time](double h) { return std::abs(h - time) <= kOnsetTolerance; }))
            << "no onset heard at " << time << " s";
    }
    for (double time : heard) {
        EXPECT_TRUE(std::any_of(expected.begin(), expected.end(),
                                [time](double e) { return std::abs(e - time) <= kOnsetTolerance; }))
            << "an onset heard at " << time << " s where the groove has none";
    }
}

class SoundCommands : public ::testing::Test {
protected:
    void SetUp() override
    {
        library_ = MakeGrooveFolder(home_.Path(), {});
        std::filesystem::copy_file(support::GrooveLibrary() + "/Rock 8ths.mid", library_ + "/Rock 8ths.mid");
        environment_ = "XDG_CONFIG_HOME=" + home_.Path() + "/config XDG_DATA_HOME=" + home_.Path() + "/data";
        groove_ = support::ListSmf(support::ReadBytes(library_ + "/Rock 8ths.mid"));
    }
    CommandRun Run(const std::string& arguments, const std::string& environment = "")
    {
        return support::RunTamberlyne(arguments, environment_ + " " + environment);
    }
    // The groove's onsets (groove ticks) in its `bars` repeated bars, repeated `times` times.
    std::vector<std::pair<int64_t, int>> RepeatedGroove(int times) const
    {
        std::vector<std::pair<int64_t, int>> onsets;
        for (int time = 0; time < times; ++time) {
            for (const auto& [tick, key] : DrumOnsets(groove_, kGrooveDivision)) {
                if (tick < kGrooveBars * kBarTicks) {
                    onsets.emplace_back(tick + time * kGrooveBars * kBarTicks, key);
                }
            }
        }
        return onsets;
    }
    static std::set<double> Seconds(const std::vector<std::pair<int64_t, int>>& onsets)
    {
        std::set<double> seconds;
        for (const auto& onset : onsets)
            seconds.insert(static_cast<double>(onset.first) / kGrooveDivision * 60.0 / kTempo);
        return seconds;
    }

    static constexpr int kGrooveBars = 2;   // "Rock 8ths": 2 bars of 4/4, a closing crash after them
    static constexpr int64_t kBarTicks = 4 * kGrooveDivision;
    static constexpr double kTempo = 112.0;
    TempFolder home_;
    std::string library_;
    std::string environment_;
    support::SmfListing groove_;
};

}   // namespace

// Measures 5-12 filled with the groove: the MIDI holds its drum notes four times over, onset for
// onset and key for key, at its tempo; the piano plays nothing, as the score has it; the audio
// lasts the eight bars and its onsets are the groove's.
TEST_F(SoundCommands, TheFilledRegionSoundsAsTheGroove)
{
    const CommandRun run = Run("fill --measures 5-12 --groove \"Rock 8ths\" --staff Drums --yes --library " + library_ +
                               " --midi " + home_ / "fill.mid" + " --audio " + home_ / "fill.wav");
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"MIDI: " + home_ / "fill.mid" + " (measures 5-12, 17.14 s at 112 quarter notes a minute)",
                        "Audio: " + home_ / "fill.wav"});

    const support::SmfListing midi = support::ListSmf(support::ReadBytes(home_ / "fill.mid"));
    ASSERT_EQ(midi.tracks.size(), 3u);   // the conductor, "Piano", "Drums"
    EXPECT_EQ(DrumOnsets(midi, kGrooveDivision), RepeatedGroove(4));
    std::vector<size_t> noteOns(3);   // the piano plays nothing, the drum track every note of the groove
    for (size_t track = 0; track < 3; ++track)
        for (const support::SmfEvent& event : midi.tracks[track]) noteOns[track] += event.IsNoteOn() ? 1u : 0u;
    EXPECT_EQ(noteOns, (std::vector<size_t>{0, 0, RepeatedGroove(4).size()}));
    EXPECT_EQ(midi.tracks[0][0].data, (support::Bytes{0x08, 0x2C, 0xA2}));   // 535714 microseconds: 112 a minute

    const Audio audio = ReadAudio(home_ / "fill.wav");
    EXPECT_EQ(support::Ints(audio.channels, audio.rate, audio.format),
              support::Ints(2, 44100, SF_FORMAT_WAV | SF_FORMAT_PCM_16));
    ExpectSoundsAt(audio, 8 * 4 * 60.0 / kTempo, Seconds(RepeatedGroove(4)));
}

// "Rock 8ths" into measures 5-12 of a band score's drum staff: the MIDI holds the groove's drum
// notes four times over, onset for onset and key for key, and the guitar plays its own notes
// there (read from the file on its own) with its own program.
TEST_F(SoundCommands, AFilledScoreSoundsAsTheGrooveAndTheScore)
{
    const std::string score = support::SourceDir() + "/tests/musicxml/files/rock_band.musicxml";
    const CommandRun run =
        Run("fill " + score + " --measures 5-12 --groove \"Rock 8ths\" --staff \"Drum Set\" --yes -o " +
            home_ / "filled.musicxml" + " --library " + library_ + " --midi " + home_ / "fill.mid");
    ASSERT_EQ(run.status, 0) << run.err;
    const support::SmfListing midi = support::ListSmf(support::ReadBytes(home_ / "fill.mid"));
    ASSERT_EQ(midi.tracks.size(), 4u);   // the conductor, guitar, bass, drums

    // The groove replaces the drum staff's notes there: its second voice (the kick) is gone too.
    constexpr double kRegionStart = 4 * 4.0;   // measure 5, in quarter notes: the score is all 4/4
    const auto inRegion = [](const musicxml_support::TimedNote& note) {
        return note.measureIndex >= 4 && note.measureIndex < 12 && !note.rest && !note.grace && !note.tieStop;
    };
    EXPECT_EQ(DrumOnsets(midi, kGrooveDivision), RepeatedGroove(4));

    std::vector<std::pair<double, int>> written;
    for (const musicxml_support::TimedNote& note : musicxml_support::PartNotes(ReadFile(score), "P1")) {
        if (inRegion(note)) {
            written.emplace_back(note.onset - kRegionStart, note.key);
        }
    }
    std::vector<std::pair<double, int>> played;
    for (const support::SmfEvent& event : midi.tracks[1]) {
        if ((event.status & 0xF0) == 0xC0) {
            EXPECT_EQ(event.data1, 29) << "the guitar's <midi-program> 30";
        }
        if (event.IsNoteOn()) {
            EXPECT_EQ(event.Channel(), 1);
            played.emplace_back(static_cast<double>(event.tick) / midi.division, event.data1);
        }
    }
    std::sort(written.begin(), written.end());
    std::sort(played.begin(), played.end());
    ASSERT_FALSE(written.empty());
    EXPECT_EQ(played, written);

    // A tied note sounds once: the piano plays every written note but those a tie continues.
    const std::string piano = support::SourceDir() + "/tests/musicxml/files/piano_pickup.musicxml";
    ASSERT_EQ(Run("export " + piano + " -o " + home_ / "piano.mid").status, 0);
    std::multiset<int> struck;
    for (const musicxml_support::TimedNote& note : musicxml_support::PartNotes(ReadFile(piano), "P1")) {
        if (!note.rest && !note.grace && !note.tieStop) struck.insert(note.key);
    }
    std::multiset<int> sounded;
    for (const auto& track : support::ListSmf(support::ReadBytes(home_ / "piano.mid")).tracks) {
        for (const support::SmfEvent& event : track) {
            if (event.IsNoteOn()) sounded.insert(event.data1);
        }
    }
    EXPECT_EQ(sounded, struck);

    const CommandRun missing = Run("export " + home_ / "none.musicxml" + " -o " + home_ / "none.mid");
    EXPECT_EQ(missing.status, 1);
    ExpectHas(missing.err, {home_ / "none.musicxml"});
    EXPECT_FALSE(std::filesystem::exists(home_ / "none.mid"));
}

// A groove alone, in both formats; a render that fails leaves the earlier file as it was.
TEST_F(SoundCommands, GroovesPlayRendersTheGrooveAsTheScoreWouldHoldIt)
{
    CommandRun run = Run("grooves play \"Rock 8ths\" -o " + home_ / "rock.wav" + " --library " + library_);
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"(4/4, 2 bars)", "Audio: " + home_ / "rock.wav" + " (measures 1-2, 4.29 s at 112"});
    const Audio audio = ReadAudio(home_ / "rock.wav");
    ExpectSoundsAt(audio, kGrooveBars * 4 * 60.0 / kTempo, Seconds(RepeatedGroove(1)));

    run = Run("grooves play \"Rock 8ths.mid\" -o " + home_ / "rock.ogg" + " --library " + library_);
    ASSERT_EQ(run.status, 0) << run.err;
    const Audio ogg = ReadAudio(home_ / "rock.ogg");
    EXPECT_EQ(ogg.format, SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    EXPECT_NEAR(ogg.Seconds(), audio.Seconds(), 0.05);

    // A file that is not a sound font is refused; one that only looks like one fails in FluidSynth.
    // Either way rock.wav keeps its sound.
    const std::vector<uint8_t> before = support::ReadBytes(home_ / "rock.wav");
    WriteFile(home_ / "text.sf2", "not a sound font");
    WriteFile(home_ / "broken.sf2", std::string("RIFF\x04\0\0\0sfbk", 12) + "garbage");
    for (const auto& [font, complaint] : std::vector<std::pair<std::string, std::string>>{
             {"text.sf2", "is not a SoundFont 2 file"},
             {"broken.sf2", "FluidSynth could not render " + home_ / "rock.wav"}}) {
        run = Run("grooves play \"Rock 8ths\" --tempo 1000 -o " + home_ / "rock.wav" + " --library " + library_ +
                  " --sound-font " + home_ / font);
        EXPECT_EQ(run.status, 1);
        ExpectHas(run.err, {complaint});
        EXPECT_EQ(support::ReadBytes(home_ / "rock.wav"), before);
    }
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(home_.Path()))
        files += entry.is_regular_file() ? 1u : 0u;
    EXPECT_EQ(files, 4u) << "no temporary file is left beside the audio";
}

// What is missing is named with the Debian package that brings it, before anything is done.
TEST_F(SoundCommands, MissingFluidSynthOrSoundFontNamesThePackage)
{
    for (const auto& [arguments, environment, message] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"grooves play \"Rock 8ths\" -o OUT --library LIB", "PATH=/nonexistent",
              "\"fluidsynth\" is not on the PATH; install the Debian package fluidsynth"},
             {"fill --measures 1-2 --groove \"Rock 8ths\" --yes --library LIB --audio OUT", "PATH=/nonexistent",
              "install the Debian package fluidsynth"},
             {"grooves play \"Rock 8ths\" -o OUT --library LIB --sound-font /nowhere/GM.sf2", "",
              "the sound font /nowhere/GM.sf2 does not exist; name another with --sound-font or install the Debian "
              "package timgm6mb-soundfont"}}) {
        std::string command = arguments;
        command.replace(command.find("OUT"), 3, home_ / "out.wav");
        command.replace(command.find("LIB"), 3, library_);
        const CommandRun run = Run(command, environment);
        EXPECT_EQ(run.status, 1) << command;
        ExpectHas(run.err, {message});
        EXPECT_TRUE(run.out.empty()) << "nothing was done: " << run.out;
        EXPECT_FALSE(std::filesystem::exists(home_ / "out.wav"));
    }
}

// `export` writes the demo score (its usage complaints are in tests/stavio/cli_test).
TEST_F(SoundCommands, ExportWritesTheDemoScore)
{
    CommandRun run = Run("export -o " + home_ / "demo.mid" + " --measures 2-3 --tempo 90");
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"MIDI: " + home_ / "demo.mid" + " (measures 2-3, 5.33 s at 90 quarter notes a minute)"});
    const support::SmfListing midi = support::ListSmf(support::ReadBytes(home_ / "demo.mid"));
    EXPECT_EQ(support::Ints(midi.format, midi.division, midi.tracks.size()), support::Ints(1, 1024, 3));
    EXPECT_EQ(midi.tracks[0][0].data, (support::Bytes{0x0A, 0x2C, 0x2B}));   // 666667 microseconds a quarter
    EXPECT_EQ(midi.tracks[2][0].data, (support::Bytes{'D', 'r', 'u', 'm', 's'}));
    EXPECT_EQ(midi.tracks[2].back().tick, 2 * 4096);
}
