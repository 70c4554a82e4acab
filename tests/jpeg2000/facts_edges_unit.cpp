// Both sides of the bounds of what the facts of JPEG 2000 and JPEG are read from.
#include <gtest/gtest.h>

#include <vector>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

namespace {

std::string sample_of(const std::string &path) {
    return content_of(std::string(KELDUMP_SAMPLES) + "/" + path);
}

// Tile-parts of these lengths behind a main header, and bytes behind the codestream's end.
std::string tile_parts(const std::vector<size_t> &lengths, size_t behind) {
    std::string file = sample_of("jpeg2000/tiles.j2k").substr(0, 86);
    for (const size_t length : lengths)
        file += hex("FF90 000A 0000") + big().u32(length).hex("0001 FF93").fill('d', length - 14).str();
    return file + hex("FFD9") + std::string(behind, 'x');
}

// A main header of so many components, whose coding is that of COC segments.
std::string components_of_index(size_t count, const std::string &segments) {
    return facts_of(hex("FF4F FF51") + big().u16(38 + 3 * count).u16(0).str() +
                    hex("00000008 00000008 0000000000000000 00000008 00000008 0000000000000000") +
                    big().u16(count).fill(1, 3 * count).raw(hex(segments)).hex("FF90").str());
}

// JP2 with these boxes in its header, before a codestream.
std::string jp2_of(const std::string &boxes) {
    const std::string plain = sample_of("jpeg2000/plain.jp2");
    return plain.substr(0, 32) + big().u32(30 + boxes.size()).str() + plain.substr(36, 26) + boxes +
           plain.substr(77);
}

}  // namespace

TEST(Jpeg2000Facts, Edges) {
    Transcript transcript;
    const std::string tiles = "jpeg2000/tiles.j2k";
    SHOW(sample_changed(
        tiles, "<42 <43 <64 <65 <89 <90 <97 <98 <1041 <1042 >1 >2 79=0001,81=FF90000A00000000012E0001"));
    SHOW(sample_changed(tiles,
                        "16=0000003F 16=00000040 16=00000041 16=FFFFFFFF 20=0000002F 20=00000030 "
                        "20=00000031 6=0002 6=0003 6=0007 6=0008 6=00FF 6=0100 6=0900 6=4400 6=8000"));
    SHOW(sample_changed(tiles,
                        "24=0000003F,28=00000030 24=00000040,28=00000030 24=0000003F,28=00000030,32=00000001 "
                        "24=00000040,28=0000002F 24=00000040,28=0000002F,36=00000001 24=00000000 "
                        "24=00000001 28=00000000 28=00000001"));
    SHOW(sample_changed(tiles, "43=00 44=00 46=02,49=02 47=02,50=02 64=00 64=01 64=02 64=03 56=04 56=05"));
    // Lengths of tile-parts: the shortest, one that ends where the file does, and that of the last.
    SHOW(sample_changed(tiles,
                        "92=0000000D 92=0000000E 866=000000B6 866=000000B7 866=000000B8 383=0000 "
                        "866=00000000 866=00000000,<1042 866=00000000,>9 866=00000000,<872 "
                        "866=00000000,1041=0000"));
    SHOW(sample_changed("jpeg2000/lengths.j2k",
                        "158=0000000D 158=0000000D,82=40 158=0000000D,80=44,143=03000001FF64000300 "
                        "158=0000000D,142=B1 158=0000000D,<3426 158=0000000D,>1"));
    const std::string before = hex("FFFFFFF0") + std::string(12, '\0') + sample_of(tiles);
    SHOW(facts_of(before, "a.j2k"));
    SHOW(facts_changed(before, "<15 <16 <17 <58 <59 <1057", "a.j2k"));
}

TEST(Jpeg2000Facts, TilePartsOfLongFiles) {
    Transcript transcript;
    const std::vector<size_t> few(38, 20), more(39, 20);
    const auto joined = [](std::vector<size_t> first, const std::vector<size_t> &last) {
        first.insert(first.end(), last.begin(), last.end());
        return first;
    };
    const std::string name = "a.j2k";
    constexpr size_t kLong = 2 << 20;
    SHOW(extent_of(tile_parts(joined(few, {kLong}), 9), name.c_str()));
    SHOW(extent_of(tile_parts(joined(more, {kLong}), 9), name.c_str()));
    SHOW(extent_of(tile_parts(joined(more, {kLong - 86 - 39 * 20 - 2 - 9}), 9), name.c_str()));
    SHOW(extent_of(tile_parts(joined(more, {kLong - 86 - 39 * 20 - 2 - 8}), 9), name.c_str()));
    // What begins in the last 64 KiB leads to the end, or behind it.
    SHOW(extent_of(tile_parts(joined(more, {kLong, 65525}), 9), name.c_str()));
    SHOW(extent_of(tile_parts(joined(more, {kLong, 65526}), 9), name.c_str()));
    SHOW(extent_of(tile_parts(joined(more, {kLong, 14}), 0).substr(0, kLong + 878), name.c_str()));
    SHOW(extent_of(tile_parts(joined(more, {kLong, 14}), 0).substr(0, kLong + 877), name.c_str()));
    for (const size_t behind : {65534, 65535}) {
        std::string file = tile_parts({80000}, behind);
        file.replace(92, 4, 4, '\0');
        SHOW(extent_of(file, name.c_str()));
    }
}

// 256 components have an index of 8 bits, one more of 16; coding that none of them has is nothing.
TEST(Jpeg2000Facts, IndexOfComponents) {
    Transcript transcript;
    const std::string coding = "FF52 000C 00000001 00 02 0404 00 01 ";
    for (const char *segment :
         {"FF53 0008 FF 00 02 04 04 00", "FF53 0009 FF 00 02 04 04 00 00", "FF53 000A 00FF 00 02 04 04 00 00",
          "FF53 000A 0100 00 02 04 04 00 00", "FF53 000A 0101 00 02 04 04 00 00"}) {
        SHOW(components_of_index(256, coding + segment));
        SHOW(components_of_index(257, coding + segment));
    }
    SHOW(components_of_index(1025, coding));
    SHOW(components_of_index(16384, coding));
}

