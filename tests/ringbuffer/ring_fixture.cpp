// The segment of the ring's tests.
#include "tests/ringbuffer/ring_fixture.hpp"

#include <cstddef>
#include <cstring>
#include <random>

Ring::Ring()
{
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers each time
    std::mt19937 random(5676);
    for (uint8_t &byte : segment) {
        byte = static_cast<uint8_t>(random());
    }
    stm_link.ring = reinterpret_cast<RingBuffer *>(segment.data());
    given({{WRITER_OPEN, 0x21},
           {READER_OPEN, 0x32},
           {WRITE_INDEX, 41},
           {MARK, 33},
           {READ_POS, 27},
           {COUNT, 19},
           {VALUES_LEFT, 11}});
}

void Ring::TearDown()
{
    EXPECT_TRUE(happened({})) << "the ring's operations call nobody";
}

void Ring::given(std::initializer_list<Setting> settings)
{
    for (const Setting &setting : settings) {
        set_field(segment.data(), setting);
    }
    before = segment;
}

testing::AssertionResult Ring::became(std::initializer_list<Setting> changes,
                                      std::initializer_list<StoredRecord> stored)
{
    for (const Setting &change : changes) {
        set_field(before.data(), change);
    }
    for (const StoredRecord &one : stored) {
        memcpy(before.data() + SLOT_SIZE * one.slot, &one.record, SLOT_SIZE);
    }
    const Bytes expected = before;
    before = segment;
    return same_segment(segment, expected);
}

testing::AssertionResult Ring::unchanged()
{
    return became({});
}

int32_t Ring::value(Field field) const
{
    return field_of(segment.data(), field);
}

int Ring::slot_number(const RingRecord *slot) const
{
    for (int i = 0; i < SLOTS; ++i) {
        if (reinterpret_cast<const uint8_t *>(slot) ==
            segment.data() + std::ptrdiff_t{SLOT_SIZE} * i) {
            return i;
        }
    }
    return slot == nullptr ? NO_SLOT : ASTRAY;
}

RingRecord numbered_record(int number)
{
    RingRecord record = {};
    uint8_t bytes[sizeof(record)];
    for (size_t i = 0; i < sizeof(bytes); ++i) {
        bytes[i] = static_cast<uint8_t>(static_cast<size_t>(number) * 3 + i * 5);
    }
    memcpy(&record, bytes, sizeof(record));
    record.rel_t = number;
    return record;
}

bool same_record(const RingRecord &one, const RingRecord &other)
{
    return memcmp(&one, &other, sizeof(one)) == 0;
}
