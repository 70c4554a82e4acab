#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/timecode.h"
#include "support/bytes_of.h"
#include "support/command.h"

namespace {

uint32_t bcd(uint32_t n) { return n / 10 << 4 | n % 10; }

constexpr size_t kFrameSize = 2048 + 32 * 18 * 4;

// A small DPX of a 35 mm frame, four perforations a frame and 64 a count, at a rate.
ByteWriter dpx(uint32_t timecode, uint32_t frame, float rate = 24) {
    const auto text = [](uint32_t value, size_t width) {
        std::string digits = std::to_string(value);
        return std::string(width - digits.size(), '0') + digits;
    };
    ByteWriter w = big().text("SDPX").u32(2048).text("V2.0", 8).u32(kFrameSize).at(28).u32(384);
    w.at(768).u16(0, 1).u32(32, 18).at(800).u8(50, 1, 1, 10).u16(1, 0);
    w.at(1664).text("0224").text(text(frame * 4 % 64, 2)).text("123456").text(text(7890 + frame / 16, 4));
    w.at(1724).f32(rate).at(1920).u32(timecode).at(1940).f32(rate).at(1972).text("A012", 76);
    return w.at(kFrameSize - 1).u8(0);
}

uint32_t at_24(uint32_t frame) {
    return 0x01000000 | bcd(frame / 1440) << 16 | bcd(frame / 24 % 60) << 8 | bcd(frame % 24);
}

std::string name_of(uint32_t frame) { return "shot." + std::to_string(10000 + frame) + ".dpx"; }

Outcome seq(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-seq");
}

}  // namespace

TEST(KeldumpSeq, CleanAndBrokenAreToldApart) {
    const Workplace place;
    const auto write = [&](uint32_t frame, ByteWriter w) {
        place.write_sparse(name_of(frame), kFrameSize, 0, w.str());
    };
    for (uint32_t frame = 0; frame < 2000; frame++) write(frame, dpx(at_24(frame), frame));
    Outcome run = seq(place, {"shot.%d.dpx"});
    EXPECT_EQ(run.out,
              "shot.#.dpx: 2000 frames 10000-11999, DPX 32x18, 10 bit, 24 fps, timecode "
              "01:00:00:00-01:01:23:07, keycode 02 24 123456 7890+00 to 02 24 123456 8014+60: clean\n");
    EXPECT_EQ(run.status, 0);
    // Five faults, and what follows from none of them.
    for (uint32_t frame : {100, 101, 102}) unlink(place.path(name_of(frame)).c_str());
    for (uint32_t frame = 1800; frame < 2000; frame++) write(frame, dpx(at_24(frame + 1), frame));
    write(1820, dpx(at_24(1821), 1820).at(772).u32(30));
    for (uint32_t frame = 1840; frame < 2000; frame++) write(frame, dpx(at_24(frame + 1), frame + 160));
    place.write(name_of(1860), "");
    run = seq(place, {"--", "shot.%05d.dpx"});
    EXPECT_EQ(run.out,
              "shot.#.dpx: frames 10100-10102: missing (3)\n"
              "shot.#.dpx: frame 11800: timecode 01:01:14:23 -> 01:01:15:01, expected 01:01:15:00\n"
              "shot.#.dpx: frame 11820: size 30x18, its neighbours 32x18\n"
              "shot.#.dpx: frame 11840: keycode 02 24 123456 8004+60 -> 02 24 123456 8015+00, expected "
              "02 24 123456 8005+00\n"
              "shot.#.dpx: frame 11860: empty\n"
              "shot.#.dpx: 1997 frames 10000-11999, DPX 32x18, 10 bit, 24 fps, timecode "
              "01:00:00:00-01:01:23:08, keycode 02 24 123456 7890+00 to 02 24 123456 8024+60: 5 findings\n");
    EXPECT_EQ(run.status, 1);
}

// A frame that ends with its picture is whole, one byte less is not, whether or not its header tells a size.
TEST(KeldumpSeq, AFrameOneByteShort) {
    const std::string cut = "shot.#.dpx: frame 10001: cut: 4,351 of 4,352 bytes, the picture's end\n";
    const auto finding = [](uint32_t told, size_t size) {
        const Workplace place;
        for (uint32_t frame = 0; frame < 3; frame++) {
            const std::string whole = dpx(at_24(frame), frame).at(16).u32(told).str();
            place.write(name_of(frame), frame == 1 ? whole.substr(0, size) : whole);
        }
        return lines_from(seq(place, {"shot.%d.dpx"}).out, "shot.#.dpx: frame 10001: ", 1);
    };
    EXPECT_EQ(finding(kFrameSize, kFrameSize) + finding(0xFFFFFFFF, kFrameSize), "");
    EXPECT_EQ(finding(kFrameSize, kFrameSize - 1), cut);
    EXPECT_EQ(finding(0xFFFFFFFF, kFrameSize - 1), cut);
}

