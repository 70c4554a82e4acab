#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "common/codecs.h"
#include "common/elementary.h"
#include "common/names.h"
#include "common/values.h"
#include "quicktime/facts_movie.h"

namespace {

// The elementary stream descriptor of MPEG-4 (ISO 14496-1, 7.2.6).
struct StreamDescriptor {
    uint8_t object = 0;  // its type indication
    int64_t bit_rate = 0;
    Bytes specific;
};

struct Descriptor {
    uint8_t tag = 0;
    Bytes data;
    uint64_t end = 0;
};

Descriptor descriptor_at(Bytes holder, uint64_t at) {
    const uint8_t tag = holder[at++];
    uint64_t size = 0;
    for (int i = 0; i < 4; i++) {
        const uint8_t byte = holder[at++];
        size = size << 7 | (byte & 0x7F);
        if ((byte & 0x80) == 0) break;
    }
    return {tag, holder.sub(at, size), at + size};
}

StreamDescriptor stream_descriptor(Bytes esds) {
    StreamDescriptor found;
    Descriptor outer = descriptor_at(esds, 4);
    uint64_t at = 0;
    if (outer.tag == 3) {
        const uint8_t flags = outer.data[2];
        at = 3;
        if ((flags & 0x80) != 0) at += 2;
        if ((flags & 0x40) != 0) at += 1 + uint64_t{outer.data[at]};
        if ((flags & 0x20) != 0) at += 2;
        outer = descriptor_at(outer.data, at);
    }
    if (outer.tag != 4) return found;
    found.object = outer.data[0];
    found.bit_rate = big32(outer.data, 9);
    const Descriptor specific = descriptor_at(outer.data, 13);
    if (specific.tag == 5) found.specific = specific.data;
    return found;
}

void read_vpx(Bytes record, Picture &picture) {
    if (record.size() < 10) return;
    constexpr const char *kChroma[] = {"4:2:0", "4:2:0", "4:2:2", "4:4:4", "", "", "", ""};
    picture.bits = record[6] >> 4;
    picture.components = kChroma[record[6] >> 1 & 7];
    picture.colour = {colour_code(record[7]), colour_code(record[8]), colour_code(record[9]), record[6] & 1};
    if (picture.colour.matrix == 0) picture.components = "RGB";
}

// The first sample, as far as its headers reach: of many tracks those of the first ones.
Bytes first_sample(Input &input, const Track &track) {
    constexpr uint64_t kMostSampleReads = 40;
    const SampleTable table(track.table);
    if (input.reads() > kMostSampleReads) return {};
    if (table.chunk_count == 0 || table.samples == 0 || track.is_external) return {};
    return input.present(table.chunk(0), std::min<uint64_t>(table.size_of(0), 2048));
}

// What the decoder is told, which for MPEG video is the head of its stream.
Bytes read_mpeg4(Bytes esds, Picture &picture, CodecKind &kind) {
    const StreamDescriptor stream = stream_descriptor(esds);
    if (stream.bit_rate > 0) picture.bit_rate = stream.bit_rate;
    constexpr CodeName kObjects[] = {{0x21, "H.264"},  {0x60, "MPEG-2"},   {0x61, "MPEG-2"},
                                     {0x62, "MPEG-2"}, {0x63, "MPEG-2"},   {0x64, "MPEG-2"},
                                     {0x65, "MPEG-2"}, {0x6A, "MPEG-1"},   {0x6C, "Motion JPEG"},
                                     {0x6D, "PNG"},    {0x6E, "JPEG 2000"}};
    picture.codec = name_of(kObjects, stream.object, picture.codec.c_str());
    if (picture.codec != "MPEG-4") picture.components.clear();
    if (stream.object >= 0x60 && picture.codec.starts_with("MPEG-")) kind = CodecKind::mpeg2;
    return stream.specific;
}

// Scan by the number of fields and their detail (QuickTime File Format, 'fiel'): 1 and 6 are stored field by
// field; 9 and 14 are interleaved, the first line in the earlier or the later one.
// The format's text has 9 and 14 the other way around; files (14 for 525 lines) follow technical note TN2162.
Scan scan_of(uint8_t fields, uint8_t detail) {
    if (fields == 1) return Scan::progressive;
    if (fields != 2) return Scan::unknown;
    if (detail == 1 || detail == 9) return Scan::top_first;
    return detail == 6 || detail == 14 ? Scan::bottom_first : Scan::interlaced;
}

void read_colours(Bytes colr, Picture &picture) {
    const bool is_nclx = bytes_are(colr, 0, "nclx");
    if (!is_nclx && !bytes_are(colr, 0, "nclc")) return;
    picture.colour = {colour_code(big16(colr, 4)), colour_code(big16(colr, 6)), colour_code(big16(colr, 8)),
                      picture.colour.full_range};
    if (is_nclx) picture.colour.full_range = colr[10] >> 7;
}

// Which part of the picture is to be shown; the track's size is what says whether it counts.
void read_clean_aperture(Bytes clap, const Track &track, Picture &picture, Facts &facts) {
    const uint64_t d[2] = {big32(clap, 4), big32(clap, 12)};
    if (d[0] == 0 || d[1] == 0) return;
    const uint64_t width = big32(clap, 0) / d[0];
    const uint64_t height = big32(clap, 8) / d[1];
    if (width == picture.width && height == picture.height) return;
    if (width == 0 || height == 0 || width > picture.width || height > picture.height) return;
    facts.add_more("clean aperture", size_text(width, height));
    if (track.width != width || track.height != height) return;
    if (picture.coded_width == 0) {
        picture.coded_width = picture.width;
        picture.coded_height = picture.height;
    }
    picture.width = track.width;
    picture.height = track.height;
}

// RGB by the depth of the sample entry; up to 8 it is a palette's, from 33 on it is grey.
void set_by_depth(uint32_t depth, Picture &picture) {
    struct Depth {
        uint32_t depth;
        uint32_t bits;
        const char *components;
    };
    constexpr Depth kDepths[] = {
        {16, 5, "RGB"}, {24, 8, "RGB"}, {32, 8, "RGBA"}, {48, 16, "RGB"}, {64, 16, "RGBA"}};
    const Depth *known = row_of(kDepths, depth, &Depth::depth);
    const bool is_grey = depth > 32 && depth <= 40;
    picture.bits = known ? known->bits : is_grey ? depth - 32 : depth <= 8 ? depth : 0;
    if (known) picture.components = known->components;
    if (is_grey) picture.components = "Y";
    if (depth > 0 && depth <= 8) picture.components = "palette";
}

// Where the boxes of a picture's entry begin: behind the palette that one of up to 8 bits may have.
Bytes picture_boxes(Bytes entry) {
    const bool has_palette = (big16(entry, 74) & 31) <= 8 && big16(entry, 76) == 0;
    return entry.from(has_palette ? 78 + 8 + 8 * (uint64_t{big16(entry, 84)} + 1) : 78);
}

uint32_t protected_type(Bytes boxes, uint32_t type) {
    const bool is_protected = type == fourcc("encv") || type == fourcc("enca") || type == fourcc("drmi") ||
                              type == fourcc("drms") || type == fourcc("p608");
    const Bytes original = is_protected ? find_box(boxes, "sinf/frma") : Bytes{};
    return original.empty() ? type : big32(original);
}

}  // namespace

