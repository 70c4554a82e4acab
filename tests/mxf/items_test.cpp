// Structural items and metadata sets.
#include <gtest/gtest.h>

#include "klv_items.h"

namespace {

std::string partition(const std::string &status, const std::string &containers, uint32_t count) {
    ByteWriter w = big();
    w.u16(1, 2).u32(512).u64(0x1000, 0x200, 0xABCDEF, 1000, 0).u32(2).u64(3).u32(1);
    w.hex("060E2B34 04010101 0D010201 01010900").u32(count, 16).raw(containers);
    return item("060E2B34 02050101 0D010201 0102" + status + "00", w.str());
}

std::string primer(const std::string &items, uint32_t count, uint32_t size = 18) {
    return item(kPrimer, big().u32(count, size).raw(items).str());
}

// One item of a set, under a tag that a primer pack declares with the kind of an RP 210 row.
std::string rendered(uint32_t tag, const std::string &value) { return body(set("3B", local(tag, value))); }

// What follows the last item that counts: an item of 25 bytes or less at the end of a file is not looked at.
const std::string kEnd = item(kFiller, std::string(10, 'x'));

const std::string kGuid = hex("00112233445566778899AABBCCDDEEFF");

}  // namespace

TEST(Partition, FieldsAndStatus) {
    Transcript transcript;
    const std::string container = hex("060E2B34 04010102 0D010301 02046001");
    SHOW(dump_of(partition("04", container + std::string(16, 'x'), 2), "clip.mxf"));
    SHOW(body(partition("00", "", 0)).substr(0, 81));
    SHOW(lines_from(body(partition("01", "", 0xFFFFFFFF)), " ContainerCount"));
    EXPECT_EQ(body(partition("01", "", 0)).substr(0, 21), " Open and Incomplete\n");
    SHOW(lines_from(plain(partition("02", "", 0), {"-mx"}), "0x06", 1));
}

TEST(Primer, Branches) {
    Transcript transcript;
    const std::string known = hex("3C0A 060E2B34 01010101 01011502 00000000");
    const std::string other_tag = hex("1234 060E2B34 01010101 01011502 00000000");
    const std::string dynamic = hex("8001 060E2B34 01010105 0E0E0E0E 0E0E0E0E");
    const std::string named = hex("8002") + kGuid;
    const std::string foreign = hex("0003") + kGuid;
    const std::string unknown = hex("0004 060E2B34 01010101 7F7F7F7F 00000000");
    const std::string named_set = set("2F", local(0x3C0A, kGuid));
    const std::string use = set("3B", local(0x8001, "ab") + local(0x8002, "cd") + local(0x1234, kGuid));
    const std::string dump =
        plain(primer(known + other_tag + dynamic + named + foreign + unknown, 6) + named_set + use);
    SHOW(lines_from(dump, " Version", 15));
    SHOW(lines_from(dump, "  Tag 8001/2"));
    SHOW(lines_from(plain(primer("", 3)), "MXFERROR"));
    EXPECT_EQ(lines_from(plain(primer("", 0)), " Itemlength"), " Itemlength         18\n\n\n");
}

TEST(RandomIndex, Pairs) {
    Transcript transcript;
    const std::string pack = item(kRandomIndex, big().u32(0).u64(0).u32(1).u64(0x123456789A).u32(44).str());
    SHOW(body(pack));
    SHOW(body(item(kRandomIndex, big().u32(9).u64(8).u24(7).u32(6).str())));  // of no whole number of pairs
}

