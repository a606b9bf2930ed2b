// Goal: a frame of ADC samples is requested, awaited, measured, fetched and checked with exactly
// these exchanges, and what goes wrong at each of them ends the read-out there.
#include "link/link.hpp"
#include "tests/readout/adc_fixture.hpp"

#include <cerrno>

using namespace stm;

namespace
{

constexpr char REFUSED[] = R"(perror "SPI datatransfer" EMSGSIZE)";

class AdcSamples : public AdcReadout
{
};

class OtherLine : public AdcReadout, public testing::WithParamInterface<const char *>
{
};

class FrameLength : public AdcReadout, public testing::WithParamInterface<uint16_t>
{
};

class RefusedLength : public AdcReadout, public testing::WithParamInterface<uint16_t>
{
};

// The transcript of a frame that is ready in this poll, of which nothing is shown.
Transcript unshown(int polls, size_t length)
{
    return joined({requested(polls), fetched(length), synchronised()});
}

} // namespace

TEST_F(AdcSamples, are_requested_awaited_measured_fetched_and_followed_by_a_synchronisation)
{
    ready_with(adc_frame(2, {100, -200}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened({
        "short exchange 8: C4 01 02 03 04 05 06 AA",
        "exchange 1: 44",
        "poll",
        "exchange 2: 00 00",
        "exchange 1203: 66*1203",
        "exchange 4096: 66*4096",
    }));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(AdcSamples, request_changes_only_its_first_and_its_eighth_byte)
{
    ready_with(adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_EQ(bytes_in(stm_link.tx_short), Bytes({0xC4, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0xAA,
                                                  0xE8, 0xE9, 0xEA, 0xEB, 0xEC}));
    EXPECT_EQ(bytes_in(stm_link.rx_short), chained({bytes_of(8, 0x55), {0x00, 0x00}}));
}

TEST_F(AdcSamples, readiness_that_comes_in_with_the_request_is_none)
{
    ready_in_poll(2, 1203, adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(2, 1203)));
}

TEST_F(AdcSamples, buffers_are_zeroed_behind_the_request)
{
    int exchanges = 0;
    watch = [&exchanges](const spi_ioc_transfer &) {
        ++exchanges;
        if (exchanges == 1) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x5A));
            EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x55));
        } else if (exchanges == 2) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x44}, bytes_of(4095, 0x00)}));
            EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x00));
        } else if (exchanges == 4) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
        }
    };
    ready_with(adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_EQ(exchanges, 5);
}

TEST_F(AdcSamples, no_status_but_0x55_is_readiness)
{
    answer(2, {0x54});
    answer(3, {0x44});
    answer(4, {0xF0});
    answer(5, {0xFF});
    ready_in_poll(5, 1203, adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(5, 1203)));
}

TEST_F(AdcSamples, readiness_in_the_300th_poll_is_in_time)
{
    ready_in_poll(300, 1203, adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(300, 1203)));
    EXPECT_EQ(slept_us, 0U);
}

TEST_F(AdcSamples, readiness_in_the_301st_poll_is_a_timeout_and_the_frame_is_fetched_all_the_same)
{
    late_with(1203, adc_frame(0, {}), 0x55);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(joined({requested(301), timed_out(), fetched(1203), synchronised()})));
}

TEST_F(AdcSamples, readiness_that_never_comes_is_waited_for_once_and_half_a_second)
{
    late_with(1203, adc_frame(1, {-7}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(301),
        {R"(say 0 "SPI timeout\n")", "sleep 500000"},
        fetched(1203),
        {
            R"(say 1 "stm_uint8_t  num   : 1\nstm_int32_t sample[0]  : -7\n")",
            R"(say 1 "stm_int8_t   checksum  : 0xA89A\n\n")",
        },
        synchronised(),
    })));
    EXPECT_EQ(slept_us, 500'000U);
}

TEST_F(AdcSamples, buffers_are_not_zeroed_again_after_a_timeout)
{
    int exchanges = 0;
    watch = [&exchanges](const spi_ioc_transfer &) {
        if (++exchanges == 303) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x00));
            EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({{0x77}, bytes_of(4095, 0x00)}));
        }
    };
    late_with(1203, adc_frame(0, {}), 0x77);
    read(NOTHING_SHOWN);
    EXPECT_EQ(exchanges, 305);
}

