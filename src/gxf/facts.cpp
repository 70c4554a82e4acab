#include <algorithm>
#include <optional>

#include "common/elementary.h"
#include "common/names.h"
#include "common/ordered_bytes.h"
#include "main/facts_of.h"

namespace {

constexpr uint64_t kHeader = 16;
constexpr uint64_t kPreamble = 16;  // of a media packet
constexpr uint64_t kMostPayload = 65536;
constexpr int kMostPackets = 24;  // at the file's start that are looked at
constexpr uint64_t kTail = 131072;

enum PacketType : uint8_t { map = 0xBC, media = 0xBF, end_of_stream = 0xFB, umf = 0xFD };

struct Packet {
    uint8_t type = 0;
    uint64_t at = 0;
    uint64_t length = 0;

    uint64_t end() const { return at + length; }
};

std::optional<Packet> packet_in(Bytes bytes, uint64_t at) {
    const Bytes header = bytes.sub(0, kHeader);
    if (!bytes_are(header, 0, "\0\0\0\0\x01") || !bytes_are(header, 10, "\0\0\0\0\xE1\xE2")) return {};
    if (big32(header, 6) < kHeader) return {};
    return Packet{header[5], at, big32(header, 6)};
}

// What a media type is (SMPTE 360M, table 8).
struct MediaType {
    enum Kind : uint8_t { picture, sound, timecode } kind;
    uint8_t code;
    const char *codec;
    uint8_t detail;  // 1: 525 lines, 2: 625; bits of a sample
};

constexpr MediaType kMediaTypes[] = {
    {MediaType::picture, 3, "Motion JPEG", 1}, {MediaType::picture, 4, "Motion JPEG", 2},
    {MediaType::timecode, 7, "", 0},           {MediaType::timecode, 8, "", 0},
    {MediaType::sound, 9, "PCM", 24},          {MediaType::sound, 10, "PCM", 16},
    {MediaType::picture, 11, "MPEG-2", 1},     {MediaType::picture, 12, "MPEG-2", 2},
    {MediaType::picture, 13, "DV", 1},         {MediaType::picture, 14, "DV", 2},
    {MediaType::picture, 15, "DVCPRO50", 1},   {MediaType::picture, 16, "DVCPRO50", 2},
    {MediaType::sound, 17, "AC-3", 0},         {MediaType::sound, 18, "AC-3", 0},
    {MediaType::picture, 20, "MPEG-2", 0},     {MediaType::picture, 22, "MPEG-1", 1},
    {MediaType::picture, 23, "MPEG-1", 2},     {MediaType::timecode, 24, "", 0},
    {MediaType::picture, 25, "DVCPRO HD", 0},  {MediaType::picture, 26, "AVC-Intra", 0},
};

struct Track {
    const MediaType *type = nullptr;
    uint8_t id = 0;
    Ratio rate;
    int64_t lines = 0;
    int64_t fields = 0;  // a frame
};

// Tags of a section of the map: one byte, one of length, the value.
class Tags {
 public:
    explicit Tags(Bytes section) : section_(section) {}
    Bytes value(uint8_t tag) const {
        for (uint64_t at = 0; section_.has(at, 2); at += 2 + uint64_t{section_[at + 1]}) {
            if (section_[at] == tag) return section_.sub(at + 2, section_[at + 1]);
        }
        return {};
    }
    int64_t number(uint8_t tag) const {  // -1 where it is not there or not known
        const Bytes bytes = value(tag);
        return bytes.size() >= 4 ? static_cast<int32_t>(big32(bytes)) : -1;
    }
    std::string text(uint8_t tag) const {
        const Bytes bytes = value(tag);
        return bytes.empty() ? "" : fixed_text(bytes, 0, bytes.size());
    }

 private:
    Bytes section_;
};

struct Gxf {
    Input &input;
    Facts &facts;
    std::vector<Track> tracks = {};
    std::vector<uint8_t> umf = {};
    int64_t first_field = -1;
    int64_t last_field = -1;
    bool has_picture = false;
    bool has_timecode = false;
    FileTimecode timecode = {};  // of its track

