// The content of a regular file that is to be continued.
#include "stmctl/output/old_content.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace stmctl
{

int64_t size_of_regular(int descriptor)
{
    struct stat status = {};
    const bool regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return regular ? status.st_size : 0;
}

std::string first_bytes(int descriptor, size_t size)
{
    std::string bytes(size, '\0');
    const ssize_t read = pread(descriptor, bytes.data(), size, 0);
    bytes.resize(read < 0 ? 0 : static_cast<size_t>(read));
    return bytes;
}

std::optional<int64_t> end_of_last_line(int descriptor)
{
    std::array<char, 4096> piece;
    for (off_t end = size_of_regular(descriptor); end > 0;) {
        const off_t begin = std::max<off_t>(end - static_cast<off_t>(piece.size()), 0);
        const auto wanted = static_cast<size_t>(end - begin);
        errno = 0;
        if (pread(descriptor, piece.data(), wanted, begin) != static_cast<ssize_t>(wanted)) {
            throw Failure(ExitStatus::failed, fmt::format("cannot read the end of the log: {}",
                                                          strerror(errno != 0 ? errno : EIO)));
        }
        const std::string_view text(piece.data(), wanted);
        const size_t newline = text.rfind('\n');
        if (newline != std::string_view::npos) {
            return begin + static_cast<off_t>(newline) + 1;
        }
        end = begin;
    }
    return {};
}

} // namespace stmctl
