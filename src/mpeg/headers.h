// The headers behind the start codes of program and elementary streams. Each is read from the byte behind its
// start code (and length) on; they return how the walk goes on.
#pragma once

#include <cstdint>
#include <span>

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

// A field as bits behind each other lie: how many, the line up to its value, and the hexadecimal digits of
// the value, 0 for a decimal one. Without a label it is not printed; without bits it is a marker bit.
struct BitRow {
    int bits = 0;
    const char *label = nullptr;
    int digits = 0;
};
constexpr BitRow kMarker{};

// Read fields and print one line each; the value of a single one.
uint32_t print_bits(mpeg_reader &reader, const BitRow &row);
void print_bit_rows(mpeg_reader &reader, std::span<const BitRow> rows);
