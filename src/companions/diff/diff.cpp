#include "companions/diff/diff.h"

#include <memory>

#include "companions/command.h"
#include "companions/diff/build.h"
#include "companions/diff/compare.h"
#include "companions/json/json.h"
#include "companions/registers/decode.h"
#include "companions/safe_text.h"
#include "companions/table/row.h"
#include "main/facts.h"

namespace {

constexpr size_t kShown = 200;  // of a value, in bytes
constexpr size_t kBlock = 32 * 1024;
constexpr int kSchema = 1;

std::string limited(const std::string &value) {
    if (value.empty()) return "(empty)";
    if (value.size() <= kShown) return safe_name(value);
    size_t end = kShown;
    while (end > 0 && (static_cast<uint8_t>(value[end]) & 0xC0) == 0x80) end--;
    return safe_name(value.substr(0, end)) + "...";
}

// Labels of the SMPTE registers by their names.
std::string shown(const std::string &stored) { return limited(with_register_names(stored)); }

// Two values with what is between them; labels as they stand where their names are the same.
std::string shown_pair(const std::string &first, const char *between, const std::string &second) {
    const bool is_named_alike = with_register_names(first) == with_register_names(second);
    const auto text = is_named_alike ? limited : shown;
    return text(first) + between + text(second);
}

// Takes what differs, and gives it in pieces.
class Report : public DifferenceTaker {
 public:
    Report(JobOutput &output) : output_(output) {}

    virtual void begin(const std::string &one, const std::string &other) = 0;
    virtual void fact(const FactDifference &difference) = 0;
    virtual void end() = 0;

    bool any() const { return any_; }

 protected:
    void put(const std::string &text) {
        text_ += text;
        if (text_.size() >= kBlock) flush();
    }
    void flush() {
        if (!text_.empty()) output_.out(text_);
        text_.clear();
    }
    bool any_ = false;

 private:
    JobOutput &output_;
    std::string text_;
};

class TextReport : public Report {
 public:
    using Report::Report;

    void begin(const std::string &one, const std::string &other) override {
        head_ = "--- " + safe_name(one) + "\n+++ " + safe_name(other) + "\n";
    }
    void fact(const FactDifference &difference) override { put_line(safe_name(difference.text)); }

    void take(const Difference &difference) override {
        std::string section;
        for (const std::string &name : difference.section)
            section += (section.empty() ? "" : " > ") + safe_name(name);
        if (section != section_ && !section.empty()) put_line(section);
        section_ = section;
        put_line((section.empty() ? "" : "  ") + line_of(difference));
    }
    void end() override { flush(); }

 private:
    void put_line(const std::string &line) {
        if (!any_) put(head_);
        any_ = true;
        put(line + "\n");
    }

    static std::string line_of(const Difference &difference) {
        const std::string field = safe_name(difference.field);
        if (difference.kind == Difference::counted) return counted(difference, field);
        if (difference.kind == Difference::changed)
            return field + ": " + shown_pair(difference.one, " -> ", difference.other);
        const bool first = difference.kind == Difference::only_one;
        const std::string &value = first ? difference.one : difference.other;
        std::string line = (first ? "- " : "+ ") + field;
        if (!value.empty()) line += ": " + shown(value);
        if (difference.below)
            line += " (" + grouped(difference.below) +
                    (difference.below == 1 ? " field below)" : " fields below)");
        return line;
    }

    static std::string counted(const Difference &difference, const std::string &field) {
        std::string line = (field.empty() ? "" : field + " of ") + safe_name(difference.of) + ": ";
        const bool all = difference.differ == difference.count;
        if (all && difference.below) line += "from ";
        if (!all) line += "at " + grouped(difference.first) + " ";
        return line + shown_pair(difference.other, " instead of ", difference.one);
    }

    std::string head_;
    std::string section_;
};

class JsonReport : public Report {
 public:
    using Report::Report;

    void begin(const std::string &one, const std::string &other) override {
        put("{\"one\": " + json(one) + ", \"other\": " + json(other) +
            ", \"schema\": " + std::to_string(kSchema) + ", \"facts\": [");
    }
    void fact(const FactDifference &difference) override {
        put(std::string(any_ ? ",\n" : "\n") + "{\"name\": " + json(difference.name) +
            ", \"one\": " + value(difference.one) + ", \"other\": " + value(difference.other) +
            ", \"text\": " + json(difference.text) + "}");
        any_ = true;
    }
    void take(const Difference &difference) override {
        begin_fields();
        put(std::string(any_field_ ? ",\n" : "\n") + "{\"section\": [");
        for (size_t i = 0; i < difference.section.size(); i++)
            put((i ? ", " : "") + json(difference.section[i]));
        put("], \"field\": " + json(difference.field));
        if (difference.kind != Difference::only_other) put(", \"one\": " + json(difference.one));
        if (difference.kind != Difference::only_one) put(", \"other\": " + json(difference.other));
        if (difference.kind == Difference::counted) {
            put(", \"of\": " + json(difference.of) + ", \"first\": " + std::to_string(difference.first) +
                ", \"differ\": " + std::to_string(difference.differ) +
                ", \"count\": " + std::to_string(difference.count));
        } else if (difference.below) {
            put(", \"below\": " + std::to_string(difference.below));
        }
        put("}");
        any_ = any_field_ = true;
    }
    void end() override {
        begin_fields();
        put(any_field_ ? "\n]}\n" : "]}\n");
        flush();
    }

 private:
    static std::string json(const std::string &text) {
        std::string out;
        append_json(out, text, false);
        return out;
    }
    static std::string value(const std::string &text) { return text.empty() ? "null" : json(text); }

    void begin_fields() {
        if (in_fields_) return;
        put(any_ ? "\n], \"fields\": [" : "], \"fields\": [");
        in_fields_ = true;
    }

    bool in_fields_ = false;
    bool any_field_ = false;
};

}  // namespace

int diff_files(const std::string &one, const std::string &other, const DiffOptions &options,
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
    std::unique_ptr<Report> report;
    if (options.json) {
        report = std::make_unique<JsonReport>(output);
    } else {
        report = std::make_unique<TextReport>(output);
    }
    report->begin(one, other);
    // A pipe has been read by now.
    const bool known = !all[0].format.empty() && !all[1].format.empty();
    if (!known) all[0] = all[1] = {};
    for (const FactDifference &difference : differing_facts(all[0], all[1], options.everything))
        report->fact(difference);
    const ToldTimecodes told(all[0], all[1]);
    compare_trees(trees[0].root, trees[1].root, pool, {trees[0].format, options.everything}, told, *report);
    report->end();
    return report->any() ? kFound : kFine;
}
