// Photoshop image resources, which TIFF files carry in tag 34377 or behind the image source data.

#include "common/hexrow.h"
#include "common/print.h"
#include "common/values.h"
#include "tiff/directory.h"

namespace {

constexpr uint32_t kSignature = 0x3842494D;  // "8BIM"
constexpr uint32_t kThumbnail = 1033;
constexpr uint32_t kThumbnailNewer = 1036;

void print_name(Bytes name) {
    print("   name  '");
    for (uint64_t i = 1; i <= name[0]; i++) print("%c", tiffchar(name[i]));
    print("'\n");
}

void print_data(Bytes data) {
    LineBuffer out;
    put_hexrows(out, data, {.padded = false, .characters = false},
                [](LineBuffer &line, uint64_t) { line.literal("     "); });
}

}  // namespace

void photoshoptag(DumpOptions &opts, Bytes data, int64_t length, Budget &budget) {
    print("\n");
    for (uint64_t p = 0; length > 0 && p < static_cast<uint64_t>(length) && !budget.spent();) {
        const Bytes block = data.from(p);
        if (big32(block) != kSignature) {
            print("   magic %c%c%c%c wrong\n", tiffchar(block[0]), tiffchar(block[1]), tiffchar(block[2]),
                  tiffchar(block[3]));
            return;
        }
        const uint32_t id = big16(block, 4);
        const uint64_t name_size = (block[6] + uint64_t{2}) & ~uint64_t{1};
        const Bytes sized = block.from(6 + name_size);
        const int32_t size = static_cast<int32_t>(big32(sized));
        print_name(block.from(6));
        print("    id   %d\n", id);
        print("    size %d\n", size);
        if (size < 0) return;
        const uint64_t data_size = static_cast<uint64_t>(size);
        const bool thumbnail = id == kThumbnail || id == kThumbnailNewer;
        const Bytes shown = sized.sub(4, opts.verbose || !thumbnail ? data_size : 0);
        print_data(shown);
        budget.spend(6 + name_size + shown.size());
        p += 6 + name_size + 4 + ((data_size + 1) & ~uint64_t{1});
    }
}
