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
    for (const auto &[tag, entry] : entries) file.u16(tag).u16(entry.type).u32(entry.count).u32(entry.value);
    file.u32(next).at(300);
    for (uint32_t i = 1; i <= 50; i++) file.u32(i);
    std::string bytes = file.at(kPicture).fill('x', 4096).str();
    bytes.resize(size);
    return bytes;
}

std::string changes_of_tiff(const std::string &list) {
    const std::string plain = changed_tiff("");
    std::istringstream words(list);
    std::string report;
    for (std::string word; words >> word;)
        report += word + ":" + facts_difference(plain, changed_tiff(word), "a.tif") + "\n";
    return report;
}

}  // namespace

TEST(TiffEdges, Entries) {
    Transcript transcript;
    SHOW(facts_of(changed_tiff("")));
    // Sizes of all types, and a type that is none.
    SHOW(changes_of_tiff(
        "256=0 256=1 256=4:1:70000 256=4:1:2147483647 256=4:1:2147483648 256=1:1:8 256=13:1:9 "
        "256=18:1:300 256=19:1:8 256=14:1:8 256=4:0:9 257=0 257=4:1:2147483648 -256 -257"));
    SHOW(changes_of_tiff(
        "258=0 258=1 258=16 258=128 258=129 258=3:3:300 339=1 339=2 339=3 339=4 339=5 339=6"));
    SHOW(changes_of_tiff(
        "262=0 262=1 262=2 262=3 262=4 262=5 262=6 262=7 262=8 262=9 262=10 262=11 262=32803 262=34892 "
        "262=34892,277=3 262=0,277=2 262=2,277=3 262=2,277=4 262=2,277=5 277=3 -262"));
    SHOW(
        changes_of_tiff("262=6,530=3:2:65537 262=6,530=3:2:65538 262=6,530=3:2:131074 262=6,530=3:2:65540 "
                        "262=6,530=3:1:1 262=6,530=3:2:196609"));
    SHOW(changes_of_tiff(
        "282=5:1:300,283=5:1:300 282=5:1:300,283=5:1:308 282=5:1:300 282=5:1:1000,283=5:1:300 "
        "282=4:1:300,283=5:1:300"));
    SHOW(changes_of_tiff("254=4:1:1 254=4:1:2 274=1 274=2 274=8 271=2:4:7627107 305=2:3:25185 305=2:5:300"));
    SHOW(changes_of_tiff("50706=1:4:1025 50706=1:2:1025 50706=1:1:1 50706=3:4:300"));
}

// Where data end: by strips and tiles, compressed or not; what has no count has what it needs.
TEST(TiffEdges, Data) {
    Transcript transcript;
    SHOW(changes_of_tiff(
        "<543 <513 <512 <511 279=4:1:31 279=4:1:33 279=4:1:0 -279 279=4:1:7 279=4:1:8 279=4:1:65536"));
    SHOW(changes_of_tiff(
        "278=1 278=3 278=5 278=4:1:4294967295 278=0 258=12 258=1 277=2 277=2,284=2 277=2,284=1"));
    SHOW(changes_of_tiff(
        "273=4:1:513 273=4:1:511 273=4:1:0 -273 273=4:2:300,278=2 273=4:2:300,279=4:2:304,278=2"));
    SHOW(
        changes_of_tiff("259=5 259=5,279=4:1:33 259=5,279=4:1:4096,<4608 259=5,279=4:1:4096,<4607 "
                        "259=5,279=4:1:0 259=5,-279"));
    SHOW(
        changes_of_tiff("322=16,323=16,324=4:1:512,325=4:1:256 322=16,323=16,324=4:1:512,325=4:1:256,<768 "
                        "322=16,323=16,324=4:1:512,325=4:1:256,<767 322=16,323=16,324=4:1:512,-325,<768 "
                        "322=16,323=16,324=4:1:512,-325,<767 322=16,323=16,324=4:1:512,325=4:1:100,32998=2"));
}

// Directories one after the other, in circles, beyond the end; values beyond the end, of private tags too.
TEST(TiffEdges, Directories) {
    Transcript transcript;
    SHOW(changes_of_tiff(">8 >9 >543 >544 >600 330=4:1:8 330=4:1:600 330=4:2:300 330=4:16:300 330=4:17:300"));
    SHOW(changes_of_tiff(
        "305=2:5:539 305=2:5:540 305=2:5:544 700=2:5:540 701=2:5:540 50706=1:5:540 50705=1:5:540 "
        "51105=1:5:540 51106=1:5:540 305=2:4:540"));
    SHOW(facts_changed(changed_tiff(""),
                       "<7 <8 <9 <10 <117 <118 <121 <122 8=0000 8=0100 8=0800 8=0A00 2=2B00 4=00000000"));
}

// DNG: the part that is shown, its scale, time codes and rates.
TEST(TiffEdges, CinemaDng) {
    Transcript transcript;
    // The numbers at 300 count up by one.
    SHOW(changes_of_tiff(
        "50720=3:2:262152 50720=3:2:262153 50720=3:2:327688 50720=3:2:65537 50720=4:2:304 50720=4:2:324 "
        "50720=5:2:304 50718=5:2:300 50718=5:1:300 51044=10:1:300 51044=10:1:396 51081=2:4:12354"));
    SHOW(changes_of_tiff("51043=1:8:300 51043=1:7:300 51043=2:8:300 51043=1:8:300,51044=10:1:396"));
}
