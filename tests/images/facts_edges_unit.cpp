// Both sides of the bounds of what the facts of still images are read from.
#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

namespace {

std::string png_chunk(const char *type, const std::string &data) {
    return big().u32(data.size()).text(type).raw(data).u32(0).str();
}

std::string png_of(const std::string &chunks) {
    return hex("89504E470D0A1A0A") + png_chunk("IHDR", hex("00000002 00000001 0802000000")) + chunks +
           png_chunk("IDAT", "data") + png_chunk("IEND", "");
}

}  // namespace

TEST(BmpFacts, Edges) {
    Transcript transcript;
    const std::string palette = "images/palette.bmp";
    ROWS("palette", sample_changed(palette, rows));
    const std::string alpha = ",28=2000,30=03000000,54=0000FF0000FF0000FF000000000000FF";
    SHOW(sample_changed(palette, "14=28000000" + alpha + " 14=34000000" + alpha + " 14=38000000" + alpha +
                                     " 14=40000000" + alpha + " 14=28000000" + alpha + ",30=06000000"));
    ROWS("palette 2", sample_changed(palette, rows));
}

TEST(TgaFacts, Edges) {
    Transcript transcript;
    const std::string colours = hex("00000A 0000000000 00000000 0300 0100 18 20 81 010203 00 040506");
    SHOW(facts_of(colours, "a.tga"));
    ROWS("colours, a.tga", facts_changed(colours, rows, "a.tga"));
    ROWS("images/palette.tga", sample_changed("images/palette.tga", rows));
}

TEST(SgiFacts, Edges) {
    Transcript transcript;
    ROWS("images/raw.sgi", sample_changed("images/raw.sgi", rows));
    const std::string lines = big()
                                  .hex("01DA 01 01 0002 0002 0002 0001")
                                  .at(512)
                                  .hex("00000210 00000214 00000004 00000004 82070700 82090900")
                                  .str();
    ROWS("lines", facts_changed(lines, rows));
}

TEST(SoftimageFacts, Edges) {
    Transcript transcript;
    ByteWriter channels_bytes = big();
    channels_bytes.hex("5380F634").f32(3.5F).at(88).text("PICT").hex("0780 0438").f32(1).hex("0003 0000");
    channels_bytes.hex("01080280 01080240 01080220 01080210 01080200 01080200 01080200");
    channels_bytes.hex("01100210 01200210");
    const std::string channels = channels_bytes.str();
    SHOW(facts_of(channels));
    ROWS("channels", facts_changed(channels, rows));
}

TEST(PngFacts, Edges) {
    Transcript transcript;
    const std::string plain = png_of("");
    ROWS("plain", facts_changed(plain, rows));
    ROWS("images/aspect.png", sample_changed("images/aspect.png", rows));
    for (const char *gamma : {"00000000", "00000001", "00000002", "0000B18F"})
        SHOW(facts_of(png_of(png_chunk("gAMA", hex(gamma)))));
    for (const char *codes : {"09100001", "00000000"})
        SHOW(facts_of(png_of(png_chunk("cICP", hex(codes)) + png_chunk("sRGB", hex("00")))));
    SHOW(facts_of(png_of(png_chunk("sRGB", hex("00")))));
    for (const size_t length : {0, 1, 2, 200, 201}) {
        const std::string text =
            facts_of(png_of(png_chunk("tEXt", "Software" + std::string(1, '\0') + std::string(length, 'z'))));
        SHOW(std::to_string(std::ranges::count(text, 'z')));
    }
}

TEST(NetpbmFacts, Edges) {
    Transcript transcript;
    for (const char *header : {"P5 19 7 255\n", "P5 19:7 255\n", "P5\t19/7#1\n255\n", "P5 90#9", "P5 #9",
                               "P5 9 9 0\n", "P5 9 9 1\n", "P6 9 9 255\n", "P6 9 9 256\n", "P5 9 9 65535\n",
                               "P5 9 9 65536\n", "P4 9 9\n", "P4 8 9\n"}) {
        SHOW(header + facts_of(header) + " " + std::to_string(claimed_of(header)));
    }
    // Digits of the picture, as far as they are there.
    for (const char *file : {"P1 3 1\n101\n", "P1 3 1\n101", "P1 3 1\n1/1\n", "P1 3 1\n1:1\n", "P1 3 1\n1 1 ",
                             "P1 3 1\n10", "P2 2 1 9\n1 2\n", "P2 2 1 9\n1 2", "P2 2 1 9\n1 ",
                             "P2 2 1 9\n123 ", "P2 2 1 9\n1234", "P3 1 1 9\n1 2 3 4", "P3 1 1 9\n1 2 "}) {
        SHOW(file + std::string(" ") + extent_of(file, "a.pnm") + " " + std::to_string(claimed_of(file)));
    }
}
