// The files in which a board's counts can be read.
#include "simulator/store/counts_file.hpp"

#include "simulator/driver/transcript_file.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

namespace simulator
{

namespace
{

// Replaces the file by a new one: a program that still maps the old one continues to count there.
std::string make_anew(const std::string &path, const std::string &content)
{
    unlink(path.c_str());
    return add_to_transcript(path, content);
}

char *map_file(const std::string &path, size_t size)
{
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    void *mapped =
        fd < 0 ? MAP_FAILED : mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    const int error = errno;
    if (fd >= 0) {
        ::close(fd);
    }
    errno = error;
    return mapped == MAP_FAILED ? nullptr : static_cast<char *>(mapped);
}

} // namespace

std::string CountsFile::begin(const std::string &directory)
{
    std::string error = make_anew(directory + "/counts", describe_counts({}));
    if (error.empty()) {
        error = make_anew(directory + "/lives", name_life_columns());
    }
    return error.empty() ? join(directory) : error;
}

std::string CountsFile::join(const std::string &directory)
{
    const std::string path = directory + "/counts";
    lives_path_ = directory + "/lives";
    numbers_ = map_file(path, describe_counts({}).size());
    return numbers_ != nullptr ? std::string() : path + ": " + strerror(errno);
}

std::string CountsFile::write(const Tally &tally, SavedState &saved)
{
    if (numbers_ == nullptr) {
        return {};
    }
    for (size_t row = 0; row < COUNT_ROWS; ++row) {
        const uint64_t number = COUNT_TABLE[row].of(tally);
        if (number != saved.counts[row]) {
            write_number(row, number);
            saved.counts[row] = number;
        }
    }
    return tally.lives > saved.lives ? note_lives(tally, std::exchange(saved.lives, tally.lives))
                                     : std::string();
}

void CountsFile::write_number(size_t row, uint64_t number)
{
    constexpr size_t LINE = COUNT_NAME_WIDTH + COUNT_WIDTH + 1;
    char digits[COUNT_WIDTH];
    const char *end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    const auto length = static_cast<size_t>(end - digits);
    char field[COUNT_WIDTH];
    memset(field, ' ', sizeof(field));
    memcpy(field + sizeof(field) - length, digits, length);
    memcpy(numbers_ + row * LINE + COUNT_NAME_WIDTH, field, sizeof(field));
}

// Of those that another program was to record before it died there is only the number.
std::string CountsFile::note_lives(const Tally &tally, uint64_t noted)
{
    std::string lines;
    const auto known =
        static_cast<size_t>(std::min<uint64_t>(tally.over.size(), tally.lives - noted));
    const std::span<const Life> fresh = tally.over.last(known);
    for (size_t i = 0; i < known; ++i) {
        const uint64_t number = tally.lives - known + i + 1;
        lines += describe_life(static_cast<int>(number), fresh[i]);
    }
    return add_to_transcript(lives_path_, lines);
}

} // namespace simulator
