/* Preloaded: a device behind /dev/spidev1.0 whose every answer is what was sent, plus one. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <stdarg.h>
#include <stdint.h>
#include <string.h>
#include <sys/ioctl.h>

static int device = -1;

int open(const char *path, int flags, ...)
{
    int (*next)(const char *, int, ...) = dlsym(RTLD_NEXT, "open");
    if (strcmp(path, "/dev/spidev1.0") != 0) {
        va_list arguments;
        va_start(arguments, flags);
        const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
        va_end(arguments);
        return next(path, flags, mode);
    }
    device = next("/dev/null", O_RDWR);
    return device;
}

int ioctl(int fd, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    struct spi_ioc_transfer *transfer = va_arg(arguments, struct spi_ioc_transfer *);
    va_end(arguments);
    if (fd != device || request != SPI_IOC_MESSAGE(1)) {
        return 0;
    }
    const uint8_t *sent = (const uint8_t *)(uintptr_t)transfer->tx_buf;
    uint8_t *received = (uint8_t *)(uintptr_t)transfer->rx_buf;
    if (sent[0] == 0x83) {
        errno = ETIMEDOUT;
        return -1;
    }
    for (uint32_t i = 0; i < transfer->len; ++i) {
        received[i] = (uint8_t)(sent[i] + 1);
    }
    return (int)transfer->len;
}
