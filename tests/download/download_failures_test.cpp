// Goal: whatever fails, at whichever step, ends the download with its own words and nothing else.
#include "link/stm_com_funcs.h"
#include "tests/download/download_fixture.hpp"

#include <cerrno>
#include <cstring>

namespace
{

const Bytes OPENED(10, 0x66);

// The exchanges of a firmware download: mode 1, header 3, block k 5 + 2k, each with its wait
// behind.
constexpr int MODE = 1;
constexpr int HEADER = 3;
constexpr int BLOCK_0 = 5;

struct Verdict {
    uint8_t status;
    const char *text;
};

class DownloadFailure : public Download
{
  protected:
    // All up to the header's exchange, for an image of this size.
    static Transcript until_header(size_t bytes)
    {
        const Bytes header = frame(0x08004000, static_cast<uint32_t>(bytes), {}, OPENED);
        return joined({
            {"exchange 1: 81"},
            WAIT,
            {say("Filesize: " + std::to_string(bytes) + " Byte\n"),
             say_header(static_cast<unsigned>(bytes), checksum_of(header)), exchange(header)},
        });
    }

    // The one poll of a wait whose exchange fails.
    static Transcript failing_wait(const std::string &error)
    {
        return {"sleep 10000", "exchange 1: 33", "perror \"SPI wait for ACK\" " + error};
    }
};

class DownloadError : public DownloadFailure, public testing::WithParamInterface<Verdict>
{
};

struct SmallChecksum {
    size_t bytes;
    const char *header;
    const char *sent;
};

class HeaderChecksum : public DownloadFailure, public testing::WithParamInterface<SmallChecksum>
{
};

class FailingBlock : public DownloadFailure, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_F(DownloadFailure, failing_mode_command_of_the_firmware)
{
    fail_exchange(MODE, EIO);
    load(Bytes{1}, FIRMWARE);
    EXPECT_TRUE(happened({"exchange 1: 81", "perror \"SPI command\" EIO"}));
}

TEST_F(DownloadFailure, failing_mode_command_of_the_boot_loader)
{
    fail_exchange(MODE, EIO);
    load(Bytes{1}, BOOTER);
    EXPECT_TRUE(happened({"exchange 8: 82 66*6 AA", "perror \"SPI command\" EIO"}));
}

TEST_F(DownloadFailure, failing_empty_exchange_of_another_address)
{
    fail_exchange(MODE, EIO);
    load(Bytes{1}, 0x20000000);
    EXPECT_TRUE(happened({"exchange 0:", "perror \"SPI command\" EIO"}));
}

TEST_F(DownloadFailure, failing_wait_after_the_mode_command)
{
    fail_exchange(MODE + 1, EIO);
    load(Bytes{1}, FIRMWARE);
    EXPECT_TRUE(happened(joined({{"exchange 1: 81"}, failing_wait("EIO")})));
}

TEST_F(DownloadFailure, failing_header)
{
    fail_exchange(HEADER, EIO);
    load(image_of(1024), FIRMWARE);
    EXPECT_TRUE(
        happened(joined({until_header(1024), {"perror \"SPI send header information\" EIO"}})));
}

TEST_F(DownloadFailure, failing_wait_after_the_header)
{
    fail_exchange(HEADER + 1, EIO);
    load(image_of(1024), FIRMWARE);
    EXPECT_TRUE(happened(joined({
        until_header(1024),
        failing_wait("EIO"),
        {R"(say 0 "Checksum sent: 5E50\n")"},
    })));
}

TEST_P(DownloadError, after_the_mode_command_has_no_further_words)
{
    answer(MODE + 1, {GetParam().status});
    load(Bytes{1}, FIRMWARE);
    EXPECT_TRUE(happened(joined({{"exchange 1: 81"}, WAIT, {say(GetParam().text)}})));
}

TEST_P(DownloadError, after_the_header_is_followed_by_its_checksum)
{
    answer(HEADER + 1, {GetParam().status});
    load(image_of(1024), FIRMWARE);
    EXPECT_TRUE(happened(joined({
        until_header(1024),
        WAIT,
        {say(GetParam().text), R"(say 0 "Checksum sent: 5E50\n")"},
    })));
    EXPECT_EQ(messages, texts);
}

TEST_P(DownloadError, after_a_block_is_followed_by_its_checksum)
{
    answer(BLOCK_0 + 1, {GetParam().status});
    load(Bytes{0x03}, FIRMWARE);
    EXPECT_TRUE(happened(joined({
        until_header(1),
        WAIT,
        {exchange(frame(0x08004000, 1, {0x03}, OPENED)),
         R"(say 0 "Transmitting datablock 0 (size: 0x0001, checksum: 0x947D)\n")"},
        WAIT,
        {say(GetParam().text), R"(say 0 "Checksum sent: 947D\n")"},
    })));
    EXPECT_EQ(messages, texts);
}

INSTANTIATE_TEST_SUITE_P(Each, DownloadError,
                         testing::Values(Verdict{0xF0, "Checksum error\n"},
                                         Verdict{0xF1, "Address error\n"},
                                         Verdict{0xFF, "SPI Bus inactive\n"}));

TEST_F(DownloadFailure, no_acknowledge_after_the_mode_command)
{
    answer_always({0x00});
    load(Bytes{1}, FIRMWARE);
    EXPECT_TRUE(happened(joined({{"exchange 1: 81"}, times(1501, WAIT), {say("SPI timeout\n")}})));
}

TEST_F(DownloadFailure, no_acknowledge_after_the_header)
{
    answer_always({0x00});
    answer(MODE + 1, {0x55});
    load(image_of(1024), FIRMWARE);
    EXPECT_TRUE(happened(joined({
        until_header(1024),
        times(1501, WAIT),
        {say("SPI timeout\n"), say("Checksum sent: 5E50\n")},
    })));
}

TEST_F(DownloadFailure, no_acknowledge_after_a_block)
{
    answer_always({0x00});
    answer(MODE + 1, {0x55});
    answer(HEADER + 1, {0x55});
    load(Bytes{0x03}, FIRMWARE);
    EXPECT_TRUE(happened(joined({
        until_header(1),
        WAIT,
        {exchange(frame(0x08004000, 1, {0x03}, OPENED)), say_block(0, 1, 0x947D)},
        times(1501, WAIT),
        {say("SPI timeout\n"), say("Checksum sent: 947D\n")},
    })));
}

// The header's text pads its checksum to four digits, the text after a failure does not.
TEST_P(HeaderChecksum, is_padded_before_the_exchange_and_bare_after_a_failure)
{
    answer(HEADER + 1, {0xF0});
    load(image_of(GetParam().bytes), FIRMWARE);
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[1], say(GetParam().header));
    EXPECT_EQ(texts[3], say(GetParam().sent));
}

