#include "companions/progress.h"

#include <unistd.h>

#include <cstdio>

using std::chrono::steady_clock;

namespace {
constexpr std::chrono::milliseconds kInterval(100);
}

Progress::Progress(size_t count, bool shown) : count_(count), shown_(shown && isatty(STDERR_FILENO)) {
    if (shown_) next_ = steady_clock::now() + kInterval;
}

void Progress::step() {
    if (!shown_) return;
    const std::lock_guard lock(mutex_);
    done_++;
    if (steady_clock::now() < next_) return;
    std::fprintf(stderr, "\r%zu of %zu files", done_, count_);
    next_ = steady_clock::now() + kInterval;
    visible_ = true;
}

void Progress::clear() {
    const std::lock_guard lock(mutex_);
    if (visible_) std::fputs("\r\x1b[K", stderr);
    visible_ = false;
}
