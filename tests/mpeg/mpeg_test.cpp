#include <gtest/gtest.h>

#include <algorithm>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

// Bit fields, filled up with zeros to whole bytes.
class Bits {
 public:
    struct Field {
        unsigned count;
        uint64_t value;
    };
    Bits() = default;
    Bits(std::initializer_list<Field> fields) { add(fields); }
    Bits &add(std::initializer_list<Field> fields) {
        for (const Field &f : fields) {
            for (unsigned i = f.count; i-- > 0;) bits_ += i < 64 && (f.value >> i & 1) ? '1' : '0';
        }
        return *this;
    }
    Bits &stamp(unsigned prefix_bits, uint64_t prefix, uint64_t v) {
        return add({{prefix_bits, prefix}, {3, v >> 30}, {1, 1}, {15, v >> 15}, {1, 1}, {15, v}, {1, 1}});
    }
    std::string str() const {
        std::string bytes((bits_.size() + 7) / 8, '\0');
        for (size_t i = 0; i < bits_.size(); i++) {
            if (bits_[i] == '1') bytes[i / 8] = static_cast<char>(bytes[i / 8] | 0x80 >> i % 8);
        }
        return bytes;
    }

 private:
    std::string bits_;
};

std::string code(uint32_t id, const std::string &content) {
    return big().hex("000001").u8(id).raw(content).str();
}
std::string packet(uint32_t id, const std::string &content) {
    return code(id, big().u16(content.size()).raw(content).str());
}

// An MPEG-2 pack header with the clock at 1 second.
std::string pack(uint64_t base = 90000, uint32_t stuffing = 0) {
    Bits b;
    b.add({{2, 1}, {3, base >> 30}, {1, 1}, {15, base >> 15}, {1, 1}, {15, base}, {1, 1}, {9, 5}, {1, 1}});
    return code(0xBA,
                b.add({{22, 1000}, {2, 3}, {5, 31}, {3, stuffing}}).str() + std::string(stuffing, '\xFF'));
}

const std::string kStart = "Fileformat:MPEG\n00000000:stream 000001ba/0000 - 00:00:00:000000 - timing \n";

// What follows a pack header.
std::string dumped(const std::string &content, const std::vector<std::string> &switches = {}) {
    const std::string dump = dump_of(pack() + content, "a.mpg", switches);
    return dump.substr(dump.find("timing") + 8);
}
// The lines of one PES packet of video.
std::string pes(const Bits &header, const std::vector<std::string> &switches = {}) {
    const std::string dump = dumped(packet(0xE0, header.str() + "data"), switches);
    return dump.substr(dump.find('\n', dump.find("videostream0")) + 1);
}
// Marker, then the header's flags from PTS_DTS on and its data length.
Bits pes_flags(unsigned flags, unsigned length = 0) {
    return Bits({{2, 2}, {6, 0}, {8, flags}, {8, length}});
}

const std::string kSequence = code(
    0xB3, Bits({{12, 720}, {12, 576}, {4, 2}, {4, 3}, {18, 1000}, {1, 1}, {10, 112}, {1, 0}, {2, 0}}).str());

}  // namespace

TEST(Mpeg, PackAndSystemHeaders) {
    Transcript transcript;
    SHOW(dump_of(pack() + code(0xB9, ""), "a", {"-v", "-v"}));
    SHOW(dump_of(pack(90000 * 3723ULL, 3) + code(0xB9, ""), "a", {"-v"}));
    SHOW(dump_of(code(0xBA, std::string(8, '!')) + code(0xB9, "")));
    EXPECT_EQ(dump_of(code(0xBA, "\xC0") + code(0xB9, "")).substr(kStart.size(), 12), "mode == 3 ?\n");
    const std::string bad_marker = little().raw(pack()).at(4).u8(0x40).str();
    EXPECT_EQ(dump_of(bad_marker), kStart + "Error marker bit not 1\n");

    Bits system;
    system.add({{1, 1}, {22, 1000}, {1, 1}, {6, 2}, {1, 1}, {1, 0}, {1, 1}, {1, 0}});
    system.add({{1, 1}, {5, 3}, {1, 1}, {7, 127}});
    system.add({{8, 0xE3}, {2, 3}, {1, 1}, {13, 230}, {1, 0}});
    SHOW(dumped(packet(0xBB, system.str())));
}

