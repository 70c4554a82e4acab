// The table of formats, by which files are recognised. dispatch.cpp takes its dumps, facts.cpp its facts, so
// that what wants one alone is not made of both.
#pragma once

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "audio/audio.h"
#include "common/print.h"
#include "dpx/dpx.h"
#include "exr/exr.h"
#include "gxf/gxf.h"
#include "images/images.h"
#include "jpeg2000/jpeg2000.h"
#include "main/dispatch.h"
#include "main/facts_of.h"
#include "mpeg/mpeg.h"
#include "mpeg/packets.h"
#include "mxf/mxf.h"
#include "quicktime/quicktime.h"
#include "raw/raw.h"
#include "rawstream/rawstream.h"
#include "red/red.h"
#include "tiff/tiff.h"

namespace formats {

using namespace std::string_view_literals;

constexpr size_t kClockText = 32;

// A file to be recognised, and all that a format's entry may need.
struct File {
    DumpOptions &opts;
    Input &input;
    const char *name;
    int range_flag;
    bool by_content;
    Bytes head;  // kDetectionSize bytes
};

// A format is recognised by its file's first bytes, a further condition, or both. Its name is what data about
// a file calls it. One without a dump is unknown to keldump, one without facts has its name alone.
struct Format {
    const char *name;
    std::string_view magic;
    void (*dump)(const File &);
    void (*facts)(Input &, Facts &) = nullptr;
    bool (*condition)(const File &) = nullptr;
};

inline bool begins_with(Bytes head, std::string_view magic) {
    for (size_t i = 0; i < magic.size(); i++) {
        if (head[i] != static_cast<uint8_t>(magic[i])) return false;
    }
    return true;
}

inline bool recognises(const Format &format, const File &in) {
    return begins_with(in.head, format.magic) && (!format.condition || format.condition(in));
}

inline bool is_named(const File &in, std::initializer_list<const char *> extensions) {
    const char *dot = std::strrchr(in.name, '.');
    for (const char *extension : extensions) {
        if (dot && strcasecmp(dot, extension) == 0) return true;
    }
    return false;
}

inline void dump_mpeg(const File &in) {
    char clock[kClockText];
    mpegdump(in.opts, in.input, 0, clock);
}

inline void dump_transport_stream(const File &in) {
    char clock[kClockText];
    tsdump(in.opts, in.input, 0, clock);
}

inline void dump_exr(const File &in) { exrdump(in.opts, in.input); }
inline void dump_arri(const File &in) { aridump(in.opts, in.input); }
inline void dump_dpx(const File &in) {
    dpxdump(in.opts, in.input, in.head, kDetectionSize, in.name, in.range_flag);
}
inline void dump_cineon(const File &in) { cineondump(in.opts, in.head, kDetectionSize); }
inline void dump_tiff(const File &in) { tiffdump(in.opts, in.input); }
inline void dump_text(const File &in) { dumpfile(in.opts, in.input); }
inline void dump_xml(const File &in) {
    xmldump(in.opts, in.input);
    dumpfile(in.opts, in.input);
}

inline bool is_executable(const File &in) { return bytes_are(in.head, little32(in.head, 60), "PE\0\0"); }

inline bool is_transport_stream(const File &in) {
    return in.head[188] == 0x47 && in.head[376] == 0x47 && in.head[564] == 0x47;
}

// The number of a portable map is followed by white space or a remark; keldump knows those with a line feed.
inline bool is_portable_map(const File &in) {
    const uint8_t next = in.head[2];
    const bool divided = next == ' ' || next == '\t' || next == '\r' || next == '#';
    return in.head[1] >= '1' && in.head[1] <= '6' && (next == '\n' || (in.by_content && divided));
}

// By its name, as keldump does, or by the type of its first atom (ISO 14496-12; QuickTime File Format).
inline bool is_movie(const File &in) {
    if (is_named(in, {".mov", ".qt"})) return true;
    if (!in.by_content) return false;
    if (is_named(in, {".mp4", ".m4v", ".m4a", ".3gp"})) return true;
    constexpr std::string_view kFirstAtoms[] = {"ftyp", "moov", "mdat", "wide",
                                                "free", "skip", "pnot", "styp"};
    const uint32_t size = big32(in.head);
    const auto is_first = [&](std::string_view type) { return begins_with(in.head.from(4), type); };
    return (size < 2 || size >= 8) && std::ranges::any_of(kFirstAtoms, is_first);
}

// MXF may begin with up to 64 KiB of something else (SMPTE ST 377-1, run-in).
inline bool has_run_in(const File &in) {
    constexpr std::string_view kPartition = "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02"sv;
    constexpr uint64_t kRunIn = 65536;
    return contains(in.input.present(0, kRunIn + kPartition.size()), kPartition);
}

// Packets of 192 or 204 bytes, and those that do not begin with the file: four at least.
inline bool has_packets(const File &in) {
    const TransportPackets packets = transport_packets(in.head);
    return packets.size != 0 && in.head.has(3 * packets.size, packets.size);
}

// A reader of facts where these are wanted.
template <bool kWithFacts>
consteval auto only(void (*facts)(Input &, Facts &)) {
    return kWithFacts ? facts : nullptr;
}

// The first format that recognises a file dumps it. Those told by their names' extensions come last.
// clang-format off
template <bool kWithFacts>
constexpr Format kFormats[] = {
    // Magic numbers that files hold in either byte order.
    {"MPEG", "\x00\x00\x01\xB3"sv, dump_mpeg, only<kWithFacts>(mpeg_facts)},  // sequence header
    {"MPEG", "\xB3\x01\x00\x00"sv, dump_mpeg, only<kWithFacts>(mpeg_facts)},
    {"MPEG", "\x00\x00\x01\xBA"sv, dump_mpeg, only<kWithFacts>(mpeg_facts)},  // pack header
    {"MPEG", "\xBA\x01\x00\x00"sv, dump_mpeg, only<kWithFacts>(mpeg_facts)},
    {"OpenEXR", "\x76\x2F\x31\x01"sv, dump_exr, only<kWithFacts>(exr_facts)},
    {"OpenEXR", "\x01\x31\x2F\x76"sv, dump_exr, only<kWithFacts>(exr_facts)},
    {"MXF", "\x06\x0E\x2B\x34"sv, [](const File &in) { mxfdump(in.opts, in.input); }, only<kWithFacts>(mxf_facts)},  // SMPTE universal label
    {"ARRI", "ARRI"sv, dump_arri, only<kWithFacts>(arri_facts)},
    {"ARRI", "IRRA"sv, dump_arri, only<kWithFacts>(arri_facts)},
    {"DPX", "SDPX"sv, dump_dpx, only<kWithFacts>(dpx_facts)},
    {"DPX", "XPDS"sv, dump_dpx, only<kWithFacts>(dpx_facts)},
    {"Cineon", "\x80\x2A\x5F\xD7"sv, dump_cineon, only<kWithFacts>(cineon_facts)},
    {"Cineon", "\xD7\x5F\x2A\x80"sv, dump_cineon, only<kWithFacts>(cineon_facts)},

    {"FNT", "\x00\x03"sv, [](const File &in) { fontdump(in.opts, in.input); }},
    {"BMP", "BM"sv, [](const File &in) { bmpdump(in.opts, in.head); }, only<kWithFacts>(bmp_facts)},
    {"SGI", "\x01\xDA"sv, [](const File &in) { sgidump(in.opts, in.head); }, only<kWithFacts>(sgi_facts)},
    {"AIFF", "FORM"sv, [](const File &in) { aiffdump(in.opts, in.head, in.name); }, only<kWithFacts>(aiff_facts)},
    {"RIFF", "RIFF"sv, [](const File &in) { riffdump(in.opts, in.head, in.name, 0); }, only<kWithFacts>(riff_facts)},
    {"RF64", "RF64"sv, [](const File &in) { riffdump(in.opts, in.head, in.name, 1); }, only<kWithFacts>(riff_facts)},
    {"SDI", "STREAMER"sv, [](const File &in) { rawdump(in.opts, in.name); }, only<kWithFacts>(sdi_facts)},

    {"TIFF", "II"sv, dump_tiff, only<kWithFacts>(tiff_facts)},
    {"TIFF", "MM"sv, dump_tiff, only<kWithFacts>(tiff_facts)},
    {"PE", "MZ"sv, [](const File &in) { exedump(in.head); }, nullptr, is_executable},

    // Files that begin with a 32-bit size or a leader whose first bytes are zero.
    {"JP2", "\x00\x00\x00\x0CjP  \r\n\x87\n"sv, [](const File &in) { jp2dump(in.opts, in.input); }, only<kWithFacts>(jp2_facts)},
    {"R3D", "\x00\x00"sv, [](const File &in) { reddumpv1(in.opts, in.input); }, only<kWithFacts>(red_facts),
     [](const File &in) { return bytes_are(in.head, 4, "RED1"); }},
    {"R3D", "\x00\x00"sv, [](const File &in) { reddumpv2(in.opts, in.input); }, only<kWithFacts>(red_facts),
     [](const File &in) { return bytes_are(in.head, 4, "RED2"); }},
    {"GXF", "\x00\x00\x00\x00\x01"sv, [](const File &in) { gxfdump(in.opts, in.input); }, only<kWithFacts>(gxf_facts),
     [](const File &in) { return bytes_are(in.head, 14, "\xE1\xE2"); }},

    {"JPEG 2000", "\xFF\x4F\xFF\x51"sv, [](const File &in) { jpcdump(in.opts, in.input, 0); }, only<kWithFacts>(codestream_facts)},
    {"JPEG 2000", "\xFF\xFF\xFF\xF0"sv, [](const File &in) { jpcdump(in.opts, in.input, 1); }, only<kWithFacts>(codestream_facts)},
    {"JPEG", "\xFF\xD8"sv, [](const File &in) { jpgdump(in.opts, in.input); }, only<kWithFacts>(jpeg_facts)},
    {"text", "\xFF\xFE"sv, dump_text},  // UTF-16, little-endian
    {"MP3", "\xFF"sv, [](const File &) { print("Fileformat:MP3\n"); }, only<kWithFacts>(mpeg_audio_facts),
     [](const File &in) { return (in.head[1] & 0xF0) == 0xF0; }},

    {"RTF", "{\\rtf"sv, [](const File &) { print("Fileformat:RTF - Rich Text Format\n"); }},
    {"text", "\xFE\xFF"sv, dump_text},      // UTF-16, big-endian
    {"text", "\xEF\xBB\xBF"sv, dump_text},  // UTF-8
    {"PDF", "%PDF-"sv, [](const File &) { print("Fileformat:PDF\n"); }},
    {"GIF", "GIF"sv, [](const File &) { print("Fileformat:GIF\n"); }, only<kWithFacts>(gif_facts)},
    {"MPEG-TS", "G"sv, dump_transport_stream, only<kWithFacts>(transport_facts), is_transport_stream},
    {"PNG", "\x89PNG\r\n\x1A\n"sv, [](const File &in) { pngdump(in.opts, in.input); }, only<kWithFacts>(png_facts)},
    {"MNG", "\x8AMNG\r\n\x1A\n"sv, [](const File &in) { mngdump(in.opts, in.input); }},
    {"Netpbm", "P"sv, [](const File &in) { ppmdump(in.opts, in.input); }, only<kWithFacts>(netpbm_facts),
     is_portable_map},
    {"XML", "<?xml"sv, dump_xml},
    {"Softimage", "S\x80\xF6\x34\x40\x40\x00\x00"sv, [](const File &in) { softdump(in.opts, in.head); }, only<kWithFacts>(softimage_facts)},

    {"QuickTime", ""sv, [](const File &in) { qtdump(in.name); }, only<kWithFacts>(movie_facts), is_movie},
    {"TGA", ""sv, [](const File &in) { tgadump(in.opts, in.head); }, only<kWithFacts>(tga_facts),
     [](const File &in) { return is_named(in, {".tga", ".targa"}); }},
    {"YUV", ""sv, [](const File &in) { yuvdump(in.opts, in.input); }, nullptr,
     [](const File &in) { return is_named(in, {".yuv8", ".yuv", ".qtl", ".qnt"}); }},
    {"YUV", ""sv, [](const File &in) { yuv10dump(in.opts, in.input); }, nullptr,
     [](const File &in) { return is_named(in, {".yuv10"}); }},
    {"YUV", ""sv, [](const File &in) { yuv16dump(in.opts, in.input); }, nullptr,
     [](const File &in) { return is_named(in, {".yuv16"}); }},
    {"text", ""sv, dump_text, nullptr,
     [](const File &in) { return is_named(in, {".3dl", ".txt", ".scc", ".lut", ".edl", ".vamc"}); }},
    {"ZIP", "PK"sv, [](const File &) { print("Fileformat:ZIP\n"); }},

    {"BW64", "BW64"sv, nullptr, only<kWithFacts>(riff_facts)},
    {"MP3", "ID3"sv, nullptr, only<kWithFacts>(mpeg_audio_facts)},
    {"MP3", "\xFF"sv, nullptr, only<kWithFacts>(mpeg_audio_facts), [](const File &in) { return in.head[1] >> 5 == 7; }},
    {"Softimage", "S\x80\xF6\x34"sv, nullptr, only<kWithFacts>(softimage_facts)},  // of any version
    {"MPEG-TS", ""sv, nullptr, only<kWithFacts>(transport_facts), has_packets},
    {"MXF", ""sv, nullptr, only<kWithFacts>(mxf_facts), has_run_in},
};
// clang-format on

}  // namespace formats
