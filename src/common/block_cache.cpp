#include "common/block_cache.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "common/input.h"
#include "common/stream.h"

namespace {

constexpr uint64_t kLargestRun = 256 * 1024;  // bytes of one sequential read at most
constexpr size_t kMostRuns = 256;             // in memory before the older ones are given back
constexpr uint64_t kNear = 4096;              // a skip that is cheaper read than made

uint8_t *allocate(uint64_t n) {
    void *memory = std::malloc(static_cast<size_t>(n));
    if (!memory) throw std::bad_alloc();
    return static_cast<uint8_t *>(memory);
}

}  // namespace

struct BlockCache::Runs {
    std::vector<Run> by_start;  // none lies on another
    uint64_t count = 0;         // of all that were read
    std::vector<uint8_t> gathered[2];
    unsigned next = 0;

    // The first run that begins behind an offset: in a walk through a file none does.
    std::vector<Run>::iterator behind(uint64_t offset) {
        if (by_start.empty() || by_start.back().start <= offset) return by_start.end();
        return std::ranges::upper_bound(by_start, offset, {}, &Run::start);
    }
};

BlockCache::~BlockCache() {
    clear();
    delete runs_;
}

void BlockCache::clear() {
    if (!runs_) return;
    for (const Run &run : runs_->by_start) std::free(run.data);
    runs_->by_start.clear();
    forget_found();
}

BlockCache::Runs &BlockCache::runs() {
    if (!runs_) runs_ = new Runs;
    return *runs_;
}

void BlockCache::select(const Run &run) {
    before_ = found_;
    found_ = run;
    last_ = listening ? Run{} : run;
}

void BlockCache::forget_found() { found_ = before_ = last_ = {}; }

// Makes the run that holds an offset the one found; false where there is none.
bool BlockCache::look_up(uint64_t offset) {
    if (offset - found_.start < found_.size) return true;
    if (offset - before_.start < before_.size) {
        select(Run(before_));
        return true;
    }
    const auto behind = runs().behind(offset);
    if (behind == runs().by_start.begin()) return false;
    const Run &run = *std::prev(behind);
    if (offset - run.start >= run.size) return false;
    select(run);
    return true;
}

const uint8_t *BlockCache::find(uint64_t offset, uint64_t n, uint32_t block) {
    if (!look_up(offset) && !read(offset & ~(uint64_t{block} - 1), offset, n, block)) return nullptr;
    const uint64_t inside = offset - found_.start;
    if (n > found_.size - inside) return nullptr;
    if (listening) stream::add_read(offset, n);
    return found_.data + inside;
}

uint64_t BlockCache::load(uint64_t offset, uint64_t needed, uint32_t block) {
    const bool is_there = look_up(offset) || read(offset, offset, needed, block);
    return is_there ? found_.size - (offset - found_.start) : 0;
}

// Reads a run from `start` on, or from the end of a run that ends near it, that holds `needed` bytes at an
// offset as far as one read may; false where the bytes end before the offset.
bool BlockCache::read(uint64_t start, uint64_t offset, uint64_t needed, uint32_t block) {
    if (offset >= input_.read_end()) return false;
    if (runs().by_start.size() >= kMostRuns) drop_oldest();
    const auto next = runs().behind(offset);
    bool sequential = false;
    if (next != runs().by_start.begin()) {
        const Run &before = *std::prev(next);
        const uint64_t behind = before.start + before.size;
        sequential = start <= behind + kNear;
        if (sequential) start = behind;
    }
    const uint64_t border = block - 1;  // of a block that begins with the run
    uint64_t size = std::min(offset - start + std::min(needed, kLargestRun), kLargestRun);
    size = std::max<uint64_t>((size + border) & ~border,
                              sequential ? std::max(ahead_, 2 * uint64_t{block}) : block);
    size = std::min({size, kLargestRun, input_.read_end() - start});
    if (next != runs().by_start.end()) size = std::min(size, next->start - start);
    ahead_ = sequential ? 2 * size : 0;

    uint8_t *data = allocate(size);
    const uint64_t got = input_.read(start, data, size);
    if (got == 0) {
        std::free(data);
        return false;
    }
    select({start, got, data, runs().count++});
    runs().by_start.insert(next, found_);
    return offset - start < got;
}

// The half that was read longest ago.
void BlockCache::drop_oldest() {
    const uint64_t oldest_kept = runs().count - kMostRuns / 2;
    std::erase_if(runs().by_start, [&](const Run &run) {
        if (run.age >= oldest_kept) return false;
        std::free(run.data);
        return true;
    });
    forget_found();
}

std::span<const uint8_t> BlockCache::gather(uint64_t offset, size_t n, uint32_t block) {
    if (n == 0) return {};
    if (const uint8_t *whole = at(offset, n, block)) return {whole, n};
    std::vector<uint8_t> &range = runs().gathered[runs().next];
    runs().next ^= 1;
    range.assign(n, 0);
    for (size_t done = 0; done < n;) {
        at(offset + done, n - done, block);
        if (!look_up(offset + done)) break;  // the bytes end
        const uint64_t inside = offset + done - found_.start;
        const size_t part = static_cast<size_t>(std::min<uint64_t>(n - done, found_.size - inside));
        std::memcpy(range.data() + done, found_.data + inside, part);
        done += part;
    }
    if (listening) stream::add_read(offset, n);
    return range;
}
