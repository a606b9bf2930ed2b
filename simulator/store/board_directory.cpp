// A board in a directory.
#include "simulator/store/board_directory.hpp"

#include "simulator/store/program_life.hpp"
#include "simulator/words/number.hpp"
#include "simulator/words/text.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

struct ModeName {
    Mode mode;
    const char *name;
};

constexpr ModeName MODE_NAMES[] = {
    {Mode::unknown, "unknown"},
    {Mode::boot_loader, "boot loader"},
    {Mode::application, "application"},
};

constexpr char NOT_REGULAR[] = ": not a regular file";

std::string system_error(const std::string &path)
{
    return path + ": " + strerror(errno);
}

// A file that is none, such as a pipe without a writer, must not be waited for.
std::string read_file(const std::string &path, std::string &content)
{
    content.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat status = {};
    if (fd < 0 || fstat(fd, &status) != 0) {
        return system_error(path);
    }
    char bytes[4096];
    ssize_t size = S_ISREG(status.st_mode) ? 1 : 0;
    while (size > 0 && (size = read(fd, bytes, sizeof(bytes))) > 0) {
        content.append(bytes, static_cast<size_t>(size));
    }
    std::string error = size < 0 ? system_error(path) : std::string();
    close(fd);
    return S_ISREG(status.st_mode) ? error : path + NOT_REGULAR;
}

std::string read_line(const std::string &path, std::string &line)
{
    std::string error = read_file(path, line);
    line.resize(std::min(line.find('\n'), line.size()));
    return error;
}

const char *values_file(ValuesOf kind)
{
    return kind == ValuesOf::settings ? "settings" : "answers";
}

constexpr char FRESH[] = ".new-"; // and the number of the process that writes it

using PutInPlace = int(const char *, const char *) noexcept;

// All or nothing: the content is written under a temporary name and then put in place.
std::string write_file(const std::string &path, const std::string &content, PutInPlace *put)
{
    const std::string fresh = path + FRESH + std::to_string(getpid());
    errno = 0;
    std::ofstream stream(fresh, std::ios::binary);
    stream << content;
    stream.close();
    std::string error;
    if (!stream || (put(fresh.c_str(), path.c_str()) != 0 && errno != EEXIST)) {
        error = system_error(path);
    }
    unlink(fresh.c_str());
    return error;
}

// If several programs create a file, all of them get the one that was there first.
std::string make_file(const std::string &path, const std::string &content)
{
    return access(path.c_str(), F_OK) == 0 ? std::string() : write_file(path, content, link);
}

std::string replace_file(const std::string &path, const std::string &content)
{
    std::string kept;
    const bool is_kept = read_file(path, kept).empty() && kept == content;
    return is_kept ? std::string() : write_file(path, content, rename);
}

// Its size is looked at first, for it may be anything.
bool has_layout(const std::string &path, const std::string &fresh)
{
    constexpr size_t LAYOUT_SIZE = 16;
    struct stat status = {};
    std::string found;
    return stat(path.c_str(), &status) == 0 && status.st_size == static_cast<off_t>(fresh.size()) &&
           read_file(path, found).empty() &&
           found.compare(0, LAYOUT_SIZE, fresh, 0, LAYOUT_SIZE) == 0;
}

} // namespace

const char *mode_name(Mode mode)
{
    return MODE_NAMES[static_cast<size_t>(mode)].name;
}

bool parse_mode(const std::string &name, Mode &mode)
{
    for (const ModeName &row : MODE_NAMES) {
        if (name == row.name) {
            mode = row.mode;
            return true;
        }
    }
    return false;
}

bool parse_version(const std::string &words, uint8_t &version)
{
    if (words.empty() || words.size() > 3 ||
        words.find_first_not_of("0123456789") != std::string::npos || std::stoi(words) > 0xFF) {
        return false;
    }
    version = static_cast<uint8_t>(std::stoi(words));
    return true;
}

std::string BoardDirectory::open(const std::string &path)
{
    path_ = path;
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
        return system_error(path);
    }
    std::string error = make_files();
    if (error.empty()) {
        error = map("flash.bin", FLASH_SIZE, flash_);
    }
    return error.empty() ? map("memory.bin", MEMORY_SIZE, memory_) : error;
}

