// Facts as one line of text.
#pragma once

#include <string>

#include "common/input.h"
#include "main/facts.h"

inline std::string ratio_text(Ratio r) {
    return r.d == 1 ? std::to_string(r.n) : std::to_string(r.n) + "/" + std::to_string(r.d);
}

// "FORMAT variant | 1920x1080 10 4:2:2 codec p 25 f50 | sound 2ch 48000 24 PCM n96000 | 01:00:00:00 place |
// reel= writer= date= dur= | whole"; what is not known is left out.
inline std::string facts_text(const std::string &bytes, const char *name = "file") {
    Input input(name, bytes.data(), bytes.size());
    const Facts f = facts(input);
    std::string out = f.format + (f.variant.empty() ? "" : " " + f.variant);
    const auto add = [&](const std::string &text) {
        if (!text.empty()) out += " " + text;
    };
    for (const Picture &p : f.pictures) {
        out += " | " + std::to_string(p.width) + "x" + std::to_string(p.height);
        if (p.coded_width)
            add("(" + std::to_string(p.coded_width) + "x" + std::to_string(p.coded_height) + ")");
        if (p.bits) add(std::to_string(p.bits) + (p.floating ? "f" : ""));
        add(p.components);
        add(p.codec);
        constexpr const char *kScans[] = {"", "p", "i", "tff", "bff"};
        add(kScans[static_cast<int>(p.scan)]);
        if (p.pixel_aspect.is_set()) add("par " + ratio_text(p.pixel_aspect));
        if (p.rate.is_set()) add(ratio_text(p.rate));
        if (p.frames >= 0) add("f" + std::to_string(p.frames));
    }
    for (const Sound &s : f.sounds) {
        out += " | sound " + std::to_string(s.channels) + "ch";
        if (s.rate.is_set()) add(ratio_text(s.rate));
        if (s.bits) add(std::to_string(s.bits));
        add(s.codec);
        add(s.layout);
        add(s.language);
        if (s.samples >= 0) add("n" + std::to_string(s.samples));
    }
    for (const FileTimecode &t : f.timecodes) out += " | " + t.text() + " " + t.place;
    const auto named = [&](const char *label, const std::string &text) {
        if (!text.empty()) out += std::string(" | ") + label + text;
    };
    named("reel ", f.reel);
    named("writer ", f.writer);
    named("date ", f.date);
    named("lasts ", f.duration.is_set() ? ratio_text(f.duration) : "");
    constexpr const char *kStates[] = {"", "whole", "cut", "open"};
    named("", kStates[f.extent.state]);
    named("missing ", f.extent.missing);
    return out;
}
