// The fields of every atom that has some. Payloads count up byte by byte, so that each field has a value of
// its own; the text that the whole must give stands in every-field.txt.
#include <limits>

#include "movie.h"

namespace {

std::string audio(uint16_t version, const std::string &more = "") {
    return big().raw(counting(28)).at(8).u16(version).at(28).raw(more).str();
}

std::string linear_audio(uint32_t flags) {
    const ByteWriter more = big().u32(72).f64(48000).u32(2).u32(-2).u32(24).u32(flags).u32(6).u32(1);
    return atom("lpcm", audio(2, more.str()));
}

const std::string kNoVersion = "version=0 (0x0)|flags[0]=0 (0x0)|flags[1]=0 (0x0)|flags[2]=0 (0x0)|";

}  // namespace

TEST(QuicktimeFields, EveryField) {
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
    movie += atom("stsd", counting(8) + atom("twos", audio(0).substr(0, 24)));  // read beyond its end
    EXPECT_EQ(movie_dump(movie + atom("free")), golden("every-field.txt"));
}

TEST(QuicktimeFields, SignsFixedPointAndCountedTexts) {
    EXPECT_EQ(
        fields_of("cslg", big().u32(0).u32(-1).u32(-2).u32(3).u32(INT32_MIN).u32(-1).str()),
        fields(kNoVersion + "shift=4294967295 (0xFFFFFFFF)|least=-2 (0xFFFFFFFE)|greatest=3 (0x3)|"
                            "displaystarttime=-2147483648 (0x80000000)|displayendtime=-1 (0xFFFFFFFF)|"));
    EXPECT_EQ(fields_of("clef", big().u32(0).u32(0x18000).u32(0xFFFFFFFF).str()),
              fields(kNoVersion + "width=1.500000 (0x18000)|height=65536.000000 (0xFFFFFFFF)|"));
    const auto handler_name = [](const std::string &text) {
        return lines_from(fields_of("hdlr", std::string(24, '\0') + text), "  name=");
    };
    EXPECT_EQ(handler_name(std::string(1, '\0')), "  name=\n");
    EXPECT_EQ(handler_name(std::string("\5ab\0cd", 6)), "  name=   ab\n");  // the length is the width, too
    EXPECT_EQ(handler_name("\xFFvideo"), "  name=" + std::string(250, ' ') + "video\n");
}

TEST(QuicktimeFields, NamesInUserDataAreOpaque) {
    const std::string name = atom("name", big().u16(6).u16(9).text("Kamera").str());
    EXPECT_EQ(movie_dump(atom("udta", name) + name),
              recorded("quicktime/expected/quicktime-fields-names-in-user-data-are-opaque.txt"));
}

TEST(QuicktimeFields, ChannelLayoutsEndWithThePayload) {
    const ByteWriter layout = big().u32(0).u32(0x650002).u32(3).u32(0xFFFFFFFF);
    const ByteWriter channel =
        big().u32(1).u32(2).f32(-1.5F).f32(0).f32(std::numeric_limits<float>::infinity());
    EXPECT_EQ(fields_of("chan", layout.str() + channel.str() + "more"),
              fields(kNoVersion + "layouttag=6619138 (0x650002)|bitmap=3 (0x3)|count=4294967295 (0xFFFFFFFF)|"
                                  "desc[i].label=1 (0x1)|desc[i].flags=2 (0x2)|"
                                  "desc[i].coordinates[0]=-1.500000|desc[i].coordinates[1]=0.000000|"
                                  "desc[i].coordinates[2]=inf|"));
}

TEST(QuicktimeTables, Entries) {
    const auto table = [](const std::string &type, const ByteWriter &entries, uint32_t count) {
        return lines_from(fields_of(type, big().u32(0).u32(count).raw(entries.str()).str()), "  nentries=");
    };
    EXPECT_EQ(table("elst", big().u32(5).u32(-1).u32(0x8000).u32(6).u32(7).u32(0xFFFF0000), 2),
              fields("nentries=2 (0x2)|data[0].trackdur=5 (0x5)|data[0].mediatime=-1 (0xFFFFFFFF)|"
                     "data[0].mediarate=0.500000 (0x8000)|data[1].trackdur=6 (0x6)|data[1].mediatime=7 (0x7)|"
                     "data[1].mediarate=65535.000000 (0xFFFF0000)|"));
    EXPECT_EQ(table("stts", big().u32(3).u32(512).u32(9), 1000000),  // ends with the last full entry
              fields("nentries=1000000 (0xF4240)|data[0].count=3 (0x3)|data[0].duration=512 (0x200)|"));
    EXPECT_EQ(table("ctts", big().u32(3).u32(-2), 1),
              fields("nentries=1 (0x1)|data[0].samplecount=3 (0x3)|data[0].offset=-2 (0xFFFFFFFE)|"));
    for (const char *type : {"stss", "stps", "stco"}) {
        EXPECT_EQ(table(type, big().u32(0).u32(-1), 2),
                  fields("nentries=2 (0x2)|data[0]=0 (0x0)|data[1]=4294967295 (0xFFFFFFFF)|"));
    }
    EXPECT_EQ(table("co64", big().u64(0x100000010), 1), fields("nentries=1 (0x1)|data[0]=1_16 (0x110)|"));
    EXPECT_EQ(
        table("stsc", big().u32(1).u32(20).u32(2), 1),
        fields("nentries=1 (0x1)|data.first[0]=1 (0x1)|data.nsamples[0]=20 (0x14)|data.desc[0]=2 (0x2)|"));
    EXPECT_EQ(
        fields_of("ctab", big().u32(7).u16(0x8000).u16(1).u64(0x0001FFFF00020003).u64(9).str()),
        fields("seed=7 (0x7)|flags=32768 (0x8000)|size=1 (0x1)|data.alpha[0]=1 (0x1)|"
               "data.red[0]=65535 (0xFFFF)|data.green[0]=2 (0x2)|data.blue[0]=3 (0x3)|"
               "data.alpha[1]=0 (0x0)|data.red[1]=0 (0x0)|data.green[1]=0 (0x0)|data.blue[1]=9 (0x9)|"));
    EXPECT_EQ(
        fields_of("stsz", big().u32(0).u32(0).u32(2).u32(900).u32(80).str()),
        fields(kNoVersion + "samplesize=0 (0x0)|nentries=2 (0x2)|data[0]=900 (0x384)|data[1]=80 (0x50)|"));
    EXPECT_EQ(fields_of("stsz", big().u32(0).u32(1024).u32(1).text("rest").str()),  // all of one size
              fields(kNoVersion + "samplesize=1024 (0x400)|nentries=1 (0x1)|*** 4 rogue bytes ***:|"
                                  "data 0000: 72 65 73 74                                     rest|"));
}

TEST(QuicktimeTables, CountBeyondTheAtomReadsOn) {
    const std::string offsets = atom("stco", big().u32(0).u32(2).u32(40).str());
    EXPECT_EQ(lines_from(movie_dump(atom("stbl", offsets) + atom("free")), "    nentries="),
              recorded("quicktime/expected/quicktime-tables-count-beyond-the-atom-reads-on.txt"));
}

TEST(QuicktimeTables, SampleDependencies) {
    const std::string dump = fields_of("sdtp", std::string("\0\0\0\0\x24\x80\x5B\x01", 8));
    EXPECT_EQ(lines_from(dump, "            "),
              recorded("quicktime/expected/quicktime-tables-sample-dependencies.txt"));
    EXPECT_EQ(fields_of("sdtp", std::string(4, '\0')), fields(kNoVersion));
}
