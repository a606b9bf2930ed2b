/* Asks the device driver one question after another, and prints what it answers. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <poll.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <time.h>
#include <unistd.h>

#define DEVICE "/dev/spidev1.0"

int __open_2(const char *path, int flags);
int __open64_2(const char *path, int flags);
int __openat_2(int directory, const char *path, int flags);
int __openat64_2(int directory, const char *path, int flags);

static uint8_t sent[65536];
static uint8_t received[65536];

static void say(const char *what, int result)
{
    if (result < 0) {
        printf("%s: %s\n", what, strerrorname_np(errno));
    } else {
        printf("%s: %d\n", what, result);
    }
}

/* Which errno it is depends on the emulator, if the program runs under one. */
static void say_whether_refused(const char *what, int result)
{
    printf("%s: %s\n", what, result < 0 ? "refused" : "taken");
}

static struct spi_ioc_transfer transfer(void *tx, void *rx, uint32_t length)
{
    struct spi_ioc_transfer descriptor;
    memset(&descriptor, 0, sizeof(descriptor));
    descriptor.tx_buf = (uintptr_t)tx;
    descriptor.rx_buf = (uintptr_t)rx;
    descriptor.len = length;
    return descriptor;
}

static int exchange(int fd, void *tx, void *rx, uint32_t length)
{
    struct spi_ioc_transfer descriptor = transfer(tx, rx, length);
    return ioctl(fd, SPI_IOC_MESSAGE(1), &descriptor);
}

static void try_descriptor(const char *what, int fd)
{
    sent[0] = 0x91;
    if (fd >= 0 && exchange(fd, sent, received, 1) == 1) {
        sent[0] = 0x44;
        exchange(fd, sent, received, 1);
        printf("%s: version %d\n", what, received[0]);
    } else {
        say(what, -1);
    }
    close(fd);
}

static void ask_opens(void)
{
    try_descriptor("open", open(DEVICE, O_RDWR));
    try_descriptor("open64", open64(DEVICE, O_RDWR));
    try_descriptor("openat", openat(AT_FDCWD, DEVICE, O_RDWR));
    try_descriptor("openat64", openat64(AT_FDCWD, DEVICE, O_RDWR));
    try_descriptor("__open_2", __open_2(DEVICE, O_RDWR));
    try_descriptor("__open64_2", __open64_2(DEVICE, O_RDWR));
    try_descriptor("__openat_2", __openat_2(AT_FDCWD, DEVICE, O_RDWR));
    try_descriptor("__openat64_2", __openat64_2(AT_FDCWD, DEVICE, O_RDWR));
    try_descriptor("open read-only", open(DEVICE, O_RDONLY | O_CLOEXEC));
}

static void ask_other_files(void)
{
    int fd = open("made", O_RDWR | O_CREAT | O_EXCL, 0640);
    say("make a file", fd >= 0 ? 0 : -1);
    say_whether_refused("exchange with a file", exchange(fd, sent, received, 1));
    say("close it", close(fd));
    say("close it again", close(fd));
    fd = openat64(AT_FDCWD, "made", O_RDONLY);
    say("open it again", fd >= 0 ? 0 : -1);
    close(fd);
    say("open what is not there", open("nothing", O_RDONLY));
}

static void ask_lengths(void)
{
    int fd = open(DEVICE, O_RDWR);
    memset(received, 0x11, sizeof(received));
    say("4096 bytes", exchange(fd, sent, received, 4096));
    say("4097 bytes", exchange(fd, sent, received, 4097));
    say("65536 bytes", exchange(fd, sent, received, 65536));
    say("4097 bytes, only sent", exchange(fd, sent, NULL, 4097));
    say("0 bytes", exchange(fd, sent, received, 0));
    say("0 bytes without buffers", exchange(fd, NULL, NULL, 0));
    say("16 bytes without buffers", exchange(fd, NULL, NULL, 16));
    printf("untouched: %02x\n", received[4096]);
    say("only sent", exchange(fd, sent, NULL, 5));
    memset(received, 0x11, 8);
    say("only received", exchange(fd, NULL, received, 7));
    printf("received: %02x, untouched: %02x\n", received[6], received[7]);
    struct spi_ioc_transfer three[3] = {transfer(sent, received, 10), transfer(sent, received, 11),
                                        transfer(sent, received, 12)};
    say("three transfers", ioctl(fd, SPI_IOC_MESSAGE(3), three));
    struct spi_ioc_transfer two[2] = {transfer(sent, received, 2048),
                                      transfer(sent, received, 2049)};
    say("two transfers of 4097", ioctl(fd, SPI_IOC_MESSAGE(2), two));
    say("no transfer", ioctl(fd, SPI_IOC_MESSAGE(0), two));
    say("no descriptor", ioctl(fd, SPI_IOC_MESSAGE(1), NULL));
}

