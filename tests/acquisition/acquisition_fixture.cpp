// The co-processor's part and the transcripts that the tests share.
#include "tests/acquisition/acquisition_fixture.hpp"

#include <cstring>

const Bytes FRAME_ECHO = {0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7};

namespace
{

constexpr char LAST_REPORT[] = "the last report";

} // namespace

Acquisition::Acquisition()
{
    open_link();
    begin_again();
}

void Acquisition::begin_again()
{
    forget();
    scripted = 0;
    memset(stm_link.tx_buffer, STALE_TX, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, STALE_RX, sizeof(stm_link.rx_buffer));
    strcpy(stm_link.message, LAST_REPORT);
}

void Acquisition::ready_with(uint16_t answer)
{
    this->answer(++scripted, FRAME_ECHO);
    this->answer(++scripted, {0x55});
    this->answer(++scripted, {static_cast<uint8_t>(answer), static_cast<uint8_t>(answer >> 8)});
}

void Acquisition::announce(uint16_t length, const Bytes &reply)
{
    ready_with(length);
    answer(++scripted, reply);
}

void Acquisition::reply_with(const Bytes &reply)
{
    announce(static_cast<uint16_t>(reply.size()), reply);
}

void Acquisition::fail_reply(uint16_t length, int error)
{
    ready_with(length);
    fail_exchange(++scripted, error);
}

void Acquisition::fail_frame(int error)
{
    fail_exchange(++scripted, error);
}

testing::AssertionResult Acquisition::message_is_untouched()
{
    if (strcmp(stm_link.message, LAST_REPORT) == 0) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "the message buffer holds " << quoted(stm_link.message);
}

std::string frame(uint8_t code, const Bytes &params)
{
    Bytes six = params;
    six.resize(6, 0x00);
    return exchange(chained({{code}, six, {0xAA}}));
}

Transcript transaction(uint8_t code, const Bytes &params)
{
    return {frame(code, params), "exchange 1: 44", "poll", "sleep 1000", "exchange 2: 00 00"};
}

Transcript failed_transaction(int exchange_number, uint8_t code, const Bytes &params)
{
    switch (exchange_number) {
    case 1:
        return {frame(code, params), R"(perror "Error stm_com_funcs: SPI command \n" EIO)"};
    case 2:
        return {frame(code, params), "exchange 1: 44",
                R"(perror "Error stm_com_funcs: SPI wait for ACK\n" EIO)"};
    default:
        return joined(
            {transaction(code, params), {R"(perror "Error stm_com_funcs: SPI datasize \n" EIO)"}});
    }
}

Transcript stopped_transaction(uint8_t code, const Bytes &params)
{
    return {frame(code, params), "exchange 1: 44", "poll"};
}

Transcript timed_out_transaction(uint8_t code, const Bytes &params)
{
    return joined({{frame(code, params)},
                   times(3001, {"exchange 1: 44", "poll", "sleep 1000"}),
                   {R"(say 0 "Error stm_com_funcs: SPI timeout\n")", "exchange 2: 00 00"}});
}

Transcript reply(size_t length)
{
    return {exchange(bytes_of(length, 0x66))};
}

Transcript query(uint8_t code, const Bytes &params, size_t length)
{
    return joined({transaction(code, params), reply(length)});
}
