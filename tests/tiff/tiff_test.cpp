#include <gtest/gtest.h>

#include <algorithm>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

using Order = ByteWriter::Order;

struct Entry {
    uint32_t tag;
    uint32_t type;
    uint32_t count;
    std::string value;  // four bytes as they stand in the file
};

std::string in_order(Order order, uint32_t value) { return ByteWriter(order).u32(value).str(); }

// The bytes of a directory.
std::string directory(Order order, const std::vector<Entry> &entries, uint32_t next = 0) {
    ByteWriter w(order);
    w.u16(entries.size());
    for (const Entry &e : entries) w.u16(e.tag, e.type).u32(e.count).raw(e.value);
    return w.u32(next).str();
}

// A file with one directory at 8 and data at 1000.
std::string tiff(Order order, const std::vector<Entry> &entries, const std::string &data = "",
                 uint32_t next = 0) {
    ByteWriter w(order);
    w.text(order == Order::big ? "MM" : "II").u16(42).u32(8).raw(directory(order, entries, next));
    return w.at(1000).raw(data).str();
}

// A file that ends behind its directory.
std::string file_with(const std::vector<Entry> &entries) {
    return little().text("II").u16(42).u32(8).raw(directory(Order::little, entries)).str();
}

// How often a text stands in the dump of a file.
size_t count_in_dump(const std::string &content, const std::string &text) {
    const std::string dump = dump_of(content);
    size_t n = 0;
    for (size_t at = 0; (at = dump.find(text, at)) != std::string::npos; at++) n++;
    return n;
}

// The first line of an entry behind its tag name.
std::string value_line(Order order, uint32_t type, uint32_t count, const std::string &value,
                       const std::string &data = "", const std::vector<std::string> &switches = {}) {
    const std::string dump = dump_of(tiff(order, {{0x9999, type, count, value}}, data), "a.tif", switches);
    const std::string line = lines_from(dump, "  tag     : 9999 ? ", 1);
    return line.substr(19, line.size() - 20);
}

const std::string kAt1000Little = little().u32(1000).str();
const std::string kAt1000Big = big().u32(1000).str();

}  // namespace

TEST(Tiff, HeadersInBothOrders) {
    Transcript transcript;
    SHOW(dump_of(tiff(Order::big, {{256, 3, 1, std::string("\x02\x00\x00\x00", 4)}})));
    SHOW(dump_of(little().text("II").u16(43).u32(8, 0).str()));
    SHOW(lines_from(dump_of(little().text("II").u16(1).u32(8).str()), " version", 1));
}

// Inside the value field and outside, with a type that there is not.
TEST(Tiff, ValuesOfEveryType) {
    Transcript transcript;
    const std::string bytes = hex("417A0001 FFFFFFFE 3FC00000 00000000 0000C03F 000000000000F83F 00000002");
    std::string every;
    for (const Order order : {Order::little, Order::big}) {
        const std::string outside = order == Order::big ? kAt1000Big : kAt1000Little;
        for (uint32_t type = 0; type <= 13; type++) {
            every += std::to_string(type) + ": " + value_line(order, type, 1, bytes.substr(0, 4)) + "| " +
                     value_line(order, type, 5, outside, bytes) + "\n";
        }
    }
    SHOW(every);
    EXPECT_EQ(value_line(Order::big, 1, 2, bytes.substr(0, 4)), "65 122 ");
    EXPECT_EQ(value_line(Order::big, 6, 1, hex("80000000")), "-128 ");
    EXPECT_EQ(value_line(Order::big, 13, 0, "abcd"), "");
    EXPECT_EQ(value_line(Order::big, 1, 0x80000000, "abcd"), "");
    const std::string ratios = big().u32(0xFFFFFFFF, 2, 1, 0).str();
    EXPECT_EQ(value_line(Order::big, 5, 2, kAt1000Big, ratios), "2147483647.50000 NAN ");
    EXPECT_EQ(value_line(Order::big, 10, 2, kAt1000Big, ratios), "-0.50000 NAN ");
    EXPECT_EQ(value_line(Order::little, 2, 8, kAt1000Little, std::string("name\0rest", 9)), "'name'");
    const std::string cut = little().u16(1, 2).str();
    EXPECT_EQ(value_line(Order::little, 3, 3, kAt1000Little, cut), "1 2 0 ");
}

