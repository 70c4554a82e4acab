#include "companions/sequence/check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>

#include "common/timecode.h"
#include "companions/safe_text.h"

namespace {

constexpr int32_t kCounts = 10000;  // of a keycode, before they begin anew

// Which of the values seen most often comes first.
class Votes {
 public:
    void add(int64_t value) { votes_[value]++; }
    // The value with the most votes, where it has that many.
    std::optional<int64_t> winner(uint64_t needed = 1) const {
        const auto most = std::max_element(votes_.begin(), votes_.end(),
                                           [](const auto &a, const auto &b) { return a.second < b.second; });
        return most == votes_.end() || most->second < needed ? std::nullopt : std::optional(most->first);
    }
    uint64_t of(int64_t value) const {
        const auto found = votes_.find(value);
        return found == votes_.end() ? 0 : found->second;
    }

 private:
    std::map<int64_t, uint64_t> votes_;
};

// How the keycodes of a sequence go on, in perforations.
struct FilmStep {
    std::optional<int64_t> step;       // a frame; below zero where the film runs backwards
    std::optional<int64_t> per_count;  // from one count to the next
};

// By the perforations of a frame (SMPTE 254): a foot of 35 mm film, half a foot of 16 mm.
std::optional<int64_t> perforations_a_count(int64_t step) {
    switch (std::abs(step)) {
        case 1: return 20;
        case 2:
        case 3:
        case 4:
        case 8: return 64;
        default: return std::nullopt;
    }
}

// How many counts lie between two keycodes, the shorter way around.
int64_t counts_between(const Keycode &a, const Keycode &b) {
    return (b.count - a.count + kCounts + kCounts / 2) % kCounts - kCounts / 2;
}

template <typename Visit>
void each_pair(const std::vector<SequenceFrame> &frames, Visit visit) {
    const SequenceFrame *before = nullptr;
    for (const SequenceFrame &now : frames) {
        if (!now.frame.has_header) continue;
        if (before) visit(*before, now);
        before = &now;
    }
}

FilmStep film_step(const std::vector<SequenceFrame> &frames) {
    Votes steps;
    Votes sizes;
    const auto each_keycode = [&](auto visit) {
        each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
            const Keycode &from = a.frame.keycode;
            const Keycode &to = b.frame.keycode;
            const bool successive = b.number == a.number + 1 && from.roll == to.roll;
            if (successive && from.is_set() && to.is_set() && from.offset >= 0 && to.offset >= 0)
                visit(from, to);
        });
    };
    each_keycode([&](const Keycode &from, const Keycode &to) {
        if (from.count == to.count && from.offset != to.offset) steps.add(to.offset - from.offset);
    });
    FilmStep result{steps.winner(), std::nullopt};
    if (!result.step) return result;
    const int64_t next = *result.step < 0 ? -1 : 1;
    each_keycode([&](const Keycode &from, const Keycode &to) {
        if (counts_between(from, to) == next) sizes.add(next * (from.offset + *result.step - to.offset));
    });
    // A few counts prove nothing: what breaks at one of them would be taken for the rule.
    constexpr uint64_t kEnough = 3;
    result.per_count = sizes.winner(perforations_a_count(*result.step) ? kEnough : 1);
    if (!result.per_count) result.per_count = perforations_a_count(*result.step);
    return result;
}

// Whether two frames share a number: half of the steps are none.
bool counts_pairs(const std::vector<SequenceFrame> &frames, uint32_t base) {
    if (base <= 30 || base % 2 != 0) return false;
    const Counting half{base / 2};
    Votes steps;
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        const auto from = frame_count(a.frame.timecode, half);
        const auto to = frame_count(b.frame.timecode, half);
        if (from && to && b.number == a.number + 1) steps.add(*to - *from);
    });
    return steps.of(0) >= 2 && steps.of(0) <= 3 * steps.of(1) && steps.of(1) <= 3 * steps.of(0);
}

// Frames a second: what most headers say, else one more than the last number of a second.
uint32_t counting_base(const std::vector<SequenceFrame> &frames) {
    Votes bases;
    for (const SequenceFrame &f : frames) {
        if (f.frame.rate > 0) bases.add(std::lround(f.frame.rate));
    }
    if (const auto base = bases.winner()) return static_cast<uint32_t>(*base);
    // The bit that all frames of a second have is no digit.
    constexpr Counting kDropping{30, true};
    const bool flagged = std::ranges::all_of(frames, [&](const SequenceFrame &f) {
        return !f.frame.has_timecode() || has_drop_flag(f.frame.timecode, kDropping);
    });
    const uint32_t tens = flagged ? 3 : 7;
    const auto number = [&](const Frame &f) { return (f.timecode >> 4 & tens) * 10 + (f.timecode & 15); };
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        const bool new_second = (a.frame.timecode & 0xFF00) != (b.frame.timecode & 0xFF00);
        if (new_second && number(b.frame) == 0 && b.number == a.number + 1) bases.add(number(a.frame) + 1);
    });
    return static_cast<uint32_t>(bases.winner().value_or(flagged ? kDropping.base : 100));
}