TEST(KeldumpSeq, EveryChangeIsNamedOnce) {
    Transcript transcript;
    const Workplace place;
    mkdir(place.path("d").c_str(), 0700);
    uint32_t number = 0;
    const auto add = [&](ByteWriter w) { place.write("d/a" + std::to_string(number++) + ".DPX", w.str()); };
    const auto frame = [&] { return dpx(at_24(number), number); };
    for (int i = 0; i < 20; i++) add(frame());
    add(little().raw(frame().str()).at(0).text("XPDS"));
    add(frame().at(800).u8(51, 2, 3, 16).u16(0, 1));
    add(frame().at(1920).u32(0xFFFFFFFF).at(1972).fill(0xFF, 76));
    add(frame().at(1920).u32(0x01006161).at(16).u32(9000));
    for (int i = 0; i < 3; i++) add(frame().at(1920).u32(0x01000001));
    add(frame().at(1664).text("03").at(1940).f32(25).at(1556).text("scan\x1B", 32));
    add(frame().at(1664).text("1"));
    add(frame().at(1667).text("9"));
    add(frame().at(1675).text("x"));
    add(frame().at(28).u32(0));
    add(big()
            .u32(0x802A5FD7, 2048)
            .zeros(16)
            .at(192)
            .u8(0, 3)
            .at(198)
            .u8(10)
            .at(200)
            .u32(32, 18)
            .at(kFrameSize - 1)
            .u8(0));
    place.write("d/a" + std::to_string(number++) + ".DPX", "SDPX");
    place.write("d/a" + std::to_string(number++) + ".DPX", "text");
    place.write("d/notes.txt", "no frame");
    SHOW(seq(place, {"d"}).out);
    SHOW(seq(place, {"d/notes.txt", "d/a2.DPX", "d/a1.DPX"}).out);
}

TEST(KeldumpSeq, DropFrame) {
    const Counting drop{30, true};
    const auto step = [&](uint32_t timecode) {
        return timecode_text(timecode_of(*frame_count(timecode, drop) + 1, drop), drop);
    };
    EXPECT_EQ(step(0x00005929), "00:01:00;02");
    EXPECT_EQ(step(0x00095929), "00:10:00;00");
    EXPECT_EQ(step(0x23595929), "00:00:00;00");
    EXPECT_FALSE(frame_count(0x00010001, drop));
    for (int64_t n = 0; n < 2589408; n += 17) ASSERT_EQ(frame_count(timecode_of(n, drop), drop), n);
    const Counting fast{60, true};
    for (int64_t n = 0; n < 2 * 2589408; n += 97) ASSERT_EQ(frame_count(timecode_of(n, fast), fast), n);

    const auto sequence = [](bool drops, bool flag) {
        const Workplace place;
        const Counting counting{30, drops};
        for (uint32_t i = 0; i < 40; i++) {
            const uint32_t timecode =
                timecode_of((drops ? 1798 : 1800) - 20 + i, counting) | (flag ? 0x40 : 0);
            place.write(name_of(i), dpx(timecode, i, 29.97F).str());
        }
        const std::string out = seq(place, {"."}).out;
        return out.substr(out.find("timecode"), out.find(", keycode") - out.find("timecode"));
    };
    EXPECT_EQ(sequence(false, false), "timecode 00:00:59:10-00:01:00:19");
    EXPECT_EQ(sequence(true, true), "timecode 00:00:59;08-00:01:00;19 drop frame");
    EXPECT_EQ(sequence(true, false), "timecode 00:00:59;08-00:01:00;19 drop frame");
}

// The numbers of a second tell the rate where no header does.
TEST(KeldumpSeq, FramesWithoutRate) {
    const Workplace place;
    for (uint32_t i = 0; i < 60; i++) place.write(name_of(i), dpx(at_24(i), i, 0).str());
    EXPECT_EQ(seq(place, {"."}).status, 0);
}

namespace {

// The lines of a sequence of frames numbered from 10000 on.
std::string report_of(const std::vector<ByteWriter> &frames) {
    const Workplace place;
    for (uint32_t i = 0; i < frames.size(); i++) place.write(name_of(i), frames[i].str());
    return seq(place, {"."}).out;
}

}  // namespace

