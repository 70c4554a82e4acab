#include "companions/sequence/counting.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int64_t kMostShared = 4;  // frames that share a number

// Calls with each two frames of successive numbers.
template <typename Visit>
void each_pair(std::span<const SequenceFrame *const> frames, Visit visit) {
    const SequenceFrame *before = nullptr;
    for (const SequenceFrame *now : frames) {
        if (before && now->number == before->number + 1) visit(*before, *now);
        before = now;
    }
}

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

// The digits of a timecode; what is beside them marks fields and colour frames, and may differ between the
// frames of a pair (SMPTE 12M).
uint32_t digits_of(uint32_t timecode) { return timecode & 0x3F7F7F7F; }

// How many counts lie between two keycodes, the shorter way around.
int64_t counts_between(const Keycode &a, const Keycode &b) {
    return (b.count - a.count + kKeycodeCounts + kKeycodeCounts / 2) % kKeycodeCounts - kKeycodeCounts / 2;
}

// How many successive frames most values stay for, where that is more than one for most of them.
template <typename Same>
int64_t shared_by(std::span<const SequenceFrame *const> frames, Same same) {
    Votes lengths;
    int64_t length = 1;
    bool is_first = true;
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        if (same(a, b)) {
            length++;
            return;
        }
        if (!is_first) lengths.add(length);  // the first run may be cut
        is_first = false;
        length = 1;
    });
    const int64_t share = lengths.winner(2).value_or(1);
    const bool most = lengths.of(share) * 10 >= lengths.all() * 7;
    return share >= 2 && share <= kMostShared && most ? share : 1;
}

// Numbers of a second by the last ones of seconds, after which they begin anew.
Votes counted_bases(std::span<const SequenceFrame *const> frames, uint32_t tens) {
    const auto number = [&](uint32_t timecode) { return (timecode >> 4 & tens) * 10 + (timecode & 15); };
    Votes bases;
    const SequenceFrame *earlier = nullptr;
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        const bool new_second = (a.timecode & 0x7F00) != (b.timecode & 0x7F00);
        const bool goes_on = earlier && number(earlier->timecode) + 1 == number(a.timecode);
        if (new_second && number(b.timecode) == 0 && goes_on) bases.add(number(a.timecode) + 1);
        if (digits_of(a.timecode) != digits_of(b.timecode)) earlier = &a;
    });
    return bases;
}

// Numbers of a second: what most headers say, else what the numbers do.
uint32_t counting_base(std::span<const SequenceFrame *const> frames, bool &is_told) {
    Votes bases;
    for (const SequenceFrame *frame : frames) {
        if (frame->rate > 0) bases.add(std::lround(frame->rate));
    }
    is_told = bases.all() > 0;
    if (const auto base = bases.winner()) return static_cast<uint32_t>(*base);
    // The bit that all frames of a second have is no digit.
    constexpr Counting kDropping{30, true};
    const bool flagged = std::ranges::all_of(frames, [&](const SequenceFrame *frame) {
        return frame->timecode == kNoTimecode || has_drop_flag(frame->timecode, kDropping);
    });
    bases = counted_bases(frames, flagged ? 3 : 7);
    return static_cast<uint32_t>(bases.winner().value_or(flagged ? kDropping.base : 100));
}

// Whether numbers are dropped: by the flags of most frames, else by the minutes whose first numbers are left
// out, or not.
bool drops_numbers(std::span<const SequenceFrame *const> frames, const Counting &counting) {
    if (counting.base % 30 != 0) return false;
    uint64_t flagged = 0;
    uint64_t all = 0;
    for (const SequenceFrame *frame : frames) {
        if (frame->timecode == kNoTimecode) continue;
        all++;
        flagged += has_drop_flag(frame->timecode, counting);
    }
    if (2 * flagged > all) return true;
    Votes drops;
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        // The last number of a minute, and the first of the next that is not dropped.
        const uint32_t last = timecode_of(counting.base * 60 - 1, counting);
        constexpr uint32_t kWithinMinute = 0x7F3F;
        if ((a.timecode & kWithinMinute) != (last & kWithinMinute)) return;
        const Counting dropping{counting.base, true};
        const auto from = frame_count(a.timecode, dropping);
        if (!from) return;
        const uint32_t with = timecode_of(*from + 1, dropping);
        const uint32_t without = timecode_of(*frame_count(a.timecode, counting) + 1, counting);
        if (with == without) return;
        if (b.timecode == with) drops.add(1);
        if (b.timecode == without) drops.add(0);
    });
    return drops.winner().value_or(0) == 1;
}

}  // namespace

