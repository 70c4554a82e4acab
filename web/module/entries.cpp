// The commands in one module, each under its name as the first argument.
#include <cstring>

#include "common/print.h"

int keldump_main(int argc, char **argv);
int keldump_all_main(int argc, char **argv);
int keldump_diff_main(int argc, char **argv);
int keldump_json_main(int argc, char **argv);
int keldump_seq_main(int argc, char **argv);
int keldump_table_main(int argc, char **argv);
int page_main(int argc, char **argv);
int page_diff_main(int argc, char **argv);
int page_groups_main(int argc, char **argv);
int page_odd_main(int argc, char **argv);
int page_report_main(int argc, char **argv);
int page_rows_main(int argc, char **argv);
int page_sequence_main(int argc, char **argv);

namespace {

struct Entry {
    const char *name;
    int (*run)(int argc, char **argv);
};

constexpr Entry kEntries[] = {
    {"keldump", keldump_main},
    {"keldump-all", keldump_all_main},
    {"keldump-diff", keldump_diff_main},
    {"keldump-json", keldump_json_main},
    {"keldump-seq", keldump_seq_main},
    {"keldump-table", keldump_table_main},
    {"page", page_main},
    {"page-diff", page_diff_main},
    {"page-groups", page_groups_main},
    {"page-odd", page_odd_main},
    {"page-report", page_report_main},
    {"page-rows", page_rows_main},
    {"page-sequence", page_sequence_main},
};

}  // namespace

int main(int argc, char **argv) {
    for (const Entry &entry : kEntries) {
        if (argc > 0 && std::strcmp(argv[0], entry.name) == 0) return entry.run(argc, argv);
    }
    // Without one, the names of all.
    for (const Entry &entry : kEntries) print("%s\n", entry.name);
    standard_output.flush();
    return 2;
}
