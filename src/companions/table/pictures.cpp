// The dumps of EXR and TIFF files, raw SDI captures and transport streams.
#include <cctype>

#include "companions/table/reader.h"
#include "companions/table/values.h"

namespace {

using enum Column;

bool is_hex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

class ExrReader : public DumpReader {
 public:
    void line(std::string_view line) override {
        const std::string_view text = without_position(line);
        if (text.size() != line.size()) {
            attribute_ = text.substr(0, text.find(' '));
        } else if (attribute_ == "channels") {
            take_channel(text);
        } else if (attribute_ == "compression") {
            take_compression(trimmed(text));
        } else if (attribute_ == "dataWindow") {
            take_window(trimmed(text));
        } else if (attribute_ == "framesPerSecond") {
            take_rate(text);
        } else if (attribute_ == "timeCode") {
            row_.offer(bcd, as_bcd(turned_word(text)));
        } else if (attribute_ == "keyCode") {
            take_keycode(text);
        }
    }

    void finish(Row &row) override {
        row = row_;
        row.offer(format, "EXR");
        if (known_ == 4) {
            row[width] = positive_text(window_[2] - window_[0] + 1);
            row[height] = positive_text(window_[3] - window_[1] + 1);
        }
    }

 private:
    // "R 1 0 1 1": the name and the type of the samples.
    void take_channel(std::string_view text) {
        if (text.size() < 3 || text[1] != ' ') return;
        row_.offer(bit_depth, text[2] == '1' ? "16" : text[2] == '0' || text[2] == '2' ? "32" : "");
    }

    void take_compression(std::string_view text) {
        static constexpr const char *kNames[] = {"uncompressed", "RLE", "ZIPS", "ZIP",  "PIZ",
                                                 "PXR24",        "B44", "B44A", "DWAA", "DWAB"};
        if (text == "uncompressed") row_.offer(codec, kNames[0]);
        if (!text.starts_with("compression(")) return;
        const int64_t number = number_in(text.substr(12));
        row_.offer(codec, number >= 0 && number < 10 ? kNames[number] : whole_text(number));
    }

    // The window's first and last columns and lines; they may be negative.
    void take_window(std::string_view text) {
        static constexpr std::string_view kLabels[] = {"xstart ", "ystart ", "xsize ", "ysize "};
        if (known_ == 4 || !text.starts_with(kLabels[known_])) return;
        std::string_view value = trimmed(text.substr(kLabels[known_].size()));
        const bool negative = value.starts_with('-');
        if (negative) value.remove_prefix(1);
        window_[known_++] = negative ? -number_in(value) : number_in(value);
    }

    // Little-endian words of a hex dump, as hexadecimal text.
    static std::string turned_word(std::string_view text, size_t index = 0) {
        std::string word;
        for (size_t i = 4; i-- > 0;) {
            const size_t at = (index * 4 + i) * 3;
            if (at + 2 > text.size() || !is_hex(text[at]) || !is_hex(text[at + 1])) return "";
            word += text.substr(at, 2);
        }
        return word;
    }

    void take_rate(std::string_view text) {
        const int64_t above = number_in(turned_word(text), 16);
        const int64_t below = number_in(turned_word(text, 1), 16);
        if (above > 0 && below > 0)
            row_.offer(frame_rate, rate_text(static_cast<double>(above) / static_cast<double>(below)));
    }

    // Two rows: manufacturer, type, prefix, count; then perforations.
    void take_keycode(std::string_view text) {
        for (size_t i = 0; i < 4 && film_words_ < 5; i++) {
            const int64_t word = number_in(turned_word(text, i), 16);
            if (word >= 0) film_[film_words_++] = word;
        }
        if (film_words_ == 5)
            row_.offer(keycode, keycode_text(film_[0], film_[1], film_[2], film_[3], film_[4]));
    }

    std::string attribute_;
    int64_t film_[5] = {};
    size_t film_words_ = 0;
    int64_t window_[4] = {};
    size_t known_ = 0;
    Row row_;
};

// The picture of a TIFF file is the largest of its directories: in a DNG file the first one is a preview.
class TiffReader : public DumpReader {
 public:
    void line(std::string_view line) override {
        const std::string_view text = trimmed(line);
        if (text.starts_with("entries")) {
            next_directory();
        } else if (text.starts_with("tag")) {
            take_tag(text);
        }
    }

