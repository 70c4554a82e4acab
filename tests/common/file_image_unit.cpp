#include "common/file_image.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "common/file_access.h"
#include "support/command.h"

namespace {

struct File {
    Workplace place;
    int fd = -1;

    File(uint64_t size, uint64_t offset, const std::string &content) {
        place.write_sparse("file", size, offset, content);
        fd = open(place.path("file").c_str(), O_RDWR);
    }
    ~File() { close(fd); }
};

}  // namespace

TEST(FileImage, OneFieldOfAHugeFileCostsOneBlock) {
    const File file(5'000'000'000, 4'999'999'000, "needle");
    FileImage image(file.fd, 0, file_size(file.fd));
    ASSERT_TRUE(image.ok());
    EXPECT_TRUE(bytes_are(image.bytes(), 4'999'999'000, "needle"));
    EXPECT_LE(image.bytes_read(), 2 * FileImage::kBlock);
    EXPECT_EQ(image.bytes()[0], 0);
    EXPECT_EQ(image.bytes()[5'000'000'000], 0);
}

TEST(FileImage, NumbersAndSpansAcrossBlockBorders) {
    const File file(3 * FileImage::kBlock, FileImage::kBlock - 2, "\x01\x02\x03\x04");
    FileImage image(file.fd, 0, file_size(file.fd));
    EXPECT_EQ(big32(image.bytes(), FileImage::kBlock - 2), 0x01020304U);
    FileImage small(file.fd, FileImage::kBlock - 1, 600, 512);
    EXPECT_EQ(small.bytes()[0], 2);
    EXPECT_EQ(small.bytes_read(), 512U);
    EXPECT_EQ(small.bytes().span(0, 1000).size(), 600U);
    EXPECT_EQ(small.bytes_read(), 600U);
}

TEST(FileImage, SequentialUseReadsLargerRunsAndJumpsDoNot) {
    const File file(10'000'000, 0, "");
    FileImage image(file.fd, 0, file_size(file.fd));
    for (uint64_t i = 0; i < 1'000'000; i++) ASSERT_EQ(image.bytes()[i], 0);
    const uint64_t sequential = image.bytes_read();
    EXPECT_EQ(sequential, (1 + 2 + 4 + 8 + 16 + 32 + 64 + 64 + 64) * FileImage::kBlock);
    EXPECT_EQ(image.bytes()[9'000'000], 0);
    EXPECT_EQ(image.bytes_read(), sequential + FileImage::kBlock);
}

TEST(FileImage, GivesMemoryBack) {
    constexpr uint64_t kSize = 200 << 20;
    const File file(kSize, 0, "start");
    FileImage image(file.fd, 0, kSize);
    const auto resident = [&] {
        const uint8_t *const start = image.bytes().span(0, 1).data();
        std::vector<unsigned char> pages(kSize >> 12);
        mincore(const_cast<uint8_t *>(start), kSize, pages.data());
        return std::count(pages.begin(), pages.end(), 1);
    };
    for (uint64_t i = 0; i < kSize; i += FileImage::kBlock) ASSERT_EQ(image.bytes()[i + 9], 0);
    EXPECT_LE(resident(), (64 << 20 >> 12) + 1);
    const uint64_t before = image.bytes_read();
    EXPECT_EQ(image.bytes()[kSize - 1], 0);
    EXPECT_EQ(image.bytes_read(), before);  // what was read last is still there
    EXPECT_TRUE(bytes_are(image.bytes(), 0, "start"));
}

TEST(FileImage, WhatAFileLostSinceItsSizeWasTakenIsZero) {
    const File file(20'000, 0, std::string(20'000, 'x'));
    FileImage image(file.fd, 0, file_size(file.fd));
    EXPECT_EQ(image.bytes()[0], 'x');
    ASSERT_EQ(ftruncate(file.fd, 10'000), 0);
    EXPECT_EQ(image.bytes()[9'999], 'x');
    EXPECT_EQ(image.bytes()[10'000], 0);
    EXPECT_EQ(image.bytes()[19'999], 0);
    image.move_to(5'000);
    EXPECT_EQ(image.bytes()[4'999], 'x');
    EXPECT_EQ(image.bytes()[5'000], 0);
}

TEST(FileImage, ReadErrorsAndImpossibleRanges) {
    const int directory = open("/", O_RDONLY);
    EXPECT_EQ(file_size(directory), 0U);
    FileImage image(directory, 0, 100);
    EXPECT_EQ(little64(image.bytes(), 10), 0U);
    FileImage beyond(directory, UINT64_MAX - 10, 100);
    EXPECT_EQ(beyond.bytes()[50], 0);
    FileImage too_large(directory, 0, UINT64_MAX);
    EXPECT_FALSE(too_large.ok());
    EXPECT_EQ(too_large.bytes()[5], 0);
    close(directory);
}
