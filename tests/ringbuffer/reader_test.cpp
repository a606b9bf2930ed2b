// Goal: the read-out shows what another process puts into the ring, batch by batch, in each
// format, and gives up after its 5001st idle look, however these are spread.
#include "tests/ringbuffer/reader_fixture.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace
{

class ShownFormat : public RingReadout, public testing::WithParamInterface<int>
{
  protected:
    static Transcript header() { return GetParam() == CSV ? Transcript{HEADER} : Transcript{}; }
    static Transcript lines(int first, int last)
    {
        return GetParam() == CSV ? csv_lines(first, last) : text_lines(first, last);
    }
};

class SilentFormat : public RingReadout, public testing::WithParamInterface<int>
{
};

// All bytes of the link, the message blanked out.
Bytes link_without_message()
{
    const auto *begin = reinterpret_cast<const uint8_t *>(&stm_link);
    Bytes bytes(begin, begin + sizeof(stm_link));
    const auto message = bytes.begin() + offsetof(StmLink, message);
    std::fill_n(message, sizeof(stm_link.message), uint8_t{0});
    return bytes;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, ShownFormat, testing::Values(TEXT, CSV));
INSTANTIATE_TEST_SUITE_P(Each, SilentFormat,
                         testing::Values(-1, 0, HEX, 4, 5, 256 + CSV, INT_MIN, INT_MAX));

TEST_P(ShownFormat, of_an_empty_ring_is_a_timeout_at_the_5001st_look)
{
    read(GetParam());
    EXPECT_TRUE(happened(joined({header(), idle(5000), {TIMEOUT}})));
    EXPECT_EQ(slept_us, 5'000'000U);
}

TEST_P(ShownFormat, has_all_records_of_a_batch_but_the_oldest)
{
    in_sleep(1, [] { put_good(1, 4); });
    read(GetParam());
    EXPECT_TRUE(happened(joined({header(), idle(1), lines(2, 4), idle(4999), {TIMEOUT}})));
}

TEST_P(ShownFormat, has_exactly_what_is_new_in_later_batches)
{
    in_sleep(10, [] { put_good(1, 2); });
    in_sleep(20, [] { put_good(3, 3); });
    in_sleep(21, [] { put_good(4, 10); });
    in_sleep(2000, [] { put_good(11, 168); });
    read(GetParam());
    EXPECT_TRUE(happened(joined({header(),
                                 idle(10),
                                 lines(2, 2),
                                 idle(10),
                                 lines(3, 3),
                                 idle(1),
                                 lines(4, 10),
                                 idle(1979),
                                 lines(11, 168),
                                 idle(3000),
                                 {TIMEOUT}})));
}

TEST_P(ShownFormat, has_the_newest_158_when_the_reader_lags)
{
    in_sleep(1, [] { put_good(1, 1000); });
    in_sleep(2, [] { put_good(1001, 1002); });
    read(GetParam());
    EXPECT_TRUE(happened(joined(
        {header(), idle(1), lines(843, 1000), idle(1), lines(1001, 1002), idle(4998), {TIMEOUT}})));
}

TEST_P(ShownFormat, counts_the_idle_looks_of_all_waits_together)
{
    in_sleep(1000, [] { put_good(1, 2); });
    in_sleep(4999, [] { put_good(3, 4); });
    in_sleep(5000, [] { put_good(5, 6); });
    in_sleep(5001, [] { put_good(7, 8); });
    read(GetParam());
    EXPECT_TRUE(happened(joined({header(),
                                 idle(1000),
                                 lines(2, 2),
                                 idle(3999),
                                 lines(3, 4),
                                 idle(1),
                                 lines(5, 6),
                                 {TIMEOUT}})));
}

TEST_P(ShownFormat, begins_each_run_with_all_its_looks)
{
    read(GetParam());
    forget();
    in_sleep(10'000, [] { put_good(1, 2); });
    read(GetParam());
    EXPECT_TRUE(happened(joined({header(), idle(5000), lines(2, 2), {TIMEOUT}})));
}

TEST_P(ShownFormat, goes_on_with_what_is_put_while_a_record_is_shown)
{
    int shown = GetParam() == CSV ? -1 : 0; // the header is no record
    after_output = [&shown] {
        if (++shown == 2) {
            put_good(5, 6);
        }
    };
    in_sleep(1, [] { put_good(1, 4); });
    stm_ringbuffer_readout(GetParam(), poll, output_and_then);
    EXPECT_TRUE(happened(joined({header(), idle(1), lines(2, 6), idle(4999), {TIMEOUT}})));
}

TEST_P(ShownFormat, clears_the_readers_fields_and_the_count_and_not_what_others_hold)
{
    set({WRITER_OPEN, 1});
    set({READER_OPEN, 0x80});
    for (const Field field : INDEX_FIELDS) {
        set({field, 77});
    }
    set({WRITE_INDEX, 0});
    Bytes expected = segment;
    for (const Field field : {MARK, READ_POS, COUNT, VALUES_LEFT}) {
        set_field(expected.data(), {field, 0});
    }
    read(GetParam());
    EXPECT_TRUE(same_segment(segment, expected));
}

TEST_P(ShownFormat, leaves_a_ring_open_that_stays_empty)
{
    in_sleep(1, [this] { set({READER_OPEN, 1}); });
    read(GetParam());
    EXPECT_EQ(value(READER_OPEN), 1);
}

TEST_P(ShownFormat, reads_and_changes_no_slot)
{
    in_sleep(1, [] { put_good(1, 200); });
    Bytes expected;
    in_sleep(2, [this, &expected] { expected = segment; });
    read(GetParam());
    EXPECT_TRUE(same_segment(segment, expected));
}

TEST_P(ShownFormat, needs_no_input_to_poll)
{
    in_sleep(1, [] { put_good(1, 2); });
    stm_ringbuffer_readout(GetParam(), nullptr, output);
    EXPECT_TRUE(happened(joined({header(), idle(1), lines(2, 2), idle(4999), {TIMEOUT}})));
}

TEST_P(ShownFormat, does_not_ask_what_the_output_returns)
{
    output_result = -1;
    in_sleep(1, [] { put_good(1, 3); });
    read(GetParam());
    EXPECT_TRUE(happened(joined({header(), idle(1), lines(2, 3), idle(4999), {TIMEOUT}})));
}

TEST_P(ShownFormat, uses_nothing_of_the_link_but_the_ring_and_the_message)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    memset(stm_link.tx_short, 0x5B, sizeof(stm_link.tx_short));
    memset(stm_link.rx_short, 0xB5, sizeof(stm_link.rx_short));
    in_sleep(1, [] { put_good(1, 3); });
    const Bytes before = link_without_message();
    read(GetParam());
    EXPECT_EQ(link_without_message(), before);
}

TEST_F(RingReadout, shows_a_record_as_it_always_did)
{
    in_sleep(1, [] {
        put_good(1, 1);
        put({0x55, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x07, 0x00, 0x00, 0x00,
             0x07, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00,
             0xFB, 0xFF, 0xFF, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF,
             0xFB, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x03, 0x00, 0xFF, 0x09, 0xFA, 0x33});
    });
    read(TEXT);
    EXPECT_TRUE(happened(joined({idle(1),
                                 {say("stm_uint8_t  nr   : 17\n"
                                      "stm_uint16_t omega_t: 4882\n"
                                      "stm_int32_t  rel_t: 387323156\n\n"
                                      "stm_int32_t  U1e  : 7\n"
                                      "stm_int32_t  U2e  : 7\n"
                                      "stm_int32_t  U3e  : 7\n"
                                      "stm_int32_t  Uen  : 7\n\n"
                                      "stm_int32_t  I1   : -5\n"
                                      "stm_int32_t  I2   : -5\n"
                                      "stm_int32_t  I3   : -5\n"
                                      "stm_int32_t  -Ie  : -5\n\n"
                                      "stm_int16_t  BE1  : -2\n"
                                      "stm_int16_t  BE2  : 3\n"
                                      "stm_int8_t   BE   : 255\n"
                                      "stm_uint8    buffered  : 9\n"
                                      "stm_int8_t   checksum  : 13306\n\n",
                                      1)},
                                 idle(4999),
                                 {TIMEOUT}})));
}

TEST_P(SilentFormat, reads_everything_and_shows_nothing)
{
    in_sleep(1, [] { put_good(1, 5); });
    in_sleep(2, [this] { EXPECT_EQ(value(COUNT), 1); });
    read(GetParam());
    EXPECT_TRUE(happened(joined({idle(5000), {TIMEOUT}})));
    EXPECT_EQ(messages, Transcript({TIMEOUT}));
}

TEST_P(SilentFormat, reports_wrong_checksums_all_the_same)
{
    in_sleep(1, [] {
        put_good(1, 1);
        put(Bytes(48, 0x00));
    });
    read(GetParam());
    EXPECT_TRUE(happened(joined({idle(1),
                                 {say("Wrong checksum detected (crc = F740, checksum= 0)\n")},
                                 idle(4999),
                                 {TIMEOUT}})));
}

TEST_F(RingReadout, shows_a_record_without_a_number_as_text)
{
    in_sleep(1, [] { put_good(255, 257); });
    read(TEXT);
    EXPECT_TRUE(happened(joined({idle(1), text_lines(256, 257), idle(4999), {TIMEOUT}})));
}

TEST_F(RingReadout, has_no_csv_line_for_a_record_without_a_number)
{
    in_sleep(1, [] { put_good(255, 257); });
    read(CSV);
    EXPECT_TRUE(happened(joined({{HEADER}, idle(1), csv_lines(257, 257), idle(4999), {TIMEOUT}})));
}

TEST_F(RingReadout, leaves_the_csv_line_in_the_message_also_of_a_record_without_a_number)
{
    in_sleep(1, [] { put_good(255, 256); });
    in_sleep(2, [] { EXPECT_EQ(say(stm_link.message, 1), csv_line(256)); });
    read(CSV);
    EXPECT_EQ(messages, Transcript({HEADER, TIMEOUT}));
}

TEST_F(RingReadout, hands_header_and_csv_lines_out_of_the_message)
{
    in_sleep(1, [] { put_good(1, 3); });
    read(CSV);
    EXPECT_EQ(messages, Transcript({HEADER, csv_line(2), csv_line(3), TIMEOUT}));
}

TEST_F(RingReadout, leaves_the_message_alone_while_it_shows_text)
{
    in_sleep(1, [] { put_good(1, 3); });
    read(TEXT);
    EXPECT_EQ(messages,
              Transcript({say("the last report", 1), say("the last report", 1), TIMEOUT}));
}
