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
    return chunk("fmt ", little().u16(1, channels).u32(rate, rate * block).u16(block, bits).str());
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
    EXPECT_NE(lines_from(bext(whole, 1000), "   timer"), "");
    EXPECT_EQ(lines_from(bext(whole, 999), "   version"), "   version            2\n");
}

TEST(Riff, OtherChunks) {
    Transcript transcript;
    const std::string text = "<x>" + std::string(300, 'y');
    SHOW(lines_from(dump_of(riff(format() + chunk("iXML", text))), " Elem iXML"));
    const std::string cdxa =
        riff(format() + chunk("data", little().u32(1, 2, 3).str() + std::string(40, '\x10')), "CDXA");
    SHOW(lines_from(dump_of(cdxa), "  CDXA"));
}

TEST(Riff, Rf64) {
    Transcript transcript;
    ByteWriter sizes = little();
    sizes.u64(5'000'000'100, 5'000'000'000, 1'250'000'000);
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

// A chunk begins below the RIFF's size, whose header is whole, of whose payload 65528 bytes are there.
TEST(Riff, EdgesOfChunks) {
    const std::string good = riff(format() + chunk("data", std::string(100, 'x')));
    const auto last = [&](uint32_t beyond, const std::string &tail) {
        const std::string dump = dump_of(little().raw(good + tail).at(4).u32(good.size() + beyond).str());
        return dump.substr(dump.find('\n', dump.find("   Length ")) + 1);
    };
    const std::string listed = " Elem junk length 0 (offset:              90)\n  Unknown\n";
    const std::string empty = little().text("junk").u32(0).str();
    EXPECT_EQ(last(0, empty), "");
    EXPECT_EQ(last(1, empty), listed);
    EXPECT_EQ(last(1, empty.substr(0, 7)), "Error: read failed\n");
    EXPECT_EQ(last(1, little().text("junk").u32(-1U).zeros(9).str()), "Error: read failed 65536 @ 144\n");
    const std::string long_chunk = little().text("junk").u32(70000).zeros(65536 - 8).str();
    EXPECT_EQ(last(9, long_chunk), " Elem junk length 70000 (offset:              90)\n  Unknown\n");
    EXPECT_EQ(last(9, long_chunk.substr(0, 65535)), "Error: read failed 65536 @ 144\n");
    // The search for the format wants 64 bytes.
    const std::string shortest = riff(format() + chunk("data", std::string(64 - 24 - 8, 'x')));
    EXPECT_NE(lines_from(dump_of(shortest), "   Length"), "");
    EXPECT_EQ(dump_of(shortest.substr(0, shortest.size() - 1)),
              "Error: Scanning for formattag, read failed\n");
    for (const auto &[count, bytes, shown] : {std::tuple{1, 24, 1}, {2, 23, 1}, {2, 24, 2}}) {
        const std::string sizes =
            little().zeros(24).u32(static_cast<uint32_t>(count)).zeros(static_cast<size_t>(bytes)).str();
        const std::string dump = dump_of(
            little().text("RF64").u32(200).text("WAVE").raw(chunk("ds64", sizes) + format()).zeros(80).str());
        const std::string table = lines_from(dump, "    Elem");
        EXPECT_EQ(std::count(table.begin(),
                             table.begin() + static_cast<std::ptrdiff_t>(table.find(" Elem fmt")), '\n'),
                  2 * shown)
            << bytes;
    }
}

TEST(Riff, TheRateIsLookedForBelowTheSize) {
    const std::string start = chunk("bext", std::string(344, '\1'));
    for (const uint32_t beyond : {0, 1}) {
        const std::string file = riff(start + format() + std::string(64, 'x'));
        const std::string dump = dump_of(little().raw(file).at(4).u32(12 + start.size() + beyond).str());
        EXPECT_EQ(!lines_from(dump, "   timerreference").empty(), beyond == 1);
    }
}

TEST(Aiff, ChunksAndDamage) {
    Transcript transcript;
    const std::string common = big().text("COMM").u32(18).u16(2).u32(480).u16(24).zeros(10).str();
    const std::string sound = big().text("SSND").u32(16, 4, 0).zeros(8).str();
    const auto form = [](const std::string &body) {
        return big().text("FORM").u32(body.size()).raw(body).str();
    };
    SHOW(dump_of(
        form("AIFC" + big().text("NAME").u32(3).text("abc").u8(0).str() + common + sound + "tail1234")));
    SHOW(lines_from(dump_of(form("AIFF" + sound + common), "a", {"-a"}), "PTR", 2));
    SHOW(dump_of(form("AIFF" + common).substr(0, 30)));
    SHOW(lines_from(dump_of(form("AIFF" + common).substr(0, 29)), "Error"));
    // What is looked at ends with the size of the form, counted from the file's first byte.
    const std::string last = common + big().text("last").u32(0).str();
    EXPECT_EQ(lines_from(dump_of(form("AIFF" + last + "8 behind")), " Elem last"),
              " Elem last length 0\nUnknown\n");
    EXPECT_EQ(lines_from(dump_of(form("AIFF" + last + "7 bytes")), " Elem last"), "");
    const std::string whole = form("AIFF" + last);
    EXPECT_NE(lines_from(dump_of(big().raw(whole).at(4).u32(whole.size()).str()), " Elem last"), "");
    SHOW(lines_from(dump_of(big().raw(form("AIFF" + common + sound)).at(42).u32(0xFFFFFFFF).str()),
                    " Elem SSND", 1));
}