static uint32_t speed(int fd)
{
    uint32_t speed_hz = 0;
    ioctl(fd, SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz);
    return speed_hz;
}

static int set_speed(int fd, uint32_t speed_hz)
{
    return ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz);
}

static void ask_settings(void)
{
    int fd = open(DEVICE, O_RDWR);
    int second = open(DEVICE, O_RDWR);
    say("second open", second >= 0 ? 0 : -1);
    printf("speed at first: %u\n", speed(fd));
    say("speed 0", set_speed(fd, 0));
    say("speed 123456 by the second", set_speed(second, 123456));
    printf("the first has: %u\n", speed(fd));
    say("speed 50 MHz", set_speed(fd, 50000000));
    printf("which reads: %u\n", speed(fd));
    close(second);
    printf("with one left: %u\n", speed(fd));
    close(fd);
    say_whether_refused("after the last close", set_speed(fd, 1));
    fd = open(DEVICE, O_RDWR);
    printf("opened anew: %u\n", speed(fd));
    uint8_t bits = 9;
    say("9 bits", ioctl(fd, SPI_IOC_WR_BITS_PER_WORD, &bits));
    bits = 8;
    say("8 bits", ioctl(fd, SPI_IOC_WR_BITS_PER_WORD, &bits));
    say("unknown request", ioctl(fd, _IOR('x', 1, int), &bits));
    say("unknown request of the driver", ioctl(fd, _IOR(SPI_IOC_MAGIC, 99, int), &bits));
    say("unknown request without argument", ioctl(fd, _IO('x', 1), NULL));
}

static int64_t now_ms(clockid_t clock)
{
    struct timespec time;
    clock_gettime(clock, &time);
    return (int64_t)time.tv_sec * 1000 + time.tv_nsec / 1000000;
}

static void since(const char *what, int64_t *before)
{
    const int64_t now = now_ms(CLOCK_MONOTONIC);
    printf("%s: %d ms\n", what, (int)(now - *before));
    *before = now;
}

static void spend_time(void)
{
    const int64_t begun = now_ms(CLOCK_REALTIME);
    int64_t before = now_ms(CLOCK_MONOTONIC);
    usleep(500000);
    since("usleep", &before);
    struct timespec wait = {10, 250000000};
    nanosleep(&wait, NULL);
    since("nanosleep", &before);
    clock_nanosleep(CLOCK_MONOTONIC, 0, &wait, NULL);
    since("clock_nanosleep", &before);
    clock_gettime(CLOCK_MONOTONIC, &wait);
    wait.tv_sec += 7;
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wait, NULL);
    since("clock_nanosleep until", &before);
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wait, NULL);
    since("clock_nanosleep until now", &before);
    int ends[2];
    if (pipe(ends) != 0) {
        return;
    }
    struct pollfd waiting = {ends[0], POLLIN, 0};
    say("poll", poll(&waiting, 1, 3000));
    since("poll", &before);
    fd_set reading;
    FD_ZERO(&reading);
    FD_SET(ends[0], &reading);
    struct timeval timeout = {4, 500000};
    say("select", select(ends[0] + 1, &reading, NULL, NULL, &timeout));
    since("select", &before);
    say("write", (int)write(ends[1], "x", 1));
    say("poll with input", poll(&waiting, 1, 3000));
    FD_SET(ends[0], &reading);
    timeout.tv_sec = 4;
    say("select with input", select(ends[0] + 1, &reading, NULL, NULL, &timeout));
    since("both", &before);
    int fd = open(DEVICE, O_RDWR);
    set_speed(fd, 1000);
    exchange(fd, sent, received, 1000);
    since("1000 bytes at 1 kHz", &before);
    const int64_t spent = now_ms(CLOCK_REALTIME) - begun;
    printf("in all: %d ms\n", (int)spent);
}

int main(int argc, char **argv)
{
    const char *question = argc > 1 ? argv[1] : "";
    if (strcmp(question, "opens") == 0) {
        ask_opens();
    } else if (strcmp(question, "files") == 0) {
        ask_other_files();
    } else if (strcmp(question, "lengths") == 0) {
        ask_lengths();
    } else if (strcmp(question, "settings") == 0) {
        ask_settings();
    } else if (strcmp(question, "time") == 0) {
        spend_time();
    } else {
        return 2;
    }
    return 0;
}
