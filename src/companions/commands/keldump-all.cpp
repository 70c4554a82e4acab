// The whole dumps of many files, each behind a line with its name.
#include <unistd.h>

#include <string>
#include <vector>

#include "companions/all/all.h"
#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/files.h"
#include "companions/printing.h"
#include "main/dump_options.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-all [-j N] [--raw] [switches] [--] FILES|DIRECTORIES\n"
    "\n"
    "Prints the whole dump of every file behind a line '==> NAME <==', in order, several at a time.\n"
    "\n"
    "  -j N       N files at a time (as many as there are processors)\n"
    "  --raw      the bytes of dumps as they are, control characters too; not on a terminal\n"
    "  switches   keldump's own, for every file; -ms is refused, as all files would write the same names\n"
    "  --         the end of the switches\n"
    "\n"
    "Exit status: 0, 1 when a file could not be opened or is unknown, 2 for trouble.\n";

struct Request {
    unsigned jobs = core_count();
    bool raw = false;
    DumpOptions options{};
    std::vector<std::string> operands;
};

bool parse(Arguments arguments, Request &request) {
    while (arguments.next()) {
        if (arguments.is("--raw")) {
            request.raw = !isatty(STDOUT_FILENO);
        } else if (!arguments.takes_jobs(request.jobs) && !arguments.sets(request.options)) {
            return arguments.refuse();
        }
    }
    request.operands = arguments.operands();
    return !arguments.failed() && !request.operands.empty();
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-all");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse({argc, argv}, request)) return usage_error(kUsage);
    const FileList list = list_in_time(request.operands);
    PrintedJobs printed(list.files);
    run_jobs(
        list.files.size(), request.jobs,
        [&](size_t index, JobOutput &output) {
            return dump_behind_name(list.files[index], request.options, request.raw, output) ? kFine : kFound;
        },
        printed);
    return report_problems(list) ? kFound : printed.status();
}
