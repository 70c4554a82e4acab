// What is read of files, what is kept of it, and where their bytes end.
#include "common/input.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "support/command.h"
#include "support/printed.h"

namespace {

constexpr uint64_t kBlock = Input::kBlock;

struct File {
    Workplace place;
    std::string path = place.path("file");
    const char *name = path.c_str();

    File(uint64_t size, uint64_t offset, const std::string &content) {
        place.write_sparse("file", size, offset, content);
    }
    void cut(uint64_t size) const { std::filesystem::resize_file(path, size); }
};

// Bytes that tell their place.
std::string places(size_t n) {
    std::string bytes(n, '\0');
    for (size_t i = 0; i < n; i++) bytes[i] = static_cast<char>(i % 251);
    return bytes;
}

std::string text_of(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

uint64_t resident_bytes() {
    uint64_t total = 0;
    uint64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

TEST(Input, OneFieldOfAHugeFileCostsOneBlock) {
    const File file(5'000'000'000, 4'999'999'000, "needle");
    Input input(file.name);
    ASSERT_TRUE(input.open());
    EXPECT_TRUE(bytes_are(input.bytes(), 4'999'999'000, "needle"));
    EXPECT_LE(input.bytes_read(), kBlock);
    EXPECT_EQ(input.bytes()[0], 0);
    EXPECT_EQ(input.bytes()[5'000'000'000], 0);
    EXPECT_EQ(input.reads(), 2U);
}

TEST(Input, NumbersAndSpansAcrossRuns) {
    const std::string content = places(8 * kBlock);
    const File file(content.size(), 0, content);
    Input input(file.name);
    const Bytes all = input.bytes();
    for (const uint64_t block : {0, 5, 1, 6}) EXPECT_EQ(all[block * kBlock], block * kBlock % 251);
    EXPECT_EQ(all.big(kBlock - 3, 5), Bytes(content.data(), content.size()).big(kBlock - 3, 5));
    EXPECT_EQ(all.little(6 * kBlock - 1, 8), Bytes(content.data(), content.size()).little(6 * kBlock - 1, 8));
    // Two ranges over several runs are good at a time.
    const auto first = all.span(100, 2 * kBlock);
    const auto second = all.span(kBlock / 2, 7 * kBlock);
    EXPECT_EQ(text_of(first), content.substr(100, 2 * kBlock));
    EXPECT_EQ(text_of(second), content.substr(kBlock / 2, 7 * kBlock));
    EXPECT_EQ(text_of(all.span(7 * kBlock, 2 * kBlock)), content.substr(7 * kBlock));
    EXPECT_EQ(input.bytes_read(), content.size());

    Input other(file.name);
    const Bytes small = other.bytes(kBlock - 1, 600, 512);
    EXPECT_EQ(small[0], (kBlock - 1) % 251);
    EXPECT_EQ(other.bytes_read(), 512U);
    EXPECT_EQ(text_of(small.span(0, 1000)), content.substr(kBlock - 1, 600));
    EXPECT_EQ(other.reads(), 2U);
}

TEST(Input, SequentialUseReadsLargerRunsAndJumpsDoNot) {
    const File file(10'000'000, 0, "");
    Input input(file.name);
    const Bytes all = input.bytes();
    for (uint64_t i = 0; i < 1'000'000; i++) ASSERT_EQ(all[i], 0);
    const uint64_t sequential = input.bytes_read();
    EXPECT_EQ(sequential, (1 + 2 + 4 + 8 + 16 + 32 + 64 + 64 + 64) * kBlock);
    EXPECT_EQ(all[9'000'000], 0);
    EXPECT_EQ(input.bytes_read(), sequential + kBlock);
}

TEST(Input, GivesMemoryBack) {
    constexpr uint64_t kSize = 300 << 20;
    const File file(kSize, 0, "start");
    Input input(file.name);
    const Bytes all = input.bytes();
    const uint64_t before = resident_bytes();
    for (uint64_t i = 0; i < kSize; i += kBlock) ASSERT_EQ(all[i + 9], 0);
    EXPECT_LE(resident_bytes() - before, 96U << 20);
    const uint64_t read = input.bytes_read();
    EXPECT_EQ(read, kSize);
    EXPECT_EQ(all[kSize - (16 << 20)], 0);
    EXPECT_EQ(input.bytes_read(), read);  // what was read last is still there
    EXPECT_TRUE(bytes_are(all, 0, "start"));
}

TEST(Input, ThousandsOfPlacesInAnyOrder) {
    constexpr uint64_t kPlaces = 20'000;
    const std::string content = places(kPlaces * 1000);
    Input input("places", content.data(), content.size());
    const Bytes all = input.bytes(512);
    for (uint64_t i = 0; i < kPlaces; i++) {
        const uint64_t place = 1000 * (i * 7919 % kPlaces);
        ASSERT_EQ(all[place], static_cast<uint8_t>(content[place])) << i;
    }
    const uint64_t reads = input.reads();
    for (uint64_t i = kPlaces - 100; i < kPlaces; i++) ASSERT_NE(all[1000 * (i * 7919 % kPlaces)], 252);
    EXPECT_EQ(input.reads(), reads);  // those of late are still there
}

TEST(Input, WhatAFileLostSinceItsSizeWasTakenIsZeroAndBehindItsEnd) {
    const File file(20'000, 0, std::string(20'000, 'x'));
    Input input(file.name);
    const Bytes all = input.bytes();
    EXPECT_EQ(all[0], 'x');
    file.cut(10'000);
    EXPECT_EQ(input.end(), 20'000U);
    EXPECT_EQ(all[9'999], 'x');
    EXPECT_EQ(all[10'000], 0);
    EXPECT_EQ(all[19'999], 0);
    EXPECT_EQ(input.end(), 10'000U);
    EXPECT_EQ(input.size(), 20'000U);
    EXPECT_EQ(input.present(5'000, 10'000).size(), 5'000U);
    EXPECT_EQ(text_of(all.span(9'998, 4)), std::string("xx\0\0", 4));
}

TEST(Input, ReadErrorsAndImpossibleRanges) {
    Input directory("/");
    ASSERT_TRUE(directory.open());
    EXPECT_EQ(directory.size(), 0U);
    EXPECT_EQ(little64(directory.bytes(0, 100), 10), 0U);
    EXPECT_EQ(directory.end(), 0U);
    EXPECT_EQ(directory.bytes(UINT64_MAX - 10, 100)[50], 0);
    EXPECT_FALSE(directory.has_place(-1));
    Input missing("/nowhere/at/all");
    EXPECT_FALSE(missing.open(16));
    EXPECT_EQ(missing.bytes(5, 10)[0], 0);
    EXPECT_EQ(printed([] { EXPECT_FALSE(check_buffer(UINT64_MAX)); }), "malloc of buffer -1 failed\n");
}

TEST(Input, IsFoundByItsName) {
    const File file(3, 0, "abc");
    Input memory("memory", "xyz", 3);
    const NamedInput same("memory");
    EXPECT_EQ(&*same, &memory);
    {
        const NamedInput other(file.name);
        ASSERT_TRUE(other);
        EXPECT_EQ(text_of(other->bytes().span(0, 9)), "abc");
        EXPECT_EQ(Input::current(), &*other);
        EXPECT_FALSE(NamedInput("/nowhere/at/all"));
    }
    EXPECT_EQ(Input::current(), &memory);
    EXPECT_EQ(text_of(memory.bytes().span(0, 9)), "xyz");
    EXPECT_EQ(memory.end(), 3U);
}

TEST(Input, PipesAreKeptInAFileAndWhatThatCannotTakeInMemory) {
    const std::string content = places(3'000'000);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::thread writer([&] {
        for (size_t done = 0; done < content.size();) {
            const ssize_t n = write(ends[1], content.data() + done, content.size() - done);
            if (n <= 0) break;
            done += static_cast<size_t>(n);
        }
        close(ends[1]);
    });
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{1'000'001, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string name = "/dev/fd/" + std::to_string(ends[0]);
    Input input(name.c_str());
    EXPECT_TRUE(input.open(16));
    setrlimit(RLIMIT_FSIZE, &limit);
    writer.join();
    close(ends[0]);
    EXPECT_EQ(input.end(), content.size());
    EXPECT_EQ(text_of(input.bytes().span(999'000, 2'000)), content.substr(999'000, 2'000));
    EXPECT_EQ(text_of(input.present(0, 4'000'000).span(0, 4'000'000)), content);
}
