#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(GxfFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("gxf"));
}

namespace {

std::string gxf_packet(uint8_t type, const std::string &payload) {
    return big().zeros(4).u8(1, type).u32(16 + payload.size()).zeros(4).hex("E1E2").raw(payload).str();
}

std::string gxf_track(unsigned type, unsigned id, uint32_t rate, uint32_t lines, uint32_t fields) {
    const ByteWriter tags = big().hex("5004").u32(rate).hex("5104").u32(lines).hex("5204").u32(fields);
    return big().u8(0x80 + type, 0xC0 + id).u16(tags.size()).raw(tags.str()).str();
}

std::string gxf_map(uint32_t first, uint32_t last, const std::string &tracks) {
    const ByteWriter material = big().hex("4104").u32(first).hex("4204").u32(last);
    const ByteWriter payload =
        big().hex("E0FF").u16(material.size()).raw(material.str()).u16(tracks.size()).raw(tracks);
    return gxf_packet(0xBC, payload.str());
}

std::string gxf_media(uint8_t type, uint8_t id, uint32_t field, uint32_t info, const std::string &data) {
    const ByteWriter preamble = big().u8(type, id).u32(field, info, field).u16(0);
    return gxf_packet(0xBF, preamble.str() + data);
}

// The material's start, and media of a type with a sampling rate and the bits of a sample.
std::string gxf_umf(uint32_t start, uint32_t rate, uint32_t bits) {
    const ByteWriter media = little().u16(124).at(112).u32(10, rate, bits);
    const ByteWriter umf = little().u32(104).at(16).u32(0).at(68).u32(start).at(104);
    return gxf_packet(0xFD, std::string(5, '\0') + little().raw(umf.str()).at(104).raw(media.str()).str());
}

const std::string kGxfEnd = gxf_packet(0xFB, "");
const std::string kGxfTimecode = hex("0403 0200 0500 0100");

}  // namespace

TEST(GxfFacts, RatesAndSizes) {
    Transcript transcript;
    const auto of = [](unsigned type, uint32_t rate, uint32_t lines, uint32_t fields) {
        return facts_of(gxf_map(0, 100, gxf_track(type, 1, rate, lines, fields)) + kGxfEnd);
    };
    for (const uint32_t rate : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 0xFFFFFFFFU})
        SHOW(of(13, rate, 1, 2));
    for (const uint32_t lines : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 0xFFFFFFFFU}) SHOW(of(14, 6, lines, 2));
    for (const uint32_t fields : {0, 1, 2, 3}) SHOW(of(15, 6, 2, fields) + "\n" + of(20, 2, 6, fields));
    for (unsigned type = 2; type <= 27; type++) SHOW(of(type, 6, 2, 2));
    for (const uint32_t rate : {2, 3, 5, 6}) SHOW(of(25, rate, 4, 2) + "\n" + of(25, rate, 6, 1));
}

TEST(GxfFacts, Fields) {
    Transcript transcript;
    const auto of = [](uint32_t first, uint32_t last) {
        return facts_of(gxf_map(first, last, gxf_track(13, 1, 5, 1, 2) + gxf_track(9, 2, 5, 1, 2)) + kGxfEnd);
    };
    for (const auto &[first, last] : {std::pair{0U, 0U},
                                      {0U, 1U},
                                      {0U, 2U},
                                      {0U, 3U},
                                      {2U, 2U},
                                      {2U, 6U},
                                      {0xFFFFFFFFU, 2U},
                                      {0U, 0xFFFFFFFFU}})
        SHOW(of(first, last));
}

// The flag of dropped numbers, the field in the last byte, bit 31: the material has no start. Of the track's
// codes the first one that its packet counts.
TEST(GxfFacts, Timecodes) {
    Transcript transcript;
    const auto of = [](uint32_t rate, uint32_t fields, uint32_t start, uint32_t info,
                       const std::string &code) {
        const std::string tracks = gxf_track(13, 1, rate, 1, fields) + gxf_track(10, 2, rate, 1, fields) +
                                   gxf_track(8, 3, rate, 1, fields);
        return facts_of(gxf_map(0, 100, tracks) + gxf_umf(start, 48000, 16) + gxf_media(8, 3, 0, info, code) +
                        kGxfEnd);
    };
    SHOW(of(6, 2, 0x0102032F, 1, kGxfTimecode));
    SHOW(of(5, 2, 0x2102033B, 0x00000001, hex("0904 0500 0500 0100")));
    SHOW(of(5, 2, 0x8102033B, 0x00010002, hex("0904 0500 0500 0100") + kGxfTimecode));
    SHOW(of(2, 1, 0x2102033B, 0x00010001, kGxfTimecode));
    SHOW(of(6, 2, 0x17023B31, 1, hex("0402 0905 0905 0302")));
    SHOW(of(6, 2, 0x17023B32, 1, hex("0502 0905 0905 0302")));
    SHOW(of(6, 2, 0x173C3B31, 1, hex("0402 0006 0905 0302")));
    SHOW(of(6, 2, 0x18023C31, 1, hex("0402 0905 0905 0402")));
}

TEST(GxfFacts, MediaOfTheUmf) {
    Transcript transcript;
    const auto of = [](uint32_t rate, uint32_t bits) {
        return facts_of(gxf_map(0, 100, gxf_track(13, 1, 6, 1, 2) + gxf_track(10, 2, 6, 1, 2)) +
                        gxf_umf(0x80000000, rate, bits) + kGxfEnd);
    };
    for (const uint32_t rate : {7999, 8000, 192000, 192001}) SHOW(of(rate, 16));
    for (const uint32_t bits : {0, 1, 32, 33}) SHOW(of(48000, bits));
}

TEST(GxfFacts, Extent) {
    Transcript transcript;
    const std::string map = gxf_map(0, 8, gxf_track(13, 1, 5, 1, 2));
    const auto picture = [](uint32_t field) { return gxf_media(13, 1, field, 0, std::string(100, 'x')); };
    const std::string whole = map + picture(0) + picture(6) + kGxfEnd;
    const size_t end = whole.size();
    const auto cut = [](size_t n) { return " <" + std::to_string(n); };
    SHOW(facts_changed(whole, ">1" + cut(end - 1) + cut(end - 15) + cut(end - 16) + cut(end - 17) +
                                  cut(end - 147) + cut(end - 148) + cut(end - 149) + cut(map.size()) +
                                  cut(map.size() - 1)));
    const std::string at = std::to_string(map.size() + 9) + "=";
    SHOW(facts_changed(whole, at + "0F " + at + "10 " + at + "83 " + at + "85"));
    // Lengths of the sections, of a track's, and of a tag.
    ROWS("whole", facts_changed(whole, rows));
    for (const uint32_t field : {4, 5, 6}) SHOW(facts_of(map + picture(0) + picture(field)));
    SHOW(facts_of(gxf_map(0, 0, gxf_track(13, 1, 5, 1, 2)) + picture(0)));
    SHOW(facts_of(whole + std::string(131072 - 16, 'x')) + "\n" +
         facts_of(whole + std::string(131072 - 15, 'x')));
    SHOW(facts_of(picture(0) + kGxfEnd));
}
