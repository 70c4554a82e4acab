#include "mpeg/names.h"

#include <cmath>
#include <cstdio>

#include "common/names.h"
#include "common/values.h"

namespace {

constexpr size_t kNameText = 25;
constexpr size_t kTimeText = 32;

constexpr CodeName kStreamNames[] = {
    {0x00, "picturedata"},
    {0xB2, "userdata"},
    {0xB3, "sequenceheader"},
    {0xB4, "sequenceerror"},
    {0xB5, "extensionstart"},
    {0xB7, "sequenceend"},
    {0xB8, "groupofpictures"},
    {0xB9, "dataend"},
    {0xBA, "timing"},
    {0xBB, "systemheader"},
    {0xBC, "program_stream_map"},
    {0xBD, "private_stream_1"},
    {0xBE, "padding_stream"},
    {0xBF, "private_stream_2"},
    {0xF0, "ecm_stream"},
    {0xF1, "emm_stream"},
    {0xF2, "itu_h_222_stream"},
    {0xF3, "iso_iec_13522_stream"},
    {0xF4, "itu_h_222_a_stream"},
    {0xF5, "itu_h_222_b_stream"},
    {0xF6, "itu_h_222_c_stream"},
    {0xF7, "itu_h_222_d_stream"},
    {0xF8, "itu_h_222_e_stream"},
    {0xF9, "ancillary_stream"},
    {0xFF, "program_directory_stream"},
};

void write_name(char *text, uint32_t id) {
    if (const char *name = name_of(kStreamNames, id, nullptr)) {
        std::snprintf(text, kNameText, "%s", name);
    } else if (id <= 0xAF) {
        std::snprintf(text, kNameText, "datastream%03d", id);
    } else if (id <= 0xB6) {
        std::snprintf(text, kNameText, "unknown-%02x", id);
    } else if (id <= 0xDF) {
        std::snprintf(text, kNameText, "audiostream%d", id & 31);
    } else if (id <= 0xEF) {
        std::snprintf(text, kNameText, "videostream%d", id & 31);
    } else {
        std::snprintf(text, kNameText, "reserved_data_stream");
    }
}

bool has_packet_length(uint32_t id) {
    switch (id) {
        case 0x00:
        case 0xB3:
        case 0xB5:
        case 0xB8:
        case 0xB9:
        case 0xBA: return false;
        default: return true;
    }
}

}  // namespace

uint32_t mpegstreamid(mpeg_reader &reader, char *text, uint32_t id) {
    write_name(text, id);
    return has_packet_length(id) ? mpegbits(reader, 16) : 0;
}

void mpegsystemtime2string(char *text, double time) {
    const char *clock =
        clock_text(static_cast<int>(time / 3600000000.0), static_cast<int>(std::fmod(time / 60000000.0, 60)),
                   static_cast<int>(std::fmod(time / 1000000.0, 60)));
    std::snprintf(text, kTimeText, "%s:%06d", clock, static_cast<int>(std::fmod(time, 1000000.0)));
}
