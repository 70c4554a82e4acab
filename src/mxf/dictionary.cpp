#include "mxf/dictionary.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "common/hexrow.h"
#include "common/print.h"

namespace {

constexpr size_t kVersionByte = 7;

using Label = std::array<uint8_t, 16>;

Label label_at(Bytes ul) {
    Label label;
    for (size_t i = 0; i < label.size(); i++) label[i] = ul[i];
    return label;
}

Label without_version(Label label) {
    label[kVersionByte] = 0;
    return label;
}

// The first of the rows, given by numbers sorted by key, that has a key.
template <typename Key, typename KeyOf>
int find_row(std::span<const uint16_t> numbers, const Key &key, KeyOf key_of) {
    const auto found =
        std::lower_bound(numbers.begin(), numbers.end(), key,
                         [&](uint16_t row, const Key &wanted) { return key_of(row) < wanted; });
    return found != numbers.end() && key_of(*found) == key ? *found : -1;
}

}  // namespace

void printuuid(DumpOptions &opts, Bytes ul) {
    char text[16 * 5];
    char *p = text;
    for (uint64_t i = 0; i < 16; i++) {
        if (i > 0) *p++ = opts.mxf_flag_x ? ',' : i == 8 ? '-' : '.';
        if (opts.mxf_flag_x) {
            *p++ = '0';
            *p++ = 'x';
        }
        p = write_hex(p, ul[i]);
    }
    print_value({text, static_cast<size_t>(p - text)});
}

int printrp224(Bytes ul) {
    const int row = find_row(std::span(rp224_by_label, rp224_count), label_at(ul),
                             [](uint16_t i) { return std::to_array(rp224[i].ul); });
    if (row < 0) return 0;
    print("RP224/%s", rp224[row].name);
    return 1;
}

const rp210_entry *mxf_find_rp210(DumpOptions &, Bytes ul, int) {
    const int row = find_row(std::span(rp210_by_label, rp210_count), without_version(label_at(ul)),
                             [](uint16_t i) { return without_version(std::to_array(rp210[i].ul)); });
    return row < 0 ? nullptr : &rp210[row];
}

const rp210_entry *find_rp210_tag(uint32_t local_tag) {
    const int row = find_row(std::span(rp210_by_tag, rp210_tag_count), local_tag,
                             [](uint16_t i) { return rp210[i].local_tag; });
    return row < 0 ? nullptr : &rp210[row];
}

int printidentifier(DumpOptions &opts, Bytes ul) {
    if (printrp224(ul)) return 1;
    const rp210_entry *row = mxf_find_rp210(opts, ul, 0);
    if (!row) return 0;
    print("RP210/%s%s", row->kind == ValueKind::node ? "Node/" : "", row->name);
    return 1;
}

void print_name_or_unknown(DumpOptions &opts, Bytes ul) {
    if (!printidentifier(opts, ul)) print("unknown identifier");
}
