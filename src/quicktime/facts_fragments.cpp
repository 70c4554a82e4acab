#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <map>
#include <set>

#include "quicktime/facts_movie.h"

namespace {

constexpr char kStreamTime[] = "\x6D\x1D\x9B\x05\x42\xD5\x44\xE6\x80\xE2\x14\x1D\xAF\xF7\x57\xB2";
constexpr int kMostFragments = 20000;
constexpr uint64_t kFewFragments = 40;    // that are walked through although there is an index
constexpr int kLastFragments = 24;        // from the last place of it on
constexpr uint64_t kMostPlaces = 36;      // before places between the first and the last are left out
constexpr uint64_t kSmallFile = 2 << 20;  // that is read and walked all
constexpr int kNearFragments = 8;         // from each place of it on

// What the fragments of one track add up to.
struct Run {
    Track *track = nullptr;
    uint32_t default_duration = 0;
    uint32_t default_size = 0;
    bool has_start = false;
    bool is_timed = true;  // by its fragments
    uint64_t start = 0;    // decode time of the first sample, in the track's time scale
    uint64_t end = 0;      // behind the last one
    uint64_t samples = 0;
    uint64_t least = UINT64_MAX;  // duration of a sample, the first and the last one of all left out
    uint64_t most = 0;
    uint64_t in_header = 0;  // ticks of the samples of the movie's header, before the first one
    uint64_t first_duration = 0;
    uint64_t last_duration = 0;
    uint64_t ticks = 0;  // of all that were walked through
    uint64_t data_end = 0;
    uint64_t last_size = 0;
    std::optional<uint64_t> bytes = 0;  // of all samples

    void add(uint64_t duration) {
        if (samples == 0) first_duration = duration;
        if (samples > 1) {
            least = std::min(least, last_duration);
            most = std::max(most, last_duration);
        }
        last_duration = duration;
        ticks += duration;
        end += duration;
        samples++;
    }
};

struct Fragments {
    Input &input;
    std::map<uint32_t, Run> runs = {};  // by the track's id
    uint64_t last = 0;                  // where the last box ends
    bool is_cut = false;
    bool is_ended = true;    // the walk came to the end of the file
    bool is_closed = false;  // by a random access index, which nothing follows but what is no part of it
    int count = 0;
    uint64_t headers = 0;  // of all places
    uint64_t header_bytes = 0;
    uint64_t ahead = 4096;  // bytes that hold a header and all of its fragment's, most likely
    uint64_t read_to = 0;
};

// Sizes and durations of a run of samples (ISO 14496-12, 8.8.8); where its data ends.
uint64_t add_samples(Bytes trun, uint32_t default_duration, uint32_t default_size, uint64_t base,
                     uint64_t next, Run &run) {
    const uint32_t flags = big32(trun) & 0xFFFFFF;
    const uint64_t n = big32(trun, 4);
    uint64_t at = 8;
    uint64_t data = next;
    if ((flags & 1) != 0) {
        data = base + static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(big32(trun, at))));
        at += 4;
    }
    if ((flags & 4) != 0) at += 4;
    const uint64_t fields = static_cast<uint64_t>(std::popcount(flags & 0xF00U));
    for (uint64_t i = 0; i < n && (fields > 0 ? trun.has(at, 4 * fields) : i < 1000000);
         i++, at += 4 * fields) {
        const bool has_duration = (flags & 0x100) != 0;
        if (run.track->in_fragment == 0) run.track->in_fragment = data;
        run.add(has_duration ? big32(trun, at) : default_duration);
        run.last_size = (flags & 0x200) != 0 ? big32(trun, at + (has_duration ? 4 : 0)) : default_size;
        data += run.last_size;
        if (run.bytes) *run.bytes += run.last_size;
    }
    if (n > 0 && data > run.data_end) run.data_end = data;
    return data;
}

