#include <gtest/gtest.h>

#include "mxf/clip.h"
#include "support/facts_text.h"

namespace {

// Where the items of a set begin.
size_t items_of(const std::string &content, int n) { return content.find(local(0x3C0A, uid(n))); }

const std::string kIndex = hex("060E2B34 02530101 0D010201 01100100");
size_t index_of(const std::string &content) { return content.find(kIndex) + 20; }

// facts_changed() of items from a place on: "3301=0A" that the value of an item begins so, "3301^33020001"
// that it stands for another one.
std::string items_changed(const std::string &content, size_t items, const std::string &changes) {
    std::istringstream words(changes);
    std::string report;
    for (std::string word; words >> word;) {
        std::string bytes = content;
        std::istringstream steps(word);
        for (std::string step; std::getline(steps, step, ',');) {
            size_t at = items;
            const auto big16_at = [&](size_t place) {
                return static_cast<uint8_t>(content[place]) << 8 | static_cast<uint8_t>(content[place + 1]);
            };
            while (content.compare(at, 2, hex(step.substr(0, 4))) != 0)
                at += 4 + static_cast<size_t>(big16_at(at + 2));
            const std::string raw = hex(step.substr(5));
            bytes.replace(at + (step[4] == '=' ? 4 : 0), raw.size(), raw);
        }
        report += word + ":" + facts_difference(content, bytes) + "\n";
    }
    return report;
}

// A picture whose descriptor says all, with the parameters of JPEG 2000 where they are told to be its own.
Clip full_picture() {
    const std::string label = "060E2B34 04010101 ";
    return Clip(false, 60,
                local(0x3004, hex("060E2B34 0401010A 0D010301 02100001")) + local(0x3212, "\1") +
                    local(0x3304, number(64, 4)) + local(0x3305, number(940, 4)) +
                    local(0x3308, number(1, 4)) + local(0x3309, number(0, 4)) +
                    local(0x3205, number(1900, 4)) + local(0x3204, number(530, 4)) +
                    local(0x3210, hex(label + "04010101 01020000")) +
                    local(0x3219, hex(label + "04010101 03030000")) +
                    local(0x321A, hex(label + "04010101 02020000")) + local(0x800C, number(50000000, 4)) +
                    local(0x3401, hex("520A 470A 420A 410A 0000 0000 0000 0000 0000 0000")) +
                    local(0x8F01, refs({50, 51})),
                set_of("5A", 50, local(0x800E, hex("00000101 05030303 0001"))) +
                    set_of("5A", 51, local(0x800D, hex("00000000 00000003 0B0101"))));
}

}  // namespace

