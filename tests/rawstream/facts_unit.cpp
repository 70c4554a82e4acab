#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

// A line of PAL and one of 1080 lines at 25 frames, every word of which stands twice.
TEST(SdiFacts, Rasters) {
    const auto capture = [](const std::string &line) {
        std::string text = "STREAMER\nsize 100000\nnbits 8\n\t";
        for (int i = 0; i < 10; i++) text += line;
        return facts_of(text);
    };
    const std::string blank = big().fill(0x80, 280).str();
    EXPECT_EQ(capture(big().hex("FF0000B6").raw(blank).hex("FF0000AB").fill(0x10, 1440).str()),
              "SDI | 720x576 uncompressed 4:2:2 8 bits 25 fps");
    EXPECT_EQ(
        capture(
            big().hex("FFFF00000000B6B6").fill(0x80, 1432).hex("FFFF00000000ABAB").fill(0x10, 3832).str()),
        "SDI | 1920x1080 uncompressed 4:2:2 8 bits 25 fps");
}

// The header ends with a tab; numbers stand behind their tags, and the larger of the two sizes counts.
TEST(SdiFacts, Edges) {
    Transcript transcript;
    const std::string file = "STREAMER\nsize 100\nnbits 8\n\t" + std::string(100, 'x');
    SHOW(facts_of(file));
    ROWS("file", facts_changed(file, rows));
    ROWS("STREAMERsize 101\\nsize:=100\\nnbits 10kel\\n\\t + std",
         facts_changed("STREAMERsize 101\nsize:=100\nnbits 10kel\n\t" + std::string(100, 'x'), rows));
    SHOW(facts_of("STREAMER\nsize 100000000000000000000\n\t" + std::string(100, 'x')));
    SHOW(facts_of("STREAMER" + std::string(4087, ' ') + "\t" + "x"));
    SHOW(facts_of("STREAMER" + std::string(4088, ' ') + "\t" + "x"));
}
