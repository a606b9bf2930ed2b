// Writes text to a descriptor in large pieces, and leaves whole lines behind where it fails.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace stmctl
{

class BufferedWriter
{
  public:
    constexpr explicit BufferedWriter(int descriptor) noexcept : descriptor_(descriptor) {}

    int descriptor() const { return descriptor_; }

    // After a failure, whose errno is kept, everything else is dropped; of a regular file the half
    // line at the end is cut off.
    void write(std::string_view text)
    {
        if (text.size() > bytes_.size() - held_) {
            write_past_buffer(text);
            return;
        }
        memcpy(bytes_.data() + held_, text.data(), text.size());
        held_ += text.size();
    }
    void flush();
    void close(); // flushes; once is enough

    int error() const { return error_; } // 0: all that was flushed has been written

  private:
    static constexpr size_t BUFFER_BYTES = 4096;

    void write_past_buffer(std::string_view text);
    void send(std::string_view text);
    void note_sent(std::string_view text);
    void cut_half_line() const;

    int descriptor_;
    int error_ = 0;
    size_t held_ = 0;       // in the buffer
    int64_t half_line_ = 0; // bytes sent behind the last newline
    std::array<char, BUFFER_BYTES> bytes_ = {};
};

} // namespace stmctl
