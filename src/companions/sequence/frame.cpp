#include "companions/sequence/frame.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "common/ordered_bytes.h"
#include "common/values.h"
#include "dpx/timecode.h"

namespace {

constexpr size_t kHeaderSize = 2048;
constexpr uint32_t kDpxMagic = 0x53445058;
constexpr uint32_t kCineonMagic = 0x802A5FD7;
constexpr uint32_t kUnset = 0xFFFFFFFF;

std::string decimal(uint32_t value, uint32_t unset) { return value == unset ? "" : std::to_string(value); }

std::string text_of(OrderedBytes header, uint64_t offset, uint64_t width) {
    if (header.u8(offset) == 0xFF) return "";
    const Text text = text_at(header.bytes, offset, width);
    return {text.start, static_cast<size_t>(text.length)};
}

// A decimal number in text; -1 where it is none.
int32_t number_in(const std::string &text) {
    if (text.empty() || text.size() > 9) return -1;
    int32_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

// A rate that is set and possible; 0 otherwise.
double rate_of(OrderedBytes header, uint64_t offset) {
    const double rate = static_cast<double>(float_of_bits(header.u32(offset)));
    return std::isfinite(rate) && rate >= 1 && rate <= 1000 ? rate : 0;
}

std::string rate_text(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", rate);
    return rate > 0 ? text : "";
}

// The film and television headers: absent where their size is 0 or the picture lies in their place.
bool has_industry_header(OrderedBytes h) { return h.u32(28) != 0 && h.u32(4) >= kHeaderSize; }

void read_industry_header(OrderedBytes h, Frame &frame) {
    char keycode[17];
    formatdpxkeycode(keycode, h.bytes.from(1664));
    const double television_rate = rate_of(h, 1940);
    frame.rate = television_rate > 0 ? television_rate : rate_of(h, 1724);
    frame.timecode = h.u32(1920);
    frame.keycode.roll = text_of(h, 1664, 2) + text_of(h, 1666, 2) + text_of(h, 1670, 6);
    if (frame.keycode.roll.find_first_not_of('0') == std::string::npos) frame.keycode.roll.clear();
    frame.keycode.count = number_in(text_of(h, 1676, 4));
    frame.keycode.offset = number_in(text_of(h, 1668, 2));
    frame.keycode.text = keycode;
}

void read_dpx(OrderedBytes h, Frame &frame) {
    const bool industry = has_industry_header(h);
    if (industry) read_industry_header(h, frame);
    frame.properties = {
        {"byte order", h.is_big() ? "big-endian" : "little-endian"},
        {"image offset", decimal(h.u32(4), kUnset)},
        {"width", decimal(h.u32(772), kUnset)},
        {"height", decimal(h.u32(776), kUnset)},
        {"image elements", decimal(h.u16(770), 0xFFFF)},
        {"orientation", decimal(h.u16(768), 0xFFFF)},
        {"descriptor", decimal(h.u8(800), 0xFF)},
        {"transfer", decimal(h.u8(801), 0xFF)},
        {"colorimetric", decimal(h.u8(802), 0xFF)},
        {"bit depth", decimal(h.u8(803), 0xFF)},
        {"packing", decimal(h.u16(804), 0xFFFF)},
        {"encoding", decimal(h.u16(806), 0xFFFF)},
        {"frame rate", rate_text(frame.rate)},
        {"reel", industry ? text_of(h, 1972, 76) : ""},
        {"input device", text_of(h, 1556, 32)},
    };
}

void read_cineon(OrderedBytes h, Frame &frame) {
    frame.rate = rate_of(h, 1072);
    const bool zeros = h.u16(1024) == 0 && h.u32(1028) == 0 && h.u32(1032) == 0;
    if (h.u8(1024) != 0xFF && !zeros) {
        frame.keycode.roll = std::to_string(h.u8(1024)) + "/" + std::to_string(h.u8(1025)) + "/" +
                             decimal(h.u32(1028), kUnset);
        frame.keycode.count = h.s32(1032);
        frame.keycode.offset = h.u8(1026) == 0xFF ? -1 : h.u8(1026);
        frame.keycode.text =
            frame.keycode.roll + " " + std::to_string(frame.keycode.count) + "+" + decimal(h.u8(1026), 0xFF);
    }
    frame.properties = {
        {"byte order", h.is_big() ? "big-endian" : "little-endian"},
        {"image offset", decimal(h.u32(4), kUnset)},
        {"width", decimal(h.u32(200), kUnset)},
        {"height", decimal(h.u32(204), kUnset)},
        {"channels", decimal(h.u8(193), 0xFF)},
        {"orientation", decimal(h.u8(192), 0xFF)},
        {"bit depth", decimal(h.u8(198), 0xFF)},
        {"packing", decimal(h.u8(681), 0xFF)},
        {"frame rate", rate_text(frame.rate)},
        {"input device", text_of(h, 844, 64)},
    };
}

// The size of the file that its header tells; 0 when it does not.
uint64_t told_size(OrderedBytes h, bool dpx) {
    const uint32_t size = h.u32(dpx ? 16 : 20);
    return size == kUnset ? 0 : size;
}

// Samples a pixel by the descriptor of an image element (SMPTE 268M, table 1); 0 for others.
uint32_t samples_of(uint8_t descriptor) {
    switch (descriptor) {
        case 50:
        case 101:
        case 102: return 3;
        case 51:
        case 52:
        case 103: return 4;
        case 100: return 2;
        default: return descriptor >= 1 && descriptor <= 9 ? 1 : 0;
    }
}

// 0 where a number is not set, or beyond what any picture has.
uint64_t picture_bits(uint64_t width, uint64_t height, uint64_t samples, uint64_t depth) {
    constexpr uint64_t kLargestSide = 1 << 20;
    constexpr uint64_t kDeepest = 64;
    const bool known = width <= kLargestSide && height <= kLargestSide && depth <= kDeepest;
    return known ? width * height * samples * depth : 0;
}

// The bytes that the picture takes at least: padding comes on top. 0 where it is compressed, or not known.
uint64_t picture_bytes(OrderedBytes h, bool dpx) {
    constexpr uint64_t kMostElements = 8;
    const uint64_t elements = dpx ? h.u16(770) : h.u8(193);
    uint64_t bits = 0;
    if (elements > kMostElements) return 0;
    for (uint64_t i = 0; i < elements; i++) {
        const OrderedBytes e = h.from(dpx ? 780 + 72 * i : 196 + 28 * i);
        if (dpx && e.u16(26) != 0) return 0;
        bits += dpx ? picture_bits(h.u32(772), h.u32(776), samples_of(e.u8(20)), e.u8(23))
                    : picture_bits(e.u32(4), e.u32(8), 1, e.u8(2));
    }
    return bits / 8;
}

// What is wrong with the size of a file; empty when nothing is.
std::string size_problem(OrderedBytes header, bool dpx, uint64_t size) {
    const uint64_t told = told_size(header, dpx);
    const uint64_t offset = header.u32(4) == kUnset ? 0 : header.u32(4);
    const uint64_t needed = offset + picture_bytes(header, dpx);
    const std::string cut = "cut: " + std::to_string(size) + " of ";
    if (size < told) return cut + std::to_string(told) + " bytes";
    return size < needed ? cut + "at least " + std::to_string(needed) + " bytes" : "";
}

struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) close(fd);
    }
};

}  // namespace

