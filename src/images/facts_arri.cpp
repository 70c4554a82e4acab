#include <cstdio>

#include "common/ordered_bytes.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

constexpr uint64_t kHeader = 4096;
constexpr uint64_t kTimecodes = 424;
constexpr const char *kPlaces[] = {
    "master",       "external LTC",      "external VITC",     "time of day",
    "user defined", "rec run edge code", "rec run clip code", "rec run regenerated"};

// Thousandths of frames a second, or frames.
Ratio rate_in(OrderedBytes h, uint64_t offset) {
    const double value = h.u32(offset);
    return value >= 1000 && value < 1e6 ? rate_of(value / 1000)
           : value >= 1 && value < 1000 ? rate_of(value)
                                        : Ratio{};
}

// BCD digits with the base and the drop flag beside them.
FileTimecode timecode_at(OrderedBytes record, uint32_t rate_base, const char *place) {
    const uint32_t word = record.u32(0);
    const uint32_t told = record.u32(8) & 0x7FFFFFFF;
    const uint32_t base = told >= 1000 ? base_of(rate_of(told / 1000.0)) : told > 0 ? told : rate_base;
    if (word == 0xFFFFFFFF || (word == 0 && told == 0)) return {};
    const auto digits = [&](uint32_t shift, uint32_t tens) {
        return int64_t{word >> (shift + 4) & tens} * 10 + (word >> shift & 15);
    };
    return file_timecode(digits(24, 3), digits(16, 7), digits(8, 7), digits(0, 7), base,
                         record.u32(8) >> 31 != 0 && base % 30 == 0, place);
}

// Of eight digits each.
std::string bcd_date(uint32_t day, uint32_t time) {
    char digits[24];
    std::snprintf(digits, sizeof digits, "%08x%08x", day, time);
    const auto number = [&](size_t at, size_t n) { return decimal_in(digits, at, n); };
    if (number(0, 4) < 1990 || number(0, 4) > 2100) return "";
    return iso_date(number(0, 4), number(4, 2), number(6, 2), number(8, 2), number(10, 2), number(12, 2));
}

}  // namespace

void arri_facts(Input &input, Facts &facts) {
    const Bytes bytes = input.present(0, kHeader);
    const OrderedBytes h = bytes_are(bytes, 0, "IRRA") ? big_endian(bytes) : little_endian(bytes);
    const uint64_t size = input.size();
    const uint32_t version = h.u32(12);
    if (bytes.size() < kHeader) {
        facts.problem = "the header is cut at " + std::to_string(bytes.size()) + " bytes";
        facts.cut(kHeader, "the header's end");
        return;
    }
    facts.variant = "version " + std::to_string(version);
    Picture &picture = facts.picture();
    picture.codec = "ARRIRAW";
    picture.components = "Bayer";
    picture.frames = 1;
    const bool is_old = version < 3;
    picture.width = h.u32(is_old ? 16 : 20);
    picture.height = h.u32(is_old ? 20 : 24);
    const uint64_t offset = h.u32(is_old ? 8 : 68);
    const uint64_t data = is_old ? 0 : h.u32(72);
    const uint64_t pixels = uint64_t{picture.width} * picture.height;
    const uint64_t bits = pixels > 0 ? data * 8 / pixels : 0;
    if (bits >= 10 && bits <= 16 && bits * pixels == data * 8) picture.bits = static_cast<uint32_t>(bits);
    if (is_old) {
        if (size <= offset) facts.cut(offset + 1, "the picture");
        return;
    }
    picture.rate = rate_in(h, 420);
    picture.pixel_aspect = aspect_of(static_cast<double>(float_of_bits(h.u32(196))));
    for (uint64_t i = 0; i < std::size(kPlaces); i++)
        facts.add(timecode_at(h.from(kTimecodes + 16 * i), base_of(picture.rate), kPlaces[i]));
    facts.date = bcd_date(h.u32(380), h.u32(384));
    if (facts.date.empty()) facts.date = bcd_date(h.u32(388), h.u32(392));
    const auto number = [&](const char *name, uint64_t at) {
        if (h.u32(at) != 0 && h.u32(at) != 0xFFFFFFFF) facts.add_more(name, h.u32(at));
    };
    if (rate_in(h, 416).is_set()) facts.add_more("sensor rate", number_text(rate_in(h, 416).value()));
    number("white balance", 92);
    number("exposure index", 116);
    number("camera serial", 368);
    facts.add_more("look", fixed_text(bytes, 204, 32));
    if (h.u32(44) > 0 && h.u32(44) <= picture.width && h.u32(48) <= picture.height)
        facts.add_more("active image", size_text(h.u32(44), h.u32(48)));
    if (data > 0 && offset >= 1024) facts.reaches(offset + data);
}
