#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(ExrFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("exr"));
}

namespace {

std::string attribute(const std::string &name, const std::string &type, const std::string &value) {
    return name + '\0' + type + '\0' + little().u32(value.size()).raw(value).str();
}

// 64x32 pixels of three halves in one tile or one chunk of lines, in several parts or one.
std::string header(uint8_t compression, const std::string &more) {
    std::string channels;
    for (const char *name : {"B", "G", "R"}) channels += little().text(name).u8(0).u32(1, 0, 1, 1).str();
    const std::string window = little().u32(0, 0, 63, 31).str();
    return attribute("channels", "chlist", channels + '\0') +
           attribute("compression", "compression", std::string(1, static_cast<char>(compression))) +
           attribute("dataWindow", "box2i", window) + attribute("displayWindow", "box2i", window) + more +
           '\0';
}

std::string file(uint32_t version, const std::string &headers, const std::string &chunk) {
    const std::string head = little().u32(20000630, version).raw(headers).str();
    return head + little().u64(head.size() + 8).str() + chunk;
}

}  // namespace

// What the last chunk holds shows whether it was written; where nothing is compressed zeros are a picture.
TEST(ExrFacts, LastChunks) {
    const std::string tiles = attribute("tiles", "tiledesc", little().u32(64, 32).u8(0).str());
    const std::string deep = attribute("chunkCount", "int", little().u32(1).str()) +
                             attribute("type", "string", "deeptile") + tiles;
    const std::string data(2000, 'd');
    const std::string sizes = little().u64(20, 1980, 9000).str();
    const std::string tiled = file(0x202, header(9, tiles), little().zeros(16).u32(2000).raw(data).str());
    const std::string deep_tiled = file(0x802, header(2, deep), std::string(16, '\0') + sizes + data);
    const std::string plain = file(2, header(0, attribute("chunkCount", "int", little().u32(1).str())),
                                   little().u32(0, 2000).raw(data).str());
    EXPECT_EQ(facts_of(tiled),
              "EXR tiled | 64x32 DWAB RGB 16 bits float 1 frames | whole | channels: B G R | tiles: 64x32");
    EXPECT_EQ(facts_of(deep_tiled),
              "EXR deep | 64x32 ZIPS RGB 16 bits float 1 frames | whole | channels: B G R | tiles: 64x32");
    for (const std::string &whole : {tiled, deep_tiled}) {
        EXPECT_EQ(extent_of(whole + "behind", "a.exr"), "whole");
        EXPECT_EQ(extent_of(whole.substr(0, whole.size() - 1), "a.exr"), "cut the last chunk");
        EXPECT_EQ(extent_of(whole.substr(0, whole.size() - 1100) + std::string(1100, '\0'), "a.exr"),
                  "cut the last chunk holds zeros");
    }
    for (const std::string first : {"x", "d"}) {
        const std::string one = attribute("chunkCount", "int", little().u32(1).str());
        const std::string zip = file(2, header(3, one), little().u32(0, 2000).raw(first + data).str());
        EXPECT_EQ(extent_of(zip.substr(0, zip.size() - 101) + std::string(100, '\0'), "a.exr"),
                  first == "x" ? "cut the last chunk holds zeros" : "whole");
    }
    EXPECT_EQ(extent_of(plain.substr(0, plain.size() - 1100) + std::string(1100, '\0'), "a.exr"), "whole");
}

// A table of offsets is written last: what it has not was never written.
TEST(ExrFacts, OffsetTable) {
    const std::string head =
        little().u32(20000630, 2).raw(header(3, attribute("chunkCount", "int", little().u32(2).str()))).str();
    const std::string chunk = little().u32(0, 100).raw(std::string(100, 'd')).str();
    const uint64_t first = head.size() + 16;
    const auto extent = [&](uint64_t second) {
        return extent_of(head + little().u64(first, second).str() + chunk + chunk, "a.exr");
    };
    EXPECT_EQ(extent(first + chunk.size()), "whole");
    EXPECT_EQ(extent(0), "cut 1 of 2 chunks were not written");
    EXPECT_EQ(extent_of(head + little().u64(first).str(), "a.exr"), "cut the offset table");
}

// The two whites of P3 differ in y alone; a third has no code.
TEST(ExrFacts, Primaries) {
    for (const auto &[x, y, expected] : {std::tuple{0.314F, 0.351F, "colour 11,"},
                                         {0.3127F, 0.329F, "colour 12,"},
                                         {0.3217F, 0.3377F, "chromaticities: 0.68,0.32 0.265,0.69 "}}) {
        ByteWriter values = little();
        for (const float value : {0.68F, 0.32F, 0.265F, 0.69F, 0.15F, 0.06F, x, y}) values.f32(value);
        EXPECT_NE(
            facts_of(file(2, header(0, attribute("chromaticities", "chromaticities", values.str())), ""))
                .find(expected),
            std::string::npos);
    }
}

