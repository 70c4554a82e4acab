#include "tiff/tiff.h"

#include <cstring>
#include <set>
#include <vector>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"
#include "tiff/directory.h"

namespace {

constexpr uint32_t kBigEndianId = 0x4D4D;  // "MM"
constexpr uint32_t kStandardVersion = 42;
constexpr CodeName kVersionNames[] = {{kStandardVersion, "Standard TIFF"}, {43, "BIG TIFF"}};
constexpr uint64_t kEntrySize = 12;
constexpr uint64_t kDirectoryFrame = 6;  // the count before the entries and the offset behind them
constexpr int kMaxDepth = 512;           // of sub-directories in sub-directories, each a level of the stack
constexpr uint64_t kSharedText = 16;     // characters of values that cost as much as a byte of the file

constexpr uint16_t kImageWidth = 256;
constexpr uint16_t kImageLength = 257;
constexpr uint16_t kBitsPerSample = 258;
constexpr uint16_t kStripOffsets = 273;
constexpr uint16_t kStripByteCounts = 279;
constexpr uint16_t kSubIfds = 330;
constexpr uint16_t kPhotoshop = 34377;
constexpr uint16_t kExifIfd = 34665;
constexpr uint16_t kMakerNote = 37500;
constexpr uint16_t kImageSourceData = 37724;

// clang-format off
constexpr FieldRow kEntryRows[] = {
    {2, Field::hex16, "   type   : "},
    {4, Field::hex32, "   count  : "},
    {8, Field::hex32, "   value  : "},
};
// clang-format on

struct Walk {
    DumpOptions &opts;
    OrderedBytes base;
    Budget &budget;
    std::set<uint32_t> open_directories;  // that are still being walked