Frame read_frame(const std::string &path) {
    Frame frame;
    const Descriptor file{open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    struct stat status;
    if (file.fd < 0 || fstat(file.fd, &status) != 0) {
        frame.problem = std::strerror(errno);
        return frame;
    }
    std::array<uint8_t, kHeaderSize> buffer{};
    const ssize_t count = S_ISREG(status.st_mode) ? pread(file.fd, buffer.data(), buffer.size(), 0) : 0;
    const Bytes bytes(buffer.data(), count > 0 ? static_cast<uint64_t>(count) : 0);
    const bool dpx = big32(bytes) == kDpxMagic || little32(bytes) == kDpxMagic;
    const bool cineon = big32(bytes) == kCineonMagic || little32(bytes) == kCineonMagic;
    const bool big = big32(bytes) == (dpx ? kDpxMagic : kCineonMagic);
    const OrderedBytes header = big ? big_endian(bytes) : little_endian(bytes);
    if (!dpx && !cineon) {
        frame.problem = bytes.empty() ? "empty" : "no DPX or Cineon header";
        return frame;
    }
    if (bytes.size() < kHeaderSize) {
        frame.problem = "the header is cut at " + std::to_string(bytes.size()) + " bytes";
        return frame;
    }
    frame.has_header = true;
    dpx ? read_dpx(header, frame) : read_cineon(header, frame);
    frame.properties.insert(frame.properties.begin(), {"format", dpx ? "DPX" : "Cineon"});
    frame.problem = size_problem(header, dpx, static_cast<uint64_t>(status.st_size));
    return frame;
}
