// The dump of an MXF file: its metadata sets by their identifiers, so that those of a later partition replace
// those of an earlier one, and the values that the packages' tracks and the descriptors give.
#include <map>
#include <vector>

#include "companions/table/reader.h"
#include "companions/table/values.h"

namespace {

using enum Column;

constexpr size_t kMostSets = 20000;
constexpr size_t kMostBytes = 32 << 20;  // kept of all sets

// The set that tells of a tape has no name in the dump, but its key.
constexpr std::string_view kTapeKey = "-0d.01.01.01.01.01.2e.00 ";
constexpr std::string_view kTape = "TapeDescriptor";

// Local tags, with the names that the dump gives them.
constexpr char kInstance[] = "3c0a";
constexpr char kTracks[] = "4403";
constexpr char kPackageName[] = "4402";
constexpr char kDescriptor[] = "4701";
constexpr char kEditRate[] = "4b01";
constexpr char kSegment[] = "4803";
constexpr char kComponents[] = "1001";
constexpr char kDataDefinition[] = "0201";
constexpr char kLength[] = "0202";
constexpr char kStartTimecode[] = "1501";
constexpr char kTimecodeBase[] = "1502";
constexpr char kDropFrame[] = "1503";
constexpr char kSampleRate[] = "3001";
constexpr char kContainer[] = "3004";
constexpr char kPictureCoding[] = "3201";
constexpr char kStoredHeight[] = "3202";
constexpr char kStoredWidth[] = "3203";
constexpr char kDisplayHeight[] = "3208";
constexpr char kDisplayWidth[] = "3209";
constexpr char kFrameLayout[] = "320c";
constexpr char kComponentDepth[] = "3301";
constexpr char kAudioBits[] = "3d01";
constexpr char kAudioRate[] = "3d03";
constexpr char kSoundCoding[] = "3d06";
constexpr char kChannelCount[] = "3d07";

// A set's values by tag: the lines of the dump, without their indentation.
struct Set {
    std::string name;
    std::map<std::string, std::vector<std::string>, std::less<>> lines;

    // What stands behind the first word of the first line: "1920/00000780" of "Uint32 1920/00000780".
    std::string value(const char *tag) const {
        const auto found = lines.find(tag);
        return found == lines.end() || found->second.empty() ? "" : as_name(found->second.front());
    }
    int64_t number(const char *tag) const { return number_in(value(tag)); }
    double ratio(const char *tag) const {
        const std::string text = value(tag);
        return ratio_in(std::string_view(text).substr(0, text.find(' ')));
    }
    // The registered name that a label has, without its register and "MXF-GC".
    std::string label_name(const char *tag) const {
        const auto found = lines.find(tag);
        if (found == lines.end()) return "";
        for (const std::string &line : found->second) {
            const size_t at = line.find("RP224/");
            if (at == std::string::npos) continue;
            const std::string label = line.substr(at + 6);
            return as_text(label.starts_with("MXF-GC ") ? label.substr(7) : label);
        }
        return "";
    }
    std::vector<std::string> references(const char *tag) const {
        std::vector<std::string> list;
        const auto found = lines.find(tag);
        if (found == lines.end()) return list;
        for (const std::string &line : found->second) {
            if (line.starts_with("StrongReference ")) list.push_back(as_name(line));
        }
        return list;
    }
};

class MxfReader : public DumpReader {
 public:
    void line(std::string_view line) override {
        if (line.empty()) return;
        if (line.front() != ' ') {
            open_item(line);
        } else if (line == " Closed and Complete") {
            complete_ = complete_ || items_ == 1;
        } else if (line.starts_with("  Tag ")) {
            tag_ = line.substr(6, 4);
        } else if (in_set_ && line.starts_with("   ") && !tag_.empty()) {
            keep(trimmed(line));
        }
    }

    void finish(Row &row) override {
        close_set();
        row.offer(format, "MXF");
        for (const auto &[id, set] : sets_) {
            if (set.name.find("Descriptor") != std::string::npos) take_descriptor(set, row);
        }
        row[channels] = positive_text(channels_);
        // A picture's codec and depth come first.
        if (row[width].empty()) {
            row.offer(bit_depth, sound_bits_);
            row.offer(codec, sound_codec_);
        }
        const std::vector<const Set *> tracks = material_tracks();
        for (const char *kind : {"Picture", "Sound", "Timecode"}) {
            for (const Set *track : tracks) take_track(*track, kind, row);
        }
    }

 private:
    void keep(std::string_view text) {
        kept_ += text.size() + sizeof(std::string);
        if (kept_ < kMostBytes) set_.lines[tag_].emplace_back(text);
    }

