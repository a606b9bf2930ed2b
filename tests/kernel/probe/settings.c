/* Questions about the device's settings, how long they last, and requests that are none of the driver's. */
#define _GNU_SOURCE
#include "tests/kernel/probe/answer.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

static void try_speed(int fd, uint32_t speed_hz)
{
    char what[40];
    snprintf(what, sizeof(what), "set %u Hz", speed_hz);
    say(what, set_speed(fd, speed_hz));
    printf("  then it is %u\n", speed_of(fd));
}

static void try_bits(int fd, uint8_t bits)
{
    char what[40];
    snprintf(what, sizeof(what), "set %u bits", bits);
    say(what, ioctl(fd, SPI_IOC_WR_BITS_PER_WORD, &bits));
    uint8_t then = 0x77;
    say("  read them", ioctl(fd, SPI_IOC_RD_BITS_PER_WORD, &then));
    printf("  then they are %u\n", then);
}

void ask_settings(void)
{
    int fd = open_device(O_RDWR);
    printf("at first: %u Hz\n", speed_of(fd));
    try_speed(fd, 500000);
    try_speed(fd, 0);
    try_speed(fd, 1);
    try_speed(fd, 10000000);
    try_speed(fd, 50000000);
    try_speed(fd, 0xFFFFFFFF);
    try_speed(fd, 2000000);
    try_bits(fd, 0);
    try_bits(fd, 7);
    try_bits(fd, 8);
    try_bits(fd, 9);
    try_bits(fd, 32);
    try_bits(fd, 33);
    try_bits(fd, 255);
    try_bits(fd, 8);
    say("exchange after all this", exchange(fd, sent, received, 4));
    close(fd);
}

static uint32_t mode32_of(int fd)
{
    uint32_t mode = 0xEEEEEEEE;
    ioctl(fd, SPI_IOC_RD_MODE32, &mode);
    return mode;
}

static void try_mode32(int fd, const char *name, uint32_t mode)
{
    char what[60];
    snprintf(what, sizeof(what), "set mode %s", name);
    say(what, ioctl(fd, SPI_IOC_WR_MODE32, &mode));
    printf("  then it is 0x%x\n", mode32_of(fd));
}

static void try_mode8(int fd, uint8_t mode)
{
    char what[60];
    snprintf(what, sizeof(what), "set mode 0x%02x in a byte", mode);
    say(what, ioctl(fd, SPI_IOC_WR_MODE, &mode));
    uint8_t then = 0x77;
    ioctl(fd, SPI_IOC_RD_MODE, &then);
    printf("  then it is 0x%x, and 0x%x in a byte\n", mode32_of(fd), then);
}

static void try_order(int fd, uint8_t order)
{
    char what[60];
    snprintf(what, sizeof(what), "set lowest bit first to %u", order);
    say(what, ioctl(fd, SPI_IOC_WR_LSB_FIRST, &order));
    uint8_t then = 0x77;
    ioctl(fd, SPI_IOC_RD_LSB_FIRST, &then);
    printf("  then it is %u, and the mode 0x%x\n", then, mode32_of(fd));
}

struct mode_row {
    const char *name;
    uint32_t mode;
};

/* The numbers of the bits: not all headers have all of the names. */
static const struct mode_row MODE_ROWS[] = {
    {"1", SPI_MODE_1},
    {"2", SPI_MODE_2},
    {"3", SPI_MODE_3},
    {"cs-high", SPI_CS_HIGH},
    {"lsb-first", SPI_LSB_FIRST},
    {"3-wire", SPI_3WIRE},
    {"loop", SPI_LOOP},
    {"no-cs", SPI_NO_CS},
    {"ready", SPI_READY},
    {"dual transmission", SPI_TX_DUAL},
    {"quad transmission", SPI_TX_QUAD},
    {"dual reception and 1", SPI_RX_DUAL | SPI_MODE_1},
    {"quad reception", SPI_RX_QUAD},
    {"dual and quad transmission", SPI_TX_DUAL | SPI_TX_QUAD},
    {"cs-word", 1U << 12},
    {"octal transmission", 1U << 13},
    {"octal reception", 1U << 14},
    {"3-wire with high impedance", 1U << 15},
    {"0x10000", 1U << 16},
    {"0x20000", 1U << 17},
    {"0x80000000", 1U << 31},
    {"3 with lsb-first and cs-high", SPI_MODE_3 | SPI_LSB_FIRST | SPI_CS_HIGH},
    {"0", SPI_MODE_0},
};

void ask_modes(void)
{
    int fd = open_device(O_RDWR);
    printf("at first: 0x%x\n", mode32_of(fd));
    for (size_t i = 0; i < sizeof(MODE_ROWS) / sizeof(MODE_ROWS[0]); ++i) {
        try_mode32(fd, MODE_ROWS[i].name, MODE_ROWS[i].mode);
    }
    try_mode8(fd, 1);
    try_mode8(fd, 0x10);
    try_mode8(fd, 0x80);
    try_mode8(fd, 0xFF);
    try_order(fd, 1);
    try_order(fd, 0);
    try_order(fd, 255);
    close(fd);
    fd = open_device(O_RDWR);
    printf("after a close: 0x%x\n", mode32_of(fd));
    try_mode32(fd, "0", SPI_MODE_0);
    close(fd);
}

