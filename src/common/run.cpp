#include "common/run.h"

#include <cstdlib>

namespace {

Run *current_run = nullptr;

}  // namespace

Run::Run() : outer_(current_run) { current_run = this; }

Run::~Run() {
    for (const Slot &slot : slots_) {
        if (slot.state) slot.destroy(slot.state);
    }
    current_run = outer_;
}

// What calls a dump without a run has one that lasts.
Run &Run::current() {
    if (!current_run) static Run lasting;
    return *current_run;
}

size_t Run::new_slot() {
    static size_t next = 0;
    if (next == kSlots) std::abort();
    return next++;
}
