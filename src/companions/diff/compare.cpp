#include "companions/diff/compare.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include "companions/diff/rules.h"
#include "companions/table/row.h"

namespace {

using Nodes = std::vector<FieldNode>;
constexpr size_t kNone = SIZE_MAX;

uint64_t key_of(const FieldNode &node) { return uint64_t{node.name} << 32 | node.kind; }

// For each node of the first list its place in the second, or kNone.
class Matching {
 public:
    Matching(const Nodes &one, const Nodes &other, uint32_t parent, const TextPool &pool)
        : pairs(one.size(), kNone), taken(other.size(), false) {
        std::unordered_map<uint64_t, std::vector<size_t>> places[2];
        std::vector<uint64_t> order;
        for (size_t i = 0; i < one.size(); i++) {
            std::vector<size_t> &list = places[0][key_of(one[i])];
            if (list.empty()) order.push_back(key_of(one[i]));
            list.push_back(i);
        }
        for (size_t i = 0; i < other.size(); i++) places[1][key_of(other[i])].push_back(i);
        for (const uint64_t key : order) align(one, other, places[0][key], places[1][key]);
        match_descriptions(one, other, parent, pool);
    }

    std::vector<size_t> pairs;
    std::vector<bool> taken;  // of the second list

 private:
    void pair(size_t i, size_t j) {
        pairs[i] = j;
        taken[j] = true;
    }

    // Of as many in order; else those that are the same hold the others in place.
    void align(const Nodes &one, const Nodes &other, const std::vector<size_t> &a,
               const std::vector<size_t> &b) {
        size_t next = 0;
        size_t begin = 0;
        const auto in_order = [&](size_t a_end, size_t b_end) {
            for (; begin < a_end && next < b_end; begin++, next++) pair(a[begin], b[next]);
        };
        if (a.size() != b.size()) {
            for (size_t i = 0; i < a.size(); i++) {
                size_t j = next;
                while (j < b.size() && !same_fields(one[a[i]], other[b[j]])) j++;
                if (j == b.size()) continue;
                in_order(i, j);
                pair(a[i], b[j]);
                begin = i + 1;
                next = j + 1;
            }
        }
        in_order(a.size(), b.size());
    }

    // Another codec's description is that of the same track.
    void match_descriptions(const Nodes &one, const Nodes &other, uint32_t parent, const TextPool &pool) {
        const bool all = pool.text(parent) == "stsd";
        const auto describes = [&](const FieldNode &node) {
            const std::string_view name = pool.text(node.name);
            return node.is_section() &&
                   (all || (name.ends_with("Descriptor") && name != "MultipleDescriptor"));
        };
        size_t j = 0;
        for (size_t i = 0; i < one.size(); i++) {
            if (pairs[i] != kNone || !describes(one[i])) continue;
            while (j < other.size() && (taken[j] || !describes(other[j]))) j++;
            if (j < other.size()) pair(i, j);
        }
    }
};

class Comparison {
 public:
    Comparison(const TextPool &pool, const CompareOptions &options, const ToldTimecodes &told,
               DifferenceTaker &taker)
        : pool_(pool), options_(options), told_(told), taker_(taker) {}

    void run(const FieldNode &one, const FieldNode &other) { sections(one, other); }

 private:
    std::string text(uint32_t number) const { return std::string(pool_.text(number)); }

    void give(Difference difference) {
        difference.section = path_;
        // Lines without a label are their section's value.
        if (difference.field.empty() && !difference.section.empty()) {
            difference.field = difference.section.back();
            difference.section.pop_back();
        }
        if (difference.field.empty() && difference.kind != Difference::counted) difference.field = "text";
        if (comes_again() && is_repeated(difference)) return;
        taker_.take(difference);
    }

    void changed(const std::string &label, const std::string &one, const std::string &other,
                 uint32_t line_one = 0, uint32_t line_other = 0,
                 Difference::Kind kind = Difference::changed) {
        Difference difference;
        difference.kind = kind;
        difference.lines[0] = line_one;
        difference.lines[1] = line_other;
        difference.field = label;
        difference.one = one;
        difference.other = other;
        give(std::move(difference));
    }

