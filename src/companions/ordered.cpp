#include "companions/ordered.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "companions/command.h"

namespace {

constexpr size_t kAhead = 1 << 20;
constexpr size_t kKept = 64 << 20;
constexpr size_t kFilesAhead = 4096;

class OrderedOutput {
 public:
    explicit OrderedOutput(size_t count) : count_(count) {}

    // The next index to work on; false when there is none.
    bool take(size_t &index) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return next_ == count_ || may_start(); });
        if (next_ == count_) return false;
        index = next_++;
        slots_.emplace_back();
        return true;
    }

    void add(size_t index, std::string_view text) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return index == head_ || slot(index).text.size() < kAhead; });
        if (index == head_) {
            // Nobody else writes now: only the head's owner does, and it is here.
            const std::string before = release(slot(index));
            lock.unlock();
            write_out(before);
            write_out(text);
        } else {
            slot(index).text += text;
            kept_ += text.size();
        }
    }

    void finish(size_t index) {
        std::unique_lock lock(mutex_);
        slot(index).finished = true;
        if (index != head_) return;
        while (!slots_.empty() && slots_.front().finished) {
            const std::string text = release(slots_.front());
            // The head moves on after its text is out.
            lock.unlock();
            write_out(text);
            lock.lock();
            slots_.pop_front();
            head_++;
        }
        changed_.notify_all();
    }

 private:
    struct Slot {
        std::string text;
        bool finished = false;
    };

    Slot &slot(size_t index) { return slots_[index - head_]; }
    bool may_start() const { return next_ == head_ || (kept_ < kKept && next_ - head_ < kFilesAhead); }

    std::string release(Slot &slot) {
        kept_ -= slot.text.size();
        return std::exchange(slot.text, {});
    }

    const size_t count_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Slot> slots_;  // from head_ to next_
    size_t head_ = 0;
    size_t next_ = 0;
    size_t kept_ = 0;
};

}  // namespace

void run_in_order(size_t count, unsigned jobs, const std::function<void(size_t, const OutputTaker &)> &work) {
    OrderedOutput output(count);
    const auto run = [&] {
        for (size_t index = 0; output.take(index);) {
            work(index, [&](std::string_view text) { output.add(index, text); });
            output.finish(index);
        }
    };
    std::vector<std::thread> threads;
    try {
        for (size_t i = 1; i < std::min<size_t>(jobs, count); i++) threads.emplace_back(run);
    } catch (const std::system_error &) {
        // The system gives no more threads: those there are do the work.
    }
    run();
    for (std::thread &thread : threads) thread.join();
}
