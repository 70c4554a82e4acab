#include "common/read_ahead.h"

#include <algorithm>

namespace {

constexpr uint64_t kSmallRead = 64 << 10;    // bytes up to which a read's time is the round trip's
constexpr uint64_t kLeastBridge = 64 << 10;  // gaps below are always read
constexpr uint64_t kMostBridge = 1 << 20;    // and gaps above never, whatever was measured
constexpr double kWeight = 0.25;             // of a new measurement
constexpr double kArrived = 0.2;    // of a round trip: data that came faster was in memory and tells nothing
constexpr double kFirstSight = 10;  // times what was measured in memory: the link itself

double blended(double old, double sample) { return old + kWeight * (sample - old); }

}  // namespace

void LinkCost::measured(uint64_t bytes, double seconds) {
    if (seconds < kArrived * round_trip_) return;
    if (bytes <= kSmallRead) {
        round_trip_ = seconds > kFirstSight * round_trip_ ? seconds : blended(round_trip_, seconds);
    } else if (round_trip_ > 0) {
        const double transfer = std::max(seconds - round_trip_, seconds / 4);
        bandwidth_ = blended(bandwidth_, static_cast<double>(bytes) / transfer);
    } else {
        round_trip_ = std::max(0.0, seconds - static_cast<double>(bytes) / bandwidth_);
    }
}

uint64_t LinkCost::bytes_of_a_round_trip() const {
    return std::clamp(static_cast<uint64_t>(round_trip_ * bandwidth_), kLeastBridge, kMostBridge);
}

std::span<const FileRange> ReadAhead::before_read(uint64_t offset, uint64_t n, const LinkCost &link) {
    plan_.clear();
    if (whole_announced_ || n == 0 || offset >= file_size_) return plan_;
    if (file_size_ <= kSmallFile) {
        announce(0, file_size_);
        whole_announced_ = true;
        return plan_;
    }
    const FileRange read{offset, std::min(n, file_size_ - offset)};
    const bool inside =
        !places_.empty() && offset >= places_.back().offset && offset <= places_.back().end() + kNear;
    if (inside) {
        FileRange &place = places_.back();
        place.size = std::max(place.end(), read.end()) - place.offset;
    } else {
        enter(read);
    }
    if (expected_.empty()) extend_stream(read, link.bytes_of_a_round_trip());
    return plan_;
}

// A new place: the one that was expected, or the end of a pattern.
void ReadAhead::enter(FileRange place) {
    places_.push_back(place);
    if (places_.size() > kPlacesKept) places_.pop_front();
    if (!expected_.empty() && expected_.front().offset == place.offset) {
        // Once more, in one request, should the system have dropped it.
        announce(place.offset, std::max(expected_.front().end(), place.end()));
        expected_.pop_front();
    } else {
        expected_.clear();
    }
    extend_pattern();
}

// The number of places after which the distances repeat; 0 where they do not.
size_t ReadAhead::period() const {
    const size_t n = places_.size();
    const auto repeats = [&](size_t i, size_t k) {
        return places_[i].offset > places_[i - 1].offset && places_[i - 1].size <= kLargestPlace &&
               places_[i].offset - places_[i - 1].offset == places_[i - k].offset - places_[i - k - 1].offset;
    };
    for (size_t k = 1; k <= kLongestPeriod && n >= 2 * k + 2; k++) {
        size_t i = n - 1;
        while (i >= n - std::max<size_t>(k, 2) && repeats(i, k)) i--;
        if (i < n - std::max<size_t>(k, 2)) return k;
    }
    return 0;
}

// Announces the places that a pattern leads to, each as long as the one a period before it.
void ReadAhead::extend_pattern() {
    const size_t k = period();
    if (k == 0) {
        expected_.clear();
        return;
    }
    const size_t last = places_.size() - 1;
    const uint64_t cycle = places_[last].offset - places_[last - k].offset;
    while (expected_.size() < kPlacesAhead) {
        const size_t steps = expected_.size();  // beyond the next place
        const FileRange &model = places_[last - k + steps % k + 1];
        // The current place is still growing.
        const uint64_t size = steps % k + 1 == k ? places_[last - k].size : model.size;
        const FileRange next{model.offset + cycle * (1 + steps / k), size};
        if (next.offset >= file_size_) break;
        announce(next.offset, next.end());
        expected_.push_back(next);
    }
}

// Announces what follows a read that goes on where others ended, or where the gap is cheaper read than
// skipped.
void ReadAhead::extend_stream(FileRange read, uint64_t bridge) {
    const bool goes_on =
        read.offset >= stream_.offset && read.offset <= stream_.end() + bridge && stream_.size > 0;
    if (goes_on) {
        stream_.size = std::max(stream_.end(), read.end()) - stream_.offset;
    } else {
        stream_ = read;
        depth_ = kFirstDepth;
        announced_to_ = read.offset;
    }
    const uint64_t wanted = read.end() + depth_;
    if (wanted < announced_to_ + depth_ / 2) return;
    announce(std::max(announced_to_, read.offset), wanted);
    announced_to_ = wanted;
    depth_ = std::min(depth_ * 2, kDeepest);
}

void ReadAhead::announce(uint64_t offset, uint64_t end) {
    end = std::min(end, file_size_);
    if (offset < end) plan_.push_back({offset, end - offset});
}
