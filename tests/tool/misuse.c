/* Uses the device in unusual ways, and prints what comes of it. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#define DEVICE "/dev/spidev1.0"

static void say(const char *what, int result)
{
    if (result < 0) {
        printf("%s: %s\n", what, strerrorname_np(errno));
    } else {
        printf("%s: %d\n", what, result);
    }
}

static struct spi_ioc_transfer transfer(const void *tx, void *rx, uint32_t length)
{
    struct spi_ioc_transfer descriptor;
    memset(&descriptor, 0, sizeof(descriptor));
    descriptor.tx_buf = (uintptr_t)tx;
    descriptor.rx_buf = (uintptr_t)rx;
    descriptor.len = length;
    return descriptor;
}

static int exchange(int fd, const void *tx, void *rx, uint32_t length)
{
    struct spi_ioc_transfer descriptor = transfer(tx, rx, length);
    return ioctl(fd, SPI_IOC_MESSAGE(1), &descriptor);
}

/* The boot loader's version, or what keeps it from being read. */
static void say_version(const char *what, int fd)
{
    uint8_t byte = 0x91;
    if (exchange(fd, &byte, &byte, 1) == 1) {
        byte = 0x44;
        exchange(fd, &byte, &byte, 1);
        printf("%s: version %d\n", what, byte);
    } else {
        say(what, -1);
    }
}

