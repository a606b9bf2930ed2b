// Goal: ADC samples are shown piece by piece in exactly these texts, behind a header that follows
// whatever the message holds.
#include "link/link.hpp"
#include "tests/readout/adc_fixture.hpp"

#include <cstring>
#include <numeric>

using namespace stm;

namespace
{

class AdcText : public AdcReadout
{
};

class AdcCsv : public AdcReadout
{
};

class AdcHex : public AdcReadout
{
};

class AdcHeader : public AdcReadout
{
  protected:
    // The header's text where the message held so many characters before; all ends with it.
    std::string behind(size_t length)
    {
        forget();
        memset(stm_link.message, 'm', length);
        stm_link.message[length] = '\0';
        fail_exchange(1, EIO);
        read(READOUT_CSV);
        EXPECT_EQ(texts.size(), 1U);
        EXPECT_EQ(bytes_in(stm_link.tx_short)[1], 0x01) << "what lies behind the message is kept";
        return texts.empty() ? "" : texts[0];
    }
};

class OtherMode : public AdcReadout, public testing::WithParamInterface<int>
{
};

// The transcript of a frame of which these pieces are shown.
Transcript shown(const Transcript &pieces)
{
    return joined({requested(1), fetched(1203), pieces, synchronised()});
}

// 300 samples of which no two are alike: 1000, 999, 998 and so on.
std::vector<int32_t> falling_samples()
{
    std::vector<int32_t> samples(300);
    std::iota(samples.rbegin(), samples.rend(), 701);
    return samples;
}

std::string dumped(uint8_t byte)
{
    return "0x" + hex({byte}) + " ";
}

} // namespace

TEST_F(AdcText, first_piece_carries_number_and_first_sample_and_the_last_one_the_checksum)
{
    ready_with(adc_frame(5, {0, 1, -1, INT32_MAX, INT32_MIN}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(shown({
        R"(say 1 "stm_uint8_t  num   : 5\nstm_int32_t sample[0]  : 0\n")",
        R"(say 1 "stm_int32_t sample[1]  : 1\n")",
        R"(say 1 "stm_int32_t sample[2]  : -1\n")",
        R"(say 1 "stm_int32_t sample[3]  : 2147483647\n")",
        R"(say 1 "stm_int32_t sample[4]  : -2147483648\n")",
        R"(say 1 "stm_int8_t   checksum  : 0xC3AE\n\n")",
    })));
    EXPECT_STREQ(stm_link.message, "stm_int8_t   checksum  : 0xC3AE\n\n");
}

TEST_F(AdcText, of_no_samples_is_one_piece)
{
    ready_with(adc_frame(0, {11, 22}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(shown({
        R"(say 1 "stm_uint8_t  num   : 0\nstm_int8_t   checksum  : 0xDD5C\n\n")",
    })));
    EXPECT_STREQ(stm_link.message, "stm_uint8_t  num   : 0\nstm_int8_t   checksum  : 0xDD5C\n\n");
}

TEST_F(AdcText, of_one_sample_is_two_pieces)
{
    ready_with(adc_frame(1, {-7}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(shown({
        R"(say 1 "stm_uint8_t  num   : 1\nstm_int32_t sample[0]  : -7\n")",
        R"(say 1 "stm_int8_t   checksum  : 0xA89A\n\n")",
    })));
}

TEST_F(AdcText, of_255_samples_leaves_out_the_45_behind_them)
{
    ready_with(adc_frame(255, falling_samples()));
    read(READOUT_TEXT);
    Transcript pieces = {
        R"(say 1 "stm_uint8_t  num   : 255\nstm_int32_t sample[0]  : 1000\n")",
    };
    for (int i = 1; i < 255; ++i) {
        pieces.push_back(say("stm_int32_t sample[" + std::to_string(i) +
                                 "]  : " + std::to_string(1000 - i) + "\n",
                             1));
    }
    pieces.emplace_back(R"(say 1 "stm_int8_t   checksum  : 0x5BD0\n\n")");
    EXPECT_TRUE(happened(shown(pieces)));
}

TEST_F(AdcText, checksum_has_no_leading_zeros)
{
    std::vector<int32_t> samples(300);
    samples[0] = 100;
    samples[1] = -200;
    samples[299] = 0xA038;
    ready_with(adc_frame(2, samples, 0x000A));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(shown({
        R"(say 1 "stm_uint8_t  num   : 2\nstm_int32_t sample[0]  : 100\n")",
        R"(say 1 "stm_int32_t sample[1]  : -200\n")",
        R"(say 1 "stm_int8_t   checksum  : 0xA\n\n")",
    })));
}

TEST_F(AdcText, result_of_the_output_is_not_looked_at)
{
    output_result = -1;
    ready_with(adc_frame(1, {-7}));
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(shown({
        R"(say 1 "stm_uint8_t  num   : 1\nstm_int32_t sample[0]  : -7\n")",
        R"(say 1 "stm_int8_t   checksum  : 0xA89A\n\n")",
    })));
}

TEST_F(AdcHeader, stands_alone_behind_an_empty_message)
{
    stm_link.message[0] = '\0';
    ready_with(adc_frame(5, {0, 1, -1, INT32_MAX, INT32_MIN}));
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "\"value\";\n")"},
        shown({
            R"(say 1 "0;\n")",
            R"(say 1 "1;\n")",
            R"(say 1 "-1;\n")",
            R"(say 1 "2147483647;\n")",
            R"(say 1 "-2147483648;\n")",
            R"(say 1 "")",
        }),
    })));
    EXPECT_STREQ(stm_link.message, "");
}

