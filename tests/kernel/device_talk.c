/* Uses the device as its arguments say, one after another, and prints what each call gives: open, close,
   "exchange BYTES", "clock HZ", "mode MODE", and "run COMMAND" in between. Of a received answer the first
   byte and the sum of all are shown. "catch" handles SIGINT from then on, and "caught" tells how often. */
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
#include <unistd.h>

static uint8_t sent[65536];
static uint8_t received[65536];
static int device = -1;
static volatile sig_atomic_t interrupts;

static void count_interrupt(int number)
{
    interrupts += number == SIGINT;
}

static void say(const char *what, long result)
{
    if (result < 0) {
        printf("%s: %s\n", what, strerrorname_np(errno));
    } else {
        printf("%s: %ld\n", what, result);
    }
}

static void exchange(const char *what, unsigned long length)
{
    struct spi_ioc_transfer transfer;
    memset(&transfer, 0, sizeof(transfer));
    transfer.tx_buf = (uintptr_t)sent;
    transfer.rx_buf = (uintptr_t)received;
    transfer.len = (uint32_t)length;
    const long result = ioctl(device, SPI_IOC_MESSAGE(1), &transfer);
    say(what, result);
    unsigned sum = 0;
    for (long i = 0; i < result; ++i) {
        sum += received[i];
    }
    if (result > 0) {
        printf("  received %02x, and %u in all\n", received[0], sum);
    }
}

static void set(const char *what, unsigned long request, unsigned long number)
{
    uint32_t value = (uint32_t)number;
    say(what, ioctl(device, request, &value));
}

static void do_with_number(const char *what, unsigned long number)
{
    if (strncmp(what, "exchange ", 9) == 0) {
        exchange(what, number);
    } else if (strncmp(what, "clock ", 6) == 0) {
        set(what, SPI_IOC_WR_MAX_SPEED_HZ, number);
    } else if (strncmp(what, "mode ", 5) == 0) {
        set(what, SPI_IOC_WR_MODE32, number);
    } else {
        printf("%s: not understood\n", what);
    }
}

static void talk(const char *what)
{
    const char *blank = strchr(what, ' ');
    if (strcmp(what, "open") == 0) {
        device = open("/dev/spidev1.0", O_RDWR);
        printf("open: %s\n", device < 0 ? strerrorname_np(errno) : "0");
    } else if (strcmp(what, "close") == 0) {
        say(what, close(device));
    } else if (strcmp(what, "catch") == 0) {
        signal(SIGINT, count_interrupt);
    } else if (strcmp(what, "caught") == 0) {
        printf("caught: %d\n", (int)interrupts);
    } else if (strncmp(what, "run ", 4) == 0) {
        printf("%s: %s\n", what, system(what + 4) == 0 ? "done" : "failed");
    } else {
        do_with_number(what, blank == NULL ? 0 : strtoul(blank, NULL, 10));
    }
}

int main(int argc, char **argv)
{
    setvbuf(stdout, NULL, _IOLBF, 0);
    for (int i = 1; i < argc; ++i) {
        talk(argv[i]);
    }
    return 0;
}
