// UMF packets: the Unified Material Format description of the file's material.
#include <algorithm>
#include <cstdio>
#include <span>

#include "common/field_rows.h"
#include "common/names.h"
#include "gxf/packets.h"
#include "gxf/values.h"

namespace {

constexpr uint64_t kPreambleSize = 5;
constexpr uint8_t kFirstPacket = 0x01;
constexpr uint8_t kLastPacket = 0x02;
constexpr uint32_t kPacketDataRead = 32768;

constexpr int64_t kTracks = 104;     // offset of the track descriptions
constexpr int64_t kListTail = 128;   // an entry is listed when more than this follows its start
constexpr int64_t kUserHeader = 16;  // bytes of a user data entry before its data
constexpr uint64_t kFileName = 24;   // in a media description
constexpr unsigned kFileNameSize = 88;

// A file has one last packet; one that had thousands would describe the whole collection as often.
constexpr uint64_t kMostDescribed = 64 * 1024 * 1024;

// clang-format off
constexpr FieldRow kPayloadRows[] = {
    {0, Field::u32, "   size          "},
    {4, Field::u32, "   version       "},
    {8, Field::u32, "   tracks        "},
    {12, Field::u32, "   trackoffset   "},
    {16, Field::u32, "   tracksize     "},
    {20, Field::u32, "   segments      "},
    {24, Field::u32, "   mediaoffset   "},
    {28, Field::u32, "   mediasize     "},
    {32, Field::u32, "   useroffset    "},
    {36, Field::u32, "   usersize      "},
};

constexpr FieldRow kMaterialRows[] = {
    {48, Field::hex32, "  flags         "},
    {52, Field::u32, "  maxlength     "},
    {56, Field::u32, "  minlength     "},
    {60, Field::u32, "  markin        "},
    {64, Field::u32, "  markout       "},
    {68, Field::hex32, "  tcmarkin      "},
    {72, Field::hex32, "  tcmarkout     "},
    {76, Field::hex32, "  modifiedmsb   "},
    {80, Field::hex32, "  modifiedlsb   "},
    {96, Field::u16, "  audiotracks   "},
    {100, Field::u16, "  tctracks      "},
    {102, Field::u16, "  videotracks   "},
};

constexpr FieldRow kMediaRows[] = {
    {0, Field::u16, "  length      "},
    {2, Field::u16, "  trackinfo   "},
    {4, Field::u16, "  sequenceno  "},
    {8, Field::u32, "  fieldcnt    "},
    {16, Field::u32, "  markin      "},
    {20, Field::u32, "  markout     "},
};
constexpr FieldRow kMediaSampleRows[] = {
    {112, Field::u32, "  type        "},
    {116, Field::u32, "  sampling    "},
    {120, Field::u32, "  size        "},
};

constexpr FieldRow kUserRows[] = {
    {0, Field::u32, "  length      "},
    {4, Field::u32, "  position    "},
    {8, Field::u16, "  trackno     "},
    {10, Field::u32, "  seqno       "},
    {12, Field::u32, "  userkey     "},
};
// clang-format on

constexpr CodeName kTrackKinds[] = {
    {'A', "Audio"},          {'D', "DV 25 Mb/s"},      {'E', "DV 50 Mb/s"},  {'F', "DV 100 Mb/s"},
    {'H', "MPEG2 HD Video"}, {'I', "AVC Intra Video"}, {'L', "MPEG1 Video"}, {'M', "MPEG2 SD Video"},
    {'N', "Anc Data"},       {'T', "Timecode"},        {'V', "MotionJPEG"},
};

// The collected data with its byte order and the sizes that place its lists.
struct Umf {
    Bytes data;
    bool little;
    int64_t fill;
    int64_t size;
    int64_t track_size;
    int64_t media_size;
    int64_t user_offset;
    int64_t user_size;