std::string BoardDirectory::make_files()
{
    const BoardIdentity fresh;
    const struct {
        const char *name;
        std::string content;
    } files[] = {
        {"flash.bin", std::string(FLASH_SIZE, static_cast<char>(FLASH_ERASED))},
        {"memory.bin", std::string(MEMORY_SIZE, '\0')},
        {"mode", std::string(mode_name(fresh.mode)) + '\n'},
        {"version", std::to_string(fresh.boot_loader_version) + '\n'},
        {values_file(ValuesOf::settings), ""},
        {values_file(ValuesOf::answers), ""},
    };
    for (const auto &row : files) {
        std::string error = make_file(file(row.name), row.content);
        if (!error.empty()) {
            return error;
        }
    }
    std::string error = make_file(stand_in(path_), "");
    struct stat status = {};
    const bool is_file = stat(stand_in(path_).c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return error.empty() && !is_file ? stand_in(path_) + NOT_REGULAR : error;
}

std::string BoardDirectory::map(const char *name, size_t size, uint8_t *&bytes) const
{
    const std::string path = file(name);
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        return system_error(path);
    }
    struct stat status = {};
    if (fstat(fd, &status) != 0 || status.st_size != static_cast<off_t>(size)) {
        close(fd);
        return path + text(": its size must be %zu bytes", size);
    }
    void *mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    if (mapped == MAP_FAILED) {
        return system_error(path);
    }
    bytes = static_cast<uint8_t *>(mapped);
    return {};
}

void BoardDirectory::clear() const
{
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(path_, error)) {
        const std::string name = entry.path().filename().string();
        const size_t at = name.find(FRESH);
        const size_t number = at == std::string::npos ? name.size() : at + sizeof(FRESH) - 1;
        const auto process = parse_number(name.substr(number), 1, INT32_MAX);
        if (process && !is_alive({static_cast<uint32_t>(*process), 0, 0})) {
            std::filesystem::remove(entry.path(), error);
        }
    }
}

// One that another version has left is replaced, once by whichever program is the first. Where a file
// system has no locks, that is left to luck.
std::string BoardDirectory::map_shared(const std::string &fresh, uint8_t *&bytes) const
{
    const std::string path = file("state");
    const int folder = ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    (void)flock(folder, LOCK_EX);
    std::string error = make_file(path, fresh);
    if (error.empty() && !has_layout(path, fresh)) {
        error = write_file(path, fresh, rename);
    }
    if (error.empty()) {
        error = map("state", fresh.size(), bytes);
    }
    if (folder >= 0) {
        close(folder);
    }
    return error;
}

std::string BoardDirectory::renew_stand_in() const
{
    return write_file(stand_in(path_), "", rename);
}

BoardBytes BoardDirectory::bytes() const
{
    return {std::span<uint8_t, FLASH_SIZE>(flash_, FLASH_SIZE),
            std::span<uint8_t, MEMORY_SIZE>(memory_, MEMORY_SIZE)};
}

std::string BoardDirectory::load(BoardIdentity &identity) const
{
    std::string line;
    std::string error = read_line(file("mode"), line);
    if (error.empty() && !parse_mode(line, identity.mode)) {
        error = file("mode") + ": neither application nor boot loader nor unknown";
    }
    if (error.empty()) {
        error = read_line(file("version"), line);
    }
    if (error.empty() && !parse_version(line, identity.boot_loader_version)) {
        error = file("version") + ": not a number from 0 to 255";
    }
    return error;
}

std::string BoardDirectory::save_mode(Mode mode) const
{
    return replace_file(file("mode"), std::string(mode_name(mode)) + '\n');
}

std::string BoardDirectory::load_spi_mode(uint32_t &mode) const
{
    mode = 0;
    const std::string path = file("spi-mode");
    if (access(path.c_str(), F_OK) != 0) {
        return {};
    }
    std::string line;
    const std::string error = read_line(path, line);
    const std::optional<int64_t> number = parse_number(line, 0, UINT32_MAX);
    mode = static_cast<uint32_t>(number.value_or(0));
    return number || !error.empty() ? error : path + ": not a number";
}

std::string BoardDirectory::save_spi_mode(uint32_t mode) const
{
    return replace_file(file("spi-mode"), std::to_string(mode) + '\n');
}

std::string BoardDirectory::load(ValuesOf kind, CommandValues &values) const
{
    const std::string path = file(values_file(kind));
    std::string words;
    std::string error = read_file(path, words);
    if (error.empty()) {
        error = read_values(values, kind, words);
        error = error.empty() ? error : path + ": " + error;
    }
    return error;
}

std::string BoardDirectory::save(ValuesOf kind, const CommandValues &values) const
{
    return write_file(file(values_file(kind)), write_values(values), rename);
}

std::string BoardDirectory::save_version(uint8_t version) const
{
    return replace_file(file("version"), std::to_string(version) + '\n');
}

} // namespace simulator
