// A program's virtual board. Nothing here is ever destroyed: a program may use its device until
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

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
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

RunOptions &options_of_run()
{
    static auto *const taken = [] {
        auto *fresh = new RunOptions;
        if (!take_from_environment(*fresh)) {
            check("the VIRTUAL_BOARD_ variables are not as virtual-board sets them");
        }
        return fresh;
    }();
    return *taken;
}

const RunOptions &run_options()
{
    return options_of_run();
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

void note_exchange(const Exchange &exchange, std::chrono::nanoseconds time)
{
    const std::string &path = run_options().transcript;
    if (!path.empty()) {
        check(add_to_transcript(path, transcript_line(exchange, time)));
    }
}

KeptState open_folder()
{
    KeptState kept;
    check(kept.open(run_options().directory));
    return kept;
}

// A program that was told nothing about the board uses it as the others do.
void share_options(const Power &power)
{
    const std::string others = power.options;
    if (others == shared_words(run_options())) {
        return;
    }
    RunOptions shared = run_options();
    if (!has_usual_board(shared) || !take_shared_words(shared, others)) {
        check(run_options().directory +
              ": another program uses this board with other options; give the same, or none");
    }
    options_of_run() = shared;
}

void set_options(Power &power)
{
    const std::string words = shared_words(run_options());
    if (words.size() >= sizeof(power.options)) {
        check("the options of the board are longer than programs can share");
    }
    memcpy(power.options, words.c_str(), words.size() + 1);
}

// Takes the board's lock. With the first call of a program it becomes one of those that use the board.
SharedState::Joined join(SharedState &shared)
{
    const SharedState::Joined joined = shared.take();
    if (joined == SharedState::Joined::too_many) {
        check(run_options().directory + ": too many programs use this board");
    }
    if (joined == SharedState::Joined::now) {
        share_options(shared.power());
    }
    return joined;
}

Intrusion load_intrusion()
{
    Intrusion intrusion;
    check(intrusion.load(run_options().behaviour.faults));
    return intrusion;
}

struct Board {
    Board() { coprocessor.delay_flash(); }

    std::chrono::nanoseconds time() const { return now() - power_on; }

    KeptState kept = open_folder();
    SharedState &shared = kept.shared();
    SharedState::Joined joined = join(shared); // decides on the options of all that follows
    std::chrono::nanoseconds power_on{0};      // on this program's clock
    std::chrono::nanoseconds left{0};          // when the last call ended, on this program's clock
    std::chrono::nanoseconds call_begin{0};    // of the call being handled
    bool has_opened = false; // the device; before that, nothing is newer than the files
    Coprocessor coprocessor{kept.bytes(), {}, run_options().behaviour};
    Intrusion intrusion = load_intrusion();
    SpiDevice device{coprocessor, run_options().behaviour,
                     [this](std::chrono::nanoseconds time) { pass_wire_time(time); },
                     [this](const Exchange &exchange) { note_exchange(exchange, time()); }};

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

// A call of this program, during which the board is its alone. It finds the board as the last program
// has left it.
class Turn
{
  public:
    explicit Turn(Board &board) : Turn(board, join(board.shared)) {}
    Turn(Board &board, SharedState::Joined joined); // with the lock
    ~Turn();
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

    void forget_dead_programs();

  private:
    void begin_power();
    void join_power();
    void take_state();
    void find_time(std::chrono::nanoseconds time_of_state);

    Board &board_;
};

Board &board()
{
    static auto *const instance = [] {
        auto *fresh = new Board;
        const Turn first(*fresh, fresh->joined);
        return fresh;
    }();
    return *instance;
}

Turn::Turn(Board &board, SharedState::Joined joined) : board_(board)
{
    if (joined == SharedState::Joined::first) {
        begin_power();
    } else if (joined == SharedState::Joined::now) {
        join_power();
    } else {
        take_state();
    }
}

// A program that was killed may have left something that is in no file yet.
void Turn::begin_power()
{
    if (board_.shared.has_state()) {
        check(board_.kept.go_on(board_.coprocessor));
        take_state();
        board_.coprocessor.settle();
        check(board_.kept.save(board_.coprocessor, board_.device));
    }
    (void)board_.shared.remove_dead();
    board_.power_on = now();
    board_.shared.power().on_ns = board_.power_on.count();
    board_.shared.power().is_spent = counts_time() ? 0 : 1;
    set_options(board_.shared.power());
    board_.shared.saved() = {};
    board_.coprocessor.power_on({});
    board_.device.set_state({});
    board_.intrusion.set_played(0);
    check(board_.kept.begin());
    check(board_.kept.load(board_.coprocessor, board_.device));
}

void Turn::join_power()
{
    check(board_.kept.go_on(board_.coprocessor));
    check(board_.kept.go_on_counting());
    board_.left = now();
    take_state();
    forget_dead_programs();
}

void Turn::take_state()
{
    if (board_.shared.is_news()) {
        const RunningState &state = board_.shared.state();
        board_.coprocessor.set_state(state.board);
        board_.device.set_state(state.driver);
        board_.intrusion.set_played(static_cast<size_t>(state.intruded));
        find_time(std::chrono::nanoseconds(state.time_ns));
    }
}

// Programs that spend their time have one clock. One that counts it moves the board's time on by what
// has passed for it since its last call; the board's time never goes back.
void Turn::find_time(std::chrono::nanoseconds time_of_state)
{
    board_.power_on = board_.left - time_of_state;
    if (!counts_time()) {
        const std::chrono::nanoseconds on(board_.shared.power().on_ns);
        board_.power_on =
            board_.shared.power().is_spent ? std::min(on, now() - time_of_state) : board_.power_on;
    }
}

// Of each that was opened by a program that did not live to close it, the last may have been that.
void Turn::forget_dead_programs()
{
    for (const SharingProgram &program : board_.shared.remove_dead()) {
        for (int32_t i = 0; i < program.opened; ++i) {
            board_.device.close(program.generation);
        }
    }
}

Turn::~Turn()
{
    const bool changes_flash = board_.coprocessor.changes_flash();
    board_.left = now();
    board_.shared.commit({board_.time().count(), board_.intrusion.played(),
                          board_.coprocessor.state(), board_.device.state()});
    if (changes_flash) {
        board_.coprocessor.settle();
        board_.shared.note_flash();
    }
    check(board_.kept.save(board_.coprocessor, board_.device));
    board_.shared.leave();
}

// Whatever was due before this call happens first, in order of time.
void begin_call(Board &board)
{
    board.call_begin = now();
    const std::chrono::nanoseconds time = board.time();
    board.intrusion.play_until(time, board.coprocessor);
    board.coprocessor.advance_to(time);
    board.device.advance_to(time);
}

std::chrono::nanoseconds transcript_start()
{
    static const std::chrono::nanoseconds start = now();
    return start;
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

// While nobody else uses the board, its files may be edited between a close and an open.
int device_open()
{
    Turn turn(board());
    begin_call(board());
    turn.forget_dead_programs();
    if (board().shared.is_alone()) {
        if (board().has_opened) {
            check(board().kept.save(board().coprocessor, board().device));
        }
        check(board().kept.load(board().coprocessor, board().device));
    }
    board().has_opened = true;
    const int generation = board().device.open();
    if (generation >= 0) {
        SharingProgram &own = board().shared.own();
        own.opened = own.generation == generation ? own.opened + 1 : 1;
        own.generation = generation;
        check(board().kept.renew_stand_in(generation));
    }
    return generation;
}

void device_close(int generation)
{
    const Turn turn(board());
    SharingProgram &own = board().shared.own();
    if (own.generation == generation && own.opened > 0) {
        --own.opened;
        board().device.close(generation);
    }
}

int device_ioctl(int generation, unsigned long request, void *argument)
{
    const Turn turn(board());
    begin_call(board());
    return board().device.ioctl(request, argument, generation);
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
    note_exchange({++number, sent, received, length, result, {}}, now() - transcript_start());
}

} // namespace simulator
