// True processes on a true segment: a namespace of their own for it, children that cannot outlive
// the test, and records whose whole content tells their number.
#pragma once

#include "link/stm_com_funcs.h"

#include <gtest/gtest.h>

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <initializer_list>

// What test and children tell each other, beside the ring.
struct Board {
    std::atomic<uint32_t> stop;
    std::atomic<uint32_t> reader_is_ready;
    std::atomic<uint32_t> writer_has_begun;
    std::atomic<uint32_t> progress;   // number of the newest record that the reader has met
    std::atomic<uint32_t> started[3]; // by handle: the latest start that has come to work
    std::atomic<uint32_t> put;
    std::atomic<uint32_t> turn;
    std::atomic<uint32_t> refused; // puts
    std::atomic<uint32_t> fresh;
    std::atomic<uint32_t> skipped;
    std::atomic<uint32_t> repeated;
    std::atomic<uint32_t> stale;    // looks that gave a slot of 160 records ago
    std::atomic<uint32_t> rejected; // by their checksum
    std::atomic<uint32_t> broken;   // not whole, although the checksum says so
    std::atomic<uint32_t> misplaced;
    std::atomic<uint32_t> astray; // pointers that are no slots
    std::atomic<uint32_t> reported;
};

class Processes : public testing::Test
{
  protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;

    // Starts a process that does this and ends with status 0. One that hangs is killed.
    using Work = void (*)(Board &board, uint32_t start);
    pid_t start(Work work, uint32_t number = 1);

    // Waits for the ends of all these processes; true if they were good ones. A bad one is the end
    // of the others.
    static testing::AssertionResult ended_well(std::initializer_list<pid_t> children);

    Board *board = nullptr;
};

constexpr int WRITER = 1;
constexpr int READER = 2;

// Record and number, and the two judgements on one: its own checksum, and the truth.
RingRecord record_of(uint32_t number);
bool is_accepted(const RingRecord &record);
bool is_whole(const RingRecord &record);

// A copy of a slot; what has been copied cannot change any more.
RingRecord copy_of(const RingRecord *slot);

// Null, or the start of a slot of the attached ring.
bool is_slot_or_null(const RingRecord *slot);

// Ends a child that finds something that can never be.
void child_insists(bool condition);
