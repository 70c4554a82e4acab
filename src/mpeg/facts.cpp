#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "common/elementary.h"
#include "common/names.h"
#include "main/facts_of.h"
#include "mpeg/facts_streams.h"

void Stream::add_time(int64_t time) {
    if (time < 0) return;
    if (first < 0) first = time;
    // Clocks of 33 bits come round after a day.
    constexpr int64_t kRound = int64_t{1} << 33;
    while (time < first - kRound / 2) time += kRound;
    first = std::min(first, time);
    last = std::max(last, time);
}

int64_t clock_at(Bytes b, uint64_t at) {
    const uint64_t v = b.big(at, 5);
    return static_cast<int64_t>((v >> 33 & 7) << 30 | (v >> 17 & 0x7FFF) << 15 | (v >> 1 & 0x7FFF));
}

const char *video_codec(Bytes data) {
    const uint64_t at = start_code(data.sub(0, 64)) + 3;
    const uint8_t code = data[at];
    if (code == 0xB3) return "MPEG-2";
    if (code == 9 || (code & 0x9F) == 7) return "H.264";
    if (code == 0xB0 || code >> 5 == 1) return "MPEG-4";
    const bool is_hevc = (code == 0x40 || code == 0x42 || code == 0x46) && data[at + 1] == 1;
    return is_hevc ? "HEVC" : "";
}

PesHeader pes_header(Bytes pes) {
    PesHeader header;
    if ((pes[6] & 0xC0) == 0x80) {  // ISO 13818-1
        header.payload = 9 + uint64_t{pes[8]};
        if ((pes[7] & 0x80) != 0) header.time = clock_at(pes, 9);
        return header;
    }
    uint64_t at = 6;  // ISO 11172-1
    while (at < 22 && pes[at] == 0xFF) at++;
    if ((pes[at] & 0xC0) == 0x40) at += 2;
    const unsigned kind = pes[at] >> 4;
    if (kind == 2 || kind == 3) header.time = clock_at(pes, at);
    header.payload = at + (kind == 2 ? 5 : kind == 3 ? 10 : 1);
    return header;
}

void Stream::add_pictures(Bytes payload, bool is_last) {
    constexpr int kUnknown = INT_MIN;
    for (uint64_t at = start_code(payload); at < payload.size(); at = start_code(payload, at + 4)) {
        const int reference = big16(payload, at + 4) >> 6;  // counts from each group on
        if (payload[at + 3] == 0xB8 && number != kUnknown) number = -1 - behind;
        if (payload[at + 3] != 0) continue;
        if (is_last) {
            behind = number == kUnknown ? 0 : std::max(0, number + behind - reference);
            number = reference;
        } else if (number != kUnknown) {
            behind = std::max(behind, reference - number);
        }
        is_last = false;
    }
}

void Stream::add_payload(Bytes payload, bool begins) {
    constexpr size_t kEnough = 16384;
    if (is_picture && begins && !has_header && !head.empty()) {
        Picture picture;
        picture.codec = codec;
        has_header = stream_picture(Bytes(head.data(), head.size()), picture);
        if (!has_header) head.clear();
    }
    const auto bytes = payload.span(0, kEnough - std::min(kEnough, head.size()));
    head.append(bytes.begin(), bytes.end());
}

