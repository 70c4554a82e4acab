#include <gtest/gtest.h>

#include "images/yuv.h"
#include "support/command.h"

TEST(Yuv, RasterOfSize) {
    Transcript transcript;
    std::string rasters;
    uint32_t width = 0;
    uint32_t height = 0;
    for (int pixels = 300'000; pixels < 3'500'000; pixels++) {
        if (!yuvguess(pixels, &width, &height)) continue;
        rasters +=
            std::to_string(pixels) + ": " + std::to_string(width) + "x" + std::to_string(height) + "\n";
    }
    SHOW(rasters);
    const auto dump = [](uint64_t size, const std::string &name) {
        const Workplace place;
        place.write_sparse(name, size, 0, "");
        return place.run({name}).out;
    };
    const auto hd = [](const std::string &bits) {
        return "Fileformat:YUV " + bits +
               " bit without header\n xsize:       1920\n ysize:       1080\n nbits:       " + bits + "\n";
    };
    EXPECT_EQ(dump(4147201, "clip.QTL"), hd("8"));
    EXPECT_EQ(dump(5529600, "clip.yuv10"), hd("10"));
    EXPECT_EQ(dump(8294403, "clip.Yuv16"), hd("16"));
    EXPECT_EQ(dump(0x100000000 + 4147200, "clip.yuv8"), hd("8"));  // sizes count modulo 4 GiB
    EXPECT_EQ(dump(4147199, "clip.qnt"), "Fileformat:YUV 8 bit without header, x/y size is unknown\n");
    EXPECT_EQ(dump(0, "clip.yuv10"), "Fileformat:YUV 10 bit without header, x/y size is unknown\n");
    EXPECT_EQ(dump(0xFFFFFFFF, "clip.yuv16"), "Fileformat:YUV 16 bit without header, x/y size is unknown\n");
}
