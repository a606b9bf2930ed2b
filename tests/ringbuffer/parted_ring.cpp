// A ring in two parts, of which either may be closed.
#include "tests/ringbuffer/parted_ring.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace
{

constexpr size_t LEAST_PART = 8192; // two small pages, which the whole ring fits in
static_assert(RINGBUFFER_SIZE < LEAST_PART);

// What the handler needs: the part that is closed, and what happens before it opens.
uint8_t *closed_part = nullptr;
size_t closed_size = 0;
std::function<void()> closed_action;
struct sigaction handler_before;

// The part is open before anybody acts: its pages are none that another fault could mean.
void open_part(int)
{
    if (closed_part == nullptr) {
        std::signal(SIGSEGV, SIG_DFL); // a fault of the program's own ends it
        return;
    }
    mprotect(std::exchange(closed_part, nullptr), closed_size, PROT_READ | PROT_WRITE);
    std::exchange(closed_action, nullptr)();
}

void close_part(uint8_t *part, size_t size, int protection, std::function<void()> action)
{
    closed_part = part;
    closed_size = size;
    closed_action = std::move(action);
    mprotect(part, size, protection);
}

} // namespace

// The boundary is that of two pages, and shared with processes that are forked off.
PartedRing::PartedRing(size_t boundary)
    : part_(std::max(static_cast<size_t>(sysconf(_SC_PAGESIZE)), LEAST_PART)),
      gap_(part_ - boundary)
{
    void *memory =
        mmap(nullptr, 2 * part_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory for a ring in two parts");
    }
    memory_ = static_cast<uint8_t *>(memory);
    struct sigaction on_fault = {};
    on_fault.sa_handler = open_part;
    sigaction(SIGSEGV, &on_fault, &handler_before);
}

PartedRing::~PartedRing()
{
    sigaction(SIGSEGV, &handler_before, nullptr);
    closed_part = nullptr;
    closed_action = nullptr;
    munmap(memory_, 2 * part_);
}

void PartedRing::before_last_part_is_loaded(std::function<void()> action)
{
    close_part(memory_ + part_, part_, PROT_NONE, std::move(action));
}

void PartedRing::before_last_part_is_stored(std::function<void()> action)
{
    close_part(memory_ + part_, part_, PROT_READ, std::move(action));
}

void PartedRing::before_first_part_is_loaded(std::function<void()> action)
{
    close_part(memory_, part_, PROT_NONE, std::move(action));
}

bool PartedRing::has_acted() const
{
    return closed_part == nullptr;
}
