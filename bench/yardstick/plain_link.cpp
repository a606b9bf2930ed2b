// Exchanges of the yardsticks.
#include "bench/yardstick/plain_link.hpp"

#include <linux/spi/spidev.h>
#include <sys/ioctl.h>

#include <cstring>

namespace bench
{

void PlainLink::clear()
{
    memset(tx, 0, sizeof(tx));
    memset(rx, 0, sizeof(rx));
}

void PlainLink::exchange(uint32_t length)
{
    exchange(rx, length);
}

void PlainLink::fetch(uint32_t length)
{
    fetch_behind(0, length);
}

void PlainLink::fetch_behind(uint32_t held, uint32_t length)
{
    memset(tx, 0x66, sizeof(tx));
    exchange(rx + held, length);
}

void PlainLink::request(uint8_t command, uint8_t second)
{
    const uint8_t frame[8] = {command, second, 0, 0, 0, 0, 0, 0xAA};
    memcpy(tx, frame, sizeof(frame));
    uint8_t unused[sizeof(frame)];
    exchange(unused, sizeof(frame)); // the block in rx stays
}

void PlainLink::exchange(uint8_t *to, uint32_t length)
{
    spi_ioc_transfer transfer = {};
    transfer.tx_buf = reinterpret_cast<uintptr_t>(tx);
    transfer.rx_buf = reinterpret_cast<uintptr_t>(to);
    transfer.len = length;
    ioctl(-1, SPI_IOC_MESSAGE(1), &transfer);
}

} // namespace bench
