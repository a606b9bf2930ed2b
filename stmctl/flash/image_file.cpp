// An image, checked before the device is touched.
#include "stmctl/flash/image_file.hpp"

#include "stmctl/output/counted.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/input.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace stmctl
{

namespace
{

[[noreturn]] void refuse(const std::string &path, const std::string &why)
{
    throw Failure(ExitStatus::failed, fmt::format("{}: {}", input_name(path), why));
}

// Without O_NONBLOCK, opening a pipe would block.
int open_to_read(const std::string &path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        refuse(path, strerror(errno));
    }
    return descriptor;
}

// Whether its length is only known at its end.
bool is_stream(const std::string &path)
{
    struct stat status = {};
    return path == "-" || (stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode));
}

} // namespace

ImageFile::ImageFile(const std::string &path, uint32_t limit)
{
    if (is_stream(path)) {
        take_stream(path, limit);
        return;
    }
    const int descriptor = open_to_read(path);
    const File file(fdopen(descriptor, "rb"));
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        refuse(path, "not a regular file");
    }
    if (status.st_size == 0) {
        refuse(path, "the file is empty");
    }
    if (static_cast<uint64_t>(status.st_size) > limit) {
        refuse(path,
               fmt::format("{}, but at most {} fit",
                           counted(static_cast<uint64_t>(status.st_size), "byte", "bytes"), limit));
    }
    size_ = static_cast<uint32_t>(status.st_size);
    copy(file.get(), path);
}

void ImageFile::take_stream(const std::string &path, uint32_t limit)
{
    const std::string content = read_whole(path, limit);
    if (content.empty()) {
        refuse(path, "no data came");
    }
    if (content.size() > limit) {
        refuse(path, fmt::format("more data than the {} bytes that fit", limit));
    }
    size_ = static_cast<uint32_t>(content.size());
    file_.reset(fdopen(memfd_create("image", MFD_CLOEXEC), "w+b"));
    const bool written = file_ && fwrite(content.data(), 1, size_, file_.get()) == size_;
    if (!written || fflush(file_.get()) != 0) {
        refuse(path, strerror(errno));
    }
}

void ImageFile::copy(FILE *file, const std::string &path)
{
    file_.reset(fdopen(memfd_create("image", MFD_CLOEXEC), "w+b"));
    size_t copied = 0;
    char piece[4096];
    while (const size_t size = fread(piece, 1, sizeof(piece), file)) {
        copied += file_ ? fwrite(piece, 1, size, file_.get()) : 0;
    }
    if (ferror(file) != 0 || !file_ || fflush(file_.get()) != 0) {
        refuse(path, strerror(errno));
    }
    if (copied != size_) {
        refuse(path, "the file changed while it was being read");
    }
}

FILE *ImageFile::rewound()
{
    std::rewind(file_.get());
    return file_.get();
}

} // namespace stmctl
