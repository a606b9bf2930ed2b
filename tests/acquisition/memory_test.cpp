// Goal: reads by address fetch the byte that was asked for, and put numbers together with the signs
// that failures leave in them.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace
{

struct Failures {
    Bytes failing; // numbers of the reads, from 0
    uint32_t result;
};

// A byte that is read, and what is printed of it.
Transcript byte_at(uint16_t address, const char *text)
{
    return joined(
        {query(0x62, {static_cast<uint8_t>(address), static_cast<uint8_t>(address >> 8)}, 1),
         {say(text)}});
}

Transcript failed_byte_at(uint16_t address)
{
    return joined(
        {query(0x62, {static_cast<uint8_t>(address), static_cast<uint8_t>(address >> 8)}, 1),
         {R"(perror "SPI datatransfer" EIO)"}});
}

bool contains(const Bytes &bytes, size_t value)
{
    return std::find(bytes.begin(), bytes.end(), value) != bytes.end();
}

using Memory = Acquisition;

class FailingReads : public Acquisition, public testing::WithParamInterface<Failures>
{
};

} // namespace

TEST_F(Memory, character_is_printed_and_returned)
{
    for (const auto &[byte, text] : {std::pair<uint8_t, const char *>{'A', "A\n"},
                                     {'%', "%\n"},
                                     {0x01, "\x01\n"},
                                     {0x7F, "\x7F\n"},
                                     {0x80, "\x80\n"},
                                     {0xFF, "\xFF\n"},
                                     {'\n', "\n\n"}}) {
        begin_again();
        reply_with({byte});
        EXPECT_EQ(stm_read_char(0x1234, poll, output), byte);
        EXPECT_TRUE(happened(byte_at(0x1234, text)));
        EXPECT_TRUE(message_is_untouched());
    }
}

TEST_F(Memory, character_0_ends_its_own_text)
{
    reply_with({0x00});
    EXPECT_EQ(stm_read_char(0x1234, poll, output), 0);
    EXPECT_TRUE(happened(byte_at(0x1234, "")));
}

TEST_F(Memory, byte_is_printed_as_a_number_without_a_sign)
{
    for (const auto &[byte, text] : {std::pair<uint8_t, const char *>{0, "0\n"},
                                     {9, "9\n"},
                                     {127, "127\n"},
                                     {128, "128\n"},
                                     {255, "255\n"}}) {
        begin_again();
        reply_with({byte});
        EXPECT_EQ(stm_read_byte(0xFEDC, poll, output), byte);
        EXPECT_TRUE(happened(byte_at(0xFEDC, text)));
        EXPECT_TRUE(message_is_untouched());
    }
}

TEST_F(Memory, first_byte_of_a_longer_reply_counts)
{
    reply_with({0x41, 0x42, 0x43});
    reply_with({0x41, 0x42, 0x43});
    EXPECT_EQ(stm_read_char(0x1234, poll, output), 0x41);
    EXPECT_EQ(stm_read_byte(0x1234, poll, output), 0x41);
    EXPECT_TRUE(happened(joined({query(0x62, {0x34, 0x12}, 3),
                                 {R"(say 0 "A\n")"},
                                 query(0x62, {0x34, 0x12}, 3),
                                 {R"(say 0 "65\n")"}})));
}

TEST_F(Memory, of_a_stopped_read_the_byte_of_the_last_poll_is_taken)
{
    answer(2, {0x42});
    type_line(1, "s\n");
    EXPECT_EQ(stm_read_char(0x1234, poll, output), 0x42);
    begin_again();
    EXPECT_EQ(stm_read_byte(0x1234, poll, output), 0x42);
    EXPECT_EQ(texts, Transcript({R"(say 0 "66\n")"}));
}

TEST_F(Memory, character_that_cannot_be_read_is_255)
{
    output_result = 3;
    fail_reply(1, EIO);
    EXPECT_EQ(stm_read_char(0x1234, poll, output), 255);
    EXPECT_TRUE(happened(failed_byte_at(0x1234)));
}

TEST_F(Memory, byte_that_cannot_be_read_is_minus_1)
{
    output_result = 3;
    fail_reply(1, EIO);
    EXPECT_EQ(stm_read_byte(0x1234, poll, output), -1);
    EXPECT_TRUE(happened(failed_byte_at(0x1234)));
}

