// stmctl doctor: what it finds on this machine beside the board: hidden processes, the driver's own
// limit, gnuplot, the ring.
#include "tests/stmctl/doctor_bench.hpp"

#include "link/stm_com_funcs.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

namespace
{

// What the kernel shows of the driver, in a namespace of our own. Nothing is sent.
TEST_F(Doctor, what_the_driver_accepts_is_shown_if_it_cannot_be_tried)
{
    const auto shown = [&](const std::string &bufsiz) {
        const std::string folder = "/sys/module/spidev/parameters";
        const std::string before = "mount -t tmpfs none /sys/module && mkdir -p " + folder +
                                   " && echo " + bufsiz + " >" + folder + "/bufsiz || exit 77; ";
        return run({"unshare", "--mount", "bash", "-c",
                    before + "exec " +
                        quoted(on_board({}, {"bash", "-c",
                                             "exec 9<>/dev/spidev1.0; (exec 9<&-; " +
                                                 quoted({program(), "doctor"}) + "); exit $?"}))});
    };
    const Result enough = shown("4096");
    if (enough.status == 77 || enough.output.empty()) {
        GTEST_SKIP() << "namespaces are not allowed here";
    }
    EXPECT_EQ(enough.status, 0) << enough.errors;
    EXPECT_EQ(line(enough, "bufsiz"), "bufsiz    good     4096 bytes at once, 4096 are needed\n");
    const Result less = shown("4095");
    expect_bad(less, "1 of 14 checks failed: bufsiz");
    EXPECT_EQ(line(less, "bufsiz"), "bufsiz    bad      4095 bytes at once, 4096 are needed\n"
                                    "                   set it where the driver is loaded, see "
                                    "stmctl --help access\n");
}

// In namespaces of their own; hidepid=2 takes other users' processes out of /proc altogether.
TEST_F(Doctor, hidden_processes_leave_it_unknown_who_else_has_the_device_open)
{
    const std::string as_nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
    const std::string hidden = "mount -o remount,hidepid=2 /proc && " + as_nobody;
    const Words alone = {"unshare", "--mount", "--pid", "--fork", "--mount-proc", "bash", "-c"};
    const auto run_alone = [&](const std::string &command) {
        Words words = alone;
        words.push_back(command);
        return run(words);
    };
    if (run_alone(hidden + "test -x " + program()).status != 0) {
        GTEST_SKIP() << "namespaces, or another user, are not allowed here";
    }
    const Result result = run_alone(
        "board=$(mktemp -d) && chmod 777 $board && cd $board && " + hidden +
        quoted({TOOL_VIRTUAL_BOARD, "--count-time", "--board", "board", program(), "doctor"}) +
        "; status=$?; rm -rf $board; exit $status");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(line(result, "users"),
              "users     unknown  no visible process has it open, but some are hidden\n"
              "                   sudo stmctl doctor can see them all\n");
    EXPECT_EQ(line(result, "runs"), "runs      good     the application\n");
    EXPECT_EQ(line(result, "rights").find("rights    good     user nobody may read and write it"),
              0U);
}

TEST_F(Doctor, gnuplot_is_looked_for_where_plot_looks)
{
    const auto with_path = [&](const std::string &folders) {
        return line(run(on_board({}, {"env", "PATH=" + folders, program(), "doctor"})), "gnuplot");
    };
    EXPECT_EQ(with_path("/nowhere"),
              "gnuplot   good     not installed; only stmctl plot needs it\n");
    write_file("gnuplot", {});
    EXPECT_EQ(with_path("/nowhere:" + path("")),
              "gnuplot   good     not installed; only stmctl plot needs it\n")
        << "it cannot be run";
    std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_all);
    EXPECT_EQ(with_path("/nowhere:" + path(".")), "gnuplot   good     " + path("./gnuplot") + "\n");
    EXPECT_EQ(with_path("/nowhere:"), "gnuplot   good     ./gnuplot\n") << "here";
}

TEST_F(Doctor, a_ring_is_good_unless_it_cannot_be_used)
{
    const int id = shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0666);
    auto *ring = static_cast<RingBuffer *>(shmat(id, nullptr, 0));
    const Result foreign = doctor();
    EXPECT_EQ(foreign.status, 0);
    EXPECT_EQ(line(foreign, "ring")
                  .find("ring      good     present; writer: another program, if any: process "),
              0U)
        << foreign.output;
    ring->writer_open = 1;
    const Result closed = doctor();
    expect_bad(closed, "1 of 14 checks failed: ring");
    EXPECT_TRUE(line(closed, "ring")
                    .ends_with("); its flag keeps writers out\n"
                               "                   stmctl ring remove makes way for a new one\n"))
        << closed.output;
    ring->writer_open = 0;
    ring->write_index = 160;
    const Result damaged = doctor();
    expect_bad(damaged, "1 of 14 checks failed: ring");
    EXPECT_EQ(line(damaged, "ring"),
              "ring      bad      damaged, see stmctl ring status\n"
              "                   stmctl ring remove makes way for a new one\n");
    shmdt(ring);
    shmctl(id, IPC_RMID, nullptr);
    const int small = shmget(RINGBUFFER_KEY, 100, IPC_CREAT | 0666);
    const Result too_small = doctor();
    expect_bad(too_small, "1 of 14 checks failed: ring");
    EXPECT_EQ(
        line(too_small, "ring").find("ring      bad      too small: 100 bytes instead of 7704"),
        0U);
    shmctl(small, IPC_RMID, nullptr);
}

TEST_F(Doctor, a_ring_that_only_others_may_write_is_bad)
{
    const int id = shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0644);
    const Words as_nobody = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    Words command = as_nobody;
    command.insert(command.end(), {program(), "doctor"});
    const Result result = run(directly({}, command));
    shmctl(id, IPC_RMID, nullptr);
    if (getuid() != 0 || result.output.empty()) {
        GTEST_SKIP() << "another user is not allowed here";
    }
    EXPECT_EQ(line(result, "ring"),
              "ring      bad      it belongs to user root, and you may not both read and write it\n"
              "                   stmctl ring remove makes way for a new one\n");
}

TEST_F(Doctor, several_writers_of_the_ring_are_bad)
{
    const Result result =
        script("$BOARD $STMCTL ring write 2>first.err </dev/null & first=$!; await_one\n"
               "$BOARD $STMCTL ring write 2>second.err </dev/null & second=$!\n"
               "await_status 'several at once'; $BOARD --count-time $STMCTL doctor; status=$?\n"
               "kill $first $second; wait; exit $status");
    expect_bad(result, "1 of 14 checks failed: ring");
    const std::string said = line(result, "ring");
    EXPECT_EQ(said.find("ring      bad      present; writer: several at once, process "), 0U)
        << said;
    EXPECT_TRUE(said.ends_with("\n                   end all but one: their records mix\n"))
        << said;
}

// From among other processes those that have it attached cannot be seen.
TEST_F(Doctor, a_ring_whose_user_cannot_be_seen_is_neither_good_nor_bad)
{
    void *ring = shmat(shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | 0666), nullptr, 0);
    const Result result =
        script("unshare --pid --fork --mount-proc $BOARD --count-time $STMCTL doctor");
    shmdt(ring);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(line(result, "ring"),
              "ring      unknown  present; writer: unknown: its processes cannot be inspected\n"
              "                   sudo stmctl doctor can see them\n");
}

} // namespace
