#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

const std::string kUnset4(4, '\xFF');

// A header of 2048 bytes with every field set.
ByteWriter dpx(ByteWriter::Order order, uint32_t image_offset = 0x800) {
    ByteWriter w(order);
    w.text(order == ByteWriter::Order::big ? "SDPX" : "XPDS").u32(image_offset).text("V2.0", 8);
    w.u32(0x12345678);
    w.u32(1, 1664, 384, 0).text("shot.dpx", 100).text("2026:01:02:03:04:05", 24);
    w.text("a scanner", 100);
    w.text("project", 200).text(std::string(200, 'c')).u32(0xFFFFFFFF);
    w.at(768).u16(5, 1).u32(16, 0xFFFFFFFE);
    w.u32(1, 64).f32(0.5).u32(0x80000000).f32(2.046F).u8(50, 2, 4, 10).u16(1, 1);
    w.u32(0x800, 0, 0xFFFFFFFF).text("element", 32);
    w.at(1408).u32(1, 2).f32(3).raw(kUnset4).u32(5, 6).text("in.dpx", 100).text("then", 24);
    w.text("\xFF", 32).text("serial", 32).u16(1, 0xFFFF, 3, 4).u32(16, 9).f32(1.25);
    w.f32(1e10F);
    w.at(1664).text("02").text("93").text("12").text("123456").text("7890").text(
        "Academy35mmFullFrame+12chars", 32);
    w.u32(10, 20, 0xFFFFFFFF).f32(24, 180).text("frame", 32).text("slate", 100);
    w.at(1864).text("ARRI01").text("0042").text("07").text("0123").text("08").text("5").text("4").text("3");
    w.at(1920).u32(0x01020304, 0xFFFFFFFF).u8(0, 255, 151, 0).f32(27000, 50, 25);
    w.f32(0, 2.2F);
    w.f32(16, 1, 90, 235).raw(kUnset4).text("reel 7", 76);
    return w;
}

constexpr auto kBig = ByteWriter::Order::big;
constexpr auto kLittle = ByteWriter::Order::little;

// Header, then a picture whose line 8 carries a timecode packet in blocks of 4 pixels.
std::string with_picture_timecode(const std::string &packet, uint8_t descriptor, uint8_t depth,
                                  const std::string &set, const std::string &clear, uint32_t width = 520) {
    ByteWriter w = dpx(kBig);
    w.at(160).text("KEL Timecode Image 2", 100).at(772).u32(width).at(800).u8(descriptor).at(803).u8(depth);
    const size_t pixel = set.size();
    w.at(2048).zeros(width * size_t{128});
    for (size_t i = 0; i < 128; i++) {
        const bool bit = static_cast<uint8_t>(packet[i / 8]) >> (7 - i % 8) & 1;
        w.at(2048 + (8 * width + 2 + 4 * i) * pixel).raw(bit ? set : clear);
    }
    return w.str();
}

std::string packet() { return hex("FFAA 10203040 00000102 07 000000 0253"); }

std::string picture_lines(const std::string &timecode, const std::string &frame) {
    return "kelimagetimecode\n timecode         : " + timecode + "\n framenr          : " + frame + "\n";
}

}  // namespace

// Fields that fill their places up to the next one.
TEST(Dpx, Widths) {
    Transcript transcript;
    SHOW(dump_of(
        little().raw(counting(2100)).at(0).text("XPDS").at(770).u16(2).at(1864).text("ARRI01").str()));
}

// Every name of coded values, two codes beyond each end.
TEST(Dpx, NamesOfCodes) {
    Transcript transcript;
    std::string names;
    for (const uint32_t code :
         {0U,   1U,   2U,   3U,   4U,   5U,   6U,   7U,   8U,   9U,   10U,  50U,  51U,  52U,  53U,
          100U, 101U, 102U, 103U, 104U, 150U, 151U, 152U, 153U, 154U, 200U, 201U, 202U, 203U, 204U}) {
        ByteWriter w = big().text("SDPX").at(28).u32(384).at(768).u16(code, 1).at(800).u8(code);
        w.at(804).u16(code, code).at(1864).text("ARRI01").at(1883).u8('0' + code % 10, '0' + code % 10);
        const std::string dump = dump_of(w.at(1930).u8(code).at(2047).u8(0).str());
        for (const char *line : {" orientation", " descriptor", " packing", " encoding", " keycode filmtype",
                                 " keycode s", " videosignal"}) {
            names += lines_from(dump, line, 1);
        }
    }
    SHOW(names);
}

TEST(Dpx, EveryFieldInBothByteOrders) {
    Transcript transcript;
    const std::string dump = dump_of(dpx(kLittle).str());
    SHOW(dump);
    EXPECT_EQ(dump_of(dpx(kBig).str()),
              "file\n magic          C : 58504453 Big Endian\n" + lines_from(dump, " offsetimage"));
}