    bool is_open(uint32_t offset) const { return open_directories.contains(offset); }
    Bytes bytes() const { return base.bytes; }
};

struct Entry {
    uint16_t tag;
    uint32_t type;
    uint32_t count;
    uint32_t value;      // or offset
    uint32_t first = 0;  // first value, where it was rendered
};

void print_directories(Walk &walk, uint32_t offset, int depth);

// The sub-directory at an offset, behind a label without line end. One that is being walked (a circle), lies
// outside the file or too deep ends the line only.
void print_sub_directory(Walk &walk, uint32_t offset, int depth) {
    if (depth >= kMaxDepth || offset >= walk.bytes().size() || walk.is_open(offset) || walk.budget.spent()) {
        print("\n");
    } else {
        print_directories(walk, offset, depth + 1);
    }
}

void print_sub_directories(Walk &walk, const Entry &entry, const char *single, const char *numbered,
                           int depth) {
    if (entry.count == 1) {
        print("%s", own(single));
        print_sub_directory(walk, entry.value, depth);
        return;
    }
    for (uint32_t i = 0; i < entry.count; i++) {
        const uint64_t at = entry.value + uint64_t{4} * i;
        if (!walk.bytes().has(at, 4) || walk.budget.spent()) return;
        walk.budget.spend(4);
        print("%s%d", own(numbered), i);
        print_sub_directory(walk, walk.base.u32(at), depth);
    }
}

void print_image_source_data(const Walk &walk, const Entry &entry) {
    constexpr char kMagic[] = "Adobe Photoshop Document Data Block\0";
    constexpr uint32_t kMagicSize = sizeof kMagic - 1;
    const Bytes data = walk.bytes().from(entry.value);
    print("\n   magic   '");
    walk.budget.spend(print_text(data, 0));
    print("'");
    if (!bytes_are(data, 0, kMagic)) return;
    if (entry.count == kMagicSize) {
        print("\n    Empty data tag\n");
    } else {
        photoshoptag(walk.opts, data.from(kMagicSize), static_cast<int32_t>(entry.count - kMagicSize),
                     walk.budget);
    }
}

// Whether the values are shown in verbose mode only.
bool is_left_out(const Walk &walk, const Entry &entry) {
    return !walk.opts.verbose &&
           (entry.tag == kStripOffsets || entry.tag == kStripByteCounts || entry.tag == kMakerNote);
}

// Entries may share their values, as those of many pages do: text costs the budget a part of its length only.
void print_value(const Walk &walk, Entry &entry) {
    if (is_left_out(walk, entry)) {
        print("(Use verbose mode to dump field)\n");
        return;
    }
    switch (entry.tag) {
        case kPhotoshop:
            photoshoptag(walk.opts, walk.bytes().from(entry.value), static_cast<int32_t>(entry.count),
                         walk.budget);
            return;
        case kImageSourceData: print_image_source_data(walk, entry); return;
        default: break;
    }
    const char *text = tifftype(walk.base, entry.type, entry.count, entry.value, &entry.first);
    print("%s\n", text);
    walk.budget.spend(std::strlen(text) / kSharedText);
}

void keep_image_state(DumpOptions &opts, const Entry &entry) {
    const int32_t first = static_cast<int32_t>(entry.first);
    switch (entry.tag) {
        case kImageWidth: opts.tiff_image_width = first; break;
        case kImageLength: opts.tiff_image_length = first; break;
        case kBitsPerSample: opts.tiff_bits_per_sample = first; break;
        case kStripOffsets: opts.tiff_strip_offset = first; break;
        default: break;
    }
}

// Of the value field only what holds a value, or its place, is told.
void print_tag(const Walk &walk, const Entry &entry, uint64_t offset) {
    forget();
    also(walk.bytes(), offset, is_left_out(walk, entry) ? 2 : 8 + tiff_field_used(entry.type, entry.count));
    const std::string_view name = tifftag(entry.tag, entry.value, walk.base.order);
    const size_t label = std::min(name.find(" - "), name.size());
    print("  tag     : %04x ", entry.tag);
    if (name == "?") {
        print("? ");
        return;
    }
    label_begins();
    print_own(name.substr(0, label));
    label_ends();
    if (label < name.size()) print(" - %s", name.data() + label + 3);
    print(" ");
}

void print_entry(Walk &walk, uint64_t offset, int depth) {
    Entry entry{walk.base.u16(offset), walk.base.u16(offset + 2), walk.base.u32(offset + 4),
                walk.base.u32(offset + 8)};
    print_tag(walk, entry, offset);
    print_value(walk, entry);
    print_field_rows(walk.base.from(offset), kEntryRows);
    keep_image_state(walk.opts, entry);
    if (entry.tag == kSubIfds) print_sub_directories(walk, entry, "SUB IFD", "SUB IFD ", depth);
    if (entry.tag == kExifIfd) print_sub_directories(walk, entry, "EXIF IFD ", "EXIF IFD ", depth);
}

void print_directory(Walk &walk, uint32_t offset, uint64_t entries, int depth) {
    from(walk.bytes(), offset, 2);
    print(" entries: %d\n", static_cast<int>(entries));
    const uint64_t first = uint64_t{offset} + 2;
    for (uint64_t i = 0; i < entries && first + kEntrySize * i < walk.bytes().size(); i++) {
        if (walk.budget.spent()) return;
        walk.budget.spend(kEntrySize);
        print_entry(walk, first + kEntrySize * i, depth);
    }
}

// A chain of directories; it ends at an offset of 0, outside the file or of a directory that is still being
// walked. Directories referred to from several places are shown at each.
void print_directories(Walk &walk, uint32_t offset, int depth) {
    std::vector<uint32_t> chain;
    do {
        walk.open_directories.insert(offset);
        chain.push_back(offset);
        walk.budget.spend(kDirectoryFrame);
        const uint64_t entries = walk.base.u16(offset);
        print_directory(walk, offset, entries, depth);
        forget();
        offset = walk.base.u32(uint64_t{offset} + 2 + kEntrySize * entries);
        print(" offset  : %08x\n", offset);
    } while (offset != 0 && offset < walk.bytes().size() && !walk.is_open(offset) && !walk.budget.spent());
    for (const uint32_t walked : chain) walk.open_directories.erase(walked);
}

}  // namespace

void tiffdumpifd(DumpOptions &opts, OrderedBytes base, uint32_t ifd_offset, Budget &budget) {
    Walk walk{opts, base, budget, {}};
    if (ifd_offset < base.bytes.size()) print_directories(walk, ifd_offset, 0);
}

void tiffdump(DumpOptions &opts, Input &input) {
    if (!check_buffer(input.size())) return;
    const Bytes bytes = input.bytes();
    const uint32_t fileid = little16(bytes);
    const OrderedBytes header = fileid == kBigEndianId ? big_endian(bytes) : little_endian(bytes);
    const uint32_t version = header.u16(2);
    const uint32_t offset = header.u32(4);
    opts.tiff_big_endian = header.is_big();
    print("Fileformat:TIFF\n");
    from(bytes, 0, 2);
    print(" fileid    : %04x %s %s\n", fileid, header.is_big() ? "Big Endian" : "Little Endian",
          header.is_big() ? "(Swapping)" : "");
    from(bytes, 2, 2);
    print(" version   : %04x '%s'\n", version, name_of(kVersionNames, version, "unknown format"));
    print_field_row(header, {4, Field::hex32, " offset    : "});
    print(" filesize  : %d\n", static_cast<int32_t>(bytes.size()));
    Budget budget(bytes.size());
    if (version == kStandardVersion) tiffdumpifd(opts, header, offset, budget);
    if (opts.flag_p) print_pixels(opts, header);
}
