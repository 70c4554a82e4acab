#include "mxf/facts.h"

#include <algorithm>

#include "common/elementary.h"
#include "mxf/facts_descriptors.h"
#include "mxf/facts_metadata.h"
#include "mxf/facts_partitions.h"
#include "mxf/facts_sound.h"

namespace {

using namespace std::string_view_literals;

constexpr uint64_t kMostMetadata = 3 << 19;  // bytes that are read of header metadata
constexpr uint64_t kLastIndex = 131072;      // and of the end of an index
constexpr size_t kMostTracks = 512;
constexpr int64_t kSeconds = 86400;

// A part of a track that plays a track of another package.
struct Clip {
    Bytes package;
    int64_t track = 0;
    int64_t start = 0;  // in that track, at this one's rate
};

enum class TrackKind : uint8_t { other, picture, sound, data };

struct Track {
    TrackKind kind = TrackKind::other;
    int64_t id = 0;
    Ratio rate;
    int64_t duration = -1;
    std::vector<Clip> clips;
    const MetadataSet *timecode = nullptr;
};

TrackKind kind_of(Bytes definition) {
    if (!begins_as(definition.from(8), "\1\3\2\2"sv) || definition[12] > 3) return TrackKind::other;
    return static_cast<TrackKind>(definition[12]);
}

Track read_track(const Metadata &metadata, const MetadataSet &set) {
    Track track;
    track.id = Metadata::number(set, 0x4801, 0);
    track.rate = Metadata::ratio(set, 0x4B01);
    const MetadataSet *segment = metadata.referred(Metadata::item(set, 0x4803));
    if (!segment) return track;
    track.kind = kind_of(Metadata::item(*segment, 0x0201));
    track.duration = Metadata::position(*segment, 0x0202);
    std::vector<const MetadataSet *> components{segment};
    if (segment->kind == SetKind::sequence)
        components = metadata.referred_by(Metadata::item(*segment, 0x1001));
    for (const MetadataSet *component : components) {
        if (component->kind == SetKind::timecode && !track.timecode) track.timecode = component;
        if (component->kind != SetKind::source_clip) continue;
        track.clips.push_back({Metadata::item(*component, 0x1101), Metadata::number(*component, 0x1102, 0),
                               std::max<int64_t>(Metadata::position(*component, 0x1201), 0)});
    }
    return track;
}

struct Package {
    const MetadataSet *set = nullptr;
    Bytes uid;
    std::vector<Track> tracks;

