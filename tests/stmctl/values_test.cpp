// stmctl get, set and list: what was requested is sent, within the ranges, and every answer is
// shown.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class Values : public StmctlBench
{
  protected:
    std::string settings() const { return read_text("board/settings"); }

    void expect_refused(const Words &words, const std::string &sentence)
    {
        expect_failure(stmctl(words), 2, sentence);
        EXPECT_TRUE(transcript().empty()) << "the device is not touched";
    }
};

TEST_F(Values, are_set_and_shown_with_the_answer)
{
    EXPECT_EQ(says({"set", "sampletime", "100"}), "sampletime = 100 (answer 1)\n");
    EXPECT_EQ(says({"set", "adc-word-54", "7", "65535"}), "adc-word-54 7 = 65535 (answer 1)\n");
    EXPECT_EQ(says({"set", "adc-value-pair", "3", "12.5", "0.25"}),
              "adc-value-pair 3 = 12.50 0.25 (answer 1)\n");
    EXPECT_EQ(says({"set", "interpolation", "3"}, {"--answer", "0x53=513"}),
              "interpolation = 3 (answer 513)\n");
    EXPECT_EQ(settings(), "0x51 = 100\n0x53 = 3\n0x54/7 = 65535\n0xC3/3 = 1250 25\n");
}

struct Row {
    const char *name;
    const char *channel; // the last; null if there is none
    const char *values;
    const char *setting; // as the board keeps it
};

class Setting : public Values, public testing::WithParamInterface<Row>
{
};

TEST_P(Setting, reaches_the_board_under_its_code)
{
    Words words = {"set", GetParam().name};
    if (GetParam().channel != nullptr) {
        words.emplace_back(GetParam().channel);
    }
    std::istringstream values(GetParam().values);
    for (std::string value; values >> value;) {
        words.push_back(value);
    }
    EXPECT_EQ(stmctl(words).status, 0);
    EXPECT_EQ(settings(), std::string(GetParam().setting) + "\n");
}

INSTANTIATE_TEST_SUITE_P(All, Setting,
                         testing::Values(Row{"sampletime", nullptr, "32000", "0x51 = 32000"},
                                         Row{"sampleskip", nullptr, "3", "0x52 = 3"},
                                         Row{"interpolation", nullptr, "2", "0x53 = 2"},
                                         Row{"adc-word-54", "7", "0xFFFF", "0x54/7 = 65535"},
                                         Row{"adc-word-55", "7", "1", "0x55/7 = 1"},
                                         Row{"channel-word-56", "1", "2", "0x56/1 = 2"},
                                         Row{"channel-word-57", "1", "3", "0x57/1 = 3"},
                                         Row{"channel-word-58", "1", "4", "0x58/1 = 4"},
                                         Row{"channel-word-59", "1", "5", "0x59/1 = 5"},
                                         Row{"channel-word-5a", "1", "6", "0x5A/1 = 6"},
                                         Row{"channel-word-5b", "1", "7", "0x5B/1 = 7"},
                                         Row{"be-word-97", "1", "8", "0x97/1 = 8"},
                                         Row{"be-word-98", "1", "9", "0x98/1 = 9"},
                                         Row{"adc-long", "7", "4294967295", "0x9B/7 = 4294967295"},
                                         Row{"be-long", "1", "0x12345678", "0x9C/1 = 305419896"},
                                         Row{"adc-value", "7", "655.35", "0xC2/7 = 65535"},
                                         Row{"adc-value-pair", "7", "0.01 1", "0xC3/7 = 1 100"},
                                         Row{"adc2-value", "1", "12.345", "0xC5/1 = 1234"},
                                         Row{"adc2-value-pair", "1", "2 3", "0xC6/1 = 200 300"}));

struct Question {
    const char *name;
    const char *channel;
    const char *answer; // as the board is set to give it
    const char *shown;
};

class Query : public Values, public testing::WithParamInterface<Question>
{
};

TEST_P(Query, shows_the_answer_to_its_code)
{
    Words words = {"get", GetParam().name};
    if (GetParam().channel != nullptr) {
        words.emplace_back(GetParam().channel);
    }
    EXPECT_EQ(says(words, {"--answer", GetParam().answer}), std::string(GetParam().shown) + "\n");
}