// Two frames share a number, which is fine at 50 frames a second; a third one is not.
TEST(KeldumpSeq, FramePairs) {
    Transcript transcript;
    std::vector<ByteWriter> frames;
    for (uint32_t i = 0; i < 60; i++) frames.push_back(dpx(timecode_of((i + 1) / 2, {25}), i, 50));
    SHOW(report_of(frames));
    frames.insert(frames.begin() + 31, dpx(timecode_of(15, {25}), 31, 50));
    SHOW(report_of(frames));
}

TEST(KeldumpSeq, BackwardsAndStanding) {
    Transcript transcript;
    std::vector<ByteWriter> frames;
    for (uint32_t i = 200; i > 100; i--) frames.push_back(dpx(at_24(i), i));
    SHOW(report_of(frames));
    frames.assign(40, dpx(at_24(7), 9));
    SHOW(report_of(frames));
    // What breaks at the only count of a sequence.
    frames.clear();
    for (uint32_t i = 8; i < 24; i++) {
        frames.push_back(dpx(at_24(i), i));
        if (i >= 16) frames.back().at(1668).text(std::to_string(10 + (i - 16) * 4));
    }
    SHOW(report_of(frames));
}

// Frames that changed places, one that is its neighbour's, values that come back, numbers that stand for two
// frames, and what all frames share are a finding each.
TEST(KeldumpSeq, WhatBelongsTogether) {
    Transcript transcript;
    const auto frames_with = [](auto change) {
        std::vector<ByteWriter> frames;
        for (uint32_t i = 0; i < 40; i++) frames.push_back(dpx(at_24(i), i).at(1712).u32(1000 + i));
        change(frames);
        return lines_from(report_of(frames), "", 3);
    };
    using Frames = std::vector<ByteWriter>;
    SHOW(frames_with([](Frames &f) { std::swap(f[20], f[21]); }));
    SHOW(frames_with([](Frames &f) { f[20] = f[19]; }));
    SHOW(frames_with([](Frames &f) { f[20].at(1920).u32(at_24(21)); }));
    SHOW(frames_with([](Frames &f) {
        for (size_t i = 3; i < 40; i += 5) f[i].at(801).u8(2);
    }));
    SHOW(frames_with([](Frames &f) {
        for (ByteWriter &frame : f) frame.at(16).u32(9000);
    }));
    SHOW(frames_with([](Frames &f) {
        for (size_t i = 10; i < 20; i++) f[i].at(1920).u32(at_24(9));
    }));
    SHOW(frames_with([](Frames &f) {
        for (uint32_t i = 0; i < 40; i++) f[i] = dpx(at_24(i / 2), i);
    }));
    SHOW(frames_with([](Frames &f) { f[20].at(4).u32(800); }));
    SHOW(frames_with([](Frames &f) {
        for (uint32_t i = 0; i < 40; i++) f[i] = dpx(timecode_of(24 * 86400 - 20 + i, {24}), i);
    }));
}

// Parts of a sequence, and what is wrong with all of it, are a line each; field marks are no fault.
TEST(KeldumpSeq, PartsAndAll) {
    Transcript transcript;
    const auto frames_with = [](uint32_t count, auto change) {
        std::vector<ByteWriter> frames;
        for (uint32_t i = 0; i < count; i++) {
            frames.push_back(dpx(at_24(i), i).at(1712).u32(1000 + i));
            change(i, frames.back());
        }
        return lines_from(report_of(frames), "", 3);
    };
    using Frame = ByteWriter;
    for (const uint32_t offset : {0, 100, 800})
        SHOW(frames_with(12, [&](uint32_t, Frame &f) { f.at(4).u32(offset); }));
    SHOW(frames_with(12, [](uint32_t, Frame &f) { f.at(772).u32(0); }));
    SHOW(frames_with(40, [](uint32_t i, Frame &f) { f = dpx(at_24(i < 20 ? i : 20 + (i - 20) / 2), i); }));
    SHOW(frames_with(
        40, [](uint32_t i, Frame &f) { f = dpx(at_24(i / 5 * 4 + i % 5 - (i % 5 > 2 ? 1 : 0)), i); }));
    SHOW(frames_with(100, [](uint32_t i, Frame &f) { f.at(1920).u32(timecode_of(i, {25})); }));
    SHOW(frames_with(40, [](uint32_t i, Frame &f) { f.at(1676).text("ab" + std::to_string(10 + i)); }));
    SHOW(frames_with(12, [](uint32_t i, Frame &f) { f.at(784).u32(i == 6 ? 64 : 95).at(1964).f32(940); }));
    SHOW(frames_with(60, [](uint32_t i, Frame &f) {
        f = dpx(timecode_of(i / 2, {25}) | (i % 2 ? 0x80000000 : 0), i, 50);
    }));
    SHOW(frames_with(
        60, [](uint32_t i, Frame &f) { f = dpx(timecode_of(i / 2, {30}) | (i % 2 ? 0x8000 : 0), i, 60); }));
}

