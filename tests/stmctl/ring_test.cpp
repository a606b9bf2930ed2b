// ring: its writer, its reader, its state and its removal.
#include "tests/stmctl/ring_bench.hpp"

#include "link/stm_com_funcs.h"

#include <sys/shm.h>

namespace
{

class Ring : public RingBench
{
  protected:
    // The segment, for tests that damage it.
    static RingBuffer *segment(size_t size = RINGBUFFER_SIZE)
    {
        const int id = shmget(RINGBUFFER_KEY, size, IPC_CREAT | 0666);
        return static_cast<RingBuffer *>(shmat(id, nullptr, 0));
    }
};

TEST_F(Ring, without_one_there_is_nothing_to_read_to_show_or_to_remove)
{
    const std::string sentence = "there is no ring; stmctl ring write creates and fills one";
    for (const char *command : {"read", "status", "remove"}) {
        expect_failure(run(directly({}, {program(), "ring", command})), 4, sentence);
    }
    EXPECT_EQ(shmget(RINGBUFFER_KEY, 0, 0), -1) << "looking makes none";
}

TEST_F(Ring, each_of_its_commands_has_help_with_examples)
{
    for (const std::string command : {"write", "read", "status", "remove"}) {
        const Result result = run(directly({}, {program(), "ring", command, "--help"}));
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_NE(result.output.find("Examples:\n  stmctl ring " + command), std::string::npos)
            << result.output;
    }
}

TEST_F(Ring, writer_creates_it_and_status_shows_it)
{
    const Result written = script("fill 0.5; cat writer.err");
    EXPECT_EQ(written.status, 0);
    EXPECT_NE(written.output.find("stmctl: ring write: 4"), std::string::npos) << written.output;
    EXPECT_NE(written.output.find(" records, 0 lost, 0 rejected, 0 overflowing\n"),
              std::string::npos);
    const Result status = script("$STMCTL ring status");
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(status.errors, "");
    for (const char *words :
         {"key 5676, 7704 bytes\n", "mode 0666\n", "made by     process ", "(gone)\n",
          "attached    0 times\n", "writer      ended cleanly; its flag is free; fills slot ",
          "reader      free; at slot 0", "count       159 records",
          "slots       160 hold whole records, 0 are empty, 0 fail", "newest      rel_t 4"}) {
        EXPECT_NE(status.output.find(words), std::string::npos) << words << '\n' << status.output;
    }
}

TEST_F(Ring, status_names_the_processes_that_use_it)
{
    const Result result =
        script("$BOARD $STMCTL ring write 2>writer.err </dev/null & writer=$!\n"
               "await_one; $STMCTL ring status; $STMCTL ring remove; echo $?\n"
               "kill $writer; wait $writer; echo $?; $STMCTL ring status | grep attached");
    EXPECT_NE(result.output.find("\nattached    2 times, process "), std::string::npos)
        << "once for the module, once for stmctl: " << result.output;
    EXPECT_NE(result.errors.find("stmctl: the ring is attached 2 times, process "),
              std::string::npos);
    EXPECT_NE(result.output.find("\n1\n0\n"), std::string::npos) << "not removed, then stopped";
    EXPECT_NE(result.output.find("attached    0 times\n"), std::string::npos);
}

TEST_F(Ring, removal_may_be_forced)
{
    EXPECT_EQ(script("fill 0.1; $STMCTL ring remove").output, "removed\n");
    EXPECT_EQ(script("fill 0.1; $STMCTL ring remove --force").output, "removed\n");
    RingBuffer *ring = segment();
    const Result kept = script("$STMCTL ring remove");
    EXPECT_EQ(kept.status, 1);
    EXPECT_NE(kept.errors.find("; --force removes it anyway\n"), std::string::npos);
    const Result gone = script("$STMCTL ring remove --force && $STMCTL ring status");
    EXPECT_EQ(gone.status, 4);
    EXPECT_EQ(gone.output, "removed; the processes that use it keep it until they end\n");
    shmdt(ring);
}

TEST_F(Ring, what_it_holds_is_read_starting_at_the_oldest)
{
    const std::string words = " ring read --from-oldest -n 100 --format ";
    Result result = script("fill 0.5; $STMCTL" + words + "csv");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "stmctl: ring read: 100 of 100 records, 0 lost, 0 rejected, 0 "
                             "overflowing, 0 overruns, 0 restarts of the writer\n");
    const Table table = csv(result.output);
    EXPECT_EQ(table.size(), 100U);
    expect_all(table);
    result = script("$STMCTL" + words + "jsonl -o ring.jsonl");
    EXPECT_EQ(jsonl(read_text("ring.jsonl")), table);
    EXPECT_EQ(count(script("$STMCTL" + words + "text").output, "stm_int32_t  rel_t: "), 100U);
    EXPECT_EQ(jsonl(script("$STMCTL" + words + "jsonl --timestamps").output)[0].size(), 17U);
}