TEST_F(Memory, result_after_a_failing_transaction_is_that_of_a_failing_reply)
{
    for (const int failing : {1, 2, 3}) {
        begin_again();
        reply_with({0x41});
        fail_exchange(failing, EIO);
        EXPECT_EQ(stm_read_char(0x1234, poll, output), 255);
        begin_again();
        EXPECT_EQ(stm_read_byte(0x1234, poll, output), -1);
        EXPECT_TRUE(happened(failed_transaction(failing, 0x62, {0x34, 0x12})));
        EXPECT_TRUE(message_is_untouched());
    }
}

TEST_F(Memory, result_after_a_reply_that_is_too_long_is_that_of_a_failure)
{
    announce(4097, {0x41});
    EXPECT_EQ(stm_read_char(0x1234, poll, output), 255);
    begin_again();
    EXPECT_EQ(stm_read_byte(0x1234, poll, output), -1);
}

TEST_F(Memory, number_has_its_highest_byte_at_its_lowest_address)
{
    for (const uint8_t byte : Bytes{0x12, 0x34, 0x56, 0x78}) {
        reply_with({byte});
    }
    EXPECT_EQ(stm_read_u32_be(0x20FE, poll, output), 0x12345678U);
    EXPECT_TRUE(happened(joined({byte_at(0x20FE, "18\n"), byte_at(0x20FF, "52\n"),
                                 byte_at(0x2100, "86\n"), byte_at(0x2101, "120\n")})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(Memory, bytes_above_127_spread_no_sign)
{
    for (const uint8_t byte : Bytes{0x00, 0xF1, 0x80, 0xFF}) {
        reply_with({byte});
    }
    EXPECT_EQ(stm_read_u32_be(0, poll, output), 0x00F180FFU);
}

TEST_F(Memory, addresses_of_a_number_wrap)
{
    for (const uint8_t byte : Bytes{0xFE, 0x01, 0x02, 0x03}) {
        reply_with({byte});
    }
    EXPECT_EQ(stm_read_u32_be(0xFFFE, poll, output), 0xFE010203U);
    EXPECT_TRUE(happened(joined({byte_at(0xFFFE, "254\n"), byte_at(0xFFFF, "1\n"),
                                 byte_at(0x0000, "2\n"), byte_at(0x0001, "3\n")})));
}

TEST_P(FailingReads, fill_their_byte_and_all_above_it)
{
    const Bytes bytes = {0x12, 0x34, 0x56, 0x78};
    const char *const texts_of[] = {"18\n", "52\n", "86\n", "120\n"};
    Transcript expected;
    for (size_t i = 0; i < 4; ++i) {
        const auto address = static_cast<uint16_t>(0x0800 + i);
        if (contains(GetParam().failing, i)) {
            fail_reply(1, EIO);
            expected = joined({expected, failed_byte_at(address)});
        } else {
            reply_with({bytes[i]});
            expected = joined({expected, byte_at(address, texts_of[i])});
        }
    }
    EXPECT_EQ(stm_read_u32_be(0x0800, poll, output), GetParam().result);
    EXPECT_TRUE(happened(expected));
}

INSTANTIATE_TEST_SUITE_P(Each, FailingReads,
                         testing::Values(Failures{{0}, 0xFF345678}, Failures{{1}, 0xFFFF5678},
                                         Failures{{2}, 0xFFFFFF78}, Failures{{3}, 0xFFFFFFFF},
                                         Failures{{0, 1}, 0xFFFF5678}, Failures{{0, 2}, 0xFFFFFF78},
                                         Failures{{0, 1, 2, 3}, 0xFFFFFFFF}));

TEST_F(Memory, number_goes_on_after_a_failing_transaction)
{
    reply_with({0x12});
    fail_frame(EIO);
    reply_with({0x56});
    reply_with({0x78});
    EXPECT_EQ(stm_read_u32_be(0x0010, poll, output), 0xFFFF5678U);
    EXPECT_TRUE(happened(joined({byte_at(0x0010, "18\n"), failed_transaction(1, 0x62, {0x11, 0x00}),
                                 byte_at(0x0012, "86\n"), byte_at(0x0013, "120\n")})));
}