TEST(KeldumpSeq, NumbersInNames) {
    const auto findings = [](std::initializer_list<const char *> names) {
        const Workplace place;
        for (const char *name : names)
            place.write("a." + std::string(name) + ".dpx", dpx(0xFFFFFFFF, 0).at(1664).fill(0xFF, 16).str());
        const std::string out = seq(place, {"."}).out;
        return out.substr(0, out.rfind("./a.#.dpx: "));
    };
    EXPECT_EQ(findings({"-0002", "-0001", "00000", "00001"}), "");
    EXPECT_EQ(findings({"0001", "0003", "0005", "0007", "0009", "0012"}),
              "./a.#.dpx: frames 1-12: numbers go on by 2 (4 missing)\n"
              "./a.#.dpx: frames 10-11: missing (2)\n");
    EXPECT_EQ(findings({"0001", "0002", "0003", "0004", "05", "06", "07"}),
              "./a.#.dpx: frames 5-7: their numbers have 2 digits, others have 4\n");
}

// One of five frames of a sample has other bytes, or an end: its first finding, and how many there are.
TEST(KeldumpSeq, AFaultIsToldOnceInAllFormats) {
    const auto report = [](const std::string &sample, size_t at, const std::string &bytes, size_t size = 0) {
        const Workplace place;
        const std::string whole = content_of(KELDUMP_SAMPLES "/" + sample);
        for (int i = 1; i <= 5; i++) place.write("a." + std::to_string(i) + ".x", whole);
        std::string odd = std::string(whole).replace(at, bytes.size(), bytes);
        if (size > 0) odd.resize(size);
        place.write("a.3.x", odd);
        const std::string out = seq(place, {"--ignore", "timecode,keycode", "a.%d.x"}).out;
        return lines_from(out, "", 1) + out.substr(out.rfind(": ") + 2);
    };
    const std::string start = "a.#.x: frame 3: ";
    const std::string one = "\n1 finding\n";
    // A header that asks for more than all files have.
    EXPECT_EQ(report("dpx/film10-big.dpx", 800, "\x34"), start + "components ABGR, its neighbours RGB" + one);
    EXPECT_EQ(report("dpx/film10-big.dpx", 802, "\6"),
              start + "colorimetric ITU-R 709, its neighbours linear" + one);
    EXPECT_EQ(report("dpx-cineon/film.cin", 192, "\1"),
              start + "orientation 1, its neighbours not set" + one);
    EXPECT_EQ(report("dpx-cineon/film.cin", 683, "\1"), start + "sense 1, its neighbours not set" + one);
    EXPECT_EQ(report("dpx-cineon/film.cin", 1036, "VistaVi"),
              start + "film format VistaVi, its neighbours Academy" + one);
    const std::string exr = "exr/uncompressed.exr";
    const size_t window = content_of(KELDUMP_SAMPLES "/" + exr).find("dataWindow") + 21;
    EXPECT_EQ(report(exr, window, "\1"), start + "data window 1,0 39x30, its neighbours not set" + one);
    const std::string attributes = "exr/attributes.exr";
    const size_t gamma = content_of(KELDUMP_SAMPLES "/" + attributes).find("gamma") + 16;
    EXPECT_EQ(report(attributes, gamma, std::string("\0\0\0\x40", 4)),
              start + "attribute gamma 2, its neighbours 1" + one);
    const std::string lossy = "jpeg2000/lossy.j2k";
    EXPECT_EQ(report(lossy, content_of(KELDUMP_SAMPLES "/" + lossy).size(), "xyz"),
              start + "3 bytes behind the picture" + one);
    const std::string boxes = "jpeg2000/plain.jp2";
    EXPECT_EQ(report(boxes, content_of(KELDUMP_SAMPLES "/" + boxes).size(), std::string(20, '\0')),
              start + "20 bytes behind the picture" + one);
    EXPECT_EQ(report(exr, 0, "", 300), start + "cut: the header's end" + one);
    EXPECT_EQ(report("jpeg2000/lossy.j2k", 0, "", 100).substr(0, start.size() + 4), start + "cut:");
}

