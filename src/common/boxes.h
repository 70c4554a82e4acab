// Boxes of files after ISO 14496-12 and ISO 15444-1, atoms of QuickTime files.
#pragma once

#include <string_view>

#include "common/bytes.h"

struct Box {
    uint32_t type = 0;
    uint64_t at = 0;       // of its header, in what holds it
    uint64_t size = 0;     // with its header, as claimed; 0: there is none
    uint64_t header = 8;   // bytes of its header
    bool is_open = false;  // reaches to the end, wherever that is
    Bytes data = {};       // what there is behind the header

    uint64_t start() const { return at + header; }
    uint64_t end() const { return size < UINT64_MAX - at ? at + size : UINT64_MAX; }
};

// The box at an offset. A size field of 0 reaches to the end.
inline Box box_at(Bytes holder, uint64_t at) {
    if (!holder.has(at, 8)) return {};
    Box box{big32(holder, at + 4), at, big32(holder, at)};
    if (box.size == 1) {
        box.header = 16;
        box.size = big64(holder, at + 8);
    } else if (box.size == 0 && box.type != 0) {
        box.is_open = true;
        box.size = holder.size() - at;
    }
    if (box.size < box.header) box.size = 0;
    box.data = holder.sub(box.start(), box.size < box.header ? 0 : box.size - box.header);
    return box;
}

template <typename Use>
void each_box(Bytes holder, Use use) {
    uint64_t at = 0;
    for (int i = 0; i < 10000; i++) {
        const Box box = box_at(holder, at);
        if (box.size == 0) return;
        use(box);
        at = box.end();
    }
}

// What the first box of a type holds, or of each in a path of them ("mdia/minf/stbl"); empty where there is
// none.
inline Bytes find_box(Bytes holder, std::string_view path) {
    for (size_t at = 0; at + 4 <= path.size(); at += 5) {
        Bytes found;
        each_box(holder, [&](const Box &box) {
            if (found.empty() && begins_as(holder.from(box.at + 4), path.substr(at, 4))) found = box.data;
        });
        holder = found;
    }
    return holder;
}
