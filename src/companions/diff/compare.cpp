#include "companions/diff/compare.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "companions/safe_text.h"

namespace {

using Nodes = std::vector<DumpNode>;
using Pairs = std::vector<std::pair<size_t, size_t>>;  // indexes that belong together, ascending

constexpr uint64_t kMostCells = 4'000'000;  // of a table of lengths; longer lists are aligned step by step
constexpr size_t kReach = 1000;             // how far such a step looks for the same label

bool same(const DumpNode &a, const DumpNode &b) { return a.label == b.label; }

// The longest common subsequence of [a, a_end) and [b, b_end).
void align_short(const Nodes &one, const Nodes &other, size_t a, size_t a_end, size_t b, size_t b_end,
                 Pairs &pairs) {
    const size_t rows = a_end - a;
    const size_t columns = b_end - b;
    std::vector<uint32_t> length((rows + 1) * (columns + 1), 0);
    const auto cell = [&](size_t i, size_t j) -> uint32_t & { return length[i * (columns + 1) + j]; };
    for (size_t i = rows; i-- > 0;) {
        for (size_t j = columns; j-- > 0;) {
            cell(i, j) = same(one[a + i], other[b + j]) ? cell(i + 1, j + 1) + 1
                                                        : std::max(cell(i + 1, j), cell(i, j + 1));
        }
    }
    for (size_t i = 0, j = 0; i < rows && j < columns;) {
        if (same(one[a + i], other[b + j])) {
            pairs.emplace_back(a + i++, b + j++);
        } else if (cell(i + 1, j) >= cell(i, j + 1)) {
            i++;
        } else {
            j++;
        }
    }
}

// Each line of one list with the next of the same label in the other, where there is one near.
void align_long(const Nodes &one, const Nodes &other, size_t a, size_t a_end, size_t b, size_t b_end,
                Pairs &pairs) {
    for (; a < a_end && b < b_end; a++) {
        const size_t reach = std::min(b_end, b + kReach);
        size_t found = b;
        while (found < reach && !same(one[a], other[found])) found++;
        if (found == reach) continue;
        pairs.emplace_back(a, found);
        b = found + 1;
    }
}

Pairs align(const Nodes &one, const Nodes &other) {
    Pairs pairs;
    size_t start = 0;
    size_t a = one.size();
    size_t b = other.size();
    while (start < std::min(a, b) && same(one[start], other[start])) {
        pairs.emplace_back(start, start);
        start++;
    }
    size_t tail = 0;
    while (a > start && b > start && same(one[a - 1], other[b - 1])) a--, b--, tail++;
    if (uint64_t{a - start + 1} * (b - start + 1) <= kMostCells) {
        align_short(one, other, start, a, start, b, pairs);
    } else {
        align_long(one, other, start, a, start, b, pairs);
    }
    for (; tail > 0; tail--) pairs.emplace_back(a++, b++);
    return pairs;
}

size_t line_count(const DumpNode &node) {
    size_t count = 1;
    for (const DumpNode &child : node.children) count += line_count(child);
    return count;
}

// The section below a line. The key of an MXF item goes without saying where it has a name, and so does a
// length with the items that it counts.
std::string section_below(const std::string &section, const DumpNode &node) {
    constexpr size_t kKey = 16 * 3 - 1;
    constexpr std::string_view kNamed = " - ";
    std::string_view label = node.label;
    if (label == "Length") return section;
    if (label.find(kNamed) == kKey) label.remove_prefix(kKey + kNamed.size());
    std::string title = safe_name(label);
    if (!node.value.empty()) title += " " + safe_name(node.value);
    return section.empty() ? title : section + " > " + title;
}

std::string shown(const std::string &value) { return value.empty() ? "(empty)" : safe_name(value); }

class Comparison {
 public:
    std::string run(const DumpNode &one, const DumpNode &other) {
        compare_lists(one.children, other.children, "");
        return std::move(text_);
    }

 private:
    void print(const std::string &section, const std::string &line) {
        if (section != section_ || text_.empty()) {
            if (!section.empty()) text_ += section + "\n";
            section_ = section;
        }
        if (!section.empty()) text_ += "  ";
        text_ += line;
        text_ += '\n';
    }

    void print_single(const std::string &section, char side, const DumpNode &node) {
        std::string line(1, side);
        line += " ";
        line += safe_name(node.label);
        if (!node.value.empty()) line += ": " + safe_name(node.value);
        const size_t below = line_count(node) - 1;
        if (below)
            line +=
                std::string(" (") + std::to_string(below) + (below == 1 ? " line below)" : " lines below)");
        print(section, line);
    }

    void compare_lists(const Nodes &one, const Nodes &other, const std::string &section) {
        size_t a = 0;
        size_t b = 0;
        const auto singles_to = [&](size_t a_end, size_t b_end) {
            for (; a < a_end; a++) print_single(section, '-', one[a]);
            for (; b < b_end; b++) print_single(section, '+', other[b]);
        };
        for (const auto &[i, j] : align(one, other)) {
            singles_to(i, j);
            compare(one[a++], other[b++], section);
        }
        singles_to(one.size(), other.size());
    }

    void compare(const DumpNode &one, const DumpNode &other, const std::string &section) {
        if (one.value != other.value) {
            print(section, safe_name(one.label) + ": " + shown(one.value) + " -> " + shown(other.value));
        }
        if (one.children.empty() && other.children.empty()) return;
        compare_lists(one.children, other.children, section_below(section, one));
    }

    std::string text_;
    std::string section_;
};

}  // namespace

std::string compare_dumps(const DumpNode &one, const DumpNode &other) { return Comparison().run(one, other); }
