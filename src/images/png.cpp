// PNG (ISO/IEC 15948): the list of chunks.
#include <algorithm>

#include "common/field_rows.h"
#include "common/hexrow.h"
#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
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

void print_pixel_dimensions(Bytes data) {
    print_field_rows(big_endian(data), kPixelDimensionRows);
    static constexpr const char *kUnits[] = {"unknown", "meter"};
    if (const char *unit = name_at(kUnits, data[8], nullptr)) {
        print(" unit        %s\n", unit);
    } else {
        print(" unit        %d\n", data[8]);
    }
}

void hexdump_data(Input &input, uint64_t start, uint64_t size) {
    LineBuffer out;
    for (uint64_t done = 0; done < size; done += kStep) {
        put_hexrows(out, input.present(start + done, std::min(kStep, size - done)), kDataRow,
                    [](LineBuffer &line, uint64_t) {
                        behind_position(1);
                        line.literal("     ");
                    });
    }
}

void print_chunk(Bytes chunk, uint64_t position) {
    from(chunk, 0, kChunkHeadSize);
    print("%08llx: ", static_cast<unsigned long long>(position));
    behind_position();
    label_begins(false);
    print("%c%c%c%c", tiffchar(chunk[4]), tiffchar(chunk[5]), tiffchar(chunk[6]), tiffchar(chunk[7]));
    label_ends();
    print(" %d\n", big_endian(chunk).s32(0));
    const Bytes data = chunk.from(kChunkHeadSize);
    if (bytes_are(chunk, 4, "IHDR")) print_field_rows(big_endian(data), kImageHeaderRows);
    if (bytes_are(chunk, 4, "pHYs")) print_pixel_dimensions(data);
}

}  // namespace

void pngdump(DumpOptions &opts, Input &input) {
    if (!check_buffer(input.size())) return;
    print("Fileformat:PNG\n");
    for (uint64_t position = kSignatureSize;;) {
        const Bytes chunk = input.bytes(position, kShownSize, kChunkHeadBlock);
        if (position >= input.end()) return;
        const int32_t length = big_endian(chunk).s32(0);
        const uint64_t data = position + kChunkHeadSize;
        if (!bytes_are(chunk, 4, "IDAT")) {
            print_chunk(chunk, position);
            if (opts.verbose && length > 0 && data < input.end())
                hexdump_data(input, data, std::min(static_cast<uint64_t>(length), input.end() - data));
        }
        if (length < 0) return;  // would lead backwards
        position = data + static_cast<uint64_t>(length) + kCrcSize;
    }
}

void mngdump(DumpOptions &, Input &) { print("Fileformat:MNG\n"); }
