// Dumpers of the packets' payloads.
//
// Each gets the file's bytes from the start of the payload on, of which a window holds at most kPayloadRead
// and a cut file fewer, and the payload's size as the packet's length gives it: below 0 for a length that
// does not even hold the packet header.
#pragma once

#include <cstdint>
#include <vector>

#include "common/budget.h"
#include "common/bytes.h"

// Material and track descriptions: the sections and tags of a map packet (SMPTE 360M). Lists end with the
// payload read.
void gxfmap(Bytes rest, int64_t size);

// The media preamble and, on time code tracks, the time codes of a media packet. The media data itself is
// not read.
void gxfmedia(Bytes rest, int64_t size);

// The used entries of a field locator table: at which KiB of the file every n-th field begins.
void gxflocator(Bytes rest, int64_t size);

// Name of a media type as media preambles hold it; "?" for an unknown one.
const char *gxftracktype(int32_t type);

// UMF data of a file, put together from its UMF packets.
struct UmfCollection {
    static constexpr size_t kCapacity = 262144;
    static constexpr uint64_t kMostDescribed = 64 * 1024 * 1024 + 1;

    std::vector<uint8_t> data;
    std::vector<FileRange> places;  // of the data, packet by packet
    bool exceeded = false;          // data had to be dropped, and this was reported
    // A file has one last packet; one that had thousands would describe the whole collection as often.
    Budget budget = Budget::of_bytes(kMostDescribed);
};

// Adds a UMF packet's data to the collection. The packet that is marked as the last prints the descriptions
// of payload, material, tracks, media and user data from all that was collected.
void gxfumfpacket(Bytes rest, UmfCollection &umf);

// XML in UTF-16 little-endian as one line a tag, indented by its depth; ends at a unit whose low byte is 0.
// Characters beyond ASCII and line breaks are left out.
void gxfxml(Bytes xml);
