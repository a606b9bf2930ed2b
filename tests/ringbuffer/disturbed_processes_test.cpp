// Goal: whatever happens to a writer or a reader process, and whatever a third one does to the
// segment, the next start works, and nobody crashes or hangs.
#include "link/link.hpp"
#include "tests/ringbuffer/processes_fixture.hpp"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <random>

using namespace stm;

namespace
{

constexpr uint32_t KILLS = 1000;
constexpr auto LONGEST_WAIT = std::chrono::minutes(5); // which is a hang
constexpr uint32_t DISTURBED = 2'000'000;              // puts beside somebody who scribbles
constexpr size_t FIRST_CONTROL_BYTE = 7680;
constexpr size_t SEGMENT_SIZE = 7704;

using Clock = std::chrono::steady_clock;

void put_without_end(Board &board, uint32_t start)
{
    child_insists(RingBuffer_Attach() == 0 || start == 1);
    child_insists(RingBuffer_Open("w") == WRITER);
    for (uint32_t number = 1;; ++number) {
        const RingRecord record = record_of(number);
        child_insists(RingBuffer_PutValue(WRITER, &record) == 1);
        if (number == 200) { // all around the ring
            board.started[WRITER] = start;
        }
        if (number % 64 == 0) {
            sched_yield();
        }
    }
}

void judge(Board &board, const RingRecord &record, uint32_t start)
{
    if (!is_accepted(record)) {
        ++board.rejected;
        return;
    }
    ++(is_whole(record) ? board.fresh : board.broken);
    board.started[READER] = start;
}

void read_without_end(Board &board, uint32_t start)
{
    RingBuffer_Attach();
    child_insists(RingBuffer_Open("r") == READER);
    for (;;) {
        if (RingBuffer_NewValueAvailable(READER) == 0) {
            sched_yield();
            continue;
        }
        child_insists(RingBuffer_MarkLastValue(READER) == 1);
        child_insists(RingBuffer_GetFirstValue(READER) != nullptr);
        do {
            judge(board, copy_of(RingBuffer_GetNextValue(READER)), start);
        } while (RingBuffer_GetValuesLeft(READER) > 1);
    }
}

// A writer that begins again whenever the ring refuses it.
void write_disturbed(Board &board, uint32_t)
{
    RingBuffer_Attach();
    for (uint32_t number = 1; board.stop == 0; ++number) {
        const RingRecord record = record_of(number);
        if (RingBuffer_PutValue(WRITER, &record) == 1) {
            ++board.put;
        } else {
            ++board.refused;
            RingBuffer_Open("w");
        }
        child_insists(is_slot_or_null(RingBuffer_GetWriteSlot(READER)));
    }
    child_insists(RingBuffer_Close(WRITER) == 1);
}

void take_disturbed(Board &board, const RingRecord *slot)
{
    board.astray += is_slot_or_null(slot) ? 0 : 1;
    if (slot != nullptr) {
        ++(is_accepted(copy_of(slot)) ? board.fresh : board.rejected);
    }
}

// A batch may have any length now, so that the reader has a limit of its own.
void read_disturbed(Board &board, uint32_t)
{
    RingBuffer_Attach();
    RingBuffer_Open("r");
    while (board.stop == 0) {
        RingBuffer_NewValueAvailable(READER);
        child_insists(RingBuffer_MarkLastValue(READER) == 1);
        take_disturbed(board, RingBuffer_GetFirstValue(READER));
        for (int i = 0; i < 160 && RingBuffer_GetValuesLeft(READER) > 1; ++i) {
            take_disturbed(board, RingBuffer_GetNextValue(READER));
        }
        take_disturbed(board, RingBuffer_SeekValue(READER, 1));
        take_disturbed(board, RingBuffer_PeekValue(READER, 160));
    }
    child_insists(RingBuffer_Close(READER) == 1);
}

Board *shown_board = nullptr;

int no_input(char *)
{
    return 0;
}

int take_text(const char *, int more)
{
    ++(more == 1 ? shown_board->fresh : shown_board->reported);
    if (shown_board->stop != 0) {
        _exit(0);
    }
    return 0;
}

void show_disturbed(Board &board, uint32_t)
{
    RingBuffer_Attach();
    shown_board = &board;
    while (board.stop == 0) {
        stm_ringbuffer_readout(READOUT_TEXT, no_input, take_text);
    }
}

void scribble(Board &, uint32_t start)
{
    RingBuffer_Attach();
    auto *segment = reinterpret_cast<volatile uint8_t *>(stm_link.ring);
    std::mt19937 random(start);
    for (;;) {
        const auto control = random() % (SEGMENT_SIZE - FIRST_CONTROL_BYTE);
        segment[FIRST_CONTROL_BYTE + control] = static_cast<uint8_t>(random());
    }
}

class DisturbedProcesses : public Processes
{
  protected:
    static bool comes_true(const std::function<bool()> &condition)
    {
        const auto deadline = Clock::now() + LONGEST_WAIT;
        while (!condition() && Clock::now() < deadline) {
            usleep(50);
        }
        return condition();
    }

