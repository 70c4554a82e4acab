#include "companions/sequence/check.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <span>

#include "companions/safe_text.h"
#include "companions/sequence/counter.h"
#include "companions/sequence/counting.h"
#include "companions/sequence/files_check.h"
#include "companions/sequence/properties.h"

namespace {

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (size_t i = 0; i < words.size(); i++) {
        if (i > 0) text += i + 1 == words.size() ? " and " : ", ";
        text += words[i];
    }
    return text;
}

// Breaks of several counters on the same frames, which are one finding.
struct SharedBreak {
    CounterEvent event;
    std::vector<std::string> counters;
};

class Check {
 public:
    Check(const std::vector<SequenceFrame> &all, const SharedNames &names, const SequenceQuestion &question)
        : all_(all), names_(names), question_(question) {
        for (const SequenceFrame &frame : all) {
            if (frame.has_header) frames_.push_back(&frame);
        }
    }

    SequenceReport run() {
        check_files(all_, names_, question_, findings_);
        if (!frames_.empty()) {
            find_changes(frames_, names_, findings_);
            drop_cuts_by_headers();
            check_timecodes();
            check_keycodes();
            check_positions();
            check_names();
            check_user_bits();
            tell_shared();
            drop_consequences();
        }
        std::ranges::stable_sort(findings_, {}, &Finding::first);
        return {std::move(findings_), summary()};
    }

 private:
    // A file as long as its neighbours whose header asks for more has a wrong header.
    void drop_cuts_by_headers() {
        std::set<int64_t> misshapen;
        for (const Finding &finding : findings_) {
            if (finding.first == finding.last && (finding.kind == "size" || finding.kind == "layout"))
                misshapen.insert(finding.first);
        }
        std::erase_if(findings_, [&](const Finding &finding) {
            if (finding.kind != "cut" || finding.first != finding.last || !misshapen.contains(finding.first))
                return false;
            const auto frame = std::ranges::lower_bound(all_, finding.first, {}, &SequenceFrame::number);
            const auto as_long = [&](auto other) { return other->bytes == frame->bytes; };
            return (frame != all_.begin() && as_long(frame - 1)) ||
                   (frame + 1 != all_.end() && as_long(frame + 1));
        });
    }

    // What is read at other places, or not at all, differs for one reason.
    void drop_consequences() {
        constexpr const char *kReasons[] = {"format ", "byte order ", "image offset ", "industry header "};
        std::map<int64_t, const char *> reasons;  // of frames
        for (const char *reason : kReasons) {
            for (const Finding &finding : findings_) {
                if (finding.text.starts_with(reason)) reasons.emplace(finding.first, reason);
            }
        }
        std::set<int64_t> resized;
        for (const Finding &finding : findings_) {
            if (finding.kind == "size") resized.insert(finding.first);
        }
        std::erase_if(findings_, [&](const Finding &finding) {
            // A size of nothing is told as its change.
            if (finding.text.starts_with("the header has size ") && resized.contains(finding.first))
                return true;
            constexpr const char *kOwn[] = {"missing", "duplicate", "padding", "unreadable", "cut"};
            const auto reason = reasons.find(finding.first);
            const bool own =
                std::ranges::any_of(kOwn, [&](const char *kind) { return finding.kind == kind; });
            return reason != reasons.end() && !own && !finding.is_of_all &&
                   !finding.text.starts_with(reason->second);
        });
    }

    void add(const char *kind, int64_t first, int64_t last, std::string text, bool of_all = false) {
        findings_.push_back({kind, first, last, of_all, std::move(text)});
    }

    void check_timecodes() {
        make_stretches();
        size_t set = 0;
        for (const SequenceFrame *frame : frames_) set += frame->timecode != kNoTimecode;
        if (set == 0) return;
        if (set < frames_.size())
            find_unset("timecode", [](const SequenceFrame &f) { return f.timecode != kNoTimecode; });
        for (size_t i = 0; i < stretches_.size(); i++) {
            const Stretch &stretch = stretches_[i];
            check_stretch(stretch);
            if (i > 0) check_border(stretches_[i - 1], stretch);
        }
    }

