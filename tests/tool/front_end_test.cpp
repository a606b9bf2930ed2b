// The example front end, configuring a board and reading values back.
#include "tests/tool/workbench.hpp"

namespace
{

class FrontEnd : public Workbench
{
  protected:
    Result front_end(const Words &arguments, const Words &options = {})
    {
        Words command = {probe_program("front_end")};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return run(on_board(options, command));
    }

    std::string says(const Words &arguments, const Words &options = {})
    {
        const Result result = front_end(arguments, options);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    std::string board_file(const std::string &name) const { return read_text("board/" + name); }

    std::vector<std::string> notes() const
    {
        std::vector<std::string> all;
        for (const Line &line : transcript()) {
            all.push_back(line.note);
        }
        return all;
    }
};

constexpr char TEXTS[] = "virtual co-processor\nfirmware 1.0\n";

TEST_F(FrontEnd, what_it_sets_is_found_in_the_boards_folder)
{
    EXPECT_EQ(says({"mode", "2"}), "");
    EXPECT_EQ(says({"sampletime", "100"}), "");
    EXPECT_EQ(says({"sampleskip", "3"}), "");
    EXPECT_EQ(says({"adc-pair", "7", "12.5", "0.25"}), "");
    EXPECT_EQ(says({"word", "1", "500"}), "");
    EXPECT_EQ(board_file("settings"), "0x51 = 100\n"
                                      "0x52 = 3\n"
                                      "0x53 = 2\n"
                                      "0x56/1 = 500\n"
                                      "0xC3/7 = 1250 25\n");
}

TEST_F(FrontEnd, reads_back_what_it_has_set)
{
    EXPECT_EQ(says({"show", "1"}), std::string(TEXTS) + "0\n0\n0\n");
    says({"sampletime", "100"});
    says({"word", "1", "500"});
    EXPECT_EQ(says({"show", "1"}), std::string(TEXTS) + "100\n500\n0\n");
}

TEST_F(FrontEnd, shows_the_answers_that_the_board_is_told_to_give)
{
    EXPECT_EQ(says({"show", "0"}, {"--answer", "0x06/0=-250", "--answer=0x21=hello, world"}),
              "hello, world\nfirmware 1.0\n0\n0\n-250\n");
    EXPECT_EQ(says({"show", "0"}, {"--answer", "0x06/0=7"}),
              "hello, world\nfirmware 1.0\n0\n0\n7\n");
    EXPECT_EQ(board_file("answers"), "0x06/0 = 7\n0x21 = hello, world\n");
}

TEST_F(FrontEnd, writes_and_reads_the_boards_memory)
{
    EXPECT_EQ(says({"poke", "0x1F00", "171"}), "");
    EXPECT_EQ(says({"peek", "0x1F00"}), "171\n");
    EXPECT_EQ(says({"dump", "0x1EFF", "3"}), "0x0;0xAB;0x0\n");
    EXPECT_EQ(board_file("memory.bin").substr(0x1EFF, 3), std::string("\0\xAB\0", 3));
    EXPECT_EQ(says({"text", "0x1F00"}, {"--answer", "0x62/0x1F00=ok"}), std::string("ok\n"));
}

TEST_F(FrontEnd, range_errors_reach_its_user_and_not_the_board)
{
    const Result result = front_end({"mode", "4"});
    EXPECT_EQ(result.output, "Wrong interpolation mode (4)\n");
    EXPECT_EQ(transcript().size(), 1U);
    EXPECT_EQ(board_file("settings"), "");
}

TEST_F(FrontEnd, a_transaction_is_three_exchanges_and_one_more_for_the_reply)
{
    says({"peek", "0"});
    EXPECT_EQ(notes(), (std::vector<std::string>{"synchronised", "byte at 0x0000", "ready",
                                                 "length of the reply", "reply"}));
    EXPECT_EQ(transcript()[1].sent, (Bytes{0x62, 0, 0, 0, 0, 0, 0, 0xAA}));
    EXPECT_EQ(transcript()[4].sent, Bytes{0x66});
}

TEST_F(FrontEnd, a_busy_board_costs_a_millisecond_a_poll)
{
    says({"peek", "0"}, {"--busy", "5"});
    ASSERT_EQ(transcript().size(), 10U);
    EXPECT_EQ(transcript()[3].microseconds - transcript()[2].microseconds, 1001);
}

TEST_F(FrontEnd, a_command_is_in_time_with_the_3000th_poll_and_too_late_with_the_3001st)
{
    EXPECT_EQ(says({"peek", "0"}, {"--fault", "late@0x62=2999"}), "0\n");
    const std::string timeout = "Error stm_com_funcs: SPI timeout\n";
    EXPECT_EQ(says({"peek", "0"}, {"--fault", "late@0x62=3000"}), timeout + "0\n");
    EXPECT_EQ(transcript().size(), 1U + 1U + 3001U + 1U + 1U);
    EXPECT_EQ(transcript()[3003].note, "length of the reply");
    EXPECT_EQ(says({"word", "0", "1"}, {"--fault", "silence"}), timeout);
    EXPECT_EQ(board_file("settings"), "");
}

TEST_F(FrontEnd, odd_lengths_are_taken_as_they_come)
{
    says({"poke", "0", "9"});
    EXPECT_EQ(says({"peek", "0"}, {"--fault", "length@0x62=0"}), "0\n");
    EXPECT_EQ(says({"peek", "0"}, {"--fault", "length@0x62=4096"}), "9\n");
    for (const char *length : {"length@0x62=4097", "length=65535"}) {
        const Result result = front_end({"peek", "0"}, {"--fault", length});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "SPI datatransfer: Message too long\n");
        EXPECT_EQ(transcript().size(), 4U) << "the reply is not even asked for";
    }
}

TEST_F(FrontEnd, failing_exchange_is_reported_in_the_words_of_its_step)
{
    const std::string error = ": Input/output error\n";
    const std::string reports[] = {
        "Error stm_com_funcs: SPI command \n",
        "Error stm_com_funcs: SPI wait for ACK\n",
        "Error stm_com_funcs: SPI datasize \n",
        "SPI datatransfer",
    };
    int exchange = 2;
    for (const std::string &report : reports) {
        const Result result =
            front_end({"peek", "0"}, {"--fault", "exchange@" + std::to_string(exchange++)});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, report + error);
    }
}

