// The compressed MusicXML container: a zip archive whose META-INF/container.xml names the score
// in its first <rootfile>. The host reads the score entry and writes the archive back with only
// that entry replaced; every other entry is copied as it was stored.
#pragma once

#include "toolbox/status.h"

#include <string>

namespace stavio::musicxml {

struct ArchiveScore {
    std::string rootPath;   // the score's entry in the archive
    std::string score;      // its bytes
};

// True when the bytes start like a zip archive.
bool LooksLikeArchive(const std::string& bytes);

// The archive's bytes do not know their file's name: a failure says what is wrong with the
// archive, and the caller names the file in front of it (Status::Within).

// The score entry of an archive. A failure when the archive cannot be read, has no container
// file, or its root file is missing.
toolbox::Result<ArchiveScore> ReadArchiveScore(const std::string& archive);

// `archive` with entry `rootPath` replaced by `score`, other entries kept.
toolbox::Result<std::string> ReplaceArchiveScore(const std::string& archive, const std::string& rootPath,
                                                 const std::string& score);

// A new archive: a stored "mimetype" entry first, META-INF/container.xml naming `rootPath`,
// then the score.
toolbox::Result<std::string> NewArchive(const std::string& rootPath, const std::string& score);

}   // namespace stavio::musicxml
