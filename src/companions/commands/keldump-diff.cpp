// What differs between the headers of two files.
#include <string>
#include <vector>

#include "common/print.h"
#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/diff/compare.h"
#include "companions/diff/dump_tree.h"
#include "companions/opening.h"
#include "companions/safe_text.h"
#include "main/dump.h"

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
    DumpOptions options{};
    std::string names[2];
};

bool parse(Arguments arguments, Request &request) {
    while (arguments.next()) {
        if (arguments.is("--all")) {
            request.everything = true;
        } else if (!arguments.is("-v") || !arguments.sets(request.options)) {
            return arguments.refuse();
        }
    }
    const std::vector<std::string> names = arguments.operands();
    if (names.size() != 2) return false;
    request.names[0] = names[0];
    request.names[1] = names[1];
    return true;
}

// The text of a dump, as far as it is compared.
struct DumpText : OutputTaker {
    void take(std::string_view piece) override {
        if (text.size() <= kMostText) text += piece;
    }
    std::string text;
};

// The dump of a file; a message where there is none.
std::string read_dump(const Request &request, const std::string &name, std::string &text) {
    DumpText taker;
    standard_output.goes_to(&taker);
    const DumpOutcome outcome = dump(name.c_str(), request.options, nullptr);
    standard_output.flush();
    standard_output.goes_to(nullptr);
    const std::string failure = failure_text(name, outcome);
    if (!failure.empty()) return safe_name(name) + ": " + failure;
    if (taker.text.size() > kMostText) return safe_name(name) + ": its dump is too long to compare";
    text = std::move(taker.text);
    return "";
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-diff");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse({argc, argv}, request)) return usage_error(kUsage);

    DumpNode trees[2];
    for (int i = 0; i < 2; i++) {
        std::string text;
        const std::string message = read_dump(request, request.names[i], text);
        if (!message.empty()) return trouble(message);
        trees[i] = parse_dump(text, request.everything);
    }
    const std::string differences = compare_dumps(trees[0], trees[1]);
    if (differences.empty()) return kFine;
    write_out("--- " + safe_name(request.names[0]) + "\n+++ " + safe_name(request.names[1]) + "\n" +
              differences);
    return kFound;
}