TEST(MxfFacts, EdgesOfPictures) {
    Transcript transcript;
    const std::string clip = full_picture().bytes;
    const size_t picture = items_of(clip, 21);
    SHOW(items_changed(clip, picture, "320C=00 320C=02 320C=03 320C=04 320C=05 320C=FF"));
    SHOW(items_changed(clip, picture,
                       "320D=000000020000000400000016 320D=000000020000000400000015,3212=02 "
                       "320D=000000020000000400000000 320D=00000002000000040000001500000000 "
                       "320D=00000002000000047FFFFFFF 320D=000000020000000480000000 "
                       "320D=0000000200000004000000157FFFFFFF 320D=00000002000000040000001580000000"));
    SHOW(
        items_changed(clip, picture,
                      "3209=00000000 3209=00000001 3209=7FFFFFFE 3209=7FFFFFFF 3208=00000000 "
                      "3208=00000000,3204=00000000 3203=00000000 3202=00000000 3203=00000780,3202=0000021C"));
    SHOW(items_changed(clip, picture,
                       "320E=000000B200000064 320E=000000B300000064 320E=0000000400000003 320E=00000031 "
                       "320E=00000000 320E=0000000000000009"));
    SHOW(items_changed(clip, picture, "3001=000003E800000001 3001=000003E900000001 3001=0000000000000001"));
    SHOW(items_changed(clip, picture,
                       "3304=00000000,3305=000003FF 3304=00000000,3305=000003FE 3304=00000000,3305=00000400 "
                       "3304=00000040,3305=00000000 3304=00000040,3305=00000001 3304=00000000,3305=00000000 "
                       "3301=00000007,3304=00000008 3301=00000007,3304=00000000,3305=0000007F "
                       "3301=00000008,3304=00000010 3301=00000010,3304=00001000,3305=0000F000 "
                       "3304=00000040,3305=00000040 3304=00000040,3305=00000041 "
                       "3301=00000011,3304=00002000 3301=00000011,3304=00000000,3305=0001FFFF "
                       "3301=00000000 3301=00000040 3301=00000041"));
    SHOW(items_changed(clip, picture,
                       "3302=00000001 3302=00000002,3308=00000002 3302=00000001,3308=00000002 3302=00000003 "
                       "3302=00000004 3309=00000001 3302=00000000,3309=00000001"));
    const auto label = [](const char *tag, const char *code) {
        return std::string(tag) + "=060E2B340401010104010101" + code + " ";
    };
    SHOW(items_changed(clip, picture,
                       label("3210", "0100") + label("3210", "010B") + label("3210", "010C") +
                           label("3210", "010D") + label("3210", "010E") + label("3210", "01FF") +
                           label("3210", "0202") + label("321A", "0205") + label("321A", "0207") +
                           label("321A", "0208") + label("3219", "0306") + label("3219", "030A") +
                           label("3219", "030B")));
    std::vector<std::string> rates;
    for (const uint32_t rate : {0, 1}) {
        std::string bytes = clip;
        bytes.replace(bytes.find(local(0x800C, number(50000000, 4))) + 4, 4, number(rate, 4));
        rates.push_back(bit_rates_of(bytes));
    }
    EXPECT_EQ(rates, (std::vector<std::string>{"-1 -1 -1", "1 -1 -1"}));
}

// Labels of essence containers, as the registers name them.
TEST(MxfFacts, Wrappings) {
    constexpr std::pair<const char *, const char *> kWrappings[] = {
        {"frame",
         "010101 017F01 040001 046001 050101 050105 05020D 060100 060300 070101 0A0100 0B0100 0C0100 "
         "0C0600 0E0001 0F6001 106001 110100 120100 1B0100 1F6F01 206001 210100 210200 220200 230100"},
        {"clip",
         "046002 050102 05024A 060200 060400 0A0200 0B0200 0C0200 0F6102 106102 110200 1D0101 206F02 "
         "210300 230200"},
        {"",
         "04007F 050103 060500 060800 0A0300 0C0300 0F0103 106003 110300 130101 130201 1D0201 "
         "7F0100"}};
    const std::string clip = full_picture().bytes;
    const size_t label = clip.find(hex("0D010301 02100001")) + 5;
    for (const auto &[wrapping, codes] : kWrappings) {
        std::istringstream all(codes);
        for (std::string code; all >> code;) {
            const std::string text = facts_of(std::string(clip).replace(label, 3, hex(code)));
            const std::string expected = std::string("| wrapping: ") + wrapping + " |";
            EXPECT_EQ(text.find(*wrapping ? expected : "| wrapping") != text.npos, *wrapping != 0)
                << code << " " << wrapping;
        }
    }
}

