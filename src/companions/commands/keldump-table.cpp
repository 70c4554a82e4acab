// A row a file: format, size, rate, timecode and the like, and whether all of it is there.
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/files.h"
#include "companions/frame_groups.h"
#include "companions/printing.h"
#include "companions/progress.h"
#include "companions/safe_text.h"
#include "companions/shown_width.h"
#include "companions/table/names.h"
#include "companions/table/odd.h"
#include "companions/table/output.h"
#include "companions/table/read.h"
#include "companions/table/sequence.h"
#include "companions/table/terminal.h"
#include "companions/workers.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-table [--csv|--json|--lines] [--odd] [--each] [--columns NAMES] [--field PATTERN]...\n"
    "                     [-j N] [--files-from FILE [-0]] [-v] [--] [FILES|DIRECTORIES]\n"
    "\n"
    "Prints a row a file, or a sequence of numbered frames: format, size, rate, codec, duration, sound, "
    "timecode\n"
    "and reel, and what is wrong with it (cut, open, frames missing) in a line below.\n"
    "\n"
    "  --csv            all columns as comma-separated values (RFC 4180)\n"
    "  --json           all columns as an array of objects\n"
    "  --lines          the same as JSON Lines\n"
    "  --odd            only what differs: the columns in which files do, and the files that are unlike "
    "most\n"
    "  --each           numbered frames one by one\n"
    "  --columns NAMES  these columns, by their names in CSV or those of further values: 'file,rate,gamma'\n"
    "  --field PATTERN  a further column: the values of the dump's lines whose path ends so\n"
    "                   ('television/timecode')\n"
    "  -v               the fields of keldump -v; -v -v more still\n"
    "  -j N             N files at a time (as many as there are processors); 1: in the list's order\n"
    "  --files-from F   the names in a file, a line each, in their order; -: standard input\n"
    "  -0               these end with a zero byte\n"
    "  --               the end of the switches\n"
    "\n"
    "Exit status: 0, 1 when a file has a problem or could not be read, 2 for trouble.\n";

enum class Style { person, csv, json, lines };

struct Request {
    Style style = Style::person;
    bool odd = false;
    bool each = false;
    unsigned jobs = core_count();
    Selection selection;
    FieldRequest fields;
    std::string files_from;
    bool zero_ends = false;
    std::vector<std::string> operands;
};

bool lacks(const char *name) {
    complain(std::string(name) + " lacks its value");
    return false;
}

bool parse(Arguments arguments, Request &request) {
    std::string value;
    while (arguments.next()) {
        if (arguments.is("--csv")) {
            request.style = Style::csv;
        } else if (arguments.is("--json")) {
            request.style = Style::json;
        } else if (arguments.is("--lines")) {
            request.style = Style::lines;
        } else if (arguments.is("--odd")) {
            request.odd = true;
        } else if (arguments.is("--each")) {
            request.each = true;
        } else if (arguments.is("-0")) {
            request.zero_ends = true;
        } else if (arguments.is("-v")) {
            request.fields.options.verbose++;
        } else if (arguments.takes("--columns", value)) {
            const size_t before = request.selection.names.size();
            add_names(value, request.selection.names);
            if (request.selection.names.size() == before) return lacks("--columns");
        } else if (arguments.takes("--field", value)) {
            if (value.empty()) return lacks("--field");
            std::vector<std::string> &patterns = request.fields.patterns;
            if (std::ranges::find(patterns, value) == patterns.end()) patterns.push_back(value);
        } else if (!arguments.takes("--files-from", request.files_from) &&
                   !arguments.takes_jobs(request.jobs)) {
            return arguments.refuse();
        }
    }
    std::ranges::transform(request.fields.patterns, std::back_inserter(request.selection.fields), field_name);
    for (std::string &name : request.selection.names) {
        const bool is_field =
            std::ranges::find(request.selection.fields, name) != request.selection.fields.end();
        if (!is_field) name = table_name(name);
    }
    request.operands = arguments.operands();
    return !arguments.failed() && (!request.operands.empty() || !request.files_from.empty());
}

