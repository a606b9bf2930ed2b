// Goal: fifty bytes are asked for, awaited and fetched with exactly these exchanges, and shown in
// one text whose form never changes.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cstring>

using namespace stm;

namespace
{

const Transcript COMMAND = {"exchange 8: 01 00*6 AA"};
const Transcript POLL = {"exchange 1: 44", "poll"};
const Transcript FETCHED = {"exchange 50: 66*50"};

// What comes in while the command goes out.
const Bytes ECHO = {0x55, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7};

const Bytes FIFTY = {
    0x55, 0x01, 0x00, 0x0A, 0xA0, 0xFF, 0xF0, 0x0F, 0x80, 0x7F, 0x7D, 0xA2, 0xC7,
    0xEC, 0x11, 0x36, 0x5B, 0x80, 0xA5, 0xCA, 0xEF, 0x14, 0x39, 0x5E, 0x83, 0xA8,
    0xCD, 0xF2, 0x17, 0x3C, 0x61, 0x86, 0xAB, 0xD0, 0xF5, 0x1A, 0x3F, 0x64, 0x89,
    0xAE, 0xD3, 0xF8, 0x1D, 0x42, 0x67, 0x8C, 0xB1, 0xD6, 0xFB, 0x20,
};

// Blanks before the line ends, two bytes fewer than came.
constexpr char LISTED[] = "\nReceived values: \n"
                          "0.Byte 0x55 \n"
                          "1.Byte 0x01 \n"
                          "2.Byte 0x00 \n"
                          "3.Byte 0x0A \n"
                          "4.Byte 0xA0 \n"
                          "5.Byte 0xFF \n"
                          "6.Byte 0xF0 \n"
                          "7.Byte 0x0F \n"
                          "8.Byte 0x80 \n"
                          "9.Byte 0x7F \n"
                          "10.Byte 0x7D \n"
                          "11.Byte 0xA2 \n"
                          "12.Byte 0xC7 \n"
                          "13.Byte 0xEC \n"
                          "14.Byte 0x11 \n"
                          "15.Byte 0x36 \n"
                          "16.Byte 0x5B \n"
                          "17.Byte 0x80 \n"
                          "18.Byte 0xA5 \n"
                          "19.Byte 0xCA \n"
                          "20.Byte 0xEF \n"
                          "21.Byte 0x14 \n"
                          "22.Byte 0x39 \n"
                          "23.Byte 0x5E \n"
                          "24.Byte 0x83 \n"
                          "25.Byte 0xA8 \n"
                          "26.Byte 0xCD \n"
                          "27.Byte 0xF2 \n"
                          "28.Byte 0x17 \n"
                          "29.Byte 0x3C \n"
                          "30.Byte 0x61 \n"
                          "31.Byte 0x86 \n"
                          "32.Byte 0xAB \n"
                          "33.Byte 0xD0 \n"
                          "34.Byte 0xF5 \n"
                          "35.Byte 0x1A \n"
                          "36.Byte 0x3F \n"
                          "37.Byte 0x64 \n"
                          "38.Byte 0x89 \n"
                          "39.Byte 0xAE \n"
                          "40.Byte 0xD3 \n"
                          "41.Byte 0xF8 \n"
                          "42.Byte 0x1D \n"
                          "43.Byte 0x42 \n"
                          "44.Byte 0x67 \n"
                          "45.Byte 0x8C \n"
                          "46.Byte 0xB1 \n"
                          "47.Byte 0xD6 \n";

// All in one line.
constexpr char COLUMNS[] = R"("0.Byte";0x55;)"
                           R"("1.Byte";0x01;)"
                           R"("2.Byte";0x00;)"
                           R"("3.Byte";0x0A;)"
                           R"("4.Byte";0xA0;)"
                           R"("5.Byte";0xFF;)"
                           R"("6.Byte";0xF0;)"
                           R"("7.Byte";0x0F;)"
                           R"("8.Byte";0x80;)"
                           R"("9.Byte";0x7F;)"
                           R"("10.Byte";0x7D;)"
                           R"("11.Byte";0xA2;)"
                           R"("12.Byte";0xC7;)"
                           R"("13.Byte";0xEC;)"
                           R"("14.Byte";0x11;)"
                           R"("15.Byte";0x36;)"
                           R"("16.Byte";0x5B;)"
                           R"("17.Byte";0x80;)"
                           R"("18.Byte";0xA5;)"
                           R"("19.Byte";0xCA;)"
                           R"("20.Byte";0xEF;)"
                           R"("21.Byte";0x14;)"
                           R"("22.Byte";0x39;)"
                           R"("23.Byte";0x5E;)"
                           R"("24.Byte";0x83;)"
                           R"("25.Byte";0xA8;)"
                           R"("26.Byte";0xCD;)"
                           R"("27.Byte";0xF2;)"
                           R"("28.Byte";0x17;)"
                           R"("29.Byte";0x3C;)"
                           R"("30.Byte";0x61;)"
                           R"("31.Byte";0x86;)"
                           R"("32.Byte";0xAB;)"
                           R"("33.Byte";0xD0;)"
                           R"("34.Byte";0xF5;)"
                           R"("35.Byte";0x1A;)"
                           R"("36.Byte";0x3F;)"
                           R"("37.Byte";0x64;)"
                           R"("38.Byte";0x89;)"
                           R"("39.Byte";0xAE;)"
                           R"("40.Byte";0xD3;)"
                           R"("41.Byte";0xF8;)"
                           R"("42.Byte";0x1D;)"
                           R"("43.Byte";0x42;)"
                           R"("44.Byte";0x67;)"
                           R"("45.Byte";0x8C;)"
                           R"("46.Byte";0xB1;)"
                           R"("47.Byte";0xD6;)"
                           "\n";

class RawBytes : public Dialogue
{
  protected:
    static constexpr int NOTHING_SHOWN = 0; // no ReadoutMode

