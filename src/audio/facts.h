// Facts of sound files, and AVI.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void riff_facts(Input &input, Facts &facts);
void aiff_facts(Input &input, Facts &facts);
void mpeg_audio_facts(Input &input, Facts &facts);
