#include <map>
#include <string_view>

#include "quicktime/facts_movie.h"

namespace {

// Names and values that writers leave (user data, iTunes and QuickTime metadata).
using Metadata = std::map<std::string, std::string, std::less<>>;

void read_items(Bytes meta, Metadata &metadata) {
    const Bytes boxes = bytes_are(meta, 4, "hdlr") ? meta : meta.from(4);
    std::vector<std::string> keys;
    const Bytes list = find_box(boxes, "keys");
    uint64_t at = 8;
    for (uint32_t i = 0; i < big32(list, 4) && list.has(at, 8) && big32(list, at) >= 8; i++) {
        keys.push_back(fixed_text(list, at + 8, std::min(big32(list, at) - 8, 256U)));
        at += big32(list, at);
    }
    each_box(find_box(boxes, "ilst"), [&](const Box &item) {
        const Bytes data = find_box(item.data, "data");
        const bool is_numbered = item.type >= 1 && item.type <= keys.size();
        if (big32(data) > 2) return;  // no text
        metadata.try_emplace(is_numbered ? keys[item.type - 1] : type_characters(item.type),
                             fixed_text(data, 8, 1024));
    });
}

void read_user_data(Bytes udta, Metadata &metadata) {
    each_box(udta, [&](const Box &box) {
        if (box.type == fourcc("meta")) read_items(box.data, metadata);
        if (box.type >> 24 == 0xA9)
            metadata.try_emplace(type_characters(box.type), fixed_text(box.data, 4, big16(box.data)));
    });
}

}  // namespace

void read_metadata(Bytes moov, Facts &facts) {
    // What the record or the format calls it, and what writers do.
    struct Row {
        std::string_view name;
        std::string_view keys[4];
    };
    constexpr Row kRows[] = {
        {"writer", {"\xA9swr", "com.apple.quicktime.software", "\xA9too", "software"}},
        {"reel", {"com.apple.proapps.reel", "com.arri.camera.ReelName", "reel_name", "reel"}},
        {"make", {"com.apple.quicktime.make", "\xA9mak"}},
        {"model", {"com.apple.quicktime.model", "\xA9mod"}},
        {"scene", {"com.apple.proapps.scene", "scene"}},
        {"take", {"com.apple.proapps.shot", "take"}},
        {"title", {"\xA9nam", "com.apple.quicktime.title", "com.apple.quicktime.displayname"}},
        {"recorded", {"com.apple.quicktime.creationdate", "\251day"}},
    };
    Metadata metadata;
    read_user_data(find_box(moov, "udta"), metadata);
    read_items(find_box(moov, "meta"), metadata);
    for (const Row &row : kRows) {
        std::string value;
        for (const std::string_view key : row.keys) {
            const auto found = metadata.find(key);
            if (value.empty() && found != metadata.end()) value = found->second;
        }
        if (row.name == "writer") {
            facts.writer = value;
        } else if (row.name != "reel") {
            facts.add_more(row.name, value);
        } else if (facts.reel.empty()) {
            facts.reel = value;
        }
    }
}
