// Writes text to a descriptor in large pieces, and leaves only whole lines if it fails.
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

    // After a failure, whose errno is kept, everything else is dropped, and an incomplete last line
    // is removed from a regular file.
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
    void close(); // flushes; later calls do nothing

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
    int64_t half_line_ = 0; // bytes sent after the last newline
    std::array<char, BUFFER_BYTES> bytes_ = {};
};

} // namespace stmctl
