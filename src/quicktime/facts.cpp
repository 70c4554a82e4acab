#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "common/values.h"
#include "main/facts_of.h"
#include "quicktime/facts_movie.h"

SampleTable::SampleTable(Bytes stbl) {
    each_box(stbl, [&](const Box &box) {
        switch (box.type) {
            case fourcc("stts"): times = box.data; break;
            case fourcc("stsc"): runs = box.data; break;
            case fourcc("stz2"): size_bits = box.data[7]; [[fallthrough]];
            case fourcc("stsz"):
                sizes = box.data;
                constant_size = box.type == fourcc("stsz") ? big32(sizes, 4) : 0;
                samples = big32(sizes, 8);
                break;
            case fourcc("co64"): wide = true; [[fallthrough]];
            case fourcc("stco"):
                chunks = box.data;
                chunk_count = std::min<uint64_t>(big32(chunks, 4), (chunks.size() - 8) / (wide ? 8 : 4));
                if (chunks.size() < 8) chunk_count = 0;
                break;
            default: break;
        }
    });
}

uint64_t SampleTable::size_of(uint64_t sample) const {
    if (constant_size != 0) return constant_size;
    if (size_bits == 4) return sizes[12 + sample / 2] >> (sample % 2 == 0 ? 4 : 0) & 15;
    return sizes.big(12 + sample * (size_bits / 8), size_bits == 8 || size_bits == 16 ? size_bits / 8 : 4);
}

std::optional<uint64_t> SampleTable::bytes() const {
    constexpr uint64_t kMostSizes = 2 << 20;  // 5 hours of 25 frames a second
    if (constant_size != 0) return samples * constant_size;
    const bool is_known = size_bits == 4 || size_bits == 8 || size_bits == 16 || size_bits == 32;
    if (!is_known || sizes.size() > kMostSizes || !sizes.has(12, (samples * size_bits + 7) / 8)) return {};
    sizes.span(0, sizes.size());  // one read
    uint64_t sum = 0;
    for (uint64_t i = 0; i < samples; i++) sum += size_of(i);
    return sum;
}

