// Goal: the top block is read byte by byte in the order of its addresses, and each four of its
// bytes come to lie in reverse.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <cerrno>

namespace
{

class TopBlock : public Acquisition
{
  protected:
    // The 48 bytes are 0x80, 0x81 and so on.
    void script_all()
    {
        for (uint8_t i = 0; i < 48; ++i) {
            reply_with({static_cast<uint8_t>(0x80 + i)});
        }
    }

    // Reads into the middle of these.
    Bytes around = bytes_of(8 + 48 + 8, 0xEE);

    uint32_t read() { return stm_read_top_block(around.data() + 8, poll, output); }
};

Transcript byte_at(uint16_t address, unsigned byte)
{
    return joined(
        {query(0x62, {static_cast<uint8_t>(address), static_cast<uint8_t>(address >> 8)}, 1),
         {say(std::to_string(byte) + "\n")}});
}

const Bytes WORDS = {0x83, 0x82, 0x81, 0x80, 0x87, 0x86, 0x85, 0x84, 0x8B, 0x8A, 0x89, 0x88,
                     0x8F, 0x8E, 0x8D, 0x8C, 0x93, 0x92, 0x91, 0x90, 0x97, 0x96, 0x95, 0x94,
                     0x9B, 0x9A, 0x99, 0x98, 0x9F, 0x9E, 0x9D, 0x9C, 0xA3, 0xA2, 0xA1, 0xA0,
                     0xA7, 0xA6, 0xA5, 0xA4, 0xAB, 0xAA, 0xA9, 0xA8, 0xAF, 0xAE, 0xAD, 0xAC};

} // namespace

TEST_F(TopBlock, is_read_from_0xFFCF_to_0xFFFE)
{
    script_all();
    read();
    Transcript expected;
    for (unsigned i = 0; i < 48; ++i) {
        expected = joined({expected, byte_at(static_cast<uint16_t>(0xFFCF + i), 0x80 + i)});
    }
    EXPECT_TRUE(happened(expected));
    EXPECT_EQ(texts.size(), 48U);
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(TopBlock, lies_in_reverse_within_each_word_and_nowhere_else)
{
    script_all();
    read();
    EXPECT_EQ(around, chained({bytes_of(8, 0xEE), WORDS, bytes_of(8, 0xEE)}));
}

TEST_F(TopBlock, returns_its_last_word)
{
    script_all();
    EXPECT_EQ(read(), 0xACADAEAFU);
}

TEST_F(TopBlock, goes_on_after_a_byte_that_cannot_be_read)
{
    script_all();
    fail_exchange(4 * 6, EIO); // the reply at 0xFFD4, the second byte of the second word
    EXPECT_EQ(read(), 0xACADAEAFU);
    Bytes words = WORDS;
    words[6] = 0xFF;
    words[7] = 0xFF;
    EXPECT_EQ(around, chained({bytes_of(8, 0xEE), words, bytes_of(8, 0xEE)}));
    EXPECT_EQ(texts.size(), 47U);
}

TEST_F(TopBlock, of_a_dead_link_is_all_ones)
{
    for (int i = 0; i < 48; ++i) {
        fail_frame(EIO);
    }
    EXPECT_EQ(read(), 0xFFFFFFFFU);
    EXPECT_EQ(around, chained({bytes_of(8, 0xEE), bytes_of(48, 0xFF), bytes_of(8, 0xEE)}));
    EXPECT_TRUE(texts.empty());
}
