#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

ByteWriter exr() { return little().hex("762F3101 02000000"); }
void add(ByteWriter &w, const std::string &name, const std::string &type, const std::string &value) {
    w.text(name).u8(0).text(type).u8(0).u32(value.size()).raw(value);
}

ByteWriter channel(char name) {
    return little().u8(static_cast<uint8_t>(name)).u8(0).u32(1).u32(0).u32(2).u32(0xFFFFFFFF);
}

}  // namespace

TEST(Exr, EveryKindOfAttribute) {
    ByteWriter w = exr();
    add(w, "channels", "chlist", channel('B').str() + channel('R').str() + '\0');
    add(w, "comments", "string", std::string("a\0b", 3));
    add(w, "preview", "preview", std::string(16, '\0'));
    add(w, "a name longer than its column", "box2i", little().u32(0xFFFFFFFF).u32(2).u32(3).u32(4).str());
    add(w, "c", "compression", std::string(1, '\0'));
    add(w, "c", "compression", "\x80");
    add(w, "f", "float", little().f32(-1.5).str());
    add(w, "n", "float", little().u32(0x7FC00000).str());
    add(w, "v", "v2f", little().f32(0.5).f32(0.25).str());
    add(w, "r", "rational", little().u32(24).u32(1).str());
    add(w, "full rows", "opaque", std::string(32, '\x7F'));
    w.u8(0).text("pixels");
    const std::string row = "7f 7f 7f 7f 7f 7f 7f 7f 7f 7f 7f 7f 7f 7f 7f 7f \n";
    EXPECT_EQ(dump_of(w.str()),
              "Fileformat:EXR\n"
              "00008 channels           chlist     37\nB 1 0 2 -1\nR 1 0 2 -1\n"
              "00041 comments           string     3\n'" +
                  std::string("a\0b", 3) +
                  "'\n00058 preview            preview    16\nPreviewImage\n"
                  "0007c a name longer than its column box2i      16\n"
                  " xstart -1\n ystart 2\n xsize  3\n ysize  4\n"
                  "000b4 c                  compression 1\n uncompressed\n"
                  "000c7 c                  compression 1\n compression(128)\n"
                  "000da f                  float      4\n -1.500000\n"
                  "000ea n                  float      4\n nan\n"
                  "000fa v                  v2f        8\n X 0.500000\n Y 0.250000\n"
                  "0010c r                  rational   8\nHexdump of unknown tag\n18 00 00 00 01 00 00 00 \n"
                  "00123 full rows          opaque     32\nHexdump of unknown tag\n" +
                  row + row + "\n");
}

TEST(Exr, DamagedHeadersEndTheWalk) {
    const std::string title = "Fileformat:EXR\n";
    EXPECT_EQ(dump_of(exr().str()), title);
    EXPECT_EQ(dump_of(exr().text("name").str()),
              title + "00008 name                          0\nHexdump of unknown tag\n\n");
    EXPECT_EQ(dump_of(exr().text("s").u8(0).text("string").u8(0).u32(100).text("abc").str()),
              title + "00008 s                  string     100\n'abc'\n");
    EXPECT_EQ(dump_of(exr().text("x").u8(0).text("y").u8(0).u32(0xFFFFFFF0).zeros(40).str()),
              title + "00008 x                  y          -16\nHexdump of unknown tag\n\n");
    const std::string list =
        little().text("l").u8(0).text("chlist").u8(0).u32(18).raw(channel('Y').str()).str();
    EXPECT_EQ(dump_of(exr().raw(list).raw(list).str()),
              title +
                  "00008 l                  chlist     18\nY 1 0 2 -1\n00027 l                  chlist     "
                  "18\nY 1 0 2 -1\n");
    // A name without end is cut, and nothing is made of what follows.
    EXPECT_EQ(dump_of(exr().fill('A', 200000).str()).substr(0, 30), title + "00008 AAAAAAAAA");
    EXPECT_EQ(lines_from(dump_of(exr().fill('A', 200000).str()), "Hexdump"), "");
}