TEST_F(Ring, a_ring_that_is_not_full_gives_what_is_in_it)
{
    const Result result = script("fill 0.03; $STMCTL ring read --from-oldest --duration 0.2 "
                                 "--format csv");
    EXPECT_EQ(result.status, 0);
    const Table table = csv(result.output);
    EXPECT_GT(table.size(), 10U);
    EXPECT_EQ(column(table, "rel_t"), numbers(1, static_cast<int>(table.size())));
}

// The values on the wire as the module itself shows them, one after another.
TEST_F(Ring, records_are_those_that_the_board_sent)
{
    const Result sent = stmctl({"follow", "--variant", "temp", "-n", "100", "--format", "csv"});
    script("fill 0.15; $STMCTL ring read --from-oldest -n 100 --format csv -o ring.csv");
    Table expected = csv(sent.output);
    Table read = csv(read_text("ring.csv"));
    ASSERT_EQ(read.size(), 100U);
    for (auto *table : {&expected, &read}) {
        for (auto &row : *table) { // how many were waiting depends on the moment
            row.erase("buffered");
            row.erase("checksum");
        }
    }
    EXPECT_EQ(read, expected);
}

TEST_F(Ring, number_and_time_and_user_end_the_reader)
{
    script("fill 0.1");
    EXPECT_EQ(script("$STMCTL ring read --from-oldest --duration 0.3").status, 0);
    EXPECT_EQ(script("$STMCTL ring read --duration 0.3").status, 1);
    EXPECT_EQ(script("$STMCTL ring read -n 5 --duration 0.3").status, 1);
    EXPECT_EQ(script("$STMCTL ring read --from-oldest -n 1000 --duration 0.3").status, 1);
    EXPECT_EQ(script("$STMCTL ring read -n 5 < <(await_one; printf 's\\n')").status, 3);
    EXPECT_EQ(script("$STMCTL ring read < <(await_one; printf 's\\n')").status, 0);
    EXPECT_EQ(script("$STMCTL ring read -n 0").status, 2);
    EXPECT_EQ(script("$STMCTL ring read --format hex").status, 2);
    EXPECT_EQ(script("$STMCTL ring read --from-now --from-oldest").status, 2);
    EXPECT_EQ(script("$STMCTL ring read --timestamps").status, 2);
    EXPECT_EQ(script("$STMCTL ring").status, 2);
}

TEST_F(Ring, the_reader_s_file_is_written_as_requested)
{
    const std::string read = "$STMCTL ring read --from-oldest -n 2 --format csv --separator , "
                             "-o read.csv ";
    EXPECT_EQ(script("fill 0.1; " + read + "&& " + read + "--append").status, 0);
    const std::string text = read_text("read.csv");
    EXPECT_EQ(count(text, "\n"), 5U);
    EXPECT_EQ(text.substr(0, 19), "\"nr\",\"temp\",\"rel_t\"");
    const Result kept = script(read + "--no-clobber");
    expect_failure(kept, 1, "'read.csv' already exists; --no-clobber keeps it");
    EXPECT_EQ(read_text("read.csv"), text);
    const std::string timed = "$STMCTL ring read --from-oldest -n 2 --format csv --timestamps "
                              "-o timed.csv --append ";
    EXPECT_EQ(script(timed + "&& " + timed).status, 0);
    EXPECT_EQ(count(read_text("timed.csv"), "\n"), 5U);
}

