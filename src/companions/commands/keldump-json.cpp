// Dumps as data: each line with its place, its values and its bytes of the file.
#include <string>
#include <vector>

#include "companions/command.h"
#include "companions/json/json.h"
#include "companions/safe_text.h"
#include "main/command_line.h"
#include "main/dump.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-json [--lines] [--utf8] [--match PATTERN]... [switches] [--] FILES\n"
    "\n"
    "Prints the dumps of files as JSON: an object a file, and for each line of its dump an object with its\n"
    "path, text, values and bytes.\n"
    "\n"
    "  --lines          JSON Lines: an object a line, complete with its file\n"
    "  --utf8           bytes that are no UTF-8 as U+FFFD (else lone surrogates U+DC80 to U+DCFF)\n"
    "  --match PATTERN  only lines whose path ends so: 'television/timecode', '*/Start Timecode'\n"
    "  switches         keldump's own, for every file; not -ms\n"
    "  --               the end of the switches\n"
    "\n"
    "Exit status: 0, 1 when a file could not be opened or is unknown, 2 for trouble.\n";

struct Request {
    JsonStyle style;
    DumpOptions options{};
    std::vector<std::string> files;
};

// The pattern of "--match PATTERN" or "--match=PATTERN" at argv[next], which is moved to the last argument
// taken.
bool parse_match(int argc, char **argv, int &next, Request &request) {
    const std::string_view argument = argv[next];
    if (argument.starts_with("--match=")) {
        request.style.match.emplace_back(argument.substr(8));
        return true;
    }
    if (++next >= argc) return unknown_switch("--match");
    request.style.match.emplace_back(argv[next]);
    return true;
}

bool parse(int argc, char **argv, Request &request) {
    int next = 1;
    for (; next < argc && argv[next][0] == '-'; next++) {
        const std::string argument = argv[next];
        if (argument == "--") {
            next++;
            break;
        }
        if (argument == "--lines") {
            request.style.lines = true;
        } else if (argument == "--utf8") {
            request.style.utf8 = true;
        } else if (argument == "--match" || argument.starts_with("--match=")) {
            if (!parse_match(argc, argv, next, request)) return false;
        } else if (argument.starts_with("-ms") || argument.starts_with("--") ||
                   !parse_switch(request.options, argv[next])) {
            return unknown_switch(argument);
        }
    }
    request.files.assign(argv + next, argv + argc);
    return !request.files.empty();
}

// Prints the object of one file; whether it was dumped.
bool dump_file(const Request &request, const std::string &path) {
    JsonDump json(request.style, path);
    const DumpOutcome outcome = dump(path.c_str(), request.options, &json);
    std::string message;
    if (outcome.end == DumpOutcome::unopened) message = "could not open file";
    if (outcome.end == DumpOutcome::unknown) message = "unknown file format";
    json.finish(message, outcome.status);
    if (message.empty()) return true;
    complain(safe_name(path) + ": " + message);
    return false;
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-json");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse(argc, argv, request)) return usage_error(kUsage);
    bool all_dumped = true;
    if (!request.style.lines) write_out("[");
    for (size_t i = 0; i < request.files.size(); i++) {
        if (!request.style.lines) write_out(i ? ",\n" : "\n");
        if (!dump_file(request, request.files[i])) all_dumped = false;
    }
    if (!request.style.lines) write_out("\n]\n");
    return all_dumped ? kFine : kFound;
}