INSTANTIATE_TEST_SUITE_P(All, Query,
                         testing::Values(Question{"sampletime", nullptr, "0x03=-2", "-2"},
                                         Question{"sampleskip", nullptr, "0x04=255", "255"},
                                         Question{"interpolation", nullptr, "0x05=2", "2"},
                                         Question{"adc-word-54", "7", "0x06/7=-70000", "-70000"},
                                         Question{"adc-word-55", "7", "0x07/7=70000", "70000"},
                                         Question{"channel-word-56", "1", "0x08/1=11", "11"},
                                         Question{"channel-word-57", "1", "0x09/1=12", "12"},
                                         Question{"channel-word-58", "1", "0x0A/1=13", "13"},
                                         Question{"channel-word-59", "1", "0x0B/1=14", "14"},
                                         Question{"channel-word-5a", "1", "0x0C/1=15", "15"},
                                         Question{"channel-word-5b", "1", "0x0D/1=16", "16"},
                                         Question{"be-word-97", "1", "0x95/1=17", "17"},
                                         Question{"be-word-98", "1", "0x96/1=-18", "-18"},
                                         Question{"adc-long", "7", "0x99/7=19", "19"},
                                         Question{"be-long", "7", "0x9A/7=20", "20"},
                                         Question{"text-21", nullptr, "0x21=hello, world",
                                                  "hello, world"},
                                         Question{"text-22", nullptr, "0x22=again", "again"},
                                         Question{"byte-73", nullptr, "0x73=21", "21"},
                                         Question{"byte-c7", nullptr, "0xC7=22", "22"},
                                         Question{"long-a0", nullptr, "0xA0=-23", "-23"}));

TEST_F(Values, answer_what_was_set)
{
    says({"set", "sampletime", "100"});
    EXPECT_EQ(says({"get", "sampletime"}), "100\n");
    says({"set", "be-word-97", "1", "7"});
    EXPECT_EQ(says({"get", "be-word-97", "1"}), "7\n");
}

TEST_F(Values, go_by_their_codes_too)
{
    EXPECT_EQ(says({"set", "0x51", "100"}), "sampletime = 100 (answer 1)\n");
    EXPECT_EQ(says({"get", "0x03"}), "100\n");
    EXPECT_EQ(says({"get", "0xa0"}), "123456\n");
    EXPECT_EQ(says({"get", "0xA0"}), "123456\n");
}

TEST_F(Values, are_checked_before_the_device_is_touched)
{
    expect_refused({"set", "adc-value", "256", "1"},
                   "channel must be a number from 0 to 7, not '256'");
    expect_refused({"set", "adc2-value", "2", "1"},
                   "channel must be a number from 0 to 1, not '2'");
    expect_refused({"set", "be-long", "2", "1"}, "channel must be a number from 0 to 1, not '2'");
    expect_refused({"get", "be-long", "8"}, "channel must be a number from 0 to 7, not '8'");
    expect_refused({"set", "sampletime", "65636"},
                   "TIME must be a number from 0 to 32000, not '65636'");
    expect_refused({"set", "sampletime", "32001"},
                   "TIME must be a number from 0 to 32000, not '32001'");
    expect_refused({"set", "sampleskip", "2"}, "SKIP must be a number from 3 to 32000, not '2'");
    expect_refused({"set", "interpolation", "4"}, "MODE must be a number from 0 to 3, not '4'");
    expect_refused({"set", "adc-word-54", "0", "65536"},
                   "VALUE must be a number from 0 to 65535, not '65536'");
    expect_refused({"set", "adc-long", "0", "4294967296"},
                   "VALUE must be a number from 0 to 4294967295, not '4294967296'");
    for (const char *value : {"655.36", "700", "-1", "nan", "inf", "1e2", "1,5", "", "x"}) {
        expect_refused({"set", "adc-value", "0", value},
                       "VALUE must be a number from 0 to 655.35, not '" + std::string(value) + "'");
    }
    expect_refused({"set", "adc-value-pair", "0", "1", "656"},
                   "SECOND must be a number from 0 to 655.35, not '656'");
    for (const char *value : {"", "1x", "x", "0x", "+1", " 1", "1.0", "99999999999"}) {
        expect_refused({"set", "sampletime", value},
                       "TIME must be a number from 0 to 32000, not '" + std::string(value) + "'");
    }
}

