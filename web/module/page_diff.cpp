// The entry of the page for two files: [--all], keldump's switches, --, the files.
#include <string>
#include <string_view>
#include <vector>

#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/diff/diff.h"
#include "companions/registers/decode.h"
#include "companions/safe_text.h"
#include "companions/table/row.h"
#include "page_table.h"

namespace {

class Collected : public JobOutput {
 public:
    void out(std::string_view text) override { text_ += text; }
    void complain(const std::string &message) override { ::complain(message); }
    const std::string &text() const { return text_; }

 private:
    std::string text_;
};

// {"facts": [[name, value of one, of the other], ...], "rows": [section, row, ...], "text": keldump-diff's}.
// Of a row: how it differs ("" where it does not), its field, its values (null: none) and lines of the dumps
// (from 1 on; 0: none), and a remark; a section is an array of names, of the rows behind it.
class PageReport : public Report {
 public:
    PageReport() : report_(text_report(text_)) {}

    void begin(const std::string &one, const std::string &other) override { report_->begin(one, other); }
    void fact(const FactDifference &difference) override {
        report_->fact(difference);
        facts_ += (facts_.empty() ? "[" : ",\n[") + json_text(difference.name) + ", " +
                  value(difference.one, !difference.one.empty()) + ", " +
                  value(difference.other, !difference.other.empty()) + "]";
    }
    void take(const Difference &difference) override {
        if (difference.kind != Difference::same) report_->take(difference);
        if (difference.section != section_) put_section(difference.section);
        const bool is_counted = difference.kind == Difference::counted;
        std::string field = difference.field;
        if (is_counted) field += (field.empty() ? "" : " of ") + difference.of;
        add("{\"how\": \"" + std::string(kHow[difference.kind]) + "\", \"field\": " + json_text(field) +
            ", \"values\": [" + value(difference.one, difference.kind != Difference::only_other) + ", " +
            value(difference.other, difference.kind != Difference::only_one) + "], \"lines\": [" +
            std::to_string(difference.lines[0]) + ", " + std::to_string(difference.lines[1]) +
            "], \"remark\": " + json_text(remark(difference)) + "}");
    }
    void end() override {
        report_->end();
        any_ = report_->any();
    }
    std::string json() const {
        return "{\"facts\": [" + facts_ + "], \"rows\": [" + rows_ +
               "], \"text\": " + json_text(text_.text()) + "}";
    }

 private:
    static constexpr const char *kHow[] = {"changed", "removed", "added", "changed", ""};

    static std::string value(const std::string &text, bool is_there) {
        return is_there ? json_text(safe_name(with_register_names(text))) : "null";
    }
    static std::string remark(const Difference &difference) {
        if (difference.kind == Difference::counted)
            return difference.differ == difference.count ? difference.below ? "the first" : ""
                                                         : "at " + grouped(difference.first);
        if (difference.below == 0) return "";
        return grouped(difference.below) + (difference.below == 1 ? " field below" : " fields below");
    }

    void put_section(const std::vector<std::string> &section) {
        section_ = section;
        std::string names;
        for (const std::string &name : section) names += (names.empty() ? "" : ", ") + json_text(name);
        add("[" + names + "]");
    }
    void add(const std::string &json) { rows_ += (rows_.empty() ? "" : ",\n") + json; }

    Collected text_;
    const std::unique_ptr<Report> report_;
    std::vector<std::string> section_;
    std::string facts_;
    std::string rows_;
};

}  // namespace

int page_diff_main(int argc, char **argv) {
    start_companion("keldump-diff");
    DiffOptions options;
    options.same = true;
    Arguments arguments(argc, argv);
    while (arguments.next()) {
        if (arguments.is("--all")) {
            options.everything = true;
        } else if (!arguments.sets(options.dump)) {
            return kTrouble;
        }
    }
    const std::vector<std::string> files = arguments.operands();
    if (files.size() != 2) return kTrouble;
    Collected collected;
    PageReport report;
    const int status = diff_files(files[0], files[1], options, report, collected);
    if (status != kTrouble) write_out(report.json());
    return status;
}
