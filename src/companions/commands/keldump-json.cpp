// Dumps as data: each line with its place, its values and its bytes of the file.
#include <string>
#include <vector>

#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/json/json.h"
#include "companions/printing.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-json [--lines] [--utf8] [--match PATTERN]... [-j N] [switches] [--] FILES\n"
    "\n"
    "Prints the dumps of files as JSON: an object a file, and for each line of its dump an object with its\n"
    "path, text, values and bytes.\n"
    "\n"
    "  --lines          JSON Lines: an object a line, complete with its file\n"
    "  --utf8           bytes that are no UTF-8 as U+FFFD (else lone surrogates U+DC80 to U+DCFF)\n"
    "  -j N             N files at a time (as many as there are processors)\n"
    "  --match PATTERN  only lines whose path ends so: 'television/timecode', '*/Start Timecode'\n"
    "  switches         keldump's own, for every file; not -ms\n"
    "  --               the end of the switches\n"
    "\n"
    "Exit status: 0, 1 when a file could not be opened or is unknown, 2 for trouble.\n";

struct Request {
    unsigned jobs = core_count();
    JsonStyle style;
    DumpOptions options{};
    std::vector<std::string> files;
};

bool parse(Arguments arguments, Request &request) {
    std::string value;
    while (arguments.next()) {
        if (arguments.is("--lines")) {
            request.style.lines = true;
        } else if (arguments.is("--utf8")) {
            request.style.utf8 = true;
        } else if (arguments.takes("--match", value)) {
            request.style.match.emplace_back(value);
        } else if (!arguments.takes_jobs(request.jobs) && !arguments.sets(request.options)) {
            return arguments.refuse();
        }
    }
    request.files = arguments.operands();
    return !arguments.failed() && !request.files.empty();
}

// The objects of the files, in an array but for JSON Lines.
class PrintedObjects : public PrintedJobs {
 public:
    PrintedObjects(const std::vector<std::string> &files, const JsonStyle &style)
        : PrintedJobs(files), files_(files), style_(style) {}

    void out(size_t index, std::string_view text) override {
        if (!begun_ && !style_.lines) PrintedJobs::out(index, index > 0 ? ",\n" : "\n");
        begun_ = true;
        PrintedJobs::out(index, text);
    }
    void done(size_t index, int status, const std::string &death) override {
        if (!death.empty()) {
            const bool begun = begun_;
            out(index, JsonDump::broken_off(style_, files_[index], begun, death));
        }
        PrintedJobs::done(index, status, death);
        begun_ = false;
    }

 private:
    const std::vector<std::string> &files_;
    const JsonStyle &style_;
    bool begun_ = false;  // something of the file
};

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-json");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse({argc, argv}, request)) return usage_error(kUsage);
    PrintedObjects printed(request.files, request.style);
    if (!request.style.lines) write_out("[");
    run_jobs(
        request.files.size(), request.jobs,
        [&](size_t index, JobOutput &output) {
            return dump_as_json(request.files[index], request.options, request.style, output) ? kFine
                                                                                              : kFound;
        },
        printed);
    if (!request.style.lines) write_out("\n]\n");
    return printed.status();
}
