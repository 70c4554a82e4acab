// The lines of a dump as fields: where each stands, its label, and its values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/stream.h"

// A value as data: of a number its digits, of a text what stands between its quotes.
struct FieldValue {
    enum Kind : uint8_t { unset, number, text };
    Kind kind = text;
    std::string_view content;  // in the line's text
};

// A label, or a section's.
struct PathElement {
    std::string name;
    bool is_own = true;        // false: the file names it
    mutable std::string json;  // its text in JSON, made by who needs it
};

// A line with its place: the sections around it, by the blanks at the start of lines, then its label.
struct FieldLine {
    std::vector<const PathElement *> path;  // good until the next line
    std::vector<FieldValue> values;
    std::vector<uint64_t> index;
    uint32_t body = 0;         // where the text goes on behind position and label
    bool is_labelled = false;  // the path's last element is the line's own
};

// Goes through the lines of a dump in order.
class LinePlaces {
 public:
    // The place and the values of a line. Of rows of listings the sections only.
    void place(const Line &line, FieldLine &field);

 private:
    struct Level {
        uint32_t depth;
        bool is_field;
        PathElement element;
    };

    std::vector<Level> levels_;  // the line before and the sections around it
    PathElement remark_;
};

// A pattern of --match: elements of a path from its end, "*" inside one, "\/" for a slash in a name.
class PathPattern {
 public:
    explicit PathPattern(std::string_view pattern);
    bool matches(const std::vector<const PathElement *> &path) const;

 private:
    std::vector<std::string> elements_;
};
