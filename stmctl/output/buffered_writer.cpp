// Writes text to a descriptor in large pieces.
#include "stmctl/output/buffered_writer.hpp"

#include "stmctl/process/stop.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace stmctl
{

void BufferedWriter::write_past_buffer(std::string_view text)
{
    flush();
    if (text.size() > bytes_.size()) {
        send(text);
        return;
    }
    write(text);
}

void BufferedWriter::flush()
{
    send({bytes_.data(), held_});
    held_ = 0;
}

// Some file systems only report now that a file has not been written.
void BufferedWriter::close()
{
    if (descriptor_ < 0) {
        return;
    }
    flush();
    if (::close(descriptor_) != 0 && error_ == 0) {
        error_ = errno;
    }
    descriptor_ = -1;
}

void BufferedWriter::send(std::string_view text)
{
    while (error_ == 0 && !text.empty()) {
        const ssize_t size = ::write(descriptor_, text.data(), text.size());
        if (size > 0) {
            note_sent(text.substr(0, static_cast<size_t>(size)));
            text.remove_prefix(static_cast<size_t>(size));
        } else if (size == 0 || errno != EINTR || interrupted()) {
            error_ = size < 0 ? errno : EIO; // an interrupt ends a write that has no reader
            cut_half_line();
        }
    }
}

void BufferedWriter::note_sent(std::string_view text)
{
    const size_t newline = text.rfind('\n');
    half_line_ = newline == std::string_view::npos
                     ? half_line_ + static_cast<int64_t>(text.size())
                     : static_cast<int64_t>(text.size() - newline - 1);
}

// Unless another process has written after it. The position goes back as well: a process that
// shares it would otherwise leave a hole.
void BufferedWriter::cut_half_line() const
{
    struct stat status = {};
    const off_t end = lseek(descriptor_, 0, SEEK_CUR);
    if (half_line_ == 0 || fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode) ||
        end != status.st_size) {
        return;
    }
    const off_t whole = end - static_cast<off_t>(half_line_);
    if (ftruncate(descriptor_, whole) == 0) {
        lseek(descriptor_, whole, SEEK_SET);
    }
}

} // namespace stmctl