    // Frames of one rate; one that alone differs belongs to what is around it.
    struct Stretch {
        size_t first;
        size_t last;
        TimecodeRule rule;
    };
    void make_stretches() {
        constexpr size_t kShort = 3;
        std::vector<Stretch> runs;
        for (size_t i = 0; i < frames_.size(); i++) {
            if (runs.empty() || frames_[runs.back().first]->rate != frames_[i]->rate)
                runs.push_back({i, i, {}});
            runs.back().last = i;
        }
        for (const Stretch &run : runs) {
            const bool short_one = run.last - run.first + 1 < kShort && frames_.size() > 2 * kShort;
            const bool same =
                !stretches_.empty() && frames_[stretches_.back().first]->rate == frames_[run.first]->rate;
            if (!stretches_.empty() && (short_one || same)) {
                stretches_.back().last = run.last;
            } else {
                stretches_.push_back(run);
            }
        }
        for (Stretch &stretch : stretches_) {
            stretch.rule =
                timecode_rule(std::span(frames_).subspan(stretch.first, stretch.last - stretch.first + 1));
        }
    }

    void check_stretch(const Stretch &stretch) {
        const TimecodeRule &rule = stretch.rule;
        const Counting &counting = rule.counting;
        const int64_t first = frames_[stretch.first]->number;
        const int64_t last = frames_[stretch.last]->number;
        if (rule.told > 0)
            add("timecode", first, last,
                "timecode counts " + std::to_string(counting.base) + " frames a second, the header says " +
                    std::to_string(rule.told),
                stretches_.size() == 1 && frames_.size() > 1);
        if (rule.holds)
            add("holds", first, last, "each timecode stands for " + std::to_string(rule.share) + " frames");
        if (rule.step == 0)
            add("timecode", first, last,
                "timecode stands at " + timecode_text(frames_[stretch.first]->timecode, counting));
        if (rule.step < 0) add("timecode", first, last, "timecode runs backwards");
        if (rule.step > 1)
            add("timecode", first, last, "timecode goes on by " + std::to_string(rule.step) + " a frame");
        std::vector<CountedFrame> counted;
        uint64_t flags = 0;
        for (size_t i = stretch.first; i <= stretch.last; i++) {
            const SequenceFrame &frame = *frames_[i];
            std::optional<int64_t> count;
            if (frame.timecode != kNoTimecode) {
                count = frame_count(frame.timecode, counting);
                if (!count) add_invalid(frame, counting);
                flags += has_drop_flag(frame.timecode, counting);
            }
            counted.push_back({frame.number, count});
        }
        check_drop_flags(stretch, flags);
        const Counting &c = counting;
        const int64_t day = 24 * (6 * (int64_t{600} * c.base - 9 * int64_t{c.dropped()}));
        spread(counted, rule.share, rule.step);
        for (CounterEvent event : find_breaks(counted, {rule.step, day * rule.share})) {
            event = moved(event, stretch.first);
            tell(
                "timecode", event, [&](size_t i) { return timecode_text(frames_[i]->timecode, counting); },
                [&](int64_t value) {
                    return timecode_text(timecode_of(value / rule.share, counting), counting);
                });
        }
    }

    void add_invalid(const SequenceFrame &frame, const Counting &counting) {
        char stored[16];
        std::snprintf(stored, sizeof stored, "%08x", frame.timecode);
        add("timecode", frame.number, frame.number,
            std::string("timecode ") + stored + " is none at " + std::to_string(counting.base) +
                " frames a second" + (counting.drop ? ", drop frame" : ""));
    }

    // A flag that some frames have.
    void check_drop_flags(const Stretch &stretch, uint64_t flags) {
        if (stretch.rule.counting.base != 30 || flags == 0) return;
        std::vector<const SequenceFrame *> odd;
        uint64_t set = 0;
        for (size_t i = stretch.first; i <= stretch.last; i++) set += frames_[i]->timecode != kNoTimecode;
        if (flags == set) return;
        const bool usual = 2 * flags > set;
        size_t first = 0;
        size_t last = 0;
        size_t count = 0;
        for (size_t i = stretch.first; i <= stretch.last; i++) {
            if (frames_[i]->timecode == kNoTimecode ||
                has_drop_flag(frames_[i]->timecode, stretch.rule.counting) == usual)
                continue;
            if (count++ == 0) first = i;
            last = i;
        }
        add("drop", frames_[first]->number, frames_[last]->number,
            std::string("drop frame flag ") + (usual ? "not set" : "set") +
                (count == last - first + 1 ? "" : " in " + std::to_string(count) + " of them"));
    }

