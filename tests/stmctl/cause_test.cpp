// Goal: the sentence about a failure names its cause and the remedy, whichever command meets it.
#include "link/stm_com_funcs.h"
#include "tests/stmctl/ring_bench.hpp"

#include <sys/shm.h>

#include <fstream>

namespace
{

const std::string DEAD = "nothing is answering: does the co-processor have power, or has it hung?";
const std::string UNDRIVEN = "nothing drives the line: is the co-processor connected?";
const std::string LOADER = "the boot loader is running (stmctl reset starts the application)";
const std::string DEAF = "the application is running but does not answer this";
const std::string IMPOSSIBLE = "the co-processor announced an impossible length; another program "
                               "may have used the device";
const std::string TOO_LONG = "fetching the data failed: Message too long; ";
const std::string NOT_IN_TIME = "the co-processor did not answer in time; ";

const std::vector<Words> QUERIES = {
    {"get", "sampletime"}, {"peek", "0"}, {"peek", "0", "--long"},
    {"dump", "0", "16"},   {"text", "0"},
};
const std::vector<Words> WRITES = {
    {"set", "sampletime", "1"},
    {"poke", "0", "1"},
    {"text", "0", "--write", "x"},
};
const std::vector<Words> STREAMS = {
    {"follow", "--duration", "30"}, {"records"}, {"watch", "--duration", "30"}};

// How a sentence about a query begins.
std::string name_of(const Words &command)
{
    return command[0] == "get" || command[0] == "set" ? command[1]
           : command[0] == "poke"                     ? "poke 0x0000"
                                                      : command[0];
}

class Cause : public StmctlBench
{
  protected:
    void SetUp() override { write_file("image.bin", noise(3000, 9)); }

    // The command ends with status 1, and this is its first message.
    static void expect_first(const Result &result, const std::string &sentence)
    {
        EXPECT_EQ(result.status, 1) << sentence;
        EXPECT_EQ(result.errors.find("stmctl: " + sentence + "\n"), 0U) << sentence << '\n'
                                                                        << result.errors;
    }

    static void expect_said(const Result &result, const std::string &sentence)
    {
        EXPECT_EQ(result.status, 1) << sentence;
        EXPECT_NE(result.errors.find(sentence), std::string::npos) << result.errors;
    }

    // A stream in which nothing ever comes, for 10 s.
    void expect_silent_streams(const Words &options, const std::string &cause)
    {
        for (const Words &command : STREAMS) {
            const Result result = stmctl(command, options);
            expect_first(result, command[0] + ": no data from the co-processor; waiting for it");
            expect_said(result, "\nstmctl: " + command[0] + ": nothing has come for 10 seconds; " +
                                    cause + "\n");
        }
        for (const std::string command : {"adc", "raw"}) {
            expect_said(stmctl({command}, options),
                        command + ": 0 of 1 frame, 0 rejected, 1 not ready in time, ");
            expect_said(stmctl({command}, options), "; " + cause + "\n");
        }
    }

