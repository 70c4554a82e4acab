// The facts of a file whose boxes or chunks are changed.
#pragma once

#include <algorithm>
#include <string>

#include "support/facts_text.h"

// The same as facts_changed() with places in boxes, "stsz+4" for 4 bytes behind the type of the last one,
// "-4" for its size; and with bit rates that change.
inline std::string boxes_changed(const std::string &content, const std::string &changes) {
    const auto change = [&](std::string &bytes, const std::string &step) {
        std::string type = step.substr(0, 4);
        std::ranges::replace(type, '_', ' ');
        const size_t n = std::stoul(step.substr(5));
        const size_t at = content.rfind(type) + 4;
        const std::string raw = hex(step.substr(step.find('=') + 1));
        bytes.replace(step[4] == '-' ? at - n : at + n, raw.size(), raw);
    };
    return rows_of(changes, [&](const std::string &word) {
        const std::string bytes = changed_by(content, word, change);
        const std::string rates = bit_rates_of(bytes);
        return facts_difference(content, bytes) +
               (rates == bit_rates_of(content) ? "" : " = " + rates + " bit/s");
    });
}
