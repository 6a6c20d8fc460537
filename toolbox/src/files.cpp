#include "toolbox/files.h"

#include "os_errors.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace toolbox {

namespace {

// Names longer than this are cut in the temporary file's name, which must stay within the file
// system's limit of 255 bytes.
constexpr size_t kTempNameStemLimit = 200;
constexpr int kTempNameAttempts = 100;

std::string FolderOf(const FileSpec& spec)
{
    return spec.folder.empty() ? std::string(".") : spec.folder;
}

bool IsValidName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

OSErr LastError(const FileSpec& spec)
{
    return OSErrFromErrno(errno, FolderOf(spec));
}

// Closes on destruction unless released.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor()
    {
        if (fd_ >= 0) close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int Get() const { return fd_; }
    // Closes now and reports whether that worked (a late write error shows up here).
    bool Close()
    {
        const int fd = fd_;
        fd_ = -1;
        return close(fd) == 0;
    }

private:
    int fd_;
};

bool WriteAll(int fd, const uint8_t* bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(fd, bytes, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// Creates a new temporary file beside `spec`; -1 with errno set when that fails.
int CreateTempFile(const FileSpec& spec, mode_t mode, std::string& tempPath)
{
    static std::atomic<unsigned> counter{0};
    const std::string stem = "." + spec.name.substr(0, kTempNameStemLimit) + "." + std::to_string(getpid()) + "-";
    for (int attempt = 0; attempt < kTempNameAttempts; ++attempt) {
        tempPath = FileSpec{spec.folder, stem + std::to_string(counter++) + ".tmp"}.Path();
        const int fd = open(tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    errno = EEXIST;
    return -1;
}

// Makes a finished rename last through a crash; failing here changes nothing for the caller.
void SyncFolder(const std::string& folder)
{
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
}

}   // namespace

OSErr OSErrFromErrno(int error, const std::string& folder)
{
    switch (error) {
        case ENOENT: return IsFolder(folder.empty() ? "." : folder) ? kFileNotFound : kDirNotFound;
        case ENOTDIR: return kDirNotFound;
        case EACCES:
        case EROFS:
        case EPERM: return kPermissionErr;
        case EEXIST: return kDuplicateFile;
        case ENOMEM: return kMemFull;
        case ENAMETOOLONG: return kBadName;
        default: return kIOErr;
    }
}

std::string DescribeOSErr(OSErr err)
{
    switch (err) {
        case kNoErr: return "no error";
        case kFileNotFound: return "file not found";
        case kDirNotFound: return "folder not found";
        case kPermissionErr: return "permission denied";
        case kDuplicateFile: return "the file exists already";
        case kMemFull: return "out of memory";
        case kBadName: return "bad file name";
        case kParamErr: return "bad argument";
        case kBadResourceFile: return "not a valid resource file";
        default: return "input/output error (" + std::to_string(err) + ")";
    }
}

std::string FileSpec::Path() const
{
    if (folder.empty()) return name;
    if (folder.back() == '/') return folder + name;
    return folder + "/" + name;
}

OSErr MakeFileSpec(const std::string& folder, const std::string& name, FileSpec& spec)
{
    try {
        if (!IsValidName(name)) return kBadName;
        spec = FileSpec{folder, name};
        return IsFolder(FolderOf(spec)) ? kNoErr : kDirNotFound;
    } catch (...) {
        return kMemFull;
    }
}

FileSpec FileSpecFromPath(const std::string& path)
{
    try {
        const size_t slash = path.rfind('/');
        if (slash == std::string::npos) return FileSpec{"", path};
        return FileSpec{slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
    } catch (...) {
        return {};
    }
}

bool Exists(const FileSpec& spec)
{
    struct stat info {};
    try {
        return lstat(spec.Path().c_str(), &info) == 0;
    } catch (...) {
        return false;
    }
}

bool IsFolder(const std::string& path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

OSErr ReadWholeFile(const FileSpec& spec, std::vector<uint8_t>& bytes)
{
    try {
        FileDescriptor file(open(spec.Path().c_str(), O_RDONLY | O_CLOEXEC));
        if (file.Get() < 0) return LastError(spec);
        struct stat info {};
        if (fstat(file.Get(), &info) != 0) return LastError(spec);
        if (S_ISDIR(info.st_mode)) return kIOErr;
        std::vector<uint8_t> contents;
        contents.reserve(static_cast<size_t>(std::max<off_t>(info.st_size, 0)));
        uint8_t buffer[64 * 1024];
        for (;;) {
            const ssize_t count = read(file.Get(), buffer, sizeof buffer);
            if (count < 0) {
                if (errno == EINTR) continue;
                return LastError(spec);
            }
            if (count == 0) break;
            contents.insert(contents.end(), buffer, buffer + count);
        }
        bytes = std::move(contents);
        return kNoErr;
    } catch (...) {
        return kMemFull;
    }
}

OSErr WriteScratchFile(const FileSpec& spec, const void* data, size_t size)
{
    if (data == nullptr && size > 0) return kParamErr;
    try {
        if (!IsValidName(spec.name)) return kBadName;
        FileDescriptor file(open(spec.Path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
        if (file.Get() < 0) return LastError(spec);
        const bool written = WriteAll(file.Get(), static_cast<const uint8_t*>(data), size);
        const int writeError = errno;
        if (!file.Close() || !written) return OSErrFromErrno(written ? errno : writeError, FolderOf(spec));
        return kNoErr;
    } catch (...) {
        return kMemFull;
    }
}

OSErr WriteWholeFile(const FileSpec& spec, const void* data, size_t size)
{
    if (data == nullptr && size > 0) return kParamErr;
    try {
        if (!IsValidName(spec.name)) return kBadName;
        const std::string target = spec.Path();
        struct stat existing {};
        const bool exists = stat(target.c_str(), &existing) == 0;
        if (exists && S_ISDIR(existing.st_mode)) return kIOErr;

        std::string tempPath;
        FileDescriptor temp(CreateTempFile(spec, 0666, tempPath));
        if (temp.Get() < 0) return LastError(spec);
        const bool written = WriteAll(temp.Get(), static_cast<const uint8_t*>(data), size) &&
                             (!exists || fchmod(temp.Get(), existing.st_mode & 07777) == 0 || errno == EPERM) &&
                             fsync(temp.Get()) == 0;
        const int writeError = errno;
        if (!temp.Close() || !written) {
            const OSErr err = OSErrFromErrno(written ? errno : writeError, FolderOf(spec));
            unlink(tempPath.c_str());
            return err;
        }
        if (rename(tempPath.c_str(), target.c_str()) != 0) {
            const OSErr err = LastError(spec);
            unlink(tempPath.c_str());
            return err;
        }
        SyncFolder(FolderOf(spec));
        return kNoErr;
    } catch (...) {
        return kMemFull;
    }
}

OSErr CreateFile(const FileSpec& spec, uint32_t /*creator*/, uint32_t /*type*/)
{
    try {
        if (!IsValidName(spec.name)) return kBadName;
        const int fd = open(spec.Path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0) return LastError(spec);
        close(fd);
        return kNoErr;
    } catch (...) {
        return kMemFull;
    }
}

OSErr DeleteFile(const FileSpec& spec)
{
    try {
        if (!IsValidName(spec.name)) return kBadName;
        const std::string path = spec.Path();
        struct stat info {};
        if (lstat(path.c_str(), &info) != 0) return LastError(spec);
        const int result = S_ISDIR(info.st_mode) ? rmdir(path.c_str()) : unlink(path.c_str());
        return result == 0 ? kNoErr : LastError(spec);
    } catch (...) {
        return kMemFull;
    }
}

std::optional<FolderItem> FolderItemAt(const std::string& folder, int index)
{
    if (index < 1) return std::nullopt;
    try {
        const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(folder.empty() ? "." : folder.c_str()), closedir);
        if (dir == nullptr) return std::nullopt;
        std::vector<std::string> names;
        while (const dirent* entry = readdir(dir.get())) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        if (static_cast<size_t>(index) > names.size()) return std::nullopt;
        std::sort(names.begin(), names.end());   // std::string compares bytes as unsigned char
        FolderItem item;
        item.name = names[static_cast<size_t>(index - 1)];
        item.isFolder = IsFolder(FileSpec{folder, item.name}.Path());
        return item;
    } catch (...) {
        return std::nullopt;
    }
}

bool EnsureFolder(const std::string& path)
{
    if (path.empty()) return false;
    try {
        for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            const std::string prefix = path.substr(0, slash);
            if (!IsFolder(prefix) && mkdir(prefix.c_str(), 0777) != 0 && errno != EEXIST) return false;
        }
        if (!IsFolder(path) && mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) return false;
        return IsFolder(path);
    } catch (...) {
        return false;
    }
}

}   // namespace toolbox