TEST(Values, Scalars) {
    Transcript transcript;
    SHOW(rendered(0x4801, hex("FFFFFFFE")));
    const auto value = [](uint32_t tag, const std::string &bytes) {
        return lines_from(rendered(tag, bytes), "   ");
    };
    EXPECT_EQ(value(0x7777, std::string(300, 'a')).size(), 11U + 16 * 53);
    SHOW(value(0x3C01, big().u16('A', 0x20AC, 0xE9, 0, 'B').str()));
    SHOW(value(0x3C01, big().u16('A', 'B').u8('C').str()));
    EXPECT_EQ(value(0x1502, hex("8001")), "   Uint16 32769/8001\n");
    EXPECT_EQ(value(0x3F08, "\xFF"), "   Uint8  255/ff\n");
    EXPECT_EQ(value(0x4B01, hex("00007530 000003E9")), "   Rational 30000/1001 29.97\n");
    EXPECT_EQ(value(0x4B01, hex("00000001 00000000")), "   Rational 1/0\n");
    EXPECT_EQ(value(0x4B01, hex("FFFFFFFF 00000002")), "   Rational -1/2 -0.5\n");
    EXPECT_EQ(value(0x0202, hex("FFFFFFFFFFFFFFFF")), "   Uint64 -1/ffffffffffffffff\n");
    EXPECT_EQ(value(0x3B02, hex("07EA 0C 1F 17 3B 3A FA")), "   Timestamp 2026.12.31 23:59:58-1000\n");
    EXPECT_EQ(value(0x3C07, hex("0001 0000 0002 0003 0004 05")), "   VersionType 1.0.2.3.4\n");
    SHOW(value(0x3B03, kGuid));
    SHOW(value(0x3B09, hex("060E2B34 04010101 0D010201 01010900")));
}

TEST(Values, PackageIds) {
    Transcript transcript;
    const std::string basic = hex("060A2B34 01010105 01010F10 13 000007") + kGuid;
    const auto umid = [](const std::string &bytes) {
        return lines_from(rendered(0x4401, bytes), "   Label");
    };
    SHOW(umid(basic));
    std::string extended = basic;
    extended[12] = 0x33;
    extended += hex("07EA 01 02 03 04 05 06 00000001 00000002 00000003 00000031 FFFFFFFF 00000010");
    SHOW(lines_from(umid(extended), "   Timestamp"));
    std::string wrong = basic;
    wrong[12] = 0x20;
    EXPECT_EQ(lines_from(umid(wrong), "MXFERROR"), "MXFERROR @ 0x00000018 Wrong length of packageid\n");
}

