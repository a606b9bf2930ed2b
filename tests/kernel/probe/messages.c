/* Questions about messages: lengths, buffers, several transfers, and what a transfer may ask for. */
#define _GNU_SOURCE
#include "tests/kernel/probe/answer.h"

#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

static const uint32_t LENGTHS[] = {0, 1, 63, 64, 65, 4095, 4096, 4097, 8192, 65536};

/* Whether bytes came, and that those behind them are untouched. */
static void try_length(int fd, uint32_t length)
{
    char what[40];
    memset(received, 0x11, sizeof(received));
    snprintf(what, sizeof(what), "%u bytes", length);
    const long result = say(what, exchange(fd, sent, received, length));
    const size_t at = result > 0 ? (size_t)result : 0;
    if (at < sizeof(received)) {
        printf("  untouched from there: %d\n", received[at] == 0x11);
    }
    snprintf(what, sizeof(what), "  %u bytes, only sent", length);
    say(what, exchange(fd, sent, NULL, length));
    snprintf(what, sizeof(what), "  %u bytes, only received", length);
    say(what, exchange(fd, NULL, received, length));
    snprintf(what, sizeof(what), "  %u bytes without buffers", length);
    say(what, exchange(fd, NULL, NULL, length));
}

void ask_lengths(void)
{
    int fd = open_device(O_RDWR);
    set_speed(fd, 10000000);
    for (size_t i = 0; i < sizeof(LENGTHS) / sizeof(LENGTHS[0]); ++i) {
        try_length(fd, LENGTHS[i]);
    }
    say("2 MiB without buffers", exchange(fd, NULL, NULL, 2097152));
    say("the greatest length without buffers", exchange(fd, NULL, NULL, 0x7FFFFFFF));
    say("one more", exchange(fd, NULL, NULL, 0x80000000));
    say("the greatest length with buffers", exchange(fd, sent, received, 0x7FFFFFFF));
    close(fd);
}

/* The bytes of an exchange that is refused go nowhere: the version asked for before is still to come. */
static void say_what_is_owed(int fd)
{
    sent[0] = 0x44;
    exchange(fd, sent, received, 1);
    printf("  then the answer is %02x\n", received[0]);
    sent[0] = 0;
}

static void ask_for_version(int fd)
{
    sent[0] = 0x91;
    exchange(fd, sent, received, 1);
    sent[0] = 0;
}

static void try_buffers(int fd, const char *what, const void *tx, void *rx)
{
    ask_for_version(fd);
    say(what, exchange(fd, tx, rx, 8));
    say_what_is_owed(fd);
}

