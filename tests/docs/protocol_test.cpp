// docs/protocol.md against the code: constants, limits, frame layouts, the checksum.
#include "tests/docs/document.hpp"
#include "tests/tool/workbench.hpp"

#include "link/protocol.hpp"
#include "link/stm_com_funcs.h"
#include "readout/record_format.hpp"

#include <cstdio>

extern "C" uint16_t crc16(const uint8_t *data, size_t length); // the one in the document

namespace
{

using namespace stm;

const Document PROTOCOL = read_document("docs/protocol.md");

std::string hex(int value)
{
    char text[16];
    snprintf(text, sizeof(text), "0x%02X", static_cast<unsigned>(value));
    return text;
}

TEST(Protocol, documents_the_link)
{
    const auto rows = table_under(PROTOCOL, "## The link");
    EXPECT_EQ(rows.at("device").at(0), STM_SPI_DEVICE);
    EXPECT_EQ(rows.at("clock").at(0), std::to_string(STM_SPI_SPEED_HZ) + " Hz");
    EXPECT_EQ(rows.at("longest exchange").at(0), std::to_string(STM_BUFFER_SIZE) + " bytes");
    EXPECT_EQ(rows.at("time on the wire").at(0), "1.33 µs a byte");
    EXPECT_EQ(STM_SPI_SPEED_HZ, 6'000'000U);
}

TEST(Protocol, documents_the_bytes_that_the_host_sends)
{
    std::vector<std::string> codes;
    for (const auto &[code, meanings] : table_under(PROTOCOL, "## Bytes that the host sends")) {
        codes.push_back(code);
    }
    EXPECT_EQ(codes, (std::vector<std::string>{
                         hex(STM_CMD_STATE), hex(STM_POLL_ACK), hex(STM_POLL_DATA),
                         hex(STM_SYNC_FILL), hex(STM_CMD_START_BOOTLOADER),
                         hex(STM_CMD_LOAD_BOOTER), hex(STM_CMD_RESET), hex(STM_CMD_VERSION)}));
}

TEST(Protocol, documents_where_images_begin)
{
    const auto rows = table_under(PROTOCOL, "## Image download");
    EXPECT_EQ(std::stoul(rows.at("firmware").at(1), nullptr, 16), STM_FLASH_FIRMWARE_ADDR);
    EXPECT_EQ(std::stoul(rows.at("boot loader").at(1), nullptr, 16), STM_FLASH_BOOTER_ADDR);
    EXPECT_EQ(rows.at("boot loader").at(2), "16 KiB");
    EXPECT_EQ(STM_FLASH_FIRMWARE_ADDR - STM_FLASH_BOOTER_ADDR, 16U * 1024);
}

TEST(Protocol, documents_frames_whose_parts_lie_side_by_side)
{
    int at = 0;
    for (const Row &row : rows_under(PROTOCOL, "### Frames")) {
        EXPECT_EQ(std::stoi(row.at(0)), at);
        at += std::stoi(row.at(1));
    }
    EXPECT_EQ(at, STM_FRAME_SIZE);
    at = 0;
    for (const Row &row : rows_under(PROTOCOL, "## ADC samples")) {
        EXPECT_EQ(std::stoi(row.at(0)), at);
        at += std::stoi(row.at(1));
    }
    EXPECT_EQ(at, 1203);
}

TEST(Protocol, documents_each_status)
{
    std::vector<std::string> states;
    for (const Row &row : rows_under(PROTOCOL, "### Acknowledge handshake")) {
        states.push_back(row.at(0));
    }
    EXPECT_EQ(states, (std::vector<std::string>{hex(STM_ACK), hex(STM_ERR_CHECKSUM),
                                                hex(STM_ERR_ADDRESS), "`0xF2` to `0xFE`",
                                                hex(STM_BUS_INACTIVE), "anything else"}));
}

struct Wait {
    const char *name;
    int polls;
    int bytes;
    uint32_t pause_us;
};

constexpr Wait WAITS[] = {
    {"the answer to a single-byte query", 1, 1, STM_ANSWER_PAUSE_US},
    {"an acknowledge", STM_ACK_POLL_LIMIT, 1, STM_ACK_POLL_US + STM_ACK_AFTER_POLL_US},
    {"the answer to a command frame", STM_PARAM_POLL_LIMIT, 1, STM_PARAM_POLL_US},
    {"a block, an ADC frame, raw bytes", STM_BLOCK_POLL_LIMIT, 1, 0},
    {"a header of the live stream", STM_BLOCK_POLL_LIMIT, 20, 0},
};

std::string longest(const Wait &wait)
{
    const double us = wait.polls * (wait.pause_us + wait.bytes * 8 / 6.0);
    char text[32];
    snprintf(text, sizeof(text), us < 50'000 ? "%.1f ms" : "%.1f s",
             us / (us < 50'000 ? 1e3 : 1e6));
    return text;
}

TEST(Protocol, documents_limits_and_pauses)
{
    const auto rows = table_under(PROTOCOL, "## Limits, pauses and time-outs");
    EXPECT_EQ(rows.size(), std::size(WAITS));
    for (const Wait &wait : WAITS) {
        const Row &row = rows.at(wait.name);
        EXPECT_EQ(row.at(0), std::to_string(wait.polls)) << wait.name;
        EXPECT_EQ(row.at(1), std::to_string(wait.bytes)) << wait.name;
        EXPECT_EQ(row.at(2),
                  wait.pause_us == 0 ? "none" : std::to_string(wait.pause_us / 1000) + " ms");
        EXPECT_EQ(row.at(3), longest(wait)) << wait.name;
    }
    EXPECT_EQ(rows.at("a header of the live stream").at(4),
              std::to_string(STM_BLOCK_TIMEOUT_US / 1000) + " ms pause, more polls");
}

TEST(Protocol, has_the_same_numbers_in_its_sentences)
{
    const auto number = [](auto value) { return std::to_string(value); };
    const std::string text = flowing_text(PROTOCOL);
    const std::string ack_ms = number((STM_ACK_POLL_US + STM_ACK_AFTER_POLL_US) / 1000);
    for (const std::string &sentence :
         {"one exchange of " + number(STM_BUFFER_SIZE) + " bytes of 66",
          "sleeps for " + number(STM_ANSWER_PAUSE_US / 1000) + " ms, sends one 44",
          "data frames have " + number(STM_FRAME_SIZE) + " bytes",
          "polls at most " + number(STM_ACK_POLL_LIMIT) + " times, " + ack_ms + " ms apart",
          "in the " + number(STM_ACK_POLL_LIMIT) + "st poll come too late",
          "polls at most " + number(STM_PARAM_POLL_LIMIT) + " times, " +
              number(STM_PARAM_POLL_US / 1000) + " ms apart",
          "at most " + number(STM_BLOCK_POLL_LIMIT) + " of them",
          "makes at most " + number(STM_BLOCK_POLL_LIMIT) + " polls",
          "sleeps for " + number(STM_BLOCK_TIMEOUT_US / 1000) + " ms and polls again",
          number(4 * STM_TOP_BLOCK_WORDS) + " bytes from `" + hex(STM_TOP_BLOCK_ADDR) + "` on"}) {
        EXPECT_NE(text.find(sentence), std::string::npos) << sentence;
    }
}

struct Kind {
    const char *code;
    const RecordFormat &format;
    char letter;
};

TEST(Protocol, documents_the_requests_for_records)
{
    const Kind kinds[] = {
        {"0xC8", STM_RECORD, 'I'}, {"0xC1", STM_RECORD_OMEGA, 'N'}, {"0x02", STM_RECORD_TEMP, 'U'}};
    const auto rows = table_under(PROTOCOL, "## Record blocks");
    EXPECT_EQ(rows.size(), std::size(kinds));
    for (const Kind &kind : kinds) {
        const Row &row = rows.at(kind.code);
        EXPECT_EQ(row.at(1), std::to_string(kind.format.size));
        EXPECT_EQ(row.at(2), std::to_string(STM_BUFFER_SIZE / kind.format.size));
        EXPECT_EQ(row.at(3), "`" + hex(kind.letter) + "` ('" + kind.letter + "')");
    }
}

TEST(Protocol, documents_the_checksum)
{
    const auto rows = table_under(PROTOCOL, "## Checksum");
    const auto *digits = reinterpret_cast<const uint8_t *>("123456789");
    EXPECT_EQ(std::stoi(rows.at("check value (\"123456789\")").at(0), nullptr, 16),
              stm_crc16(digits, 9));
    EXPECT_EQ(std::stoi(rows.at("of no bytes").at(0), nullptr, 16), stm_crc16(digits, 0));
    EXPECT_EQ(rows.at("polynomial").at(0), "0x1021");
    EXPECT_EQ(rows.at("start value").at(0), "0xFFFF");
    EXPECT_EQ(rows.at("final XOR").at(0), "0xFFFF");
}

TEST(Protocol, shows_a_checksum_in_c_that_computes_what_the_module_does)
{
    const Bytes bytes = noise(1032, 4);
    for (const size_t length : {0U, 1U, 9U, 46U, 1032U}) {
        EXPECT_EQ(crc16(bytes.data(), length),
                  stm_crc16(bytes.data(), static_cast<uint16_t>(length)));
    }
}

} // namespace