namespace {

constexpr uint64_t kWholeHeader = 3 << 20;  // a movie header that is read in one go
constexpr uint64_t kMostTimes = 8192;       // entries of a table that are looked at
constexpr uint64_t kMostReads = 56;         // places of the file, before optional ones are left out

struct Movie {
    Input &input;
    Facts &facts;
    Bytes moov;
    bool is_whole = false;  // the header is in memory
    int64_t timescale = 0;
    std::vector<Track> tracks = {};
};

// Three letters in 15 bits, or codes of the Macintosh (QuickTime File Format, language codes).
std::string language_of(uint32_t code) {
    constexpr const char *kMacintosh[] = {"eng", "fra", "deu", "ita", "nld", "swe", "spa", "dan", "por",
                                          "nor", "heb", "jpn", "ara", "fin", "ell", "isl", "mlt", "tur",
                                          "hrv", "zho", "urd", "hin", "tha", "kor", "lit", "pol", "hun",
                                          "est", "lav", "smi", "fao", "fas", "rus", "zho"};
    if (code < std::size(kMacintosh)) return kMacintosh[code];
    if (code < 0x400 || code == 0x7FFF) return "";
    std::string text;
    for (const int shift : {10, 5, 0}) text += static_cast<char>(0x60 + (code >> shift & 31));
    const bool is_known = text != "und" && text.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == text.npos;
    return is_known ? text : "";
}

// Seconds since 1904, UTC.
std::string date_of(uint64_t seconds) {
    constexpr int64_t kTo1970 = 2082844800;
    if (seconds == 0 || seconds > (uint64_t{1} << 40)) return "";
    return iso_date_of_unix(static_cast<int64_t>(seconds) - kTo1970);
}

int64_t duration_of(Bytes box, uint64_t at) {
    const uint64_t value = box[0] == 1 ? big64(box, at + 8) : big32(box, at);
    const bool unset = value == 0xFFFFFFFF || value > INT64_MAX / 2;
    return unset ? 0 : static_cast<int64_t>(value);
}

void read_track_header(Bytes tkhd, Track &track) {
    const uint64_t more = tkhd[0] == 1 ? 12 : 0;
    track.enabled = (tkhd[3] & 1) != 0;
    track.id = big32(tkhd, tkhd[0] == 1 ? 20 : 12);
    track.width = big32(tkhd, 76 + more) >> 16;
    track.height = big32(tkhd, 80 + more) >> 16;
    const auto matrix = [&](uint64_t i) { return static_cast<int32_t>(big32(tkhd, 40 + more + 4 * i)); };
    constexpr double kDegrees = 57.29577951308232;
    // A mirror is no rotation: what is left without it is.
    const double determinant =
        static_cast<double>(matrix(0)) * matrix(4) - static_cast<double>(matrix(1)) * matrix(3);
    const bool is_upside_down = matrix(0) > 0 && matrix(1) == 0;
    if (determinant < 0) track.mirrored = is_upside_down ? "vertically" : "horizontally";
    const double sign = determinant < 0 && !is_upside_down ? -1 : 1;
    const double angle = std::atan2(sign * matrix(1), sign * matrix(0)) * kDegrees;
    track.rotation = static_cast<int>(std::lround(angle < 0 ? angle + 360 : angle) % 360);
}

Track read_track(Bytes trak, uint32_t number) {
    Track track;
    track.number = number;
    read_track_header(find_box(trak, "tkhd"), track);
    track.edits = find_box(trak, "edts/elst");
    const Bytes mdhd = find_box(trak, "mdia/mdhd");
    const uint64_t more = mdhd[0] == 1 ? 12 : 0;
    track.timescale = big32(mdhd, mdhd[0] == 1 ? 20 : 12);
    track.duration = duration_of(mdhd, 16);
    track.language = language_of(big16(mdhd, 20 + more));
    track.handler = big32(find_box(trak, "mdia/hdlr"), 8);
    track.table = find_box(trak, "mdia/minf/stbl");
    const Bytes dref = find_box(trak, "mdia/minf/dinf/dref");
    track.is_external = big32(dref, 4) > 0 && big32(dref, 12) != 0 && (big32(dref, 16) & 1) == 0;
    // The description of the first chunk.
    const Bytes descriptions = find_box(track.table, "stsd");
    Box entry = box_at(descriptions, 8);
    const uint32_t first = std::min(big32(find_box(track.table, "stsc"), 16), big32(descriptions, 4));
    for (uint32_t i = 1; i < std::min(first, 1000U) && entry.size > 0; i++)
        entry = box_at(descriptions, entry.end());
    track.codec = entry.type;
    track.description = entry.data;
    return track;
}

// How long the samples of a track last, and how evenly.
struct Timing {
    uint64_t samples = 0;
    uint64_t ticks = 0;
    uint64_t least = UINT64_MAX;
    uint64_t most = 0;
    bool is_complete = true;
};

Timing timing_of(Bytes stts) {
    Timing timing;
    const uint64_t entries = big32(stts, 4);
    for (uint64_t i = 0; i < entries; i++) {
        if (i >= kMostTimes || !stts.has(8 + 8 * i, 8)) {
            timing.is_complete = false;
            break;
        }
        const uint64_t n = big32(stts, 8 + 8 * i);
        const uint64_t delta = big32(stts, 12 + 8 * i);
        timing.samples += n;
        timing.ticks += n * delta;
        // The last sample alone may last as long as it likes.
        if (n == 0 || (i + 1 == entries && n == 1 && i > 0)) continue;
        timing.least = std::min(timing.least, delta);
        timing.most = std::max(timing.most, delta);
    }
    return timing;
}

void set_rate(const Track &track, const SampleTable &table, Picture &picture) {
    const Timing timing = timing_of(table.times);
    picture.frames = static_cast<int64_t>(table.samples);
    if (timing.most == 0 || track.timescale <= 0) return;
    if (timing.is_complete && timing.least == timing.most) {
        picture.rate = rate_of(track.timescale, static_cast<int64_t>(timing.most));
        if (timing.samples > 1) picture.constant_rate = true;
        if (timing.samples <= 1 && picture.rate.value() < 1) picture.rate = {};
        return;
    }
    const uint64_t ticks = timing.is_complete ? timing.ticks : static_cast<uint64_t>(track.duration);
    const uint64_t samples = timing.is_complete ? timing.samples : table.samples;
    if (ticks == 0 || ticks > INT64_MAX || samples > UINT32_MAX) return;
    picture.rate = rate_of(static_cast<int64_t>(samples) * track.timescale, static_cast<int64_t>(ticks));
    // Durations that differ by a tick may be a rate that the time scale cannot express.
    if (timing.most - timing.least > 1) picture.constant_rate = false;
}

std::string seconds_text(double seconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3f s", seconds);
    return text;
}

// What an edit list (ISO 14496-12, 8.6.6) makes of a track.
struct Edits {
    double seconds = 0;   // as played
    double of_media = 0;  // of these, without empty edits
    int64_t first_time = 0;
    size_t media_edits = 0;
    size_t empty_edits = 0;
    bool other_rate = false;
    bool to_the_end = false;
    std::string text;
};

Edits edits_of(const Movie &movie, const Track &track) {
    Edits edits;
    const Bytes elst = track.edits;
    const bool wide = elst[0] == 1;
    const uint64_t step = wide ? 20 : 12;
    const uint64_t n = std::min<uint64_t>(big32(elst, 4), kMostTimes);
    for (uint64_t i = 0; i < n && elst.has(8 + step * i, step); i++) {
        const Bytes entry = elst.from(8 + step * i);
        const uint64_t length = wide ? big64(entry, 0) : big32(entry, 0);
        const int64_t time =
            wide ? static_cast<int64_t>(big64(entry, 8)) : static_cast<int32_t>(big32(entry, 4));
        const double seconds = static_cast<double>(length) / static_cast<double>(movie.timescale);
        edits.seconds += seconds;
        std::string text = seconds_text(seconds);
        if (time < 0) {
            edits.empty_edits++;
            text += " empty";
        } else {
            if (edits.media_edits++ == 0) edits.first_time = time;
            edits.of_media += seconds;
            text += " from " + seconds_text(static_cast<double>(time) / static_cast<double>(track.timescale));
            if (length == 0) edits.to_the_end = true;
        }
        const uint32_t speed = big32(entry, step - 4);
        if (speed != 0x10000 && time >= 0) {
            edits.other_rate = true;
            text += " at " + number_text(static_cast<int32_t>(speed) / 65536.0) + " times the speed";
        }
        if (i <= 4) append(edits.text, i < 4 ? text : "...");
    }
    return edits;
}

// The composition offset of the first sample: where a track that has B frames begins.
int64_t first_offset(Bytes table) {
    const Bytes ctts = find_box(table, "ctts");
    return big32(ctts, 4) > 0 ? static_cast<int32_t>(big32(ctts, 12)) : 0;
}

// The frames that an edit list shows, where they are others than all.
void set_played(const Edits &edits, double seconds, Picture &picture) {
    if (edits.media_edits == 0 || !picture.constant_rate.value_or(false) || seconds <= 0 || seconds >= 1e9)
        return;
    const int64_t frames = std::llround(seconds * picture.rate.value());
    if (frames > 0 && frames != picture.frames) picture.played = frames;
}

// Sets how long a track is played; what its edit list does, where it does something.
std::string play(Movie &movie, Track &track) {
    if (track.timescale <= 0) return "";
    if (track.duration > 0) track.played = Ratio{track.duration, track.timescale}.reduced();
    const Edits edits = edits_of(movie, track);
    if (edits.media_edits + edits.empty_edits == 0 || movie.timescale <= 0) return "";
    Picture *const picture =
        track.picture >= 0 ? &movie.facts.pictures[static_cast<size_t>(track.picture)] : nullptr;
    const Ratio rate = picture ? picture->rate : Ratio{};
    const double tick = 1.0 / static_cast<double>(movie.timescale);
    const int64_t rest = track.duration + first_offset(track.table) - edits.first_time;
    const double rest_seconds = static_cast<double>(rest) / static_cast<double>(track.timescale);
    const double skipped = static_cast<double>(track.duration - rest) / static_cast<double>(track.timescale);
    // Sound that is coded begins with what its decoder needs, and ends with what fills a frame.
    const double slack = track.sound >= 0 && !track.raw ? 0.1 : 1.5 * tick;
    const bool is_single = edits.media_edits == 1 && edits.empty_edits == 0 && !edits.other_rate;
    const bool to_the_end = edits.to_the_end || std::fabs(edits.seconds - rest_seconds) <= 1.5 * tick;
    if (is_single && to_the_end && rest > 0) {
        track.played = Ratio{rest, track.timescale}.reduced();
    } else if (edits.seconds > 0 && edits.seconds < 1e9) {
        const double frames = std::round(edits.seconds * rate.value());
        if (rate.is_set() && std::fabs(frames / rate.value() - edits.seconds) <= 1.5 * tick) {
            track.played = Ratio{std::llround(frames) * rate.d, rate.n}.reduced();
        } else {
            track.played = Ratio{std::llround(edits.seconds / tick), movie.timescale}.reduced();
        }
    }
    if (picture && track.duration > 0)
        set_played(edits, is_single && to_the_end ? rest_seconds : edits.of_media, *picture);
    const bool is_plain = is_single && std::fabs(skipped) <= slack &&
                          (to_the_end || std::fabs(edits.seconds - rest_seconds) <= slack);
    return is_plain || track.duration == 0 ? "" : "track " + std::to_string(track.number) + ": " + edits.text;
}

void read_picture_track(Movie &movie, Track &track) {
    Picture picture;
    const SampleTable table(track.table);
    read_picture_entry(movie.input, track, picture, movie.facts);
    // AVC-Intra, whatever its name, fills its samples up to one size, MPEG video to a constant bit rate.
    track.stuffed = track.stuffed || table.constant_size > 0;
    set_rate(track, table, picture);
    const Ratio aspect{int64_t{track.width} * picture.height, int64_t{track.height} * picture.width};
    const bool is_likely = aspect.value() > 0.2 && aspect.value() < 5;
    // The track's size is in whole pixels.
    if (!picture.pixel_aspect.is_set() && is_likely && std::fabs(aspect.value() - 1) * picture.width > 2)
        picture.pixel_aspect = aspect.reduced();
    picture.enabled = track.enabled;
    track.picture = static_cast<int>(movie.facts.pictures.size());
    movie.facts.pictures.push_back(std::move(picture));
}

void read_sound_track(Movie &movie, Track &track) {
    Sound sound;
    read_sound_entry(movie.input, track, sound);
    if (track.timescale > 0 && sound.rate.is_set() && sound.rate.d == 1 && track.duration > 0) {
        const double samples = Ratio{track.duration, track.timescale}.value() * sound.rate.value();
        if (samples < 9e15) sound.samples = std::llround(samples);
    }
    track.sound = static_cast<int>(movie.facts.sounds.size());
    movie.facts.sounds.push_back(std::move(sound));
}

// Timecode (QuickTime File Format, timecode media): the first sample counts frames, from its track's edit on.
void read_timecode_track(Movie &movie, const Track &track) {
    const Bytes entry = track.description;
    const uint32_t flags = big32(entry, 12);
    const double frame = Ratio{big32(entry, 20), big32(entry, 16)}.value();  // seconds
    const uint32_t base = entry[24];
    const Bytes name = find_box(entry.from(26), "name");
    if (movie.facts.reel.empty()) movie.facts.reel = fixed_text(name, 4, big16(name));
    const SampleTable table(track.table);
    const uint64_t place = table.chunk_count > 0 ? table.chunk(0) : track.in_fragment;
    if (base == 0 || place == 0 || (flags & 8) != 0) return;
    const bool wide = track.codec == fourcc("tc64");
    const Bytes sample = movie.input.present(place, wide ? 8 : 4);
    if (sample.size() < (wide ? 8U : 4U)) return;
    int64_t frames = wide ? static_cast<int64_t>(big64(sample)) : static_cast<int32_t>(big32(sample));
    const Edits edits = edits_of(movie, track);
    const double skipped = Ratio{edits.first_time, track.timescale}.value();
    if (frame > 0 && skipped / frame < 1e9) frames += static_cast<int64_t>(skipped / frame + 1e-6);
    const std::string track_name = "track " + std::to_string(track.number);
    if (frames >= 0) movie.facts.add(counted_timecode(frames, base, (flags & 1) != 0, track_name));
}

uint64_t packed_bytes(uint64_t samples, Ratio packet) {
    return samples / static_cast<uint64_t>(packet.d) * static_cast<uint64_t>(packet.n);
}

// Where the last chunk of a track ends, by the last entries of its tables.
struct Reach {
    uint64_t end = 0;
    uint64_t last_size = 0;  // of the last sample, where that is known
};

Reach reach_of(const Movie &movie, const Track &track, const SampleTable &table) {
    Reach reach;
    if (table.chunk_count == 0 || table.samples == 0) return reach;
    uint64_t last = table.chunk(table.chunk_count - 1);
    uint64_t farthest = last;
    for (uint64_t i = 0; movie.is_whole && i < table.chunk_count; i++)
        farthest = std::max(farthest, table.chunk(i));
    reach.end = farthest + 1;
    const uint64_t runs = std::min<uint64_t>(big32(table.runs, 4), table.runs.size() / 12);
    const uint64_t in_chunk = runs > 0 ? big32(table.runs, 8 + 12 * (runs - 1) + 4) : 0;
    uint64_t size = 0;
    if (table.constant_size > 1 || (table.constant_size == 1 && !track.packet.is_set())) {
        size = in_chunk * table.constant_size;
        reach.last_size = table.constant_size;
    } else if (table.constant_size == 1) {
        size = packed_bytes(in_chunk, track.packet);
    } else if (in_chunk <= table.samples && in_chunk <= kMostTimes) {
        for (uint64_t i = 0; i < in_chunk; i++) size += table.size_of(table.samples - 1 - i);
        reach.last_size = table.size_of(table.samples - 1);
    }
    if (size < INT64_MAX / 2 && last < INT64_MAX / 2) reach.end = std::max(reach.end, last + size);
    if (last != farthest || size == 0) reach.last_size = 0;
    return reach;
}

std::string list_of_tracks(const std::vector<uint32_t> &numbers) {
    std::string text = numbers.size() == 1 ? "data of track " : "data of tracks ";
    for (size_t i = 0; i < numbers.size(); i++) {
        if (i > 0) text += i + 1 == numbers.size() ? " and " : ", ";
        text += std::to_string(numbers[i]);
    }
    return text;
}

void judge_extent(Movie &movie, uint64_t header_end) {
    const uint64_t size = movie.input.size();
    uint64_t claimed = header_end;
    std::vector<uint32_t> beyond;
    std::vector<std::pair<const Track *, Reach>> inside;
    bool is_damaged = false;
    bool has_data = false;
    for (const Track &track : movie.tracks) {
        if (track.is_external || movie.input.reads() > kMostReads) continue;
        const SampleTable table(track.table);
        const Reach reach = reach_of(movie, track, table);
        const bool has_chunks =
            table.chunk_count > 0 && table.chunk(0) != 0 && table.chunk(table.chunk_count - 1) != 0;
        is_damaged =
            is_damaged || (table.samples > 0 && !has_chunks) || table.sizes.empty() || table.chunks.empty();
        has_data = has_data || reach.end > 0;
        claimed = std::max(claimed, reach.end);
        if (reach.end > size) {
            beyond.push_back(track.number);
        } else {
            inside.emplace_back(&track, reach);
        }
    }
    Facts &facts = movie.facts;
    if (!beyond.empty()) return facts.cut(claimed, list_of_tracks(beyond));
    if (header_end > size || is_damaged || movie.tracks.empty()) return facts.cut(claimed, "the end of moov");
    for (const auto &[track, reach] : inside) {
        const bool is_read = movie.input.reads() <= kMostReads;
        if (is_read && is_unwritten(movie.input, *track, reach.end, reach.last_size))
            beyond.push_back(track->number);
    }
    if (!beyond.empty()) return facts.cut(claimed, list_of_tracks(beyond) + " (zeros)");
    if (has_data) facts.whole(claimed);
}

// Whether zeros stand where the last boxes of the header, or of what it ends with, would be.
bool has_unwritten_end(Bytes holder) {
    constexpr uint32_t kHolders[] = {fourcc("trak"), fourcc("mdia"), fourcc("minf"), fourcc("stbl")};
    Box last;
    each_box(holder, [&](const Box &box) { last = box; });
    const Bytes rest = holder.from(last.end());
    if (rest.size() >= 8) return is_zero(rest);
    return std::ranges::find(kHolders, last.type) != std::end(kHolders) && has_unwritten_end(last.data);
}

bool is_media(const Track &track) {
    return track.handler == fourcc("vide") || track.handler == fourcc("soun");
}

// Where no track is enabled, the flag says nothing. Tracks that are not played.
void read_enabled(Movie &movie) {
    std::string disabled;
    const bool is_said = std::ranges::any_of(
        movie.tracks, [](const Track &track) { return is_media(track) && track.enabled; });
    for (Track &track : movie.tracks) {
        if (!is_media(track)) continue;
        track.enabled = track.enabled || !is_said;
        if (!track.enabled)
            append(disabled, std::to_string(track.number) +
                                 (track.handler == fourcc("vide") ? " (picture)" : " (sound)"));
    }
    movie.facts.add_more("disabled tracks", disabled);
}

// How the main picture is turned, and its duration, unless sound is played on much longer.
void tell_main_track(Movie &movie) {
    Ratio longest;
    Ratio picture;
    const auto main = static_cast<int>(movie.facts.largest());
    for (const Track &track : movie.tracks) {
        if (!track.enabled || !is_media(track) || (track.picture >= 0 && track.picture != main)) continue;
        if (track.played.value() > longest.value()) longest = track.played;
        if (track.picture != main) continue;
        picture = track.played;
        if (track.rotation != 0) movie.facts.add_more("rotation", track.rotation);
        movie.facts.add_more("mirrored", track.mirrored);
    }
    const bool is_close = picture.is_set() && longest.value() - picture.value() < 0.1;
    if (longest.is_set()) movie.facts.duration = is_close ? picture : longest;
}

// The samples of a track say more exactly than its description what their bit rate is. Those of uncompressed
// sound need no table, and a header that is not in memory has its first picture's read alone.
void read_bit_rate(Movie &movie, const Track &track) {
    const SampleTable table(track.table);
    const bool is_read = movie.is_whole || table.constant_size != 0 || track.picture == 0;
    if (!is_read) return;
    const Timing timing = timing_of(table.times);
    const uint64_t ticks = timing.is_complete ? timing.ticks : static_cast<uint64_t>(track.duration);
    std::optional<uint64_t> bytes = table.bytes();
    if (table.constant_size == 1 && track.packet.is_set()) bytes = packed_bytes(table.samples, track.packet);
    if (bytes) set_bit_rate(track, *bytes, ticks, movie.facts);
}

void read_movie(Movie &movie, uint64_t end) {
    const Bytes mvhd = find_box(movie.moov, "mvhd");
    movie.timescale = big32(mvhd, mvhd[0] == 1 ? 20 : 12);
    movie.facts.date = date_of(mvhd[0] == 1 ? big64(mvhd, 4) : big32(mvhd, 4));
    Bytes extends;
    each_box(movie.moov, [&](const Box &box) {
        if (box.type == fourcc("mvex")) extends = box.data;
        if (box.type != fourcc("trak") || movie.tracks.size() >= 1000) return;
        movie.tracks.push_back(read_track(box.data, static_cast<uint32_t>(movie.tracks.size() + 1)));
    });
    read_enabled(movie);
    std::string edits;
    for (Track &track : movie.tracks) {
        if (track.handler == fourcc("vide")) {
            read_picture_track(movie, track);
        } else if (track.handler == fourcc("soun")) {
            read_sound_track(movie, track);
        } else if (track.handler == fourcc("tmcd")) {
            read_timecode_track(movie, track);
        }
        if (extends.empty()) read_bit_rate(movie, track);
        const std::string text = play(movie, track);
        if (track.handler != fourcc("tmcd")) append(edits, text, "; ");
        if (track.is_external) movie.facts.add_more("external data", "track " + std::to_string(track.number));
    }
    read_metadata(movie.moov, movie.facts);
    movie.facts.add_more("edit lists", edits);
    if (movie.moov.size() >= 8 && big32(movie.moov, 4) == fourcc("cmov"))
        movie.facts.problem = "the movie's header is compressed";
    const bool has_end = end <= movie.input.size();
    const bool is_read = movie.is_whole || movie.input.reads() <= kMostReads;
    if (has_end && is_read && has_unwritten_end(movie.moov)) {
        movie.facts.cut(movie.input.size(), "the end of moov (zeros)");
    } else if (!has_end && !extends.empty()) {
        movie.facts.cut(end, "the end of moov");
    } else if (!extends.empty()) {
        movie.facts.variant = "fragmented";
        read_fragments(movie.input, end, extends, movie.tracks, movie.facts);
        for (const Track &track : movie.tracks) {
            if (track.handler == fourcc("tmcd") && track.in_fragment > 0) read_timecode_track(movie, track);
        }
    } else if (movie.facts.problem.empty()) {
        judge_extent(movie, end);
    }
    tell_main_track(movie);
    movie.facts.largest_first();
}

// The name of what a file is by the major brand of its 'ftyp'; empty for pictures, which are none of ours.
std::string format_of(Bytes ftyp) {
    if (ftyp.empty() || bytes_are(ftyp, 0, "qt  ")) return "MOV";
    constexpr std::pair<const char *, const char *> kBrands[] = {
        {"M4A ", "M4A"}, {"M4B ", "M4A"}, {"M4P ", "M4A"}, {"M4V", "M4V"}, {"3gp", "3GP"}, {"3gr", "3GP"},
        {"3gs", "3GP"},  {"3ge", "3GP"},  {"3gg", "3GP"},  {"3g2", "3G2"}, {"f4v", "F4V"}, {"F4V", "F4V"},
        {"mj2", "MJ2"},  {"mjp2", "MJ2"}, {"mif1", ""},    {"msf1", ""},   {"hei", ""},    {"hev", ""},
        {"avif", ""},    {"avis", ""},    {"crx ", "CR3"},
    };
    const std::string brand = type_characters(big32(ftyp));
    for (const auto &[begin, name] : kBrands) {
        if (brand.starts_with(begin)) return name;
    }
    return "MP4";
}

}  // namespace