    const Track *track(int64_t id) const {
        const auto found = std::ranges::find(tracks, id, &Track::id);
        return found == tracks.end() ? nullptr : &*found;
    }
    const Track *timecode_track() const {
        const auto found = std::ranges::find_if(tracks, [](const Track &t) { return t.timecode != nullptr; });
        return found == tracks.end() ? nullptr : &*found;
    }
    const Track *main_track() const {
        for (const TrackKind kind : {TrackKind::picture, TrackKind::sound, TrackKind::data}) {
            const auto found = std::ranges::find(tracks, kind, &Track::kind);
            if (found != tracks.end()) return &*found;
        }
        return nullptr;
    }
};

std::vector<Package> read_packages(const Metadata &metadata, SetKind kind) {
    std::vector<Package> packages;
    size_t tracks = 0;
    for (const MetadataSet *set : metadata.all(kind)) {
        Package package{set, Metadata::item(*set, 0x4401), {}};
        for (const MetadataSet *track : metadata.referred_by(Metadata::item(*set, 0x4403))) {
            if (++tracks <= kMostTracks) package.tracks.push_back(read_track(metadata, *track));
        }
        packages.push_back(std::move(package));
    }
    return packages;
}

// A position at one rate as one at another.
int64_t converted(int64_t position, Ratio from, Ratio to) {
    if (from == to || !from.is_set() || !to.is_set()) return position;
    const double seconds = static_cast<double>(position) / from.value();
    const double count = seconds * to.value();
    return count < 1e15 ? static_cast<int64_t>(count + 1e-6) : position;
}

std::string timestamp(Bytes b) {
    if (b.size() != 8) return "";
    return iso_date(big16(b), b[2], b[3], b[4], b[5], b[6]);
}

std::string pattern_text(Bytes label) {
    if (!begins_as(label.from(8), "\xD\1\2\1"sv)) return "";
    if (label[12] == 0x10) return "OP-Atom";
    if (label[12] < 1 || label[12] > 3 || label[13] < 1 || label[13] > 3) return "";
    return {'O', 'P', static_cast<char>('0' + label[12]), static_cast<char>('a' + label[13] - 1)};
}

std::string writer_of(const MetadataSet &identification) {
    std::string writer = Metadata::text(identification, 0x3C01);
    const std::string product = Metadata::text(identification, 0x3C02);
    std::string version = Metadata::text(identification, 0x3C04);
    if (writer.empty() || product.starts_with(writer)) {
        writer = product;
    } else if (!product.empty()) {
        writer += " " + product;
    }
    const Bytes numbers = Metadata::item(identification, 0x3C03);
    if (version.empty() && numbers.size() == 10 && big64(numbers) != 0) {
        version = std::to_string(big16(numbers)) + "." + std::to_string(big16(numbers, 2)) + "." +
                  std::to_string(big16(numbers, 4));
    }
    return version.empty() ? writer : writer + " " + version;
}

// Adds what only the stream tells.
void complete(Picture &picture, const Picture &stream) {
    picture.codec = stream.codec;
    if (picture.width == 0) picture.height = stream.height;
    // Descriptors may count in whole blocks.
    if (picture.width == 0 || (stream.width < picture.width && picture.width - stream.width < 16))
        picture.width = stream.width > 0 ? stream.width : picture.width;
    if (picture.bits == 0) picture.bits = stream.bits;
    if (picture.components.empty()) picture.components = stream.components;
    const bool is_open = picture.scan == Scan::unknown || picture.scan == Scan::interlaced;
    if (is_open && stream.scan != Scan::unknown) picture.scan = stream.scan;
    if (!picture.pixel_aspect.is_set()) picture.pixel_aspect = stream.pixel_aspect;
    if (picture.colour.primaries >= 0 || picture.colour.transfer >= 0) return;
    const Colour told = picture.colour;
    picture.colour = stream.colour;
    if (picture.colour.matrix < 0) picture.colour.matrix = told.matrix;
    if (picture.colour.full_range < 0) picture.colour.full_range = told.full_range;
}

// What index table segments tell of the edit units of their essence.
struct Index {
    Ratio rate;
    int64_t units = 0;       // that the segments reach to
    uint64_t unit_size = 0;  // where all are of one size
};

Index read_index(Input &input, uint64_t start, uint64_t end) {
    constexpr auto kSegment = "\x06\x0E\x2B\x34\x02\x53\x01"sv;
    Index index;
    end = std::min(end, input.size());
    const uint64_t from = end - std::min({end, kLastIndex, end - std::min(start, end)});
    const Bytes window = input.present(from, end - from);
    const auto bytes = window.span(0, window.size());
    const auto at = std::search(bytes.begin(), bytes.end(), kSegment.begin(), kSegment.end(),
                                [](uint8_t a, char b) { return a == static_cast<uint8_t>(b); });
    uint64_t place = static_cast<uint64_t>(at - bytes.begin());
    for (int i = 0; i < 1000; i++) {
        const KlvPlace klv = klv_at(window, place);
        if (!klv.is_set) break;
        const Bytes key = window.sub(place, 16);
        if (begins_as(key.from(8), "\xD\1\2\1\1\x10\1"sv)) {
            const MetadataSet segment{SetKind{}, window.sub(klv.value, klv.length)};
            const int64_t first = std::max<int64_t>(Metadata::position(segment, 0x3F0C), 0);
            const int64_t count = std::max<int64_t>(Metadata::position(segment, 0x3F0D), 0);
            if (count < INT64_MAX - first) index.units = std::max(index.units, first + count);
            index.rate = Metadata::ratio(segment, 0x3F0B);
            index.unit_size = static_cast<uint64_t>(Metadata::number(segment, 0x3F05, 0));
        }
        place = klv.end();
    }
    return index;
}

class Reader {
 public:
    Reader(Input &input, Facts &facts) : input_(input), facts_(facts) {}
    void read();

