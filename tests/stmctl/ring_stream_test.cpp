// A hundred thousand records through the ring, from one process to another. The test is the writer,
// and waits for the reader before it wraps around to it: so the reader keeps up on every machine.
#include "tests/stmctl/numbered_record.hpp"
#include "tests/stmctl/ring_bench.hpp"

#include <sys/shm.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>

namespace
{

constexpr int RECORDS = 100'000;
constexpr int BURST = 150; // less than the ring holds

class RingStream : public RingBench
{
  protected:
    void SetUp() override
    {
        RingBench::SetUp();
        if (!IsSkipped()) {
            const int id = shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0666);
            ring_ = static_cast<RingBuffer *>(shmat(id, nullptr, 0));
        }
    }
    void TearDown() override { shmdt(ring_); }

    void put_until(int last)
    {
        const std::atomic_ref<int32_t> index(ring_->write_index);
        while (put_ < last) {
            ring_->slots[index] = numbered(++put_);
            index = (index + 1) % SLOTS; // only now, when the slot is filled
        }
    }

    // The reader uses counted time: writing takes no time, so no pause is a silence.
    pid_t start_reader()
    {
        Words words = virtual_board({"--count-time"});
        words.insert(words.end(),
                     {program(), "ring", "read", "--from-oldest", "-n", std::to_string(RECORDS),
                      "--format", "csv", "-o", "read.csv", "--silence", "1000000000"});
        return start(words);
    }

    // Waits until the file has a line for each record written, below its header.
    void wait_for_reader()
    {
        wait_until("the reader", [this] {
            std::ifstream file(path("read.csv"), std::ios::binary);
            file.seekg(seen_bytes_);
            const std::string fresh{std::istreambuf_iterator<char>(file), {}};
            seen_bytes_ += std::ssize(fresh);
            seen_lines_ += std::ranges::count(fresh, '\n');
            return seen_lines_ > put_;
        });
    }

  private:
    RingBuffer *ring_ = nullptr;
    int put_ = 0;
    std::ptrdiff_t seen_bytes_ = 0;
    std::ptrdiff_t seen_lines_ = 0;
};

TEST_F(RingStream, delivers_every_record_of_a_writer_with_which_it_keeps_up)
{
    put_until(BURST);
    const pid_t reader = start_reader();
    for (int last = 2 * BURST; last < RECORDS && !HasFailure(); last += BURST) {
        wait_for_reader();
        put_until(last);
    }
    wait_for_reader();
    put_until(RECORDS);
    const Result result = finish(reader);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.errors.ends_with("stmctl: ring read: 100000 of 100000 records, 0 lost, 0 "
                                        "rejected, 0 overflowing, 0 overruns, 0 restarts of the "
                                        "writer\n"))
        << result.errors;
    const Table table = csv(read_text("read.csv"));
    EXPECT_EQ(column(table, "rel_t"), numbers(1, RECORDS));
    EXPECT_NE(table[0].at("U1e"), table[0].at("Uen")) << "in another order than on the wire";
}

} // namespace
