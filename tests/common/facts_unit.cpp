#include "common/facts.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/bytes_of.h"

namespace {

std::string text_of(Ratio ratio) { return std::to_string(ratio.n) + "/" + std::to_string(ratio.d); }

// Rates as headers round them are the ones that are meant, and no others.
TEST(Facts, Rates) {
    for (const double rate : {23.976, 23.98, 23.97602, 24000.0 / 1001})
        EXPECT_EQ(text_of(rate_of(rate)), "24000/1001") << rate;
    EXPECT_EQ(text_of(rate_of(29.97)) + " " + text_of(rate_of(59.94)) + " " + text_of(rate_of(47.952)),
              "30000/1001 60000/1001 48000/1001");
    EXPECT_EQ(text_of(rate_of(24.0)) + " " + text_of(rate_of(25.0)) + " " + text_of(rate_of(12.5)) + " " +
                  text_of(rate_of(18.0)),
              "24/1 25/1 25/2 18/1");
    EXPECT_FALSE(rate_of(0.0).is_set() || rate_of(-25.0).is_set() ||
                 rate_of(std::numeric_limits<double>::quiet_NaN()).is_set());
    EXPECT_FALSE(rate_of(std::numeric_limits<double>::infinity()).is_set());
    // As measured durations give them.
    EXPECT_EQ(
        text_of(rate_of(1199, 50)) + " " + text_of(rate_of(999999, 40000)) + " " + text_of(rate_of(0, 1)),
        "1199/50 25/1 0/1");
    EXPECT_EQ(base_of({24000, 1001}), 24U);
    EXPECT_EQ(base_of({60000, 1001}), 60U);
    EXPECT_EQ(base_of({}), 0U);
}

TEST(Facts, Timecodes) {
    EXPECT_EQ(bcd_timecode(0x01020344, 30, "").text(), "01:02:03;04");
    EXPECT_EQ(bcd_timecode(0x01020344, 50, "").text(), "01:02:03:44");
    EXPECT_EQ(bcd_timecode(0x81828304, 24, "").text(), "01:02:03:04");  // flags of the digits' bytes
    EXPECT_EQ(bcd_timecode(0x01020304, 0, "").text(), "01:02:03:04");
    EXPECT_EQ(bcd_timecode(0x01020344, 0, "").text(), "01:02:03;04");
    EXPECT_TRUE(bcd_timecode(0x01020304, 0, "").is_valid());
    for (const uint32_t wrong : {0x01020324U, 0x0102030FU, 0x01620304U, 0x25020304U}) {
        EXPECT_FALSE(bcd_timecode(wrong, 24, "").is_valid()) << wrong;
        EXPECT_TRUE(bcd_timecode(wrong, 24, "").is_set()) << wrong;
    }
    EXPECT_EQ(file_timecode(0, 1, 0, 2, 30, true, "").frames, 1800);
    EXPECT_EQ(file_timecode(0, 10, 0, 0, 30, true, "").frames, 17982);
    EXPECT_EQ(file_timecode(1, 0, 0, 0, 60, true, "").text(), "01:00:00;00");
    EXPECT_FALSE(file_timecode(24, 0, 0, 0, 25, false, "").is_valid() ||
                 file_timecode(0, 0, 0, 25, 25, false, "").is_valid() ||
                 file_timecode(0, 1, 0, 1, 30, true, "").is_valid());
    // No numbers are dropped of 24 and 25.
    EXPECT_EQ(file_timecode(1, 0, 0, 0, 24, true, "").text(), "01:00:00:00");
    EXPECT_EQ(counted_timecode(90000, 25, true, "").text(), "01:00:00:00");
    FileTimecode late = file_timecode(23, 59, 59, 24, 25, false, "");
    late.frames++;
    EXPECT_EQ(late.text(), "00:00:00:00");
}

TEST(Facts, Dates) {
    EXPECT_EQ(iso_date_in("2026:11:26:10:02:03:CET") + " " + iso_date_in("2026-11-26 10:02:03"),
              "2026-11-26T10:02:03 2026-11-26T10:02:03");
    for (const auto &[zone, iso] : {std::pair{"Z", "Z"},
                                    {" UTC", "Z"},
                                    {":+01", "+01:00"},
                                    {".250-0530", "-05:30"},
                                    {"+02:00", "+02:00"},
                                    {"+1", ""},
                                    {"+99", ""},
                                    {"-", ""}})
        EXPECT_EQ(iso_date_in("2026:11:26:10:02:03" + std::string(zone)),
                  "2026-11-26T10:02:03" + std::string(iso));
    EXPECT_EQ(iso_date_in("2026/11/26") + " " + iso_date_in("2026:11:26 10:02"), "2026-11-26 2026-11-26");
    EXPECT_EQ(iso_date_in("    :  :     :  :  ") + iso_date_in("2026:13:01") +
                  iso_date_in("0000:00:00 00:00:00") + iso_date_in(""),
              "");
    EXPECT_EQ(iso_date_in("99999999999999999999999:1:1") + iso_date_in("12-11-10 09:08:07"), "");
    EXPECT_EQ(iso_date_in("Thu Nov  6 10:02:03 2026") + iso_date_in("Thu Nov 26 10:02:03 UTC 2026"),
              "2026-11-06T10:02:032026-11-26T10:02:03");
    EXPECT_EQ(iso_date_of_unix(0) + " " + iso_date_of_unix(951782400) + " " + iso_date_of_unix(-1),
              "1970-01-01T00:00:00Z 2000-02-29T00:00:00Z 1969-12-31T23:59:59Z");
    EXPECT_EQ(iso_date_of_unix(253402300799), "9999-12-31T23:59:59Z");
    EXPECT_EQ(iso_date_of_unix(253402300800) + iso_date_of_unix(INT64_MIN), "");
}

TEST(Facts, Texts) {
    EXPECT_EQ(keycode_text(2, 24, 123456, 7890, 12) + "," + keycode_text(99, 99, 999999, 9999, -1),
              "02 24 123456 7890+12,99 99 999999 9999");
    EXPECT_EQ(keycode_text(100, 0, 0, 1, 0) + keycode_text(1, -1, 0, 0, 0) +
                  keycode_text(1, 0, 1000000, 0, 0) + keycode_text(1, 0, 0, 10000, 0),
              "");
    const std::string bytes =
        hex("060E2B34 04010101 0D010301 02000000") + "  a b \n" + std::string(2, '\0') + "x\xFF";
    const Bytes b(bytes.data(), bytes.size());
    EXPECT_EQ(label_digits(b.sub(0, 16)) + label_digits(b.sub(0, 15)),
              "06.0e.2b.34.04.01.01.01-0d.01.03.01.02.00.00.00");
    EXPECT_EQ(fixed_text(b, 16, 20) + "," + fixed_text(b, 16, 3) + "," + fixed_text(b, 26, 5), "a b,a,");
    EXPECT_EQ(hex_text(b.sub(0, 4)) + hex_text({}), "060e2b34");
    EXPECT_TRUE(is_zero(b.sub(23, 2)) && is_zero({}) && contains(b, "a b") && contains(b, ""));
    EXPECT_FALSE(is_zero(b.sub(22, 3)) || contains(b, "b a") || contains({}, "a"));
}

TEST(Facts, WhatIsThere) {
    Facts facts;
    facts.lasts(25, {});
    EXPECT_EQ(facts.duration.d, 0);
    facts.lasts(50, {25, 1});
    EXPECT_EQ(text_of(facts.duration), "2/1");
    facts.lasts(0, {25, 1});
    EXPECT_EQ(text_of(facts.duration), "0/1");
    facts.lasts(INT64_MAX, {30000, 1001});
    EXPECT_EQ(text_of(facts.duration), "0/1");
    facts.add_more("empty", "");
    facts.add(FileTimecode{});
    EXPECT_TRUE(facts.more.empty() && facts.timecodes.empty() && facts.pictures.empty());
    facts.picture().width = 3;
    EXPECT_EQ(facts.pictures.size(), 1U);
}

}  // namespace