    // Structures that come again in a file (partitions, maps) differ as they did before.
    bool is_repeated(const Difference &difference) {
        const auto once = [](const std::string &name) {
            return name.starts_with("MXF Partition") ? std::string("partition") : name;
        };
        std::string key = std::to_string(difference.kind) + once(difference.field) + '\0' + difference.one +
                          '\0' + difference.other + '\0' + difference.of;
        for (const std::string &name : difference.section) key += '\0' + once(name);
        if (seen_.size() < kMostSeen) return !seen_.insert(std::move(key)).second;
        return seen_.contains(key);
    }

    void single(Difference::Kind kind, const FieldNode &node) {
        std::string name = text(node.name);
        if (node.kind) name += (name.empty() ? "" : " ") + text(node.kind);
        Difference difference;
        difference.kind = kind;
        difference.field = name;
        std::string value = text(node.value);
        if (value.empty() && node.children.size() == 1 && node.groups.empty() && node.children[0].name == 0) {
            value = text(node.children[0].value);  // the one value of an item
        } else {
            difference.below = field_count(node);
        }
        (kind == Difference::only_one ? difference.one : difference.other) = value;
        difference.lines[kind == Difference::only_one ? 0 : 1] = node.line;
        give(difference);
    }

    void sections(const FieldNode &one, const FieldNode &other) {
        const Matching matching(one.children, other.children, one.name, pool_);
        for (const bool inner : {false, true}) {
            for (size_t i = 0; i < one.children.size(); i++) {
                const FieldNode &a = one.children[i];
                const size_t j = matching.pairs[i];
                if (j == kNone) {
                    if (!inner) single(Difference::only_one, a);
                } else if (const FieldNode &b = other.children[j]; inner) {
                    if (a.is_section() || b.is_section()) inside(one, i, a, b);
                } else {
                    field(a, b);
                }
            }
            if (inner) break;
            for (size_t j = 0; j < other.children.size(); j++) {
                if (!matching.taken[j]) single(Difference::only_other, other.children[j]);
            }
            groups(one, other);
        }
    }

    void field(const FieldNode &a, const FieldNode &b) {
        if (a.name != b.name) {  // descriptions
            changed("description", text(a.name), text(b.name), a.line, b.line);
        }
        if (a.value == b.value) {
            if (options_.same && (a.value || !(a.is_section() || b.is_section())))
                changed(text(a.name), text(a.value), text(b.value), a.line, b.line, Difference::same);
            return;
        }
        const std::string label = a.name || path_.empty() ? text(a.name) : names_.back();
        const std::string one = text(a.value);
        const std::string other = text(b.value);
        if (!options_.everything && told_.has_told(label, one, other)) return;
        changed(text(a.name), one, other, a.line, b.line);
    }

    void inside(const FieldNode &parent, size_t place, const FieldNode &a, const FieldNode &b) {
        // A set with one item more has its tag there, too.
        const bool is_primer = options_.format == "MXF" && text(a.name) == "MXF Primer Pack";
        if (is_primer && !options_.everything && a.children.size() != b.children.size()) return;
        if ((!options_.same && same_fields(a, b)) || (a.name != b.name && !have_common(a, b))) return;
        const bool is_shown = a.name != 0 && !is_hidden(a);
        const size_t ordinal = ordinal_of(parent.children, place);
        if (is_shown) {
            std::string name = text(a.name);
            if (a.name != b.name) name = text(b.name);
            if (a.kind && (a.is_section())) name += " " + text(a.kind);
            if (ordinal > 0 && !(path_.empty() && comes_again())) name += " " + std::to_string(ordinal);
            path_.push_back(name);
            names_.push_back(text(a.name));
        }
        sections(a, b);
        if (is_shown) {
            path_.pop_back();
            names_.pop_back();
        }
    }

    // Whether two descriptions have fields to compare: of some codecs there is a hex dump only.
    static bool have_common(const FieldNode &a, const FieldNode &b) {
        return std::ranges::any_of(a.children, [&](const FieldNode &field) {
            return field.name && field.value && b.child(field.name);
        });
    }

    // Formats whose outermost structures stand there several times.
    bool comes_again() const {
        return !options_.everything && (options_.format == "MXF" || options_.format == "GXF");
    }