INSTANTIATE_TEST_SUITE_P(
    Each, HeaderChecksum,
    testing::Values(
        SmallChecksum{0, "Transmitting information header (size: 0x0000, checksum: 0xF595)\n",
                      "Checksum sent: F595\n"},
        SmallChecksum{20, "Transmitting information header (size: 0x0014, checksum: 0x0273)\n",
                      "Checksum sent: 273\n"},
        SmallChecksum{308, "Transmitting information header (size: 0x0134, checksum: 0x0044)\n",
                      "Checksum sent: 44\n"}));

TEST_F(DownloadFailure, checksum_of_a_block_is_bare_too)
{
    answer(BLOCK_0 + 1, {0xF0});
    load(Bytes{0x1E}, FIRMWARE);
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_EQ(texts[2], say("Transmitting datablock 0 (size: 0x0001, checksum: 0x06FD)\n"));
    EXPECT_EQ(texts[4], say("Checksum sent: 6FD\n"));
}

TEST_P(FailingBlock, exchange_ends_the_download_without_its_text)
{
    const int number = GetParam();
    const Bytes image = image_of(3 * 1024 + 10);
    fail_exchange(BLOCK_0 + 2 * number, EIO);
    load(image, FIRMWARE);
    Transcript sent = blocks(0x08004000, image, OPENED);
    sent.resize(static_cast<size_t>(number) * 6 + 1); // a block is its exchange, its text, a wait
    EXPECT_TRUE(happened(
        joined({until_header(image.size()), WAIT, sent, {"perror \"SPI send data\" EIO"}})));
}

TEST_P(FailingBlock, wait_ends_the_download_with_its_checksum)
{
    const int number = GetParam();
    const Bytes image = image_of(3 * 1024 + 10);
    answer(BLOCK_0 + 2 * number + 1, {0xF0});
    load(image, FIRMWARE);
    Transcript sent = blocks(0x08004000, image, OPENED);
    sent.resize(static_cast<size_t>(number + 1) * 6);
    const size_t begin = static_cast<size_t>(number) * 1024;
    const Bytes data = part_of(image, begin, begin + 1024);
    const Bytes tail = number == 0 ? OPENED : part_of(image, begin - 10, begin);
    const Bytes last = frame(0x08004000, static_cast<uint32_t>(data.size()), data, tail);
    EXPECT_TRUE(happened(joined({
        until_header(image.size()),
        WAIT,
        sent,
        {R"(say 0 "Checksum error\n")", say_checksum_sent(checksum_of(last))},
    })));
}

TEST_P(FailingBlock, exchange_of_its_wait_ends_the_download_with_its_checksum)
{
    const int number = GetParam();
    fail_exchange(BLOCK_0 + 2 * number + 1, EIO);
    load(image_of(3 * 1024 + 10), FIRMWARE);
    ASSERT_EQ(texts.size(), static_cast<size_t>(number) + 4);
    EXPECT_EQ(texts.back().substr(0, strlen("say 0 \"Checksum sent: ")), "say 0 \"Checksum sent: ");
}

INSTANTIATE_TEST_SUITE_P(Each, FailingBlock, testing::Values(0, 1, 2, 3));

TEST_F(DownloadFailure, nothing_is_sent_again_by_a_second_download_but_what_it_sends_itself)
{
    answer(HEADER + 1, {0xF0});
    load(Bytes{}, FIRMWARE);
    forget();
    answer(HEADER + 1, {0x55});
    load(Bytes{}, FIRMWARE);
    EXPECT_TRUE(
        happened(joined({until_header(0), WAIT, {R"(say 0 "Transmitted data: 0 Byte\n")"}})));
}
