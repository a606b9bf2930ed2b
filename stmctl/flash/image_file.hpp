// An image, checked before the device is touched, and copied: if the file were written during the
// download, the flash would hold half of each version.
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
    // Reads a file, a pipe or, for "-", standard input, to the end. Throws a Failure unless it can
    // be read and has 1 to limit bytes, or if an interrupt ends the reading.
    ImageFile(const std::string &path, uint32_t limit);

    uint32_t size() const { return size_; }

    // Positioned at its start.
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
