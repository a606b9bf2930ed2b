// Cuts a line of CSV into its numbers.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace stmctl
{

class CsvCutter
{
  public:
    explicit CsvCutter(std::string_view line) : line_(line)
    {
        // The lengths of numbers vary too much to predict a branch at each semicolon.
        const size_t size = line.size() <= LONGEST_LINE ? line.size() : 0;
        size_t count = 0;
        for (size_t i = 0; i < size; ++i) {
            ends_[count] = static_cast<uint8_t>(i);
            count += line[i] == ';' ? 1U : 0U;
        }
        count_ = count;
    }

    // Whether it consists of this many fields, each followed by a semicolon, and the line end.
    bool has(size_t fields) const
    {
        return count_ == fields && line_.ends_with(";\n") && line_.size() == ends_[fields - 1] + 2U;
    }

    // One of its fields.
    std::string_view operator[](size_t field) const
    {
        const size_t begin = field == 0 ? 0 : ends_[field - 1] + 1U;
        return {line_.data() + begin, ends_[field] - begin};
    }

  private:
    static constexpr size_t LONGEST_LINE = 255;

    std::string_view line_;
    std::array<uint8_t, LONGEST_LINE + 1> ends_; // of the fields: the positions of their semicolons
    size_t count_;
};

} // namespace stmctl
