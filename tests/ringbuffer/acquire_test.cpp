// Goal: the writer puts every good record of the stream into the ring, repacked and in its order,
// and touches nothing else of the segment.
#include "tests/ringbuffer/temp_stream.hpp"

#include <cstring>

namespace
{

class Acquisition : public TempStream
{
  protected:
    static void acquire() { stm_ringbuffer_acquire(poll, output); }

    Bytes slot(size_t index) const
    {
        Bytes bytes(48);
        memcpy(bytes.data(), &ring.slots[index], 48);
        return bytes;
    }

    // The number in each slot, 0 where nothing was put.
    std::vector<int> numbers() const
    {
        std::vector<int> all;
        for (const RingRecord &one : ring.slots) {
            all.push_back(one.nr);
        }
        return all;
    }

    static std::vector<int> followed_by_zeros(std::vector<int> first)
    {
        first.resize(160);
        return first;
    }
};

// The ordinary record and the one with the sign in every byte, as slots hold them.
const Bytes ORDINARY_SLOT = {
    0x55, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17,                         // to rel_t
    0x1C, 0x1D, 0x1E, 0x1F, 0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, // U1e to U3e
    0x18, 0x19, 0x1A, 0x1B,                                                 // Uen
    0x2C, 0x2D, 0x2E, 0x2F, 0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, // I1 to I3
    0x28, 0x29, 0x2A, 0x2B,                                                 // negIe
    0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0xDD, 0xE1};
const Bytes SIGNED_SLOT = {
    0x55, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7,                         //
    0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7, //
    0xC8, 0xC9, 0xCA, 0xCB,                                                 //
    0xDC, 0xDD, 0xDE, 0xDF, 0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, //
    0xD8, 0xD9, 0xDA, 0xDB,                                                 //
    0xE8, 0xE9, 0xEA, 0xEB, 0xEC, 0xED, 0x05, 0x6B};

} // namespace

TEST_F(Acquisition, puts_each_record_repacked_into_a_slot)
{
    pass_request();
    send(chained({GOLDEN_TEMP[0].bytes, GOLDEN_TEMP[1].bytes}));
    stop();
    acquire();
    EXPECT_TRUE(happened(joined({{REQUEST}, fetched(96), STREAM_POLL})));
    EXPECT_EQ(slot(0), ORDINARY_SLOT);
    EXPECT_EQ(slot(1), SIGNED_SLOT);
    EXPECT_EQ(slot(2), bytes_of(48, 0x00));
    EXPECT_EQ(ring.write_index, 2);
    EXPECT_EQ(ring.count, 2);
}

TEST_F(Acquisition, puts_three_records_of_a_block_and_polls_again)
{
    pass_request();
    send(stamped_run(3, 70));
    stop();
    acquire();
    EXPECT_TRUE(happened(joined({{REQUEST}, fetched(144), STREAM_POLL})));
    EXPECT_EQ(numbers(), followed_by_zeros({1, 2, 3}));
    EXPECT_EQ(ring.count, 3);
}

TEST_F(Acquisition, keeps_the_first_byte_of_a_record_whatever_it_is)
{
    Bytes unmarked = stamped(7, 1);
    unmarked[0] = 0x3C;
    pass_request();
    send(sealed(unmarked));
    stop();
    acquire();
    EXPECT_EQ(ring.slots[0].marker, 0x3C);
    EXPECT_EQ(ring.count, 1);
}

TEST_F(Acquisition, puts_records_without_a_number_too)
{
    pass_request();
    send(chained({stamped(0, 5), stamped(3, 6)}));
    stop();
    acquire();
    EXPECT_EQ(ring.slots[0].rel_t, 5);
    EXPECT_EQ(ring.slots[1].rel_t, 6);
    EXPECT_EQ(ring.count, 2);
}

