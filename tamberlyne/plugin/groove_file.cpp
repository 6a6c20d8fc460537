#include "tamberlyne/plugin/groove_file.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

bool ReadGrooveFile(const toolbox::FileSpec& spec, std::vector<char>& inbuffer, int32_t& fsize)
{
    inbuffer.clear();
    fsize = 0;
    try {
        std::vector<uint8_t> block;
        if (toolbox::ReadWholeFile(spec, block) != toolbox::kNoErr || block.empty() ||
            block.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max() / 2)) {
            return false;
        }
        inbuffer.assign(2 * block.size(), 0);
        std::copy(block.begin(), block.end(), inbuffer.begin());
        fsize = static_cast<int32_t>(block.size());
        return true;
    } catch (const std::bad_alloc&) {
        inbuffer.clear();
        inbuffer.shrink_to_fit();
        return false;
    }
}

bool ToHostFileSpec(const toolbox::FileSpec& spec, EFSSPEC& out)
{
    out = EFSSPEC{};
    if (spec.folder.size() >= sizeof(out.folder) || spec.name.size() >= sizeof(out.name)) {
        return false;
    }
    std::memcpy(out.folder, spec.folder.data(), spec.folder.size());
    std::memcpy(out.name, spec.name.data(), spec.name.size());
    return true;
}

TemporaryMidiFile::TemporaryMidiFile(toolbox::FileSpec spec) : spec_(std::move(spec))
{}

TemporaryMidiFile::~TemporaryMidiFile()
{
    Delete();
}

bool TemporaryMidiFile::Write(const char* data, int32_t size)
{
    // A file left by an earlier run is simply written over.
    if (toolbox::CreateFile(spec_, kCreator, kFileType) == toolbox::kNoErr) {
        placed_ = true;
    }
    // The file lives only until the import has read it: no need to make it last through a crash.
    if (size < 0 || toolbox::WriteScratchFile(spec_, data, static_cast<size_t>(size)) != toolbox::kNoErr) {
        return false;
    }
    placed_ = true;
    return true;
}

void TemporaryMidiFile::Delete()
{
    if (!placed_) {
        return;
    }
    placed_ = false;
    toolbox::FileSpec reference;
    if (toolbox::MakeFileSpec(spec_.folder, spec_.name, reference) == toolbox::kNoErr) {
        toolbox::DeleteFile(reference);
    }
}
