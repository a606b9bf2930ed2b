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
#include <sys/uio.h>
#include <unistd.h>

static int device = -1;

/* As the kernel finds out: it tries. */
static int is_readable(const void *address, size_t size)
{
    char copy[64];
    const struct iovec local = {copy, size};
    const struct iovec remote = {(void *)(uintptr_t)address, size};
    return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == (ssize_t)size;
}

static int is_writable(const void *address)
{
    char zero = 0;
    const struct iovec local = {&zero, 1};
    const struct iovec remote = {(void *)(uintptr_t)address, 1};
    return process_vm_writev(getpid(), &local, 1, &remote, 1, 0) == 1;
}

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
    if (!is_readable(transfer, sizeof(*transfer)) ||
        !is_readable((void *)(uintptr_t)transfer->tx_buf, 1) ||
        !is_writable((void *)(uintptr_t)transfer->rx_buf)) {
        errno = EFAULT;
        return -1;
    }
    const uint8_t *sent = (const uint8_t *)(uintptr_t)transfer->tx_buf;
    uint8_t *received = (uint8_t *)(uintptr_t)transfer->rx_buf;
    if (transfer->len > 4096) {
        errno = EMSGSIZE;
        return -1;
    }
    if (sent[0] == 0x83) {
        errno = ETIMEDOUT;
        return -1;
    }
    for (uint32_t i = 0; i < transfer->len; ++i) {
        received[i] = (uint8_t)(sent[i] + 1);
    }
    return (int)transfer->len;
}
