#include "mxf/sets.h"

#include <algorithm>

#include "common/names.h"
#include "mxf/items.h"
#include "mxf/klv.h"
#include "mxf/registry.h"
#include "mxf/value.h"

namespace {

// Structural metadata sets by byte 14 of the key.
constexpr CodeName kSetNames[] = {
    {0x0F, "Sequence"},
    {0x11, "SourceClip"},
    {0x14, "TimecodeComponent"},
    {0x18, "ContentStorage"},
    {0x23, "EssenceContainer"},
    {0x25, "FileDescriptor"},
    {0x27, "PictureEssenceDescriptor"},
    {0x28, "CDCIEssenceDescriptor"},
    {0x29, "RGBAEssenceDescriptor"},
    {0x2F, "Preface"},
    {0x30, "Identification"},
    {0x32, "NetworkLocator"},
    {0x33, "TextLocator"},
    {0x36, "MaterialPackage"},
    {0x37, "SourcePackage"},
    {0x39, "EventTrack"},
    {0x3A, "StaticTrack"},
    {0x3B, "TimelineTrack"},
    {0x41, "DMSegment"},
    {0x42, "SoundEssenceDescriptor"},
    {0x43, "DataEssenceDescriptor"},
    {0x44, "MultipleDescriptor"},
    {0x45, "DMSourceClip"},
    {0x47, "AES3AudioEssenceDescriptor"},
    {0x48, "WaveAudioEssenceDescriptor"},
    {0x4F, "UnknownChunk"},
    {0x50, "WaveAudioPhysicalDescriptor"},
    {0x51, "MPEGVideoDescriptor"},
};

// Items of a definition set.
constexpr uint32_t kIdentificationTag = 0x0005;
constexpr uint32_t kNameTag = 0x0006;
constexpr uint32_t kLocalTagTag = 0x000D;

constexpr uint64_t kMaxName = 127;

// UTF-16 of which only the Latin-1 characters are kept.
void read_definition_name(char (&name)[kMaxName + 1], Bytes value, uint64_t length) {
    const uint64_t characters = std::min(length / 2, kMaxName);
    for (uint64_t i = 0; i < characters; i++) {
        name[i] = value[2 * i] ? '?' : static_cast<char>(value[2 * i + 1]);
    }
    name[characters] = '\0';
}

const char *mxf_metadata_key_define(DumpOptions &opts, bool is_object, Bytes buffer, uint64_t offset) {
    const ItemValue item = read_item_length(opts, buffer, offset);
    char text[kMaxName + 1];
    bool has_name = false;
    uint32_t local_tag = 0;
    uint8_t identification = 0;  // its first byte
    const uint64_t end = std::min(offset + kSetEnd + static_cast<uint64_t>(item.length), buffer.size());
    for (uint64_t at = item.start; at < end;) {
        const uint32_t tag = static_cast<uint32_t>(mxfuint16(buffer.from(at)));
        const uint64_t length = static_cast<uint64_t>(mxfuint16(buffer.from(at + 2)));
        const Bytes value = buffer.from(at + 4);
        if (tag == kNameTag) {
            read_definition_name(text, value, length);
            has_name = true;
        } else if (tag == kLocalTagTag) {
            if (length == 2) {
                local_tag = static_cast<uint32_t>(mxfuint16(value));
            } else {
                mxferror(opts, buffer, offset, "mxf_metadata_key_define tag len != 2");
            }
        } else if (tag == kIdentificationTag) {
            if (length == 16) {
                identification = value[0];
            } else {
                mxferror(opts, buffer, offset, "mxf_metadata_key_define tag id length != 16");
            }
        }
        at += 4 + length;
    }
    if (!has_name) return "unknown";
    const char *name = addmxfstring(text);
    if (opts.mxf_first_pass && !is_object && local_tag && identification) {
        mxfaddlabel(opts, local_tag, name, ValueKind::unknown);
    }
    return name;
}

}  // namespace

uint64_t mxf_klv(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset) {
    const ItemValue item = print_length_line(opts, file_position, buffer, offset);
    print_local_set(opts, buffer, item);
    return item.end() - offset;
}

const char *mxf_metadata_key(DumpOptions &opts, Bytes buffer, uint64_t offset, const char **kind) {
    const uint8_t group = buffer[offset + 13];
    const uint8_t set = buffer[offset + 14];
    const char *kind_text = "Metadata";
    const char *name = "unknown";
    if (group == 1 && set == 0) {
        kind_text = "DefineMetadata";
        name = mxf_metadata_key_define(opts, false, buffer, offset);
    } else if (group == 1) {
        name = name_of(kSetNames, set, "unknown");
    } else if (group == 2 && set == 0) {
        kind_text = "DefineObject";
        name = mxf_metadata_key_define(opts, true, buffer, offset);
    } else if (group == 2) {
        mxferror(opts, buffer, offset, "mxf_metadata_key");
    }
    if (kind) *kind = kind_text;
    return name;
}
