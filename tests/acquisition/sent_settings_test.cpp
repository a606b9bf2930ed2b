// Goal: what a setting sends for chosen arguments, and what several settings leave behind each
// other.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

using SentSetting = Acquisition;

TEST_F(SentSetting, channels_between_the_ends_go_out_as_themselves)
{
    for (uint8_t channel = 0; channel < 8; ++channel) {
        begin_again();
        ready_with(0);
        EXPECT_EQ(stm_set_adc_u32(channel, 0xFEDCBA98, poll, output), 0);
        EXPECT_TRUE(happened(transaction(0x9B, {channel, 0x98, 0xBA, 0xDC, 0xFE, 0})));
    }
}

TEST_F(SentSetting, channel_263_is_sent_as_channel_7)
{
    ready_with(1);
    EXPECT_EQ(stm_set_adc_value(263, 12.345F, poll, output), 1);
    EXPECT_TRUE(happened(transaction(0xC2, {7, 0xD2, 0x04})));
}

TEST_F(SentSetting, channel_257_is_sent_as_channel_1)
{
    ready_with(1);
    EXPECT_EQ(stm_set_adc2_value_pair(257, 700.0F, 12.345F, poll, output), 1);
    EXPECT_TRUE(happened(transaction(0xC6, {1, 0x70, 0x11, 0xD2, 0x04})));
}

TEST_F(SentSetting, skip_and_time_travel_low_byte_first)
{
    ready_with(0);
    ready_with(0);
    EXPECT_EQ(stm_set_adc_sampleskip(0x1234, poll, output), 0);
    EXPECT_EQ(stm_set_adc_sampletime(0x5678, poll, output), 0);
    EXPECT_TRUE(
        happened(joined({transaction(0x52, {0x34, 0x12}), transaction(0x51, {0x78, 0x56})})));
}

TEST_F(SentSetting, of_a_scaled_value_only_the_low_16_bits_go_out)
{
    ready_with(0);
    ready_with(0);
    EXPECT_EQ(stm_set_adc_value(7, 700.0F, poll, output), 0);
    EXPECT_EQ(stm_set_adc2_value(1, 1e20F, poll, output), 0);
    EXPECT_TRUE(happened(joined({transaction(0xC2, {7, 0x70, 0x11, 0, 0, 0}),
                                 transaction(0xC5, {1, 0xFF, 0xFF, 0, 0, 0})})));
}

TEST_F(SentSetting, scaled_values_are_never_refused)
{
    ready_with(0);
    ready_with(0);
    EXPECT_EQ(stm_set_adc_value(3, -5.0F, poll, output), 0);
    EXPECT_EQ(stm_set_adc_value_pair(3, 1.999F, 1e20F, poll, output), 0);
    EXPECT_TRUE(happened(
        joined({transaction(0xC2, {3, 0, 0}), transaction(0xC3, {3, 199, 0, 0xFF, 0xFF})})));
}

TEST_F(SentSetting, timeout_and_refusal_take_their_turns_in_the_message)
{
    EXPECT_EQ(stm_set_interpolation_mode(2, poll, output), 0);
    EXPECT_EQ(stm_set_interpolation_mode(4, poll, output), 0);
    EXPECT_TRUE(happened(
        joined({timed_out_transaction(0x53, {2}), {R"(say 0 "Wrong interpolation mode (4)\n")"}})));
    EXPECT_STREQ(stm_link.message, "Wrong interpolation mode (4)\n");
}
