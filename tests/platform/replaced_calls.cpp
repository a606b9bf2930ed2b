// The linker sends every system call of the test programs here (--wrap). What belongs to a running
// dialogue is recorded and answered there; all else, such as the test framework's own files, goes
// on to the system.
#include "tests/platform/dialogue.hpp"

#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace
{

// The dialogue that stands in for shared memory.
Dialogue *memory_dialogue()
{
    Dialogue *dialogue = Dialogue::running();
    return dialogue != nullptr && !dialogue->real_shared_memory ? dialogue : nullptr;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

int __real_open(const char *path, int flags, ...);
int __real_ioctl(int fd, unsigned long request, ...);
int __real_close(int fd);
int __real_usleep(unsigned microseconds);
int __real_shmget(key_t key, size_t size, int flags);
void *__real_shmat(int id, const void *address, int flags);
int __real_shmctl(int id, int command, shmid_ds *status);
pid_t __real_getpid();
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

int __wrap_shmget(key_t key, size_t size, int flags)
{
    Dialogue *dialogue = memory_dialogue();
    return dialogue != nullptr ? dialogue->on_shmget(key, size, flags)
                               : __real_shmget(key, size, flags);
}

void *__wrap_shmat(int id, const void *address, int flags)
{
    Dialogue *dialogue = memory_dialogue();
    return dialogue != nullptr ? dialogue->on_shmat(id, address, flags)
                               : __real_shmat(id, address, flags);
}

int __wrap_shmctl(int id, int command, shmid_ds *status)
{
    Dialogue *dialogue = memory_dialogue();
    return dialogue != nullptr ? dialogue->on_shmctl(id, command, status)
                               : __real_shmctl(id, command, status);
}

// Death tests, in which the process truly ends, look up its true number themselves.
pid_t __wrap_getpid()
{
    Dialogue *dialogue = memory_dialogue();
    return dialogue != nullptr && !dialogue->really_exit ? dialogue->on_getpid() : __real_getpid();
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
