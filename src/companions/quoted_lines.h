// Lines of a dump, of which a quoted text may take several: descriptions have line breaks.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// Puts the lines of a quoted text together, its line feeds within. A quote that does not close within 64 KiB
// is none: its lines come one by one, as all others do.
class QuotedLines {
 public:
    using Taker = std::function<void(std::string_view line)>;

    explicit QuotedLines(Taker take) : take_(std::move(take)) {}

    // The next line, without its line feed.
    void add(std::string_view line);
    // The end of the dump.
    void finish();

 private:
    bool opens_text(std::string_view line) const;
    void release();

    Taker take_;
    std::string held_;  // lines of an open text
    bool holding_ = false;
    bool first_ = true;
    bool characters_ = false;  // the dump has lists of characters in quotes that stay open
    bool text_alone_ = false;  // the next line may be a text without label
};
