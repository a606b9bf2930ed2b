// Goal: the replaced shared memory answers as the kernel does, and is not in the way of the true
// one.
#include "tests/platform/dialogue.hpp"

#include <sys/ipc.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace
{

void *all_ones()
{
    return reinterpret_cast<void *>(-1);
}

pid_t true_pid()
{
    return static_cast<pid_t>(syscall(SYS_getpid));
}

// Works on a segment of the system's own, and says whether all went well.
bool true_calls_work()
{
    const int id = shmget(IPC_PRIVATE, 100, IPC_CREAT | 0600);
    void *address = shmat(id, nullptr, 0);
    shmid_ds status = {};
    const int result = shmctl(id, IPC_STAT, &status);
    shmctl(id, IPC_RMID, nullptr);
    return id >= 0 && address != all_ones() && shmdt(address) == 0 && result == 0 &&
           status.shm_cpid == true_pid() && getpid() == true_pid();
}

} // namespace

TEST(SharedMemoryWithoutADialogue, is_the_true_one)
{
    EXPECT_TRUE(true_calls_work());
}

TEST_F(Dialogue, shared_memory_is_the_true_one_where_a_test_asks_for_it)
{
    real_shared_memory = true;
    EXPECT_TRUE(true_calls_work());
    EXPECT_TRUE(happened({}));
}

TEST_F(Dialogue, records_the_calls_for_shared_memory_in_order)
{
    shmid_ds status = {};
    EXPECT_EQ(shmget(12, 34, IPC_CREAT | 0640), 9);
    EXPECT_EQ(shmat(9, nullptr, 0), segment.data());
    EXPECT_EQ(getpid(), 5151);
    EXPECT_EQ(shmctl(9, IPC_STAT, &status), 0);
    EXPECT_TRUE(happened({"shmget 12 34 01640", "shmat 9", "getpid", "shmctl 9 IPC_STAT"}));
    EXPECT_EQ(status.shm_cpid, 4242);
    EXPECT_EQ(status.shm_lpid, 5151);
    EXPECT_EQ(status.shm_segsz, 7704U);
}

TEST_F(Dialogue, records_what_is_unusual_about_calls_for_shared_memory)
{
    EXPECT_EQ(shmget(12, 34, 0), 9);
    EXPECT_EQ(shmat(10, segment.data(), SHM_RDONLY), segment.data());
    EXPECT_EQ(shmctl(11, IPC_RMID, nullptr), 0);
    EXPECT_TRUE(happened({"shmget 12 34 0", "shmat 10 at an address flags 010000", "shmctl 11 0"}));
}

TEST_F(Dialogue, scripted_errors_of_shared_memory_set_errno)
{
    shmid_ds status = {};
    shmget_error = EACCES;
    shmat_error = ENOMEM;
    shmctl_error = EIDRM;
    EXPECT_EQ(shmget(1, 2, 3), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(shmat(9, nullptr, 0), all_ones());
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(shmctl(9, IPC_STAT, &status), -1);
    EXPECT_EQ(errno, EIDRM);
}

TEST_F(Dialogue, a_segment_has_7704_bytes)
{
    EXPECT_EQ(segment, bytes_of(7704, 0x00));
}

TEST_F(Dialogue, calls_what_a_test_does_while_the_operation_sleeps)
{
    while_asleep = [this] {
        EXPECT_TRUE(happened({"sleep 20"}));
        output("meanwhile", 1);
    };
    usleep(20);
    EXPECT_TRUE(happened({"sleep 20", "say 1 \"meanwhile\""}));
}