void add_fragment(Fragments &fragments, const Box &moof) {
    uint64_t next = moof.at;
    each_box(moof.data, [&](const Box &traf) {
        if (traf.type != fourcc("traf")) return;
        const Bytes tfhd = find_box(traf.data, "tfhd");
        const uint32_t flags = big32(tfhd) & 0xFFFFFF;
        const auto found = fragments.runs.find(big32(tfhd, 4));
        if (found == fragments.runs.end()) return;
        Run &run = found->second;
        uint64_t at = 8;
        const auto field = [&](uint32_t flag, unsigned bytes, uint64_t other) {
            if ((flags & flag) == 0) return other;
            at += bytes;
            return tfhd.big(at - bytes, bytes);
        };
        const uint64_t base = field(1, 8, (flags & 0x20000) != 0 ? moof.at : next);
        field(2, 4, 0);
        const uint32_t duration = static_cast<uint32_t>(field(8, 4, run.default_duration));
        const uint32_t size = static_cast<uint32_t>(field(16, 4, run.default_size));
        next = base;
        Bytes time = find_box(traf.data, "tfdt");
        each_box(traf.data, [&](const Box &box) {  // of Smooth Streaming
            if (box.type == fourcc("uuid") && bytes_are(box.data, 0, kStreamTime)) time = box.data.from(16);
        });
        if (!time.empty()) run.end = time[0] == 1 ? big64(time, 4) : big32(time, 4);
        run.is_timed = run.is_timed && !time.empty();
        if (!run.has_start) run.start = run.end;
        run.has_start = true;
        each_box(traf.data, [&](const Box &trun) {
            if (trun.type == fourcc("trun")) next = add_samples(trun.data, duration, size, base, next, run);
        });
    });
    fragments.count++;
    fragments.headers++;
    fragments.header_bytes += moof.size;
}

// Whether a random access index (mfra) is there to its last box, which has its size.
bool is_closed(Bytes file, const Box &mfra) {
    const uint64_t end = mfra.end();
    return mfra.size >= 24 && file.has(end - 16, 16) && bytes_are(file, end - 12, "mfro") &&
           big32(file, end - 4) == mfra.size;
}

// The box at an offset: a fragment's header is read once, with the header of what follows.
Box next_box(Fragments &fragments, uint64_t at) {
    constexpr uint64_t kMost = 16384;
    const Bytes file = fragments.input.bytes();
    const auto read = [&](uint64_t n) {
        fragments.input.present(at, n, 512);
        fragments.read_to = at + n;
    };
    if (at + 16 > fragments.read_to) read(fragments.ahead);
    const Box box = box_at(file, at);
    if (box.type != fourcc("moof") || box.size > file.size() - at) return box;
    if (box.end() + 16 > fragments.read_to) read(std::min(box.size + 16, kMost));
    fragments.ahead = std::clamp<uint64_t>(box.size + box.size / 4 + 16, 1024, kMost);
    return box;
}

// Walks through the boxes from an offset on; through all of them or some fragments alone.
void walk(Fragments &fragments, uint64_t at, int most) {
    const uint64_t file_size = fragments.input.size();
    const Bytes file = fragments.input.bytes();
    fragments.is_ended = false;
    for (int i = 0; i < 3 * most && fragments.count < most; i++) {
        if (at >= file_size) break;
        const Box box = next_box(fragments, at);
        if (!file.has(at, box.header) || box.size == 0) {
            // A header that is cut, or zeros in its place.
            fragments.is_cut = fragments.is_cut || !file.has(at, box.header) || big64(file, at) == 0;
            at = file_size;
            break;
        }
        constexpr uint32_t kTypes[] = {fourcc("moof"), fourcc("mdat"), fourcc("sidx"), fourcc("styp"),
                                       fourcc("mfra"), fourcc("free"), fourcc("skip"), fourcc("emsg"),
                                       fourcc("prft"), fourcc("uuid"), fourcc("wide"), fourcc("udta")};
        if (std::ranges::find(kTypes, box.type) == std::end(kTypes)) {  // bytes behind the end
            at = file_size;
            break;
        }
        if (box.type == fourcc("moof")) add_fragment(fragments, box);
        at = box.end();
        fragments.last = at;
        if (at > file_size) fragments.is_cut = true;
        if (box.type != fourcc("mfra")) continue;
        fragments.is_closed = is_closed(file, box);
        fragments.is_cut = fragments.is_cut || (!fragments.is_closed && big64(file, at - 8) == 0);
        if (fragments.is_closed) at = file_size;
    }
    fragments.is_ended = at >= file_size;
}

// Where fragments begin by an index, a segment index behind the movie's header or the one at the file's end:
// each track's first and last one. None where there is no index, or it does not reach to the end.
struct Index {
    std::set<uint64_t> places = {};
    uint64_t entries = 0;
};

