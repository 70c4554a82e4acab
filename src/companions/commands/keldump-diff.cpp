// What differs between the headers of two files.
#include <string>
#include <vector>

#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/diff/diff.h"
#include "companions/workers.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-diff [--all] [--json] [-v] [--] A B\n"
    "\n"
    "Prints what differs between two files: first as people say it ('sound: 2 tracks instead of 1', B's "
    "before\n"
    "A's), then header fields, each under its section: 'field: A -> B', '- field' where only A has it, '+ "
    "field'\n"
    "where only B has it. What stands there for every frame, sample or packet is counted. File positions, "
    "dates,\n"
    "UUIDs, UMIDs and the sizes of atoms and sets are left out.\n"
    "\n"
    "  --all    compare these, too, and list what is counted\n"
    "  --json   a JSON object\n"
    "  -v       compare keldump's more detailed dumps; -v -v more still\n"
    "\n"
    "Exit status: 0 when nothing differs, 1 when something does, 2 for trouble.\n";

struct Request {
    DiffOptions options;
    std::vector<std::string> names;
};

bool parse(Arguments arguments, Request &request) {
    while (arguments.next()) {
        if (arguments.is("--all")) {
            request.options.everything = true;
        } else if (arguments.is("--json")) {
            request.options.json = true;
        } else if (!arguments.is("-v") || !arguments.sets(request.options.dump)) {
            return arguments.refuse();
        }
    }
    request.names = arguments.operands();
    return request.names.size() == 2;
}

// Prints what the one job says.
class Printed : public JobsReader {
 public:
    void out(size_t, std::string_view text) override { write_out(text); }
    void complain(size_t, const std::string &message) override { ::complain(message); }
    void done(size_t, int status, const std::string &death) override {
        status_ = death.empty() ? status : trouble(death);
    }
    void progress(size_t) override {}

    int status() const { return status_; }

 private:
    int status_ = kTrouble;
};

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-diff");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse({argc, argv}, request)) return usage_error(kUsage);
    Printed printed;
    run_jobs(
        1, 1,
        [&](size_t, JobOutput &output) {
            return diff_files(request.names[0], request.names[1], request.options, output);
        },
        printed);
    return printed.status();
}
