// The switches of one run and the few states that a walk keeps: a plain record, zero-filled by main and
// handed to the dumps by reference.
#pragma once

#include <cstdint>

struct DumpOptions {
    int32_t verbose;         // -v: how often it was given
    int32_t flag_a;          // -a: audio samples in hexadecimal
    int32_t file_dump;       // -d: text dump
    int32_t flag_t;          // -t: timecode in DPX pictures and audio samples
    int32_t hex_dump;        // -h
    int64_t hex_start;       // -h=addr
    int64_t hex_length;      // -h=addr,length; 0: the default length
    int32_t hex_no_offsets;  // -hn
    int32_t flag_p;          // -p: with -v first pixels of a TIFF
    int32_t string_search;   // -s
    int32_t mxf_first_pass;  // 1 while the MXF walk collects names, 0 while it prints
    int32_t flag_u;          // -u: text output as UTF-8
    int32_t tiff_big_endian;
    int32_t tiff_image_width;
    int32_t tiff_image_length;
    int32_t tiff_bits_per_sample;
    int32_t tiff_strip_offset;
    int32_t mxf_flag_h;            // -mh
    int32_t mxf_flag_x;            // -mx: labels as sixteen separate byte values
    int32_t mxf_flag_t;            // -mt
    int32_t mxf_flag_v;            // -mv
    int32_t save_frames;           // -ms: write MXF frames to files
    int32_t mxf_flag_c;            // -mc: no file positions
    int32_t mxf_flag_l;            // -ml: large item buffer, collection over the whole file
    char frame_name_pattern[516];  // -ms=pattern, NUL-terminated
};

static_assert(sizeof(DumpOptions) == 624);
