// Body items and the walk.
#include <gtest/gtest.h>

#include "klv_items.h"

namespace {

std::string element(const std::string &bytes12_to_15, const std::string &value = "essence") {
    return item("060E2B34 01020101 0D010301" + bytes12_to_15, value);
}
std::string system_item(const std::string &bytes12_to_15, const std::string &value) {
    return item("060E2B34 02430101 0D010301" + bytes12_to_15, value);
}

const std::string kLength7 = " Length             0x00000007\n";

// The lines behind the length line.
std::string detail(const std::string &content) { return body(content).substr(kLength7.size()); }

}  // namespace

TEST(Essence, ElementsOfTheGenericContainer) {
    Transcript transcript;
    // Every item type with every code, in the bytes that tell elements and wrappings.
    std::string elements;
    for (const char *type : {"00", "02", "05", "06", "07", "14", "15", "16", "17", "18", "66"}) {
        for (unsigned code = 0; code <= 17; code++) {
            elements +=
                element(type + hex_digits(code) + hex_digits((code + 1) % 18) + hex_digits(code % 4), "x");
        }
    }
    SHOW(plain(elements + element("14010002", "x")));
    SHOW(body(element("15010501")));
    EXPECT_EQ(body(element("15010501", "")), " Length             0x00000000\n");
}

TEST(Essence, SystemItems) {
    Transcript transcript;
    const std::string timecode = hex("81 24 45 59 63 01 23 45 67 0000000000000000");
    const std::string head = hex("71 07 5C 0001 002A 060E2B34 04010101 0D010201 01010900");
    SHOW(lines_from(body(system_item("04010100", head + timecode + hex("87 0102 00"))), "  System"));
    const std::string empty = body(system_item("04010100", hex("00 3F") + std::string(55, '\0') + "x"));
    SHOW(lines_from(empty, "   Bitmap"));
    std::string dirty(57, '\0');
    dirty[8] = dirty[56] = 1;
    SHOW(lines_from(body(system_item("04010100", dirty)), "MXFERROR @ 0x0000001c"));
    SHOW(detail(system_item("14010100", "x")));
    std::string rates;
    for (unsigned code = 0; code < 64; code++) {
        const std::string dump = body(system_item("04010100", big().u8(0x40, code).zeros(55).str()));
        rates += lines_from(dump, "MXFERROR", 1) + lines_from(dump, "   Framerate", 1);
    }
    SHOW(rates);
    for (const char *type : {"01", "20", "21", "22", "40", "41", "42", "80", "81", "82", "83", "84", "85",
                             "86", "87", "88", "89", "66"}) {
        SHOW(detail(system_item("04010200", hex(type) + hex("0001 42"))));
    }
    std::string sets;
    for (unsigned type = 0; type < 9; type++) sets += system_item("0401" + hex_digits(type) + "00", "x");
    SHOW(plain(sets));
}

TEST(Essence, TripletsAndDocuments) {
    Transcript transcript;
    const std::string id = hex("00112233445566778899AABBCCDDEEFF");
    const std::string triplet = "\x10" + id + "\x08" + hex("0000000000000102") + "\x10" + id + "\x08" +
                                hex("00000000A0B0C0D0") + hex("83000004") + "data";
    const std::string encrypted = item("060E2B34 02040107 0D010301 027E0100", triplet);
    SHOW(body(encrypted));
    const std::string wide = "\x10" + id + hex("88 00000001 00000008 1112131415161718 00");
    SHOW(body(item("060E2B34 02040107 0D010301 027E0100", wide)));  // the low 32 bits of a length count
    const std::string xml = "060E2B34 01010105 03010220 01000000";
    SHOW(plain(item(xml, "<a>  \n  b  c \n")));
    SHOW(lines_from(body(item(xml, std::string(20000, 'x'))), " Length"));

    const Workplace place;
    place.write("a.mxf", element("15010801", "frame one") + encrypted + element("15010801", "frame two"));
    EXPECT_EQ(place.run({"-ms=f%02d.j2c", "a.mxf"}).status, 0);
    EXPECT_EQ(place.read("f00.j2c"), triplet);  // both series write to the same names
    EXPECT_EQ(place.read("f01.j2c"), "frame two");
    EXPECT_EQ(place.run({"-ms", "a.mxf"}).status, 0);
    EXPECT_EQ(place.read("frame_00001.jpc"), "frame two");
    place.write("short.mxf",
                element("15010801", "1") + element("15010801", "12") + item(kFiller, std::string(10, 'x')));
    EXPECT_EQ(place.run({"-ms=s%d", "short.mxf"}).out.find("Cannot"), std::string::npos);
    EXPECT_EQ(place.read("s0") + " " + place.read("s1"), "1 12");
    const Outcome refused = place.run({"-ms=none/f%d", "a.mxf"});
    EXPECT_EQ(refused.status, 0);
    EXPECT_EQ(lines_from(refused.out, "Cannot"), "Cannot create file 'none/f0'\n");
}

