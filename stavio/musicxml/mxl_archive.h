// The compressed MusicXML container: a zip archive whose META-INF/container.xml names the score
// in its first <rootfile>. The host reads the score entry and writes the archive back with only
// that entry replaced; every other entry is copied as it was stored.
#pragma once

#include <string>

namespace stavio::musicxml {

// True when the bytes start like a zip archive.
bool LooksLikeArchive(const std::string& bytes);

// The score entry of an archive: its path inside the archive and its bytes. False and a
// message (without the file's name) when the archive cannot be read, has no container file, or
// its root file is missing.
bool ReadArchiveScore(const std::string& archive, std::string& rootPath, std::string& score, std::string& error);

// `archive` with entry `rootPath` replaced by `score`, other entries kept.
bool ReplaceArchiveScore(const std::string& archive, const std::string& rootPath, const std::string& score,
                         std::string& out, std::string& error);

// A new archive: a stored "mimetype" entry first, META-INF/container.xml naming `rootPath`,
// then the score.
bool NewArchive(const std::string& rootPath, const std::string& score, std::string& out, std::string& error);

}   // namespace stavio::musicxml
