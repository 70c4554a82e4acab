// The formats whose dumps are read by a table of fields, and the choice of the reader for a dump.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "companions/table/fields.h"
#include "companions/table/values.h"

namespace {

using enum Column;

// Values that are codes.

struct Code {
    int64_t code;
    const char *name;
};

template <size_t N>
std::string name_of(const Code (&codes)[N], std::string_view value) {
    const int64_t number = number_in(value);
    for (const Code &code : codes) {
        if (code.code == number) return code.name;
    }
    return whole_text(number);
}

constexpr Code kWaveCodecs[] = {{1, "PCM"},    {2, "MS ADPCM"}, {3, "PCM float"},
                                {6, "A-law"},  {7, "mu-law"},   {0x50, "MPEG"},
                                {0x55, "MP3"}, {0xFF, "AAC"},   {0xFFFE, "extensible"}};
constexpr Code kBmpCompressions[] = {{0, "uncompressed"}, {1, "RLE8"}, {2, "RLE4"},
                                     {3, "bit fields"},   {4, "JPEG"}, {5, "PNG"}};
constexpr Code kMpegRates[] = {{1, "23.976"}, {2, "24"}, {3, "25"},    {4, "29.97"},
                               {5, "30"},     {6, "50"}, {7, "59.94"}, {8, "60"}};

std::string wave_codec(std::string_view value) { return name_of(kWaveCodecs, value); }
std::string bmp_compression(std::string_view value) { return name_of(kBmpCompressions, value); }
std::string mpeg_rate(std::string_view value) {
    const std::string rate = name_of(kMpegRates, value);
    return rate == "0" || number_in(value) > 8 ? "" : rate;
}
std::string bytes_as_bits(std::string_view value) { return positive_text(number_in(value) * 8); }
std::string thousandths(std::string_view value) {
    return rate_text(static_cast<double>(number_in(value)) / 1000);
}
std::string leading_number(std::string_view value) { return whole_text(number_in(value)); }
std::string is_seen(std::string_view) { return "1"; }

// "00:01:02.345" in seconds.
std::string clock_seconds(std::string_view value) {
    int parts[4] = {};
    const std::string copy(value.substr(0, 32));
    if (std::sscanf(copy.c_str(), "%d:%d:%d.%d", &parts[0], &parts[1], &parts[2], &parts[3]) != 4) return "";
    return seconds_text(parts[0] * 3600.0 + parts[1] * 60.0 + parts[2] + parts[3] / 1000.0);
}

// DPX: the run-length coding is told beside the pixel's elements.
std::string dpx_run_length(std::string_view value) { return number_in(value) == 1 ? "1" : ""; }

void compute_dpx(Row &row) {
    if (!row[first].empty() && !row[codec].empty()) row[codec] += " RLE";
}

constexpr DumpField kDpx[] = {
    {"image", "pixelsperline", width, as_count},
    {"image", "linesperimage", height, as_count},
    {"imagechannel-0", "bitdepth", bit_depth, as_count},
    {"imagechannel-0", "descriptor", codec, as_name},
    {"imagechannel-0", "encoding", first, dpx_run_length},
    {"film", "keycode", keycode, as_quoted},
    {"film", "framerate", frame_rate, as_rate},
    {"television", "framerate", frame_rate, as_rate},
    {"television", "timecode", bcd, as_bcd},
    {"television", "reelname", reel, as_quoted},
};

// A 32-bit word that the dump shows as a signed number.
int64_t word_in(std::string_view value) {
    const int64_t number = value.starts_with('-') ? -number_in(value.substr(1)) : number_in(value);
    return static_cast<uint32_t>(number);
}

// Cineon files are big-endian (magic d75f2a80 where the dump reads the numbers little-endian): they are
// turned.
uint32_t turned(int64_t number) {
    const uint32_t word = static_cast<uint32_t>(number);
    return word >> 24 | (word >> 8 & 0xFF00) | (word << 8 & 0xFF0000) | word << 24;
}

// A turned rate is a number that the dump has cut to six digits: the usual rates are found again by theirs.
std::string turned_rate(const std::string &text) {
    for (const double rate : {24.0, 25.0, 30.0, 48.0, 50.0, 60.0, 23.976, 29.97, 59.94, 24000 / 1001.0,
                              30000 / 1001.0, 60000 / 1001.0}) {
        const float number = static_cast<float>(rate);
        uint32_t bits;
        std::memcpy(&bits, &number, sizeof bits);
        bits = turned(bits);
        float other;
        std::memcpy(&other, &bits, sizeof other);
        char shown[32];
        std::snprintf(shown, sizeof shown, "%g", static_cast<double>(other));
        if (text == shown) return rate_text(rate);
    }
    return "";
}

void compute_cineon(Row &row) {
    const bool big_endian = row[second] == "d75f2a80";
    for (const Column column : {width, height}) {
        const int64_t number = number_in(row[column]);
        if (big_endian && number >= 0) row[column] = positive_text(turned(number));
    }
    row[frame_rate] = big_endian ? turned_rate(row[first]) : as_rate(row[first]);
    const int64_t prefix = word_in(row[fifth]);
    const int64_t count = word_in(row[sixth]);
    row[keycode] =
        keycode_text(number_in(row[third]), number_in(row[fourth]), big_endian ? turned(prefix) : prefix,
                     big_endian ? turned(count) : count, number_in(row[seventh]));
}

constexpr DumpField kCineon[] = {
    {"file", "magic", second, as_text},
    {"image", "pixelsperline", width, leading_number},
    {"image", "linesperimage", height, leading_number},
    {"image", "bitsperpixel", bit_depth, as_count},
    {"film", "framerate", first, as_text},
    {"film", "filmmfgid", third, as_text},
    {"film", "filmtype", fourth, as_text},
    {"film", "prefix", fifth, as_text},
    {"film", "count", sixth, as_text},
    {"film", "offset", seventh, as_text},
};

constexpr DumpField kWave[] = {
    {"", "Magic:", format, as_text},         {"FMT", "Format", codec, wave_codec},
    {"FMT", "Channels", channels, as_count}, {"FMT", "Frequency", sample_rate, as_rate},
    {"FMT", "Bits", bit_depth, as_count},    {"Broadcast Wave", "timerreference", timecode, as_timecode},
    {"DATA", "Samples", samples, as_count},  {"DATA", "Length", first, clock_seconds},
};
constexpr DumpField kRf64[] = {
    {"FMT", "Format", codec, wave_codec},
    {"FMT", "Channels", channels, as_count},
    {"FMT", "Frequency", sample_rate, as_rate},
    {"FMT", "Bits", bit_depth, as_count},
    {"Broadcast Wave", "timerreference", timecode, as_timecode},
    {"DATA", "Length", first, clock_seconds},
};

// The length counts milliseconds, the samples are exact but no more than 31 bits of them are shown.
void compute_wave(Row &row) {
    const double length = ratio_in(row[first]);
    const double rate = ratio_in(row[sample_rate]);
    const double exact = rate > 0 ? ratio_in(row[samples]) / rate : 0;
    row[duration] = seconds_text(std::fabs(exact - length) < 0.0015 ? exact : length);
    row[samples].clear();
}

constexpr DumpField kAiff[] = {
    {"", "Magic:", format, as_text},
    {"COMM", "Channels", channels, as_count},
    {"COMM", "Bits", bit_depth, as_count},
};

std::string gxf_video(std::string_view value) {
    const std::string name = as_name(value);
    return name.starts_with("Audio") || name.starts_with("Timecode") || name == "?" ? "" : name;
}

constexpr DumpField kGxf[] = {
    {"map", "mediatype", codec, gxf_video},
    {"map", "Tag 0x41   4 firstfield", first, leading_number},
    {"map", "Tag 0x42   4 lastfield", second, leading_number},
    {"map", "Tag 0x50   4 framerate", frame_rate,
     [](std::string_view value) { return as_rate(as_name(value)); }},
    {"map", "Tag 0x52   4 fields", third, as_count},
    {"UMF Packet", "tcmarkin", bcd, as_bcd},
    {"UMF Packet", "audiotracks", channels, as_count},
};

void compute_gxf(Row &row) {
    const int64_t fields = number_in(row[second]) - number_in(row[first]);
    const double field_rate = ratio_in(row[frame_rate]) * ratio_in(row[third]);
    if (!row[first].empty() && !row[second].empty() && field_rate > 0)
        row[duration] = seconds_text(static_cast<double>(fields) / field_rate);
}

// A group of pictures: 25 bits with drop frame, hours, minutes, a marker, seconds and pictures.
std::string mpeg_timecode(std::string_view value) {
    const int64_t bits = number_in(value, 16);
    if (bits < 0) return "";
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d%c%02d", static_cast<int>(bits >> 19 & 31),
                  static_cast<int>(bits >> 13 & 63), static_cast<int>(bits >> 6 & 63),
                  bits >> 24 & 1 ? ';' : ':', static_cast<int>(bits & 63));
    return text;
}