void Votes::add(int64_t value) {
    all_++;
    const auto found = std::ranges::find(votes_, value, &std::pair<int64_t, uint64_t>::first);
    if (found != votes_.end()) {
        found->second++;
    } else if (votes_.size() < 1000) {
        votes_.emplace_back(value, 1);
    }
}

std::optional<int64_t> Votes::winner(uint64_t needed) const {
    const auto most = std::ranges::max_element(votes_, {}, [](const auto &vote) { return vote.second; });
    return most == votes_.end() || most->second < needed ? std::nullopt : std::optional(most->first);
}

uint64_t Votes::of(int64_t value) const {
    const auto found = std::ranges::find(votes_, value, &std::pair<int64_t, uint64_t>::first);
    return found == votes_.end() ? 0 : found->second;
}

TimecodeRule timecode_rule(std::span<const SequenceFrame *const> frames) {
    TimecodeRule rule;
    bool is_told = false;
    rule.counting.base = counting_base(frames, is_told);
    rule.share = shared_by(frames, [](const SequenceFrame &a, const SequenceFrame &b) {
        return a.timecode != kNoTimecode && b.timecode != kNoTimecode &&
               digits_of(a.timecode) == digits_of(b.timecode);
    });
    const int64_t base = rule.counting.base;
    if (rule.share > 1 && is_told && base > 30 && base % rule.share == 0) {
        rule.counting.base = static_cast<uint32_t>(base / rule.share);
    } else {
        rule.holds = rule.share > 1 && is_told;
    }
    if (is_told && rule.share == 1) {
        constexpr uint64_t kEnough = 2;
        const Votes counted = counted_bases(frames, base > 30 ? 7 : 3);
        const int64_t winner = counted.winner(kEnough).value_or(base);
        if (winner != base && counted.of(winner) * 4 >= counted.all() * 3) {
            rule.told = base;
            rule.counting.base = static_cast<uint32_t>(winner);
        }
    }
    rule.counting.drop = drops_numbers(frames, rule.counting);
    Votes steps;
    each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
        const auto from = frame_count(a.timecode, rule.counting);
        const auto to = frame_count(b.timecode, rule.counting);
        if (from && to && (rule.share == 1 || *from != *to)) steps.add(*to - *from);
    });
    rule.step = steps.winner().value_or(1);
    // A step of most frames, not of the few that there are.
    if (2 * steps.of(rule.step) <= steps.all()) rule.step = 1;
    return rule;
}

FilmRule film_rule(std::span<const SequenceFrame *const> frames) {
    FilmRule rule;
    rule.share = shared_by(frames, [](const SequenceFrame &a, const SequenceFrame &b) {
        return a.keycode.is_set() && a.keycode == b.keycode;
    });
    Votes steps;
    Votes sizes;
    const auto each_keycode = [&](auto visit) {
        each_pair(frames, [&](const SequenceFrame &a, const SequenceFrame &b) {
            const Keycode &from = a.keycode;
            const Keycode &to = b.keycode;
            if (from.roll == to.roll && from.is_set() && from.offset >= 0 && to.offset >= 0) visit(from, to);
        });
    };
    each_keycode([&](const Keycode &from, const Keycode &to) {
        if (from.count == to.count && from.offset != to.offset) steps.add(to.offset - from.offset);
    });
    rule.step = steps.winner();
    if (!rule.step) return rule;
    const int64_t next = *rule.step < 0 ? -1 : 1;
    each_keycode([&](const Keycode &from, const Keycode &to) {
        if (counts_between(from, to) == next) sizes.add(next * (from.offset + *rule.step - to.offset));
    });
    // A few counts prove nothing: what breaks at one of them would be taken for the rule.
    constexpr uint64_t kEnough = 3;
    rule.per_count = sizes.winner(perforations_a_count(*rule.step) ? kEnough : 1);
    if (!rule.per_count) rule.per_count = perforations_a_count(*rule.step);
    return rule;
}
