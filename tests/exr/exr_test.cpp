#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

ByteWriter exr() { return little().hex("762F3101 02000000"); }
void add(ByteWriter &w, const std::string &name, const std::string &type, const std::string &value) {
    w.text(name).u8(0).text(type).u8(0).u32(value.size()).raw(value);
}

ByteWriter channel(char name) { return little().u8(static_cast<uint8_t>(name), 0).u32(1, 0, 2, 0xFFFFFFFF); }

}  // namespace

TEST(Exr, EveryKindOfAttribute) {
    Transcript transcript;
    ByteWriter w = exr();
    add(w, "channels", "chlist", channel('B').str() + channel('R').str() + '\0');
    add(w, "comments", "string", std::string("a\0b", 3));
    add(w, "preview", "preview", std::string(16, '\0'));
    add(w, "a name longer than its column", "box2i", little().u32(0xFFFFFFFF, 2, 3, 4).str());
    add(w, "c", "compression", std::string(1, '\0'));
    add(w, "c", "compression", "\x80");
    add(w, "f", "float", little().f32(-1.5).str());
    add(w, "n", "float", little().u32(0x7FC00000).str());
    add(w, "v", "v2f", little().f32(0.5, 0.25).str());
    add(w, "r", "rational", little().u32(24, 1).str());
    add(w, "full rows", "opaque", std::string(32, '\x7F'));
    w.u8(0).text("pixels");
    SHOW(dump_of(w.str()));
}

TEST(Exr, DamagedHeadersEndTheWalk) {
    Transcript transcript;
    const std::string title = "Fileformat:EXR\n";
    EXPECT_EQ(dump_of(exr().str()), title);
    SHOW(dump_of(exr().text("name").str()));
    SHOW(dump_of(exr().text("s").u8(0).text("string").u8(0).u32(100).text("abc").str()));
    SHOW(dump_of(exr().text("x").u8(0).text("y").u8(0).u32(0xFFFFFFF0).zeros(40).str()));
    const std::string list =
        little().text("l").u8(0).text("chlist").u8(0).u32(18).raw(channel('Y').str()).str();
    SHOW(dump_of(exr().raw(list).raw(list).str()));
    // Channels go on beyond their value; lists that claim each other's are not shown without end.
    const std::string empty = little().text("l").u8(0).text("chlist").u8(0).u32(0).str();
    SHOW(dump_of(exr().raw(empty + channel('R').str() + channel('G').str()).u8(0).str()));
    std::string lists;
    for (int i = 0; i < 1000; i++)
        lists += "l" + std::string(1, '\0') + "chlist" + hex("00 00000000") + "abcd ";
    EXPECT_LT(dump_of(exr().raw(lists).str()).size(), 500'000U);
    // A name without end is cut, and nothing is made of what follows.
    EXPECT_EQ(dump_of(exr().fill('A', 200000).str()).substr(0, 30), title + "00008 AAAAAAAAA");
    EXPECT_EQ(lines_from(dump_of(exr().fill('A', 200000).str()), "Hexdump"), "");
}

TEST(Exr, EdgesOfValuesAndNames) {
    const std::string title = "Fileformat:EXR\n";
    const auto attribute = [](const std::string &type, uint32_t size, const std::string &value) {
        return exr().text("n").u8(0).text(type).u8(0).u32(size).raw(value).str();
    };
    const auto shown = [&](const std::string &type, uint32_t size, const std::string &value) {
        return lines_from(dump_of(attribute(type, size, value)), "00008");
    };
    // A list of channels: without a byte, with one byte of a channel, with an empty first channel.
    const std::string list = "00008 n                  chlist     ";
    EXPECT_EQ(shown("chlist", 0, ""), list + "0\n");
    EXPECT_EQ(shown("chlist", 1, "R"), list + "1\nR 0 0 0 0\n");
    const std::string nameless = little().u8(0, 0).u32(1, 2, 3, 4).str();
    EXPECT_EQ(shown("chlist", 19, nameless + channel('G').str()),
              list + "19\n" + '\0' + " 1 2 3 4\nG 1 0 2 -1\n");
    EXPECT_EQ(shown("string", 1, "a"), "00008 n                  string     1\n'a'\n");
    // Any negative size is the last; behind a size of 0 the walk goes on.
    const std::string next = little().text("m").u8(0).text("string").u8(0).u32(1).text("b").str();
    for (const int size : {-1, -2, INT32_MIN}) {
        EXPECT_EQ(shown("string", static_cast<uint32_t>(size), next),
                  "00008 n                  string     " + std::to_string(size) + "\n''\n");
    }
    EXPECT_EQ(lines_from(dump_of(attribute("string", 0, next)), "00015"),
              "00015 m                  string     1\n'b'\n");
    // Names have 64 KiB at most, of attributes and of types.
    constexpr size_t kLongest = 64 * 1024;
    for (const size_t length : {kLongest, kLongest + 1}) {
        const std::string text = length > kLongest ? "" : "'v'\n";
        const std::string name(length, 'A');
        EXPECT_EQ(
            lines_from(dump_of(exr().text(name).u8(0).text("string").u8(0).u32(1).text("v").str()), "'"),
            text);
        const std::string type(length, 'T');
        EXPECT_EQ(lines_from(shown(type, 1, "v"), "Hexdump", 1),
                  text.empty() ? "" : "Hexdump of unknown tag\n");
    }
}
