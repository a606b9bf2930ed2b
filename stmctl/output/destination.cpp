// Where the results of a long run go.
#include "stmctl/output/destination.hpp"

#include "stmctl/output/old_content.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace stmctl
{

namespace
{

constexpr int NONE = -1;

// Only a regular file is opened for reading as well: opening a pipe like that would not wait for
// its reader.
int open_to_continue(const char *name)
{
    const int descriptor = open(name, O_WRONLY | O_APPEND | O_CLOEXEC);
    struct stat status = {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return descriptor;
    }
    close(descriptor);
    return open(name, O_RDWR | O_APPEND | O_CLOEXEC);
}

// made is set if the file did not exist.
int open_file(const std::string &name, OldContent old, bool &made)
{
    const bool continued = old == OldContent::continued;
    const int access = continued ? O_RDWR | O_APPEND : O_WRONLY;
    const int descriptor = open(name.c_str(), access | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    made = descriptor >= 0;
    if (made || errno != EEXIST) {
        return descriptor;
    }
    if (old == OldContent::protects_file) {
        throw Failure(ExitStatus::failed,
                      fmt::format("'{}' already exists; --no-clobber keeps it", name));
    }
    return continued ? open_to_continue(name.c_str()) : open(name.c_str(), O_WRONLY | O_CLOEXEC);
}

} // namespace

Destination::Destination(std::string name, OldContent old, std::string beginning)
    : name_(std::move(name)), is_output_(name_.empty() || name_ == "-"), old_(old),
      beginning_(std::move(beginning)), file_(is_output_ ? NONE : open_file(name_, old, made_))
{
    if (is_output_) {
        return;
    }
    if (file_.descriptor() < 0) {
        fail(errno);
    }
    try {
        check_beginning();
    } catch (const Failure &) {
        file_.close();
        throw;
    }
}

// A file that we created but did not start stays if another process has written to it.
Destination::~Destination()
{
    const bool nobody_needs_it = made_ && size_of_regular(file_.descriptor()) == 0;
    file_.close();
    if (nobody_needs_it) {
        unlink(name_.c_str());
    }
}

// A shorter file ends in an incomplete line, and is started from scratch.
void Destination::check_beginning() const
{
    if (old_ != OldContent::continued || size_of_regular(file_.descriptor()) == 0) {
        return;
    }
    const std::string begins = first_bytes(file_.descriptor(), beginning_.size());
    if (!beginning_.starts_with(begins)) {
        throw Failure(
            ExitStatus::failed,
            fmt::format("cannot append to '{}': its first line does not match; was it written with "
                        "another --format, --variant, --separator or --timestamps?",
                        name_));
    }
    const bool is_ours = !begins.empty() || end_of_last_line(file_.descriptor());
    if (!is_ours) {
        throw Failure(ExitStatus::failed,
                      fmt::format("cannot append to '{}': it holds no complete line", name_));
    }
}

void Destination::cut_half_line()
{
    const off_t size = size_of_regular(file_.descriptor());
    const off_t whole = end_of_last_line(file_.descriptor()).value_or(0);
    if (whole < size) {
        if (ftruncate(file_.descriptor(), whole) != 0) {
            fail(errno);
        }
        say(fmt::format("'{}': removed the incomplete last line ({} bytes)", name_, size - whole));
    }
    continues_ = whole > 0;
}

void Destination::begin()
{
    if (is_output_) {
        return;
    }
    struct stat status = {};
    if (old_ == OldContent::continued) {
        check_beginning(); // another process may have written it while we waited for the device
        cut_half_line();
    } else if (fstat(file_.descriptor(), &status) == 0 && S_ISREG(status.st_mode) &&
               ftruncate(file_.descriptor(), 0) != 0) {
        fail(errno);
    }
    made_ = false;
}

void Destination::write(std::string_view text)
{
    if (is_output_) {
        print(text);
    } else {
        file_.write(text);
    }
}

void Destination::flush()
{
    if (is_output_) {
        flush_output();
    } else {
        file_.flush();
    }
}

bool Destination::failed() const
{
    return is_output_ ? output_failed() : file_.error() != 0;
}

void Destination::finish()
{
    flush();
    file_.close();
    if (file_.error() != 0) {
        fail(file_.error());
    }
}

bool Destination::is_out_of_sight() const
{
    return is_output_ ? size().has_value() : !is_terminal(file_.descriptor());
}

std::optional<uint64_t> Destination::size() const
{
    struct stat status = {};
    if (fstat(descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    return static_cast<uint64_t>(status.st_size);
}

int Destination::descriptor() const
{
    return is_output_ ? STDOUT_FILENO : file_.descriptor();
}

bool Destination::mixes_with(const Destination &other) const
{
    struct stat ours = {};
    struct stat theirs = {};
    if (is_output_ && other.is_output_) {
        return true;
    }
    if (fstat(descriptor(), &ours) != 0 || fstat(other.descriptor(), &theirs) != 0 ||
        S_ISCHR(ours.st_mode)) {
        return false; // a device stores nothing
    }
    return ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
}

void Destination::fail(int error) const
{
    throw Failure(ExitStatus::failed, fmt::format("cannot write '{}': {}", name_, strerror(error)));
}

void RegularFlush::operator()(std::chrono::steady_clock::time_point now)
{
    constexpr std::chrono::milliseconds INTERVAL(200);
    if (now >= next_) {
        next_ = now + INTERVAL;
        destination_.flush();
    }
}

} // namespace stmctl