TEST(MxfFacts, EdgesOfComponents) {
    Transcript transcript;
    std::string clip = full_picture().bytes;
    const size_t picture = items_of(clip, 21);
    SHOW(
        items_changed(clip, picture,
                      "8F01^8001 8F01^8001,3301=00000000,3302=00000001 8F01^8001,8F01=00000001,3301=00000000 "
                      "8F01^80010018,3301=00000000 8F01^80010017"));
    clip.replace(picture - 6, 1, "\x29");
    SHOW("RGBA:" + facts_difference(full_picture().bytes, clip) + "\n");
    SHOW(items_changed(
        clip, picture,
        "3401=410A00 3401=400A00 3401=580C590C5A0C00 3401=580C590C5B0C00 3401=580C590C7A0C00 "
        "3401=590A550A560A00 3401=460252FD47FD42FD00 3401=52FE47FE42FE00 3401=52FF00 3401=524000 3401=524100 "
        "3401=460246024602460246024602460252084708420800 "
        "3401=4602460246024602460252084708420800 3401=46024602460246024602460252084708420800 "
        "3401=00"));
    SHOW(items_changed(clip, picture,
                       "3304^3407,3305^3406,3304=00000000,3305=000003FF 3304^3407,3305^3406 "
                       "3304^3406,3305^3407,3304=000003AC,3305=00000040"));
    const std::string coded = full_picture().bytes;
    // A primer that tells fewer tags.
    std::string named = coded;
    named.replace(named.find(hex("8F010028")), 2, hex("8001"));
    SHOW(facts_changed(named, "128=0000000D"));
    const auto told = [&](const char *changes) {
        std::string bytes = coded;
        bytes.replace(bytes.find(hex("8F010028")), 2, hex("8001"));
        bytes.replace(bytes.find(hex("33010004 0000000A")) + 4, 4, number(0, 4));
        return items_changed(bytes, items_of(bytes, changes[3] == 'E' ? 50 : 51), changes);
    };
    SHOW(told("800E^800E0009 800E=00000101050303030000"));
    SHOW(told("800D^800D000A 800D=000000000000000387 800D=0000000000000000A5 800D=0000000000000000A6"));
}

TEST(MxfFacts, EdgesOfTracks) {
    Transcript transcript;
    const std::string clip = Clip(false).bytes;
    SHOW(items_changed(clip, items_of(clip, 7), "0202=0000000000000000 0202=0000000000000001 0202=FF"));
    SHOW(items_changed(clip, items_of(clip, 3),
                       "0202=0000000000000000 0202=0000000000000001 0202=000000000000003B "
                       "0202=000000000000003D 0202=FF 0201=060E2B34040101010103020203 "
                       "0201=060E2B34040101010103020204"));
    SHOW(items_changed(clip, items_of(clip, 10),
                       "0202=0000000000000000 0202=FF 0201=060E2B34040101010103020203 "
                       "0201=060E2B34040101010103020204 0201=060E2B34040101010103020200"));
    SHOW(items_changed(clip, items_of(clip, 8), "1201=0000000000000000 1201=0000000000000001 1201=FF"));
    SHOW(items_changed(clip, items_of(clip, 33),
                       "1502=0000 1502=0001 1502=03E8 1502=03E9 1501=0000000000000000 1501=FF "
                       "1501=3FFFFFFFFFFFFF00 1501=3FFFFFFFFFFFFFFF 1501=4000000000000000 1503=00 1503=02"));
    SHOW(items_changed(clip, items_of(clip, 32),
                       "4B01=0000001900000001 4B01=0000003C00000001 4B01=0000003B00000001 4803=00"));
    SHOW(items_changed(clip, items_of(clip, 6), "4B01=0000000000000001 4801=00000009"));
    SHOW(items_changed(clip, items_of(clip, 22), "3006=00000063 3D07=00000400 3D07=00000401 3D01=00000040"));
    SHOW(items_changed(clip, items_of(clip, 1), "4405^44050007 4405=07E80D05"));
    // Where the tracks leave it open, the descriptor's container duration, else another track tells.
    const Clip open(true, 60, local(0x3002, number(50, 8)));
    const size_t picture = items_of(open.bytes, 21);
    SHOW(items_changed(open.bytes, picture,
                       "3002=0000000000000000 3002=0000000000000001 3002=FF 3001=00003A98000003E9"));
    SHOW(items_changed(Clip(true).bytes, items_of(Clip(true).bytes, 10),
                       "0202=0000000000000000 0202=0000000000000001 0202=0000000000000028"));
    const std::string cut = Clip(true).bytes.substr(0, Clip(true).footer);
    SHOW(items_changed(cut, items_of(cut, 7), "0202=0000000000000000 0202=0000000000000001"));
    SHOW(items_changed(open.bytes.substr(0, open.footer), picture,
                       "3002=0000000000000000 3002=0000000000000001 3002=FF"));
    SHOW(facts_of(Clip(false, 0).bytes) + "\n");
    // A descriptor of data in the place of the second sound's, with their track.
    std::string data = Clip(false, 60, "", set_of("43", 24, local(0x3006, number(4, 4)))).bytes;
    data.replace(data.find(refs({21, 22, 23})) + 55, 1, 1, '\x18');
    SHOW(items_changed(data, items_of(data, 13), "0201=060E2B34040101010103020203"));
    // The number of a product, of three parts where it has no text.
    const std::string writer = Clip(false, 60, "",
                                    set_of("30", 41,
                                           local(0x3C01, wide("Kel")) + local(0x3C04, "") +
                                               local(0x3C03, hex("0001 0002 0003 0004 0005"))))
                                   .bytes;
    SHOW(items_changed(writer, items_of(writer, 41), "3C03=0000000000000000 3C03^3C030009"));
}

