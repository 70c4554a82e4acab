// UMF packets: the Unified Material Format description of the file's material.
#include <algorithm>
#include <span>

#include "common/field_rows.h"
#include "common/input.h"
#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "gxf/packets.h"
#include "gxf/values.h"

namespace {

constexpr uint64_t kUmfPreambleSize = 5;
constexpr uint8_t kFirstPacket = 0x01;
constexpr uint8_t kLastPacket = 0x02;
constexpr uint32_t kPacketDataRead = 32768;

constexpr int64_t kTracks = 104;     // offset of the track descriptions
constexpr int64_t kListTail = 128;   // an entry is listed when more than this follows its start
constexpr int64_t kUserHeader = 16;  // bytes of a user data entry before its data

// clang-format off
constexpr FieldRow kPayloadRows[] = {
    {0, Field::dec32, "   size          "},
    {4, Field::dec32, "   version       "},
    {8, Field::dec32, "   tracks        "},
    {12, Field::dec32, "   trackoffset   "},
    {16, Field::dec32, "   tracksize     "},
    {20, Field::dec32, "   segments      "},
    {24, Field::dec32, "   mediaoffset   "},
    {28, Field::dec32, "   mediasize     "},
    {32, Field::dec32, "   useroffset    "},
    {36, Field::dec32, "   usersize      "},
};

constexpr FieldRow kMaterialRows[] = {
    {48, Field::hex32, "  flags         "},
    {52, Field::dec32, "  maxlength     "},
    {56, Field::dec32, "  minlength     "},
    {60, Field::dec32, "  markin        "},
    {64, Field::dec32, "  markout       "},
    {68, Field::hex32, "  tcmarkin      "},
    {72, Field::hex32, "  tcmarkout     "},
    {76, Field::hex32, "  modifiedmsb   "},
    {80, Field::hex32, "  modifiedlsb   "},
    {96, Field::dec16, "  audiotracks   "},
    {100, Field::dec16, "  tctracks      "},
    {102, Field::dec16, "  videotracks   "},
};

constexpr FieldRow kSegmentsRow = {2, Field::dec16, "  segments    "};

constexpr FieldRow kMediaRows[] = {
    {0, Field::dec16, "  length      "},
    {2, Field::dec16, "  trackinfo   "},
    {4, Field::dec16, "  sequenceno  "},
    {8, Field::dec32, "  fieldcnt    "},
    {16, Field::dec32, "  markin      "},
    {20, Field::dec32, "  markout     "},
    {24, Field::printable_text, "  filename    ", 88},
    {112, Field::dec32, "  type        "},
    {116, Field::dec32, "  sampling    "},
    {120, Field::dec32, "  size        "},
};

constexpr FieldRow kUserRows[] = {
    {0, Field::dec32, "  length      "},
    {4, Field::dec32, "  position    "},
    {8, Field::dec16, "  trackno     "},
    {10, Field::dec32, "  seqno       "},
    {12, Field::dec32, "  userkey     "},
};
// clang-format on

constexpr CodeName kTrackKinds[] = {
    {'A', "Audio"},          {'D', "DV 25 Mb/s"},      {'E', "DV 50 Mb/s"},  {'F', "DV 100 Mb/s"},
    {'H', "MPEG2 HD Video"}, {'I', "AVC Intra Video"}, {'L', "MPEG1 Video"}, {'M', "MPEG2 SD Video"},
    {'N', "Anc Data"},       {'T', "Timecode"},        {'V', "MotionJPEG"},
};

// The collected data with its byte order and the sizes that place its lists.
struct Umf {
    OrderedBytes data;
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
    OrderedBytes entry(int64_t offset) const { return data.from(static_cast<uint64_t>(offset)); }
};

// No field tells the byte order. In little-endian data the second of these overlapping values has the number
// of tracks in its highest byte, in big-endian data it is the version in the upper half; the first one is the
// payload size without its lowest or its highest byte.
bool is_little(Bytes data) { return gxfint32(data, 1, false) <= gxfint32(data, 5, true); }

Umf umf_of(Bytes data) {
    const OrderedBytes umf = is_little(data) ? little_endian(data) : big_endian(data);
    return {.data = umf,
            .fill = static_cast<int64_t>(data.size()),
            .size = umf.s32(0),
            .track_size = umf.s32(16),
            .media_size = umf.s32(28),
            .user_offset = umf.s32(32),
            .user_size = umf.s32(36)};
}

void print_tracks(const Umf &umf) {
    print(" Track Description\n");
    for (int64_t offset = kTracks; umf.goes_on(offset, kTracks, umf.track_size); offset += 4) {
        const OrderedBytes entry = umf.entry(offset);
        print("  track       %c%c %s\n", gxfchar(entry.u8(1)), gxfchar(entry.u8(0)),
              name_of(kTrackKinds, entry.u8(1), "?"));
        print_field_row(entry, kSegmentsRow);
    }
}

void print_media(const Umf &umf) {
    print(" Media Description\n");
    const int64_t start = umf.media_start();
    for (int64_t offset = start; umf.goes_on(offset, start, umf.media_size);) {
        const OrderedBytes entry = umf.entry(offset);
        const uint16_t length = entry.u16(0);
        print_field_rows(entry, kMediaRows);
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
    forget();
    print(" User Data\n");
    const int64_t start = umf.user_start();
    int64_t user_size = umf.user_size;
    if (umf.user_offset != 0 && user_size == 0) user_size = umf.size - start;
    for (int64_t offset = start; umf.goes_on(offset, start, user_size);) {
        const OrderedBytes entry = umf.entry(offset);
        const int32_t length = entry.s32(0);
        print_field_rows(entry, kUserRows);
        print_xml(entry.bytes.from(kUserHeader), length, user_size);
        if (length <= 0) return;
        offset += length;
    }
}

void print_descriptions(const UmfCollection &collection) {
    Input copy("", collection.data.data(), collection.data.size());
    const Copied copied(collection.places);
    const Umf umf = umf_of(copy.bytes());
    forget();
    print("  Payload Description\n");
    print_field_rows(umf.data, kPayloadRows);
    print(" Material Description\n");
    print_field_rows(umf.data, kMaterialRows);
    print_tracks(umf);
    print_media(umf);
    print_user_data(umf);
}

void collect(UmfCollection &umf, Bytes packet) {
    const std::span<const uint8_t> data = packet.span(0, packet.size());
    const size_t room = UmfCollection::kCapacity - umf.data.size();
    const auto kept = data.first(std::min(data.size(), room));
    if (listening && !kept.empty()) umf.places.push_back(packet.sub(0, kept.size()).file_range());
    forget();
    umf.data.insert(umf.data.end(), kept.begin(), kept.end());
    if (kept.size() == data.size() || umf.exceeded) return;
    print(" UMF data exceeds %d bytes\n", static_cast<int>(UmfCollection::kCapacity));
    umf.exceeded = true;
}

}  // namespace

// The preamble's size counts, whatever the packet's length.
void gxfumfpacket(Bytes rest, UmfCollection &umf) {
    if (!rest.has(0, kUmfPreambleSize)) {
        print("gxfmap: fread error\n");
        return;
    }
    print(" preamble\n");
    const uint8_t flags = rest[0];
    print("  type      %s%s\n", flags & kFirstPacket ? "First " : "", flags & kLastPacket ? "Last " : "");
    const uint32_t size = gxfuint32(rest, 1, false);
    print("  size          %d\n", static_cast<int32_t>(size));

    const uint32_t wanted = std::min(size, kPacketDataRead);
    if (!rest.has(kUmfPreambleSize, wanted)) {
        print("gxfmap: fread error\n");
        return;
    }
    collect(umf, rest.sub(kUmfPreambleSize, wanted));
    if (!(flags & kLastPacket) || umf.budget.spent()) return;
    umf.budget.spend(umf.data.size());
    print_descriptions(umf);
}