TEST(Walk, NamesOfItems) {
    Transcript transcript;
    for (const char *key : {"060E2B34 02050101 0D010201 01020400", "060E2B34 02050101 0D010201 01030100",
                            "060E2B34 02050101 0D010201 01040300", "060E2B34 02050101 0D010201 01050100",
                            "060E2B34 02530101 0D010201 01100100", "060E2B34 02050101 0D010201 01110100",
                            "060E2B34 02040107 0D010301 027E0100", "060E2B34 02050101 0D010301 02040100",
                            "060E2B34 01010101 03010210 01000000", "060E2B34 01020104 0D010301 15010501",
                            "060E2B34 01010105 03010220 01000000", "80530800 36210804 B3B398A5 1C9011D4",
                            "9613B38A 87348746 F10296F0 56E04D2A"}) {
        SHOW(plain(item(kFiller, "xx") + item(key, std::string(26, '\0'))));
    }
    SHOW(plain(item("060E2B34 01010101 03010210 01000000", "x")));
    const auto name = [](const std::string &byte4) {
        const std::string dump = plain(item("060E2B34" + byte4 + "010101 66666666 66666666", "x"));
        return dump.substr(dump.find(" - ") + 3);
    };
    EXPECT_EQ(name("01"), "RP210/Unknown\n\n");
    EXPECT_EQ(name("03"), "Wrapper/Unknown\n\n");
    EXPECT_EQ(name("04"), "RP224/Unknown\n\n");
    EXPECT_EQ(name("05"), "Unknown\n\n");
    SHOW(plain(item(kFiller, "x") + std::string(278, 'z')));
}

TEST(Walk, VerboseDumps) {
    Transcript transcript;
    SHOW(plain(set("3B", local(0x4801, "abcd")), {"-v"}));
    const std::string dump = plain(item(kFiller, std::string(1000, 'x')), {"-v"});
    EXPECT_EQ(lines_from(dump, "000000f0").size(), 9U + 48 + 16 + 1 + 1);
}

// Rows of 16 bytes, the last one with the rest; 256 bytes of an item.
TEST(Walk, EdgesOfDumps) {
    const std::string shortest = big().hex(kFiller).u8(0).str();
    EXPECT_EQ(lines_from(plain(shortest, {"-v"}), "00000010 ").substr(0, 15), "00000010 00    ");
    const std::string legacy = "80530800 36210804 B3B398A5 1C9011D4";
    for (const size_t size : {255, 256, 257}) {
        const std::string dump = plain(item(kFiller, "x") + item(legacy, std::string(size, 'x')));
        const std::string rest = lines_from(dump, "000000f0 ");
        EXPECT_EQ(std::count(rest.begin(), rest.end(), 'x'), size < 256 ? 15 : 16);
        EXPECT_EQ(rest.find("00000100 "), std::string::npos);
    }
}

// An essence element is searched for names to 64 KiB.
TEST(Walk, EdgeOfTheSearchForNames) {
    const std::string id = hex("00112233445566778899AABBCCDDEEFF");
    for (const size_t at : {65535, 65536}) {
        const std::string named =
            element("15010501", local(0x1111, std::string(at - 24, 'x')) + local(0x3C0A, id));
        const std::string dump = dump_of(named + set("2F", local(0x3B03, id)), "clip.mxf");
        EXPECT_EQ(dump.find("References 00000000:unknown") != std::string::npos, at == 65535);
    }
}