TEST(MxfFacts, EdgesOfIndexes) {
    Transcript transcript;
    const std::string clip = Clip(true).bytes;
    SHOW(items_changed(clip, index_of(clip),
                       "3F0C=0000000000000005 3F0C=FF 3F0D=FF 3F0D=0000000000000000 3F0D=0000000000000001 "
                       "3F0C=7FFFFFFFFFFFFFC3 3F0C=0000000000000005,3F0D=FF "
                       "3F0B=0000001900000001 3F0B=00000000"));
    // Units of one size, of which the index may tell no number.
    SHOW(items_changed(
        clip, index_of(clip),
        "3F0D=0000000000000000,3F06^3F05000400000064 3F0D=0000000000000000,3F06^3F05000400000BCC "
        "3F0D=0000000000000000,3F06^3F05000400000BCD 3F06^3F05000400000064 "
        "3F0D=0000000000000001,3F06^3F05000400000064"));
    std::string constant = clip;
    constant.replace(constant.find(local(0x3F0D, number(60, 8))) + 4, 8, number(0, 8));
    constant.replace(constant.find(local(0x3F06, number(2, 4))), 8, local(0x3F05, number(100, 4)));
    SHOW(facts_changed(constant, "72=0000000000000064 80=00000000 80=00000002"));
    // Its last item ends with the file.
    SHOW(facts_changed(constant.substr(0, constant.size() - 45), "80=00000000"));
    // A body partition that tells how much of the essence stands before it.
    const std::string header = constant.substr(0, Clip(true).footer - kEssence.size());
    const std::string tail = constant.substr(Clip(true).footer, constant.size() - Clip(true).footer - 45);
    const auto with_body = [&](const std::string &before, const std::string &behind) {
        std::string body = partition("0304", header.size() + before.size(), 0, 0);
        body.replace(72, 8, number(1000, 8));
        const std::string start = header + before + body + behind;
        return facts_difference(constant, start + tail +
                                              big()
                                                  .hex(kRandomIndex)
                                                  .u8(40)
                                                  .u32(0)
                                                  .u64(0)
                                                  .u32(1)
                                                  .u64(header.size() + before.size())
                                                  .u32(0)
                                                  .u64(start.size())
                                                  .u32(57)
                                                  .str()) +
               "\n";
    };
    SHOW(with_body("", kEssence));
    SHOW(with_body(kEssence, ""));
    const std::string footer = std::to_string(Clip(true).footer);
    const std::string size = std::to_string(Clip(true).footer + 60);
    SHOW(facts_changed(
        clip, size + "=0000000000000000 " + size + "=0000000000000001 " + size + "=7FFFFFFFFFFFFFFF"));
    SHOW(facts_changed(clip, "60=0000000000000001"));
    SHOW(facts_changed(constant, "60=0000000000000001 " + footer + "=00"));
}

