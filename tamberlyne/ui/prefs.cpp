#include "tamberlyne/ui/prefs.h"

#include "toolbox/folders.h"
#include "toolbox/resources.h"

#include <algorithm>
#include <cstring>

namespace {

// Opens the preferences file read-write and makes it current; -1 when it cannot be opened.
toolbox::ResFileRef OpenPrefsFile(const toolbox::FileSpec& spec)
{
    return toolbox::OpenResFile(spec, false);
}

bool IsMissingFileError(toolbox::OSErr error)
{
    return error == toolbox::kNoSuchVolume || error == toolbox::kFileNotFound || error == toolbox::kDirNotFound;
}

// A resource name is a length-prefixed string on the classic system: at most 255 bytes.
std::string ResourceName(const char* name)
{
    if (name == nullptr) {
        return std::string();
    }
    return std::string(name, strnlen(name, 255));
}

}   // namespace

long GetSettings(int16_t id, char* buffer, long size, const char* fileName)
{
    if (buffer == nullptr || size <= 0 || fileName == nullptr) {
        return 0;
    }
    const std::string folder = toolbox::PreferencesFolder(false);
    if (folder.empty()) {
        return 0;
    }
    toolbox::FileSpec spec;
    if (toolbox::MakeFileSpec(folder, fileName, spec) == toolbox::kBadName) {
        return 0;
    }
    const toolbox::ResFileRef saved = toolbox::CurResFile();
    long copied = 0;
    const toolbox::ResFileRef file = OpenPrefsFile(spec);
    if (file >= 0) {
        toolbox::UseResFile(file);
        const toolbox::Resource* resource = toolbox::GetResource(kPrefsResourceType, id);
        if (resource != nullptr) {
            const long stored = static_cast<long>(resource->data.size());
            copied = std::min(stored, size);
            if (copied > 0) {
                std::memcpy(buffer, resource->data.data(), static_cast<size_t>(copied));
            }
            std::memset(buffer + copied, 0, static_cast<size_t>(size - copied));
        }
    }
    toolbox::UseResFile(saved);
    return copied;
}

int16_t PutSettings(int16_t id, const char* data, long size, const char* resourceName, const char* fileName)
{
    if (data == nullptr || size < 0 || fileName == nullptr) {
        return toolbox::kParamErr;
    }
    const std::string folder = toolbox::PreferencesFolder(true);
    if (folder.empty()) {
        return toolbox::kDirNotFound;
    }
    toolbox::FileSpec spec;
    if (toolbox::MakeFileSpec(folder, fileName, spec) == toolbox::kBadName) {
        return toolbox::kBadName;
    }
    const toolbox::ResFileRef saved = toolbox::CurResFile();
    toolbox::ResFileRef file = OpenPrefsFile(spec);
    if (file < 0 && IsMissingFileError(toolbox::ResError())) {
        toolbox::CreateResFile(spec);
        file = OpenPrefsFile(spec);
    }
    toolbox::OSErr status = toolbox::ResError();
    if (file >= 0) {
        toolbox::UseResFile(file);
        const std::vector<uint8_t> bytes(data, data + size);
        // ChangeResource works on the current file only; a resource of the same type and id
        // elsewhere in the chain is not ours to change, so a new one goes into this file.
        status = toolbox::ChangeResource(kPrefsResourceType, id, bytes);
        if (status == toolbox::kResourceNotFound) {
            toolbox::Resource resource;
            resource.type = kPrefsResourceType;
            resource.id = id;
            resource.name = ResourceName(resourceName);
            resource.data = bytes;
            status = toolbox::AddResource(resource);
        }
        if (status == toolbox::kNoErr) {
            status = toolbox::WriteResFile(file);
        }
    }
    toolbox::UseResFile(saved);
    return status;
}
