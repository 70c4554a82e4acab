#include "jpeg2000/hexdump.h"

#include <algorithm>

#include "common/hexrow.h"

void jp2_hexdump(Bytes buf, uint64_t offset, uint64_t length) {
    constexpr uint64_t kMaxBytes = 32;
    constexpr HexRow kRow{.columns = 8, .gap = " - ", .after_character = " "};
    LineBuffer out;
    put_hexrows(out, buf.sub(offset, std::min(length, kMaxBytes)), kRow,
                [](LineBuffer &, uint64_t) { behind_position(1); });
}
