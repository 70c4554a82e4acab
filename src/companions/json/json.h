// A dump as JSON.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "companions/job.h"
#include "companions/lines/lines.h"
#include "companions/registers/annotate.h"
#include "main/dump_options.h"

struct JsonStyle {
    bool lines = false;  // JSON Lines: each line of the dump an object of its own, complete with its file
    bool utf8 = false;   // bytes that are no UTF-8 as U+FFFD, not as lone surrogates
    std::vector<PathPattern> match;  // lines whose path matches one; all lines where there is none
};

// Appends a text between quotes.
void append_json(std::string &out, std::string_view text, bool utf8);

// Listens to the dump of a file and gives its object, in pieces that end with a line.
class JsonDump : public Listener {
 public:
    JsonDump(const JsonStyle &style, std::string_view file, JobOutput &output);

    void format(const char *name) override;
    void line(const Line &line) override;
    // Ends the object. `message`: why there is no dump; else empty.
    void finish(std::string_view message, int status);
    // The rest of an object whose lines were given only in part, or not at all; `begun`: whether any were.
    static std::string broken_off(const JsonStyle &style, std::string_view file, bool begun,
                                  std::string_view message);

 private:
    void begin_file();
    void begin_line(const Line &line);
    void put_text(std::string_view text);
    void end_line(const Line &line);
    void put_path();
    void put_values();
    void flush();

    const JsonStyle &style_;
    JobOutput &output_;
    std::string file_;  // its name, as JSON
    std::string format_ = "null";
    bool begun_ = false;
    bool any_line_ = false;
    LinePlaces places_;
    bool is_mxf_ = false;
    RegisterNotes registers_;
    RegisterNote note_;  // on the line
    FieldLine field_;
    bool in_line_ = false;  // a line whose parts come one after the other
    bool shown_ = false;    // that line matches
    bool long_value_ = false;
    std::string pending_;  // bytes of a character that a part cut
    std::string out_;
};

// Gives the object of a file; where there is no dump a complaint, too. Whether the file was dumped.
bool dump_as_json(const std::string &path, const DumpOptions &options, const JsonStyle &style,
                  JobOutput &output);
