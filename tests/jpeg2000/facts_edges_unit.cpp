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
    ROWS("tiles", sample_changed(tiles, rows));
    // Lengths of tile-parts: the shortest, one that ends where the file does, and that of the last.
    ROWS("tiles 2", sample_changed(tiles, rows));
    ROWS("jpeg2000/lengths.j2k", sample_changed("jpeg2000/lengths.j2k", rows));
    const std::string before = hex("FFFFFFF0") + std::string(12, '\0') + sample_of(tiles);
    SHOW(facts_of(before, "a.j2k"));
    ROWS("before, a.j2k", facts_changed(before, rows, "a.j2k"));
}

TEST(Jpeg2000Facts, EdgesOfBoxes) {
    Transcript transcript;
    const std::string plain = "jpeg2000/plain.jp2";
    ROWS("plain", sample_changed(plain, rows));
    const std::string codes = jp2_of(hex("00000012 636F6C72 050000 0009 0010 0009 80"));
    SHOW(facts_of(jp2_of(hex("00000011 636F6C72 050000 0009 0010 0009"))));
    ROWS("codes", facts_changed(codes, rows));
    const std::string aspect = jp2_of(hex("0000000F 636F6C72 0100000000001A 00000022") + "res " +
                                      hex("0000001A 72657363 0001 0002 0001 0004 00 00 0000000000000000"));
    SHOW(facts_of(aspect));
    ROWS("aspect", facts_changed(aspect, rows));
    const auto channels = [](size_t count, size_t alpha, size_t told) {
        std::string definitions;
        for (size_t i = 0; i < count; i++) definitions += big().u16(i, i == alpha ? 1 : 0, i + 1).str();
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
    ROWS("photo", sample_changed(photo, rows));
    // What ends without a marker is cut where entropy-coded data are all that is there.
    ROWS("photo 2", sample_changed(photo, rows));
    const std::string adobe = "289=FFEE000E41646F6265006400000000";
    SHOW(sample_changed(photo, adobe + "00FFDB0033 " + adobe + "01FFDB0033 " + adobe + "FFDB0034,292=0D"));
    ROWS("photo 3", sample_changed(photo, rows));
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
