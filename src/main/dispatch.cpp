#include "main/dispatch.h"

#include <strings.h>

#include <cstring>
#include <initializer_list>
#include <string_view>

#include "audio/audio.h"
#include "common/print.h"
#include "common/stream.h"
#include "dpx/dpx.h"
#include "exr/exr.h"
#include "gxf/gxf.h"
#include "images/images.h"
#include "jpeg2000/jpeg2000.h"
#include "mpeg/mpeg.h"
#include "mxf/mxf.h"
#include "quicktime/quicktime.h"
#include "raw/raw.h"
#include "rawstream/rawstream.h"
#include "red/red.h"
#include "tiff/tiff.h"

namespace {

using namespace std::string_view_literals;

constexpr size_t kClockText = 32;

// A file to be recognised, and all that a format's entry may need.
struct File {
    DumpOptions &opts;
    Input &input;
    const char *name;
    int range_flag;
    Bytes head;  // kDetectionSize bytes
};

// A format is recognised by its file's first bytes, a further condition, or both. Its name is what data about
// a file calls it.
struct Format {
    const char *name;
    std::string_view magic;
    void (*dump)(const File &);
    bool (*condition)(const File &) = nullptr;
};

bool begins_with(Bytes head, std::string_view magic) {
    for (size_t i = 0; i < magic.size(); i++) {
        if (head[i] != static_cast<uint8_t>(magic[i])) return false;
    }
    return true;
}

bool recognises(const Format &format, const File &in) {
    return begins_with(in.head, format.magic) && (!format.condition || format.condition(in));
}

bool is_named(const File &in, std::initializer_list<const char *> extensions) {
    const char *dot = std::strrchr(in.name, '.');
    for (const char *extension : extensions) {
        if (dot && strcasecmp(dot, extension) == 0) return true;
    }
    return false;
}

void dump_mpeg(const File &in) {
    char clock[kClockText];
    mpegdump(in.opts, in.input, 0, clock);
}

void dump_transport_stream(const File &in) {
    char clock[kClockText];
    tsdump(in.opts, in.input, 0, clock);
}

void dump_exr(const File &in) { exrdump(in.opts, in.input); }
void dump_arri(const File &in) { aridump(in.opts, in.input); }
void dump_dpx(const File &in) { dpxdump(in.opts, in.input, in.head, kDetectionSize, in.name, in.range_flag); }
void dump_cineon(const File &in) { cineondump(in.opts, in.head, kDetectionSize); }
void dump_tiff(const File &in) { tiffdump(in.opts, in.input); }
void dump_text(const File &in) { dumpfile(in.opts, in.input); }
void dump_xml(const File &in) {
    xmldump(in.opts, in.input);
    dumpfile(in.opts, in.input);
}

bool is_executable(const File &in) {
    const uint64_t pe_header = little32(in.head, 60);
    return pe_header + 4 <= kDetectionSize && bytes_are(in.head, pe_header, "PE\0\0");
}

bool is_transport_stream(const File &in) {
    return in.head[188] == 0x47 && in.head[376] == 0x47 && in.head[564] == 0x47;
}

bool is_portable_map(const File &in) { return in.head[1] >= '1' && in.head[1] <= '6' && in.head[2] == '\n'; }

// The first format that recognises a file dumps it. Those told by their names' extensions come last.
// clang-format off
constexpr Format kFormats[] = {
    // Magic numbers that files hold in either byte order.
    {"MPEG", "\x00\x00\x01\xB3"sv, dump_mpeg},  // sequence header
    {"MPEG", "\xB3\x01\x00\x00"sv, dump_mpeg},
    {"MPEG", "\x00\x00\x01\xBA"sv, dump_mpeg},  // pack header
    {"MPEG", "\xBA\x01\x00\x00"sv, dump_mpeg},
    {"OpenEXR", "\x76\x2F\x31\x01"sv, dump_exr},
    {"OpenEXR", "\x01\x31\x2F\x76"sv, dump_exr},
    {"MXF", "\x06\x0E\x2B\x34"sv, [](const File &in) { mxfdump(in.opts, in.input); }},  // SMPTE universal label
    {"ARRI", "ARRI"sv, dump_arri},
    {"ARRI", "IRRA"sv, dump_arri},
    {"DPX", "SDPX"sv, dump_dpx},
    {"DPX", "XPDS"sv, dump_dpx},
    {"Cineon", "\x80\x2A\x5F\xD7"sv, dump_cineon},
    {"Cineon", "\xD7\x5F\x2A\x80"sv, dump_cineon},

    {"FNT", "\x00\x03"sv, [](const File &in) { fontdump(in.opts, in.input); }},
    {"BMP", "BM"sv, [](const File &in) { bmpdump(in.opts, in.head); }},
    {"SGI", "\x01\xDA"sv, [](const File &in) { sgidump(in.opts, in.head); }},
    {"AIFF", "FORM"sv, [](const File &in) { aiffdump(in.opts, in.head, in.name); }},
    {"RIFF", "RIFF"sv, [](const File &in) { riffdump(in.opts, in.head, in.name, 0); }},
    {"RF64", "RF64"sv, [](const File &in) { riffdump(in.opts, in.head, in.name, 1); }},
    {"SDI", "STREAMER"sv, [](const File &in) { rawdump(in.opts, in.name); }},

    {"TIFF", "II"sv, dump_tiff},
    {"TIFF", "MM"sv, dump_tiff},
    {"PE", "MZ"sv, [](const File &in) { exedump(in.head); }, is_executable},

    // Files that begin with a 32-bit size or a leader whose first bytes are zero.
    {"JP2", "\x00\x00\x00\x0CjP  \r\n\x87\n"sv, [](const File &in) { jp2dump(in.opts, in.input); }},
    {"R3D", "\x00\x00"sv, [](const File &in) { reddumpv1(in.opts, in.input); },
     [](const File &in) { return bytes_are(in.head, 4, "RED1"); }},
    {"R3D", "\x00\x00"sv, [](const File &in) { reddumpv2(in.opts, in.input); },
     [](const File &in) { return bytes_are(in.head, 4, "RED2"); }},
    {"GXF", "\x00\x00\x00\x00\x01"sv, [](const File &in) { gxfdump(in.opts, in.input); },
     [](const File &in) { return bytes_are(in.head, 14, "\xE1\xE2"); }},

    {"JPEG 2000", "\xFF\x4F\xFF\x51"sv, [](const File &in) { jpcdump(in.opts, in.input, 0); }},
    {"JPEG 2000", "\xFF\xFF\xFF\xF0"sv, [](const File &in) { jpcdump(in.opts, in.input, 1); }},
    {"JPEG", "\xFF\xD8"sv, [](const File &in) { jpgdump(in.opts, in.input); }},
    {"text", "\xFF\xFE"sv, dump_text},  // UTF-16, little-endian
    {"MP3", "\xFF"sv, [](const File &) { print("Fileformat:MP3\n"); },
     [](const File &in) { return (in.head[1] & 0xF0) == 0xF0; }},

    {"RTF", "{\\rtf"sv, [](const File &) { print("Fileformat:RTF - Rich Text Format\n"); }},
    {"text", "\xFE\xFF"sv, dump_text},      // UTF-16, big-endian
    {"text", "\xEF\xBB\xBF"sv, dump_text},  // UTF-8
    {"PDF", "%PDF-"sv, [](const File &) { print("Fileformat:PDF\n"); }},
    {"GIF", "GIF"sv, [](const File &) { print("Fileformat:GIF\n"); }},
    {"MPEG-TS", "G"sv, dump_transport_stream, is_transport_stream},
    {"PNG", "\x89PNG\r\n\x1A\n"sv, [](const File &in) { pngdump(in.opts, in.input); }},
    {"MNG", "\x8AMNG\r\n\x1A\n"sv, [](const File &in) { mngdump(in.opts, in.input); }},
    {"Netpbm", "P"sv, [](const File &in) { ppmdump(in.opts, in.input); }, is_portable_map},
    {"XML", "<?xml"sv, dump_xml},
    {"Softimage", "S\x80\xF6\x34\x40\x40\x00\x00"sv, [](const File &in) { softdump(in.opts, in.head); }},

    {"QuickTime", ""sv, [](const File &in) { qtdump(in.name); },
     [](const File &in) { return is_named(in, {".mov", ".qt"}); }},
    {"TGA", ""sv, [](const File &in) { tgadump(in.opts, in.head); },
     [](const File &in) { return is_named(in, {".tga", ".targa"}); }},
    {"YUV", ""sv, [](const File &in) { yuvdump(in.opts, in.input); },
     [](const File &in) { return is_named(in, {".yuv8", ".yuv", ".qtl", ".qnt"}); }},
    {"YUV", ""sv, [](const File &in) { yuv10dump(in.opts, in.input); },
     [](const File &in) { return is_named(in, {".yuv10"}); }},
    {"YUV", ""sv, [](const File &in) { yuv16dump(in.opts, in.input); },
     [](const File &in) { return is_named(in, {".yuv16"}); }},
    {"text", ""sv, dump_text,
     [](const File &in) { return is_named(in, {".3dl", ".txt", ".scc", ".lut", ".edl", ".vamc"}); }},
    {"ZIP", "PK"sv, [](const File &) { print("Fileformat:ZIP\n"); }},
};
// clang-format on

}  // namespace

bool dispatch(DumpOptions &opts, Input &input, const char *name, int range_flag) {
    const File in{opts, input, name, range_flag, input.bytes(0, kDetectionSize)};
    for (const Format &format : kFormats) {
        forget();
        if (!recognises(format, in)) continue;
        if (listening) stream::keep_reads();  // the magic number is the first line's
        stream::tell_format(format.name);
        format.dump(in);
        return true;
    }
    print("Unknown fileformat of file '%s' %02x %02x %02x %02x\n", name, in.head[0], in.head[1], in.head[2],
          in.head[3]);
    return false;
}
