// Goal: a number is read whole and within its limits, and hundredths are those that the module
// sends.
#include "link/stm_com_funcs.h"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

// The sentence with which something is refused.
template <typename Parse>
std::string refusal(const Parse &parse)
{
    try {
        parse();
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.status(), ExitStatus::usage);
        return failure.what();
    }
    return "not refused";
}

uint32_t sent(const std::string &text)
{
    return stm_scale100(parse_hundredths(text, "VALUE"));
}

TEST(Number, is_decimal_or_hexadecimal)
{
    EXPECT_EQ(parse_number("10", "count", 0, 20), 10U);
    EXPECT_EQ(parse_number("0x10", "count", 0, 20), 16U);
    EXPECT_EQ(parse_number("0XfF", "count", 0, 255), 255U);
    EXPECT_EQ(parse_number("010", "count", 0, 20), 10U);
    EXPECT_EQ(parse_number("4294967295", "count", 0, 4294967295U), 4294967295U);
}

TEST(Number, is_within_its_limits)
{
    EXPECT_EQ(parse_number("3", "count", 3, 7), 3U);
    EXPECT_EQ(parse_number("7", "count", 3, 7), 7U);
    for (const std::string text :
         {"2", "8", "", "x", "0x", "3 ", " 3", "+3", "-3", "3.0", "0x0x3", "4294967299"}) {
        EXPECT_EQ(refusal([&] { parse_number(text, "count", 3, 7); }),
                  "count must be a number from 3 to 7, not '" + text + "'");
    }
}

TEST(Hundredths, are_sent_as_they_were_typed)
{
    for (const uint32_t hundredths : {0U, 1U, 29U, 57U, 100U, 115U, 1999U, 6553U, 65534U, 65535U}) {
        const std::string digits = std::to_string(hundredths % 100);
        const std::string text =
            std::to_string(hundredths / 100) + "." + std::string(2 - digits.size(), '0') + digits;
        EXPECT_EQ(sent(text), hundredths) << text;
    }
    EXPECT_EQ(sent("0.299"), 29U) << "further decimals are dropped";
    EXPECT_EQ(sent("655.349"), 65534U);
    EXPECT_EQ(sent("7"), 700U);
    EXPECT_EQ(sent(".5"), 50U);
}

TEST(Hundredths, are_from_nothing_to_what_16_bits_hold)
{
    for (const std::string text : {"655.36", "656", "-0.01", "", "x", "1x", "nan", "inf", "1e2"}) {
        EXPECT_EQ(refusal([&] { parse_hundredths(text, "VALUE"); }),
                  "VALUE must be a number from 0 to 655.35, not '" + text + "'");
    }
}

TEST(Hundredths, are_all_unless_further_decimals_count)
{
    for (const std::string text : {"1", "123456", "1.", "1.2", "1.23", "1.230", "1.23000", ".25"}) {
        EXPECT_FALSE(has_more_than_hundredths(text)) << text;
    }
    for (const std::string text : {"1.231", "1.2301", "0.001", ".259"}) {
        EXPECT_TRUE(has_more_than_hundredths(text)) << text;
    }
}

} // namespace
