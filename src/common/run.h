// What a run knows from one file to the next.
#pragma once

#include <cstddef>

// One record of states, each made at its first use: the print ring, what was learnt of tags and sets,
// counters. A frame range is one run over its files; two dumps that are to know nothing of each other are two
// runs. Agreed interfaces have no room for the record, so that the current one is found from anywhere: one
// run at a time in a process.
class Run {
 public:
    Run();
    ~Run();
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    // The state of a type in the current run.
    template <typename T>
    static T &state() {
        static const size_t slot = new_slot();
        Slot &found = current().slots_[slot];
        if (!found.state) found = {new T, [](void *state) { delete static_cast<T *>(state); }};
        return *static_cast<T *>(found.state);
    }

 private:
    struct Slot {
        void *state = nullptr;
        void (*destroy)(void *) = nullptr;
    };

    static constexpr size_t kSlots = 16;

    static Run &current();
    static size_t new_slot();

    Run *outer_;  // that was current before
    Slot slots_[kSlots];
};
