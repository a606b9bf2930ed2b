// watch: losses and overflows as they happen, on lines of their own where there is no terminal.
#include "tests/stmctl/record_bench.hpp"

namespace
{

class Watch : public RecordBench
{
};

TEST_F(Watch, a_line_each_second_and_a_summary)
{
    const Result result = stmctl({"watch", "--duration", "5.5"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count(result.output, "\n"), 5U) << result.output;
    EXPECT_EQ(result.output.substr(0, 6), "0:01  ");
    EXPECT_NE(result.output.find(" records  "), std::string::npos);
    EXPECT_NE(result.output.find("/s  lost 0  rejected 0  overflowing 0  fill "),
              std::string::npos);
    EXPECT_NE(result.errors.find(" records, 0 lost, 0 rejected, 0 overflowing\n"),
              std::string::npos);
}

TEST_F(Watch, events_have_lines_of_their_own)
{
    const Result flipped = stmctl({"watch", "--duration", "3"}, {"--fault", "flip@500"});
    EXPECT_EQ(flipped.status, 0);
    EXPECT_EQ(count(flipped.output, "rejected: wrong checksum after rel_t 499\n"), 1U);
    EXPECT_EQ(count(flipped.output, "lost: "), 1U);
    const Result full = stmctl({"watch", "--duration", "3"}, {"--rate", "6000"});
    EXPECT_EQ(count(full.output, "overflow: up to 2"), 1U) << full.output;
    EXPECT_GT(count(full.output, "lost: "), 5U);
    const Result stuck = stmctl({"watch", "--duration", "3"}, {"--fault", "stuck@100"});
    EXPECT_EQ(count(stuck.output, "step back: rel_t is "), 1U);
}

TEST_F(Watch, a_record_without_a_number_is_not_lost)
{
    const Result result = stmctl({"watch", "--duration", "1"}, {"--fault", "unnumbered@7"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count(result.output, "lost: "), 0U) << result.output;
    EXPECT_NE(result.errors.find(" records, 0 lost"), std::string::npos);
}

TEST_F(Watch, every_variant_can_be_watched)
{
    for (const char *variant : {"base", "omega", "temp"}) {
        const Result result = stmctl({"watch", "--duration", "1.5", "--variant", variant});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output.substr(0, 6), "0:01  ") << variant;
    }
    EXPECT_EQ(stmctl({"watch", "--variant", "x"}).status, 2);
    EXPECT_EQ(stmctl({"watch", "--duration", "0"}).status, 2);
}

// As many records as fit into a block: the larger they are, the fewer.
TEST_F(Watch, the_variant_is_the_requested_one)
{
    const char *const blocks[][2] = {{"base", "73"}, {"omega", "78"}, {"temp", "85"}};
    for (const auto &[variant, records] : blocks) {
        stmctl({"watch", "--duration", "0.1", "--variant", variant});
        EXPECT_EQ(transcript().at(1).note, std::string(records) + " records asked for") << variant;
    }
}

TEST_F(Watch, a_failed_exchange_ends_it_or_is_overcome)
{
    const Result ended = with_fault("exchange@60", {"watch", "--duration", "5"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.errors.find("watch: fetching the data failed: Input/output error\n"),
              std::string::npos);
    const Result overcome = with_fault("exchange@60", {"watch", "--duration", "5", "--keep-going"});
    EXPECT_EQ(overcome.status, 0);
    EXPECT_NE(overcome.errors.find(", 1 failing exchange\n"), std::string::npos);
}

TEST_F(Watch, the_user_can_end_it)
{
    const Result result =
        in_script(really({}, {"watch"}) + "< <(await '; block 3:' .transcript; printf 's\\n')");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(in_shell({"watch"}, "| head -n 2; echo ${PIPESTATUS[0]}").errors, "");
}

TEST_F(Watch, events_report_all_losses_in_the_summary)
{
    const Result result = stmctl({"watch", "--duration", "1.2"}, {"--rate", "6000"});
    EXPECT_EQ(result.errors,
              "stmctl: watch: 3316 records, 3316 lost, 0 rejected, 2368 overflowing\n");
    long lost = 0;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        lost += line.starts_with("lost: ") ? std::stol(line.substr(6)) : 0;
    }
    EXPECT_EQ(lost, 3316);
}

// What has piled up in the silence is more than the board can hold.
TEST_F(Watch, an_overflow_has_a_beginning_and_an_end)
{
    const Result result =
        stmctl({"watch", "--duration", "6", "--keep-going"}, {"--fault", "silence@t=2s..4s"});
    EXPECT_EQ(count(result.output, "overflow: up to 254 records waiting at rel_t "), 1U)
        << result.output;
    EXPECT_EQ(count(result.output, "overflow over at rel_t "), 1U) << result.output;
    EXPECT_LT(result.output.find("overflow: "), result.output.find("overflow over at rel_t "));
}

TEST_F(Watch, rejected_record_is_reported_before_what_it_costs)
{
    const Result result = stmctl({"watch", "--duration", "1.5"}, {"--fault", "flip@500"});
    EXPECT_EQ(result.output,
              "rejected: wrong checksum after rel_t 499\n"
              "lost: 52 records before rel_t 576\n"
              "0:01  931 records  927/s  lost 52  rejected 1  overflowing 0  fill 81 of 255\n");
    EXPECT_EQ(result.errors, "stmctl: watch: 1444 records, 52 lost, 1 rejected, 0 overflowing\n");
}

} // namespace
