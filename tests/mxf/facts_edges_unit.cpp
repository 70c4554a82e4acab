#include <gtest/gtest.h>

#include "mxf/clip.h"
#include "support/facts_text.h"

namespace {

// Where the items of a set begin.
size_t items_of(const std::string &content, int n) { return content.find(local(0x3C0A, uid(n))); }

const std::string kIndex = hex("060E2B34 02530101 0D010201 01100100");
// facts_changed() of items from a place on: "3301=0A" that the value of an item begins so, "3301^33020001"
// that it stands for another one.
std::string items_changed(const std::string &content, size_t items, const std::string &changes) {
    const auto change = [&](std::string &bytes, const std::string &step) {
        size_t at = items;
        while (content.compare(at, 2, hex(step.substr(0, 4))) != 0)
            at += 4 + (static_cast<size_t>(static_cast<uint8_t>(content[at + 2])) << 8 |
                       static_cast<uint8_t>(content[at + 3]));
        const std::string raw = hex(step.substr(5));
        bytes.replace(at + (step[4] == '=' ? 4 : 0), raw.size(), raw);
    };
    return rows_of(changes, [&](const std::string &word) {
        return facts_difference(content, changed_by(content, word, change));
    });
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
