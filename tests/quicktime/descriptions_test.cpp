// The data formats of sample descriptions and the lists of extensions behind them.
#include "movie.h"

namespace {

size_t count(const std::string &text, const std::string &part) {
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) n++;
    return n;
}

// The dump's end behind a description's own fields, with a list of two extensions and four more bytes.
std::string extensions_of(const std::string &type, std::string fixed, uint16_t version, uint32_t terminator) {
    fixed = big().raw(fixed).at(8).u16(version).str();
    const std::string extensions = atom("fiel", std::string("\2\6", 2)) + atom("frma", "twos");
    const std::string dump = fields_of(type, fixed + extensions + little().u32(terminator).str());
    return lines_from(dump, "  ATOM");
}

}  // namespace

TEST(QuicktimeDescriptions, Extensions) {
    Transcript transcript;
    SHOW(extensions_of("apch", counting(78), 0, 0));
    SHOW(extensions_of("tmcd", counting(26), 0, 0));
    SHOW(extensions_of("twos", counting(28), 0, 0));
    SHOW(extensions_of("twos", counting(28), 3, 0));
    SHOW(extensions_of("in24", counting(44), 1, 0));
    SHOW(extensions_of("lpcm", counting(64), 2, 0xA0B0C));
}

// One description of each data format in an "stsd": none of them is an unknown atom.
TEST(QuicktimeDescriptions, DataFormats) {
    std::string video =
        "24BG2vuyABGRai12ai13ai15ai16ai1pai1qai52ai53ai55ai56ai5pai5qap4hapchapcnapcoapcsAV1xavc1AVdnAVdvAVmp"
        "BGRACFHDdv5ndv5pdvc dvcpdvh2dvh3dvh5dvh6dvhpdvhqdvpphdv1hdv2hdv3hdv4hdv5hdv6hdv7hdv8hdv9hdvajpegmpeg"
        "mx3nmx3pmx4nmx4pmx5nmx5pr408raw RGBArle v210v216v308v408v410xd54xd55xd59xd5axd5bxd5cxd5dxd5exd5f"
        "xdv1xdv2xdv3xdv4xdv5xdv6xdv7xdv8xdv9xdvaxdvbxdvcxdvdxdvexdvfyuv2yuvsyuvuYVYU";
    video += std::string("\0\0\0\x20\0\0\0\x18", 8);
    const std::string audio = "fl32in24in32lpcmmp4ani24ni32QDM2sowttwos";
    ASSERT_EQ(video.size(), 95U * 4);
    std::string descriptions = counting(8);
    for (size_t i = 0; i < video.size(); i += 4) descriptions += atom(video.substr(i, 4), counting(78));
    for (size_t i = 0; i < audio.size(); i += 4)
        descriptions += atom(audio.substr(i, 4), std::string(28, '\0'));
    const std::string dump = movie_dump(atom("stsd", descriptions));
    EXPECT_EQ(count(dump, "    clutid=28014 (0x6D6E)\n"), 95U);
    EXPECT_EQ(count(dump, "    samplerate=0.000000 (0x0)\n"), 10U);
    EXPECT_EQ(count(dump, "UNKNOWN"), 0U);
}

// A byte more than the fields is a list of extensions that does not fit; 28 bytes are read, whatever is in
// them.
TEST(QuicktimeDescriptions, EdgesOfSizes) {
    const auto warning = [](const std::string &type, size_t size) {
        const std::string fields = big().raw(counting(size)).at(8).u16(0).str();
        const std::string lines =
            lines_from(fields_of(type, fields.substr(0, size)), "Warning: incorrect size", 1);
        return lines.substr(0, lines.find(')'));
    };
    EXPECT_EQ(warning("apch", 78) + warning("tmcd", 28) + warning("twos", 28), "");
    EXPECT_EQ(warning("apch", 79), "Warning: incorrect size(86 != 87");
    EXPECT_EQ(warning("tmcd", 29), "Warning: incorrect size(34 != 37");
    EXPECT_EQ(warning("twos", 29), "Warning: incorrect size(36 != 37");
    EXPECT_EQ(fields_of("sowt", counting(19)), "");
    EXPECT_NE(fields_of("sowt", counting(20)), "");
}
