// Processes for the tests of the true ring.
#include "tests/ringbuffer/processes_fixture.hpp"

#include "link/link.hpp"

#include <sched.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <string>
#include <vector>

using namespace stm;

namespace
{

constexpr unsigned LONGEST_LIFE = 3000; // seconds, lest a hang outlive its test
constexpr int FAILED_CHILD = 99;

bool has_namespace = false;

// Why the tests cannot be run here, null if they can.
const char *obstacle()
{
    if (shmget(RINGBUFFER_KEY, 0, 0) >= 0) {
        return has_namespace ? "a test before has left its segment"
                             : "no namespace is to be had, and outside of one key 5676 is taken";
    }
    return errno == ENOENT ? nullptr : strerror(errno);
}

void remove_segment()
{
    const int id = shmget(RINGBUFFER_KEY, 0, 0);
    if (id >= 0) {
        shmctl(id, IPC_RMID, nullptr);
    }
}

uint32_t mixed(uint32_t number, uint32_t place)
{
    uint32_t value = number * 2654435761U + place * 40503U;
    value ^= value >> 15;
    value *= 2246822519U;
    return value ^ value >> 13;
}

uint16_t checksum_of(const RingRecord &record)
{
    uint8_t bytes[sizeof(record)];
    memcpy(bytes, &record, sizeof(bytes));
    return stm_crc16(bytes, sizeof(bytes) - 2);
}

// How a process has come to a bad end.
std::string end_of(int status)
{
    if (WIFSIGNALED(status)) {
        return "ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0 ? ""
                                    : "ended with status " + std::to_string(WEXITSTATUS(status));
}

void end_all(const std::vector<pid_t> &children)
{
    for (const pid_t child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
}

} // namespace

// The namespace belongs to this program and its children, and goes with them.
void Processes::SetUpTestSuite()
{
    has_namespace = unshare(CLONE_NEWIPC) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWIPC) == 0;
}

void Processes::SetUp()
{
    if (const char *reason = obstacle()) {
        GTEST_SKIP() << reason;
    }
    void *memory =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    board = new (memory) Board{};
}

void Processes::TearDown()
{
    if (board != nullptr) {
        munmap(board, sizeof(Board));
        remove_segment();
    }
}

pid_t Processes::start(Work work, uint32_t number)
{
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        alarm(LONGEST_LIFE);
        work(*board, number);
        _exit(0);
    }
    return child;
}

testing::AssertionResult Processes::ended_well(std::initializer_list<pid_t> children)
{
    std::vector<pid_t> running = children;
    while (!running.empty()) {
        int status = 0;
        const pid_t child = running.back();
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended == 0) {
            std::rotate(running.begin(), running.end() - 1, running.end());
            usleep(1000);
            continue;
        }
        running.pop_back();
        const std::string end = ended == child ? end_of(status) : "is not there";
        if (!end.empty()) {
            end_all(running);
            return testing::AssertionFailure()
                   << (child == *children.begin() ? "the first process " : "another process ")
                   << end;
        }
    }
    return testing::AssertionSuccess();
}

RingRecord record_of(uint32_t number)
{
    RingRecord record = {};
    uint8_t bytes[sizeof(record)];
    for (uint32_t place = 0; place < sizeof(bytes); place += 4) {
        const uint32_t word = mixed(number, place);
        memcpy(bytes + place, &word, sizeof(word));
    }
    memcpy(&record, bytes, sizeof(record));
    record.marker = 0x55;
    record.rel_t = static_cast<int32_t>(number);
    record.checksum = checksum_of(record);
    return record;
}

bool is_accepted(const RingRecord &record)
{
    return record.checksum == checksum_of(record);
}

bool is_whole(const RingRecord &record)
{
    const RingRecord truth = record_of(static_cast<uint32_t>(record.rel_t));
    return memcmp(&record, &truth, sizeof(truth)) == 0;
}

RingRecord copy_of(const RingRecord *slot)
{
    child_insists(slot != nullptr);
    RingRecord record;
    memcpy(&record, slot, sizeof(record));
    return record;
}

bool is_slot_or_null(const RingRecord *slot)
{
    const auto distance =
        reinterpret_cast<intptr_t>(slot) - reinterpret_cast<intptr_t>(stm_link.ring);
    const bool is_slot = distance >= 0 && distance < 7680 && distance % 48 == 0;
    return slot == nullptr || is_slot;
}

void child_insists(bool condition)
{
    if (!condition) {
        _exit(FAILED_CHILD);
    }
}
