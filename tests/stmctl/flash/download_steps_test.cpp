// Goal: how far a download has come, and where and why it failed, is told from the module's texts
// alone.
#include "stmctl/flash/download_steps.hpp"

#include <gtest/gtest.h>

#include <cerrno>

using namespace stmctl;

namespace
{

DownloadSteps after(uint32_t size, const std::vector<std::string> &texts)
{
    DownloadSteps steps(size);
    for (const std::string &text : texts) {
        steps.take(text);
    }
    return steps;
}

const std::string BEGUN = "Filesize: 2500\n";
const std::string FIRST = "Transmitting datablock 0\n";
const std::string SECOND = "Transmitting datablock 1\n";
const std::string THIRD = "Transmitting datablock 2\n";

TEST(DownloadStep, acknowledges_the_blocks_before_the_one_that_is_sent)
{
    DownloadSteps steps(2500);
    EXPECT_EQ(steps.place(), "at the mode command");
    EXPECT_FALSE(steps.take(BEGUN));
    EXPECT_EQ(steps.place(), "at the header");
    EXPECT_TRUE(steps.take(FIRST));
    EXPECT_EQ(steps.acknowledged(), 0U);
    EXPECT_EQ(steps.place(), "at block 0, after 0 of 2500 bytes");
    EXPECT_TRUE(steps.take(SECOND));
    EXPECT_EQ(steps.acknowledged(), 1024U);
    EXPECT_TRUE(steps.take(THIRD));
    EXPECT_EQ(steps.acknowledged(), 2048U);
    EXPECT_EQ(steps.place(), "at block 2, after 2048 of 2500 bytes");
    EXPECT_FALSE(steps.is_complete());
    EXPECT_TRUE(steps.take("Transmitted data: 2500 Byte\n"));
    EXPECT_EQ(steps.acknowledged(), 2500U);
    EXPECT_TRUE(steps.is_complete());
}

TEST(DownloadStep, that_failed_has_its_reason)
{
    const std::pair<std::string, std::string> reasons[] = {
        {"SPI timeout\n", "time-out (no acknowledgement within 16.5 seconds)"},
        {"Checksum error\n",
         "checksum error (the co-processor received other bytes than were sent)"},
        {"Address error\n",
         "address error (the co-processor does not accept this address or size)"},
        {"SPI Bus inactive\n", "the bus is inactive (no co-processor drives it)"},
    };
    for (const auto &[text, reason] : reasons) {
        EXPECT_EQ(after(2500, {BEGUN, FIRST, SECOND, text}).what_failed({}),
                  "at block 1, after 1024 of 2500 bytes: " + reason);
    }
}

TEST(DownloadStep, that_ended_early_tells_what_was_sent)
{
    EXPECT_EQ(after(2500, {BEGUN, FIRST, "Transmitted data: 2499 Byte\n"}).what_failed({}),
              "at block 0, after 2499 of 2500 bytes: only 2499 of the file's 2500 bytes were sent");
    EXPECT_EQ(after(1, {"Filesize: 1\n", FIRST}).what_failed({}),
              "at block 0, after 0 of 1 byte: only 0 of the file's 1 byte were sent");
}

TEST(DownloadStep, that_could_not_be_sent_is_the_next_one)
{
    const std::vector<Report> unsent = {{"SPI send data", "Input/output error", EIO}};
    const std::string why = ": sending the data failed: Input/output error";
    EXPECT_EQ(after(2500, {BEGUN}).what_failed(unsent), "at block 0, after 0 of 2500 bytes" + why);
    EXPECT_EQ(after(2500, {BEGUN, FIRST, SECOND}).what_failed(unsent),
              "at block 2, after 2048 of 2500 bytes" + why);
    const std::vector<Report> unasked = {{"SPI wait for ACK", "Input/output error", EIO}};
    EXPECT_EQ(after(2500, {BEGUN, FIRST}).what_failed(unasked),
              "at block 0, after 0 of 2500 bytes: asking for the acknowledgement failed: "
              "Input/output error");
}

} // namespace
