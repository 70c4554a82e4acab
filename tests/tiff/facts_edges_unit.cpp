#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

namespace {

constexpr size_t kPicture = 512;  // where it begins

struct Entry {
    uint32_t type, count, value;
};

// A grey picture of 8x4 pixels in one strip, with other entries: "277=3" a short, "256=4:1:70000" of a type
// and a count, "-279" one that is left out; "<100" is the size of the file, ">100" where the next directory
// is.
std::string changed_tiff(const std::string &changes) {
    std::map<uint32_t, Entry> entries = {{256, {3, 1, 8}}, {257, {3, 1, 4}}, {258, {3, 1, 8}},
                                         {259, {3, 1, 1}}, {262, {3, 1, 1}}, {273, {4, 1, kPicture}},
                                         {277, {3, 1, 1}}, {278, {3, 1, 4}}, {279, {4, 1, 32}}};
    size_t size = kPicture + 32;
    uint32_t next = 0;
    std::istringstream words(changes);
    for (std::string word; std::getline(words, word, ',');) {
        const std::string right = word.substr(word.find('=') + 1);
        if (word[0] == '-') {
            entries.erase(static_cast<uint32_t>(std::stoul(word.substr(1))));
        } else if (word[0] == '<') {
            size = std::stoul(word.substr(1));
        } else if (word[0] == '>') {
            next = static_cast<uint32_t>(std::stoul(word.substr(1)));
        } else {
            std::array<uint32_t, 3> values = {3, 1, 0};
            std::istringstream parts(right);
            std::string part;
            std::vector<uint32_t> numbers;
            while (std::getline(parts, part, ':')) numbers.push_back(static_cast<uint32_t>(std::stoul(part)));
            std::ranges::copy(numbers, values.end() - static_cast<ptrdiff_t>(numbers.size()));
            if (numbers.size() == 3) std::ranges::copy(numbers, values.begin());
            entries[static_cast<uint32_t>(std::stoul(word))] = {values[0], values[1], values[2]};
        }
    }
    ByteWriter file = little();
    file.text("II*").u8(0).u32(8).u16(entries.size());
    for (const auto &[tag, entry] : entries) file.u16(tag, entry.type).u32(entry.count, entry.value);
    file.u32(next).at(300);
    for (uint32_t i = 1; i <= 50; i++) file.u32(i);
    std::string bytes = file.at(kPicture).fill('x', 4096).str();
    bytes.resize(size);
    return bytes;
}

std::string changes_of_tiff(const std::string &list) {
    return rows_of(list, [plain = changed_tiff("")](const std::string &word) {
        return facts_difference(plain, changed_tiff(word), "a.tif");
    });
}

}  // namespace

TEST(TiffEdges, Entries) {
    Transcript transcript;
    SHOW(facts_of(changed_tiff("")));
    // Sizes of all types, and a type that is none.
    ROWS("all", changes_of_tiff(rows));
}

// Where data end: by strips and tiles, compressed or not; what has no count has what it needs.
TEST(TiffEdges, Data) {
    Transcript transcript;
    ROWS("all", changes_of_tiff(rows));
}

// Directories one after the other, in circles, beyond the end; values beyond the end, of private tags too.
TEST(TiffEdges, Directories) {
    Transcript transcript;
    ROWS("all", changes_of_tiff(rows));
    ROWS("changed_tiff()", facts_changed(changed_tiff(""), rows));
}

// DNG: the part that is shown, its scale, time codes and rates.
TEST(TiffEdges, CinemaDng) {
    Transcript transcript;
    // The numbers at 300 count up by one.
    ROWS("all", changes_of_tiff(rows));
}
