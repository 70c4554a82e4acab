#include "common/utf16.h"

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool is_in(uint32_t unit, uint32_t first, uint32_t last) { return unit >= first && unit <= last; }

void append_utf8(std::string &out, uint32_t code) {
    const auto put = [&](uint32_t byte) { out += static_cast<char>(byte); };
    const auto put_rest = [&](uint32_t shift) { put(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put_rest(0);
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put_rest(6);
        put_rest(0);
    } else {
        put(0xF0 | code >> 18);
        put_rest(12);
        put_rest(6);
        put_rest(0);
    }
}

}  // namespace

std::string text_of_utf16(OrderedBytes text) {
    std::string out;
    for (uint64_t at = 0; text.bytes.has(at, 2); at += 2) {
        uint32_t code = text.u16(at);
        if (code == 0) break;
        if (is_in(code, 0xD800, 0xDBFF) && is_in(text.u16(at + 2), 0xDC00, 0xDFFF)) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text.u16(at + 2) - 0xDC00);
            at += 2;
        } else if (is_in(code, 0xD800, 0xDFFF)) {
            code = kReplacement;
        }
        append_utf8(out, code);
    }
    out.erase(out.find_last_not_of(" \t\r\n") + 1);
    return out;
}
