#include "mxf/registry.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "common/run.h"
#include "common/stream.h"
#include "mxf/dictionary.h"

namespace {

constexpr size_t kMaxString = 127;

struct mxf_label_node {
    const char *name;
    ValueKind kind;
};

using Guid = std::array<uint8_t, 16>;

struct Registration {
    mxf_guid_node node;
    FileRange key;  // the bytes of the set's key that name it
    FileRange uid;  // the item with its UID
};

struct Registry {
    std::map<uint32_t, mxf_label_node> plabels;  // the latest declaration of each tag
    std::set<std::string> pstrings;
    std::map<Guid, Registration> pguids;  // the latest of each UID
    int32_t guidcount = 0;
};

Registry &registry() { return Run::state<Registry>(); }

Guid guid_at(Bytes bytes) {
    Guid guid;
    for (size_t i = 0; i < guid.size(); i++) guid[i] = bytes[i];
    return guid;
}

}  // namespace

const char *mxffindlabel(DumpOptions &, uint32_t local_tag, ValueKind *kind) {
    mxf_label_node node{"unknown", ValueKind::unknown};
    const auto declared = registry().plabels.find(local_tag);
    if (declared != registry().plabels.end()) {
        node = declared->second;
    } else if (const rp210_entry *row = local_tag ? find_rp210_tag(local_tag) : nullptr) {
        node = {row->name, row->kind};
    }
    if (kind) *kind = node.kind;
    return node.name;
}

void mxfaddlabel(DumpOptions &, uint32_t local_tag, const char *name, ValueKind kind) {
    registry().plabels[local_tag] = {name, kind};
}

const char *addmxfstring(const char *text) {
    return registry().pstrings.emplace(text, strnlen(text, kMaxString)).first->c_str();
}

void mxf_guid_add(DumpOptions &opts, Bytes guid, uint64_t file_position, const char *name) {
    Registry &r = registry();
    const Guid key = guid_at(guid);
    mxf_guid_node node{};
    std::copy(key.begin(), key.end(), node.guid);
    char position[16] = "";
    if (!opts.mxf_flag_c) {
        std::snprintf(position, sizeof position, "%08x:", static_cast<uint32_t>(file_position));
    }
    if (name) {
        std::snprintf(node.text, sizeof node.text, "%s%s", position, name);
    } else {
        std::snprintf(node.text, sizeof node.text, "%sguid%d ", position, r.guidcount);
    }
    r.guidcount++;
    const FileRange uid = guid.file_range();
    r.pguids[key] = {node, {file_position + 13, 2}, {uid.offset - 4, 20}};
}

const mxf_guid_node *mxf_guid_find(DumpOptions &, Bytes guid) {
    const auto found = registry().pguids.find(guid_at(guid));
    if (found == registry().pguids.end()) return nullptr;
    also(found->second.key);
    also(found->second.uid);
    return &found->second.node;
}

const char *mxf_guid_string(DumpOptions &opts, Bytes guid) {
    const mxf_guid_node *node = mxf_guid_find(opts, guid);
    return node ? node->text : "unknown";
}

void mxffreedata() { registry() = Registry(); }