    static std::string bufsiz_sentence()
    {
        std::ifstream file("/sys/module/spidev/parameters/bufsiz");
        std::string bytes;
        return "synchronising the link failed: Message too long; the driver's parameter bufsiz " +
               (file >> bytes ? "is " + bytes : "is too small") +
               " and must be at least 4096, see stmctl --help access";
    }
};

TEST_F(Cause, every_command_reports_a_driver_buffer_that_is_too_small)
{
    std::vector<Words> commands = {{"state"},
                                   {"version"},
                                   {"start"},
                                   {"reset"},
                                   {"adc"},
                                   {"raw"},
                                   {"flash", "firmware", "image.bin"}};
    for (const auto *more : {&QUERIES, &WRITES, &STREAMS}) {
        commands.insert(commands.end(), more->begin(), more->end());
    }
    for (const Words &command : commands) {
        expect_failure(stmctl(command, {"--bufsiz", "512"}), 1, bufsiz_sentence());
        EXPECT_EQ(transcript().size(), 1U) << "nothing else is tried by " << command[0];
    }
    expect_failure(stmctl({"state"}, {"--bufsiz", "4095"}), 1, bufsiz_sentence());
    EXPECT_EQ(says({"state"}, {"--bufsiz", "4096"}), "application (2)\n");
}

TEST_F(Cause, an_impossible_length_is_reported_for_replies_and_for_blocks)
{
    for (const Words &command : {QUERIES[0], QUERIES[1], QUERIES[3], QUERIES[4]}) {
        expect_failure(with_fault("length=4097", command), 1,
                       name_of(command) + ": " + TOO_LONG + IMPOSSIBLE);
    }
    for (const std::string command : {"follow", "watch"}) {
        expect_first(with_fault("block-length@3=5000", {command, "--duration", "5"}),
                     command + ": " + TOO_LONG + IMPOSSIBLE);
    }
    for (const std::string variant : {"base", "omega", "temp"}) {
        expect_first(with_fault("block-length@1=5000", {"records", "--variant", variant}),
                     "records: fetching the data failed" +
                         std::string(variant == "base" ? " (3)" : "") + ": Message too long; " +
                         IMPOSSIBLE);
    }
    const Result going = with_fault("block-length@3=5000", {"follow", "-n", "500", "--keep-going"});
    EXPECT_EQ(going.status, 0);
    EXPECT_NE(going.errors.find(TOO_LONG + IMPOSSIBLE + "; trying again\n"), std::string::npos);
}

TEST_F(Cause, an_undriven_line_is_reported)
{
    for (const Words &command : {QUERIES[0], QUERIES[1], QUERIES[3], QUERIES[4]}) {
        expect_failure(with_fault("bus-inactive", command), 1,
                       name_of(command) + ": " + TOO_LONG + UNDRIVEN);
    }
    for (const Words &command : WRITES) {
        expect_failure(with_fault("bus-inactive", command), 1,
                       name_of(command) + ": " + NOT_IN_TIME + UNDRIVEN);
    }
    expect_silent_streams({"--fault", "bus-inactive"}, UNDRIVEN);
}

TEST_F(Cause, a_dead_co_processor_is_reported)
{
    expect_silent_streams({"--fault", "silence"}, DEAD);
    for (const auto *commands : {&QUERIES, &WRITES}) {
        for (const Words &command : *commands) {
            expect_failure(with_fault("silence", command), 1,
                           name_of(command) + ": " + NOT_IN_TIME + DEAD);
        }
    }
}

TEST_F(Cause, the_boot_loader_is_reported_with_how_to_leave_it)
{
    const Words in_loader = {"--mode", "boot loader"};
    expect_silent_streams(in_loader, LOADER);
    for (const auto *commands : {&QUERIES, &WRITES}) {
        for (const Words &command : *commands) {
            expect_failure(stmctl(command, in_loader), 1,
                           name_of(command) + ": " + NOT_IN_TIME + LOADER);
        }
    }
    const Result going =
        stmctl({"follow", "--keep-going", "--duration", "9"}, {"--mode", "boot loader"});
    expect_said(going, "stmctl: follow: the boot loader is running; waiting for the application, "
                       "which stmctl reset starts\n");
    expect_said(going, "; " + LOADER + "\n");
    EXPECT_EQ(read_text("board/mode"), "boot loader\n") << "nobody has switched it";
}

TEST_F(Cause, an_application_that_does_not_answer_is_reported)
{
    for (const Words &command : {WRITES[0], QUERIES[0]}) {
        expect_failure(
            with_fault(command[0] == "set" ? "late@0x51=3000" : "late@0x03=3000", command), 1,
            name_of(command) + ": " + NOT_IN_TIME + DEAF);
    }
}

// Between a query and its answer the other program asks for the version, which is 7.
TEST_F(Cause, a_failure_of_the_question_for_the_cause_is_reported_in_its_place)
{
    const std::string late = "late@0x03=3000";
    with_fault(late, {"get", "sampletime"});
    const size_t question = transcript().size() - 1;
    expect_failure(stmctl({"get", "sampletime"},
                          {"--fault", late, "--fault", "exchange@" + std::to_string(question)}),
                   1,
                   "sampletime: the co-processor did not answer in time; sending the command "
                   "failed: Input/output error");
}

TEST_F(Cause, an_impossible_answer_is_put_down_to_another_program)
{
    std::ofstream(path("other")) << "    1     0.000000     1 > 91 < 00 ; version asked for\n";
    const std::string other = "another program may have used the device";
    const Words meddled = {"--version", "7", "--fault", "intrusion@t=0.05s=" + path("other")};
    expect_failure(stmctl({"state"}, meddled), 1,
                   "state unknown: the answer is 7, which is not a mode; " + other);
    // The diagnosis asks 3 s later, after the time-out of the query.
    std::string late;
    stmctl({"get", "sampletime"}, {"--fault", "late@0x03=3000"});
    const std::vector<Line> lines = transcript();
    ASSERT_FALSE(lines.empty());
    for (const Line &line : lines) {
        late = line.note == "mode asked for" ? std::to_string(line.microseconds / 1000 + 50) : late;
    }
    ASSERT_NE(late, "");
    expect_failure(
        stmctl({"get", "sampletime"}, {"--version", "7", "--fault", "late@0x03=3000", "--fault",
                                       "intrusion@t=" + late + "ms=" + path("other")}),
        1, "sampletime: " + NOT_IN_TIME + "it reports mode 7, which does not exist; " + other);
}

TEST_F(Cause, a_reply_of_another_length_is_put_down_to_another_program)
{
    const std::string other = " received; another program may have used the device";
    for (const int came : {0, 15, 17}) {
        const Result result =
            with_fault("length@0x75=" + std::to_string(came), {"dump", "0", "16"});
        expect_first(result, "dump: 16 bytes requested, " + std::to_string(came) + other);
    }
}

TEST_F(Cause, a_readout_that_ends_without_a_reason_is_put_down_to_another_program)
{
    const std::string ended =
        "records: not everything arrived; another program may have used the device";
    expect_first(with_fault("unnumbered@3", {"records", "-n", "5", "--format", "csv"}), ended);
    EXPECT_NE(with_fault("unnumbered@3", {"records", "-n", "5", "--format", "csv", "--keep-going"})
                  .errors.find(ended + "; trying again\n"),
              std::string::npos);
}

TEST_F(Cause, a_device_that_has_gone_is_reported_with_where_to_look)
{
    const std::string gone = "; the device is gone, see stmctl --help access";
    for (const std::string error : {"ESHUTDOWN", "ENODEV", "EBADF"}) {
        const std::string reason = error == "ESHUTDOWN"
                                       ? "Cannot send after transport endpoint shutdown"
                                   : error == "ENODEV" ? "No such device"
                                                       : "Bad file descriptor";
        expect_failure(with_fault("exchange@5=" + error, QUERIES[0]), 1,
                       "sampletime: fetching the data failed: " + reason + gone);
        expect_first(with_fault("exchange@30=" + error, {"follow"}),
                     "follow: fetching the data failed: " + reason + gone);
        const Result again =
            with_fault("exchange@60=" + error, {"follow", "-n", "500", "--keep-going"});
        EXPECT_EQ(again.status, 0) << again.errors;
        EXPECT_EQ(again.errors.find("stmctl: follow: the device is gone; waiting for it\n"
                                    "stmctl: follow: records are coming again after "),
                  0U)
            << again.errors;
    }
    expect_first(with_fault("gone@t=1s..5s", {"follow", "--duration", "3"}),
                 "follow: fetching the data failed: Cannot send after transport endpoint shutdown" +
                     gone);
}

TEST_F(Cause, full_disks_are_reported_with_the_name_of_the_file)
{
    const std::string full = "cannot write '/dev/full': No space left on device";
    for (const std::string command : {"follow", "records", "watch"}) {
        const Result result = stmctl({command, "--duration", "1", "--summary", "/dev/full"});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_NE(result.errors.find("stmctl: " + full + "\n"), std::string::npos) << result.errors;
    }
    for (const std::string command : {"follow", "records", "adc", "raw"}) {
        const Result result = stmctl({command, "--duration", "1", "-o", "/dev/full"});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_TRUE(result.errors.starts_with("stmctl: " + command + ": ")) << "summed up";
        EXPECT_TRUE(result.errors.ends_with("\nstmctl: " + full + "\n")) << result.errors;
    }
}

class RingCause : public RingBench
{
  protected:
    // Root's ring, and stmctl as another user.
    void SetUp() override
    {
        RingBench::SetUp();
        if (!IsSkipped() && (geteuid() != 0 || as_nobody({"list"}).status != 0)) {
            GTEST_SKIP() << "another user cannot be had here, or may not run the program";
        }
    }

