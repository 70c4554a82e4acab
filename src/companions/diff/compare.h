// What differs between the trees of two dumps.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "companions/diff/facts.h"
#include "companions/diff/tree.h"

struct Difference {
    enum Kind : uint8_t { changed, only_one, only_other, counted, same } kind = changed;
    std::vector<std::string> section;
    std::string field;
    std::string one;
    std::string other;
    uint64_t below = 0;          // fields below what only one side has
    std::string of;              // of what is counted: "6,000 system items", "12 of 6,000 sound elements"
    uint64_t first = 0;          // of what is counted: where the difference begins, from 0 on
    uint64_t differ = 0;         // how many differ
    uint64_t count = 0;          // of how many
    uint32_t lines[2] = {0, 0};  // of the dumps, from 1 on; 0: none
};

class DifferenceTaker {
 public:
    virtual ~DifferenceTaker() = default;
    virtual void take(const Difference &difference) = 0;
};

struct CompareOptions {
    std::string format;
    bool everything = false;  // each of what is counted, and sections that come again
    bool same = false;        // fields that are the same, too
};

// Fields of a section come before the sections in it. Sections belong together by their names, what tells
// them apart (a track's handler) and their order, wherever they stand; of descriptions of one thing (codecs)
// those that are left in order. `told` is left out.
void compare_trees(const FieldNode &one, const FieldNode &other, const TextPool &pool,
                   const CompareOptions &options, const ToldTimecodes &told, DifferenceTaker &taker);
