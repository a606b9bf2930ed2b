/* How the probe's answers are printed, and the few calls that most questions make. */
#define _GNU_SOURCE
#include "tests/kernel/probe/answer.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

uint8_t sent[BUFFER_SIZE];
uint8_t received[BUFFER_SIZE];
void *const nowhere = (void *)16;

static long say_as(const char *what, long result, int with_number)
{
    if (result < 0) {
        printf("%s: %s\n", what, strerrorname_np(errno));
    } else if (with_number) {
        printf("%s: %ld\n", what, result);
    } else {
        printf("%s: ok\n", what);
    }
    return result;
}

long say(const char *what, long result)
{
    return say_as(what, result, 1);
}

long say_whether(const char *what, long result)
{
    return say_as(what, result, 0);
}

int open_device(int flags)
{
    return open(DEVICE, flags);
}

struct spi_ioc_transfer transfer(const void *tx, void *rx, uint32_t length)
{
    struct spi_ioc_transfer descriptor;
    memset(&descriptor, 0, sizeof(descriptor));
    descriptor.tx_buf = (uintptr_t)tx;
    descriptor.rx_buf = (uintptr_t)rx;
    descriptor.len = length;
    return descriptor;
}

long exchange(int fd, const void *tx, void *rx, uint32_t length)
{
    struct spi_ioc_transfer descriptor = transfer(tx, rx, length);
    return ioctl(fd, SPI_IOC_MESSAGE(1), &descriptor);
}

uint32_t speed_of(int fd)
{
    uint32_t speed_hz = 0;
    ioctl(fd, SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz);
    return speed_hz;
}

long set_speed(int fd, uint32_t speed_hz)
{
    return ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz);
}

void *read_only_page(void)
{
    return mmap(NULL, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}
