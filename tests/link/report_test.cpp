// Goal: each of the two channels carries its report unchanged, and messages keep to their buffer.
#include "link/report.hpp"

#include "link/link.hpp"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

class Reporting : public Dialogue
{
};

} // namespace

TEST_F(Reporting, failing_call_is_told_through_perror_with_its_reason)
{
    errno = EIO;
    report_errno("SPI command");
    EXPECT_TRUE(happened({"perror \"SPI command\" EIO"}));
    EXPECT_STREQ(stm_link.message, "");
}

TEST_F(Reporting, message_is_formatted_in_the_message_buffer_and_handed_out_with_flag_0)
{
    report_message(output, "%s %d\n", "Block", 7);
    EXPECT_TRUE(happened({"say 0 \"Block 7\\n\""}));
    EXPECT_EQ(messages, Transcript({"say 0 \"Block 7\\n\""}));
    EXPECT_STREQ(stm_link.message, "Block 7\n");
}

TEST_F(Reporting, result_is_that_of_the_output)
{
    output_result = -3;
    EXPECT_EQ(report_message(output, "text"), -3);
}

TEST_F(Reporting, message_of_254_characters_fits)
{
    const std::string text(254, 'm');
    report_message(output, "%s", text.c_str());
    EXPECT_TRUE(happened({say(text)}));
}

TEST_F(Reporting, longer_message_is_cut_and_stays_in_its_buffer)
{
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    report_message(output, "%s", std::string(255, 'm').c_str());
    EXPECT_TRUE(happened({say(std::string(254, 'm'))}));
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
}
