#include <gtest/gtest.h>

#include <sstream>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

// What a DPX file prints below "kelheader" for items in either byte order.
std::string dump_of_items(const std::vector<uint32_t> &words, ByteWriter::Order order) {
    ByteWriter header(order);
    header.u32(0xFEEDF00D);
    for (const uint32_t word : words) header.u32(word);
    const auto file =
        little().text("XPDS").u32(8192).at(32).u32(1056).at(2048).text("KEL Tessaron metadata", 32);
    const std::string text = dump_of(ByteWriter(file).raw(header.str()).str());
    const std::string title = "extendedheader\n type             : 'KEL Tessaron metadata'\nkelheader\n";
    const size_t start = text.find(title);
    return start == std::string::npos ? "no header" : text.substr(start + title.size());
}

// The items' lines, which are the same in either byte order.
std::string items(const std::vector<uint32_t> &words) {
    const std::string lines = dump_of_items(words, ByteWriter::Order::little);
    EXPECT_EQ(dump_of_items(words, ByteWriter::Order::big), lines);
    return lines;
}

// Items that fill words 1 to n - 1, then others.
std::vector<uint32_t> from_word(uint32_t n, const std::vector<uint32_t> &words) {
    std::vector<uint32_t> all(n - 1, 0x00464E41);
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

}  // namespace

TEST(KelHeader, Items) {
    Transcript transcript;
    SHOW(items({}));
    SHOW(items({0x04435456, 0x01020304, 0x044C5456, 0x00020015, 0x044D5456, 0x01000315, 0x0C495256,
                1,          2,          3,          0x04455945, 0xFFFFFFFE, 0x08444641, 4,
                5,          0x14585256, 1,          2,          3,          4,          5,
                0x10485348, 6,          7,          8,          9,          0x04484354, 1,
                0x04585858, 0xDEADBEEF, 0,          0x04435456, 7}));
    SHOW(items({0x0A6041D5, 0x41424344, 0x00FF4546, 0x47480000, 0x00474E41, 0x12010295, 0x20202020,
                0x20202020, 0x20202020, 0x20202020, 0x7E7F0000}));
    SHOW(items({0x08353132, 0x99019800, 0, 0x00363132}));
}

// Each word a number of its own.
TEST(KelHeader, EveryItemOfWords) {
    Transcript transcript;
    std::vector<uint32_t> words;
    std::istringstream names(
        "VTC4 VTU4 VTD4 VTV4 VTL4 VTM4 LTC4 LTU4 VRC4 VRU4 VRI4 VRI8 VRI12 VRT4 VRH4 GPI4 EYE4 FLD8 FLE8 "
        "FLP8 FLQ8 "
        "AFD8 AFE8 AFP8 AFQ8 DLT8 DVT8 DVU8 HSH16 TCH4 TCK4 CPU8 VRX20");
    for (std::string name; names >> name;) {
        const auto size = static_cast<uint32_t>(std::stoi(name.substr(3)));
        words.push_back(size << 24 | static_cast<uint32_t>(name[0]) | static_cast<uint32_t>(name[1]) << 8 |
                        static_cast<uint32_t>(name[2]) << 16);
        for (uint32_t i = 0; i < size; i += 4) words.push_back(0x1000 + static_cast<uint32_t>(words.size()));
    }
    SHOW(items(words));
}

TEST(KelHeader, ItemsPastItsEnd) {
    Transcript transcript;
    SHOW(items(from_word(254, {0x08544C44, 1, 2})));
    SHOW(items(from_word(255, {0x044C5456, 1})));
    SHOW(items(from_word(254, {0x080102D5, 0x41424344, 0x45464748})));
    SHOW(items(from_word(254, {0xD8353132, 0x99019900})));
}

// Film data of 1 to 3 bytes, the last two of which are the checksum, and data that the header cuts behind a
// packet.
TEST(KelHeader, ShortFilmData) {
    EXPECT_EQ(items({0x01353132, 0x12340000}), " rp215a\nCRC Wrong Calc 0000 != 0012\n");
    EXPECT_EQ(items({0x02353132, 0x12340000}), " rp215a\nCRC Wrong Calc 0000 != 1234\n");
    EXPECT_EQ(items({0x03353132, 0x99CCCC00}), " rp215a\n99/204-Unknown 99\nCRC Wrong Calc 0099 != cccc\n");
    EXPECT_EQ(items(from_word(254, {0x20353132, 0x99020000})).find("00/0-"), std::string::npos);
}

// Film data of the usual size: 213 bytes, then their checksum.
TEST(KelHeader, WholeFilmData) {
    std::vector<uint32_t> words(55, 0);
    words[0] = 0xD8353132;
    words[1] = 0xF0D30000;
    words[54] = 0x001234FF;
    EXPECT_NE(items(words).find(" != 1234\n"), std::string::npos);
}