namespace {

using namespace std::string_view_literals;

// Sound of DVDs: quantization, rate and channels behind the substream's header.
void read_dvd_pcm(Bytes b, Sound &sound) {
    constexpr uint32_t kBits[] = {16, 20, 24, 0};
    constexpr uint32_t kRates[] = {48000, 96000, 44100, 32000};
    sound.bits = kBits[b[5] >> 6];
    sound.rate = {kRates[b[5] >> 4 & 3], 1};
    sound.channels = (b[5] & 7) + 1U;
    if (sound.channels <= 2) sound.layout = sound.channels == 1 ? "mono" : "stereo";
}

// Of Blu-ray discs: four bytes before the samples.
void read_hdmv_pcm(Bytes b, Sound &sound) {
    constexpr uint32_t kChannels[] = {0, 1, 0, 2, 3, 3, 4, 4, 5, 6, 7, 8, 0, 0, 0, 0};
    constexpr const char *kLayouts[] = {"",    "mono", "",    "stereo", "3.0", "2/1",
                                        "4.0", "quad", "5.0", "5.1",    "7.0", "7.1"};
    constexpr uint32_t kBits[] = {0, 16, 20, 24};
    sound.channels = kChannels[b[2] >> 4];
    sound.layout = name_at(kLayouts, b[2] >> 4);
    sound.rate = {(b[2] & 15) == 4 ? 96000 : (b[2] & 15) == 5 ? 192000 : 48000, 1};
    sound.bits = kBits[b[3] >> 6];
}

// SMPTE ST 302: pairs of AES3 channels in private data.
void read_302(Bytes b, Sound &sound) {
    sound.channels = 2 + 2 * (b[2] >> 6U & 3U);
    sound.bits = 16 + 4 * (b[3] >> 4U & 3U);
    sound.rate = {48000, 1};
}

}  // namespace

void tell_stream(Stream &stream, Facts &facts) {
    const Bytes head(stream.head.data(), stream.head.size());
    if (stream.is_picture) {
        Picture picture;
        picture.codec = stream.codec;
        stream_picture(head, picture);
        if (!stream.rate.is_set()) stream.rate = picture.rate;
        facts.add_more("mastering display", picture.mastering);
        facts.add_more("content light", picture.light);
        facts.pictures.push_back(picture);
        return;
    }
    Sound sound;
    sound.codec = stream.codec;
    sound.language = stream.language;
    sound.channels = stream.channels;
    if (stream.codec == "Opus") {
        sound.rate = {48000, 1};
        sound.layout = counted_layout(sound.channels);
    }
    // The first frame of sound in what there is of the stream.
    for (uint64_t at = 0; at + 8 < head.size() && !stream_sound(head.from(at), sound);) at++;
    if (stream.codec == "PCM" && stream.kind == Stream::dvd) read_dvd_pcm(head, sound);
    if (stream.codec == "PCM" && stream.kind == Stream::hdmv) read_hdmv_pcm(head, sound);
    if (stream.codec == "PCM" && stream.kind == Stream::aes3) read_302(head, sound);
    facts.sounds.push_back(sound);
}

// By the main pictures' clock, with the last one's own time; else by others', the sound's, or that of the
// program.
void tell_duration(const std::vector<Stream *> &streams, Facts &facts) {
    const Stream *best = nullptr;
    int best_rank = -1;
    Picture *picture = nullptr;  // that is the best one's
    Picture *next = facts.pictures.data();
    const Picture *const main = next + facts.largest();
    for (const Stream *stream : streams) {
        Picture *const told = stream->is_picture ? next++ : nullptr;
        const int rank = told ? (told == main ? 3 : 2) : stream->codec.empty() ? 0 : 1;
        if (stream->first < 0 || stream->last <= stream->first || rank <= best_rank) continue;
        best = stream;
        best_rank = rank;
        picture = told;
    }
    if (!best) return facts.largest_first();
    const int64_t ticks = best->last - best->first;
    facts.duration = Ratio{ticks, 90000}.reduced();
    const double frames = static_cast<double>(ticks) / 90000 * best->rate.value() + 1 + best->behind;
    if (picture && best->rate.is_set() && std::abs(frames - std::round(frames)) < 0.02) {
        facts.lasts(std::llround(frames), best->rate);
        picture->frames = std::llround(frames);
    }
    facts.largest_first();
}

