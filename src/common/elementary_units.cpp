// Pictures of H.264, HEVC and AV1, whose streams are units with parameters and messages among them.
#include <iterator>

#include "common/elementary.h"

std::string mastering_volume(Bytes b) {
    return b.size() < 24 ? "" : mastering_text(b.sub(0, 12), b.sub(12, 4), b.sub(16, 4), b.sub(20, 4));
}

std::string content_light(Bytes b) {
    return b.size() < 4 ? "" : std::to_string(big16(b, 0)) + "/" + std::to_string(big16(b, 2));
}

namespace {

// Units with lengths of so many bytes; 0: behind start codes, or else lengths of four.
template <typename Use>
void each_nal(Bytes sample, unsigned length_bytes, Use use) {
    const bool is_stream = length_bytes == 0 && (big32(sample) == 1 || big32(sample) >> 8 == 1);
    if (length_bytes == 0) length_bytes = 4;
    uint64_t at = is_stream ? start_code(sample) : 0;
    for (int i = 0; i < 64 && sample.has(at, 5); i++) {
        const uint64_t start = at + (is_stream ? 3 : length_bytes);
        const uint64_t end = is_stream ? start_code(sample, start) : start + sample.big(at, length_bytes);
        use(sample.sub(start, end - start));
        at = end;
    }
}

// Which field comes first: the structure in the picture timing of the first picture (ITU-T H.264, D.1.3;
// H.265, D.3.3).
void read_picture_timing(BitReader message, int skipped, Picture &picture) {
    constexpr Scan p = Scan::progressive;
    constexpr Scan top = Scan::top_first;
    constexpr Scan bottom = Scan::bottom_first;
    constexpr Scan kStructures[] = {p, top, bottom, top, bottom, top, bottom, p, p, bottom, top, top, bottom};
    message.skip(static_cast<uint64_t>(skipped));
    const uint32_t structure = message.get(4);
    if (structure < std::size(kStructures)) picture.scan = kStructures[structure];
}

// Messages of supplemental enhancement; `skipped` bits of a picture timing stand before its structure, -1: it
// has none.
void read_messages(Bytes nal, uint64_t header, int skipped, Picture &picture) {
    const std::string raw = raw_payload(nal, header);
    const Bytes messages(raw.data(), raw.size());
    const auto number = [&](uint64_t &at) {
        uint64_t value = 0;
        while (messages[at] == 0xFF) value += messages[at++];
        return value + messages[at++];
    };
    for (uint64_t at = 0; messages.has(at, 3);) {
        const uint64_t type = number(at);
        const uint64_t size = number(at);
        const Bytes message = messages.sub(at, size);
        const bool is_open = picture.scan == Scan::unknown || picture.scan == Scan::interlaced;
        if (type == 1 && skipped >= 0 && is_open) read_picture_timing(BitReader(message), skipped, picture);
        if (type == 137) picture.mastering = mastering_volume(message);
        if (type == 144) picture.light = content_light(message);
        at += size;
    }
}

// What a picture parameter set tells of a slice: whether the fields of frames have times of their own.
bool has_field_times(Bytes nal) {
    const std::string raw = raw_payload(nal.sub(0, 64), 1);
    BitReader bits(Bytes(raw.data(), raw.size()));
    bits.skip_codes(2);
    bits.skip(1);
    return bits.flag();
}

// By a slice's header (7.3.3), where macroblocks have no fields: a field, or a frame whose fields are of one
// time.
Scan scan_of_slice(Bytes nal, unsigned frame_number, bool field_times) {
    const std::string raw = raw_payload(nal.sub(0, 64), 1);
    BitReader bits(Bytes(raw.data(), raw.size()));
    bits.skip_codes(3);
    bits.skip(frame_number);
    if (bits.flag()) return bits.flag() ? Scan::bottom_first : Scan::top_first;
    return field_times ? Scan::interlaced : Scan::progressive;
}

}  // namespace

// Parameter sets of the configuration record or of the samples.
bool avc_picture(Bytes data, Bytes setup, Picture &picture) {
    const bool has_record = setup[0] == 1;
    const unsigned length_bytes = has_record ? (setup[4] & 3U) + 1 : 0;
    AvcFields fields;
    const bool has_set = has_record && (setup[5] & 31) != 0;
    bool is_known = has_set && h264_sequence(setup.sub(8, big16(setup, 6)), picture, fields);
    const uint64_t second = 8 + uint64_t{big16(setup, 6)};
    bool field_times = is_known && ((setup[5] & 31) != 1 || has_field_times(setup.from(second + 3)));
    each_nal(data, length_bytes, [&](Bytes nal) {
        const int type = nal[0] & 0x1F;
        if (type == 7 && !is_known) is_known = h264_sequence(nal, picture, fields);
        if (type == 8) field_times = has_field_times(nal);
        if (type == 6) read_messages(nal, 1, fields.timing, picture);
        if ((type == 1 || type == 5) && fields.frame_number > 0 && picture.scan == Scan::interlaced)
            picture.scan = scan_of_slice(nal, fields.frame_number, field_times);
    });
    return is_known;
}

