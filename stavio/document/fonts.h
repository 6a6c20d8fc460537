// The document's font table: font numbers, as records and the font calls use them, and the
// names behind them. Numbers count from 0 in the order the names were added.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace stavio {

constexpr const char* kTextFontName = "Times New Roman";
constexpr const char* kMusicFontName = "Dorvane";
constexpr const char* kPercussionFontName = "Dorvane Percussion";

class FontTable {
public:
    // The table of a new document: "Times New Roman" (0), "Arial", "Dorvane", "Dorvane
    // Percussion", "Courier New".
    static FontTable Defaults();

    // The number of a font name, compared without regard to case; nullopt when it is not listed.
    std::optional<int16_t> Find(const std::string& name) const;
    // The number of a font name, adding the name with the next number when it is not listed.
    // nullopt for an empty name, a name longer than kMaxNameLength, or a full table.
    std::optional<int16_t> NumberOf(const std::string& name);
    // The name of a font number; null when the number is not in use.
    const std::string* NameOf(int32_t number) const;
    size_t Size() const { return names_.size(); }

    static constexpr size_t kMaxNameLength = 255;

    bool operator==(const FontTable& other) const { return names_ == other.names_; }

private:
    std::vector<std::string> names_;
};

}   // namespace stavio