TEST_F(AdcSamples, silent_line_ends_in_a_timeout_and_a_frame_of_zeros)
{
    bytes_come_back = false;
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(301),
        timed_out(),
        fetched(0),
        {R"(say 0 "Wrong checksum detected (expected: 0, received: D0D\n")"},
    })));
}

TEST_F(AdcSamples, line_that_nobody_drives_ends_in_a_timeout_and_a_refused_length)
{
    answer_always(bytes_of(4096, 0xFF));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(301), timed_out(), {"exchange 2: 00 00", REFUSED}})));
}

TEST_F(AdcSamples, stop_line_in_the_first_poll_ends_the_read_out)
{
    ready_with(adc_frame(2, {100, -200}));
    type_line(1, "s\n");
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(requested(1)));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(AdcSamples, stop_line_in_the_301st_poll_is_no_timeout)
{
    late_with(1203, adc_frame(0, {}));
    type_line(301, "s\n");
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(requested(301)));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(AdcSamples, stop_line_with_result_0_has_not_been_typed)
{
    type_line(1, "s\n", 0);
    ready_in_poll(2, 1203, adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(2, 1203)));
}

TEST_P(OtherLine, does_not_stop_the_read_out)
{
    type_line(1, GetParam());
    ready_in_poll(2, 1203, adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(2, 1203)));
}

INSTANTIATE_TEST_SUITE_P(Each, OtherLine,
                         testing::Values("s", "S\n", "s\nx", "", "\n", " s\n", "stop\n"));

TEST_F(AdcSamples, length_comes_low_byte_first)
{
    ready_with(adc_frame(0, {}));
    answer(3, {0xB3, 0x04});
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(1, 1203)));
}

TEST_P(FrameLength, decides_what_is_fetched_and_not_what_is_checked)
{
    announce(GetParam(),
             chained({adc_frame(2, {100, -200, 0x4E9F}, 0xD40D), bytes_of(2893, 0x77)}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(1),
        fetched(GetParam()),
        {
            R"(say 1 "stm_uint8_t  num   : 2\nstm_int32_t sample[0]  : 100\n")",
            R"(say 1 "stm_int32_t sample[1]  : -200\n")",
            R"(say 1 "stm_int8_t   checksum  : 0xD40D\n\n")",
        },
        synchronised(),
    })));
}

INSTANTIATE_TEST_SUITE_P(Whole, FrameLength, testing::Values(1203, 1204, 4095, 4096));

// The buffer was zeroed: a high checksum byte of zero need not come.
TEST_F(AdcSamples, frame_without_its_last_byte_is_whole_if_that_is_zero)
{
    std::vector<int32_t> samples(300);
    samples[0] = 100;
    samples[1] = -200;
    samples[299] = 0x4E9F;
    announce(1202, adc_frame(2, samples, 0x0061));
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "the last report\"value\";\n")"},
        requested(1),
        fetched(1202),
        {R"(say 1 "100;\n")", R"(say 1 "-200;\n")", R"(say 1 "")"},
        synchronised(),
    })));
}

TEST_F(AdcSamples, frame_of_three_bytes_is_whole_if_zeros_make_it_so)
{
    ready_with({0x01, 0x7D, 0x29});
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(1),
        fetched(3),
        {
            R"(say 1 "stm_uint8_t  num   : 1\nstm_int32_t sample[0]  : 10621\n")",
            R"(say 1 "stm_int8_t   checksum  : 0x0\n\n")",
        },
        synchronised(),
    })));
}

TEST_F(AdcSamples, frame_of_no_bytes_is_fetched_and_checked)
{
    announce(0, adc_frame(2, {100, -200}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(1),
        {
            "exchange 2: 00 00",
            "exchange 0:",
            R"(say 0 "Wrong checksum detected (expected: 0, received: D0D\n")",
        },
    })));
}

TEST_F(AdcSamples, frame_of_one_byte_is_checked_as_a_number_of_samples_with_zeros_behind_it)
{
    announce(1, adc_frame(2, {100, -200}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(1),
        {
            "exchange 2: 00 00",
            "exchange 1: 66",
            R"(say 0 "Wrong checksum detected (expected: 0, received: 5493\n")",
        },
    })));
}

TEST_P(RefusedLength, is_fetched_no_more)
{
    announce(GetParam(), adc_frame(2, {100, -200}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(1), {"exchange 2: 00 00", REFUSED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

// 45828 is 1203 with its bytes the other way round.
INSTANTIATE_TEST_SUITE_P(TooLong, RefusedLength, testing::Values(4097, 32768, 45828, 65535));
