#include <gtest/gtest.h>

#include <algorithm>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

std::string chunk(const std::string &id, const std::string &payload) {
    ByteWriter w = little();
    w.text(id).u32(payload.size()).raw(payload);
    return w.zeros(payload.size() % 2).str();
}

std::string format(uint32_t rate = 48000, uint32_t channels = 2, uint32_t bits = 16, uint32_t block = 4) {
    return chunk("fmt ",
                 little().u16(1).u16(channels).u32(rate).u32(rate * block).u16(block).u16(bits).str());
}

std::string riff(const std::string &chunks, const std::string &type = "WAVE") {
    return little().text("RIFF").u32(4 + chunks.size()).text(type).raw(chunks).str();
}

}  // namespace

TEST(Riff, ChunksOfAWave) {
    Transcript transcript;
    SHOW(dump_of(riff(format() + chunk("LIST", "odd") + chunk("data", std::string(192000, 'x')) +
                      chunk("umid", "ab"))));
}

TEST(Riff, PlayLengths) {
    const auto length = [](uint32_t rate, uint32_t bytes) {
        const Workplace place;
        ByteWriter head = little();
        head.text("RIFF").u32(0x7FFFFFFF).text("WAVE").raw(format(rate)).text("data").u32(bytes);
        place.write_sparse("a.wav", 44 + uint64_t{bytes}, 0, head.str());
        return lines_from(place.run({"a.wav"}).out, "   Samples", 2);
    };
    EXPECT_EQ(length(1000, 14800000), "   Samples         3700000\n   Length          01:01:40.000\n");
    EXPECT_EQ(length(48000, 100000), "   Samples         25000\n   Length          00:00:00.520\n");
    EXPECT_EQ(length(0, 100000), "   Samples         25000\n   Length          00:00:00.000\n");
    EXPECT_EQ(length(1, 2147483647), "   Samples         536870911\n   Length          149130:48:31.750\n");
}

TEST(Riff, BroadcastWave) {
    Transcript transcript;
    const auto bext = [](const std::string &payload, uint32_t rate = 48000) {
        const std::string dump =
            dump_of(riff(format(rate) + chunk("bext", payload) + chunk("data", std::string(64, 'x'))));
        const std::string lines = lines_from(dump, "  Broadcast Wave\n");
        return lines.substr(0, lines.find(" Elem data"));
    };
    ByteWriter w = little();
    w.text("short", 64).text("long", 192).text("maker", 32).text("ref", 32).text("2026-01-02");
    w.text("03:04:05");
    w.u64(uint64_t{90061} * 48000 + 24000).u16(2).zeros(100);
    const std::string whole = w.str();
    SHOW(bext(whole));
    int lines = 1;
    for (const size_t longest : {64, 256, 288, 320, 330, 338, 342, 348}) {  // without the next line
        for (const size_t length : {longest, longest + 1}) {
            const std::string dump = bext(whole.substr(0, length));
            EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), length == longest ? lines : ++lines)
                << length;
        }
    }
    EXPECT_EQ(lines_from(bext(whole, 999), "   timer"), "");
    EXPECT_EQ(lines_from(bext(whole, 999), "   version"), "   version            2\n");
}

TEST(Riff, OtherChunks) {
    Transcript transcript;
    const std::string text = "<x>" + std::string(300, 'y');
    SHOW(lines_from(dump_of(riff(format() + chunk("iXML", text))), " Elem iXML"));
    const std::string cdxa =
        riff(format() + chunk("data", little().u32(1).u32(2).u32(3).str() + std::string(40, '\x10')), "CDXA");
    SHOW(lines_from(dump_of(cdxa), "  CDXA"));
}

TEST(Riff, Rf64) {
    Transcript transcript;
    ByteWriter sizes = little();
    sizes.u64(5'000'000'100).u64(5'000'000'000).u64(1'250'000'000);
    sizes.u32(3).text("levl").u64(77).text("cut ").u32(1);
    ByteWriter head = little();
    head.text("RF64").u32(0xFFFFFFFF).text("WAVE").raw(chunk("ds64", sizes.str())).raw(format());
    head.text("data").u32(0xFFFFFFFF);
    const Workplace place;
    place.write_sparse("a.wav", 5'000'000'108, 0, head.str());
    SHOW(lines_from(place.run({"a.wav"}).out, "Fileformat", 13));
    SHOW(lines_from(place.run({"a.wav"}).out, " Elem data", 4));
}

TEST(Riff, DamagedFiles) {
    Transcript transcript;
    EXPECT_EQ(dump_of(riff(format() + chunk("data", ""))), "Error: Scanning for formattag, read failed\n");
    const std::string good = riff(format() + chunk("data", std::string(100, 'x')) + chunk("end ", "ab"));
    SHOW(lines_from(dump_of(good.substr(0, good.size() - 1)), "   Length"));
    SHOW(lines_from(dump_of(good.substr(0, good.size() - 5)), "   Length"));
    SHOW(lines_from(dump_of(little().raw(good).at(40).u32(0xFFFFFFFF).str()), " Elem data", 3));
    SHOW(lines_from(dump_of(little().raw(good).at(40).u32(0x80000000).str()), "   Bits"));
    // Sizes that lead backwards are followed in the search for the format, but not in circles.
    const std::string back = chunk("junk", "12345678" + format().substr(8) + std::string(60, 'x'));
    SHOW(
        dump_of(little().raw(riff(back + back)).at(20).text("fmt ").at(12 + back.size() + 4).u32(-92).str()));
    SHOW(lines_from(dump_of(little().raw(riff(chunk("junk", std::string(80, 'x')))).at(16).u32(-9).str()),
                    "Fileformat:RIFF", 1));
    SHOW(dump_of(little().raw(riff(chunk("junk", std::string(80, 'x')))).at(16).u32(-100).str()));
}

TEST(Aiff, ChunksAndDamage) {
    Transcript transcript;
    const std::string common = big().text("COMM").u32(18).u16(2).u32(480).u16(24).zeros(10).str();
    const std::string sound = big().text("SSND").u32(16).u32(4).u32(0).zeros(8).str();
    const auto form = [](const std::string &body) {
        return big().text("FORM").u32(body.size()).raw(body).str();
    };
    SHOW(dump_of(
        form("AIFC" + big().text("NAME").u32(3).text("abc").u8(0).str() + common + sound + "tail1234")));
    SHOW(lines_from(dump_of(form("AIFF" + sound + common), "a", {"-a"}), "PTR", 2));
    SHOW(dump_of(form("AIFF" + common).substr(0, 30)));
    SHOW(lines_from(dump_of(form("AIFF" + common).substr(0, 29)), "Error"));
    SHOW(lines_from(dump_of(big().raw(form("AIFF" + common + sound)).at(42).u32(0xFFFFFFFF).str()),
                    " Elem SSND", 1));
}
