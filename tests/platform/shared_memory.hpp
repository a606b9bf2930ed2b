// The shared memory of a dialogue: a plain buffer takes the place of the System V segment, and the
// calls for it are recorded and answered from a script.
#pragma once

#include "tests/platform/transcript.hpp"

#include <sys/shm.h>
#include <sys/types.h>

#include <string>

//     shmget 5676 7704 01666
//     shmat 9
//     getpid
//     shmctl 9 IPC_STAT
class ReplacedSharedMemory
{
  public:
    // The script.
    int segment_id = 9;
    int shmget_error = 0; // errno when the call fails
    int shmat_error = 0;
    int shmctl_error = 0;
    pid_t own_pid = 5151;
    pid_t creator_pid = 4242;
    bool real_shared_memory = false; // the calls do their true work, and are not recorded

    // What is attached.
    Bytes segment = Bytes(7704, 0x00);

    // What the replaced calls do while a dialogue is running.
    int on_shmget(key_t key, size_t size, int flags);
    void *on_shmat(int id, const void *address, int flags);
    int on_shmctl(int id, int command, shmid_ds *status);
    pid_t on_getpid();

  protected:
    ReplacedSharedMemory() = default;
    ~ReplacedSharedMemory() = default;

    virtual void note(const std::string &line) = 0; // in the dialogue's transcript
};
