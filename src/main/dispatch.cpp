#include "main/dispatch.h"

#include <strings.h>

#include <cstring>

#include "audio/audio.h"
#include "common/file_access.h"
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

constexpr size_t kClockText = 32;

// What a format's entry may need.
struct Head {
    DumpOptions &opts;
    std::FILE *file;
    const char *name;
    int range_flag;
    Bytes b;
};

// Each test returns whether it recognised the file, which has been dumped then.

// Magic numbers that files hold in either byte order.
bool begins_with(Bytes b, uint32_t magic) { return big32(b) == magic || little32(b) == magic; }

bool dump_by_magic_number(const Head &head) {
    const Bytes b = head.b;
    char clock[kClockText];
    if (begins_with(b, 0x000001B3) || begins_with(b, 0x000001BA)) {  // sequence or pack header
        mpegdump(head.opts, head.file, 0, clock);
    } else if (begins_with(b, 0x762F3101)) {
        exrdump(head.opts, head.file);
    } else if (big32(b) == 0x060E2B34) {  // SMPTE universal label
        mxfdump(head.opts, head.file);
    } else if (begins_with(b, 0x41525249)) {  // ARRI
        aridump(head.opts, head.file);
    } else if (begins_with(b, 0x53445058)) {  // SDPX
        dpxdump(head.opts, head.file, b, kDetectionSize, head.name, head.range_flag);
    } else if (begins_with(b, 0x802A5FD7)) {
        cineondump(head.opts, b, kDetectionSize);
    } else {
        return false;
    }
    return true;
}

bool dump_by_leading_text(const Head &head) {
    const Bytes b = head.b;
    if (bytes_are(b, 0, "\x00\x03")) {
        fontdump(head.opts, head.file);
    } else if (bytes_are(b, 0, "BM")) {
        bmpdump(head.opts, b);
    } else if (bytes_are(b, 0, "\x01\xDA")) {
        sgidump(head.opts, b);
    } else if (bytes_are(b, 0, "FORM")) {
        aiffdump(head.opts, b, head.name);
    } else if (bytes_are(b, 0, "RIFF")) {
        riffdump(head.opts, b, head.name, 0);
    } else if (bytes_are(b, 0, "RF64")) {
        riffdump(head.opts, b, head.name, 1);
    } else if (bytes_are(b, 0, "STREAMER")) {
        rawdump(head.opts, head.name);
    } else {
        return false;
    }
    return true;
}

bool dump_executable(const Head &head) {
    const uint64_t pe_header = little32(head.b, 60);
    if (pe_header + 4 > kDetectionSize || !bytes_are(head.b, pe_header, "PE\0\0")) return false;
    exedump(head.b);
    return true;
}

// JP2, RED and GXF files begin with a 32-bit size or leader whose first bytes are zero.
bool dump_after_zeros(const Head &head) {
    const Bytes b = head.b;
    if (b[1] != 0) return false;
    if (bytes_are(b, 2, "\x00\x0Cj")) {
        if (!bytes_are(b, 5, "P  \r\n\x87\n")) return false;
        jp2dump(head.opts, head.file);
        return true;
    }
    if (bytes_are(b, 4, "RED1")) {
        reddumpv1(head.opts, head.file);
        return true;
    }
    if (bytes_are(b, 4, "RED2")) {
        reddumpv2(head.opts, head.file);
        return true;
    }
    if (bytes_are(b, 2, "\x00\x00\x01") && bytes_are(b, 14, "\xE1\xE2")) {
        gxfdump(head.opts, head.file);
        return true;
    }
    return false;
}

bool dump_after_ff(const Head &head) {
    const Bytes b = head.b;
    switch (b[1]) {
        case 0x4F:
            if (!bytes_are(b, 2, "\xFF\x51")) return false;
            jpcdump(head.opts, head.file, 0);
            return true;
        case 0xD8: jpgdump(head.opts, head.file); return true;
        case 0xFE: dumpfile(head.opts, head.file); return true;
        case 0xFF:
            if (bytes_are(b, 2, "\xFF\xF0")) {
                jpcdump(head.opts, head.file, 1);
                return true;
            }
            break;
        default:
            if ((b[1] & 0xF0) != 0xF0) return false;
    }
    std::printf("Fileformat:MP3\n");
    return true;
}

