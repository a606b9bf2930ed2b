// Goal: the read-out calls the ring's operations in its fixed order with the handle that it was
// given, goes by their results alone, and closes the ring after each failure but two. The
// operations are replaced here, so that each can fail.
#include "tests/ringbuffer/reader_fixture.hpp"

namespace
{

class RingCalls;
RingCalls *running_calls = nullptr;

// What happens when the ring is opened, and what comes back from the looks at it.
constexpr char OPEN[] = "Open r";
constexpr char LOOK[] = "NewValueAvailable 2";
constexpr char MARKED[] = "MarkLastValue 2";
constexpr char FIRST[] = "GetFirstValue 2";
constexpr char NEXT[] = "GetNextValue 2";
constexpr char LEFT[] = "GetValuesLeft 2";
constexpr char CLOSE[] = "Close 2";

const std::string NO_VALUE = say("RingBuffer_GetFirstValue()\n");

// The fixture: a ring of which each operation gives what is scripted, one result after another,
// and the last of them from then on.
class RingCalls : public Dialogue
{
  protected:
    RingCalls()
    {
        const Bytes record = good_record(1);
        std::copy(record.begin(), record.end(), reinterpret_cast<uint8_t *>(&slot));
        running_calls = this;
    }

    ~RingCalls() override { running_calls = nullptr; }
    RingCalls(const RingCalls &) = delete;
    RingCalls &operator=(const RingCalls &) = delete;

    static void read() { stm_ringbuffer_readout(5, poll, output); }

  public:
    static int next_of(std::vector<int> &results)
    {
        const int result = results.front();
        if (results.size() > 1) {
            results.erase(results.begin());
        }
        return result;
    }

    RingRecord *next_slot_of(std::vector<int> &results)
    {
        return next_of(results) != 0 ? &slot : nullptr;
    }

    // The record gets a wrong checksum, and is another one as soon as somebody looks a second time.
    void let_another_process_write()
    {
        slot.checksum ^= 0xFFFF;
        looks = 0;
    }

    void look_at_record()
    {
        if (looks >= 0 && ++looks == 2) {
            slot.U1e ^= 1;
        }
    }

    std::vector<int> opened = {2};
    std::vector<int> available = {1, -1};
    std::vector<int> marked = {1};
    std::vector<int> first = {1}; // 0 is null
    std::vector<int> next = {1};
    std::vector<int> left = {1};

    RingRecord slot = {};

