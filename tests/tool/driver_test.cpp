// The driver that virtual-board puts before the board, asked by a program: it takes, refuses and
// returns what the kernel's does, and counts time when it is told to.
#include "tests/tool/workbench.hpp"

namespace
{

class Driver : public Workbench
{
  protected:
    Result ask(const std::string &question, const std::string &probe = "probe")
    {
        return run(on_board({"--version", "42"}, {probe_program(probe), question}));
    }
};

TEST_F(Driver, stands_behind_every_call_that_opens)
{
    const Result result = ask("opens");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, joined({
                                 "open: version 42",
                                 "open64: version 42",
                                 "openat: version 42",
                                 "openat64: version 42",
                                 "__open_2: version 42",
                                 "__open64_2: version 42",
                                 "__openat_2: version 42",
                                 "__openat64_2: version 42",
                                 "open read-only: version 42",
                             }));
}

TEST_F(Driver, leaves_other_files_alone)
{
    EXPECT_EQ(ask("files").output, joined({
                                       "make a file: 0",
                                       "exchange with a file: refused",
                                       "close it: 0",
                                       "close it again: EBADF",
                                       "open it again: 0",
                                       "open what is not there: ENOENT",
                                   }));
    using std::filesystem::perms;
    const perms mode = std::filesystem::status(path("made")).permissions();
    EXPECT_EQ(mode & perms::owner_all, perms::owner_read | perms::owner_write);
    EXPECT_EQ(mode & perms::others_all, perms::none);
}

TEST_F(Driver, returns_the_length_and_refuses_what_its_buffer_cannot_hold)
{
    EXPECT_EQ(ask("lengths").output, joined({
                                         "4096 bytes: 4096",
                                         "4097 bytes: EMSGSIZE",
                                         "65536 bytes: EMSGSIZE",
                                         "4097 bytes, only sent: EMSGSIZE",
                                         "0 bytes: 0",
                                         "0 bytes without buffers: 0",
                                         "16 bytes without buffers: 16",
                                         "untouched: 11",
                                         "only sent: 5",
                                         "only received: 7",
                                         "received: 00, untouched: 11",
                                         "three transfers: 33",
                                         "two transfers of 4097: EMSGSIZE",
                                         "no transfer: 0",
                                         "no descriptor: EFAULT",
                                     }));
    const std::vector<Line> lines = transcript();
    std::vector<size_t> reached_the_wire;
    for (const Line &line : lines) {
        if (!line.sent.empty()) {
            reached_the_wire.push_back(line.length);
        }
    }
    EXPECT_EQ(reached_the_wire, (std::vector<size_t>{4096, 5, 7, 33}));
}

TEST_F(Driver, keeps_its_clock_until_the_last_close)
{
    EXPECT_EQ(ask("settings").output, joined({
                                          "second open: 0",
                                          "speed at first: 1000000",
                                          "speed 0: EINVAL",
                                          "speed 123456 by the second: 0",
                                          "the first has: 123456",
                                          "speed 50 MHz: 0",
                                          "which reads: 50000000",
                                          "with one left: 50000000",
                                          "after the last close: refused",
                                          "opened anew: 1000000",
                                          "9 bits: EINVAL",
                                          "8 bits: 0",
                                          "unknown request: ENOTTY",
                                          "unknown request of the driver: ENOTTY",
                                          "unknown request without argument: ENOTTY",
                                      }));
}

TEST_F(Driver, counts_time_instead_of_spending_it)
{
    const std::string expected = joined({
        "usleep: 500 ms",
        "nanosleep: 10250 ms",
        "clock_nanosleep: 10250 ms",
        "clock_nanosleep until: 7000 ms",
        "clock_nanosleep until now: 0 ms",
        "poll: 0",
        "poll: 3000 ms",
        "select: 0",
        "select: 4500 ms",
        "write: 1",
        "poll with input: 1",
        "select with input: 1",
        "both: 0 ms",
        "1000 bytes at 1 kHz: 8000 ms",
        "in all: 43500 ms",
    });
    EXPECT_EQ(ask("time").output, expected);
    EXPECT_EQ(ask("time", "probe_wide").output, expected);
}

TEST_F(Driver, is_asked_by_programs_with_wide_times_too)
{
    EXPECT_EQ(ask("opens", "probe_wide").output, ask("opens").output);
    EXPECT_EQ(ask("settings", "probe_wide").output, ask("settings").output);
}

TEST_F(Driver, spends_time_when_it_is_not_told_to_count)
{
    const auto begin = std::chrono::steady_clock::now();
    run(on_board_in_real_time({}, {update_program(), "-ver"}));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
}

} // namespace
