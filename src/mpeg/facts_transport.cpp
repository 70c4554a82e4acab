#include <algorithm>
#include <map>
#include <set>

#include "common/codecs.h"
#include "common/elementary.h"
#include "common/names.h"
#include "main/facts_of.h"
#include "mpeg/facts_streams.h"
#include "mpeg/packets.h"

namespace {

constexpr uint64_t kStreamHead = 1 << 20;
constexpr uint64_t kStreamTail = 1 << 20;

struct Type {
    uint32_t type;
    const char *codec;
    bool is_picture = false;
    Stream::Kind kind = Stream::plain;
};

// Stream types (ISO 13818-1, table 2-34, ATSC, Blu-ray).
constexpr Type kTypes[] = {
    {0x01, "MPEG-1", true}, {0x02, "MPEG-2", true},
    {0x03, "MP2"},          {0x04, "MP2"},
    {0x0F, "AAC"},          {0x10, "MPEG-4", true},
    {0x11, "AAC"},          {0x1B, "H.264", true},
    {0x20, "H.264", true},  {0x21, "JPEG 2000", true},
    {0x24, "HEVC", true},   {0x32, "JPEG XS", true},
    {0x33, "VVC", true},    {0x80, "PCM", false, Stream::hdmv},
    {0x81, "AC-3"},         {0x82, "DTS"},
    {0x83, "TrueHD"},       {0x84, "E-AC-3"},
    {0x85, "DTS"},          {0x86, "DTS"},
    {0x87, "E-AC-3"},       {0xD1, "Dirac", true},
    {0xEA, "VC-1", true},
};

constexpr CodeName kDescriptors[] = {{0x6A, "AC-3"}, {0x7A, "E-AC-3"}, {0x7B, "DTS"}, {0x7C, "AAC"}};
constexpr Type kRegistered[] = {{fourcc("AC-3"), "AC-3"},
                                {fourcc("EAC3"), "E-AC-3"},
                                {fourcc("Opus"), "Opus"},
                                {fourcc("DTS1"), "DTS"},
                                {fourcc("DTS2"), "DTS"},
                                {fourcc("DTS3"), "DTS"},
                                {fourcc("HEVC"), "HEVC", true},
                                {fourcc("AV01"), "AV1", true},
                                {fourcc("VC-1"), "VC-1", true},
                                {fourcc("drac"), "Dirac", true},
                                {fourcc("BSSD"), "PCM", false, Stream::aes3}};

void set_type(const Type &type, Stream &stream) {
    stream.codec = type.codec;
    stream.is_picture = type.is_picture;
    stream.kind = type.kind;
}

struct Transport {
    Facts &facts;
    TransportPackets packets;
    uint64_t packet = packets.size;
    std::set<uint32_t> programs = {};
    std::map<uint32_t, Stream> streams = {};
    std::vector<uint32_t> order = {};
    std::map<uint32_t, std::string> sections = {};
    Stream clock = {};  // program clock references
    bool with_new = true;
    bool has_map = false;
};

// Private data (type 6) and what was registered: by descriptors (ETSI EN 300 468; SMPTE RA).
void describe(Bytes descriptors, uint32_t type, Stream &stream) {
    uint64_t at = 0;
    for (int i = 0; i < 64 && descriptors.has(at, 2); i++) {
        const uint8_t tag = descriptors[at];
        const Bytes data = descriptors.sub(at + 2, descriptors[at + 1]);
        at += 2 + uint64_t{descriptors[at + 1]};
        if (tag == 0x0A) stream.language = fixed_text(data, 0, 3);
        if (type != 6 && type < 0x80) continue;
        stream.codec = name_of(kDescriptors, tag, stream.codec.c_str());
        if (tag == 0x7F && data[0] == 0x80 && data[1] <= 8) stream.channels = data[1];  // of Opus
        if (tag != 0x05 || (!stream.codec.empty() && stream.codec != "PCM")) continue;
        if (const Type *found = row_of(kRegistered, big32(data), &Type::type)) set_type(*found, stream);
    }
    if (stream.language == "und") stream.language.clear();
}

void read_association(Bytes section, Transport &transport) {
    const uint64_t end = 3 + (big16(section, 1) & 0xFFFU);
    for (uint64_t at = 8; at + 8 <= end && section.has(at, 4); at += 4) {
        if (big16(section, at) != 0) transport.programs.insert(big16(section, at + 2) & 0x1FFFU);
    }
}

void read_program_map(Bytes section, Transport &transport) {
    const uint64_t end = 3 + (big16(section, 1) & 0xFFFU);
    transport.has_map = true;
    uint64_t at = 12 + (big16(section, 10) & 0xFFFU);
    for (int i = 0; i < 64 && at + 9 <= end && section.has(at, 5); i++) {
        const uint32_t type = section[at];
        const uint32_t id = big16(section, at + 1) & 0x1FFFU;
        const uint64_t length = big16(section, at + 3) & 0xFFFU;
        Stream stream;
        if (const Type *known = row_of(kTypes, type, &Type::type)) set_type(*known, stream);
        describe(section.sub(at + 5, length), type, stream);
        at += 5 + length;
        stream.is_private = type >= 0x80;
        if ((stream.codec.empty() && !stream.is_private && type != 6) ||
            !transport.streams.emplace(id, stream).second)
            continue;
        transport.order.push_back(id);
    }
}

void add_section(uint32_t id, Bytes payload, bool begins, Transport &transport) {
    std::string &kept = transport.sections[id];
    if (begins) {
        payload = payload.from(1 + uint64_t{payload[0]});
        kept.clear();
    } else if (kept.empty()) {
        return;
    }
    const auto bytes = payload.span(0, 4096);
    kept.append(bytes.begin(), bytes.end());
    const Bytes section(kept.data(), kept.size());
    if (kept.size() < 3 || kept.size() < 3 + (big16(section, 1) & 0xFFFU)) return;
    if (id == 0 && section[0] == 0) read_association(section, transport);
    if (id != 0 && section[0] == 2) read_program_map(section, transport);
    kept.clear();
}

// Private data that no descriptor names, by the id of their packets and what these begin with.
void identify(Bytes pes, Bytes data, Stream &stream) {
    if (pes[3] >> 5 == 6 && big16(data) >> 5 == 0x2B7) stream.codec = "AAC";  // LATM
    if (pes[3] >> 5 == 6 && big16(data) >> 5 == 0x7FF) stream.codec = (data[1] & 6) == 0 ? "AAC" : "MP2";
    const bool is_dirac = bytes_are(data, 0, "BBCD");
    stream.is_picture = is_dirac || pes[3] >> 4 == 0xE;
    if (stream.is_picture) stream.codec = is_dirac ? "Dirac" : video_codec(data);
}

void add_packet(Bytes packet, Transport &transport) {
    const uint32_t id = big16(packet, 1) & 0x1FFFU;
    const bool begins = (packet[1] & 0x40) != 0;
    const uint64_t start = (packet[3] & 0x20) != 0 ? 5 + uint64_t{packet[4]} : 4;
    if ((packet[3] & 0x20) != 0 && packet[4] >= 7 && (packet[5] & 0x10) != 0)
        transport.clock.add_time(static_cast<int64_t>(packet.big(6, 5) >> 7));
    if ((packet[3] & 0x10) == 0 || start >= 188 || (packet[3] & 0xC0) != 0) return;
    const Bytes payload = packet.from(start);
    if (transport.with_new && (id == 0 || transport.programs.contains(id)))
        return add_section(id, payload, begins, transport);
    const auto found = transport.streams.find(id);
    if (found == transport.streams.end()) return;
    Stream &stream = found->second;
    const bool is_first = begins && big32(payload) >> 8 == 1;
    const PesHeader header = is_first ? pes_header(payload) : PesHeader{};
    if (is_first && stream.codec.empty()) identify(payload, payload.from(header.payload), stream);
    stream.add_time(header.time);
    if ((transport.with_new || stream.is_late) && (is_first || !stream.head.empty()))
        stream.add_payload(payload.from(header.payload), is_first);
}

void walk_packets(Bytes bytes, uint64_t at, Transport &transport) {
    while (bytes.has(at + transport.packets.sync, 188)) {
        const Bytes packet = bytes.sub(at + transport.packets.sync, 188);
        if (packet[0] == 0x47) add_packet(packet, transport);
        at += transport.packet;
    }
}

void judge(Bytes tail, uint64_t size, const Transport &transport) {
    const uint64_t rest = (size - transport.packets.first) % transport.packet;
    const uint64_t first = transport.packets.sync;
    // The bytes of the last packet that begins, with its sync byte where that is there.
    const Bytes last = tail.from(tail.size() - std::min(tail.size(), rest == 0 ? transport.packet : rest));
    const bool has_sync = last[first] == 0x47;
    if (rest != 0 && (has_sync || last.size() <= first)) {
        transport.facts.cut(size - rest + transport.packet, "the last packet's end");
    } else if (big32(last, first) == 0 &&
               big32(last, last.size() - std::min<uint64_t>(last.size(), 4)) == 0) {
        transport.facts.cut(size, "zeros where packets would be");
    }
}

}  // namespace