// Whether numbers are dropped, by the flags and by the minutes whose first numbers are left out, or not.
bool drops_numbers(const std::vector<SequenceFrame> &frames, const Counting &counting) {
    if (counting.base % 30 != 0) return false;
    const Counting dropping{counting.base, true};
    Votes drops;
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        if (has_drop_flag(a.frame.timecode, counting)) drops.add(1);
        const auto plain = frame_count(a.frame.timecode, counting);
        const auto dropped = frame_count(a.frame.timecode, dropping);
        const int64_t step = b.number - a.number;
        if (!plain || !dropped || step < 1 || counting.pairs) return;
        const uint32_t without = timecode_of(*plain + step, counting);
        const uint32_t with = timecode_of(*dropped + step, dropping);
        if (with != without && b.frame.timecode == with) drops.add(1);
        if (with != without && b.frame.timecode == without) drops.add(0);
    });
    return drops.winner().value_or(0) == 1;
}

Counting counting_of(const std::vector<SequenceFrame> &frames) {
    Counting counting{counting_base(frames)};
    counting.pairs = counts_pairs(frames, counting.base);
    if (counting.pairs) counting.base /= 2;
    counting.drop = drops_numbers(frames, counting);
    return counting;
}

std::string shown(const std::string &value) { return value.empty() ? "not set" : safe_name(value); }

std::string frames_text(int64_t first, int64_t last) {
    return first == last ? std::string("frame ") + std::to_string(first)
                         : std::string("frames ") + std::to_string(first) + "-" + std::to_string(last);
}

class Check {
 public:
    Check(const std::vector<SequenceFrame> &frames, bool numbered)
        : frames_(frames), numbered_(numbered), counting_(counting_of(frames)), film_(film_step(frames)) {}

    Report run() {
        const SequenceFrame *last = nullptr;
        const SequenceFrame *last_header = nullptr;
        for (const SequenceFrame &now : frames_) {
            if (last) check_number(last->number, now.number);
            if (last) previous_ = last->number;
            if (!now.frame.problem.empty()) find(now.number, now.frame.problem);
            if (now.frame.has_header) {
                check_validity(now);
                if (last_header) check_step(*last_header, now);
                last_header = &now;
            }
            last = &now;
        }
        Report report{{}, summary()};
        for (const Run &run : runs_)
            report.findings.push_back((numbered_ ? frames_text(run.first, run.last) + ": " : "") + run.text);
        return report;
    }

 private:
    // The same of successive frames is one finding. A frame has some ten at most.
    void find(int64_t number, const std::string &text) {
        constexpr size_t kLookedAt = 40;
        const auto end = runs_.size() > kLookedAt ? runs_.rbegin() + kLookedAt : runs_.rend();
        const auto run = std::find_if(runs_.rbegin(), end, [&](const Run &r) {
            return r.last == previous_ && number <= previous_ + 1 && r.text == text;
        });
        if (run != end) {
            run->last = number;
        } else {
            runs_.push_back({number, number, text});
        }
    }

    void check_number(int64_t before, int64_t now) {
        if (now == before) find(now, "another file with that number");
        if (now <= before + 1) return;
        const int64_t count = now - before - 1;
        runs_.push_back({before + 1, now - 1, "missing (" + std::to_string(count) + ")"});
    }

    void check_validity(const SequenceFrame &f) {
        if (f.frame.has_timecode() && !frame_count(f.frame.timecode, counting_)) {
            char stored[16];
            std::snprintf(stored, sizeof stored, "%08x", f.frame.timecode);
            find(f.number, std::string("timecode ") + stored + " is none at " +
                               std::to_string(counting_.base) + " frames a second" +
                               (counting_.drop ? ", drop frame" : ""));
        }
    }

    void check_step(const SequenceFrame &a, const SequenceFrame &b) {
        check_timecode(a, b);
        check_keycode(a, b);
        if (a.frame.properties.size() != b.frame.properties.size()) {
            find(b.number, "format " + a.frame.properties[0].value + " -> " + b.frame.properties[0].value);
            return;
        }
        for (size_t i = 0; i < b.frame.properties.size(); i++) {
            const Property &from = a.frame.properties[i];
            const Property &to = b.frame.properties[i];
            if (!(from == to))
                find(b.number, std::string(to.name) + " " + shown(from.value) + " -> " + shown(to.value));
        }
    }

