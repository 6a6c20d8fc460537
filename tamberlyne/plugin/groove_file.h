// The files of one insertion: the chosen groove read into memory with room for the cleaner to
// grow it, and the temporary MIDI file the host imports from.
#pragma once

#include "sdk/types.h"
#include "toolbox/files.h"

#include <cstdint>
#include <vector>

// Reads the groove file into a block of twice its size (the cleaner grows the data in place);
// `fsize` is the file's length. False when the file cannot be read, is empty or does not fit
// into memory; `inbuffer` is then empty.
bool ReadGrooveFile(const toolbox::FileSpec& spec, std::vector<char>& inbuffer, int32_t& fsize);

// The host's form of a file specification; false (and `out` zeroed) when the folder or the name
// does not fit its fields.
bool ToHostFileSpec(const toolbox::FileSpec& spec, EFSSPEC& out);

// The temporary MIDI file. Once this object has put a file there it takes it away again: on
// Delete, or at the latest when it ends, so that no path leaves it behind.
class TemporaryMidiFile {
public:
    static constexpr uint32_t kCreator = 0x4D4F5550;    // "MOUP"
    static constexpr uint32_t kFileType = 0x4D696469;   // "Midi"

    explicit TemporaryMidiFile(toolbox::FileSpec spec);
    ~TemporaryMidiFile();
    TemporaryMidiFile(const TemporaryMidiFile&) = delete;
    TemporaryMidiFile& operator=(const TemporaryMidiFile&) = delete;

    // Creates the file (it may exist already) and writes `size` bytes into it. False when it
    // cannot be written.
    bool Write(const char* data, int32_t size);
    // Deletes the file if this object put one there.
    void Delete();

private:
    toolbox::FileSpec spec_;
    bool placed_ = false;
};
