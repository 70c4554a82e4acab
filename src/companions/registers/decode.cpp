#include "companions/registers/decode.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "common/facts.h"
#include "common/utf16.h"
#include "common/values.h"
#include "companions/json/json.h"
#include "registers/registers.h"

namespace {

constexpr int kDeepest = 8;  // types of types
constexpr uint64_t kMostElements = 4096;
constexpr uint64_t kMostText = 65536;  // bytes

std::string json_text(std::string_view text) {
    std::string out;
    append_json(out, text, true);
    return out;
}

std::string octet_text(Bytes value) {
    std::string text;
    for (uint64_t i = 0; i < std::min(value.size(), kMostText) && value[i] != 0; i++)
        text += static_cast<char>(value[i]);
    return text;
}

std::string number(uint64_t bits, uint64_t size, bool is_signed) {
    if (!is_signed || size == 0) return std::to_string(bits);
    const unsigned shift = static_cast<unsigned>(64 - 8 * size);
    return std::to_string(static_cast<int64_t>(bits << shift) >> shift);
}

// Records and the types that the registers leave to their standards, by their sizes.
struct Fixed {
    const char *symbol;
    uint64_t size;
    std::string (*text)(Bytes value);
};

std::string rational(Bytes b) {
    return json_text(std::to_string(static_cast<int32_t>(big32(b))) + "/" +
                     std::to_string(static_cast<int32_t>(big32(b, 4))));
}
std::string two_numbers(Bytes b) { return "[" + std::to_string(b[0]) + ", " + std::to_string(b[1]) + "]"; }
std::string product_version(Bytes b) {
    std::string text;
    for (uint64_t i = 0; i < 8; i += 2) text += (i ? "." : "") + std::to_string(big16(b, i));
    return json_text(text);
}
std::string date(Bytes b) { return json_text(iso_date(big16(b), b[2], b[3])); }
std::string time_stamp(Bytes b) { return json_text(iso_date(big16(b), b[2], b[3], b[4], b[5], b[6])); }
std::string two_digits(uint8_t n) {
    return {static_cast<char>('0' + n / 10 % 10), static_cast<char>('0' + n % 10)};
}
std::string time_of_day(Bytes b) {
    return json_text(two_digits(b[0]) + ":" + two_digits(b[1]) + ":" + two_digits(b[2]) + "." +
                     two_digits(b[3]));
}
std::string precise_time(Bytes b) {
    std::string nanoseconds = std::to_string(big32(b, 6));
    nanoseconds.insert(0, 9 - std::min<size_t>(9, nanoseconds.size()), '0');
    return json_text(std::to_string(b.big(0, 6)) + "." + nanoseconds);
}
std::string colour(Bytes b) {
    return "[" + std::to_string(big16(b)) + ", " + std::to_string(big16(b, 2)) + "]";
}
std::string component_sizing(Bytes b) {
    return "{\"Ssiz\": " + std::to_string(b[0]) + ", \"XRSiz\": " + std::to_string(b[1]) +
           ", \"YRSiz\": " + std::to_string(b[2]) + "}";
}
std::string rgba_component(Bytes b) {
    return "[" + json_text(b[0] ? std::string(1, static_cast<char>(b[0])) : "") + ", " +
           std::to_string(b[1]) + "]";
}
std::string identifier(Bytes b) { return json_text(label_text(b)); }
std::string package(Bytes b) { return json_text(hex_text(b.sub(0, 32))); }
std::string single(Bytes b) { return number_text(static_cast<double>(float_of_bits(big32(b))), 9); }
// Ten bits of a fraction, five of an exponent.
std::string half(Bytes b) {
    const uint32_t bits = big16(b);
    const int exponent = static_cast<int>(bits >> 10 & 31);
    const int fraction = static_cast<int>(bits & 1023);
    if (exponent == 31) return "null";
    const double size =
        exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(1024 + fraction, exponent - 25);
    return number_text(bits >> 15 ? -size : size, 5);
}
std::string twice(Bytes b) { return number_text(double_of_bits(big64(b)), 17); }

constexpr Fixed kFixed[] = {
    {"Rational", 8, rational},
    {"VersionType", 2, two_numbers},
    {"ProductVersionType", 10, product_version},
    {"DateStruct", 4, date},
    {"TimeStamp", 8, time_stamp},
    {"TimeStruct", 4, time_of_day},
    {"PTPTimestamp", 10, precise_time},
    {"ColorPrimary", 4, colour},
    {"RGBAComponent", 2, rgba_component},
    {"J2KComponentSizing", 3, component_sizing},
    {"AUID", 16, identifier},
    {"UUID", 16, identifier},
    {"UL", 16, identifier},
    {"PackageIDType", 32, package},
    {"UMID", 32, package},
    {"Float", 4, single},
    {"SingleFloat", 4, single},
    {"Float32", 4, single},
    {"DoubleFloat", 8, twice},
    {"HalfFloat", 2, half},
    {"LensSerialHalfFloat", 2, half},
};

const Fixed *fixed_of(std::string_view symbol) {
    const auto found = std::ranges::find(kFixed, symbol, &Fixed::symbol);
    return found == std::end(kFixed) ? nullptr : found;
}

std::string decode(std::string_view symbol, Bytes value, int depth);

// Bytes of an element of a type; 0 where they vary.
uint64_t size_of(std::string_view symbol, int depth = 0) {
    if (const Fixed *fixed = fixed_of(symbol)) return fixed->size;
    const RegisterType *type = find_register_type(symbol);
    if (!type || depth == kDeepest) return 0;
    const std::string_view kind = type->kind;
    if (kind == "Integer") return type->size;
    if (kind == "StrongReference" || kind == "WeakReference") return 16;
    if (kind == "Rename" || kind == "Enumeration") return size_of(type->base, depth + 1);
    if (kind == "FixedArray") return type->size * size_of(type->base, depth + 1);
    return 0;
}

std::string elements(std::string_view base, Bytes value, uint64_t count, uint64_t size, int depth) {
    std::string out = "[";
    for (uint64_t i = 0; i < std::min(count, kMostElements) && value.has(i * size, size); i++) {
        const std::string element = decode(base, value.sub(i * size, size), depth);
        if (element.empty()) return "";
        out += (i ? ", " : "") + element;
    }
    return out + "]";
}

// Arrays of bytes have often no count and size before them.
bool has_head(Bytes value) {
    return value.has(0, 8) && value.size() == 8 + uint64_t{big32(value)} * big32(value, 4);
}

// With the count and size of their elements before them; those of characters are one text after the other.
std::string batch(const RegisterType &type, Bytes value, int depth) {
    const std::string_view base = type.base;
    const uint64_t size = big32(value, 4);
    if (!value.has(0, 8) || size == 0) return value.has(0, 8) ? "[]" : "";
    const uint64_t expected = size_of(base);
    if (expected != 0 && expected != size) return "";
    return elements(base, value.from(8), big32(value), size, depth + 1);
}

// Bytes without a batch's head, and records that other standards lay out.
std::string plain_bytes(Bytes value) { return json_text(hex_text(value)); }

// Pcap and the fields Ccap (ISO/IEC 15444-1, A.5.2), with the head of an array or without.
std::string capabilities(Bytes value) {
    const Bytes rest = value.from(4);
    const Bytes fields = has_head(rest) ? rest.from(8) : rest;
    return "{\"Pcap\": " + std::to_string(big32(value)) +
           ", \"Ccap\": " + elements("UInt16", fields, fields.size() / 2, 2, 0) + "}";
}

std::string decode(std::string_view symbol, Bytes value, int depth) {
    if (const Fixed *fixed = fixed_of(symbol))
        return value.size() >= std::min<uint64_t>(fixed->size, 8) ? fixed->text(value) : "";
    const RegisterType *type = find_register_type(symbol);
    if (!type || depth == kDeepest || value.empty()) return "";
    const std::string_view kind = type->kind;
    if (kind == "Integer") {
        const unsigned size = static_cast<unsigned>(std::min<uint64_t>(value.size(), 8));
        const bool is_signed = symbol.starts_with("Int");
        return number(value.big(0, size), size, is_signed);
    }
    if (kind == "Enumeration") {
        if (symbol == "Boolean") return value[0] ? "true" : "false";
        return decode(type->base, value, depth + 1);
    }
    if (kind == "Rename") return decode(type->base, value, depth + 1);
    if (kind == "String" || kind == "Character") {
        return json_text(text_width(symbol) == TextWidth::words ? text_of_utf16(big_endian(value))
                                                                : octet_text(value));
    }
    if (kind == "StrongReference" || kind == "WeakReference") return json_text(label_text(value));
    if (kind == "FixedArray") return elements(type->base, value, type->size, size_of(type->base), depth + 1);
    if (kind == "Record")
        return symbol == "J2KExtendedCapabilities" ? capabilities(value) : plain_bytes(value);
    const bool is_batch = kind == "VariableArray" || kind == "Set";
    if (is_batch && size_of(type->base) <= 1 && !has_head(value)) return plain_bytes(value);
    return is_batch ? batch(*type, value, depth) : "";
}

}  // namespace

