// Goal: every operation that is a parameter command sends its own frame, hands its callbacks and
// its result on, and leaves the same traces in the link.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

const Transcript POLL = {"exchange 1: 44", "poll", "sleep 1000"};
const Transcript ANSWER = {"exchange 2: 00 00"};

struct Call {
    const char *name;
    int32_t (*call)();
    Transcript frame;
};

int32_t param_command()
{
    const uint8_t params[6] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66};
    return stm_param_command(0x6F, params, Dialogue::poll, Dialogue::output);
}

int32_t command()
{
    return stm_command(0x99, 0x11, 0x22, 0x33, 0x44, Dialogue::poll, Dialogue::output);
}

int32_t command_r()
{
    return stm_command_r(Dialogue::poll, Dialogue::output);
}

int32_t command_q()
{
    return stm_command_q(Dialogue::poll, Dialogue::output);
}

int32_t command_c()
{
    return stm_command_c(Dialogue::poll, Dialogue::output);
}

int32_t command_d()
{
    return stm_command_d(Dialogue::poll, Dialogue::output);
}

int32_t command_3()
{
    return stm_command_3(Dialogue::poll, Dialogue::output);
}

int32_t command_2()
{
    return stm_command_2(Dialogue::poll, Dialogue::output);
}

int32_t write_byte()
{
    return stm_write_byte(0x1234, 0x56, Dialogue::poll, Dialogue::output);
}

class ParameterCommand : public Dialogue, public testing::WithParamInterface<Call>
{
  protected:
    ParameterCommand()
    {
        open_link();
        strcpy(stm_link.message, "the last report");
    }

    // Ready in the first poll, with this answer.
    void answer_at_once(const Bytes &answer_bytes)
    {
        answer(2, {0x55});
        answer(3, answer_bytes);
    }
};

class Placeholder : public Dialogue
{
};

Bytes from(size_t first, const uint8_t (&buffer)[4096])
{
    return Bytes(buffer + first, buffer + 4096);
}

} // namespace

TEST_P(ParameterCommand, sends_its_frame_and_returns_the_answer)
{
    answer_at_once({0xCD, 0xAB});
    EXPECT_EQ(GetParam().call(), 0xABCD);
    EXPECT_TRUE(happened(joined({GetParam().frame, POLL, ANSWER})));
}

TEST_P(ParameterCommand, hands_its_callbacks_on)
{
    type_line(2, "s\n");
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_TRUE(happened(joined({GetParam().frame, POLL, {"exchange 1: 44", "poll"}})));
    forget();
    type_line(2, "");
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_EQ(texts, Transcript({"say 0 \"Error stm_com_funcs: SPI timeout\\n\""}));
}

TEST_P(ParameterCommand, returns_the_failure)
{
    fail_exchange(1, EIO);
    EXPECT_EQ(GetParam().call(), -1);
    EXPECT_TRUE(happened(joined({
        GetParam().frame,
        {"perror \"Error stm_com_funcs: SPI command \\n\" EIO"},
    })));
}

TEST_P(ParameterCommand, clears_exactly_48_bytes_of_both_buffers)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    int exchanges = 0;
    watch = [&exchanges](const spi_ioc_transfer &) {
        if (++exchanges == 1) {
            EXPECT_EQ(from(8, stm_link.tx_buffer),
                      chained({bytes_of(40, 0x00), bytes_of(4048, 0x5A)}));
            EXPECT_EQ(from(0, stm_link.rx_buffer),
                      chained({bytes_of(48, 0x00), bytes_of(4048, 0xA5)}));
        }
    };
    answer_at_once({0x34, 0x12});
    EXPECT_EQ(GetParam().call(), 0x1234);
    EXPECT_EQ(exchanges, 3);
    EXPECT_EQ(from(8, stm_link.tx_buffer), chained({bytes_of(40, 0x00), bytes_of(4048, 0x5A)}));
    EXPECT_EQ(from(8, stm_link.rx_buffer), chained({bytes_of(40, 0x00), bytes_of(4048, 0xA5)}));
}

TEST_P(ParameterCommand, has_descriptors_of_its_own)
{
    memset(static_cast<void *>(&stm_link.transfer), 0xEE, sizeof(stm_link.transfer));
    const spi_ioc_transfer shared = stm_link.transfer;
    watch = [](const spi_ioc_transfer &used) { EXPECT_NE(&used, &stm_link.transfer); };
    answer_at_once({});
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_EQ(memcmp(&stm_link.transfer, &shared, sizeof(shared)), 0);
}

TEST_P(ParameterCommand, leaves_the_message_and_the_short_buffers_alone)
{
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    memset(stm_link.rx_short, 0x22, sizeof(stm_link.rx_short));
    answer_at_once({});
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_STREQ(stm_link.message, "the last report");
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
    EXPECT_EQ(bytes_in(stm_link.rx_short), bytes_of(10, 0x22));
}

INSTANTIATE_TEST_SUITE_P(
    Each, ParameterCommand,
    testing::Values(Call{"param_command", param_command, {"exchange 8: 6F 11 22 33 44 55 66 AA"}},
                    Call{"command", command, {"exchange 8: 99 11 22 33 44 00 00 AA"}},
                    Call{"r", command_r, {"exchange 8: 72 00*6 AA"}},
                    Call{"q", command_q, {"exchange 8: 71 00*6 AA"}},
                    Call{"c", command_c, {"exchange 8: 63 00*6 AA"}},
                    Call{"d", command_d, {"exchange 8: 64 00*6 AA"}},
                    Call{"3", command_3, {"exchange 8: 33 00*6 AA"}},
                    Call{"2", command_2, {"exchange 8: 32 00*6 AA"}},
                    Call{"write_byte", write_byte, {"exchange 8: 61 34 12 56 00 00 00 AA"}}),
    [](const auto &each) { return each.param.name; });

TEST_F(Placeholder, says_that_it_is_none_and_sends_nothing)
{
    strcpy(stm_link.message, "the last report");
    stm_not_implemented(0, 0, output);
    stm_not_implemented(-1, 77, output);
    EXPECT_TRUE(happened({
        "say 0 \"not implemented\\n\"",
        "say 0 \"not implemented\\n\"",
    }));
    EXPECT_STREQ(stm_link.message, "the last report");
}
