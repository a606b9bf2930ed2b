// Goal: a read-out that goes well costs its exchanges and nothing else: four a block where blocks
// are counted, three where they stream into the ring, no other call of the system, nothing from the
// heap. The co-processor and the callbacks here make no calls, so that each that is counted is the
// module's.
#include "tests/budget/counted_calls.hpp"
#include "tests/readout/counted_allocations.hpp"
#include "tests/readout/record_writer.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <tuple>

namespace
{

constexpr int BLOCKS = 50;
constexpr size_t HEADER = 20; // of a streamed block, of which it holds the first 17 bytes
constexpr size_t HELD = 17;

struct Readout {
    const char *name;
    void (*read)(int count, int mode, StmPollFn poll, StmOutputFn output);
    RecordKind kind;
    uint8_t command;
    int most; // records in a block
};

constexpr Readout READOUTS[] = {
    {"base", stm_read_records, RecordKind::base, 0xC8, 73},
    {"omega", stm_read_records_omega, RecordKind::omega, 0xC1, 78},
    {"temp", stm_read_records_temp, RecordKind::temp, 0x02, 85},
};

// A co-processor that has a full block in every nth poll, always the same one.
struct Board {
    Readout readout;
    int ready_in;
    Bytes block;
    int polls = 0;
    int polls_for_block = 0;
    int requests = 0;
    int lengths = 0;
    int blocks = 0;
    int headers = 0;
    int rests = 0;
    int closings = 0;
    int strange = 0;
    int texts = 0;
    int messages = 0;
    int stop_behind = 0; // headers
};

Board *board = nullptr;

void answer_poll(uint8_t *rx)
{
    ++board->polls;
    if (++board->polls_for_block == board->ready_in) {
        board->polls_for_block = 0;
        rx[0] = 0x55;
    }
}

void answer_length(uint8_t *rx)
{
    rx[0] = static_cast<uint8_t>(board->block.size() >> 8);
    rx[1] = static_cast<uint8_t>(board->block.size() & 0xFF);
}

void answer_header(uint8_t *rx)
{
    ++board->headers;
    if (++board->polls_for_block == board->ready_in) {
        board->polls_for_block = 0;
        rx[0] = 0x55;
        answer_length(rx + 1);
        std::copy_n(board->block.begin(), HELD, rx + 3);
    }
}

void exchange(const uint8_t *tx, uint8_t *rx, size_t length)
{
    if (length == 8 && tx[0] == board->readout.command) {
        ++board->requests;
    } else if (length == 1 && tx[0] == 0x44) {
        answer_poll(rx);
    } else if (length == 2) {
        ++board->lengths;
        answer_length(rx);
    } else if (length == board->block.size()) {
        ++board->blocks;
        std::copy_n(board->block.begin(), length, rx);
    } else if (length == HEADER && tx[0] == 0x44) {
        answer_header(rx);
    } else if (length == board->block.size() - HELD) {
        ++board->rests;
        std::copy_n(board->block.begin() + HELD, length, rx);
    } else {
        ++(length == 4096 ? board->closings : board->strange);
    }
}

int take_text(const char *, int more)
{
    ++(more == 1 ? board->texts : board->messages);
    return 0;
}

int no_input(char *)
{
    return 0;
}

int stop_in_time(char *line)
{
    if (board->headers <= board->stop_behind) {
        return 0;
    }
    std::copy_n(STM_STOP_LINE, sizeof(STM_STOP_LINE), line);
    return 1;
}

class Budget : public testing::Test
{
  protected:
    ~Budget() override
    {
        counted_exchange = nullptr;
        board = nullptr;
    }

    Budget() = default;
    Budget(const Budget &) = delete;
    Budget &operator=(const Budget &) = delete;

    void serve(const Readout &readout, int ready_in = 1)
    {
        own_board = {readout, ready_in, records(readout.kind, readout.most)};
        board = &own_board;
        counted_exchange = exchange;
    }

    // All that happened was exchanges.
    template <typename Operation>
    void expect_exchanges_alone(Operation operation)
    {
        const uint64_t calls = calls_so_far();
        const uint64_t allocations = allocations_so_far();
        operation();
        EXPECT_EQ(calls_so_far() - calls, 0U);
        EXPECT_EQ(allocations_so_far() - allocations, 0U);
        EXPECT_EQ(own_board.strange, 0);
        EXPECT_EQ(own_board.messages, 0);
    }

