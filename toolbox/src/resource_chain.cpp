// The resource chain: the open resource files, oldest first, and the current one. Lookups start
// at the current file and go on to the files opened before it.
//
// The state lives in this shared library once per process, so the host and the plug-in it loads
// see the same chain. Everything runs on the user-interface thread.
#include "toolbox/resources.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

namespace toolbox {

namespace {

struct ChainedFile {
    ResFileRef ref = -1;
    std::string path;            // as given when opened, for messages
    std::string canonicalPath;   // to recognise the same file opened by another path, and to
                                 // write it back to the same place (through a link, if any)
    bool readOnly = true;
    ResourceFile contents;
};

struct Chain {
    std::vector<std::unique_ptr<ChainedFile>> files;   // oldest first
    ResFileRef current = -1;
    ResFileRef lastRef = 0;
    OSErr lastError = kNoErr;
};

Chain& TheChain()
{
    static Chain chain;
    return chain;
}

OSErr SetError(OSErr err)
{
    TheChain().lastError = err;
    return err;
}

// Index in the chain, or -1.
int IndexOf(ResFileRef ref)
{
    const auto& files = TheChain().files;
    for (size_t i = 0; i < files.size(); ++i) {
        if (files[i]->ref == ref) return static_cast<int>(i);
    }
    return -1;
}

ChainedFile* FileFor(ResFileRef ref)
{
    const int index = IndexOf(ref);
    return index < 0 ? nullptr : TheChain().files[static_cast<size_t>(index)].get();
}

std::string CanonicalPath(const std::string& path)
{
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? std::string(resolved) : path;
}

ResFileRef NextFreeRef()
{
    Chain& chain = TheChain();
    do {
        chain.lastRef = chain.lastRef >= INT16_MAX ? 1 : static_cast<ResFileRef>(chain.lastRef + 1);
    } while (IndexOf(chain.lastRef) >= 0);
    return chain.lastRef;
}

// Walks from the current file to the oldest; null when no file has the resource.
const Resource* FindInChain(ResType type, int16_t id)
{
    const Chain& chain = TheChain();
    for (int i = IndexOf(chain.current); i >= 0; --i) {
        if (const Resource* found = chain.files[static_cast<size_t>(i)]->contents.Find(type, id)) return found;
    }
    return nullptr;
}

}   // namespace

ResFileRef CurResFile()
{
    return TheChain().current;
}

void UseResFile(ResFileRef ref)
{
    // -1 is accepted so that a caller can put back "no file current" as it found it.
    if (ref != -1 && IndexOf(ref) < 0) {
        SetError(kResFileNotOpen);
        return;
    }
    TheChain().current = ref;
    SetError(kNoErr);
}

OSErr ResError()
{
    return TheChain().lastError;
}

Result<ResFileRef> OpenResourceFile(const FileSpec& spec, bool readOnly)
{
    Chain& chain = TheChain();
    try {
        const std::string path = spec.Path();
        const std::string canonical = CanonicalPath(path);
        for (const auto& file : chain.files) {
            if (file->canonicalPath == canonical) {
                file->readOnly = file->readOnly && readOnly;
                chain.current = file->ref;
                SetError(kNoErr);
                return file->ref;
            }
        }
        Result<ResourceFile> contents = LoadResourceFile(path);
        if (!contents) {
            SetError(contents.Code());
            return contents.status();
        }
        auto file = std::make_unique<ChainedFile>();
        file->contents = std::move(*contents);
        file->path = path;
        file->canonicalPath = canonical;
        file->readOnly = readOnly;
        file->ref = NextFreeRef();
        chain.files.push_back(std::move(file));
        chain.current = chain.files.back()->ref;
        SetError(kNoErr);
        return chain.current;
    } catch (...) {
        SetError(kMemFull);
        return Status::Failure(spec.name + ": out of memory", kMemFull);
    }
}

ResFileRef OpenResFile(const FileSpec& spec, bool readOnly)
{
    const Result<ResFileRef> ref = OpenResourceFile(spec, readOnly);
    return ref ? *ref : ResFileRef{-1};
}

OSErr CreateResFile(const FileSpec& spec)
{
    // An empty file is a resource file without resources.
    const OSErr err = CreateFile(spec, 0, 0);
    return SetError(err);
}

void CloseResFile(ResFileRef ref)
{
    Chain& chain = TheChain();
    const int index = IndexOf(ref);
    if (index < 0) {
        SetError(kResFileNotOpen);
        return;
    }
    chain.files.erase(chain.files.begin() + index);
    if (chain.current == ref) {
        if (chain.files.empty())
            chain.current = -1;
        else if (index > 0)
            chain.current = chain.files[static_cast<size_t>(index - 1)]->ref;
        else
            chain.current = chain.files.back()->ref;
    }
    SetError(kNoErr);
}

const Resource* GetResource(ResType type, int16_t id)
{
    const Resource* found = FindInChain(type, id);
    SetError(found != nullptr ? kNoErr : kResourceNotFound);
    return found;
}

std::optional<std::string> GetString(int16_t id)
{
    try {
        const Resource* found = GetResource(kStringType, id);
        if (found == nullptr) return std::nullopt;
        return std::string(found->data.begin(), found->data.end());
    } catch (...) {
        SetError(kMemFull);
        return std::nullopt;
    }
}

std::optional<std::string> GetIndString(int16_t listId, int16_t index)
{
    try {
        const Resource* list = GetResource(kStringListType, listId);
        if (list == nullptr) return std::nullopt;
        if (index < 1 || static_cast<size_t>(index) > list->strings.size()) {
            SetError(kResourceNotFound);
            return std::nullopt;
        }
        return list->strings[static_cast<size_t>(index - 1)];
    } catch (...) {
        SetError(kMemFull);
        return std::nullopt;
    }
}

OSErr AddResource(const Resource& resource)
{
    ChainedFile* file = FileFor(TheChain().current);
    if (file == nullptr) return SetError(kResFileNotOpen);
    if (file->contents.Find(resource.type, resource.id) != nullptr) return SetError(kAddResFailed);
    try {
        return SetError(file->contents.Put(resource).Code());
    } catch (...) {
        return SetError(kMemFull);
    }
}

OSErr ChangeResource(ResType type, int16_t id, const std::vector<uint8_t>& data)
{
    ChainedFile* file = FileFor(TheChain().current);
    if (file == nullptr) return SetError(kResFileNotOpen);
    Resource* existing = file->contents.Find(type, id);
    if (existing == nullptr) return SetError(kResourceNotFound);
    try {
        existing->data = data;
        return SetError(kNoErr);
    } catch (...) {
        return SetError(kMemFull);
    }
}

OSErr WriteResFile(ResFileRef ref)
{
    const ChainedFile* file = FileFor(ref);
    if (file == nullptr) return SetError(kResFileNotOpen);
    try {
        if (file->readOnly) return SetError(kPermissionErr);
        return SetError(SaveResourceFile(file->canonicalPath, file->contents).Code());
    } catch (...) {
        return SetError(kMemFull);
    }
}

void CloseAllResFiles()
{
    Chain& chain = TheChain();
    chain.files.clear();
    chain.current = -1;
    SetError(kNoErr);
}

}   // namespace toolbox