// In single precision, 655.35 times 100 is less than 65535.
TEST_F(Values, two_decimals_are_sent_exactly_and_further_ones_dropped)
{
    const std::pair<const char *, const char *> typed[] = {
        {"655.35", "65535"}, {"1.15", "115"}, {"0.29", "29"},  {"16.4", "1640"},
        {"500.01", "50001"}, {"0.01", "1"},   {"0.019", "1"},  {"12.345", "1234"},
        {"12.999", "1299"},  {"0", "0"},      {"8.95", "895"}, {"0.009999999", "0"},
    };
    for (const auto &[value, hundredths] : typed) {
        EXPECT_EQ(stmctl({"set", "adc-value", "0", value}).status, 0);
        EXPECT_EQ(settings(), "0xC2/0 = " + std::string(hundredths) + "\n") << value;
    }
    const Result cut = stmctl({"set", "adc-value", "0", "12.349"});
    EXPECT_EQ(cut.output, "adc-value 0 = 12.34 (answer 1)\n");
    EXPECT_EQ(cut.errors, "stmctl: VALUE: 12.349 is sent in hundredths, as 12.34\n");
}

TEST_F(Values, leading_zero_does_not_make_a_number_octal)
{
    EXPECT_EQ(says({"set", "sampletime", "0100"}), "sampletime = 100 (answer 1)\n");
}

TEST_F(Values, are_counted)
{
    expect_refused({"set", "adc-value", "1"}, "adc-value takes CHANNEL VALUE");
    expect_refused({"set", "adc-value", "1", "2", "3"}, "adc-value takes CHANNEL VALUE");
    expect_refused({"set", "adc-value-pair", "1", "2"},
                   "adc-value-pair takes CHANNEL FIRST SECOND");
    expect_refused({"set", "sampletime"}, "sampletime takes TIME");
    expect_refused({"get", "sampletime", "1"}, "sampletime takes no operand");
    expect_refused({"get", "adc-long"}, "adc-long takes CHANNEL");
    expect_refused({"get"}, "NAME is required; see stmctl get --help");
}

TEST_F(Values, unknown_names_are_refused)
{
    expect_refused({"set", "nonsense", "1"}, "unknown setting 'nonsense'; see stmctl list");
    expect_refused({"get", "nonsense"}, "unknown query 'nonsense'; see stmctl list");
    expect_refused({"set", "text-21"},
                   "unknown setting 'text-21': it can only be read; see stmctl list");
    expect_refused({"get", "adc-value"},
                   "unknown query 'adc-value': it can only be set; see stmctl "
                   "list");
}

TEST_F(Values, time_out_is_reported_and_no_value_shown)
{
    const std::string timeout = ": the co-processor did not answer in time; ";
    const std::string dead =
        timeout + "nothing is answering: does the co-processor have power, or has it hung?";
    expect_failure(with_fault("silence", {"get", "sampletime"}), 1, "sampletime" + dead);
    expect_failure(with_fault("silence", {"set", "sampletime", "1"}), 1, "sampletime" + dead);
    expect_failure(with_fault("late@0x21=3000", {"get", "text-21"}), 1,
                   "text-21" + timeout + "the application is running but does not answer this");
    expect_failure(stmctl({"get", "sampletime"}, {"--mode", "boot loader"}), 1,
                   "sampletime" + timeout +
                       "the boot loader is running (stmctl reset starts the application)");
    expect_failure(with_fault("bus-inactive", {"get", "sampletime"}), 1,
                   "sampletime: fetching the data failed: Message too long; nothing drives the "
                   "line: is the co-processor connected?");
}

TEST_F(Values, late_but_in_time_is_good)
{
    EXPECT_EQ(says({"get", "long-a0"}, {"--fault", "late@0xA0=2999"}), "123456\n");
}

TEST_F(Values, failing_exchange_is_reported_for_every_step)
{
    const std::string error = " failed: Input/output error";
    const Words get = {"get", "sampletime"};
    const Words set = {"set", "sampletime", "1"};
    expect_failure(with_fault("exchange@2", get), 1, "sampletime: sending the command" + error);
    expect_failure(with_fault("exchange@3", get), 1,
                   "sampletime: asking whether the answer is ready" + error);
    expect_failure(with_fault("exchange@4", get), 1, "sampletime: fetching the answer" + error);
    expect_failure(with_fault("exchange@5", get), 1, "sampletime: fetching the data" + error);
    expect_failure(with_fault("exchange@2", set), 1, "sampletime: sending the command" + error);
    expect_failure(with_fault("exchange@3", set), 1,
                   "sampletime: asking whether the answer is ready" + error);
    expect_failure(with_fault("exchange@4", set), 1, "sampletime: fetching the answer" + error);
}

TEST_F(Values, reply_that_is_too_long_is_reported)
{
    expect_failure(with_fault("length=4097", {"get", "sampletime"}), 1,
                   "sampletime: fetching the data failed: Message too long; the co-processor "
                   "announced an impossible length; another program may have used the device");
}