size_t terminal_width() {
    winsize size{};
    return isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

// Files, and which of them a user named.
struct Files {
    std::vector<std::string> names;
    std::vector<bool> are_named;
    std::map<size_t, std::string> refused;
    std::vector<FrameGroup> groups;
    std::vector<size_t> order;     // of the groups' files
    std::vector<size_t> group_of;  // of each place in `order`
};

Row problem_row(const std::string &file, const std::string &problem) {
    Row row;
    row[Column::file] = file;
    row[Column::problem] = problem;
    row.is_known = true;  // it is no side file
    return row;
}

Row row_at(const Files &files, size_t place, const FieldRequest &fields) {
    const std::string &name = files.names[place];
    const auto refused = files.refused.find(place);
    return refused == files.refused.end() ? read_row(name, fields) : problem_row(name, refused->second);
}

// Puts rows together as the groups have them, and gives them.
class Table : public JobsReader {
 public:
    Table(const Request &request, const Files &files)
        : request_(request), files_(files), progress_(files.order.size(), !isatty(STDOUT_FILENO)) {
        if (request.style == Style::person && !request.odd)
            terminal_.emplace(terminal_width(), request.selection,
                              [this](const std::string &text) { print(text); });
        if (request.odd) return;
        if (request.style == Style::csv) write_out(csv_header(request.selection));
        if (request.style == Style::json) write_out("[");
    }

    void out(size_t, std::string_view text) override { packed_ += text; }
    void complain(size_t, const std::string &message) override { complaint_ = message; }
    void progress(size_t ended) override {
        if (terminal_) terminal_->tick();
        flush();
        progress_.show(ended);
    }

    void done(size_t index, int, const std::string &death) override {
        const std::string &failure = death.empty() ? complaint_ : death;
        Row row = failure.empty() ? Row::unpacked(packed_) : problem_row(name(index), failure);
        packed_.clear();
        complaint_.clear();
        const FrameGroup &group = files_.groups[files_.group_of[index]];
        if (request_.each || group.files.size() == 1) {
            single(index, std::move(row));
            return;
        }
        if (group.files.size() <= kFewFrames) few_.push_back(row);
        sequence_.add(group.numbers[in_group_++], std::move(row));
        if (in_group_ == group.files.size()) end_group(index, group);
    }

    // The rest; whether any file has a problem.
    bool finish() {
        progress_.clear();
        if (request_.odd) give_odd();
        if (terminal_) {
            terminal_->finish();
            print(wrapped(sums_.text(), terminal_width(), 0));
        }
        if (request_.style == Style::json && !request_.odd) print(sums_.rows > 0 ? "\n]\n" : "]\n");
        flush();
        return problems_;
    }

    // Columns that were asked for, that are none of the documented ones and that no file has.
    std::vector<std::string> unknown_names() const {
        std::vector<std::string> unknown;
        for (const std::string &wanted : request_.selection.names) {
            const bool is_column = is_table_name(wanted);
            const bool is_field =
                std::ranges::find(request_.selection.fields, wanted) != request_.selection.fields.end();
            if (!is_column && !is_field && std::ranges::find(seen_, wanted) == seen_.end())
                unknown.push_back(wanted);
        }
        return unknown;
    }

 private:
    static constexpr size_t kBlock = 64 * 1024;

    // Few files that have little in common are no frames, whatever their names.
    void end_group(size_t last, const FrameGroup &group) {
        if (sequence_.are_frames()) {
            add(sequence_.finish(group, files_.names));
        } else {
            const size_t first = last + 1 - few_.size();
            std::map<size_t, size_t> listed;  // places in the list
            for (size_t i = 0; i < few_.size(); i++) listed[files_.order[first + i]] = i;
            for (const auto &[place, i] : listed) single(first + i, std::move(few_[i]));
        }
        few_.clear();
        sequence_ = {};
        in_group_ = 0;
    }

    const std::string &name(size_t index) const { return files_.names[files_.order[index]]; }
    bool named(size_t index) const { return files_.are_named[files_.order[index]]; }

    // Files of unknown format beside others are no findings.
    void single(size_t index, Row row) {
        if (!row.is_known && !named(index) && row[Column::problem].starts_with("unknown format")) {
            sums_.others++;
            return;
        }
        add(std::move(row));
    }

    void add(Row row) {
        if (!row[Column::problem].empty()) {
            problems_ = true;
            if (request_.style != Style::person) {
                flush();
                progress_.clear();
                ::complain(safe_name(row[Column::file]) + ": " + safe_name(row[Column::problem]));
            }
        }
        note_names(row);
        sums_.add(row);
        if (request_.odd) {
            rows_.push_back(std::move(row));
        } else {
            give(row);
        }
    }

    void note_names(const Row &row) {
        if (request_.selection.names.empty()) return;
        for (const auto &[key, value] : row.more) {
            if (std::ranges::find(seen_, key) == seen_.end()) seen_.push_back(key);
        }
    }

    void give(const Row &row) {
        const Selection &selection = request_.selection;
        switch (request_.style) {
            case Style::csv: print(csv_line(row, selection)); break;
            case Style::json: print((given_++ > 0 ? ",\n" : "\n") + json_object(row, selection)); break;
            case Style::lines: print(json_object(row, selection) + "\n"); break;
            case Style::person: terminal_->add(row); break;
        }
    }

    // What was asked for beside the columns that are compared anyway.
    std::vector<std::string> further_names() const {
        std::vector<std::string> names = request_.selection.fields;
        for (const std::string &name : request_.selection.names) {
            const bool is_column =
                std::ranges::find(table_columns(), name, &ColumnRow::name) != table_columns().end();
            if (!is_column && std::ranges::find(names, name) == names.end()) names.push_back(name);
        }
        return names;
    }

    void give_odd() {
        const Oddities odd = find_odd(rows_, further_names());
        if (request_.style == Style::person) {
            TerminalTable table(terminal_width(), request_.selection,
                                [this](const std::string &text) { print(text); });
            if (request_.selection.names.empty()) table.keep(odd.titles);
            for (const OddRow &row : odd.rows) table.add(rows_[row.row], row.remarks);
            table.finish();
            print(wrapped((odd.rows.empty() ? "nothing odd: " : "") + sums_.text(), terminal_width(), 0));
            return;
        }
        if (request_.style == Style::csv) print(csv_header(request_.selection));
        if (request_.style == Style::json) print("[");
        for (const OddRow &row : odd.rows) {
            std::string remarks;
            for (const std::string &remark : row.remarks) append(remarks, remark, "; ");
            if (!remarks.empty()) rows_[row.row].more.emplace_back("odd", remarks);
            give(rows_[row.row]);
        }
        if (request_.style == Style::json) print(odd.rows.empty() ? "]\n" : "\n]\n");
    }

    void print(const std::string &text) {
        text_ += text;
        if (text_.size() >= kBlock) flush();
    }
    void flush() {
        if (text_.empty()) return;
        progress_.clear();
        write_out(text_);
        text_.clear();
    }

    const Request &request_;
    const Files &files_;
    Progress progress_;
    std::optional<TerminalTable> terminal_;
    TableSums sums_;
    std::string packed_;
    std::string complaint_;  // of what has no row
    std::string text_;
    SequenceRow sequence_;
    std::vector<Row> few_;  // rows of its frames where these are few
    size_t in_group_ = 0;
    std::vector<Row> rows_;
    std::vector<std::string> seen_;  // names of `more`
    size_t given_ = 0;
    bool problems_ = false;
};

bool never(std::string_view) { return false; }

Files files_of(const Request &request, const FileList &list) {
    Files files;
    files.names = list.files;
    files.are_named = list.are_named;
    files.refused = list.refused;
    files.groups = group_frames(files.names, request.each ? never : is_still_name);
    for (size_t group = 0; group < files.groups.size(); group++) {
        for (const size_t file : files.groups[group].files) {
            files.order.push_back(file);
            files.group_of.push_back(group);
        }
    }
    return files;
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-table");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse({argc, argv}, request)) return usage_error(kUsage);
    if (!request.files_from.empty() &&
        !read_names(request.files_from, request.zero_ends ? '\0' : '\n', request.operands))
        return kTrouble;

    const FileList list = list_in_time(request.operands, true);
    const Files files = files_of(request, list);
    Table table(request, files);
    run_jobs(
        files.order.size(), request.jobs,
        [&](size_t index, JobOutput &output) {
            output.out(row_at(files, files.order[index], request.fields).packed());
            return kFine;
        },
        table);
    const bool problems = table.finish();
    const std::vector<std::string> unknown = table.unknown_names();
    for (const std::string &name : unknown) complain("no file has a column '" + safe_name(name) + "'");
    return !unknown.empty() ? kTrouble : problems ? kFound : kFine;
}
