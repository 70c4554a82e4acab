// Facts of still images with small headers.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void arri_facts(Input &input, Facts &facts);
void bmp_facts(Input &input, Facts &facts);
void sgi_facts(Input &input, Facts &facts);
void tga_facts(Input &input, Facts &facts);
void png_facts(Input &input, Facts &facts);
void netpbm_facts(Input &input, Facts &facts);
void softimage_facts(Input &input, Facts &facts);
