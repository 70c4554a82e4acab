#include "audio/facts.h"

void riff_facts(Input &, Facts &) {}
void aiff_facts(Input &, Facts &) {}
void mpeg_audio_facts(Input &, Facts &) {}
