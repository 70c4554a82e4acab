#include "companions/progress.h"

#include <unistd.h>

#include <cstdio>

Progress::Progress(size_t count, bool shown) : count_(count), shown_(shown && isatty(STDERR_FILENO)) {}

void Progress::show(size_t ended) {
    if (!shown_) return;
    std::fprintf(stderr, "\r%zu of %zu files", ended, count_);
    visible_ = true;
}

void Progress::clear() {
    if (visible_) std::fputs("\r\x1b[K", stderr);
    visible_ = false;
}
