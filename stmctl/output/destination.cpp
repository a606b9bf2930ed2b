// Where the results of a long run go.
#include "stmctl/output/destination.hpp"

#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace stmctl
{

Destination::Destination(std::string name) : name_(std::move(name))
{
    if (name_.empty() || name_ == "-") {
        return;
    }
    int descriptor = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    made_ = descriptor >= 0;
    if (!made_ && errno == EEXIST) {
        descriptor = open(name_.c_str(), O_WRONLY | O_CLOEXEC);
    }
    file_ = descriptor < 0 ? nullptr : fdopen(descriptor, "w");
    if (file_ == nullptr) {
        fail();
    }
}

Destination::~Destination()
{
    if (file_ != nullptr) {
        fclose(file_);
    }
    if (made_) {
        unlink(name_.c_str());
    }
}

void Destination::begin()
{
    made_ = false;
    struct stat status = {};
    if (file_ != nullptr && fstat(fileno(file_), &status) == 0 && S_ISREG(status.st_mode) &&
        ftruncate(fileno(file_), 0) != 0) {
        fail();
    }
}

void Destination::write(std::string_view text)
{
    if (file_ == nullptr) {
        print(text);
    } else if (fwrite(text.data(), 1, text.size(), file_) != text.size()) {
        fail();
    }
}

void Destination::flush()
{
    if (file_ == nullptr) {
        flush_output();
    } else if (fflush(file_) != 0) {
        fail();
    }
}

void Destination::finish()
{
    flush();
    if (file_ != nullptr) {
        FILE *file = file_;
        file_ = nullptr;
        if (fclose(file) != 0) {
            fail();
        }
    }
}

void Destination::fail() const
{
    throw Failure(ExitStatus::failed, fmt::format("cannot write '{}': {}", name_, strerror(errno)));
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