/* A child with a copy of the descriptor closes it, or ends without a word. */
static void let_child(int fd, int closes)
{
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        _exit(closes ? close(fd) : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
}

static void close_one_way(const char *what, int fd, int is_last)
{
    printf("%s: %u Hz\n", what, speed_of(fd));
    if (is_last) {
        close(fd);
        fd = open_device(O_RDWR);
        printf("  after the last close: %u Hz\n", speed_of(fd));
        close(fd);
    }
}

void ask_closes(void)
{
    int fd = open_device(O_RDWR);
    int second = open_device(O_RDONLY);
    set_speed(second, 123456);
    close_one_way("set by another descriptor", fd, 0);
    close(second);
    close_one_way("which is closed", fd, 0);
    close(dup(fd));
    close_one_way("after a copy is closed", fd, 0);
    let_child(fd, 1);
    close_one_way("after a child closed it", fd, 0);
    let_child(fd, 0);
    close_one_way("after a child ended", fd, 1);
    fd = open_device(O_RDWR);
    set_speed(fd, 222222);
    second = dup(fd);
    close(fd);
    close_one_way("a copy, alone", second, 1);
    FILE *stream = fdopen(open_device(O_RDWR), "r+");
    set_speed(fileno(stream), 333333);
    close_one_way("a stream", fileno(stream), 0);
    fclose(stream);
    close_one_way("after fclose", open_device(O_RDWR), 1);
    fd = open_device(O_RDWR);
    set_speed(fd, 444444);
    dup2(STDIN_FILENO, fd);
    close(fd);
    close_one_way("after dup2 took its place", open_device(O_RDWR), 1);
}

static void ask_kernel_requests(int fd)
{
    int number = 1;
    say("FIONBIO", ioctl(fd, FIONBIO, &number));
    say("FIOCLEX", ioctl(fd, FIOCLEX));
    say("FIONCLEX", ioctl(fd, FIONCLEX));
    say("FIOASYNC", ioctl(fd, FIOASYNC, &number));
    say("FIONREAD", ioctl(fd, FIONREAD, &number));
    say("TCGETS", ioctl(fd, 0x5401, received));
}

struct request_row {
    const char *name;
    unsigned long request;
};

static const struct request_row REQUEST_ROWS[] = {
    {"RD_MODE", SPI_IOC_RD_MODE},
    {"RD_MODE32", SPI_IOC_RD_MODE32},
    {"RD_LSB_FIRST", SPI_IOC_RD_LSB_FIRST},
    {"RD_BITS_PER_WORD", SPI_IOC_RD_BITS_PER_WORD},
    {"RD_MAX_SPEED_HZ", SPI_IOC_RD_MAX_SPEED_HZ},
    {"WR_MODE", SPI_IOC_WR_MODE},
    {"WR_MODE32", SPI_IOC_WR_MODE32},
    {"WR_LSB_FIRST", SPI_IOC_WR_LSB_FIRST},
    {"WR_BITS_PER_WORD", SPI_IOC_WR_BITS_PER_WORD},
    {"WR_MAX_SPEED_HZ", SPI_IOC_WR_MAX_SPEED_HZ},
    {"SPI_IOC_MESSAGE(1)", SPI_IOC_MESSAGE(1)},
};

void ask_requests(void)
{
    int fd = open_device(O_RDWR);
    for (size_t i = 0; i < sizeof(REQUEST_ROWS) / sizeof(REQUEST_ROWS[0]); ++i) {
        char what[60];
        snprintf(what, sizeof(what), "%s without an argument", REQUEST_ROWS[i].name);
        say(what, ioctl(fd, REQUEST_ROWS[i].request, NULL));
        snprintf(what, sizeof(what), "%s with an argument nowhere", REQUEST_ROWS[i].name);
        say(what, ioctl(fd, REQUEST_ROWS[i].request, nowhere));
    }
    say("another family", ioctl(fd, _IOR('x', 1, int), received));
    say("no direction", ioctl(fd, _IO('k', 1), received));
    say("an unknown number", ioctl(fd, _IOR('k', 99, int), received));
    say("a clock of another size", ioctl(fd, _IOW('k', 4, uint8_t), received));
    say("a message to read", ioctl(fd, _IOR('k', 0, char[32]), received));
    say("a message of 31 bytes", ioctl(fd, _IOW('k', 0, char[31]), received));
    say("a message of 33 bytes", ioctl(fd, _IOW('k', 0, char[33]), received));
    ask_kernel_requests(fd);
    close(fd);
}
