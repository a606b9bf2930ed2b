// Goal: a failing exchange or a wrong checksum ends the read-out of ADC samples where it happens,
// in its own words and without the synchronisation.
#include "link/link.hpp"
#include "tests/readout/adc_fixture.hpp"

#include <cerrno>

using namespace stm;

namespace
{

constexpr char FAILED[] = R"(perror "SPI datatransfer" EIO)";

class FailingAdcSamples : public AdcReadout
{
};

class WrongChecksum : public AdcReadout
{
};

class DamagedByte : public AdcReadout, public testing::WithParamInterface<size_t>
{
};

class Mode : public AdcReadout, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_F(FailingAdcSamples, at_the_request_polls_nothing_and_clears_nothing)
{
    fail_exchange(1, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(0), {FAILED}})));
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x5A));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x55));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingAdcSamples, at_the_request_has_shown_the_header)
{
    fail_exchange(1, ESHUTDOWN);
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "the last report\"value\";\n")"},
        requested(0),
        {R"(perror "SPI datatransfer" ESHUTDOWN)"},
    })));
}

TEST_F(FailingAdcSamples, at_the_first_poll_ends_before_the_input_is_polled)
{
    fail_exchange(2, EIO);
    type_line(1, "s\n");
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(0), {"exchange 1: 44", FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingAdcSamples, at_a_later_poll_measures_and_fetches_nothing)
{
    fail_exchange(4, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(2), {"exchange 1: 44", FAILED}})));
}

TEST_F(FailingAdcSamples, at_the_301st_poll_is_no_timeout)
{
    fail_exchange(302, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(300), {"exchange 1: 44", FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingAdcSamples, at_the_length_fetches_nothing)
{
    answer(2, {0x55});
    fail_exchange(3, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(1), {"exchange 2: 00 00", FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingAdcSamples, at_the_length_after_a_timeout_tells_both)
{
    fail_exchange(303, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(301), timed_out(), {"exchange 2: 00 00", FAILED}})));
    EXPECT_STREQ(stm_link.message, "SPI timeout\n");
}

TEST_F(FailingAdcSamples, at_the_frame_shows_nothing)
{
    ready_with(adc_frame(2, {100, -200}));
    fail_exchange(4, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({requested(1), fetched(1203), {FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingAdcSamples, at_the_synchronisation_has_shown_all_and_says_so_in_other_words)
{
    ready_with(adc_frame(2, {100, -200}));
    fail_exchange(5, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(1),
        fetched(1203),
        {
            R"(say 1 "stm_uint8_t  num   : 2\nstm_int32_t sample[0]  : 100\n")",
            R"(say 1 "stm_int32_t sample[1]  : -200\n")",
            R"(say 1 "stm_int8_t   checksum  : 0x14BC\n\n")",
        },
        synchronised(),
        {R"(perror "Error: stm_com_funcs: SPI datatransfer\n" EIO)"},
    })));
}

TEST_F(FailingAdcSamples, exchange_that_returns_0_has_not_failed)
{
    exchange_result = 0;
    ready_with(adc_frame(0, {}));
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(joined({requested(1), fetched(1203), synchronised()})));
}

// The stored one is called expected, the computed one received; no bracket closes.
TEST_F(WrongChecksum, is_told_as_expected_before_the_computed_one_as_received)
{
    std::vector<int32_t> samples(300);
    samples[0] = 100;
    samples[1] = -200;
    samples[299] = 0xC2FA;
    ready_with(adc_frame(2, samples, 0x1234));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        requested(1),
        fetched(1203),
        {R"(say 0 "Wrong checksum detected (expected: 1234, received: ABCD\n")"},
    })));
    EXPECT_STREQ(stm_link.message, "Wrong checksum detected (expected: 1234, received: ABCD\n");
}

TEST_F(WrongChecksum, is_told_in_upper_case_and_without_leading_zeros)
{
    std::vector<int32_t> samples(300);
    samples[0] = 100;
    samples[1] = -200;
    samples[299] = 0xA038;
    ready_with(adc_frame(2, samples, 0xFEDC));
    read(NOTHING_SHOWN);
    EXPECT_EQ(texts, Transcript({
                         R"(say 0 "Wrong checksum detected (expected: FEDC, received: A\n")",
                     }));
}

TEST_F(WrongChecksum, is_one_whose_bytes_are_swapped)
{
    ready_with(adc_frame(2, {100, -200}, 0xBC14));
    read(NOTHING_SHOWN);
    EXPECT_EQ(texts, Transcript({
                         R"(say 0 "Wrong checksum detected (expected: BC14, received: 14BC\n")",
                     }));
}

TEST_F(WrongChecksum, after_a_timeout_is_told_too)
{
    late_with(1203, adc_frame(2, {100, -200}, 0xA5));
    read(READOUT_HEX);
    EXPECT_TRUE(happened(joined({
        requested(301),
        timed_out(),
        fetched(1203),
        {R"(say 0 "Wrong checksum detected (expected: A5, received: 14BC\n")"},
    })));
}

TEST_P(DamagedByte, is_noticed_wherever_it_stands)
{
    Bytes frame = adc_frame(2, {100, -200});
    frame[GetParam()] ^= 0x10;
    ready_with(frame);
    read(READOUT_TEXT);
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].substr(0, 30), R"(say 0 "Wrong checksum detected)");
    EXPECT_TRUE(happened(joined({requested(1), fetched(1203), texts})));
}

// Number of samples, shown samples, others that nobody shows, checksum.
INSTANTIATE_TEST_SUITE_P(Each, DamagedByte,
                         testing::Values(0, 1, 8, 9, 600, 1197, 1200, 1201, 1202));

TEST_P(Mode, shows_nothing_of_a_damaged_frame)
{
    ready_with(adc_frame(2, {100, -200}, 0x14BD));
    read(GetParam());
    EXPECT_TRUE(happened(joined({
        requested(1),
        fetched(1203),
        {R"(say 0 "Wrong checksum detected (expected: 14BD, received: 14BC\n")"},
    })));
}

INSTANTIATE_TEST_SUITE_P(Each, Mode, testing::Values(READOUT_HEX, READOUT_TEXT, 0, 4));

TEST_F(WrongChecksum, comes_after_the_header_and_replaces_it_in_the_message)
{
    ready_with(adc_frame(2, {100, -200}, 0x14BD));
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "the last report\"value\";\n")"},
        requested(1),
        fetched(1203),
        {R"(say 0 "Wrong checksum detected (expected: 14BD, received: 14BC\n")"},
    })));
}