    void check_border(const Stretch &before, const Stretch &now) {
        const SequenceFrame &a = *frames_[before.last];
        const SequenceFrame &b = *frames_[now.first];
        if (a.timecode == kNoTimecode || b.timecode == kNoTimecode) return;
        const auto from = frame_count(a.timecode, before.rule.counting);
        if (!from) return;
        for (const Counting &counting : {before.rule.counting, now.rule.counting}) {
            const auto here = frame_count(a.timecode, counting);
            const auto there = frame_count(b.timecode, counting);
            if (here && there && std::abs(*there - *here) <= std::max<int64_t>(1, b.number - a.number))
                return;
        }
        const uint32_t expected = timecode_of(*from + (b.number - a.number), before.rule.counting);
        add("timecode", b.number, b.number,
            "timecode " + timecode_text(a.timecode, before.rule.counting) + " -> " +
                timecode_text(b.timecode, now.rule.counting) + ", expected " +
                timecode_text(expected, before.rule.counting));
    }

    static CounterEvent moved(CounterEvent event, size_t by) {
        for (size_t *place : {&event.first, &event.last, &event.before, &event.other}) *place += by;
        return event;
    }

    // Frames in which a value that others have is not set.
    template <typename IsSet>
    void find_unset(const char *name, IsSet is_set) {
        size_t set = 0;
        for (const SequenceFrame *frame : frames_) set += is_set(*frame);
        const bool usual = 2 * set >= frames_.size();
        for (size_t i = 0; i < frames_.size();) {
            size_t last = i;
            while (last + 1 < frames_.size() && is_set(*frames_[last + 1]) == is_set(*frames_[i])) last++;
            if (is_set(*frames_[i]) != usual)
                add(name, frames_[i]->number, frames_[last]->number,
                    std::string(name) + (usual ? " not set" : " set in these only"));
            i = last + 1;
        }
    }

    std::string keycode_text(const SequenceFrame &frame) const {
        const Keycode &keycode = frame.keycode;
        return keycode_text_of(names_.name(keycode.roll), keycode.count, keycode.offset);
    }
    static std::string keycode_text_of(const std::string &roll, int64_t count, int64_t offset) {
        char text[32];
        std::snprintf(text, sizeof text, offset < 0 ? " %04d" : " %04d+%02d", static_cast<int>(count),
                      static_cast<int>(offset));
        return safe_name(roll) + text;
    }

    void check_keycodes() {
        size_t set = 0;
        for (const SequenceFrame *frame : frames_) set += frame->keycode.is_set();
        if (set == 0) return;
        if (set < frames_.size()) {
            find_unset("keycode", [this](const SequenceFrame &f) {
                return f.keycode.is_set() || names_.name(f.problem).starts_with("keycode");
            });
        }
        film_ = film_rule(frames_);
        const bool told = std::ranges::any_of(stretches_, [](const Stretch &s) { return s.rule.share > 1; });
        if (film_.share > 1 && !told)
            add("holds", frames_.front()->number, frames_.back()->number,
                "each keycode stands for " + std::to_string(film_.share) + " frames");
        // Each roll for itself.
        for (size_t i = 0; i < frames_.size();) {
            size_t last = i;
            while (last + 1 < frames_.size() &&
                   (frames_[last + 1]->keycode.roll == frames_[i]->keycode.roll ||
                    !frames_[last + 1]->keycode.is_set()))
                last++;
            if (frames_[i]->keycode.is_set()) check_roll(i, last);
            if (last + 1 < frames_.size() && frames_[i]->keycode.is_set()) check_roll_change(i, last);
            i = last + 1;
        }
    }

    // A roll that alone a frame has, or that begins there.
    void check_roll_change(size_t first, size_t last) {
        const SequenceFrame &a = *frames_[last];
        const SequenceFrame &b = *frames_[last + 1];
        if (!a.keycode.is_set() || !b.keycode.is_set()) return;
        const bool was_alone =
            first > 0 && first == last && frames_[first - 1]->keycode.roll == b.keycode.roll;
        if (was_alone) return;
        const bool alone = last + 2 < frames_.size() && frames_[last + 2]->keycode.roll == a.keycode.roll;
        std::string expected;
        if (alone) expected = ", its neighbours are of " + safe_name(names_.name(a.keycode.roll));
        add("keycode", b.number, b.number,
            "keycode " + keycode_text(a) + " -> " + keycode_text(b) + expected);
    }

    void check_roll(size_t first, size_t last) {
        const bool by_perforations = film_.step && film_.per_count;
        const int64_t per_count = by_perforations ? *film_.per_count : 1;
        std::vector<CountedFrame> counted;
        for (size_t i = first; i <= last; i++) {
            const Keycode &keycode = frames_[i]->keycode;
            std::optional<int64_t> value;
            if (keycode.is_set() && keycode.count >= 0 && (!by_perforations || keycode.offset >= 0))
                value = keycode.count * per_count + (by_perforations ? keycode.offset : 0);
            counted.push_back({frames_[i]->number, value});
        }
        if (!by_perforations) {
            check_counts(first, counted);
            return;
        }
        spread(counted, film_.share, *film_.step);
        for (CounterEvent event :
             find_breaks(counted, {*film_.step, kKeycodeCounts * per_count * film_.share})) {
            event = moved(event, first);
            const uint32_t roll = frames_[event.first]->keycode.roll;
            tell(
                "keycode", event, [&](size_t i) { return keycode_text(*frames_[i]); },
                [&](int64_t value) {
                    value /= film_.share;
                    return keycode_text_of(names_.name(roll), value / per_count, value % per_count);
                });
        }
    }

