// A dump as a tree of its lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// A line: what names it, what it says, and the lines below it (those that stand further to the right, and
// fields behind a title). Titles and lines without a value have an empty one.
struct DumpNode {
    std::string label;
    std::string value;
    std::vector<DumpNode> children;
};

// What of the lines is compared: with `everything` set all of it; otherwise without file positions, sizes of
// atoms and sets, dates, UUIDs and UMIDs (labels of the SMPTE registers stay).
DumpNode parse_dump(std::string_view dump, bool everything);
