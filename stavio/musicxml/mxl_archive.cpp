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
struct SourceFreer {
    void operator()(zip_source_t* source) const { zip_source_free(source); }
};
using Source = std::unique_ptr<zip_source_t, SourceFreer>;

// An archive over bytes in memory and our own reference to the memory it is written back into.
// The archive is discarded before the reference is freed.
struct OpenArchive {
    Source source;
    Archive archive;
};

toolbox::Status ZipFailure(zip_error_t& zipError)
{
    toolbox::Status failure = toolbox::Status::Failure(zip_error_strerror(&zipError));
    zip_error_fini(&zipError);
    return failure;
}

// Opens an archive over a copy of `bytes` in memory (a new one when `bytes` is empty).
toolbox::Result<OpenArchive> Open(const std::string& bytes)
{
    zip_error_t zipError;
    zip_error_init(&zipError);
    Source source(zip_source_buffer_create(nullptr, 0, 0, &zipError));
    if (!source) {
        return ZipFailure(zipError);
    }
    // The source owns a copy of the bytes so that the archive can be written back into it.
    if (!bytes.empty()) {
        if (zip_source_begin_write(source.get()) != 0 ||
            zip_source_write(source.get(), bytes.data(), bytes.size()) < 0 ||
            zip_source_commit_write(source.get()) != 0) {
            zip_error_fini(&zipError);
            return toolbox::Status::Failure(zip_error_strerror(zip_source_error(source.get())));
        }
    }
    Archive archive(zip_open_from_source(source.get(), bytes.empty() ? ZIP_TRUNCATE | ZIP_CREATE : 0, &zipError));
    if (!archive) {
        return ZipFailure(zipError);
    }
    zip_error_fini(&zipError);
    zip_source_keep(source.get());   // the archive took the reference it was given; this one is ours
    return OpenArchive{std::move(source), std::move(archive)};
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
toolbox::Result<std::string> CloseInto(OpenArchive opened)
{
    if (zip_close(opened.archive.get()) != 0) {
        return toolbox::Status::Failure(zip_strerror(opened.archive.get()));
    }
    opened.archive.release();   // zip_close freed it
    const toolbox::Status unwritten = toolbox::Status::Failure("the archive could not be written");
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_source_stat(opened.source.get(), &stat) != 0 || zip_source_open(opened.source.get()) != 0) {
        return unwritten;
    }
    std::string out(static_cast<size_t>(stat.size), '\0');
    const zip_int64_t read = out.empty() ? 0 : zip_source_read(opened.source.get(), out.data(), out.size());
    zip_source_close(opened.source.get());
    if (read != static_cast<zip_int64_t>(out.size())) {
        return unwritten;
    }
    return out;
}

toolbox::Status PutEntry(zip_t* archive, const std::string& path, const std::string& bytes, bool stored)
{
    // The data is copied: libzip reads it only when the archive is closed.
    void* copy = std::malloc(bytes.empty() ? 1 : bytes.size());
    if (copy == nullptr) {
        return toolbox::Status::Failure("out of memory", toolbox::kMemFull);
    }
    if (!bytes.empty()) {
        std::copy(bytes.begin(), bytes.end(), static_cast<char*>(copy));
    }
    zip_source_t* data = zip_source_buffer(archive, copy, bytes.size(), 1);
    if (data == nullptr) {
        std::free(copy);
        return toolbox::Status::Failure(zip_strerror(archive));
    }
    const zip_int64_t index = zip_file_add(archive, path.c_str(), data, ZIP_FL_OVERWRITE | ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(data);
        return toolbox::Status::Failure(zip_strerror(archive));
    }
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
    return toolbox::Status::Ok();
}

}   // namespace

bool LooksLikeArchive(const std::string& bytes)
{
    return bytes.size() >= 4 && bytes[0] == 'P' && bytes[1] == 'K' && bytes[2] == '\x03' && bytes[3] == '\x04';
}

toolbox::Result<ArchiveScore> ReadArchiveScore(const std::string& archiveBytes)
{
    toolbox::Result<OpenArchive> opened = Open(archiveBytes);
    if (!opened) {
        return toolbox::Status::Failure("not a readable .mxl archive (" + opened.Message() + ")");
    }
    zip_t* archive = opened->archive.get();
    std::string container;
    if (!ReadEntry(archive, kContainerPath, container)) {
        return toolbox::Status::Failure("a .mxl archive without META-INF/container.xml, so it names no score");
    }
    pugi::xml_document doc;
    if (!doc.load_buffer(container.data(), container.size())) {
        return toolbox::Status::Failure("META-INF/container.xml of the .mxl archive is not well-formed XML");
    }
    const pugi::xml_node rootfile = doc.child("container").child("rootfiles").child("rootfile");
    ArchiveScore found;
    found.rootPath = rootfile.attribute("full-path").as_string();
    if (found.rootPath.empty()) {
        return toolbox::Status::Failure(
            "a .mxl archive whose META-INF/container.xml names no score (no <rootfile full-path>)");
    }
    if (!ReadEntry(archive, found.rootPath.c_str(), found.score)) {
        return toolbox::Status::Failure("a .mxl archive without its score: META-INF/container.xml names " +
                                        found.rootPath + ", which the archive does not hold");
    }
    return found;
}

toolbox::Result<std::string> ReplaceArchiveScore(const std::string& archiveBytes, const std::string& rootPath,
                                                 const std::string& score)
{
    toolbox::Result<OpenArchive> opened = Open(archiveBytes);
    if (!opened) {
        return opened.status();
    }
    if (toolbox::Status put = PutEntry(opened->archive.get(), rootPath, score, false); !put) {
        return put;
    }
    return CloseInto(std::move(*opened));
}

toolbox::Result<std::string> NewArchive(const std::string& rootPath, const std::string& score)
{
    toolbox::Result<OpenArchive> opened = Open(std::string());
    if (!opened) {
        return opened.status();
    }
    const std::string container = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                  "<container>\n"
                                  "  <rootfiles>\n"
                                  "    <rootfile full-path=\"" +
                                  rootPath +
                                  "\" media-type=\"application/vnd.recordare.musicxml+xml\"/>\n"
                                  "  </rootfiles>\n"
                                  "</container>\n";
    zip_t* archive = opened->archive.get();
    toolbox::Status put = PutEntry(archive, "mimetype", kMimeType, true);
    if (put) {
        put = PutEntry(archive, kContainerPath, container, false);
    }
    if (put) {
        put = PutEntry(archive, rootPath, score, false);
    }
    if (!put) {
        return put;
    }
    return CloseInto(std::move(*opened));
}

}   // namespace stavio::musicxml
