// A dump as a tree of fields, in memory that does not grow with what is printed for every frame.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Texts by numbers, each kept once, so that two dumps are compared by numbers; 0 is the empty text. Beyond a
// million of them a text is told by its hash alone.
class TextPool {
 public:
    TextPool() { number(""); }
    uint32_t number(std::string_view text);
    std::string_view text(uint32_t number) const;

 private:
    std::deque<std::string> texts_;
    std::unordered_map<std::string_view, uint32_t> numbers_;
};

// A field that every section of a group has, or what a table has in a column: its values in order, those that
// repeat as one.
struct FieldColumn {
    struct Run {
        uint64_t first = 0;  // section or row
        uint64_t count = 0;
        uint32_t value = 0;
        uint32_t line = 0;  // of the first one
    };
    uint32_t name = 0;
    std::vector<Run> runs;

    // Places ascend; the first value of one counts.
    void add(uint64_t place, uint32_t value, uint32_t line);
    uint64_t count() const { return runs.empty() ? 0 : runs.back().first + runs.back().count; }
};

// Sections that are counted: one a frame, a packet, an entry.
struct Group {
    uint32_t name = 0;  // 0: rows of the section itself
    uint32_t kind = 0;
    uint64_t count = 0;
    std::vector<FieldColumn> columns;

    FieldColumn &column(uint32_t name);
};

// A line of a dump with those below it.
struct FieldNode {
    uint32_t name = 0;   // its label with the indices inside; 0: the line has none
    uint32_t kind = 0;   // what tells it from others of its name: "soun", "Picture Essence Track"
    uint32_t value = 0;  // what is compared of its values
    uint32_t line = 0;   // of the dump, from 1 on; 0: none
    bool is_left_out = false;
    std::vector<FieldNode> children;
    std::vector<Group> groups;

    bool is_section() const { return !children.empty() || !groups.empty(); }
    const FieldNode *child(uint32_t child_name) const;
};

bool same_fields(const FieldNode &one, const FieldNode &other);
// Lines of a section without its own.
uint64_t field_count(const FieldNode &node);
// Where all lines below a node are values without a label they become its own.
void take_values(FieldNode &node, TextPool &pool);
// Adds a section, or with `name` 0 a row of fields, to its group in the node.
void fold(FieldNode &into, const FieldNode &node, TextPool &pool);