    void check_timecode(const SequenceFrame &a, const SequenceFrame &b) {
        if (a.frame.has_timecode() != b.frame.has_timecode()) {
            find(b.number,
                 b.frame.has_timecode() ? "timecode set from here on" : "timecode not set from here on");
            return;
        }
        const auto from = frame_count(a.frame.timecode, counting_);
        const auto to = frame_count(b.frame.timecode, counting_);
        if (!a.frame.has_timecode() || !from || !to) return;
        const int64_t step = b.number - a.number;
        if (goes_on(*from, *to, step)) return;
        if (from == to) {
            find(b.number, "timecode stands at " + timecode_text(b.frame.timecode, counting_));
        } else if (is_count(*from, *to + step)) {
            find(b.number, "timecode runs backwards");
        } else {
            const int64_t counts = counting_.pairs ? (step + 1) / 2 : step;
            const uint32_t expected = timecode_of(*from + counts, counting_);
            find(b.number, "timecode " + timecode_text(a.frame.timecode, counting_) + " -> " +
                               timecode_text(b.frame.timecode, counting_) + ", expected " +
                               timecode_text(expected, counting_));
        }
    }

    // Whether a frame's count is one that may be beyond midnight.
    bool is_count(int64_t frame, int64_t count) const {
        return frame_count(timecode_of(count, counting_), counting_) == frame;
    }

    // Whether a time code goes on by a step of frames. Of two frames that share a number, the second does not
    // move it and the next one does.
    bool goes_on(int64_t from, int64_t to, int64_t step) {
        if (!counting_.pairs) return is_count(to, from + step);
        const bool moved = from != to;
        const bool odd_one_out = step == 1 && moved_ == moved;
        moved_ = step == 1 ? std::optional(moved) : std::nullopt;
        if (odd_one_out) return false;
        return is_count(to, from + step / 2) || is_count(to, from + (step + 1) / 2);
    }

    bool keycode_goes_on(const Keycode &from, const Keycode &to, int64_t frames) const {
        if (from.roll != to.roll) return false;
        const int64_t counts = counts_between(from, to);
        if (from.offset < 0 || to.offset < 0 || !film_.step) return std::abs(counts) <= frames;
        const int64_t moved = to.offset - from.offset - *film_.step * frames;
        if (counts == 0) return moved == 0;
        return film_.per_count ? moved + counts * *film_.per_count == 0
                               : std::abs(counts) == 1 && frames == 1;
    }

    void check_keycode(const SequenceFrame &a, const SequenceFrame &b) {
        const Keycode &from = a.frame.keycode;
        const Keycode &to = b.frame.keycode;
        if (from.is_set() != to.is_set()) {
            find(b.number, to.is_set() ? "keycode set from here on" : "keycode not set from here on");
        } else if (from.is_set() && from.offset >= 0 && from.text == to.text && b.number != a.number) {
            find(b.number, "keycode stands at " + safe_name(to.text));
        } else if (from.is_set() && !keycode_goes_on(from, to, b.number - a.number)) {
            find(b.number, "keycode " + safe_name(from.text) + " -> " + safe_name(to.text));
        }
    }

    std::string summary() const {
        std::string text = std::to_string(frames_.size()) + (frames_.size() == 1 ? " frame" : " frames");
        if (frames_.empty()) return text;
        if (numbered_) {
            text += std::string(" ") + std::to_string(frames_.front().number) + "-" +
                    std::to_string(frames_.back().number);
        }
        const auto has_header = [](const SequenceFrame &f) { return f.frame.has_header; };
        const auto first = std::find_if(frames_.begin(), frames_.end(), has_header);
        if (first == frames_.end()) return text;
        const Frame &start = first->frame;
        const Frame &end = std::find_if(frames_.rbegin(), frames_.rend(), has_header)->frame;
        text += ", " + start.properties[0].value + " " + value_of(start, "width") + "x" +
                value_of(start, "height") + ", " + value_of(start, "bit depth") + " bit";
        if (start.rate > 0) text += ", " + value_of(start, "frame rate") + " fps";
        if (start.has_timecode() && end.has_timecode()) {
            text += ", timecode " + timecode_text(start.timecode, counting_) + "-" +
                    timecode_text(end.timecode, counting_);
            if (counting_.drop) text += " drop frame";
            if (counting_.pairs) text += " of frame pairs";
        }
        if (start.keycode.is_set() && end.keycode.is_set()) {
            text += ", keycode " + safe_name(start.keycode.text) + " to " + safe_name(end.keycode.text);
            if (film_.step && *film_.step < 0) text += " backwards";
        }
        return text;
    }

    static std::string value_of(const Frame &frame, const std::string &name) {
        for (const Property &p : frame.properties) {
            if (p.name == name) return safe_name(p.value);
        }
        return "";
    }

    const std::vector<SequenceFrame> &frames_;
    const bool numbered_;
    const Counting counting_;
    const FilmStep film_;

    struct Run {
        int64_t first;
        int64_t last;
        std::string text;
    };
    std::vector<Run> runs_;
    int64_t previous_ = 0;       // number of the frame before the one that is checked
    std::optional<bool> moved_;  // whether the time code before moved, where frames share numbers
};

}  // namespace

Report check_sequence(const std::vector<SequenceFrame> &frames, bool numbered) {
    return Check(frames, numbered).run();
}
