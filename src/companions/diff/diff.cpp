#include "companions/diff/diff.h"

#include "companions/command.h"
#include "companions/diff/build.h"
#include "companions/safe_text.h"
#include "main/facts.h"

int diff_files(const std::string &one, const std::string &other, const DiffOptions &options,
               JobOutput &output) {
    const std::unique_ptr<Report> report = options.json ? json_report(output) : text_report(output);
    return diff_files(one, other, options, *report, output);
}

int diff_files(const std::string &one, const std::string &other, const DiffOptions &options, Report &report,
               JobOutput &output) {
    TextPool pool;
    FileTree trees[2];
    Facts all[2];
    const std::string *const names[2] = {&one, &other};
    for (int i = 0; i < 2; i++) {
        const std::string failure = read_tree(*names[i], options.dump, options.everything, pool, trees[i]);
        if (!failure.empty()) {
            output.complain(safe_name(*names[i]) + ": " + failure);
            return kTrouble;
        }
        all[i] = facts(names[i]->c_str());
    }
    report.begin(one, other);
    // A pipe has been read by now.
    const bool known = !all[0].format.empty() && !all[1].format.empty();
    if (!known) all[0] = all[1] = {};
    for (const FactDifference &difference : differing_facts(all[0], all[1], options.everything))
        report.fact(difference);
    const ToldTimecodes told(all[0], all[1]);
    compare_trees(trees[0].root, trees[1].root, pool, {trees[0].format, options.everything, options.same},
                  told, report);
    report.end();
    return report.any() ? kFound : kFine;
}