TEST_F(AdcHeader, follows_the_text_of_an_earlier_report)
{
    ready_with(adc_frame(1, {-7}));
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "the last report\"value\";\n")"},
        shown({R"(say 1 "-7;\n")", R"(say 1 "")"}),
    })));
}

TEST_F(AdcHeader, stays_in_the_message)
{
    fail_exchange(1, EIO);
    read(READOUT_CSV);
    EXPECT_STREQ(stm_link.message, "the last report\"value\";\n");
}

TEST_F(AdcHeader, piles_up_where_nothing_else_is_shown)
{
    stm_link.message[0] = '\0';
    fail_exchange(1, EIO);
    fail_exchange(2, EIO);
    read(READOUT_CSV);
    read(READOUT_CSV);
    EXPECT_EQ(texts, Transcript({
                         R"(say 1 "\"value\";\n")",
                         R"(say 1 "\"value\";\n\"value\";\n")",
                     }));
}

TEST_F(AdcHeader, fits_whole_behind_up_to_245_characters)
{
    EXPECT_EQ(behind(244), say(std::string(244, 'm') + "\"value\";\n", 1));
    EXPECT_EQ(behind(245), say(std::string(245, 'm') + "\"value\";\n", 1));
}

TEST_F(AdcHeader, is_cut_at_the_254th_character)
{
    EXPECT_EQ(behind(246), say(std::string(246, 'm') + "\"value\";", 1));
    EXPECT_EQ(behind(247), say(std::string(247, 'm') + "\"value\"", 1));
    EXPECT_EQ(behind(252), say(std::string(252, 'm') + "\"v", 1));
    EXPECT_EQ(behind(253), say(std::string(253, 'm') + "\"", 1));
    EXPECT_EQ(behind(254), say(std::string(254, 'm'), 1));
}

TEST_F(AdcHeader, ends_a_message_that_has_no_end)
{
    memset(stm_link.message, 'm', sizeof(stm_link.message));
    fail_exchange(1, EIO);
    read(READOUT_CSV);
    EXPECT_EQ(texts, Transcript({say(std::string(254, 'm'), 1)}));
    EXPECT_EQ(stm_link.message[254], '\0');
}

TEST_F(AdcCsv, of_no_samples_is_the_header_and_an_empty_piece)
{
    ready_with(adc_frame(0, {11, 22}));
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "the last report\"value\";\n")"},
        shown({R"(say 1 "")"}),
    })));
    EXPECT_STREQ(stm_link.message, "");
}

TEST_F(AdcCsv, of_255_samples_leaves_out_the_45_behind_them)
{
    ready_with(adc_frame(255, falling_samples()));
    read(READOUT_CSV);
    Transcript pieces;
    for (int i = 0; i < 255; ++i) {
        pieces.push_back(say(std::to_string(1000 - i) + ";\n", 1));
    }
    pieces.emplace_back(R"(say 1 "")");
    EXPECT_TRUE(happened(joined({{R"(say 1 "the last report\"value\";\n")"}, shown(pieces)})));
}

TEST_F(AdcCsv, header_is_gone_from_the_samples_after_a_timeout_too)
{
    late_with(1203, adc_frame(1, {-7}));
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({
        {R"(say 1 "the last report\"value\";\n")"},
        requested(301),
        timed_out(),
        fetched(1203),
        {R"(say 1 "-7;\n")", R"(say 1 "")"},
        synchronised(),
    })));
}

TEST_F(AdcHex, is_a_heading_with_the_first_byte_then_a_piece_for_each_byte_and_a_newline)
{
    // Every value of a byte occurs in these samples.
    std::vector<int32_t> samples;
    for (uint32_t i = 0; i < 300; ++i) {
        samples.push_back(static_cast<int32_t>(i * 0x01030507));
    }
    const Bytes frame = adc_frame(2, samples);
    ready_with(frame);
    read(READOUT_HEX);
    Transcript pieces = {R"(say 1 "Received value: \n0x02 ")"};
    for (size_t i = 1; i < 1203; ++i) {
        pieces.push_back(say(dumped(frame[i]), 1));
    }
    pieces.emplace_back(R"(say 1 "\n")");
    EXPECT_TRUE(happened(shown(pieces)));
    EXPECT_STREQ(stm_link.message, "\n");
}

TEST_F(AdcHex, has_1203_bytes_of_a_frame_without_samples_too)
{
    ready_with(adc_frame(0, {}));
    read(READOUT_HEX);
    EXPECT_TRUE(happened(shown(joined({
        {R"(say 1 "Received value: \n0x00 ")"},
        times(1200, {R"(say 1 "0x00 ")"}),
        {R"(say 1 "0x0D ")", R"(say 1 "0x0D ")", R"(say 1 "\n")"},
    }))));
}

TEST_F(AdcHex, has_1203_bytes_whatever_length_was_announced)
{
    announce(4096, chained({adc_frame(0, {}), bytes_of(2893, 0x77)}));
    read(READOUT_HEX);
    EXPECT_EQ(texts.size(), 1204U);
    EXPECT_EQ(texts.back(), R"(say 1 "\n")");
}

TEST_P(OtherMode, shows_nothing_but_checks_and_synchronises)
{
    ready_with(adc_frame(2, {100, -200}));
    read(GetParam());
    EXPECT_TRUE(happened(shown({})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

INSTANTIATE_TEST_SUITE_P(Each, OtherMode,
                         testing::Values(0, 4, 5, -1, 255, 257, 258, 259, INT32_MAX, INT32_MIN));
