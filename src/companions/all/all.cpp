#include "companions/all/all.h"

#include "common/print.h"
#include "companions/opening.h"
#include "companions/safe_text.h"
#include "main/dump.h"

namespace {

constexpr std::string_view kHeading = "==> ";

// Escapes the first character of lines that begin as a heading does; they may come in pieces.
class NoHeadings {
 public:
    void add(std::string_view text, std::string &out) {
        for (const char c : text) {
            if (matched_ < kHeading.size() && c == kHeading[matched_]) {
                if (++matched_ < kHeading.size()) continue;
                out += "\\x3d";
                out += kHeading.substr(1);
                matched_ = kNoStart;
            } else {
                release(out);
                out += c;
                matched_ = c == '\n' ? 0 : kNoStart;
            }
        }
    }
    // What begins a line and may yet become a heading.
    void release(std::string &out) {
        if (matched_ != kNoStart) out += kHeading.substr(0, matched_);
        matched_ = kNoStart;
    }

 private:
    static constexpr size_t kNoStart = SIZE_MAX;
    size_t matched_ = 0;  // characters of a heading at the start of the line
};

class DumpTaker : public OutputTaker {
 public:
    DumpTaker(bool raw, JobOutput &output) : raw_(raw), output_(output) {}

    void take(std::string_view piece) override {
        if (piece.empty()) return;
        ends_line_ = piece.back() == '\n';
        if (raw_) {
            output_.out(piece);
            return;
        }
        safe_.clear();
        text_.clear();
        escapes_.add(piece, safe_);
        headings_.add(safe_, text_);
        output_.out(text_);
    }
    void finish() {
        safe_.clear();
        text_.clear();
        escapes_.finish(safe_);
        headings_.add(safe_, text_);
        headings_.release(text_);
        if (!ends_line_) text_ += '\n';
        output_.out(text_);
    }

 private:
    const bool raw_;
    JobOutput &output_;
    SafeText escapes_;
    NoHeadings headings_;
    std::string safe_;
    std::string text_;
    bool ends_line_ = true;
};

}  // namespace

bool dump_behind_name(const std::string &path, const DumpOptions &options, bool raw, JobOutput &output) {
    output.out("==> " + safe_name(path) + " <==\n");
    DumpTaker taker(raw, output);
    standard_output.goes_to(&taker);
    const DumpOutcome outcome = dump(path.c_str(), options, nullptr);
    const std::string failure = failure_text(path, outcome);
    if (!failure.empty()) standard_output.drop();  // keldump's line about it
    standard_output.flush();
    standard_output.goes_to(nullptr);
    taker.finish();
    if (!failure.empty()) {
        output.out(failure + "\n");
        output.complain(failure);
    }
    output.out("\n");
    return failure.empty();
}
