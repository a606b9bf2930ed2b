// Memory for the text of one record, which is put together without the heap.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace stmctl
{

class TextBuffer
{
  public:
    std::string_view text() const { return {bytes_.data(), size_}; }
    void clear() { size_ = 0; }

    void put(std::string_view text)
    {
        reserve(text.size());
        memcpy(bytes_.data() + size_, text.data(), text.size());
        size_ += text.size();
    }

    void put(int64_t number)
    {
        reserve(LONGEST_NUMBER);
        char *at = bytes_.data() + size_;
        size_ += static_cast<size_t>(std::to_chars(at, at + LONGEST_NUMBER, number).ptr - at);
    }

    // The first of 16 bytes that can be read: a copy of a known length is a single move.
    void put_first_of_16(const char *bytes, size_t size)
    {
        reserve(16);
        memcpy(bytes_.data() + size_, bytes, 16);
        size_ += size;
    }

    void replace_first(char with) { bytes_[0] = with; }

  private:
    static constexpr size_t SIZE = 1024; // the longest text of a record takes less than 700
    static constexpr size_t LONGEST_NUMBER = 20;

    void reserve(size_t size) const
    {
        if (size > SIZE - size_) {
            throw std::length_error("a record's text is too long");
        }
    }

    std::array<char, SIZE> bytes_;
    size_t size_ = 0;
};

} // namespace stmctl
