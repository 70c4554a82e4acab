#include <cstring>
#include <span>
#include <vector>

#include "common/line_buffer.h"
#include "raw/raw.h"

namespace {

constexpr size_t kShortest = 6;  // characters of a run that is printed
constexpr size_t kSearchBlock = 64 * 1024;

uint8_t is_run_character(uint8_t c) {
    const bool digit = static_cast<uint8_t>(c - '0') < 10;
    const bool letter = static_cast<uint8_t>((c | 0x20) - 'a') < 26;
    return digit | letter;
}

// A block of the file and what its bytes are, found by loops that the compiler turns into vector code.
struct Search {
    uint8_t bytes[kSearchBlock];
    uint8_t in_run[kSearchBlock + kShortest];  // 1 for a run character; zeros behind the block
    uint8_t long_run[kSearchBlock];            // 1 where kShortest run characters begin
};

// A run that the end of a block cuts.
struct OpenRun {
    FileRange bytes = {};
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

// Takes the characters of a block that go on with the open run.
void extend(LineBuffer &out, OpenRun &run, uint64_t position, Block characters) {
    if (run.bytes.size == 0) run.bytes.offset = position;
    run.bytes.size += characters.size();
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

void end_run(LineBuffer &out, FileRange bytes) {
    also(bytes);
    out.end_line();
}

void close(LineBuffer &out, OpenRun &run) {
    if (run.printing) end_run(out, run.bytes);
    run = {};
}

// A block that begins at a position of the file.
void search_block(LineBuffer &out, OpenRun &run, uint64_t position, Search &search, size_t size) {
    classify(search, size);
    const Block block(search.bytes, size);
    size_t done = run_end(search, 0);
    extend(out, run, position, block.first(done));
    if (done == size) return;
    close(out, run);

    while (const void *found = std::memchr(search.long_run + done, 1, size - done)) {
        const size_t start = static_cast<size_t>(static_cast<const uint8_t *>(found) - search.long_run);
        const size_t end = run_end(search, start);
        if (end == size) break;
        out.bytes(block.subspan(start, end - start));
        end_run(out, {position + start, end - start});
        done = end;
    }
    // What may be a run at the block's end stays open.
    size_t start = size;
    while (start > done && search.in_run[start - 1]) start--;
    extend(out, run, position + start, block.subspan(start));
}

}  // namespace

void stringsearchfile(DumpOptions &, Input &input) {
    std::vector<Search> searches(1);  // too large for a stack
    Search &search = searches.front();
    LineBuffer out;
    OpenRun run;
    forget();
    uint64_t position = 0;
    while (const uint64_t got = input.read(position, search.bytes, kSearchBlock)) {
        search_block(out, run, position, search, static_cast<size_t>(got));
        position += got;
    }
    close(out, run);
}