bool name_format(bool recognised, const char *line) {
    if (recognised) std::printf("%s\n", line);
    return recognised;
}

template <typename Dump, typename... Arguments>
bool dump_if(bool recognised, Dump dump, Arguments &&...arguments) {
    if (recognised) dump(arguments...);
    return recognised;
}

bool is_transport_stream(Bytes b) { return b[188] == 0x47 && b[376] == 0x47 && b[564] == 0x47; }

bool dump_by_first_byte(const Head &head) {
    DumpOptions &opts = head.opts;
    std::FILE *file = head.file;
    const Bytes b = head.b;
    char clock[kClockText];
    switch (b[0]) {
        case 'I': return dump_if(b[1] == 'I', tiffdump, opts, file);
        case 'M': return b[1] == 'Z' ? dump_executable(head) : dump_if(b[1] == 'M', tiffdump, opts, file);
        case 0x00: return dump_after_zeros(head);
        case 0xFF: return dump_after_ff(head);
        case '{': return name_format(bytes_are(b, 1, "\\rtf"), "Fileformat:RTF - Rich Text Format");
        case 0xFE: return dump_if(b[1] == 0xFF, dumpfile, opts, file);
        case 0xEF: return dump_if(bytes_are(b, 1, "\xBB\xBF"), dumpfile, opts, file);
        case '%': return name_format(bytes_are(b, 1, "PDF-"), "Fileformat:PDF");
        case 'G':
            return name_format(bytes_are(b, 1, "IF"), "Fileformat:GIF") ||
                   dump_if(is_transport_stream(b), tsdump, opts, file, 0, clock);
        case 0x89: return dump_if(bytes_are(b, 1, "PNG\r\n\x1A\n"), pngdump, opts, file);
        case 0x8A: return dump_if(bytes_are(b, 1, "MNG\r\n\x1A\n"), mngdump, opts, file);
        case 'P': return dump_if(b[1] >= '1' && b[1] <= '6' && b[2] == '\n', ppmdump, opts, file);
        case '<':
            return dump_if(bytes_are(b, 1, "?xml"), [&] {
                xmldump(opts, file);
                dumpfile(opts, file);
            });
        case 'S': return dump_if(bytes_are(b, 1, "\x80\xF6\x34\x40\x40\x00\x00"), softdump, opts, b);
        default: return false;
    }
}

template <size_t N>
bool is_one_of(const char *extension, const char *const (&names)[N]) {
    for (const char *name : names) {
        if (strcasecmp(extension, name) == 0) return true;
    }
    return false;
}

bool dump_by_extension(const Head &head) {
    const char *dot = std::strrchr(head.name, '.');
    const char *extension = dot ? dot : "";
    if (is_one_of(extension, {".mov", ".qt"})) {
        qtdump(head.name);
    } else if (is_one_of(extension, {".tga", ".targa"})) {
        tgadump(head.opts, head.b);
    } else if (is_one_of(extension, {".yuv8", ".yuv", ".qtl", ".qnt"})) {
        yuvdump(head.opts, head.file);
    } else if (is_one_of(extension, {".yuv10"})) {
        yuv10dump(head.opts, head.file);
    } else if (is_one_of(extension, {".yuv16"})) {
        yuv16dump(head.opts, head.file);
    } else if (is_one_of(extension, {".3dl", ".txt", ".scc", ".lut", ".edl", ".vamc"})) {
        dumpfile(head.opts, head.file);
    } else if (bytes_are(head.b, 0, "PK")) {
        std::printf("Fileformat:ZIP\n");
    } else {
        return false;
    }
    return true;
}

}  // namespace

void dispatch(DumpOptions &opts, std::FILE *file, const char *name, int range_flag) {
    uint8_t buffer[kDetectionSize];
    const uint64_t got = read_fully(fileno(file), buffer, sizeof buffer);
    std::memset(buffer + got, 0, sizeof buffer - got);
    const Head head{opts, file, name, range_flag, Bytes(buffer, sizeof buffer)};
    if (dump_by_magic_number(head) || dump_by_leading_text(head) || dump_by_first_byte(head) ||
        dump_by_extension(head)) {
        return;
    }
    std::printf("Unknown fileformat of file '%s' %02x %02x %02x %02x\n", name, head.b[0], head.b[1],
                head.b[2], head.b[3]);
}
