// Goal: every setting tests its argument as it always did, oddly or not, and sends exactly its six
// parameter bytes; what is refused is told through the message buffer and never sent.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <array>
#include <cerrno>
#include <climits>

namespace
{

constexpr float FIRST = 12.345F;      // 1234 = 0x04D2 hundredths
constexpr float SECOND = 700.0F;      // 70000, of which 4464 = 0x1170 go out
constexpr uint32_t LONG = 0x12345678; // no two bytes alike
constexpr uint16_t SHORT = 0xBEEF;

using Params = std::array<uint8_t, 6>;
using Argument = int; // a channel, mode, skip or time

struct Setting {
    const char *name;
    uint8_t code;
    Argument least;
    Params at_least;
    Argument most;
    Params at_most;
    const char *refusal; // the number and ")\n" come behind it
    int32_t (*set)(Argument, StmPollFn, StmOutputFn);
};

template <auto OPERATION, auto... VALUES>
int32_t set(Argument argument, StmPollFn poll, StmOutputFn output)
{
    return OPERATION(argument, VALUES..., poll, output);
}

template <auto OPERATION>
int32_t set_first(Argument channel, StmPollFn poll, StmOutputFn output)
{
    return OPERATION(channel, FIRST, poll, output);
}

template <auto OPERATION>
int32_t set_both(Argument channel, StmPollFn poll, StmOutputFn output)
{
    return OPERATION(channel, FIRST, SECOND, poll, output);
}

// clang-format off
constexpr Setting BYTE_TESTED[] = {
    {"adc2_value", 0xC5, 0, {0, 0xD2, 0x04, 0, 0, 0}, 1, {1, 0xD2, 0x04, 0, 0, 0},
     "Wrong ADC channel (", set_first<stm_set_adc2_value>},
    {"adc_value", 0xC2, 0, {0, 0xD2, 0x04, 0, 0, 0}, 7, {7, 0xD2, 0x04, 0, 0, 0},
     "Wrong ADC channel (", set_first<stm_set_adc_value>},
    {"adc2_value_pair", 0xC6, 0, {0, 0xD2, 0x04, 0x70, 0x11, 0}, 1, {1, 0xD2, 0x04, 0x70, 0x11, 0},
     "Wrong ADC channel (", set_both<stm_set_adc2_value_pair>},
    {"adc_value_pair", 0xC3, 0, {0, 0xD2, 0x04, 0x70, 0x11, 0}, 7, {7, 0xD2, 0x04, 0x70, 0x11, 0},
     "Wrong ADC channel (", set_both<stm_set_adc_value_pair>},
};

constexpr Setting WHOLE_TESTED[] = {
    {"be_u32", 0x9C, 0, {0, 0x78, 0x56, 0x34, 0x12, 0}, 1, {1, 0x78, 0x56, 0x34, 0x12, 0},
     "Wrong BE channel (", set<stm_set_be_u32, LONG>},
    {"adc_u32", 0x9B, 0, {0, 0x78, 0x56, 0x34, 0x12, 0}, 7, {7, 0x78, 0x56, 0x34, 0x12, 0},
     "Wrong ADC channel (", set<stm_set_adc_u32, LONG>},
    {"be_word_97", 0x97, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong BE channel (", set<stm_set_be_word_97, SHORT>},
    {"be_word_98", 0x98, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong BE channel (", set<stm_set_be_word_98, SHORT>},
    {"adc_word_54", 0x54, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 7, {7, 0xEF, 0xBE, 0, 0, 0},
     "Wrong ADC channel (", set<stm_set_adc_word_54, SHORT>},
    {"adc_word_55", 0x55, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 7, {7, 0xEF, 0xBE, 0, 0, 0},
     "Wrong ADC channel (", set<stm_set_adc_word_55, SHORT>},
    {"channel_word_56", 0x56, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong channel (", set<stm_set_channel_word_56, SHORT>},
    {"channel_word_57", 0x57, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong channel (", set<stm_set_channel_word_57, SHORT>},
    {"channel_word_58", 0x58, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong channel (", set<stm_set_channel_word_58, SHORT>},
    {"channel_word_59", 0x59, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong channel (", set<stm_set_channel_word_59, SHORT>},
    {"channel_word_5A", 0x5A, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong channel (", set<stm_set_channel_word_5A, SHORT>},
    {"channel_word_5B", 0x5B, 0, {0, 0xEF, 0xBE, 0, 0, 0}, 1, {1, 0xEF, 0xBE, 0, 0, 0},
     "Wrong channel (", set<stm_set_channel_word_5B, SHORT>},
    {"interpolation_mode", 0x53, 0, {0, 0, 0, 0, 0, 0}, 3, {3, 0, 0, 0, 0, 0},
     "Wrong interpolation mode (", set<stm_set_interpolation_mode>},
    {"adc_sampleskip", 0x52, 3, {3, 0, 0, 0, 0, 0}, 32000, {0x00, 0x7D, 0, 0, 0, 0},
     "Wrong ADC sampleskip (", set<stm_set_adc_sampleskip>},
};

constexpr Setting WORD_TESTED[] = {
    {"adc_sampletime", 0x51, 0, {0, 0, 0, 0, 0, 0}, 32000, {0x00, 0x7D, 0, 0, 0, 0},
     "Wrong ADC sampletime (", set<stm_set_adc_sampletime>},
};
// clang-format on

class EverySetting : public Acquisition, public testing::WithParamInterface<Setting>
{
  protected:
    static int32_t set_to(Argument argument) { return GetParam().set(argument, poll, output); }

    // In a dialogue of its own the argument goes out in these bytes.
    void expect_sent(Argument argument, const Params &params)
    {
        begin_again();
        ready_with(4660);
        EXPECT_EQ(set_to(argument), 4660);
        EXPECT_TRUE(happened(transaction(GetParam().code, Bytes(params.begin(), params.end()))))
            << argument;
        EXPECT_TRUE(message_is_untouched());
    }

    // In a dialogue of its own the argument is told as wrong, and nothing else happens.
    void expect_refused(Argument argument)
    {
        begin_again();
        output_result = argument ^ 0x1234;
        const std::string text = GetParam().refusal + std::to_string(argument) + ")\n";
        EXPECT_EQ(set_to(argument), argument ^ 0x1234);
        EXPECT_TRUE(happened({say(text, 0)}));
        EXPECT_EQ(messages, Transcript({say(text, 0)}));
        EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, STALE_TX));
        EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, STALE_RX));
    }

    static Bytes params_at_most()
    {
        return Bytes(GetParam().at_most.begin(), GetParam().at_most.end());
    }
};

class ByteTestedSetting : public EverySetting
{
};

class WholeTestedSetting : public EverySetting
{
};

class SampleTime : public EverySetting
{
};

std::string name_of(const testing::TestParamInfo<Setting> &info)
{
    return info.param.name;
}

} // namespace

TEST_P(EverySetting, sends_its_least_argument)
{
    expect_sent(GetParam().least, GetParam().at_least);
}

TEST_P(EverySetting, sends_its_largest_argument)
{
    expect_sent(GetParam().most, GetParam().at_most);
}

TEST_P(EverySetting, refuses_what_lies_one_beyond_either_end)
{
    expect_refused(GetParam().least - 1);
    expect_refused(GetParam().most + 1);
}

TEST_P(EverySetting, refuses_the_largest_number)
{
    expect_refused(INT_MAX);
}

TEST_P(EverySetting, refuses_minus_one)
{
    expect_refused(-1);
}

TEST_P(EverySetting, refusal_returns_what_the_output_returns)
{
    for (const int result : {0, -1, 65535, INT_MIN}) {
        output_result = result;
        EXPECT_EQ(set_to(GetParam().most + 1), result);
    }
}

TEST_P(EverySetting, returns_the_answer_unchanged)
{
    for (const uint16_t answer : std::initializer_list<uint16_t>{0, 1, 255, 4660, 32768, 65535}) {
        begin_again();
        output_result = -77;
        ready_with(answer);
        EXPECT_EQ(set_to(GetParam().most), answer);
        EXPECT_TRUE(happened(transaction(GetParam().code, params_at_most())));
    }
}

TEST_P(EverySetting, returns_0_when_the_operator_stops_it)
{
    ready_with(4660);
    type_line(1, "s\n");
    EXPECT_EQ(set_to(GetParam().most), 0);
    EXPECT_TRUE(happened(stopped_transaction(GetParam().code, params_at_most())));
}

TEST_P(EverySetting, is_not_tried_again_after_a_failing_exchange)
{
    for (const int failing : {1, 2, 3}) {
        begin_again();
        ready_with(4660);
        fail_exchange(failing, EIO);
        EXPECT_EQ(set_to(GetParam().most), -1);
        EXPECT_TRUE(happened(failed_transaction(failing, GetParam().code, params_at_most())));
        EXPECT_TRUE(message_is_untouched());
    }
}

TEST_P(EverySetting, tells_a_timeout_once_and_returns_the_answer_all_the_same)
{
    answer(3003, {0x34, 0x12});
    output_result = -77;
    EXPECT_EQ(set_to(GetParam().most), 4660);
    EXPECT_TRUE(happened(timed_out_transaction(GetParam().code, params_at_most())));
    EXPECT_EQ(messages, texts);
}

INSTANTIATE_TEST_SUITE_P(ByteTested, EverySetting, testing::ValuesIn(BYTE_TESTED), name_of);
INSTANTIATE_TEST_SUITE_P(WholeTested, EverySetting, testing::ValuesIn(WHOLE_TESTED), name_of);
INSTANTIATE_TEST_SUITE_P(WordTested, EverySetting, testing::ValuesIn(WORD_TESTED), name_of);

TEST_P(ByteTestedSetting, looks_at_the_low_8_bits_alone)
{
    expect_sent(256, GetParam().at_least);
    expect_sent(-256, GetParam().at_least);
    expect_sent(65536, GetParam().at_least);
    expect_sent(INT_MIN, GetParam().at_least);
    expect_sent(256 + GetParam().most, GetParam().at_most);
    expect_sent(INT_MIN + GetParam().most, GetParam().at_most);
}

TEST_P(ByteTestedSetting, tells_the_whole_of_what_its_low_8_bits_refuse)
{
    expect_refused(128);
    expect_refused(255);
    expect_refused(264);
    expect_refused(256 + GetParam().most + 1);
    expect_refused(511);
    expect_refused(-248);
    expect_refused(INT_MIN + 8);
}

INSTANTIATE_TEST_SUITE_P(Each, ByteTestedSetting, testing::ValuesIn(BYTE_TESTED), name_of);

TEST_P(WholeTestedSetting, refuses_what_is_in_range_by_its_low_bits_alone)
{
    expect_refused(65536 + GetParam().least);
    expect_refused(65536 + GetParam().most);
    expect_refused(-65536 + GetParam().most);
    expect_refused(INT_MIN);
    expect_refused(INT_MIN + GetParam().most);
}

TEST_P(WholeTestedSetting, refuses_256_where_it_is_no_skip)
{
    if (GetParam().most < 256) {
        expect_refused(256);
        expect_refused(256 + GetParam().most);
        expect_refused(-256);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, WholeTestedSetting, testing::ValuesIn(WHOLE_TESTED), name_of);

TEST_P(SampleTime, looks_at_the_low_16_bits_alone)
{
    expect_sent(65536, {0, 0, 0, 0, 0, 0});
    expect_sent(65536 + 100, {100, 0, 0, 0, 0, 0});
    expect_sent(65536 + 32000, {0x00, 0x7D, 0, 0, 0, 0});
    expect_sent(-65536, {0, 0, 0, 0, 0, 0});
    expect_sent(-65536 + 0x1234, {0x34, 0x12, 0, 0, 0, 0});
    expect_sent(INT_MIN, {0, 0, 0, 0, 0, 0});
}

TEST_P(SampleTime, tells_the_whole_of_what_its_low_16_bits_refuse)
{
    expect_refused(32768);
    expect_refused(65535);
    expect_refused(65536 + 32001);
    expect_refused(-65536 + 32001);
    expect_refused(-32768);
}

INSTANTIATE_TEST_SUITE_P(Each, SampleTime, testing::ValuesIn(WORD_TESTED), name_of);