void read_picture_entry(Input &input, Track &track, Picture &picture, Facts &facts) {
    const Bytes entry = track.description;
    const Bytes boxes = picture_boxes(entry);
    track.codec = protected_type(boxes, track.codec);
    const PictureCodec codec = picture_codec(track.codec);
    CodecKind kind = codec.kind;
    picture.codec = codec.codec[0] != 0 ? codec.codec : type_text(track.codec);
    picture.components = codec.components;
    picture.bits = codec.bits;
    picture.width = big16(entry, 24);
    picture.height = big16(entry, 26);
    const uint32_t depth = big16(entry, 74);
    if (track.codec == fourcc("raw ") || track.codec == fourcc("rle ") || track.codec == fourcc("png "))
        set_by_depth(depth, picture);
    if (kind == CodecKind::prores && depth == 32 && codec.bits == 12) picture.components = "4:4:4:4";

    Bytes setup;
    each_box(boxes, [&](const Box &box) {
        constexpr uint32_t kSetups[] = {fourcc("avcC"), fourcc("hvcC"), fourcc("glbl"), fourcc("dvc1"),
                                        fourcc("av1C")};
        if (std::ranges::find(kSetups, box.type) != std::end(kSetups)) setup = box.data;
        if (box.type == fourcc("vpcC")) read_vpx(box.data, picture);
        if (box.type == fourcc("esds")) setup = read_mpeg4(box.data, picture, kind);
        if (box.type == fourcc("btrt") && big32(box.data, 8) > 0) picture.bit_rate = big32(box.data, 8);
    });
    stream_picture(first_sample(input, track), picture, setup);
    each_box(boxes, [&](const Box &box) {
        const Bytes data = box.data;
        // HEVC that is coded in fields says so, whatever its container was told.
        const bool is_told = picture.codec == "HEVC" && picture.scan > Scan::progressive;
        if (box.type == fourcc("fiel") && scan_of(data[0], data[1]) != Scan::unknown && !is_told)
            picture.scan = scan_of(data[0], data[1]);
        if (box.type == fourcc("colr")) read_colours(data, picture);
        const Bytes jp2_colour = box.type == fourcc("jp2h") ? find_box(data, "colr") : Bytes{};
        if (jp2_colour[0] == 1 && big32(jp2_colour, 3) == 16) picture.components = "RGB";  // sRGB
        if (box.type == fourcc("pasp")) {
            const Ratio aspect{big32(data, 0), big32(data, 4)};
            if (aspect.is_set()) picture.pixel_aspect = aspect.reduced();
        }
        if (box.type == fourcc("clap")) read_clean_aperture(data, track, picture, facts);
        if (box.type == fourcc("mdcv")) picture.mastering = mastering_volume(data);
        if (box.type == fourcc("clli")) picture.light = content_light(data);
        if (box.type == fourcc("dvcC") || box.type == fourcc("dvvC"))
            facts.add_more("Dolby Vision", "profile " + std::to_string(data[2] >> 1));
    });
    facts.add_more("mastering display", picture.mastering);
    facts.add_more("content light", picture.light);
    track.stuffed = kind == CodecKind::mpeg2;
    track.raw = kind == CodecKind::raw;
    track.dense = kind == CodecKind::avc || kind == CodecKind::hevc || kind == CodecKind::av1 ||
                  kind == CodecKind::dense || kind == CodecKind::vpx || kind == CodecKind::prores;
}

