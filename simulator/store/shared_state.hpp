// What the programs that use a board at the same time share: its state in a mapped file of its folder,
// and a lock, for one program at a time has the wire. A program that dies in the middle of an exchange
// leaves the state as it was before it.
#pragma once

#include "simulator/board/board_state.hpp"
#include "simulator/board/counts.hpp"
#include "simulator/driver/spi_device.hpp"
#include "simulator/store/program_life.hpp"
#include "simulator/store/shared_lock.hpp"

#include <cstdint>
#include <string>

namespace simulator
{

// All that changes while a board runs.
struct RunningState {
    int64_t time_ns = 0; // of the board, since its power came
    uint64_t intruded = 0;
    BoardState board;
    DriverState driver;
};
static_assert(std::is_trivially_copyable_v<RunningState>);
static_assert(std::has_unique_object_representations_v<RunningState>);
static_assert(sizeof(RunningState) == 9304);

// What is in the folder's files of it.
struct SavedState {
    uint64_t counts[COUNT_ROWS] = {};
    uint64_t lives = 0;
    uint32_t spi_mode = 0;
    uint32_t received_settings = 0;
    int32_t stand_in_generation = 0;
    Mode mode = Mode::unknown;
    uint8_t unused[3] = {};
};
static_assert(std::has_unique_object_representations_v<SavedState>);

// What brought the power is the same for all that use it.
struct Power {
    int64_t on_ns = 0;       // when it came, by the clock of the program that brought it
    uint64_t is_spent = 0;   // whether that is the system's, for it does not count its time
    char options[4096] = {}; // of the programs, in words
};

class SharedState
{
  public:
    // The bytes of a file that nobody has used.
    static std::string fresh();
    // The file that stands in for the board's device tells who has that open.
    void use(uint8_t *bytes, const std::string &stand_in = {});

    // Whether a program uses the board of this folder at the moment, or can: it may have the device open
    // from another one that has ended.
    static bool is_used(const std::string &directory);

    enum class Joined { before, now, first, too_many };

    // Takes the lock. A program joins with its first call, as a child does with its own. Whoever finds
    // no other program, and no open device, brings the power.
    Joined take();
    void leave();

    // Only with the lock:

    bool is_alone() const;
    Power &power() { return file_->power; }
    SavedState &saved() { return file_->saved; }

    // The state that was committed last; whether there is one, as it was committed, that a board can have
    // left, and whether it is another one than this program has seen.
    bool has_state() const;
    bool is_news() const { return seen_ != file_->commits; }
    const RunningState &state();

    // Without the lock, and without joining: changes the state that was committed last. False if no
    // program uses the board.
    bool change(void (*make_change)(RunningState &state));

    // From here on it has happened. Then the change of the flash is made, and noted as made.
    void commit(const RunningState &state);
    void note_flash();

  private:
    static constexpr int MOST_PROGRAMS = 64;

    struct File {
        char layout[16];
        LockWord lock;
        std::atomic<uint32_t> commits; // the last one is in the copy of its lowest bit
        Power power;
        ProgramLife programs[MOST_PROGRAMS];
        SavedState saved;
        RunningState copies[2];
        uint64_t sums[2]; // of the copies
    };

    static bool has_died(const void *file, uint32_t process);
    RunningState &copy(uint32_t commits) const { return file_->copies[commits % 2]; }
    Joined join();
    void remove_dead();
    bool is_held() const;

    File *file_ = nullptr;
    std::string stand_in_;
    ProgramLife self_;
    uint32_t seen_ = 0; // commits
};

} // namespace simulator
