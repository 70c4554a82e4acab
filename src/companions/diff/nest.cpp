#include <algorithm>
#include <map>

#include "companions/diff/build.h"

namespace {

constexpr size_t kMostLevels = 64;

// The sets of a partition.
class Sets {
 public:
    Sets(std::vector<FieldNode> &nodes, size_t first, size_t end, TextPool &pool)
        : nodes_(nodes), end_(end), first_(first), pool_(pool), taken_(end - first, false) {
        guid_ = pool.number("GUID");
        for (size_t i = first; i < end; i++) {
            const FieldNode *item = nodes[i].child(guid_);
            if (item && !item->children.empty() && item->children.front().kind)
                places_.try_emplace(item->children.front().kind, i);
        }
    }

    // Sets that no other refers to, with those below them.
    std::vector<FieldNode> nested() {
        std::vector<bool> referred(end_ - first_, false);
        for (size_t i = first_; i < end_; i++) {
            std::vector<uint32_t> targets;
            references(nodes_[i], targets);
            for (const uint32_t target : targets) {
                const auto place = places_.find(target);
                if (place != places_.end() && place->second != i) referred[place->second - first_] = true;
            }
        }
        std::vector<FieldNode> result;
        for (const bool rest : {false, true}) {  // the rest are circles
            for (size_t i = first_; i < end_; i++) {
                if (taken_[i - first_] || (!rest && referred[i - first_])) continue;
                result.push_back(taken(i, 0));
            }
        }
        return result;
    }

 private:
    void references(const FieldNode &node, std::vector<uint32_t> &targets) const {
        for (const FieldNode &child : node.children) {
            if (child.kind && pool_.text(child.name) == "StrongReference") targets.push_back(child.kind);
            references(child, targets);
        }
    }

    FieldNode taken(size_t place, size_t level) {
        taken_[place - first_] = true;
        FieldNode node = std::move(nodes_[place]);
        std::vector<FieldNode> below;
        for (FieldNode &item : node.children) {
            std::vector<uint32_t> targets;
            references(item, targets);
            for (const uint32_t target : targets) {
                const auto found = places_.find(target);
                if (found == places_.end() || taken_[found->second - first_] || level == kMostLevels)
                    continue;
                FieldNode set = taken(found->second, level + 1);
                lift_descriptors(set, below);
                below.push_back(std::move(set));
            }
        }
        for (FieldNode &set : below) node.children.push_back(std::move(set));
        node.kind = track_kind(node);
        return node;
    }

    // The descriptors of several tracks stand beside what holds them, as that of a single one does.
    void lift_descriptors(FieldNode &set, std::vector<FieldNode> &to) const {
        if (pool_.text(set.name) != "MultipleDescriptor") return;
        const auto is_descriptor = [&](const FieldNode &child) {
            return pool_.text(child.name).ends_with("Descriptor");
        };
        for (FieldNode &child : set.children) {
            if (is_descriptor(child)) to.push_back(child);
        }
        std::erase_if(set.children, is_descriptor);
    }

    // What a track carries is said by its sequence and its clips.
    uint32_t track_kind(const FieldNode &node) const {
        if (pool_.text(node.name).ends_with("Track")) {
            for (const FieldNode &child : node.children) {
                if (const uint32_t kind = carried(child)) return kind;
            }
        }
        return 0;
    }
    uint32_t carried(const FieldNode &node) const {
        for (const FieldNode &item : node.children) {
            if (pool_.text(item.name) != "Component Data Definition") continue;
            for (const FieldNode &value : item.children) {
                for (const FieldNode &name : value.children) {
                    if (name.value) return name.value;
                }
                if (value.value) return value.value;
            }
        }
        return 0;
    }

    std::vector<FieldNode> &nodes_;
    const size_t end_;
    const size_t first_;
    TextPool &pool_;
    std::vector<bool> taken_;
    uint32_t guid_ = 0;
    std::map<uint32_t, size_t> places_;  // of sets, by their identifiers
};

// Identifiers and references have done their work; what is left without name and value says nothing.
void finish_items(FieldNode &node, bool everything, TextPool &pool) {
    for (FieldNode &child : node.children) finish_items(child, everything, pool);
    std::erase_if(node.children, [&](FieldNode &child) {
        const std::string_view name = pool.text(child.name);
        const bool links = name == "StrongReference" || name == "GUID";
        const bool was_link = links && (child.kind != 0 || (child.value == 0 && !child.is_section()));
        if (links) child.kind = 0;
        if (everything) return false;
        const bool says_nothing = child.value == 0 && (child.is_left_out || child.name == 0);
        return was_link || (says_nothing && !child.is_section());
    });
    take_values(node, pool);
}

}  // namespace

void nest_sets(FieldNode &root, bool everything, TextPool &pool) {
    std::vector<FieldNode> result;
    std::vector<FieldNode> &nodes = root.children;
    const auto is_pack = [&](const FieldNode &node) {
        return pool.text(node.name).find("Partition") != std::string_view::npos;
    };
    for (size_t first = 0; first < nodes.size();) {
        size_t end = first;
        while (end < nodes.size() && !is_pack(nodes[end])) end++;
        for (FieldNode &node : Sets(nodes, first, end, pool).nested()) result.push_back(std::move(node));
        if (end < nodes.size()) result.push_back(std::move(nodes[end++]));
        first = end;
    }
    root.children = std::move(result);
    finish_items(root, everything, pool);
}