constexpr DumpField kMpeg[] = {
    {"stream 000001ba", "", format, [](std::string_view) { return std::string("MPEG-PS"); }},
    {"stream 000001b3", "xsize", width, as_count},
    {"stream 000001b3", "ysize", height, as_count},
    {"stream 000001b3", "framerate", frame_rate, mpeg_rate},
    {"stream 000001b5", "identifier:      1 ", fourth, is_seen},
    {"stream 000001b5", "horizontalext", first, leading_number},
    {"stream 000001b5", "verticalalext", second, leading_number},
    {"stream 000001b8", "timecode", timecode, mpeg_timecode},
};

// The extension's bits come on top of the sequence header's twelve.
void extend(Row &row, Column size, Column extension) {
    const int64_t high = number_in(row[extension]);
    const int64_t low = number_in(row[size]);
    if (high > 0 && low >= 0) row[size] = whole_text(high * 4096 + low);
}

void compute_mpeg(Row &row) {
    if (row[width].empty()) return;
    extend(row, width, first);
    extend(row, height, second);
    row[codec] = row[fourth].empty() ? "MPEG-1 video" : "MPEG-2 video";
}

constexpr DumpField kRed[] = {
    {"", "xsize", width, as_count},
    {"", "ysize", height, as_count},
    {"", "fps", frame_rate, as_rate},
    {"", "timecode_absolute", timecode, as_timecode},
    {"", "timecode_edge", first, as_timecode},
    {"REOF", "Videoframes", frames, as_count},
    {"REO", "videoframes", frames, as_count},
};

