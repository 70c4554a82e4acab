// Texts of program streams: names of stream ids and the system clock.
#pragma once

#include "mpeg/reader.h"

// Writes the name of a stream id (ISO/IEC 13818-1) or start code (13818-2) to a text of at least 25 bytes.
// Most ids are followed by a packet length, which is read and returned; 0 for the others.
uint32_t mpegstreamid(mpeg_reader &reader, char *text, uint32_t id);

// Writes a time in microseconds as "hh:mm:ss:uuuuuu".
void mpegsystemtime2string(char *text, double time);
