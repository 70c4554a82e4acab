// The facts of a file as one line of text.
#pragma once

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "common/input.h"
#include "main/facts.h"
#include "support/bytes_of.h"
#include "support/command.h"

inline std::string ratio_text(Ratio ratio) {
    return std::to_string(ratio.n) + (ratio.d == 1 ? "" : "/" + std::to_string(ratio.d));
}

// What is known alone, in the record's order: "MOV | 1920x1080 ProRes 422 4:2:2 10 bits 25 fps 50 frames |
// 2ch 48000 Hz 24 bits PCM | 10:00:00:00 track 3 | 2 s | whole".
inline std::string text_of(const Facts &facts) {
    std::string text = facts.format;
    const auto add = [&](const std::string &word) { text += word.empty() ? "" : " " + word; };
    add(facts.variant);
    for (const Picture &p : facts.pictures) {
        text += " | " + std::to_string(p.width) + "x" + std::to_string(p.height);
        if (p.coded_width != 0)
            add("(" + std::to_string(p.coded_width) + "x" + std::to_string(p.coded_height) + ")");
        add(p.codec);
        add(p.components);
        if (p.bits != 0) add(std::to_string(p.bits) + (p.floating ? " bits float" : " bits"));
        constexpr const char *kScans[] = {"", "p", "i", "tff", "bff"};
        add(kScans[static_cast<size_t>(p.scan)]);
        if (p.pixel_aspect.is_set() && p.pixel_aspect.n != p.pixel_aspect.d)
            add("aspect " + ratio_text(p.pixel_aspect));
        if (p.colour.primaries >= 0 || p.colour.full_range >= 0)
            add("colour " + std::to_string(p.colour.primaries) + "," + std::to_string(p.colour.transfer) +
                "," + std::to_string(p.colour.matrix) + "," + std::to_string(p.colour.full_range));
        if (p.rate.is_set()) add(ratio_text(p.rate) + (p.constant_rate == false ? " vfr" : " fps"));
        if (p.frames >= 0) add(std::to_string(p.frames) + " frames");
        if (p.played >= 0) add("(" + std::to_string(p.played) + " played)");
    }
    for (const Sound &s : facts.sounds) {
        text += " | " + std::to_string(s.channels) + "ch " + ratio_text(s.rate) + " Hz";
        if (s.bits != 0) add(std::to_string(s.bits) + " bits");
        add(s.codec);
        add(s.layout);
        add(s.language);
        if (s.samples >= 0) add(std::to_string(s.samples) + " samples");
    }
    for (const FileTimecode &t : facts.timecodes) text += " | " + t.text() + " " + t.place;
    if (!facts.keycode.empty()) text += " | key " + facts.keycode;
    if (!facts.reel.empty()) text += " | reel " + facts.reel;
    if (!facts.writer.empty()) text += " | by " + facts.writer;
    if (!facts.date.empty()) text += " | " + facts.date;
    if (facts.duration.d > 0) text += " | " + ratio_text(facts.duration) + " s";
    constexpr const char *kStates[] = {"", "whole", "cut", "open"};
    if (facts.extent.state != Extent::unknown) text += std::string(" | ") + kStates[facts.extent.state];
    if (!facts.extent.missing.empty()) add(facts.extent.missing);
    for (const auto &[name, value] : facts.more) text += " | " + name + ": " + value;
    if (!facts.problem.empty()) text += " | ! " + facts.problem;
    return text;
}

inline std::string facts_of(const std::string &content, const char *name = "file.bin") {
    Input input(name, content.data(), content.size());
    return text_of(facts(input));
}

// Bits a second of each picture and sound: "19200 -1".
inline std::string bit_rates_of(const std::string &content, const char *name = "file.bin") {
    Input input(name, content.data(), content.size());
    const Facts found = facts(input);
    std::string rates;
    for (const Picture &p : found.pictures) append(rates, std::to_string(p.bit_rate), " ");
    for (const Sound &s : found.sounds) append(rates, std::to_string(s.bit_rate), " ");
    return rates;
}

// The bytes that the structures of a file reach to.
inline uint64_t claimed_of(const std::string &content, const char *name = "file.bin") {
    Input input(name, content.data(), content.size());
    return facts(input).extent.claimed;
}

