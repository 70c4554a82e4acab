#include "companions/sequence/files_check.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include "companions/safe_text.h"
#include "companions/sequence/counting.h"

namespace {

class FilesCheck {
 public:
    FilesCheck(const std::vector<SequenceFrame> &all, const SharedNames &names,
               const SequenceQuestion &question, std::vector<Finding> &findings)
        : all_(all), names_(names), question_(question), findings_(findings) {}

    void run() {
        if (question_.numbered && !all_.empty()) {
            check_numbers();
            check_padding();
        }
        check_problems();
    }

 private:
    void add(const char *kind, int64_t first, int64_t last, std::string text, bool of_all = false) {
        findings_.push_back({kind, first, last, of_all, std::move(text)});
    }

    void check_numbers() {
        if (question_.wanted) {
            const auto [first, last] = *question_.wanted;
            if (first < all_.front().number) add_missing(first, std::min(last, all_.front().number - 1));
            if (last > all_.back().number) add_missing(std::max(first, all_.back().number + 1), last);
        }
        const int64_t stride = usual_stride();
        int64_t left_out = 0;
        for (size_t i = 1; i < all_.size(); i++) {
            const int64_t before = all_[i - 1].number;
            const int64_t now = all_[i].number;
            if (now == before) add("duplicate", now, now, "another file with that number");
            if (now == before + stride) {
                left_out += stride - 1;
            } else if (now > before + 1) {
                add_missing(before + 1, now - 1);
            }
        }
        if (left_out > 0)
            add("missing", all_.front().number, all_.back().number,
                "numbers go on by " + std::to_string(stride) + " (" + std::to_string(left_out) + " missing)");
    }
    void add_missing(int64_t first, int64_t last) {
        add("missing", first, last, "missing (" + std::to_string(last - first + 1) + ")");
    }

    // Of frames of which every n-th is there n, else 1.
    int64_t usual_stride() const {
        constexpr uint64_t kLeast = 4;
        Votes strides;
        for (size_t i = 1; i < all_.size(); i++) strides.add(all_[i].number - all_[i - 1].number);
        const int64_t stride = strides.winner(kLeast).value_or(1);
        return stride > 1 && strides.of(stride) * 4 >= strides.all() * 3 ? stride : 1;
    }

    // Numbers that are padded with zeros have as many digits as the others, or more where they need them; a
    // sign may count among them.
    void check_padding() {
        Votes widths;
        bool padded = false;
        const bool all_signed = all_.back().number < 0;
        for (const SequenceFrame &frame : all_) {
            if (all_signed || frame.number >= 0) widths.add(frame.digits);
            padded = padded || needed(frame.number) < frame.digits;
        }
        if (!padded) return;
        const int64_t usual = widths.winner().value_or(0);
        std::map<uint16_t, std::vector<int64_t>> odd;  // numbers by their digits
        for (size_t i = 0; i < all_.size(); i++) {
            const SequenceFrame &frame = all_[i];
            const int64_t expected = std::max<int64_t>(usual, needed(frame.number));
            const bool is_double = (i > 0 && all_[i - 1].number == frame.number) ||
                                   (i + 1 < all_.size() && all_[i + 1].number == frame.number);
            const bool is_signed = frame.number < 0 && frame.digits + 1 == expected;
            if (frame.digits != expected && !is_double && !is_signed)
                odd[frame.digits].push_back(frame.number);
        }
        for (const auto &[digits, numbers] : odd) add_padding(digits, numbers, usual);
    }
    void add_padding(uint16_t digits, const std::vector<int64_t> &numbers, int64_t usual) {
        const std::string have = std::to_string(digits) + (digits == 1 ? " digit" : " digits") +
                                 ", others have " + std::to_string(usual);
        const bool is_run = numbers.back() - numbers.front() + 1 == static_cast<int64_t>(numbers.size());
        std::string whose = numbers.size() == 1 ? "its number has " : "their numbers have ";
        if (!is_run) whose = "the numbers of " + std::to_string(numbers.size()) + " of them have ";
        add("padding", numbers.front(), numbers.back(), whose + have);
    }
    static int64_t needed(int64_t number) {
        return static_cast<int64_t>(std::to_string(std::abs(number)).size());
    }

    static const char *kind_of_problem(const std::string &problem) {
        if (problem.starts_with("cut")) return "cut";
        if (problem.starts_with("open")) return "open";
        if (problem.starts_with("keycode")) return "keycode";
        if (problem.starts_with("the header") || problem == "no picture") return "header";
        return "unreadable";
    }

    // The same of successive frames is one finding, as are keycodes whatever they say.
    void check_problems() {
        const auto is_keycode = [&](const SequenceFrame &frame) {
            return names_.name(frame.problem).starts_with("keycode");
        };
        for (size_t i = 0; i < all_.size();) {
            size_t last = i;
            bool same = true;
            for (; last + 1 < all_.size(); last++) {
                const bool as_before = all_[last + 1].problem == all_[i].problem;
                if (!as_before && !(is_keycode(all_[i]) && is_keycode(all_[last + 1]))) break;
                same = same && as_before;
            }
            const std::string &problem = names_.name(all_[i].problem);
            if (!problem.empty())
                add(kind_of_problem(problem), all_[i].number, all_[last].number,
                    same ? safe_name(problem) : "keycodes are not valid",
                    i == 0 && last + 1 == all_.size() && last > 0);
            i = last + 1;
        }
    }

    const std::vector<SequenceFrame> &all_;
    const SharedNames &names_;
    const SequenceQuestion &question_;
    std::vector<Finding> &findings_;
};

}  // namespace

void check_files(const std::vector<SequenceFrame> &frames, const SharedNames &names,
                 const SequenceQuestion &question, std::vector<Finding> &findings) {
    FilesCheck(frames, names, question, findings).run();
}
