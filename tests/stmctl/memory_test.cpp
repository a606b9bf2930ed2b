// stmctl peek, poke, dump and text: the co-processor's memory by address.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class Memory : public StmctlBench
{
  protected:
    void expect_refused(const Words &words, const std::string &sentence)
    {
        expect_failure(stmctl(words), 2, sentence);
        EXPECT_TRUE(transcript().empty()) << "the device is not touched";
    }
};

constexpr char TIMEOUT[] = ": the co-processor did not answer in time; nothing is answering: does "
                           "the co-processor have power, or has it hung?";

TEST_F(Memory, pokes_are_reported_and_peeked_back)
{
    EXPECT_EQ(says({"poke", "0x1F00", "171"}), "0x1F00 = 171 (answer 1)\n");
    EXPECT_EQ(says({"peek", "0x1F00"}), "171 (0xAB)\n");
    EXPECT_EQ(says({"peek", "0X1f00"}), "171 (0xAB)\n");
    EXPECT_EQ(says({"peek", "7936"}), "171 (0xAB)\n");
}

TEST_F(Memory, several_values_go_to_one_address_after_the_other)
{
    EXPECT_EQ(says({"poke", "0xFFFE", "0x12", "52"}, {"--answer", "0x61=9"}),
              "0xFFFE = 18 (answer 9)\n0xFFFF = 52 (answer 9)\n");
    EXPECT_EQ(read_text("board/memory.bin").substr(0xFFFE), "\x12\x34");
}

TEST_F(Memory, four_bytes_are_one_big_endian_number)
{
    says({"poke", "16", "0x12", "0x34", "0x56", "0x78"});
    EXPECT_EQ(says({"peek", "16", "--long"}), "305419896 (0x12345678)\n");
    EXPECT_EQ(says({"peek", "19", "--long"}), "2013265920 (0x78000000)\n");
}

TEST_F(Memory, dump_shows_addresses_bytes_and_characters)
{
    says({"poke", "0x1F00", "0x41", "0x7E", "0x7F", "0x1F"});
    EXPECT_EQ(says({"dump", "0x1EFF", "18"}),
              "1EFF  00 41 7E 7F 1F 00 00 00 00 00 00 00 00 00 00 00  |.A~.............|\n"
              "1F0F  00 00                                            |..|\n");
    EXPECT_EQ(says({"dump", "0x1F00", "1"}),
              "1F00  41                                               |A|\n");
}

TEST_F(Memory, dump_reaches_up_to_the_last_address)
{
    says({"poke", "0xFFFF", "0x41"});
    says({"poke", "0", "0x42"});
    EXPECT_EQ(says({"dump", "0xFFFF", "1"}),
              "FFFF  41                                               |A|\n");
    EXPECT_EQ(says({"dump", "0xFFF0", "16"}),
              "FFF0  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 41  |...............A|\n");
}

// They are accepted in either case and shown as capitals.
TEST_F(Memory, hexadecimal_digits_have_one_case)
{
    EXPECT_EQ(says({"poke", "0xabcd", "0XeF", "0xFe"}),
              "0xABCD = 239 (answer 1)\n0xABCE = 254 (answer 1)\n");
    EXPECT_EQ(says({"peek", "0XABcd"}), "239 (0xEF)\n");
    EXPECT_EQ(says({"peek", "0xabcd", "--long"}), "4026400768 (0xEFFE0000)\n");
    EXPECT_EQ(says({"dump", "0xAbCd", "0x2"}),
              "ABCD  EF FE                                            |..|\n");
}

TEST_F(Memory, dump_shows_no_byte_that_did_not_come)
{
    says({"poke", "0", "0x41", "0x42", "0x43"});
    const Result result = with_fault("length@0x75=2", {"dump", "0", "3"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "0000  41 42                                            |AB|\n");
    EXPECT_EQ(result.errors, "stmctl: dump: 3 bytes requested, 2 received; another program may "
                             "have used the device\n");
}

TEST_F(Memory, dump_of_the_largest_reply)
{
    const std::string output = says({"dump", "0", "4096"});
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 256);
}

TEST_F(Memory, text_is_what_an_address_gives_byte_by_byte)
{
    EXPECT_EQ(says({"text", "0x1F00"}, {"--answer", "0x62/0x1F00=ok"}), "ok\n");
    EXPECT_EQ(says({"text", "0x1F00"}, {"--answer", "0x62/0x1F00=a\x1B[m"}), "a\\x1B[m\n");
}

