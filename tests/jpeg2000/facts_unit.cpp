#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(Jpeg2000Facts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("jpeg2000"));
    SHOW(facts_of_samples("jpeg"));
}

// Boxes with sizes of 64 bits; a component's own coding makes a picture lossy.
TEST(Jpeg2000Facts, SizesAndOverrides) {
    const std::string plain = content_of(std::string(KELDUMP_SAMPLES) + "/jpeg2000/plain.jp2");
    std::string wide = plain.substr(0, 32);
    for (size_t at = 32; at + 8 <= plain.size();) {
        size_t size = 0;
        for (size_t i = 0; i < 4; i++) size = size << 8 | static_cast<uint8_t>(plain[at + i]);
        wide += big()
                    .u32(1)
                    .text(plain.substr(at + 4, 4))
                    .u64(size + 8)
                    .raw(plain.substr(at + 8, size - 8))
                    .str();
        at += size;
    }
    EXPECT_EQ(facts_of(wide), facts_of(plain));
    std::string stream = plain.substr(plain.find("\xFF\x4F\xFF\x51"));
    EXPECT_NE(facts_of(stream).find("JPEG 2000 5/3"), std::string::npos);
    stream.insert(stream.find("\xFF\x52"), big().hex("FF53 0009 02 00 01 04 04 00 00").str());
    EXPECT_NE(facts_of(stream).find("JPEG 2000 9/7"), std::string::npos);
}
