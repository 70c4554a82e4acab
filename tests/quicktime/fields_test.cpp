// The fields of every atom that has some. Payloads count up byte by byte, so that each field has a value of
// its own.
#include <limits>

#include "movie.h"

namespace {

std::string audio(uint16_t version, const std::string &more = "") {
    return big().raw(counting(28)).at(8).u16(version).at(28).raw(more).str();
}

std::string linear_audio(uint32_t flags) {
    const ByteWriter more = big().u32(72).f64(48000).u32(2, -2, 24, flags, 6, 1);
    return atom("lpcm", audio(2, more.str()));
}

}  // namespace

TEST(QuicktimeFields, EveryField) {
    Transcript transcript;
    struct Sized {
        const char *type;
        size_t size;
    };
    std::string movie;
    for (const Sized &a :
         {Sized{"mvhd", 100}, {"tkhd", 84}, {"mdhd", 24}, {"vmhd", 12}, {"smhd", 8},  {"gmin", 16},
          {"prof", 12},       {"clef", 12}, {"enof", 12}, {"pnot", 12}, {"Rnge", 4},  {"enda", 2},
          {"frma", 4},        {"alis", 9},  {"rsrc", 9},  {"cslg", 24}, {"colr", 10}, {"fiel", 2},
          {"pasp", 8},        {"clap", 32}, {"gama", 4},  {"apch", 78}, {"apch", 40}, {"sowt", 19},
          {"tmcd", 28},       {"tmcd", 26}, {"c608", 10}, {"c708", 8}}) {
        movie += atom(a.type, counting(a.size));
    }
    movie += atom("hdlr", counting(24) + "\5Sound") + atom("tcmi", counting(24) + "\6Geneva");
    movie += atom("twos", audio(0)) + atom("sowt", audio(3));
    movie += atom("in24", audio(1, counting(16))) + linear_audio(0x8000000C);
    for (uint32_t flags = 1; flags <= 4; flags++) movie += linear_audio(flags);
    movie += linear_audio(0x70);
    movie += atom("stsd", counting(8) + atom("twos", audio(1).substr(0, 32)));
    movie += atom("stsd", counting(8) + atom("twos", audio(0).substr(0, 24)));  // read beyond its end
    SHOW(movie_dump(movie + atom("free")));
}

TEST(QuicktimeFields, SignsFixedPointAndCountedTexts) {
    Transcript transcript;
    SHOW(fields_of("cslg", big().u32(0, -1, -2, 3, INT32_MIN, -1).str()));
    SHOW(fields_of("clef", big().u32(0, 0x18000, 0xFFFFFFFF).str()));
    const auto handler_name = [](const std::string &text) {
        return lines_from(fields_of("hdlr", std::string(24, '\0') + text), "  name=");
    };
    EXPECT_EQ(handler_name(std::string(1, '\0')), "  name=\n");
    EXPECT_EQ(handler_name(std::string("\5ab\0cd", 6)), "  name=   ab\n");  // the length is the width, too
    EXPECT_EQ(handler_name("\xFFvideo"), "  name=" + std::string(250, ' ') + "video\n");
}

TEST(QuicktimeFields, NamesInUserDataAreOpaque) {
    Transcript transcript;
    const std::string name = atom("name", big().u16(6, 9).text("Kamera").str());
    SHOW(movie_dump(atom("udta", name) + name));
}

TEST(QuicktimeFields, ChannelLayoutsEndWithThePayload) {
    Transcript transcript;
    const ByteWriter layout = big().u32(0, 0x650002, 3, 0xFFFFFFFF);
    const ByteWriter channel = big().u32(1, 2).f32(-1.5F, 0, std::numeric_limits<float>::infinity());
    const ByteWriter second = big().u32(3, 4).f32(1, 2, 3);
    SHOW(fields_of("chan", layout.str() + channel.str() + second.str() + "more"));
    const std::string one = little().raw(layout.str()).at(12).hex("00000001").str();
    EXPECT_EQ(fields_of("chan", one + channel.str() + second.str()).find("label=3"), std::string::npos);
    EXPECT_NE(fields_of("chan", one + channel.str() + second.str()).find("label=1"), std::string::npos);
    const std::string both = layout.str() + channel.str() + second.str();
    EXPECT_NE(fields_of("chan", both).find("label=3"), std::string::npos);
    EXPECT_EQ(fields_of("chan", both.substr(0, both.size() - 1)).find("label=3"), std::string::npos);
}

TEST(QuicktimeTables, Entries) {
    Transcript transcript;
    const auto table = [](const std::string &type, const ByteWriter &entries, uint32_t count) {
        return lines_from(fields_of(type, big().u32(0, count).raw(entries.str()).str()), "  nentries=");
    };
    SHOW(table("elst", big().u32(5, -1, 0x8000, 6, 7, 0xFFFF0000), 2));
    SHOW(table("stts", big().u32(3, 512, 9), 1000000));  // ends with the last full entry
    SHOW(table("ctts", big().u32(3, -2), 1));
    for (const char *type : {"stss", "stps", "stco"}) {
        SHOW(table(type, big().u32(0, -1), 2));
    }
    SHOW(table("co64", big().u64(0x100000010), 1));
    SHOW(table("stsc", big().u32(1, 20, 2), 1));
    SHOW(fields_of("ctab", big().u32(7).u16(0x8000, 1).u64(0x0001FFFF00020003, 9, 10).str()));
    SHOW(fields_of("stsz", big().u32(0, 0, 2, 900, 80).str()));
    SHOW(fields_of("stsz", big().u32(0, 1024, 1).text("rest").str()));  // all of one size
}

TEST(QuicktimeTables, CountBeyondTheAtomReadsOn) {
    Transcript transcript;
    const std::string offsets = atom("stco", big().u32(0, 2, 40).str());
    SHOW(lines_from(movie_dump(atom("stbl", offsets) + atom("free")), "    nentries="));
}

// Lists end with their count, and with the last entry that is whole.
TEST(QuicktimeTables, EdgesOfLists) {
    const auto rows = [](const std::string &dump) {
        size_t n = 0;
        for (size_t at = 0; (at = dump.find(" data[", at)) != std::string::npos; at++) n++;
        return n;
    };
    const std::string entries(16, '\1');
    const auto counted = [](uint32_t n, const std::string &list) { return big().u32(0, n).raw(list).str(); };
    EXPECT_EQ(rows(fields_of("ctts", counted(2, entries))), 4U);
    EXPECT_EQ(rows(fields_of("ctts", counted(1, entries))), 2U);
    EXPECT_EQ(rows(fields_of("ctts", counted(2, entries.substr(1)))), 2U);
    EXPECT_EQ(rows(fields_of("stss", counted(4, entries.substr(1)))), 3U);
    EXPECT_EQ(rows(movie_dump(atom("sdtp", std::string(6, '\0'), 1))), 2U);
}

TEST(QuicktimeTables, SampleDependencies) {
    Transcript transcript;
    const std::string dump = fields_of("sdtp", std::string("\0\0\0\0\x24\x80\x5B\x01", 8));
    SHOW(lines_from(dump, "            "));
    SHOW(fields_of("sdtp", std::string(4, '\0')));
}