TEST(Dpx, ElementCountsAndUnknownCodes) {
    const auto channels = [](uint32_t count) {
        const std::string dump = dump_of(dpx(kBig).at(768).u16(9, count).str());
        size_t n = 0;
        for (size_t at = 0; (at = dump.find("\nimagechannel-", at)) != std::string::npos; at++) n++;
        EXPECT_EQ(lines_from(dump, " orientation ", 1), " orientation    C : 9 \n");
        return n;
    };
    EXPECT_EQ(channels(0), 0U);
    EXPECT_EQ(channels(3), 3U);
    EXPECT_EQ(channels(9), 8U);
    EXPECT_EQ(channels(0xFFFF), 8U);
    const std::string dump = dump_of(dpx(kBig).at(800).u8(5).at(804).u16(3, 0xFFFF).str());
    EXPECT_EQ(lines_from(dump, " descriptor", 1), " descriptor    C : 5 \n");
    EXPECT_EQ(lines_from(dump, " packing", 2), " packing       C : 3 \n encoding      C :  \n");
    EXPECT_EQ(lines_from(dump_of(dpx(kBig).at(804).u16(8, 8).str()), " packing", 2),
              " packing       C : 8 \n encoding      C : 8 \n");
}

TEST(Dpx, AspectRatios) {
    const auto aspect = [](uint32_t horizontal, uint32_t vertical) {
        const std::string dump = dump_of(dpx(kLittle).at(1628).u32(horizontal, vertical).str());
        return lines_from(dump, " aspectratio ", 1).substr(20);
    };
    EXPECT_EQ(aspect(0xFFFFFFFF, 9), "\n");
    EXPECT_EQ(aspect(4, 0), "\n");
    EXPECT_EQ(aspect(0, 3), "\n");
    EXPECT_EQ(aspect(16, 0xFFFFFFFF), "3.72529e-09\n");
    EXPECT_EQ(aspect(0xFFFFFFFE, 1), "4.29497e+09\n");
}

TEST(Dpx, FilmAndTelevisionSections) {
    const auto has_film = [](const std::string &content, const std::vector<std::string> &switches) {
        return !lines_from(dump_of(content, "f.dpx", switches), "film\n").empty();
    };
    const std::string early = dpx(kBig, 8191).at(28).u32(0).str();
    const std::string late = dpx(kBig, 8192).at(28).u32(0).str();
    EXPECT_FALSE(has_film(early, {"-v"}));
    EXPECT_FALSE(has_film(late, {}));
    EXPECT_TRUE(has_film(late, {"-v"}));
    EXPECT_TRUE(has_film(dpx(kBig).at(28).u32(0xFFFFFFFF).str(), {}));
    EXPECT_EQ(lines_from(dump_of(dpx(kBig).at(1972).u8(0xFF).str()), " reelname"), "");
    EXPECT_EQ(lines_from(dump_of(dpx(kBig).at(1972).u8(0).str()), " reelname"), " reelname         : \n");
    EXPECT_EQ(lines_from(dump_of(dpx(kBig).at(1883).text("09").str()), " keycode filmtype", 2),
              " keycode filmtype : ?\n keycode status   : ?\n");
    EXPECT_EQ(lines_from(dump_of(dpx(kBig).at(1864).text("ARRI02").str()), "arri"), "");
}

TEST(Dpx, Keycodes) {
    Transcript transcript;
    const auto keycode = [](const std::string &fields) {
        return lines_from(dump_of(dpx(kBig).at(1664).raw(fields).str()), " keycode ", 1).substr(20);
    };
    const std::string rest = "00abcdef1234";
    const std::string tail = "abcdef 1234+00'\n";
    EXPECT_EQ(keycode("0224" + rest), "'KL" + tail);
    EXPECT_EQ(keycode("1214" + rest), "'K?" + tail);
    EXPECT_EQ(keycode("2200" + rest), "'KP" + tail);
    EXPECT_EQ(keycode("0524" + rest), "'??" + tail);
    EXPECT_EQ(keycode("2183" + rest), "'AF" + tail);
    EXPECT_EQ(keycode("01xx" + rest), "'A?" + tail);
    EXPECT_EQ(keycode("1340" + rest), "'FR" + tail);
    EXPECT_EQ(keycode("0302" + rest), "'FI" + tail);
    EXPECT_EQ(keycode("1499" + rest), "'I?" + tail);
    SHOW(
        keycode("\xFF"
                "224" +
                rest));
    EXPECT_EQ(keycode(std::string("\0", 1) + "224" + rest), "''\n");
    EXPECT_EQ(keycode("022400ab" + std::string(4, '\0') + "1234"), "'KLab'\n");
}