 private:
    void read_metadata();
    void read_tracks();
    void read_package(const Package &package);
    void read_descriptor(const Package &package, const MetadataSet &descriptor);
    void read_timecodes();
    void add_timecode(const Package &package, int64_t start, Ratio rate, const char *place);
    void read_origin();
    void read_first_picture();
    void add_conformance();
    void add_details();

    bool is_contained(const Package &package) const;
    int64_t duration_of(const Package &package, const Track *track, const MetadataSet &descriptor);
    int64_t indexed(Ratio rate);
    const Clip *clip_of(const Package &package) const;

    Input &input_;
    Facts &facts_;
    Partitions partitions_;
    Metadata metadata_;
    std::vector<Package> materials_;
    std::vector<Package> sources_;
    std::optional<Index> index_;
    std::string wrapping_;
    std::string coding_;  // labels
    std::string container_;
    const MetadataSet *main_picture_ = nullptr;
    std::string sound_content_;
    int64_t data_tracks_ = 0;
};

// The header's metadata are final where they are closed and complete; else those of the footer are better.
void Reader::read_metadata() {
    const Partition *best = &*partitions_.header;
    const std::optional<Partition> &footer = partitions_.footer;
    if (best->status != 4 && footer && footer->index > footer->metadata) best = &*footer;
    for (const Partition *partition : {best, static_cast<const Partition *>(&*partitions_.header)}) {
        if (!metadata_.empty()) break;
        const uint64_t size = input_.size();
        const uint64_t start = std::min(partition->metadata, size);
        const uint64_t length = partition->index - partition->metadata;
        metadata_.read(input_.bytes(
            start, std::min({length > 0 ? length : kMostMetadata, size - start, kMostMetadata}), 16384));
    }
    materials_ = read_packages(metadata_, SetKind::material_package);
    sources_ = read_packages(metadata_, SetKind::source_package);
}

// Packages of essence that lies in this file: those that its essence containers are linked with, or all
// where none is.
bool Reader::is_contained(const Package &package) const {
    bool any = false;
    for (const MetadataSet *container : metadata_.all(SetKind::essence_container_data)) {
        const Bytes linked = Metadata::item(*container, 0x2701);
        if (are_same(linked, package.uid)) return true;
        any = any || std::ranges::any_of(sources_, [&](const Package &p) { return are_same(p.uid, linked); });
    }
    return !any;
}

const Clip *Reader::clip_of(const Package &package) const {
    for (const Package &material : materials_) {
        for (const Track &track : material.tracks) {
            for (const Clip &clip : track.clips) {
                if (are_same(clip.package, package.uid)) return &clip;
            }
        }
    }
    return nullptr;
}

// Edit units by the index, which the footer has, or the header where all units are of one size.
int64_t Reader::indexed(Ratio rate) {
    const Partition &header = *partitions_.header;
    const std::optional<Partition> &footer = partitions_.footer;
    if (!index_) {
        index_ = Index{};
        if (footer && footer->essence > footer->index)
            index_ = read_index(input_, footer->index, footer->essence);
        if (index_->units == 0 && header.essence > header.index) {
            const Index first = read_index(input_, header.index, header.essence);
            if (index_->unit_size == 0) index_ = first;
        }
        if (index_->units == 0 && index_->unit_size > 0 && footer) {
            // All of the essence: what the last partition before the footer begins with, and what it has.
            const std::vector<uint64_t> &places = partitions_.places;
            std::optional<Partition> last = header;
            if (places.size() >= 2) last = partition_at(input_, places[places.size() - 2]);
            if (last && last->essence <= footer->at && last->body_sid != 0) {
                const uint64_t bytes = last->body_offset + (footer->at - last->essence);
                index_->units = static_cast<int64_t>(bytes / index_->unit_size);
            }
        }
    }
    if (index_->units <= 0 || !index_->rate.is_set()) return -1;
    return converted(index_->units, index_->rate, rate);
}

int64_t Reader::duration_of(const Package &package, const Track *track, const MetadataSet &descriptor) {
    const Ratio rate = track ? track->rate : Ratio{};
    int64_t duration = track ? track->duration : -1;
    if (duration < 0 || (duration == 0 && !partitions_.footer)) {
        duration = Metadata::position(descriptor, 0x3002);
        const Ratio sample_rate = Metadata::ratio(descriptor, 0x3001);
        if (duration >= 0 && sample_rate.is_set()) duration = converted(duration, sample_rate, rate);
    }
    for (const Track &other : package.tracks) {
        if (duration < 0 && other.duration > 0) duration = converted(other.duration, other.rate, rate);
    }
    return duration < 0 && rate.is_set() ? indexed(rate) : duration;
}

void Reader::read_descriptor(const Package &package, const MetadataSet &descriptor) {
    const Track *track = package.track(Metadata::number(descriptor, 0x3006, -1));
    const TrackKind kind = is_picture(descriptor) ? TrackKind::picture
                           : is_sound(descriptor) ? TrackKind::sound
                                                  : TrackKind::data;
    if (!track || track->kind != kind) {
        const auto found = std::ranges::find(package.tracks, kind, &Track::kind);
        if (found != package.tracks.end()) track = &*found;
    }
    if (facts_.pictures.size() + facts_.sounds.size() >= kMostTracks) return;
    if (wrapping_.empty()) wrapping_ = wrapping_of(Metadata::item(descriptor, 0x3004));
    if (coding_.empty() && kind == TrackKind::picture) {
        coding_ = label_digits(Metadata::item(descriptor, 0x3201));
        container_ = label_digits(Metadata::item(descriptor, 0x3004));
    }
    const int64_t duration = duration_of(package, track, descriptor);
    if (kind == TrackKind::picture) {
        Picture picture = picture_of(metadata_, descriptor);
        if (!picture.rate.is_set() && track) picture.rate = track->rate;
        picture.frames = track ? converted(duration, track->rate, picture.rate) : duration;
        if (picture.rate.is_set()) picture.constant_rate = true;
        if (facts_.pictures.empty()) main_picture_ = &descriptor;
        facts_.pictures.push_back(std::move(picture));
    } else if (kind == TrackKind::sound) {
        Sound sound = sound_of(metadata_, descriptor);
        if (duration >= 0 && track && track->rate.is_set() && sound.rate.is_set())
            sound.samples = converted(duration, track->rate, sound.rate);
        const std::string content = sound_content(metadata_, descriptor);
        if (sound_content_.find(content) == std::string::npos)
            sound_content_ += (sound_content_.empty() ? "" : "; ") + content;
        facts_.sounds.push_back(std::move(sound));
    } else if (track && track->kind == TrackKind::data) {
        data_tracks_++;
    }
}

void Reader::read_package(const Package &package) {
    const MetadataSet *descriptor = metadata_.referred(Metadata::item(*package.set, 0x4701));
    if (!descriptor) return;
    if (descriptor->kind != SetKind::multiple) {
        read_descriptor(package, *descriptor);
        return;
    }
    for (const MetadataSet *part : metadata_.referred_by(Metadata::item(*descriptor, 0x3F01)))
        read_descriptor(package, *part);
}

void Reader::read_tracks() {
    const Track *played = materials_.empty() ? nullptr : materials_.front().main_track();
    for (const Package &package : sources_) {
        const MetadataSet *descriptor = metadata_.referred(Metadata::item(*package.set, 0x4701));
        const bool is_tape = descriptor && descriptor->kind == SetKind::tape;
        if (is_tape && facts_.reel.empty()) facts_.reel = Metadata::text(*package.set, 0x4402);
        if (!is_tape && is_contained(package)) read_package(package);
    }
    std::ranges::stable_sort(facts_.pictures, std::greater{},
                             [](const Picture &p) { return uint64_t{p.width} * p.height; });
    if (played && played->duration > 0) facts_.lasts(played->duration, played->rate);
    if (!facts_.duration.is_set() && !facts_.pictures.empty() && facts_.pictures[0].frames > 0)
        facts_.lasts(facts_.pictures[0].frames, facts_.pictures[0].rate);
    if (!facts_.duration.is_set() && !facts_.sounds.empty() && facts_.sounds[0].samples > 0)
        facts_.lasts(facts_.sounds[0].samples, facts_.sounds[0].rate);
}

// The timecode of a package where what is played of it begins.
void Reader::add_timecode(const Package &package, int64_t start, Ratio rate, const char *place) {
    const Track *track = package.timecode_track();
    if (!track) return;
    const int64_t base = Metadata::number(*track->timecode, 0x1502, 0);
    const bool drop = Metadata::number(*track->timecode, 0x1503, 0) == 1;
    const int64_t first = static_cast<int64_t>(big64(Metadata::item(*track->timecode, 0x1501)));
    if (base < 1 || base > 1000 || first < 0 || first > INT64_MAX / 2) return;
    const int64_t dropped = drop ? base / 15 * (1440 - 144) : 0;
    const int64_t frames = (first + converted(start, rate, track->rate)) % (kSeconds * base - dropped);
    facts_.add({frames, static_cast<uint32_t>(base), drop, place, {}});
}

// From the material through what it plays to the tape that this was recorded from.
void Reader::read_timecodes() {
    for (const Package &material : materials_) add_timecode(material, 0, {}, "material package");
    for (const Package &file : sources_) {
        const MetadataSet *descriptor = metadata_.referred(Metadata::item(*file.set, 0x4701));
        if (!descriptor || descriptor->kind == SetKind::tape || !is_contained(file)) continue;
        const Clip *clip = clip_of(file);
        const Track *track = clip ? file.track(clip->track) : file.main_track();
        const int64_t start = clip ? clip->start : 0;
        const Ratio rate = track ? track->rate : Ratio{};
        add_timecode(file, start, rate, "file package");
        if (!track) continue;
        for (const Clip &origin : track->clips) {
            const auto found = std::ranges::find_if(
                sources_, [&](const Package &p) { return are_same(p.uid, origin.package); });
            if (found == sources_.end() || &*found == &file) continue;
            add_timecode(*found, start + origin.start, rate, "tape");
            break;
        }
    }
    // Files of many essence packages repeat them.
    std::vector<FileTimecode> once;
    for (FileTimecode &timecode : facts_.timecodes) {
        const auto is_same = [&](const FileTimecode &t) {
            return t.place == timecode.place && t.frames == timecode.frames && t.base == timecode.base;
        };
        if (std::ranges::none_of(once, is_same)) once.push_back(std::move(timecode));
    }
    facts_.timecodes = std::move(once);
}

void Reader::read_origin() {
    const std::vector<const MetadataSet *> prefaces = metadata_.all(SetKind::preface);
    std::vector<const MetadataSet *> writers;
    if (!prefaces.empty()) writers = metadata_.referred_by(Metadata::item(*prefaces[0], 0x3B06));
    if (writers.empty()) writers = metadata_.all(SetKind::identification);
    if (!writers.empty()) facts_.writer = writer_of(*writers.back());
    if (!materials_.empty()) facts_.date = timestamp(Metadata::item(*materials_[0].set, 0x4405));
    if (facts_.date.empty() && !writers.empty())
        facts_.date = timestamp(Metadata::item(*writers.back(), 0x3C06));
    if (facts_.date.empty() && !prefaces.empty())
        facts_.date = timestamp(Metadata::item(*prefaces[0], 0x3B02));
}

// What a stream without a known label begins with.
std::string codec_of(Bytes frame) {
    if (bytes_are(frame, 0, "\xFF\x10\xFF\x50")) return "JPEG XS";
    const uint64_t at = start_code(frame);
    if (at > 1 || !frame.has(at, 5)) return "";
    const uint8_t unit = frame[at + 3];
    if (unit == 0x40 || unit == 0x46) return "HEVC";
    return (unit & 0x1F) == 7 || unit == 9 ? "H.264" : unit == 0xB3 ? "MPEG-2" : "";
}

// Descriptors may leave open how a picture is coded, and which field is first: then its first frame tells.
void Reader::read_first_picture() {
    constexpr uint64_t kHeaders = 4096;
    constexpr uint8_t kPictures[] = {0x05, 0x15, 0x18};  // items of content packages, generic, with sound
    if (facts_.pictures.empty()) return;
    Picture &picture = facts_.pictures[0];
    uint64_t place = partitions_.header->essence;
    for (int i = 0; i < 16; i++) {
        const Bytes item = input_.present(place, 32, 512);
        const KlvPlace klv = klv_at(item, 0);
        if (!klv.is_set || klv.end() > input_.size() - place) return;
        const bool is_essence = begins_as(item.from(4), "\1\2\1"sv) && begins_as(item.from(8), "\xD\1\3\1"sv);
        if (is_essence && std::ranges::count(kPictures, item[12]) > 0) {
            const Bytes frame = input_.present(place + klv.value, std::min(klv.length, kHeaders));
            if (picture.codec.empty()) picture.codec = codec_of(frame);
            Picture stream;
            stream.codec = picture.codec;
            if (stream_picture(frame, stream)) complete(picture, stream);
            return;
        }
        place += klv.end();
    }
}

// Labels of a batch.
std::string labels_text(Bytes labels) {
    constexpr uint64_t kMost = 16;
    std::string text;
    for (uint64_t i = 0; i < std::min<uint64_t>(big32(labels), kMost) && labels.has(8 + 16 * i, 16); i++)
        text += (text.empty() ? "" : ", ") + label_digits(labels.sub(8 + 16 * i, 16));
    return text;
}

// Specifications and application schemes that the file says it conforms to (SMPTE ST 377-1, Preface), and
// the schemes of its descriptive metadata.
void Reader::add_conformance() {
    const std::vector<const MetadataSet *> prefaces = metadata_.all(SetKind::preface);
    if (prefaces.empty()) return;
    const MetadataSet &preface = *prefaces.front();
    facts_.add_more("conforms to", labels_text(metadata_.item(preface, "\1\2\2\x10\2\4\0\0"sv)));
    facts_.add_more("application schemes", labels_text(metadata_.item(preface, "\1\2\2\x10\2\3\0\0"sv)));
    facts_.add_more("metadata schemes", labels_text(Metadata::item(preface, 0x3B0B)));
}

void Reader::add_details() {
    facts_.add_more("header partition", partitions_.header->status_text());
    facts_.add_more("footer partition", partitions_.footer ? partitions_.footer->status_text() : "none");
    if (partitions_.count > 0) facts_.add_more("partitions", std::to_string(partitions_.count));
    facts_.add_more("wrapping", wrapping_);
    facts_.add_more("coding label", coding_);
    facts_.add_more("container label", container_);
    add_conformance();
    if (main_picture_) {
        for (const auto &[name, label] : uncoded_colours(*main_picture_, facts_.picture().colour))
            facts_.add_more(name, label_digits(label));
        facts_.add_more("mastering display", mastering_display(metadata_, *main_picture_));
    }
    facts_.add_more("sound content", sound_content_);
    if (!materials_.empty()) {
        const Package &material = materials_.front();
        facts_.add_more("clip name", Metadata::text(*material.set, 0x4402));
        facts_.add_more("umid", hex_text(material.uid));
        const Track *track = material.main_track();
        if (track && track->rate.is_set())
            facts_.add_more("edit rate", std::to_string(track->rate.n) + "/" + std::to_string(track->rate.d));
    }
    if (data_tracks_ > 0) facts_.add_more("data tracks", std::to_string(data_tracks_));
}

void Reader::read() {
    partitions_.read(input_, facts_);
    if (!partitions_.header) {
        facts_.problem = "no header partition";
        return;
    }
    facts_.variant = pattern_text(partitions_.header->pattern);
    read_metadata();
    if (metadata_.empty()) facts_.problem = "no header metadata";
    read_tracks();
    read_timecodes();
    read_origin();
    read_first_picture();
    add_details();
    const bool is_compressed = !facts_.pictures.empty() && !facts_.pictures[0].codec.empty() &&
                               facts_.pictures[0].codec != "uncompressed";
    partitions_.judge(input_, is_compressed, facts_);
}

}  // namespace

void mxf_facts(Input &input, Facts &facts) { Reader(input, facts).read(); }