    void finish(Row &row) override {
        next_directory();
        row = best_;
        row.offer(format, "TIFF");
        row.offer(frame_rate, rate_);
        row.offer(reel, reel_);
    }

 private:
    void next_directory() {
        if (best_[width].empty() || area(directory_) > area(best_)) best_ = directory_;
        directory_ = Row();
    }

    static double area(const Row &row) { return ratio_in(row[width]) * ratio_in(row[height]); }

    // "tag     : 0103 Compression - LZW 5"
    void take_tag(std::string_view text) {
        const size_t colon = text.find(": ");
        if (colon == std::string_view::npos) return;
        text = trimmed(text.substr(colon + 2));
        const std::string_view code = text.substr(0, 4);
        const std::string value = as_name(as_name(text));
        if (code == "0100") directory_.offer(width, as_count(value));
        if (code == "0101") directory_.offer(height, as_count(value));
        if (code == "0102") directory_.offer(bit_depth, as_count(value));
        if (code == "0103") take_compression(value);
        // CinemaDNG's FrameRate and ReelName.
        if (code == "c764" && rate_.empty()) rate_ = as_rate(value);
        if (code == "c789" && reel_.empty()) reel_ = as_quoted(value);
    }

    void take_compression(std::string_view value) {
        const size_t number = value.rfind(' ');
        if (value.starts_with("- ") && number > 1) {
            directory_.offer(codec, as_text(value.substr(2, number - 2)));
        } else {
            directory_.offer(codec, as_text(value));
        }
    }

    Row directory_;
    Row best_;
    std::string rate_;
    std::string reel_;
};

// "Raster is SDTV - PAL 720x576 25Hz", "Raster is HDTV - SMPTE274/25 1920x1080"
class SdiReader : public DumpReader {
 public:
    void line(std::string_view line) override {
        if (!line.starts_with("Raster is ")) return;
        const size_t x = line.rfind('x');
        const size_t blank = line.rfind(' ', x);
        if (x == std::string_view::npos || blank == std::string_view::npos) return;
        row_[width] = as_count(line.substr(blank));
        row_[height] = as_count(line.substr(x + 1));
        const size_t slash = line.find('/');
        const size_t behind = line.find(' ', x);
        if (slash != std::string_view::npos) {
            row_[frame_rate] = as_rate(line.substr(slash + 1, blank - slash - 1));
        } else if (behind != std::string_view::npos) {
            row_[frame_rate] = as_rate(line.substr(behind));
        }
    }

    void finish(Row &row) override {
        row = row_;
        row.offer(format, "SDI");
    }

 private:
    Row row_;
};

// The first program map tells what its first stream is, if no descriptors stand before it.
class TransportReader : public DumpReader {
 public:
    void line(std::string_view line) override {
        const std::string_view text = trimmed(line);
        if (++lines_ > kLines) done_ = true;
        if (!text.starts_with("00 02 b") || text.size() < 41 || text.substr(33, 5) != "f0 00") return;
        codec_ = stream_type(number_in(text.substr(39, 2), 16));
        done_ = true;
    }

    void finish(Row &row) override {
        row.offer(format, "MPEG-TS");
        row.offer(codec, codec_);
    }

 private:
    static constexpr int kLines = 20000;

    static std::string stream_type(int64_t type) {
        switch (type) {
            case 0x01: return "MPEG-1 video";
            case 0x02: return "MPEG-2 video";
            case 0x03:
            case 0x04: return "MPEG audio";
            case 0x0F:
            case 0x11: return "AAC";
            case 0x10: return "MPEG-4 video";
            case 0x1B: return "H.264";
            case 0x21: return "JPEG 2000";
            case 0x24: return "HEVC";
            default: return "";
        }
    }

    int lines_ = 0;
    std::string codec_;
};

}  // namespace

std::unique_ptr<DumpReader> exr_reader() { return std::make_unique<ExrReader>(); }
std::unique_ptr<DumpReader> tiff_reader() { return std::make_unique<TiffReader>(); }
std::unique_ptr<DumpReader> sdi_reader() { return std::make_unique<SdiReader>(); }
std::unique_ptr<DumpReader> transport_reader() { return std::make_unique<TransportReader>(); }
