#include "jpeg2000/facts.h"

void jp2_facts(Input &, Facts &) {}
void codestream_facts(Input &, Facts &) {}
void jpeg_facts(Input &, Facts &) {}
bool codestream_picture(Bytes, Picture &) { return false; }
