#include "common/read_ahead.h"

#include <gtest/gtest.h>

#include "support/command.h"

namespace {

constexpr uint64_t kFile = uint64_t{100} << 30;

// A reader on a link with a clock of its own: what was announced is there, anything else costs a round trip.
struct Reader {
    double round_trip;
    double bandwidth;
    LinkCost link{};
    ReadAhead ahead{kFile};
    std::vector<FileRange> here{};
    uint64_t bytes = 0;  // that crossed the link
    unsigned waits = 0;  // reads that waited a whole round trip

    void fetch(FileRange range) {
        here.push_back(range);
        bytes += range.size;
    }
    bool has(uint64_t offset) const {
        for (const FileRange &r : here) {
            if (offset >= r.offset && offset < r.end()) return true;
        }
        return false;
    }
    void read(uint64_t offset, uint64_t n) {
        if (link.is_slow()) {
            for (const FileRange &range : ahead.before_read(offset, n, link)) fetch(range);
        }
        const bool waits_for_it = !has(offset);
        if (waits_for_it) fetch({offset, n}), waits++;
        link.measured(n, waits_for_it ? round_trip + static_cast<double>(n) / bandwidth : 2e-6);
    }
};

}  // namespace

TEST(LinkCost, IsMeasured) {
    LinkCost link;
    link.measured(4096, 5e-6);  // from memory
    EXPECT_FALSE(link.is_slow());
    link.measured(4096, 5e-3);  // the link itself
    EXPECT_TRUE(link.is_slow());
    EXPECT_DOUBLE_EQ(link.round_trip(), 5e-3);
    for (int i = 0; i < 100; i++) link.measured(4096, 5e-6);  // what was announced before tells nothing
    EXPECT_DOUBLE_EQ(link.round_trip(), 5e-3);
    EXPECT_EQ(link.bytes_of_a_round_trip(), 1U << 20);  // nothing is known of the bandwidth: at most 1 MiB
    for (int i = 0; i < 50; i++) link.measured(1 << 20, 5e-3 + (1 << 20) / 2e7);
    EXPECT_NEAR(link.bandwidth(), 2e7, 1e5);
    EXPECT_NEAR(static_cast<double>(link.bytes_of_a_round_trip()), 1e5, 2e3);
}