TEST_F(Acquisition, goes_on_behind_the_last_record_of_the_block_before)
{
    pass_request();
    send(stamped_run(2, 1));
    idle(301);
    send(stamped_run(3, 3));
    stop();
    acquire();
    EXPECT_TRUE(
        happened(joined({{REQUEST}, fetched(96), STREAM_TIMEOUT, fetched(144), STREAM_POLL})));
    EXPECT_EQ(numbers(), followed_by_zeros({1, 2, 1, 2, 3}));
    EXPECT_EQ(ring.write_index, 5);
}

TEST_F(Acquisition, drops_the_rest_of_a_block_behind_a_wrong_checksum)
{
    pass_request();
    send(chained({stamped(1, 1), bad_record(), stamped(3, 3)}));
    send(chained({bad_record(), stamped(4, 4)}));
    send(chained({stamped(5, 5), stamped(6, 6), bad_record()}));
    stop();
    acquire();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(144),
                                 {complaint()},
                                 fetched(96),
                                 {complaint()},
                                 fetched(144),
                                 {complaint()},
                                 STREAM_POLL})));
    EXPECT_EQ(numbers(), followed_by_zeros({1, 5, 6}));
    EXPECT_EQ(ring.count, 3);
}

TEST_F(Acquisition, overwrites_the_oldest_records_and_counts_159_at_most)
{
    pass_request();
    send(stamped_run(80, 1));
    send(stamped_run(80, 81));
    send(chained({stamped(201, 161), stamped(202, 162)}));
    stop();
    acquire();
    EXPECT_EQ(ring.slots[0].nr, 201);
    EXPECT_EQ(ring.slots[1].nr, 202);
    EXPECT_EQ(ring.slots[2].nr, 3);
    EXPECT_EQ(ring.slots[159].rel_t, 160);
    EXPECT_EQ(ring.write_index, 2);
    EXPECT_EQ(ring.count, 159);
}

TEST_F(Acquisition, begins_at_slot_0_and_leaves_the_reader_s_fields)
{
    ring.write_index = 77;
    ring.mark = 11;
    ring.read_pos = 12;
    ring.count = 13;
    ring.values_left = 14;
    ring.reader_open = 1;
    pass_request();
    send(stamped_run(1, 1));
    stop();
    acquire();
    EXPECT_EQ(ring.slots[0].nr, 1);
    EXPECT_EQ(ring.slots[77].nr, 0);
    EXPECT_EQ(ring.write_index, 1);
    EXPECT_EQ(ring.mark, 11);
    EXPECT_EQ(ring.read_pos, 12);
    EXPECT_EQ(ring.count, 14);
    EXPECT_EQ(ring.values_left, 14);
    EXPECT_EQ(ring.reader_open, 1);
}

TEST_F(Acquisition, puts_nothing_of_a_block_before_the_next_is_asked_for)
{
    std::vector<int> counts;
    watch = [&](const spi_ioc_transfer &) { counts.push_back(ring.count); };
    pass_request();
    send(stamped_run(2, 1));
    stop();
    acquire();
    EXPECT_EQ(counts, std::vector<int>({0, 0, 0, 0, 2}));
}

TEST_F(Acquisition, begins_again_at_slot_0_in_each_call)
{
    pass_request();
    send(stamped_run(2, 1));
    stop();
    acquire();
    const RingBuffer left = ring;
    begin_again();
    ring = left;
    pass_request();
    send(stamped(99, 1));
    stop();
    acquire();
    EXPECT_EQ(numbers(), followed_by_zeros({99, 2}));
    EXPECT_EQ(ring.write_index, 1);
    EXPECT_EQ(ring.count, 3);
}

TEST_F(Acquisition, never_pauses_but_after_a_time_out)
{
    pass_request();
    for (int i = 0; i < 20; ++i) {
        send(stamped_run(1, 1));
    }
    send(bad_record());
    stop();
    acquire();
    EXPECT_EQ(slept_us, 0U);
    EXPECT_EQ(ring.count, 20);
}
