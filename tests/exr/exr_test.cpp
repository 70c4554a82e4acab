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
    Transcript transcript;
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