TEST(LinkCost, ALargeReadMayComeFirst) {
    LinkCost memory, share;
    memory.measured(256 << 10, 60e-6);
    EXPECT_FALSE(memory.is_slow());
    share.measured(250'000, 2.25e-3);  // a link of 1 GB/s
    EXPECT_DOUBLE_EQ(share.round_trip(), 2e-3);
}

TEST(LinkCost, WhichMeasurementsCount) {
    LinkCost link;
    link.measured(1, 1e-6);
    EXPECT_EQ(link.bytes_of_a_round_trip(), 64U << 10);  // gaps below that are always read
    link.measured(64 << 10, 2e-3);  // far beyond what was seen in memory: the link itself
    EXPECT_DOUBLE_EQ(link.round_trip(), 2e-3);
    link.measured(64 << 10, 20e-3);  // a slow one counts a quarter
    EXPECT_DOUBLE_EQ(link.round_trip(), 6.5e-3);
    link.measured(1, 1.2e-3);  // too fast to have come over the link
    EXPECT_DOUBLE_EQ(link.round_trip(), 6.5e-3);
    link.measured(1, 1.4e-3);
    EXPECT_DOUBLE_EQ(link.round_trip(), 5.225e-3);
    link.measured((64 << 10) + 1, 6.225e-3);  // a large one tells the bandwidth
    EXPECT_DOUBLE_EQ(link.round_trip(), 5.225e-3);
    EXPECT_DOUBLE_EQ(link.bandwidth(), 0.75e9 + 0.25 * 65537 / (6.225e-3 / 4));
}

namespace {

// What is announced before each read of a walk over a link with a round trip of a millisecond.
std::string plans(const std::vector<FileRange> &reads, uint64_t file_size = kFile) {
    LinkCost link;
    link.measured(4096, 1e-3);
    ReadAhead ahead(file_size);
    std::string text;
    for (const FileRange &read : reads) {
        text += std::to_string(read.offset) + "+" + std::to_string(read.size) + ":";
        for (const FileRange &range : ahead.before_read(read.offset, read.size, link))
            text += " " + std::to_string(range.offset) + "+" + std::to_string(range.size);
        text += "\n";
    }
    return text;
}

}  // namespace

TEST(ReadAhead, Plans) {
    Transcript transcript;
    std::vector<FileRange> reads;
    for (uint64_t i = 0; i < 24; i++) reads.push_back({i * 90'001 + i * i, 512});
    SHOW(plans(reads));
    SHOW(plans(reads, 1'700'000));
    SHOW(plans({{0, 512}, {256, 256}, {300, 256}}));
    SHOW(plans({{0, 512}, {1'000'512, 512}, {2'001'025, 512}, {2'000'000, 512}, {2'001'000, 1 << 18}}));
    reads.clear();
    for (uint64_t i = 0; i < 5; i++) {
        const uint64_t frame = i * 20'000'000;
        for (const uint64_t part : {0, 512, 70'000, 8'000'000})
            reads.push_back({frame + part, 512 + part / 1000});
    }
    reads.push_back({100'000'001, 512});
    SHOW(plans(reads));
    SHOW(plans(reads, 101'000'000));
}

TEST(ReadAhead, NothingIsAnnouncedOnAFastLink) {
    Reader reader{2e-6, 1e10};
    for (uint64_t at = 0; at < 1 << 24; at += 4096) reader.read(at, 512);
    EXPECT_EQ(reader.bytes, 512U * 4096);
}

TEST(ReadAhead, StepsThatRepeatSkipTheirGaps) {
    Reader reader{1e-3, 1e9};
    const auto frames = [&](uint64_t from, uint64_t count, uint64_t step) {
        for (uint64_t i = 0; i < count; i++) {
            for (uint64_t part = 0; part < 3; part++) reader.read(from + i * step + part * 6000, 512);
        }
        return from + count * step;
    };
    const uint64_t behind = frames(0, 1000, 12'000'000);
    EXPECT_LT(reader.waits, 10U);
    EXPECT_LT(reader.bytes, 1000U * 30'000);
    // The pattern breaks and another one is found; what was guessed is all that is lost.
    reader.waits = 0, reader.bytes = 0;
    frames(behind + 777, 1000, 9'000'000);
    EXPECT_LT(reader.waits, 10U);
    EXPECT_LT(reader.bytes, 1000U * 30'000);
}

TEST(ReadAhead, StreamsAndCheapGapsAreReadThrough) {
    Reader reader{1e-3, 1e9};
    uint64_t at = 0;
    for (uint64_t i = 0; i < 2000; i++, at += 100'000 + i * 7919 % 200'000) reader.read(at, 512);
    EXPECT_LT(reader.waits, 10U);
    EXPECT_LT(reader.bytes, at + (4U << 20));
    // A jump costs one round trip, and not much more than what is read there.
    reader.waits = 0, reader.bytes = 0;
    reader.read(kFile - (64 << 10), 4096);
    EXPECT_LE(reader.waits, 1U);
    EXPECT_LE(reader.bytes, 64U << 10);
    // Sizes from 1 MiB on are dearer read than skipped.
    reader.bytes = 0;
    for (uint64_t i = 0; i < 100; i++) reader.read(i * i * 4'000'003, 512);
    EXPECT_LT(reader.bytes, 100U * (200 << 10));
}

TEST(ReadAhead, SmallFilesAreAnnouncedWhole) {
    LinkCost link;
    link.measured(4096, 1e-3);
    ReadAhead ahead(700'000);
    const auto plan = ahead.before_read(650'000, 10, link);
    ASSERT_EQ(plan.size(), 1U);
    EXPECT_EQ(plan[0], (FileRange{0, 700'000}));
    EXPECT_TRUE(ahead.before_read(10, 10, link).empty());
}