    Result as_nobody(const Words &arguments)
    {
        Words command = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
        for (const std::string &word : directly({}, {program()})) {
            command.push_back(word);
        }
        command.insert(command.end(), arguments.begin(), arguments.end());
        return run(command);
    }

    static void make(int mode) { shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | mode); }
};

TEST_F(RingCause, a_ring_that_cannot_be_inspected_is_reported)
{
    make(0600);
    for (const std::string command : {"read", "status", "remove"}) {
        expect_failure(as_nobody({"ring", command}), 4,
                       "the ring's segment exists but cannot be inspected: Permission denied");
    }
}

TEST_F(RingCause, a_read_only_ring_is_reported_with_its_owner)
{
    make(0644);
    expect_failure(as_nobody({"ring", "read"}), 4,
                   "the ring's segment belongs to user root and cannot be attached: Permission "
                   "denied");
    EXPECT_EQ(as_nobody({"ring", "status"}).status, 0);
}

TEST_F(RingCause, a_ring_of_another_user_cannot_be_removed)
{
    make(0666);
    expect_failure(as_nobody({"ring", "remove"}), 1,
                   "cannot remove the ring of user root: Operation not permitted");
    EXPECT_NE(shmget(RINGBUFFER_KEY, 0, 0), -1);
}

TEST_F(RingCause, a_writer_of_another_user_is_unknown_and_the_remedy_is_shown)
{
    make(0666);
    const void *ring = shmat(shmget(RINGBUFFER_KEY, 0, 0), nullptr, 0);
    const std::string unknown = "unknown: its processes cannot be inspected";
    const Result status = as_nobody({"ring", "status"});
    EXPECT_NE(status.output.find("writer      " + unknown + ";"), std::string::npos)
        << status.output;
    const Result doctor = as_nobody({"doctor"});
    EXPECT_NE(doctor.output.find("ring      unknown  present; writer: " + unknown +
                                 "\n                   sudo stmctl doctor can see them\n"),
              std::string::npos)
        << doctor.output;
    shmdt(ring);
}

} // namespace