// Parameter sets and messages of the configuration record (ISO 14496-15, 8.3.3.1), then those of the samples.
bool hevc_picture(Bytes data, Bytes setup, Picture &picture) {
    bool is_known = false;
    bool has_structures = false;
    const auto use = [&](Bytes nal) {
        is_known = is_known || hevc_sequence(nal, picture, has_structures);
        if (nal[0] >> 1 == 39) read_messages(nal, 2, has_structures ? 0 : -1, picture);
    };
    const bool has_record = setup.size() >= 23 && setup[0] <= 1;
    uint64_t at = 23;
    for (unsigned array = 0; has_record && array < setup[22]; array++) {
        const unsigned units = big16(setup, at + 1);
        at += 3;
        for (unsigned i = 0; i < units && setup.has(at, 2); i++) {
            use(setup.sub(at + 2, big16(setup, at)));
            at += 2 + uint64_t{big16(setup, at)};
        }
    }
    each_nal(data, has_record ? (setup[21] & 3U) + 1 : 0, use);
    if (is_known || !has_record) return is_known;
    picture.components = chroma_format(setup[16] & 3U);
    picture.bits = 8 + (setup[17] & 7);
    return true;
}

namespace {

// The sequence header of AV1 (AV1 bitstream, 5.5), of which colours alone are wanted: the record (av1C)
// tells the rest, and the header where it has one.
void read_av1_colours(BitReader bits, Picture &picture) {
    const uint32_t profile = bits.get(3);
    bits.skip(1);
    const bool is_still = bits.flag();
    bool has_model = false;
    uint64_t delay = 0;
    if (is_still) {
        bits.skip(5);
    } else {
        if (bits.flag()) {
            bits.skip(64);
            if (bits.flag()) bits.ue();
            has_model = bits.flag();
            if (has_model) {
                delay = uint64_t{bits.get(5)} + 1;
                bits.skip(32 + 5 + 5);
            }
        }
        const bool has_delays = bits.flag();
        for (uint32_t points = bits.get(5) + 1; points > 0; points--) {
            bits.skip(12);
            if (bits.get(5) > 7) bits.skip(1);
            if (has_model && bits.flag()) bits.skip(2 * delay + 1);
            if (has_delays && bits.flag()) bits.skip(4);
        }
    }
    const uint32_t across = bits.get(4) + 1;
    bits.skip(across + uint64_t{bits.get(4)} + 1);
    if (!is_still && bits.flag()) bits.skip(7);
    bits.skip(3);
    if (!is_still) {
        bits.skip(4);
        const bool has_order = bits.flag();
        if (has_order) bits.skip(2);
        const bool has_tools = bits.flag() || bits.flag();
        if (has_tools && !bits.flag()) bits.skip(1);
        if (has_order) bits.skip(3);
    }
    bits.skip(3);
    if (bits.flag() && profile == 2) bits.skip(1);
    const bool is_grey = profile != 1 && bits.flag();
    uint32_t codes[] = {2, 2, 2};
    if (bits.flag()) {
        for (uint32_t &code : codes) code = bits.get(8);
    }
    const bool is_srgb = codes[0] == 1 && codes[1] == 13 && codes[2] == 0 && !is_grey;
    const int full_range = is_srgb || bits.flag() ? 1 : 0;
    if (bits.is_over()) return;
    picture.colour = {colour_code(codes[0]), colour_code(codes[1]), colour_code(codes[2]), full_range};
    if (codes[2] == 0) picture.components = "RGB";
}

}  // namespace

bool av1_picture(Bytes data, Bytes record, Picture &picture) {
    if (record.size() < 4 || record[0] != 0x81) return false;
    const uint8_t flags = record[2];
    picture.bits = (flags & 0x40) == 0 ? 8 : (flags & 0x20) != 0 ? 12 : 10;
    constexpr const char *kFormats[] = {"4:4:4", "4:4:4", "4:2:2", "4:2:0"};
    picture.components = (flags & 0x10) != 0 ? "Y" : kFormats[flags >> 2 & 3];
    const Bytes units = record.size() > 4 ? record.from(4) : data;
    for (uint64_t at = 0; units.has(at, 2);) {
        const uint8_t header = units[at];
        at += (header & 4) != 0 ? 2 : 1;
        uint64_t size = (header & 2) != 0 ? 0 : units.size();
        for (int shift = 0; (header & 2) != 0 && shift < 56; shift += 7) {
            size |= uint64_t{units[at] & 0x7FU} << shift;
            if ((units[at++] & 0x80) == 0) break;
        }
        if ((header >> 3 & 15) == 1) {
            read_av1_colours(BitReader(units.sub(at, size)), picture);
            break;
        }
        at += size;
    }
    return true;
}