    // What stands around the packages of any MXF file.
    bool is_hidden(const FieldNode &node) const {
        if (options_.format != "MXF") return false;
        const std::string_view name = pool_.text(node.name);
        return name == "Preface" || name == "ContentStorage";
    }

    // Its number among those of its name; 0 where there is one only.
    static size_t ordinal_of(const Nodes &nodes, size_t place) {
        size_t ordinal = 0;
        size_t count = 0;
        for (size_t i = 0; i < nodes.size(); i++) {
            if (key_of(nodes[i]) != key_of(nodes[place]) || !nodes[i].is_section()) continue;
            count++;
            if (i <= place) ordinal = count;
        }
        return count > 1 ? ordinal : 0;
    }

    // Groups of one name and kind belong together, then those that are called alike.
    void groups(const FieldNode &one, const FieldNode &other) {
        std::vector<size_t> pairs(one.groups.size(), kNone);
        std::vector<bool> taken(other.groups.size(), false);
        for (const bool exactly : {true, false}) {
            for (size_t i = 0; i < pairs.size(); i++) {
                for (size_t j = 0; j < taken.size() && pairs[i] == kNone; j++) {
                    const Group &a = one.groups[i];
                    const Group &b = other.groups[j];
                    const bool same =
                        exactly ? a.name == b.name && a.kind == b.kind : called(a, 2) == called(b, 2);
                    if (taken[j] || !same) continue;
                    pairs[i] = j;
                    taken[j] = true;
                }
            }
        }
        for (size_t i = 0; i < pairs.size(); i++) {
            if (pairs[i] == kNone) {
                lone_group(Difference::only_one, one.groups[i]);
            } else {
                group(one.groups[i], other.groups[pairs[i]]);
            }
        }
        for (size_t j = 0; j < taken.size(); j++) {
            if (!taken[j]) lone_group(Difference::only_other, other.groups[j]);
        }
    }

    std::string called(const Group &group, uint64_t count) const {
        return counted_name(options_.format, text(group.name), text(group.kind), count);
    }

    void lone_group(Difference::Kind kind, const Group &group) {
        Difference difference;
        difference.kind = kind;
        difference.field = grouped(group.count) + " " + called(group, group.count);
        difference.lines[kind == Difference::only_one ? 0 : 1] = line_of(group);
        give(difference);
    }

    static uint32_t line_of(const Group &group) {
        return group.columns.empty() || group.columns[0].runs.empty() ? 0 : group.columns[0].runs[0].line;
    }

    void group(const Group &a, const Group &b) {
        if (a.count != b.count && (a.name || options_.format != "QuickTime"))
            changed("number of " + called(a, 2), grouped(a.count), grouped(b.count), line_of(a), line_of(b));
        if (options_.same && a.count == b.count && a.name)
            changed("number of " + called(a, 2), grouped(a.count), grouped(b.count), line_of(a), line_of(b),
                    Difference::same);
        const uint64_t count = std::min(a.count, b.count);
        for (const FieldColumn &column : a.columns) {
            const auto same = std::ranges::find(b.columns, column.name, &FieldColumn::name);
            if (same != b.columns.end()) {
                column_of(a, column, *same, count);
            } else {
                lone_column(Difference::only_one, a, column);
            }
        }
        for (const FieldColumn &column : b.columns) {
            if (std::ranges::find(a.columns, column.name, &FieldColumn::name) == a.columns.end())
                lone_column(Difference::only_other, b, column);
        }
    }

    void lone_column(Difference::Kind kind, const Group &group, const FieldColumn &column) {
        Difference difference;
        difference.kind = kind;
        difference.field = label_of(column) + " of " + grouped(column.runs.size() ? filled(column) : 0) +
                           " " + called(group, column.runs.size());
        (kind == Difference::only_one ? difference.one : difference.other) = text(column.runs.front().value);
        difference.lines[kind == Difference::only_one ? 0 : 1] = column.runs.front().line;
        give(difference);
    }

    static uint64_t filled(const FieldColumn &column) {
        uint64_t count = 0;
        for (const FieldColumn::Run &run : column.runs) count += run.count;
        return count;
    }