TEST_F(FrontEnd, a_typed_s_stops_a_wait)
{
    write_file("typed", {'s', '\n'});
    std::string words;
    for (const std::string &word :
         on_board({"--fault", "silence"}, {probe_program("front_end"), "peek", "0"})) {
        words += "'" + word + "' ";
    }
    const Result result = run({"sh", "-c", words + "<typed"});
    EXPECT_EQ(result.output, "0\n");
    ASSERT_EQ(transcript().size(), 4U);
    EXPECT_EQ(transcript()[2].sent, Bytes{0x44});
    EXPECT_EQ(transcript()[3].length, 0U);
}

TEST_F(FrontEnd, a_boot_loader_does_not_know_its_commands)
{
    EXPECT_EQ(says({"peek", "0"}, {"--mode", "boot loader"}),
              "Error stm_com_funcs: SPI timeout\n0\n");
    EXPECT_EQ(transcript()[1].note, "command 0x62 is for the application, which is not running");
}

TEST_F(FrontEnd, explains_itself_when_its_words_make_no_sense)
{
    for (const Words &words : {Words{}, Words{"nonsense"}, Words{"mode"}, Words{"mode", "1", "2"},
                               Words{"mode", "x"}, Words{"mode", ""}, Words{"mode", "nan"}}) {
        const Result result = front_end(words);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.errors.substr(0, 31), "Usage: front_end OPERATION ARGU");
    }
}

TEST_F(FrontEnd, values_that_a_board_cannot_have_are_refused_before_it_runs)
{
    const Result option = front_end({"peek", "0"}, {"--answer", "0x06=1"});
    EXPECT_EQ(option.status, 125);
    EXPECT_EQ(option.errors, "virtual-board: '0x06=1': the code must be followed by / and a "
                             "channel from 0 to 7, as in 0x06/1\n");
    for (const char *name : {"settings", "answers"}) {
        says({"peek", "0"});
        write_file("board/" + std::string(name), {'0', 'x', '5', '3', '\n'});
        const Result file = front_end({"peek", "0"});
        EXPECT_EQ(file.status, 125);
        EXPECT_EQ(file.errors, "virtual-board: " + path("board/") + name +
                                   ": '0x53': it does not have the form CODE[/CHANNEL]=VALUE\n");
        write_file("board/" + std::string(name), {});
    }
}

} // namespace
