#include "stavio/musicxml/mxl_archive.h"

#include <pugixml.hpp>
#include <zip.h>

#include <cstdlib>
#include <memory>

namespace stavio::musicxml {

namespace {

constexpr char kContainerPath[] = "META-INF/container.xml";
constexpr char kMimeType[] = "application/vnd.recordare.musicxml";

struct ArchiveCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;

// Opens an archive over a copy of `bytes` in memory (a new one when `bytes` is empty). The caller
// holds a reference to `source` and frees it.
Archive OpenArchive(const std::string& bytes, zip_source_t*& source, std::string& error)
{
    zip_error_t zipError;
    zip_error_init(&zipError);
    source = zip_source_buffer_create(nullptr, 0, 0, &zipError);
    if (source == nullptr) {
        error = zip_error_strerror(&zipError);
        zip_error_fini(&zipError);
        return nullptr;
    }
    // The source owns a copy of the bytes so that the archive can be written back into it.
    if (!bytes.empty()) {
        if (zip_source_begin_write(source) != 0 || zip_source_write(source, bytes.data(), bytes.size()) < 0 ||
            zip_source_commit_write(source) != 0) {
            error = zip_error_strerror(zip_source_error(source));
            zip_source_free(source);
            zip_error_fini(&zipError);
            return nullptr;
        }
    }
    zip_t* archive = zip_open_from_source(source, bytes.empty() ? ZIP_TRUNCATE | ZIP_CREATE : 0, &zipError);
    if (archive == nullptr) {
        error = zip_error_strerror(&zipError);
        zip_source_free(source);
        source = nullptr;
    } else {
        zip_source_keep(source);   // the caller's reference: the written archive is read from it
    }
    zip_error_fini(&zipError);
    return Archive(archive);
}

bool ReadEntry(zip_t* archive, const char* path, std::string& bytes)
{
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat(archive, path, 0, &stat) != 0 || (stat.valid & ZIP_STAT_SIZE) == 0) {
        return false;
    }
    // A declared size far past what an archive of this kind holds is refused before allocating.
    constexpr zip_uint64_t kLargestEntry = 1ULL << 28;
    if (stat.size > kLargestEntry) {
        return false;
    }
    zip_file_t* file = zip_fopen(archive, path, 0);
    if (file == nullptr) {
        return false;
    }
    bytes.assign(static_cast<size_t>(stat.size), '\0');
    const zip_int64_t read = bytes.empty() ? 0 : zip_fread(file, bytes.data(), bytes.size());
    zip_fclose(file);
    return read == static_cast<zip_int64_t>(stat.size);
}

// Closes the archive into its source and takes the bytes out.
bool CloseInto(Archive archive, zip_source_t* source, std::string& out, std::string& error)
{
    if (zip_close(archive.get()) != 0) {
        error = zip_strerror(archive.get());
        zip_source_free(source);
        return false;
    }
    archive.release();
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_source_stat(source, &stat) != 0 || zip_source_open(source) != 0) {
        error = "the archive could not be written";
        zip_source_free(source);
        return false;
    }
    out.assign(static_cast<size_t>(stat.size), '\0');
    const zip_int64_t read = out.empty() ? 0 : zip_source_read(source, out.data(), out.size());
    zip_source_close(source);
    zip_source_free(source);
    if (read != static_cast<zip_int64_t>(out.size())) {
        error = "the archive could not be written";
        return false;
    }
    return true;
}

bool PutEntry(zip_t* archive, const std::string& path, const std::string& bytes, bool stored, std::string& error)
{
    // The data is copied: libzip reads it only when the archive is closed.
    void* copy = std::malloc(bytes.empty() ? 1 : bytes.size());
    if (copy == nullptr) {
        error = "out of memory";
        return false;
    }
    if (!bytes.empty()) {
        std::copy(bytes.begin(), bytes.end(), static_cast<char*>(copy));
    }
    zip_source_t* data = zip_source_buffer(archive, copy, bytes.size(), 1);
    if (data == nullptr) {
        std::free(copy);
        error = zip_strerror(archive);
        return false;
    }
    const zip_int64_t index = zip_file_add(archive, path.c_str(), data, ZIP_FL_OVERWRITE | ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(data);
        error = zip_strerror(archive);
        return false;
    }
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
    return true;
}

}   // namespace

bool LooksLikeArchive(const std::string& bytes)
{
    return bytes.size() >= 4 && bytes[0] == 'P' && bytes[1] == 'K' && bytes[2] == '\x03' && bytes[3] == '\x04';
}

bool ReadArchiveScore(const std::string& archiveBytes, std::string& rootPath, std::string& score, std::string& error)
{
    zip_source_t* source = nullptr;
    Archive archive = OpenArchive(archiveBytes, source, error);
    if (!archive) {
        error = "not a readable .mxl archive (" + error + ")";
        return false;
    }
    zip_source_free(source);   // the archive keeps its own reference while it is open
    std::string container;
    if (!ReadEntry(archive.get(), kContainerPath, container)) {
        error = "a .mxl archive without META-INF/container.xml, so it names no score";
        return false;
    }
    pugi::xml_document doc;
    if (!doc.load_buffer(container.data(), container.size())) {
        error = "META-INF/container.xml of the .mxl archive is not well-formed XML";
        return false;
    }
    const pugi::xml_node rootfile = doc.child("container").child("rootfiles").child("rootfile");
    rootPath = rootfile.attribute("full-path").as_string();
    if (rootPath.empty()) {
        error = "a .mxl archive whose META-INF/container.xml names no score (no <rootfile full-path>)";
        return false;
    }
    if (!ReadEntry(archive.get(), rootPath.c_str(), score)) {
        error = "a .mxl archive without its score: META-INF/container.xml names " + rootPath +
                ", which the archive does not hold";
        return false;
    }
    return true;
}

bool ReplaceArchiveScore(const std::string& archiveBytes, const std::string& rootPath, const std::string& score,
                         std::string& out, std::string& error)
{
    zip_source_t* source = nullptr;
    Archive archive = OpenArchive(archiveBytes, source, error);
    if (!archive || !PutEntry(archive.get(), rootPath, score, false, error)) {
        if (source != nullptr) {
            zip_source_free(source);
        }
        return false;
    }
    return CloseInto(std::move(archive), source, out, error);
}

bool NewArchive(const std::string& rootPath, const std::string& score, std::string& out, std::string& error)
{
    zip_source_t* source = nullptr;
    Archive archive = OpenArchive(std::string(), source, error);
    const std::string container = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                  "<container>\n"
                                  "  <rootfiles>\n"
                                  "    <rootfile full-path=\"" +
                                  rootPath +
                                  "\" media-type=\"application/vnd.recordare.musicxml+xml\"/>\n"
                                  "  </rootfiles>\n"
                                  "</container>\n";
    if (!archive || !PutEntry(archive.get(), "mimetype", kMimeType, true, error) ||
        !PutEntry(archive.get(), kContainerPath, container, false, error) ||
        !PutEntry(archive.get(), rootPath, score, false, error)) {
        if (source != nullptr) {
            zip_source_free(source);
        }
        return false;
    }
    return CloseInto(std::move(archive), source, out, error);
}

}   // namespace stavio::musicxml
