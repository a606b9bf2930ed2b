// A download that is retried finally succeeds, whatever happens to it and whenever.
#include "tests/stmctl/survival_bench.hpp"

namespace
{

constexpr size_t FIRMWARE_OFFSET = 16384;
constexpr size_t IMAGE_SIZE = 50'000; // 0.6 s

class SurvivalFlash : public SurvivalBench
{
  protected:
    void SetUp() override
    {
        record_transcripts(20'000); // of another image
        write_file("ours.bin", noise(IMAGE_SIZE, 9));
    }

    static std::vector<Mishap> mishaps_of_download(unsigned seed, const std::string &transcripts)
    {
        Moments moments(seed);
        std::vector<Mishap> all = lasting_mishaps(moments, transcripts, 20, 600);
        for (const char *kind : {"silence", "gone"}) { // which do end here
            const double begin = moments.between(20, 600);
            const double end = begin + moments.between(20, 30'000);
            std::erase_if(all, [kind](const Mishap &mishap) { return mishap.name == kind; });
            all.push_back({kind, spell(kind, begin, end), begin, end});
        }
        const double reset = moments.between(20, 600);
        all.push_back({"update -reset", intrusion(transcripts + "/reset", reset), reset, reset});
        return all;
    }
};

TEST_F(SurvivalFlash, image_is_finally_in_the_flash)
{
    const auto make = [this](unsigned seed) {
        return mishaps_of_download(seed, path("dialogues"));
    };
    with_each(make, [this](const Mishap &mishap) {
        const Result result =
            on_fresh_board(mishap.options, {"flash", "firmware", "ours.bin", "--retries", "3"});
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_TRUE(flash(FIRMWARE_OFFSET, IMAGE_SIZE) == read_file("ours.bin"));
        EXPECT_NE(result.output.find("50000 bytes of firmware written to 0x08004000 in "),
                  std::string::npos);
    });
}

TEST_F(SurvivalFlash, each_unsuccessful_attempt_is_reported_with_where_it_failed)
{
    const Result result = on_fresh_board(restart("boot-loader", 0.3),
                                         {"flash", "firmware", "ours.bin", "--retries", "1", "-q"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors.find("stmctl: attempt 1 of 2 failed at block 2"), 0U);
    EXPECT_TRUE(result.errors.ends_with(
        " of 50000 bytes: time-out (no acknowledgement within 16.5 seconds); trying again\n"))
        << result.errors;
}

// It can be opened, and is gone when the link is synchronised.
TEST_F(SurvivalFlash, device_that_goes_away_again_while_it_is_opened_is_waited_for_once_more)
{
    const Words flashing = {"flash", "firmware", "ours.bin", "--retries", "1", "-q"};
    EXPECT_EQ(stmctl(flashing, spell("gone", 0.3, 5)).status, 0);
    const std::vector<Line> lines = transcript();
    const auto back = std::ranges::find_if(
        lines, [](const Line &line) { return line.microseconds >= 5'000'000; });
    ASSERT_NE(back, lines.end());
    EXPECT_EQ(back->length, 4096U);
    const std::string again = "exchange@" + std::to_string(back->number) + "=ENODEV";
    const Result result = stmctl(flashing, both(spell("gone", 0.3, 5), {"--fault", again}));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(result.errors.ends_with("\nstmctl: the device is gone; waiting for it\n"))
        << result.errors;
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, IMAGE_SIZE) == read_file("ours.bin"));
}

} // namespace