    // "00000a00 06.0e.2b.34... - Metadata Preface"
    void open_item(std::string_view line) {
        const size_t dash = line.find(" - ");
        if (dash == std::string_view::npos || !without_position(line).starts_with("06.0e.2b.34")) return;
        const std::string_view name = line.substr(dash + 3);
        close_set();
        items_++;
        in_set_ = name.starts_with("Metadata ");
        if (in_set_) set_.name = line.find(kTapeKey) == std::string_view::npos ? name.substr(9) : kTape;
        // With a header that is complete nothing that is wanted stands behind the first essence.
        if (name.starts_with("MXF Generic") && complete_ && !sets_.empty()) done_ = true;
    }

    void close_set() {
        const std::string id = set_.value(kInstance);
        if (in_set_ && !id.empty() && (sets_.size() < kMostSets || sets_.contains(id)))
            sets_[id] = std::move(set_);
        if (in_set_ && !id.empty() && sets_[id].name == "MaterialPackage") material_ = id;
        set_ = Set();
        in_set_ = false;
        tag_.clear();
    }

    const Set *find(const std::string &id) const {
        const auto found = sets_.find(id);
        return found == sets_.end() ? nullptr : &found->second;
    }

    // The tracks of the material package; of a file without one, all.
    std::vector<const Set *> material_tracks() const {
        std::vector<const Set *> tracks;
        if (const Set *package = find(material_)) {
            for (const std::string &id : package->references(kTracks)) {
                if (const Set *track = find(id)) tracks.push_back(track);
            }
        }
        if (!tracks.empty()) return tracks;
        for (const auto &[id, set] : sets_) {
            if (set.name == "TimelineTrack") tracks.push_back(&set);
        }
        return tracks;
    }

    const Set *first_reference(const Set *set, const char *tag) const {
        if (!set) return nullptr;
        const std::vector<std::string> list = set->references(tag);
        return list.empty() ? nullptr : find(list.front());
    }

    void take_track(const Set &track, const char *kind, Row &row) const {
        const Set *segment = first_reference(&track, kSegment);
        if (!segment || segment->label_name(kDataDefinition).find(kind) == std::string::npos) return;
        if (std::string_view(kind) == "Timecode") {
            const Set *component =
                segment->name == "Sequence" ? first_reference(segment, kComponents) : segment;
            if (!component) return;
            row.offer(timecode,
                      timecode_of_frames(component->number(kStartTimecode), component->number(kTimecodeBase),
                                         component->value(kDropFrame) == "True"));
            return;
        }
        const double rate = track.ratio(kEditRate);
        if (std::string_view(kind) == "Picture") row.offer(frame_rate, rate_text(rate));
        const int64_t length = segment->number(kLength);
        if (rate > 0 && length > 0) row.offer(duration, seconds_text(static_cast<double>(length) / rate));
    }

    void take_descriptor(const Set &set, Row &row) {
        if (set.name == kTape) take_reel(set, row);
        if (set.lines.contains(kStoredWidth) || set.lines.contains(kDisplayWidth)) take_picture(set, row);
        if (!set.lines.contains(kAudioRate) && !set.lines.contains(kChannelCount)) return;
        const int64_t count = set.number(kChannelCount);
        if (count > 0 && count < INT32_MAX) channels_ += count;
        row.offer(sample_rate, rate_text(set.ratio(kAudioRate)));
        sound_bits_ = sound_bits_.empty() ? positive_text(set.number(kAudioBits)) : sound_bits_;
        for (const char *tag : {kSoundCoding, kContainer}) {
            if (sound_codec_.empty()) sound_codec_ = set.label_name(tag);
        }
    }

    // A field's height stands for half a frame's where fields are stored apart.
    static void take_picture(const Set &set, Row &row) {
        const int64_t layout = set.number(kFrameLayout);
        const int64_t fields = layout == 1 || layout == 4 ? 2 : 1;
        const int64_t display_width = set.number(kDisplayWidth);
        const int64_t display_height = set.number(kDisplayHeight);
        const bool displayed = display_width > 0 && display_height > 0;
        row.offer(width, positive_text(displayed ? display_width : set.number(kStoredWidth)));
        row.offer(height, positive_text((displayed ? display_height : set.number(kStoredHeight)) * fields));
        row.offer(bit_depth, positive_text(set.number(kComponentDepth)));
        row.offer(codec, set.label_name(kPictureCoding));
        row.offer(codec, set.label_name(kContainer));
        row.offer(frame_rate, rate_text(set.ratio(kSampleRate)));
    }

    // The tape is the package that a tape descriptor describes.
    void take_reel(const Set &descriptor, Row &row) const {
        for (const auto &[id, set] : sets_) {
            if (first_reference(&set, kDescriptor) == &descriptor)
                row.offer(reel, as_quoted(set.value(kPackageName)));
        }
    }

    std::map<std::string, Set> sets_;
    std::string material_;
    Set set_;
    std::string tag_;
    bool in_set_ = false;
    bool complete_ = false;
    size_t kept_ = 0;
    int items_ = 0;
    int64_t channels_ = 0;
    std::string sound_bits_;
    std::string sound_codec_;
};

}  // namespace

std::unique_ptr<DumpReader> mxf_reader() { return std::make_unique<MxfReader>(); }