TEST_F(Values, controlling_characters_of_a_text_are_shown_not_obeyed)
{
    EXPECT_EQ(says({"get", "text-21"}, {"--answer", "0x21=a\x1B[31mb\tc"}), "a\\x1B[31mb\\x09c\n");
}

constexpr char LIST[] =
    R"(     NAME             CODE  CHANNEL  ANSWERS, OR TAKES                       FUNCTION
get  sampletime       0x03           signed number, 16 bits                  stm_query_short
get  sampleskip       0x04           number, 0 to 255                        stm_query_byte_value_04
get  interpolation    0x05           number, 0 to 255                        stm_query_byte_value_05
get  adc-word-54      0x06  0 to 7   signed number, 32 bits                  stm_query_channel_06
get  adc-word-55      0x07  0 to 7   signed number, 32 bits                  stm_query_channel_07
get  channel-word-56  0x08  0 to 1   signed number, 16 bits                  stm_query_channel_08
get  channel-word-57  0x09  0 to 1   signed number, 16 bits                  stm_query_channel_09
get  channel-word-58  0x0A  0 to 1   signed number, 16 bits                  stm_query_channel_0A
get  channel-word-59  0x0B  0 to 1   signed number, 16 bits                  stm_query_channel_0B
get  channel-word-5a  0x0C  0 to 1   signed number, 16 bits                  stm_query_channel_0C
get  channel-word-5b  0x0D  0 to 1   signed number, 16 bits                  stm_query_channel_0D
get  be-word-97       0x95  0 to 1   signed number, 16 bits                  stm_query_channel_95
get  be-word-98       0x96  0 to 1   signed number, 16 bits                  stm_query_channel_96
get  adc-long         0x99  0 to 7   signed number, 32 bits                  stm_query_channel_99
get  be-long          0x9A  0 to 7   signed number, 32 bits                  stm_query_channel_9A
get  text-21          0x21           text                                    stm_query_text_21
get  text-22          0x22           text                                    stm_query_text_22
get  byte-73          0x73           number, 0 to 255                        stm_query_byte_value_73
get  byte-c7          0xC7           number, 0 to 255                        stm_query_byte_value_C7
get  long-a0          0xA0           signed number, 32 bits                  stm_query_long
set  sampletime       0x51           TIME 0 to 32000                         stm_set_adc_sampletime
set  sampleskip       0x52           SKIP 3 to 32000                         stm_set_adc_sampleskip
set  interpolation    0x53           MODE 0 to 3                             stm_set_interpolation_mode
set  adc-word-54      0x54  0 to 7   VALUE 0 to 65535                        stm_set_adc_word_54
set  adc-word-55      0x55  0 to 7   VALUE 0 to 65535                        stm_set_adc_word_55
set  channel-word-56  0x56  0 to 1   VALUE 0 to 65535                        stm_set_channel_word_56
set  channel-word-57  0x57  0 to 1   VALUE 0 to 65535                        stm_set_channel_word_57
set  channel-word-58  0x58  0 to 1   VALUE 0 to 65535                        stm_set_channel_word_58
set  channel-word-59  0x59  0 to 1   VALUE 0 to 65535                        stm_set_channel_word_59
set  channel-word-5a  0x5A  0 to 1   VALUE 0 to 65535                        stm_set_channel_word_5A
set  channel-word-5b  0x5B  0 to 1   VALUE 0 to 65535                        stm_set_channel_word_5B
set  be-word-97       0x97  0 to 1   VALUE 0 to 65535                        stm_set_be_word_97
set  be-word-98       0x98  0 to 1   VALUE 0 to 65535                        stm_set_be_word_98
set  adc-long         0x9B  0 to 7   VALUE 0 to 4294967295                   stm_set_adc_u32
set  be-long          0x9C  0 to 1   VALUE 0 to 4294967295                   stm_set_be_u32
set  adc-value        0xC2  0 to 7   VALUE 0 to 655.35                       stm_set_adc_value
set  adc-value-pair   0xC3  0 to 7   FIRST 0 to 655.35, SECOND 0 to 655.35   stm_set_adc_value_pair
set  adc2-value       0xC5  0 to 1   VALUE 0 to 655.35                       stm_set_adc2_value
set  adc2-value-pair  0xC6  0 to 1   FIRST 0 to 655.35, SECOND 0 to 655.35   stm_set_adc2_value_pair
)";

TEST_F(Values, list_has_a_line_for_each)
{
    const Result result = run(directly({}, {program(), "list"}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, LIST);
}

} // namespace
