// Header metadata of MXF files (SMPTE ST 377-1) as sets that refer to each other.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/bytes.h"
#include "common/facts.h"

// A KLV item in a window: where its value begins and what its length says.
struct KlvPlace {
    uint64_t value = 0;
    uint64_t length = 0;
    bool is_set = false;  // whether there are a label and an allowed length

    uint64_t end() const { return length > UINT64_MAX - value ? UINT64_MAX : value + length; }
};
KlvPlace klv_at(Bytes b, uint64_t offset);
bool is_fill(Bytes key);

// Kinds of sets: byte 14 of their keys.
enum class SetKind : uint8_t {
    sequence = 0x0F,
    source_clip = 0x11,
    timecode = 0x14,
    essence_container_data = 0x23,
    generic_picture = 0x27,
    cdci = 0x28,
    rgba = 0x29,
    tape = 0x2E,
    preface = 0x2F,
    identification = 0x30,
    material_package = 0x36,
    source_package = 0x37,
    generic_sound = 0x42,
    multiple = 0x44,
    aes3 = 0x47,
    wave = 0x48,
    mpeg2_video = 0x51,
    jpeg2000 = 0x5A,
    mpeg_audio = 0x5E,
    channel_label = 0x6B,
    soundfield_group = 0x6C,
    group_of_soundfield_groups = 0x6D,
    aces = 0x79,
    immersive_audio = 0x7B,
};

struct MetadataSet {
    SetKind kind{};
    Bytes items;
};

class Metadata {
 public:
    // Reads the primer and the sets of a partition's header metadata, to its end or to what is neither.
    void read(Bytes metadata);
    bool empty() const { return sets_.empty(); }

    // The value of an item by its static tag, or by the last eight bytes of its label through the primer;
    // empty where the set does not have it.
    static Bytes item(const MetadataSet &set, uint32_t tag);
    Bytes item(const MetadataSet &set, std::string_view label) const;
    static int64_t number(const MetadataSet &set, uint32_t tag, int64_t other);  // of 1 to 8 bytes, unsigned
    static int64_t position(const MetadataSet &set, uint32_t tag);               // -1 where it is not known
    static Ratio ratio(const MetadataSet &set, uint32_t tag);
    static std::string text(const MetadataSet &set, uint32_t tag);

    std::vector<const MetadataSet *> all(SetKind kind) const;
    // What a reference, or an array of them, leads to.
    const MetadataSet *referred(Bytes uid) const;
    std::vector<const MetadataSet *> referred_by(Bytes references) const;
    std::vector<const MetadataSet *> sub_descriptors(const MetadataSet &descriptor) const;

 private:
    std::vector<MetadataSet> sets_;
    std::unordered_map<std::string, size_t> by_uid_;
    std::unordered_map<std::string, uint32_t> tags_;  // by the last eight bytes of their labels
};

bool are_same(Bytes a, Bytes b);
bool begins_as(Bytes b, std::string_view text);

// What a label is called.
struct LabelName {
    std::string_view label;
    const char *name;
};

// By the first row that a label begins as, from byte 8 on; empty for none.
template <size_t N>
std::string label_name(const LabelName (&names)[N], Bytes label) {
    for (const LabelName &row : names) {
        if (begins_as(label.from(8), row.label)) return row.name;
    }
    return "";
}
