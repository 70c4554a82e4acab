#include "companions/sequence/counter.h"

#include <algorithm>

namespace {

class Breaks {
 public:
    Breaks(const std::vector<CountedFrame> &frames, const CounterRule &rule) : frames_(frames), rule_(rule) {
        for (size_t i = 0; i < frames.size(); i++) {
            if (frames[i].value) set_.push_back(i);
        }
    }

    std::vector<CounterEvent> find() {
        for (size_t i = 0; i < set_.size(); i++) {
            const int64_t offset = offset_of(i);
            if (segments_.empty() || segments_.back().offset != offset) segments_.push_back({i, i, offset});
            segments_.back().last = i;
        }
        for (size_t k = 0; k < segments_.size();) k = judge(k);
        gather_holds();
        return std::move(events_);
    }

 private:
    // Frames whose values go on.
    struct Segment {
        size_t first;  // places in set_
        size_t last;
        int64_t offset;

        bool is_one() const { return first == last; }
    };

    int64_t wrapped(int64_t value) const {
        if (rule_.modulus == 0) return value;
        const int64_t rest = value % rule_.modulus;
        return rest < 0 ? rest + rule_.modulus : rest;
    }
    // What the rule makes of a frame's number.
    int64_t counted(int64_t number) const { return rule_.step * number; }
    int64_t value(size_t i) const { return *frames_[set_[i]].value; }
    int64_t number(size_t i) const { return frames_[set_[i]].number; }
    int64_t offset_of(size_t i) const { return wrapped(value(i) - counted(number(i))); }
    int64_t expected(size_t i, int64_t offset) const { return wrapped(offset + counted(number(i))); }

    const Segment *at(size_t k) const { return k < segments_.size() ? &segments_[k] : nullptr; }

    void add(CounterEvent::Kind kind, size_t first, size_t last, int64_t from, size_t other = 0) {
        events_.push_back(
            {kind, set_[first], set_[last], set_[first > 0 ? first - 1 : 0], other, expected(first, from)});
    }

    // Judges a segment, with those that belong to it; gives the next one.
    size_t judge(size_t k) {
        const Segment &now = segments_[k];
        const Segment *before = k > 0 ? &segments_[k - 1] : nullptr;
        const Segment *after = at(k + 1);
        const Segment *later = at(k + 2);
        if (now.is_one() && after && after->is_one()) {
            // Two at the start or within that changed places.
            const int64_t offset = before ? before->offset : later ? later->offset : 0;
            const bool framed = before || later;
            const bool same_around = !before || !later || before->offset == later->offset;
            if (framed && same_around && value(now.first) == expected(after->first, offset) &&
                value(after->first) == expected(now.first, offset)) {
                add(CounterEvent::swapped, now.first, after->first, offset);
                return k + 2;
            }
        }
        if (!before) {
            // The first frames, of one segment that does not last, are odd ones out.
            if (now.is_one() && after && !after->is_one()) add_single(now.first, after->offset);
            return k + 1;
        }
        if (const size_t next = judge_run(k); next > k) return next;
        const bool returns = after && before->offset == after->offset;
        if (now.is_one() && returns) {
            add_single(now.first, before->offset);
            return k + 1;  // what follows goes on from before
        }
        if (k > 0 && came_back(k)) return k + 1;
        add(CounterEvent::jump, now.first, now.last, before->offset);
        return k + 1;
    }

    // Whether a segment goes on from before the frames of a finding.
    bool came_back(size_t k) const {
        if (events_.empty()) return false;
        const CounterEvent &event = events_.back();
        return event.kind != CounterEvent::jump && set_[segments_[k].first - 1] == event.last &&
               expected_offset(event.first, event.expected) == segments_[k].offset;
    }
    int64_t expected_offset(size_t frame, int64_t value) const {
        return wrapped(value - counted(frames_[frame].number));
    }

    void add_single(size_t i, int64_t offset) {
        for (const size_t neighbour : {i - 1, i + 1}) {
            if (neighbour >= set_.size() || value(neighbour) != value(i)) continue;
            add(CounterEvent::repeated, i, i, offset, set_[neighbour]);
            return;
        }
        add(CounterEvent::alone, i, i, offset);
    }