TEST(Tiff, LongValues) {
    ByteWriter longs = little();
    for (uint32_t i = 0; i < 3000; i++) longs.u32(1000 + i);
    const std::string text = value_line(Order::little, 4, 3000, kAt1000Little, longs.str());
    EXPECT_EQ(text.substr(0, 15), "1000 1001 1002 ");
    EXPECT_EQ(text.substr(7930), "2586 2587  (dump truncated)");
    EXPECT_EQ(value_line(Order::little, 7, 2646, kAt1000Little, std::string(2646, 'a')).substr(7935),
              "61  (dump truncated)");
    const std::string shared =
        dump_of(tiff(Order::little, std::vector<Entry>(80, {0x9999, 4, 3000, kAt1000Little}), longs.str()));
    EXPECT_EQ(std::count(shared.begin(), shared.end(), ')'), 80);
    const auto ascii = [](size_t n) {
        return value_line(Order::little, 2, static_cast<uint32_t>(n), kAt1000Little, std::string(n, 'x'));
    };
    EXPECT_EQ(ascii(7933).size(), 7935U);
    EXPECT_EQ(ascii(7934).substr(7933), "xx' (dump truncated)");
    EXPECT_EQ(ascii(8157).substr(8157), "x' (dump truncated)");
    EXPECT_EQ(ascii(8158).size(), 8160U);
    EXPECT_EQ(ascii(9000).size(), 8191U);
}

// Entries of all tags that there can be: those with a name.
TEST(Tiff, NamesOfTags) {
    Transcript transcript;
    std::vector<Entry> entries;
    for (uint32_t tag = 0; tag < 0xFFFF; tag++) entries.push_back({tag, 3, 0, kAt1000Little});
    const std::string dump =
        dump_of(little().text("II").u16(42).u32(8).raw(directory(Order::little, entries)).str());
    std::string names;
    for (size_t at = 0; (at = dump.find("  tag     : ", at)) != std::string::npos;) {
        const std::string line = dump.substr(at + 12, dump.find('\n', at) - at - 11);
        if (line.find(" ? ") == std::string::npos) names += line;
        at += line.size();
    }
    SHOW(names);
}

TEST(Tiff, NamesThatDependOnTheValue) {
    Transcript transcript;
    for (const Order order : {Order::little, Order::big}) {
        std::vector<Entry> entries;
        for (const uint32_t value :
             {0,     1,     2,     3,     4,     5,     6,     7,     8,     9,     32766,
              32771, 32773, 32803, 32809, 32892, 65001, 65002, 65016, 65017, 65102, 65535}) {
            for (const uint32_t tag : {259, 262, 339})
                entries.push_back({tag, 3, 1, ByteWriter(order).u16(value, 0).str()});
        }
        SHOW(dump_of(tiff(order, entries)));
    }
}

TEST(Tiff, VerboseTags) {
    Transcript transcript;
    const std::string content =
        tiff(Order::little, {{273, 4, 1, little().u32(77).str()}, {37500, 7, 2, "ab\0\0"}});
    SHOW(lines_from(dump_of(content), "  tag     : 0111", 1));
    SHOW(lines_from(dump_of(content), "  tag     : 927c", 1));
    SHOW(lines_from(dump_of(content, "a", {"-v"}), "  tag     : 0111", 1));
}

