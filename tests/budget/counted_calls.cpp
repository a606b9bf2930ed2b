// The linker sends the calls here (--wrap). They are counted, and then do what they always do; only
// shared memory is the program's own.
#include "tests/budget/counted_calls.hpp"

#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

void (*counted_exchange)(const uint8_t *tx, uint8_t *rx, size_t length) = nullptr;
RingBuffer counted_segment = {};

namespace
{

uint64_t calls = 0;

uint8_t *buffer_at(uint64_t address)
{
    return reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(address));
}

} // namespace

uint64_t calls_so_far()
{
    return calls;
}

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

int __real_close(int fd);
[[noreturn]] void __real_exit(int status);
size_t __real_fread(void *to, size_t size, size_t count, FILE *stream);
int __real_fseek(FILE *stream, long offset, int whence);
long __real_ftell(FILE *stream);
pid_t __real_getpid();
int __real_ioctl(int fd, unsigned long request, ...);
int __real_open(const char *path, int flags, ...);
void __real_perror(const char *text);
int __real_usleep(unsigned microseconds);
int __real_vfprintf(FILE *stream, const char *format, va_list arguments);

int __wrap_close(int fd)
{
    ++calls;
    return __real_close(fd);
}

[[noreturn]] void __wrap_exit(int status)
{
    ++calls;
    __real_exit(status);
}

size_t __wrap_fread(void *to, size_t size, size_t count, FILE *stream)
{
    ++calls;
    return __real_fread(to, size, count, stream);
}

int __wrap_fseek(FILE *stream, long offset, int whence)
{
    ++calls;
    return __real_fseek(stream, offset, whence);
}

long __wrap_ftell(FILE *stream)
{
    ++calls;
    return __real_ftell(stream);
}

pid_t __wrap_getpid()
{
    ++calls;
    return __real_getpid();
}

int __wrap_ioctl(int fd, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (request == SPI_IOC_MESSAGE(1) && counted_exchange != nullptr) {
        const auto *transfer = static_cast<const spi_ioc_transfer *>(argument);
        counted_exchange(buffer_at(transfer->tx_buf), buffer_at(transfer->rx_buf), transfer->len);
        return static_cast<int>(transfer->len);
    }
    ++calls;
    return __real_ioctl(fd, request, argument);
}

int __wrap_open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    ++calls;
    return __real_open(path, flags, mode);
}

void __wrap_perror(const char *text)
{
    ++calls;
    __real_perror(text);
}

int __wrap_shmget(key_t, size_t, int)
{
    ++calls;
    return 1;
}

void *__wrap_shmat(int, const void *, int)
{
    ++calls;
    return &counted_segment;
}

int __wrap_shmctl(int, int, shmid_ds *)
{
    ++calls;
    return 0;
}

int __wrap_usleep(unsigned microseconds)
{
    ++calls;
    return __real_usleep(microseconds);
}

int __wrap_vfprintf(FILE *stream, const char *format, va_list arguments)
{
    ++calls;
    return __real_vfprintf(stream, format, arguments);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
