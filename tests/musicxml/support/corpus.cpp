#include "tests/musicxml/support/corpus.h"

#include "tests/musicxml/support/external_checks.h"
#include "tests/support/test_support.h"

#include <sstream>

namespace musicxml_support {
namespace {

std::string Trim(const std::string& text)
{
    std::size_t first = text.find_first_not_of(" \t\r");
    std::size_t last = text.find_last_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, separator);)
        if (!Trim(piece).empty()) pieces.push_back(Trim(piece));
    return pieces;
}

void Set(CorpusFile& file, const std::string& key, const std::string& value)
{
    if (key == "kind") {
        file.valid = value == "valid";
    } else if (key == "channel10") {
        file.channel10 = Split(value, ' ');
    } else if (key == "fill") {
        std::vector<std::string> fields = Split(value, ' ');
        std::size_t dash = fields.size() >= 3 ? fields[1].find('-') : std::string::npos;
        if (dash == std::string::npos)
            ADD_FAILURE() << file.file << ": fill \"" << value << "\" is not PART A-B GROOVE";
        if (dash != std::string::npos) {
            file.fillPart = fields[0];
            file.fillFirst = fields[1].substr(0, dash);
            file.fillLast = fields[1].substr(dash + 1);
            file.fillGroove = value.substr(value.find(fields[2]));
        }
    } else if (key == "rootfile") {
        file.rootfile = value;
    } else if (key == "error") {
        file.error = value;
    } else {
        ADD_FAILURE() << file.file << ": unknown key " << key;
    }
}

}   // namespace

std::string CorpusFolder()
{
    return support::SourceDir() + "/tests/musicxml/files";
}

std::vector<CorpusFile> Corpus()
{
    std::vector<CorpusFile> files;
    std::istringstream lines(support::ReadFile(CorpusFolder() + "/corpus.manifest"));
    for (std::string line; std::getline(lines, line);) {
        line = Trim(line);
        if (line.empty() || line[0] == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            files.emplace_back();
            files.back().file = line.substr(1, line.size() - 2);
            files.back().path = CorpusFolder() + "/" + files.back().file;
            continue;
        }
        std::size_t equals = line.find('=');
        if (files.empty() || equals == std::string::npos) {
            ADD_FAILURE() << "corpus.manifest: cannot read \"" << line << "\"";
            continue;
        }
        Set(files.back(), Trim(line.substr(0, equals)), Trim(line.substr(equals + 1)));
    }
    EXPECT_FALSE(files.empty()) << "corpus.manifest lists no files";
    return files;
}

std::string ScoreBytes(const CorpusFile& file)
{
    return file.IsMxl() ? MxlScore(file.path) : support::ReadFile(file.path);
}

}   // namespace musicxml_support
