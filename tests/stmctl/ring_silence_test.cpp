// Goal: when nothing comes any more, a reader of the ring distinguishes a writer that has ended
// from one that was killed and from one that is running but writes nothing.
#include "tests/stmctl/numbered_record.hpp"
#include "tests/stmctl/ring_bench.hpp"

#include <sys/shm.h>

#include <cstddef>

namespace
{

class RingSilence : public RingBench
{
  protected:
    ~RingSilence() override
    {
        if (ring_ != nullptr) {
            shmdt(ring_);
        }
    }

    // A writer of another program: it writes records and knows nothing of the mark.
    RingBuffer &other_writer(int32_t records)
    {
        const int id = shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0666);
        ring_ = static_cast<RingBuffer *>(shmat(id, nullptr, 0));
        for (int32_t number = 1; number <= records; ++number) {
            ring_->slots[ring_->write_index++] = numbered(number);
        }
        return *ring_;
    }

    void end_other_writer()
    {
        shmdt(ring_);
        ring_ = nullptr;
    }

    static uint8_t mark()
    {
        const int id = shmget(RINGBUFFER_KEY, 0, 0);
        const auto *bytes = static_cast<const uint8_t *>(shmat(id, nullptr, SHM_RDONLY));
        const uint8_t value = bytes[offsetof(RingBuffer, reader_open) + 1];
        shmdt(bytes);
        return value;
    }

    // In counted time, starting at the oldest record.
    Result read(const std::string &options)
    {
        return script("$BOARD --count-time $STMCTL ring read --from-oldest " + options +
                      " --format csv -o read.csv");
    }

    // On a board in a folder virtual-board becomes the writer itself, which gets no time to end.
    Result kill_writer()
    {
        return script("$BOARD --board board $STMCTL ring write 2>writer.err </dev/null & "
                      "writer=$!; await_one\n"
                      "await_status 'fills slot [1-9]'; kill -9 $writer\n"
                      "await_status 'attached    0 times'");
    }

    static void expect_silent(const Result &result, const std::string &cause)
    {
        EXPECT_EQ(result.status, 1) << result.errors;
        EXPECT_NE(result.errors.find("stmctl: ring read: nothing came in the last "),
                  std::string::npos)
            << result.errors;
        EXPECT_NE(result.errors.find(" s; " + cause + "\n"), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find(", silent for "), std::string::npos);
    }

    static void expect_done(const Result &result)
    {
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors.find("nothing came"), std::string::npos) << result.errors;
        EXPECT_EQ(result.errors.find("silent"), std::string::npos) << result.errors;
    }

  private:
    RingBuffer *ring_ = nullptr;
};

TEST_F(RingSilence, a_writer_that_has_ended_is_not_a_failure)
{
    script("fill 0.1");
    EXPECT_EQ(mark(), 2);
    for (const std::string options :
         {"--duration 60", "--duration 60 --silence 1", "--duration 60 --fail-on-loss"}) {
        expect_done(read(options));
    }
}

TEST_F(RingSilence, a_writer_that_was_killed_is_a_failure)
{
    kill_writer();
    EXPECT_EQ(mark(), 1);
    expect_silent(read("--duration 60"), "its writer was killed");
    expect_silent(read("--duration 5 --silence 4.9"), "its writer was killed");
    expect_done(read("--duration 3 --silence 4"));
    script("fill 0.1");
    expect_done(read("--duration 60"));
}

TEST_F(RingSilence, the_wanted_records_may_come_from_a_killed_writer)
{
    kill_writer();
    const Result result = read("-n 1");
    EXPECT_EQ(result.status, 0) << result.errors;
}

TEST_F(RingSilence, a_running_writer_that_writes_nothing_is_a_failure)
{
    other_writer(20);
    expect_silent(read("--duration 60"), "its writer is running but writes nothing");
    const Result waited = read("--duration 5 --silence 4.9");
    expect_silent(waited, "its writer is running but writes nothing");
    EXPECT_EQ(
        count(waited.errors, "stmctl: ring read: nothing new from the writer; waiting for it\n"),
        1U)
        << waited.errors;
    expect_done(read("--duration 4 --silence 5"));
}

// How it ended is not known.
TEST_F(RingSilence, a_writer_of_another_program_that_has_gone_is_not_a_failure)
{
    other_writer(20);
    EXPECT_EQ(mark(), 0);
    end_other_writer();
    expect_done(read("--duration 60"));
}

