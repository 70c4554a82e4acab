#include "common/stream.h"

#include <gtest/gtest.h>

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

const std::string kFile(64, 'x');

TEST(Stream, BytesThatALineIsMadeOf) {
    Heard heard;
    const Listening listening_to(&heard);
    Input input("", kFile.data(), kFile.size());
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
    Input input("", kFile.data(), 8);
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

}  // namespace
