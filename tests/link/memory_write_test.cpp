// Goal: bytes and texts reach the co-processor's memory a command each, and a text goes on whatever
// becomes of its characters.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <algorithm>
#include <cerrno>

using namespace stm;

namespace
{

const Transcript POLL = {"exchange 1: 44", "poll", "sleep 1000"};
const Transcript ANSWER = {"exchange 2: 00 00"};
const Transcript NOTHING = {};

// Three exchanges of a co-processor that is ready.
Transcript written(const std::string &frame)
{
    return joined({{frame}, POLL, ANSWER});
}

std::string frame_of(uint8_t low, uint8_t high, uint8_t value)
{
    return exchange({0x61, low, high, value, 0x00, 0x00, 0x00, 0xAA});
}

class MemoryWrite : public Dialogue
{
  protected:
    MemoryWrite()
    {
        open_link();
        answer_always({0x55});
    }

    static void write(const char *text) { stm_write_string(0x2010, text, poll, output); }
};

// A text that begins with e and o in turn.
Transcript pairs_written(int count)
{
    return times(count, joined({
                            written(frame_of(0x10, 0x20, 'e')),
                            written(frame_of(0x10, 0x20, 'o')),
                        }));
}

// A text that the test cuts short while it is being written.
class EndlessText : public MemoryWrite
{
  protected:
    // The characters e and o in turn, and others behind the 256th.
    void make_text(size_t length)
    {
        text.assign(length, '#');
        for (size_t i = 0; i < std::min<size_t>(length, 256); ++i) {
            text[i] = i % 2 == 0 ? 'e' : 'o';
        }
    }

    // While the frame of this number is on the wire, the text ends at an index.
    void end_text_during(int frame, size_t index)
    {
        watch = [this, frame, index](const spi_ioc_transfer &descriptor) {
            if (descriptor.len == 8 && ++frames == frame) {
                text[index] = '\0';
            }
        };
    }

    std::string text;
    int frames = 0;
};

struct Address {
    uint16_t address;
    uint8_t low;
    uint8_t high;
};

class Addresses : public MemoryWrite, public testing::WithParamInterface<Address>
{
};

} // namespace

TEST_P(Addresses, travel_low_byte_first_before_the_value)
{
    EXPECT_EQ(stm_write_byte(GetParam().address, 0x7E, poll, output), 0x0055);
    EXPECT_TRUE(happened(written(frame_of(GetParam().low, GetParam().high, 0x7E))));
}

TEST_P(Addresses, travel_likewise_before_a_character)
{
    stm_write_string(GetParam().address, "A", poll, output);
    EXPECT_TRUE(happened(written(frame_of(GetParam().low, GetParam().high, 0x41))));
}

INSTANTIATE_TEST_SUITE_P(Each, Addresses,
                         testing::Values(Address{0x0000, 0x00, 0x00}, Address{0x0001, 0x01, 0x00},
                                         Address{0x00FF, 0xFF, 0x00}, Address{0x0100, 0x00, 0x01},
                                         Address{0x1234, 0x34, 0x12}, Address{0x8000, 0x00, 0x80},
                                         Address{0xFFFE, 0xFE, 0xFF}, Address{0xFFFF, 0xFF, 0xFF}));

TEST_F(MemoryWrite, every_value_of_a_byte_can_be_written)
{
    for (int value = 0; value < 256; ++value) {
        forget();
        const auto byte = static_cast<uint8_t>(value);
        EXPECT_EQ(stm_write_byte(0x1234, byte, poll, output), 0x0055);
        EXPECT_TRUE(happened(written(frame_of(0x34, 0x12, byte)))) << "value " << value;
    }
}

TEST_F(MemoryWrite, characters_of_a_text_all_go_to_one_address)
{
    write("Hi\n");
    EXPECT_TRUE(happened(joined({
        written("exchange 8: 61 10 20 48 00 00 00 AA"),
        written("exchange 8: 61 10 20 69 00 00 00 AA"),
        written("exchange 8: 61 10 20 0A 00 00 00 AA"),
    })));
}

