#include "companions/diff/tree.h"

#include <algorithm>
#include <functional>

namespace {

constexpr size_t kMostTexts = 1'000'000;
constexpr size_t kMostColumns = 1000;  // of a group; what other names have stands in the last one
constexpr size_t kMostGroups = 1000;   // of a section; other kinds count together
constexpr uint32_t kHashed = 0x80000000;

bool same_runs(const FieldColumn &one, const FieldColumn &other) {
    return one.name == other.name &&
           std::ranges::equal(one.runs, other.runs, [](const FieldColumn::Run &a, const FieldColumn::Run &b) {
               return a.first == b.first && a.count == b.count && a.value == b.value;
           });
}

bool same_group(const Group &one, const Group &other) {
    return one.name == other.name && one.kind == other.kind && one.count == other.count &&
           std::ranges::equal(one.columns, other.columns, same_runs);
}

// The fields below a node as columns: the labels from there, the second of a name as "name 2".
void add_fields(Group &group, const FieldNode &node, const std::string &path, TextPool &pool) {
    std::vector<uint32_t> names;
    for (const FieldNode &child : node.children) {
        std::string name(pool.text(child.name));
        const auto earlier = std::ranges::count(names, child.name);
        names.push_back(child.name);
        if (earlier > 0) name += " " + std::to_string(earlier + 1);
        if (!path.empty() && !name.empty()) name.insert(0, "/").insert(0, path);
        if (name.empty()) name = path;
        if (child.value || !child.is_section()) {
            group.column(pool.number(name)).add(group.count, child.value, child.line);
        }
        add_fields(group, child, name, pool);
    }
    for (const Group &rows : node.groups) {
        for (const FieldColumn &column : rows.columns) {
            // A table in every frame: its first value stands for it.
            const std::string name = path + "/" + std::string(pool.text(column.name));
            group.column(pool.number(name))
                .add(group.count, column.runs.front().value, column.runs.front().line);
        }
    }
}

}  // namespace

uint32_t TextPool::number(std::string_view text) {
    const auto found = numbers_.find(text);
    if (found != numbers_.end()) return found->second;
    if (texts_.size() >= kMostTexts)
        return kHashed | static_cast<uint32_t>(std::hash<std::string_view>{}(text) & (kHashed - 1));
    texts_.emplace_back(text);
    const uint32_t number = static_cast<uint32_t>(texts_.size() - 1);
    numbers_.emplace(texts_.back(), number);
    return number;
}

std::string_view TextPool::text(uint32_t number) const {
    return number & kHashed ? std::string_view("...") : std::string_view(texts_[number]);
}

void FieldColumn::add(uint64_t place, uint32_t value, uint32_t line) {
    if (place < count()) return;
    if (!runs.empty() && runs.back().value == value && runs.back().first + runs.back().count == place) {
        runs.back().count++;
    } else {
        runs.push_back({place, 1, value, line});
    }
}

FieldColumn &Group::column(uint32_t column_name) {
    const auto found = std::ranges::find(columns, column_name, &FieldColumn::name);
    if (found != columns.end()) return *found;
    if (columns.size() == kMostColumns) return columns.back();
    columns.push_back({column_name, {}});
    return columns.back();
}

const FieldNode *FieldNode::child(uint32_t child_name) const {
    const auto found = std::ranges::find(children, child_name, &FieldNode::name);
    return found == children.end() ? nullptr : &*found;
}

bool same_fields(const FieldNode &one, const FieldNode &other) {
    return one.name == other.name && one.kind == other.kind && one.value == other.value &&
           std::ranges::equal(one.children, other.children, same_fields) &&
           std::ranges::equal(one.groups, other.groups, same_group);
}

uint64_t field_count(const FieldNode &node) {
    uint64_t count = node.groups.size();
    for (const FieldNode &child : node.children) count += 1 + field_count(child);
    return count;
}

void take_values(FieldNode &node, TextPool &pool) {
    const auto is_plain = [](const FieldNode &child) { return child.name == 0 && !child.is_section(); };
    if (node.children.empty() || !std::ranges::all_of(node.children, is_plain)) return;
    if (!node.value) node.line = node.children.front().line;
    std::string value(pool.text(node.value));
    for (const FieldNode &child : node.children) {
        value += value.empty() ? "" : " ";
        value += pool.text(child.value);
    }
    node.value = pool.number(value);
    node.children.clear();
}

void fold(FieldNode &into, const FieldNode &node, TextPool &pool) {
    const uint32_t kind = into.groups.size() < kMostGroups ? node.kind : 0;
    const auto is_same = [&](const Group &g) { return g.name == node.name && g.kind == kind; };
    auto group = std::ranges::find_if(into.groups, is_same);
    if (group == into.groups.end()) {
        into.groups.push_back({node.name, kind, 0, {}});
        group = into.groups.end() - 1;
    }
    if (node.value) group->column(0).add(group->count, node.value, node.line);
    add_fields(*group, node, "", pool);
    group->count++;
}
