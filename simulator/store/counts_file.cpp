// The files in which a board's counts can be read.
#include "simulator/store/counts_file.hpp"

#include "simulator/driver/transcript_file.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>

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

std::string CountsFile::open(const std::string &directory)
{
    const std::string path = directory + "/counts";
    const std::string nothing = describe_counts({});
    lives_path_ = directory + "/lives";
    std::string error = make_anew(path, nothing);
    if (error.empty()) {
        error = make_anew(lives_path_, name_life_columns());
    }
    if (!error.empty()) {
        return error;
    }
    numbers_ = map_file(path, nothing.size());
    return numbers_ != nullptr ? std::string() : path + ": " + strerror(errno);
}

std::string CountsFile::write(const Tally &tally)
{
    if (numbers_ == nullptr) {
        return {};
    }
    for (size_t row = 0; row < written_.size(); ++row) {
        const uint64_t number = COUNT_TABLE[row].of(tally);
        if (number != written_[row]) {
            write_number(row, number);
            written_[row] = number;
        }
    }
    return lives_ == tally.over.size() ? std::string() : note_lives(tally);
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

std::string CountsFile::note_lives(const Tally &tally)
{
    std::string lines;
    for (; lives_ < tally.over.size(); ++lives_) {
        lines += describe_life(static_cast<int>(lives_) + 1, tally.over[lives_]);
    }
    return add_to_transcript(lives_path_, lines);
}

} // namespace simulator
