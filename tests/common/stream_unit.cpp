#include "common/stream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "common/input.h"
#include "common/line_buffer.h"
#include "common/print.h"

namespace {

using Ranges = std::vector<FileRange>;

// What was told of each line.
struct Heard : Listener {
    std::vector<Ranges> at;
    std::vector<std::string> values;  // of each line, in brackets

    void line(const Line &line) override {
        at.emplace_back(line.at.begin(), line.at.end());
        std::string found;
        for (const Piece &piece : line.pieces) {
            if (piece.kind == Piece::literal) continue;
            found += "[" + std::string(line.text.substr(piece.start, piece.size)) + "]";
        }
        values.push_back(found);
    }
};

const std::string kSixtyFour(64, 'x');

TEST(Stream, BytesThatALineIsMadeOf) {
    Heard heard;
    const Listening listening_to(&heard);
    Input input("", kSixtyFour.data(), kSixtyFour.size());
    const Bytes bytes = input.bytes();
    print("looked at %c%c\n", bytes[3], bytes[2]);
    (void)bytes[9];
    forget();
    also(FileRange{20, 2});
    from(bytes.sub(10, 4));
    print("from and also %c\n", bytes[1]);
    (void)bytes[40];
    print("no more\n");
    EXPECT_EQ(heard.at, (std::vector<Ranges>{{{2, 2}}, {{10, 4}, {20, 2}}, {{40, 1}}}));
}

TEST(Stream, BytesOfACopy) {
    Heard heard;
    const Listening listening_to(&heard);
    Input input("", kSixtyFour.data(), 8);
    const Bytes copy = input.bytes();
    {
        const Ranges parts = {{100, 3}, {50, 4}, {200, 1}};
        const Copied copied(parts);
        print("%c\n", copy[0]);
        from(copy.sub(2, 3));
        print("over two parts\n");
        from(copy.sub(1, 7));
        print("over three\n");
    }
    from(copy.sub(2, 3));
    print("no copy\n");
    EXPECT_EQ(heard.at, (std::vector<Ranges>{
                            {{100, 1}}, {{50, 2}, {102, 1}}, {{50, 4}, {101, 2}, {200, 1}}, {{2, 3}}}));
}

TEST(Stream, TextWithoutPiecesIsTheFiles) {
    Heard heard;
    const Listening listening_to(&heard);
    LineBuffer out;
    out.literal("a ");
    out.text("5 : b");
    out.literal(" c");
    out.put('\n');
    out.end_line();
    out.text("all");
    out.end_line();
    EXPECT_EQ(heard.values, (std::vector<std::string>{"[5 : b][\n]", "[all]"}));
}

#define EXPECT_PRINTS(...)                                                   \
    do {                                                                     \
        char expected[256];                                                  \
        std::snprintf(expected, sizeof expected, __VA_ARGS__);               \
        standard_output.drop();                                              \
        print(__VA_ARGS__);                                                  \
        EXPECT_EQ(standard_output.held(), expected) << "without a listener"; \
        standard_output.drop();                                              \
        Heard heard;                                                         \
        std::string text;                                                    \
        {                                                                    \
            const Listening listening_to(&heard);                            \
            print(__VA_ARGS__);                                              \
            text = standard_output.held();                                   \
            standard_output.drop();                                          \
        }                                                                    \
        EXPECT_EQ(text, expected) << "heard";                                \
    } while (false)

// What print does itself, and where it hands over to the standard library, gives what printf gives.
TEST(Print, PrintsAsPrintfDoes) {
    constexpr long long kLeast = INT64_MIN;
    EXPECT_PRINTS("plain");
    EXPECT_PRINTS("%d %d %d %d|%4d|%2d|%-4d|%04d|%+d", 0, -1, INT32_MAX, INT32_MIN, -12, -123, 5, -7, 3);
    EXPECT_PRINTS("%lld|%lld|%12lld|%02lld|%ld", kLeast, -(kLeast / 3), -5LL, 7LL, -9L);
    EXPECT_PRINTS("%u|%4u|%03u|%lu|%zu|%-9u|", UINT32_MAX, 7U, 7U, 8UL, size_t{9}, 4U);
    EXPECT_PRINTS("%x|%02x|%08x|%5x|%016llx|%16llx|%llx", 0U, 0x1FFU, 0xABCDU, 0xFU, 1ULL, ~0ULL, 0ULL);
    EXPECT_PRINTS("%X|%02X|%08lX|%0*x|%*s|%.*s|%4.4s|%-18.*s|", 0xABU, 1U, 2UL, 4, 5U, 4, "ab", 2, "abc",
                  "abcde", 1, "xyz");
    EXPECT_PRINTS("%c%s%s|%5s|%% %g %1.5f %f %06.2f", 'x', "text", "", "pad", 0.1, 2.5, -1e9, 3.14159);
    EXPECT_PRINTS("%s %c% d %s", "before", 'c', 5, "after what is handed over");
}

}  // namespace