    // Without perforations only counts that move by more than the frames do are wrong.
    void check_counts(size_t first, const std::vector<CountedFrame> &counted) {
        for (size_t i = 1; i < counted.size(); i++) {
            if (!counted[i].value || !counted[i - 1].value) continue;
            const int64_t moved =
                (*counted[i].value - *counted[i - 1].value + kKeycodeCounts + kKeycodeCounts / 2) %
                    kKeycodeCounts -
                kKeycodeCounts / 2;
            if (std::abs(moved) > counted[i].number - counted[i - 1].number)
                add("keycode", counted[i].number, counted[i].number,
                    "keycode " + keycode_text(*frames_[first + i - 1]) + " -> " +
                        keycode_text(*frames_[first + i]));
        }
    }

    void check_positions() {
        check_plain("position", [](const SequenceFrame &f) { return f.position; });
    }

    // A name in the header that has the number of another frame; one that never changes is that of the
    // sequence.
    void check_names() {
        size_t set = 0;
        for (const SequenceFrame *frame : frames_) set += frame->name_number >= 0;
        if (set == 0) return;
        check_plain("name", [](const SequenceFrame &f) { return f.name_number; });
        Votes rests;
        for (const SequenceFrame *frame : frames_) rests.add(frame->name_rest);
        const int64_t usual = rests.winner().value_or(0);
        if (rests.of(usual) * 10 < frames_.size() * 9) return;
        for (const SequenceFrame *frame : frames_) {
            if (frame->name_rest != usual)
                add("name", frame->number, frame->number,
                    "name in the header " + safe_name(names_.name(frame->name_rest)) + ", others have " +
                        safe_name(names_.name(static_cast<uint32_t>(usual))));
        }
    }

    // A number of the header that counts with the frames in most of them; one that stays, or does neither,
    // has no rule to break.
    template <typename Value>
    void check_plain(const char *name, Value value) {
        std::vector<CountedFrame> counted;
        Votes steps;
        for (const SequenceFrame *frame : frames_) {
            const int64_t number = value(*frame);
            counted.push_back({frame->number, number >= 0 ? std::optional(number) : std::nullopt});
            const size_t n = counted.size();
            if (n > 1 && counted[n - 1].value && counted[n - 2].value &&
                counted[n - 1].number == counted[n - 2].number + 1)
                steps.add(*counted[n - 1].value - *counted[n - 2].value);
        }
        const int64_t step = steps.winner().value_or(1);
        if (steps.of(step) * 10 < steps.all() * 7 || std::abs(step) > 1) return;
        for (const CounterEvent &event : find_breaks(counted, {step, 0})) {
            tell(
                name, event, [&](size_t i) { return std::to_string(*counted[i].value); },
                [](int64_t number) { return std::to_string(number); });
        }
    }

    // User bits that stay, or count with the frames, in most of them.
    void check_user_bits() {
        check_plain("user bits", [](const SequenceFrame &f) {
            return f.user_bits == kNoTimecode ? int64_t{-1} : int64_t{f.user_bits};
        });
    }

    // Frames that changed places, or have another's values, are one finding of all that says so.
    template <typename Shown, typename Text>
    void tell(const char *counter, const CounterEvent &event, Shown value_at, Text text_of) {
        const int64_t first = frames_[event.first]->number;
        const int64_t last = frames_[event.last]->number;
        const std::string name = counter;
        const char *kind = name == "user bits" ? "user-bits" : counter;
        switch (event.kind) {
            case CounterEvent::swapped:
            case CounterEvent::holds:
            case CounterEvent::repeated: {
                const auto same = std::ranges::find_if(shared_, [&](const SharedBreak &shared) {
                    return shared.event.kind == event.kind && shared.event.first == event.first &&
                           shared.event.last == event.last && shared.event.other == event.other;
                });
                if (same == shared_.end()) {
                    shared_.push_back({event, {name}});
                } else {
                    same->counters.push_back(name);
                }
                return;
            }
            case CounterEvent::stands:
                add(kind, first, last, name + " stands at " + value_at(event.first));
                return;
            case CounterEvent::reversed: add(kind, first, last, name + " runs backwards"); return;
            case CounterEvent::alone:
                add(kind, first, last,
                    name + " " + value_at(event.first) + ", expected " + text_of(event.expected));
                return;
            case CounterEvent::jump: {
                const std::string before = value_at(event.before);
                if (before == value_at(event.first)) {
                    add(kind, first, first,
                        name + " stands at " + before + ", expected " + text_of(event.expected));
                } else {
                    add(kind, first, first,
                        name + " " + before + " -> " + value_at(event.first) + ", expected " +
                            text_of(event.expected));
                }
                return;
            }
        }
    }

