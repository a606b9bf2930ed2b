// update at the command line: what it prints, how it exits, and what it sends.
#include "tests/tool/workbench.hpp"

#include <csignal>

namespace
{

const std::string USAGE =
    "Usage: update <parameter> [<filename>]\n"
    "\t<parameter>:\n"
    "\t -firmware: load new firmware (default: tarvo.bin)\n"
    "\t -booter:   load new booter (default: booter.bin)\n"
    "\t -start:    start the bootloader mode\n"
    "\t -reset:    finish the bootloader mode and start the application\n"
    "\t -ver:      print the bootloader version \n"
    "\t -state:    show the mode the stm32 is running\n"
    "\t            0: unknown\n"
    "\t            1: bootloader mode\n"
    "\t            2: application mode\n"
    "\t<filename>: a customer specific filename instead of the default filename\n";

const Bytes SYNCHRONISING(4096, 0x66);

class Update : public Workbench
{
  protected:
    // Exit status, output and error output, all at once.
    static void expect(const Result &result, int status, const std::string &output,
                       const std::string &errors = "")
    {
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.output, output);
        EXPECT_EQ(result.errors, errors);
    }

    // The exchanges of the last command, by the bytes that were sent.
    void expect_sent(const std::vector<Bytes> &expected) const
    {
        std::vector<Bytes> sent;
        for (const Line &line : transcript()) {
            sent.push_back(line.sent);
        }
        EXPECT_EQ(sent, expected);
    }
};

TEST_F(Update, alone_says_no_parameter_and_prints_the_usage)
{
    expect(update({}), 1, "No parameter!\n" + USAGE);
    expect_sent({});
}

TEST_F(Update, with_an_unknown_option_says_wrong_parameter_and_prints_the_usage)
{
    for (const char *option : {"-Firmware", "-firmwar", "-firmware ", "firmware", "", "-help"}) {
        expect(update({option}), 1, "Wrong parameter\n" + USAGE);
        expect_sent({});
    }
}

TEST_F(Update, prints_the_version_of_the_boot_loader)
{
    expect(update_with({"--version", "5"}, {"-ver"}), 0, "Booter Version 1.5\n");
    expect_sent({SYNCHRONISING, {0x91}, {0x44}});
    expect(update_with({"--version", "200"}, {"-ver"}), 0, "Booter Version 1.200\n");
    expect(update_with({"--version", "0"}, {"-ver"}), 0, "Booter Version unknown\n");
}

TEST_F(Update, waits_a_tenth_of_a_second_for_an_answer)
{
    update({"-ver"});
    const std::vector<Line> lines = transcript();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[2].microseconds - lines[1].microseconds, 100'001); // and a byte at 6 MHz
}

TEST_F(Update, ignores_a_file_name_where_no_file_is_loaded)
{
    expect(update({"-ver", "whatever"}), 0, "Booter Version 1.5\n");
    expect(update({"-state", std::string(300, 'x')}), 0, "2\n");
    expect(update({"-ver", "one", "two"}), 0, "Booter Version 1.5\n");
}

TEST_F(Update, shows_and_switches_the_mode)
{
    expect(update({"-state"}), 0, "2\n");
    expect_sent({SYNCHRONISING, {0x23, 0, 0, 0, 0, 0, 0, 0xAA}, {0x44}});
    expect(update({"-start"}), 0, "");
    expect_sent({SYNCHRONISING, {0x81, 0, 0, 0, 0, 0, 0, 0xAA}});
    expect(update({"-state"}), 0, "1\n");
    expect(update({"-reset"}), 0, "");
    expect_sent({SYNCHRONISING, {0x83}});
    expect(update({"-state"}), 0, "2\n");
    expect(update_with({"--mode", "unknown"}, {"-state"}), 0, "0\n");
}

TEST_F(Update, without_a_device_exits_with_1_before_it_sends_anything)
{
    for (const char *option : {"-firmware", "-booter", "-ver", "-state", "-start", "-reset"}) {
        expect(update_with({"--fault", "no-device"}, {option}), 1, "",
               "Error: stm_com_func: Can't open device \n: No such file or directory\n");
        expect_sent({});
    }
    expect(update_with({"--fault", "no-device=EACCES"}, {"-ver"}), 1, "",
           "Error: stm_com_func: Can't open device \n: Permission denied\n");
}

TEST_F(Update, goes_on_when_the_clock_is_refused)
{
    expect(update_with({"--fault", "speed-refused"}, {"-ver"}), 0, "Booter Version 1.5\n",
           "Error: writing speed failed\n: Invalid argument\n");
    expect_sent({SYNCHRONISING, {0x91}, {0x44}});
}