TEST_F(Ring, reader_ends_quietly_when_its_output_is_closed)
{
    const Result result =
        script("fill 0.1; { await_command test -e closed\n"
               "$STMCTL ring read --from-oldest -n 5 --format csv; echo $? >status; } |\n"
               "{ exec <&-; touch closed; }");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(read_text("status"), "0\n");
}

TEST_F(Ring, a_full_disk_ends_its_reader)
{
    const Result result = script(
        "fill 0.1; $STMCTL ring read --from-oldest -n 5 --format csv --summary summary >/dev/full");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(
        result.errors.ends_with("stmctl: cannot write the output: No space left on device\n"))
        << result.errors;
    EXPECT_NE(read_text("summary"), "");
}

TEST_F(Ring, a_slot_that_does_not_check_is_rejected)
{
    script("fill 0.5");
    RingBuffer *ring = segment();
    ring->slots[(ring->write_index + 100) % RINGBUFFER_SLOTS].U1e ^= 1;
    const Result result =
        script("$STMCTL ring read --from-oldest --duration 0.1 --format csv; $STMCTL ring status");
    EXPECT_NE(result.output.find("159 hold whole records, 0 are empty, 1 fail their checksum"),
              std::string::npos);
    EXPECT_NE(result.errors.find(" 1 lost, 1 rejected,"), std::string::npos) << result.errors;
    EXPECT_EQ(script("$STMCTL ring read --from-oldest --duration 0.1").status, 1);
    shmdt(ring);
}

TEST_F(Ring, damage_is_reported)
{
    script("fill 0.1");
    RingBuffer *ring = segment();
    ring->write_index = 4000;
    Result result = script("$STMCTL ring status");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "stmctl: the ring is damaged: an index is not 0 to 159, or a flag not 0 or 1\n");
    result = script("$STMCTL ring read");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: the ring is damaged: write_index is 4000\n");
    ring->write_index = 0;
    ring->reader_open = 1;
    result = script("$STMCTL ring read");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: the ring is marked as being read (reader_open is 1); stmctl "
                             "ring remove makes way for a new one\n");
    ring->writer_open = 1;
    result = script("$BOARD $STMCTL ring write");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: the ring is marked as being written (writer_open is 1); "
                             "stmctl ring remove makes way for a new one\n");
    shmdt(ring);
}

TEST_F(Ring, a_segment_of_another_size_is_reported)
{
    RingBuffer *other = segment(100);
    for (const char *command : {"$STMCTL ring read", "$BOARD $STMCTL ring write"}) {
        const Result result = script(command);
        EXPECT_EQ(result.status, 4);
        EXPECT_EQ(result.errors, "stmctl: the ring's segment has 100 bytes instead of 7704: it is "
                                 "another program's or damaged; see stmctl ring remove\n");
    }
    EXPECT_EQ(script("$STMCTL ring status").status, 1);
    shmdt(other);
    EXPECT_EQ(script("$STMCTL ring remove").output, "removed\n");
}

TEST_F(Ring, removal_under_a_reader_ends_it)
{
    const Result result = script("fill 0.1; $STMCTL ring read 2>reader.err & await_one\n"
                                 "$STMCTL ring remove --force; wait %1; echo $?; cat reader.err");
    EXPECT_NE(result.output.find("4\nstmctl: the ring was removed\n"), std::string::npos)
        << result.output;
}

TEST_F(Ring, removal_ends_a_reader_that_has_said_that_it_waits)
{
    const Result result =
        script("fill 0.1; $STMCTL ring read 2>reader.err & reader=$!\n"
               "await 'waiting for' reader.err; $STMCTL ring remove --force >removed\n"
               "await 'was removed' reader.err; kill $reader 2>/dev/null; wait $reader; echo $?\n"
               "cat reader.err");
    EXPECT_EQ(result.output, "4\nstmctl: ring read: there is no writer; waiting for one\n"
                             "stmctl: the ring was removed\n");
}

TEST_F(Ring, removal_under_a_writer_ends_it)
{
    const Result result = script("$BOARD $STMCTL ring write 2>writer.err </dev/null & \n"
                                 "await_one\n"
                                 "$STMCTL ring remove --force; wait %1; echo $?; cat writer.err");
    EXPECT_NE(result.output.find("4\nstmctl: the ring was removed\n"), std::string::npos)
        << result.output;
}

