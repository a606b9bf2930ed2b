// records: as many as requested, in every format; what is missing is counted and reported.
#include "tests/stmctl/record_bench.hpp"

namespace
{

class Records : public RecordBench
{
};

TEST_F(Records, a_single_one_is_shown_as_text_unless_more_are_requested)
{
    const std::string text = says({"records"});
    EXPECT_EQ(text.substr(0, 45), "stm_uint8_t  nr   : 1\nstm_int32_t  rel_t: 1\n\n");
    EXPECT_EQ(count(text, "rel_t: "), 1U);
}

TEST_F(Records, the_requested_number_comes_over_several_blocks)
{
    for (const char *variant : {"base", "omega", "temp"}) {
        const Words words = {"records", "-n", "200", "--format", "csv", "--variant", variant};
        EXPECT_EQ(column(csv(says(words)), "rel_t"), numbers(1, 200)) << variant;
    }
    EXPECT_EQ(count(says({"records", "-n", "0x10"}), " rel_t: "), 16U);
}

TEST_F(Records, hex_shows_each_block_once)
{
    const std::string one = says({"records", "--format", "hex"});
    EXPECT_EQ(count(one, "\n"), 2U);
    EXPECT_EQ(says({"records", "--count", "3", "--format", "hex"}), one + "(3 records)\n");
    const std::string blocks = says({"records", "-n", "90", "--format", "hex"});
    EXPECT_EQ(count(blocks, "Received value: \n"), 2U);
    EXPECT_EQ(blocks.substr(0, one.size() + 13), one + "(73 records)\n");
    EXPECT_EQ(blocks.substr(blocks.size() - 13), "(17 records)\n");
}

TEST_F(Records, fields_are_separated_as_requested)
{
    const std::string usual = says({"records", "-n", "5", "--format", "csv", "--variant", "temp"});
    for (const std::string word : {",", ";", "tab", "\t"}) {
        std::string lines = usual;
        for (size_t at = 0; (at = lines.find(";\n", at)) != std::string::npos;) {
            lines.erase(at, 1);
        }
        std::ranges::replace(lines, ';', word == "tab" ? '\t' : word[0]);
        EXPECT_EQ(says({"records", "-n", "5", "--format", "csv", "--variant", "temp", "--separator",
                        word}),
                  lines);
    }
    const std::string timed =
        says({"records", "--format", "csv", "--separator", ",", "--timestamps"});
    EXPECT_EQ(timed.substr(0, 16), "\"time\",\"nr\",\"rel");
    EXPECT_EQ(timed[timed.find('\n') + 18], ',') << timed;
    EXPECT_EQ(count(timed, ";"), 0U);
    expect_failure(stmctl({"records", "--separator", ","}), 2, "--separator requires --format csv");
    expect_failure(stmctl({"adc", "--format", "jsonl", "--separator", ","}), 2,
                   "--separator requires --format csv");
    for (const std::string word : {" ", "|", ",,"}) {
        expect_failure(stmctl({"ring", "read", "--format", "csv", "--separator", word}), 2,
                       "--separator must be ',', ';' or tab, not '" + word + "'");
    }
}

TEST_F(Records, columns_have_the_names_of_the_variant)
{
    const auto header = [&](const char *variant) {
        const std::string text = says({"records", "--format", "csv", "--variant", variant});
        return text.substr(0, text.find('\n'));
    };
    EXPECT_EQ(header("base"), R"("nr";"rel_t";"U1e";"U2e";"U3e";"Uen";"I1";"I2";"I3";"negIe";)"
                              R"("BE1";"BE2";"BE";"BE32_01_ext";"buffered";"checksum";)");
    EXPECT_EQ(header("omega"),
              R"("nr";"omega_t";"rel_t";"U1e";"U2e";"U3e";"Uen";"I1";"I2";"I3";"negIe";)"
              R"("BE1";"BE2";"BE";"BE32_01_ext";"buffered";"checksum";)");
    EXPECT_EQ(header("temp"), R"("nr";"temp";"rel_t";"U1e";"U2e";"U3e";"Uen";"I1";"I2";"I3";)"
                              R"("negIe";"BE1";"BE2";"BE";"buffered";"checksum";)");
}

TEST_F(Records, jsonl_has_an_object_for_each_line_of_the_csv)
{
    for (const char *variant : {"base", "omega", "temp"}) {
        Words words = {"records", "-n", "100", "--variant", variant, "--format", "csv"};
        const Table lines = csv(says(words));
        words.back() = "jsonl";
        EXPECT_EQ(jsonl(says(words)), lines) << variant;
    }
}

TEST_F(Records, timestamps_come_first_and_never_go_back)
{
    const std::string text =
        says({"records", "-n", "100", "--format", "csv", "--timestamps", "--variant", "temp"});
    EXPECT_EQ(text.substr(0, 17), "\"time\";\"nr\";\"temp");
    const Words times = column(csv(text), "time");
    EXPECT_TRUE(std::ranges::is_sorted(times));
    EXPECT_EQ(times[0].size(), 17U) << "seconds since 1970 and six digits: " << times[0];
    const std::string line = says({"records", "--format", "jsonl", "--timestamps"});
    EXPECT_EQ(line.substr(0, 8), "{\"time\":");
    EXPECT_EQ(jsonl(line)[0].size(), 17U);
    expect_failure(stmctl({"records", "--timestamps"}), 2,
                   "--timestamps requires --format csv or jsonl");
    expect_failure(stmctl({"records", "--timestamps", "--format", "hex"}), 2,
                   "--timestamps requires --format csv or jsonl");
}

TEST_F(Records, a_dash_is_standard_output_and_not_a_file)
{
    EXPECT_EQ(says({"records", "--format", "csv", "-o", "-"}),
              says({"records", "--format", "csv"}));
    EXPECT_FALSE(std::filesystem::exists(path("-")));
}

TEST_F(Records, timestamps_are_the_hosts_time)
{
    const Words times =
        column(csv(says({"records", "-n", "500", "--format", "csv", "--timestamps"})), "time");
    for (const std::string &time : times) {
        ASSERT_EQ(time.size(), 17U) << time;
        ASSERT_NEAR(std::stod(time), static_cast<double>(std::time(nullptr)), 60);
    }
}

TEST_F(Records, a_file_replaces_the_output)
{
    const std::string shown = says({"records", "-n", "99", "--format", "csv"});
    write_file("records.csv", Bytes(100000, 'x'));
    EXPECT_EQ(says({"records", "-n", "99", "--format", "csv", "-o", "records.csv"}), "");
    EXPECT_EQ(read_text("records.csv"), shown);
    EXPECT_EQ(says({"records", "-n", "99", "--format", "csv", "--output", "other.csv"}), "");
    EXPECT_EQ(read_text("other.csv"), shown);
}

TEST_F(Records, a_file_that_cannot_be_written_is_reported)
{
    expect_failure(stmctl({"records", "-o", "no/such/folder"}), 1,
                   "cannot write 'no/such/folder': No such file or directory");
    expect_failure(stmctl({"records", "-n", "500", "-o", "/dev/full"}), 1,
                   "records: 73 of 500 records, 0 lost, 0 rejected, 0 overflowing\n"
                   "stmctl: cannot write '/dev/full': No space left on device");
    expect_failure(stmctl({"records", "-n", "1", "-o", "/dev/full"}), 1,
                   "records: 1 of 1 record, 0 lost, 0 rejected, 0 overflowing\n"
                   "stmctl: cannot write '/dev/full': No space left on device");
}

TEST_F(Records, a_file_keeps_what_it_holds_while_there_is_no_device)
{
    write_file("kept", {'o', 'l', 'd'});
    EXPECT_EQ(with_fault("no-device", {"records", "-o", "kept"}).status, 4);
    EXPECT_EQ(read_text("kept"), "old");
    EXPECT_EQ(with_fault("no-device", {"records", "-o", "new"}).status, 4);
    EXPECT_FALSE(std::filesystem::exists(path("new")));
}

TEST_F(Records, contradictory_options_are_refused)
{
    const auto refused = [&](const Words &words) { return stmctl(words).status == 2; };
    for (const char *number : {"0", "-1", "-5", "x", "1.5", "2147483648"}) {
        EXPECT_TRUE(refused({"records", "-n", number})) << number;
    }
    for (const char *seconds : {"0", "-1", "x", "1e3", "nan", "inf", "2000000000"}) {
        EXPECT_TRUE(refused({"records", "--duration", seconds})) << seconds;
    }
    EXPECT_TRUE(refused({"records", "--variant", "alpha"}));
    EXPECT_TRUE(refused({"records", "--format", "xml"}));
    EXPECT_TRUE(refused({"records", "more"}));
    EXPECT_TRUE(std::filesystem::is_empty(path("")) || !std::filesystem::exists(path("board")) ||
                transcript().empty())
        << "nothing was begun";
}

TEST_F(Records, a_rejected_record_and_the_rest_of_its_block_are_lost)
{
    for (const char *format : {"csv", "jsonl", "text"}) {
        const Result result = with_fault("flip@5", {"records", "-n", "200", "--format", format});
        EXPECT_EQ(result.status, 1) << format;
        EXPECT_EQ(result.errors,
                  "stmctl: records: 131 of 200 records, 69 lost, 1 rejected, 0 overflowing\n")
            << format;
    }
    const Result result = with_fault("flip@5", {"records", "-n", "200", "--format", "hex"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "stmctl: records: 131 of 200 records, 1 rejected; hex does not show losses\n");
}

TEST_F(Records, a_rejected_record_is_requested_again_if_the_user_wants_it)
{
    const Result result =
        with_fault("flip@150", {"records", "-n", "200", "--format", "csv", "--keep-going"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(csv(result.output).size(), 200U);
    EXPECT_EQ(result.errors,
              "stmctl: records: not everything arrived intact; trying again\n"
              "stmctl: records: records are coming again after 0.6 s\n"
              "stmctl: records: 200 of 200 records, 51 lost, 1 rejected, 0 overflowing\n");
}

TEST_F(Records, a_failed_exchange_ends_it_with_what_has_come)
{
    Result result = with_fault("exchange@2", {"records", "-n", "100", "--format", "csv"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: records: fetching the data failed: Input/output error\n"
                             "stmctl: records: 0 of 100 records, 0 lost, 0 rejected, 0 "
                             "overflowing, 1 failing exchange\n");
    result = with_fault("exchange@8", {"records", "-n", "100", "--format", "csv"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(csv(result.output).size(), 73U);
    EXPECT_EQ(result.errors, "stmctl: records: fetching the data failed (2): Input/output error\n"
                             "stmctl: records: 73 of 100 records, 0 lost, 0 rejected, 0 "
                             "overflowing, 1 failing exchange\n");
}

TEST_F(Records, a_failed_exchange_is_overcome_if_the_user_wants_it)
{
    const Words words = {"records", "-n", "100", "--format", "csv", "--keep-going"};
    const Result result = with_fault("exchange@8", words);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(csv(result.output).size(), 100U);
    EXPECT_EQ(count(result.output, "nr"), 1U) << "a single header";
    EXPECT_NE(result.errors.find("; trying again\n"), std::string::npos);
    EXPECT_NE(result.errors.find("100 of 100 records"), std::string::npos);
    Bytes asked; // only for the rest, the second time
    for (const Line &line : transcript()) {
        if (line.length == 8 && line.sent[0] == 0xC8) {
            asked.push_back(line.sent[1]);
        }
    }
    EXPECT_EQ(asked, (Bytes{73, 27, 27}));
    EXPECT_NE(result.errors.find("1 failing exchange\n"), std::string::npos);
}

TEST_F(Records, an_unnumbered_record_is_text_but_not_a_line)
{
    const Result lines = with_fault("unnumbered@3", {"records", "-n", "5", "--format", "csv"});
    EXPECT_EQ(lines.status, 1);
    EXPECT_EQ(column(csv(lines.output), "rel_t"), (Words{"1", "2", "4", "5"}));
    const Result text = with_fault("unnumbered@3", {"records", "-n", "5"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(count(text.output, " rel_t: "), 5U);
    EXPECT_EQ(text.errors, "");
}

TEST_F(Records, time_ends_it)
{
    Result result = stmctl({"records", "--duration", "0.5", "--format", "csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_GT(csv(result.output).size(), 1000U);
    EXPECT_LT(transcript().back().microseconds, 600000);
    result = with_fault("deaf@0xC8=1000", {"records", "--duration", "3", "-n", "5"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "stmctl: records: no data from the co-processor; waiting for it\n"
              "stmctl: records: nothing came in the last 3.0 s; the application is running but "
              "does not answer this\n"
              "stmctl: records: 0 of 5 records, 0 lost, 0 rejected, 0 overflowing, silent for "
              "3.0 s, 6 time-outs\n");
}

TEST_F(Records, a_late_block_is_waited_for)
{
    const Result result = with_fault("deaf@0xC8=2", {"records", "-n", "5"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count(result.output, " rel_t: "), 5U);
    EXPECT_NE(result.errors.find("2 time-outs\n"), std::string::npos);
}

TEST_F(Records, the_stop_line_ends_it_early)
{
    const Result result = in_shell({"records", "-n", "100"}, "<<<s");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors, "stmctl: records: 0 of 100 records, 0 lost, 0 rejected, 0 "
                             "overflowing; stopped before all had arrived\n");
}

TEST_F(Records, a_reader_that_goes_away_ends_it_quietly)
{
    const Result result = in_shell({"records", "-n", "100000", "--format", "csv"},
                                   "| head -n 3; echo ${PIPESTATUS[0]}");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(count(result.output, "\n"), 4U);
    EXPECT_EQ(result.output.substr(result.output.size() - 2), "0\n");
}

TEST_F(Records, a_full_disk_is_reported)
{
    const Result result = in_shell({"records", "-n", "1000"}, ">/dev/full");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "stmctl: records: 73 of 1000 records, 0 lost, 0 rejected, 0 overflowing\n"
              "stmctl: cannot write the output: No space left on device\n");
}

TEST_F(Records, a_wait_is_reported_while_it_lasts)
{
    const Result result =
        in_shell({"records", "-n", "1000", "--format", "csv"}, "2>&1", {"--fault", "deaf@0xC8=4"});
    EXPECT_LT(result.output.find("no data from the co-processor"), result.output.find("\n1;1;"));
}

constexpr char FAILS[] = "stmctl: records: fetching the data failed: Input/output error; trying "
                         "again\n";

TEST_F(Records, a_lasting_failure_is_reported_once_and_each_pause_is_twice_as_long)
{
    const Result result = stmctl({"records", "-n", "5", "--keep-going"},
                                 {"--fault", "exchange@2", "--fault", "exchange@6"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, std::string(FAILS) +
                                 "stmctl: records: records are coming again after 1.7 s\n"
                                 "stmctl: records: 5 of 5 records, 0 lost, 0 rejected, 0 "
                                 "overflowing, 2 failing exchanges\n");
    const std::vector<Line> lines = transcript();
    // The synchronising exchange itself takes 5.461 ms.
    const auto waited_before = [&](size_t index) {
        EXPECT_EQ(lines.at(index).note, "synchronised");
        return static_cast<double>(lines[index].microseconds - lines[index - 1].microseconds);
    };
    EXPECT_NEAR(waited_before(2), 505'461, 10);
    EXPECT_NEAR(waited_before(6), 1'005'461, 10);
}

TEST_F(Records, nothing_more_is_requested_when_time_is_over_after_a_failure)
{
    const Result result =
        with_fault("exchange@2", {"records", "--duration", "0.4", "--keep-going"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, std::string(FAILS) + "stmctl: records: 0 records, 0 lost, 0 rejected, "
                                                  "0 overflowing, 1 failing exchange\n");
    EXPECT_EQ(transcript().size(), 2U);
}

TEST_F(Records, a_stop_after_a_failure_counts_as_a_stop)
{
    write_file("stop", {'s', '\n'});
    const Result result =
        in_shell({"records", "-n", "5", "--keep-going"}, "<stop", {"--fault", "exchange@2"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors,
              std::string(FAILS) +
                  "stmctl: records: 0 of 5 records, 0 lost, 0 rejected, 0 "
                  "overflowing, 1 failing exchange; stopped before all had arrived\n");
}

TEST_F(Records, failed_exchanges_of_a_block_are_distinguished)
{
    for (const int exchange : {3, 4, 5, 6}) {
        const std::string number = std::to_string(exchange - 2);
        const Result result =
            with_fault("exchange@" + std::to_string(exchange), {"records", "-n", "100"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors.substr(0, result.errors.find('\n')),
                  "stmctl: records: fetching the data failed (" + number + "): Input/output error");
    }
}

TEST_F(Records, a_step_back_is_reported_even_if_nothing_is_lost)
{
    const Result result = with_fault("stuck@5", {"records", "-n", "5"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "stmctl: records: 5 of 5 records, 0 lost, 0 rejected, 0 overflowing, "
                             "1 step back in rel_t\n");
}

TEST_F(Records, a_wait_is_reported_again_after_new_records)
{
    const Result result = with_fault("late=1000", {"records", "-n", "200", "--format", "csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count(result.errors, "; waiting for it\n"), 3U) << result.errors;
    EXPECT_NE(result.errors.find(", 9 time-outs\n"), std::string::npos);
}

} // namespace
