#include "images/facts.h"

void bmp_facts(Input &, Facts &) {}
void sgi_facts(Input &, Facts &) {}
void tga_facts(Input &, Facts &) {}
void png_facts(Input &, Facts &) {}
void netpbm_facts(Input &, Facts &) {}
void softimage_facts(Input &, Facts &) {}
