// The whole dumps of many files, each behind a line with its name.
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "companions/command.h"
#include "companions/files.h"
#include "companions/keldump.h"
#include "companions/ordered.h"
#include "companions/safe_text.h"

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
    std::vector<std::string> switches;
    std::vector<std::string> operands;
};

// The switches that keldump would take; it answers others with its usage text.
bool is_keldump_switch(const std::string &argument) {
    if (argument.size() < 2) return false;
    if (argument[1] != 'm') return std::string_view("adhpstuv").find(argument[1]) != std::string_view::npos;
    return argument.size() > 2 && std::string_view("chltvx").find(argument[2]) != std::string_view::npos;
}

bool parse(int argc, char **argv, Request &request) {
    int next = 1;
    for (; next < argc && argv[next][0] == '-'; next++) {
        const std::string argument = argv[next];
        if (argument == "--") {
            next++;
            break;
        }
        if (argument.starts_with("-j")) {
            if (!parse_jobs(argc, argv, next, request.jobs)) return unknown_switch(argument);
        } else if (argument == "--raw") {
            request.raw = true;
        } else if (is_keldump_switch(argument)) {
            request.switches.push_back(argument);
        } else {
            return unknown_switch(argument);
        }
    }
    request.operands.assign(argv + next, argv + argc);
    return !request.operands.empty();
}

// Prints one file; whether it was dumped.
bool dump_file(const std::string &keldump, const Request &request, const std::string &path,
               const OutputTaker &out) {
    out("==> " + safe_name(path) + " <==\n");
    const bool raw = request.raw && !isatty(STDOUT_FILENO);
    SafeText safe;
    std::string text;
    bool ends_line = true;
    const DumpResult result = run_keldump(keldump, request.switches, path, [&](std::string_view piece) {
        if (!piece.empty()) ends_line = piece.back() == '\n';
        if (raw) {
            out(piece);
        } else {
            text.clear();
            safe.add(piece, text);
            out(text);
        }
        return true;
    });
    text.clear();
    safe.finish(text);
    if (!ends_line) text += '\n';
    if (result.end != DumpEnd::dumped) {
        text += result.message + "\n";
        complain(safe_name(path) + ": " + result.message);
    }
    out(text + "\n");
    return result.end == DumpEnd::dumped;
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-all");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse(argc, argv, request)) return usage_error(kUsage);
    const std::string keldump = find_keldump();
    if (keldump.empty()) return trouble("no keldump beside this command or on PATH");

    const FileList list = list_files(request.operands);
    for (const std::string &problem : list.problems) complain(problem);
    std::atomic<bool> all_dumped = list.problems.empty();
    run_in_order(list.files.size(), request.jobs, [&](size_t index, const OutputTaker &out) {
        if (!dump_file(keldump, request, list.files[index], out)) all_dumped = false;
    });
    return all_dumped ? kFine : kFound;
}