void transport_facts(Input &input, Facts &facts) {
    const uint64_t size = input.size();
    const Bytes head = input.present(0, kStreamHead);
    const TransportPackets shape = transport_packets(head);
    if (shape.size == 0) return facts.format.clear();
    Transport transport{facts, shape};
    if (transport.packet != 188) facts.variant = std::to_string(transport.packet) + "-byte packets";
    // Maps may come behind the first packets of what they name.
    walk_packets(head.sub(0, kStreamHead / 2), shape.first, transport);
    for (auto &[id, stream] : transport.streams) {
        stream.head.clear();
        stream.has_header = false;
    }
    walk_packets(head, shape.first, transport);
    transport.with_new = false;
    for (auto &[id, stream] : transport.streams) stream.is_late = stream.head.empty();
    const uint64_t packets = (size - shape.first) / transport.packet;
    const uint64_t in_tail = std::min(packets, kStreamTail / transport.packet);
    const uint64_t start = shape.first + (packets - in_tail) * transport.packet;
    const Bytes tail = input.present(start, size - start);
    walk_packets(tail, 0, transport);
    std::vector<Stream *> streams;
    for (const uint32_t id : transport.order) {
        Stream &stream = transport.streams[id];
        const bool is_unsure = stream.is_private || transport.programs.size() > 1;
        if (stream.codec.empty() || (stream.head.empty() && is_unsure)) continue;
        tell_stream(stream, facts);
        streams.push_back(&stream);
    }
    streams.push_back(&transport.clock);
    tell_duration(streams, facts);
    if (transport.programs.size() > 1) facts.add_more("programs", transport.programs.size());
    if (!transport.has_map) facts.problem = "no program map";
    judge(tail, size, transport);
}