TEST(KeldumpSeq, FramesThatShouldBeThere) {
    const Workplace place;
    for (const char *name : {"a.0002.dpx", "a.0003.dpx", "a.04.dpx"})
        place.write(name, dpx(at_24(0), 0).at(1664).fill(0xFF, 16).at(1920).u32(0xFFFFFFFF).str());
    EXPECT_EQ(seq(place, {"--frames", "1-6", "--json", "--ignore", "padding", "."}).out,
              "[\n{\"sequence\": \"./a.#.dpx\", \"summary\": \"3 frames 2-4, DPX 32x18, 10 bit, 24 fps\", "
              "\"findings\": [\n"
              "  {\"kind\": \"missing\", \"first\": 1, \"last\": 1, \"text\": \"missing (1)\"},\n"
              "  {\"kind\": \"missing\", \"first\": 5, \"last\": 6, \"text\": \"missing (2)\"}\n]}\n]\n");
    EXPECT_EQ(seq(place, {"--quiet", "--ignore", "padding", "."}).out, "");
    EXPECT_EQ(lines_from(seq(place, {"."}).out, "", 1),
              "./a.#.dpx: frame 4: its number has 2 digits, others have 4\n");
}

TEST(KeldumpSeq, DropFrameWithoutRate) {
    std::vector<ByteWriter> frames;
    for (uint32_t i = 0; i < 40; i++) frames.push_back(dpx(timecode_of(1790 + i, {30, true}) | 0x40, i, 0));
    EXPECT_NE(report_of(frames).find("timecode 00:00:59;20-00:01:01;01 drop frame"), std::string::npos);
}

TEST(KeldumpSeq, CutPictureAndTwins) {
    const Workplace place;
    auto cineon = big().u32(0x802A5FD7, 2048).at(200).u32(1, 0).at(681).u8(5).at(2051).u8(0);
    place.write("b.1.cin", cineon.str());
    place.write("b.2.cin", cineon.at(681).u8(0xFF).str());
    EXPECT_EQ(lines_from(seq(place, {"b.%d.cin"}).out, "", 2),
              "b.#.cin: all frames: the header has size 1x0\n"
              "b.#.cin: frame 2: packing 5 -> not set\n");
    place.write("c.1.dpx", dpx(at_24(1), 1).at(803).u8(0xFF).str());  // of unknown depth
    EXPECT_EQ(seq(place, {"c.%d.dpx"}).status, 0);
    place.write("a.1.dpx", dpx(at_24(1), 1).at(16).u32(0xFFFFFFFF).str().substr(0, 4000));
    place.write("a.01.dpx", dpx(at_24(1), 1).str());
    EXPECT_EQ(lines_from(seq(place, {"a.1.dpx", "a.01.dpx", "a.1.dpx"}).out, "", 2),
              "a.#.dpx: frame 1: another file with that number\n"
              "a.#.dpx: frame 1: cut: 4,000 of 4,352 bytes, the picture's end\n");
}

// Unless a pattern says that they are.
TEST(KeldumpSeq, FilesThatAreNoFrames) {
    const Workplace place;
    for (const char *name : {"s_v1.dpx", "s_v3.dpx", "t_422.dpx", "t_420.dpx"})
        place.write(name, dpx(0, 1).str());
    const Outcome listed = seq(place, {"."});
    for (const char *name : {"./s_v1.dpx: 1 frame,", "./s_v3.dpx: 1 frame,", "./t_420.dpx: 1 frame,"})
        EXPECT_NE(listed.out.find(name), std::string::npos) << listed.out;
    EXPECT_EQ(listed.status, 0);
    const Outcome told = seq(place, {"s_v%d.dpx"});
    EXPECT_NE(told.out.find("s_v#.dpx: frame 2: missing"), std::string::npos) << told.out;
}

TEST(KeldumpSeq, Trouble) {
    const Workplace place;
    EXPECT_EQ(seq(place, {}).status, 2);
    EXPECT_EQ(seq(place, {"-x"}).status, 2);
    const Outcome no_kind = seq(place, {"--ignore", "cut,cuts", "."});
    EXPECT_EQ(no_kind.status, 2);
    EXPECT_NE(no_kind.err.find("cuts: no kind of finding; there are missing "), std::string::npos);
    place.write("a.000a.dpx", dpx(0, 0).str());
    place.write("notes", "text");
    for (const char *operand : {"none.%d.dpx", "a.%04x.dpx", "a.%d.v2.dpx", "missing", "d*.dpx", "%s%s"}) {
        const Outcome run = seq(place, {operand});
        EXPECT_TRUE(run.err.starts_with("keldump-seq: ")) << operand;
        EXPECT_EQ(run.status, 2) << run.out;
    }
    EXPECT_EQ(seq(place, {"notes"}).out, "notes: unknown format, 74 65 78 74\nnotes: 1 frame: 1 finding\n");
}
