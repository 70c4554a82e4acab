#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

Outcome json(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-json");
}

ByteWriter atom(const std::string &type, const std::string &content) {
    return big().u32(static_cast<uint32_t>(8 + content.size())).text(type).raw(content);
}

}  // namespace

TEST(KeldumpJson, Objects) {
    const Workplace place;
    place.write("a%s.ppm", "P6\n4 3\n");
    place.write("text",
                "\xEF\xBB\xBF"
                "a\nb\xFF");
    place.write("none", "no format");
    Transcript transcript;
    const auto out = [&](const std::vector<std::string> &arguments) { return json(place, arguments).out; };
    SHOW(out({"a%s.ppm", "none", "missing"}));
    SHOW(out({"-d", "text"}));
    SHOW(out({"--utf8", "-d", "text"}));
    SHOW(out({"-h", "a%s.ppm"}));
    SHOW(out({"--lines", "--match", "*size", "a%s.ppm", "none"}));
    SHOW(out({"--match=Fileformat:PPM*/xsize", "--", "a%s.ppm"}));
    EXPECT_EQ(json(place, {"a%s.ppm"}).status, 0);
    EXPECT_EQ(json(place, {"none"}).status, 1);
    for (const std::vector<std::string> &wrong :
         {std::vector<std::string>{}, {"-ms", "a"}, {"-x", "a"}, {"--match"}})
        EXPECT_EQ(json(place, wrong).status, 2);
}

// Texts that would pass for fields of another section if lines were read back.
TEST(KeldumpJson, NothingInAFileIsForged) {
    const Workplace place;
    ByteWriter dpx = big().text("SDPX").u32(2048).text("V2.0", 8).u32(8192).at(28).u32(384);
    dpx.at(160).text("x'\n creator          : 'y'\nimage\n pixelsperline  C : 99\n linesperimage  C : 7",
                     100);
    dpx.at(768).u16(0, 1).u32(1920, 1080).at(2047).u8(0);
    place.write("forged.dpx", dpx.str());
    const std::string handler = "ok\nATOM 0 moov (0x00000) size=8 (0x0000008) offset=0x               0\n";
    ByteWriter hdlr_bytes = big();
    hdlr_bytes.u32(0).text("mhlrvideappl").zeros(8).u8(static_cast<uint32_t>(handler.size()));
    hdlr_bytes.text(handler);
    const std::string hdlr = hdlr_bytes.str();
    place.write("forged.mov",
                atom("moov", atom("trak", atom("mdia", atom("hdlr", hdlr).str()).str()).str()).str());
    Transcript transcript;
    SHOW(json(place,
              {"--match", "pixelsperline", "--match", "creator", "--match", "linesperimage", "forged.dpx"})
             .out);
    // What steers a terminal unseen is escaped, as controls are.
    dpx.at(160).text("a\u009b\u202eb\u2028\u061c\u2069\u00a0\u2030", 100);
    place.write("steering.dpx", dpx.str());
    EXPECT_NE(json(place, {"--match", "creator", "steering.dpx"})
                  .out.find("[\"a\\u009b\\u202eb\\u2028\\u061c\\u2069\u00a0\u2030\"]"),
              std::string::npos);
    const std::string movie = json(place, {"forged.mov"}).out;
    EXPECT_EQ(movie.find("\"text\": \"ATOM 0 moov (0x00000)"), std::string::npos);
}

TEST(KeldumpJson, LongValuesAndStatus) {
    const Workplace place;
    ByteWriter exr = little().u32(20000630, 2).text("comments").u8(0).text("string").u8(0);
    exr.u32(200'000).raw(std::string(200'000, 'x')).u8(0);
    place.write("long.exr", exr.str());
    const std::string out = json(place, {"long.exr"}).out;
    EXPECT_NE(out.find("xxx'\", \"values\": [null]"), std::string::npos);
    EXPECT_GT(out.size(), 200'000U);
}

// Indices in labels, names that files give, bytes that are kept, copied and put in another order.
TEST(KeldumpJson, Places) {
    const Workplace place;
    const std::string edits = big().zeros(4).u32(2, 5, 0, 0x10000, 7, 1, 0x8000).str();
    place.write("edits.mov", atom("moov", atom("edts", atom("elst", edits).str()).str()).str());

    ByteWriter wave = little().text("RF64").u32(0xFFFFFFFF).text("WAVE");
    wave.text("ds64").u32(28).u64(108, 8, 4).u32(0).text("fmt ").u32(16).u16(1, 1).u32(48000);
    wave.u32(96000).u16(2, 16).text("data").u32(0xFFFFFFFF).raw("samples.").zeros(64);
    place.write("long.wav", wave.str());

    ByteWriter dpx = little().text("XPDS").u32(2048).text("V2.0", 8).u32(8192).at(32).u32(64);
    dpx.at(2048).text("KEL Tessaron metadata", 32).u32(0xFEEDF00D);
    // Film data whose bytes go from the most significant one of each word on: a packet with its tags, a CRC.
    dpx.u32(0x08353132, 0x20040A0B, 0x0C0D0000, 0).zeros(28);
    place.write("film.dpx", dpx.str());

    Transcript transcript;
    const auto lines = [&](const char *pattern, const char *file) {
        return json(place, {"--lines", "--match", pattern, file}).out;
    };
    SHOW(lines("elst/data.*", "edits.mov"));
    SHOW(lines("Size", "long.wav") + lines("Samples", "long.wav"));
    SHOW(lines("MATERIAL", "film.dpx") + lines("MATERIAL/tags", "film.dpx"));
}
