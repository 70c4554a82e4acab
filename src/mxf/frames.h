// Frames written to files (-ms): one series of numbers each for JPEG 2000 frames and for encrypted triplets.
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"

// Write a value to the next file of its series; end the program with status 0 when it cannot be created.
void save_jpeg2000_frame(const DumpOptions &opts, Bytes value);
void save_triplet(const DumpOptions &opts, Bytes value);