TEST(Tiff, ChainsAndSubDirectories) {
    Transcript transcript;
    const std::string one = directory(Order::little, {{256, 3, 1, std::string("\x05\0\0\0", 4)}});
    SHOW(lines_from(dump_of(tiff(Order::little, {}, one, 1000)), " entries: 0"));
    SHOW(lines_from(dump_of(tiff(Order::little, {{330, 4, 1, kAt1000Little}}, one)), "SUB IFD"));
    SHOW(lines_from(dump_of(tiff(Order::little, {{34665, 4, 1, kAt1000Little}}, one)), "EXIF IFD"));
    // A directory twice and one outside the file; a chain that leads into a sub-directory.
    const std::string offsets = little().u32(1012, 1012, 99999).str();
    SHOW(lines_from(dump_of(tiff(Order::little, {{330, 4, 3, kAt1000Little}}, offsets + one)), "SUB IFD 0"));
    SHOW(lines_from(dump_of(tiff(Order::little, {{34665, 4, 1, kAt1000Little}}, one, 1000)), "EXIF IFD"));
    // Circles.
    SHOW(lines_from(dump_of(tiff(Order::little, {}, "", 8)), " entries"));
    SHOW(lines_from(dump_of(tiff(Order::little, {{330, 4, 1, little().u32(8).str()}})), "SUB"));
    SHOW(lines_from(dump_of(tiff(Order::little, {}, "", 5000)), " entries"));
    SHOW(lines_from(dump_of(little().text("II").u16(42).u32(9999).str()), " filesize"));
    SHOW(lines_from(dump_of(little().text("II").u16(42).u32(8).u16(2, 256, 3).u32(1, 5).str()), " entries"));
}

