// An image, looked at before the device is touched, and copied: a file that somebody writes during
// the download would end up as half of each.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace stmctl
{

class ImageFile
{
  public:
    // Of a file, of a pipe or, for "-", of standard input, which are read to their end. Throws a
    // Failure unless it can be read and has 1 to limit bytes, and if an interrupt ends the reading.
    ImageFile(const std::string &path, uint32_t limit);

    uint32_t size() const { return size_; }

    // At its start.
    FILE *rewound();

  private:
    struct Closer {
        void operator()(FILE *file) const { fclose(file); }
    };

    using File = std::unique_ptr<FILE, Closer>;

    void take_stream(const std::string &path, uint32_t limit);
    void copy(FILE *file, const std::string &path);

    File file_;
    uint32_t size_ = 0;
};

} // namespace stmctl
