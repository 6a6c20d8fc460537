#include "grooves/tools/groove_library.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "grooves/tools/groove_pattern.h"
#include "grooves/tools/smf_writer.h"

namespace grooves {

std::vector<RenderedGroove> RenderLibrary(const std::string& patternDir)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(patternDir))
        if (entry.is_regular_file() && entry.path().extension() == ".groove") files.push_back(entry.path());
    std::sort(files.begin(), files.end());

    std::vector<RenderedGroove> library;
    std::set<std::string> titles;
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        if (!in) throw PatternError(file.string() + ": cannot read");
        const GroovePattern pattern = ParsePattern(text.str(), file.string());
        if (!titles.insert(pattern.title).second)
            throw PatternError(file.string() + ": title '" + pattern.title + "' is used twice");
        library.push_back({pattern.title + ".mid", RenderMidiFile(pattern)});
    }
    return library;
}

}   // namespace grooves
