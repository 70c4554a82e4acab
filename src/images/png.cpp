// PNG (ISO/IEC 15948): the list of chunks.
#include <algorithm>

#include "common/field_rows.h"
#include "common/file_access.h"
#include "common/file_image.h"
#include "common/file_window.h"
#include "common/hexrow.h"
#include "common/values.h"
#include "images/images.h"

namespace {

constexpr uint64_t kSignatureSize = 8;
constexpr uint64_t kChunkHeadSize = 8;  // length and type
constexpr uint64_t kCrcSize = 4;
constexpr uint64_t kShownSize = 32;       // of a chunk: its head and the fields of IHDR
constexpr uint64_t kStep = 64 * 1024;     // bytes of data in memory at a time
constexpr uint32_t kChunkHeadBlock = 64;  // chunks of picture data cost one read of this size each

constexpr HexRow kDataRow{.padded = false, .characters = false};

// clang-format off
constexpr FieldRow kImageHeaderRows[] = {
    {0, Field::dec32, " xsize       "},
    {4, Field::dec32, " ysize       "},
    {8, Field::dec8, " bitdepth    "},
    {9, Field::dec8, " colortype   "},
    {10, Field::dec8, " compression "},
    {11, Field::dec8, " filtertype  "},
    {12, Field::dec8, " interlace   "},
};
constexpr FieldRow kPixelDimensionRows[] = {
    {0, Field::dec32, " xpelsperunit "},
    {4, Field::dec32, " ypelsperunit "},
};
// clang-format on

int32_t png_int32(Bytes b, uint64_t offset) { return static_cast<int32_t>(big32(b, offset)); }

void print_pixel_dimensions(Bytes data) {
    print_field_rows(big_endian(data), kPixelDimensionRows);
    switch (data[8]) {
        case 0: std::printf(" unit        unknown\n"); break;
        case 1: std::printf(" unit        meter\n"); break;
        default: std::printf(" unit        %d\n", data[8]);
    }
}

void hexdump_data(std::FILE *file, uint64_t start, uint64_t size) {
    LineBuffer out;
    FileImage part(file, start, std::min(kStep, size));
    for (uint64_t done = 0; done < size; done += kStep) {
        part.move_to(start + done);
        put_hexrows(out, part.bytes().sub(0, size - done), kDataRow,
                    [](LineBuffer &line, uint64_t) { line.text("     "); });
    }
}

void print_chunk(Bytes chunk, uint64_t position) {
    std::printf("%08llx: %c%c%c%c %d\n", static_cast<unsigned long long>(position), tiffchar(chunk[4]),
                tiffchar(chunk[5]), tiffchar(chunk[6]), tiffchar(chunk[7]), png_int32(chunk, 0));
    const Bytes data = chunk.from(kChunkHeadSize);
    if (bytes_are(chunk, 4, "IHDR")) print_field_rows(big_endian(data), kImageHeaderRows);
    if (bytes_are(chunk, 4, "pHYs")) print_pixel_dimensions(data);
}

}  // namespace

void pngdump(DumpOptions &opts, std::FILE *file) {
    const uint64_t size = file_size(file);
    FileWindow window(file, kShownSize, kChunkHeadBlock);
    if (!window.ok()) {
        std::printf("malloc of buffer %d failed\n", static_cast<int32_t>(size));
        return;
    }
    std::printf("Fileformat:PNG\n");
    for (uint64_t position = kSignatureSize; position < size;) {
        const Bytes chunk = window.at(position);
        const int32_t length = png_int32(chunk, 0);
        const uint64_t data = position + kChunkHeadSize;
        if (!bytes_are(chunk, 4, "IDAT")) {
            print_chunk(chunk, position);
            if (opts.verbose && length > 0 && data < size)
                hexdump_data(file, data, std::min(static_cast<uint64_t>(length), size - data));
        }
        if (length < 0) return;  // would lead backwards
        position = data + static_cast<uint64_t>(length) + kCrcSize;
    }
}

void mngdump(DumpOptions &, std::FILE *) { std::printf("Fileformat:MNG\n"); }