TEST_F(Ring, damage_under_a_writer_ends_it)
{
    const pid_t writer = start(on_board_in_real_time({}, {program(), "ring", "write"}));
    wait_for_note("; block 3:");
    auto *ring = static_cast<RingBuffer *>(shmat(shmget(RINGBUFFER_KEY, 0, 0), nullptr, 0));
    static_cast<volatile RingBuffer *>(ring)->write_index = 160;
    const Result result = finish(writer);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "stmctl: the ring is damaged; see stmctl ring status and stmctl ring remove\n");
    shmdt(ring);
}

TEST_F(Ring, writer_starts_again_after_a_failed_exchange)
{
    const Result result = script("$BOARD --count-time --fault exchange@60 --fault exchange@200 "
                                 "$STMCTL ring write --duration 5");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count(result.errors, "stmctl: ring write: fetching the data failed: Input/output "
                                   "error; trying again\n"),
              2U)
        << result.errors;
    EXPECT_NE(result.errors.find("ring write: 3787 records, 1000 lost, 0 rejected, 0 overflowing, "
                                 "2 failing exchanges\n"),
              std::string::npos)
        << result.errors;
}

TEST_F(Ring, the_user_can_end_the_writer)
{
    const std::string typed = " < <(await_one; printf 's\\n')";
    EXPECT_EQ(script("$BOARD $STMCTL ring write" + typed).status, 0);
    EXPECT_EQ(script("$BOARD $STMCTL ring write --duration 3600" + typed).status, 3);
    EXPECT_EQ(script("$BOARD --fault no-device $STMCTL ring write").status, 4);
    EXPECT_EQ(script("$BOARD $STMCTL ring write --duration 0").status, 2);
}

// The board restarts with each writer. A writer that is killed late in the ring leaves the reader
// time: it notices the next one as long as that has not got as far.
TEST_F(Ring, killed_and_restarted_writers_are_noticed_and_not_fatal)
{
    const Result result = script(
        "writer() { exec $BOARD --rate 130 $STMCTL ring write 2>>writer.err </dev/null; }\n"
        "has_shown() { [ \"$(wc -l <read.csv)\" -ge $1 ]; }\n" // 60 are more than are held back
        "await_shown() { await_command has_shown $(($(wc -l <read.csv) + $1)); }\n"
        "begun() { [ \"$(grep -c 'has restarted' reader.err)\" -eq $1 ]; }\n"
        "writer & writer=$!; await_one\n"
        "$STMCTL ring read --format csv -o read.csv 2>reader.err & reader=$!\n"
        "await ';' read.csv; await_status 'fills slot 1[0-4]. next'; kill -9 $writer\n"
        "await 'there is no writer' reader.err\n"
        "writer & writer=$!; await_command begun 1; await_shown 60\n"
        "await_status 'fills slot 1[0-4]. next'; kill -9 $writer\n"
        "writer & writer=$!; await_command begun 2; await_shown 60\n"
        "kill $reader; wait $reader; echo $?; kill $writer; wait");
    EXPECT_EQ(result.output, "0\n");
    const std::string said = read_text("reader.err");
    EXPECT_EQ(count(said, "ring read: the writer has restarted\n"), 2U) << said;
    EXPECT_GE(count(said, "records are coming again\n"), 1U);
    EXPECT_EQ(count(said, "records are coming again\n"), count(said, "there is no writer"));
    EXPECT_NE(said.find(", 2 restarts of the writer\n"), std::string::npos) << said;
    EXPECT_NE(said.find(" 0 rejected, "), std::string::npos) << said;
    const Table table = csv(read_text("read.csv"));
    int begins = 0;
    for (size_t i = 1; i < table.size(); ++i) {
        begins += std::stol(table[i].at("rel_t")) <= std::stol(table[i - 1].at("rel_t")) ? 1 : 0;
    }
    EXPECT_EQ(begins, 2);
}

