// Values by command, as a person writes them and as a board keeps them.
#include "simulator/commands/command_values.hpp"

#include "simulator/words/number.hpp"

#include <gtest/gtest.h>

namespace simulator
{

namespace
{

std::string add(ValuesOf kind, const char *line)
{
    CommandValues values;
    return add_value(values, kind, line);
}

TEST(CommandValues, are_read_with_or_without_blanks)
{
    CommandValues values;
    EXPECT_EQ(add_value(values, ValuesOf::answers, "0x06/3=-70000"), "");
    EXPECT_EQ(add_value(values, ValuesOf::answers, "  0x21 =  two words \t\r"), "");
    EXPECT_EQ(add_value(values, ValuesOf::answers, "0x22="), "");
    EXPECT_EQ(add_value(values, ValuesOf::answers, "194 = 0x4d"), "");
    EXPECT_EQ(add_value(values, ValuesOf::answers, "0x62/0xFFFF=a=b"), "");
    EXPECT_EQ(values, (CommandValues{{{0x06, 3}, "-70000"},
                                     {{0x21, NO_PLACE}, "two words"},
                                     {{0x22, NO_PLACE}, ""},
                                     {{0x62, 65535}, "a=b"},
                                     {{0xC2, NO_PLACE}, "0x4d"}}));
}

TEST(CommandValues, a_later_one_takes_the_place_of_an_earlier)
{
    CommandValues values;
    add_value(values, ValuesOf::settings, "0x53=1");
    add_value(values, ValuesOf::settings, "0x53=2");
    EXPECT_EQ(values, (CommandValues{{{0x53, NO_PLACE}, "2"}}));
}

TEST(CommandValues, answer_for_256_addresses_at_most)
{
    CommandValues values = {{{0x21, NO_PLACE}, "a"}};
    for (int address = 1; address <= 256; ++address) {
        const std::string line = "0x62/" + std::to_string(address) + "=x";
        EXPECT_EQ(add_value(values, ValuesOf::answers, line), "");
    }
    EXPECT_EQ(add_value(values, ValuesOf::answers, "0x62/256=y"), "") << "the same once more";
    EXPECT_EQ(add_value(values, ValuesOf::answers, "0x62/0=x"),
              "'0x62/0=x': at most 256 addresses can have answers");
}

TEST(CommandValues, that_are_not_understood_are_refused_with_the_reason)
{
    const std::string form = "it does not have the form CODE[/CHANNEL]=VALUE";
    EXPECT_EQ(add(ValuesOf::answers, "0x06/3"), "'0x06/3': " + form);
    EXPECT_EQ(add(ValuesOf::answers, "0x21=a\nb"), "'0x21=a\nb': " + form);
    for (const char *line : {"=1", "6x=1", "0x100=1", "-1=1", "0x0E=1", "0x75=1", "q=1"}) {
        EXPECT_EQ(add(ValuesOf::answers, line),
                  "'" + std::string(line) + "': no command with answers has this code");
    }
    for (const char *line : {"0x06/0=1", "0x61=1", "0x00=1"}) {
        EXPECT_EQ(add(ValuesOf::settings, line),
                  "'" + std::string(line) + "': no setting has this code");
    }
    EXPECT_EQ(add(ValuesOf::answers, "0xA0/0=1"), "'0xA0/0=1': this command has no channels");
    for (const char *line : {"0x06=1", "0x06/8=1", "0x06/-1=1", "0x06/=1", "0x06/1/1=1"}) {
        EXPECT_EQ(add(ValuesOf::answers, line),
                  "'" + std::string(line) +
                      "': the code must be followed by / and a channel from 0 to 7, as in 0x06/1");
    }
    EXPECT_EQ(
        add(ValuesOf::answers, "0x62/65536=x"),
        "'0x62/65536=x': the code must be followed by / and an address from 0 to 65535, as in "
        "0x62/1");
}

TEST(CommandValues, take_numbers_whose_bits_fit_signed_or_unsigned)
{
    for (const char *line : {"0x73=255", "0x73=-128", "0x03=65535", "0x03=-32768", "0x03=0xFFFF",
                             "0xA0=4294967295", "0xA0=-2147483648", "0x72=65535"}) {
        EXPECT_EQ(add(ValuesOf::answers, line), "") << line;
    }
    for (const char *line : {"0x73=256", "0x73=-129", "0x73=", "0x73=1 2", "0x73=x", "0x73=1x"}) {
        EXPECT_EQ(add(ValuesOf::answers, line),
                  "'" + std::string(line) + "': the value must be 1 number of 8 bits");
    }
    EXPECT_NE(add(ValuesOf::answers, "0x03=65536"), "");
    EXPECT_NE(add(ValuesOf::answers, "0x03=-32769"), "");
    EXPECT_NE(add(ValuesOf::answers, "0xA0=4294967296"), "");
    EXPECT_NE(add(ValuesOf::answers, "0xA0=-2147483649"), "");
    EXPECT_EQ(add(ValuesOf::settings, "0xC3/7=65535 0"), "");
    EXPECT_EQ(add(ValuesOf::settings, "0xC3/7=1"),
              "'0xC3/7=1': the value must be 2 numbers of 16 bits");
}

TEST(CommandValues, of_a_file_are_what_was_written)
{
    const CommandValues values = {{{0x53, NO_PLACE}, "2"},
                                  {{0x62, 0x1F00}, "ok"},
                                  {{0xA0, NO_PLACE}, "-1"},
                                  {{0x06, 7}, "9"}};
    const std::string lines = write_values(values);
    EXPECT_EQ(lines, "0x06/7 = 9\n0x53 = 2\n0x62/0x1F00 = ok\n0xA0 = -1\n");
    CommandValues again = {{{0x54, 1}, "1"}};
    EXPECT_EQ(read_values(again, ValuesOf::answers, "# a remark\n\n  \n0x06/7 = 9\n0xA0=-1"), "");
    EXPECT_EQ(again, (CommandValues{{{0x06, 7}, "9"}, {{0xA0, NO_PLACE}, "-1"}}));
    EXPECT_EQ(read_values(again, ValuesOf::answers, "0xA0=1\nnonsense\n"),
              "'nonsense': it does not have the form CODE[/CHANNEL]=VALUE");
}

TEST(CommandValues, are_listed_by_command)
{
    const std::string list = describe_commands();
    for (const char *line :
         {"  0x06  0 to 7    answers a number of 32 bits  what 0x54 has set\n",
          "  0x21            answers a text               virtual co-processor\n",
          "  0xC6  0 to 1    takes 2 numbers of 16 bits   1\n",
          "  0x75            reads a range of the memory  \n"}) {
        EXPECT_NE(list.find(line), std::string::npos) << line << list;
    }
}

TEST(Number, is_read_within_its_limits_and_whole)
{
    EXPECT_EQ(parse_number("0", 0, 9), 0);
    EXPECT_EQ(parse_number("9", 0, 9), 9);
    EXPECT_EQ(parse_number("10", 0, 9), std::nullopt);
    EXPECT_EQ(parse_number("-1", 0, 9), std::nullopt);
    EXPECT_EQ(parse_number("-1", -1, 9), -1);
    EXPECT_EQ(parse_number("0xfF", 0, 999), 255);
    EXPECT_EQ(parse_number("-0x10", -999, 999), -16);
    for (const char *words : {"", "-", "0x", "+1", " 1", "1 ", "--1", "1.0", "x", "0x-1",
                              "18446744073709551616", "18446744073709551615"}) {
        EXPECT_EQ(parse_number(words, INT64_MIN, INT64_MAX), std::nullopt) << words;
    }
}

} // namespace

} // namespace simulator