    int64_t media_start() const { return kTracks + track_size; }
    int64_t user_start() const { return media_start() + media_size; }
    // Whether a list goes on: an entry of some length follows, inside the list and inside the data.
    bool goes_on(int64_t offset, int64_t start, int64_t list_size) const {
        return offset >= 0 && offset + kListTail < fill && offset - start < list_size;
    }
    void print(Bytes entry, std::span<const FieldRow> rows) const { print_field_rows(entry, !little, rows); }
    Bytes entry(int64_t offset) const { return data.from(static_cast<uint64_t>(offset)); }
};

// No field tells the byte order. In little-endian data the second of these overlapping values has the number
// of tracks in its highest byte, in big-endian data it is the version in the upper half; the first one is the
// payload size without its lowest or its highest byte.
bool is_little(Bytes data) { return gxfint32(data, 1, false) <= gxfint32(data, 5, true); }

Umf umf_of(const UmfCollection &collection) {
    const Bytes data(collection.data.data(), collection.data.size());
    const bool little = is_little(data);
    return {.data = data,
            .little = little,
            .fill = static_cast<int64_t>(data.size()),
            .size = gxfint32(data, 0, little),
            .track_size = gxfint32(data, 16, little),
            .media_size = gxfint32(data, 28, little),
            .user_offset = gxfint32(data, 32, little),
            .user_size = gxfint32(data, 36, little)};
}

void print_tracks(const Umf &umf) {
    std::printf(" Track Description\n");
    for (int64_t offset = kTracks; umf.goes_on(offset, kTracks, umf.track_size); offset += 4) {
        const Bytes entry = umf.entry(offset);
        std::printf("  track       %c%c %s\n", gxfchar(entry[1]), gxfchar(entry[0]),
                    name_of(kTrackKinds, entry[1], "?"));
        std::printf("  segments    %d\n", gxfint16(entry, 2, umf.little));
    }
}

void print_media(const Umf &umf) {
    std::printf(" Media Description\n");
    const int64_t start = umf.media_start();
    for (int64_t offset = start; umf.goes_on(offset, start, umf.media_size);) {
        const Bytes entry = umf.entry(offset);
        umf.print(entry, kMediaRows);
        std::printf("  filename    '%s'\n", gxfstring(entry, kFileName, kFileNameSize));
        umf.print(entry, kMediaSampleRows);
        const uint16_t length = gxfint16(entry, 0, umf.little);
        if (length == 0) return;
        offset += length;
    }
}

// The XML of a user data entry; some writers give an entry that fills the user data a length of 1.
void print_xml(Bytes data, int64_t length, int64_t user_size) {
    const int64_t xml_size = length == 1 ? user_size - kUserHeader : length;
    if (bytes_are(data, 0, "<\0?\0") && xml_size > 0) gxfxml(data.sub(0, static_cast<uint64_t>(xml_size)));
}

void print_user_data(const Umf &umf) {
    std::printf(" User Data\n");
    const int64_t start = umf.user_start();
    int64_t user_size = umf.user_size;
    if (umf.user_offset != 0 && user_size == 0) user_size = umf.size - start;
    for (int64_t offset = start; umf.goes_on(offset, start, user_size);) {
        const Bytes entry = umf.entry(offset);
        umf.print(entry, kUserRows);
        const int32_t length = gxfint32(entry, 0, umf.little);
        print_xml(entry.from(kUserHeader), length, user_size);
        if (length <= 0) return;
        offset += length;
    }
}

void print_descriptions(const UmfCollection &collection) {
    const Umf umf = umf_of(collection);
    std::printf("  Payload Description\n");
    umf.print(umf.data, kPayloadRows);
    std::printf(" Material Description\n");
    umf.print(umf.data, kMaterialRows);
    print_tracks(umf);
    print_media(umf);
    print_user_data(umf);
}

void collect(UmfCollection &umf, std::span<const uint8_t> data) {
    const size_t room = UmfCollection::kCapacity - umf.data.size();
    const auto kept = data.first(std::min(data.size(), room));
    umf.data.insert(umf.data.end(), kept.begin(), kept.end());
    if (kept.size() == data.size() || umf.exceeded) return;
    std::printf(" UMF data exceeds %d bytes\n", static_cast<int>(UmfCollection::kCapacity));
    umf.exceeded = true;
}

}  // namespace

// The preamble's size counts, whatever the packet's length.
void gxfumfpacket(Bytes rest, UmfCollection &umf) {
    if (!rest.has(0, kPreambleSize)) {
        std::printf("gxfmap: fread error\n");
        return;
    }
    const uint8_t flags = rest[0];
    const uint32_t size = gxfuint32(rest, 1, false);
    std::printf(" preamble\n");
    std::printf("  type      %s%s\n", flags & kFirstPacket ? "First " : "",
                flags & kLastPacket ? "Last " : "");
    std::printf("  size          %d\n", static_cast<int32_t>(size));

    const uint32_t wanted = std::min(size, kPacketDataRead);
    if (!rest.has(kPreambleSize, wanted)) {
        std::printf("gxfmap: fread error\n");
        return;
    }
    collect(umf, rest.span(kPreambleSize, wanted));
    if (!(flags & kLastPacket) || umf.described > kMostDescribed) return;
    umf.described += umf.data.size();
    print_descriptions(umf);
}
