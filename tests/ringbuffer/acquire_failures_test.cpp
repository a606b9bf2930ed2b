// Goal: the writer's side of the ring is taken before anything is sent and given back however the
// stream ends; a record that cannot be put is told, and the stream goes on.
#include "tests/ringbuffer/temp_stream.hpp"

#include <cerrno>

namespace
{

// No operation marks the ring as open, so the test does, in the first exchange.
class OpenRing : public TempStream
{
  protected:
    OpenRing()
    {
        watch = [this](const spi_ioc_transfer &) { look(); };
    }

    void acquire() { stm_ringbuffer_acquire(poll, output); }

    void look()
    {
        ++exchanges;
        if (exchanges == 1) {
            ring.writer_open = 1;
        } else {
            open_flags.push_back(ring.writer_open);
        }
        if (exchanges == damaging_exchange) {
            ring.write_index = damaged_index;
        }
    }

    int exchanges = 0;
    std::vector<int> open_flags;
    int damaging_exchange = 0;
    int32_t damaged_index = 160;
};

const std::string CANNOT_OPEN = "say 0 \"Cannot open ringbuffer for write\\n\"";
const std::string CANNOT_PUT = "say 0 \"Error: Writing to ringbuffer\\n\"";

} // namespace

TEST_F(OpenRing, of_another_writer_keeps_everything_from_being_sent)
{
    ring.writer_open = 1;
    ring.write_index = 33;
    acquire();
    EXPECT_TRUE(happened({CANNOT_OPEN}));
    EXPECT_EQ(messages, Transcript({CANNOT_OPEN}));
    EXPECT_EQ(ring.writer_open, 1);
    EXPECT_EQ(ring.write_index, 33);
}

TEST_F(OpenRing, that_is_not_attached_keeps_everything_from_being_sent)
{
    stm_link.ring = nullptr;
    acquire();
    EXPECT_TRUE(happened({CANNOT_OPEN}));
    EXPECT_EQ(stm_link.ring, nullptr);
}

TEST_F(OpenRing, is_the_writer_s_own)
{
    ring.reader_open = 1;
    pass_request();
    stop();
    acquire();
    EXPECT_TRUE(happened(joined({{REQUEST}, STREAM_POLL})));
    EXPECT_EQ(ring.reader_open, 1);
}

TEST_F(OpenRing, is_not_marked_by_opening_it)
{
    std::vector<int> flags;
    watch = [&](const spi_ioc_transfer &) { flags.push_back(ring.writer_open); };
    pass_request();
    stop();
    acquire();
    EXPECT_EQ(flags, std::vector<int>({0, 0}));
}

TEST_F(OpenRing, is_closed_by_the_stop_line_and_by_nothing_before)
{
    pass_request();
    send(stamped_run(2, 1));
    send(bad_record());
    idle(301);
    stop();
    acquire();
    EXPECT_EQ(open_flags, std::vector<int>(open_flags.size(), 1));
    EXPECT_EQ(ring.writer_open, 0);
    EXPECT_EQ(stm_link.ring, &ring);
}

TEST_F(OpenRing, is_closed_after_a_failing_first_request)
{
    fail_next(EIO);
    acquire();
    EXPECT_TRUE(happened({REQUEST, R"(perror "SPI datatransfer" EIO)"}));
    EXPECT_EQ(ring.writer_open, 0);
}

TEST_F(OpenRing, is_closed_after_each_failing_exchange)
{
    for (int failing = 2; failing <= 5; ++failing) {
        begin_again();
        exchanges = 0;
        pass_request();
        send_block(19, stamped_run(1, 1));
        fail_exchange(failing, EIO);
        acquire();
        EXPECT_EQ(exchanges, failing);
        EXPECT_EQ(ring.writer_open, 0) << failing;
        EXPECT_EQ(ring.count, 0) << failing;
    }
}

TEST_F(OpenRing, is_closed_after_a_refused_block)
{
    pass_request();
    head(17, 4097, {});
    acquire();
    EXPECT_TRUE(
        happened(joined({{REQUEST}, STREAM_POLL, {R"(perror "SPI datatransfer" EMSGSIZE)"}})));
    EXPECT_EQ(ring.writer_open, 0);
}

TEST_F(OpenRing, that_is_damaged_is_told_and_closed_and_the_stream_goes_on)
{
    for (const int32_t index : {160, -1, INT32_MAX, INT32_MIN}) {
        begin_again();
        exchanges = 0;
        open_flags.clear();
        damaging_exchange = 4; // the request behind the block
        damaged_index = index;
        pass_request();
        send(stamped_run(1, 1));
        stop();
        acquire();
        EXPECT_TRUE(happened(joined({{REQUEST}, fetched(48), {CANNOT_PUT}, STREAM_POLL})));
        EXPECT_EQ(messages, Transcript({CANNOT_PUT}));
        EXPECT_EQ(open_flags, std::vector<int>({1, 1, 1, 0})) << "closed before the next poll";
        EXPECT_EQ(ring.write_index, index);
        EXPECT_EQ(ring.count, 0);
    }
}

TEST_F(OpenRing, that_is_damaged_is_told_for_each_record)
{
    damaging_exchange = 4;
    pass_request();
    send(chained({stamped_run(3, 1), bad_record()}));
    send(stamped_run(2, 4));
    stop();
    acquire();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(192),
                                 times(3, {CANNOT_PUT}),
                                 {complaint()},
                                 fetched(96),
                                 times(2, {CANNOT_PUT}),
                                 STREAM_POLL})));
}

TEST_F(OpenRing, is_told_of_before_it_is_closed)
{
    static std::vector<int> flags;
    flags.clear();
    damaging_exchange = 4;
    pass_request();
    send(stamped_run(2, 1));
    stop();
    stm_ringbuffer_acquire(poll, [](const char *, int) {
        flags.push_back(stm_link.ring->writer_open);
        return 0;
    });
    EXPECT_EQ(flags, std::vector<int>({1, 0}));
}

TEST_F(OpenRing, that_has_been_mended_takes_records_again)
{
    int exchange_number = 0;
    watch = [&](const spi_ioc_transfer &) {
        ++exchange_number;
        ring.write_index = exchange_number == 4   ? 160
                           : exchange_number == 7 ? 50
                                                  : ring.write_index;
    };
    pass_request();
    send(stamped_run(2, 1));
    send(stamped_run(2, 3));
    stop();
    acquire();
    EXPECT_TRUE(happened(
        joined({{REQUEST}, fetched(96), times(2, {CANNOT_PUT}), fetched(96), STREAM_POLL})));
    EXPECT_EQ(ring.slots[50].rel_t, 3);
    EXPECT_EQ(ring.slots[51].rel_t, 4);
    EXPECT_EQ(ring.count, 2);
}

TEST_F(OpenRing, that_is_taken_away_is_told_of_as_one_that_is_damaged)
{
    int exchange_number = 0;
    watch = [&](const spi_ioc_transfer &) {
        stm_link.ring = ++exchange_number == 4 ? nullptr : stm_link.ring;
    };
    pass_request();
    send(stamped_run(2, 1));
    stop();
    acquire();
    EXPECT_TRUE(happened(joined({{REQUEST}, fetched(96), times(2, {CANNOT_PUT}), STREAM_POLL})));
}
