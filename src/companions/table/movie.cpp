// The dump of a QuickTime movie: tracks, their formats, rates and timecode.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "companions/table/movie.h"
#include "companions/table/values.h"

namespace {

using enum Column;

constexpr size_t kDescriptionBytes = 80;
constexpr uint64_t kLevels = 64;
constexpr size_t kMostTracks = 1000;
// What a movie's file consists of.
constexpr const char *kFileAtoms[] = {"ftyp", "moov", "mdat", "moof", "styp", "free", "skip", "wide", "pnot"};

struct Track {
    std::string kind;  // "vide", "soun", "tmcd"
    std::string codec;
    int64_t width = -1;
    int64_t height = -1;
    int64_t channels = -1;
    int64_t bits = -1;
    std::string sample_rate;
    int64_t timescale = -1;
    int64_t duration = -1;
    int64_t count = -1;            // of the samples of the entry of the time table that is read
    int64_t most_samples = -1;     // of any entry
    int64_t sample_duration = -1;  // of that one
    int64_t first_chunk = -1;
    int64_t timecode_flags = -1;
    int64_t timecode_base = -1;
    std::string description;  // bytes of a description that the dump shows in hexadecimal
    std::string reel;
};

// "12 (0xC)" and "1.5 (0x18000)" without what is in brackets.
std::string_view without_hex(std::string_view value) { return trimmed(value.substr(0, value.find(" (0x"))); }

// The bytes of a row of a hex dump: "0010: 00 01 02 ... text".
void append_bytes(std::string_view row, std::string &bytes) {
    const size_t colon = row.find(": ");
    if (colon == std::string_view::npos) return;
    row.remove_prefix(colon + 2);
    for (size_t i = 0; i < 16 && row.size() >= 3 * i + 2 && bytes.size() < kDescriptionBytes; i++) {
        const int64_t byte = number_in(row.substr(3 * i, 2), 16);
        if (byte < 0) return;
        bytes += static_cast<char>(byte);
    }
}

int64_t big_endian(const std::string &bytes, size_t at, size_t size) {
    if (at + size > bytes.size()) return -1;
    int64_t number = 0;
    for (size_t i = 0; i < size; i++) number = number << 8 | static_cast<uint8_t>(bytes[at + i]);
    return number;
}

// "1_5" is the offset 2^32 + 5.
int64_t offset_in(std::string_view value) {
    const size_t bar = value.find('_');
    if (bar == std::string_view::npos) return number_in(value);
    const int64_t high = number_in(value.substr(0, bar));
    const int64_t low = number_in(value.substr(bar + 1));
    return high < 0 || low < 0 || high > INT32_MAX ? -1 : high << 32 | low;
}

class MovieReader : public DumpReader {
 public:
    void line(std::string_view line) override {
        std::string_view text = trimmed(line);
        if (text.starts_with("ATOM ")) {
            open_atom(text.substr(5));
        } else if (wanted_) {
            take_field(text);
        }
    }

    void finish(Row &row) override {
        if (!known_) {  // whatever has such a name is dumped as a movie
            row[problem] = "no QuickTime movie";
            return;
        }
        close_track();
        row.offer(format, "QuickTime");
        const double scale = static_cast<double>(timescale_);
        if (scale > 0 && duration_ > 0) row[duration] = seconds_text(static_cast<double>(duration_) / scale);
        for (const Track &track : tracks_) {
            if (track.kind == "vide") finish_video(track, row);
        }
        for (const Track &track : tracks_) {
            if (track.kind == "soun") finish_sound(track, row);
            if (track.kind == "tmcd") finish_timecode(track, row);
        }
        row[channels] = positive_text(channels_);
    }

 private:
    // "3 mdhd (0x6468646D) size=32 ..."
    void open_atom(std::string_view text) {
        const size_t blank = text.find(' ');
        const int64_t depth = number_in(text.substr(0, blank));
        if (blank == std::string_view::npos || depth < 0 || depth > static_cast<int64_t>(kLevels)) return;
        const std::string type(text.substr(blank + 1, 4));
        known_ = known_ || (depth == 0 && std::ranges::find(kFileAtoms, type) != std::end(kFileAtoms));
        if (depth == 0 && seen_movie_) done_ = true;
        seen_movie_ = seen_movie_ || (depth == 0 && type == "moov");
        path_.resize(static_cast<size_t>(depth));
        parent_ = path_.empty() ? std::string() : path_.back();
        path_.push_back(type);
        atom_ = type;
        if (type == "trak") {
            close_track();
            in_track_ = true;
        }
        described_ = std::find(path_.begin(), path_.end(), "stsd") != path_.end();
        if (parent_ == "stsd") track_.codec = track_.codec.empty() ? type : track_.codec;
        wanted_ = described_ || atom_ == "mvhd" || atom_ == "mdhd" || atom_ == "tkhd" || atom_ == "stts" ||
                  (atom_ == "hdlr" && parent_ == "mdia") || atom_ == "stco" || atom_ == "co64";
    }

    void close_track() {
        if (in_track_ && tracks_.size() < kMostTracks) tracks_.push_back(std::move(track_));
        track_ = Track();
        in_track_ = false;
    }