TEST(Tiff, NestingEnds) {
    ByteWriter w = little();
    w.text("II").u16(42).u32(8);
    for (uint32_t i = 0; i < 600; i++) {
        w.at(8 + 18 * i).raw(directory(Order::little, {{330, 4, 1, little().u32(8 + 18 * (i + 1)).str()}}));
    }
    const std::string dump = dump_of(w.str());
    size_t depth = 0;
    for (size_t at = 0; (at = dump.find("SUB IFD entries", at)) != std::string::npos; at++) depth++;
    EXPECT_EQ(depth, 512U);
    EXPECT_NE(dump.find("SUB IFD\n"), std::string::npos);
    // Lists of sub-directories that lie on each other are not all listed.
    const std::vector<Entry> liars(200, {330, 4, 500, little().u32(8).str()});
    const std::string lists = dump_of("II" + hex("2A00 08000000") + directory(Order::little, liars));
    EXPECT_LT(std::count(lists.begin(), lists.end(), '\n'), 30'000);
    // Nor are the 2 to the power of 30 that a tree of shared directories names.
    ByteWriter tree = little().text("II").u16(42).u32(8);
    for (uint32_t i = 0; i < 30; i++) {
        const uint32_t next = 8 + 26 * (i + 1);
        tree.raw(directory(Order::little, {{330, 4, 2, little().u32(next - 8).str()}})).u32(next, next);
    }
    const std::string shown = dump_of(tree.zeros(6).str());
    EXPECT_GT(std::count(shown.begin(), shown.end(), '\n'), 5'000);
    EXPECT_LT(std::count(shown.begin(), shown.end(), '\n'), 30'000);
}

// Offsets of directories to the last byte of a file and behind it, and what is left of one that a file cuts.
TEST(Tiff, EdgesOfTheFile) {
    const auto file = [](const std::string &rest) { return little().text("II").u16(42).raw(rest).str(); };
    EXPECT_EQ(count_in_dump(file(little().u32(7).str()), " entries: 0"), 1U);
    EXPECT_EQ(count_in_dump(file(little().u32(8).str()), " entries: 0"), 0U);
    const auto chain = [&](uint32_t next) { return file(little().u32(8).u16(0).u32(next).str()); };
    EXPECT_EQ(count_in_dump(chain(13), " entries: 0"), 2U);
    EXPECT_EQ(count_in_dump(chain(14), " entries: 0"), 1U);
    const auto sub = [](uint32_t at) { return file_with({{330, 4, 1, little().u32(at).str()}}); };
    EXPECT_EQ(count_in_dump(sub(25), "SUB IFD entries: 0"), 1U);
    EXPECT_EQ(count_in_dump(sub(26), "SUB IFD\n"), 1U);
    const std::string offsets = little().u32(9999, 9999).str();
    for (const size_t size : {7, 8}) {
        EXPECT_EQ(count_in_dump(file_with({{330, 4, 2, little().u32(26).str()}}) + offsets.substr(0, size),
                                "SUB IFD "),
                  size - 6);
        EXPECT_EQ(count_in_dump(file(little().u32(8).u16(2).zeros(size + 4).str()), "  tag  "), 1U);
    }
    EXPECT_EQ(count_in_dump(file(little().u32(8).u16(2).zeros(12).str()), "  tag  "), 1U);
    EXPECT_EQ(count_in_dump(file(little().u32(8).u16(2).zeros(13).str()), "  tag  "), 2U);
}

// Of a file's budget, 8 bytes a byte and 64 KiB, a directory takes 6 bytes, an entry 12, an offset in a list
// 4, and a value's text a 16th of its length.
TEST(Tiff, CostsOfWhatIsShared) {
    // 200 entries with the same list of 500 offsets of an empty directory; a type that there is not has no
    // text.
    const uint32_t empty = 8 + 6 + 12 * 200;
    ByteWriter lists = little().text("II").u16(42).u32(8);
    lists.raw(
        directory(Order::little, std::vector<Entry>(200, {330, 0, 500, little().u32(empty + 6).str()})));
    lists.zeros(6);
    for (int i = 0; i < 500; i++) lists.u32(empty);
    const size_t left = 8 * lists.size() + 65536 - 6;
    const size_t whole = left / (12 + 500 * (4 + 6));  // entries whose list is shown to its end
    const size_t rest = left % (12 + 500 * (4 + 6)) - 12;
    EXPECT_EQ(count_in_dump(lists.str(), " entries: 0"), 500 * whole + (rest + 9) / 10);

    ByteWriter texts = little().text("II").u16(42).u32(8);
    const uint32_t text = 8 + 6 + 12 * 1000;
    texts.raw(directory(Order::little, std::vector<Entry>(1000, {271, 2, 4798, little().u32(text).str()})));
    texts.text(std::string(4798, 'x'));  // in quotes 4800
    const size_t cost = 12 + 4800 / 16;
    EXPECT_EQ(count_in_dump(texts.str(), "  tag  "), (8 * texts.size() + 65536 - 6 + cost - 1) / cost);
}

TEST(Tiff, PhotoshopResources) {
    Transcript transcript;
    ByteWriter w = big();
    w.text("8BIM").u16(1005).u8(3).text("abc").u32(3).text("xyz").u8(0);
    w.text("8BIM").u16(1036, 0).u32(2).text("th").text("8BIX").zeros(4);
    const std::string resources = w.str();
    const uint32_t size = static_cast<uint32_t>(resources.size());
    const std::string content = tiff(Order::little, {{34377, 1, size, kAt1000Little}}, resources);
    SHOW(lines_from(dump_of(content), "  tag"));
    EXPECT_EQ(lines_from(dump_of(content, "a", {"-v"}), "    size 2", 2), "    size 2\n     74 68 \n");

    // Blocks begin up to the last byte of the value; a size of 0 is one, a negative size ends the run.
    const std::string block = big().text("8BIM").u16(1, 0).u32(0).str();
    const auto blocks = [&](uint32_t count, const std::string &first) {
        return count_in_dump(tiff(Order::little, {{34377, 1, count, kAt1000Little}}, first + block),
                             "    id   1\n");
    };
    EXPECT_EQ(blocks(0, block), 0U);
    EXPECT_EQ(blocks(1, block), 1U);
    EXPECT_EQ(blocks(12, block), 1U);
    EXPECT_EQ(blocks(13, block), 2U);
    const auto negative = [](uint32_t length) { return big().text("8BIM").u16(1, 0).u32(length).str(); };
    EXPECT_EQ(blocks(24, negative(0xFFFFFFFF)), 1U);
    EXPECT_EQ(lines_from(
                  dump_of(tiff(Order::little, {{34377, 1, 24, kAt1000Little}}, negative(0xFFFFFFFF) + block)),
                  "    size", 2),
              "    size -1\n   type   : 0001\n");

    const std::string magic("Adobe Photoshop Document Data Block\0", 36);
    const auto source = [&](uint32_t count, const std::string &data) {
        return lines_from(dump_of(tiff(Order::big, {{37724, 7, count, kAt1000Big}}, data)), "  tag", 5);
    };
    SHOW(source(36, magic));
    SHOW(source(60, magic + "8BIX"));
    SHOW(source(36, "something"));
}

TEST(Tiff, FirstPixels) {
    Transcript transcript;
    const auto pixels = [](Order order, uint32_t bits, const std::string &data,
                           const std::vector<std::string> &switches) {
        const std::string short_bits = ByteWriter(order).u16(bits, 0).str();
        const std::string dump = dump_of(
            tiff(order, {{258, 3, 1, short_bits}, {273, 4, 1, in_order(order, 1000)}}, data), "a", switches);
        return lines_from(dump, "rgb");
    };
    SHOW(pixels(Order::little, 8, "\x01\x02\x03\x04\x05\x06\x07", {"-v", "-p"}));
    EXPECT_EQ(pixels(Order::big, 16, "abcdefg", {"-v", "-p"}), "rgb : 6162 6364 6566\n");
    EXPECT_EQ(pixels(Order::little, 16, "abcdef", {"-v", "-p"}), "rgb : 6261 6463 6665\n");
    SHOW(pixels(Order::little, 12, "\x12\x34\x56\x78\x9A\xBC\xDE\xF1\x23", {"-v", "-p"}));
    EXPECT_EQ(pixels(Order::little, 8, std::string(400, 'x'), {"-v", "-p"}).size(), 100U * 21);
    // The last pixel of a strip that ends with it, or a byte before.
    const auto count = [&](uint32_t bits, size_t size) {
        return pixels(Order::little, bits, std::string(size, 'x'), {"-v", "-p"}).size() / 21;
    };
    for (const auto &[bits, first, second] : {std::tuple{8, 3, 6}, {12, 5, 9}, {16, 6, 12}}) {
        const uint32_t depth = static_cast<uint32_t>(bits);
        for (const int size : {first, second}) {
            EXPECT_EQ(count(depth, static_cast<size_t>(size)), size == first ? 1U : 2U) << bits;
            EXPECT_EQ(count(depth, static_cast<size_t>(size) - 1), size == first ? 0U : 1U) << bits;
        }
        EXPECT_EQ(count(depth, 1000), 100U) << bits;
    }
    SHOW(pixels(Order::little, 8, "", {"-p"}).substr(0, 21));  // offset not read
    EXPECT_EQ(lines_from(dump_of(tiff(Order::big, {}), "a", {"-p"}), "Unknown"), "Unknown pixel depth 0\n");
}

TEST(Tiff, DirectoriesAtTheEndOfHugeFiles) {
    const Workplace place;
    place.write_sparse("a.tif", 4'000'000'100, 0, little().text("II").u16(42).u32(4'000'000'000).str());
    place.write_sparse("a.tif", 4'000'000'100, 4'000'000'000,
                       directory(Order::little, {{271, 2, 3, "RED\0"}}));
    EXPECT_EQ(lines_from(place.run({"a.tif"}).out, " filesize", 3),
              " filesize  : -294967196\n entries: 1\n  tag     : 010f Make 'RED'\n");
}
