// Streams survive what happens to a board, whenever it happens, and what they missed is told.
#include "tests/stmctl/survival_bench.hpp"

namespace
{

class Survival : public SurvivalBench
{
  protected:
    void SetUp() override { record_transcripts(); }

    static Words stream(const std::string &command, const Mishap &mishap, const Words &more)
    {
        return both({command, "--keep-going", "--summary", "summary", "--duration",
                     std::to_string(run_time(mishap))},
                    more);
    }

    Result shown_as_csv(const std::string &command, const Mishap &mishap)
    {
        return on_fresh_board(
            mishap.options,
            stream(command, mishap, {"--variant", "temp", "--format", "csv", "--timestamps"}));
    }

    void expect_survival(const std::string &command, const Mishap &mishap)
    {
        const Result result = shown_as_csv(command, mishap);
        EXPECT_EQ(result.status, 0) << result.errors;
        const Shown shown = shown_in(result.output);
        EXPECT_GT(shown.seconds, run_time(mishap) - 0.5) << "records come until the end";
        for (const double gap : shown.gaps) {
            EXPECT_LT(gap, promised_length(mishap)) << result.errors;
        }
        expect_accounts(shown, numbers_in("summary"));
        expect_told_once(result.errors, command, shown.gaps);
    }
};

TEST_F(Survival, follow_keeps_going)
{
    with_each_mishap([this](const Mishap &mishap) { expect_survival("follow", mishap); });
}

TEST_F(Survival, records_keeps_going)
{
    with_each_mishap([this](const Mishap &mishap) { expect_survival("records", mishap); });
}

// It asks as follow does, at the same moments.
TEST_F(Survival, watch_tells_what_follow_tells)
{
    with_each_mishap([this](const Mishap &mishap) {
        const Result followed = shown_as_csv("follow", mishap);
        const std::string numbers = read_text("summary");
        const Result watched = on_fresh_board(mishap.options, stream("watch", mishap, {}));
        EXPECT_EQ(watched.status, 0);
        EXPECT_EQ(read_text("summary"), numbers);
        expect_told_once(watched.errors, "watch", shown_in(followed.output).gaps);
    });
}

} // namespace
