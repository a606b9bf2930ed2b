// Goal: the one exchange sends what it is told, and refuses what the buffers cannot hold.
#include "link/link.hpp"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <climits>
#include <cstring>

using namespace stm;

namespace
{

class Exchanging : public Dialogue
{
  protected:
    Exchanging() { stm_link.spi_fd = DEVICE; }

    static int exchange_long(int32_t length)
    {
        return stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer, length);
    }
};

class RefusedLength : public Exchanging, public testing::WithParamInterface<int32_t>
{
};

class CommandBytes : public Dialogue
{
};

uint64_t address_of(const void *buffer)
{
    return reinterpret_cast<uintptr_t>(buffer);
}

} // namespace

TEST_F(Exchanging, returns_what_the_driver_returns)
{
    stm_link.tx_buffer[0] = 0x91;
    EXPECT_EQ(exchange_long(3), 3);
    EXPECT_TRUE(happened({"exchange 3: 91 00 00"}));
}

TEST_F(Exchanging, byte_by_byte_the_answer_stands_where_the_question_stood)
{
    answer(1, {0x01, 0x02, 0x03});
    memset(stm_link.rx_buffer, 0x5A, sizeof(stm_link.rx_buffer));
    exchange_long(3);
    EXPECT_EQ(Bytes(stm_link.rx_buffer, stm_link.rx_buffer + 4), Bytes({0x01, 0x02, 0x03, 0x5A}));
}

TEST_F(Exchanging, whole_buffer_is_the_longest)
{
    EXPECT_EQ(exchange_long(4096), 4096);
    EXPECT_TRUE(happened({"exchange 4096: 00*4096"}));
}

TEST_F(Exchanging, no_bytes_are_an_exchange_too)
{
    stm_link.rx_buffer[0] = 0x5A;
    EXPECT_EQ(exchange_long(0), 0);
    EXPECT_TRUE(happened({"exchange 0:"}));
    EXPECT_EQ(stm_link.rx_buffer[0], 0x5A);
}

TEST_F(Exchanging, short_buffers_are_exchanged_likewise)
{
    stm_link.tx_short[0] = 0x44;
    EXPECT_EQ(stm_transfer(stm_link.tx_short, stm_link.rx_short, 8), 8);
    EXPECT_TRUE(happened({"short exchange 8: 44 00*7"}));
}

TEST_F(Exchanging, failure_is_negative_and_keeps_the_reason)
{
    fail_exchange(1, ESHUTDOWN);
    EXPECT_LT(exchange_long(1), 0);
    EXPECT_EQ(errno, ESHUTDOWN);
    EXPECT_TRUE(happened({"exchange 1: 00"}));
}

TEST_F(Exchanging, of_a_given_descriptor_only_the_length_changes)
{
    link_prepare_transfer(stm_link.transfer);
    stm_link.transfer.len = 99;
    const spi_ioc_transfer *used = nullptr;
    watch = [&used](const spi_ioc_transfer &descriptor) { used = &descriptor; };
    EXPECT_EQ(stm_transfer(stm_link.transfer, 2), 2);
    EXPECT_EQ(used, &stm_link.transfer);
    EXPECT_TRUE(happened({"exchange 2: 00 00"}));

    spi_ioc_transfer expected = {};
    expected.tx_buf = address_of(stm_link.tx_buffer);
    expected.rx_buf = address_of(stm_link.rx_buffer);
    expected.len = 2;
    EXPECT_EQ(memcmp(&stm_link.transfer, &expected, sizeof(expected)), 0);
}

TEST_F(Exchanging, preparing_zeroes_all_that_a_descriptor_held)
{
    spi_ioc_transfer descriptor;
    memset(&descriptor, 0xEE, sizeof(descriptor));
    link_prepare_transfer(descriptor);

    spi_ioc_transfer expected = {};
    expected.tx_buf = address_of(stm_link.tx_buffer);
    expected.rx_buf = address_of(stm_link.rx_buffer);
    EXPECT_EQ(memcmp(&descriptor, &expected, sizeof(expected)), 0);
    EXPECT_TRUE(happened({}));
}

TEST_P(RefusedLength, is_too_much_for_the_driver_and_never_reaches_it)
{
    errno = 0;
    EXPECT_LT(exchange_long(GetParam()), 0);
    EXPECT_EQ(errno, EMSGSIZE);
    errno = 0;
    link_prepare_transfer(stm_link.transfer);
    EXPECT_LT(stm_transfer(stm_link.transfer, GetParam()), 0);
    EXPECT_EQ(errno, EMSGSIZE);
    EXPECT_TRUE(happened({}));
}

INSTANTIATE_TEST_SUITE_P(Outside, RefusedLength, testing::Values(-1, 4097, INT_MIN, INT_MAX));

TEST_F(CommandBytes, are_the_first_48_of_both_buffers)
{
    memset(stm_link.tx_buffer, 0x66, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0x5A, sizeof(stm_link.rx_buffer));
    link_clear_command_bytes();
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({bytes_of(48, 0), bytes_of(4048, 0x66)}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({bytes_of(48, 0), bytes_of(4048, 0x5A)}));
    EXPECT_TRUE(happened({}));
}

TEST_F(Exchanging, result_is_that_of_the_system_call)
{
    for (const int result : {0, 1, 4096}) {
        exchange_result = result;
        EXPECT_EQ(stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer, 5), result);
    }
}
