/* Uses the device step by step, as its arguments say, and prints what comes of each:

     open       opens the device once more; the descriptors are counted from 0
     openw      the same, only to write
     openx      the same, only if the file is new
     openp      the same, only its name
     there      whether there is a file of its name, and of which kind
     ver N      asks the co-processor for its version through descriptor N
     mode N     asks it for its mode
     read N     reads a byte
     long N     exchanges 8192 bytes
     speed N    shows the clock, then sets it to 2 MHz
     close N    closes it
     dup N      opens a duplicate of it
     same N M   whether both are of the same file
     wait MS    lets so many milliseconds pass
     tell PROGRAM FOLDER ORDER  another program tells the board
     die N      is killed by signal N */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#define MOST 16

static int opened[MOST];
static int count;
static uint8_t received[8192];

static const char *result_name(int result)
{
    return result < 0 ? strerrorname_np(errno) : "done";
}

static int exchange(int fd, const uint8_t *sent, uint32_t length)
{
    struct spi_ioc_transfer descriptor;
    memset(&descriptor, 0, sizeof(descriptor));
    descriptor.tx_buf = (uintptr_t)sent;
    descriptor.rx_buf = (uintptr_t)received;
    descriptor.len = length;
    return ioctl(fd, SPI_IOC_MESSAGE(1), &descriptor);
}

static void ask(const char *what, int fd, const uint8_t *question, uint32_t length)
{
    const uint8_t poll = 0x44;
    if (exchange(fd, question, length) < 0 || exchange(fd, &poll, 1) < 0) {
        printf("%s: %s\n", what, result_name(-1));
    } else {
        printf("%s: %d\n", what, received[0]);
    }
}

static void show_speed(int fd)
{
    uint32_t speed_hz = 0;
    int result = ioctl(fd, SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz);
    printf("speed: %s %u\n", result_name(result), speed_hz);
    speed_hz = 2000000;
    ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz);
}

static void compare(int first, int second)
{
    struct stat one;
    struct stat other;
    fstat(first, &one);
    fstat(second, &other);
    printf("same: %s\n", one.st_ino == other.st_ino ? "yes" : "no");
}

static void tell(char **words)
{
    char *environment[] = {NULL};
    int status = 0;
    fflush(stdout);
    if (fork() == 0) {
        execle(words[0], words[0], "tell", words[1], words[2], (char *)NULL, environment);
        _exit(127);
    }
    wait(&status);
    printf("tell: %d\n", WEXITSTATUS(status));
}

static void look(void)
{
    struct stat file;
    const int below = stat("/dev/spidev1.0/more", &file);
    if (below == 0 || errno != ENOTDIR) {
        printf("below: %s\n", result_name(below));
    }
    const int result = stat("/dev/spidev1.0", &file);
    printf("there: %s\n", result < 0 || access("/dev/spidev1.0", F_OK) < 0 ? result_name(-1)
                          : S_ISCHR(file.st_mode)                          ? "device"
                                                                           : "file");
}

static void take_descriptor(const char *step, int fd)
{
    printf("%s: %s\n", step, result_name(fd));
    if (fd >= 0 && count < MOST) {
        opened[count++] = fd;
    }
}

static void use(const char *step, int fd)
{
    static const uint8_t version[] = {0x91};
    static const uint8_t mode[] = {0x23, 0, 0, 0, 0, 0, 0, 0xAA};
    static const uint8_t zeroes[8192];
    if (strcmp(step, "ver") == 0) {
        ask(step, fd, version, sizeof(version));
    } else if (strcmp(step, "mode") == 0) {
        ask(step, fd, mode, sizeof(mode));
    } else if (strcmp(step, "long") == 0) {
        printf("long: %s\n", result_name(exchange(fd, zeroes, sizeof(zeroes))));
    } else if (strcmp(step, "read") == 0) {
        printf("read: %s\n", result_name((int)read(fd, received, 1)));
    } else if (strcmp(step, "speed") == 0) {
        show_speed(fd);
    } else if (strcmp(step, "dup") == 0) {
        take_descriptor(step, dup(fd));
    } else if (strcmp(step, "close") == 0) {
        printf("close: %s\n", result_name(close(fd)));
    }
}

int main(int argc, char **argv)
{
    for (int at = 1; at < argc; ++at) {
        const char *step = argv[at];
        if (strcmp(step, "open") == 0) {
            take_descriptor(step, open("/dev/spidev1.0", O_RDWR));
            continue;
        }
        if (strcmp(step, "there") == 0) {
            look();
            continue;
        }
        if (strncmp(step, "open", 4) == 0) {
            const int flags = step[4] == 'w'   ? O_WRONLY
                              : step[4] == 'x' ? O_RDWR | O_CREAT | O_EXCL
                                               : O_PATH;
            take_descriptor(step, open("/dev/spidev1.0", flags, 0600));
            continue;
        }
        if (strcmp(step, "tell") == 0 && at + 3 < argc) {
            tell(argv + at + 1);
            at += 3;
            continue;
        }
        const int number = at + 1 < argc ? atoi(argv[++at]) : 0;
        if (strcmp(step, "die") == 0) {
            raise(number);
        } else if (strcmp(step, "wait") == 0) {
            usleep((useconds_t)number * 1000);
        } else if (strcmp(step, "same") == 0 && at + 1 < argc) {
            compare(opened[number % MOST], opened[atoi(argv[++at]) % MOST]);
        } else {
            use(step, opened[number % MOST]);
        }
    }
    return 0;
}
