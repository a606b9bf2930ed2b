// adc and raw: frames of converter values, and bytes that only the firmware understands.
#include "tests/stmctl/record_bench.hpp"

namespace
{

class Samples : public RecordBench
{
};

TEST_F(Samples, a_frame_of_values_in_every_format)
{
    const std::string text = says({"adc"});
    EXPECT_EQ(text.substr(0, 46), "stm_uint8_t  num   : 200\nstm_int32_t sample[0]");
    EXPECT_EQ(count(text, "sample["), 200U);
    const std::string lines = says({"adc", "--format", "csv"});
    EXPECT_EQ(lines.substr(0, 9), "\"value\";\n");
    const Table table = csv(lines);
    EXPECT_EQ(table.size(), 200U);
    EXPECT_EQ(jsonl(says({"adc", "--format", "jsonl"})), table);
    EXPECT_EQ(count(says({"adc", "--format", "hex"}), "0x"), 1203U);
}

TEST_F(Samples, several_frames_have_one_header_and_their_times)
{
    const std::string text =
        says({"adc", "-n", "3", "--format", "csv", "--timestamps"}, {"--samples", "10"});
    EXPECT_EQ(text.substr(0, 24), "\"time\";\"frame\";\"value\";\n");
    const Table table = csv(text);
    EXPECT_EQ(table.size(), 30U);
    EXPECT_EQ(table[0].at("time"), table[9].at("time"));
    EXPECT_LT(table[9].at("time"), table[10].at("time"));
    EXPECT_EQ(jsonl(says({"adc", "--format", "jsonl", "--timestamps"}))[0].size(), 2U);
}

TEST_F(Samples, each_of_several_frames_has_its_number)
{
    const Words words = {"adc", "-n", "3", "--format", "csv"};
    const Table table = csv(says(words, {"--samples", "10"}));
    ASSERT_EQ(table.size(), 30U);
    EXPECT_EQ(table[0].at("frame") + table[9].at("frame") + table[10].at("frame"), "112");
    EXPECT_EQ(table[29].at("frame"), "3");
    EXPECT_EQ(jsonl(says({"adc", "-n", "3", "--format", "jsonl"}, {"--samples", "10"})), table);
    EXPECT_EQ(says({"adc", "--duration", "0.1", "--format", "csv"}).substr(0, 16),
              "\"frame\";\"value\";");
    EXPECT_EQ(says({"adc", "-n", "1", "--format", "csv"}).substr(0, 9), "\"value\";\n");
}

TEST_F(Samples, fields_are_separated_as_requested)
{
    EXPECT_EQ(says({"adc", "-n", "2", "--format", "csv", "--separator", ","}).substr(0, 22),
              "\"frame\",\"value\"\n1,-805");
    EXPECT_EQ(says({"adc", "--format", "csv", "--separator", "tab"}).substr(0, 12),
              "\"value\"\n-805");
    const std::string raw = says({"raw", "--format", "csv", "--separator", ","});
    EXPECT_EQ(raw.substr(0, 24), "\"0.Byte\",0x55,\"1.Byte\",0");
    EXPECT_EQ(raw.substr(raw.size() - 15), "\"47.Byte\",0x2F\n");
}

TEST_F(Samples, a_cause_is_reported_once)
{
    const char *const causes[][2] = {{"bus-inactive", "nothing drives the line"},
                                     {"silence", "nothing is answering"}};
    for (const auto &[fault, cause] : causes) {
        for (const char *command : {"adc", "raw"}) {
            const std::string errors = with_fault(fault, {command}).errors;
            EXPECT_EQ(count(errors, cause), 1U) << errors;
        }
    }
}

TEST_F(Samples, a_cause_that_ends_the_run_is_not_in_its_summary_again)
{
    for (const char *command : {"adc", "raw"}) {
        const std::string errors =
            with_fault("silence", {command, "--duration", "5", "--keep-going"}).errors;
        EXPECT_EQ(count(errors, "nothing is answering"), 1U) << errors;
    }
}

TEST_F(Samples, a_reader_that_goes_away_ends_them_quietly)
{
    for (const char *command : {"adc", "raw"}) {
        const Result result = in_shell({command, "--duration", "1000", "--format", "csv"},
                                       "| head -n 3; echo ${PIPESTATUS[0]}");
        EXPECT_EQ(result.errors, "") << command;
        EXPECT_TRUE(result.output.ends_with("\n0\n")) << result.output;
    }
}

TEST_F(Samples, a_full_disk_is_reported)
{
    for (const char *command : {"adc", "raw"}) {
        const Result result = in_shell({command, "--format", "jsonl"}, ">/dev/full");
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_TRUE(
            result.errors.ends_with("stmctl: cannot write the output: No space left on device\n"))
            << result.errors;
    }
}

TEST_F(Samples, what_comes_too_late_is_requested_again)
{
    for (const std::string command : {"adc", "raw"}) {
        const Result result =
            with_fault("late=3000", {command, "--duration", "100", "--keep-going"});
        EXPECT_EQ(count(result.errors,
                        "stmctl: " + command + ": not everything arrived in time; trying again\n"),
                  1U)
            << result.errors;
    }
}

// After pauses of 0.5 s, 1 s and so on up to 32 s, then of one minute.
TEST_F(Samples, what_keeps_failing_is_finally_requested_once_a_minute)
{
    const std::string errors =
        with_fault("deaf@0xC4=100000", {"adc", "--keep-going", "--duration", "20m"}).errors;
    EXPECT_NE(errors.find("adc: 0 frames, 0 rejected, 26 not ready in time, "), std::string::npos)
        << errors;
}

TEST_F(Samples, raw_bytes_in_every_format)
{
    const std::string text = says({"raw"});
    EXPECT_EQ(text.substr(0, 41), "\nReceived values: \n0.Byte 0x55 \n1.Byte 0x");
    EXPECT_EQ(count(text, "Byte"), 48U);
    EXPECT_EQ(says({"raw", "--format", "csv"}).substr(0, 28), "\"0.Byte\";0x55;\"1.Byte\";0x01;");
    const Table table = jsonl(says({"raw", "-n", "2", "--format", "jsonl"}));
    EXPECT_EQ(table.size(), 2U);
    EXPECT_EQ(table[0].size(), 48U);
    EXPECT_EQ(table[0].at("0.Byte"), "85");
    EXPECT_EQ(table[0].at("47.Byte"), "47");
    EXPECT_EQ(count(says({"raw", "--format", "hex"}), "0x"), 4096U);
    EXPECT_EQ(says({"raw", "--format", "csv", "--timestamps"}).substr(0, 7), "\"time\";");
    Table timed = jsonl(says({"raw", "--format", "jsonl", "--timestamps"}));
    EXPECT_EQ(timed[0].at("time").size(), 17U);
    timed[0].erase("time");
    EXPECT_EQ(timed[0], table[0]);
}

TEST_F(Samples, what_has_not_come_is_not_shown)
{
    for (const char *command : {"adc", "raw"}) {
        const Result silent = with_fault("silence", {command});
        EXPECT_EQ(silent.status, 1);
        EXPECT_EQ(silent.output, "");
        EXPECT_NE(silent.errors.find("0 of 1 frame, "), std::string::npos) << silent.errors;
        EXPECT_NE(silent.errors.find(" 1 not ready in time"), std::string::npos);
        const Result failing = with_fault("exchange@3", {command});
        EXPECT_EQ(failing.status, 1);
        EXPECT_EQ(failing.output, "");
        EXPECT_NE(failing.errors.find("fetching the data failed: Input/output error\n"),
                  std::string::npos);
    }
    const Result late = with_fault("deaf@0xC4=1", {"adc", "--keep-going", "--format", "csv"});
    EXPECT_EQ(late.status, 0) << late.errors;
    EXPECT_EQ(csv(late.output).size(), 200U);
    EXPECT_EQ(late.errors.substr(late.errors.rfind("adc: 1")),
              "adc: 1 of 1 frame, 0 rejected, 1 not ready in time, 0 failing exchanges\n");
}

TEST_F(Samples, what_a_failure_has_left_is_not_a_sample)
{
    for (const char *format : {"csv", "jsonl"}) {
        const std::string whole = says({"adc", "--format", format});
        const Result overcome =
            with_fault("exchange@3", {"adc", "--keep-going", "--format", format});
        EXPECT_EQ(overcome.status, 0);
        EXPECT_EQ(count(overcome.output, "value\""), count(whole, "value\""));
        Words faults;
        for (int exchange = 5; exchange < 141; exchange += 3) {
            faults.insert(faults.end(), {"--fault", "exchange@" + std::to_string(exchange)});
        }
        const Result many = stmctl({"adc", "--keep-going", "--format", format}, faults);
        EXPECT_EQ(many.status, 0);
        EXPECT_EQ(count(many.output, "\n"), count(whole, "\n"));
        EXPECT_EQ(many.output.find("\"v-"), std::string::npos);
    }
}

// Polls take 8 us each at the driver's own clock, which it keeps when it refuses another.
TEST_F(Samples, a_frame_that_the_time_ends_has_not_come)
{
    for (const char *format : {"text", "csv", "jsonl", "hex"}) {
        const Result cut = stmctl({"adc", "--duration", "0.001", "--format", format},
                                  {"--fault", "speed-refused", "--fault", "late@0xC4=290"});
        EXPECT_EQ(cut.status, 1);
        EXPECT_EQ(cut.output, "");
    }
}

TEST_F(Samples, number_and_time_end_them)
{
    EXPECT_EQ(count(says({"raw", "-n", "5", "--format", "csv"}), "\n"), 5U);
    EXPECT_GT(count(says({"raw", "--duration", "1", "--format", "csv"}), "\n"), 10U);
    EXPECT_EQ(stmctl({"adc", "-n", "0"}).status, 2);
    EXPECT_EQ(stmctl({"raw", "--timestamps"}).status, 2);
    EXPECT_EQ(stmctl({"adc", "--variant", "base"}).status, 2);
    EXPECT_EQ(in_shell({"adc", "-n", "1000"}, "<<<s").status, 3);
}

TEST_F(Samples, fewer_than_are_wanted_in_the_time_are_a_failure)
{
    const Result result = stmctl({"raw", "-n", "1000", "--duration", "0.0101", "--format", "csv"});
    EXPECT_EQ(result.status, 1);
    const std::string shown = std::to_string(count(result.output, "\n"));
    EXPECT_EQ(result.errors, "stmctl: raw: " + shown + " of 1000 frames, 0 rejected, 0 not ready " +
                                 "in time, 0 failing exchanges\n");
    EXPECT_NE(shown, "0");
}

TEST_F(Samples, a_file_takes_them)
{
    EXPECT_EQ(says({"adc", "--format", "csv", "-o", "values.csv"}), "");
    EXPECT_EQ(csv(read_text("values.csv")).size(), 200U);
    expect_failure(stmctl({"raw", "-o", "/dev/full"}), 1,
                   "raw: 1 of 1 frame, 0 rejected, 0 not ready in time, 0 failing exchanges\n"
                   "stmctl: cannot write '/dev/full': No space left on device");
}

} // namespace
