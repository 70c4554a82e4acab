// Where a value that goes on from frame to frame does not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct CountedFrame {
    int64_t number;                // of the frame
    std::optional<int64_t> value;  // nothing where none is set, or none can be told
};

struct CounterRule {
    int64_t step = 1;     // of the value
    int64_t modulus = 0;  // after which values begin anew; 0: never
};

struct CounterEvent {
    enum Kind {
        jump,      // the value goes on from another one from here on
        alone,     // this frame's only
        repeated,  // this frame's only, and it is that of its neighbour `other`
        swapped,   // this frame has the value of `last`, and that this one's
        stands,    // from frame `first` to `last` the value is that of the frame before
        reversed,  // it runs the other way from `first` to `last`
        holds,     // `held` of every `other` frames have the value of the frame before
    } kind;
    size_t first;  // places in the list of frames
    size_t last;
    size_t before = 0;  // the frame before `first` that has a value
    size_t other = 0;
    int64_t expected = 0;  // at `first`
    size_t held = 0;
};

// Where `share` successive frames have one value: makes it count with each of them, by `share` times as much,
// so that a value divided by `share` is the frame's again.
void spread(std::vector<CountedFrame> &frames, int64_t share, int64_t step);

std::vector<CounterEvent> find_breaks(const std::vector<CountedFrame> &frames, const CounterRule &rule);