TEST(Values, ArraysAndBatches) {
    Transcript transcript;
    const auto value = [](uint32_t tag, const std::string &bytes) {
        return lines_from(rendered(tag, bytes), "   ");
    };
    const std::string label = hex("060E2B34 04010101 0D010201 01010900");
    EXPECT_EQ(value(0x3B06, big().u32(0, 16).str()), "   StrongReferenceArray\n    Empty\n");
    SHOW(lines_from(rendered(0x3B0A, big().u32(1, 8).raw(label).str()), "   Univ"));
    SHOW(value(0x3B0A, big().u32(9, 16).raw(label).raw(label).str()));
    SHOW(value(0x3F09, big().u32(0, 6).str()));
    SHOW(value(0x3F09, big().u32(2, 3).text("abcdef").str()));
    SHOW(value(0x3F09, big().u32(2, 0).str()));
    EXPECT_LT(value(0x3F09, big().u32(0x7FFFFFFF, 0).str()).size(), 10'000);
    std::string liars;  // each would list all that follow it
    for (int i = 0; i < 1000; i++) liars += local(0x3F09, big().u32(0x7FFFFFFF, 1).str());
    EXPECT_LT(plain(set("3B", liars)).size(), 2'000'000);
    const std::string entries =
        hex("00 FE 22 0000000000001000  FF 01 C0 FFFFFFFFFFFFFFFF  00 00 30 0000000000000001");
    SHOW(value(0x3F0A, big().u32(3, 11).raw(entries).str()));
}

TEST(Sets, NamesAndReferences) {
    Transcript transcript;
    const std::string target = set("30", local(0x3C0A, kGuid));
    const std::string dump = dump_of(target + set("2F", local(0x3B03, kGuid)) + set("99", "") +
                                         item("060E2B34 02530101 0D010101 01020700", local(0x3C0A, kGuid)) +
                                         item("060E2B34 02530101 0D010101 01090700", "") + kEnd,
                                     "clip.mxf");
    SHOW(lines_from(dump, "00000028 "));
    SHOW(lines_from(plain(target + set("2F", local(0x3B03, kGuid))), "    References"));
}

TEST(Sets, DefinitionsNameTags) {
    Transcript transcript;
    const std::string name = local(0x0006, big().u16('S', 0x3A9, 't').str());
    const std::string tag = local(0x000D, hex("8123"));
    const std::string id = local(0x0005, kGuid.substr(1) + "x");
    const std::string uid = local(0x3C0A, kGuid);
    const std::string use = set("3B", local(0x8123, "!"));
    const auto used = [&](const std::string &items) {
        return lines_from(plain(set("00", uid + items) + use + kEnd), "  Tag 8123", 1);
    };
    EXPECT_EQ(used(name + tag + id), "  Tag 8123/1 S?t\n");
    EXPECT_EQ(used(name + tag), "  Tag 8123/1 unknown\n");
    EXPECT_EQ(used(name + tag + local(0x0005, kGuid)), "  Tag 8123/1 unknown\n");  // begins with a zero
    EXPECT_EQ(used(tag + id), "  Tag 8123/1 unknown\n");
    // Items of a wrong length are not taken over.
    EXPECT_EQ(used(name + local(0x000D, hex("812300")) + id), "  Tag 8123/1 unknown\n");
    EXPECT_EQ(used(name + tag + local(0x0005, "x")), "  Tag 8123/1 unknown\n");
    const std::string dump = plain(set("00", uid + name + local(0x000D, "x") + local(0x0005, "y")));
    SHOW(lines_from(dump, "MXFERROR", 2));
    EXPECT_NE(dump.find("DefineMetadata S?t\n"), std::string::npos);
    const std::string object = item("060E2B34 02530101 0D010101 01020000", uid + name + tag + id);
    SHOW(lines_from(plain(object + use + kEnd), "  Tag 8123", 3));
    EXPECT_NE(plain(object).find(" - DefineObject S?t\n"), std::string::npos);
    // Behind a length of nine bytes the items are read to 20 bytes and the length behind the key.
    const std::string long_length = big().hex("060E2B34 02530101 0D010101 01010000 88").u64(14).str();
    const std::string short_name = local(0x0006, big().u16('A', 'B').str());
    SHOW(lines_from(plain(long_length + local(0x0001, "12") + short_name), "06.", 1));
}

// Local sets end with their length or with the file; names keep 127 characters.
TEST(Sets, Edges) {
    const auto tags = [](const std::string &items, size_t cut = 0) {
        std::string file = set("3B", items);
        file.resize(file.size() - cut);
        const std::string dump = plain(file);
        std::string found;
        for (size_t at = 0; (at = dump.find("  Tag ", at)) != std::string::npos; at++) {
            found += dump.substr(at + 6, dump.find(' ', at + 6) - at - 5);
        }
        return found;
    };
    const std::string two = local(0x4801, "abcd") + local(0x4802, "");
    EXPECT_EQ(tags(two), "4801/4 4802/0 ");
    EXPECT_EQ(tags(two, 3), "4801/4 4800/0 ");
    EXPECT_EQ(tags(two, 4), "4801/4 ");
    EXPECT_EQ(tags(local(0x4801, "abcd") + "H"), "4801/4 4800/0 ");
    const auto name = [](size_t length) {
        std::string text;
        for (size_t i = 0; i < length; i++) text += {'\0', 'n'};
        const std::string dump = plain(set("00", local(0x0006, text)));
        const size_t at = dump.find("DefineMetadata ") + 15;
        return dump.find('\n', at) - at;
    };
    EXPECT_EQ(name(127), 127U);
    EXPECT_EQ(name(128), 127U);
    const std::string long_length = big().hex("060E2B34 02530101 0D010101 01010000 88").u64(11).str();
    const std::string dump = plain(long_length + local(0x0001, "12") + local(0x0006, "A"));
    EXPECT_NE(dump.find("DefineMetadata unknown"), std::string::npos);
}

// Arrays of a set show four times its bytes, of an element 32 bytes and of elements without bytes 256.
TEST(Values, EdgesOfArrays) {
    const auto count = [](const std::string &dump) {
        size_t n = 0;
        for (size_t at = 0; (at = dump.find("\n     0", at)) != std::string::npos; at++) n++;
        return n;
    };
    for (const uint32_t size : {1, 40}) {
        std::string arrays;
        for (int i = 0; i < 100; i++) arrays += local(0x3F09, big().u32(0x7FFFFFFF, size).str());
        const std::string file = set("3B", arrays);
        EXPECT_EQ(count(plain(file)), 4 * file.size() / std::min(size, 32U));
    }
    const auto array = [](uint32_t elements, uint32_t size, const std::string &bytes) {
        return rendered(0x3F09, big().u32(elements, size).raw(bytes).str());
    };
    EXPECT_EQ(lines_from(array(1, 33, std::string(33, 'a')), "     00000000").size(), 15U + 32 * 3);
    EXPECT_EQ(count(array(300, 0, "")), 256U);
    EXPECT_EQ(count(array(2, 3, "abcd")) + count(array(2, 3, "abc")), 2U + 1);
    EXPECT_EQ(count(rendered(0x3F09, hex("00000002 000000"))), 0U);
    EXPECT_EQ(lines_from(rendered(0x3C01, big().u16('A', 'B').str()), "   "), "   Unicode 'AB'\n");
}

// Lists of structural items end with their count, their length or the file.
TEST(Partition, EdgesOfLists) {
    const auto lines = [](const std::string &file, const std::string &start) {
        const std::string dump = plain(file);
        size_t n = 0;
        for (size_t at = 0; (at = dump.find("\n" + start, at)) != std::string::npos; at++) n++;
        return n;
    };
    const std::string container = hex("060E2B34 04010102 0D010301 02046001");
    const std::string labels(20, ' ');
    EXPECT_EQ(lines(partition("01", container + container, 1), labels), 1U);
    EXPECT_EQ(lines(partition("01", container, 2), labels), 1U);
    EXPECT_EQ(lines(partition("01", container + "x", 2), labels), 2U);
    const std::string dynamic = hex("7FFF") + kGuid + hex("8000") + kGuid;
    EXPECT_EQ(lines(primer(dynamic, 2), "  Tag 8000 - "), 1U);
    EXPECT_EQ(lines(primer(dynamic, 2), "  Tag 7fff - "), 0U);
    const std::string known = hex("3C0A 060E2B34 01010101 01011502 00000000");
    const std::string two = primer(known + known, 2);
    EXPECT_EQ(lines(two.substr(0, two.size() - 18), "MXFERROR"), 0U);
    EXPECT_EQ(lines(two.substr(0, two.size() - 17), "MXFERROR"), 1U);
    EXPECT_EQ(lines(primer(known + "x", 2), "MXFERROR"), 2U);
    const std::string pair = big().u32(1).u64(2).str();
    EXPECT_EQ(lines(item(kRandomIndex, pair + "1234"), " bodysid"), 1U);
    EXPECT_EQ(lines(item(kRandomIndex, pair + "12345"), " bodysid"), 2U);
    const std::string pack = item(kRandomIndex, pair + pair + "1234");
    EXPECT_EQ(lines(pack.substr(0, pack.size() - 16), " bodysid"), 1U);
    EXPECT_EQ(lines(pack.substr(0, pack.size() - 15), " bodysid"), 2U);
}
