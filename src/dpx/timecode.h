// Film keycodes and the 16-byte timecode packet that pictures and audio samples carry.
#pragma once

#include <cstdint>

#include "common/bytes.h"

// Writes the keycode of a DPX film header (16 characters and a NUL; empty when it is not set): stock code,
// prefix, count and perforation offset. `film` begins at the film information header (SMPTE 268M).
void formatdpxkeycode(char *text, Bytes film);

// Checks a packet (FF AA, timecode, second word, tag, checksum) and takes its fields out; 1 when it is valid.
// An invalid packet sets the outputs to 0. Outputs may be null.
int keltimecode_decode(Bytes packet, uint32_t *timecode, uint32_t *second, uint32_t *tag);

// Picture layouts of keltimecode_image.
inline constexpr uint32_t kLayoutRgb8 = 0x000B0000;
inline constexpr uint32_t kLayoutRgb10 = 0x030B0000;
inline constexpr uint32_t kLayout422_8 = 0;
inline constexpr uint32_t kLayout422_10 = 0x03000000;

// Reads the packet burned into picture line 8 as blocks of 4 pixels. `pixels` holds the first lines as
// stored, `width` is in pixels; samples outside the bytes count as not set, unknown layouts give 0.
int keltimecode_image(Bytes pixels, uint32_t width, uint32_t height, uint32_t layout, uint32_t *timecode,
                      uint32_t *second);
