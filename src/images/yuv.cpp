// Raw 4:2:2 samples without any header: the file's size is all there is.
#include "images/yuv.h"

#include <cstdio>

#include "common/print.h"
#include "images/images.h"

namespace {

struct Raster {
    int32_t pixels;
    uint32_t width;
    uint32_t height;
};

constexpr Raster kRasters[] = {
    {307200, 640, 480},    {345600, 720, 480},    {349920, 720, 486},    {414720, 720, 576},
    {460800, 960, 480},    {466560, 960, 486},    {480000, 800, 600},    {483840, 960, 504},
    {552960, 960, 576},    {786432, 1024, 768},   {921600, 1280, 720},   {1049088, 1366, 768},
    {1310720, 1280, 1024}, {1757184, 2048, 858},  {1920000, 1600, 1200}, {1987200, 1920, 1035},
    {1989120, 1920, 1036}, {2073600, 1920, 1080}, {2157840, 1998, 1080}, {2211840, 1920, 1152},
    {2304000, 1920, 1200}, {2764800, 2560, 1080}, {3145728, 2048, 1536}, {3186688, 2048, 1556},
};

void print_raster(int32_t pixels, int bits) {
    uint32_t width = 0;
    uint32_t height = 0;
    if (!yuvguess(pixels, &width, &height)) {
        print("Fileformat:YUV %d bit without header, x/y size is unknown\n", bits);
        return;
    }
    print("Fileformat:YUV %d bit without header\n", bits);
    print(" xsize:       %d\n", width);
    print(" ysize:       %d\n", height);
    print(" nbits:       %d\n", bits);
}

// Sizes are taken in signed 32-bit arithmetic.
int32_t size32(Input &input) { return static_cast<int32_t>(static_cast<uint32_t>(input.size())); }
int32_t times3(int32_t n) { return static_cast<int32_t>(static_cast<uint32_t>(n) * 3); }

}  // namespace

int yuvguess(int pixels, uint32_t *width, uint32_t *height) {
    for (const Raster &raster : kRasters) {
        if (raster.pixels != pixels) continue;
        *width = raster.width;
        *height = raster.height;
        return 1;
    }
    return 0;
}

void yuvdump(DumpOptions &, Input &input) { print_raster(size32(input) / 2, 8); }
void yuv10dump(DumpOptions &, Input &input) { print_raster(times3(size32(input)) / 8, 10); }
void yuv16dump(DumpOptions &, Input &input) { print_raster(size32(input) / 4, 16); }
