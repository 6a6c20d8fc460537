// File specifications and whole-file operations. A specification names a folder and an item in
// it; it may name something that does not exist yet.
#pragma once

#include "toolbox/errors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace toolbox {

struct FileSpec {
    std::string folder;   // absolute or relative folder path, no trailing slash needed
    std::string name;     // the item's name inside the folder
    std::string Path() const;
    bool operator==(const FileSpec& other) const { return folder == other.folder && name == other.name; }
};

struct FolderItem {
    std::string name;
    bool isFolder = false;
};

// Makes a specification from a folder and a name (the name may not contain '/'). The item need
// not exist: kNoErr when the folder exists, kDirNotFound when it does not (the file spec is
// filled all the same), kBadName for an empty name, ".", ".." or a name with '/'.
OSErr MakeFileSpec(const std::string& folder, const std::string& name, FileSpec& spec);
// Splits a path at its last '/' ("name" alone gives an empty folder, the current one).
FileSpec FileSpecFromPath(const std::string& path);

bool Exists(const FileSpec& spec);
bool IsFolder(const std::string& path);

// Reads the whole file. kFileNotFound, kDirNotFound or kIOErr on failure.
OSErr ReadWholeFile(const FileSpec& spec, std::vector<uint8_t>& bytes);

// Writes the whole file atomically (a temporary file in the same folder renamed over it). On
// failure the file keeps its old contents and no temporary file is left behind. A file that
// exists keeps its permissions.
OSErr WriteWholeFile(const FileSpec& spec, const void* data, size_t size);

// Writes a scratch file: one that lives only while the program runs (handed from one part to
// another and deleted after). It is written in place, without the flushes to disk that make
// WriteWholeFile's result last through a crash: a flush can keep a busy disk waiting for tens
// of milliseconds.
OSErr WriteScratchFile(const FileSpec& spec, const void* data, size_t size);

// Creates an empty file; kDuplicateFile when it exists already. `creator` and `type` are kept
// for the record only: the file system has no place for them.
OSErr CreateFile(const FileSpec& spec, uint32_t creator, uint32_t type);

// Deletes a file or an empty folder.
OSErr DeleteFile(const FileSpec& spec);

// The folder's item at `index` (from 1) in a stable order (by name, byte-wise); nothing once
// the index passes the last item or when the folder cannot be read.
std::optional<FolderItem> FolderItemAt(const std::string& folder, int index);

// Creates the folder and its parents when missing; false when that fails.
bool EnsureFolder(const std::string& path);

}   // namespace toolbox
