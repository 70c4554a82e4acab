#include "companions/diff/build.h"

#include <algorithm>
#include <functional>

#include "companions/diff/rules.h"
#include "companions/diff/transport.h"
#include "companions/lines/lines.h"
#include "companions/opening.h"
#include "companions/registers/annotate.h"
#include "main/dump.h"

namespace {

constexpr size_t kMostAlike = 64;          // sections of a name before they are counted
constexpr size_t kMostChildren = 100'000;  // of one section before all that follow are counted together
constexpr size_t kMostText = 4096;         // of a value that is kept; what is longer has its hash behind
constexpr size_t kMostHex = 4096;          // of a hex dump, in bytes

constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

std::string_view without_blanks(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::string_view word(std::string_view &text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view first = text.substr(0, text.find(' '));
    text.remove_prefix(first.size());
    return first;
}

bool is_hex(std::string_view text) { return text.find_first_not_of(kHexDigits) == std::string_view::npos; }

// The bytes that a row of a hex dump begins with, "00 1f ..."; up to 16.
std::string hex_bytes(std::string_view text) {
    std::string bytes;
    for (int i = 0; i < 16; i++) {
        const std::string_view byte = word(text);
        if (byte.size() != 2 || !is_hex(byte)) break;
        bytes += bytes.empty() ? "" : " ";
        bytes += byte;
    }
    return bytes;
}

void add_capped(std::string &text, std::string_view more) {
    if (text.size() < kMostText + kMostHex) {
        text += more;
    } else {
        text += '#' + std::to_string(std::hash<std::string>{}(text.substr(kMostText) + std::string(more)));
        text.erase(kMostText, text.rfind('#') - kMostText);
    }
}

class TreeListener : public Listener {
 public:
    TreeListener(bool everything, TextPool &pool, FileTree &tree)
        : everything_(everything), pool_(pool), tree_(tree), open_(1) {}

    void format(const char *name) override { tree_.format = name; }

    void line(const Line &line) override {
        if (goes_on_) {
            add_capped(long_value_, line.text);
            if (!line.goes_on) end_long();
        } else {
            line_++;
            places_.place(line, field_);
            long_depth_ = SIZE_MAX;
            if (line.is_listing) {
                add_row(line);
            } else if (!line.text.empty()) {
                add(line);
            }
        }
        goes_on_ = line.goes_on;
    }

    void finish() {
        close_to(0);
        end(open_.front(), true);
        tree_.root = std::move(open_.front().node);
    }

 private:
    struct Open {
        FieldNode node;
        std::string hex;                             // rows that nothing names
        uint32_t hex_line = 0;                       // their first
        bool has_fields = false;                     // beside these
        std::unordered_map<uint32_t, size_t> alike;  // children of a name
    };

    std::string_view text(uint32_t number) const { return pool_.text(number); }

    void add(const Line &line) {
        const std::string_view body = without_blanks(line.text);
        if (!line.is_aside) close_to(field_.path.size() - (field_.is_labelled ? 1 : 0));
        const size_t depth = open_.size() - 1;
        FieldNode node;
        std::string label = field_.is_labelled ? field_.path.back()->name : "";
        const ValueRange range = everything_ ? ValueRange{} : compared_values(tree_.format, body, depth);
        std::string value = value_text(line, field_, range);
        if (line.goes_on) {
            long_value_ = value;
            long_depth_ = open_.size();
        }
        if (tree_.format == "MXF") {
            call_as_registered(line, depth, label, value);
            mxf_line(depth, label, value, node);
        }
        if (tree_.format == "MXF" && depth == 0 && label == "MXF Generic Data" && !field_.values.empty())
            value = field_.values[0].content;
        if (line.is_aside) {
            label = body;
            value.clear();
            const size_t position = everything_ ? std::string::npos : label.find(" @ 0x");
            if (position != std::string::npos)
                label.erase(position, label.find(' ', position + 5) - position);
        }
        if (tree_.format == "MPEG" && label == "stream" && field_.values.size() > 3)
            label = field_.values[3].content;
        if (tree_.format == "JPEG" && depth == 0 && field_.values.size() == 3)
            label += field_.values[0].content;
        if (!everything_ && node.kind == 0) {
            node.is_left_out = node.is_left_out || leaves_out(open_.back().node.name, label) ||
                               (tree_.format == "MXF" && is_identifier(value));
            if (node.is_left_out) value.clear();
        }
        for (const uint64_t index : field_.index) label += "[" + std::to_string(index) + "]";
        node.name = pool_.number(label);
        node.value = pool_.number(value.substr(0, kMostText));
        node.line = line_;
        if (line.is_aside) {
            open_.back().node.children.push_back(std::move(node));
        } else if (field_.is_labelled) {
            open_.emplace_back();
            open_.back().node = std::move(node);
        } else {
            take(open_.back(), std::move(node));
        }
    }

    bool leaves_out(uint32_t section, const std::string &label) {
        const uint64_t key = uint64_t{section} << 32 | pool_.number(label);
        if (left_out_.size() > kMostChildren) left_out_.clear();
        const auto [place, is_new] = left_out_.try_emplace(key, false);
        if (is_new) place->second = is_left_out(tree_.format, text(section), label);
        return place->second;
    }

    // Sets and items that the dump does not know, or takes for something else, have the names and values of
    // today's registers.
    void call_as_registered(const Line &line, size_t depth, std::string &label, std::string &value) {
        const RegisterNote note = registers_.note(line);
        const bool is_unknown = (label.empty() ? value : label).ends_with("nknown");
        is_decoded_ = !note.decoded.empty() && depth == 2;
        if (depth == 1) item_name_ = note.name;
        if (!note.name.empty() && is_unknown && depth < 2) label = note.name;
        if (!is_decoded_) return;
        if (!item_name_.empty()) open_.back().node.name = pool_.number(item_name_);
        value = note.decoded;
        if (value.size() > 1 && value.front() == '"') value = value.substr(1, value.size() - 2);
    }

    // Types have no name of their own, and references are kept for nest_sets.
    void mxf_line(size_t depth, std::string &label, std::string &value, FieldNode &node) {
        if (label.starts_with("MXFERROR")) return;
        if (depth < 2) return;
        const size_t colon = value.find(':');
        if (!everything_ && label == "References" && colon >= 8 && colon < 17 &&
            is_hex(value.substr(0, colon)))
            value.erase(0, colon + 1);
        const bool is_item = text(open_[1].node.name).find("Generic") == std::string_view::npos;
        if (!is_item) return;
        if (label == "StrongReference" || (label == "GUID" && depth == 2)) {
            node.kind = pool_.number(value);
        } else if (label == "Label" || label == "Material") {
            // A source that is all zeros is none; any other UMID is an identifier.
            const bool is_source = text(open_.back().node.name) == "Source Package ID" && label == "Label";
            node.is_left_out = !everything_ && !(is_source && !is_identifier(value));
            label = "";
        } else if (is_type_name(label)) {
            label = "";
        }
    }

    // A row of a table is told by what stands in front of "=", a labelled hex dump by its label.
    void add_row(const Line &line) {
        if (is_decoded_ || (!everything_ && tree_.format == "MPEG-TS")) return;
        close_to(field_.path.size());
        Open &open = open_.back();
        std::string_view row = without_blanks(line.text);
        const size_t equals = row.find('=');
        const bool is_named = !row.empty() && row[0] >= 'a' && row[0] <= 'z';
        if (equals != std::string_view::npos && is_named && row.find('[') < equals) {
            std::string label;
            bool inside = false;
            for (const char c : row.substr(0, equals)) {
                inside = c == '[' || (inside && c != ']');
                if (!inside && c != ']') label += c;
            }
            if (!everything_ && is_left_out(tree_.format, text(open.node.name), label)) return;
            if (!everything_ && is_left_out(tree_.format, text(open.node.name), "data")) return;
            std::string_view value = row.substr(equals + 1);
            if (!everything_ || value.find(" (0x") != std::string_view::npos)
                value = value.substr(0, value.find(" (0x"));
            add_to_rows(open, label, value);
            return;
        }
        std::string label;
        const size_t colon = row.find(": ");
        if (is_named && colon != std::string_view::npos && colon > 5 && is_hex(row.substr(colon - 4, 4)) &&
            row[colon - 5] == ' ') {
            label = without_blanks(row.substr(0, colon - 5));
            row.remove_prefix(colon + 2);
        }
        std::string_view rest = row;
        const std::string_view position = word(rest);
        const bool is_position = position.size() >= 4 && is_hex(position.substr(0, position.size() - 1)) &&
                                 (position.back() == ':' || is_hex(position));
        if (label.empty() && is_position && !hex_bytes(rest).empty()) row = without_blanks(rest);
        const std::string bytes = hex_bytes(row);
        if (!label.empty() && label != "data") {
            add_hex_field(open.node, label, bytes);
        } else if (!bytes.empty() || !label.empty()) {
            if (open.hex.empty()) open.hex_line = line_;
            add_capped(open.hex, (open.hex.empty() ? "" : " ") + bytes);
        } else {
            // The first number of an index entry is a position.
            if (tree_.format == "MXF" && !everything_) word(row);
            add_to_rows(open, "", without_blanks(row));
        }
    }

    void add_to_rows(Open &open, std::string_view label, std::string_view value) {
        open.has_fields = true;
        FieldNode &node = open.node;
        auto rows = std::ranges::find(node.groups, 0U, &Group::name);
        if (rows == node.groups.end()) {
            node.groups.push_back({});
            rows = node.groups.end() - 1;
        }
        FieldColumn &column = rows->column(pool_.number(label));
        column.add(column.count(), pool_.number(value.substr(0, kMostText)), line_);
        rows->count = std::max(rows->count, column.count());
    }

    void add_hex_field(FieldNode &node, std::string_view label, std::string_view bytes) {
        const uint32_t name = pool_.number(label);
        if (node.children.empty() || node.children.back().name != name) {
            node.children.push_back({});
            node.children.back().name = name;
            node.children.back().line = line_;
        }
        std::string value(text(node.children.back().value));
        add_capped(value, (value.empty() ? "" : " ") + std::string(bytes));
        node.children.back().value = pool_.number(value);
    }

    void end_long() {
        if (open_.size() > long_depth_ && !open_.back().node.is_left_out)
            open_.back().node.value = pool_.number(long_value_);
        long_value_.clear();
    }

    void close_to(size_t depth) {
        while (open_.size() > depth + 1) {
            Open closed = std::move(open_.back());
            open_.pop_back();
            end(closed);
            take(open_.back(), std::move(closed.node));
        }
    }

    // What is known when all lines of a section are there.
    void end(Open &open, bool is_root = false) {
        FieldNode &node = open.node;
        if (!open.hex.empty() && (everything_ || !open.has_fields) && !node.is_left_out) {
            const bool unnamed = node.children.empty() || tree_.format == "MXF";
            const uint32_t name = unnamed ? 0 : pool_.number("data");
            node.children.push_back({name, 0, pool_.number(open.hex), open.hex_line, false, {}, {}});
        }
        gather(node);
        if (tree_.format == "OpenEXR" && !everything_ && open_.size() == 1 && node.kind == 0) {
            node.kind = node.value;  // the type of an attribute
            node.value = 0;
        }
        // Values without a name are their section's, but there is none around the lines of a text.
        if (!is_root && (tree_.format != "MXF" || is_counted(tree_.format, text(node.name))))
            take_values(node, pool_);
        if (node.kind == 0) node.kind = kind_of(node);
    }

    void take(Open &parent, FieldNode node) {
        const std::string_view label = text(node.name);
        // Of a section that is left out the fields still count, but not of padding.
        const bool counts = node.is_section() && open_.size() > 1 && tree_.format != "QuickTime";
        if (node.is_left_out && !counts) return;
        const bool is_field = node.is_section() || (node.value && label != "Count" && label != "Size");
        parent.has_fields = parent.has_fields || is_field;
        FieldNode &into = parent.node;
        const bool counted =
            is_counted(tree_.format, label) || (tree_.format == "MPEG" && open_.size() == 1 && node.name);
        size_t &alike = parent.alike[node.name];
        if (!counted && ++alike <= kMostAlike) {
            into.children.push_back(std::move(node));
            return;
        }
        if (!counted && alike == kMostAlike + 1) {
            for (const FieldNode &child : into.children) {
                if (child.name == node.name) fold(into, child, pool_);
            }
            std::erase_if(into.children, [&](const FieldNode &child) { return child.name == node.name; });
        }
        fold(into, node, pool_);
    }

    // Fields that begin a section get those that follow.
    void gather(FieldNode &node) {
        std::vector<FieldNode> gathered;
        const FieldNode *opener = nullptr;
        for (FieldNode &child : node.children) {
            const bool opens = opens_section(tree_.format, text(node.name), text(child.name));
            if (opens || !opener) {
                gathered.push_back(std::move(child));
                if (opens) {
                    gathered.back().kind = gathered.back().value;
                    gathered.back().value = 0;
                    opener = &gathered.back();
                }
            } else {
                gathered.back().children.push_back(std::move(child));
            }
        }
        node.children = std::move(gathered);
    }

    uint32_t kind_of(const FieldNode &node) {
        const std::string_view label = text(node.name);
        if (tree_.format == "QuickTime" && label == "trak") {
            const FieldNode *media = node.child(pool_.number("mdia"));
            const FieldNode *handler = media ? media->child(pool_.number("hdlr")) : nullptr;
            const FieldNode *type = handler ? handler->child(pool_.number("subtype")) : nullptr;
            return type ? type->value : 0;
        }
        if (tree_.format == "GXF" && label == "media") {
            const FieldNode *track = node.child(pool_.number("track"));
            return track ? track->value : 0;
        }
        if (tree_.format == "MXF" && label.starts_with("MXF Generic ")) {
            for (const FieldNode &child : node.children) {
                if (child.value != 0 || text(child.name) == "Length") continue;
                const std::string element(text(child.name));
                return node.value ? pool_.number(element + " " + std::string(text(node.value))) : child.name;
            }
        }
        if (tree_.format == "DPX" && label == "element") return node.value;
        return 0;
    }

    const bool everything_;
    TextPool &pool_;
    FileTree &tree_;
    LinePlaces places_;
    RegisterNotes registers_;
    std::string item_name_;    // by the registers, of the item around a value
    bool is_decoded_ = false;  // the rows that follow are bytes of a value that the registers told
    FieldLine field_;
    std::vector<Open> open_;                       // the root, and the sections around the line before
    std::unordered_map<uint64_t, bool> left_out_;  // labels by their sections
    bool goes_on_ = false;
    uint32_t line_ = 0;  // of the dump, from 1 on
    std::string long_value_;
    size_t long_depth_ = 0;
};

}  // namespace

std::string read_tree(const std::string &path, const DumpOptions &options, bool everything, TextPool &pool,
                      FileTree &tree) {
    TreeListener listener(everything, pool, tree);
    const DumpOutcome outcome = dump(path.c_str(), options, &listener);
    std::string failure = failure_text(path, outcome);
    if (!failure.empty()) return failure;
    listener.finish();
    if (tree.format == "MXF") nest_sets(tree.root, everything, pool);
    if (tree.format == "MPEG-TS") add_programs(path, tree.root, pool);
    return "";
}
