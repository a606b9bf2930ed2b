// Goal: in a segment of random bytes, between pages that nobody may touch, every operation does
// what the arithmetic says and leaves the rest of the world alone.
#include "tests/platform/dialogue.hpp"
#include "tests/ringbuffer/ring_model.hpp"
#include "tests/ringbuffer/segment_bytes.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <stdexcept>

namespace
{

constexpr int ROUNDS = 2'000;
constexpr int OPERATIONS_IN_A_ROUND = 5;

constexpr std::array ODD_NUMBERS = {
    -1,  0,    1,    2,    158,     159,     160,         161,
    320, -159, -160, -161, INT_MIN, INT_MAX, INT_MIN + 1, INT_MAX - 159};

// Where the segment lies in the two pages between those that nobody may touch.
enum class Place : uint8_t { at_the_start, at_the_end };

class BetweenGuards : public Dialogue, public testing::WithParamInterface<Place>
{
  protected:
    BetweenGuards()
    {
        memory = static_cast<uint8_t *>(
            mmap(nullptr, 4 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (mprotect(memory + page, 2 * page, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error("no memory between guards");
        }
        const size_t gap = GetParam() == Place::at_the_start ? 0 : 2 * page - SEGMENT_SIZE;
        begin = memory + page + gap;
        stm_link.ring = reinterpret_cast<RingBuffer *>(begin);
    }

    ~BetweenGuards() override { munmap(memory, 4 * page); }
    BetweenGuards(const BetweenGuards &) = delete;
    BetweenGuards &operator=(const BetweenGuards &) = delete;

    // Both pages, so that the gap is watched too.
    Bytes pages() const { return Bytes(memory + page, memory + 3 * page); }
    Bytes bytes() const { return Bytes(begin, begin + SEGMENT_SIZE); }

    int any(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    int odd_number()
    {
        return any(0, 2) == 0 ? ODD_NUMBERS[static_cast<size_t>(any(0, ODD_NUMBERS.size() - 1))]
                              : any(0, 160);
    }

    // Most segments are damaged in a field or two only, so that the other fields get their turn.
    void damage()
    {
        for (uint8_t *at = memory + page; at < memory + 3 * page; at += 4) {
            const auto word = static_cast<uint32_t>(random());
            memcpy(at, &word, sizeof(word));
        }
        if (any(0, 3) == 0) {
            return;
        }
        for (const Field field : INDEX_FIELDS) {
            set_field(begin, {field, any(0, 3) == 0 ? odd_number() : any(0, 159)});
        }
        for (const Field flag : {WRITER_OPEN, READER_OPEN}) {
            set_field(begin, {flag, any(0, 2)});
        }
    }

    void operate()
    {
        const auto operations = ring_operations();
        const RingOperation &one =
            operations[static_cast<size_t>(any(0, static_cast<int>(operations.size()) - 1))];
        const int handle = any(0, 5) == 0 ? odd_number() : any(1, 2);
        const int n = odd_number();
        Bytes expected = bytes();
        Bytes around = pages();
        const int expected_result = one.model(expected, handle, n);
        EXPECT_EQ(one.run(handle, n, begin), expected_result)
            << one.name << " with " << handle << " and " << n;
        EXPECT_TRUE(same_segment(bytes(), expected)) << one.name << " with " << handle << ", " << n;
        std::copy(expected.begin(), expected.end(),
                  around.begin() + (begin - memory - static_cast<std::ptrdiff_t>(page)));
        EXPECT_EQ(pages(), around) << one.name;
    }

    size_t page = std::max<size_t>(static_cast<size_t>(sysconf(_SC_PAGESIZE)), 4096);
    uint8_t *memory = nullptr;
    uint8_t *begin = nullptr;
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers each time
    std::mt19937 random{5676};
};

} // namespace

TEST_P(BetweenGuards, operations_on_a_damaged_segment_follow_the_arithmetic_and_stay_inside)
{
    for (int round = 0; round < ROUNDS && !HasFailure(); ++round) {
        damage();
        for (int i = 0; i < OPERATIONS_IN_A_ROUND; ++i) {
            operate();
        }
    }
    EXPECT_TRUE(happened({}));
}

TEST_P(BetweenGuards, many_operations_on_one_segment_follow_the_arithmetic)
{
    damage();
    RingBuffer_Open("w");
    RingBuffer_Open("r");
    for (int i = 0; i < 5'000 && !HasFailure(); ++i) {
        operate();
    }
}

INSTANTIATE_TEST_SUITE_P(Each, BetweenGuards,
                         testing::Values(Place::at_the_start, Place::at_the_end));
