// The headers behind the start codes of program and elementary streams. Each is read from the byte behind its
// start code (and length) on; most return a status of the walk.
#pragma once

#include <cstdint>

#include "main/dump_options.h"
#include "mpeg/reader.h"

enum class Status { go_on = 0, end_of_program = 1, unsupported = 2, error = 4 };

// Video (ISO/IEC 11172-2, 13818-2).
Status print_group_of_pictures(mpeg_reader &reader);
Status print_sequence_header(mpeg_reader &reader);
Status print_extension(mpeg_reader &reader);
Status print_picture_header(mpeg_reader &reader);

// Systems (ISO/IEC 11172-1, 13818-1). The pack header sets the system time, in microseconds, and writes its
// text to `text`.
Status print_pack_header(const DumpOptions &opts, mpeg_reader &reader, double &system_time, char *text);
Status print_system_header(mpeg_reader &reader);
Status print_program_stream_map(mpeg_reader &reader);
Status print_pes_header(const DumpOptions &opts, mpeg_reader &reader);

// Prints a field of some bits behind its label.
inline uint32_t print_bits(mpeg_reader &reader, const char *label, int count) {
    const uint32_t value = mpegbits(reader, count);
    std::printf("%s%d\n", label, static_cast<int32_t>(value));
    return value;
}