    // True if the process of this side has come to work.
    bool has_started(int side, uint32_t start) const
    {
        return comes_true([&] { return board->started[side] == start; });
    }

    static void kill_process(pid_t child)
    {
        int status = 0;
        ASSERT_GT(child, 0);
        kill(child, SIGKILL);
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "it had ended by itself, with " << status;
    }

    // Writer and reader work while a third process scribbles over the control fields.
    void disturb(Work reading)
    {
        const pid_t scribbler = start(scribble, 5676);
        const pid_t reader = start(reading);
        const pid_t writer = start(write_disturbed);
        EXPECT_TRUE(comes_true([this] {
            const uint32_t looks = board->fresh + board->rejected + board->reported;
            return board->put + board->refused > DISTURBED && looks > 0;
        }));
        board->stop = 1;
        EXPECT_TRUE(ended_well({reader, writer}));
        kill_process(scribbler);
    }
};

} // namespace

TEST_F(DisturbedProcesses, start_again_after_each_of_a_thousand_kills)
{
    constexpr Work WORK[] = {nullptr, put_without_end, read_without_end};
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers each time
    std::mt19937 random(5676);
    uint32_t starts = 1;
    pid_t children[] = {0, start(put_without_end), 0};
    ASSERT_TRUE(has_started(WRITER, 1));
    children[READER] = start(read_without_end);
    ASSERT_TRUE(has_started(READER, 1));
    for (uint32_t kills = 0; kills < KILLS && !HasFailure(); ++kills) {
        const int victim = random() % 2 == 0 ? WRITER : READER;
        usleep(static_cast<useconds_t>(random() % 1000));
        kill_process(children[victim]);
        children[victim] = start(WORK[victim], ++starts);
        ASSERT_TRUE(has_started(victim, starts)) << "after kill " << kills << " of " << victim;
    }
    kill_process(children[WRITER]);
    kill_process(children[READER]);
    EXPECT_GT(board->fresh, KILLS / 4);
    EXPECT_LE(board->broken, 1 + board->rejected / 1000);
    printf("%u records were whole, %u rejected, %u torn with a right checksum\n",
           board->fresh.load(), board->rejected.load(), board->broken.load());
}

TEST_F(DisturbedProcesses, survive_a_third_one_that_scribbles_over_the_control_fields)
{
    disturb(read_disturbed);
    EXPECT_EQ(board->astray, 0U);
    EXPECT_GT(board->put, 0U);
    printf("%u puts, %u refused; %u records accepted, %u rejected\n", board->put.load(),
           board->refused.load(), board->fresh.load(), board->rejected.load());
}

TEST_F(DisturbedProcesses, survive_it_during_the_read_out_too)
{
    disturb(show_disturbed);
    EXPECT_GT(board->put, 0U);
    EXPECT_GT(board->fresh + board->reported, 0U);
    printf("%u puts, %u refused; %u records shown, %u reports\n", board->put.load(),
           board->refused.load(), board->fresh.load(), board->reported.load());
}
