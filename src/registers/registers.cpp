#include "registers/registers.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "registers/arrays.h"

namespace {

using Label = std::array<uint8_t, 16>;

const RegisterEntry *find_in(std::span<const RegisterEntry> entries, const Label &label) {
    const auto less = [](const RegisterEntry &entry, const Label &key) {
        return std::memcmp(entry.label, key.data(), key.size()) < 0;
    };
    const auto found = std::lower_bound(entries.begin(), entries.end(), label, less);
    const bool same = found != entries.end() && std::memcmp(found->label, label.data(), label.size()) == 0;
    return same ? &*found : nullptr;
}

}  // namespace

const RegisterEntry *find_register_entry(std::span<const uint8_t> bytes) {
    Label label;
    if (bytes.size() < label.size()) return nullptr;
    std::copy_n(bytes.begin(), label.size(), label.begin());
    label[1] = 0x0E;
    label[7] = 0;
    switch (label[4]) {
        case 1: return find_in({register_elements, register_elements_count}, label);
        case 2: label[5] = 0; return find_in({register_groups, register_groups_count}, label);
        case 4: return find_in({register_labels, register_labels_count}, label);
        default: return nullptr;
    }
}

const RegisterType *find_register_type(std::string_view symbol) {
    const std::span types(register_types, register_types_count);
    const auto less = [](const RegisterType &type, std::string_view key) { return type.symbol < key; };
    const auto found = std::lower_bound(types.begin(), types.end(), symbol, less);
    return found != types.end() && found->symbol == symbol ? &*found : nullptr;
}