static uint8_t *page_before_none(void)
{
    uint8_t *two = mmap(NULL, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    munmap(two + 4096, 4096);
    return two;
}

void ask_buffers(void)
{
    int fd = open_device(O_RDWR);
    try_buffers(fd, "one buffer for both", sent, sent);
    memset(sent, 0, 8);
    try_buffers(fd, "sent from nowhere", nowhere, received);
    try_buffers(fd, "received nowhere", sent, nowhere);
    try_buffers(fd, "received on a page only for reading", sent, read_only_page());
    try_buffers(fd, "sent from a page only for reading", read_only_page(), received);
    uint8_t *page = page_before_none();
    try_buffers(fd, "sent from the end of a page", page + 4092, received);
    memset(page, 0x11, 4096);
    try_buffers(fd, "received at the end of a page", sent, page + 4092);
    printf("  its last bytes: %02x %02x\n", page[4091], page[4095]);
    struct spi_ioc_transfer one = transfer(sent, received, 8);
    memcpy(page + 4096 - sizeof(one), &one, sizeof(one));
    say("a transfer at the end of a page",
        ioctl(fd, SPI_IOC_MESSAGE(1), page + 4096 - sizeof(one)));
    say("two, of which one is on it", ioctl(fd, SPI_IOC_MESSAGE(2), page + 4096 - sizeof(one)));
    close(fd);
}

static void try_two(int fd, const char *what, struct spi_ioc_transfer first,
                    struct spi_ioc_transfer second)
{
    struct spi_ioc_transfer two[2] = {first, second};
    memset(received, 0x11, 64);
    say(what, ioctl(fd, SPI_IOC_MESSAGE(2), two));
    printf("  received %02x and %02x\n", received[0], received[32]);
}

static void ask_pairs(int fd)
{
    uint8_t *second = received + 32;
    try_two(fd, "2048 and 2048", transfer(sent, received, 2048), transfer(sent, received, 2048));
    try_two(fd, "2048 and 2049", transfer(sent, received, 2048), transfer(sent, received, 2049));
    try_two(fd, "2040 and 2056", transfer(sent, received, 2040), transfer(sent, received, 2056));
    try_two(fd, "2047 and 2049", transfer(sent, received, 2047), transfer(sent, received, 2049));
    try_two(fd, "4096 sent and 4096 received", transfer(sent, NULL, 4096),
            transfer(NULL, received, 4096));
    try_two(fd, "16 without buffers and 4", transfer(NULL, NULL, 16), transfer(sent, second, 4));
    try_two(fd, "8000 without buffers and 4", transfer(NULL, NULL, 8000),
            transfer(sent, second, 4));
    try_two(fd, "0 and 4", transfer(sent, received, 0), transfer(sent, second, 4));
    try_two(fd, "4 from nowhere and 4097", transfer(nowhere, received, 4),
            transfer(sent, second, 4097));
    try_two(fd, "4097 and 4 from nowhere", transfer(sent, received, 4097),
            transfer(nowhere, second, 4));
    try_two(fd, "4 to nowhere and 4", transfer(sent, nowhere, 4), transfer(sent, second, 4));
    try_two(fd, "4 and 4 to nowhere", transfer(sent, received, 4), transfer(sent, nowhere, 4));
}

struct wish {
    const char *name;
    struct spi_ioc_transfer transfer; /* its fields besides the buffers and the length */
};

static const struct wish WISHES[] = {
    {"8 bits", {.bits_per_word = 8}},
    {"7 bits", {.bits_per_word = 7}},
    {"9 bits", {.bits_per_word = 9}},
    {"16 bits", {.bits_per_word = 16}},
    {"33 bits", {.bits_per_word = 33}},
    {"1 Hz less than the highest clock", {.speed_hz = 9999999}},
    {"more than the highest clock", {.speed_hz = 99000000}},
    {"a change of the chip select", {.cs_change = 1}},
    {"a delay", {.delay_usecs = 20}},
    {"a delay between words", {.word_delay_usecs = 20}},
    {"padding", {.pad = 0xFF}},
    {"1 line out", {.tx_nbits = 1}},
    {"2 lines out", {.tx_nbits = 2}},
    {"4 lines out", {.tx_nbits = 4}},
    {"3 lines out", {.tx_nbits = 3}},
    {"1 line in", {.rx_nbits = 1}},
    {"2 lines in", {.rx_nbits = 2}},
    {"4 lines in", {.rx_nbits = 4}},
};

static void try_wish(int fd, const struct wish *wish)
{
    char what[60];
    struct spi_ioc_transfer one = wish->transfer;
    one.len = 4;
    one.tx_buf = (uintptr_t)sent;
    one.rx_buf = (uintptr_t)received;
    say(wish->name, ioctl(fd, SPI_IOC_MESSAGE(1), &one));
    one.rx_buf = 0;
    snprintf(what, sizeof(what), "  %s, only sent", wish->name);
    say(what, ioctl(fd, SPI_IOC_MESSAGE(1), &one));
    one.tx_buf = 0;
    one.rx_buf = (uintptr_t)received;
    snprintf(what, sizeof(what), "  %s, only received", wish->name);
    say(what, ioctl(fd, SPI_IOC_MESSAGE(1), &one));
    one.rx_buf = 0;
    snprintf(what, sizeof(what), "  %s, without buffers", wish->name);
    say(what, ioctl(fd, SPI_IOC_MESSAGE(1), &one));
}

void ask_transfers(void)
{
    int fd = open_device(O_RDWR);
    set_speed(fd, 10000000);
    struct spi_ioc_transfer three[3] = {transfer(sent, received, 10), transfer(sent, received, 11),
                                        transfer(sent, received, 12)};
    say("no transfer", ioctl(fd, SPI_IOC_MESSAGE(0), three));
    say("three transfers", ioctl(fd, SPI_IOC_MESSAGE(3), three));
    ask_pairs(fd);
    for (size_t i = 0; i < sizeof(WISHES) / sizeof(WISHES[0]); ++i) {
        try_wish(fd, &WISHES[i]);
    }
    static struct spi_ioc_transfer many[511];
    for (size_t i = 0; i < 511; ++i) {
        many[i] = transfer(sent, received, 8);
    }
    say("511 transfers", ioctl(fd, SPI_IOC_MESSAGE(511), many));
    close(fd);
}
