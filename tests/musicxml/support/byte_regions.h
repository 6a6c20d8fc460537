// Byte-for-byte comparison of a score before and after an edit. The byte ranges of the files'
// parts, measures and part-list entries are taken from where pugixml found them (nothing is
// re-serialised), the ranges allowed to change are masked out, and everything else must be the
// same bytes.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace musicxml_support {

// An element at the top of the score: a child of the root ("part P1", "part-list"), a
// <score-part> ("score-part P1") or a measure ("part P1 measure 5 (#5)"), with its bytes.
struct ElementRange {
    std::string name;        // element name
    std::string key;         // as above
    std::string partId;      // for parts, their measures and score-parts
    std::string number;      // for measures
    int depth = 0;           // 1: child of the root, 2: grandchild
    std::size_t begin = 0;   // byte offset of its "<"
    std::size_t end = 0;     // one past its last ">"
};

// The ranges of every element at depth 1 and 2, in file order. UTF-8 and UTF-16 (with a
// byte-order mark) files are read in their own code units. Throws std::runtime_error when the
// file is not well-formed.
std::vector<ElementRange> ScanElements(const std::string& bytes);

struct AllowedChanges {
    // Part id -> numbers of its measures that may change; such a part's <score-part> may change too.
    std::map<std::string, std::set<std::string>> measures;
    // Parts the output may add (their <score-part> and <part>, with the white space before each).
    std::set<std::string> newParts;
};

// "" when `output` equals `input` outside what `allowed` lets change; else where the first
// difference lies (the element, the byte offset) and the bytes around it on both sides.
std::string FirstUnexpectedChange(const std::string& input, const std::string& output, const AllowedChanges& allowed);

}   // namespace musicxml_support
