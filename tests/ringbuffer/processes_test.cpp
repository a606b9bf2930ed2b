// Goal: a writer process and a reader process on a true segment: what arrives is whole and in
// order, a million times, although nothing guards the ring; a reader that lags never takes a torn
// record for a good one.
#include "link/link.hpp"
#include "tests/ringbuffer/processes_fixture.hpp"

#include <sched.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using namespace stm;

namespace
{

constexpr uint32_t MANY = 1'000'000;
constexpr uint32_t LAGGING = 500'000; // looks of a reader that does not keep up, half of them good
constexpr uint32_t LEAD = 100; // records by which the writer runs ahead of a reader that keeps up

void wait_for(const std::atomic<uint32_t> &sign)
{
    while (sign == 0) {
        sched_yield();
    }
}

void put(uint32_t number)
{
    const RingRecord record = record_of(number);
    child_insists(RingBuffer_PutValue(WRITER, &record) == 1);
}

void open_as_writer()
{
    RingBuffer_Attach();
    child_insists(RingBuffer_Open("w") == WRITER);
}

void open_as_reader()
{
    RingBuffer_Attach();
    child_insists(RingBuffer_Open("r") == READER);
}

// The first two records are there before the reader looks, so that its first batch has one.
void begin_to_write(Board &board)
{
    wait_for(board.reader_is_ready);
    open_as_writer();
    put(1);
    put(2);
    board.writer_has_begun = 1;
}

void write_many(Board &board, uint32_t)
{
    begin_to_write(board);
    for (uint32_t number = 3; number <= MANY; ++number) {
        while (number - board.progress > LEAD) {
            usleep(20);
        }
        put(number);
    }
    child_insists(RingBuffer_Close(WRITER) == 1);
}

void begin_to_read(Board &board)
{
    open_as_reader();
    board.reader_is_ready = 1;
    wait_for(board.writer_has_begun);
}

// One record of a batch. The writer does not come as far as the fresh ones; of those that are read
// once more it may be overwriting the oldest.
void judge_record(Board &board, const RingRecord &record, uint32_t number, uint32_t &last)
{
    if (number > last) {
        ++board.fresh;
        board.broken += is_accepted(record) && is_whole(record) ? 0 : 1;
        board.misplaced += static_cast<uint32_t>(record.rel_t) == number ? 0 : 1;
        last = number;
    } else {
        ++board.repeated;
        board.broken += is_accepted(record) && !is_whole(record) ? 1 : 0;
    }
}

// One batch: it must be the records that end with the newest one.
void judge_batch(Board &board, uint32_t newest, uint32_t &last)
{
    const auto left = static_cast<uint32_t>(RingBuffer_GetValuesLeft(READER));
    if (left <= 1) { // lost counts: the slot that the writer fills next comes instead
        const RingRecord record = copy_of(RingBuffer_GetNextValue(READER));
        ++board.stale;
        board.broken += is_accepted(record) && !is_whole(record) ? 1 : 0;
        return;
    }
    const uint32_t first = newest + 2 - left;
    board.skipped += first > last + 1 ? first - last - 1 : 0;
    for (uint32_t number = first; number <= newest; ++number) {
        judge_record(board, copy_of(RingBuffer_GetNextValue(READER)), number, last);
    }
    board.misplaced += RingBuffer_GetValuesLeft(READER) == 1 ? 0 : 1;
}

void read_many(Board &board, uint32_t)
{
    begin_to_read(board);
    uint32_t last = 0;
    while (board.progress < MANY) {
        if (RingBuffer_NewValueAvailable(READER) == 0) {
            sched_yield();
            continue;
        }
        child_insists(RingBuffer_MarkLastValue(READER) == 1);
        child_insists(RingBuffer_GetFirstValue(READER) != nullptr);
        const RingRecord newest = copy_of(RingBuffer_PeekValue(READER, 1));
        judge_batch(board, static_cast<uint32_t>(newest.rel_t), last);
        board.progress = static_cast<uint32_t>(newest.rel_t);
    }
    board.skipped += MANY - last;
    child_insists(RingBuffer_Close(READER) == 1);
}

// Nothing but puts: the records are made beforehand.
void write_without_a_pause(Board &board, uint32_t)
{
    std::vector<RingRecord> records;
    for (uint32_t number = 0; number < 1000; ++number) {
        records.push_back(record_of(number));
    }
    begin_to_write(board);
    for (size_t i = 0; board.stop == 0; i = (i + 1) % records.size()) {
        child_insists(RingBuffer_PutValue(WRITER, &records[i]) == 1);
    }
}

void take(Board &board, const RingRecord &record)
{
    if (!is_accepted(record)) {
        ++board.rejected;
    } else {
        ++(is_whole(record) ? board.fresh : board.broken);
    }
}

// Batches, and between them the slots that the writer is about to fill.
void read_what_is_left(Board &board, uint32_t)
{
    begin_to_read(board);
    std::vector<RingRecord> copies;
    while (board.fresh < LAGGING / 2 || board.fresh + board.rejected < LAGGING) {
        copies.clear();
        child_insists(RingBuffer_MarkLastValue(READER) == 1);
        child_insists(RingBuffer_GetFirstValue(READER) != nullptr);
        do {
            copies.push_back(copy_of(RingBuffer_GetNextValue(READER)));
        } while (RingBuffer_GetValuesLeft(READER) > 1);
        for (int i = 0; i < 100; ++i) {
            copies.push_back(copy_of(RingBuffer_GetWriteSlot(READER)));
        }
        for (const RingRecord &record : copies) {
            take(board, record);
        }
    }
    board.stop = 1;
}

void attach_first(Board &board, uint32_t)
{
    child_insists(RingBuffer_Attach() == 7680);
    const RingRecord record = record_of(1);
    child_insists(RingBuffer_PutValue(WRITER, &record) == 1);
    board.put = 1;
    while (board.stop == 0) {
        usleep(100);
    }
}

void attach_second(Board &, uint32_t)
{
    child_insists(RingBuffer_Attach() == 0);
    child_insists(RingBuffer_NewValueAvailable(READER) == 1);
    const RingRecord expected = record_of(1);
    const RingRecord record = copy_of(RingBuffer_PeekValue(READER, 160));
    child_insists(memcmp(&record, &expected, sizeof(record)) == 0);
}

// Whose turn it is; the reader gives its own back when it has come to the end of a batch.
constexpr uint32_t WRITERS_TURN = 0;
constexpr uint32_t READERS_TURN = 1;

void wait_for_turn(const Board &board, uint32_t turn)
{
    while (board.turn != turn && board.stop == 0) {
        sched_yield();
    }
}

// Bursts with pauses, as blocks of the co-processor are. The count tells when the reader has
// opened the ring.
void write_bursts(Board &board, uint32_t)
{
    open_as_writer();
    volatile int32_t &count = stm_link.ring->count;
    count = 77;
    board.writer_has_begun = 1;
    while (count != 0) {
        usleep(100);
    }
    for (uint32_t number = 1; board.stop == 0; ++number) {
        put(number);
        if (number % 40 == 0) {
            board.turn = READERS_TURN;
            wait_for_turn(board, WRITERS_TURN);
        }
    }
}

constexpr uint32_t SHOWN_RECORDS = 2000;

Board *shown_board = nullptr;
uint32_t shown_number = 1; // the oldest record is passed over

bool has_had_a_turn = false;

int no_input(char *)
{
    return 0;
}

std::string csv_of(const RingRecord &r)
{
    char line[256];
    snprintf(line, sizeof(line), "%d;%d;%u;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;\n", r.nr, r.temp,
             static_cast<uint32_t>(r.rel_t), r.U1e, r.U2e, r.U3e, r.Uen, r.I1, r.I2, r.I3, r.negIe,
             r.BE1, r.BE2, static_cast<uint8_t>(r.BE), r.buffered, r.checksum);
    return line;
}

// Each record in turn has its line, but for those without a number.
int judge_line(const char *text, int more)
{
    if (more == 0 || *text == '"') {
        ++shown_board->reported; // the header, and what should not come
        return 0;
    }
    do {
        ++shown_number;
    } while (record_of(shown_number).nr == 0);
    ++(text == csv_of(record_of(shown_number)) ? shown_board->fresh : shown_board->broken);
    if (shown_number >= SHOWN_RECORDS) {
        shown_board->stop = 1;
        _exit(0);
    }
    return 0;
}

void show_what_comes(Board &board, uint32_t)
{
    wait_for(board.writer_has_begun);
    RingBuffer_Attach();
    shown_board = &board;
    stm_ringbuffer_readout(READOUT_CSV, no_input, judge_line);
    child_insists(false);
}

} // namespace

