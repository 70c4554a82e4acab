// Interleaved PCM samples: hexadecimal listing and the timecode packets that they may carry.
#pragma once

#include <cstdint>

#include "common/budget.h"
#include "common/input.h"
#include "main/dump_options.h"

// Reads `frames` frames of `channels` samples of `bits` bits from a file position on. With -a every sample is
// printed in hexadecimal, most significant byte first, a line a frame; with -t the timecode packets carried
// one bit a sample in the first 16 channels are found and printed. Ends with the file. The sample data of one
// file share a budget.
void audio_samplesdump(DumpOptions &opts, Input &input, uint64_t position, int64_t frames, uint32_t channels,
                       uint32_t bits, int little_endian, Budget &budget);
