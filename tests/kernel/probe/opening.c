/* Questions about opening the device: by which paths, with which flags, and what its name shows. */
#define _GNU_SOURCE
#include "tests/kernel/probe/answer.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

/* Whether the descriptor is the device's: it has a clock. */
static void say_opened(const char *what, int fd)
{
    if (say_whether(what, fd) >= 0) {
        uint32_t speed_hz = 0;
        say("  its clock can be read", ioctl(fd, SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz));
        close(fd);
    }
}

static void try_path(const char *path)
{
    char what[80];
    snprintf(what, sizeof(what), "open %s", path);
    say_opened(what, open(path, O_RDWR));
}

void ask_paths(void)
{
    try_path("/dev/spidev1.0");
    try_path("//dev//spidev1.0");
    try_path("/dev/./spidev1.0");
    try_path("/dev/../dev/spidev1.0");
    try_path("/dev/spidev1.0/");
    try_path("/dev/spidev1.0/more");
    try_path("/dev/spidev1.1");
    try_path("/dev/spidev1.00");
    int folder = open("/dev", O_RDONLY | O_DIRECTORY);
    say_opened("openat from /dev", openat(folder, "spidev1.0", O_RDWR));
    say_opened("openat with a whole path", openat(folder, DEVICE, O_RDWR));
    close(folder);
    say("make a symbolic link", symlink(DEVICE, "link-to-device"));
    say("and one to it", symlink("link-to-device", "link-to-link"));
    try_path("link-to-device");
    try_path("link-to-link");
    say_opened("open a link that must not be one", open("link-to-device", O_RDWR | O_NOFOLLOW));
    say_opened("open the device, which is no link", open(DEVICE, O_RDWR | O_NOFOLLOW));
    say("remove the links", unlink("link-to-device") + unlink("link-to-link"));
}

struct flag_row {
    const char *name;
    int flags;
};

static const struct flag_row FLAG_ROWS[] = {
    {"O_RDONLY", O_RDONLY},
    {"O_WRONLY", O_WRONLY},
    {"O_RDWR", O_RDWR},
    {"O_ACCMODE", O_ACCMODE},
    {"O_CLOEXEC", O_RDWR | O_CLOEXEC},
    {"O_NONBLOCK", O_RDWR | O_NONBLOCK},
    {"O_APPEND", O_RDWR | O_APPEND},
    {"O_TRUNC", O_RDWR | O_TRUNC},
    {"O_SYNC", O_RDWR | O_SYNC},
    {"O_NOCTTY", O_RDWR | O_NOCTTY},
    {"O_NOATIME", O_RDWR | O_NOATIME},
    {"O_ASYNC", O_RDWR | O_ASYNC},
    {"O_CREAT", O_RDWR | O_CREAT},
    {"O_CREAT and O_EXCL", O_RDWR | O_CREAT | O_EXCL},
    {"O_EXCL", O_RDWR | O_EXCL},
    {"O_DIRECTORY", O_RDWR | O_DIRECTORY},
    {"O_TMPFILE", O_RDWR | O_TMPFILE},
    {"O_DIRECT", O_RDWR | O_DIRECT},
    {"O_PATH", O_PATH},
};

static void try_stream(const char *how)
{
    char what[40];
    snprintf(what, sizeof(what), "fopen \"%s\"", how);
    FILE *stream = fopen(DEVICE, how);
    if (say_whether(what, stream != NULL ? 0 : -1) == 0) {
        uint32_t speed_hz = 0;
        say("  its clock can be read", ioctl(fileno(stream), SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz));
        fclose(stream);
    }
}

void ask_flags(void)
{
    for (size_t i = 0; i < sizeof(FLAG_ROWS) / sizeof(FLAG_ROWS[0]); ++i) {
        say_opened(FLAG_ROWS[i].name, open(DEVICE, FLAG_ROWS[i].flags, 0600));
    }
    say_opened("creat", creat(DEVICE, 0600));
    try_stream("r");
    try_stream("r+");
    try_stream("w");
    try_stream("w+");
    try_stream("a");
    try_stream("wx");
    int fd = open_device(O_RDWR | O_NONBLOCK | O_APPEND | O_CLOEXEC);
    const int flags = fcntl(fd, F_GETFL);
    printf("flags of a descriptor:%s%s%s\n", (flags & O_ACCMODE) == O_RDWR ? " O_RDWR" : "",
           flags & O_NONBLOCK ? " O_NONBLOCK" : "", flags & O_APPEND ? " O_APPEND" : "");
    say("its FD_CLOEXEC", fcntl(fd, F_GETFD));
    close(fd);
}

static void say_status(const char *what, int result, const struct stat *status)
{
    if (say(what, result) == 0) {
        const unsigned format = status->st_mode & S_IFMT;
        printf("  %s, device %u:%u, size %ld, links %u\n",
               format == S_IFCHR   ? "character device"
               : format == S_IFLNK ? "symbolic link"
                                   : "another file",
               major(status->st_rdev), minor(status->st_rdev), (long)status->st_size,
               (unsigned)status->st_nlink);
    }
}

static void say_statuses(void)
{
    struct stat status;
    struct stat other;
    say_status("stat", stat(DEVICE, &status), &status);
    say_status("lstat", lstat(DEVICE, &status), &status);
    say_status("fstatat", fstatat(AT_FDCWD, DEVICE, &status, 0), &status);
    int fd = open_device(O_RDWR);
    say_status("fstat", fstat(fd, &other), &other);
    printf("the same file: %d\n", status.st_dev == other.st_dev && status.st_ino == other.st_ino);
    close(fd);
    struct statx extended;
    say("statx", statx(AT_FDCWD, DEVICE, 0, STATX_TYPE, &extended));
    printf("  character device: %d\n", (extended.stx_mode & S_IFMT) == S_IFCHR);
}

void ask_names(void)
{
    say("access F_OK", access(DEVICE, F_OK));
    say("access R_OK and W_OK", access(DEVICE, R_OK | W_OK));
    say("access X_OK", access(DEVICE, X_OK));
    say("faccessat", faccessat(AT_FDCWD, DEVICE, R_OK | W_OK, AT_EACCESS));
    say("euidaccess", euidaccess(DEVICE, R_OK | W_OK));
    say_statuses();
    char path[4096];
    say("readlink", readlink(DEVICE, path, sizeof(path)));
    printf("realpath: %s\n", realpath(DEVICE, path) != NULL ? path : strerrorname_np(errno));
    say("truncate", truncate(DEVICE, 0));
    say("rmdir", rmdir(DEVICE));
    say("chdir", chdir(DEVICE));
}