TEST(MxfFacts, EdgesOfPartitions) {
    Transcript transcript;
    const Clip clip(false);
    const size_t end = clip.bytes.size();
    const size_t sets = clip.footer - kEssence.size();  // the end of them
    SHOW(facts_changed(clip.bytes, "13=01 13=03 13=04 13=05 14=00 14=01 14=02 14=03 14=05 14=FF"));
    SHOW(facts_changed(clip.bytes,
                       "96=0000 96=0101 96=0100 96=0103 96=0104 96=0301 96=0401 96=0001 96=0303 96=1001"));
    SHOW(facts_changed(clip.bytes.substr(0, 108), "<99 <100 <101"));
    // Without a random index pack the header tells the footer's place.
    const std::string plain = clip.bytes.substr(0, end - 45);
    SHOW(facts_changed(plain, ">1"));
    SHOW(facts_changed(plain,
                       "44=FFFFFFFFFFFFFFFF 44=FFFFFFFFFFFFFFEF 44=0000000000000000 44=0000000000000001"));
    const auto at = [](size_t place) { return std::to_string(place) + "="; };
    SHOW(facts_changed(clip.bytes, "52=0000000000000000 52=FFFFFFFFFFFFFFFF 52=000000000000FFFF 60=FF"));
    for (const int more : {0, 1}) {
        std::string bytes = clip.bytes;
        bytes.replace(60, 8, number(end - sets + static_cast<size_t>(more), 8));
        EXPECT_EQ(extent_of(bytes, "a.mxf").substr(0, 3), more == 0 ? "who" : "cut");
    }
    const auto cuts = [](size_t place, std::initializer_list<int> steps) {
        std::string words;
        for (const int step : steps) words += " <" + std::to_string(place + static_cast<size_t>(step));
        return words;
    };
    SHOW(facts_changed(clip.bytes, cuts(end, {-46, -45, -44, -29, -28, -26, -25, -1}) + " >1 >100"));
    const std::string open = Clip(true).bytes.substr(0, clip.footer);
    SHOW(facts_changed(open + "\x06\x0E",
                       cuts(sets, {-1, 0, 1, 3, 4, 15, 16, 17, 19, 20, 21}) + cuts(clip.footer, {-1, 0, 1})));
    SHOW(facts_changed(open + std::string(20, 'x'), at(clip.footer) + "06 " + at(clip.footer) + "060E2B34"));
    // What is not written yet is zeros: the ends of items, and all behind them.
    const auto zeros = [](const std::string &bytes, size_t place, size_t n) {
        std::string changed = bytes;
        changed.replace(place, n, n, '\0');
        return std::to_string(place) + ":" + facts_difference(bytes, changed) + "\n";
    };
    for (const size_t n : {3, 4, 12, 16, 45, 46, 56}) SHOW(zeros(clip.bytes, end - n, n));
    for (const size_t n : {10, 11}) SHOW(zeros(plain, end - 45 - n, n));
    for (const size_t n : {3000, 3003, 3004, 3019, 3020}) SHOW(zeros(open, clip.footer - n, n));
    // A random index pack of one partition, whose length has one byte.
    const size_t index = end - 45;
    const std::string one = plain + big().hex(kRandomIndex).u8(16).u32(1).u64(0).u32(33).str();
    SHOW("one:" + facts_difference(clip.bytes, one) + "\n");
    SHOW(facts_changed(one, at(index + 29) + "00000020 " + at(index + 29) + "00000022 " + at(index + 16) +
                                "0F " + at(index + 16) + "11"));
    // The pack alone leads to a footer that nothing else points to, nor is it where it says.
    const std::string lost = "44=0000000000000000," + at(clip.footer + 28) + "00FF";
    SHOW(facts_changed(clip.bytes, lost));
    SHOW(facts_changed(plain, lost));
    // The last items of a long file without footer.
    std::string many = open;
    for (int i = 0; i < 30; i++) many += kEssence;
    many += item("060E2B34 01020101 0D010301 15010501", std::string(700000, 'e'));
    SHOW(facts_changed(many, "<" + std::to_string(many.size() - 1)));
    // Fill with a long length behind the header's pack.
    const std::string filled =
        clip.bytes.substr(0, 108) + big().hex(kFiller).u8(0x88).u64(3).str() + "xxx" + clip.bytes.substr(108);
    SHOW("filled:" + facts_difference(clip.bytes, filled) + "\n");
}