void compute_red(Row &row) { row.offer(timecode, row[first]); }

std::string jpeg_process(std::string_view section) {
    static constexpr const char *kProcesses[] = {"baseline",
                                                 "extended",
                                                 "progressive",
                                                 "lossless",
                                                 nullptr,
                                                 "differential",
                                                 "differential progressive",
                                                 "differential lossless",
                                                 nullptr,
                                                 "arithmetic",
                                                 "arithmetic progressive",
                                                 "arithmetic lossless"};
    const int64_t number = number_in(section.substr(3));
    const bool known =
        number >= 0 && number < static_cast<int64_t>(std::size(kProcesses)) && kProcesses[number];
    return known ? kProcesses[number] : as_text(section.substr(0, section.find('/')));
}

constexpr DumpField kJpeg[] = {
    {"SOF", "", codec, jpeg_process},
    {"SOF", "xsize", width, as_count},
    {"SOF", "ysize", height, as_count},
    {"SOF", "precision", bit_depth, as_count},
};

std::string wavelet(std::string_view value) {
    const std::string name = as_text(value);
    return name == "(5/3)" ? "JPEG 2000 5/3" : name == "(9/7)" ? "JPEG 2000 9/7" : "";
}

constexpr DumpField kJpeg2000[] = {
    {"SIZ/", "Xsize", width, as_count},         {"SIZ/", "Ysize", height, as_count},
    {"SIZ/", "XOsize", first, as_count},        {"SIZ/", "YOsize", second, as_count},
    {"SIZ/", "Ssize[00]", bit_depth, as_count}, {"COD/", "DWT transform", codec, wavelet},
};

// The image ends at Xsize of the reference grid and starts at XOsize.
void compute_jpeg2000(Row &row) {
    if (!row[first].empty()) row[width] = positive_text(number_in(row[width]) - number_in(row[first]));
    if (!row[second].empty()) row[height] = positive_text(number_in(row[height]) - number_in(row[second]));
    row.offer(codec, "JPEG 2000");
}

constexpr DumpField kBmp[] = {
    {"", "width", width, as_count},
    {"", "height", height, as_count},
    {"", "bitcount", bit_depth, as_count},
    {"", "compression", codec, bmp_compression},
};
constexpr DumpField kTga[] = {
    {"", "xsize", width, as_count},
    {"", "ysize", height, as_count},
    {"", "depth", bit_depth, as_count},
    {"", "type", codec, as_name},
};
constexpr DumpField kSgi[] = {
    {"", "xsize", width, as_count},
    {"", "ysize", height, as_count},
    {"", "bpc", bit_depth, bytes_as_bits},
    {"", "storage", codec, as_name},
};
constexpr DumpField kSoftimage[] = {
    {"", "xsize", width, as_count},
    {"", "ysize", height, as_count},
    {"", "ch0 nbits", bit_depth, as_count},
    {"", "ch0 type", codec, as_name},
};
constexpr DumpField kPng[] = {
    {"IHDR", "xsize", width, as_count},
    {"IHDR", "ysize", height, as_count},
    {"IHDR", "bitdepth", bit_depth, as_count},
};
constexpr DumpField kSizes[] = {
    {"", "xsize", width, as_count},
    {"", "ysize", height, as_count},
    {"", "nbits", bit_depth, as_count},
};
constexpr DumpField kArri[] = {
    {"", "Width", width, as_count},
    {"", "Height", height, as_count},
    {"", "ProjectFps", frame_rate, thousandths},
    {"Master_TC:", "TimeCode", bcd, as_bcd},
};

