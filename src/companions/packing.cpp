#include "companions/packing.h"

#include <algorithm>
#include <charconv>
#include <cstring>

void put_text(std::string &out, std::string_view text) {
    const uint32_t size = static_cast<uint32_t>(text.size());
    out.append(reinterpret_cast<const char *>(&size), sizeof size);
    out += text;
}

std::string take_text(std::string_view &packed) {
    uint32_t size = 0;
    if (packed.size() < sizeof size) return "";
    std::memcpy(&size, packed.data(), sizeof size);
    std::string taken(packed.substr(sizeof size, size));
    packed.remove_prefix(std::min(packed.size(), sizeof size + size));
    return taken;
}

void put_pairs(std::string &out, const TextPairs &pairs) {
    put_text(out, std::to_string(pairs.size()));
    for (const auto &[name, value] : pairs) {
        put_text(out, name);
        put_text(out, value);
    }
}

TextPairs take_pairs(std::string_view &packed) {
    const std::string count = take_text(packed);
    size_t left = 0;
    std::from_chars(count.data(), count.data() + count.size(), left);
    TextPairs pairs;
    for (; left > 0 && !packed.empty(); left--) {
        std::string name = take_text(packed);
        pairs.emplace_back(std::move(name), take_text(packed));
    }
    return pairs;
}
