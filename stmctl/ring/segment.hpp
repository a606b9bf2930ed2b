// The ring's shared memory, seen from outside: without creating it, and without the module, which
// would end the process on a failure.
#pragma once

#include "link/stm_com_funcs.h"

#include <sys/shm.h>

#include <optional>
#include <string>
#include <vector>

namespace stmctl
{

struct Segment {
    int id = -1;
    shmid_ds info = {};
};

// Throws a Failure if it exists but cannot be inspected.
std::optional<Segment> find_segment();

// The same, but also throws a Failure if it does not exist.
Segment existing_segment();

// Attaches it for the module (RingBuffer_Attach), and creates it if there is none. Throws a Failure
// if the module would end the process.
void attach_ring();

// Whether the module, which reads and writes, may attach it.
bool may_be_attached();

// "user pi", "process 12 (stmctl)"
std::string user_words(uid_t user);
std::string process_name(pid_t process);

// The processes that have the segment attached, as far as they are visible.
std::vector<pid_t> attached_processes(const Segment &segment);

// "2 times, process 12 (stmctl), process 13 (front-end)"
std::string attached_words(const Segment &segment, const std::vector<pid_t> &processes);

// What stmctl leaves for readers in a byte that the ring's layout does not use. Other writers do
// not change it.
enum class WriterMark : uint8_t { unknown = 0, writing = 1, ended = 2 };

// Throws a Failure if the segment cannot be attached.
void leave_mark(int id, WriterMark mark);

// The segment, read-only.
class RingView
{
  public:
    explicit RingView(int id);
    ~RingView();
    RingView(const RingView &) = delete;
    RingView &operator=(const RingView &) = delete;

    int32_t write_index() const;
    RingRecord slot(int32_t index) const; // a copy, during which the writer may change the slot
    RingBuffer copy() const;
    WriterMark writer_mark() const;

  private:
    const volatile RingBuffer *ring_;
};

} // namespace stmctl
