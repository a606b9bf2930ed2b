// A writer and a reader that take turns on the attached ring.
#include "tests/ringbuffer/turns.hpp"

#include "tests/ringbuffer/ring_fixture.hpp"

#include <numeric>

Numbers from_to(int first, int last)
{
    Numbers numbers(static_cast<size_t>(last - first + 1));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

void Turns::open()
{
    writer = RingBuffer_Open("w");
    reader = RingBuffer_Open("r");
}

void Turns::put(int records)
{
    for (int i = 0; i < records; ++i) {
        const RingRecord record = numbered_record(++latest);
        EXPECT_EQ(RingBuffer_PutValue(writer, &record), 1);
    }
}

Numbers Turns::read()
{
    return begin() == 0 ? Numbers() : rest();
}

int Turns::begin()
{
    const int available = RingBuffer_NewValueAvailable(reader);
    if (available == 1) {
        EXPECT_EQ(RingBuffer_MarkLastValue(reader), 1);
        EXPECT_NE(RingBuffer_GetFirstValue(reader), nullptr);
    }
    return available;
}

int Turns::next()
{
    const RingRecord &record = *RingBuffer_GetNextValue(reader);
    EXPECT_TRUE(record.rel_t == 0 || same_record(record, numbered_record(record.rel_t)));
    return record.rel_t;
}

Numbers Turns::rest()
{
    Numbers numbers;
    do {
        numbers.push_back(next());
    } while (RingBuffer_GetValuesLeft(reader) > 1);
    return numbers;
}
