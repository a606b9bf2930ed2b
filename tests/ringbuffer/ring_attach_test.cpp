// Goal: attaching makes exactly its four calls, clears the flags only for the segment's creator,
// and ends the process with the text of the call that failed.
#include "tests/ringbuffer/ring_fixture.hpp"

#include <cerrno>
#include <cstring>

namespace
{

const Transcript CALLS = {"shmget 5676 7704 01666", "shmat 9", "getpid", "shmctl 9 IPC_STAT"};

// The fixture: a segment that is there, but not attached.
class Attach : public Ring
{
  protected:
    Attach() { stm_link.ring = nullptr; }
    void TearDown() override {}

    bool attached() const
    {
        return reinterpret_cast<const uint8_t *>(stm_link.ring) == segment.data();
    }
};

void attach()
{
    RingBuffer_Attach();
}

// All bytes of the link.
Bytes link_bytes()
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(&stm_link);
    return Bytes(bytes, bytes + sizeof(stm_link));
}

} // namespace

TEST_F(Attach, of_another_process_segment_gives_0_and_leaves_every_byte)
{
    EXPECT_EQ(RingBuffer_Attach(), 0);
    EXPECT_TRUE(happened(CALLS));
    EXPECT_TRUE(attached());
    EXPECT_TRUE(unchanged());
}

TEST_F(Attach, of_its_own_segment_gives_7680_and_clears_both_flags_and_nothing_else)
{
    creator_pid = own_pid;
    EXPECT_EQ(RingBuffer_Attach(), 7680);
    EXPECT_TRUE(happened(CALLS));
    EXPECT_TRUE(attached());
    EXPECT_TRUE(became({{WRITER_OPEN, 0}, {READER_OPEN, 0}}));
}

TEST_F(Attach, of_another_process_segment_keeps_flags_that_are_set)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    EXPECT_EQ(RingBuffer_Attach(), 0);
    EXPECT_TRUE(unchanged());
    EXPECT_EQ(RingBuffer_Open("w"), -1);
    EXPECT_EQ(RingBuffer_Open("r"), -1);
}

TEST_F(Attach, by_the_creator_lets_writer_and_reader_in_again)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    creator_pid = own_pid;
    EXPECT_EQ(RingBuffer_Attach(), 7680);
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    EXPECT_EQ(RingBuffer_Open("r"), 2);
}

TEST_F(Attach, takes_every_process_number_as_it_is)
{
    own_pid = INT_MAX;
    creator_pid = INT_MAX - 1;
    EXPECT_EQ(RingBuffer_Attach(), 0);
    creator_pid = INT_MAX;
    EXPECT_EQ(RingBuffer_Attach(), 7680);
}

TEST_F(Attach, takes_0_for_a_segment_like_any_other)
{
    segment_id = 0;
    EXPECT_EQ(RingBuffer_Attach(), 0);
    EXPECT_TRUE(happened({"shmget 5676 7704 01666", "shmat 0", "getpid", "shmctl 0 IPC_STAT"}));
    EXPECT_TRUE(attached());
}

TEST_F(Attach, a_second_time_makes_all_calls_again)
{
    EXPECT_EQ(RingBuffer_Attach(), 0);
    EXPECT_EQ(RingBuffer_Attach(), 0);
    EXPECT_TRUE(happened(times(2, CALLS)));
    EXPECT_TRUE(attached());
}

TEST_F(Attach, touches_nothing_else_of_the_link)
{
    memset(static_cast<void *>(&stm_link), 0xA5, sizeof(stm_link));
    stm_link.ring = reinterpret_cast<RingBuffer *>(segment.data());
    const Bytes expected = link_bytes();
    stm_link.ring = nullptr;
    RingBuffer_Attach();
    EXPECT_EQ(link_bytes(), expected);
}

TEST_F(Attach, without_a_segment_ends_the_process)
{
    shmget_error = EACCES;
    EXPECT_TRUE(ends_process(attach));
    EXPECT_TRUE(happened(
        {"shmget 5676 7704 01666", "perror \"shmget (ringbuffer space)\" EACCES", "exit 1"}));
    EXPECT_EQ(stm_link.ring, nullptr);
    EXPECT_TRUE(unchanged());
}

TEST_F(Attach, of_a_segment_that_is_smaller_ends_the_process)
{
    shmget_error = EINVAL;
    EXPECT_TRUE(ends_process(attach));
    EXPECT_TRUE(happened(
        {"shmget 5676 7704 01666", "perror \"shmget (ringbuffer space)\" EINVAL", "exit 1"}));
}

TEST_F(Attach, without_an_address_ends_the_process_and_stores_none)
{
    shmat_error = ENOMEM;
    EXPECT_TRUE(ends_process(attach));
    EXPECT_TRUE(happened({"shmget 5676 7704 01666", "shmat 9",
                          "perror \"shmat (ringbuffer space)\" ENOMEM", "exit 1"}));
    EXPECT_EQ(stm_link.ring, nullptr);
}

TEST_F(Attach, without_a_status_ends_the_process_with_the_segment_attached_and_untouched)
{
    shmctl_error = EIDRM;
    creator_pid = own_pid;
    EXPECT_TRUE(ends_process(attach));
    EXPECT_TRUE(
        happened(joined({CALLS, {"perror \"shmctl (ringbuffer space)\" EIDRM", "exit 1"}})));
    EXPECT_TRUE(attached());
    EXPECT_TRUE(unchanged());
}

TEST_F(Attach, that_fails_ends_a_true_process_with_status_1_and_the_words_of_the_system)
{
    really_exit = true;
    const auto die_of = [](int &error) {
        error = EACCES;
        RingBuffer_Attach();
    };
    EXPECT_EXIT(die_of(shmget_error), testing::ExitedWithCode(1),
                "^shmget \\(ringbuffer space\\): Permission denied\n$");
    EXPECT_EXIT(die_of(shmat_error), testing::ExitedWithCode(1),
                "^shmat \\(ringbuffer space\\): Permission denied\n$");
    EXPECT_EXIT(die_of(shmctl_error), testing::ExitedWithCode(1),
                "^shmctl \\(ringbuffer space\\): Permission denied\n$");
}
