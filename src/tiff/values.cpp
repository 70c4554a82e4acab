#include <charconv>
#include <cstdio>

#include "common/values.h"
#include "tiff/directory.h"

namespace {

// Field types of TIFF 6.0.
enum Type : uint32_t {
    kByte = 1,
    kAscii = 2,
    kShort = 3,
    kLong = 4,
    kRational = 5,
    kSByte = 6,
    kUndefined = 7,
    kSShort = 8,
    kSLong = 9,
    kSRational = 10,
    kFloat = 11,
    kDouble = 12,
};

constexpr uint64_t kTypeSizes[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
constexpr uint64_t kFieldSize = 4;  // values up to here lie in the entry itself
constexpr int kReserve = 256;       // of the print buffer, kept for the last element
constexpr int kNoteReserve = 32;    // of the print buffer, kept for the note of a cut

uint64_t type_size(uint32_t type) { return type <= kDouble ? kTypeSizes[type] : 1; }

// Text in a print buffer.
struct ValueText {
    char *text;
    int size;
    int length = 0;

    int room() const { return size - length; }
    bool is_full() const { return room() <= kReserve; }
};

void append_ratio(ValueText &out, double numerator, double denominator) {
    char *p = out.text + out.length;
    const size_t room = static_cast<size_t>(out.room());
    out.length += denominator == 0 ? std::snprintf(p, room, "NAN ")
                                   : std::snprintf(p, room, "%1.5f ", numerator / denominator);
}

// An element always fits: a value ends when no more than the reserve is left.
void append_decimal(ValueText &out, uint32_t value) {
    char *p = out.text + out.length;
    char *end = std::to_chars(p, p + out.room(), static_cast<int32_t>(value)).ptr;
    *end++ = ' ';
    *end = '\0';
    out.length += static_cast<int>(end - p);
}

// Appends one element and returns it as a number, 0 for the types without one.
uint32_t append_element(ValueText &out, uint32_t type, OrderedBytes element) {
    char *p = out.text + out.length;
    const size_t room = static_cast<size_t>(out.room());
    uint32_t value = 0;
    switch (type) {
        case kByte:
            value = element.u8(0);
            append_decimal(out, value);
            break;
        case kShort:
            value = element.u16(0);
            append_decimal(out, value);
            break;
        case kLong:
            value = element.u32(0);
            append_decimal(out, value);
            break;
        case kRational: append_ratio(out, element.u32(0), element.u32(4)); break;
        case kSByte:
            value = static_cast<uint32_t>(static_cast<int8_t>(element.u8(0)));
            append_decimal(out, value);
            break;
        case kUndefined:
            value = element.u8(0);
            out.length += std::snprintf(p, room, "%02x ", value);
            break;
        // The signed integers and the floats are read little-endian in either kind of file.
        case kSShort:
            value = little16(element.bytes);
            out.length += std::snprintf(p, room, "%04x ", value);
            break;
        case kSLong:
            value = little32(element.bytes);
            append_decimal(out, value);
            break;
        case kSRational: append_ratio(out, element.s32(0), element.s32(4)); break;
        case kFloat:
            out.length +=
                std::snprintf(p, room, "%g ", static_cast<double>(float_of_bits(little32(element.bytes))));
            break;
        case kDouble:
            out.length += std::snprintf(p, room, "%g ", double_of_bits(little64(element.bytes)));
            break;
        default: break;
    }
    return value;
}

bool is_hexadecimal(uint32_t type) { return type == kUndefined || type == kSShort; }

// The value field as it stands in the file.
OrderedBytes field_bytes(uint8_t (&bytes)[kFieldSize], uint32_t value, ByteOrder order) {
    for (unsigned i = 0; i < kFieldSize; i++) {
        bytes[i] = static_cast<uint8_t>(value >> (8 * (order == ByteOrder::big ? kFieldSize - 1 - i : i)));
    }
    return {Bytes(bytes, kFieldSize), order};
}

}  // namespace

uint64_t tiff_field_used(uint32_t type, uint32_t count) {
    const uint64_t size = type_size(type) * count;
    return size <= kFieldSize ? size : kFieldSize;
}

const char *tifftype(OrderedBytes base, uint32_t type, uint32_t count, uint32_t value, uint32_t *first) {
    uint32_t size = 0;
    ValueText out{get_buffer(&size), static_cast<int>(size)};
    out.text[0] = '\0';
    *first = 0;
    if (static_cast<int32_t>(count) <= 0) return out.text;
    if (type == 0 || type > kDouble) return "?";

    uint8_t field[kFieldSize];
    const uint64_t element_size = type_size(type);
    const bool inside = element_size * count <= kFieldSize;
    const OrderedBytes values = inside ? field_bytes(field, value, base.order) : base.from(value);
    if (type == kAscii) {
        const Text text = text_at(values.bytes, 0, size);
        out.length = std::snprintf(out.text, size, "'%.*s'", text.length, text.start);
    } else {
        ring_holds({.kind = is_hexadecimal(type) ? Piece::words : Piece::numbers});
        *first = append_element(out, type, values);
        for (uint32_t i = 1; i < count && !out.is_full(); i++) {
            append_element(out, type, values.from(i * element_size));
        }
    }
    if (out.is_full() && out.room() > kNoteReserve) {
        std::snprintf(out.text + out.length, static_cast<size_t>(out.room()), " (dump truncated)");
    }
    return out.text;
}
