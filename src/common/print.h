// All that keldump prints.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "common/stream.h"

// Prints as printf does. The format is literal text of ours, so that each line of output can be found in the
// source; the arguments are the file's.
[[gnu::format(printf, 1, 2)]] void print(const char *format, ...);

// Prints text of ours that is no literal of a print call: labels of rows, what frames values. Its line ends
// are line ends.
void print_own(std::string_view text);
// Prints a text of the file, or a header value as a buffer of the ring holds it.
inline void print_value(const char *text) { print("%s", text); }

// Prints bytes of the file as they are.
void print_bytes(std::span<const uint8_t> bytes);

// Takes output instead of standard output.
class OutputTaker {
 public:
    virtual ~OutputTaker() = default;
    virtual void take(std::string_view text) = 0;
};

// Standard output: a block that goes out when it is full. Where nothing more can be written (the reader is
// gone, the disk is full) the run ends, or what is printed from then on is dropped.
class Output {
 public:
    static constexpr size_t kLargestPiece = 64 * 1024;

    // Room for n characters (kLargestPiece at most) at the end; the caller fills all of them.
    char *claim(size_t n) {
        if (sizeof block_ - used_ < n) flush();
        char *room = block_ + used_;
        used_ += n;
        return room;
    }
    // Takes back what was claimed last and not filled.
    void give_back(size_t n) { used_ -= n; }
    // The room that is left, and how much of it was then used.
    std::span<char> room() { return {block_ + used_, sizeof block_ - used_}; }
    void use(size_t n) { used_ += n; }

    // What has not gone out yet; and without it.
    std::string_view held() const { return {block_, used_}; }
    void drop() { used_ = 0; }

    void write(std::string_view text);
    void flush();

    // Whether the run goes on without output when that fails, for what else it makes.
    void goes_on_without(bool yes) { goes_on_ = yes; }
    // What is printed goes to a taker from now on; null: to standard output.
    void goes_to(OutputTaker *taker) { taker_ = taker; }
    // Nothing is written from now on.
    void discard() { failed_ = goes_on_ = true; }

 private:
    void write_block(const char *data, size_t n);

    size_t used_ = 0;
    bool failed_ = false;
    bool goes_on_ = false;
    OutputTaker *taker_ = nullptr;
    char block_[kLargestPiece + 16 * 1024] = {};
};

extern Output standard_output;

// Prints a text of the file, or digits of it.
inline void print_value(std::string_view text) {
    if (listening) {
        print("%.*s", static_cast<int>(text.size()), text.data());
    } else {
        standard_output.write(text);
    }
}
