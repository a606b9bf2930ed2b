// Commands that do not keep going report what happened to the board; a download starts again.
#include "tests/stmctl/survival_bench.hpp"

namespace
{

const std::map<std::string, std::string> CAUSES = {
    {"silence", "nothing is answering: does the co-processor have power, or has it hung?"},
    {"restart", "the application is running but does not answer this"},
    {"boot loader", "the boot loader is running (stmctl reset starts the application)"},
    {"gone", " failed: Cannot send after transport endpoint shutdown; the device is gone, see "
             "stmctl --help access"},
    {"update -state", "the application is running but does not answer this"},
    {"update -start", "the boot loader is running (stmctl reset starts the application)"},
    {"update -firmware", "the boot loader is running (stmctl reset starts the application)"},
};

class SurvivalOnce : public SurvivalBench
{
  protected:
    void SetUp() override { record_transcripts(); }

    // On a line of its own, after what failed.
    static void expect_cause(const std::string &errors, const Mishap &mishap,
                             const std::string &before)
    {
        const std::string &cause = CAUSES.at(mishap.name);
        const std::string sentence = mishap.name == "gone" ? cause : before + cause;
        EXPECT_NE(errors.find(sentence + "\n"), std::string::npos) << errors;
    }

    Result run_of(const std::string &command, const Mishap &mishap, const Words &more = {})
    {
        return on_fresh_board(mishap.options,
                              both({command, "--variant", "temp", "--duration", "16"}, more));
    }

    static void expect_end(const Result &result, const std::string &command, const Mishap &mishap)
    {
        EXPECT_EQ(result.status, 1);
        expect_cause(result.errors, mishap,
                     "stmctl: " + command + ": nothing has come for 10 seconds; ");
    }

    void expect_stream_ends(const std::string &command)
    {
        with_each_lasting_mishap(1000, 4000, [&](const Mishap &mishap) {
            expect_end(run_of(command, mishap), command, mishap);
        });
    }
};

TEST_F(SurvivalOnce, follow_ends_with_the_cause)
{
    expect_stream_ends("follow");
}

// It asks for each block, so something that is over between two blocks does not end it.
TEST_F(SurvivalOnce, records_ends_with_the_cause_or_misses_nothing)
{
    with_each_lasting_mishap(1000, 4000, [&](const Mishap &mishap) {
        const Result result = run_of("records", mishap, {"--format", "csv"});
        if ((mishap.name != "restart" && mishap.name != "update -state") || result.status != 0) {
            expect_end(result, "records", mishap);
            return;
        }
        EXPECT_EQ(counted("measured"), counted("delivered") + counted("buffered"));
        const std::string restarted = " records, 0 lost, 0 rejected, 0 overflowing, 1 step back "
                                      "in rel_t\n";
        EXPECT_TRUE(result.errors.ends_with(mishap.name == "restart" ? restarted : ""));
        EXPECT_EQ(result.errors.empty(), mishap.name != "restart");
    });
}

TEST_F(SurvivalOnce, watch_ends_with_the_cause)
{
    expect_stream_ends("watch");
}

TEST_F(SurvivalOnce, driver_that_accepts_too_little_is_reported_before_anything_else)
{
    for (const char *command : {"follow", "records", "watch"}) {
        const Result result =
            on_fresh_board({"--bufsiz", "4095"}, {command, "--keep-going", "--duration", "60"});
        expect_failure(result, 1,
                       "synchronising the link failed: Message too long; the driver's parameter "
                       "bufsiz is too small and must be at least 4096, see stmctl --help access");
        EXPECT_EQ(counted("blocks"), 0);
    }
}

// An answer that is 200 polls late, and what happens during the wait.
TEST_F(SurvivalOnce, a_value_is_correct_or_missing_and_the_next_command_shows_it)
{
    const Words late = {"--answer", "0x03=1234", "--fault", "late@0x03=200"};
    with_each_lasting_mishap(10, 190, [&](const Mishap &mishap) {
        const Words get = {"get", "sampletime"};
        const Result disturbed = on_fresh_board(both(late, mishap.options), get);
        EXPECT_EQ(disturbed.status, 1);
        EXPECT_EQ(disturbed.output, "");
        expect_cause(disturbed.errors, mishap,
                     "stmctl: sampletime: the co-processor did not answer in time; ");
        EXPECT_EQ(on_same_board({}, {"reset"}).status, 0);
        const Result later = on_same_board({}, get);
        EXPECT_EQ(later.status, 0);
        EXPECT_EQ(later.output, "1234\n");
    });
}

TEST_F(SurvivalOnce, a_short_silence_is_waited_for)
{
    Moments moments(1);
    for (int i = 0; i < 5; ++i) {
        const double begin = moments.between(10, 190);
        const double end = begin + moments.between(1, 2000);
        const Result result =
            on_fresh_board(both({"--answer", "0x03=1234", "--fault", "late@0x03=200"},
                                spell("silence", begin, end)),
                           {"get", "sampletime"});
        EXPECT_EQ(result.output, "1234\n") << begin << " to " << end;
        EXPECT_EQ(result.errors, "");
    }
}

} // namespace
