// ring status and ring remove: what is told of a ring that is new, odd, damaged or another's.
#include "tests/stmctl/ring_bench.hpp"

#include "link/stm_com_funcs.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <regex>

namespace
{

class RingState : public RingBench
{
  protected:
    void SetUp() override
    {
        RingBench::SetUp();
        if (!IsSkipped()) {
            id_ = shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0640);
        }
    }

    int id() const { return id_; }
    RingBuffer *attached() const { return static_cast<RingBuffer *>(shmat(id_, nullptr, 0)); }

    Result status() { return script("$STMCTL ring status"); }

    // Sets a field to a value, and back.
    template <typename Field>
    void expect_damaged(Field &field, int value)
    {
        const Field before = field;
        field = static_cast<Field>(value);
        const Result result = status();
        EXPECT_EQ(result.status, 1) << value;
        EXPECT_EQ(result.errors,
                  "stmctl: the ring is damaged: indices are 0 to 159, flags 0 or 1\n")
            << value;
        field = before;
    }

  private:
    int id_ = -1;
};

TEST_F(RingState, a_new_one_was_never_attached_and_is_empty)
{
    const Result result = status();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const std::string output = std::regex_replace(
        result.output, std::regex("user .*,|process .*\\)|id [0-9]+"), "SOMEBODY");
    EXPECT_EQ(output, "segment     SOMEBODY, key 5676, 7704 bytes\n"
                      "owner       SOMEBODY mode 0640\n"
                      "made by     SOMEBODY\n"
                      "last use    never attached\n"
                      "            attached never, detached never\n"
                      "attached    0 times\n"
                      "writer      free; fills slot 0 next\n"
                      "reader      free; at slot 0, mark 0, values left 0\n"
                      "count       0 records put and not taken\n"
                      "slots       0 hold whole records, 160 are empty, 0 fail their checksum\n");
}

TEST_F(RingState, highest_values_are_no_damage)
{
    RingBuffer *ring = attached();
    ring->write_index = ring->mark = ring->read_pos = ring->count = ring->values_left = 159;
    ring->writer_open = ring->reader_open = 1;
    const Result result = status();
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("writer      taken, nobody can open it; fills slot 159 next\n"
                                 "reader      taken, nobody can open it; at slot 159, mark 159, "
                                 "values left 159\n"
                                 "count       159 records put and not taken\n"),
              std::string::npos)
        << result.output;
    shmdt(ring);
}

TEST_F(RingState, every_field_out_of_its_range_is_damage)
{
    RingBuffer *ring = attached();
    for (const int value : {-1, 160}) {
        expect_damaged(ring->write_index, value);
        expect_damaged(ring->mark, value);
        expect_damaged(ring->read_pos, value);
        expect_damaged(ring->count, value);
        expect_damaged(ring->values_left, value);
    }
    expect_damaged(ring->writer_open, 2);
    expect_damaged(ring->reader_open, 2);
    ring->writer_open = 2;
    EXPECT_NE(status().output.find("writer      damaged; fills slot 0 next\n"), std::string::npos);
    shmdt(ring);
}

TEST_F(RingState, who_uses_another_ring_is_not_named)
{
    RingBuffer *removed = attached();
    script("$STMCTL ring remove --force; fill 0.1");
    EXPECT_NE(status().output.find("attached    0 times\n"), std::string::npos);
    shmdt(removed);
    const Result result = script(
        "unshare --ipc $BOARD --transcript other $STMCTL ring write 2>other.err </dev/null &\n"
        "other=$!; await '; block 3:' other; $STMCTL ring status | grep ^attached; kill $other; "
        "wait $other");
    EXPECT_EQ(result.output, "attached    0 times\n");
}

TEST_F(RingState, what_is_wrong_with_it_is_said_before_the_device_is_opened)
{
    shmctl(id(), IPC_RMID, nullptr);
    const int small = shmget(RINGBUFFER_KEY, 100, IPC_CREAT | 0666);
    const Result result = script("$BOARD --fault no-device $STMCTL ring write");
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.errors, "stmctl: the ring's segment has 100 bytes instead of 7704: another "
                             "program's, or damaged; see stmctl ring remove\n");
    shmctl(small, IPC_RMID, nullptr);
}

} // namespace