TEST_F(Update, goes_on_when_the_synchronising_exchange_fails)
{
    expect(update_with({"--fault", "exchange@1"}, {"-ver"}), 0, "Booter Version 1.5\n",
           "Error: stm_com_funcs: SPI datatransfer\n: Input/output error\n");
}

TEST_F(Update, exits_with_0_although_a_command_fails)
{
    const std::string command = "SPI command: Input/output error\n";
    const std::string answer = "read data: Connection timed out\n";
    expect(update_with({"--fault", "exchange@2"}, {"-start"}), 0, "", command);
    expect(update_with({"--fault", "exchange@2"}, {"-reset"}), 0, "", command);
    expect(update_with({"--fault", "exchange@2"}, {"-ver"}), 0, "Booter Version unknown\n",
           command);
    expect(update_with({"--fault", "exchange@2"}, {"-state"}), 0, "0\n", command);
    expect(update_with({"--fault", "exchange@3=ETIMEDOUT"}, {"-ver"}), 0,
           "Booter Version unknown\n", answer);
    expect(update_with({"--fault", "exchange@3=ETIMEDOUT"}, {"-state"}), 0, "0\n", answer);
}

TEST_F(Update, says_which_image_is_missing_after_it_has_opened_the_link)
{
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"-firmware"}, "Can not open source file 'STM32_Firmware.bin'\n"},
        {{"-firmware", "no.bin"}, "Can not open source file 'no.bin'\n"},
        {{"-booter"}, "Cannot open sourcefile 'STM32_Booter.bin'\n"},
        {{"-booter", "no.bin"}, "Cannot open sourcefile 'no.bin'\n"},
        {{"-firmware", "no.bin", "more"}, "Can not open source file 'STM32_Firmware.bin'\n"},
        {{"-booter", ""}, "Cannot open sourcefile ''\n"},
    };
    for (const auto &[arguments, complaint] : cases) {
        expect(update(arguments), 1, complaint);
        expect_sent({SYNCHRONISING});
    }
}

TEST_F(Update, takes_file_names_of_up_to_254_characters)
{
    const std::string longest = "./" + std::string(252, 'n');
    ASSERT_EQ(longest.size(), 254U);
    for (const char *option : {"-firmware", "-booter"}) {
        const bool firmware = option == std::string("-firmware");
        std::string complaint = firmware ? "Can not open source file" : "Cannot open sourcefile";
        complaint.append(" '").append(longest).append("'\n");
        expect(update({option, longest}), 1, complaint);
        expect(update({option, longest + "n"}), 1, "",
               "update: the file name has 255 characters, at most 254 are possible\n");
        expect_sent({});
        EXPECT_EQ(update({option, longest + "n", "more"}).errors, "");
    }
}

TEST_F(Update, opens_a_file_whose_name_has_254_characters)
{
    const std::string name = "." + std::string(252, '/') + "x";
    ASSERT_EQ(name.size(), 254U);
    write_file("x", Bytes(3, 7));
    EXPECT_NE(update({"-firmware", name}).output.find("Transmitted data: 3 Byte\n"),
              std::string::npos);
}

TEST_F(Update, opens_the_default_images_in_the_working_directory)
{
    write_file("STM32_Firmware.bin", Bytes(3, 0x11));
    write_file("STM32_Booter.bin", Bytes(4, 0x22));
    write_file("named.bin", Bytes(5, 0x33));
    update({"-firmware"});
    EXPECT_EQ(flash(0x4000, 4), (Bytes{0x11, 0x11, 0x11, 0xFF}));
    update({"-booter"});
    EXPECT_EQ(flash(0, 5), (Bytes{0x22, 0x22, 0x22, 0x22, 0xFF}));
    update({"-firmware", "named.bin", "more"});
    EXPECT_EQ(flash(0x4000, 4), (Bytes{0x11, 0x11, 0x11, 0xFF}));
    update({"-firmware", "named.bin"});
    EXPECT_EQ(flash(0x4000, 6), (Bytes{0x33, 0x33, 0x33, 0x33, 0x33, 0xFF}));
}

TEST_F(Update, cleans_up_in_words_when_it_is_interrupted)
{
    write_file("STM32_Firmware.bin", Bytes(3, 0x11));
    const pid_t pid = start(
        on_board_in_real_time({"--fault", "silence@header"}, {update_program(), "-firmware"}));
    wait_for_lines(6);
    kill(pid, SIGINT);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.output.ends_with("\nClean up...\nProgram is shut down now\n"))
        << result.output;
    EXPECT_EQ(result.errors, "");
}

TEST_F(Update, exits_with_1_before_it_opens_the_device_if_it_cannot_catch_the_interrupt)
{
    expect(run(directly({"LD_PRELOAD=" + probe_program("libfailing_sigaction.so")},
                        {update_program(), "-ver"})),
           1, "", "sigaction: Invalid argument\n");
}

} // namespace
