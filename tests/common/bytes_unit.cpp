#include "common/bytes.h"

#include <gtest/gtest.h>

TEST(Bytes, EmptyViewsReadAsZero) {
    const Bytes none;
    EXPECT_EQ(none[0], 0);
    EXPECT_EQ(little64(none), 0U);
    EXPECT_EQ(big32(none, UINT64_MAX), 0U);
    EXPECT_TRUE(none.has(0, 0));
    EXPECT_FALSE(none.has(0, 1));
    EXPECT_TRUE(none.sub(5, 5).empty());
    EXPECT_TRUE(none.span(0, 100).empty());
    EXPECT_EQ(text_at(none, 3, 10).length, 0);
}

TEST(Bytes, OffsetsNearTheEndOf64BitsNeverWrap) {
    const uint8_t data[] = {1, 2, 3, 4};
    const Bytes b(data, sizeof data);
    EXPECT_FALSE(b.has(UINT64_MAX, 2));
    EXPECT_FALSE(b.has(2, UINT64_MAX));
    EXPECT_EQ(b[UINT64_MAX], 0);
    EXPECT_EQ(little32(b, UINT64_MAX - 1), 0U);
    EXPECT_EQ(big64(b, UINT64_MAX), 0U);
    EXPECT_EQ(b.from(UINT64_MAX).size(), 0U);
    EXPECT_EQ(b.sub(1, UINT64_MAX).size(), 3U);
    EXPECT_EQ(b.span(3, UINT64_MAX).size(), 1U);
}

TEST(Bytes, NumbersInBothOrdersWithZerosBeyondTheEnd) {
    const uint8_t data[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const Bytes b(data, sizeof data);
    EXPECT_EQ(little16(b, 1), 0x0302);
    EXPECT_EQ(big32(b, 2), 0x03040506U);
    EXPECT_EQ(little64(b), 0x0807060504030201U);
    EXPECT_EQ(big32(b, 6), 0x07080000U);
    EXPECT_EQ(little32(b, 6), 0x00000807U);
    EXPECT_EQ(b.big(5, 3), 0x060708U);
}

TEST(Bytes, TextsEndAtNulWidthOrWindow) {
    const Bytes b("ab\0cdef", 7);
    EXPECT_EQ(text_at(b, 0, 7).length, 2);
    EXPECT_EQ(text_at(b, 3, 2).length, 2);
    EXPECT_EQ(text_at(b, 5, 100).length, 2);
    EXPECT_TRUE(bytes_are(b, 2, "\0cd"));
    EXPECT_FALSE(bytes_are(b, 5, "efg"));
}