namespace {

constexpr uint64_t kHead = 1 << 20;
constexpr uint64_t kTail = 512 << 10;
constexpr uint64_t kEnd = 65536;    // where the last start code of video is looked for
constexpr uint64_t kSector = 2048;  // of a disc, which zeros may fill up

bool is_pes(uint8_t id) { return id >= 0xBC && id != 0xBF && id != 0xBE; }

// A substream of private stream 1 as DVDs have them; its codec, or nothing.
const char *dvd_codec(uint8_t id) {
    if (id >= 0x80 && id <= 0x87) return "AC-3";
    if (id >= 0x88 && id <= 0x8F) return "DTS";
    if (id >= 0xA0 && id <= 0xAF) return "PCM";
    return id >= 0xC0 && id <= 0xCF ? "AC-3" : nullptr;
}

struct Program {
    Facts &facts;
    std::map<uint32_t, Stream> streams = {};
    bool is_ended = false;  // an end code was found
    bool is_version_2 = false;
    bool with_new = true;  // streams are made for ids that are new
};

void add_packet(Bytes pes, uint8_t id, Program &program) {
    const PesHeader header = pes_header(pes);
    Bytes payload = pes.from(header.payload);
    uint32_t key = id;
    Stream found;
    if (id >= 0xE0 && id <= 0xEF) {
        found.is_picture = true;
        found.codec = video_codec(payload);
        if (found.codec.empty()) found.codec = "MPEG-2";
    } else if (id >= 0xC0 && id <= 0xDF) {
        found.codec = "MP2";
    } else if (const char *codec = id == 0xBD ? dvd_codec(payload[0]) : nullptr) {
        key = 0xBD00U | payload[0];
        found.codec = codec;
        found.kind = Stream::dvd;
        if (found.codec != "PCM") payload = payload.from(4);
    } else {
        return;
    }
    auto place = program.streams.find(key);
    if (place == program.streams.end()) {
        if (!program.with_new) return;
        place = program.streams.emplace(key, found).first;
    }
    Stream &stream = place->second;
    const int64_t last = stream.last;
    stream.add_time(header.time);
    if (stream.codec == "MPEG-2") stream.add_pictures(payload, stream.last > last);
    if (program.with_new) stream.add_payload(payload, header.time >= 0);
}

// Goes from packet to packet; where it comes to, the end of the bytes or what is no packet.
uint64_t walk_packets(Bytes bytes, uint64_t at, Program &program) {
    constexpr uint64_t kMostStuffing = 64;  // zeros that fill up a sector of a disc
    for (int i = 0; i < 100000 && bytes.has(at, 4); i++) {
        const Bytes stuffing = bytes.sub(at, kMostStuffing);
        const uint64_t next = start_code(stuffing);
        if (big32(stuffing) >> 8 == 0 && next < stuffing.size()) at += next;
        if (big32(bytes, at) >> 8 != 1) break;
        const uint8_t id = bytes[at + 3];
        if (id == 0xB9) {
            program.is_ended = true;
            at += 4;
        } else if (id == 0xBA) {
            const bool version_2 = bytes[at + 4] >> 6 == 1;
            program.is_version_2 = program.is_version_2 || version_2;
            at += version_2 ? 14 + (bytes[at + 13] & 7U) : 12;
        } else if (id >= 0xBB) {
            const uint64_t size = 6 + uint64_t{big16(bytes, at + 4)};
            if (is_pes(id)) add_packet(bytes.sub(at, size), id, program);
            at += size;
        } else {
            break;
        }
    }
    return at;
}

void read_program(Input &input, Facts &facts) {
    const uint64_t size = input.size();
    Program program{facts};
    const Bytes head = input.present(0, kHead);
    uint64_t at = walk_packets(head, 0, program);
    const uint64_t walked = at;
    const Bytes rest = head.from(walked);
    program.with_new = false;
    Bytes tail = head;
    uint64_t tail_start = 0;
    if (size > kHead) {
        for (auto &[id, stream] : program.streams) stream.number = INT_MIN;
        tail_start = size - kTail;
        tail = input.present(tail_start, kTail);
        at = 0;
        for (uint64_t pack = start_code(tail); pack < tail.size(); pack = start_code(tail, pack + 3)) {
            if (tail[pack + 3] != 0xBA) continue;
            at = walk_packets(tail, pack, program);
            if (at + 4 > tail.size() || program.is_ended) break;
        }
    }
    facts.variant = program.is_version_2 ? "program stream" : "MPEG-1 program stream";
    std::vector<Stream *> streams;
    for (auto &[id, stream] : program.streams) {
        tell_stream(stream, facts);
        streams.push_back(&stream);
    }
    tell_duration(streams, facts);
    if (program.is_ended) {
        facts.whole(size);
    } else if (tail_start + at > size) {
        facts.cut(tail_start + at, "the last packet's end");
    } else if (size <= kHead && !rest.empty() && rest.size() < 4 &&
               begins_as(rest, "\0\0\1"sv.substr(0, static_cast<size_t>(rest.size())))) {
        facts.cut(walked + 4, "the last packet's end");
    } else if (size - tail_start - at >= kSector && big32(tail, at) == 0 &&
               big32(tail, tail.size() - 4) == 0) {
        facts.cut(size, "zeros where packets would be");
    }
}

// The time code of a group of pictures (ISO 13818-2, 6.3.8).
FileTimecode group_timecode(Bytes group, Ratio rate) {
    const uint32_t bits = big32(group, 4);
    return file_timecode(bits >> 26 & 31, bits >> 20 & 63, bits >> 13 & 63, bits >> 7 & 63, base_of(rate),
                         bits >> 31 != 0, "group of pictures");
}

// Fields that a picture is shown for beyond two, by its coding extension: one that is a field alone has one
// less, those of film have one more each other time, and frames of a progressive sequence may be repeated.
int64_t fields_more(Bytes extension, bool has_frames_only) {
    const bool repeats = (extension[7] & 2) != 0;
    if ((extension[6] & 3) != 3) return -1;
    if (!has_frames_only || !repeats) return repeats ? 1 : 0;
    return (extension[7] & 0x80) != 0 ? 4 : 2;
}

void read_video(Input &input, Facts &facts) {
    const uint64_t size = input.size();
    const bool is_small = size <= 3 * kHead;
    const Bytes head = input.present(0, is_small ? size : 65536);
    Picture picture;
    if (!mpeg_sequence(head, picture)) return facts.format.clear();
    facts.variant = picture.codec + " video";
    int64_t fields = 0;
    bool has_group = false;
    bool has_frames_only = false;
    int64_t left = 1000000;
    for (uint64_t at = start_code(head); at < head.size() && left-- > 0; at = start_code(head, at + 4)) {
        const uint8_t code = head[at + 3];
        if (code == 0xB8 && !has_group) {
            facts.add(group_timecode(head.from(at), picture.rate));
            has_group = true;
        }
        if (code == 0) fields += 2;
        const unsigned extension = code == 0xB5 ? head[at + 4] >> 4 : 0U;
        if (extension == 1) has_frames_only = (head[at + 5] & 8) != 0;
        if (extension == 8) fields += fields_more(head.from(at), has_frames_only);
    }
    if (is_small) {
        picture.frames = fields / 2;
        facts.lasts(picture.frames, picture.rate);
        if (picture.bit_rate < 0) picture.bit_rate = bit_rate_of(size, facts.duration);
    }
    facts.pictures.push_back(picture);
    // Zeros stand before start codes alone.
    const Bytes end = input.present(size - std::min(size, kEnd), kEnd);
    if (end[find_last_in(end, "\0\0\1"sv) + 3] == 0xB7) {
        facts.whole(size);
    } else if (ends_in_zeros(input, 0, size, kSector, kSector)) {
        facts.cut(size, "zeros where pictures would be");
    }
}

}  // namespace

void mpeg_facts(Input &input, Facts &facts) {
    const Bytes head = input.bytes(0, 16);
    if (big32(head) == 0x1BA) {
        read_program(input, facts);
        if (facts.pictures.empty() && facts.sounds.empty()) facts.problem = "no streams";
    } else if (big32(head) == 0x1B3) {
        read_video(input, facts);
    }
}
