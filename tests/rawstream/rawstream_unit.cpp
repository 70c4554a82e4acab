#include <gtest/gtest.h>

#include "rawstream/detect.h"
#include "support/bytes_of.h"
#include "support/command.h"

namespace {

using Words = std::vector<uint16_t>;

// Lines of `length` words: EAV, blanking, SAV, picture.
Words lines(size_t length, size_t count, const Words &eav, const Words &sav, size_t sav_at) {
    Words line(length, 0x200);
    std::copy(eav.begin(), eav.end(), line.begin());
    std::copy(sav.begin(), sav.end(), line.begin() + static_cast<std::ptrdiff_t>(sav_at));
    Words words;
    for (size_t i = 0; i < count; i++) words.insert(words.end(), line.begin(), line.end());
    return words;
}
Words sd_lines(size_t length, size_t count) {
    return lines(length, count, {0x3FF, 0, 0, 0x274}, {0x3FF, 0, 0, 0x200}, 100);
}
// Two interleaved streams; the second XYZ word of the EAV may differ.
Words hd_lines(size_t length, size_t count, uint16_t second_xyz = 0x274) {
    return lines(length, count, {0x3FF, 0x3FF, 0, 0, 0, 0, 0x274, second_xyz},
                 {0x3FF, 0x3FF, 0, 0, 0, 0, 0x200, 0x200}, 560);
}

std::string eight_bit(const Words &words) {
    std::string data;
    for (const uint16_t word : words) data += static_cast<char>(word >> 2);
    return data;
}

std::string ten_bit(const Words &words) {
    ByteWriter w = little();
    for (size_t i = 0; i + 2 < words.size(); i += 3) {
        w.u32(words[i] | static_cast<uint32_t>(words[i + 1]) << 10 |
              static_cast<uint32_t>(words[i + 2]) << 20);
    }
    return w.str();
}

std::string capture(const std::string &header, const std::string &data) {
    return "STREAMER" + header + "\t" + data;
}

const std::string kStart = "Format: SDI Streamer\n";
const std::string kUnreadable = "Warning: Could not read file\n";

}  // namespace

TEST(RawStream, Rasters) {
    Transcript transcript;
    const std::string eight = "nbits 8\nsize 1000\n";
    const std::string ten =
        "size 1000\nxsize 9\nysize 8\nfield1size 7\nfield2size 6\nfrequency 5\n\nnbits 10\n";
    SHOW(dump_of(capture(eight, eight_bit(sd_lines(1728 / 2, 5)))));
    SHOW(dump_of(capture(ten, ten_bit(sd_lines(858, 5)))));
    SHOW(dump_of(capture(ten, ten_bit(hd_lines(5280, 3)))));
    SHOW(dump_of(capture(ten, ten_bit(hd_lines(6600, 3)))));
    Words consistent = hd_lines(5280, 3);
    consistent.resize(32768);
    EXPECT_EQ(rawdump_formatdetect(consistent.data(), 32768), 1);
    std::string rasters;
    for (const int words : {858, 864, 1144, 1152})
        rasters += lines_from(dump_of(capture(ten, ten_bit(sd_lines(words, 5)))), "Raster", 1);
    for (const int words : {1375, 1650, 1980, 2200, 2250, 2376, 2500, 2640, 2750, 3300, 3960, 4125})
        rasters += lines_from(dump_of(capture(ten, ten_bit(hd_lines(2 * words, 3)))), "Raster", 1);
    SHOW(rasters);
    SHOW(dump_of(capture(eight, eight_bit(sd_lines(900, 5)))));
    SHOW(dump_of(capture(ten, ten_bit(hd_lines(5000 - 2, 3)))));
    SHOW(dump_of(capture(ten, ten_bit(hd_lines(5280, 3, 0x2D8)))));
    SHOW(dump_of(capture(eight, "")));
    // What only begins like a timing reference is none.
    const auto behind = [&](const Words &near, Words words) {
        words.insert(words.begin(), near.begin(), near.end());
        return lines_from(dump_of(capture(ten, ten_bit(words))), "Raster", 1);
    };
    SHOW(behind({0x3FC, 0x3FC, 0, 0, 0, 8, 0x3FC, 0x3FC, 8, 0, 0, 0}, sd_lines(864, 5)));
    SHOW(behind({0x3FC, 0, 8, 0x3FC, 8, 0, 0x3FC, 0x3FC, 8, 0, 0, 0}, hd_lines(5280, 3)));
    SHOW(dump_of(capture(eight, eight_bit(sd_lines(864, 1)))));
}

