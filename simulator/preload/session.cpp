// What one program has of the virtual board. Nothing here is ever destroyed: a program may use its
// device until its very last instruction.
#include "simulator/preload/session.hpp"

#include "simulator/board_directory.hpp"
#include "simulator/preload/real_calls.hpp"
#include "simulator/spi_device.hpp"
#include "simulator/transcript.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace simulator
{

namespace
{

constexpr int FIRST_OWN_DESCRIPTOR = 100; // out of the way of the program's
constexpr int OWN_FAILURE = 125;

[[noreturn]] void fail(const std::string &reason)
{
    const std::string line = "virtual-board: " + reason + '\n';
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) {
        // There is nobody left to tell.
    }
    _exit(OWN_FAILURE);
}

std::chrono::nanoseconds now()
{
    if (settings().counts_time) {
        return program_clock().elapsed();
    }
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class TranscriptFile
{
  public:
    TranscriptFile()
    {
        const std::string &path = settings().transcript;
        if (path.empty()) {
            return;
        }
        const int opened =
            path == "-" ? STDERR_FILENO : ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666);
        fd_ = fcntl(opened, F_DUPFD_CLOEXEC, FIRST_OWN_DESCRIPTOR);
        if (opened > STDERR_FILENO) {
            ::close(opened);
        }
        if (fd_ < 0) {
            fail(path + ": cannot be written");
        }
    }

    void add(const Exchange &exchange) const
    {
        if (fd_ < 0) {
            return;
        }
        const std::string line = transcript_line(exchange, now() - start_);
        if (write(fd_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            fail(settings().transcript + ": cannot be written");
        }
    }

  private:
    int fd_ = -1;
    std::chrono::nanoseconds start_ = now();
};

const TranscriptFile &transcript_file()
{
    static const auto *const file = new TranscriptFile;
    return *file;
}

void check(const std::string &error)
{
    if (!error.empty()) {
        fail(error);
    }
}

BoardDirectory open_directory()
{
    BoardDirectory directory;
    check(directory.open(settings().directory));
    return directory;
}

struct Board {
    BoardDirectory directory = open_directory();
    std::string stand_in = directory.file("spidev1.0");
    BoardIdentity identity = {};
    Coprocessor coprocessor{directory.flash(), identity, settings().behaviour};
    SpiDevice device{coprocessor, settings().behaviour.faults, program_clock(),
                     [](const Exchange &exchange) { transcript_file().add(exchange); }};
};

Board &board()
{
    static auto *const instance = new Board;
    return *instance;
}

void append(std::vector<uint8_t> &bytes, uint64_t user_address, uint32_t length)
{
    const auto *from = reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(user_address));
    if (from != nullptr) {
        bytes.insert(bytes.end(), from, from + length);
    }
}

} // namespace

const Settings &settings()
{
    static const auto *const taken = [] {
        auto *fresh = new Settings;
        if (!take_from_environment(*fresh)) {
            fail("the VIRTUAL_BOARD_ variables are not as virtual-board sets them");
        }
        return fresh;
    }();
    return *taken;
}

VirtualClock &program_clock()
{
    static auto *const clock = new VirtualClock;
    return *clock;
}

void begin_transcript()
{
    transcript_file();
}

int device_open()
{
    begin_transcript();
    check(board().directory.load(board().identity));
    board().coprocessor.set_identity(board().identity);
    return board().device.open();
}

void device_close()
{
    board().device.close();
}

int device_ioctl(unsigned long request, void *argument)
{
    const int result = board().device.ioctl(request, argument);
    const Mode mode = board().coprocessor.mode();
    if (mode != board().identity.mode) {
        board().identity.mode = mode;
        check(board().directory.save(board().identity));
    }
    return result;
}

const char *device_stand_in()
{
    return board().stand_in.c_str();
}

void record_real_message(std::span<const spi_ioc_transfer> transfers, int result)
{
    static int number = 0;
    std::vector<uint8_t> sent;
    std::vector<uint8_t> received;
    uint64_t length = 0;
    for (const spi_ioc_transfer &transfer : transfers) {
        length += transfer.len;
        append(sent, transfer.tx_buf, transfer.len);
        append(received, transfer.rx_buf, transfer.len);
    }
    transcript_file().add({++number, sent, received, length, result, {}});
}

} // namespace simulator