namespace {

// Layouts of Core Audio (CoreAudioBaseTypes.h) by their tag's upper half, from 100 on.
constexpr const char *kLayouts[] = {
    "mono",  "stereo", "stereo", "matrix stereo", "mid/side", "",           "binaural",
    "",      "quad",   "5.0",    "6.0",           "8.0",      "",           "3.0",
    "3.0",   "4.0",    "4.0",    "5.0",           "5.0",      "5.0",        "5.0",
    "5.1",   "5.1",    "5.1",    "5.1",           "6.1",      "7.1 (wide)", "7.1 (wide)",
    "7.1",   "",       "",       "2/1",           "quad",     "2.1",        "2/1.1",
    "4.1",   "3.1",    "4.1",    "4.1",           "6.0",      "7.0",        "6.0",
    "6.1",   "7.0",    "8.0",    "10.2",          "",         "",           "7.0",
    "1.1",   "3.0",    "4.0",    "3.1",           "2/1.1",    "4.1",        "6.0",
    "7.0",   "6.1",    "6.1",    "6.1",           "7.1",      "7.1",        "7.1",
    "7.1",   "7.1",    "7.1",    "7.1",           "7.1",      "3.1",        "4.1",
    "6.0",   "6.0",    "6.0",    "6.1",           "6.1",      "6.1",        "7.0",
    "7.1",   "8.0",    "8.0",    "8.1",           "8.1",      "6.1",        "7.1",
    "5.1.2", "quad",   "5.0",    "5.1",           "6.1",      "7.1",        "",
    "",      "7.1.4",  "9.1.6",  "5.1.2",         "5.1.4",    "7.1.2"};

constexpr uint8_t kUnnamed = 0xFF;

// Loudspeakers by their labels as a layout.
std::string layout_of(const std::vector<uint32_t> &labels) {
    constexpr CodeName kLabels[] = {
        {1, "L"},    {2, "R"},    {3, "C"},    {4, "LFE"}, {5, "Ls"},   {6, "Rs"},   {7, "Lc"},   {8, "Rc"},
        {9, "Cs"},   {10, "Lsd"}, {11, "Rsd"}, {12, "Ts"}, {13, "Vhl"}, {14, "Vhc"}, {15, "Vhr"}, {33, "Rls"},
        {34, "Rrs"}, {35, "Lw"},  {36, "Rw"},  {38, "Lt"}, {39, "Rt"},  {42, "mono"}};
    std::string names;
    for (const uint32_t label : labels) {
        const std::string name = name_of(kLabels, label);
        if (name.empty()) return "";
        append(names, name, " ");
    }
    if (names == "C") return "mono";
    if (names == "L R") return "stereo";
    return names == "L R C LFE Ls Rs" ? "5.1" : names;
}

std::string core_audio_layout(Bytes chan, uint32_t channels) {
    const uint32_t tag = big32(chan, 4);
    if (tag == 0x10000) return speaker_layout(big32(chan, 8), channels);
    if (tag != 0) return name_at(kLayouts, (tag >> 16) - 100);
    const uint64_t n = big32(chan, 12);
    if (n > 64 || !chan.has(16, 20 * n)) return "";
    std::vector<uint32_t> labels;
    for (uint64_t i = 0; i < n; i++) labels.push_back(big32(chan, 16 + 20 * i));
    return layout_of(labels);
}

// ISO 14496-12, 12.2.4: a configuration, or each channel's loudspeaker (ISO 23091-3), here by its label of
// Core Audio. No name where channels of a configuration are left out.
std::string channel_layout(Bytes chnl, uint32_t channels) {
    constexpr uint8_t kPlaces[] = {1, 2,  3,  4,        5,        6,  7,  8,  33, 34,
                                   9, 10, 11, kUnnamed, kUnnamed, 35, 36, 13, 15, 14};
    const bool is_first = chnl[0] == 0;
    const bool has_places = ((is_first ? chnl[4] : chnl[4] >> 4) & 1) != 0;
    uint64_t at = is_first ? 5 : 6;
    const uint8_t configuration = chnl[at++];
    if (!has_places || chnl[0] > 1) return "";
    if (configuration != 0) {
        const bool has_omitted = is_first || (chnl[at++] & 1) != 0;
        return has_omitted && big64(chnl, at) != 0 ? "" : configured_layout(configuration);
    }
    if (!is_first) channels = chnl[at++];
    if (!chnl.has(at, channels)) return "";
    std::vector<uint32_t> labels;
    for (; channels > 0; channels--, at++)
        labels.push_back(chnl[at] < std::size(kPlaces) ? kPlaces[chnl[at]] : kUnnamed);
    return layout_of(labels);
}

void read_sound_esds(Bytes esds, Sound &sound) {
    const StreamDescriptor stream = stream_descriptor(esds);
    if (stream.bit_rate > 0) sound.bit_rate = stream.bit_rate;
    constexpr CodeName kObjects[] = {{0x69, "MP3"},  {0x6B, "MP3"},  {0xA5, "AC-3"},   {0xA6, "E-AC-3"},
                                     {0xA9, "DTS"},  {0xAA, "DTS"},  {0xAB, "DTS"},    {0xAC, "DTS"},
                                     {0xAD, "Opus"}, {0xC1, "FLAC"}, {0xDD, "Vorbis"}, {0xE1, "QCELP"}};
    if (const char *name = name_of(kObjects, stream.object); name[0] != 0) sound.codec = name;
    if (stream.object == 0x40 || (stream.object >= 0x66 && stream.object <= 0x68))
        aac_configuration(stream.specific, sound);
}

void read_ac3_box(Bytes data, Sound &sound) {
    BitReader bits(data);
    bits.skip(2 + 5 + 3);
    const uint32_t mode = bits.get(3);
    set_ac3_mode(mode, bits.flag(), sound);
    sound.bit_rate = ac3_bit_rate(bits.get(5));
}

// Of the first independent substream and of its dependent one, which adds channels (ETSI TS 102 366, F.6).
void read_eac3_box(Bytes data, Sound &sound) {
    BitReader bits(data);
    const uint32_t kilobits = bits.get(13);
    bits.skip(3 + 2 + 5 + 1 + 1 + 3);
    const uint32_t mode = bits.get(3);
    set_ac3_mode(mode, bits.flag(), sound);
    bits.skip(3);
    if (bits.get(4) > 0) {
        constexpr uint32_t kPlaces[] = {2, 2, 1, 1, 2, 2, 2, 1, 1};  // channels, from bit 0 on
        const uint32_t places = bits.get(9);
        for (unsigned i = 0; i < 9; i++) sound.channels += (places >> i & 1) * kPlaces[i];
        sound.layout = sound.channels == 8 && (places & 2) != 0 ? "7.1" : "";
    }
    if (kilobits > 0) sound.bit_rate = int64_t{kilobits} * 1000;
}

// The elements of ALAC's frames by how many channels there are.
constexpr const char *kAlacLayouts[] = {"mono", "stereo", "3.0", "4.0", "5.0", "5.1", "6.1", "7.1 (wide)"};

void read_sound_boxes(Bytes boxes, Sound &sound, int depth) {
    each_box(boxes, [&](const Box &box) {
        const Bytes data = box.data;
        switch (box.type) {
            case fourcc("wave"):
                if (depth < 2) read_sound_boxes(data, sound, depth + 1);
                break;
            case fourcc("esds"): read_sound_esds(data, sound); break;
            case fourcc("chan"):
                if (std::string layout = core_audio_layout(data, sound.channels); !layout.empty())
                    sound.layout = layout;
                break;
            case fourcc("dac3"): read_ac3_box(data, sound); break;
            case fourcc("dec3"): read_eac3_box(data, sound); break;
            case fourcc("dmlp"): truehd_format(big32(data), sound); break;
            case fourcc("dOps"):
                sound.channels = data[1];
                sound.rate = {48000, 1};
                if (data[10] <= 1) sound.layout = counted_layout(sound.channels);
                break;
            case fourcc("alac"):
                if (data.size() < 28) break;
                sound.bits = data[9];
                sound.channels = data[13];
                if (big32(data, 24) > 0) sound.rate = {big32(data, 24), 1};
                if (big32(data, 20) > 0) sound.bit_rate = big32(data, 20);
                if (sound.layout.empty()) sound.layout = name_at(kAlacLayouts, sound.channels - 1);
                break;
            case fourcc("chnl"):
                if (std::string layout = channel_layout(data, sound.channels); !layout.empty())
                    sound.layout = layout;
                break;
            case fourcc("dfLa"): flac_information(data.from(8), sound); break;
            case fourcc("pcmC"): sound.bits = data[5]; break;
            case fourcc("srat"):
                if (big32(data, 4) > 0) sound.rate = {big32(data, 4), 1};
                break;
            case fourcc("btrt"):
                if (big32(data, 8) > 0 && sound.codec != "AC-3") sound.bit_rate = big32(data, 8);
                break;
            default: break;
        }
    });
}

// Version 2 of a sound entry (QuickTime File Format): floating rate, bits and flags of "lpcm".
void read_version_2(Bytes entry, Track &track, Sound &sound) {
    const double rate = double_of_bits(big64(entry, 32));
    if (rate >= 1 && rate <= 1e7) sound.rate = Ratio{std::llround(rate * 1000), 1000}.reduced();
    sound.channels = big32(entry, 40);
    sound.bits = big32(entry, 48);
    if (track.codec == fourcc("lpcm")) {
        if ((big32(entry, 52) & 1) != 0) sound.codec = "PCM float";
        track.packet = {big32(entry, 56), std::max<int64_t>(big32(entry, 60), 1)};
    }
}

}  // namespace