// What is left of a file's facts where it is cut: "cut the picture's end" and the like.
inline std::string extent_of(const std::string &content, const char *name) {
    Input input(name, content.data(), content.size());
    const Facts found = facts(input);
    constexpr const char *kStates[] = {"unknown", "whole", "cut", "open"};
    return kStates[found.extent.state] + (found.extent.missing.empty() ? "" : " " + found.extent.missing);
}

// The facts of all samples of a directory; whether they are whole without their last byte, their second half,
// and with zeros in its place.
inline std::string facts_of_samples(const std::string &directory) {
    std::vector<std::string> names;
    for (const auto &entry :
         std::filesystem::directory_iterator(std::string(KELDUMP_SAMPLES) + "/" + directory)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".txt" && extension != ".sh") names.push_back(entry.path().string());
    }
    std::ranges::sort(names);
    std::string text;
    for (const std::string &path : names) {
        const std::string name = std::filesystem::path(path).filename().string();
        const std::string content = content_of(path);
        const size_t half = content.size() / 2;
        text += name + ": " + facts_of(content, name.c_str()) + "\n";
        for (const std::string &part : {content.substr(0, content.size() - 1), content.substr(0, half),
                                        content.substr(0, half) + std::string(half, '\0')})
            text += "  " + extent_of(part, name.c_str()) + "\n";
    }
    return text;
}

// What is lost and what comes of the facts of a file where it is another one: " - whole + cut the end", with
// the bytes that its structures reach to and what stays along a sequence.
inline std::string facts_difference(const std::string &first, const std::string &second,
                                    const char *name = "file.bin") {
    const auto parts_of = [&](const std::string &bytes) {
        Input input(name, bytes.data(), bytes.size());
        const Facts found = facts(input);
        std::string text = text_of(found) + " | ";
        if (found.extent.claimed > 0) text += std::to_string(found.extent.claimed) + " bytes | ";
        for (const auto &[held, value] : found.held) text += held + " (held): " + value + " | ";
        std::vector<std::string> parts;
        for (size_t at = 0, end; (end = text.find(" | ", at)) != text.npos; at = end + 3)
            parts.push_back(text.substr(at, end - at));
        return parts;
    };
    const std::vector<std::string> before = parts_of(first), after = parts_of(second);
    std::string report;
    for (const auto &[sign, those, others] : {std::tuple{" - ", before, after}, {" + ", after, before}}) {
        for (const std::string &part : those)
            if (std::ranges::find(others, part) == others.end()) report += sign + part;
    }
    return before == after ? " the same" : report;
}

// A row for each of the words between blanks: the word and what `tell` says of it.
template <typename Tell>
std::string rows_of(const std::string &words, Tell tell) {
    std::istringstream all(words);
    std::string rows;
    for (std::string word; all >> word;) rows += word + ":" + tell(word) + "\n";
    return rows;
}

// What `change` makes of a copy of bytes with each of the steps between commas.
template <typename Change>
std::string changed_by(std::string bytes, const std::string &steps, Change change) {
    std::istringstream all(steps);
    for (std::string step; std::getline(all, step, ',');) change(bytes, step);
    return bytes;
}

// What a word says of bytes: "780=00FF" that these stand from 780 on, "<100" that they end there, ">4" that
// as many more come behind; joined by commas, these one after the other.
inline std::string changed(const std::string &content, const std::string &word) {
    return changed_by(content, word, [](std::string &bytes, const std::string &step) {
        const size_t number = std::stoul(step.substr(step.find_first_of("0123456789")));
        if (step[0] == '<') return bytes.resize(number);
        if (step[0] == '>') return void(bytes.append(number, 'x'));
        const std::string raw = hex(step.substr(step.find('=') + 1));
        bytes.replace(number, raw.size(), raw);
    });
}

// The same for each of `changes`, such words.
inline std::string facts_changed(const std::string &content, const std::string &changes,
                                 const char *name = "file.bin") {
    return rows_of(changes, [&](const std::string &word) {
        return facts_difference(content, changed(content, word), name);
    });
}

// The same of a file of samples.
inline std::string sample_changed(const std::string &path, const std::string &changes) {
    return facts_changed(content_of(std::string(KELDUMP_SAMPLES) + "/" + path), changes,
                         path.substr(path.rfind('/') + 1).c_str());
}