    void take_field(std::string_view text) {
        if (described_ && (text.starts_with("data ") || text.starts_with("name "))) {
            if (parent_ == "stsd" && text.starts_with("data "))
                append_bytes(text.substr(5), track_.description);
            if (parent_ == "tmcd" && atom_ == "name") append_bytes(text.substr(5), track_.reel);
            return;
        }
        const size_t equals = text.find('=');
        if (equals == std::string_view::npos) return;
        const std::string_view name = text.substr(0, equals);
        const std::string_view value = without_hex(text.substr(equals + 1));
        if (parent_ == "stsd") {
            take_description(name, value);
        } else if (atom_ == "mvhd") {
            set(name, "timescale", value, timescale_);
            set(name, "duration", value, duration_);
        } else if (atom_ == "mdhd") {
            set(name, "timescale", value, track_.timescale);
            set(name, "duration", value, track_.duration);
        } else if (atom_ == "tkhd") {
            set(name, "track_width", value, track_.width);
            set(name, "track_height", value, track_.height);
        } else if (atom_ == "hdlr") {
            if (name == "subtype") track_.kind = value;
        } else if (atom_ == "stts") {
            take_time(name, value);
        } else if (name == "data[0]" && track_.first_chunk < 0) {
            track_.first_chunk = offset_in(value);
        }
    }

    static void set(std::string_view name, std::string_view wanted, std::string_view value, int64_t &number) {
        if (name == wanted) number = number_in(value);
    }

    void take_description(std::string_view name, std::string_view value) {
        set(name, "width", value, track_.width);
        set(name, "height", value, track_.height);
        set(name, "nchannels", value, track_.channels);
        set(name, "numAudioChannels", value, track_.channels);
        set(name, "samplesize", value, track_.bits);
        set(name, "constBitsPerChannel", value, track_.bits);
        set(name, "timecode_flags", value, track_.timecode_flags);
        set(name, "number_of_frames", value, track_.timecode_base);
        if (name == "samplerate" || name == "audioSampleRate") track_.sample_rate = as_rate(value);
    }

    // The rate is that of most samples: the last one often has another duration.
    void take_time(std::string_view name, std::string_view value) {
        if (name.ends_with("].count")) track_.count = number_in(value);
        if (!name.ends_with("].duration") || track_.count <= track_.most_samples) return;
        track_.most_samples = track_.count;
        track_.sample_duration = number_in(value);
    }

    static void finish_video(const Track &track, Row &row) {
        const bool hidden = !track.description.empty();
        const int64_t described_width = hidden ? big_endian(track.description, 24, 2) : -1;
        const int64_t described_height = hidden ? big_endian(track.description, 26, 2) : -1;
        row.offer(codec, as_text(track.codec));
        row.offer(width, positive_text(described_width > 0 ? described_width : track.width));
        row.offer(height, positive_text(described_height > 0 ? described_height : track.height));
        if (track.timescale > 0 && track.sample_duration > 0)
            row.offer(frame_rate, rate_text(static_cast<double>(track.timescale) /
                                            static_cast<double>(track.sample_duration)));
    }

    void finish_sound(const Track &track, Row &row) {
        const bool hidden = !track.description.empty();
        const int64_t count = hidden ? big_endian(track.description, 16, 2) : track.channels;
        if (count > 0) channels_ += count;
        row.offer(sample_rate,
                  hidden ? positive_text(big_endian(track.description, 24, 2)) : track.sample_rate);
        // A picture's codec and depth come first.
        if (row[width].empty()) {
            row.offer(codec, as_text(track.codec));
            row.offer(bit_depth, positive_text(hidden ? big_endian(track.description, 18, 2) : track.bits));
        }
    }

    static void finish_timecode(const Track &track, Row &row) {
        row.offer(reel, track.reel);
        if (!row[timecode].empty() || track.first_chunk < 0 || track.timecode_base < 1) return;
        row[kTimecodeOffset] = whole_text(track.first_chunk);
        row[kTimecodeBase] = whole_text(track.timecode_base);
        if (track.timecode_flags > 0) row[kTimecodeDrop] = positive_text(track.timecode_flags & 1);
    }

    std::vector<std::string> path_;
    std::string parent_;
    std::string atom_;
    bool wanted_ = false;
    bool described_ = false;
    bool known_ = false;
    bool seen_movie_ = false;
    bool in_track_ = false;
    Track track_;
    std::vector<Track> tracks_;
    int64_t timescale_ = -1;
    int64_t duration_ = -1;
    int64_t channels_ = 0;
};

}  // namespace

std::unique_ptr<DumpReader> movie_reader() { return std::make_unique<MovieReader>(); }

std::string movie_timecode_switch(const Row &row) {
    const int64_t offset = number_in(row[kTimecodeOffset]);
    if (offset < 0) return "";
    char text[64];
    std::snprintf(text, sizeof text, "-h=%llx,%llx", static_cast<unsigned long long>(offset),
                  static_cast<unsigned long long>(offset % 16 + 4));
    return text;
}

void set_movie_timecode(Row &row, std::string_view hex_dump) {
    std::string bytes;
    while (!hex_dump.empty() && bytes.size() < 32) {
        append_bytes(hex_dump.substr(0, hex_dump.find('\n')), bytes);
        const size_t end = hex_dump.find('\n');
        hex_dump.remove_prefix(end == std::string_view::npos ? hex_dump.size() : end + 1);
    }
    const size_t at = static_cast<size_t>(number_in(row[kTimecodeOffset]) % 16);
    row[timecode] = timecode_of_frames(big_endian(bytes, at, 4), number_in(row[kTimecodeBase]),
                                       !row[kTimecodeDrop].empty());
}
