#include <algorithm>

#include "common/hexrow.h"
#include "raw/raw.h"

namespace {

constexpr int64_t kRowSize = 16;
constexpr int64_t kDefaultLength = 0x10000;
constexpr int64_t kWideOffsets = 0x100000000;  // a dump that reaches beyond has 16-digit offsets
constexpr uint64_t kStep = 256 * 1024;         // bytes in memory at a time

constexpr HexRow kRow{.gap = " : "};

void put_rows(LineBuffer &out, const DumpOptions &opts, Bytes bytes, uint64_t address, bool wide) {
    put_hexrows(out, bytes, kRow, [&](LineBuffer &line, uint64_t i) {
        if (opts.hex_no_offsets) return;
        if (wide) {
            line.hex(address + i, 16, ' ');
        } else {
            line.hex((address + i) & 0xFFFFFFFF, 8);
        }
        line.text(": ");
    });
}

}  // namespace

void hexdump(DumpOptions &opts, Input *input, Bytes memory, int64_t address, int64_t length) {
    if (length < 1 || address > INT64_MAX - length) return;
    const bool wide = address + length > kWideOffsets;
    const uint64_t start = static_cast<uint64_t>(address);
    LineBuffer out;
    if (!input) {
        put_rows(out, opts, memory.sub(0, static_cast<uint64_t>(length)), start, wide);
        return;
    }
    // In steps, so that a dump of 100 GB stays in a few pages.
    const uint64_t total = static_cast<uint64_t>(length);
    for (uint64_t done = 0; done < total; done += kStep) {
        put_rows(out, opts, input->next_step(start + done, std::min(kStep, total - done)), start + done,
                 wide);
    }
}

void hexdumpfile(DumpOptions &opts, Input &input, int64_t start, int64_t length) {
    const int64_t size = static_cast<int64_t>(input.size());
    if (start < 0 || length < 0) return;
    start -= start % kRowSize;
    if (length == 0) length = kDefaultLength;
    if (start > INT64_MAX - length || start + length > size) length = size - start;
    hexdump(opts, &input, Bytes(), start, length);
}