void set_bit_rate(const Track &track, uint64_t bytes, uint64_t ticks, Facts &facts) {
    const int64_t rate = bit_rate_of(bytes, {static_cast<int64_t>(ticks), track.timescale});
    if (rate < 0 || (track.raw && track.sound >= 0)) return;
    if (track.picture >= 0) facts.pictures[static_cast<size_t>(track.picture)].bit_rate = rate;
    if (track.sound < 0) return;
    Sound &sound = facts.sounds[static_cast<size_t>(track.sound)];
    if (sound.codec != "AC-3" || sound.bit_rate < 0) sound.bit_rate = rate;  // its own is constant
}

bool is_unwritten(Input &input, const Track &track, uint64_t end, uint64_t size) {
    constexpr uint64_t kMost = 65536;
    const bool is_media = track.picture >= 0 || track.sound >= 0;
    if (track.raw || !is_media || end < size || end > input.size()) return false;
    // Samples may be filled up with zeros.
    const Bytes head = track.stuffed ? input.present(end - size, 16) : Bytes{};
    if ((big64(head) | big64(head, 8)) != 0) return false;
    return ends_in_zeros(input, end - size, end, 16, track.dense ? 4096 : kMost);
}

void movie_facts(Input &input, Facts &facts) {
    const Bytes file = input.bytes();
    const uint64_t size = input.size();
    Bytes ftyp;
    bool has_data = false;
    bool is_segment = false;
    uint64_t at = 0;
    for (int i = 0; i < 48 && at < size; i++) {
        const Box box = box_at(file, at);
        if (!file.has(at, 8) || box.size == 0) break;
        at = box.end();
        if (box.type == fourcc("ftyp")) ftyp = box.data;
        if (box.type == fourcc("styp") || box.type == fourcc("sidx")) is_segment = true;
        has_data = has_data || box.type == fourcc("mdat");
        if (box.type != fourcc("moov")) continue;
        facts.format = format_of(ftyp);
        if (!ftyp.empty()) facts.add_more("brand", fixed_text(ftyp, 0, 4));
        const bool is_small = box.data.size() <= kWholeHeader;
        const Bytes moov = is_small ? input.present(box.start(), box.data.size()) : box.data;
        Movie movie{input, facts, moov, is_small};
        read_movie(movie, at);
        if (facts.format.empty()) facts = Facts{};
        return;
    }
    facts.format = is_segment && ftyp.empty() ? "MP4" : format_of(ftyp);
    if (facts.format.empty() || (ftyp.empty() && !has_data && !is_segment)) {
        facts.format.clear();  // pictures, or noise
    } else if (is_segment) {
        facts.variant = "segment";
    } else {
        facts.cut(std::max(at, size), "no moov");
        facts.problem = "no moov";
    }
}
