/* Questions about what a descriptor of the device takes besides ioctl. */
#define _GNU_SOURCE
#include "tests/kernel/probe/answer.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/sendfile.h>
#include <sys/uio.h>
#include <termios.h>
#include <unistd.h>

static void read_and_write_vectors(int fd)
{
    struct iovec two[2] = {{sent, 3}, {sent, 4}};
    say("writev 3 and 4", writev(fd, two, 2));
    two[1].iov_len = 4097;
    say("writev 3 and 4097", writev(fd, two, 2));
    struct iovec into[2] = {{received, 3}, {received + 3, 4}};
    say("readv 3 and 4", readv(fd, into, 2));
    say("pread", pread(fd, received, 4, 0));
    say("pwrite", pwrite(fd, sent, 4, 0));
}

static void read_and_write_the_wrong_way(void)
{
    int fd = open_device(O_RDONLY);
    say("write to O_RDONLY", write(fd, sent, 1));
    say("exchange with O_RDONLY", exchange(fd, sent, received, 1));
    close(fd);
    fd = open_device(O_WRONLY);
    say("read from O_WRONLY", read(fd, received, 1));
    say("exchange with O_WRONLY", exchange(fd, sent, received, 1));
    close(fd);
}

void ask_reads_and_writes(void)
{
    int fd = open_device(O_RDWR);
    memset(received, 0x11, 8);
    say("read 4", read(fd, received, 4));
    printf("  received %02x %02x, then %02x\n", received[0], received[3], received[4]);
    say("read 4096", read(fd, received, 4096));
    say("read 4097", read(fd, received, 4097));
    say("read 0", read(fd, received, 0));
    say("read to nowhere", read(fd, nowhere, 4));
    say("read to a page only for reading", read(fd, read_only_page(), 4));
    sent[0] = 0x91; /* asks for the version, which the next exchange brings */
    say("write 1", write(fd, sent, 1));
    sent[0] = 0x44;
    say("exchange 1", exchange(fd, sent, received, 1));
    printf("  received %02x\n", received[0]);
    memset(sent, 0, 8);
    say("write 4096", write(fd, sent, 4096));
    say("write 4097", write(fd, sent, 4097));
    say("write 0", write(fd, sent, 0));
    say("write from nowhere", write(fd, nowhere, 4));
    read_and_write_vectors(fd);
    close(fd);
    read_and_write_the_wrong_way();
    say("read a closed descriptor", read(fd, received, 1));
}

static void map(int fd)
{
    void *at = mmap(NULL, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    say("mmap shared", at == MAP_FAILED ? -1 : 0);
    at = mmap(NULL, 4096, PROT_READ, MAP_PRIVATE, fd, 0);
    say("mmap private", at == MAP_FAILED ? -1 : 0);
}

void ask_file_calls(void)
{
    int fd = open_device(O_RDWR);
    say("lseek from the start", (long)lseek(fd, 0, SEEK_SET));
    say("lseek from here", (long)lseek(fd, 0, SEEK_CUR));
    say("lseek from the end", (long)lseek(fd, 0, SEEK_END));
    map(fd);
    say("fsync", fsync(fd));
    say("fdatasync", fdatasync(fd));
    say("ftruncate", ftruncate(fd, 0));
    say("fallocate", fallocate(fd, 0, 0, 16));
    int file = open("file", O_RDWR | O_CREAT | O_TRUNC, 0600);
    say("write to a file", write(file, "bytes", 5));
    say("sendfile from the device", sendfile(file, fd, NULL, 4));
    off_t from = 0;
    say("sendfile to the device", sendfile(fd, file, &from, 4));
    say("copy_file_range", copy_file_range(fd, NULL, file, NULL, 4, 0));
    close(file);
    say("remove the file", unlink("file"));
    close(fd);
}

static void lock(int fd)
{
    struct flock range = {.l_type = F_WRLCK, .l_whence = SEEK_SET};
    say("flock", flock(fd, LOCK_EX | LOCK_NB));
    int other = open_device(O_RDWR);
    say("flock by another descriptor", flock(other, LOCK_EX | LOCK_NB));
    say("unlock", flock(fd, LOCK_UN));
    say("F_SETLK", fcntl(fd, F_SETLK, &range));
    say("lockf", lockf(fd, F_TLOCK, 0));
    close(other);
}

void ask_descriptors(void)
{
    int fd = open_device(O_RDWR);
    lock(fd);
    say("F_SETFL O_NONBLOCK", fcntl(fd, F_SETFL, O_NONBLOCK));
    say("exchange without blocking", exchange(fd, sent, received, 4));
    say("F_SETFL O_DIRECT", fcntl(fd, F_SETFL, O_DIRECT));
    say("F_SETFL O_ASYNC", fcntl(fd, F_SETFL, O_ASYNC));
    say("F_SETFD", fcntl(fd, F_SETFD, FD_CLOEXEC));
    say("F_GETFD", fcntl(fd, F_GETFD));
    say("F_GETPIPE_SZ", fcntl(fd, F_GETPIPE_SZ));
    int copy = fcntl(fd, F_DUPFD_CLOEXEC, 100);
    say("F_DUPFD_CLOEXEC", copy);
    say("exchange with the copy", exchange(copy, sent, received, 4));
    say("close the copy", close(copy));
    say("exchange with the closed copy", exchange(copy, sent, received, 4));
    say("dup2 onto itself", dup2(fd, fd) == fd ? 0 : -1);
    say("dup2", dup2(fd, 101));
    say("exchange with the second copy", exchange(101, sent, received, 4));
    say("close the first", close(fd));
    say("exchange with the second copy again", exchange(101, sent, received, 4));
    say("close the second", close(101));
    say("close it again", close(101));
    say("isatty", isatty(fd));
}

static void wait_by_epoll(int fd)
{
    int queue = epoll_create1(0);
    struct epoll_event event = {.events = EPOLLIN};
    say("epoll", epoll_ctl(queue, EPOLL_CTL_ADD, fd, &event));
    close(queue);
}

void ask_waiting(void)
{
    int fd = open_device(O_RDWR);
    struct pollfd waiting = {fd, POLLIN | POLLOUT | POLLPRI, 0};
    say("poll", poll(&waiting, 1, 0));
    printf("  events:%s%s%s\n", waiting.revents & POLLIN ? " POLLIN" : "",
           waiting.revents & POLLOUT ? " POLLOUT" : "",
           waiting.revents & POLLPRI ? " POLLPRI" : "");
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    struct timeval at_once = {0, 0};
    say("select", select(fd + 1, &set, NULL, NULL, &at_once));
    wait_by_epoll(fd);
    struct termios settings;
    say("tcgetattr", tcgetattr(fd, &settings));
    say("isatty", isatty(fd) == 1 ? 0 : -1);
    close(fd);
}
