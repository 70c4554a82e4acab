#include "mxf/facts_partitions.h"

#include <algorithm>
#include <string_view>

#include "mxf/facts_metadata.h"

namespace {

using namespace std::string_view_literals;

constexpr uint64_t kRunIn = 65536;
constexpr uint64_t kKey = 16;
constexpr uint64_t kPackSize = 88;       // of a pack's value, before the list of its essence containers
constexpr uint64_t kItemHead = 32;       // read of an item: its key and length
constexpr uint64_t kTail = 65536;        // where a random index pack is looked for
constexpr uint64_t kLongTail = 1 << 20;  // where the last items of a file without footer are
constexpr int kMostPackItems = 24;       // behind the header that are walked through
constexpr uint64_t kMostPlaces = 1000;
constexpr uint64_t kPlaceSize = 12;

bool is_partition(Bytes key) {
    return begins_as(key, "\x06\x0E\x2B\x34\x02\x05\x01"sv) &&
           begins_as(key.from(8), "\x0D\x01\x02\x01\x01"sv) && key[13] >= Partition::header &&
           key[13] <= Partition::footer;
}

bool is_random_index(Bytes key) {
    return begins_as(key, "\x06\x0E\x2B\x34\x02\x05\x01"sv) &&
           begins_as(key.from(8), "\x0D\x01\x02\x01\x01\x11\x01"sv);
}

uint64_t plus(uint64_t a, uint64_t b) { return b > UINT64_MAX - a ? UINT64_MAX : a + b; }

// How the items from a place on end: at a place (`end`), which for the last may lie behind the file's.
struct Chain {
    enum State : uint8_t {
        unknown,  // too many items
        exact,    // with the file
        crosses,  // behind the file's end
        zeros,    // before bytes that are all zero to the file's end
        other,    // before bytes that are no item
    } state = unknown;
    uint64_t end = 0;
    bool has_random_index = false;
    bool is_unfinished = false;  // the last item, no fill, ends with zeros: it was not written to its end
};

// Whether what is left behind a place is all zeros, as far as the last 64 KiB tell.
bool is_zero_from(Input &input, uint64_t place) {
    return ends_in_zeros(input, place, input.size(), 1, kTail);
}

Chain follow(Input &input, uint64_t place, int most) {
    const uint64_t size = input.size();
    Chain chain{Chain::unknown, place};
    for (int i = 0; i < most; i++) {
        if (chain.end >= size) break;
        const Bytes item = input.present(chain.end, kItemHead, 512);
        const KlvPlace klv = klv_at(item, 0);
        if (!klv.is_set) {
            // A key that is cut, or the length behind it.
            const bool is_short =
                begins_as(item, "\x06\x0E\x2B\x34"sv.substr(0, static_cast<size_t>(item.size()))) &&
                (item.size() <= kKey || klv.value > item.size());
            const uint64_t key = item[0] == 6 ? kKey : 0;  // some bytes of one may be there
            chain.state = is_zero_from(input, chain.end + key) ? Chain::zeros
                          : is_short                           ? Chain::crosses
                                                               : Chain::other;
            return chain;
        }
        chain.has_random_index = is_random_index(item);
        chain.end = plus(chain.end, klv.end());
        const uint64_t last = chain.has_random_index ? 4 : 11;  // bytes that are never all zeros
        chain.is_unfinished = !is_fill(item) && klv.length >= last && chain.end <= size &&
                              is_zero(input.present(chain.end - last, last, 512));
        if (chain.has_random_index) break;
    }
    if (chain.end == size) chain.state = Chain::exact;
    if (chain.end > size) chain.state = Chain::crosses;
    if (chain.has_random_index && chain.end < size) chain.state = Chain::exact;
    return chain;
}

// The chain of items from the first label on that leads to the file's end, in its last n bytes.
Chain last_chain(Input &input, uint64_t n) {
    const uint64_t size = input.size();
    const uint64_t start = size > n ? size - n : 0;
    const Bytes tail = input.present(start, n);
    for (uint64_t at = 0, tries = 0; tries < 16; at++, tries++) {
        at = find_in(tail, "\x06\x0E\x2B\x34"sv, at);
        if (at == tail.size()) break;
        const Chain chain = follow(input, start + at, 4096);
        if (chain.state != Chain::other && chain.state != Chain::unknown) return chain;
    }
    return {};
}

uint64_t first_partition(Input &input) {
    const Bytes head = input.present(0, kKey);
    if (is_partition(head)) return 0;
    const Bytes run_in = input.present(0, kRunIn + kKey);
    for (uint64_t at = 0; run_in.has(at, kKey); at++) {
        if (run_in[at] == 0x06 && is_partition(run_in.from(at)) && run_in[at + 13] == Partition::header)
            return at;
    }
    return UINT64_MAX;
}

}  // namespace

const char *Partition::status_text() const {
    constexpr const char *kTexts[] = {"", "open and incomplete", "closed and incomplete", "open and complete",
                                      "closed and complete"};
    return status < std::size(kTexts) ? kTexts[status] : "";
}

