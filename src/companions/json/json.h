// A dump as JSON.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "companions/lines/lines.h"

struct JsonStyle {
    bool lines = false;  // JSON Lines: each line of the dump an object of its own, complete with its file
    bool utf8 = false;   // bytes that are no UTF-8 as U+FFFD, not as lone surrogates
    std::vector<PathPattern> match;  // lines whose path matches one; all lines where there is none
};

// Appends a text between quotes.
void append_json(std::string &out, std::string_view text, bool utf8);

// Listens to the dump of a file and writes its object.
class JsonDump : public Listener {
 public:
    JsonDump(const JsonStyle &style, std::string_view file);

    void format(const char *name) override;
    void line(const Line &line) override;
    // Ends the object. `message`: why there is no dump; else empty.
    void finish(std::string_view message, int status);

 private:
    void begin_file();
    void begin_line(const Line &line);
    void put_text(std::string_view text);
    void end_line(const Line &line);
    void put_path();
    void put_values();
    void flush_full();

    const JsonStyle &style_;
    std::string file_;  // its name, as JSON
    std::string format_ = "null";
    bool begun_ = false;
    bool any_line_ = false;
    LinePlaces places_;
    FieldLine field_;
    bool in_line_ = false;  // a line whose parts come one after the other
    bool shown_ = false;    // that line matches
    bool long_value_ = false;
    std::string pending_;  // bytes of a character that a part cut
    std::string out_;
};
