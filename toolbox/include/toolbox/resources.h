// Resource files and the resource chain.
//
// A resource file is a human-readable text file of typed resources, each addressed by a type
// (four characters), an id and an optional name; see toolbox/RESOURCES.md for the format.
// Open resource files form a chain: lookups start at the current file and go on to the files
// opened before it. Files stay open until closed; changes reach the disk with WriteResource.
#pragma once

#include "toolbox/errors.h"
#include "toolbox/files.h"
#include "toolbox/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace toolbox {

using ResType = uint32_t;     // four characters, first in the most significant byte
using ResFileRef = int16_t;   // an open resource file; -1 = none

constexpr ResType kStringListType = 0x53545223;     // 'STR#' a list of strings, entries from 1
constexpr ResType kStringType = 0x53545220;         // 'STR ' one string
constexpr ResType kDialogLayoutType = 0x444C4F47;   // 'DLOG' a dialog layout

// What a resource holds depends on its type: a 'STR#' keeps its entries in `strings`, a 'DLOG'
// keeps its layout lines in `strings` (see ReadDialogLayout), every other type (also 'STR ')
// keeps its bytes in `data`.
struct Resource {
    ResType type = 0;
    int16_t id = 0;
    std::string name;
    std::vector<uint8_t> data;          // raw bytes (text resources hold their characters)
    std::vector<std::string> strings;   // entries of a string list ('STR#'), lines of a 'DLOG'
};

// ---- A resource file in memory (parse and print the text form) -------------------------------

class ResourceFile {
public:
    // Parses the text form; on failure (kBadResourceFile) the message is "<source>:<line>: <what>"
    // and the file keeps what it held.
    Status Parse(const std::string& text, const std::string& sourceName);
    std::string Print() const;

    const Resource* Find(ResType type, int16_t id) const;
    Resource* Find(ResType type, int16_t id);
    // Adds or replaces the resource of that type and id; kMemFull (and the file as it was) when
    // memory runs out.
    Status Put(Resource resource);
    bool Remove(ResType type, int16_t id);
    const std::vector<Resource>& All() const { return resources_; }

private:
    std::vector<Resource> resources_;
};

// Reads and parses a resource file. A failure names the file: "<path>: file not found" (the file
// system's status), "<path>:<line>: <what>" (kBadResourceFile), "<path>: out of memory".
Result<ResourceFile> LoadResourceFile(const std::string& path);
// Writes it atomically; a failure names the file and what the file system said.
Status SaveResourceFile(const std::string& path, const ResourceFile& file);

// ---- Dialog layouts ('DLOG') ----------------------------------------------------------------------

enum class DialogItemKind {
    kButton,
    kRadio,
    kCheckbox,
    kPopup,
    kUserItem,
    kStaticText
};

// In pixels from the top left corner of the dialog's content area.
struct DialogRect {
    int16_t left = 0;
    int16_t top = 0;
    int16_t right = 0;
    int16_t bottom = 0;
};

struct DialogItemSpec {
    int16_t number = 0;   // the dialog item number, from 1
    DialogItemKind kind = DialogItemKind::kUserItem;
    DialogRect rect;
    std::string label;                  // empty when the line gives none
    std::vector<std::string> entries;   // a pop-up menu's entries from an `entries` line
};

struct DialogLayout {
    std::string title;
    int16_t width = 0;   // 0 when the layout gives no size
    int16_t height = 0;
    std::vector<DialogItemSpec> items;   // in the order of the resource's lines
};

// Reads the lines of a 'DLOG' resource. A failure (kBadResourceFile) says "line <n>: <what>" (n
// counts the resource's lines from 1).
Result<DialogLayout> ReadDialogLayout(const Resource& resource);
// The first item of that kind whose label reads `label` (any label when `label` is empty); null
// when the layout has none.
const DialogItemSpec* FindDialogItem(const DialogLayout& layout, DialogItemKind kind, const std::string& label = "");

// ---- The chain ------------------------------------------------------------------------------------

// The current file, -1 when none is.
ResFileRef CurResFile();
// Makes an open file current (kResFileNotOpen and no change for a reference that is not open);
// -1 makes no file current, so that what CurResFile returned can always be put back.
void UseResFile(ResFileRef ref);
// The status number of the last chain call (kNoErr, kFileNotFound, kBadResourceFile,
// kResourceNotFound ...), for callers of the classic calls below.
OSErr ResError();

// Opens a resource file and makes it current. Opening a file that is open already (the same
// file by any path) gives its reference and makes it current; its place in the chain stays, and
// asking for write access then grants it. `readOnly` files are never written (kPermissionErr);
// they can be changed in memory. A failure names the file and what is wrong, as
// LoadResourceFile's do; ResError gives its number too.
Result<ResFileRef> OpenResourceFile(const FileSpec& spec, bool readOnly);
// The classic form of OpenResourceFile: -1 on failure (ResError tells why).
ResFileRef OpenResFile(const FileSpec& spec, bool readOnly);
// Creates an empty resource file; kDuplicateFile when the file exists.
OSErr CreateResFile(const FileSpec& spec);
// Takes the file out of the chain without writing it (unwritten changes are dropped). When it was
// current, the file opened just before it becomes current (else the newest one left, else none).
void CloseResFile(ResFileRef ref);

// Lookups walk the chain from the current file to the oldest. The resource found stays valid
// until its file is closed or changed (a resource added to it, changed or replaced in it).
const Resource* GetResource(ResType type, int16_t id);
std::optional<std::string> GetString(int16_t id);                         // 'STR '
std::optional<std::string> GetIndString(int16_t listId, int16_t index);   // entry of 'STR#', from 1

// Changes go to the current file: Add puts a new resource (kAddResFailed when the current file
// has one of that type and id already), Change replaces the data of one that exists in the
// current file (kResourceNotFound otherwise), Write saves a file to disk (atomically).
// kResFileNotOpen when there is no current file or the reference is not open.
OSErr AddResource(const Resource& resource);
OSErr ChangeResource(ResType type, int16_t id, const std::vector<uint8_t>& data);
OSErr WriteResFile(ResFileRef ref);

// Closes every file (used between tests and at the host's exit).
void CloseAllResFiles();

}   // namespace toolbox