    const Track *main_track() const {
        const auto found =
            std::ranges::find_if(tracks, [](const Track &t) { return t.type->kind == MediaType::picture; });
        return found == tracks.end() ? nullptr : &*found;
    }
    Ratio rate() const {
        if (const Track *track = main_track()) return track->rate;
        const auto found = std::ranges::find_if(tracks, [](const Track &t) { return t.rate.is_set(); });
        return found == tracks.end() ? Ratio{} : found->rate;
    }
    int64_t fields_a_frame() const {
        const Track *track = main_track();
        if (!track && !tracks.empty()) track = &tracks.front();
        return track && track->fields == 1 ? 1 : 2;
    }
};

// The first picture track is the file's; each sound track is one channel, a pair of AC-3.
void add_track(Gxf &gxf, const Track &track) {
    gxf.tracks.push_back(track);
    if (track.type->kind == MediaType::picture && gxf.facts.pictures.empty()) {
        Picture &picture = gxf.facts.picture();
        picture.codec = track.type->codec;
        picture.rate = track.rate;
        if (track.rate.is_set()) picture.constant_rate = true;
    } else if (track.type->kind == MediaType::sound) {
        Sound sound;
        sound.codec = track.type->codec;
        sound.bits = track.type->detail;
        if (sound.codec == "PCM") sound.channels = 1;
        gxf.facts.sounds.push_back(std::move(sound));
    }
}

void read_map(Gxf &gxf, Bytes payload) {
    constexpr Ratio kRates[] = {{},      {60, 1}, {60000, 1001}, {50, 1}, {30, 1}, {30000, 1001},
                                {25, 1}, {24, 1}, {24000, 1001}};
    const uint64_t material_size = big16(payload, 2);
    const Tags material(payload.sub(4, material_size));
    gxf.first_field = material.number(0x41);
    gxf.last_field = material.number(0x42);
    gxf.facts.add_more("material", material.text(0x40));
    const uint64_t end = std::min(payload.size(), material_size + 6 + big16(payload, 4 + material_size));
    for (uint64_t at = material_size + 6; at + 4 <= end && gxf.tracks.size() < 64;) {
        const Tags tags(payload.sub(at + 4, big16(payload, at + 2)));
        Track track{row_of(kMediaTypes, static_cast<uint8_t>(payload[at] - 0x80), &MediaType::code),
                    static_cast<uint8_t>(payload[at + 1] - 0xC0),
                    {},
                    tags.number(0x51),
                    tags.number(0x52)};
        const int64_t code = tags.number(0x50);
        if (code > 0 && code < static_cast<int64_t>(std::size(kRates))) track.rate = kRates[code];
        const bool by_type = track.type && track.type->kind == MediaType::picture && track.type->detail != 0;
        if (by_type && !track.rate.is_set())
            track.rate = track.type->detail == 1 ? Ratio{30000, 1001} : Ratio{25, 1};
        if (by_type && track.lines <= 0) track.lines = track.type->detail;
        if (track.type) add_track(gxf, track);
        at += 4 + uint64_t{big16(payload, at + 2)};
    }
}

// Sizes by the system where the pictures themselves do not tell.
void set_sizes(const Track &track, Picture &picture) {
    const bool is_hd = track.lines == 4 || track.lines == 6;
    picture.height = track.lines == 4 ? 1080 : track.lines == 6 ? 720 : track.lines == 2 ? 576 : 480;
    picture.width = !is_hd ? 720 : track.lines == 6 ? 1280 : 1920;
    if (picture.codec == "DVCPRO HD") {
        const int64_t full = picture.width;
        picture.width = dv_hd_columns(picture.height, track.rate);
        picture.pixel_aspect = Ratio{full, picture.width}.reduced();
    }
}

// Frames of 8 BCD digits, each with four bits of a binary group; the drop flag stands beside the tens of the
// frames.
void read_timecode_entry(Gxf &gxf, Bytes entry) {
    const auto digits = [&](uint64_t i, uint32_t tens) {
        return (entry[i + 1] & tens) * 10 + (entry[i] & 15);
    };
    const uint32_t base = base_of(gxf.rate());
    gxf.timecode = file_timecode(digits(6, 3), digits(4, 7), digits(2, 7), digits(0, 3), base,
                                 (entry[1] & 4) != 0, "track");
}

void read_media(Gxf &gxf, const Packet &packet) {
    constexpr uint64_t kFirstBytes = 8192;
    const Bytes preamble = gxf.input.present(packet.at + kHeader, kPreamble, 512);
    const MediaType *type = row_of(kMediaTypes, preamble[0], &MediaType::code);
    const Track *track = gxf.main_track();
    if (!type || packet.length < kHeader + kPreamble) return;
    const bool is_timecode = type->kind == MediaType::timecode && !gxf.has_timecode;
    const bool is_picture =
        type->kind == MediaType::picture && !gxf.has_picture && track && preamble[1] == track->id;
    if (!is_timecode && !is_picture) return;
    const uint64_t length = std::min(packet.length - kHeader - kPreamble, kFirstBytes);
    const Bytes data = gxf.input.present(packet.at + kHeader + kPreamble, length);
    if (is_timecode) {
        gxf.has_timecode = true;
        const uint64_t first = big16(preamble, 6);
        if (first < big16(preamble, 8)) read_timecode_entry(gxf, data.sub(8 * first, 8));
        return;
    }
    gxf.has_picture = true;
    Picture &picture = gxf.facts.picture();
    // Motion JPEG has pictures of fields.
    if (picture.codec != "Motion JPEG") stream_picture(data, picture);
    if (picture.rate.is_set()) picture.constant_rate = true;
}

// All UMF packets' data together: a description of the material, then of tracks and of media (SMPTE 360M,
// annex A). Its order is the one in which its size is the smaller number.
void read_umf(Gxf &gxf) {
    constexpr uint64_t kMediaPlace = 104;
    const Bytes bytes(gxf.umf.data(), gxf.umf.size());
    const OrderedBytes data = little32(bytes) <= big32(bytes) ? little_endian(bytes) : big_endian(bytes);
    const uint32_t word = data.u32(68);
    const uint32_t base = base_of(gxf.rate());
    const int64_t fields = gxf.fields_a_frame();
    const bool is_valid = word >> 31 == 0 && bytes.has(68, 4);
    if (is_valid) {
        gxf.facts.add(file_timecode(word >> 24 & 31, word >> 16 & 255, word >> 8 & 255, (word & 255) / fields,
                                    base, (word >> 29 & 1) != 0, "material"));
    }
    size_t sound = 0;
    uint64_t at = kMediaPlace + data.u32(16);
    for (int i = 0; i < 64 && bytes.has(at, 124) && sound < gxf.facts.sounds.size(); i++) {
        const MediaType *type =
            row_of(kMediaTypes, static_cast<uint8_t>(data.u32(at + 112)), &MediaType::code);
        if (type && type->kind == MediaType::sound) {
            Sound &heard = gxf.facts.sounds[sound++];
            const uint32_t rate = data.u32(at + 116);
            if (rate >= 8000 && rate <= 192000) heard.rate = {rate, 1};
            if (heard.codec == "PCM" && data.u32(at + 120) > 0 && data.u32(at + 120) <= 32)
                heard.bits = data.u32(at + 120);
        }
        if (data.u16(at) == 0) break;
        at += data.u16(at);
    }
}

void finish(Gxf &gxf) {
    const Track *track = gxf.main_track();
    const Ratio frame_rate = gxf.rate();
    const int64_t fields = gxf.fields_a_frame();
    const int64_t frames = gxf.first_field >= 0 && gxf.last_field > gxf.first_field
                               ? (gxf.last_field - gxf.first_field) / fields
                               : -1;
    if (track) {
        Picture &picture = gxf.facts.picture();
        if (picture.width == 0 && picture.codec != "Motion JPEG") set_sizes(*track, picture);
        const bool is_dv = picture.codec == "DV" || picture.codec.starts_with("DVCPRO");
        if (is_dv) picture.bits = 8;
        if (picture.codec == "DVCPRO50" || picture.codec == "DVCPRO HD") picture.components = "4:2:2";
        if (picture.scan == Scan::unknown && track->fields == 1) picture.scan = Scan::progressive;
        if (picture.scan == Scan::unknown && track->fields == 2)
            picture.scan = is_dv && picture.height < 720 ? Scan::bottom_first : Scan::interlaced;
        picture.frames = frames;
    }
    gxf.facts.lasts(frames, frame_rate);
    for (Sound &sound : gxf.facts.sounds) {
        if (!sound.rate.is_set()) sound.rate = {48000, 1};  // the only one (SMPTE 360M, 5.4)
        if (frames >= 0 && frame_rate.is_set())
            sound.samples = frames * frame_rate.d * sound.rate.n / frame_rate.n;
    }
}

// The end of the stream, or what its last packets lead to.
void judge(Gxf &gxf) {
    const uint64_t size = gxf.input.size();
    const uint64_t n = std::min(size, kTail);
    const Bytes tail = gxf.input.present(size - n, n);
    for (uint64_t at = 0; tail.has(at, kHeader); at++) {
        if (tail[at + 4] != 1 || tail[at + 15] != 0xE2 || !packet_in(tail.from(at), 0)) continue;
        // The first packet of the tail and those behind it.
        std::optional<Packet> packet = packet_in(tail.from(at), size - n + at);
        int64_t field = -1;
        while (packet && packet->type != end_of_stream && packet->end() <= size) {
            if (packet->type == media) field = big32(tail, packet->at - (size - n) + kHeader + 2);
            if (packet->end() == size) break;
            packet = packet_in(tail.from(packet->end() - (size - n)), packet->end());
        }
        const int64_t next = field < 0 ? gxf.first_field : field + gxf.fields_a_frame();
        if (!packet) {  // no packet behind one: bytes of no stream, which has no end
            gxf.facts.cut(size + kHeader, "the end of the stream");
        } else if (packet->type == end_of_stream) {
            gxf.facts.whole(packet->end());
        } else if (packet->end() > size) {
            gxf.facts.cut(packet->end(), "the last packet's end");
        } else if (next >= 0 && next < gxf.last_field) {
            gxf.facts.cut(size + kHeader, "fields from " + std::to_string(next) + " on");
        } else {
            gxf.facts.open("no end of the stream");
        }
        return;
    }
    gxf.facts.cut(size + kHeader, "the end of the stream");
}

void read(Gxf &gxf) {
    uint64_t at = 0;
    for (int i = 0; i < kMostPackets; i++) {
        const std::optional<Packet> packet = packet_in(gxf.input.present(at, kHeader, 512), at);
        if (!packet) break;
        const uint64_t length = std::min(packet->length - kHeader, kMostPayload);
        if (packet->type == map && gxf.tracks.empty()) {
            read_map(gxf, gxf.input.present(at + kHeader, length));
        } else if (packet->type == umf && length > 5) {
            const auto data = gxf.input.present(at + kHeader + 5, length - 5).span(0, length - 5);
            if (gxf.umf.size() < kMostPayload * 4) gxf.umf.insert(gxf.umf.end(), data.begin(), data.end());
        } else if (packet->type == media) {
            read_media(gxf, *packet);
        }
        const bool wants_picture = gxf.main_track() && !gxf.has_picture;
        const bool wants_timecode = !gxf.has_timecode && std::ranges::any_of(gxf.tracks, [](const Track &t) {
            return t.type->kind == MediaType::timecode;
        });
        if (packet->type == end_of_stream || (packet->type == media && !wants_picture && !wants_timecode))
            break;
        at = packet->end();
    }
    if (gxf.tracks.empty()) gxf.facts.problem = "no map of tracks";
    read_umf(gxf);
    finish(gxf);
    gxf.facts.add(std::move(gxf.timecode));
    gxf.facts.add_more("tracks", gxf.tracks.size());
    judge(gxf);
}

}  // namespace

void gxf_facts(Input &input, Facts &facts) {
    Gxf gxf{input, facts};
    read(gxf);
}
