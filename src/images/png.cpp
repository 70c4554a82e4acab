// PNG (ISO/IEC 15948) and MNG.
#include <algorithm>
#include <cstdio>

#include "common/file_image.h"
#include "common/hexrow.h"
#include "common/values.h"
#include "images/images.h"

namespace {

constexpr uint64_t kSignatureSize = 8;
constexpr uint64_t kChunkHeaderSize = 8;
constexpr uint64_t kCrcSize = 4;

void print_ihdr(Bytes data) {
    std::printf(" xsize       %d\n", static_cast<int32_t>(tiffuint32(data, 1)));
    std::printf(" ysize       %d\n", static_cast<int32_t>(tiffuint32(data.from(4), 1)));
    std::printf(" bitdepth    %d\n", data[8]);
    std::printf(" colortype   %d\n", data[9]);
    std::printf(" compression %d\n", data[10]);
    std::printf(" filtertype  %d\n", data[11]);
    std::printf(" interlace   %d\n", data[12]);
}

void print_phys(Bytes data) {
    std::printf(" xpelsperunit %d\n", static_cast<int32_t>(tiffuint32(data, 1)));
    std::printf(" ypelsperunit %d\n", static_cast<int32_t>(tiffuint32(data.from(4), 1)));
    switch (data[8]) {
        case 0: std::printf(" unit        unknown\n"); break;
        case 1: std::printf(" unit        meter\n"); break;
        default: std::printf(" unit        %d\n", data[8]);
    }
}

void print_data(Bytes data) {
    LineBuffer out;
    put_hexrows(out, data, {.padded = false, .characters = false},
                [](LineBuffer &line, uint64_t) { line.text("     "); });
}

void print_chunk(const DumpOptions &opts, Bytes file, uint64_t position) {
    const Bytes chunk = file.from(position);
    const int32_t length = static_cast<int32_t>(tiffuint32(chunk, 1));
    if (bytes_are(chunk, 4, "IDAT")) return;
    std::printf("%08x: %c%c%c%c %d\n", static_cast<uint32_t>(position), tiffchar(chunk[4]),
                tiffchar(chunk[5]), tiffchar(chunk[6]), tiffchar(chunk[7]), length);
    const Bytes rest = chunk.from(kChunkHeaderSize);
    if (bytes_are(chunk, 4, "IHDR")) print_ihdr(rest);
    if (bytes_are(chunk, 4, "pHYs")) print_phys(rest);
    if (opts.verbose && length > 0) print_data(rest.sub(0, static_cast<uint64_t>(length)));
}

}  // namespace

void pngdump(DumpOptions &opts, std::FILE *file) {
    FileImage image(file);
    if (!image.ok()) {
        std::printf("malloc of buffer %d failed\n", static_cast<int>(image.size()));
        return;
    }
    const Bytes bytes = image.bytes();
    std::printf("Fileformat:PNG\n");
    for (uint64_t position = kSignatureSize; position < bytes.size();) {
        print_chunk(opts, bytes, position);
        const int32_t length = static_cast<int32_t>(tiffuint32(bytes.from(position), 1));
        if (length < 0) break;  // no chunk is that long
        position += kChunkHeaderSize + static_cast<uint64_t>(length) + kCrcSize;
    }
}

void mngdump(DumpOptions &, std::FILE *) { std::printf("Fileformat:MNG\n"); }