// The read-out asks this before each batch, and nothing in between.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __real_RingBuffer_NewValueAvailable(int handle);

extern "C" int __wrap_RingBuffer_NewValueAvailable(int handle)
{
    if (shown_board != nullptr) {
        shown_board->turn = has_had_a_turn ? WRITERS_TURN : shown_board->turn.load();
        has_had_a_turn = true;
        wait_for_turn(*shown_board, READERS_TURN);
    }
    return __real_RingBuffer_NewValueAvailable(handle);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

TEST_F(Processes, the_first_to_attach_has_made_the_segment_and_the_second_finds_it)
{
    const pid_t first = start(attach_first);
    while (board->put == 0 && kill(first, 0) == 0 && usleep(1000) == 0) {
    }
    const int id = shmget(5676, 7704, 0);
    shmid_ds status = {};
    EXPECT_EQ(shmctl(id, IPC_STAT, &status), 0);
    EXPECT_EQ(status.shm_segsz, 7704U);
    EXPECT_EQ(status.shm_perm.mode & 0777U, 0666U);
    EXPECT_EQ(status.shm_nattch, 1U);
    EXPECT_TRUE(ended_well({start(attach_second)}));
    board->stop = 1;
    EXPECT_TRUE(ended_well({first}));
    EXPECT_EQ(shmget(5676, 7704, 0), id) << "the segment outlives its processes";
}

TEST_F(Processes, a_million_records_arrive_whole_and_in_order_at_a_reader_that_keeps_up)
{
    const pid_t reader = start(read_many);
    const pid_t writer = start(write_many);
    EXPECT_TRUE(ended_well({reader, writer}));
    EXPECT_EQ(board->broken, 0U);
    EXPECT_EQ(board->misplaced, 0U);
    EXPECT_EQ(board->fresh + board->skipped, MANY);
    printf("of %u records %u were passed over and %u read twice; %u looks gave a stale slot\n",
           MANY, board->skipped.load(), board->repeated.load(), board->stale.load());
}

// The checksum has 16 bits: one torn record in 65536 has a right one.
TEST_F(Processes, records_that_are_overwritten_under_a_lagging_reader_are_rejected_or_whole)
{
    const pid_t reader = start(read_what_is_left);
    const pid_t writer = start(write_without_a_pause);
    EXPECT_TRUE(ended_well({reader, writer}));
    EXPECT_LE(board->broken, 1 + board->rejected / 1000);
    printf("%u records were whole, %u rejected, %u torn with a right checksum\n",
           board->fresh.load(), board->rejected.load(), board->broken.load());
}

// They take turns, so that no count is lost.
TEST_F(Processes, the_read_out_shows_each_record_that_another_process_puts_in_bursts)
{
    const pid_t reader = start(show_what_comes);
    const pid_t writer = start(write_bursts);
    EXPECT_TRUE(ended_well({reader, writer}));
    EXPECT_EQ(board->broken, 0U);
    EXPECT_GT(board->fresh, SHOWN_RECORDS - 50);
    EXPECT_EQ(board->reported, 1U);
}
