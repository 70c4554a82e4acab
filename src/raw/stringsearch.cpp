#include <cstring>
#include <memory>
#include <span>

#include "common/line_buffer.h"
#include "raw/raw.h"

namespace {

constexpr size_t kShortest = 6;  // characters of a run that is printed
constexpr size_t kBlock = 64 * 1024;

uint8_t is_run_character(uint8_t c) {
    const bool digit = static_cast<uint8_t>(c - '0') < 10;
    const bool letter = static_cast<uint8_t>((c | 0x20) - 'a') < 26;
    return digit | letter;
}

// A block of the file and what its bytes are, found by loops that the compiler turns into vector code.
struct Search {
    uint8_t bytes[kBlock];
    uint8_t in_run[kBlock + kShortest];  // 1 for a run character; zeros behind the block
    uint8_t long_run[kBlock];            // 1 where kShortest run characters begin
};

// A run that the end of a block cuts.
struct OpenRun {
    size_t held = 0;        // characters waiting while the run is shorter than kShortest
    bool printing = false;  // the run is long enough: its characters go out as they come
    char start[kShortest];
};

using Block = std::span<const uint8_t>;

void classify(Search &search, size_t size) {
    for (size_t i = 0; i < size; i++) search.in_run[i] = is_run_character(search.bytes[i]);
    std::memset(search.in_run + size, 0, kShortest);
    const uint8_t *in = search.in_run;
    static_assert(kShortest == 6);
    for (size_t i = 0; i < size; i++) {
        search.long_run[i] = in[i] & in[i + 1] & in[i + 2] & in[i + 3] & in[i + 4] & in[i + 5];
    }
}

// The end of the run characters from a place on.
size_t run_end(const Search &search, size_t from) {
    while (search.in_run[from]) from++;
    return from;
}

// Takes the characters at the start of a block that go on with the open run.
void extend(LineBuffer &out, OpenRun &run, Block characters) {
    for (const uint8_t c : characters) {
        if (run.printing) {
            out.put(static_cast<char>(c));
            continue;
        }
        run.start[run.held++] = static_cast<char>(c);
        if (run.held == kShortest) {
            out.text({run.start, run.held});
            run.printing = true;
        }
    }
}

void close(LineBuffer &out, OpenRun &run) {
    if (run.printing) out.end_line();
    run = {};
}

void search_block(LineBuffer &out, OpenRun &run, Search &search, size_t size) {
    classify(search, size);
    const Block block(search.bytes, size);
    size_t done = run_end(search, 0);
    extend(out, run, block.first(done));
    if (done == size) return;
    close(out, run);

    while (const void *found = std::memchr(search.long_run + done, 1, size - done)) {
        const size_t start = static_cast<size_t>(static_cast<const uint8_t *>(found) - search.long_run);
        const size_t end = run_end(search, start);
        if (end == size) break;
        out.bytes(block.subspan(start, end - start));
        out.end_line();
        done = end;
    }
    // What may be a run at the block's end stays open.
    size_t start = size;
    while (start > done && search.in_run[start - 1]) start--;
    extend(out, run, block.subspan(start));
}

}  // namespace

void stringsearchfile(DumpOptions &, Input &input) {
    const auto search = std::make_unique_for_overwrite<Search>();
    LineBuffer out;
    OpenRun run;
    uint64_t position = 0;
    while (const uint64_t got = input.read(position, search->bytes, kBlock)) {
        search_block(out, run, *search, static_cast<size_t>(got));
        position += got;
    }
    close(out, run);
}
