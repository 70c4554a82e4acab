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

    // The value of an item by its static tag; empty where the set does not have it, or not to its end.
    Bytes item(uint32_t tag) const;
    int64_t number(uint32_t tag, int64_t other = 0) const;     // of 1 to 8 bytes, unsigned
    uint32_t number_below(uint32_t tag, uint32_t most) const;  // 0 for what is more
    int64_t position(uint32_t tag) const;                      // -1 where it is not known
    Ratio ratio(uint32_t tag) const;
    std::string text(uint32_t tag) const;
};

class Metadata {
 public:
    // Reads the primer and the sets of a partition's header metadata, to its end or to what is neither.
    void read(Bytes metadata);
    bool empty() const { return sets_.empty(); }

    // The value of an item by the last eight bytes of its label, through the primer.
    Bytes item(const MetadataSet &set, std::string_view label) const;
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

// What labels are called that begin so, from the part on that their table is about, and go on with one of
// `next`, where that is not empty. The first counts.
struct LabelName {
    std::string_view begin;
    std::string_view next;
    const char *name;
};

// Of a label that has the prefix from byte 8 on; empty for any other.
template <size_t N>
const char *name_behind(Bytes label, std::string_view prefix, const LabelName (&names)[N]) {
    if (!begins_as(label.from(8), prefix)) return "";
    const Bytes rest = label.from(8 + prefix.size());
    for (const LabelName &row : names) {
        const char next = static_cast<char>(rest[row.begin.size()]);
        if (begins_as(rest, row.begin) && (row.next.empty() || row.next.find(next) != row.next.npos))
            return row.name;
    }
    return "";
}

constexpr std::string_view kContainer{"\xD\1\3\1\2",
                                      5};  // what labels of essence containers have from byte 8 on

// All that an essence descriptor (SMPTE ST 377-1, annex F) and its sub-descriptors tell of a picture: nothing
// of how many frames there are.
bool is_picture(const MetadataSet &descriptor);
Picture picture_of(const Metadata &metadata, const MetadataSet &descriptor);
// Labels of a descriptor's colours that ITU-T H.273 has no codes for, with what they are labels of.
std::vector<std::pair<std::string, Bytes>> uncoded_colours(const MetadataSet &descriptor,
                                                           const Colour &colour);
// What the picture was mastered on (SMPTE ST 2067-21, ST 2086): "P3 D65, 0.005 to 1000 cd/m2"; chromaticities
// where they have no name. Empty where nothing is told.
std::string mastering_display(const Metadata &metadata, const MetadataSet &descriptor);
// "frame" or "clip" by the label of an essence container; empty for any other.
std::string wrapping_of(Bytes container);

// The same of a sound and its channel labels (SMPTE ST 377-4): nothing of how many samples there are.
bool is_sound(const MetadataSet &descriptor);
Sound sound_of(const Metadata &metadata, const MetadataSet &descriptor);
// What kind of sound its labels say it is: "PRM", "ME, commentary"; empty where they do not.
std::string sound_content(const Metadata &metadata, const MetadataSet &descriptor);