TEST_F(Memory, written_text_goes_to_one_address)
{
    EXPECT_EQ(says({"text", "5", "--write", "hello"}), "5 characters written to 0x0005\n");
    EXPECT_EQ(read_text("board/memory.bin").substr(4, 3), std::string("\0o\0", 3));
    size_t frames = 0;
    for (const Line &line : transcript()) {
        frames += line.length == 8 ? 1 : 0;
    }
    EXPECT_EQ(frames, 5U);
}

TEST_F(Memory, longest_text_that_can_be_written)
{
    EXPECT_EQ(says({"text", "0", "--write", std::string(255, 'x')}),
              "255 characters written to 0x0000\n");
    EXPECT_EQ(says({"text", "5", "--write", "h"}), "1 character written to 0x0005\n");
}

TEST_F(Memory, operands_are_checked_before_the_device_is_touched)
{
    for (const char *command : {"peek", "text"}) {
        expect_refused({command, "0x10000"},
                       "address must be a number from 0 to 65535, not '0x10000'");
        expect_refused({command, "x"}, "address must be a number from 0 to 65535, not 'x'");
    }
    expect_refused({"poke", "0", "256"}, "value must be a number from 0 to 255, not '256'");
    expect_refused({"poke", "65535", "1", "2"}, "the values extend beyond address 0xFFFF");
    expect_refused({"poke", "0"}, "VALUE is required; see stmctl poke --help");
    expect_refused({"dump", "0xFFFF", "2"}, "the range extends beyond address 0xFFFF");
    expect_refused({"dump", "0xFFF0", "32"}, "the range extends beyond address 0xFFFF");
    expect_refused({"dump", "0", "0"}, "count must be a number from 1 to 4096, not '0'");
    expect_refused({"dump", "0", "4097"}, "count must be a number from 1 to 4096, not '4097'");
    expect_refused({"dump", "0"}, "COUNT is required; see stmctl dump --help");
    expect_refused({"text", "0", "--write", std::string(256, 'x')},
                   "the text has 256 characters; at most 255 are possible");
}

TEST_F(Memory, time_out_is_reported_and_no_byte_shown)
{
    expect_failure(with_fault("silence", {"peek", "0"}), 1, std::string("peek") + TIMEOUT);
    expect_failure(with_fault("silence", {"peek", "0", "--long"}), 1,
                   std::string("peek") + TIMEOUT);
    expect_failure(with_fault("silence", {"poke", "0", "1"}), 1,
                   std::string("poke 0x0000") + TIMEOUT);
    expect_failure(with_fault("silence", {"dump", "0", "16"}), 1, std::string("dump") + TIMEOUT);
    expect_failure(with_fault("silence", {"text", "0"}), 1, std::string("text") + TIMEOUT);
    expect_failure(with_fault("silence", {"text", "0", "--write", "x"}), 1,
                   std::string("text") + TIMEOUT);
}

TEST_F(Memory, failing_exchange_is_reported)
{
    const std::string sending = ": sending the command failed: Input/output error";
    const std::string fetching = ": fetching the data failed: Input/output error";
    expect_failure(with_fault("exchange@2", {"peek", "0"}), 1, "peek" + sending);
    expect_failure(with_fault("exchange@5", {"peek", "0"}), 1, "peek" + fetching);
    expect_failure(with_fault("exchange@2", {"poke", "0", "1"}), 1, "poke 0x0000" + sending);
    expect_failure(with_fault("exchange@2", {"dump", "0", "1"}), 1, "dump" + sending);
    expect_failure(with_fault("exchange@5", {"dump", "0", "1"}), 1, "dump" + fetching);
    expect_failure(with_fault("exchange@5", {"text", "0"}), 1, "text" + fetching);
}

TEST_F(Memory, failing_exchange_among_the_characters_of_a_text_is_reported)
{
    expect_failure(with_fault("exchange@6", {"text", "0", "--write", "hello"}), 1,
                   "text: asking whether the answer is ready failed: Input/output error");
}

TEST_F(Memory, pokes_before_a_failure_are_reported)
{
    const Result result = with_fault("exchange@5", {"poke", "0", "1", "2"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "0x0000 = 1 (answer 1)\n");
    EXPECT_EQ(result.errors,
              "stmctl: poke 0x0001: sending the command failed: Input/output error\n");
}

TEST_F(Memory, missing_device_is_status_4)
{
    for (const Words &words :
         {Words{"peek", "0"}, Words{"poke", "0", "1"}, Words{"dump", "0", "1"}, Words{"text", "0"},
          Words{"get", "sampletime"}, Words{"set", "sampletime", "1"}}) {
        EXPECT_EQ(with_fault("no-device", words).status, 4) << words[0];
    }
}

} // namespace
