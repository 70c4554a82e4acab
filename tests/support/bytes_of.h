// Files built byte by byte.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

// A growing byte string. Numbers are written in the order that the constructor names; at() moves back (or
// beyond the end, filling with zeros) to overwrite.
class ByteWriter {
 public:
    enum class Order { little, big };
    explicit ByteWriter(Order order = Order::little) : order_(order) {}

    ByteWriter &at(size_t offset) {
        position_ = offset;
        return *this;
    }
    // One number after the other.
    ByteWriter &u8(auto... v) { return (number(static_cast<uint64_t>(v), 1), ...); }
    ByteWriter &u16(auto... v) { return (number(static_cast<uint64_t>(v), 2), ...); }
    ByteWriter &u24(auto... v) { return (number(static_cast<uint64_t>(v), 3), ...); }
    ByteWriter &u32(auto... v) { return (number(static_cast<uint64_t>(v), 4), ...); }
    ByteWriter &u64(auto... v) { return (number(static_cast<uint64_t>(v), 8), ...); }
    ByteWriter &f32(auto... v) { return u32(std::bit_cast<uint32_t>(static_cast<float>(v))...); }
    ByteWriter &f64(auto... v) { return u64(std::bit_cast<uint64_t>(static_cast<double>(v))...); }
    ByteWriter &text(std::string_view s) { return raw(s); }
    // A text in a field of fixed width, filled with zeros.
    ByteWriter &text(std::string_view s, size_t width) { return raw(s).zeros(width - s.size()); }
    ByteWriter &zeros(size_t n) { return fill(0, n); }
    ByteWriter &fill(uint8_t byte, size_t n) { return raw(std::string(n, static_cast<char>(byte))); }
    ByteWriter &raw(std::string_view s) {
        if (bytes_.size() < position_ + s.size()) bytes_.resize(position_ + s.size());
        bytes_.replace(position_, s.size(), s);
        position_ += s.size();
        return *this;
    }
    // Bytes written as hexadecimal digits; blanks are skipped.
    ByteWriter &hex(std::string_view digits) {
        std::string out;
        int high = -1;
        for (const char c : digits) {
            if (c == ' ') continue;
            const int value = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
            if (high < 0) {
                high = value;
            } else {
                out += static_cast<char>(high << 4 | value);
                high = -1;
            }
        }
        return raw(out);
    }

    size_t size() const { return bytes_.size(); }
    const std::string &str() const { return bytes_; }

 private:
    ByteWriter &number(uint64_t v, unsigned n) {
        std::string out(n, '\0');
        for (unsigned i = 0; i < n; i++) {
            out[order_ == Order::little ? i : n - 1 - i] = static_cast<char>(v >> (8 * i));
        }
        return raw(out);
    }

    Order order_;
    size_t position_ = 0;
    std::string bytes_;
};

inline ByteWriter little() { return ByteWriter(ByteWriter::Order::little); }
inline ByteWriter big() { return ByteWriter(ByteWriter::Order::big); }

// n printable bytes that count up: every field of a layout shows a value of its own.
inline std::string counting(size_t n) {
    std::string bytes;
    for (size_t i = 0; i < n; i++) bytes += static_cast<char>(0x21 + i % 94);
    return bytes;
}

inline std::string hex(std::string_view digits) { return big().hex(digits).str(); }

// A byte as two hexadecimal digits.
inline std::string hex_digits(unsigned byte) {
    constexpr char digits[] = "0123456789ABCDEF";
    return {digits[byte >> 4 & 15], digits[byte & 15]};
}
