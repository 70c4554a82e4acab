// The readers of facts, each in its format's directory beside the dump (facts.cpp). Each fills what it knows;
// one that clears the format's name has found noise.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// Film scans: DPX (SMPTE 268M, versions 1 and 2) and Cineon 4.5, by their headers and what the picture needs
// as it is packed.
void dpx_facts(Input &input, Facts &facts);
void cineon_facts(Input &input, Facts &facts);
// OpenEXR 2 and 3: scan lines, tiles, deep data, several parts; the largest is the main picture, shown in the
// display window and stored in the data window.
void exr_facts(Input &input, Facts &facts);
// TIFF 6.0, BigTIFF, DNG 1.6 with the timecodes of CinemaDNG: the directories of the chain and those below
// them.
void tiff_facts(Input &input, Facts &facts);
// JPEG 2000 in boxes (ISO/IEC 15444-1, annex I) or alone, by its tile-parts; JPEG (ISO/IEC 10918-1) with
// EXIF.
void jp2_facts(Input &input, Facts &facts);
void codestream_facts(Input &input, Facts &facts);
void jpeg_facts(Input &input, Facts &facts);
// Still images with small headers.
void arri_facts(Input &input, Facts &facts);
void bmp_facts(Input &input, Facts &facts);
void gif_facts(Input &input, Facts &facts);
void netpbm_facts(Input &input, Facts &facts);
void png_facts(Input &input, Facts &facts);
void sgi_facts(Input &input, Facts &facts);
void softimage_facts(Input &input, Facts &facts);
void tga_facts(Input &input, Facts &facts);
// Movies (ISO 14496-12, QuickTime File Format) with an index or in fragments.
void movie_facts(Input &input, Facts &facts);
// MXF (SMPTE ST 377-1): header metadata, index, the first picture.
void mxf_facts(Input &input, Facts &facts);
// GXF (SMPTE 360M): the map, the material's description, the first media packets, the end.
void gxf_facts(Input &input, Facts &facts);
// Program streams (ISO 13818-1, 11172-1) and elementary video (ISO 13818-2, 11172-2); transport streams with
// packets of 188 bytes, and of 192 and 204. Headers of the first MiB, clocks of the last.
void mpeg_facts(Input &input, Facts &facts);
void transport_facts(Input &input, Facts &facts);
// WAVE, Broadcast Wave, RF64, BW64 and AVI; AIFF; MPEG audio and AAC with tags or without.
void riff_facts(Input &input, Facts &facts);
void aiff_facts(Input &input, Facts &facts);
void mpeg_audio_facts(Input &input, Facts &facts);
// R3D, and raw SDI captures.
void red_facts(Input &input, Facts &facts);
void sdi_facts(Input &input, Facts &facts);