Index segment_index(Input &input, uint64_t from) {
    const Bytes file = input.bytes();
    Box box = box_at(file, from);
    for (int i = 0; i < 4 && box.size > 0 && box.type != fourcc("sidx") && box.type != fourcc("moof"); i++)
        box = box_at(file, box.end());
    if (box.type != fourcc("sidx") || box.size == 0) return {};
    const Bytes sidx = box.data;
    const uint64_t wide = sidx[0] == 0 ? 0 : 8;
    const uint64_t n = big16(sidx, 22 + wide);
    uint64_t at = box.end() + (wide == 0 ? big32(sidx, 16) : big64(sidx, 20));
    uint64_t last = 0;
    for (uint64_t i = 0; i < n && sidx.has(24 + wide + 12 * i, 12); i++) {
        const uint32_t reference = big32(sidx, 24 + wide + 12 * i);
        if (reference >> 31 != 0) return {};  // an index of indices
        last = at;
        at += reference;
    }
    const uint64_t size = input.size();
    return at + 65536 < size || last >= size ? Index{} : Index{{last}, n};
}

Index random_access_index(Input &input) {
    const uint64_t size = input.size();
    const Bytes end = size >= 16 ? input.present(size - 16, 16) : Bytes{};
    const uint64_t length = big32(end, 12);
    if (!bytes_are(end, 4, "mfro") || length > size || length < 24) return {};
    const Bytes mfra = input.present(size - length, length).sub(0, 2 << 20);
    if (!bytes_are(mfra, 4, "mfra")) return {};
    Index index;
    each_box(mfra.from(8), [&](const Box &box) {
        if (box.type != fourcc("tfra")) return;
        const uint64_t wide = box.data[0] == 1 ? 8 : 4;
        const uint32_t lengths = big32(box.data, 8);
        const uint64_t step = 2 * wide + (lengths >> 4 & 3) + (lengths >> 2 & 3) + (lengths & 3) + 3;
        const uint64_t n = std::min<uint64_t>(big32(box.data, 12), (box.data.size() - 16) / step);
        if (n == 0 || box.data.size() < 16 + step) return;
        index.entries = std::max(index.entries, n);
        for (const uint64_t entry : {uint64_t{0}, n - 1})
            index.places.insert(box.data.big(16 + entry * step + wide, static_cast<unsigned>(wide)));
    });
    return index;
}

void tell_track(const Run &run, bool all_walked, Facts &facts) {
    Track &track = *run.track;
    const uint64_t ticks = run.end - run.start;  // the start may be before 0
    const bool is_timed =
        track.timescale > 0 && ticks > 0 && ticks <= INT64_MAX && (all_walked || run.is_timed);
    if (!is_timed && track.picture >= 0) {  // the header counts its own samples alone
        int64_t &frames = facts.pictures[static_cast<size_t>(track.picture)].frames;
        frames = all_walked ? frames + static_cast<int64_t>(run.samples) : -1;
    }
    if (!is_timed) return;
    if (track.duration < static_cast<int64_t>(ticks)) track.duration = static_cast<int64_t>(ticks);
    track.played = Ratio{track.duration, track.timescale}.reduced();
    if (run.bytes) set_bit_rate(track, *run.bytes, ticks, facts);
    if (track.sound >= 0) {
        Sound &sound = facts.sounds[static_cast<size_t>(track.sound)];
        const double samples = track.played.value() * sound.rate.value();
        if (sound.rate.is_set() && samples < 9e15) sound.samples = std::llround(samples);
    }
    if (track.picture < 0) return;
    Picture &picture = facts.pictures[static_cast<size_t>(track.picture)];
    constexpr int64_t kMostSamples = 1 << 30;  // in the header and behind it: their sum and a time scale fit
    if (run.samples == 0 || run.samples > kMostSamples || picture.frames > kMostSamples) return;
    const auto samples = static_cast<int64_t>(run.samples);
    const bool is_constant = run.samples > 2 && run.least == run.most && run.most > 0;
    if (is_constant) picture.rate = rate_of(track.timescale, static_cast<int64_t>(run.most));
    if (all_walked) {
        picture.frames = samples + std::max<int64_t>(picture.frames, 0);
        const bool is_all = is_constant && run.first_duration == run.most;
        if (run.samples > 2) picture.constant_rate = is_all;
        if (!is_all) picture.rate = rate_of(picture.frames * track.timescale, static_cast<int64_t>(ticks));
        return;
    }
    // Between the places walked through all are like these. Durations that differ by a tick are a rate that
    // the time scale cannot express.
    const int64_t first = std::max<int64_t>(picture.frames, 0) + 1;
    const uint64_t rest = ticks - std::min(ticks, run.in_header + run.first_duration);
    picture.frames = -1;
    if (is_constant && rest % run.most == 0) picture.frames = first + static_cast<int64_t>(rest / run.most);
    if (run.samples <= 2 || run.most - run.least != 1) return;
    const Ratio mean = rate_of(Ratio{samples * track.timescale, static_cast<int64_t>(run.ticks)}.value());
    if (mean.d != 1 && mean.d != 1001) return;
    picture.rate = mean;
    picture.frames =
        first + std::llround(Ratio{static_cast<int64_t>(rest), track.timescale}.value() * mean.value());
}