TEST(MxfFacts, EdgesOfSets) {
    Transcript transcript;
    // The last item of a set that is searched, and the last element of an array.
    const auto display = [](size_t items) {
        std::string more;
        for (size_t i = 0; i < items; i++) more += local(0x9000, "");
        return Clip(false, 60, more + local(0x3219, hex("060E2B34 04010101 04010101 03030000"))).bytes;
    };
    SHOW("items:" + facts_difference(display(0), display(1010)) + "\n");
    SHOW("items:" + facts_difference(display(0), display(1011)) + "\n");
    const std::string clip_of_texts = Clip(false, 60, "", set_of("30", 41, local(0x3C01, wide("Kel")))).bytes;
    const auto labels = [](uint64_t n, uint64_t told) {
        std::string all;
        for (uint64_t i = 0; i < n; i++)
            all += hex("060E2B34 04010101 0D010401 000000") + static_cast<char>(i);
        return Clip(false, 60, "", set_of("2F", 60, local(0x3B0B, big().u32(told).u32(16).raw(all).str())))
            .bytes;
    };
    // Of references.
    const auto parameters = [](size_t lost) {
        std::string all = big().u32(lost + 1).u32(16).str();
        for (size_t i = 0; i < lost; i++) all += uid(99);
        return Clip(false, 60, local(0x8001, all + uid(50)),
                    set_of("5A", 50, local(0x800E, hex("00000101 05030303 0001"))))
            .bytes;
    };
    SHOW("references:" + facts_difference(parameters(0), parameters(1023)) + "\n");
    SHOW("references:" + facts_difference(parameters(0), parameters(1024)) + "\n");
    for (const size_t n : {8, 9}) {
        const Clip alpha(false, 60, local(0x3309, std::string(n - 1, '\0') + "\1"));
        EXPECT_EQ(facts_of(alpha.bytes).find(" 4:2:2:4 ") != std::string::npos, n == 8);
    }
    SHOW("labels:" + facts_difference(labels(1, 1), labels(2, 2)) + "\n");
    for (const auto &[n, told] : {std::pair{16, 16}, {17, 17}, {2, 1}, {1, 2}, {1, 0}}) {
        const std::string text = facts_of(labels(static_cast<uint64_t>(n), static_cast<uint64_t>(told)));
        EXPECT_EQ(std::ranges::count(text.substr(std::min(text.size(), text.find("metadata schemes"))), ','),
                  std::max(0, std::min({n, told, 16}) - 1))
            << n << " " << told;
    }
    // A value that ends behind its set.
    SHOW(items_changed(clip_of_texts, items_of(clip_of_texts, 41), "3C01^3C010006 3C01^3C010007"));
    // Metadata behind a dark item of a MiB, whose size the header's partition does not tell.
    const std::string dark = item("060E2B34 02530101 0E010101 01010000", std::string(1 << 20, 'd'));
    const std::string clip =
        Clip(false, 60, "", dark + set_of("30", 41, local(0x3C01, wide("Behind")))).bytes;
    SHOW("dark:" + facts_difference(Clip(false).bytes, clip) + "\n");
    SHOW(facts_changed(clip, "52=0000000000000000"));
    // Header metadata that only the footer has whole.
    const std::string better = metadata(60, "");
    const Clip open(true, 60, local(0x3002, number(7, 8)));
    const std::string body = open.bytes.substr(0, open.footer);
    SHOW("footer:" +
         facts_difference(body, body + partition("0404", open.footer, open.footer, better.size()) + better) +
         "\n");
}

