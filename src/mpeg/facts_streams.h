// What the readers of program and transport streams share.
#pragma once

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "common/bytes.h"
#include "common/facts.h"

// An elementary stream: what it is, its clock, and its first bytes.
struct Stream {
    enum Kind : uint8_t { plain, dvd, hdmv, aes3 };

    std::string codec;
    bool is_picture = false;
    Kind kind = plain;
    std::string language = {};
    Ratio rate = {};
    uint32_t channels = 0;
    int64_t first = -1;  // presentation times, in 1/90,000 s
    int64_t last = -1;
    std::string head = {};
    bool is_private = false;  // its type has several meanings: splice information (SCTE 35) or DTS
    bool has_header = false;  // in the head
    bool is_late = false;     // begins behind what is looked at first

    int number = INT_MIN;  // the temporal reference of the picture of the last time, and how many there
    int behind = 0;        // are behind it: only the first one of a packet has its time

    void add_time(int64_t time);
    void add_pictures(Bytes payload, bool is_last);
    // Of a picture, from the packet on whose data have a header, where `begins` tells that it is a packet's
    // start.
    void add_payload(Bytes payload, bool begins);
};

// The head of a PES packet from its start code on: where its data begins, and its presentation time or -1.
struct PesHeader {
    uint64_t payload = 0;
    int64_t time = -1;
};
PesHeader pes_header(Bytes pes);
// What video begins so, by its first start code; empty for what is none that is known.
const char *video_codec(Bytes data);
int64_t clock_at(Bytes b, uint64_t at);

// Adds a picture or a sound by what the stream's first bytes say.
void tell_stream(Stream &stream, Facts &facts);
void tell_duration(const std::vector<Stream *> &streams, Facts &facts);