    RawBytes()
    {
        open_link();
        memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
        memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
        strcpy(stm_link.message, "the last report");
        answer(1, ECHO);
    }

    // Ready in the first poll, with these bytes.
    void ready_with(const Bytes &bytes)
    {
        answer(2, {0x55});
        answer(3, bytes);
    }

    static void read(int mode) { stm_read_raw_bytes(mode, poll, output); }
};

class OtherMode : public RawBytes, public testing::WithParamInterface<int>
{
};

const Transcript CONVERSATION = joined({COMMAND, POLL, FETCHED});

size_t measured = 0;

int measure(const char *text, int)
{
    measured = strlen(text);
    return 0;
}

} // namespace

TEST_F(RawBytes, are_asked_for_awaited_and_fetched_without_a_length_or_a_synchronisation)
{
    ready_with(FIFTY);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened({
        "exchange 8: 01 00*6 AA",
        "exchange 1: 44",
        "poll",
        "exchange 50: 66*50",
    }));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(RawBytes, as_text_are_48_lines_in_one_piece)
{
    ready_with(FIFTY);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({CONVERSATION, {say(LISTED, 0)}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(RawBytes, as_csv_are_48_named_values_in_one_line)
{
    ready_with(FIFTY);
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({CONVERSATION, {say(COLUMNS, 0)}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

// 32 characters of headings, five for each of 4096 bytes, and a newline.
TEST_F(RawBytes, as_hex_are_the_whole_receive_buffer)
{
    ready_with(FIFTY);
    read(READOUT_HEX);
    std::string text = "\nByte delay: 0\nReceived value: \n";
    for (const uint8_t byte : FIFTY) {
        text += "0x" + hex({byte}) + " ";
    }
    for (int i = 50; i < 4096; ++i) {
        text += "0x00 ";
    }
    text += "\n";
    EXPECT_EQ(text.size(), 20'513U);
    EXPECT_TRUE(happened(joined({CONVERSATION, {say(text, 0)}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(RawBytes, longest_texts_have_681_and_711_characters)
{
    ready_with(bytes_of(50, 0xFF));
    stm_read_raw_bytes(READOUT_TEXT, poll, measure);
    EXPECT_EQ(measured, 681U);
    forget();
    stm_read_raw_bytes(READOUT_CSV, poll, measure);
    EXPECT_EQ(measured, 711U);
}

TEST_F(RawBytes, after_a_timeout_are_fetched_and_shown_all_the_same)
{
    answer(303, FIFTY);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({
        COMMAND,
        times(301, POLL),
        {R"(say 0 "SPI timeout\n")"},
        FETCHED,
        {say(LISTED, 0)},
    })));
    EXPECT_STREQ(stm_link.message, "SPI timeout\n");
}

TEST_P(OtherMode, shows_nothing)
{
    ready_with(FIFTY);
    read(GetParam());
    EXPECT_TRUE(happened(CONVERSATION));
    EXPECT_STREQ(stm_link.message, "the last report");
}

INSTANTIATE_TEST_SUITE_P(Each, OtherMode,
                         testing::Values(0, 4, 5, -1, 255, 257, 258, 259, INT32_MAX, INT32_MIN));

TEST_F(RawBytes, both_buffers_are_zeroed_before_the_command)
{
    watch = [this](const spi_ioc_transfer &) {
        EXPECT_EQ(bytes_in(stm_link.tx_buffer),
                  chained({{0x01, 0, 0, 0, 0, 0, 0, 0xAA}, bytes_of(4088, 0x00)}));
        EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x00));
        watch = nullptr;
    };
    ready_with(FIFTY);
    read(NOTHING_SHOWN);
    EXPECT_FALSE(watch);
}

TEST_F(RawBytes, buffers_are_not_zeroed_again_before_polling)
{
    int exchanges = 0;
    watch = [&exchanges](const spi_ioc_transfer &) {
        if (++exchanges == 2) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer),
                      chained({{0x44, 0, 0, 0, 0, 0, 0, 0xAA}, bytes_of(4088, 0x00)}));
            EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({ECHO, bytes_of(4088, 0x00)}));
        }
    };
    ready_with(FIFTY);
    read(NOTHING_SHOWN);
    EXPECT_EQ(exchanges, 3);
}

TEST_F(RawBytes, answer_to_the_command_lies_behind_the_polled_byte_until_the_bytes_come)
{
    int exchanges = 0;
    watch = [&exchanges](const spi_ioc_transfer &) {
        if (++exchanges == 4) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
            EXPECT_EQ(
                bytes_in(stm_link.rx_buffer),
                chained({{0x55, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7}, bytes_of(4088, 0x00)}));
        }
    };
    answer(3, {0x55});
    answer(4, FIFTY);
    read(NOTHING_SHOWN);
    EXPECT_EQ(exchanges, 4);
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({FIFTY, bytes_of(4046, 0x00)}));
}

TEST_F(RawBytes, short_buffers_are_not_used)
{
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    memset(stm_link.rx_short, 0x22, sizeof(stm_link.rx_short));
    ready_with(FIFTY);
    read(READOUT_TEXT);
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
    EXPECT_EQ(bytes_in(stm_link.rx_short), bytes_of(10, 0x22));
}