// The warning is of both references, each of four words in two streams.
TEST(RawStream, PlacesOfDifferentReferences) {
    const Workplace place;
    place.write("f", capture("nbits 8\nsize 1000\n", eight_bit(hd_lines(5280, 3, 0x2D8))));
    EXPECT_NE(place.run({"f"}, "keldump-json").out.find("\"at\": [[5307, 8], [5867, 8]]"), std::string::npos);
}

TEST(RawStream, Headers) {
    Transcript transcript;
    const auto dumped = [](const std::string &content) { return dump_of(content).substr(kStart.size()); };
    SHOW(dumped(capture("colour 1\nnbits 8\nsize 5\n", "")).substr(0, 32));
    EXPECT_EQ(dumped(capture("size 5\n", "xx")), kUnreadable);
    EXPECT_EQ(dumped(capture("nbits 0\nsize 5\n", "xx")), kUnreadable);
    EXPECT_EQ(dumped(capture("nbits 8\nsize\n", "xx")), kUnreadable);
    EXPECT_EQ(dumped("STREAMERnbits 8\nsize 5\n"), kUnreadable);
    SHOW(dumped(capture("nbits 8\nsize 5\ndropped", "xx")));
}

TEST(RawStream, WordsInHexadecimal) {
    Transcript transcript;
    const std::string dump = dump_of(
        capture("nbits 10\nsize 5\n", ten_bit({0x003, 0x3FC, 0x040, 0x200, 0x123, 0x3FB})), "f", {"-v"});
    SHOW(lines_from(dump, "000000::", 2));
    EXPECT_EQ(lines_from(dump, "007ff8::"), "007ff8:: 000 000 000 000 000 000 000 000 - '********'\n\n");
    const std::string kel =
        dump_of(capture("nbits10kel 1\nnbits 10\nsize 5\n", "\x80\x40\x21\xE4"), "f", {"-v"});
    EXPECT_EQ(lines_from(kel, "000000::", 1), "000000:: 203 102 085 000 000 000 000 000 - '...*****'\n");
    const std::string eight =
        dump_of(capture("nbits 8\nsize 5\n", std::string("\x00\xFF\x01\xFE", 4)), "f", {"-v"});
    EXPECT_EQ(lines_from(eight, "000000::", 1), "000000:: 000 3ff 004 3f8 000 000 000 000 - '**..****'\n");
}

// The search for timing references ends 32 words before the last of the words looked at.
TEST(RawStream, LastReferenceAndWord) {
    constexpr size_t kWords = 32768;
    constexpr size_t kLast = kWords - 32 - 1;
    const auto put = [](Words &words, size_t at, uint16_t xyz) {
        const Words reference{0x3FF, 0, 0, xyz};
        std::copy(reference.begin(), reference.end(), words.begin() + static_cast<std::ptrdiff_t>(at));
    };
    const auto dumped = [](const Words &words) {
        return lines_from(dump_of(capture("nbits 8\nsize 5\n", eight_bit(words))).substr(kStart.size()), "",
                          1);
    };
    for (const size_t sav : {kLast, kLast + 1}) {
        Words one(kWords, 0x200);
        put(one, sav, 0x200);
        const std::string detected = sav == kLast ? " for line length detect" : "";
        EXPECT_EQ(dumped(one), "Warning: Could not find SAV and EAV" + detected + "\n");
        put(one, sav - 100, 0x274);
        put(one, sav - 800, 0x200);
        put(one, sav - 100 - 858, 0x274);
        EXPECT_EQ(dumped(one), sav == kLast ? "Raster is SDTV - NTSC 720x486 30Hz\n"
                                            : "Warning: Could not find SAV and EAV for line length detect\n");
    }
    const auto last_row = [](const std::string &header, const std::string &data) {
        return lines_from(dump_of(capture(header + "size 5\n", data), "f", {"-v"}), "007ff8::", 1);
    };
    EXPECT_EQ(last_row("nbits 8\n", std::string(kWords + 1, '\x11')),
              "007ff8:: 044 044 044 044 044 044 044 044 - '........'\n");
    // Words in groups of three: the last two of 32768 stay 0.
    EXPECT_EQ(last_row("nbits10kel\nnbits 10\n", std::string(kWords * 4, '\x95')),
              "007ff8:: 256 255 255 256 255 255 000 000 - '......**'\n");
}

TEST(RawStream, EdgesOfNumbers) {
    const auto is_read = [](const std::string &bits) {
        return dump_of(capture("nbits " + bits + "\nsize 5\n", "")) != kStart + kUnreadable;
    };
    for (const char *number : {"9", "08", "\r8", "\v8"}) EXPECT_TRUE(is_read(number)) << number;
    for (const char *other : {":", "/", "\b8",
                              "\x0E"
                              "8"})
        EXPECT_FALSE(is_read(other)) << other;
}
