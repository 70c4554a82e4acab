// Both sides of the bounds in headers of elementary streams.
#include <gtest/gtest.h>

#include "common/elementary.h"
#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

namespace {

Bytes window(const std::string &bytes) { return Bytes(bytes.data(), bytes.size()); }

// What `tell` says of what each of the changes makes of bytes; "." leaves them as they are.
template <typename Tell>
std::string told_of(const std::string &bytes, const std::string &changes, Tell tell) {
    return rows_of(changes, [&](const std::string &word) {
        return " " + tell(word == "." ? bytes : changed(bytes, word));
    });
}

std::string text_if(bool is_known, const Facts &facts) {
    std::string text = is_known ? text_of(facts).substr(3) : "nothing";
    const int64_t rate = facts.sounds.empty() ? facts.pictures[0].bit_rate : facts.sounds[0].bit_rate;
    return text + (is_known && rate > 0 ? " " + std::to_string(rate) : "");
}

// The first frame of a sound, and what its decoder is given.
auto sound_by(const char *codec, bool is_setup = false) {
    return [=](const std::string &bytes) {
        Facts facts;
        facts.sounds.emplace_back().codec = codec;
        const Bytes data = window(bytes);
        const bool is_known =
            stream_sound(is_setup ? Bytes() : data, facts.sounds[0], is_setup ? data : Bytes());
        return text_if(is_known, facts);
    };
}

auto picture_by(const char *codec, bool is_setup = false) {
    return [=](const std::string &bytes) {
        Facts facts;
        facts.picture().codec = codec;
        const Bytes data = window(bytes);
        const bool is_known =
            stream_picture(is_setup ? Bytes() : data, facts.picture(), is_setup ? data : Bytes());
        return text_if(is_known, facts);
    };
}

}  // namespace

// Codes of 31 zeros and no more; a start code is one where a code is behind it.
TEST(ElementaryBits, Edges) {
    const std::string most = hex("0000000100000000"), over = hex("000000008000000000");
    EXPECT_EQ(BitReader(window(most)).ue(), 0x7FFFFFFFU);
    BitReader bits(window(over));
    EXPECT_EQ(bits.ue(), 0U);
    EXPECT_TRUE(bits.is_over());
    const std::string code = hex("000001B3");
    EXPECT_EQ(start_code(window(code)), 0U);
    EXPECT_EQ(start_code(window(code.substr(0, 3))), 3U);
}

TEST(ElementarySound, Edges) {
    Transcript transcript;
    const std::string frame = hex("FFFB9000") + std::string(413, '\0') + hex("FFFB9000");
    ROWS("frame, sound_by(MP3)", told_of(frame, rows, sound_by("MP3")));
    ROWS("hex(0B7700001C40E100), sound_by(AC-3)", told_of(hex("0B7700001C40E100"), rows, sound_by("AC-3")));
    ROWS("hex(0B7700033F87C000), sound_by(E-AC-3)",
         told_of(hex("0B7700033F87C000"), rows, sound_by("E-AC-3")));
    ROWS("hex(7FFE8001FC3C75B276C005380009EF7B), sound_by(DT",
         told_of(hex("7FFE8001FC3C75B276C005380009EF7B"), rows, sound_by("DTS")));
    ROWS("hex(FFF14C8000E00000), sound_by(AAC)", told_of(hex("FFF14C8000E00000"), rows, sound_by("AAC")));
    ROWS("std::string(10, '\\0') + hex(0BB80370) + std::strin",
         told_of(std::string(10, '\0') + hex("0BB80370") + std::string(20, '\0'), rows,
                 sound_by("FLAC", true)));
    const std::string program = "118004C4040021100D4C61766335392E33372E31303056E500";
    ROWS("hex(program), sound_by(AAC, true)", told_of(hex(program), rows, sound_by("AAC", true)));
    ROWS("hex(1190), sound_by(AAC, true)", told_of(hex("1190"), rows, sound_by("AAC", true)));
    ROWS("std::string(4323, '\\0') + hex(5000000000), [](cons",
         told_of(std::string(4323, '\0') + hex("5000000000"), rows, [](const std::string &bytes) {
             Facts facts;
             const bool is_known = dv_sound(window(bytes), facts.sounds.emplace_back());
             return text_if(is_known, facts);
         }));
    for (const uint32_t format : {0x1U, 0x103U, 0x203U, 0x1003U, 0x20000003U, 0x80000003U, 0x18000U}) {
        Facts facts;
        const bool is_known = truehd_format(format, facts.sounds.emplace_back());
        SHOW(text_if(is_known, facts));
    }
    EXPECT_EQ(speaker_layout(0x20001, 2) + "," + speaker_layout(0x40001, 2) + "," + speaker_layout(0x3, 3),
              "L Tbr,,");
    EXPECT_EQ(configured_layout(14) + "," + configured_layout(15), "5.1.2,");
    EXPECT_EQ(ac3_bit_rate(18) + ac3_bit_rate(19), 639999);
}

