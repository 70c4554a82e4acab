#include "common/bytes.h"

#include <algorithm>

Text text_at(Bytes b, uint64_t offset, uint64_t width) {
    const Bytes field = b.sub(offset, std::min<uint64_t>(width, INT32_MAX));
    uint64_t length = 0;
    while (length < field.size() && field[length] != 0) length++;
    if (length == 0) return {0, ""};
    return {static_cast<int>(length), reinterpret_cast<const char *>(field.span(0, length).data())};
}

bool contains(Bytes b, std::string_view text) {
    const auto bytes = b.span(0, b.size());
    const auto same = [](uint8_t byte, char c) { return byte == static_cast<uint8_t>(c); };
    return std::search(bytes.begin(), bytes.end(), text.begin(), text.end(), same) != bytes.end();
}

bool is_zero(Bytes b) {
    const auto bytes = b.span(0, b.size());
    return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}
