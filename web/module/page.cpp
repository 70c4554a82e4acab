// The entry of the page: --skip N, --lines N, --bytes N, keldump's switches, the file.
#include <cstdlib>
#include <cstring>

#include "main/command_line.h"
#include "main/dump.h"
#include "page_lines.h"

namespace {

bool parse_limit(int argc, char **argv, int &next, PageLimits &limits) {
    uint64_t *limit = std::strcmp(argv[next], "--skip") == 0    ? &limits.skip
                      : std::strcmp(argv[next], "--lines") == 0 ? &limits.lines
                      : std::strcmp(argv[next], "--bytes") == 0 ? &limits.bytes
                                                                : nullptr;
    if (!limit || next + 1 >= argc) return false;
    *limit = std::strtoull(argv[++next], nullptr, 10);
    return true;
}

}  // namespace

int page_main(int argc, char **argv) {
    PageLimits limits;
    DumpOptions options{};
    int next = 1;
    for (; next < argc - 1; next++) {
        if (!parse_limit(argc, argv, next, limits) && !parse_switch(options, argv[next])) return 2;
    }
    if (next >= argc) return 2;
    PageLines lines(limits);
    const DumpOutcome outcome = dump(argv[next], options, &lines);
    const PageLines::End end = lines.is_stopped()                     ? PageLines::stopped
                               : outcome.end == DumpOutcome::unopened ? PageLines::unopened
                               : outcome.end == DumpOutcome::unknown  ? PageLines::unknown
                                                                      : PageLines::dumped;
    lines.finish(end, outcome.status);
    return 0;
}
