#include "common/bytes.h"

#include <algorithm>

Text text_at(Bytes b, uint64_t offset, uint64_t width) {
    const Bytes field = b.sub(offset, std::min<uint64_t>(width, INT32_MAX));
    uint64_t length = 0;
    while (length < field.size() && field[length] != 0) length++;
    if (length == 0) return {0, ""};
    return {static_cast<int>(length), reinterpret_cast<const char *>(field.span(0, length).data())};
}

namespace {

bool is_same(uint8_t byte, char c) { return byte == static_cast<uint8_t>(c); }

}  // namespace

bool begins_as(Bytes b, std::string_view text) {
    return b.size() >= text.size() && std::ranges::equal(b.span(0, text.size()), text, is_same);
}

uint64_t find_in(Bytes b, std::string_view text, uint64_t from) {
    const auto bytes = b.span(from, b.size());
    const auto found = std::search(bytes.begin(), bytes.end(), text.begin(), text.end(), is_same);
    return b.size() - static_cast<uint64_t>(bytes.end() - found);
}

uint64_t find_last_in(Bytes b, std::string_view text) {
    const auto bytes = b.span(0, b.size());
    return static_cast<uint64_t>(
        std::find_end(bytes.begin(), bytes.end(), text.begin(), text.end(), is_same) - bytes.begin());
}

bool is_zero(Bytes b) {
    const auto bytes = b.span(0, b.size());
    return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}