    Board own_board = {};
};

// The modes of a read-out.
constexpr int HEX = 1;
constexpr int TEXT = 2;
constexpr int CSV = 3;

class CountedReadout : public Budget, public testing::WithParamInterface<std::tuple<Readout, int>>
{
  protected:
    static const Readout &readout() { return std::get<0>(GetParam()); }
    static int mode() { return std::get<1>(GetParam()); }

    void read_blocks()
    {
        const int count = BLOCKS * readout().most;
        expect_exchanges_alone([&] { readout().read(count, mode(), no_input, take_text); });
        EXPECT_EQ(own_board.texts, mode() == CSV ? count + 1 : count);
    }

    int exchanges() const
    {
        return own_board.requests + own_board.polls + own_board.lengths + own_board.blocks +
               own_board.closings + own_board.headers + own_board.rests;
    }
};

void PrintTo(const Readout &readout, std::ostream *stream)
{
    *stream << readout.name;
}

std::string case_name(const testing::TestParamInfo<std::tuple<Readout, int>> &info)
{
    constexpr const char *MODES[] = {"", "hex", "text", "csv"};
    return std::string(std::get<0>(info.param).name) + "_" + MODES[std::get<1>(info.param)];
}

using Ring = Budget;

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, CountedReadout,
                         testing::Combine(testing::ValuesIn(READOUTS),
                                          testing::Values(HEX, TEXT, CSV)),
                         case_name);

// The last block has no next request, but there was a first one.
TEST_P(CountedReadout, costs_four_exchanges_a_block_and_the_closing_one)
{
    serve(readout());
    read_blocks();
    EXPECT_EQ(own_board.requests, BLOCKS);
    EXPECT_EQ(own_board.polls, BLOCKS);
    EXPECT_EQ(own_board.lengths, BLOCKS);
    EXPECT_EQ(own_board.blocks, BLOCKS);
    EXPECT_EQ(own_board.closings, 1);
    EXPECT_EQ(exchanges(), 4 * BLOCKS + 1);
}

TEST_P(CountedReadout, costs_one_exchange_more_for_each_poll_in_vain)
{
    serve(readout(), 3);
    read_blocks();
    EXPECT_EQ(own_board.polls, 3 * BLOCKS);
    EXPECT_EQ(exchanges(), 6 * BLOCKS + 1);
}

// Beside the first request, and the poll in which it is stopped.
TEST_F(Ring, is_filled_with_three_exchanges_a_block)
{
    serve(READOUTS[2]);
    own_board.stop_behind = BLOCKS;
    RingBuffer_Attach();
    expect_exchanges_alone([] { stm_ringbuffer_acquire(stop_in_time, take_text); });
    EXPECT_EQ(own_board.headers, BLOCKS + 1);
    EXPECT_EQ(own_board.rests, BLOCKS);
    EXPECT_EQ(own_board.requests, BLOCKS + 1);
    EXPECT_EQ(own_board.polls + own_board.lengths + own_board.blocks + own_board.closings, 0);
    EXPECT_EQ(counted_segment.write_index, BLOCKS * 85 % 160);
    EXPECT_EQ(counted_segment.count, 159);
}

TEST_F(Ring, is_filled_with_one_exchange_more_for_each_poll_in_vain)
{
    serve(READOUTS[2], 2);
    own_board.stop_behind = 2 * BLOCKS;
    RingBuffer_Attach();
    expect_exchanges_alone([] { stm_ringbuffer_acquire(stop_in_time, take_text); });
    EXPECT_EQ(own_board.headers, 2 * BLOCKS + 1);
    EXPECT_EQ(own_board.rests, BLOCKS);
    EXPECT_EQ(own_board.requests, BLOCKS + 1);
}

// The count is worth nothing if it misses a call.
TEST(CountedCalls, are_those_of_the_module_and_of_all_others)
{
    const auto made = [](auto call) {
        const uint64_t before = calls_so_far();
        call();
        return calls_so_far() - before;
    };
    EXPECT_EQ(made([] { EXPECT_NE(close(open("/dev/null", O_RDONLY)), -1); }), 2U);
    EXPECT_EQ(made([] { usleep(0); }), 1U);
    EXPECT_EQ(made([] { EXPECT_NE(getpid(), 0); }), 1U);
    uint32_t speed_hz = 0;
    EXPECT_EQ(made([&] { EXPECT_LT(ioctl(-1, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz), 0); }), 1U);
    EXPECT_EQ(made([] { RingBuffer_Attach(); }), 4U); // shmget, shmat, getpid, shmctl
    testing::internal::CaptureStderr();
    EXPECT_EQ(made([] { stm_sync_transfer(); }), 2U); // ioctl, which fails, and perror
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}
