#include "companions/diff/report.h"

#include "companions/json/json.h"
#include "companions/registers/decode.h"
#include "companions/safe_text.h"
#include "companions/table/row.h"

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

// Gives a report in pieces.
class Pieces {
 public:
    explicit Pieces(JobOutput &output) : output_(output) {}
    void put(const std::string &text) {
        text_ += text;
        if (text_.size() >= kBlock) flush();
    }
    void flush() {
        if (!text_.empty()) output_.out(text_);
        text_.clear();
    }

 private:
    JobOutput &output_;
    std::string text_;
};

class TextReport : public Report {
 public:
    explicit TextReport(JobOutput &output) : pieces_(output) {}

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
    void end() override { pieces_.flush(); }

 private:
    void put_line(const std::string &line) {
        if (!any_) pieces_.put(head_);
        any_ = true;
        pieces_.put(line + "\n");
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

    Pieces pieces_;
    std::string head_;
    std::string section_;
};

class JsonReport : public Report {
 public:
    explicit JsonReport(JobOutput &output) : pieces_(output) {}

    void begin(const std::string &one, const std::string &other) override {
        pieces_.put("{\"one\": " + json(one) + ", \"other\": " + json(other) +
                    ", \"schema\": " + std::to_string(kSchema) + ", \"facts\": [");
    }
    void fact(const FactDifference &difference) override {
        pieces_.put(std::string(any_ ? ",\n" : "\n") + "{\"name\": " + json(difference.name) +
                    ", \"one\": " + value(difference.one) + ", \"other\": " + value(difference.other) +
                    ", \"text\": " + json(difference.text) + "}");
        any_ = true;
    }
    void take(const Difference &difference) override {
        begin_fields();
        pieces_.put(std::string(any_field_ ? ",\n" : "\n") + "{\"section\": [");
        for (size_t i = 0; i < difference.section.size(); i++)
            pieces_.put((i ? ", " : "") + json(difference.section[i]));
        pieces_.put("], \"field\": " + json(difference.field));
        if (difference.kind != Difference::only_other) pieces_.put(", \"one\": " + json(difference.one));
        if (difference.kind != Difference::only_one) pieces_.put(", \"other\": " + json(difference.other));
        if (difference.kind == Difference::counted) {
            pieces_.put(", \"of\": " + json(difference.of) +
                        ", \"first\": " + std::to_string(difference.first) +
                        ", \"differ\": " + std::to_string(difference.differ) +
                        ", \"count\": " + std::to_string(difference.count));
        } else if (difference.below) {
            pieces_.put(", \"below\": " + std::to_string(difference.below));
        }
        pieces_.put("}");
        any_ = any_field_ = true;
    }
    void end() override {
        begin_fields();
        pieces_.put(any_field_ ? "\n]}\n" : "]}\n");
        pieces_.flush();
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
        pieces_.put(any_ ? "\n], \"fields\": [" : "], \"fields\": [");
        in_fields_ = true;
    }

    Pieces pieces_;
    bool in_fields_ = false;
    bool any_field_ = false;
};

}  // namespace

std::unique_ptr<Report> text_report(JobOutput &output) { return std::make_unique<TextReport>(output); }
std::unique_ptr<Report> json_report(JobOutput &output) { return std::make_unique<JsonReport>(output); }