TEST(ElementaryVideo, EdgesOfMpeg) {
    Transcript transcript;
    const std::string sequence = hex("000001B3 780438 33 FFFFE018 000001B5 144400010000 000001B5 8FFFF38080");
    ROWS("sequence, picture_by(MPEG-2)", told_of(sequence, rows, picture_by("MPEG-2")));
    ROWS("changed(sequence, 15=01), picture_by(MPEG-2)",
         told_of(changed(sequence, "15=01"), rows, picture_by("MPEG-2")));
    ROWS("sequence.substr(0, 12) + hex(00000100) + sequence.",
         told_of(sequence.substr(0, 12) + hex("00000100") + sequence.substr(12), rows, picture_by("MPEG-2")));
    // The size shown of 1920 by 1080: from half of what is coded on.
    const auto shown = [&](uint64_t width, uint64_t height) {
        const uint64_t bits = width << 18 | uint64_t{1} << 17 | height << 3;
        return picture_by("MPEG-2")(sequence.substr(0, 22) + hex("000001B5 20") + big().u32(bits).str() +
                                    sequence.substr(22));
    };
    SHOW(shown(960, 1080) + "\n" + shown(959, 1080) + "\n" + shown(1920, 540) + "\n" + shown(1920, 539));
}

namespace {

// Bits, most significant first, and Exp-Golomb codes; what would be a start code is escaped.
class Bits {
 public:
    Bits &u(unsigned n, uint64_t value) {
        while (n-- > 0) bits_ += (value >> n & 1) != 0 ? '1' : '0';
        return *this;
    }
    Bits &ue(uint64_t value) {
        unsigned n = 0;
        while ((value + 1) >> (n + 1) != 0) n++;
        return u(n, 0).u(n + 1, value + 1);
    }
    Bits &codes(size_t n, uint64_t value = 0) {
        while (n-- > 0) ue(value);
        return *this;
    }
    Bits &interleaved(uint64_t value) {  // Exp-Golomb as Dirac has it
        unsigned n = 0;
        while ((value + 1) >> (n + 1) != 0) n++;
        while (n-- > 0) u(1, 0).u(1, (value + 1) >> n & 1);
        return u(1, 1);
    }
    std::string nal(const char *header) const {
        std::string raw = hex(header);
        for (size_t i = 0, zeros = 0; i < bits_.size(); i += 8) {
            const std::string byte = (bits_.substr(i, 8) + "10000000").substr(0, 8);
            const int value = std::stoi(byte, nullptr, 2);
            if (zeros >= 2 && value <= 3) raw += '\3', zeros = 0;
            zeros = value == 0 ? zeros + 1 : 0;
            raw += static_cast<char>(value);
        }
        return raw;
    }

 private:
    std::string bits_;
};

struct AvcSet {
    uint64_t chroma = 1, depth = 8, columns = 2, rows = 2, frame_bits = 4, offsets = 0, buffers = 0;
    uint64_t crop[4] = {}, aspect = 1, unit = 1, scale = 50;
    bool frames_only = true, has_lists = false, by_block = false, has_structures = true;

    std::string nal() const {
        Bits bits;
        bits.u(8, 100).u(16, 0).ue(0).ue(chroma);
        if (chroma == 3) bits.u(1, 0);
        bits.ue(depth - 8).ue(0).u(1, 0).u(1, has_lists);
        for (int i = 0; has_lists && i < (chroma == 3 ? 12 : 8); i++) bits.u(1, 1).codes(i < 6 ? 16 : 64);
        bits.ue(frame_bits - 4);
        if (offsets > 0) {
            bits.ue(1).u(1, 0).codes(2).ue(offsets).codes(offsets);
        } else {
            bits.ue(0).ue(0);
        }
        bits.ue(1).u(1, 0).ue(columns - 1).ue(rows - 1).u(1, frames_only);
        if (!frames_only) bits.u(1, by_block);
        bits.u(1, 0).u(1, 1);
        for (const uint64_t side : crop) bits.ue(side);
        bits.u(1, 1).u(1, 1).u(8, aspect).u(3, 0).u(1, 1).u(32, unit).u(32, scale).u(1, 1).u(1, buffers > 0);
        if (buffers > 0) {
            bits.ue(buffers - 1).u(8, 0);
            for (uint64_t i = 0; i < buffers; i++) bits.codes(2, 1).u(1, 0);
            bits.u(5, 0).u(5, 10).u(5, 20).u(5, 0);
        }
        bits.u(1, 0).u(buffers > 0 ? 1 : 0, 0).u(1, has_structures).u(8, 0);
        return bits.nal("67");
    }
    std::string told() const {
        Facts facts;
        AvcFields fields;
        const std::string set = nal();
        const bool is_known = h264_sequence(window(set), facts.picture(), fields);
        const Picture &p = facts.pictures[0];
        return text_if(is_known, facts) + " " + std::to_string(fields.timing) + "," +
               std::to_string(fields.frame_number) + (p.coded_width > 0 ? " coded\n" : "\n");
    }
};

struct HevcSet {
    uint64_t sub_layers = 0, order_bits = 4, sets = 0, before = 0, after = 0, references = 0, long_term = 0;
    bool has_lists = false, has_layers = false, has_blocks = false;

