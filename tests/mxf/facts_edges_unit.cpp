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
    ROWS("clip, picture", items_changed(clip, picture, rows));
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
    ROWS("clip, picture", items_changed(clip, picture, rows));
    clip.replace(picture - 6, 1, "\x29");
    SHOW("RGBA:" + facts_difference(full_picture().bytes, clip) + "\n");
    ROWS("clip, picture 2", items_changed(clip, picture, rows));
    const std::string coded = full_picture().bytes;
    // A primer that tells fewer tags.
    std::string named = coded;
    named.replace(named.find(hex("8F010028")), 2, hex("8001"));
    ROWS("named", facts_changed(named, rows));
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
    ROWS("clip, items_of(clip, 7)", items_changed(clip, items_of(clip, 7), rows));
    ROWS("clip, items_of(clip, 3)", items_changed(clip, items_of(clip, 3), rows));
    ROWS("clip, items_of(clip, 10)", items_changed(clip, items_of(clip, 10), rows));
    ROWS("clip, items_of(clip, 8)", items_changed(clip, items_of(clip, 8), rows));
    ROWS("clip, items_of(clip, 33)", items_changed(clip, items_of(clip, 33), rows));
    ROWS("clip, items_of(clip, 32)", items_changed(clip, items_of(clip, 32), rows));
    ROWS("clip, items_of(clip, 6)", items_changed(clip, items_of(clip, 6), rows));
    ROWS("clip, items_of(clip, 22)", items_changed(clip, items_of(clip, 22), rows));
    ROWS("clip, items_of(clip, 1)", items_changed(clip, items_of(clip, 1), rows));
    // Where the tracks leave it open, the descriptor's container duration, else another track tells.
    const Clip open(true, 60, local(0x3002, number(50, 8)));
    const size_t picture = items_of(open.bytes, 21);
    ROWS("open.bytes, picture", items_changed(open.bytes, picture, rows));
    ROWS("Clip(true).bytes, items_of(Clip(true).bytes, 10)",
         items_changed(Clip(true).bytes, items_of(Clip(true).bytes, 10), rows));
    const std::string cut = Clip(true).bytes.substr(0, Clip(true).footer);
    ROWS("cut, items_of(cut, 7)", items_changed(cut, items_of(cut, 7), rows));
    ROWS("open.bytes.substr(0, open.footer), picture",
         items_changed(open.bytes.substr(0, open.footer), picture, rows));
    SHOW(facts_of(Clip(false, 0).bytes) + "\n");
    // A descriptor of data in the place of the second sound's, with their track.
    std::string data = Clip(false, 60, "", set_of("43", 24, local(0x3006, number(4, 4)))).bytes;
    data.replace(data.find(refs({21, 22, 23})) + 55, 1, 1, '\x18');
    ROWS("data, items_of(data, 13)", items_changed(data, items_of(data, 13), rows));
    // The number of a product, of three parts where it has no text.
    const std::string writer = Clip(false, 60, "",
                                    set_of("30", 41,
                                           local(0x3C01, wide("Kel")) + local(0x3C04, "") +
                                               local(0x3C03, hex("0001 0002 0003 0004 0005"))))
                                   .bytes;
    ROWS("writer, items_of(writer, 41)", items_changed(writer, items_of(writer, 41), rows));
}

TEST(MxfFacts, EdgesOfIndexes) {
    Transcript transcript;
    const std::string clip = Clip(true).bytes;
    ROWS("clip, index_of(clip)", items_changed(clip, index_of(clip), rows));
    // Units of one size, of which the index may tell no number.
    ROWS("clip, index_of(clip) 2", items_changed(clip, index_of(clip), rows));
    std::string constant = clip;
    constant.replace(constant.find(local(0x3F0D, number(60, 8))) + 4, 8, number(0, 8));
    constant.replace(constant.find(local(0x3F06, number(2, 4))), 8, local(0x3F05, number(100, 4)));
    ROWS("constant", facts_changed(constant, rows));
    // Its last item ends with the file.
    ROWS("constant.substr(0, constant.size() - 45)",
         facts_changed(constant.substr(0, constant.size() - 45), rows));
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
    ROWS("clip", facts_changed(clip, rows));
    SHOW(facts_changed(constant, "60=0000000000000001 " + footer + "=00"));
}

TEST(MxfFacts, EdgesOfPartitions) {
    Transcript transcript;
    const Clip clip(false);
    const size_t end = clip.bytes.size();
    const size_t sets = clip.footer - kEssence.size();  // the end of them
    ROWS("clip.bytes", facts_changed(clip.bytes, rows));
    ROWS("clip.bytes.substr(0, 108)", facts_changed(clip.bytes.substr(0, 108), rows));
    // Without a random index pack the header tells the footer's place.
    const std::string plain = clip.bytes.substr(0, end - 45);
    ROWS("plain", facts_changed(plain, rows));
    const auto at = [](size_t place) { return std::to_string(place) + "="; };
    ROWS("clip.bytes 2", facts_changed(clip.bytes, rows));
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
        return Clip(false, 60, "", set_of("2F", 60, local(0x3B0B, big().u32(told, 16).raw(all).str()))).bytes;
    };
    // Of references.
    const auto parameters = [](size_t lost) {
        std::string all = big().u32(lost + 1, 16).str();
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
    ROWS("clip_of_texts, items_of(clip_of_texts, 41)",
         items_changed(clip_of_texts, items_of(clip_of_texts, 41), rows));
    // Metadata behind a dark item of a MiB, whose size the header's partition does not tell.
    const std::string dark = item("060E2B34 02530101 0E010101 01010000", std::string(1 << 20, 'd'));
    const std::string clip =
        Clip(false, 60, "", dark + set_of("30", 41, local(0x3C01, wide("Behind")))).bytes;
    SHOW("dark:" + facts_difference(Clip(false).bytes, clip) + "\n");
    ROWS("clip", facts_changed(clip, rows));
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
    ROWS("sample, picture", items_changed(sample, picture, rows));
}
