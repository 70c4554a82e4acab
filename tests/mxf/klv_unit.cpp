// Lengths, codings and names of items.
#include "mxf/klv.h"

#include <gtest/gtest.h>

#include "klv_items.h"
#include "mxf/dictionary.h"
#include "mxf/value.h"
#include "support/printed.h"

namespace {

struct Captured {
    uint64_t length;
    uint32_t counter;
    std::string out;
};

Captured ber(const std::string &bytes) {
    DumpOptions opts{};
    Captured result{0, 16, ""};
    result.out =
        printed([&] { result.length = mxfber(opts, Bytes(bytes.data(), bytes.size()), 0, &result.counter); });
    return result;
}

std::string name_of_label(const std::string &label) {
    const std::string bytes = hex(label);
    DumpOptions opts{};
    int found = 0;
    const std::string name =
        printed([&] { found = printidentifier(opts, Bytes(bytes.data(), bytes.size())); });
    EXPECT_EQ(found, !name.empty());
    return name;
}

}  // namespace

TEST(Klv, BerLengths) {
    EXPECT_EQ(ber("\x7F").length, 127U);
    EXPECT_EQ(ber(hex("83000100")).length, 256U);
    EXPECT_EQ(ber(hex("83000100")).counter, 20U);
    EXPECT_EQ(ber(hex("88FFFFFFFFFFFFFFFF")).length, UINT64_MAX);
    EXPECT_EQ(ber(hex("8401")).length, 0x01000000U);  // bytes beyond the item are 0
    const Captured indefinite = ber("\x80");
    EXPECT_EQ(indefinite.length, 0U);
    EXPECT_EQ(indefinite.counter, 17U);
    EXPECT_EQ(indefinite.out,
              "MXFERROR @ 0x00000000 mxfber : count value of 0x80 is not allowed (377M-2004:5.3.4)\n\n");
    const Captured nine = ber(hex("89FF0000000000000005"));
    EXPECT_EQ(nine.length, 5U);
    EXPECT_EQ(nine.counter, 26U);
    EXPECT_EQ(nine.out, "MXFERROR @ 0x00000000 mxfber : Max allowed count is 8 (377M-2004:5.3.4)\n\n");
}

TEST(Klv, FixedWidthLengthsAndTags) {
    Transcript transcript;
    DumpOptions opts{};
    const auto key = [](const std::string &coding) {
        return hex("060E2B3402" + coding + "0101 0000000000000000 8201020304");
    };
    const auto length = [&](const std::string &coding, uint32_t &size) {
        const std::string bytes = key(coding);
        return mxftag(opts, Bytes(bytes.data(), bytes.size()), 0, &size);
    };
    uint32_t size = 0;
    EXPECT_EQ(length("13", size), 0x0102U);
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(length("33", size), 0x82U);
    EXPECT_EQ(size, 1U);
    EXPECT_EQ(length("5B", size), 0x8201U);
    EXPECT_EQ(size, 2U);
    EXPECT_EQ(length("64", size), 0x82010203U);
    EXPECT_EQ(size, 4U);
    const std::string unknown_codings = printed([&] {
        EXPECT_EQ(length("05", size), 0U);
        const std::string unknown = key("05");
        EXPECT_EQ(mxftagsize(opts, Bytes(unknown.data(), unknown.size()), 0), 0);
        EXPECT_STREQ(mxfklvtype(opts, Bytes(unknown.data(), unknown.size()), 0), "FieldDescription");
        const std::string none = key("06");
        EXPECT_STREQ(mxfklvtype(opts, Bytes(none.data(), none.size()), 0), "unknown");
    });
    SHOW(unknown_codings);
    const std::string tag_long = key("7B");
    EXPECT_EQ(mxftagsize(opts, Bytes(tag_long.data(), tag_long.size()), 0), 4);
    EXPECT_STREQ(mxfklvtype(opts, Bytes(tag_long.data(), tag_long.size()), 0), "Local/Length-Long/Tag-Long");
}

TEST(Klv, NamesOfCodings) {
    Transcript transcript;
    DumpOptions opts{};
    std::string names;
    for (unsigned coding = 0; coding < 256; coding++) {
        const std::string key = hex("060E2B3402" + hex_digits(coding));
        std::string name;
        printed([&] { name = mxfklvtype(opts, Bytes(key.data(), key.size()), 0); });
        if (name != "unknown") names += hex_digits(coding) + " " + name + "\n";
    }
    SHOW(names);
}

// Two labels of 16 bytes behind their count and size, which are bytes of the value for the other kinds.
TEST(Values, OfEveryKind) {
    Transcript transcript;
    DumpOptions opts{};
    const std::string label = hex("060E2B34 04010101 0D010201 01010900");
    const std::string value = big().u32(2, 16).raw(label).raw(label).str();
    const Bytes bytes(value.data(), value.size());
    std::string every;
    for (uint32_t kind = 0; kind < 30; kind++) {
        every +=
            std::to_string(kind) + printed([&] { mxf_print_rp210data(opts, bytes, 0, 40, ValueKind{kind}); });
    }
    SHOW(every);
}

TEST(Dictionary, TheRegistersAsPublished) {
    ASSERT_EQ(rp210_count, 2195U);
    ASSERT_EQ(rp224_count, 2586U);
    EXPECT_EQ(rp210_tag_count, 251U);
    EXPECT_STREQ(rp210[0].name, "ELEMENTS");
    EXPECT_STREQ(rp210[1].name, "IDENTIFIERS AND LOCATORS");
    EXPECT_STREQ(rp210[2193].name, "EXPERIMENTAL METADATA");
    EXPECT_STREQ(rp210[2194].name, "Legacy (315M)");
    EXPECT_STREQ(rp224[0].name, "SMPTE LABELS");
    EXPECT_STREQ(rp224[2585].name, "DNxHD_100_960x720P");
    size_t nodes = 0;
    for (size_t i = 0; i < rp210_count; i++) nodes += rp210[i].kind == ValueKind::node;
    EXPECT_EQ(nodes, 537U);
    EXPECT_STREQ(find_rp210_tag(0x3C0A)->name, "GUID");
    EXPECT_STREQ(find_rp210_tag(0x3B09)->name, "Operational Pattern UL");
    EXPECT_STREQ(find_rp210_tag(0x3F06)->name, "Index Stream ID");
    EXPECT_EQ(find_rp210_tag(0x7FFF), nullptr);
}

TEST(Dictionary, TheFirstRowThatMatches) {
    DumpOptions opts{};
    const auto without_version = [](std::string ul) {
        ul[7] = 0;
        return ul;
    };
    for (size_t i = 0; i < rp210_count; i++) {
        const std::string ul(reinterpret_cast<const char *>(rp210[i].ul), 16);
        size_t first = 0;
        while (without_version({reinterpret_cast<const char *>(rp210[first].ul), 16}) != without_version(ul))
            first++;
        ASSERT_EQ(mxf_find_rp210(opts, Bytes(ul.data(), 16), 0), &rp210[first]) << i;
    }
    EXPECT_EQ(name_of_label("060E2B34 01010101 00000000 00000000"), "RP210/Node/ELEMENTS");
    EXPECT_EQ(name_of_label("060E2B34 04010101 00000000 00000000"), "RP224/SMPTE LABELS");
    EXPECT_EQ(name_of_label("060E2B34 01010177 03010210 01000000"), "RP210/Filler Data");  // any version
    EXPECT_EQ(name_of_label("060E2B34 04010101 0E040301 02060304"), "RP224/DNxHD_100_960x720P");
    EXPECT_EQ(name_of_label("060E2B34 04010177 0E040301 02060304"), "");
}
