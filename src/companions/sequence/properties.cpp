#include "companions/sequence/properties.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "companions/safe_text.h"

namespace {

struct Kind {
    const char *property;
    const char *kind;
};
constexpr Kind kKinds[] = {
    {"format", "format"},
    {"variant", "format"},
    {"industry header", "header"},
    {"byte order", "format"},
    {"size", "size"},
    {"coded size", "size"},
    {"data window", "size"},
    {"display window", "size"},
    {"bit_depth", "layout"},
    {"codec", "layout"},
    {"components", "layout"},
    {"packing", "layout"},
    {"elements", "layout"},
    {"sense", "layout"},
    {"orientation", "layout"},
    {"image offset", "layout"},
    {"data offset", "layout"},
    {"line padding", "layout"},
    {"image padding", "layout"},
    {"channels", "layout"},
    {"tiles", "layout"},
    {"tile size", "layout"},
    {"line order", "layout"},
    {"channel padding", "layout"},
    {"progression", "layout"},
    {"layers", "layout"},
    {"levels", "layout"},
    {"block coder", "layout"},
    {"active image", "size"},
    {"profile", "format"},
    {"sensor rate", "rate"},
    {"chromaticities", "colour"},
    {"colour", "colour"},
    {"comment", "creator"},
    {"owner", "text"},
    {"view", "text"},
    {"look", "text"},
    {"camera serial", "text"},
    {"scan", "layout"},
    {"pixel_aspect", "aspect"},
    {"frame_rate", "rate"},
    {"transfer", "colour"},
    {"colorimetric", "colour"},
    {"primaries", "colour"},
    {"matrix", "colour"},
    {"range", "colour"},
    {"gamma", "colour"},
    {"reel", "reel"},
    {"creator", "creator"},
    {"trailing bytes", "trailing"},
    {"size field", "size-field"},
    {"slate", "text"},
    {"input device", "text"},
    {"project", "text"},
    {"copyright", "text"},
    {"source file", "text"},
    {"film format", "text"},
    {"camera", "text"},
    {"perforations", "keycode"},
    {"black level", "layout"},
    {"white level", "layout"},
    {"reference low code", "layout"},
    {"reference high code", "layout"},
};

// Properties that change with another one: where both do on the same frames, it is told.
struct Consequence {
    const char *property;
    const char *cause;
};
constexpr Consequence kConsequences[] = {
    {"components", "channels"},
    {"bit_depth", "channels"},
    {"coded size", "size"},
    {"data window", "size"},
    {"display window", "size"},
    {"active image", "size"},
    {"coded size", "data window"},
    {"tiles", "variant"},
    {"tile size", "variant"},
    {"sensor rate", "frame_rate"},
    {"display window", "data window"},
};

// Frames with one value of a property.
struct Run {
    size_t first;
    size_t last;
    uint32_t value;  // a number of `SharedNames`

    size_t length() const { return last - first + 1; }
};

std::string shown(const std::string &value) { return value.empty() ? "not set" : safe_name(value); }

std::string label_of(std::string name) {
    std::ranges::replace(name, '_', ' ');
    return name;
}

class Changes {
 public:
    Changes(const std::vector<const SequenceFrame *> &frames, const std::string &name, SharedNames &values,
            std::vector<Run> runs, std::vector<Finding> &findings)
        : frames_(frames), name_(name), values_(values), runs_(std::move(runs)), findings_(findings) {}

    void find() {
        if (name_ == "size field" || name_ == "trailing bytes") {
            find_of_all();
            return;
        }
        constexpr size_t kFew = 8;
        if (runs_.size() < 2) return;
        // What changes with most frames neither stays nor breaks.
        if (frames_.size() > kFew && 2 * (runs_.size() - 1) > frames_.size() && !is_periodic()) return;
        if (is_periodic()) {
            add_period();
            return;
        }
        for (size_t k = 0; k < runs_.size(); k++) {
            const Run &run = runs_[k];
            const Run *before = k > 0 ? &runs_[k - 1] : nullptr;
            const Run *after = k + 1 < runs_.size() ? &runs_[k + 1] : nullptr;
            if (before && after && before->value == after->value &&
                run.length() < before->length() + after->length()) {
                add_aside(run, value(*before), run.length() == 1 ? "its neighbours " : "the others ");
                k++;  // what follows is as before
            } else if (!before && after && run.length() == 1 && after->length() > 2) {
                add_aside(run, value(*after), "the others ");
                k++;
            } else if (before) {
                add(run.first, run.first,
                    label_of(name_) + " " + shown(value(*before)) + " -> " + shown(value(run)));
            }
        }
    }

 private:
    const std::string &value(const Run &run) const { return values_.name(run.value); }

    void add(size_t first, size_t last, std::string text, bool of_all = false) {
        findings_.push_back({kind_of_property(name_), frames_[first]->number, frames_[last]->number, of_all,
                             std::move(text)});
    }

