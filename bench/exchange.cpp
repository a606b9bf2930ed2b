// What an exchange receives depends only on its length.
#include "bench/exchange.hpp"

#include <linux/spi/spidev.h>

#include <cstdarg>
#include <cstring>

namespace bench
{

namespace
{

constexpr uint8_t READY = 0x55;
constexpr uint8_t LENGTH[] = {BLOCK_SIZE >> 8, BLOCK_SIZE & 0xFF};

// Lengths of exchanges.
constexpr uint32_t POLL = 1;
constexpr uint32_t FETCH_LENGTH = 2;
constexpr uint32_t REQUEST = 8;
constexpr uint32_t HEADER = 20; // of the live stream: 0x55, the length, and the first data
constexpr uint32_t HEADER_DATA = HEADER - 1 - sizeof(LENGTH);
constexpr uint32_t FRAME = 1034;
constexpr uint32_t SYNCHRONISATION = 4096;

const uint8_t *blocks = nullptr;
uint32_t block = 0;
uint32_t delivered = 0; // of the block

void deliver(uint8_t *rx, uint32_t length)
{
    memcpy(rx, blocks + size_t{block} * BLOCK_SIZE + delivered, length);
    delivered += length;
    if (delivered == BLOCK_SIZE) {
        block = (block + 1) % BLOCK_COUNT;
        delivered = 0;
    }
}

// A header may be polled for again: it always starts its block.
void deliver_header(uint8_t *rx)
{
    rx[0] = READY;
    memcpy(rx + 1, LENGTH, sizeof(LENGTH));
    delivered = 0;
    deliver(rx + 1 + sizeof(LENGTH), HEADER_DATA);
}

int exchange(const spi_ioc_transfer &transfer)
{
    auto *rx = reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(transfer.rx_buf));
    switch (transfer.len) {
    case POLL:
        rx[0] = READY;
        break;
    case FETCH_LENGTH:
        memcpy(rx, LENGTH, sizeof(LENGTH));
        break;
    case HEADER:
        deliver_header(rx);
        break;
    case REQUEST:
    case FRAME:
    case SYNCHRONISATION:
        break;
    default:
        deliver(rx, transfer.len);
        break;
    }
    return static_cast<int>(transfer.len);
}

} // namespace

void serve(const DataSet &set)
{
    blocks = set.records.data();
    block = 0;
    delivered = 0;
}

} // namespace bench

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __wrap_ioctl(int, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    const void *argument = va_arg(arguments, const void *);
    va_end(arguments);
    return bench::exchange(*static_cast<const spi_ioc_transfer *>(argument));
}
