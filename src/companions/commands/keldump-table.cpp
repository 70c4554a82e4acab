// A row a file: format, size, rates, timecode and the like, read from the dumps.
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "companions/command.h"
#include "companions/files.h"
#include "companions/keldump.h"
#include "companions/ordered.h"
#include "companions/progress.h"
#include "companions/safe_text.h"
#include "companions/table/movie.h"
#include "companions/table/output.h"
#include "companions/table/reader.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-table [--csv|--json] [-j N] [--] FILES|DIRECTORIES\n"
    "\n"
    "Prints a row a file, read from the files' dumps: format, width, height, bit depth, codec, frame rate, "
    "duration,\n"
    "audio channels, sample rate, timecode, keycode and reel; empty where the dump does not say.\n"
    "\n"
    "  --csv      comma-separated values (RFC 4180)\n"
    "  --json     an array of objects\n"
    "  -j N       N files at a time (as many as there are processors)\n"
    "  --         the end of the switches\n"
    "\n"
    "Exit status: 0, 1 when a file could not be opened or is unknown, 2 for trouble.\n";

enum class Style { aligned, csv, json };

struct Request {
    Style style = Style::aligned;
    unsigned jobs = core_count();
    std::vector<std::string> operands;
};

bool parse(int argc, char **argv, Request &request) {
    int next = 1;
    for (; next < argc && argv[next][0] == '-'; next++) {
        const std::string argument = argv[next];
        if (argument == "--") {
            next++;
            break;
        }
        if (argument == "--csv") {
            request.style = Style::csv;
        } else if (argument == "--json") {
            request.style = Style::json;
        } else if (!argument.starts_with("-j") || !parse_jobs(argc, argv, next, request.jobs)) {
            return unknown_switch(argument);
        }
    }
    request.operands.assign(argv + next, argv + argc);
    return !request.operands.empty();
}

// A film frame whose header the file cuts: the dump shows zeros for what is missing.
std::string cut_header(const std::string &path, const Row &row) {
    constexpr uint64_t kDpxHeader = 1664;     // SMPTE 268M, without the film and television information
    constexpr uint64_t kCineonHeader = 1024;  // likewise
    constexpr uint64_t kWholeHeader = 2048;
    const bool dpx = row[Column::format] == "DPX";
    if (!dpx && row[Column::format] != "Cineon") return "";
    std::error_code error;
    const uint64_t size = std::filesystem::file_size(path, error);
    const bool film = !row[Column::bcd].empty() || !row[Column::keycode].empty();
    const uint64_t header = film ? kWholeHeader : dpx ? kDpxHeader : kCineonHeader;
    return error || size >= header ? "" : "the header is cut at " + std::to_string(size) + " bytes";
}

class Table {
 public:
    Table(const Request &request, const std::string &keldump, const std::vector<std::string> &files)
        : request_(request),
          keldump_(keldump),
          files_(files),
          progress_(files.size(), request.style == Style::aligned || !isatty(STDOUT_FILENO)) {}

    // Prints the table; whether every file was dumped.
    bool print() {
        if (request_.style == Style::csv) write_out(csv_header());
        if (request_.style == Style::json) write_out("[\n");
        if (request_.style == Style::aligned) rows_.resize(files_.size());
        run_in_order(files_.size(), request_.jobs,
                     [this](size_t index, const OutputTaker &out) { add(index, out); });
        progress_.clear();
        if (request_.style == Style::json) write_out(files_.empty() ? "]\n" : "\n]\n");
        if (request_.style == Style::aligned) write_out(aligned_table(rows_));
        return all_dumped_;
    }

 private:
    void add(size_t index, const OutputTaker &out) {
        Row row = row_of(files_[index]);
        if (request_.style == Style::csv) out(csv_line(row));
        if (request_.style == Style::json) out((index > 0 ? ",\n" : "") + json_object(row));
        if (request_.style == Style::aligned) rows_[index] = std::move(row);
        progress_.step();
    }

    Row row_of(const std::string &path) {
        Row row;
        DumpLines lines;
        const DumpResult result =
            run_keldump(keldump_, {}, path, [&](std::string_view piece) { return lines.add(piece); });
        if (result.end == DumpEnd::dumped || result.end == DumpEnd::stopped) {
            lines.finish(row);
            add_movie_timecode(path, row);
        } else {
            row[Column::problem] = result.message;
        }
        if (const std::string cut = cut_header(path, row); !cut.empty()) {
            const std::string format = row[Column::format];
            row = Row();
            row[Column::format] = format;
            row[Column::problem] = cut;
        }
        if (!row[Column::problem].empty()) {
            all_dumped_ = false;
            progress_.clear();
            complain(safe_name(path) + ": " + row[Column::problem]);
        }
        row[Column::file] = path;
        return row;
    }

    void add_movie_timecode(const std::string &path, Row &row) {
        const std::string hex = movie_timecode_switch(row);
        if (row[Column::format] != "QuickTime" || hex.empty()) return;
        std::string dump;
        run_keldump(keldump_, {hex}, path, [&](std::string_view piece) {
            dump += piece;
            return true;
        });
        set_movie_timecode(row, dump);
    }

    const Request &request_;
    const std::string &keldump_;
    const std::vector<std::string> &files_;
    std::vector<Row> rows_;
    std::atomic<bool> all_dumped_ = true;
    Progress progress_;
};

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-table");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse(argc, argv, request)) return usage_error(kUsage);
    const std::string keldump = find_keldump();
    if (keldump.empty()) return trouble("no keldump beside this command or on PATH");

    const FileList list = list_files(request.operands);
    for (const std::string &problem : list.problems) complain(problem);
    const bool all_dumped = Table(request, keldump, list.files).print();
    return all_dumped && list.problems.empty() ? kFine : kFound;
}
