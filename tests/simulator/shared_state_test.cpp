// Goal: programs that use a board at the same time have its state one after the other, and a program
// that dies takes nothing with it.
#include "simulator/store/shared_state.hpp"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>

namespace simulator
{

namespace
{

using Joined = SharedState::Joined;

class SharedBoard : public testing::Test
{
  protected:
    SharedBoard()
    {
        const std::string fresh = SharedState::fresh();
        memcpy(memory, fresh.data(), fresh.size());
        shared.use(memory);
    }
    ~SharedBoard() override { munmap(memory, SIZE); }

    // Starts another program on the board.
    pid_t start(const std::function<int(SharedState &)> &work) const
    {
        const pid_t child = fork();
        if (child == 0) {
            SharedState others;
            others.use(memory);
            _exit(work(others));
        }
        return child;
    }

    static int finish(pid_t child)
    {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Until it has ended; it is not waited for.
    static void await_end(pid_t child)
    {
        siginfo_t ended = {};
        EXPECT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    }

    // Until it has noted that it waits for the lock, and sleeps.
    void await_sleep(pid_t child) const
    {
        constexpr size_t LOCK_AT = 16;
        const std::string path = "/proc/" + std::to_string(child) + "/stat";
        while ((memory[LOCK_AT + 3] & 0x80) == 0) {
            sched_yield();
        }
        for (std::string line; line.find(") S ") == std::string::npos; sched_yield()) {
            std::ifstream stat(path);
            std::getline(stat, line);
        }
    }

    static RunningState at(int64_t time_ns)
    {
        RunningState state;
        state.time_ns = time_ns;
        return state;
    }

    static constexpr size_t SIZE = 1 << 16;
    uint8_t *const memory = static_cast<uint8_t *>(
        mmap(nullptr, SIZE, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    SharedState shared;
};

TEST_F(SharedBoard, gets_its_power_from_the_first_program_and_others_join)
{
    EXPECT_EQ(shared.take(), Joined::first);
    EXPECT_TRUE(shared.is_alone());
    shared.leave();
    EXPECT_EQ(shared.take(), Joined::before);
    shared.leave();
    const pid_t other = start([](SharedState &others) {
        const bool joined = others.take() == Joined::now && !others.is_alone();
        others.leave();
        return joined ? 7 : 0;
    });
    EXPECT_EQ(finish(other), 7);
}

TEST_F(SharedBoard, gets_its_power_anew_when_all_have_ended)
{
    const auto first = [](SharedState &others) {
        const bool is_first = others.take() == Joined::first;
        others.leave();
        return is_first ? 7 : 0;
    };
    EXPECT_EQ(finish(start(first)), 7);
    EXPECT_EQ(finish(start(first)), 7);
    EXPECT_EQ(shared.take(), Joined::first);
    shared.leave();
    EXPECT_EQ(finish(start(first)), 0);
}

TEST_F(SharedBoard, is_as_it_was_committed_last_by_whomever)
{
    shared.take();
    EXPECT_FALSE(shared.has_state());
    shared.commit(at(1));
    EXPECT_FALSE(shared.is_news()) << "it is this program's own";
    shared.leave();
    const pid_t other = start([](SharedState &others) {
        others.take();
        const bool is_first_state = others.is_news() && others.state().time_ns == 1;
        others.commit(at(2));
        others.commit(at(3));
        others.leave();
        return is_first_state ? 7 : 0;
    });
    EXPECT_EQ(finish(other), 7);
    shared.take();
    EXPECT_TRUE(shared.is_news());
    EXPECT_EQ(shared.state().time_ns, 3);
    EXPECT_FALSE(shared.is_news());
    shared.leave();
}

TEST_F(SharedBoard, is_free_when_its_program_has_died_whether_anybody_took_note_or_not)
{
    shared.take();
    shared.commit(at(1));
    shared.leave();
    for (const bool noted : {false, true}) {
        const pid_t other = start([](SharedState &others) {
            others.take();
            return 0; // with the lock
        });
        await_end(other);
        if (noted) {
            finish(other);
        }
        EXPECT_EQ(shared.take(), Joined::before);
        EXPECT_EQ(shared.state().time_ns, 1);
        EXPECT_TRUE(shared.is_alone());
        shared.leave();
        if (!noted) {
            finish(other);
        }
    }
}

TEST_F(SharedBoard, is_changed_by_others_while_programs_use_it_and_by_nobody_else)
{
    const auto change = [](RunningState &state) { ++state.time_ns; };
    EXPECT_FALSE(shared.change(change)) << "it has no state";
    const pid_t user = start([](SharedState &others) {
        others.take();
        others.commit(at(1));
        others.leave();
        return 0;
    });
    finish(user);
    EXPECT_FALSE(shared.change(change)) << "nobody uses it";
    shared.take();
    EXPECT_EQ(shared.state().time_ns, 1);
    EXPECT_FALSE(shared.is_news());
    shared.leave();
    EXPECT_TRUE(shared.change(change));
    EXPECT_EQ(shared.state().time_ns, 2);
}

TEST_F(SharedBoard, is_one_programs_at_a_time)
{
    constexpr int PROGRAMS = 4;
    constexpr int TURNS = 3000;
    shared.take();
    shared.commit(at(0));
    shared.leave();
    pid_t others[PROGRAMS];
    for (pid_t &other : others) {
        other = start([](SharedState &theirs) {
            for (int i = 0; i < TURNS; ++i) {
                theirs.take();
                theirs.commit(at(theirs.state().time_ns + 1));
                theirs.leave();
            }
            return 7;
        });
    }
    for (const pid_t other : others) {
        EXPECT_EQ(finish(other), 7);
    }
    shared.take();
    EXPECT_EQ(shared.state().time_ns, PROGRAMS * TURNS);
    shared.leave();
}

TEST_F(SharedBoard, is_waited_for_in_sleep_until_it_is_left)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    shared.take();
    const pid_t other = start([&ready](SharedState &others) {
        (void)!write(ready[1], "x", 1);
        others.take();
        const bool is_second = others.state().time_ns == 5;
        others.leave();
        return is_second ? 7 : 0;
    });
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    usleep(120'000); // longer than one look at this program, which is alive
    shared.commit(at(5));
    shared.leave();
    EXPECT_EQ(finish(other), 7);
    close(ready[0]);
    close(ready[1]);
}

// Who has slept has it next, even if the program that leaves it wants it again at once.
TEST_F(SharedBoard, is_handed_to_whoever_sleeps)
{
    shared.take();
    shared.commit(at(1));
    const pid_t other = start([](SharedState &others) {
        others.take();
        others.commit(at(2));
        others.leave();
        return 0;
    });
    await_sleep(other);
    shared.leave();
    shared.take();
    EXPECT_EQ(shared.state().time_ns, 2);
    shared.leave();
    EXPECT_EQ(finish(other), 0);
}

TEST_F(SharedBoard, has_room_for_64_programs)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    std::vector<pid_t> others;
    for (int i = 0; i < 64; ++i) {
        others.push_back(start([&ready](SharedState &theirs) {
            theirs.take();
            theirs.leave();
            (void)!write(ready[1], "x", 1);
            pause();
            return 0;
        }));
        char byte = 0;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
    }
    EXPECT_EQ(shared.take(), Joined::too_many);
    shared.leave();
    kill(others[31], SIGKILL);
    await_end(others[31]);
    EXPECT_EQ(shared.take(), Joined::now);
    shared.leave();
    for (const pid_t other : others) {
        kill(other, SIGKILL);
        finish(other);
    }
    close(ready[0]);
    close(ready[1]);
}

TEST_F(SharedBoard, keeps_a_change_of_the_flash_until_it_has_been_made)
{
    RunningState state = at(1);
    state.board.flash_change = erase(Region::firmware);
    shared.take();
    shared.commit(state);
    EXPECT_EQ(shared.state().board.flash_change.kind, FlashChange::Kind::erase);
    shared.note_flash();
    EXPECT_EQ(shared.state().board.flash_change.kind, FlashChange::Kind::none);
    EXPECT_EQ(shared.state().time_ns, 1);
    shared.leave();
}

// Programs believe what they find; the file may have been written to by anybody.
TEST_F(SharedBoard, has_no_state_but_the_one_that_was_committed)
{
    shared.take();
    shared.commit(at(1));
    shared.leave();
    EXPECT_TRUE(shared.has_state());
    const size_t size = SharedState::fresh().size();
    const size_t copies = size - 2 * sizeof(RunningState) - 2 * sizeof(uint64_t);
    for (size_t at = copies + sizeof(RunningState); at < copies + 2 * sizeof(RunningState); ++at) {
        memory[at] ^= 0x80;
        EXPECT_FALSE(shared.has_state()) << at;
        memory[at] ^= 0x80;
    }
    EXPECT_TRUE(shared.has_state());
    memset(memory + copies, 0, size - copies);
    EXPECT_FALSE(shared.has_state());
}

TEST(FlashChange, can_be_made_only_inside_the_flash)
{
    const std::vector<uint8_t> data(LARGEST_PROGRAM, 0x5A);
    EXPECT_TRUE(can_be_made(FlashChange()));
    EXPECT_TRUE(can_be_made(erase(Region::firmware)));
    EXPECT_TRUE(can_be_made(program(FLASH_START, data)));
    EXPECT_TRUE(can_be_made(program(FLASH_START + FLASH_SIZE - LARGEST_PROGRAM, data)));
    EXPECT_FALSE(can_be_made(program(FLASH_START + FLASH_SIZE - LARGEST_PROGRAM + 1, data)));
    EXPECT_FALSE(can_be_made(program(FLASH_START - 1, data)));
    FlashChange odd = program(FLASH_START, data);
    odd.size = LARGEST_PROGRAM + 1;
    EXPECT_FALSE(can_be_made(odd));
    odd = erase(static_cast<Region>(2));
    EXPECT_FALSE(can_be_made(odd));
    odd.kind = static_cast<FlashChange::Kind>(3);
    EXPECT_FALSE(can_be_made(odd));
}

} // namespace

} // namespace simulator
