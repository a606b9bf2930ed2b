// Cuts a line of CSV into its numbers, eight characters at a time: their lengths vary too much for
// branches.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace stmctl
{

class CsvCutter
{
  public:
    explicit CsvCutter(std::string_view line)
        : size_of_line_(std::min(line.size(), LONGEST_LINE)), good_(line.size() <= LONGEST_LINE)
    {
        memcpy(line_.data(), line.data(), size_of_line_);
        memset(line_.data() + size_of_line_, 0, ROOM);
    }

    // The next number, in front of its semicolon; 16 bytes can be read there in any case.
    const char *next()
    {
        const char *number = line_.data() + at_;
        size_ = length(number);
        good_ = good_ && size_ > 0 && size_ <= LONGEST_NUMBER;
        at_ = good_ ? at_ + size_ + 1 : at_;
        return number;
    }

    size_t size() const { return size_; } // of the number

    // Whether numbers were all that came, and nothing but the end of the line is left.
    bool is_done() const { return good_ && at_ + 1 == size_of_line_ && line_[at_] == '\n'; }

  private:
    static_assert(std::endian::native == std::endian::little);

    static constexpr size_t LONGEST_LINE = 240;
    static constexpr size_t LONGEST_NUMBER = 11; // "-2147483648"
    static constexpr size_t ROOM = 16;           // that is read behind the line's end
    static constexpr uint64_t EACH = 0x0101010101010101;

    // A bit in the lowest byte that is a semicolon, and perhaps in higher ones.
    static uint64_t semicolons(const char *bytes)
    {
        uint64_t word = 0;
        memcpy(&word, bytes, sizeof(word));
        word ^= EACH * ';';
        return (word - EACH) & ~word & (EACH << 7U);
    }

    // How far it is to the semicolon; 16 if there is none.
    static size_t length(const char *number)
    {
        const uint64_t near = semicolons(number);
        const uint64_t far = semicolons(number + sizeof(near));
        const int bits = near != 0 ? std::countr_zero(near) : 64 + std::countr_zero(far);
        return static_cast<size_t>(bits) / 8;
    }

    std::array<char, LONGEST_LINE + ROOM> line_;
    size_t size_of_line_;
    bool good_;
    size_t at_ = 0;
    size_t size_ = 0;
};

} // namespace stmctl
