#include <cstdio>

#include "common/values.h"
#include "tiff/directory.h"

namespace {

constexpr int kPixels = 100;

void print_pixel(uint32_t red, uint32_t green, uint32_t blue) {
    std::printf("rgb : %04x %04x %04x\n", red, green, blue);
}

void print_pixels8(Bytes strip) {
    for (uint64_t i = 0; i < kPixels && strip.has(3 * i, 3); i++) {
        print_pixel(strip[3 * i], strip[3 * i + 1], strip[3 * i + 2]);
    }
}

void print_pixels16(Bytes strip, int big_endian) {
    for (uint64_t i = 0; i < kPixels && strip.has(6 * i, 6); i++) {
        const Bytes pixel = strip.from(6 * i);
        print_pixel(tiffuint16(pixel, big_endian), tiffuint16(pixel.from(2), big_endian),
                    tiffuint16(pixel.from(4), big_endian));
    }
}

// Six samples of 12 bits, most significant bits first, in nine bytes; shown in the upper bits of 16.
void print_pixels12(Bytes strip) {
    for (uint64_t i = 0; i < kPixels / 2; i++) {
        const Bytes b = strip.from(9 * i);
        if (!b.has(0, 5)) return;
        print_pixel(b[0] << 8 | (b[1] & 0xF0), ((b[1] & 0x0F) << 8 | b[2]) << 4, b[3] << 8 | (b[4] & 0xF0));
        if (!b.has(0, 9)) return;
        print_pixel(((b[4] & 0x0F) << 8 | b[5]) << 4, b[6] << 8 | (b[7] & 0xF0),
                    ((b[7] & 0x0F) << 8 | b[8]) << 4);
    }
}

}  // namespace

void print_pixels(const DumpOptions &opts, Bytes file) {
    const Bytes strip = file.from(static_cast<uint32_t>(opts.tiff_strip_offset));
    switch (opts.tiff_bits_per_sample) {
        case 8: print_pixels8(strip); break;
        case 12: print_pixels12(strip); break;
        case 16: print_pixels16(strip, opts.tiff_big_endian); break;
        default: std::printf("Unknown pixel depth %d\n", opts.tiff_bits_per_sample);
    }
}
