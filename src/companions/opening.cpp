#include "companions/opening.h"

#include "main/facts.h"

std::string failure_text(const std::string &path, const DumpOutcome &outcome) {
    if (outcome.end == DumpOutcome::dumped) return "";
    std::string problem = facts(path.c_str()).problem;
    if (!problem.empty()) return problem;
    return outcome.end == DumpOutcome::unopened ? "could not be opened" : "unknown format";
}
