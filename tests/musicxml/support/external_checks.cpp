#include "tests/musicxml/support/external_checks.h"

#include "tests/musicxml/support/score_checks.h"
#include "tests/support/smf.h"
#include "tests/support/test_support.h"

#include <pugixml.hpp>
#include <zip.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>

namespace musicxml_support {
namespace {

std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs a shell command and returns its exit status, standard output and error together in `output`.
int Run(const std::string& command, std::string& output)
{
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return -1;
    char buffer[4096];
    for (std::size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, got);
    int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string JsonString(const std::string& text)
{
    std::string json = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') json += '\\';
        json += c;
    }
    return json + "\"";
}

}   // namespace

std::vector<std::string> SchemaFailures(const std::vector<std::string>& paths, std::string* log)
{
    // The MusicXML 4.0 schema with its catalog, beside the project (no validator goes to the network).
    const std::string schema = support::SourceDir() + "/../shared/musicxml-4.0";
    std::string command = "XML_CATALOG_FILES=" + Quoted(schema + "/catalog.xml") +
                          " xmllint --noout --nonet --schema " + Quoted(schema + "/musicxml.xsd");
    for (const std::string& path : paths) command += " " + Quoted(path);
    std::string output;
    int status = Run(command, output);
    if (log) *log = output;
    std::vector<std::string> failures;
    for (const std::string& path : paths) {
        if (output.find(path + " validates\n") != std::string::npos) continue;
        std::string said;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);)
            if (line.rfind(path, 0) == 0) said += "\n  " + line;
        failures.push_back(path + said);
    }
    if (failures.empty() && status != 0)
        failures.push_back("xmllint exit status " + std::to_string(status) + ": " + output);
    return failures;
}

std::vector<std::pair<std::string, std::string>> ZipEntries(const std::string& path)
{
    std::vector<std::pair<std::string, std::string>> entries;
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
    if (archive == nullptr) {
        ADD_FAILURE() << path << " does not open as a zip archive (libzip error " << error << ")";
        return entries;
    }
    zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        auto entry = static_cast<zip_uint64_t>(index);
        zip_stat_t stat;
        zip_stat_index(archive, entry, 0, &stat);
        std::string bytes(static_cast<std::size_t>(stat.size), '\0');
        if (zip_file_t* file = zip_fopen_index(archive, entry, 0)) {
            zip_int64_t got = zip_fread(file, bytes.data(), stat.size);
            EXPECT_EQ(got, static_cast<zip_int64_t>(stat.size)) << path << ": " << stat.name;
            zip_fclose(file);
        }
        entries.emplace_back(stat.name, bytes);
    }
    zip_close(archive);
    return entries;
}

std::string MxlScore(const std::string& path)
{
    auto entries = ZipEntries(path);
    auto named = [&](const std::string& name) -> const std::string* {
        for (const auto& entry : entries)
            if (entry.first == name) return &entry.second;
        return nullptr;
    };
    const std::string* container = named("META-INF/container.xml");
    if (container == nullptr) {
        ADD_FAILURE() << path << " has no META-INF/container.xml";
        return "";
    }
    pugi::xml_document document;
    document.load_buffer(container->data(), container->size());
    std::string rootfile =
        document.child("container").child("rootfiles").child("rootfile").attribute("full-path").value();
    const std::string* score = named(rootfile);
    if (score == nullptr) {
        ADD_FAILURE() << path << " has no entry " << rootfile << ", the score its container names";
        return "";
    }
    return *score;
}

std::vector<std::vector<DrumHit>> MuseScoreDrumHits(const std::vector<std::string>& scorePaths)
{
    namespace fs = std::filesystem;
    support::TempFolder folder;
    std::string job = "[";
    for (std::size_t i = 0; i < scorePaths.size(); ++i) {
        job += std::string(i ? "," : "") + "\n {\"in\": " + JsonString(fs::absolute(scorePaths[i]).string()) +
               ", \"out\": " + JsonString(folder / (std::to_string(i) + ".mid")) + "}";
    }
    support::WriteFile(folder / "job.json", job + "\n]\n");
    // Its own settings folder and runtime folder keep the run from the person's MuseScore set-up.
    std::string output;
    int status = Run("XDG_RUNTIME_DIR=" + Quoted(folder.Path()) + " QT_QPA_PLATFORM=offscreen mscore3 -c " +
                         Quoted(folder / "settings") + " -j " + Quoted(folder / "job.json"),
                     output);
    EXPECT_EQ(status, 0) << output;

    std::vector<std::vector<DrumHit>> hits(scorePaths.size());
    for (std::size_t i = 0; i < scorePaths.size(); ++i) {
        std::string midi = folder / (std::to_string(i) + ".mid");
        if (!fs::exists(midi)) {
            ADD_FAILURE() << "MuseScore wrote no MIDI file for " << scorePaths[i] << ":\n" << output;
            continue;
        }
        support::SmfListing listing = support::ListSmf(support::ReadBytes(midi));
        for (const auto& track : listing.tracks)
            for (const support::SmfEvent& event : track)
                if (event.IsNoteOn() && event.Channel() == 10)
                    hits[i].push_back({std::round(event.tick * 960.0 / listing.division) / 960.0, event.data1});
        std::sort(hits[i].begin(), hits[i].end());
    }
    return hits;
}

std::vector<DrumHit> WrittenDrumHits(const std::string& scoreBytes, const std::string& partId, double from, double to)
{
    std::vector<DrumHit> hits;
    for (const TimedNote& note : PartNotes(scoreBytes, partId))
        if (!note.rest && !note.grace && !note.tieStop && note.midiChannel == 10 && note.midiUnpitched > 0 &&
            note.onset >= from && note.onset < to)
            hits.push_back({std::round(note.onset * 960.0) / 960.0, note.midiUnpitched - 1});
    std::sort(hits.begin(), hits.end());
    hits.erase(std::unique(hits.begin(), hits.end()), hits.end());
    return hits;
}

}   // namespace musicxml_support