TEST_F(Ring, a_lagging_reader_shows_whole_records_in_order_and_reports_what_it_lost)
{
    const Result result = script(
        "$BOARD --rate 1000 $STMCTL ring write 2>writer.err </dev/null & writer=$!; await_one\n"
        "$STMCTL ring read --format csv -o read.csv 2>reader.err & reader=$!\n"
        "await ';' read.csv\n"
        "newest() {\n"
        "  until $STMCTL ring status | sed -n 's/^newest *rel_t \\([0-9]*\\),.*/\\1/p' | grep .\n"
        "  do :; done\n"
        "}\n"
        "runs_on() { [ \"$(newest)\" -gt $1 ]; }\n"
        "told() { [ \"$(grep -c overrun: reader.err)\" -ge $1 ]; }\n"
        "for i in 1 2 3; do\n"
        "  kill -STOP $reader; await_command runs_on $(($(newest) + 320))\n"
        "  kill -CONT $reader; await_command told $i\n"
        "done\n"
        "kill $reader; wait $reader; echo $?; kill $writer; wait");
    EXPECT_EQ(result.output, "0\n");
    const std::string said = read_text("reader.err");
    const size_t overruns = count(said, "ring read: overrun: the writer was faster, ");
    EXPECT_GE(overruns, 3U) << said;
    EXPECT_NE(said.find(", " + std::to_string(overruns) + " overruns, "), std::string::npos)
        << said;
    EXPECT_NE(said.find(" 0 rejected, "), std::string::npos);
    EXPECT_NE(said.find(" 0 restarts of the writer\n"), std::string::npos);
    long told = 0;
    for (size_t at = 0; (at = said.find("was faster, ", at)) != std::string::npos; ++at) {
        told += std::stol(said.substr(at + 12));
    }
    EXPECT_NE(said.find(", " + std::to_string(told) + " lost, "), std::string::npos) << said;
    const Table table = csv(read_text("read.csv"));
    expect_rising(table);
    const long span = std::stol(table.back().at("rel_t")) - std::stol(table[0].at("rel_t")) + 1;
    const long lost = span - static_cast<long>(table.size());
    EXPECT_NE(said.find(", " + std::to_string(lost) + " lost, "), std::string::npos) << lost;
}

TEST_F(Ring, failure_to_create_it_is_reported)
{
    const Result result = script("echo 100 2>/dev/null >/proc/sys/kernel/shmmax || exit 77\n"
                                 "$BOARD $STMCTL ring write");
    if (result.status == 77) {
        GTEST_SKIP() << "the largest segment cannot be changed here";
    }
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.errors, "stmctl: cannot create the ring's segment: Invalid argument\n");
}

TEST_F(Ring, a_new_one_in_its_place_ends_a_reader)
{
    const Result result =
        script("fill 0.1; $STMCTL ring read --duration 3600 2>reader.err & await_one\n"
               "$STMCTL ring remove --force; fill 0.1; wait %1; echo $?\n"
               "cat reader.err");
    EXPECT_NE(result.output.find("4\nstmctl: the ring was removed\n"), std::string::npos)
        << result.output;
}

// The board continues: what it sent while its writer was away is lost.
TEST_F(Ring, what_is_missing_at_a_restart_on_the_same_board_is_lost)
{
    script("$BOARD --rate 130 --fault exchange@9000 $STMCTL ring write 2>writer.err </dev/null & "
           "writer=$!; await_one\n"
           "$STMCTL ring read --format csv -o read.csv 2>reader.err & reader=$!\n"
           "await 'has restarted' reader.err; lines=$(wc -l <read.csv)\n"
           "more() { [ \"$(wc -l <read.csv)\" -gt $((lines + 20)) ]; }; await_command more\n"
           "kill $reader; wait $reader; kill $writer; wait");
    const Table table = csv(read_text("read.csv"));
    ASSERT_GT(table.size(), 20U);
    const long span = std::stol(table.back().at("rel_t")) - std::stol(table[0].at("rel_t")) + 1;
    const long lost = span - static_cast<long>(table.size());
    EXPECT_GT(lost, 50);
    EXPECT_NE(read_text("reader.err").find(", " + std::to_string(lost) + " lost, "),
              std::string::npos)
        << read_text("reader.err");
}

} // namespace