TextWidth text_width(std::string_view symbol) {
    const RegisterType *type = find_register_type(symbol);
    for (int depth = 0; type && std::string_view(type->kind) == "Rename" && depth < kDeepest; depth++) {
        symbol = type->base;
        type = find_register_type(symbol);
    }
    const std::string_view kind = type ? type->kind : "";
    if (kind != "String" && kind != "Character") return TextWidth::none;
    const bool wide =
        symbol.find("16") != std::string_view::npos || std::string_view(type->base) == "Character";
    return wide && symbol != "UTF8String" ? TextWidth::words : TextWidth::bytes;
}

std::string label_text(Bytes label) {
    const auto bytes = label.span(0, 16);
    if (const RegisterEntry *entry = find_register_entry(bytes)) return entry->symbol;
    return label_digits(label);
}

std::string decoded_value(std::string_view type, Bytes value) { return decode(type, value, 0); }

std::string with_register_names(std::string_view text) {
    constexpr std::string_view kSmpte = "06.0e.2b.34.";
    constexpr size_t kDigits = 16 * 3 - 1;
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t label = std::min(text.find(kSmpte, at), text.size());
        out += text.substr(at, label - at);
        at = label + kDigits;
        if (label == text.size()) break;
        uint8_t bytes[16] = {};
        for (size_t i = 0; i < 16 && label + 3 * i + 2 <= text.size(); i++) {
            const char *digits = text.data() + label + 3 * i;
            std::from_chars(digits, digits + 2, bytes[i], 16);
        }
        const RegisterEntry *entry = find_register_entry(bytes);
        const std::string name = entry ? entry->name : label_digits(Bytes(bytes, sizeof bytes));
        out += name;
        // Dumps have the name behind the label.
        if (text.substr(std::min(at, text.size())).starts_with(" " + name)) at += 1 + name.size();
    }
    return out;
}
