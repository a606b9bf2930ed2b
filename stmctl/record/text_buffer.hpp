// Memory for the text of one record, which is built without the heap.
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
        memcpy(room(text.size()), text.data(), text.size());
        size_ += text.size();
    }

    void put(int64_t number)
    {
        constexpr size_t LONGEST = 20; // "-9223372036854775808"
        char *at = room(LONGEST);
        end(std::to_chars(at, at + LONGEST, number).ptr);
    }

    // For writing in place: this many bytes can be written after the text; end then sets its new
    // end.
    char *room(size_t size)
    {
        if (size > bytes_.size() - size_) {
            throw std::length_error("a record's text is too long");
        }
        return bytes_.data() + size_;
    }
    void end(const char *end) { size_ = static_cast<size_t>(end - bytes_.data()); }

  private:
    std::array<char, 1024> bytes_; // the longest text of a record takes less than 700
    size_t size_ = 0;
};

} // namespace stmctl
