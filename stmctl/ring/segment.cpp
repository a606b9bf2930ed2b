// The ring's shared memory, seen from outside.
#include "stmctl/ring/segment.hpp"

#include "stmctl/module/operation.hpp"
#include "stmctl/output/counted.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <dirent.h>
#include <pwd.h>
#include <sys/ipc.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace stmctl
{

namespace
{

// After the two flags and before the index, which is aligned to four bytes.
constexpr size_t MARK_OFFSET = offsetof(RingBuffer, reader_open) + 1;
static_assert(MARK_OFFSET < offsetof(RingBuffer, write_index));

[[noreturn]] void fail(const std::string &what, int error)
{
    throw Failure(ExitStatus::not_there, fmt::format("{}: {}", what, strerror(error)));
}

// "ADDRESSES r--s 00000000 00:01 ID /SYSV0000162c (deleted)"
bool maps_segment(pid_t process, const Segment &segment)
{
    const std::string name = fmt::format("/SYSV{:08x}", RINGBUFFER_KEY);
    std::ifstream maps(fmt::format("/proc/{}/maps", process));
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        std::string skipped;
        std::string file;
        int id = -1;
        words >> skipped >> skipped >> skipped >> skipped >> id >> file;
        if (file == name && id == segment.id) {
            return true;
        }
    }
    return false;
}

// The module asks for reading and writing.
void check_access(const Segment &segment)
{
    if (segment.info.shm_segsz < RINGBUFFER_SIZE) {
        throw Failure(ExitStatus::not_there,
                      fmt::format("the ring's segment has {} instead of {}: it is another "
                                  "program's or damaged; see stmctl ring remove",
                                  counted(segment.info.shm_segsz, "byte", "bytes"),
                                  RINGBUFFER_SIZE));
    }
    if (!may_be_attached()) {
        fail(fmt::format("the ring's segment belongs to {} and cannot be attached",
                         user_words(segment.info.shm_perm.uid)),
             errno);
    }
}

// Other namespaces have segments with the same numbers.
bool shares_memory_with_us(pid_t process)
{
    std::error_code ignored;
    const auto space = [&](const std::string &name) {
        return std::filesystem::read_symlink(fmt::format("/proc/{}/ns/ipc", name), ignored);
    };
    return space(fmt::format("{}", process)) == space("self");
}

} // namespace

std::optional<Segment> find_segment()
{
    Segment segment;
    segment.id = shmget(RINGBUFFER_KEY, 0, 0);
    if (segment.id < 0 && errno == ENOENT) {
        return {};
    }
    if (segment.id < 0 || shmctl(segment.id, IPC_STAT, &segment.info) != 0) {
        fail("the ring's segment exists but cannot be inspected", errno);
    }
    return segment;
}

Segment existing_segment()
{
    const std::optional<Segment> segment = find_segment();
    if (!segment) {
        throw Failure(ExitStatus::not_there,
                      "there is no ring; stmctl ring write creates and fills one");
    }
    return *segment;
}

void attach_ring()
{
    if (const std::optional<Segment> segment = find_segment()) {
        check_access(*segment);
    } else if (shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0666) < 0) {
        fail("cannot create the ring's segment", errno);
    }
    check(perform([](StmPollFn, StmOutputFn) {
              RingBuffer_Attach();
              return 0;
          }),
          "ring");
}

bool may_be_attached()
{
    return shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, 0666) >= 0;
}

std::string user_words(uid_t user)
{
    const passwd *entry = getpwuid(user);
    return entry != nullptr ? fmt::format("user {}", entry->pw_name) : fmt::format("user {}", user);
}

std::string process_name(pid_t process)
{
    std::ifstream file(fmt::format("/proc/{}/comm", process));
    std::string name;
    std::getline(file, name);
    return fmt::format("process {} ({})", process, file ? name : "gone");
}

std::vector<pid_t> attached_processes(const Segment &segment)
{
    std::vector<pid_t> processes;
    DIR *folder = opendir("/proc");
    while (const dirent *entry = folder != nullptr ? readdir(folder) : nullptr) {
        const std::string_view name = entry->d_name;
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        if (process > 0 && maps_segment(process, segment) && shares_memory_with_us(process)) {
            processes.push_back(process);
        }
    }
    if (folder != nullptr) {
        closedir(folder);
    }
    return processes;
}

std::string attached_words(const Segment &segment, const std::vector<pid_t> &processes)
{
    std::string words;
    for (const pid_t process : processes) {
        words += fmt::format(", {}", process_name(process));
    }
    return fmt::format("{}{}", counted(segment.info.shm_nattch, "time", "times"), words);
}

void leave_mark(int id, WriterMark mark)
{
    void *ring = shmat(id, nullptr, 0);
    if (reinterpret_cast<intptr_t>(ring) == -1) {
        fail("the ring's segment cannot be attached", errno);
    }
    static_cast<volatile uint8_t *>(ring)[MARK_OFFSET] = static_cast<uint8_t>(mark);
    shmdt(ring);
}

RingView::RingView(int id)
{
    const void *address = shmat(id, nullptr, SHM_RDONLY);
    if (reinterpret_cast<intptr_t>(address) == -1) {
        fail("the ring's segment cannot be attached", errno);
    }
    ring_ = static_cast<const volatile RingBuffer *>(address);
}

RingView::~RingView()
{
    shmdt(const_cast<const RingBuffer *>(ring_));
}

int32_t RingView::write_index() const
{
    const int32_t index = ring_->write_index;
    std::atomic_thread_fence(std::memory_order_acquire); // slots must be read after it
    return index;
}

RingRecord RingView::slot(int32_t index) const
{
    RingRecord record;
    memcpy(&record, const_cast<const RingRecord *>(&ring_->slots[index]), sizeof(record));
    std::atomic_thread_fence(std::memory_order_acquire);
    return record;
}

WriterMark RingView::writer_mark() const
{
    const auto *bytes = reinterpret_cast<const volatile uint8_t *>(ring_);
    const uint8_t mark = bytes[MARK_OFFSET];
    return mark <= static_cast<uint8_t>(WriterMark::ended) ? WriterMark{mark} : WriterMark::unknown;
}

RingBuffer RingView::copy() const
{
    RingBuffer ring;
    memcpy(&ring, const_cast<const RingBuffer *>(ring_), sizeof(ring));
    return ring;
}

} // namespace stmctl
