#include <iterator>
#include <string_view>

#include "common/elementary.h"
#include "common/names.h"

// What the stream itself says of the picture, where the container does not know better.
void take_stream(const Picture &stream, Picture &picture) {
    if (picture.width == 0) {
        picture.width = stream.width;
        picture.height = stream.height;
    }
    const uint32_t width = stream.coded_width != 0 ? stream.coded_width : stream.width;
    const uint32_t height = stream.coded_height != 0 ? stream.coded_height : stream.height;
    if (width != 0 && (width != picture.width || height != picture.height)) {
        picture.coded_width = width;
        picture.coded_height = height;
    }
    if (stream.bits != 0) picture.bits = stream.bits;
    if (!stream.components.empty()) picture.components = stream.components;
    if (stream.scan != Scan::unknown) picture.scan = stream.scan;
    if (stream.pixel_aspect.is_set()) picture.pixel_aspect = stream.pixel_aspect;
    if (stream.bit_rate > 0) picture.bit_rate = stream.bit_rate;
    picture.colour = stream.colour;
}

// VC-3 (SMPTE ST 2019-1): compression identifiers and what they stand for.
bool vc3_frame(Bytes frame, Picture &picture) {
    if (!bytes_are(frame, 0, "\0\0\2\x80") && big32(frame) >> 8 != 3) return false;
    constexpr CodeName kKinds[] = {
        {1270, "DNxHR 444"}, {1271, "DNxHR HQX"}, {1272, "DNxHR HQ"}, {1273, "DNxHR SQ"}, {1274, "DNxHR LB"}};
    const uint32_t id = big32(frame, 40);
    picture.codec = name_of(kKinds, id, "DNxHD");
    constexpr uint32_t kDepths[] = {0, 8, 10, 12, 0, 0, 0, 0};
    picture.bits = kDepths[frame[33] >> 5];
    const bool is_444 = id == 1256 || id == 1270;
    picture.components = !is_444 ? "4:2:2" : (frame[44] & 1) != 0 || id == 1256 ? "RGB" : "4:4:4";
    if ((frame[5] & 2) == 0) picture.scan = Scan::progressive;
    return true;
}

// The frame header of JPEG (ITU-T T.81, B.2.2): precision and sampling factors.
bool jpeg_frame(Bytes frame, Picture &picture) {
    uint64_t at = 2;
    if (big16(frame) != 0xFFD8) return false;
    for (int i = 0; i < 64 && frame.has(at, 10) && frame[at] == 0xFF; i++) {
        const uint8_t marker = frame[at + 1];
        if (marker >= 0xC0 && marker <= 0xC3) {
            picture.bits = frame[at + 4];
            const uint8_t parts = frame[at + 9];
            constexpr CodeName kChroma[] = {
                {0x11, "4:4:4"}, {0x21, "4:2:2"}, {0x22, "4:2:0"}, {0x41, "4:1:1"}, {0x12, "4:4:0"}};
            const uint32_t luma = frame[at + 11];
            const uint32_t chroma = frame[at + 14];
            if (parts == 1) picture.components = "Y";
            if (parts == 3 && chroma >> 4 != 0 && (chroma & 15) != 0)
                picture.components =
                    name_of(kChroma, (luma >> 4) / (chroma >> 4) << 4 | (luma & 15) / (chroma & 15));
            return true;
        }
        at += 2 + uint64_t{big16(frame, at + 2)};
    }
    return false;
}

bool prores_frame(Bytes frame, Picture &picture) {
    if (!bytes_are(frame, 4, "icpf") || big16(frame, 8) < 20) return false;
    picture.width = big16(frame, 16);
    picture.height = big16(frame, 18);
    const uint8_t flags = frame[20];
    const bool has_alpha = (frame[25] & 0x0F) != 0;
    picture.components = flags >> 6 == 3 ? (has_alpha ? "4:4:4:4" : "4:4:4") : "4:2:2";
    constexpr Scan kScans[] = {Scan::progressive, Scan::top_first, Scan::bottom_first, Scan::unknown};
    picture.scan = kScans[flags >> 2 & 3];
    const auto code = [&](uint64_t at) { return frame[at] == 0 || frame[at] == 2 ? -1 : frame[at]; };
    picture.colour = {code(22), code(23), code(24), -1};
    return true;
}

// A parameter set in the samples, each unit behind its length, or in a byte stream.
static bool avc_sample(Bytes sample, Picture &picture) {
    const auto is_sequence = [](uint8_t first) { return (first & 0x1F) == 7; };
    if (big32(sample) <= 1) return h264_sequence(nal_unit(sample, is_sequence), picture);
    uint64_t at = 0;
    for (int i = 0; i < 16 && sample.has(at, 5); i++) {
        const uint64_t size = big32(sample, at);
        if (is_sequence(sample[at + 4])) return h264_sequence(sample.sub(at + 4, size), picture);
        at += 4 + size;
    }
    return false;
}

bool stream_picture(Bytes data, Picture &picture) {
    Picture stream;
    const std::string_view codec = picture.codec;
    bool is_known = false;
    if (codec == "H.264" || codec.starts_with("AVC-Intra")) {
        is_known = avc_sample(data, stream);
    } else if (codec == "HEVC") {
        is_known =
            hevc_sequence(nal_unit(data, [](uint8_t first) { return (first >> 1 & 0x3F) == 33; }), stream);
    } else if (codec.starts_with("ProRes 4")) {
        is_known = prores_frame(data, stream);
    } else if (codec == "Motion JPEG") {
        is_known = jpeg_frame(data, stream);
    } else if (codec.starts_with("DNx")) {
        is_known = vc3_frame(data, stream);
        if (is_known) picture.codec = stream.codec;
    } else if (codec != "MPEG-4" && codec != "uncompressed") {
        // A sequence header of MPEG video, which may come later than the first bytes.
        uint64_t at = start_code(data);
        for (int i = 0; i < 1000 && at < data.size() && data[at + 3] != 0xB3; i++)
            at = start_code(data, at + 4);
        is_known = mpeg_sequence(data.from(at), stream);
    }
    if (!is_known) return false;
    take_stream(stream, picture);
    if (!picture.rate.is_set()) picture.rate = stream.rate;
    if (codec == "MPEG-1" || codec == "MPEG-2") picture.codec = stream.codec;
    return true;
}