// A flat part beside a deep one, whose chunk is the last; depth of 32 bits beside colours of 16, which B44
// leaves as it is.
TEST(ExrFacts, MixedPartsAndChannels) {
    const std::string one = attribute("chunkCount", "int", little().u32(1).str());
    const std::string parts = header(2, one + attribute("type", "string", "deepscanline")) +
                              header(3, one + attribute("type", "string", "scanlineimage")) + '\0';
    const std::string head = little().u32(20000630, 0x1802).raw(parts).str();
    const std::string deep = little().u32(0, 0).u64(4, 4, 4, 0xDDDDDDDD).str();
    const std::string flat = little().u32(1, 0, 100).raw(std::string(100, 'd')).str();
    const uint64_t first = head.size() + 16;
    const std::string both = head + little().u64(first, first + deep.size()).str() + deep + flat;
    EXPECT_EQ(extent_of(both, "a.exr"), "whole");
    EXPECT_EQ(extent_of(both.substr(0, both.size() - 1), "a.exr"), "cut the last chunk");

    std::string channels;
    for (const auto &[name, type] : {std::pair{"B", 1U}, {"G", 1U}, {"R", 1U}, {"Z", 2U}})
        channels += little().text(name).u8(0).u32(type, 0, 1, 1).str();
    const std::string b44 = header(6, one + attribute("channels", "chlist", channels + '\0'));
    EXPECT_EQ(facts_of(file(2, b44, little().u32(0, 1064).raw(std::string(40, 'd')).zeros(1024).str())),
              "EXR scan lines | 64x32 B44 RGB 16 bits float 1 frames | whole | channels: B G R Z");
}

// Names that others than the format's library write.
TEST(ExrFacts, OtherNames) {
    const std::string chunk = little().u32(0, 4).text("data").str();
    const std::string more = attribute("chunkCount", "int", little().u32(1).str()) +
                             attribute("FramesPerSecond", "float", little().f32(23.976F).str()) +
                             attribute("writer", "string", "a plug-in");
    EXPECT_EQ(
        facts_of(file(2, header(0, more), chunk)),
        "EXR scan lines | 64x32 uncompressed RGB 16 bits float 24000/1001 fps 1 frames | by a plug-in | "
        "whole | channels: B G R");
}

// Whatever the rate is, the flag of dropped numbers is no digit.
TEST(ExrFacts, DroppedNumbers) {
    for (const float rate : {0.0F, 29.97F, 59.94F}) {
        const std::string more = attribute("framesPerSecond", "float", little().f32(rate).str()) +
                                 attribute("timeCode", "timecode", little().u32(0x01000042, 0).str());
        EXPECT_NE(facts_of(file(2, header(0, more), "")).find("| 01:00:00;02 timeCode"), std::string::npos);
    }
}

// Windows reach as far as signed numbers of 32 bits do.
TEST(ExrFacts, LargestWindow) {
    const std::string far = little().u32(0x80000000, 0x80000000, INT32_MAX, INT32_MAX).str();
    const std::string parts = header(0, attribute("dataWindow", "box2i", far)) + header(0, "") + '\0';
    EXPECT_NE(facts_of(file(0x1002, parts, "")).find("-2147483648,-2147483648 4294967296x4294967296"),
              std::string::npos);
}

namespace {

// Chunks of a part, by where its table of offsets would end.
uint64_t chunks_of(uint64_t width, uint64_t height, int compression, const std::string &more) {
    const ByteWriter window = little().u32(10, 20, 9 + width, 19 + height);
    std::string head = attribute("dataWindow", "box2i", window.str()) + more;
    head = file(2, header(static_cast<uint8_t>(compression), head), "");
    head.resize(head.size() - 8);
    return (std::max<uint64_t>(claimed_of(head), head.size()) - head.size()) / 8;
}

}  // namespace

TEST(ExrFacts, Chunks) {
    const auto lines = [](int compression) {
        std::string counts;
        for (const uint64_t height : {1, 2, 16, 17, 32, 33, 256, 257})
            counts += std::to_string(chunks_of(8, height, compression, "")) + " ";
        return counts;
    };
    for (const int compression : {0, 1, 2}) EXPECT_EQ(lines(compression), "1 2 16 17 32 33 256 257 ");
    for (const int compression : {3, 5}) EXPECT_EQ(lines(compression), "1 1 1 2 2 3 16 17 ");
    for (const int compression : {4, 6, 7, 8, 11}) EXPECT_EQ(lines(compression), "1 1 1 1 1 2 8 9 ");
    for (const int compression : {9, 10}) EXPECT_EQ(lines(compression), "1 1 1 1 1 1 1 2 ");
    // Tiles of 16: one level, mipmaps and ripmaps rounded down and up.
    const auto tiles = [](uint64_t width, uint64_t height) {
        std::string counts;
        for (const unsigned mode : {0x00, 0x01, 0x11, 0x02, 0x12}) {
            const std::string kind = attribute("tiles", "tiledesc", little().u32(16, 16).u8(mode).str()) +
                                     attribute("type", "string", "tiledimage");
            counts += std::to_string(chunks_of(width, height, 0, kind)) + " ";
        }
        return counts;
    };
    EXPECT_EQ(tiles(1, 1), "1 1 1 1 1 ");
    EXPECT_EQ(tiles(2, 1), "1 2 2 2 2 ");
    EXPECT_EQ(tiles(3, 2), "1 2 3 4 6 ");
    EXPECT_EQ(tiles(16, 17), "2 6 7 30 35 ");
    EXPECT_EQ(tiles(17, 33), "6 11 13 48 70 ");
    EXPECT_EQ(tiles(64, 32), "8 15 15 77 77 ");
}

