// Encrypted triplets (SMPTE 429-6), printed and saved as stored.

#include "common/field_rows.h"
#include "common/print.h"
#include "mxf/frames.h"
#include "mxf/items.h"
#include "mxf/klv.h"

namespace {

// The items of a triplet, one behind the other, each with a BER length of which the low 32 bits count,
// signed.
class TripletReader {
 public:
    TripletReader(DumpOptions &opts, Bytes buffer, uint64_t start)
        : opts_(opts), buffer_(buffer), at_(start) {}

    // Moves past the next item; `length`, if given, gets its length.
    Bytes next(uint32_t *length = nullptr) {
        uint32_t size = 0;
        const uint32_t value_length = static_cast<uint32_t>(mxfber(opts_, buffer_, at_, &size));
        const Bytes value = buffer_.from(at_ + size);
        at_ += size + static_cast<uint64_t>(int64_t{static_cast<int32_t>(value_length)});
        if (length) *length = value_length;
        return value;
    }

 private:
    DumpOptions &opts_;
    Bytes buffer_;
    uint64_t at_;  // one before the start wraps around and lies beyond the end
};

// The first items; of the numbers the low half of 64 bits.
// clang-format off
constexpr FieldRow kItems[] = {
    {0, Field::hex8, " Cryptographic Context Link     ", 16, {"."}},
    {4, Field::hex32, " Plaintext Offset               0x"},
    {0, Field::hex8, " Source Key                     ", 16, {"."}},
    {4, Field::hex32, " Source Length                  0x"},
};
// clang-format on

}  // namespace

uint64_t mxf_encrypted_triplet(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name) {
    print("%s\n", name);
    const ItemValue item =
        print_length_line(opts, file_position, buffer, offset, " Length                         ");
    if (item.length == 0) return item.end() - offset;
    TripletReader reader(opts, buffer, item.start);
    for (const FieldRow &row : kItems) print_field_row(big_endian(reader.next()), row);
    uint32_t payload = 0;
    reader.next(&payload);
    print(" Payload                        0x%08x\n", payload);
    if (opts.save_frames) save_triplet(opts, item.in(buffer));
    return item.end() - offset;
}