void read_sound_entry(Input &input, Track &track, Sound &sound) {
    const Bytes entry = track.description;
    const unsigned version = big16(entry, 8);
    const uint64_t fixed = version == 1 ? 44 : version == 2 ? 64 : 28;
    // Version 1 of ISO files has no more fields than 0 has.
    const Box first = box_at(entry, 28);
    const bool is_iso =
        version == 1 && first.size >= 8 && entry.has(28, first.size) && big32(entry, 28) >= 8 &&
        (first.type == fourcc("srat") || first.type == fourcc("esds") || first.type == fourcc("pcmC"));
    const Bytes boxes = entry.from(is_iso ? 28 : fixed);
    track.codec = protected_type(boxes, track.codec);
    const SoundCodec codec = sound_codec(track.codec);
    sound.codec = codec.codec[0] != 0 ? codec.codec : type_text(track.codec);
    sound.language = track.language;
    sound.channels = big16(entry, 16);
    sound.bits = codec.bits != 0 ? codec.bits : big16(entry, 18);
    const uint32_t fixed_rate = version == 2 ? 0 : big32(entry, 24);  // there it is always 1 Hz
    if (fixed_rate > 0) sound.rate = Ratio{fixed_rate, 65536}.reduced();
    if (sound.rate.is_set() && sound.rate.d != 1) sound.rate = Ratio{std::llround(sound.rate.value()), 1};
    if (version == 2) {
        read_version_2(entry, track, sound);
    } else if (version == 1 && !is_iso && big32(entry, 28) > 0 && big32(entry, 36) > 0) {
        track.packet = {big32(entry, 36), big32(entry, 28)};
        const bool is_plain = track.codec == fourcc("sowt") || track.codec == fourcc("twos");
        if (is_plain && track.packet.d == 1 && sound.channels > 0 && track.packet.n % sound.channels == 0)
            sound.bits = static_cast<uint32_t>(track.packet.n / sound.channels * 8);
    }
    read_sound_boxes(boxes, sound, 0);
    if (sound.codec == "DTS" || sound.codec == "MP3" || sound.codec == "MP2")
        stream_sound(first_sample(input, track), sound);
    // Rates from 65,536 Hz on have no room; the media's time scale is theirs.
    if ((!sound.rate.is_set() || fixed_rate == 0) && version != 2 && track.timescale >= 8000 &&
        sound.codec.starts_with("PCM"))
        sound.rate = {track.timescale, 1};
    if (!sound.rate.is_set() && track.timescale >= 8000) sound.rate = {track.timescale, 1};
    track.raw = sound.codec.starts_with("PCM") || sound.codec.ends_with("-law");
    track.dense =
        sound.codec.find("AAC") != std::string::npos || sound.codec == "AC-3" || sound.codec == "Opus";
    if (track.raw && !track.packet.is_set())
        track.packet = {int64_t{sound.channels} * ((sound.bits + 7) / 8), 1};
    const bool has_bits =
        track.raw || sound.codec == "ALAC" || sound.codec == "FLAC" || sound.codec.ends_with("ADPCM");
    if (!has_bits || sound.bits > 64) sound.bits = 0;
    if (track.raw && sound.codec.ends_with("-law")) sound.bits = 8;
}
