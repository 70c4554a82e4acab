// The facts of a file whose boxes or chunks are changed.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>

#include "support/facts_text.h"

// The same as facts_changed() with places in boxes, "stsz+4" for 4 bytes behind the type of the last one,
// "-4" for its size; and with bit rates that change.
inline std::string boxes_changed(const std::string &content, const std::string &changes) {
    std::istringstream words(changes);
    std::string report;
    for (std::string word; words >> word;) {
        std::string bytes = content;
        std::istringstream steps(word);
        for (std::string step; std::getline(steps, step, ',');) {
            std::string type = step.substr(0, 4);
            std::ranges::replace(type, '_', ' ');
            const size_t n = std::stoul(step.substr(5));
            const size_t at = content.rfind(type) + 4;
            const std::string raw = hex(step.substr(step.find('=') + 1));
            bytes.replace(step[4] == '-' ? at - n : at + n, raw.size(), raw);
        }
        report += word + ":" + facts_difference(content, bytes);
        const std::string rates = bit_rates_of(bytes);
        report += rates == bit_rates_of(content) ? "\n" : " = " + rates + " bit/s\n";
    }
    return report;
}