    // Values that stand, or run the other way, for two frames and more: segments of one frame each.
    size_t judge_run(size_t k) {
        size_t next = k;
        const auto run_of = [&](int64_t step) {
            next = k;
            while (next < segments_.size() && number_step(next) > 0 &&
                   wrapped(value(segments_[next].first) - value(segments_[next].first - 1) -
                           step * number_step(next)) == 0) {
                if (!segments_[next++].is_one()) break;
            }
            return next - k;
        };
        const int64_t from = segments_[k - 1].offset;
        if (rule_.step != 0 && run_of(0) >= 2) {
            // The last of them may go on by the rule again.
            add(CounterEvent::stands, segments_[k].first, segments_[next - 1].first, from);
            return next;
        }
        if (rule_.step != 0 && run_of(-rule_.step) >= 2) {
            add(CounterEvent::reversed, segments_[k].first, segments_[next - 1].first, from);
            return next;
        }
        return k;
    }
    // Values that stand again and again after as many frames are one event.
    void gather_holds() {
        constexpr size_t kLeast = 4;
        constexpr size_t kLongest = 12;
        const auto period_at = [&](size_t i) { return events_[i + 1].first - events_[i].first; };
        std::vector<CounterEvent> gathered;
        for (size_t i = 0; i < events_.size();) {
            size_t last = i;
            while (last + 1 < events_.size() && held_by(events_[i]) > 0 &&
                   held_by(events_[last + 1]) == held_by(events_[i]) && period_at(last) == period_at(i))
                last++;
            CounterEvent event = events_[i];
            const bool is_regular = last - i + 1 >= kLeast && period_at(i) <= kLongest;
            if (is_regular) {
                event.held = held_by(event);
                event.kind = CounterEvent::holds;
                event.other = period_at(i);
                event.last = events_[last].first + event.held - 1;
            }
            gathered.push_back(event);
            i = is_regular ? last + 1 : i + 1;
        }
        events_ = std::move(gathered);
    }
    // Frames that have the value of the one before an event.
    size_t held_by(const CounterEvent &event) const {
        if (event.kind == CounterEvent::stands) return event.last - event.first + 1;
        const bool is_same = frames_[event.first].value == frames_[event.before].value;
        const bool may_stand = event.kind == CounterEvent::jump || event.kind == CounterEvent::repeated;
        return may_stand && is_same && event.before + 1 == event.first ? 1 : 0;
    }
    int64_t number_step(size_t k) const {
        return number(segments_[k].first) - number(segments_[k].first - 1);
    }

    const std::vector<CountedFrame> &frames_;
    const CounterRule &rule_;
    std::vector<size_t> set_;  // places of the frames with a value
    std::vector<Segment> segments_;
    std::vector<CounterEvent> events_;
};

}  // namespace

void spread(std::vector<CountedFrame> &frames, int64_t share, int64_t step) {
    if (share == 1) return;
    // The first value may be that of frames before, too.
    size_t first_run = 0;
    while (first_run < frames.size() && frames[first_run].value == frames.front().value) first_run++;
    const int64_t skipped = std::max<int64_t>(0, share - static_cast<int64_t>(first_run));
    const CountedFrame *before = nullptr;
    int64_t value_before = 0;
    for (CountedFrame &frame : frames) {
        if (!frame.value) continue;
        const int64_t value = *frame.value;
        const int64_t start = value * share;
        const int64_t end = start + (share - 1) * step;
        int64_t spread = start + (before ? 0 : skipped * step);
        if (before) {
            const int64_t expected = *before->value + (frame.number - before->number) * step;
            const bool within =
                step > 0 ? expected >= start && expected <= end : expected <= start && expected >= end;
            if (within) {
                spread = expected;
            } else if (value == value_before) {
                spread = end;
            }
        }
        frame.value = spread;
        value_before = value;
        before = &frame;
    }
}

std::vector<CounterEvent> find_breaks(const std::vector<CountedFrame> &frames, const CounterRule &rule) {
    return Breaks(frames, rule).find();
}
