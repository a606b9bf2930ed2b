// The length of an exchange alone shows the device what it is asked for.
#include "bench/counted_device.hpp"

#include "bench/counted_data.hpp"

#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <sys/shm.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

RingBuffer counted_ring = {};

namespace
{

constexpr uint8_t READY = 0x55;
constexpr uint32_t HEADER = 20; // of a block of the stream: READY, length, the block's first bytes
constexpr uint32_t HELD = HEADER - 3;
constexpr uint32_t REST = BLOCK_BYTES - HELD;
constexpr uint32_t REQUEST = 8;
constexpr uint32_t LONGEST = 4096;

size_t turn = 0; // of the blocks

const uint8_t *take_block()
{
    const uint8_t *block = counted_blocks[turn].data();
    turn = (turn + 1) % BLOCKS;
    return block;
}

void announce(uint8_t *to)
{
    to[0] = static_cast<uint8_t>(BLOCK_BYTES >> 8);
    to[1] = static_cast<uint8_t>(BLOCK_BYTES & 0xFF);
}

[[noreturn]] void refuse(uint32_t length)
{
    fprintf(stderr, "counted_work: an exchange of %u bytes is none of a block's\n", length);
    exit(1);
}

void exchange(uint8_t *rx, uint32_t length)
{
    switch (length) {
    case REQUEST:
    case LONGEST:
        break;
    case 1:
        rx[0] = READY;
        break;
    case 2:
        announce(rx);
        break;
    case BLOCK_BYTES:
        memcpy(rx, take_block(), BLOCK_BYTES);
        break;
    case HEADER:
        rx[0] = READY;
        announce(rx + 1);
        memcpy(rx + 3, counted_blocks[turn].data(), HELD);
        break;
    case REST:
        memcpy(rx, take_block() + HELD, REST);
        break;
    default:
        refuse(length);
    }
}

void exchange_blocks(int blocks, std::initializer_list<uint32_t> lengths)
{
    static uint8_t buffer[LONGEST];
    spi_ioc_transfer descriptor = {};
    descriptor.rx_buf = reinterpret_cast<uintptr_t>(buffer);
    for (int i = 0; i < blocks; ++i) {
        for (const uint32_t length : lengths) {
            descriptor.len = length;
            ioctl(0, SPI_IOC_MESSAGE(1), &descriptor);
        }
    }
}

} // namespace

void exchange_read_blocks(int blocks)
{
    exchange_blocks(blocks, {1, 2, BLOCK_BYTES, REQUEST});
}

void exchange_stream_blocks(int blocks)
{
    exchange_blocks(blocks, {HEADER, REST, REQUEST});
}

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

int __wrap_ioctl(int, unsigned long, ...);
int __wrap_usleep(unsigned);
int __wrap_shmget(key_t, size_t, int);
void *__wrap_shmat(int, const void *, int);
int __wrap_shmctl(int, int, shmid_ds *);

int __wrap_ioctl(int, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    const auto *descriptor = va_arg(arguments, const spi_ioc_transfer *);
    va_end(arguments);
    exchange(reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(descriptor->rx_buf)),
             descriptor->len);
    return static_cast<int>(descriptor->len);
}

// Nothing counted here has a reason to wait.
int __wrap_usleep(unsigned)
{
    fputs("counted_work: a pause\n", stderr);
    exit(1);
}

int __wrap_shmget(key_t, size_t, int)
{
    return 1;
}

void *__wrap_shmat(int, const void *, int)
{
    return &counted_ring;
}

int __wrap_shmctl(int, int, shmid_ds *)
{
    return 0;
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