// What begins like a picture in the essence of a file that does not say how it is coded.
TEST(MxfFacts, EdgesOfEssence) {
    Transcript transcript;
    std::string clip = Clip(false).bytes;
    clip.replace(clip.find(hex("04010202 01323102")), 8, std::string(8, '\0'));
    const size_t key = clip.find(hex("060E2B34 01020101 0D010301 15010501"));
    const auto begins = [&](size_t at, const char *digits) {
        return std::to_string(key + at) + "=" + digits + " ";
    };
    SHOW(facts_changed(clip, begins(20, "0000010910") + begins(20, "000000010910") +
                                 begins(20, "00000000010910") + begins(20, "0000014001") +
                                 begins(20, "0000014601") + begins(20, "0000014101") +
                                 begins(20, "00000167") + begins(20, "000001B3") + begins(20, "FF10FF50") +
                                 begins(20, "FF10FF51")));
    SHOW(facts_changed(clip, begins(16, "830000050000010910") + begins(16, "830000040000010910")));
    // The first picture of the first 16 items, which is there to its end.
    const std::string sound = item("060E2B34 01020101 0D010301 16010501", hex("0000014001"));
    const std::string coded = item("060E2B34 01020101 0D010301 15010501", hex("0000010910"));
    for (const int others : {1, 15, 16}) {
        std::string all = clip.substr(0, key);
        for (int i = 0; i < others; i++) all += sound;
        EXPECT_EQ(facts_of(all + coded).find(" H.264 ") != std::string::npos, others < 16) << others;
        EXPECT_EQ(facts_of(all + coded.substr(0, coded.size() - 1)).find(" H.264 "), std::string::npos);
    }
    // What its stream says of colours, where the descriptor leaves them open.
    const auto coloured = [](const std::string &more, const char *colours) {
        std::string bytes = Clip(false, 60, more).bytes;
        bytes.replace(bytes.find(hex("04010202 01323102")), 8, std::string(8, '\0'));
        const std::string head =
            hex("000001B3 78043833 FFFFE018 000001B5 144200010000 000001B5") + hex(colours);
        bytes.replace(bytes.find(std::string(100, 'e')), head.size(), head);
        const std::string text = facts_of(bytes);
        return text.substr(0, text.find(" fps")) + "\n";
    };
    const std::string label = "060E2B34 04010101 04010101 ";
    const std::string range = local(0x3304, number(64, 4)) + local(0x3305, number(940, 4));
    const std::string matrix = local(0x321A, hex(label + "02020000"));
    SHOW(coloured("", "2B0101010000"));
    SHOW(coloured(range + matrix, "2B0909090000"));
    SHOW(coloured(range + matrix, "2B0909020000"));
    SHOW(coloured(range + matrix, "2B0909000000"));
    SHOW(coloured(local(0x3219, hex(label + "03030000")), "2B0909090000"));
    SHOW(coloured(local(0x3210, hex(label + "01020000")), "2B0909090000"));
    // Widths in whole blocks.
    const std::string sample = content_of(std::string(KELDUMP_SAMPLES) + "/mxf/op1a-mpeg2.mxf");
    const size_t picture = sample.find(hex("060E2B34 02530101 0D010101 01015100")) + 20;
    SHOW(items_changed(sample, picture,
                       "3209=0000007F 3209=00000081 3209=0000008F 3209=00000090 "
                       "3209=00000000,3205=00000000,3203=00000000"));
    SHOW(items_changed(sample, picture, "3301=00000000 3302=00000000 320C=05 320E=0000000000000000"));
}
