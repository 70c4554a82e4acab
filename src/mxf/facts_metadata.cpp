#include "mxf/facts_metadata.h"

#include <algorithm>
#include <array>

#include "common/utf16.h"
#include "mxf/klv.h"

namespace {

using namespace std::string_view_literals;

constexpr int kMostItems = 1024;          // of a set that are searched
constexpr uint64_t kMostElements = 1024;  // of an array that are looked at
constexpr uint64_t kArrayHead = 8;        // count and size of the elements
constexpr uint64_t kUid = 16;
constexpr uint32_t kInstanceUid = 0x3C0A;

std::string key_text(Bytes b) {
    const auto bytes = b.span(0, kUid);
    return {bytes.begin(), bytes.end()};
}

// Lengths of items are BER where the key says so, else of two bytes.
bool is_metadata_set(Bytes key) {
    return bytes_are(key, 0, "\x06\x0E\x2B\x34\x02\x53\x01") &&
           begins_as(key.from(8), "\x0D\x01\x01\x01\x01\x01"sv);
}

bool is_primer(Bytes key) {
    return begins_as(key, "\x06\x0E\x2B\x34\x02\x05\x01"sv) &&
           begins_as(key.from(8), "\x0D\x01\x02\x01\x01\x05\x01"sv);
}

}  // namespace

KlvPlace klv_at(Bytes b, uint64_t offset) {
    const Bytes item = b.from(offset);
    const BerLength length = read_ber(item, kKeySize);
    if (!is_smpte_label(item, 0) || !length.is_allowed) return {};
    return {offset + kKeySize + 1 + length.more, length.value, item.has(0, kKeySize + 1 + length.more)};
}

bool is_fill(Bytes key) {
    return begins_as(key, "\x06\x0E\x2B\x34\x01\x01\x01"sv) &&
           begins_as(key.from(8), "\x03\x01\x02\x10\x01"sv);
}

bool are_same(Bytes a, Bytes b) {
    for (uint64_t i = 0; i < a.size(); i++) {
        if (a[i] != b[i]) return false;
    }
    return a.size() == b.size() && !a.empty();
}

void Metadata::read(Bytes metadata) {
    for (uint64_t at = 0; at < metadata.size();) {
        const KlvPlace place = klv_at(metadata, at);
        if (!place.is_set) break;
        const Bytes key = metadata.sub(at, kKeySize);
        const Bytes value = metadata.sub(place.value, place.length);
        if (is_primer(key)) {
            const uint64_t count = std::min<uint64_t>(big32(value), kMostElements);
            for (uint64_t i = 0; i < count; i++) {
                const Bytes row = value.from(kArrayHead + 18 * i);
                tags_[key_text(row.sub(10, 8))] = big16(row);
            }
        } else if (is_metadata_set(key)) {
            sets_.push_back({static_cast<SetKind>(key[14]), value});
            by_uid_.emplace(key_text(sets_.back().item(kInstanceUid)), sets_.size() - 1);
        } else if (bytes_are(key, 4, "\x02\x05\x01\x01\x0D\x01\x02\x01")) {
            break;  // a partition pack
        }
        if (place.end() <= at) break;
        at = place.end();
    }
}

Bytes MetadataSet::item(uint32_t tag) const {
    uint64_t at = 0;
    for (int i = 0; i < kMostItems && items.has(at, 4); i++) {
        const uint64_t length = big16(items, at + 2);
        if (big16(items, at) == tag) return items.has(at + 4, length) ? items.sub(at + 4, length) : Bytes{};
        at += 4 + length;
    }
    return {};
}

int64_t MetadataSet::number(uint32_t tag, int64_t other) const {
    const Bytes value = item(tag);
    if (value.empty() || value.size() > 8) return other;
    return static_cast<int64_t>(value.big(0, static_cast<unsigned>(value.size())));
}

uint32_t MetadataSet::number_below(uint32_t tag, uint32_t most) const {
    const int64_t value = number(tag);
    return value >= 0 && value <= most ? static_cast<uint32_t>(value) : 0;
}

int64_t MetadataSet::position(uint32_t tag) const {
    const Bytes value = item(tag);
    const int64_t position = static_cast<int64_t>(big64(value));
    return value.size() == 8 && position >= 0 ? position : -1;
}

Ratio MetadataSet::ratio(uint32_t tag) const {
    const Bytes value = item(tag);
    const Ratio ratio{static_cast<int32_t>(big32(value)), static_cast<int32_t>(big32(value, 4))};
    return ratio.is_set() ? ratio.reduced() : Ratio{};
}

std::string MetadataSet::text(uint32_t tag) const { return text_of_utf16(big_endian(item(tag))); }

Bytes Metadata::item(const MetadataSet &set, std::string_view label) const {
    const auto found = tags_.find(std::string(label));
    return found == tags_.end() ? Bytes() : set.item(found->second);
}

std::vector<const MetadataSet *> Metadata::all(SetKind kind) const {
    std::vector<const MetadataSet *> found;
    for (const MetadataSet &set : sets_) {
        if (set.kind == kind && found.size() < kMostElements) found.push_back(&set);
    }
    return found;
}

const MetadataSet *Metadata::referred(Bytes uid) const {
    if (uid.size() < kUid) return nullptr;
    const auto found = by_uid_.find(key_text(uid));
    return found == by_uid_.end() ? nullptr : &sets_[found->second];
}

std::vector<const MetadataSet *> Metadata::referred_by(Bytes references) const {
    std::vector<const MetadataSet *> found;
    const uint64_t count = std::min<uint64_t>(big32(references), kMostElements);
    for (uint64_t i = 0; i < count && references.has(kArrayHead + kUid * i, kUid); i++) {
        const MetadataSet *set = referred(references.sub(kArrayHead + kUid * i, kUid));
        if (set) found.push_back(set);
    }
    return found;
}

std::vector<const MetadataSet *> Metadata::sub_descriptors(const MetadataSet &descriptor) const {
    return referred_by(item(descriptor, "\6\1\1\4\6\x10\0\0"sv));
}

namespace {

// Primaries, white, greatest and least luminance: of a picture's descriptor, and of its ACES sub-descriptor.
using Items = std::array<std::string_view, 4>;
constexpr Items kPictureItems{"\4\x20\4\1\1\1\0\0"sv, "\4\x20\4\1\1\2\0\0"sv, "\4\x20\4\1\1\3\0\0"sv,
                              "\4\x20\4\1\1\4\0\0"sv};
constexpr Items kAcesItems{"\4\1\6\xA\2\0\0\0"sv, "\4\1\6\xA\3\0\0\0"sv, "\4\1\6\xA\4\0\0\0"sv,
                           "\4\1\6\xA\5\0\0\0"sv};

std::string text_of(const Metadata &metadata, const MetadataSet &set, const Items &items) {
    return mastering_text(metadata.item(set, items[0]), metadata.item(set, items[1]),
                          metadata.item(set, items[2]), metadata.item(set, items[3]));
}

}  // namespace

std::string mastering_display(const Metadata &metadata, const MetadataSet &descriptor) {
    std::string text = text_of(metadata, descriptor, kPictureItems);
    for (const MetadataSet *sub : metadata.sub_descriptors(descriptor)) {
        if (text.empty() && sub->kind == SetKind::aces) text = text_of(metadata, *sub, kAcesItems);
    }
    return text;
}
