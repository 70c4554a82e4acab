#include <algorithm>

#include "common/elementary.h"
#include "main/facts_of.h"
#include "mxf/facts_metadata.h"
#include "mxf/facts_partitions.h"

namespace {

using namespace std::string_view_literals;

constexpr uint64_t kMostMetadata = 3 << 19;  // bytes that are read of header metadata
constexpr uint64_t kLastIndex = 131072;      // and of the end of an index
constexpr size_t kMostTracks = 512;

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

struct Package {
    const MetadataSet *set = nullptr;
    Bytes uid;
    const MetadataSet *descriptor = nullptr;
    std::vector<Track> tracks;

    bool is_tape() const { return descriptor && descriptor->kind == SetKind::tape; }
    // The first track whose member has a value; null where none has.
    template <typename Member, typename Value>
    const Track *first(Member member, Value value) const {
        const auto found = std::ranges::find(tracks, value, member);
        return found == tracks.end() ? nullptr : &*found;
    }
    const Track *main_track() const {
        for (const TrackKind kind : {TrackKind::picture, TrackKind::sound, TrackKind::data}) {
            if (const Track *track = first(&Track::kind, kind)) return track;
        }
        return nullptr;
    }
};

// What index table segments tell of the edit units of their essence.
struct Index {
    Ratio rate;
    int64_t units = 0;       // that the segments reach to
    uint64_t unit_size = 0;  // where all are of one size
};

struct File {
    Input &input;
    Facts &facts;
    Partitions partitions = {};
    Metadata metadata = {};
    std::vector<Package> materials = {};
    std::vector<Package> sources = {};
    std::optional<Index> index = {};
    std::string wrapping = {};
    std::string coding = {};  // labels
    std::string container = {};
    const MetadataSet *main_picture = nullptr;
    std::string sound_content = {};
    int64_t data_tracks = 0;

