// The files by which descriptors of the device are recognised.
#include "simulator/preload/device_files.hpp"

#include "simulator/preload/driver_call.hpp"
#include "simulator/preload/program.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <string>

namespace simulator
{

namespace
{

// Not this library's own, which shows a device in the place of the file. The wide ones hold the numbers of
// all files, whatever this library was built for.
constinit RealCall<int(int, struct stat64 *)> real_fstat64("fstat64");
constinit RealCall<int(const char *, struct stat64 *)> real_stat64("stat64");
constinit RealCall<void *(void *, size_t, int, int, int, off64_t)> real_mmap64("mmap64");

struct DeviceFile {
    dev_t device;
    ino64_t inode;
    std::atomic<int> generation;
    DeviceFile *next;
};

// Grows only at its head, so that any thread may walk along it. It has an entry for each file that
// there has been, normally one.
std::atomic<DeviceFile *> device_files = nullptr;

DeviceFile *find(const struct stat64 &file)
{
    DeviceFile *at = device_files;
    while (at != nullptr && (at->device != file.st_dev || at->inode != file.st_ino)) {
        at = at->next;
    }
    return at;
}

void add(const struct stat64 &file, int generation)
{
    auto *fresh = new DeviceFile{file.st_dev, file.st_ino, generation, device_files};
    while (!device_files.compare_exchange_weak(fresh->next, fresh)) {
    }
}

// A mapped file keeps its inode when it is replaced and closed: no other file of the program can
// get that number and be taken for the device. The mapping also keeps the open file alive, and with
// it any lock that the program holds on it beyond its descriptor: therefore the file is opened once
// more.
void keep_inode(int fd, const struct stat64 &file)
{
    if (!S_ISREG(file.st_mode)) {
        return;
    }
    const std::string name = "/proc/self/fd/" + std::to_string(fd);
    const int own = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (own >= 0) {
        (void)real_mmap64(nullptr, static_cast<size_t>(sysconf(_SC_PAGESIZE)), PROT_NONE,
                          MAP_SHARED, own, 0);
        (void)syscall(SYS_close, own); // close belongs to the program, and may be intercepted
    }
}

} // namespace

void know_device_file(int fd, int generation)
{
    struct stat64 file = {};
    if (fd < 0 || real_fstat64(fd, &file) != 0) {
        return;
    }
    if (DeviceFile *known = find(file)) {
        known->generation = generation;
        return;
    }
    keep_inode(fd, file);
    add(file, generation);
}

void know_device_file_if_none_is(const char *path)
{
    struct stat64 file = {};
    if (!knows_device_file() && real_stat64(path, &file) == 0) {
        add(file, 0);
    }
}

bool knows_device_file()
{
    return device_files.load() != nullptr;
}

int device_generation(int fd)
{
    struct stat64 file = {};
    if (!knows_device_file() || real_fstat64(fd, &file) != 0) {
        return NOT_OF_DEVICE;
    }
    const DeviceFile *known = find(file);
    return known != nullptr ? known->generation.load() : NOT_OF_DEVICE;
}

bool is_virtual_device(int fd)
{
    return !is_in_driver_call() && device_generation(fd) != NOT_OF_DEVICE && !leaves_device_real();
}

} // namespace simulator
