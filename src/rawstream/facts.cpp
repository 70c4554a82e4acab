#include <algorithm>
#include <string_view>

#include "main/facts_of.h"
#include "rawstream/detect.h"

// Lines of a tag and a decimal number up to a tab, then the words of the signal.
void sdi_facts(Input &input, Facts &facts) {
    constexpr uint64_t kMostHeader = 4096;
    const Bytes head = input.present(0, kMostHeader);
    const auto bytes = head.span(0, head.size());
    const auto tab = std::find(bytes.begin(), bytes.end(), uint8_t{'\t'});
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()),
                                static_cast<size_t>(tab - bytes.begin()));
    const auto number = [&](std::string_view tag) {
        const size_t at = text.find(tag);
        int64_t value = 0;
        for (size_t i = at + tag.size(); at != text.npos && i < text.size(); i++) {
            if (text[i] == ' ' || text[i] == '=' || text[i] == ':') continue;
            if (text[i] < '0' || text[i] > '9' || value > 100000000000000) break;
            value = value * 10 + (text[i] - '0');
        }
        return value;
    };
    Picture &picture = facts.picture();
    picture.codec = "uncompressed";
    picture.components = "4:2:2";
    const int64_t bits = number("\nnbits ");
    picture.bits = bits == 8 ? 8 : bits > 0 ? 10 : 0;
    if (tab == bytes.end()) {
        facts.problem = "the header has no end";
        if (input.size() < kMostHeader) facts.cut(input.size() + 1, "the header's end");
        return;
    }
    const uint64_t start = static_cast<uint64_t>(tab - bytes.begin()) + 1;
    const uint64_t size = static_cast<uint64_t>(std::max(number("\nsize "), number("STREAMERsize ")));
    const std::vector<uint16_t> words =
        unpack_words(input.present(start, 2 * kSignalWords), bits == 8, text.find("nbits10kel") != text.npos);
    if (const Raster *raster = find_raster(words.data(), kSignalWords)) {
        picture.width = raster->width;
        picture.height = raster->height;
        picture.rate = raster->rate;
    }
    if (input.size() <= start) {
        facts.cut(start + 1, "the signal");
    } else if (size > 0 && input.size() >= start + size) {
        facts.whole(start + size);
    }
}