TEST(Dpx, UserData) {
    Transcript transcript;
    const auto user = [](const std::string &identification, const std::string &data, uint32_t size) {
        ByteWriter w = dpx(kLittle, 4096);
        w.at(32).u32(size).at(2048).text(identification, 32).raw(data).u8(0);
        return lines_from(dump_of(w.str()), "extendedheader\n");
    };
    const std::string unset(60, '\xFF');
    const std::string type = "extendedheader\n type             : ";
    SHOW(user("PhilipsX", unset, 92));
    SHOW(user("THOMSON", unset, 93));
    SHOW(user("discreet logic", unset, 20));
    SHOW(user("discreet logic", "x", 33));
    EXPECT_EQ(user("Discreet logic", "x", 33), type + "'Discreet logic'\n Unknown userdata format\n");
    SHOW(user("KEL Tessaron metadata2", "x", 33));
    SHOW(user("philips", std::string(20000, '\xFF'), 0xFFFFFFFF));
    EXPECT_EQ(user("philips", unset, 0), "");
    EXPECT_EQ(user("\xFF", unset, 100), "");
    EXPECT_EQ(user("", unset, 100), "");
}

TEST(Dpx, TimecodeBurnedIntoThePicture) {
    const auto decoded = [](const std::string &content) {
        return lines_from(dump_of(content), "kelimagetimecode");
    };
    const std::string found = picture_lines("10203040", "258");
    const std::string none = picture_lines("00000000", "0");
    EXPECT_EQ(decoded(with_picture_timecode(packet(), 50, 8, "\xA1\x3F\xB1", "\xA0\x3F\xFF")), found);
    EXPECT_EQ(decoded(with_picture_timecode(packet(), 50, 10, "\xA1\x0F\xCB\x10", "\xA1\x10\x0B\x10")),
              found);
    EXPECT_EQ(decoded(with_picture_timecode(packet(), 100, 8, "\xB1\x80", "\xB0\x80")), found);
    EXPECT_EQ(decoded(with_picture_timecode(packet(), 100, 10, "\xFF\xFF\xFF\xFF", std::string(4, '\0'))),
              none);
    EXPECT_EQ(decoded(with_picture_timecode(packet(), 51, 8, "\xFF\x3F\xFF", std::string(3, '\0'))), none);
    EXPECT_EQ(decoded(with_picture_timecode(packet(), 50, 8, "\xFF\x3F\xB0", std::string(3, '\0'))), none);
    const std::string last = hex("FFAA 10203040 00000102 07 000001 0254");  // counts in the checksum
    EXPECT_EQ(decoded(with_picture_timecode(last, 100, 8, "\xB1\x80", std::string(2, '\0'))), found);
    std::string wrong = packet();
    wrong[1] = '\xAB';
    wrong[15]++;
    EXPECT_EQ(decoded(with_picture_timecode(wrong, 100, 8, "\xFF\x80", std::string(2, '\0'))), none);
    const std::string whole = with_picture_timecode(packet(), 100, 8, "\xB1\x80", std::string(2, '\0'));
    EXPECT_EQ(decoded(whole.substr(0, whole.size() - 1)), none);
}

TEST(Dpx, WhenThePictureTimecodeIsLookedFor) {
    const auto decoded = [](const ByteWriter &w, const std::vector<std::string> &switches) {
        return lines_from(dump_of(w.str(), "f", switches), "kelimagetimecode");
    };
    const std::string none = picture_lines("00000000", "0");
    EXPECT_EQ(decoded(dpx(kBig), {}), "");
    EXPECT_EQ(decoded(dpx(kBig), {"-t"}), none);
    EXPECT_EQ(decoded(dpx(kBig, 16384 - 64), {"-t"}), "");
    EXPECT_EQ(decoded(dpx(kBig, 16384 - 65), {"-t"}), none);
    EXPECT_EQ(decoded(dpx(kBig, 0xFFFFFFFF).at(772).u32(0xFFFFFFFF), {"-t"}), "");
    EXPECT_EQ(decoded(dpx(kBig).at(160).text("KEL Timecode", 100), {}), "");
    EXPECT_EQ(decoded(dpx(kBig).at(160).text("KEL Timecode I", 100), {}), none);
}

TEST(Dpx, FrameRanges) {
    Transcript transcript;
    const Workplace place;
    place.write("f1.dpx", dpx(kLittle).at(1924).u32(0xABCDEF).str());
    place.write("f2.dpx", with_picture_timecode(packet(), 100, 8, "\xB1\x80", std::string(2, '\0')));
    SHOW(place.run({"f%d.dpx", "1", "2"}).out);
    SHOW(place.run({"-t", "f%d.dpx", "1", "1"}).out);
}

TEST(Dpx, CutAndHugeFiles) {
    const std::string cut = dump_of(dpx(kBig).str().substr(0, 100));
    EXPECT_EQ(lines_from(cut, " filename ", 2), " filename         : 'shot.dpx'\n creationtime     : \n");
    EXPECT_EQ(lines_from(cut, "source\n", 2), "source\n xoffset          : 0\n");
    const Workplace place;
    place.write_sparse("huge.dpx", 10'000'000'000, 0, dpx(kBig).str());
    EXPECT_EQ(place.run({"huge.dpx"}).out, dump_of(dpx(kBig).str()));
    EXPECT_EQ(lines_from(place.run({"-t", "huge.dpx"}).out, "kelimagetimecode"),
              picture_lines("00000000", "0"));
}
