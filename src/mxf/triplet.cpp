// Encrypted triplets (SMPTE 429-6), printed and saved as stored.

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

void print_identifier(const char *label, Bytes id) {
    print("%s%02x", label, id[0]);
    for (uint64_t i = 1; i < 16; i++) print(".%02x", id[i]);
    print("\n");
}

// The low half of a 64-bit number.
void print_number(const char *label, Bytes number) {
    print("%s0x%02x%02x%02x%02x\n", label, number[4], number[5], number[6], number[7]);
}

}  // namespace

uint64_t mxf_encrypted_triplet(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name) {
    print("%s\n", name);
    const ItemValue item =
        print_length_line(opts, file_position, buffer, offset, " Length                         ");
    if (item.length == 0) return item.end() - offset;
    TripletReader reader(opts, buffer, item.start);
    print_identifier(" Cryptographic Context Link     ", reader.next());
    print_number(" Plaintext Offset               ", reader.next());
    print_identifier(" Source Key                     ", reader.next());
    print_number(" Source Length                  ", reader.next());
    uint32_t payload = 0;
    reader.next(&payload);
    print(" Payload                        0x%08x\n", payload);
    if (opts.save_frames) save_triplet(opts, item.in(buffer));
    return item.end() - offset;
}
