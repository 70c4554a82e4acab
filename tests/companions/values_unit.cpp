#include <gtest/gtest.h>

#include "companions/table/values.h"

TEST(Values, Timecodes) {
    EXPECT_EQ(timecode_of_frames(1799, 30, true), "00:00:59;29");
    EXPECT_EQ(timecode_of_frames(1800, 30, true), "00:01:00;02");
    EXPECT_EQ(timecode_of_frames(17982, 30, true), "00:10:00;00");
    EXPECT_EQ(timecode_of_frames(2589408 + 3600, 60, true), "12:01:00;04");
    EXPECT_EQ(timecode_of_frames(86400 * 25 + 1, 25, false), "00:00:00:01");
    EXPECT_EQ(timecode_of_frames(-1, 25, false) + timecode_of_frames(1, 0, false), "");
    EXPECT_EQ(keycode_text(99, 99, 999999, 9999, 99), "99 99 999999 9999+99");
    EXPECT_EQ(keycode_text(100, 0, 0, 1, 0) + keycode_text(1, 100, 0, 0, 0) +
                  keycode_text(1, 0, 1000000, 0, 0) + keycode_text(1, 0, 0, 10000, 0) +
                  keycode_text(1, 0, 0, 0, 100) + keycode_text(0, 0, 0, 0, 9),
              "");
    EXPECT_EQ(as_bcd("0x01020344"), "01020344");
    EXPECT_EQ(as_bcd("ffffffff") + as_bcd("010203") + as_bcd(""), "");
    EXPECT_EQ(bcd_timecode_text("01020344", 0), "01:02:03;04");
    EXPECT_EQ(bcd_timecode_text("81828344", 30), "01:02:03;04");
    EXPECT_EQ(bcd_timecode_text("01020345", 50), "01:02:03:45");
    EXPECT_EQ(bcd_timecode_text("0102030f", 25) + bcd_timecode_text("", 25), "");
    EXPECT_EQ(as_rate("24000/1001") + " " + as_rate("60.000000") + " " + as_rate("1/0") + as_rate("nan"),
              "23.976 60 ");
}
