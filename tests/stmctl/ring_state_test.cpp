// ring status and ring remove: the report about a ring that is new, odd, damaged or another user's.
#include "tests/stmctl/numbered_record.hpp"
#include "tests/stmctl/ring_bench.hpp"

#include "link/stm_com_funcs.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
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
                  "stmctl: the ring is damaged: an index is not 0 to 159, or a flag not 0 or 1\n")
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
                      "writer      none; its flag is free; fills slot 0 next\n"
                      "reader      free; at slot 0, mark 0, values left 0\n"
                      "count       0 records put and not taken\n"
                      "slots       0 hold whole records, 160 are empty, 0 fail their checksum\n");
}

TEST_F(RingState, a_new_one_has_no_times_in_json)
{
    EXPECT_NE(script("$STMCTL ring status --json")
                  .output.find(",\"attached_at\":null,\"detached_at\":null,\"attached\":0}"),
              std::string::npos);
}

TEST_F(RingState, highest_values_are_not_damage)
{
    RingBuffer *ring = attached();
    ring->write_index = ring->mark = ring->read_pos = ring->count = ring->values_left = 159;
    ring->writer_open = ring->reader_open = 1;
    const Result result = status();
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("; its flag is taken, nobody can open it; fills slot 159 next\n"
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
    EXPECT_NE(status().output.find("its flag is damaged; fills slot 0 next\n"), std::string::npos);
    shmdt(ring);
}

TEST_F(RingState, users_of_another_ring_are_not_named)
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

TEST_F(RingState, its_writer_is_judged_by_what_it_does_and_not_by_its_flag)
{
    const std::string next = "; its flag is free; fills slot N next\n";
    const Result result = script(
        "status() { $STMCTL ring status | grep ^writer | "
        "sed 's/process [0-9]*/process N/g; s/slot [0-9]*/slot N/'\n"
        "$STMCTL ring status --json | grep -o '\"state\":\"[a-z]*'; }\n"
        "$BOARD $STMCTL ring write 2>writer.err </dev/null & writer=$!\n"
        "await_status 'fills slot [1-9]'; status\n"
        "$BOARD $STMCTL ring write 2>second.err </dev/null & second=$!\n"
        "await_status 'several at once'; status\n"
        "kill $second; wait $second; kill -9 $writer; wait $writer 2>/dev/null\n"
        "await_status '^attached    0 times'; fill 0.1; status; $STMCTL ring remove >/dev/null\n"
        "$BOARD --board third $STMCTL ring write 2>third.err </dev/null & third=$!\n"
        "await_status 'fills slot [1-9]'; kill -9 $third; await_status '^attached    0 times'; "
        "status\n");
    const std::string state = next + "\"state\":\"";
    EXPECT_EQ(result.output,
              "writer      writing, process N (stmctl)" + state + "writing\n" +
                  "writer      several at once, process N (stmctl) and process N (stmctl)" + state +
                  "several\n" + "writer      ended cleanly" + state + "ended\n" +
                  "writer      gone without closing it: killed?" + state + "killed\n");
}

TEST_F(RingState, a_program_that_leaves_no_mark_may_be_its_writer)
{
    RingBuffer *ring = attached();
    const std::string output = status().output;
    EXPECT_NE(output.find("writer      another program, if any: process " +
                          std::to_string(getpid()) + " ("),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("attached    1 time, process " + std::to_string(getpid()) + " (stmctl_"),
              std::string::npos)
        << output;
    EXPECT_NE(script("$STMCTL ring status --json").output.find("{\"state\":\"foreign\","),
              std::string::npos);
    shmdt(ring);
}

// Processes in another namespace cannot be seen, even if they have it attached.
TEST_F(RingState, a_process_that_cannot_be_seen_may_be_its_writer)
{
    RingBuffer *ring = attached();
    const std::string look = "unshare --pid --fork --mount-proc $STMCTL ring status ";
    const auto writer = [&](uint8_t mark) {
        reinterpret_cast<uint8_t *>(ring)[offsetof(RingBuffer, reader_open) + 1] = mark;
        return script(look + "| grep ^writer").output;
    };
    const std::string next = "; its flag is free; fills slot 0 next\n";
    const std::string unseen = "writer      unknown: its processes cannot be inspected" + next;
    EXPECT_EQ(writer(0), unseen);
    EXPECT_EQ(writer(1), unseen);
    EXPECT_NE(script(look + "--json").output.find("{\"state\":\"unseen\","), std::string::npos);
    EXPECT_EQ(writer(2), "writer      ended cleanly" + next);
    shmdt(ring);
}

TEST_F(RingState, is_shown_as_json)
{
    RingBuffer *ring = attached();
    ring->count = 1;
    ring->write_index = 7;
    EXPECT_NE(status().output.find("count       1 record put and not taken\n"), std::string::npos);
    shmdt(ring);
    const Result result = script("$STMCTL ring status --json");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const std::string output = std::regex_replace(
        std::regex_replace(result.output, std::regex("\"2[0-9: -]*\""), "\"TIME\""),
        std::regex("(id|made_by|last_use)\":[0-9]+|\"user [^\"]*\""), "$1\":N");
    EXPECT_EQ(output, "{\"segment\":{\"id\":N,\"key\":5676,\"bytes\":7704,\"owner\":\":N,"
                      "\"mode\":\"0640\",\"made_by\":N,\"last_use\":N,\"attached_at\":\"TIME\","
                      "\"detached_at\":\"TIME\",\"attached\":0},\"processes\":[],"
                      "\"writer\":{\"state\":\"none\",\"words\":\"none\",\"processes\":[],"
                      "\"flag\":0,\"next_slot\":7},"
                      "\"reader\":{\"flag\":0,\"slot\":0,\"mark\":0,\"values_left\":0},\"count\":1,"
                      "\"slots\":{\"whole\":0,\"empty\":160,\"damaged\":0},\"newest\":null,"
                      "\"damaged\":false}\n");
}

TEST_F(RingState, each_number_has_its_place_in_json)
{
    RingBuffer *ring = attached();
    ring->slots[3] = numbered(-2);
    ring->write_index = 4;
    ring->mark = 5;
    ring->read_pos = 6;
    ring->values_left = 7;
    ring->count = 8;
    ring->reader_open = 1;
    shmdt(ring);
    const std::string us = std::to_string(getpid());
    const std::string first = script("$STMCTL ring status --json").output;
    for (const std::string &words :
         {std::string("\"flag\":0,\"next_slot\":4},\"reader\":{\"flag\":1,\"slot\":6,\"mark\":5,"
                      "\"values_left\":7},\"count\":8,"),
          std::string("\"newest\":{\"rel_t\":4294967294,\"nr\":"),
          "\"made_by\":" + us + ",\"last_use\":" + us + ",\"attached_at\":\"2"}) {
        EXPECT_NE(first.find(words), std::string::npos) << words << '\n' << first;
    }
    const std::string second = script("$STMCTL ring status --json").output;
    EXPECT_NE(second.find("\"made_by\":" + us + ","), std::string::npos);
    EXPECT_EQ(second.find("\"last_use\":" + us + ","), std::string::npos) << "stmctl has looked";
    EXPECT_NE(status().output.find("newest      rel_t 4294967294, nr "), std::string::npos);
}

TEST_F(RingState, its_last_times_are_distinguished)
{
    const auto expect_distinguished = [this](const std::string &option, const std::string &words) {
        const auto begin = std::chrono::system_clock::now();
        RingBuffer *ring = attached();
        const auto second = std::chrono::seconds(2); // at least one between the two, in whole ones
        wait_until("later", [&] { return std::chrono::system_clock::now() > begin + second; });
        shmdt(ring);
        const std::string shown = script("$STMCTL ring status " + option).output;
        std::smatch times;
        ASSERT_TRUE(std::regex_search(shown, times, std::regex(words))) << shown;
        EXPECT_LT(times[1].str(), times[2].str());
    };
    expect_distinguished("--json", "\"attached_at\":\"([^\"]*)\",\"detached_at\":\"([^\"]*)\"");
    expect_distinguished("", "attached ([-0-9]+ [:0-9]+), detached ([-0-9]+ [:0-9]+)\n");
}

TEST_F(RingState, damage_is_shown_in_json_too)
{
    RingBuffer *ring = attached();
    ring->slots[RINGBUFFER_SLOTS - 1] = numbered(9); // before the index, wrapped around
    ring->write_index = 160;
    const Result result = script("$STMCTL ring status --json");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.output.ends_with(",\"newest\":null,\"damaged\":true}\n")) << result.output;
    const std::string us = std::to_string(getpid());
    EXPECT_NE(result.output.find("\"processes\":[{\"process\":" + us + ",\"words\":\"process " +
                                 us + " (stmctl_"),
              std::string::npos)
        << result.output;
    shmdt(ring);
    shmctl(id(), IPC_RMID, nullptr);
    const int small = shmget(RINGBUFFER_KEY, 1, IPC_CREAT | 0666);
    const Result too_small = script("$STMCTL ring status --json; $STMCTL ring status");
    EXPECT_NE(too_small.output.find(",\"writer\":null}\n"), std::string::npos);
    EXPECT_NE(too_small.output.find(", key 5676, 1 byte\n"), std::string::npos);
    EXPECT_EQ(count(too_small.errors,
                    "stmctl: the segment is too small for a ring, which has 7704 bytes\n"),
              2U);
    shmctl(small, IPC_RMID, nullptr);
}

TEST_F(RingState, its_faults_are_reported_before_the_device_is_opened)
{
    shmctl(id(), IPC_RMID, nullptr);
    const int small = shmget(RINGBUFFER_KEY, 100, IPC_CREAT | 0666);
    const Result result = script("$BOARD --fault no-device $STMCTL ring write");
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.errors, "stmctl: the ring's segment has 100 bytes instead of 7704: it is "
                             "another program's or damaged; see stmctl ring remove\n");
    shmctl(small, IPC_RMID, nullptr);
    const int least = shmget(RINGBUFFER_KEY, 1, IPC_CREAT | 0666);
    EXPECT_EQ(script("$STMCTL ring read").errors,
              "stmctl: the ring's segment has 1 byte instead of 7704: it is another program's or "
              "damaged; see stmctl ring remove\n");
    shmctl(least, IPC_RMID, nullptr);
}

TEST_F(RingState, its_readers_are_not_taken_for_writers)
{
    const Result result =
        script("$STMCTL ring read 2>reader.err </dev/null & reader=$!; await_one\n"
               "$STMCTL ring status | grep ^writer; kill $reader; wait $reader");
    EXPECT_EQ(result.output, "writer      none; its flag is free; fills slot 0 next\n");
}

} // namespace
