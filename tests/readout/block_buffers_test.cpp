// Goal: both buffers are clear before each wait for a block, so that nothing of an earlier block
// can pass for a part of this one; and nothing else is cleared.
#include "tests/readout/block_fixture.hpp"

#include <cstring>
#include <map>

namespace
{

class BlockBuffers : public BlockDialogue
{
  protected:
    BlockBuffers()
    {
        watch = [this](const spi_ioc_transfer &) { look(); };
    }

    struct Buffers {
        Bytes tx;
        Bytes rx;
    };

    std::map<int, Buffers> seen; // before each exchange, counted from 1
    int littered = 0;            // the exchange before which both buffers are strewn with 0xEE

  private:
    void look()
    {
        const int number = static_cast<int>(seen.size()) + 1;
        seen[number] = {bytes_in(stm_link.tx_buffer), bytes_in(stm_link.rx_buffer)};
        if (number == littered) {
            memset(stm_link.tx_buffer + 1, 0xEE, sizeof(stm_link.tx_buffer) - 1);
            memset(stm_link.rx_buffer, 0xEE, sizeof(stm_link.rx_buffer));
        }
    }
};

const Bytes CLEAR = bytes_of(4096, 0x00);
const Bytes CLEAR_BUT_FOR_THE_POLL = chained({{0x44}, bytes_of(4095, 0x00)});

} // namespace

INSTANTIATE_FOR_ALL_OPERATIONS(BlockBuffers);

TEST_P(BlockBuffers, are_left_alone_by_the_first_request)
{
    serve({1});
    read(1, CSV);
    EXPECT_EQ(seen[1].tx, bytes_of(4096, STALE_TX));
    EXPECT_EQ(seen[1].rx, bytes_of(4096, STALE_RX));
}

TEST_P(BlockBuffers, are_clear_before_the_first_wait)
{
    serve({1});
    read(1, SILENT);
    EXPECT_EQ(seen[2].tx, CLEAR_BUT_FOR_THE_POLL);
    EXPECT_EQ(seen[2].rx, CLEAR);
}

TEST_P(BlockBuffers, hold_status_and_length_until_the_block_covers_them)
{
    pass_request();
    busy(1);
    ready_with(0x0102, bytes_of(0x0102, 0x00));
    read(1, SILENT);
    EXPECT_EQ(seen[3].rx, chained({{0x44}, bytes_of(4095, 0x00)}));
    EXPECT_EQ(seen[4].rx, chained({{0x55}, bytes_of(4095, 0x00)}));
    EXPECT_EQ(seen[4].tx, CLEAR);
    EXPECT_EQ(seen[5].rx, chained({{0x01, 0x02}, bytes_of(4094, 0x00)}));
    EXPECT_EQ(seen[5].tx, bytes_of(4096, 0x66));
}

TEST_P(BlockBuffers, hold_the_block_while_the_next_one_is_asked_for)
{
    const Bytes bytes = golden(0).bytes;
    pass_request();
    ready_with(bytes);
    serve({1});
    read(2, SILENT);
    EXPECT_EQ(seen[5].tx, bytes_of(4096, 0x66));
    EXPECT_EQ(seen[5].rx, chained({bytes, bytes_of(4096 - bytes.size(), 0x00)}));
}

TEST_P(BlockBuffers, are_clear_before_the_wait_for_the_next_block)
{
    pass_request();
    ready_with(records(GetParam().kind, 60));
    serve({1});
    read(61, SILENT);
    EXPECT_EQ(seen[6].tx, CLEAR_BUT_FOR_THE_POLL);
    EXPECT_EQ(seen[6].rx, CLEAR);
}

TEST_P(BlockBuffers, are_not_cleared_between_the_polls_of_a_wait)
{
    littered = 3;
    pass_request();
    busy(2);
    ready_with(golden(0).bytes);
    read(1, SILENT);
    EXPECT_EQ(seen[4].tx, chained({{0x44}, bytes_of(4095, 0xEE)}));
    EXPECT_EQ(seen[4].rx, chained({{0x44}, bytes_of(4095, 0xEE)}));
}

TEST_P(BlockBuffers, are_clear_again_after_a_time_out)
{
    littered = 1 + 301;
    pass_request();
    busy(301);
    ready_with(golden(0).bytes);
    read(1, SILENT);
    EXPECT_EQ(seen[1 + 302].tx, CLEAR_BUT_FOR_THE_POLL);
    EXPECT_EQ(seen[1 + 302].rx, CLEAR);
}

TEST_P(BlockBuffers, keep_the_short_frame_out_of_their_way)
{
    serve({1});
    read(1, HEX);
    EXPECT_EQ(bytes_in(stm_link.rx_short), chained({bytes_of(8, 0x55), {0xD8, 0xD9}}));
}