    // The last label, in small letters where it is a plain word.
    std::string label_of(const FieldColumn &column) const {
        std::string label = text(column.name);
        const size_t slash = label.rfind('/');
        if (slash != std::string::npos && slash + 1 < label.size()) label.erase(0, slash + 1);
        const bool plain = std::ranges::all_of(label.substr(std::min<size_t>(1, label.size())),
                                               [](char c) { return c >= 'a' && c <= 'z'; });
        if (plain && !label.empty() && label[0] >= 'A' && label[0] <= 'Z')
            label[0] = static_cast<char>(label[0] + 32);
        return label;
    }

    // What a walk along both columns finds.
    struct Found {
        uint64_t differ = 0;
        uint64_t first = 0;
        uint32_t one = 0;
        uint32_t other = 0;
        uint32_t lines[2] = {0, 0};
        bool constant = true;  // each side has one value where they differ
        bool told = true;
    };

    void column_of(const Group &group, const FieldColumn &a, const FieldColumn &b, uint64_t count) {
        std::string label = label_of(a);
        if (label.empty() && group.name && options_.format == "MXF") label = "key";
        Found found;
        size_t i = 0;
        size_t j = 0;
        for (uint64_t at = 0; at < count;) {
            while (i < a.runs.size() && a.runs[i].first + a.runs[i].count <= at) i++;
            while (j < b.runs.size() && b.runs[j].first + b.runs[j].count <= at) j++;
            uint64_t end = count;
            const uint32_t one = value_at(a, i, at, end);
            const uint32_t other = value_at(b, j, at, end);
            if (one != other) {
                if (found.differ == 0) {
                    found.first = at;
                    found.one = one;
                    found.other = other;
                    found.lines[0] = line_at(a, i, at);
                    found.lines[1] = line_at(b, j, at);
                }
                found.constant = found.constant && one == found.one && other == found.other;
                if (found.differ == 0 || end == count)
                    found.told = found.told && told_.has_told(label, text(one), text(other));
                if (options_.everything) {
                    for (uint64_t n = at; n < end; n++)
                        changed(called(group, 2) + "[" + std::to_string(n) + "]" +
                                    (label.empty() ? "" : " " + label),
                                text(one), text(other), line_at(a, i, n), line_at(b, j, n));
                }
                found.differ += end - at;
            }
            at = end;
        }
        if (found.differ == 0 || options_.everything) return;
        if (found.told && found.differ == count) return;
        give_found(group, label, found, count);
    }

    // The value at a place, and in `end` how far it reaches at most.
    static uint32_t value_at(const FieldColumn &column, size_t run, uint64_t at, uint64_t &end) {
        if (run == column.runs.size()) return 0;
        const FieldColumn::Run &here = column.runs[run];
        if (here.first > at) {
            end = std::min(end, here.first);
            return 0;
        }
        end = std::min(end, here.first + here.count);
        return here.value;
    }

    // Of a run of one value its first line is known.
    static uint32_t line_at(const FieldColumn &column, size_t run, uint64_t at) {
        return run < column.runs.size() && column.runs[run].first <= at ? column.runs[run].line : 0;
    }

    void give_found(const Group &group, const std::string &label, const Found &found, uint64_t count) {
        Difference difference;
        if (count == 1 && group.count == 1) {
            difference.field = label.empty() ? called(group, 1) : label;
        } else {
            difference.kind = Difference::counted;
            difference.field = label;
            difference.of = grouped(count) + " " + called(group, count);
            if (found.differ < count) difference.of.insert(0, grouped(found.differ) + " of ");
            difference.first = found.first;
            difference.differ = found.differ;
            difference.count = count;
            difference.below = found.constant ? 0 : 1;
        }
        difference.one = text(found.one);
        difference.other = text(found.other);
        std::ranges::copy(found.lines, difference.lines);
        give(difference);
    }

    static constexpr size_t kMostSeen = 100'000;

    const TextPool &pool_;
    const CompareOptions &options_;
    const ToldTimecodes &told_;
    DifferenceTaker &taker_;
    std::vector<std::string> path_;
    std::vector<std::string> names_;  // the same without kinds and numbers
    std::set<std::string> seen_;
};

}  // namespace

void compare_trees(const FieldNode &one, const FieldNode &other, const TextPool &pool,
                   const CompareOptions &options, const ToldTimecodes &told, DifferenceTaker &taker) {
    Comparison(pool, options, told, taker).run(one, other);
}
