#include "common/bytes.h"

#include <algorithm>

Text text_at(Bytes b, uint64_t offset, uint64_t width) {
    const Bytes field = b.sub(offset, std::min<uint64_t>(width, INT32_MAX));
    uint64_t length = 0;
    while (length < field.size() && field[length] != 0) length++;
    if (length == 0) return {0, ""};
    return {static_cast<int>(length), reinterpret_cast<const char *>(field.span(0, length).data())};
}