TEST_F(MemoryWrite, characters_above_127_are_bytes_like_others)
{
    write("\xFF\x80\x7F");
    EXPECT_TRUE(happened(joined({
        written("exchange 8: 61 10 20 FF 00 00 00 AA"),
        written("exchange 8: 61 10 20 80 00 00 00 AA"),
        written("exchange 8: 61 10 20 7F 00 00 00 AA"),
    })));
}

TEST_F(MemoryWrite, empty_text_sends_nothing)
{
    write("");
    EXPECT_TRUE(happened(NOTHING));
    EXPECT_EQ(stm_link.tx_buffer[0], 0x66);
}

TEST_F(MemoryWrite, text_goes_on_after_each_kind_of_failing_exchange)
{
    fail_exchange(1, EIO);
    fail_exchange(3, EIO);
    fail_exchange(6, EIO);
    write("abcd");
    EXPECT_TRUE(happened(joined({
        {frame_of(0x10, 0x20, 'a'), "perror \"Error stm_com_funcs: SPI command \\n\" EIO"},
        {frame_of(0x10, 0x20, 'b'), "exchange 1: 44",
         "perror \"Error stm_com_funcs: SPI wait for ACK\\n\" EIO"},
        written(frame_of(0x10, 0x20, 'c')),
        {"perror \"Error stm_com_funcs: SPI datasize \\n\" EIO"},
        written(frame_of(0x10, 0x20, 'd')),
    })));
}

TEST_F(MemoryWrite, text_goes_on_after_a_stop_line)
{
    type_line(1, "s\n");
    type_line(2, "s\n");
    write("xyz");
    EXPECT_TRUE(happened(joined({
        {frame_of(0x10, 0x20, 'x'), "exchange 1: 44", "poll"},
        {frame_of(0x10, 0x20, 'y'), "exchange 1: 44", "poll"},
        written(frame_of(0x10, 0x20, 'z')),
    })));
}

TEST_F(MemoryWrite, text_goes_on_after_a_timeout)
{
    answer_always({0x00});
    answer(3005, {0x55});
    write("xy");
    EXPECT_TRUE(happened(joined({
        {frame_of(0x10, 0x20, 'x')},
        times(3001, POLL),
        {"say 0 \"Error stm_com_funcs: SPI timeout\\n\""},
        ANSWER,
        written(frame_of(0x10, 0x20, 'y')),
    })));
}

TEST_F(MemoryWrite, text_goes_on_whatever_the_answers_are)
{
    answer(3, {0xFF, 0xFF});
    answer(6, {0x00, 0x00});
    write("xyz");
    EXPECT_TRUE(happened(joined({
        written(frame_of(0x10, 0x20, 'x')),
        written(frame_of(0x10, 0x20, 'y')),
        written(frame_of(0x10, 0x20, 'z')),
    })));
}

TEST_F(MemoryWrite, text_of_255_characters_is_written_once)
{
    std::string text;
    Transcript expected;
    for (int value = 1; value < 256; ++value) {
        text += static_cast<char>(value);
        expected = joined({expected, written(frame_of(0x10, 0x20, static_cast<uint8_t>(value)))});
    }
    write(text.c_str());
    EXPECT_TRUE(happened(expected));
}

TEST_F(EndlessText, of_256_characters_begins_again)
{
    make_text(256);
    end_text_during(258, 2);
    write(text.c_str());
    EXPECT_TRUE(happened(pairs_written(129)));
}

TEST_F(EndlessText, whose_first_character_vanishes_ends_with_its_256th)
{
    make_text(300);
    end_text_during(256, 0);
    write(text.c_str());
    EXPECT_TRUE(happened(pairs_written(128)));
}

TEST_F(EndlessText, never_comes_to_its_257th_character)
{
    make_text(300);
    end_text_during(515, 3);
    write(text.c_str());
    EXPECT_EQ(frames, 515);
    EXPECT_TRUE(happened(joined({pairs_written(257), written(frame_of(0x10, 0x20, 'e'))})));
}