    void add_aside(const Run &run, const std::string &others, const char *whose) {
        add(run.first, run.last, label_of(name_) + " " + shown(value(run)) + ", " + whose + shown(others));
    }

    // A change away and back at each n-th frame, four times at least.
    bool is_periodic() const {
        constexpr size_t kLeast = 8;
        if (runs_.size() < kLeast) return false;
        for (size_t k = 2; k + 2 < runs_.size(); k++) {
            if (runs_[k].value != runs_[k - 2].value) return false;
            if (k >= 3 && runs_[k].length() != runs_[k - 2].length()) return false;
        }
        return true;
    }
    void add_period() {
        if (runs_[1].length() == runs_[2].length()) {
            add(0, runs_.back().last,
                label_of(name_) + " " + shown(value(runs_[0])) + " and " + shown(value(runs_[1])) +
                    " in turns of " + std::to_string(runs_[1].length()));
            return;
        }
        const size_t rare = runs_[1].length() < runs_[2].length() ? 1 : 2;
        const size_t period = runs_[1].length() + runs_[2].length();
        const size_t length = runs_[rare].length();
        const std::string which =
            length == 1 ? "every " + std::to_string(period) + " frames"
                        : std::to_string(length) + " of every " + std::to_string(period) + " frames";
        const size_t first = runs_[0].value == runs_[rare].value ? runs_[0].first : runs_[rare].first;
        add(first, runs_.back().last,
            which + ": " + label_of(name_) + " " + shown(value(runs_[rare])) + ", the others " +
                shown(value(runs_[3 - rare])));
    }

    // Wrong of the file itself wherever it is set; of all frames one line.
    void find_of_all() {
        const bool trailing = name_ == "trailing bytes";
        const auto text = [&](const std::string &value) {
            return trailing ? value + " bytes behind the picture"
                            : "the size field of the header says " + value + " bytes";
        };
        bool all = true;
        for (const Run &run : runs_) all = all && !value(run).empty();
        if (all) {
            add(0, frames_.size() - 1,
                runs_.size() == 1 ? text(value(runs_[0]))
                : trailing        ? "bytes behind the pictures"
                                  : "the size fields of the headers are not the files' sizes",
                true);
            return;
        }
        if (is_periodic()) {
            add_period();
            return;
        }
        for (const Run &run : runs_) {
            if (!value(run).empty()) add(run.first, run.last, text(value(run)));
        }
    }

    const std::vector<const SequenceFrame *> &frames_;
    const std::string &name_;
    SharedNames &values_;
    std::vector<Run> runs_;
    std::vector<Finding> &findings_;
};

void drop_followers(std::vector<Finding> &followers, const std::vector<Finding> &causes) {
    std::set<std::pair<int64_t, int64_t>> explained;
    for (const Finding &cause : causes) explained.emplace(cause.first, cause.last);
    std::erase_if(followers, [&](const Finding &f) { return explained.contains({f.first, f.last}); });
}

}  // namespace

std::string kind_of_property(const std::string &name) {
    const auto found = std::ranges::find(kKinds, name, &Kind::property);
    return found == std::end(kKinds) ? "field" : found->kind;
}

void find_changes(const std::vector<const SequenceFrame *> &frames, const SharedNames &names,
                  std::vector<Finding> &findings) {
    std::vector<std::string> order;
    std::map<std::string, std::vector<Run>> runs;  // of each property, up to the frame before
    SharedNames values;
    uint32_t before = UINT32_MAX;
    for (size_t i = 0; i < frames.size(); i++) {
        // Frames with the same properties are the most, and cost nothing.
        if (frames[i]->properties == before) continue;
        const TextPairs properties = properties_of(*frames[i], names);
        for (const auto &[name, value] : properties) {
            const auto [entry, is_new] = runs.emplace(name, std::vector<Run>());
            if (is_new) {
                order.push_back(name);
                if (i > 0) entry->second.push_back({0, i - 1, 0});
            }
            const uint32_t number = values.number(value);
            std::vector<Run> &all = entry->second;
            if (!all.empty() && all.back().value == number) continue;
            if (!all.empty()) all.back().last = i - 1;
            all.push_back({i, i, number});
        }
        for (auto &[property, all] : runs) {
            const std::string &name = property;
            const bool is_there =
                std::ranges::any_of(properties, [&](const auto &known) { return known.first == name; });
            if (is_there || all.back().value == 0) continue;
            all.back().last = i - 1;
            all.push_back({i, i, 0});
        }
        before = frames[i]->properties;
    }
    std::map<std::string, std::vector<Finding>> changes;
    for (const std::string &name : order) {
        runs[name].back().last = frames.size() - 1;
        Changes(frames, name, values, std::move(runs[name]), changes[name]).find();
    }
    for (const auto &[property, cause] : kConsequences) drop_followers(changes[property], changes[cause]);
    for (const std::string &name : order) std::ranges::move(changes[name], std::back_inserter(findings));
}