std::optional<Partition> partition_at(Input &input, uint64_t place) {
    const Bytes item = input.present(place, kPackSize + kItemHead);
    const KlvPlace klv = klv_at(item, 0);
    if (!klv.is_set || !is_partition(item) || !item.has(klv.value, kPackSize - 8)) return {};
    const Bytes pack = item.from(klv.value);
    Partition partition;
    partition.at = place;
    partition.kind = static_cast<Partition::Kind>(item[13]);
    partition.status = item[14];
    partition.this_place = big64(pack, 8);
    partition.footer_place = big64(pack, 24);
    partition.body_offset = big64(pack, 52);
    partition.body_sid = big32(pack, 60);
    partition.pattern = pack.sub(64, 16);
    // Bytes of metadata count from the primer pack on, behind what fills up the pack.
    partition.metadata = plus(place, klv.end());
    const Bytes next = input.present(partition.metadata, kItemHead, 512);
    if (is_fill(next) && klv_at(next, 0).is_set)
        partition.metadata = plus(partition.metadata, klv_at(next, 0).end());
    partition.index = plus(partition.metadata, big64(pack, 32));
    partition.essence = plus(partition.index, big64(pack, 40));
    return partition;
}

void Partitions::read_random_index(Input &input) {
    const uint64_t size = input.size();
    const Bytes last = input.present(size - std::min<uint64_t>(size, 4), 4, 512);
    const uint64_t length = big32(last);
    if (length < kKey + 1 + kPlaceSize + 4 || length > size) return;
    const Bytes head = input.present(size - length, kItemHead, 512);
    const KlvPlace klv = klv_at(head, 0);
    if (!klv.is_set || !is_random_index(head) || klv.end() != length || klv.length < 4) return;
    count = (klv.length - 4) / kPlaceSize;
    const uint64_t listed = std::min(count, kMostPlaces);
    const Bytes rows = input.present(size - 4 - listed * kPlaceSize, listed * kPlaceSize);
    for (uint64_t i = 0; i < listed; i++) places.push_back(plus(start_, big64(rows, kPlaceSize * i + 4)));
}

void Partitions::find_footer(Input &input, Facts &facts) {
    const auto is_footer = [&](uint64_t place) {
        const std::optional<Partition> found = partition_at(input, place);
        if (found && found->kind == Partition::footer) footer = found;
        return footer.has_value();
    };
    if (!places.empty() && is_footer(places.back())) return;
    if (header->footer_place != 0) {
        const uint64_t place = plus(start_, header->footer_place);
        if (!is_footer(place)) facts.cut(plus(place, kKey), "the footer partition");
        return;
    }
    // Files whose header stayed open may have a footer that nothing points to.
    const uint64_t size = input.size();
    const uint64_t from = size - std::min(size, 4 * kTail);
    const Bytes tail = input.present(from, size - from);
    for (uint64_t at = 0, tries = 0; tries < 16; at++, tries++) {
        at = find_in(tail, "\x0D\x01\x02\x01\x01\x04"sv, at);
        if (at == tail.size()) return;
        if (from + at >= 8 && is_footer(from + at - 8) && footer->this_place + start_ == footer->at) return;
        footer.reset();
    }
}

void Partitions::judge(Input &input, bool is_compressed, Facts &facts) const {
    const uint64_t size = input.size();
    if (facts.extent.state == Extent::cut) return;
    if (header->essence > size) return facts.cut(header->essence, "the header metadata's end");
    if (footer) {
        if (footer->essence > size) return facts.cut(footer->essence, "the footer partition's end");
        // Through what there is of the footer, unless that is long.
        const bool has_zeros = is_zero(input.present(size - std::min<uint64_t>(size, 16), 16));
        const uint64_t least = footer->essence - std::min(footer->essence, 8 * kTail);
        const uint64_t first = has_zeros && footer->metadata >= least ? footer->metadata : footer->index;
        const Chain chain = follow(input, first >= least ? first : footer->essence, 20000);
        const bool is_unwritten =
            (chain.state == Chain::zeros && (chain.end < footer->essence || chain.is_unfinished)) ||
            (chain.has_random_index && chain.is_unfinished);
        if (chain.state == Chain::crosses || is_unwritten) {
            facts.cut(std::max(chain.end, footer->essence), "the end of the footer");
        } else if (chain.state == Chain::zeros && size % 512 != 0) {  // nobody fills up files to such a size
            facts.cut(size, "the random index pack");
        } else {
            facts.whole(std::min(std::max(chain.end, footer->essence), size));
        }
        return;
    }
    Chain chain = follow(input, header->essence, kMostPackItems);
    if (chain.state == Chain::unknown) chain = last_chain(input, kTail);
    if (chain.state == Chain::unknown) chain = last_chain(input, kLongTail);
    const bool is_empty =
        chain.state == Chain::unknown && is_compressed && is_zero_from(input, header->essence);
    if (chain.state == Chain::crosses) {
        facts.cut(chain.end, "the end of the last item, and the footer");
    } else if (chain.state == Chain::zeros || is_empty) {
        facts.cut(size, "the last items, and the footer");
    } else if (header->is_open()) {
        facts.open("no footer");
    } else if (chain.state == Chain::exact) {
        facts.whole(size);
    }
}

void Partitions::read(Input &input, Facts &facts) {
    start_ = first_partition(input);
    if (start_ == UINT64_MAX) return;
    header = partition_at(input, start_);
    if (!header) return;
    read_random_index(input);
    find_footer(input, facts);
}