// The first line of a dump, and the table for it.
struct Known {
    const char *first_line;
    FieldFormat format;
};

constexpr Known kKnown[] = {
    {"Fileformat:RIFF", {"RIFF", kWave, nullptr, compute_wave}},
    {"Fileformat:RF64", {"RF64", kRf64, nullptr, compute_wave}},
    {"Fileformat:AIFF", {"AIFF", kAiff}},
    {"Fileformat:GXF", {"GXF", kGxf, "media ", compute_gxf}},
    {"Fileformat:MPEG", {"MPEG", kMpeg, nullptr, compute_mpeg}},
    {"Fileformat:R3D/V2", {"R3D v2", kRed, nullptr, compute_red}},
    {"Fileformat:R3D", {"R3D", kRed, nullptr, compute_red}},
    {"Fileformat:JPEG", {"JPEG", kJpeg}},
    {"Fileformat:JP2", {"JP2", kJpeg2000, "SOT/", compute_jpeg2000}},
    {"Fileformat: unwrapped JPEG2000", {"J2K", kJpeg2000, "SOT/", compute_jpeg2000}},
    {"Fileformat:BMP", {"BMP", kBmp}},
    {"Fileformat:TGA", {"TGA", kTga}},
    {"Fileformat:SGI", {"SGI", kSgi}},
    {"Fileformat:Softimage", {"Softimage", kSoftimage}},
    {"Fileformat:PNG", {"PNG", kPng, "IEND"}},
    {"Fileformat:PBM", {"PBM", kSizes}},
    {"Fileformat:PGM", {"PGM", kSizes}},
    {"Fileformat:PPM", {"PPM", kSizes}},
    {"Fileformat:YUV", {"YUV", kSizes}},
    {"Fileformat:ARRIRAW", {"ARRIRAW", kArri}},
};
constexpr FieldFormat kDpxFormat = {"DPX", kDpx, "extendedheader", compute_dpx};
constexpr FieldFormat kCineonFormat = {"Cineon", kCineon, nullptr, compute_cineon};

struct Special {
    const char *first_line;
    std::unique_ptr<DumpReader> (*make)();
};
constexpr Special kSpecial[] = {
    {"Fileformat: QT", movie_reader},     {"Fileformat:EXR", exr_reader},
    {"Fileformat:TIFF", tiff_reader},     {"Fileformat:TransportStream", transport_reader},
    {"Format: SDI Streamer", sdi_reader},
};

// Formats that are named only, and text.
class NameReader : public DumpReader {
 public:
    explicit NameReader(std::string name) : name_(std::move(name)) { done_ = true; }
    void line(std::string_view) override {}
    void finish(Row &row) override { row.offer(format, name_); }

 private:
    std::string name_;
};

std::string plain_name(std::string_view first) {
    for (const std::string_view label : {"Fileformat: UTF", "Fileformat:"}) {
        if (first.starts_with(label)) return label.ends_with("UTF") ? "text" : as_text(first.substr(11));
    }
    if (first.starts_with("Error: Scanning for formattag")) return "RIFF";
    return first.starts_with("00 Magic") ? "font" : first.empty() ? "" : "text";
}

// A text file may hold the beginning of a dump itself: its own shows blanks as dots.
bool is_text_dump(std::string_view first, std::string_view second) {
    return first != "Fileformat:XML" && !second.empty() && second.find(' ') == std::string_view::npos;
}

std::unique_ptr<DumpReader> make_reader(std::string_view first, std::string_view second) {
    if (is_text_dump(first, second)) return std::make_unique<NameReader>("text");
    if (first == "file" && second.starts_with(" magic")) {
        const bool cineon = second.ends_with("d75f2a80") || second.ends_with("802a5fd7");
        return field_reader(cineon ? kCineonFormat : kDpxFormat);
    }
    for (const Known &known : kKnown) {
        if (first.starts_with(known.first_line)) return field_reader(known.format);
    }
    for (const Special &special : kSpecial) {
        if (first.starts_with(special.first_line)) return special.make();
    }
    for (const std::string_view line : {first, second}) {
        if (without_position(line).starts_with("06.0e.2b.34") ||
            line.starts_with("Could not load the last part"))
            return mxf_reader();
    }
    return std::make_unique<NameReader>(plain_name(first));
}

}  // namespace

std::unique_ptr<DumpReader> reader_for(std::string_view first, std::string_view second) {
    std::unique_ptr<DumpReader> reader = make_reader(first, second);
    reader->line(first);
    reader->line(second);
    return reader;
}
