// Portable bitmap, greymap and pixmap (PBM, PGM, PPM), plain and raw.
#include <climits>
#include <cstdio>

#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "images/images.h"

namespace {

constexpr uint64_t kHeadSize = 64 * 1024;  // white space before the numbers may be long, but not endless

constexpr const char *kFormats[] = {
    nullptr,
    "Fileformat:PBM - Portable Bitmap - Ascii",
    "Fileformat:PGM - Portable Greymap - Ascii",
    "Fileformat:PPM - Portable Pixmap - Ascii",
    "Fileformat:PBM - Portable Bitmap",
    "Fileformat:PGM - Portable Greymap",
    "Fileformat:PPM - Portable Pixmap",
};

bool is_space(uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Reads the numbers of the header as formatted input does: white space before a number is passed over, and
// the first thing that is no number ends the reading, which leaves 0 for the rest.
class Scanner {
 public:
    explicit Scanner(Bytes text) : text_(text) {}

    bool literal(char c) {
        if (failed_ || text_[position_] != static_cast<uint8_t>(c)) failed_ = true;
        position_++;
        return !failed_;
    }

    Kept<int32_t> number() {
        const uint64_t start = position_;
        const int32_t value = read_number();
        return {value, text_.sub(start, position_ - start).file_range()};
    }

 private:
    int32_t read_number() {
        skip_space();
        const bool negative = text_[position_] == '-';
        if (negative || text_[position_] == '+') position_++;
        failed_ = failed_ || !is_digit();
        if (failed_) return 0;
        // Numbers too long stay at the ends of 64 bits, of which the low 32 are taken.
        uint64_t value = 0;
        const uint64_t limit = static_cast<uint64_t>(INT64_MAX) + negative;
        for (; is_digit(); position_++) {
            const uint64_t digit = text_[position_] - uint64_t{'0'};
            value = value > (limit - digit) / 10 ? limit : value * 10 + digit;
        }
        return static_cast<int32_t>(static_cast<uint32_t>(negative ? ~value + 1 : value));
    }
    bool is_digit() const { return text_[position_] >= '0' && text_[position_] <= '9'; }
    void skip_space() {
        while (is_space(text_[position_])) position_++;
    }

    Bytes text_;
    uint64_t position_ = 0;
    bool failed_ = false;
};

}  // namespace

void ppmdump(DumpOptions &, Input &input) {
    Scanner scanner(input.bytes(0, kHeadSize));
    scanner.literal('P');
    const int32_t magic = scanner.number();
    const Kept<int32_t> width = scanner.number();
    const Kept<int32_t> height = scanner.number();
    const char *format = magic > 0 ? name_at(kFormats, static_cast<uint64_t>(magic), nullptr) : nullptr;
    if (format) print("%s\n", own(format));
    from(width.at);
    print(" xsize %d\n", width.value);
    from(height.at);
    print(" ysize %d\n", height.value);
}
