// The linker sends every system call of the test programs here (--wrap). What belongs to a running
// dialogue is recorded and answered there; all else, such as the test framework's own files, goes
// on to the system.
#include "tests/platform/dialogue.hpp"

#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

int __real_open(const char *path, int flags, ...);
int __real_ioctl(int fd, unsigned long request, ...);
int __real_close(int fd);
int __real_usleep(unsigned microseconds);
void __real_perror(const char *text);
[[noreturn]] void __real_exit(int status);

int __wrap_open(const char *path, int flags, ...)
{
    Dialogue *dialogue = Dialogue::running();
    if (dialogue != nullptr && strncmp(path, "/dev/spi", strlen("/dev/spi")) == 0) {
        return dialogue->on_open(path, flags);
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return __real_open(path, flags, mode);
}

int __wrap_ioctl(int fd, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    Dialogue *dialogue = Dialogue::running();
    if (dialogue != nullptr && _IOC_TYPE(request) == SPI_IOC_MAGIC) {
        return dialogue->on_ioctl(fd, request, argument);
    }
    return __real_ioctl(fd, request, argument);
}

int __wrap_close(int fd)
{
    Dialogue *dialogue = Dialogue::running();
    return dialogue != nullptr && fd == stm_link.spi_fd ? dialogue->on_close(fd) : __real_close(fd);
}

int __wrap_usleep(unsigned microseconds)
{
    Dialogue *dialogue = Dialogue::running();
    return dialogue != nullptr ? dialogue->on_usleep(microseconds) : __real_usleep(microseconds);
}

void __wrap_perror(const char *text)
{
    const int error = errno;
    Dialogue *dialogue = Dialogue::running();
    if (dialogue != nullptr) {
        dialogue->on_perror(text);
    }
    if (dialogue == nullptr || dialogue->really_exit) {
        errno = error;
        __real_perror(text);
    }
}

[[noreturn]] void __wrap_exit(int status)
{
    Dialogue *dialogue = Dialogue::running();
    if (dialogue != nullptr && !dialogue->really_exit) {
        dialogue->on_exit(status);
    }
    __real_exit(status);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
