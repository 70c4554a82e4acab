#include "rawstream/detect.h"

#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"

namespace {

constexpr int kMargin = 32;    // words behind a position that a timing reference may need
constexpr int kReference = 4;  // words
constexpr int kNone = -1;
constexpr uint16_t kHigh = 0x3FF;
constexpr uint16_t kEndOfActiveVideo = 0x40;  // H bit of the XYZ word

// Words between two EAVs of an SD signal, and of one of the two streams of an HD signal. Rates that may be
// those of NTSC are not known.
constexpr Raster kSdRasters[] = {
    {858, "Raster is SDTV - NTSC 720x486 30Hz", 720, 486},
    {864, "Raster is SDTV - PAL 720x576 25Hz", 720, 576, {25, 1}},
    {1144, "Raster is SDTV - PAL 960x486 30Hz", 960, 486},
    {1152, "Raster is SDTV - PAL 960x576 25Hz", 960, 576, {25, 1}},
};
constexpr Raster kHdRasters[] = {
    {1375, "Raster is HDTV - SMPTE296/72 1280x720", 1280, 720},
    {1650, "Raster is HDTV - SMPTE296/60 1280x720", 1280, 720},
    {1980, "Raster is HDTV - SMPTE296/50 1280x720", 1280, 720, {50, 1}},
    {2200, "Raster is HDTV - SMPTE274/30 1920x1080", 1920, 1080},
    {2250, "Raster is HDTV - FILM2K/20 2048x1556", 2048, 1556},
    {2376, "Raster is HDTV - SMPTE295/25 1920x1080", 1920, 1080, {25, 1}},
    {2500, "Raster is HDTV - FILM2K/15 2048x1556", 2048, 1556},
    {2640, "Raster is HDTV - SMPTE274/25 1920x1080", 1920, 1080, {25, 1}},
    {2750, "Raster is HDTV - SMPTE274/24 1920x1080", 1920, 1080},
    {3300, "Raster is HDTV - SMPTE296/30 1280x720z", 1280, 720},
    {3960, "Raster is HDTV - SMPTE296/25 1280x720", 1280, 720, {25, 1}},
    {4125, "Raster is HDTV - SMPTE296/24 1280x720", 1280, 720},
};

// Two EAVs with the SAVs before and behind the last one.
struct Timing {
    int previous_eav = kNone;
    int last_eav = kNone;
    int sav_before = kNone;
    int sav_after = kNone;

    bool complete() const {
        return last_eav != kNone && previous_eav != kNone && sav_before != kNone && sav_after != kNone;
    }
};

// Word streams in the signal: 2 for HD, where every word of a reference stands twice; 0 without any
// reference.
int find_interleave(const uint16_t *words, int limit) {
    for (int i = 0; i < limit; i++) {
        const uint16_t *w = words + i;
        if (w[0] != kHigh) continue;
        if (w[1] == kHigh && w[2] == 0 && w[3] == 0 && w[4] == 0 && w[5] == 0) return 2;
        if (w[1] == 0 && w[2] == 0) return 1;
    }
    return 0;
}

Timing find_timing(const uint16_t *words, int limit, int interleave) {
    Timing found;
    for (int j = 0; j < limit && !found.complete();) {
        const bool reference =
            words[j] == kHigh && words[j + interleave] == 0 && words[j + 2 * interleave] == 0;
        if (!reference) {
            j++;
            continue;
        }
        if (words[j + 3 * interleave] & kEndOfActiveVideo) {
            found = {found.last_eav, j, found.sav_after, kNone};
        } else {
            found.sav_after = j;
        }
        j += 4;
    }
    return found;
}

const Raster *raster_of(const Timing &timing, int divisor, int interleave) {
    const uint32_t line = static_cast<uint32_t>((timing.last_eav - timing.previous_eav) / divisor);
    return interleave == 1 ? row_of(kSdRasters, line, &Raster::line)
                           : row_of(kHdRasters, line, &Raster::line);
}

bool are_consistent(const uint16_t *words, const Timing &timing, const WordPlaces &places) {
    const uint16_t *eav = words + timing.last_eav;
    const uint16_t *sav = words + timing.sav_after;
    if (eav[6] == eav[7] && sav[6] == sav[7]) return true;
    for (const int reference : {timing.last_eav, timing.sav_after}) places.tell(reference, 2 * kReference);
    print("Warning: EAV XYZ code different, probably recorded DF in NDF raster\n");
    return false;
}

// Timing words are told by their eight high bits.
uint16_t as_timing_word(uint32_t word) {
    if ((word & 0x3FC) == 0) return 0;
    if ((word & 0x3FC) == 0x3FC) return 0x3FF;
    return static_cast<uint16_t>(word);
}

uint16_t word_of_byte(uint8_t byte) {
    return byte == 255 ? uint16_t{0x3FF} : static_cast<uint16_t>(byte * 4);
}

// Three words in four bytes: little-endian 10-bit fields, or three bytes of high bits and one of low bits.
void unpack_group(uint16_t *words, Bytes group, bool kel_packing) {
    const uint32_t packed = little32(group);
    for (uint32_t i = 0; i < 3; i++) {
        const uint32_t word = kel_packing ? uint32_t{group[i]} << 2 | (group[3] >> (6 - 2 * i) & 3U)
                                          : packed >> (10 * i) & 0x3FF;
        words[i] = as_timing_word(word);
    }
}

}  // namespace

std::vector<uint16_t> unpack_words(Bytes data, bool in_bytes, bool kel_packing) {
    std::vector<uint16_t> words(kSignalWords);
    for (size_t i = 0; in_bytes && i < words.size(); i++) words[i] = word_of_byte(data[i]);
    for (size_t i = 0; !in_bytes && i + 3 <= words.size(); i += 3)
        unpack_group(&words[i], data.from(i / 3 * 4), kel_packing);
    return words;
}

void WordPlaces::tell(int first, int n) const {
    const uint64_t from = static_cast<uint64_t>(first);
    const uint64_t to = from + static_cast<uint64_t>(n);
    const uint64_t start = in_bytes ? from : from / 3 * 4;
    const uint64_t end = in_bytes ? to : (to + 2) / 3 * 4;
    also(data, start, end - start);
}

int rawdump_formatdetect(const uint16_t *words, int count, const WordPlaces &places) {
    const int limit = count - kMargin;
    const int interleave = limit < 1 ? 0 : find_interleave(words, limit);
    if (interleave == 0) {
        print("Warning: Could not find SAV and EAV\n");
        return 0;
    }
    const Timing timing = find_timing(words, limit, interleave);
    if (!timing.complete()) {
        print("Warning: Could not find SAV and EAV for line length detect\n");
        return 0;
    }
    const Raster *raster = raster_of(timing, interleave, interleave);
    if (!raster) {
        print("Warning: Unknown raster linelength %d\n", timing.last_eav - timing.previous_eav);
        return 0;
    }
    print("%s\n", raster->text);
    return interleave == 1 || are_consistent(words, timing, places) ? 1 : 0;
}

const Raster *find_raster(const uint16_t *words, int count) {
    const int limit = count - kMargin;
    const int interleave = limit < 1 ? 0 : find_interleave(words, limit);
    const Timing timing = interleave == 0 ? Timing{} : find_timing(words, limit, interleave);
    if (!timing.complete()) return nullptr;
    // SD signals have a word of colour difference for each of luma: the table counts one of both.
    const Raster *raster = raster_of(timing, interleave, interleave);
    return raster || interleave == 2 ? raster : raster_of(timing, 2, interleave);
}
