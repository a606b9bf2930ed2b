// One program's virtual board. Nothing here is ever destroyed: a program may use its device until
// its very last instruction.
#include "simulator/preload/program.hpp"

#include "simulator/driver/intrusion.hpp"
#include "simulator/driver/transcript.hpp"
#include "simulator/driver/transcript_file.hpp"
#include "simulator/driver/user_memory.hpp"
#include "simulator/preload/first_standard_error.hpp"
#include "simulator/run/run_options.hpp"
#include "simulator/store/kept_state.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace simulator
{

constinit VirtualClock program_clock;

namespace
{

constexpr int OWN_FAILURE = 125;

void check(const std::string &error)
{
    if (error.empty()) {
        return;
    }
    const std::string line = "virtual-board: " + error + '\n';
    if (write(first_standard_error(), line.data(), line.size()) < 0) {
        // There is nowhere left to report it.
    }
    _exit(OWN_FAILURE);
}

const RunOptions &run_options()
{
    static const auto *const taken = [] {
        auto *fresh = new RunOptions;
        if (!take_from_environment(*fresh)) {
            check("the VIRTUAL_BOARD_ variables are not as virtual-board sets them");
        }
        return fresh;
    }();
    return *taken;
}

std::chrono::nanoseconds now()
{
    if (counts_time()) {
        return program_clock.elapsed();
    }
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// Sleeps, because a host that waits for its wire leaves the processor to others. Signals are
// blocked during the sleep, but it ends early when a stopped process is continued.
void sleep_until(std::chrono::nanoseconds end)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(end);
    const timespec time = {static_cast<time_t>(seconds.count()),
                           static_cast<long>((end - seconds).count())};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

std::chrono::nanoseconds transcript_start()
{
    static const std::chrono::nanoseconds start = now();
    return start;
}

void note_exchange(const Exchange &exchange)
{
    const std::string &path = run_options().transcript;
    if (!path.empty()) {
        check(add_to_transcript(path, transcript_line(exchange, now() - transcript_start())));
    }
}

KeptState open_folder()
{
    KeptState kept;
    check(kept.open(run_options().directory));
    return kept;
}

Intrusion load_intrusion()
{
    Intrusion intrusion;
    check(intrusion.load(run_options().behaviour.faults));
    return intrusion;
}

struct Board {
    Board() { check(kept.begin_counts()); }

    std::chrono::nanoseconds power_on = now(); // when the board's time begins
    KeptState kept = open_folder();
    std::chrono::nanoseconds call_begin{0}; // of the call being handled
    Coprocessor coprocessor{kept.bytes(), {}, run_options().behaviour};
    Intrusion intrusion = load_intrusion();
    SpiDevice device{coprocessor, run_options().behaviour,
                     [this](std::chrono::nanoseconds time) { pass_wire_time(time); },
                     note_exchange};

  private:
    // An exchange ends when the wire's time has passed since the start of the call. The delay of
    // one exchange is not subtracted from the next: a real wire cannot catch up either.
    void pass_wire_time(std::chrono::nanoseconds time) const
    {
        if (counts_time()) {
            program_clock.advance(time);
        } else {
            sleep_until(call_begin + time);
        }
    }
};

constinit Board *present_board = nullptr; // once there is one

Board &board()
{
    static auto *const instance = [] {
        present_board = new Board;
        return present_board;
    }();
    return *instance;
}

// Whatever was due before this call happens first, in order of time.
void begin_call(Board &board)
{
    board.call_begin = now();
    const std::chrono::nanoseconds time = board.call_begin - board.power_on;
    board.intrusion.play_until(time, board.coprocessor);
    board.coprocessor.advance_to(time);
    board.device.advance_to(time);
}

// Appends the bytes of a buffer, if there is one that a driver would have accepted.
void append(std::vector<uint8_t> &bytes, uint64_t user_address, uint32_t length)
{
    if (user_address == 0 || length > static_cast<uint32_t>(run_options().behaviour.buffer_size)) {
        return;
    }
    const size_t size = bytes.size();
    bytes.resize(size + length);
    if (!copy_from_user(bytes.data() + size, user_address, length)) {
        bytes.resize(size);
    }
}

} // namespace

bool counts_time()
{
    static constinit std::atomic<int> known = -1;
    int counts = known.load(std::memory_order_relaxed);
    if (counts < 0) {
        const char *value = getenv(COUNT_TIME_VARIABLE);
        counts = value != nullptr && *value != '\0' ? 1 : 0;
        known.store(counts, std::memory_order_relaxed);
    }
    return counts != 0;
}

bool leaves_device_real()
{
    return run_options().through;
}

std::string device_stand_in()
{
    return BoardDirectory::stand_in(run_options().directory);
}

void begin_transcript()
{
    transcript_start();
}

int device_open()
{
    begin_transcript();
    begin_call(board());
    check(board().kept.load(board().coprocessor, board().device));
    const int generation = board().device.open();
    if (generation >= 0) {
        check(board().kept.renew_stand_in(generation));
    }
    return generation;
}

void leave_counts_to_parent()
{
    if (present_board != nullptr) {
        present_board->kept.leave_counts();
    }
}

void device_close(int generation)
{
    board().device.close(generation);
}

int device_ioctl(int generation, unsigned long request, void *argument)
{
    begin_call(board());
    const int result = board().device.ioctl(request, argument, generation);
    check(board().kept.save(board().coprocessor, board().device));
    return result;
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
        append(received, result < 0 ? 0 : transfer.rx_buf, transfer.len);
    }
    note_exchange({++number, sent, received, length, result, {}});
}

} // namespace simulator