TEST(Jpeg2000Facts, EdgesOfBoxes) {
    Transcript transcript;
    const std::string plain = "jpeg2000/plain.jp2";
    SHOW(sample_changed(plain,
                        "<12 <31 <76 <85 <2865 77=00000AE6 77=00000AE6,>1 77=00000AEA,>5 77=00000AE9,>5 "
                        "77=00000000 >1 >7 >8 2866=00000000,>4 2866=0000000000000000,>4"));
    SHOW(sample_changed(plain,
                        "2866=00000009786D6C2061 2866=0000000A786D6C2061 2866=0000000B786D6C2061 "
                        "2866=0000000A7878782061 2866=00000008667265650000000A786D6C2061"));
    SHOW(sample_changed(plain,
                        "48=00000000 52=00000000 56=0004 56=0005 70=02 70=05 73=0000000C 73=00000011 "
                        "73=00000012 73=00000015 73=00000014 65=0E,38=2C"));
    const std::string codes = jp2_of(hex("00000012 636F6C72 050000 0009 0010 0009 80"));
    SHOW(facts_of(jp2_of(hex("00000011 636F6C72 050000 0009 0010 0009"))));
    SHOW(facts_changed(codes, "73=0000 75=0001 79=00 79=7F 77=0005"));
    const std::string aspect = jp2_of(hex("0000000F 636F6C72 0100000000001A 00000022") + "res " +
                                      hex("0000001A 72657363 0001 0002 0001 0004 00 00 0000000000000000"));
    SHOW(facts_of(aspect));
    SHOW(
        facts_changed(aspect, "97=0000 97=0001 99=0000 99=0001 97=0002,99=0001 101=01 102=01 101=FF 102=7F"));
    const auto channels = [](size_t count, size_t alpha, size_t told) {
        std::string definitions;
        for (size_t i = 0; i < count; i++)
            definitions += big().u16(i).u16(i == alpha ? 1 : 0).u16(i + 1).str();
        return facts_of(jp2_of(hex("0000000F 636F6C72 01000000000010") +
                               big().u32(10 + definitions.size()).text("cdef").u16(told).str() + definitions))
            .substr(0, 40);
    };
    SHOW(channels(4, 3, 4));
    SHOW(channels(4, 3, 3));
    SHOW(channels(70, 63, 70));
    SHOW(channels(70, 64, 70));
    for (const size_t boxes : {26, 27, 28}) {
        std::string file = sample_of(plain);
        for (size_t i = 0; i < boxes; i++) file.insert(32, big().u32(8).text("free").str());
        SHOW(facts_of(file).substr(0, 60));
    }
}

TEST(JpegFacts, Edges) {
    Transcript transcript;
    const std::string photo = "jpeg/exif.jpg";
    SHOW(sample_changed(photo,
                        "<2 <3 2=00 2=00,<3 <4 <881 <882 <891 <892 <1239 <1240 >1 878=00 892=FFD9,<894"));
    SHOW(sample_changed(photo,
                        "280=0000,282=FFFE0005616263 280=0001,282=FFFE0005616263 "
                        "280=0002,282=FFFE0005616263 280=0003,283=FFFE000461"));
    // What ends without a marker is cut where entropy-coded data are all that is there.
    SHOW(sample_changed(photo,
                        "1239=FF00 1239=FF01 1239=FFCF 1239=FFD0 1239=FFD7 1239=FFD8 1238=FFFFFF "
                        "428=F7,1239=FF7F 428=F7,1239=FF80 >65534,1300=FF01 >65535,1300=FF01"));
    const std::string adobe = "289=FFEE000E41646F6265006400000000";
    SHOW(sample_changed(photo, adobe + "00FFDB0033 " + adobe + "01FFDB0033 " + adobe + "FFDB0034,292=0D"));
    SHOW(sample_changed(photo,
                        "6=4A464958 437=52,440=47,443=42 6=4A464958,437=52,440=47,443=42 "
                        "6=4A464958,437=52,440=47,443=43 438=21 438=11 438=41 436=04 436=02 431=0C"));
    SHOW(sample_changed(photo,
                        "38=0006 38=0008 44=00000003 44=00000005 56=00000001 32=002B 34=00000009 "
                        "46=0113,42=0003,48=0006 234=0001 230=00000003 234=0002"));
    SHOW(sample_changed(photo, "13=01 14=00020001 14=00010002 432=0000 432=0000,892=FFDC00040010"));
    const auto exif = [](const std::string &directory) {
        const std::string data = "Exif" + hex("0000") + "MM" + hex("002A 00000008") + directory;
        return facts_of(hex("FFD8 FFE1") + big().u16(data.size() + 2).str() + data +
                        hex("FFC0 000B 08 0001 0001 01 01 11 00 FFDA 0008 01 01 00 003F00 FFD9"));
    };
    for (const size_t length : {255, 256, 257}) {
        const std::string facts =
            exif(hex("0001 0131 0002") + big().u32(length).hex("0000001A 00000000").str() +
                 std::string(length, 'z'));
        SHOW(std::to_string(std::ranges::count(facts, 'z')));
    }
    for (const size_t entries : {512, 513}) {
        std::string directory = big().u16(entries).str() + std::string(12 * entries, '\1');
        directory.replace(12 * entries - 10, 12, hex("0112 0003 00000001 00060000"));
        SHOW(exif(directory));
    }
}
