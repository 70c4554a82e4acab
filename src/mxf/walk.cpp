// The walk over the KLV items of a file: a pass that collects names, then one that prints.
#include <algorithm>
#include <cstdio>
#include <optional>

#include "common/print.h"
#include "mxf/dictionary.h"
#include "mxf/items.h"
#include "mxf/klv.h"
#include "mxf/mxf.h"
#include "mxf/registry.h"
#include "mxf/sets.h"

namespace {

constexpr uint64_t kHeadSize = 16384;  // where the first key is looked for
constexpr uint64_t kNextHeader = 25;   // of the next item: its key and up to 9 bytes of length
constexpr uint64_t kItemLimit = 0x1000000;
constexpr uint64_t kLargeItemLimit = 0x40000000;  // with -ml
constexpr uint64_t kCollectionLimit = 1000000;    // file position at which names are collected no more
constexpr uint64_t kMaxVerboseDump = 256;
constexpr uint64_t kEssenceHead = 65536;       // of an essence element that is searched for names
constexpr uint32_t kInstanceUid = 0x3C0A0010;  // tag and length of a set's instance UID
constexpr uint32_t kSmallestRead = 512;        // key and length of an essence element cost one such block

struct Walk {
    DumpOptions &opts;
    Input &input;
    uint64_t limit;  // of what may be loaded at once
    uint64_t first_key;
};

// An item in its window, which ends with the item or with the file.
struct Item {
    uint64_t position;
    uint64_t value;   // offset of the value: the size of key and length
    uint64_t length;  // as its BER length says
    uint64_t size;    // key, length and value
    Bytes bytes;
};

// Position of the first label; false when the head of the file has none.
bool find_first_key(Input &input, uint64_t &position) {
    const Bytes head = input.bytes(0, kHeadSize, kSmallestRead);
    for (position = 0; position + kNextHeader <= kHeadSize; position++) {
        if (is_smpte_label(head, position)) return true;
    }
    return false;
}

bool is_essence_element(Bytes key) {
    return bytes_are(key, 4, "\x01\x02\x01") && bytes_are(key, 8, "\x0D\x01\x03\x01");
}

// Registers the instance UID of a metadata set under the set's name. Byte 13 of an essence element's key, the
// number of elements, can look like a set's: of the essence only the head is searched.
void collect_name(const Walk &walk, const Item &item) {
    const uint8_t group = item.bytes[13];
    if (!is_smpte_label(item.bytes, 0) || (group != 1 && group != 2)) return;
    uint64_t end = std::min(kSetEnd + item.length, item.bytes.size());
    if (is_essence_element(item.bytes)) end = std::min(end, kEssenceHead);
    for (uint64_t at = item.value; at < end;
         at += 4 + static_cast<uint64_t>(mxfuint16(item.bytes.from(at + 2)))) {
        if (mxfuint32(item.bytes.from(at)) != kInstanceUid) continue;
        const char *name = mxf_metadata_key(walk.opts, item.bytes, 0, nullptr);
        mxf_guid_add(walk.opts, item.bytes.from(at + 4), item.position, name);
        return;
    }
}

void print_position(const Walk &walk, uint64_t position) {
    if (walk.opts.mxf_flag_c) return;
    if (walk.input.size() > UINT32_MAX) print("%08x", static_cast<uint32_t>(position >> 32));
    print("%08x ", static_cast<uint32_t>(position));
}

void print_group(const Walk &walk, const Item &item) {
    const char *kind = "";
    const char *name = mxf_metadata_key(walk.opts, item.bytes, 0, &kind);
    print("%s ", kind);
    label_begins();
    print("%s\n", name);
    if (walk.opts.verbose) print("KLV %s\n", mxfklvtype(walk.opts, item.bytes, 0));
    mxf_klv(walk.opts, item.position, item.bytes, 0);
}

void print_unknown_label(const Walk &walk, const Item &item) {
    switch (item.bytes[4]) {
        case 1: print("RP210/Unknown\n"); break;
        case 2: print_group(walk, item); break;
        case 3: print("Wrapper/Unknown\n"); break;
        case 4: print("RP224/Unknown\n"); break;
        default: print("Unknown\n");
    }
}

// Prints the block of an item; false for one that is no SMPTE item and not known otherwise.
bool print_item(const Walk &walk, const Item &item) {
    bool recognised = true;
    from(item.bytes, 0, kKeySize);
    print_position(walk, item.position);
    behind_position();
    printuuid(walk.opts, item.bytes);
    print(" - ");
    label_begins();
    if (mxfdumplabel(walk.opts, item.position, item.bytes, 0)) {
        print("\n");
    } else if (printidentifier(walk.opts, item.bytes)) {
        label_ends();
        print("\n");
    } else if (is_smpte_label(item.bytes, 0)) {
        print_unknown_label(walk, item);
    } else {
        print("Could not find KLV at expected position. %08x\n", 0);
        recognised = false;
    }
    if (walk.opts.verbose) mxfhexdump(item.bytes, 0, std::min(item.size, kMaxVerboseDump));
    print("\n");
    return recognised;
}

// Where the next item's key is expected, and what is loaded there: from `start` on, the key at an offset.
struct Place {
    uint64_t start;
    uint64_t key;
    uint64_t loaded;
};

// The item at a position; nothing, behind a message, where its length cannot be followed or loaded. `is_last`
// is set where the file ends with it.
std::optional<Item> item_at(const Walk &walk, uint64_t position, bool collecting, bool &is_last) {
    const Bytes window = walk.input.bytes(position, walk.limit, kSmallestRead);
    const uint64_t end = walk.input.end();
    uint32_t value = kKeySize;
    const uint64_t length = mxfber(walk.opts, window, kKeySize, &value);
    const uint64_t size = value + length;
    if (static_cast<int64_t>(size) <= 0) {
        print("Invalid length (%lld)\n", static_cast<long long>(size));
        return std::nullopt;
    }
    uint64_t load = size + kNextHeader;
    is_last = position + load >= end;
    if (is_last && position + size > end) {
        print("Could not load the last part of the file\n");
    } else if (is_last) {
        load = size;
    }
    if (load > walk.limit) {
        if (!collecting) {
            print("The filepart to load next exceeds the allocated memory (%lld)\n",
                  static_cast<long long>(load));
        }
        return std::nullopt;
    }
    const uint64_t available = end > position ? end - position : 0;
    return Item{position, value, length, size, window.sub(0, std::min(size, available))};
}

void run_pass(const Walk &walk, bool collecting) {
    walk.opts.mxf_first_pass = collecting;
    Place place{walk.first_key, walk.first_key, kHeadSize};
    for (bool is_last = false; !is_last;) {
        if (place.key + kNextHeader > std::min(walk.limit, place.loaded)) {
            print("Internal error\n");
            return;
        }
        const std::optional<Item> item = item_at(walk, place.start, collecting, is_last);
        if (!item) return;
        if (!collecting) {
            if (!print_item(walk, *item)) return;
        } else {
            collect_name(walk, *item);
            if (place.start > kCollectionLimit && !walk.opts.mxf_flag_l) return;
        }
        forget();
        place = {place.start + item->size, item->size, item->size + kNextHeader};
    }
}

}  // namespace

void mxfdump(DumpOptions &opts, Input &input) {
    const uint64_t limit = opts.mxf_flag_l ? kLargeItemLimit : kItemLimit;
    if (!is_addressable(input.size())) {
        print("malloc of buffer %d failed\n", static_cast<int>(limit));
        return;
    }
    Walk walk{opts, input, limit, 0};
    if (!find_first_key(input, walk.first_key)) return;
    run_pass(walk, true);
    run_pass(walk, false);
}
