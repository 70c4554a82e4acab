// What every walk over a file has to keep: it makes no read a piece, and ends where the bytes end.
#include <gtest/gtest.h>

#include <filesystem>

#include "common/input.h"
#include "common/run.h"
#include "main/file_sequence.h"
#include "support/bytes_of.h"
#include "support/command.h"
#include "support/printed.h"

namespace {

constexpr uint64_t kWhole = 1'200'000;

// A file of a head and pieces up to kWhole, and how it is dumped.
struct Walk {
    const char *name;
    std::string head;
    std::string piece;
    void (*choose)(DumpOptions &opts) = [](DumpOptions &) {};
    const char *asked = "";  // printed because of the size that was asked before

    std::string content() const {
        std::string bytes = head;
        while (bytes.size() < kWhole) bytes += piece;
        return bytes;
    }
    std::string dump(Input &input) const {
        DumpOptions opts{};
        choose(opts);
        const Run run;
        return printed([&] { dump_input(opts, input, 0); });
    }
};

std::string chunk(const std::string &type, uint32_t size, size_t n) {
    return big().u32(size).text(type).fill('.', n).str();
}

std::vector<Walk> walks() {
    const std::string zeros(12, '\0');
    const std::string wave = little().text("RIFF").u32(kWhole - 1000).text("WAVE").str();
    const std::string format = little().text("fmt ").u32(16).u16(1, 2).u32(48000).zeros(4).u16(6).str();
    const std::string riff = wave + format + little().u16(24).zeros(40).str();
    const std::string data = wave + format + little().u16(24).text("data").u32(kWhole - 2000).str();
    const std::string aiff = big().text("FORM").u32(250'000).text("AIFFCOMM").u32(18).zeros(18).str();
    const std::string png = big().text("\x89PNG\r\n\x1A\n").str() + chunk("IHDR", 13, 17);
    const std::string packet = big().u32(0).u8(1, 0xBF).u32(32, 0).u16(0xE1E2).fill(3, 16).str();
    const std::string filler = big().hex("060E2B34 01010102 03010210 01000000").u8(1, 'x').str();
    const std::string ts = big().hex("47010010").fill('p', 184).str();
    const std::string adapted = big().hex("47010030 B000").fill('p', 182).str();
    return {
        {"zeros.png", png, zeros},
        {"chunks.png", png, chunk("tEXt", 50, 54)},
        {"data.png", png + big().u32(kWhole - 1000).text("tEXt").str(), "data",
         [](DumpOptions &o) { o.verbose = 1; }},
        {"zeros.mov", chunk("ftyp", 20, 12), zeros},
        {"atoms.mov", chunk("ftyp", 20, 12), chunk("free", 24, 16)},
        {"table.mov", chunk("moov", kWhole, 0) + chunk("stco", kWhole - 1000, 4) + big().u32(250'000).str(),
         zeros},
        {"zeros.wav", riff, zeros},
        {"scan.wav", wave, zeros},
        {"chunks.wav", riff, little().text("junk").u32(50).fill('.', 50).str()},
        {"samples.wav", data, "sample", [](DumpOptions &o) { o.flag_a = 1; }},
        {"zeros.aif", aiff, zeros},
        {"packets.gxf", packet, packet},
        {"padding.r3d", chunk("RED1", 100, 92), chunk("RPAD", 16, 8)},
        {"frames.r3d", chunk("RED2", 4096, 4088), chunk("RDI.", 4096, 4088)},
        {"fillers.mxf", filler, filler},
        {"packets.ts", ts, ts},
        {"adapted.ts", ts + ts + ts + ts, adapted},
        {"hexadecimal", "", "data", [](DumpOptions &o) { o.hex_dump = 1, o.hex_length = 2'000'000; }},
        {"text", "", "data", [](DumpOptions &o) { o.file_dump = 1; }, "Max filesize set to 0x100000\n"},
        {"strings", "", "strings ", [](DumpOptions &o) { o.string_search = 1; }},
    };
}

}  // namespace

TEST(Walks, ReadLargePiecesAndEndWhereTheBytesEnd) {
    for (const Walk &walk : walks()) {
        const std::string content = walk.content();
        const Workplace place;
        const std::string path = place.path(walk.name);
        place.write(walk.name, content);
        Input whole(path.c_str());
        EXPECT_FALSE(walk.dump(whole).empty());
        EXPECT_LE(whole.reads(), kWhole / (64 << 10) + 16) << walk.name;
        for (const size_t size : {300'000, 1 << 18}) {
            place.write(walk.name, content);
            Input cut(path.c_str());
            EXPECT_EQ(cut.size(), content.size());
            std::filesystem::resize_file(path, size);
            const std::string dump = walk.dump(cut);
            Input input(path.c_str());
            EXPECT_TRUE(dump == walk.asked + walk.dump(input)) << walk.name << " of " << size << " bytes";
        }
    }
}

// Of a piece of 64 KiB a walk reads its header, and what of it is looked at.
TEST(Walks, WhatIsSkippedIsNotRead) {
    constexpr uint32_t kPiece = 64 << 10;
    const std::string frame = chunk("RDI.", kPiece, kPiece - 8);
    const std::string packet = big().u32(0).u8(1, 0xBF).u32(kPiece, 0).u16(0xE1E2).fill(3, kPiece - 16).str();
    const std::string picture =
        big().hex("060E2B34 01020101 0D010301 15010501 83010000").fill('.', kPiece).str();
    const std::string junk = little().text("junk").u32(kPiece).fill('.', kPiece).str();
    const Walk walks[] = {
        {"frames.r3d", chunk("RED2", 4096, 4088), frame},
        {"frames.r3d", chunk("RED2", 4096, 4088), frame, [](DumpOptions &o) { o.verbose = 1; }},
        {"packets.gxf", packet, packet},
        {"pictures.mxf", picture, picture},
        {"atoms.mov", chunk("ftyp", 20, 12), chunk("free", kPiece, kPiece - 8)},
        {"chunks.wav", little().text("RIFF").u32(kWhole).text("WAVE").str(), junk},
    };
    for (const Walk &walk : walks) {
        const std::string content = walk.content();
        Input input(walk.name, content.data(), content.size());
        walk.dump(input);
        EXPECT_LE(input.bytes_read(), 32'768 + content.size() / kPiece * Input::kBlock) << walk.name;
    }
}
