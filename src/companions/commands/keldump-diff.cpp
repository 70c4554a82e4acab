// What differs between the headers of two files.
#include <string>
#include <vector>

#include "companions/command.h"
#include "companions/diff/compare.h"
#include "companions/diff/dump_tree.h"
#include "companions/keldump.h"
#include "companions/safe_text.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-diff [--all] [-v] [--] A B\n"
    "\n"
    "Prints the header fields in which two files differ, each under its section: 'field: A -> B', '- field' "
    "where\n"
    "only A has it, '+ field' where only B has it. File positions, dates, UUIDs, UMIDs and the sizes of "
    "atoms and\n"
    "sets are left out.\n"
    "\n"
    "  --all    compare these, too\n"
    "  -v       compare keldump's more detailed dumps; -v -v more still\n"
    "\n"
    "Exit status: 0 when nothing differs, 1 when something does, 2 for trouble.\n";

constexpr size_t kMostText = size_t{256} << 20;

struct Request {
    bool everything = false;
    std::vector<std::string> switches;
    std::string names[2];
};

bool parse(int argc, char **argv, Request &request) {
    int next = 1;
    for (; next < argc && argv[next][0] == '-'; next++) {
        const std::string argument = argv[next];
        if (argument == "--") {
            next++;
            break;
        }
        if (argument == "--all") {
            request.everything = true;
        } else if (argument == "-v") {
            request.switches.push_back(argument);
        } else {
            return unknown_switch(argument);
        }
    }
    if (argc - next != 2) return false;
    request.names[0] = argv[next];
    request.names[1] = argv[next + 1];
    return true;
}

// The dump of a file; a message where there is none.
std::string read_dump(const std::string &keldump, const Request &request, const std::string &name,
                      std::string &dump) {
    const DumpResult result = run_keldump(keldump, request.switches, name, [&](std::string_view piece) {
        dump += piece;
        return dump.size() <= kMostText;
    });
    if (result.end == DumpEnd::dumped) return "";
    return safe_name(name) + ": " +
           (result.end == DumpEnd::stopped ? "its dump is too long to compare" : result.message);
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-diff");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse(argc, argv, request)) return usage_error(kUsage);
    const std::string keldump = find_keldump();
    if (keldump.empty()) return trouble("no keldump beside this command or on PATH");

    DumpNode trees[2];
    for (int i = 0; i < 2; i++) {
        std::string dump;
        const std::string message = read_dump(keldump, request, request.names[i], dump);
        if (!message.empty()) return trouble(message);
        trees[i] = parse_dump(dump, request.everything);
    }
    const std::string differences = compare_dumps(trees[0], trees[1]);
    if (differences.empty()) return kFine;
    write_out("--- " + safe_name(request.names[0]) + "\n+++ " + safe_name(request.names[1]) + "\n" +
              differences);
    return kFound;
}