  private:
    int looks = -1; // not counted
};

std::string called(const char *operation, int handle)
{
    return operation + std::string(" ") + std::to_string(handle);
}

std::string no_look(int handle)
{
    return say("Error: RingBuffer_NewValueAvailable() (fd: " + std::to_string(handle) + ")\n");
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

uint16_t __real_stm_crc16(const uint8_t *data, uint16_t length);

uint16_t __wrap_stm_crc16(const uint8_t *data, uint16_t length)
{
    if (running_calls != nullptr) {
        running_calls->look_at_record();
    }
    return __real_stm_crc16(data, length);
}

int __wrap_RingBuffer_Open(const char *mode)
{
    running_calls->note("Open " + std::string(mode));
    return RingCalls::next_of(running_calls->opened);
}

int __wrap_RingBuffer_Close(int handle)
{
    running_calls->note(called("Close", handle));
    return -1;
}

int __wrap_RingBuffer_NewValueAvailable(int handle)
{
    running_calls->note(called("NewValueAvailable", handle));
    return RingCalls::next_of(running_calls->available);
}

int __wrap_RingBuffer_MarkLastValue(int handle)
{
    running_calls->note(called("MarkLastValue", handle));
    return RingCalls::next_of(running_calls->marked);
}

RingRecord *__wrap_RingBuffer_GetFirstValue(int handle)
{
    running_calls->note(called("GetFirstValue", handle));
    return running_calls->next_slot_of(running_calls->first);
}

RingRecord *__wrap_RingBuffer_GetNextValue(int handle)
{
    running_calls->note(called("GetNextValue", handle));
    return running_calls->next_slot_of(running_calls->next);
}

int __wrap_RingBuffer_GetValuesLeft(int handle)
{
    running_calls->note(called("GetValuesLeft", handle));
    return RingCalls::next_of(running_calls->left);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

TEST_F(RingCalls, come_in_a_fixed_order)
{
    left = {3, 2, 1};
    read();
    EXPECT_TRUE(happened(
        {OPEN, LOOK, MARKED, FIRST, NEXT, LEFT, NEXT, LEFT, NEXT, LEFT, LOOK, no_look(2), CLOSE}));
}

TEST_F(RingCalls, begin_behind_the_csv_header)
{
    opened = {-1};
    stm_ringbuffer_readout(CSV, poll, output);
    EXPECT_TRUE(happened({HEADER, OPEN, say("Cannot open Ringbuffer for read\n")}));
}

TEST_F(RingCalls, begin_each_batch_with_a_mark)
{
    available = {0, 1, 1, 0, 0, 1, -1};
    read();
    const Transcript batch = {MARKED, FIRST, NEXT, LEFT};
    EXPECT_TRUE(happened(joined({{OPEN, LOOK, "sleep 1000", LOOK},
                                 batch,
                                 {LOOK},
                                 batch,
                                 {LOOK, "sleep 1000", LOOK, "sleep 1000", LOOK},
                                 batch,
                                 {LOOK, no_look(2), CLOSE}})));
}

TEST_F(RingCalls, end_a_batch_when_1_or_fewer_are_left)
{
    for (const int few : {1, 0, -1, INT_MIN}) {
        forget();
        available = {1, -1};
        left = {2, few};
        read();
        EXPECT_TRUE(
            happened({OPEN, LOOK, MARKED, FIRST, NEXT, LEFT, NEXT, LEFT, LOOK, no_look(2), CLOSE}));
    }
}

TEST_F(RingCalls, go_on_with_a_batch_whatever_is_left_above_1)
{
    left = {INT_MAX, 160, 2, 1};
    read();
    EXPECT_TRUE(happened({OPEN, LOOK, MARKED, FIRST, NEXT, LEFT, NEXT, LEFT, NEXT, LEFT, NEXT, LEFT,
                          LOOK, no_look(2), CLOSE}));
}

TEST_F(RingCalls, use_every_handle_from_1_on)
{
    opened = {1};
    read();
    EXPECT_TRUE(happened({OPEN, "NewValueAvailable 1", "MarkLastValue 1", "GetFirstValue 1",
                          "GetNextValue 1", "GetValuesLeft 1", "NewValueAvailable 1", no_look(1),
                          "Close 1"}));
    forget();
    opened = {300};
    available = {-1};
    read();
    EXPECT_TRUE(happened({OPEN, "NewValueAvailable 300", no_look(300), "Close 300"}));
}

TEST_F(RingCalls, end_with_an_open_that_gives_no_handle)
{
    for (const int refused : {0, -1, INT_MIN}) {
        forget();
        opened = {refused};
        read();
        EXPECT_TRUE(happened({OPEN, say("Cannot open Ringbuffer for read\n")}));
    }
}

TEST_F(RingCalls, end_with_every_negative_look)
{
    for (const int failed : {-1, -2, INT_MIN}) {
        forget();
        available = {0, failed};
        read();
        EXPECT_TRUE(happened({OPEN, LOOK, "sleep 1000", LOOK, no_look(2), CLOSE}));
    }
}

TEST_F(RingCalls, take_every_positive_look_for_something_new)
{
    for (const int found : {1, 2, INT_MAX}) {
        forget();
        available = {found, -1};
        read();
        EXPECT_TRUE(happened({OPEN, LOOK, MARKED, FIRST, NEXT, LEFT, LOOK, no_look(2), CLOSE}));
    }
}

TEST_F(RingCalls, close_the_ring_when_there_is_no_mark)
{
    for (const int failed : {0, -1, INT_MIN}) {
        forget();
        available = {1};
        marked = {failed};
        read();
        EXPECT_TRUE(
            happened({OPEN, LOOK, MARKED, say("Error: RingBuffer_MarkLastValue()\n"), CLOSE}));
    }
}

TEST_F(RingCalls, close_the_ring_when_there_is_no_mark_in_a_later_batch)
{
    available = {1};
    marked = {1, 2, -1};
    read();
    const Transcript batch = {LOOK, MARKED, FIRST, NEXT, LEFT};
    EXPECT_TRUE(
        happened(joined({{OPEN},
                         batch,
                         batch,
                         {LOOK, MARKED, say("Error: RingBuffer_MarkLastValue()\n"), CLOSE}})));
}

TEST_F(RingCalls, close_the_ring_when_there_is_no_first_value)
{
    first = {0};
    read();
    EXPECT_TRUE(happened({OPEN, LOOK, MARKED, FIRST, NO_VALUE, CLOSE}));
}

TEST_F(RingCalls, close_the_ring_when_there_is_no_next_value_in_the_words_of_the_first)
{
    next = {0};
    read();
    EXPECT_TRUE(happened({OPEN, LOOK, MARKED, FIRST, NEXT, NO_VALUE, CLOSE}));
}

TEST_F(RingCalls, close_the_ring_when_a_later_next_value_is_missing)
{
    next = {1, 1, 0};
    left = {9};
    read();
    EXPECT_TRUE(
        happened({OPEN, LOOK, MARKED, FIRST, NEXT, LEFT, NEXT, LEFT, NEXT, NO_VALUE, CLOSE}));
}

TEST_F(RingCalls, leave_the_ring_open_after_5001_idle_looks)
{
    available = {0};
    read();
    EXPECT_TRUE(happened(joined({{OPEN}, times(5000, {LOOK, "sleep 1000"}), {LOOK, TIMEOUT}})));
}

// Of a slot in shared memory, which another process may write to in between.
TEST_F(RingCalls, report_the_checksums_that_were_compared)
{
    const uint16_t computed = slot.checksum;
    let_another_process_write();
    read();
    char report[80];
    snprintf(report, sizeof(report), "Wrong checksum detected (crc = %X, checksum= %X)\n", computed,
             computed ^ 0xFFFF);
    EXPECT_TRUE(happened({OPEN, LOOK, MARKED, FIRST, NEXT, say(report), LOOK, no_look(2), CLOSE}));
}
