#include <gtest/gtest.h>

#include "companions/files.h"
#include "companions/safe_text.h"
#include "companions/shown_width.h"

TEST(Files, NaturalOrder) {
    const char *const ordered[] = {"",
                                   "a",
                                   "a/f9",
                                   "a/f010",
                                   "a/f10",
                                   "a/f10b",
                                   "a0b1",
                                   "a01",
                                   "a99999999999999999999998",
                                   "a99999999999999999999999",
                                   "b"};
    for (size_t i = 0; i < std::size(ordered); i++) {
        for (size_t j = 0; j < std::size(ordered); j++)
            EXPECT_EQ(natural_less(ordered[i], ordered[j]), i < j) << i << " " << j;
    }
}

// A text cut anywhere gives what it gives in one piece.
TEST(SafeText, Pieces) {
    const std::string text =
        "a\r\n\tb\r\x1b\xC3\xA9\xC2\x85\xE2\x82\xAC\xED\xA0\x80\xF0\x9F\x98\x80\xF5\x80\xC0\xAF\xE2\x82";
    const std::string safe =
        "a\r\n\tb\\x0d\\x1b\xC3\xA9\\xc2\\x85\xE2\x82\xAC\\xed\\xa0\\x80\xF0\x9F\x98\x80\\xf5\\x80\\xc0\\xaf"
        "\\xe2\\x82";
    for (size_t cut = 0; cut <= text.size(); cut++) {
        SafeText converter;
        std::string out;
        converter.add(std::string_view(text).substr(0, cut), out);
        for (size_t i = cut; i < text.size(); i++) converter.add(std::string_view(text).substr(i, 1), out);
        converter.finish(out);
        EXPECT_EQ(out, safe) << cut;
    }
    EXPECT_EQ(safe_name("a\n\t\xFF"), "a\\x0a\\x09\\xff");
}

// Columns of a terminal, not characters: ideographs and pictograms take two, marks none.
TEST(ShownWidth, OfCharacters) {
    const std::string text = "a\u65e5\u0065\u0301\u1100\u1161\uff21\U0001F469\u200d\ufeff\u00e9";
    EXPECT_EQ(shown_width(text), 11U);
    EXPECT_EQ(fitting_start(text, 2), "a");
    EXPECT_EQ(fitting_start(text, 4), "a\u65e5e\u0301");
    EXPECT_EQ(fitting_end("e\u0301\u65e5b", 3), "\u65e5b");
    EXPECT_EQ(fitting_end("e\u0301b", 1), "b");
    EXPECT_EQ(wrapped("one two three", 0, 1), " one two three\n");
    EXPECT_EQ(wrapped("one two threefourfive six", 9, 1), " one two\n   threefou\n   rfive\n   six\n");
}