TEST(Mpeg, ProgramStreamMap) {
    Transcript transcript;
    const std::string head = Bits({{1, 1}, {2, 0}, {5, 9}, {7, 0}, {1, 1}}).str();
    const std::string map =
        head + big().u16(16).text("abcdefghijklmnop").u16(7).u8(2, 0xE0).u16(3).text("xyz").u32(0xCAFE).str();
    SHOW(lines_from(dumped(packet(0xBC, map)), " nextindicator"));
    SHOW(lines_from(dumped(packet(0xBC, head + big().u16(0, 0).u32(1).str())), " info:"));
    SHOW(lines_from(dumped(packet(0xBC, head + big().u16(20).text("cut").str())), " info:"));
}

TEST(Mpeg, PesHeaders) {
    Transcript transcript;
    EXPECT_EQ(pes(pes_flags(0)), "");
    EXPECT_EQ(pes(pes_flags(0x80, 5).stamp(4, 2, (1ULL << 32) + 1)), "  PTS             100000001\n");
    SHOW(pes(pes_flags(0xC0, 10).stamp(4, 3, 0x1234).stamp(4, 1, 0x567)));
    SHOW(pes(pes_flags(0x80, 5).stamp(4, 5, 7)));
    EXPECT_EQ(pes(pes_flags(0x40)), "ERROR:00000017:PTSDTS flag may not be 01\n");
    EXPECT_EQ(pes(pes_flags(0x20).stamp(2, 0, 99).add({{9, 6}, {1, 1}})), "  ECSR           00000063 6\n");
    EXPECT_EQ(pes(pes_flags(0x10).add({{1, 1}, {22, 77}, {1, 1}})), "  ESRATE         77\n");
    SHOW(pes(pes_flags(0x08).add({{3, 3}, {2, 1}, {1, 1}, {2, 2}})));
    EXPECT_EQ(pes(pes_flags(0x08).add({{3, 4}, {5, 17}})), "  trickmode      4\n  repcntrl     17\n");
    EXPECT_EQ(pes(pes_flags(0x08).add({{3, 2}, {2, 3}, {3, 0}})), "  trickmode      2\n  fieldid      3\n");
    EXPECT_EQ(pes(pes_flags(0x08).add({{3, 7}, {5, 0}})), "  trickmode      7\n");
    SHOW(pes(pes_flags(0x06).add({{1, 1}, {7, 11}, {16, 500}})));
    Bits extension = pes_flags(0x01);
    extension.add({{4, 15}, {3, 7}, {1, 1}});
    for (unsigned i = 0; i < 16; i++) extension.add({{8, i}});
    extension.add({{8, 9}, {1, 1}, {7, 5}, {1, 1}, {1, 1}, {6, 33}, {2, 1}, {1, 1}, {13, 46}});
    extension.add({{1, 1}, {7, 2}, {8, 'A'}, {8, 1}});
    SHOW(pes(extension));
    const Bits all = Bits({{2, 2}, {2, 1}, {4, 15}, {8, 0}, {8, 6}});
    SHOW(pes(all, {"-v", "-v"}));
    SHOW(pes(pes_flags(0xBF, 9).add({{400, 0}}), {"-v", "-v"}));
    EXPECT_EQ(pes(all, {"-v"}), "");
    std::string every;
    for (uint32_t id = 0xBC; id <= 0xFF; id++) every += packet(id, std::string(40, '\0'));
    SHOW(dumped(every));
}

TEST(Mpeg, VideoHeaders) {
    Transcript transcript;
    SHOW(dump_of(kSequence + code(0xB7, "xx")));
    Bits matrices;
    matrices.add({{62, 0}, {1, 0}, {1, 1}, {512 - 2, 0}, {2, 0}, {1, 0}});
    EXPECT_NE(dump_of(code(0xB3, matrices.str())).find("\n nonintramatrix:\n"), std::string::npos);

    const auto after_sequence = [](const std::string &content) {
        const std::string dump = dump_of(kSequence + content);
        const std::string lines = lines_from(dump, "0000000c:");
        return lines.substr(lines.find('\n') + 1);
    };
    for (const unsigned closed : {1U, 0U})
        SHOW(after_sequence(code(0xB8, Bits({{25, 0x1234}, {1, closed}, {1, 1 - closed}}).str())));
    SHOW(after_sequence(code(
        0xB5,
        Bits({{4, 1}, {8, 0x48}, {1, 1}, {2, 1}, {4, 6}, {12, 9}, {1, 1}, {8, 3}, {1, 1}, {2, 2}, {5, 4}})
            .str())));
    SHOW(after_sequence(code(
        0xB5, Bits({{4, 2}, {3, 5}, {1, 1}, {8, 1}, {8, 2}, {8, 3}, {14, 700}, {1, 1}, {14, 500}}).str())));
    Bits coding;
    coding.add(
        {{4, 8}, {16, 0xFEDC}, {2, 1}, {2, 3}, {9, 0x101}, {1, 1}, {1, 1}, {3, 5}, {1, 0}, {7, 9}, {8, 8}});
    SHOW(after_sequence(code(0xB5, coding.add({{4, 0}}).str())));
    for (const unsigned kind : {0U, 3U, 4U, 5U, 6U, 7U, 9U, 10U, 15U}) {
        SHOW(after_sequence(code(0xB5, Bits({{4, kind}, {4, 0}}).str()) + kSequence));
    }
    SHOW(after_sequence(
        code(0x00,
             Bits({{10, 5}, {3, 3}, {16, 77}, {1, 1}, {3, 2}, {1, 0}, {3, 4}, {1, 1}, {8, 9}, {1, 0}, {1, 0}})
                 .str())));
}