TEST(Walk, PositionsAndRunIn) {
    Transcript transcript;
    const Workplace place;
    const uint64_t size = 0x100000000 + 60;
    place.write_sparse("a.mxf", size, 0, big().hex(kFiller).u8(0x84).u32(0x1000000 - 50).str());
    place.write_sparse("a.mxf", size, 0x1000000 - 29, item(kFiller, "x"));
    SHOW(lines_from(place.run({"a.mxf"}).out, "0000000000"));
    const uint64_t step = 0x3F000000;
    const std::string filler = big().hex(kFiller).u8(0x84).u32(step - 21).str();
    for (uint64_t i = 0; i < 5; i++) place.write_sparse("b.mxf", 5 * step + 70, i * step, filler);
    place.write_sparse("b.mxf", 5 * step + 70, 5 * step, element("15010501") + set("3B", local(0x9999, "a")));
    SHOW(lines_from(place.run({"-ml", "b.mxf"}).out, "0000000000"));
}

// Names are collected up to the first item that lies beyond 1,000,000 bytes.
TEST(Walk, CollectionEnds) {
    const std::string id = hex("00112233445566778899AABBCCDDEEFF");
    const std::string reference = set("2F", local(0x3B03, id));
    const std::string target = set("30", local(0x3C0A, id)) + item(kFiller, std::string(9, 'x'));
    const auto names_target = [&](size_t first_set) {
        const std::string filler = item(kFiller, std::string(first_set - 20, '\0'));
        return plain(filler + reference + target).find("References Identification") != std::string::npos;
    };
    EXPECT_TRUE(names_target(1'000'000));
    EXPECT_FALSE(names_target(1'000'001));
}

// What follows an item is looked at from 26 bytes on, and loaded with the item up to 16 MiB.
TEST(Walk, EdgesOfItems) {
    const auto has = [](const std::string &dump, const std::string &text) {
        return dump.find(text) != std::string::npos;
    };
    const std::string first = item(kFiller, "x");
    const std::string second = set("3B", local(0x4801, "abcd"));
    EXPECT_FALSE(has(plain(first + item("060E2B34 02530101 0D010101 01013B00", "12345")), "TimelineTrack"));
    EXPECT_TRUE(has(plain(first + item("060E2B34 02530101 0D010101 01013B00", "123456")), "TimelineTrack"));
    EXPECT_TRUE(has(plain(first + second.substr(0, second.size() - 1)), "Could not load the last part"));
    EXPECT_FALSE(has(plain(first + second), "Could not load the last part"));
    EXPECT_TRUE(has(plain(hex(kFiller + "88 FFFFFFFFFFFFFFE7")), "Invalid length (0)\n"));
    EXPECT_FALSE(has(plain(hex(kFiller + "88 FFFFFFFFFFFFFFE8")), "Invalid length"));
    const Workplace place;
    for (const uint32_t length : {0x1000000 - 46, 0x1000000 - 45}) {
        const std::string name = std::to_string(length);
        place.write_sparse(name, 0x1001000, 0, big().hex(kFiller).u8(0x84).u32(length).str());
        EXPECT_EQ(has(place.run({name}).out, "exceeds the allocated memory"), length == 0x1000000 - 45);
    }
    for (const uint64_t size : {uint64_t{0xFFFFFFFF}, uint64_t{0x100000000}}) {
        const std::string name = std::to_string(size);
        place.write_sparse(name, size, 0, first);
        EXPECT_EQ(place.run({name}).out.starts_with("0000000000000000 "), size == 0x100000000);
    }
}

TEST(Walk, DamagedAndLargeItems) {
    Transcript transcript;
    const std::string whole = item(kFiller, "x") + set("3B", local(0x4801, "abcd"));
    // Every pass says that the last item is cut; what there is of it is dumped.
    SHOW(plain(whole.substr(0, whole.size() - 2)));
    SHOW(plain(big().hex(kFiller).hex("887FFFFFFFFFFFFFFF").str()));
    // Lengths of more bytes than are allowed are read as long as they say.
    const std::string track = "060E2B34 02530101 0D010101 01013B00";
    SHOW(plain(item(kFiller, "x") +
               big().hex(track).hex("89000000000000000008").raw(local(0x4801, "abcd")).str()));

    const Workplace place;
    const std::string large = big().hex("060E2B34 01020101 0D010301 15010801").u8(0x84).u32(20 << 20).str();
    place.write_sparse("a.mxf", (20 << 20) + 100, 0, large);
    SHOW(place.run({"a.mxf"}).out);
    SHOW(lines_from(place.run({"-ml", "a.mxf"}).out, "00000000", 2));
}
