// The walk over the packets of a GXF file (SMPTE 360M).
#include <algorithm>

#include "common/names.h"
#include "common/print.h"
#include "gxf/gxf.h"
#include "gxf/packets.h"
#include "gxf/values.h"

namespace {

constexpr uint64_t kHeaderSize = 16;
constexpr uint32_t kBlock = 512;  // a packet's header and media preamble in one small read

enum class Kind { none, map, media, end_of_stream, field_locator, umf };

struct Packet {
    uint32_t length = 0;  // in bytes with the header; 0: no packet
    const char *name = "?";
    Kind kind = Kind::none;
};

struct PacketType {
    uint8_t type;
    Kind kind;
    const char *name;
};

constexpr PacketType kPacketTypes[] = {
    {0xBC, Kind::map, "map"},
    {0xBF, Kind::media, "media"},
    {0xFA, Kind::map, "reserved"},
    {0xFB, Kind::end_of_stream, "end of stream"},
    {0xFC, Kind::field_locator, "field locator table"},
    {0xFD, Kind::umf, "UMF Packet"},
    {0xFE, Kind::map, "reserved"},
    {0xFF, Kind::map, "reserved"},
};

// The packet whose header stands at an offset; a message and a length of 0 when there is none.
Packet gxftag(Input &input, uint64_t offset, Bytes header) {
    if (!input.has_place(static_cast<int64_t>(offset))) {
        print("gxftag: fseek error\n");
        return {};
    }
    if (header.empty()) {
        print("gxftag: fread error\n");
        return {};
    }
    const PacketType *type = row_of(kPacketTypes, header[5], &PacketType::type);
    if (!bytes_are(header, 0, "\0\0\0\0\x01") || !bytes_are(header, 10, "\0\0\0\0\xE1\xE2") || !type) {
        print("gxftag: Format wrong\n");
        return {};
    }
    return {gxfuint32(header, 6, false), type->name, type->kind};
}

void dump_payload(Kind kind, Bytes rest, int64_t size, UmfCollection &umf) {
    switch (kind) {
        case Kind::map: gxfmap(rest, size); break;
        case Kind::media: gxfmedia(rest, size); break;
        case Kind::field_locator: gxflocator(rest, size); break;
        case Kind::umf: gxfumfpacket(rest, umf); break;
        case Kind::none:
        case Kind::end_of_stream: break;
    }
}

}  // namespace

void gxfdump(DumpOptions &, Input &input) {
    print("Fileformat:GXF\n");
    UmfCollection umf;
    for (uint64_t position = 0;;) {
        const Bytes held = input.bytes(position, kHeaderSize + kPayloadRead, kBlock);
        const Bytes rest = held.sub(0, input.end() - std::min(position, input.end()));
        const Packet packet = gxftag(input, position, rest.sub(0, kHeaderSize));
        if (packet.length == 0) return;
        print("%08x %s %d\n", static_cast<uint32_t>(position), packet.name,
              static_cast<int32_t>(packet.length));
        const int64_t size = int64_t{packet.length} - int64_t{kHeaderSize};
        dump_payload(packet.kind, rest.from(kHeaderSize), size, umf);
        if (packet.kind == Kind::end_of_stream) return;
        position += packet.length;
    }
}