    std::string nal() const {
        Bits bits;
        bits.u(4, 0).u(3, sub_layers).u(1, 0).u(40, 0).u(2, 2).u(54, 0);
        if (sub_layers > 0) bits.u(16, has_layers ? 0xFFFF << (16 - 2 * sub_layers) & 0xFFFF : 0);
        for (uint64_t i = 0; has_layers && i < sub_layers; i++) bits.u(48, 0).u(48, 0);
        bits.ue(0).ue(1).ue(64).ue(48).u(1, 0).ue(0).ue(0).ue(order_bits - 4).u(1, 1);
        bits.codes(3 * (sub_layers + 1), 1).codes(6, 1).u(1, has_lists).u(has_lists ? 1 : 0, 1);
        for (int size = 0; has_lists && size < 4; size++) {
            for (int i = 0; i < (size == 3 ? 2 : 6); i++)
                bits.u(1, 1).codes(size > 1 ? 1 : 0).codes(size == 0 ? 16 : 64);
        }
        bits.u(2, 0).u(1, has_blocks);
        if (has_blocks) bits.u(8, 0).codes(2, 1).u(1, 0);
        bits.ue(sets);
        for (uint64_t i = 0; i < sets; i++) {
            if (i > 0) bits.u(1, i <= references);
            if (i > 0 && i <= references) {
                bits.u(1, 0).ue(0).u(static_cast<unsigned>(before + after + 1), UINT64_MAX);
                continue;
            }
            bits.ue(before).ue(after);
            for (uint64_t k = 0; k < before + after; k++) bits.ue(0).u(1, 1);
        }
        bits.u(1, long_term > 0);
        if (long_term > 0) bits.ue(long_term);
        for (uint64_t i = 0; i < long_term; i++) bits.u(static_cast<unsigned>(order_bits + 1), 0);
        bits.u(2, 0).u(1, 1).u(1, 1).u(8, 2).u(3, 0).u(4, 0).u(1, 1).u(32, 1).u(32, 25).u(8, 0);
        return bits.nal("4201");
    }
    std::string told() const {
        Facts facts;
        bool has_structures = false;
        const std::string set = nal();
        return text_if(hevc_sequence(window(set), facts.picture(), has_structures), facts) + "\n";
    }
};

}  // namespace

TEST(ElementaryVideo, EdgesOfH264) {
    Transcript transcript;
    SHOW(AvcSet{}.told());
    for (const uint64_t side : {4096, 4097})
        SHOW(AvcSet{.columns = side}.told() + AvcSet{.rows = side}.told());
    for (const uint64_t chroma : {0, 3, 4}) SHOW((AvcSet{.chroma = chroma, .has_lists = true}.told()));
    SHOW((AvcSet{.has_lists = true}.told()));
    SHOW(AvcSet{.depth = 16}.told() + AvcSet{.depth = 17}.told());
    for (const uint64_t crop : {1, 31, 32})
        SHOW((AvcSet{.chroma = 3, .crop = {0, crop, 0, 0}}.told() +
              AvcSet{.chroma = 3, .crop = {0, 0, crop, 0}}.told()));
    for (const uint64_t bits : {4, 15, 16, 17})
        SHOW((AvcSet{.frame_bits = bits, .frames_only = false}.told()));
    for (const uint64_t n : {1, 2, 3}) SHOW(AvcSet{.offsets = n}.told());
    for (const uint64_t n : {1, 2, 31, 32}) SHOW(AvcSet{.buffers = n}.told());
    for (const uint64_t aspect : {0, 16, 17, 254}) SHOW(AvcSet{.aspect = aspect}.told());
    for (const auto &[unit, scale] : {std::pair{0, 50}, {1, 2001}, {1, 2002}, {2, 50}, {1, 1}})
        SHOW((AvcSet{.unit = static_cast<uint64_t>(unit), .scale = static_cast<uint64_t>(scale)}.told()));
}

TEST(ElementaryVideo, EdgesOfHevc) {
    Transcript transcript;
    SHOW(HevcSet{}.told());
    for (const uint64_t n : {1, 2, 6})
        SHOW((HevcSet{.sub_layers = n}.told() + HevcSet{.sub_layers = n, .has_layers = true}.told()));
    SHOW((HevcSet{.has_lists = true, .has_blocks = true}.told()));
    for (const uint64_t bits : {16, 17}) SHOW((HevcSet{.order_bits = bits, .long_term = 1}.told()));
    for (const uint64_t n : {1, 2, 64, 65}) SHOW(HevcSet{.sets = n}.told());
    for (const uint64_t n : {8, 9, 16, 17})
        SHOW((HevcSet{.sets = 1, .before = n}.told() + HevcSet{.sets = 1, .after = n}.told() +
              HevcSet{.sets = 1, .before = n, .after = n}.told()));
    SHOW((HevcSet{.sets = 4, .before = 2, .after = 1, .references = 1}.told()));
    for (const uint64_t n : {1, 32, 33}) SHOW(HevcSet{.long_term = n}.told());
}
