
#include "common/print.h"
#include "tiff/directory.h"

namespace {

constexpr int kPixels = 100;

void print_pixel(uint32_t red, uint32_t green, uint32_t blue) {
    print("rgb : %04x %04x %04x\n", red, green, blue);
}

void print_pixels8(Bytes strip) {
    for (uint64_t i = 0; i < kPixels && strip.has(3 * i, 3); i++) {
        print_pixel(strip[3 * i], strip[3 * i + 1], strip[3 * i + 2]);
    }
}

void print_pixels16(OrderedBytes strip) {
    for (uint64_t i = 0; i < kPixels && strip.bytes.has(6 * i, 6); i++) {
        print_pixel(strip.u16(6 * i), strip.u16(6 * i + 2), strip.u16(6 * i + 4));
    }
}

// Sample i of a strip with 12 bits a sample, most significant bits first; in the upper bits of 16.
uint32_t sample12(Bytes strip, uint64_t i) {
    const uint32_t bits = big16(strip, i * 3 / 2);
    return i % 2 ? bits << 4 & 0xFFFF : bits & 0xFFF0;
}

void print_pixels12(Bytes strip) {
    for (uint64_t i = 0; i < kPixels && strip.has(0, (9 * i + 10) / 2); i++) {
        print_pixel(sample12(strip, 3 * i), sample12(strip, 3 * i + 1), sample12(strip, 3 * i + 2));
    }
}

}  // namespace

void print_pixels(const DumpOptions &opts, OrderedBytes file) {
    const OrderedBytes strip = file.from(static_cast<uint32_t>(opts.tiff_strip_offset));
    switch (opts.tiff_bits_per_sample) {
        case 8: print_pixels8(strip.bytes); break;
        case 12: print_pixels12(strip.bytes); break;
        case 16: print_pixels16(strip); break;
        default: print("Unknown pixel depth %d\n", opts.tiff_bits_per_sample);
    }
}
