#include "common/values.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "common/hexrow.h"
#include "common/print.h"
#include "common/run.h"

namespace {

constexpr uint32_t kBuffers = 16;
constexpr uint32_t kBufferSize = 8192;

struct Ring {
    char buffers[kBuffers][kBufferSize];
    Piece values[kBuffers];  // what the texts stand for
    uint32_t position = 0;
};

const char *empty_text() {
    char *text = get_buffer();
    text[0] = '\0';
    ring_holds({.kind = Piece::unset});
    return text;
}

const char *decimal_text(int32_t value) {
    char *text = get_buffer();
    *std::to_chars(text, text + kBufferSize, value).ptr = '\0';
    ring_holds(integer_piece(value));
    return text;
}

const char *real_text(float value) {
    char *text = get_buffer();
    std::snprintf(text, kBufferSize, "%g", static_cast<double>(value));
    ring_holds({.kind = Piece::real, .value = static_cast<double>(value)});
    return text;
}

}  // namespace

char *get_buffer(uint32_t *size) {
    Ring &ring = Run::state<Ring>();
    ring.position = ring.position + 1 < kBuffers ? ring.position + 1 : 0;
    ring.values[ring.position] = {.kind = Piece::text};
    if (size) *size = kBufferSize;
    return ring.buffers[ring.position];
}

void ring_holds(const Piece &value) {
    Ring &ring = Run::state<Ring>();
    ring.values[ring.position] = value;
}

Piece ring_value(const char *text) {
    const Ring &ring = Run::state<Ring>();
    for (uint32_t i = 0; i < kBuffers; i++) {
        if (text == ring.buffers[i]) return ring.values[i];
    }
    return {.kind = Piece::text};
}

const char *checkuint8(uint32_t value) {
    return (value & 0xFF) == 0xFF ? empty_text() : decimal_text(static_cast<int32_t>(value & 0xFF));
}

const char *checkuint16(uint32_t value) {
    return (value & 0xFFFF) == 0xFFFF ? empty_text() : decimal_text(static_cast<int32_t>(value & 0xFFFF));
}

const char *checkuint32(uint32_t value, int hex) {
    if (value == 0xFFFFFFFF) return empty_text();
    if (!hex) return decimal_text(static_cast<int32_t>(value));
    char *text = get_buffer();
    char *end = text;
    for (int shift = 24; shift >= 0; shift -= 8) end = write_hex(end, static_cast<uint8_t>(value >> shift));
    *end = '\0';
    ring_holds({.kind = Piece::hexadecimal, .number = value});
    return text;
}

const char *checkreal(float value) {
    if (std::bit_cast<uint32_t>(value) == 0xFFFFFFFF) return empty_text();
    if (!std::isnan(value)) return real_text(value);
    char *text = get_buffer();
    std::strcpy(text, "#NAN (Invalid Value)");
    return text;
}

const char *cineonreal(float value) {
    return std::bit_cast<uint32_t>(value) == 0x7F800000 ? empty_text() : real_text(value);
}

const char *checkascii(Bytes field, unsigned width) {
    if (field[0] == 0) return empty_text();
    char *text = get_buffer();
    if (field[0] == 0xFF) {
        std::strcpy(text, "Error, 0xff in ascii data");
        return text;
    }
    const Text found = text_at(field, 0, width);
    std::snprintf(text, kBufferSize, "'%.*s'", found.length, found.start);
    return text;
}

const char *printable_text(Bytes b, uint64_t most, char other) {
    char *text = get_buffer();
    size_t n = 0;
    for (const uint8_t byte : b.span(0, std::min<uint64_t>(most, kBufferSize - 1))) {
        if (byte == 0) break;
        text[n++] = is_printable(byte) ? static_cast<char>(byte) : other;
    }
    text[n] = '\0';
    return text;
}

const char *clock_text(int hours, int minutes, int seconds) {
    char *text = get_buffer();
    std::snprintf(text, kBufferSize, "%02d:%02d:%02d", hours, minutes, seconds);
    return text;
}

void getstring(char *text, uint32_t n, Bytes source) {
    uint32_t i = 0;
    for (; i < n && source[i]; i++) text[i] = static_cast<char>(source[i]);
    for (; i < n; i++) text[i] = ' ';
    text[n] = '\0';
}

uint64_t print_text(Bytes b, uint64_t offset) {
    constexpr int kStep = 64 * 1024;
    uint64_t printed = 0;
    Text text;
    do {
        text = text_at(b.from(offset), printed, kStep);
        standard_output.write({text.start, static_cast<size_t>(text.length)});
        printed += static_cast<uint64_t>(text.length);
    } while (text.length == kStep);
    return printed;
}

void swap16(uint16_t *value) { *value = static_cast<uint16_t>(*value >> 8 | *value << 8); }
void swap32(uint32_t *value) { *value = __builtin_bswap32(*value); }

uint16_t get_uint16(Bytes b) { return little16(b); }
uint32_t get_uint32(Bytes b) { return little32(b); }
uint16_t tiffuint16(Bytes b, int swap) { return swap ? big16(b) : little16(b); }
uint32_t tiffuint32(Bytes b, int swap) { return swap ? big32(b) : little32(b); }
float float_of_bits(uint32_t bits) { return std::bit_cast<float>(bits); }
double double_of_bits(uint64_t bits) { return std::bit_cast<double>(bits); }

char tiffchar(uint32_t byte) { return is_printable(byte) ? static_cast<char>(byte) : '.'; }
int littleendian() { return std::endian::native == std::endian::little; }