TEST(ExrFacts, Edges) {
    Transcript transcript;
    const std::string one = attribute("chunkCount", "int", little().u32(1).str());
    const std::string chunk = little().u32(0, 100).fill('x', 100).str();
    const auto with = [&](const std::string &more) {
        return facts_of(file(2, header(0, one + more), chunk));
    };
    const auto window = [](uint32_t left, uint32_t top, uint32_t right, uint32_t bottom) {
        return attribute("dataWindow", "box2i", little().u32(left, top, right, bottom).str());
    };
    const std::string plain = file(2, header(0, one), chunk);
    const size_t end = plain.size() - 108;
    const std::string at = std::to_string(end - 8), table = std::to_string(end);
    SHOW(facts_of(plain));
    SHOW(facts_changed(plain, "<" + at + " <" + std::to_string(end - 9) + " <" + std::to_string(end - 1) +
                                  " <" + table + " <" + std::to_string(end + 7) + " <" +
                                  std::to_string(end + 8) + " <" + std::to_string(end + 107) + " >1 " +
                                  std::to_string(end + 4) + "=00000000 " + at + "=0000000000000000"));
    SHOW(with(window(0, 0, 64, 31)) + "\n" + with(window(1, 1, 64, 32)) + "\n" + with(window(0, 0, 0, 0)) +
         "\n" + with(window(5, 5, 4, 4)));
    // No chunk count of 0 or less, a negative size of an attribute, one that ends behind the file.
    SHOW(extent_of(file(2, header(0, attribute("chunkCount", "int", hex("00000000"))), chunk), "a.exr"));
    SHOW(extent_of(file(2, header(0, attribute("chunkCount", "int", hex("FFFFFFFF"))), chunk), "a.exr"));
    for (const uint32_t size : {0U, 0xFFFFFFFFU, 0x80000000U, 0x7FFFFFFFU})
        SHOW(with(little().text("a").u8(0).text("x").u8(0).u32(size).str()));
    for (const size_t n : {254, 255, 256, 257})
        SHOW(std::to_string(n) + " " +
             with(attribute(std::string(n, 'n'), "x", "y") + attribute("owner", "string", "me")));
    // Primaries and white within two thousandths.
    const auto colours = [&](std::initializer_list<float> values) {
        ByteWriter bytes = little();
        for (const float value : values) bytes.f32(value);
        return with(attribute("chromaticities", "chromaticities", bytes.str()));
    };
    SHOW(colours({0.6419F, 0.3319F, 0.3019F, 0.6F, 0.15F, 0.06F, 0.3127F, 0.329F}));
    SHOW(colours({0.6421F, 0.33F, 0.30F, 0.6F, 0.15F, 0.06F, 0.3127F, 0.329F}));
    SHOW(colours({0.7061F, 0.2901F, 0.17F, 0.797F, 0.131F, 0.046F, 0.3127F, 0.329F}));
    SHOW(with(attribute("framesPerSecond", "rational", little().u32(24000, 1001).str()) +
              attribute("timeCode", "timecode", little().u32(0x41023344, 0).str())));
    SHOW(with(attribute("pixelAspectRatio", "float", little().f32(2).str()) +
              attribute("lineOrder", "lineOrder", "\2")));
    SHOW(with(attribute("lineOrder", "lineOrder", "\1")) + "\n" +
         with(attribute("lineOrder", "lineOrder", "\3")));
    SHOW(with(attribute("compression", "compression", "\x0B")) + "\n" +
         with(attribute("compression", "compression", "\x0C")));
}

TEST(ExrFacts, Parts) {
    for (const size_t n : {1, 2, 64, 65}) {
        std::string headers;
        for (size_t i = 0; i < n; i++)
            headers += header(0, attribute("name", "string", "p" + std::to_string(i)));
        const std::string text = facts_of(file(0x1002, headers + '\0', ""));
        EXPECT_EQ(text.substr(0, text.find(" | ")),
                  n == 1 ? "EXR scan lines" : "EXR scan lines, " + std::to_string(n) + " parts");
        EXPECT_EQ(text.find("parts: p0, p1") == text.npos, n == 1);
    }
}
