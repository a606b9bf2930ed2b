// Streams survive what happens to a board, whenever it happens, and report what they missed.
#include "tests/stmctl/survival_bench.hpp"

namespace
{

constexpr char NOTHING[] = "no data from the co-processor; asking again";
constexpr char LEFT[] =
    "the boot loader is running; waiting for the application, which stmctl reset starts";

// What may be said when a trouble begins.
const std::map<std::string, Words> SAID = {
    {"silence", {NOTHING}},
    {"restart", {NOTHING}},
    {"boot loader", {NOTHING, LEFT}},
    {"gone", {"the device is gone; waiting for it"}},
    {"update -state", {NOTHING}},
    {"update -start, update -reset", {NOTHING, LEFT}},
    {"update -start, restart", {NOTHING, LEFT}},
    {"update -firmware, restart", {NOTHING, LEFT}},
};

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

    // A second without records is one.
    static void expect_silences(const std::vector<double> &gaps, long told)
    {
        const auto above = [&gaps](double length) {
            return std::ranges::count_if(gaps, [length](double gap) { return gap > length; });
        };
        EXPECT_GE(told, above(1.1));
        EXPECT_LE(told, above(0.9));
    }

    static void expect_said(const std::string &errors, const std::string &command,
                            const Words &sentences)
    {
        const std::string name = "stmctl: " + command + ": ";
        std::istringstream lines(errors);
        for (std::string line; std::getline(lines, line);) {
            const std::string said = line.substr(std::min(name.size(), line.size()));
            if (said.find(" records, ") == std::string::npos &&
                !said.starts_with("records are coming again after ")) {
                EXPECT_EQ(std::ranges::count(sentences, said), 1) << line;
            }
        }
    }

    // The times at which the link was synchronised, from the second time on.
    std::vector<double> times_of_asking() const
    {
        std::vector<double> times;
        for (const Line &line : transcript()) {
            if (line.length == 4096) {
                times.push_back(static_cast<double>(line.microseconds) / 1e6);
            }
        }
        times.erase(times.begin());
        return times;
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
        const Numbers summary = numbers_in("summary");
        expect_accounts(shown, summary);
        expect_silences(shown.gaps, summary.at("silences"));
        expect_said(result.errors, command, SAID.at(mishap.name));
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
TEST_F(Survival, watch_reports_what_follow_reports)
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

// Asking for the mode takes a tenth of a second, and the module rests for half a second at a time.
TEST_F(Survival, each_unsuccessful_attempt_doubles_the_wait_up_to_a_minute)
{
    stmctl({"watch", "--keep-going", "--duration", "330"}, spell("silence", 2, 310));
    const std::vector<double> times = times_of_asking();
    const std::vector<double> waits = {2, 4, 8, 16, 32, 60, 60, 60, 60};
    ASSERT_GT(times.size(), waits.size());
    EXPECT_NEAR(times[0], 3.2, 0.4);
    for (size_t i = 0; i < waits.size(); ++i) {
        EXPECT_GE(times[i + 1] - times[i], waits[i]) << i;
        EXPECT_LE(times[i + 1] - times[i], waits[i] + 0.7) << i;
    }
}

TEST_F(Survival, records_shorten_the_wait_again)
{
    stmctl({"watch", "--keep-going", "--duration", "60"},
           both(spell("silence", 2, 20), spell("silence", 50, 54)));
    std::vector<double> times = times_of_asking();
    std::erase_if(times, [](double time) { return time < 50; });
    ASSERT_EQ(times.size(), 2U);
    EXPECT_NEAR(times[0], 51.2, 0.4);
    EXPECT_NEAR(times[1] - times[0], 2.4, 0.5);
}

TEST_F(Survival, device_that_goes_after_the_first_records_is_all_that_is_reported)
{
    const Result result =
        stmctl({"watch", "--keep-going", "--duration", "20"}, spell("gone", 0.03, 9));
    EXPECT_EQ(result.status, 0);
    expect_said(result.errors, "watch", SAID.at("gone"));
}

TEST_F(Survival, boot_loader_is_reported_and_never_left_by_a_command)
{
    const Result result = stmctl({"watch", "--keep-going", "--duration", "20"},
                                 both(restart("boot-loader", 2), restart("application", 9)));
    EXPECT_EQ(result.status, 0);
    expect_said(result.errors, "watch", {NOTHING, LEFT});
    EXPECT_NE(result.errors.find(LEFT), std::string::npos) << result.errors;
    for (const Line &line : transcript()) {
        EXPECT_FALSE(line.sent == Bytes{0x83}) << "started the application";
    }
}

TEST_F(Survival, device_may_come_and_go_as_often_as_it_likes)
{
    Words spells;
    for (int i = 1; i <= 40; ++i) {
        spells = both(spells, spell("gone", i, i + 0.3));
    }
    const Words watch = on_board_with(spells, {"watch", "--keep-going", "--duration", "45"});
    const Result result = run({"bash", "-c", "ulimit -n 30; " + quoted(watch)});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.errors.find(", 40 failing exchanges\n"), std::string::npos) << result.errors;
}

} // namespace