// What was not added up a movie tells of what its writer meant to do.
void forget_bit_rates(Facts &facts) {
    for (Picture &picture : facts.pictures) picture.bit_rate = -1;
    for (Sound &sound : facts.sounds) {
        if (sound.codec != "AC-3") sound.bit_rate = -1;
    }
}

void judge(Fragments &fragments, const Index &index, Facts &facts) {
    const uint64_t size = fragments.input.size();
    const bool is_short = index.entries != 0 && fragments.last <= *index.places.rbegin();
    fragments.is_cut = fragments.is_cut || (is_short && fragments.is_ended);
    uint64_t claimed = fragments.last;
    for (auto &[id, run] : fragments.runs) {
        claimed = std::max(claimed, run.data_end);
        const bool is_last_unwritten = fragments.runs.size() < 16 &&
                                       is_unwritten(fragments.input, *run.track, run.data_end, run.last_size);
        fragments.is_cut = fragments.is_cut || run.data_end > size || is_last_unwritten;
    }
    if (fragments.is_cut) {
        facts.cut(std::max(claimed, size), "the last fragment");
    } else if ((index.entries != 0 || fragments.is_closed) && fragments.is_ended) {
        facts.whole(claimed);
    } else {
        facts.extent.claimed = claimed;  // what ends with a fragment may have had more of them
    }
}

}  // namespace

void read_fragments(Input &input, uint64_t from, Bytes extends, std::vector<Track> &tracks, Facts &facts) {
    Fragments fragments{input};
    for (Track &track : tracks) {
        Run &run = fragments.runs[track.id];
        run.track = &track;
        // The movie's header may have samples of its own, which the fragments go on behind.
        const SampleTable table(track.table);
        run.has_start = table.samples > 0;
        if (!run.has_start) continue;
        run.in_header = run.end = static_cast<uint64_t>(track.duration);
        run.bytes = table.bytes();
    }
    each_box(extends, [&](const Box &box) {
        const auto found = fragments.runs.find(big32(box.data, 4));
        if (box.type != fourcc("trex") || found == fragments.runs.end()) return;
        found->second.default_duration = big32(box.data, 12);
        found->second.default_size = big32(box.data, 16);
    });
    const Index at_end = random_access_index(input);
    Index index = at_end.entries != 0 ? at_end : segment_index(input, from);
    const bool is_small = input.size() <= kSmallFile;
    if (is_small) input.present(0, input.size());
    const bool by_index = !is_small && index.entries > kFewFragments && *index.places.begin() >= from;
    if (!by_index) walk(fragments, from, kMostFragments);
    index.places.insert(from);
    for (auto place = index.places.begin(); by_index && place != index.places.end(); ++place) {
        const bool is_last = std::next(place) == index.places.end();
        if (*place < fragments.last || (!is_last && input.reads() > kMostPlaces)) continue;
        fragments.count = 0;
        walk(fragments, *place, is_last ? kLastFragments : kNearFragments);
    }
    const bool all_walked = !by_index && fragments.is_ended;
    for (auto &[id, run] : fragments.runs) {
        if (all_walked) break;
        run.bytes.reset();
        // A track alone has all but the fragments' headers, of which the others are like those seen.
        const std::optional<uint64_t> in_header = SampleTable(run.track->table).bytes();
        const uint64_t between = fragments.headers == 0 ? 0 : fragments.header_bytes / fragments.headers + 8;
        const uint64_t all = run.data_end - std::min(run.data_end, run.track->in_fragment);
        if (by_index && tracks.size() == 1 && in_header && all / index.entries > between)
            run.bytes = *in_header + all - (index.entries - 1) * between;
    }
    if (!all_walked) forget_bit_rates(facts);
    for (const auto &[id, run] : fragments.runs) tell_track(run, all_walked, facts);
    judge(fragments, index, facts);
}
