#include "stavio/document/fonts.h"

#include <cctype>

namespace stavio {

namespace {

constexpr size_t kMaxFonts = 0x7FFF;   // font numbers are signed 16-bit

bool SameName(const std::string& a, const std::string& b)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

}   // namespace

FontTable FontTable::Defaults()
{
    FontTable table;
    table.names_ = {kTextFontName, "Arial", kMusicFontName, kPercussionFontName, "Courier New"};
    return table;
}

std::optional<int16_t> FontTable::Find(const std::string& name) const
{
    for (size_t number = 0; number < names_.size(); ++number) {
        if (SameName(names_[number], name)) {
            return static_cast<int16_t>(number);
        }
    }
    return std::nullopt;
}

std::optional<int16_t> FontTable::NumberOf(const std::string& name)
{
    if (name.empty() || name.size() > kMaxNameLength) {
        return std::nullopt;
    }
    if (std::optional<int16_t> known = Find(name)) {
        return known;
    }
    if (names_.size() >= kMaxFonts) {
        return std::nullopt;
    }
    names_.push_back(name);
    return static_cast<int16_t>(names_.size() - 1);
}

const std::string* FontTable::NameOf(int32_t number) const
{
    if (number < 0 || static_cast<size_t>(number) >= names_.size()) {
        return nullptr;
    }
    return &names_[static_cast<size_t>(number)];
}

}   // namespace stavio
