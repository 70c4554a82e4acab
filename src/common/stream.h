// What a dump prints, as data for who listens instead of standard output. The literal text of a print call is
// ours, its arguments are the file's: a text of the file can neither end a line nor pass for a label.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "common/bytes.h"
#include "common/file_range.h"

// A part of a line. What no piece covers is text of the file, too.
struct Piece {
    enum Kind : uint8_t {
        literal,
        integer,
        hexadecimal,
        real,
        text,
        character,
        unset,
        numbers,  // several, apart by blanks
        words,    // the same, of texts
    };

    Kind kind = literal;
    bool negative = false;  // an integer's sign
    uint32_t start = 0;     // in the line's text, in bytes
    uint32_t size = 0;
    uint64_t number = 0;  // of an integer its magnitude
    double value = 0;     // of a real
};

inline Piece integer_piece(int64_t value) {
    const uint64_t bits = static_cast<uint64_t>(value);
    return {.kind = Piece::integer, .negative = value < 0, .number = value < 0 ? ~bits + 1 : bits};
}

// A line of a dump, or a part of one that is longer than memory should hold.
struct Line {
    std::string_view text;  // without its end
    std::span<const Piece> pieces;
    std::span<const FileRange> at;  // the bytes of the file that it was made of, in order
    uint32_t behind_position = 0;   // where the line goes on behind a position or level at its start
    uint32_t deeper = 0;            // how much deeper it is than its blanks say
    bool label_is_marked = false;   // the label is
    uint32_t label_start = 0;       // from here
    uint32_t label_end = 0;         // to here; 0: to the end of the piece that begins there
    bool label_is_own = true;       // false: the file names it
    bool is_aside = false;          // a remark between the lines: sections go on behind it
    bool is_field = false;          // no section, whatever follows
    bool is_listing = false;        // a row of a hex dump, of samples, of a table
    bool goes_on = false;           // in the next part
    bool ends = true;               // false: it goes on, or is the last and has no line end
};

class Listener {
 public:
    virtual ~Listener() = default;
    virtual void line(const Line &line) = 0;
    // A format was recognised, by its name in the table of formats.
    virtual void format(const char *) {}
};

// Whether somebody listens. The marks below cost nothing where nobody does.
inline constinit bool listening = false;

// Has a listener get all that is printed, from its making to its end; null leaves standard output.
class Listening {
 public:
    explicit Listening(Listener *listener);
    ~Listening();
    Listening(const Listening &) = delete;
    Listening &operator=(const Listening &) = delete;

    // The file whose bytes are told: none behind its end.
    void to_dump_of(Input &file);
    // Hands over what is left of a last line without end.
    void finish();
};

namespace stream {

void end_line(bool is_listing);
void end_part();
void add(const Piece &piece);
bool is_own(const char *text);
void forget_own();
void add_read(uint64_t offset, uint64_t n);
void add_own(const char *text);
void add_also(const Bytes &bytes);
void set_exact(const Bytes &bytes);
void set_exact(FileRange range);
void add_also(FileRange range);
void clear_reads();
void keep_reads();
void mark_position(uint32_t deeper);
void mark_label(bool is_own);
void mark_label_end();
void mark_field();
void mark_aside();
void tell_format(const char *name);

}  // namespace stream

// A "%s" argument of the next print call that is text of ours: it counts as literal, line ends in it too.
inline const char *own(const char *text) {
    if (listening) stream::add_own(text);
    return text;
}

// What was looked at so far belongs to no line.
inline void forget() {
    if (listening) stream::clear_reads();
}

// The line that is being printed is of exactly this range, whatever else is looked at; also() adds to it.
inline void from(const Bytes &bytes) {
    if (listening) stream::set_exact(bytes);
}
inline void from(FileRange range) {
    if (listening) stream::set_exact(range);
}
inline void from(const Bytes &bytes, uint64_t offset, uint64_t n) {
    if (listening) stream::set_exact(bytes.sub(offset, n));
}

// The line is of this range too, which was looked at before, or is not looked at through Bytes.
inline void also(FileRange range) {
    if (listening && range.size) stream::add_also(range);
}
inline void also(const Bytes &bytes) {
    if (listening) stream::add_also(bytes);
}
inline void also(const Bytes &bytes, uint64_t offset, uint64_t n) {
    if (listening) stream::add_also(bytes.sub(offset, n));
}

// The line is a remark (an error, a warning): the section around it goes on.
inline void aside() {
    if (listening) stream::mark_aside();
}

// The line is no section, whatever follows it.
inline void only_field() {
    if (listening) stream::mark_field();
}

// What the line has so far, if anything, is a position or a level; the blanks that follow and `deeper` are
// its depth.
inline void behind_position(uint32_t deeper = 0) {
    if (listening) stream::mark_position(deeper);
}

// The label of the line is what is printed next, up to label_ends() or to the end of the piece or value;
// `is_own` is false where the file names it.
inline void label_begins(bool is_own = true) {
    if (listening) stream::mark_label(is_own);
}
inline void label_ends() {
    if (listening) stream::mark_label_end();
}

// A number that is kept for lines further on, with the bytes that it was read from.
template <typename Number>
struct Kept {
    Number value = 0;
    FileRange at;

    operator Number() const { return value; }
    // In the line that is being printed.
    Number shown() const {
        also(at);
        return value;
    }
};

// Bytes of a file that were copied to memory keep their place while this lives.
class Copied {
 public:
    // What is looked at is a copy of these ranges, one behind the other.
    explicit Copied(std::span<const FileRange> parts);
    // What from() and also() are given may lie in this copy, of which byte i is byte i ^ swapped of the
    // range.
    Copied(const Bytes &copy, FileRange place, uint32_t swapped = 0);
    ~Copied();
    Copied(const Copied &) = delete;
    Copied &operator=(const Copied &) = delete;
};