    void tell_shared() {
        for (const SharedBreak &shared : shared_) {
            const CounterEvent &event = shared.event;
            const int64_t first = frames_[event.first]->number;
            const int64_t last = frames_[event.last]->number;
            const std::string what = joined(shared.counters);
            if (event.kind == CounterEvent::swapped) {
                add("swapped", first, last, "changed places, by their " + what);
            } else if (event.kind == CounterEvent::holds) {
                const std::string period = std::to_string(event.other);
                std::string text = "each ";
                if (event.held + 1 == event.other) {
                    text.append(what).append(" stands for ").append(period).append(" frames");
                } else {
                    text = std::to_string(event.held);
                    text.append(" of every ").append(period).append(" frames: ").append(what);
                    text += shared.counters.size() > 1 ? " stand" : " stands";
                }
                add("holds", first, last, text);
            } else {
                add("repeated", first, first,
                    what + (shared.counters.size() > 1 || what.ends_with("s") ? " are those" : " is that") +
                        " of frame " + std::to_string(frames_[event.other]->number));
            }
        }
    }

    std::string property(const SequenceFrame &frame, const std::string &name) const {
        for (const auto &[key, value] : properties_of(frame, names_)) {
            if (key == name) return safe_name(value);
        }
        return "";
    }

    std::string summary() const {
        std::string text = std::to_string(all_.size()) + (all_.size() == 1 ? " frame" : " frames");
        if (all_.empty()) return text;
        if (question_.numbered)
            text += " " + std::to_string(all_.front().number) + "-" + std::to_string(all_.back().number);
        if (frames_.empty()) return text;
        const SequenceFrame &start = *frames_.front();
        const SequenceFrame &end = *frames_.back();
        text += ", " + property(start, "format") + " " + property(start, "size");
        if (const std::string bits = property(start, "bit_depth"); !bits.empty())
            text += ", " + bits + " bit";
        if (start.rate > 0) text += ", " + property(start, "frame_rate") + " fps";
        if (start.timecode != kNoTimecode && end.timecode != kNoTimecode && !stretches_.empty()) {
            const TimecodeRule &rule = stretches_.front().rule;
            text += ", timecode " + timecode_text(start.timecode, rule.counting) + "-" +
                    timecode_text(end.timecode, stretches_.back().rule.counting);
            if (rule.counting.drop) text += " drop frame";
            if (rule.share > 1 && !rule.holds) text += " of " + std::to_string(rule.share) + " frames each";
        }
        if (start.keycode.is_set() && end.keycode.is_set()) {
            text += ", keycode " + keycode_text(start) + " to " + keycode_text(end);
            if (film_.step && *film_.step < 0) text += " backwards";
        }
        return text;
    }

    const std::vector<SequenceFrame> &all_;
    const SharedNames &names_;
    const SequenceQuestion &question_;
    std::vector<const SequenceFrame *> frames_;  // with a header
    std::vector<Stretch> stretches_;
    FilmRule film_;
    std::vector<SharedBreak> shared_;
    std::vector<Finding> findings_;
};

}  // namespace

SequenceReport check_sequence(const std::vector<SequenceFrame> &frames, const SharedNames &names,
                              const SequenceQuestion &question) {
    SequenceReport report = Check(frames, names, question).run();
    std::erase_if(report.findings, [&](const Finding &finding) {
        return std::ranges::find(question.ignored, finding.kind) != question.ignored.end();
    });
    return report;
}

bool parse_frames(const std::string &text, SequenceQuestion &question) {
    int64_t first = 0;
    int64_t last = 0;
    const char *end = text.data() + text.size();
    const auto one = std::from_chars(text.data(), end, first);
    if (one.ec != std::errc() || one.ptr == end || *one.ptr != '-') return false;
    const auto two = std::from_chars(one.ptr + 1, end, last);
    if (two.ec != std::errc() || two.ptr != end || last < first) return false;
    question.wanted = {first, last};
    return true;
}
