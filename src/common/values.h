// Header values as numbers and as text.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/stream.h"

// Hands out 16 buffers of 8192 bytes in turn, so that a text stays valid until 16 further calls: one print
// call can carry at most 16 rendered values. Stores 8192 through `size` when it is given.
char *get_buffer(uint32_t *size = nullptr);

// What the text of a ring buffer stands for, by its address: Piece::text for any other text.
Piece ring_value(const char *text);
// Says so of the buffer handed out last.
void ring_holds(const Piece &value);

// Header values as text, each in a buffer of the ring. A value whose bits are all ones is not set and
// renders as empty text.
const char *checkuint8(uint32_t value);            // "%d" of the low 8 bits
const char *checkuint16(uint32_t value);           // "%d" of the low 16 bits
const char *checkuint32(uint32_t value, int hex);  // "%08x", or "%d" of the value taken as signed
const char *checkreal(float value);                // "%g"; a NaN is "#NAN (Invalid Value)"
const char *cineonreal(float value);               // "%g"; Cineon marks an unset float with +infinity
// A fixed-width text field (1 to 255 bytes) in single quotes up to its first NUL; empty text when it starts
// with NUL, "Error, 0xff in ascii data" when it starts with 0xFF. Bytes beyond the window count as NUL.
const char *checkascii(Bytes field, unsigned width);

// Up to `most` characters (8191 at most) up to a NUL or the window's end; each byte that is not printable
// ASCII as `other`.
const char *printable_text(Bytes b, uint64_t most, char other);
// "hh:mm:ss".
const char *clock_text(int hours, int minutes, int seconds);
// Copies up to n characters or up to a zero byte, filled up with blanks to n, and a NUL: n + 1 bytes of
// `text`.
void getstring(char *text, uint32_t n, Bytes source);

// Prints the text at an offset up to its first NUL or the window's end, however long it is; the bytes
// printed.
uint64_t print_text(Bytes b, uint64_t offset);

void swap16(uint16_t *value);
void swap32(uint32_t *value);

// Reads at any alignment; bytes beyond the window are 0. The tiff readers are little-endian, and big-endian
// with their flag set.
uint16_t get_uint16(Bytes b);
uint32_t get_uint32(Bytes b);
uint16_t tiffuint16(Bytes b, int swap);
uint32_t tiffuint32(Bytes b, int swap);
float float_of_bits(uint32_t bits);
double double_of_bits(uint64_t bits);

inline bool is_printable(uint32_t byte) { return byte >= 0x20 && byte <= 0x7E; }
char tiffchar(uint32_t byte);  // a printable byte as itself, any other as "."
int littleendian();            // 1 on a little-endian host