// The start code behind a slice is found bit by bit, and seen whole.
TEST(Mpeg, Slices) {
    const auto codes = [](const std::string &slice) {
        const std::string dump = dump_of(kSequence + code(0x01, slice) + code(0xB9, ""));
        return lines_from(dump, "0000000c:");
    };
    const auto expected = [](const std::string &length, const std::string &end) {
        return "0000000c:stream 00000101/" + length + " - 00:00:00:000000 - datastream001\n" +
               (end.empty() ? "" : end + ":stream 000001b9/0000 - 00:00:00:000000 - dataend \n");
    };
    EXPECT_EQ(codes("abcdefgh"), expected("24930", "00000018"));
    EXPECT_EQ(codes(hex("6162 00 00 62 80 00 62")), expected("24930", "00000018"));
    EXPECT_EQ(codes(hex("6162 00 00 00 00 00")), expected("24930", "00000017"));
    EXPECT_EQ(codes(hex("6162 80")), expected("24930", "00000013"));
    EXPECT_EQ(codes(hex("6162 61 80 00 00 20 61")),
              expected("24930", ""));  // 23 zero bits that begin no start code
    EXPECT_EQ(codes(hex("6162 61 10 00 00 20 61")), expected("24930", "00000018"));
    EXPECT_EQ(codes(std::string(200'000, 'x')), expected("30840", "00030d50"));
    EXPECT_EQ(dump_of(kSequence + code(0x01, "abcdef")).size(),
              dump_of(kSequence).size() + expected("24930", "").size());
}

// Start codes at every place around the end of what is read at first, behind a packet and behind a slice.
TEST(Mpeg, StartCodesAcrossReads) {
    constexpr size_t kFirstRead = 4096;
    for (size_t at = kFirstRead - 5; at <= kFirstRead + 2; at++) {
        const std::string packets = pack() + packet(0xBE, std::string(at - 14 - 6, 'x')) + code(0xB9, "");
        const std::string slices = kSequence + code(0x01, std::string(at - 12 - 4, 'x'));
        const std::string end = "0000" + hex_digits(static_cast<unsigned>(at >> 8)) + hex_digits(at & 0xFF);
        for (const std::string &content : {packets, slices + code(0xB9, "")}) {
            std::string dump = dump_of(content);
            for (char &c : dump) c = static_cast<char>(std::toupper(c));
            EXPECT_NE(lines_from(dump, end + ":", 1).find("DATAEND"), std::string::npos) << at;
        }
        const std::string second = code(0x02, std::string(100, 'x')) + code(0xB9, "");
        EXPECT_NE(dump_of(slices.substr(0, slices.size() - 4) + second).find("dataend"), std::string::npos)
            << at;
    }
}

TEST(Mpeg, EdgesOfCodesAndFields) {
    EXPECT_EQ(dumped(hex("0001B9")), "");  // a prefix has two zero bytes
    EXPECT_NE(dumped(code(0xB0, "")).find("Unknown TAG"), std::string::npos);
    EXPECT_EQ(dumped(code(0xAF, "xyz")).find("Unknown TAG"), std::string::npos);
    // An intra matrix has 512 bits; its last one is set and one in its middle, the flag behind it is not.
    const std::string matrix =
        Bits({{62, 0}, {1, 1}, {256, 0}, {1, 1}, {254, 0}, {1, 1}, {1, 0}, {8, 0xFF}}).str();
    EXPECT_EQ(dump_of(code(0xB3, matrix)).find(" nonintramatrix"), std::string::npos);
    const std::string map = Bits({{1, 1}, {2, 0}, {5, 9}, {7, 0}, {1, 1}}).str() +
                            big().u16(0, 5).u8(2, 0xE0).u16(0).u8(3, 0xC0).u16(0).u32(1).str();
    EXPECT_NE(dumped(packet(0xBC, map)).find("stream_id:       c0"), std::string::npos);
    // Without -v the dump ends with the packet that ends at 1 MiB.
    for (const size_t end : {0x100000 - 1, 0x100000}) {
        std::string content = pack();
        while (end - content.size() > 60'000) content += packet(0xBE, std::string(50'000, 'x'));
        content += packet(0xBE, std::string(end - content.size() - 6, 'x')) + packet(0xBF, "");
        EXPECT_EQ(dump_of(content).find("private_stream_2") == std::string::npos, end == 0x100000) << end;
    }
}

TEST(Mpeg, EndsOfTheDump) {
    Transcript transcript;
    const std::string empty = packet(0xE0, pes_flags(0).str());
    SHOW(dumped(empty + "x" + empty));
    SHOW(dumped(std::string(5, '\0') + empty));
    std::string two_megabytes;
    for (int i = 0; i < 64; i++) two_megabytes += packet(0xE0, pes_flags(0).str() + std::string(32765, 'x'));
    const auto lines = [&](const std::vector<std::string> &switches) {
        const std::string dump = dumped(two_megabytes, switches);
        return std::count(dump.begin(), dump.end(), '\n');
    };
    EXPECT_EQ(lines({}), 32);
    EXPECT_EQ(lines({"-v"}), 64);
}

namespace {

std::string ts_packet(uint32_t pid, const std::string &field, uint32_t fill) {
    std::string p = big().u8(0x47).u16(0x4000 | pid).u8(field.empty() ? 0x17 : 0x37).raw(field).str();
    return p + std::string(188 - p.size(), static_cast<char>(fill));
}

}  // namespace

TEST(TransportStream, Packets) {
    Transcript transcript;
    const std::string plain = ts_packet(0x100, "", 0xAA);
    const std::string rest = ts_packet(0, "", 0) + ts_packet(0, "", 0) + ts_packet(0, "", 0);
    const auto first = [&](const std::string &packets, size_t lines) {
        return lines_from(dump_of(plain + packets + rest), "000000c0", lines);
    };
    SHOW(lines_from(dump_of(plain + rest), "Fileformat", 3));
    SHOW(first(ts_packet(0x1FFF, hex("07 51 000000000000"), 0xAA), 5));
    SHOW(first(ts_packet(16, hex("00"), 0xAA), 4));
    const auto long_field = [](uint8_t length) { return big().u8(length).zeros(length).str(); };
    for (const uint8_t n : {uint8_t{167}, uint8_t{168}, uint8_t{182}})
        SHOW(first(ts_packet(16, long_field(n), 0xAA), 4));
    SHOW(first(ts_packet(16, hex("B7 00"), 0xAA), 9));
    SHOW(lines_from(dump_of((plain + rest).substr(0, 188 * 3 + 10)), "00000238"));
}

TEST(TransportStream, EdgesOfPacketsAndFields) {
    const std::string plain = ts_packet(0x100, "", 0xAA);
    const auto dumped_behind = [&](uint32_t pid, unsigned length) {
        const std::string field = big().u8(length).zeros(length).str();
        const std::string dump = dump_of(plain + ts_packet(pid, field, 0xAA) + plain + plain);
        return dump.substr(dump.find("000000c0"));
    };
    for (const unsigned length : {1U, 2U, 3U, 165U, 166U}) {  // the next packet is found
        EXPECT_NE(lines_from(dumped_behind(100, length), "0000017c: PACKET 100"), "") << length;
    }
    for (const auto &[pid, control] : {std::pair{15U, true}, {16U, false}, {8190U, false}, {8191U, true}})
        EXPECT_EQ(dumped_behind(pid, 7).find("Control") != std::string::npos, control) << pid;
    // A field that the file cuts: what follows are zeros.
    const std::string cut = dump_of(plain + plain + plain + plain + hex("47410037 03 00 11"));
    EXPECT_EQ(cut.substr(cut.size() - 49), std::string(" 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"));
}
