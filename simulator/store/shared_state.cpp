// What the programs that use a board at the same time share.
#include "simulator/store/shared_state.hpp"

#include "simulator/store/board_directory.hpp"
#include "simulator/store/open_descriptors.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>

namespace simulator
{

namespace
{

bool is_here(const ProgramLife &program)
{
    return program.process != 0 && is_alive(program);
}

uint64_t word_at(const uint8_t *bytes, size_t number)
{
    uint64_t word = 0;
    memcpy(&word, bytes + number * sizeof(word), sizeof(word));
    return word;
}

// Programs believe what they find in the file: it has to be what one of them has left there. A file of
// nothing but zeros is not. Two sums of every other word take half as long as one of all.
uint64_t sum_of(const RunningState &state)
{
    constexpr size_t WORDS = sizeof(RunningState) / sizeof(uint64_t);
    static_assert(WORDS % 2 == 1);
    const auto *bytes = reinterpret_cast<const uint8_t *>(&state);
    uint64_t even = 1 + word_at(bytes, 0);
    uint64_t odd = 0;
    for (size_t i = 1; i < WORDS; i += 2) {
        odd += word_at(bytes, i);
        even += word_at(bytes, i + 1);
    }
    return even + odd;
}

constexpr char LAYOUT[16] = "virtual board 3"; // with the number of the layout

} // namespace

std::string SharedState::fresh()
{
    std::string bytes(sizeof(File), '\0');
    memcpy(bytes.data(), LAYOUT, sizeof(LAYOUT));
    return bytes;
}

void SharedState::use(uint8_t *bytes, const std::string &stand_in)
{
    file_ = reinterpret_cast<File *>(bytes);
    stand_in_ = stand_in;
}

bool SharedState::is_used(const std::string &directory)
{
    std::ifstream file(directory + "/state", std::ios::binary);
    std::string bytes(sizeof(File), '\0');
    if (!file.read(bytes.data(), sizeof(File)) ||
        bytes.compare(0, sizeof(LAYOUT), LAYOUT, 16) != 0) {
        return false;
    }
    ProgramLife programs[MOST_PROGRAMS];
    memcpy(programs, &bytes[offsetof(File, programs)], sizeof(programs));
    return std::ranges::any_of(programs, is_here) ||
           has_descriptors(BoardDirectory::stand_in(directory));
}

bool SharedState::has_died(const void *file, uint32_t process)
{
    const auto &programs = static_cast<const File *>(file)->programs;
    const auto *const found = std::ranges::find(programs, process, &ProgramLife::process);
    return !is_alive(found == std::end(programs) ? ProgramLife{process, 0, 0} : *found);
}

SharedState::Joined SharedState::take()
{
    const auto process = static_cast<uint32_t>(getpid());
    take_lock(file_->lock, process, has_died, file_);
    return self_.process == process ? Joined::before : join();
}

void SharedState::leave()
{
    leave_lock(file_->lock);
}

// Another program of the same number that has died is found here, too, and removed.
SharedState::Joined SharedState::join()
{
    self_ = this_program();
    remove_dead();
    const bool alone = is_alone();
    auto &programs = file_->programs;
    auto *own = std::ranges::find(programs, self_);
    const bool was_here = own != std::end(programs); // and has executed another program since
    if (!was_here) {
        own = std::ranges::find(programs, 0U, &ProgramLife::process);
    }
    if (own == std::end(programs)) {
        self_ = {};
        return Joined::too_many;
    }
    *own = self_;
    seen_ = 0;
    return alone && !was_here && !is_held() ? Joined::first : Joined::now;
}

void SharedState::remove_dead()
{
    for (ProgramLife &program : file_->programs) {
        program = is_here(program) ? program : ProgramLife();
    }
}

// By nobody that has joined: a child has not called yet.
bool SharedState::is_held() const
{
    return has_state() && has_descriptors(stand_in_);
}

bool SharedState::is_alone() const
{
    return std::ranges::none_of(file_->programs, [this](const ProgramLife &program) {
        return program != self_ && is_here(program);
    });
}

bool SharedState::has_state() const
{
    const RunningState &state = copy(file_->commits);
    return file_->commits != 0 && file_->sums[file_->commits % 2] == sum_of(state) &&
           state.board.mode <= Mode::application && can_be_made(state.board.flash_change);
}

const RunningState &SharedState::state()
{
    seen_ = file_->commits;
    return copy(seen_);
}

bool SharedState::change(void (*make_change)(RunningState &state))
{
    take_lock(file_->lock, static_cast<uint32_t>(getpid()), has_died, file_);
    const bool is_used =
        has_state() && (std::ranges::any_of(file_->programs, is_here) || is_held());
    if (is_used) {
        RunningState state = copy(file_->commits);
        make_change(state);
        commit(state);
    }
    leave();
    return is_used;
}

void SharedState::commit(const RunningState &state)
{
    const uint32_t next = std::max(file_->commits + 1, 1U);
    copy(next) = state;
    file_->sums[next % 2] = sum_of(state);
    file_->commits = next;
    seen_ = next;
}

void SharedState::note_flash()
{
    RunningState state = copy(file_->commits);
    state.board.flash_change.kind = FlashChange::Kind::none;
    commit(state);
}

} // namespace simulator
