/* Measures what exchanges take in real time: wire_time COUNT BYTES SPEED_HZ. Beside each exchange
 * it sleeps until a deadline that is as far away, which is the least that a system can do. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <time.h>

#define MOST_EXCHANGES 10000

static int64_t exchanges[MOST_EXCHANGES];
static int64_t sleeps[MOST_EXCHANGES];

static int64_t now_ns(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (int64_t)time.tv_sec * 1000000000 + time.tv_nsec;
}

static int64_t exchange_ns(int fd, uint32_t bytes)
{
    static uint8_t buffer[4096];
    struct spi_ioc_transfer transfer;
    memset(&transfer, 0, sizeof(transfer));
    transfer.tx_buf = (uintptr_t)buffer;
    transfer.rx_buf = (uintptr_t)buffer;
    transfer.len = bytes;
    const int64_t begin = now_ns();
    if (ioctl(fd, SPI_IOC_MESSAGE(1), &transfer) != (int)bytes) {
        exit(1);
    }
    return now_ns() - begin;
}

static int64_t sleep_ns(int64_t wire_ns)
{
    const int64_t begin = now_ns();
    const int64_t end = begin + wire_ns;
    const struct timespec deadline = {(time_t)(end / 1000000000), (long)(end % 1000000000)};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, NULL);
    return now_ns() - begin;
}

static int by_size(const void *left, const void *right)
{
    const int64_t a = *(const int64_t *)left;
    const int64_t b = *(const int64_t *)right;
    return (a > b) - (a < b);
}

static void show(const char *name, int64_t *times, int count)
{
    int64_t sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += times[i];
    }
    qsort(times, (size_t)count, sizeof(times[0]), by_size);
    printf("%s: %lld us in all, shortest %lld ns, median %lld ns\n", name, (long long)(sum / 1000),
           (long long)times[0], (long long)times[count / 2]);
}

int main(int argc, char **argv)
{
    const int count = argc == 4 ? atoi(argv[1]) : 0;
    const uint32_t bytes = argc == 4 ? (uint32_t)atoi(argv[2]) : 0;
    uint32_t speed_hz = argc == 4 ? (uint32_t)atoi(argv[3]) : 0;
    const int fd = open("/dev/spidev1.0", O_RDWR);
    if (count <= 0 || count > MOST_EXCHANGES || bytes > 4096 || fd < 0 ||
        ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz) != 0) {
        return 2;
    }
    for (int i = 0; i < count; ++i) {
        exchanges[i] = exchange_ns(fd, bytes);
        sleeps[i] = sleep_ns((int64_t)bytes * 8 * 1000000000 / speed_hz);
    }
    show("exchanges", exchanges, count);
    show("sleeps", sleeps, count);
    return 0;
}
