// Goal: a read-out of a million records hands on each of them exactly once and in order, and takes
// nothing from the heap. No dialogue runs here, so that every allocation would be the module's.
#include "link/link.hpp"
#include "tests/readout/block_fixture.hpp"
#include "tests/readout/counted_allocations.hpp"

#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

using namespace stm;

namespace
{

constexpr int WIRE = 7654; // the descriptor of the fake device

// What each record holds, by its place in the whole read-out. No number is 0, so that CSV shows
// all.
int number_of(int index)
{
    return 1 + index % 255;
}

// A co-processor and the reader of its records, both in memory that is there before the read-out.
struct Board {
    Operation operation;
    const char *csv; // of number, time stamp, U1e, I2 and checksum
    Bytes record;
    std::array<uint8_t, 4096> block = {};
    std::array<uint16_t, 256> checksums = {}; // of the latest records
    size_t length = 0;
    int polls = 0;
    int made = 0;
    int headers = 0;
    int shown = 0;
    int wrong = 0; // texts that are not the record whose turn it is
    int strange_exchanges = 0;
    int closings = 0;
};

Board *board = nullptr;

void make_block(int count)
{
    const size_t size = board->operation.size;
    const RecordKind kind = board->operation.kind;
    for (int i = 0; i < count; ++i, ++board->made) {
        write_field(board->record, kind, {"nr", number_of(board->made)});
        write_field(board->record, kind, {"rel_t", board->made});
        write_field(board->record, kind, {"U1e", -board->made});
        write_field(board->record, kind, {"I2", int64_t{2000} * board->made});
        seal(board->record);
        const auto checksum =
            static_cast<uint16_t>(board->record[size - 2] | board->record[size - 1] << 8);
        board->checksums[static_cast<size_t>(board->made) % 256] = checksum;
        std::copy(board->record.begin(), board->record.end(),
                  board->block.begin() + static_cast<std::ptrdiff_t>(size) * i);
    }
    board->length = size * static_cast<size_t>(count);
    board->polls = 0;
}

// Each block is ready in the third poll for it.
void clock_bytes(const uint8_t *tx, uint8_t *rx, size_t count)
{
    if (tx == stm_link.tx_short && count == 8 && tx[0] == board->operation.command) {
        make_block(tx[1]);
    } else if (count == 1 && tx[0] == 0x44) {
        rx[0] = ++board->polls == 3 ? 0x55 : 0x00;
    } else if (count == 2) {
        rx[0] = static_cast<uint8_t>(board->length >> 8);
        rx[1] = static_cast<uint8_t>(board->length & 0xFF);
    } else if (count == board->length) {
        std::copy_n(board->block.begin(), count, rx);
    } else if (count == 4096) {
        ++board->closings;
    } else {
        ++board->strange_exchanges;
    }
}

// A million of one kind, fewer of the others: emulators take their time.
int wanted(RecordKind kind)
{
    return kind == RecordKind::base ? 1'000'000 : 100'000;
}

int no_input(char *)
{
    return 0;
}

int take_line(const char *text, int)
{
    if (board->headers == 0) {
        ++board->headers;
        return 0;
    }
    const int index = board->shown++;
    char expected[256];
    snprintf(expected, sizeof(expected), board->csv, number_of(index), index, -index, 2000 * index,
             board->checksums[static_cast<size_t>(index) % 256]);
    board->wrong += strcmp(text, expected) == 0 ? 0 : 1;
    return 0;
}

const char *csv_of(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return "%d;%d;%d;0;0;0;0;%d;0;0;0;0;0;0;0;%d;\n";
    case RecordKind::omega:
        return "%d;0;%d;%d;0;0;0;0;%d;0;0;0;0;0;0;0;%d;\n";
    case RecordKind::temp:
        break;
    }
    return "%d;0;%d;%d;0;0;0;0;%d;0;0;0;0;0;0;%d;\n";
}

class MillionRecords : public testing::TestWithParam<Operation>
{
  protected:
    MillionRecords()
    {
        memset(static_cast<void *>(&stm_link), 0, sizeof(stm_link));
        stm_link.spi_fd = WIRE;
        board = &own_board;
    }

    ~MillionRecords() override { board = nullptr; }
    MillionRecords(const MillionRecords &) = delete;
    MillionRecords &operator=(const MillionRecords &) = delete;

    Board own_board = {GetParam(), csv_of(GetParam().kind), record(GetParam().kind, {})};
};

} // namespace

// The platform sends the module's ioctl on to this one while no dialogue runs.
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (fd != WIRE || board == nullptr) {
        return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
    }
    const auto *transfer = static_cast<const spi_ioc_transfer *>(argument);
    clock_bytes(reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(transfer->tx_buf)),
                reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(transfer->rx_buf)),
                transfer->len);
    return static_cast<int>(transfer->len);
}

INSTANTIATE_FOR_ALL_OPERATIONS(MillionRecords);

TEST_P(MillionRecords, arrive_exactly_once_and_in_order_and_take_nothing_from_the_heap)
{
    const int many = wanted(GetParam().kind);
    const uint64_t before = allocations_so_far();
    GetParam().read(many, CSV, no_input, take_line);
    EXPECT_EQ(allocations_so_far() - before, 0U);
    EXPECT_EQ(own_board.made, many);
    EXPECT_EQ(own_board.shown, many);
    EXPECT_EQ(own_board.wrong, 0);
    EXPECT_EQ(own_board.headers, 1);
    EXPECT_EQ(own_board.strange_exchanges, 0);
    EXPECT_EQ(own_board.closings, 1);
}

// The count is worth nothing if it misses anybody's allocations.
TEST(CountedAllocations, are_those_of_C_of_C_plus_plus_and_of_the_library)
{
    void *volatile block = nullptr;
    const auto taken = [&block](void *(*take)(void *)) {
        const uint64_t before = allocations_so_far();
        block = take(block);
        return allocations_so_far() - before;
    };
    EXPECT_EQ(taken([](void *) { return malloc(10); }), 1U);
    EXPECT_GE(taken([](void *old) { return realloc(old, 100'000); }), 1U);
    free(block);
    EXPECT_EQ(taken([](void *) { return calloc(10, 10); }), 1U);
    free(block);
    EXPECT_EQ(taken([](void *) { return static_cast<void *>(strdup("a copy")); }), 1U);
    free(block);
    EXPECT_EQ(taken([](void *) { return ::operator new(10); }), 1U);
    ::operator delete(block);
}
