#include <array>
#include <vector>

#include "common/file_image.h"
#include "common/line_buffer.h"
#include "raw/raw.h"

namespace {

constexpr size_t kShortest = 6;  // characters of a run that is printed
constexpr size_t kBlock = 256 * 1024;

constexpr auto kIsRunCharacter = [] {
    std::array<bool, 256> is{};
    for (int c = '0'; c <= '9'; c++) is[static_cast<size_t>(c)] = true;
    for (int c = 'A'; c <= 'Z'; c++) is[static_cast<size_t>(c)] = is[static_cast<size_t>(c | 0x20)] = true;
    return is;
}();

// A run that the end of a block cuts.
struct OpenRun {
    size_t held = 0;        // characters waiting while the run is shorter than kShortest
    bool printing = false;  // the run is long enough: its characters go out as they come
    char start[kShortest];
};

using Block = std::span<const uint8_t>;

size_t run_length(Block block) {
    size_t n = 0;
    while (n < block.size() && kIsRunCharacter[block[n]]) n++;
    return n;
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
    if (run.printing) out.put('\n');
    run = {};
}

void search_block(LineBuffer &out, OpenRun &run, Block block) {
    const size_t continued = run_length(block);
    extend(out, run, block.first(continued));
    if (continued == block.size()) return;
    close(out, run);

    // A run of six or more covers every sixth place at least once: look there only, then to both sides.
    size_t free = continued + 1;  // everything before is done, and block[free - 1] is in no run
    for (size_t probe = free + kShortest - 1; probe < block.size();) {
        if (!kIsRunCharacter[block[probe]]) {
            free = probe + 1;
            probe += kShortest;
            continue;
        }
        size_t start = probe;
        while (start > free && kIsRunCharacter[block[start - 1]]) start--;
        const size_t length = probe - start + run_length(block.subspan(probe));
        if (start + length == block.size()) break;
        if (length >= kShortest) {
            out.bytes(block.subspan(start, length));
            out.put('\n');
        }
        free = start + length + 1;
        probe = free + kShortest - 1;
    }
    // What may be a run at the block's end stays open.
    size_t start = block.size();
    while (start > free && kIsRunCharacter[block[start - 1]]) start--;
    extend(out, run, block.subspan(start));
}

}  // namespace

void stringsearchfile(DumpOptions &, std::FILE *file) {
    std::vector<uint8_t> block(kBlock);
    LineBuffer out;
    OpenRun run;
    while (const size_t got = static_cast<size_t>(read_fully(fileno(file), block.data(), block.size()))) {
        search_block(out, run, Block(block).first(got));
    }
    close(out, run);
}
