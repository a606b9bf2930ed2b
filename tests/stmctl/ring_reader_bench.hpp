// A bench for the ring's reader: a ring of its own, and what a writer does to it, step by step.
#pragma once

#include "stmctl/ring/slot_follower.hpp"
#include "tests/stmctl/numbered_record.hpp"

#include <gtest/gtest.h>
#include <sys/shm.h>

#include <cstring>
#include <vector>

using namespace stmctl;

inline std::vector<int32_t> range(int32_t first, int32_t last)
{
    std::vector<int32_t> numbers;
    for (int32_t number = first; number <= last; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

inline std::vector<int32_t> operator+(std::vector<int32_t> numbers,
                                      const std::vector<int32_t> &others)
{
    numbers.insert(numbers.end(), others.begin(), others.end());
    return numbers;
}

class Reader : public testing::Test
{
  protected:
    Reader()
    {
        id_ = shmget(IPC_PRIVATE, RINGBUFFER_SIZE, 0600);
        ring_ = static_cast<RingBuffer *>(shmat(id_, nullptr, 0));
        shmctl(id_, IPC_RMID, nullptr); // it lasts as long as it is attached
    }
    ~Reader() override { shmdt(ring_); }

    RingBuffer &ring() { return *ring_; }
    int segment() const { return id_; }

    void put(int32_t first, int32_t last)
    {
        for (int32_t number = first; number <= last; ++number) {
            ring_->slots[ring_->write_index] = numbered(number);
            ring_->write_index = (ring_->write_index + 1) % SLOTS;
        }
    }

    void begin_anew() { ring_->write_index = 0; }

    // The first half of a record is in the slot that is to be filled next.
    void begin_to_put(int32_t number)
    {
        const RingRecord record = numbered(number);
        memcpy(&ring_->slots[ring_->write_index], &record, 20);
    }

  private:
    int id_ = -1;
    RingBuffer *ring_ = nullptr;
};

struct Seen {
    std::vector<int32_t> numbers;
    bool overrun = false;
    bool restarted = false;

    bool operator==(const Seen &other) const = default;
};

inline void PrintTo(const Seen &seen, std::ostream *out)
{
    *out << testing::PrintToString(seen.numbers) << (seen.overrun ? " overrun" : "")
         << (seen.restarted ? " restarted" : "");
}

inline Seen seen(const SlotFollower::Look &look)
{
    Seen all{{}, look.overrun, look.restarted};
    for (const RingRecord &record : look.records) {
        all.numbers.push_back(record.rel_t);
    }
    return all;
}

// Some things are only certain once they have stayed the same for a few looks.
inline Seen settled(SlotFollower &reader)
{
    Seen now;
    for (int look = 0; look < 4 && now == Seen{}; ++look) {
        now = seen(reader.look());
    }
    return now;
}