static void use_bad_pointers(void)
{
    const int fd = open(DEVICE, O_RDWR);
    uint8_t byte = 0x91;
    void *bad = mmap(NULL, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    void *constant = mmap(NULL, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    say("bad tx", exchange(fd, bad, &byte, 1));
    say("bad rx", exchange(fd, &byte, bad, 1));
    say("constant rx", exchange(fd, &byte, constant, 1));
    say("bad descriptor", ioctl(fd, SPI_IOC_MESSAGE(1), bad));
    say("no descriptor", ioctl(fd, SPI_IOC_MESSAGE(1), NULL));
    say("bad speed", ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, bad));
    say("no speed", ioctl(fd, SPI_IOC_RD_MAX_SPEED_HZ, NULL));
    say("too long", exchange(fd, bad, bad, 5000));
    say_version("afterwards", fd);
    uint8_t *page = mmap(NULL, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    say("a good buffer", exchange(fd, page, &byte, 1));
    mprotect(page, 4096, PROT_NONE);
    say("the same when it has gone", exchange(fd, page, &byte, 1));
    say_version("from another one", fd);
}

static void use_odd_transfers(void)
{
    const int fd = open(DEVICE, O_RDWR);
    uint8_t bytes[4096] = {0};
    struct spi_ioc_transfer odd = transfer(bytes, bytes, 1);
    odd.bits_per_word = 9;
    say("9 bits per word", ioctl(fd, SPI_IOC_MESSAGE(1), &odd));
    odd = transfer(bytes, bytes, 1);
    odd.tx_nbits = 4;
    say("4 lines", ioctl(fd, SPI_IOC_MESSAGE(1), &odd));
    struct spi_ioc_transfer two[2] = {transfer(bytes, bytes, 2041), transfer(bytes, bytes, 2049)};
    say("2041 and 2049 bytes, rounded up", ioctl(fd, SPI_IOC_MESSAGE(2), two));
    uint8_t order = 1;
    say("lowest bit first", ioctl(fd, SPI_IOC_WR_LSB_FIRST, &order));
    order = 0;
    say("asked for", ioctl(fd, SPI_IOC_RD_LSB_FIRST, &order));
    printf("which is: %d\n", order);
    say("a message of half a transfer", ioctl(fd, _IOW(SPI_IOC_MAGIC, 0, char[16]), two));
    say("close at exec", ioctl(fd, FIOCLEX));
    two[0] = transfer(NULL, NULL, 0x7FFFFFFF);
    two[1] = transfer(bytes, bytes, 4);
    say("2 GB without buffers", ioctl(fd, SPI_IOC_MESSAGE(2), two));
}

static void use_descriptors(void)
{
    int fd = open(DEVICE, O_RDWR);
    const int other = dup(fd);
    close(fd);
    say_version("a duplicate", other);
    fd = open("/dev/null", O_RDWR);
    uint32_t speed = 1;
    printf("the number again, for another file: %s\n",
           ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed) < 0 ? "refused" : "taken");
    const int dev = open("/dev", O_RDONLY | O_DIRECTORY);
    say_version("from its folder", openat(dev, "spidev1.0", O_RDWR));
    say_version("with too many slashes", open("//dev/./spidev1.0", O_RDWR));
    if (chdir("/dev") == 0) {
        say_version("from inside its folder", open("spidev1.0", O_RDWR));
    }
    say("in no folder", open("/nowhere/spidev1.0", O_RDWR));
    for (int i = 3; i < 1000; ++i) {
        close(i);
    }
    say_version("after all is closed", open(DEVICE, O_RDWR));
}

static int device;
static volatile sig_atomic_t interrupts;
static volatile sig_atomic_t wrong;

static void exchange_in_handler(int number)
{
    (void)number;
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    uint8_t bytes[8] = {0};
    wrong += exchange(device, bytes, bytes, 8) != 8;
    ++interrupts;
}

static void be_interrupted(void)
{
    static uint8_t bytes[4096];
    device = open(DEVICE, O_RDWR);
    signal(SIGALRM, exchange_in_handler);
    const struct itimerval often = {{0, 300}, {0, 300}};
    setitimer(ITIMER_REAL, &often, NULL);
    while (interrupts < 200) {
        wrong += exchange(device, bytes, bytes, 4096) != 4096;
        usleep(1);
    }
    printf("exchanges that went wrong: %d\n", (int)wrong);
}

static volatile int done;

static void *keep_exchanging(void *unused)
{
    static uint8_t bytes[4096];
    while (!done) {
        exchange(device, bytes, bytes, 4096);
    }
    return unused;
}

static void fork_from_threads(void)
{
    device = open(DEVICE, O_RDWR);
    pthread_t thread;
    pthread_create(&thread, NULL, keep_exchanging, NULL);
    int whole = 0;
    for (int i = 0; i < 50; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            uint8_t byte = 0;
            _exit(exchange(device, &byte, &byte, 1) == 1 ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        whole += status == 0;
    }
    done = 1;
    pthread_join(thread, NULL);
    printf("children that could use the device: %d\n", whole);
}

/* A fork of which no handler hears: the child's bytes count, not those that the parent has there. */
static void fork_unheard(void)
{
    static uint8_t byte = 0x91;
    const int fd = open(DEVICE, O_RDWR);
    uint8_t received = 0;
    exchange(fd, &byte, &received, 1);
    const pid_t child = _Fork();
    if (child == 0) {
        byte = 0x44;
        exchange(fd, &byte, &received, 1);
        _exit(received);
    }
    int status = -1;
    waitpid(child, &status, 0);
    printf("the child gets version %d\n", WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

static void sleep_oddly(void)
{
    struct timespec time = {1, 0};
    say("unknown clock", clock_nanosleep(1000000, 0, &time, NULL) == 0 ? 0 : -(errno = EINVAL));
    say("unknown clock shown", clock_gettime((clockid_t)1000000, &time));
    time.tv_nsec = 1000000000;
    say("too many nanoseconds", nanosleep(&time, NULL));
    time.tv_nsec = -1;
    say("too few", nanosleep(&time, NULL));
    struct timeval timeout = {-1, 0};
    say("less than no time", select(0, NULL, NULL, NULL, &timeout));
    int ends[2];
    if (pipe(ends) != 0 || write(ends[1], "x", 1) != 1) {
        return;
    }
    fd_set reading;
    FD_ZERO(&reading);
    FD_SET(ends[0], &reading);
    timeout = (struct timeval){5, 0};
    say("ready", select(ends[0] + 1, &reading, NULL, NULL, &timeout));
    printf("with time left: %d\n", timeout.tv_sec >= 4);
    char byte;
    say("read", (int)read(ends[0], &byte, 1));
    say("not ready", select(ends[0] + 1, &reading, NULL, NULL, &timeout));
    printf("with time left: %d, and descriptors: %d\n", timeout.tv_sec != 0,
           FD_ISSET(ends[0], &reading) != 0);
}

static void be_delayed(void)
{
    const int fd = open(DEVICE, O_RDWR);
    uint8_t byte = 0;
    struct spi_ioc_transfer two[2] = {transfer(&byte, &byte, 1), transfer(&byte, &byte, 1)};
    struct timespec begin;
    struct timespec end;
    two[0].delay_usecs = 30000;
    two[1].delay_usecs = 20000;
    clock_gettime(CLOCK_MONOTONIC, &begin);
    say("two transfers with delays of 30 and 20 ms", ioctl(fd, SPI_IOC_MESSAGE(2), two));
    clock_gettime(CLOCK_MONOTONIC, &end);
    const int64_t ns =
        (int64_t)(end.tv_sec - begin.tv_sec) * 1000000000 + end.tv_nsec - begin.tv_nsec;
    printf("at least 50 ms: %s\n", ns >= 50000000 ? "yes" : "no");
}

static volatile int cancelled_result = -2;
static volatile int exchanging;

static void *exchange_slowly(void *unused)
{
    static uint8_t bytes[4];
    struct spi_ioc_transfer slow = transfer(bytes, bytes, sizeof(bytes));
    slow.delay_usecs = 60000;
    exchanging = 1;
    cancelled_result = ioctl(device, SPI_IOC_MESSAGE(1), &slow);
    pthread_testcancel();
    return unused;
}

/* The cancellation may also come before the exchange: then it waits until after it all the same. */
static void cancel_thread(void)
{
    uint8_t bytes[4] = {0};
    device = open(DEVICE, O_RDWR);
    pthread_t thread;
    pthread_create(&thread, NULL, exchange_slowly, NULL);
    while (!exchanging) {
        usleep(1000);
    }
    pthread_cancel(thread);
    pthread_join(thread, NULL);
    say("the cancelled exchange", cancelled_result);
    say("the next one", exchange(device, bytes, bytes, sizeof(bytes)));
}

static const struct {
    const char *name;
    void (*run)(void);
} ways[] = {
    {"pointers", use_bad_pointers},   {"transfers", use_odd_transfers},
    {"descriptors", use_descriptors}, {"interrupts", be_interrupted},
    {"forks", fork_from_threads},     {"times", sleep_oddly},
    {"delays", be_delayed},           {"cancel", cancel_thread},
    {"unheard", fork_unheard},
};

int main(int argc, char **argv)
{
    for (size_t i = 0; i < sizeof(ways) / sizeof(ways[0]); ++i) {
        if (argc > 1 && strcmp(argv[1], ways[i].name) == 0) {
            ways[i].run();
            return 0;
        }
    }
    return 2;
}