// In too short a time for a silence.
TEST_F(RingSilence, nothing_in_a_limited_time_has_a_reason)
{
    const std::string zero = "stmctl: ring read: 0 records, 0 lost, 0 rejected, 0 overflowing, 0 "
                             "overruns, 0 restarts of the writer; ";
    const auto expect_reason = [&](const std::string &reason) {
        const Result result = script("$BOARD --count-time $STMCTL ring read --duration 0.5");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, zero + reason + "\n");
    };
    other_writer(20);
    expect_reason("its writer is running but writes nothing");
    end_other_writer();
    expect_reason("there is no writer");
    script("fill 0.1");
    expect_reason("its writer has ended");
    kill_writer();
    expect_reason("its writer was killed");
}

TEST_F(RingSilence, silence_is_reported_after_two_seconds)
{
    script("fill 0.1");
    const std::string said = "stmctl: ring read: there is no writer; waiting for one\n";
    EXPECT_EQ(count(read("--duration 1.9").errors, said), 0U);
    EXPECT_EQ(count(read("--duration 2.1").errors, said), 1U);
    EXPECT_EQ(count(read("--duration 30").errors, said), 1U);
}

// The second writer, on a fresh board, begins at 1 again: that is no step back, but what the board
// repeats is one.
TEST_F(RingSilence, records_that_come_again_are_reported_with_all_that_has_happened)
{
    const Result result = script(
        "fill 0.1; $STMCTL ring read --from-oldest --silence 1 --format csv -o read.csv "
        "2>reader.err </dev/null "
        "&\n"
        "reader=$!; await 'waiting for one' reader.err\n"
        "$BOARD --count-time --fault stuck@20 $STMCTL ring write --duration 0.05 2>writer.err "
        "</dev/null\n"
        "await 'coming again' reader.err; kill $reader; wait $reader");
    EXPECT_EQ(result.status, 0);
    const std::string errors = read_text("reader.err");
    EXPECT_EQ(count(errors, "stmctl: ring read: there is no writer; waiting for one\n"), 1U);
    EXPECT_EQ(count(errors, "stmctl: ring read: the writer has restarted\n"), 1U) << errors;
    EXPECT_EQ(count(errors, "stmctl: ring read: records are coming again\n"), 1U) << errors;
    EXPECT_NE(errors.find(" records, 1 lost, 0 rejected, 0 overflowing, silent for "),
              std::string::npos)
        << errors;
    EXPECT_TRUE(errors.ends_with(" s, 1 step back in rel_t, 0 overruns, 1 restart of the writer\n"))
        << errors;
}

TEST_F(RingSilence, an_earlier_writer_s_slots_are_not_a_loss)
{
    script("fill 0.4; fill 0.1");
    expect_done(read("--duration 1 --fail-on-loss"));
    script("rm -rf board; $BOARD --count-time --board board $STMCTL ring write --duration 0.4\n"
           "$BOARD --count-time --board board $STMCTL ring write --duration 0.1");
    expect_done(read("--duration 1 --fail-on-loss"));
    EXPECT_EQ(count(read_text("read.csv"), "\n"), 100U);
}

TEST_F(RingSilence, a_loss_fails_the_reader_that_is_to_fail_on_it)
{
    RingBuffer &ring = other_writer(20);
    ring.slots[ring.write_index++] = numbered(30);
    end_other_writer();
    EXPECT_EQ(read("--duration 1").status, 0);
    const Result failed = read("--duration 1 --fail-on-loss");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.errors, "stmctl: ring read: 21 records, 9 lost, 0 rejected, 0 overflowing, 0 "
                             "overruns, 0 restarts of the writer\n");
}

TEST_F(RingSilence, a_mark_that_nobody_leaves_is_as_good_as_none)
{
    RingBuffer &ring = other_writer(20);
    reinterpret_cast<uint8_t *>(&ring)[offsetof(RingBuffer, reader_open) + 1] = 3;
    end_other_writer();
    expect_done(read("--duration 60"));
}

TEST_F(RingSilence, a_writer_whose_board_is_silent_still_leaves_its_mark)
{
    const Result written =
        script("$BOARD --count-time --fault silence@t=1s..9s $STMCTL ring write --duration 5");
    EXPECT_EQ(written.status, 1);
    EXPECT_EQ(mark(), 2);
    expect_done(read("--duration 60"));
}

TEST_F(RingSilence, a_stop_in_a_silence_fails_an_endless_reader_and_stops_a_limited_one)
{
    kill_writer();
    const std::string stop = " 2>reader.err < <(await 'waiting for' reader.err; printf 's\\n')";
    EXPECT_EQ(script("$STMCTL ring read" + stop).status, 1);
    EXPECT_EQ(count(read_text("reader.err"), "; its writer was killed\n"), 1U);
    EXPECT_EQ(script("rm reader.err; $STMCTL ring read -n 1000" + stop).status, 3);
    EXPECT_EQ(count(read_text("reader.err"), "; its writer was killed\n"), 1U);
}

} // namespace