    const Package *source(Bytes uid) const {
        const auto found = std::ranges::find_if(sources, [&](const auto &p) { return are_same(p.uid, uid); });
        return found == sources.end() ? nullptr : &*found;
    }
};

Track read_track(const Metadata &metadata, const MetadataSet &set) {
    Track track;
    track.id = set.number(0x4801);
    track.rate = set.ratio(0x4B01);
    const MetadataSet *segment = metadata.referred(set.item(0x4803));
    if (!segment) return track;
    const Bytes definition = segment->item(0x0201);
    if (begins_as(definition.from(8), "\1\3\2\2"sv) && definition[12] <= 3)
        track.kind = static_cast<TrackKind>(definition[12]);
    track.duration = segment->position(0x0202);
    std::vector<const MetadataSet *> components{segment};
    if (segment->kind == SetKind::sequence) components = metadata.referred_by(segment->item(0x1001));
    for (const MetadataSet *component : components) {
        if (component->kind == SetKind::timecode && !track.timecode) track.timecode = component;
        if (component->kind != SetKind::source_clip) continue;
        track.clips.push_back({component->item(0x1101), component->number(0x1102),
                               std::max<int64_t>(component->position(0x1201), 0)});
    }
    return track;
}

std::vector<Package> read_packages(const Metadata &metadata, SetKind kind) {
    std::vector<Package> packages;
    size_t tracks = 0;
    for (const MetadataSet *set : metadata.all(kind)) {
        Package package{set, set->item(0x4401), metadata.referred(set->item(0x4701)), {}};
        for (const MetadataSet *track : metadata.referred_by(set->item(0x4403))) {
            if (++tracks <= kMostTracks) package.tracks.push_back(read_track(metadata, *track));
        }
        packages.push_back(std::move(package));
    }
    return packages;
}

// The header's metadata are final where they are closed and complete; else those of the footer are better.
void read_metadata(File &file) {
    const Partition &header = *file.partitions.header;
    const std::optional<Partition> &footer = file.partitions.footer;
    const bool has_better = header.status != 4 && footer && footer->index > footer->metadata;
    const uint64_t size = file.input.size();
    for (const Partition *partition : {has_better ? &*footer : &header, &header}) {
        if (!file.metadata.empty()) break;
        const uint64_t start = std::min(partition->metadata, size);
        const uint64_t told = partition->index - partition->metadata;
        const uint64_t length = std::min({told > 0 ? told : kMostMetadata, size - start, kMostMetadata});
        file.metadata.read(file.input.bytes(start, length, 16384));
    }
    file.materials = read_packages(file.metadata, SetKind::material_package);
    file.sources = read_packages(file.metadata, SetKind::source_package);
}

// A position at one rate as one at another.
int64_t converted(int64_t position, Ratio from, Ratio to) {
    if (from == to || !from.is_set() || !to.is_set()) return position;
    const double count = static_cast<double>(position) / from.value() * to.value();
    return count < 1e15 ? static_cast<int64_t>(count + 1e-6) : position;
}

Index read_index(Input &input, uint64_t start, uint64_t end) {
    Index index;
    end = std::min(end, input.size());
    const uint64_t from = end - std::min({end, kLastIndex, end - std::min(start, end)});
    const Bytes window = input.present(from, end - from);
    uint64_t place = find_in(window, "\x06\x0E\x2B\x34\x02\x53\x01"sv);
    for (int i = 0; i < 1000; i++) {
        const KlvPlace klv = klv_at(window, place);
        if (!klv.is_set) break;
        if (begins_as(window.sub(place + 8, 8), "\xD\1\2\1\1\x10\1"sv)) {
            const MetadataSet segment{SetKind{}, window.sub(klv.value, klv.length)};
            const int64_t first = std::max<int64_t>(segment.position(0x3F0C), 0);
            const int64_t count = std::max<int64_t>(segment.position(0x3F0D), 0);
            if (count < INT64_MAX - first) index.units = std::max(index.units, first + count);
            index.rate = segment.ratio(0x3F0B);
            index.unit_size = static_cast<uint64_t>(segment.number(0x3F05));
        }
        place = klv.end();
    }
    return index;
}

// Edit units by the index, which the footer has, or the header where all units are of one size.
Index find_index(const File &file) {
    const Partition &header = *file.partitions.header;
    const std::optional<Partition> &footer = file.partitions.footer;
    Index index;
    if (footer && footer->essence > footer->index)
        index = read_index(file.input, footer->index, footer->essence);
    if (index.units == 0 && header.essence > header.index) {
        const Index first = read_index(file.input, header.index, header.essence);
        if (index.unit_size == 0) index = first;
    }
    if (index.units > 0 || index.unit_size == 0 || !footer) return index;
    // All of the essence: what the last partition before the footer begins with, and what it has.
    const std::vector<uint64_t> &places = file.partitions.places;
    std::optional<Partition> last = header;
    if (places.size() >= 2) last = partition_at(file.input, places[places.size() - 2]);
    if (last && last->essence <= footer->at && last->body_sid != 0) {
        const uint64_t bytes = last->body_offset + (footer->at - last->essence);
        index.units = static_cast<int64_t>(bytes / index.unit_size);
    }
    return index;
}

int64_t duration_of(File &file, const Package &package, const Track *track, const MetadataSet &descriptor) {
    const Ratio rate = track ? track->rate : Ratio{};
    int64_t duration = track ? track->duration : -1;
    const auto is_open = [&] { return duration < 0 || (duration == 0 && !file.partitions.footer); };
    if (is_open()) {
        duration = descriptor.position(0x3002);
        duration = is_open() ? -1 : converted(duration, descriptor.ratio(0x3001), rate);
    }
    for (const Track &other : package.tracks) {
        if (duration < 0 && other.duration > 0) duration = converted(other.duration, other.rate, rate);
    }
    if (duration >= 0 || !rate.is_set()) return duration;
    if (!file.index) file.index = find_index(file);
    if (file.index->units <= 0 || !file.index->rate.is_set()) return -1;
    return converted(file.index->units, file.index->rate, rate);
}

void read_descriptor(File &file, const Package &package, const MetadataSet &descriptor) {
    Facts &facts = file.facts;
    const TrackKind kind = is_picture(descriptor) ? TrackKind::picture
                           : is_sound(descriptor) ? TrackKind::sound
                                                  : TrackKind::data;
    const Track *track = package.first(&Track::id, descriptor.number(0x3006, -1));
    const Track *same = track && track->kind == kind ? track : package.first(&Track::kind, kind);
    if (same) track = same;
    if (facts.pictures.size() + facts.sounds.size() >= kMostTracks) return;
    if (file.wrapping.empty()) file.wrapping = wrapping_of(descriptor.item(0x3004));
    if (file.coding.empty() && kind == TrackKind::picture) {
        file.coding = label_digits(descriptor.item(0x3201));
        file.container = label_digits(descriptor.item(0x3004));
    }
    const int64_t duration = duration_of(file, package, track, descriptor);
    if (kind == TrackKind::picture) {
        Picture picture = picture_of(file.metadata, descriptor);
        if (!picture.rate.is_set() && track) picture.rate = track->rate;
        picture.frames = track ? converted(duration, track->rate, picture.rate) : duration;
        if (picture.rate.is_set()) picture.constant_rate = true;
        if (facts.pictures.empty()) file.main_picture = &descriptor;
        facts.pictures.push_back(std::move(picture));
    } else if (kind == TrackKind::sound) {
        Sound sound = sound_of(file.metadata, descriptor);
        if (duration >= 0 && track && track->rate.is_set() && sound.rate.is_set())
            sound.samples = converted(duration, track->rate, sound.rate);
        const std::string content = sound_content(file.metadata, descriptor);
        if (file.sound_content.find(content) == std::string::npos) append(file.sound_content, content, "; ");
        facts.sounds.push_back(std::move(sound));
    } else if (track && track->kind == TrackKind::data) {
        file.data_tracks++;
    }
}

// Whether a package is essence that lies in this file: those that its essence containers are linked with, or
// all where none is.
bool is_contained(const File &file, const Package &package) {
    bool any = false;
    for (const MetadataSet *container : file.metadata.all(SetKind::essence_container_data)) {
        const Bytes linked = container->item(0x2701);
        if (are_same(linked, package.uid)) return true;
        any = any || file.source(linked);
    }
    return !any;
}

void read_tracks(File &file) {
    Facts &facts = file.facts;
    for (const Package &package : file.sources) {
        const MetadataSet *descriptor = package.descriptor;
        if (package.is_tape() && facts.reel.empty()) facts.reel = package.set->text(0x4402);
        if (package.is_tape() || !descriptor || !is_contained(file, package)) continue;
        std::vector<const MetadataSet *> parts{descriptor};
        if (descriptor->kind == SetKind::multiple)
            parts = file.metadata.referred_by(descriptor->item(0x3F01));
        for (const MetadataSet *part : parts) read_descriptor(file, package, *part);
    }
    facts.largest_first();
    const auto last = [&](int64_t frames, Ratio rate) {
        if (!facts.duration.is_set() && frames > 0) facts.lasts(frames, rate);
    };
    const Track *played = file.materials.empty() ? nullptr : file.materials[0].main_track();
    if (played) last(played->duration, played->rate);
    if (played && played->kind == TrackKind::picture && !facts.pictures.empty()) {
        Picture &main = facts.pictures[0];
        const int64_t shown = converted(played->duration, played->rate, main.rate);
        if (shown > 0 && shown < main.frames) main.played = shown;
    }
    if (!facts.pictures.empty()) last(facts.pictures[0].frames, facts.pictures[0].rate);
    if (!facts.sounds.empty()) last(facts.sounds[0].samples, facts.sounds[0].rate);
}

// The timecode of a package where what is played of it begins. Files of many essence packages repeat them.
void add_timecode(File &file, const Package &package, int64_t start, Ratio rate, const char *place) {
    const auto has_timecode = [](const Track &track) { return track.timecode != nullptr; };
    const auto track = std::ranges::find_if(package.tracks, has_timecode);
    if (track == package.tracks.end()) return;
    const int64_t base = track->timecode->number(0x1502);
    const bool drop = track->timecode->number(0x1503) == 1;
    const int64_t first = track->timecode->position(0x1501);
    if (base < 1 || base > 1000 || first < 0 || first > INT64_MAX / 2) return;
    // Tracks may have several edit units a frame of their timecode.
    const int64_t units = std::max<int64_t>(base_of(track->rate), base) / base;
    FileTimecode timecode = counted_timecode(first + converted(start, rate, track->rate) / units,
                                             static_cast<uint32_t>(base), drop, place);
    const auto is_same = [&](const FileTimecode &t) {
        return t.place == timecode.place && t.frames == timecode.frames && t.base == timecode.base;
    };
    if (std::ranges::none_of(file.facts.timecodes, is_same)) file.facts.add(std::move(timecode));
}

const Clip *clip_of(const File &file, const Package &package) {
    for (const Package &material : file.materials) {
        for (const Track &track : material.tracks) {
            for (const Clip &clip : track.clips) {
                if (are_same(clip.package, package.uid)) return &clip;
            }
        }
    }
    return nullptr;
}

// From the material through what it plays to the tape that this was recorded from.
void read_timecodes(File &file) {
    for (const Package &material : file.materials) add_timecode(file, material, 0, {}, "material package");
    for (const Package &package : file.sources) {
        if (!package.descriptor || package.is_tape() || !is_contained(file, package)) continue;
        const Clip *clip = clip_of(file, package);
        const Track *track = clip ? package.first(&Track::id, clip->track) : package.main_track();
        const int64_t start = clip ? clip->start : 0;
        const Ratio rate = track ? track->rate : Ratio{};
        add_timecode(file, package, start, rate, "file package");
        if (!track) continue;
        for (const Clip &origin : track->clips) {
            const Package *tape = file.source(origin.package);
            if (!tape || tape == &package) continue;
            add_timecode(file, *tape, start + origin.start, rate, "tape");
            break;
        }
    }
}

std::string timestamp(Bytes b) {
    return b.size() == 8 ? iso_date(big16(b), b[2], b[3], b[4], b[5], b[6]) : "";
}

std::string writer_of(const MetadataSet &identification) {
    std::string writer = product_text(identification.text(0x3C01), identification.text(0x3C02));
    std::string version = identification.text(0x3C04);
    const Bytes numbers = identification.item(0x3C03);
    const bool is_numbered = version.empty() && numbers.size() == 10 && big64(numbers) != 0;
    for (uint64_t i = 0; i < 3 && is_numbered; i++)
        append(version, std::to_string(big16(numbers, 2 * i)), ".");
    append(writer, version, " ");
    return writer;
}

void read_origin(File &file) {
    const MetadataSet none{};
    const std::vector<const MetadataSet *> prefaces = file.metadata.all(SetKind::preface);
    const MetadataSet &preface = prefaces.empty() ? none : *prefaces[0];
    std::vector<const MetadataSet *> writers = file.metadata.referred_by(preface.item(0x3B06));
    if (writers.empty()) writers = file.metadata.all(SetKind::identification);
    const MetadataSet &writer = writers.empty() ? none : *writers.back();
    file.facts.writer = writer_of(writer);
    const Bytes made = file.materials.empty() ? Bytes{} : file.materials[0].set->item(0x4405);
    for (const Bytes date : {made, writer.item(0x3C06), preface.item(0x3B02)}) {
        if (file.facts.date.empty()) file.facts.date = timestamp(date);
    }
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

// Adds what only the stream tells.
void complete(Picture &picture, const Picture &stream) {
    picture.codec = stream.codec;
    if (picture.width == 0) picture.height = stream.height;
    // Descriptors may count in whole blocks.
    const uint32_t width = picture.width;
    if (width == 0 || (stream.width < width && width - stream.width < 16))
        picture.width = stream.width > 0 ? stream.width : width;
    if (picture.width < width) {
        const Ratio aspect = picture.pixel_aspect;
        if (aspect.n != aspect.d && std::max(aspect.n, aspect.d) < INT32_MAX)
            picture.pixel_aspect = Ratio{aspect.n * width, aspect.d * picture.width}.reduced();
        if (picture.coded_width == picture.width && picture.coded_height == picture.height)
            picture.coded_width = picture.coded_height = 0;
    }
    if (picture.bits == 0) picture.bits = stream.bits;
    // Subsampling has no number for what is grey.
    if (picture.components.empty() || stream.components == "Y") picture.components = stream.components;
    const bool is_open = picture.scan == Scan::unknown || picture.scan == Scan::interlaced;
    if (is_open && stream.scan != Scan::unknown) picture.scan = stream.scan;
    if (!picture.pixel_aspect.is_set()) picture.pixel_aspect = stream.pixel_aspect;
    picture.mastering = stream.mastering;
    picture.light = stream.light;
    if (picture.colour.primaries >= 0 || picture.colour.transfer >= 0) return;
    const Colour told = picture.colour;
    picture.colour = stream.colour;
    if (picture.colour.matrix < 0) picture.colour.matrix = told.matrix;
    if (picture.colour.full_range < 0) picture.colour.full_range = told.full_range;
}

// Descriptors may leave open how a picture is coded, and which field is first: then its first frame tells.
void read_first_picture(File &file) {
    constexpr uint64_t kHeaders = 4096;
    constexpr uint8_t kPictures[] = {0x05, 0x15, 0x18};  // items of content packages, generic, with sound
    if (file.facts.pictures.empty()) return;
    Picture &picture = file.facts.pictures[0];
    uint64_t place = file.partitions.header->essence;
    for (int i = 0; i < 16; i++) {
        const Bytes item = file.input.present(place, 32, 512);
        const KlvPlace klv = klv_at(item, 0);
        if (!klv.is_set || klv.end() > file.input.size() - place) return;
        const bool is_essence = begins_as(item.from(4), "\1\2\1"sv) && begins_as(item.from(8), "\xD\1\3\1"sv);
        if (is_essence && std::ranges::count(kPictures, item[12]) > 0) {
            const Bytes frame = file.input.present(place + klv.value, std::min(klv.length, kHeaders));
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
        append(text, label_digits(labels.sub(8 + 16 * i, 16)));
    return text;
}

// Specifications and application schemes that the file says it conforms to (SMPTE ST 377-1, Preface), and
// the schemes of its descriptive metadata.
void add_conformance(const File &file) {
    const std::vector<const MetadataSet *> prefaces = file.metadata.all(SetKind::preface);
    if (prefaces.empty()) return;
    const MetadataSet &preface = *prefaces.front();
    const auto add = [&](const char *name, Bytes labels) { file.facts.add_more(name, labels_text(labels)); };
    add("conforms to", file.metadata.item(preface, "\1\2\2\x10\2\4\0\0"sv));
    add("application schemes", file.metadata.item(preface, "\1\2\2\x10\2\3\0\0"sv));
    add("metadata schemes", preface.item(0x3B0B));
}

void add_details(const File &file) {
    Facts &facts = file.facts;
    facts.add_more("header partition", file.partitions.header->status_text());
    facts.add_more("footer partition",
                   file.partitions.footer ? file.partitions.footer->status_text() : "none");
    if (file.partitions.count > 0) facts.add_more("partitions", file.partitions.count);
    facts.add_more("wrapping", file.wrapping);
    facts.add_more("coding label", file.coding);
    facts.add_more("container label", file.container);
    add_conformance(file);
    if (file.main_picture) {
        for (const auto &[name, label] : uncoded_colours(*file.main_picture, facts.picture().colour))
            facts.add_more(name, label_digits(label));
        const std::string mastering = mastering_display(file.metadata, *file.main_picture);
        facts.add_more("mastering display", mastering.empty() ? facts.picture().mastering : mastering);
        facts.add_more("content light", facts.picture().light);
    }
    facts.add_more("sound content", file.sound_content);
    if (!file.materials.empty()) {
        const Package &material = file.materials.front();
        facts.add_more("clip name", material.set->text(0x4402));
        facts.add_more("umid", hex_text(material.uid));
        const Track *track = material.main_track();
        if (track && track->rate.is_set())
            facts.add_more("edit rate", std::to_string(track->rate.n) + "/" + std::to_string(track->rate.d));
    }
    if (file.data_tracks > 0) facts.add_more("data tracks", file.data_tracks);
}

std::string pattern_text(Bytes label) {
    if (!begins_as(label.from(8), "\xD\1\2\1"sv)) return "";
    if (label[12] == 0x10) return "OP-Atom";
    if (label[12] < 1 || label[12] > 3 || label[13] < 1 || label[13] > 3) return "";
    return {'O', 'P', static_cast<char>('0' + label[12]), static_cast<char>('a' + label[13] - 1)};
}

}  // namespace

void mxf_facts(Input &input, Facts &facts) {
    File file{input, facts};
    file.partitions.read(input, facts);
    if (!file.partitions.header) {
        facts.problem = "no header partition";
        return;
    }
    facts.variant = pattern_text(file.partitions.header->pattern);
    read_metadata(file);
    if (file.metadata.empty()) facts.problem = "no header metadata";
    read_tracks(file);
    read_timecodes(file);
    read_origin(file);
    read_first_picture(file);
    add_details(file);
    const std::string codec = facts.pictures.empty() ? "" : facts.pictures[0].codec;
    file.partitions.judge(input, !codec.empty() && codec != "uncompressed", facts);
}
