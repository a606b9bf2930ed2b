// virtual-board as a user meets it: its options and refusals, boards that last and boards that do
// not, and the programs that it runs.
#include "tests/tool/workbench.hpp"

#include <sys/stat.h>

#include <csignal>

namespace
{

class VirtualBoard : public Workbench
{
  protected:
    // The shell of this machine, which may stand for any native command.
    static Words shell(const Words &options, const std::string &script)
    {
        Words words = {TOOL_VIRTUAL_BOARD};
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), {"sh", "-c", script});
        return words;
    }

    void expect_refused(const Words &options, const std::string &reason)
    {
        Words words = {TOOL_VIRTUAL_BOARD};
        words.insert(words.end(), options.begin(), options.end());
        const Result result = run(words);
        EXPECT_EQ(result.status, 125);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "virtual-board: " + reason + "\n");
    }
};

TEST_F(VirtualBoard, explains_itself)
{
    const Result result = run({TOOL_VIRTUAL_BOARD, "--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.starts_with("Usage: virtual-board [OPTIONS] COMMAND [ARGUMENTS]\n"));
    for (const char *word : {"--board DIR", "--through", "Faults", "exchange@N", "Examples:"}) {
        EXPECT_NE(result.output.find(word), std::string::npos) << word;
    }
}

TEST_F(VirtualBoard, lists_the_commands_of_the_application)
{
    const Result result = run({TOOL_VIRTUAL_BOARD, "--commands"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("  0xC3  0 to 7    takes 2 numbers of 16 bits   1\n"),
              std::string::npos);
}

TEST_F(VirtualBoard, refuses_what_it_does_not_understand)
{
    expect_refused({}, "no command to run; see --help");
    expect_refused({"--"}, "no command to run; see --help");
    expect_refused({"--bord", "x", "true"}, "unknown option '--bord'");
    expect_refused({"-x"}, "unknown option '-x'");
    expect_refused({"--board"}, "--board needs its DIR");
    expect_refused({"--board", "", "true"}, "--board cannot be ''");
    expect_refused({"--transcript=", "true"}, "--transcript cannot be ''");
    expect_refused({"--preload", "", "true"}, "--preload cannot be ''");
    expect_refused({"--count-time=yes", "true"}, "--count-time takes no argument");
    expect_refused({"--mode", "asleep", "true"}, "--mode cannot be 'asleep'");
    expect_refused({"--rate", "0", "true"}, "--rate cannot be '0'; it must be 1 to 1000000");
    expect_refused({"--version", "256", "true"}, "--version cannot be '256'");
    expect_refused({"--version", "-1", "true"}, "--version cannot be '-1'");
    expect_refused({"--busy", "some", "true"},
                   "--busy cannot be 'some'; it must be 0 to 1000000000");
    expect_refused({"--busy", "-1", "true"}, "--busy cannot be '-1'; it must be 0 to 1000000000");
    expect_refused({"--answer", "", "true"}, "'': it does not have the form CODE[/CHANNEL]=VALUE");
    expect_refused({"--answer", "0x21", "true"},
                   "'0x21': it does not have the form CODE[/CHANNEL]=VALUE");
    expect_refused({"--fault", "fire", "true"}, "unknown fault 'fire'");
    expect_refused({"--fault", "late@header", "true"},
                   "fault 'late@header' does not have the form late[@WHERE]=POLLS");
    expect_refused({"--through", "--board", "b", "true"},
                   "--through uses the real device: it works only with --transcript");
    for (const Words &option : std::vector<Words>{{"--fault", "silence"},
                                                  {"--busy", "4"},
                                                  {"--mode", "unknown"},
                                                  {"--version", "7"},
                                                  {"--answer", "0x21=hello"},
                                                  {"--count-time"}}) {
        Words words = {"--through"};
        words.insert(words.end(), option.begin(), option.end());
        words.emplace_back("true");
        expect_refused(words, "--through uses the real device: it works only with --transcript");
    }
    expect_refused({"--seed", "3", "--through", "--transcript", "-", "true"},
                   "--through uses the real device: it works only with --transcript");
    expect_refused({"--emulator", "qemu", "true"},
                   "--emulator needs --preload, a library of the command's architecture");
    expect_refused({"--preload", "no.so", "true"}, "--preload cannot be 'no.so'");
    expect_refused({"--transcript", "no/where", "true"},
                   path("no/where") + ": No such file or directory");
}

TEST_F(VirtualBoard, hands_the_exit_status_of_its_command_on)
{
    for (const Words &options : {Words{}, Words{"--board", path("b")}}) {
        EXPECT_EQ(run(shell(options, "exit 0")).status, 0);
        EXPECT_EQ(run(shell(options, "exit 7")).status, 7);
        EXPECT_EQ(run(shell(options, "kill -9 $$")).status, 128 + 9);
    }
}

TEST_F(VirtualBoard, says_when_there_is_no_such_command_or_it_cannot_be_run)
{
    Result result = run({TOOL_VIRTUAL_BOARD, "no-such-command"});
    EXPECT_EQ(result.status, 127);
    EXPECT_EQ(result.errors, "virtual-board: no-such-command: No such file or directory\n");
    write_file("plain", Bytes(3, 'x'));
    result = run({TOOL_VIRTUAL_BOARD, "./plain"});
    EXPECT_EQ(result.status, 126);
    EXPECT_EQ(result.errors, "virtual-board: ./plain: Permission denied\n");
    result = run({TOOL_VIRTUAL_BOARD, "./plain/command"});
    EXPECT_EQ(result.status, 126);
    EXPECT_EQ(result.errors, "virtual-board: ./plain/command: Not a directory\n");
}

TEST_F(VirtualBoard, refuses_programs_that_no_library_can_be_loaded_into)
{
    const std::string program = probe_program("static_program");
    Words words = virtual_board({program});
    const Result result = run(words);
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.errors, "virtual-board: " + program +
                                 ": statically linked, so its device cannot be replaced\n");
}

TEST_F(VirtualBoard, refuses_libraries_that_cannot_be_loaded)
{
    write_file("image.bin", Bytes(100, 0x7F));
    expect_refused({"--preload", "image.bin", "true"},
                   path("image.bin") + ": not a library that can be loaded");
    std::filesystem::create_directory(path("a:b"));
    std::filesystem::copy_file(TOOL_PRELOAD, path("a:b/l.so"));
    expect_refused({"--preload", "a:b/l.so", "true"},
                   path("a:b/l.so") +
                       ": a library whose path contains one of :;$ cannot be loaded");
    std::filesystem::create_directory(path("a,b"));
    std::filesystem::copy_file(TOOL_PRELOAD, path("a,b/l.so"));
    expect_refused({"--emulator", "qemu", "--preload", "a,b/l.so", "true"},
                   path("a,b/l.so") +
                       ": a library whose path contains one of :;$, cannot be loaded");
    if (!std::string(TOOL_EMULATOR).empty()) {
        const Result result = run({TOOL_VIRTUAL_BOARD, "--preload", TOOL_PRELOAD, "true"});
        EXPECT_EQ(result.status, 125);
        EXPECT_NE(result.errors.find("of a different architecture from"), std::string::npos);
    }
}

TEST_F(VirtualBoard, refuses_scripts_whose_interpreter_is_statically_linked)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the interpreter is not of this machine's architecture";
    }
    const std::string script = "#! " + probe_program("static_program") + " x\n";
    write_file("script", {script.begin(), script.end()});
    std::filesystem::permissions(path("script"), std::filesystem::perms::owner_all);
    expect_refused({"./script"}, probe_program("static_program") +
                                     ": statically linked, so its device cannot be replaced");
}

TEST_F(VirtualBoard, loads_its_library_from_a_folder_with_blanks_in_its_name)
{
    std::filesystem::create_directory(path("a b"));
    std::filesystem::copy_file(TOOL_PRELOAD, path("a b/l.so"));
    Words words = virtual_board({});
    if (words.size() > 1) {
        words.erase(words.end() - 2, words.end()); // another --preload
    }
    words.insert(words.end(), {"--preload", "a b/l.so", update_program(), "-state"});
    EXPECT_EQ(run(words).output, "2\n");
}

TEST_F(VirtualBoard, keeps_an_old_transcript_if_nothing_is_run)
{
    write_file("old", Bytes(3, 'x'));
    run({TOOL_VIRTUAL_BOARD, "--transcript", "old", probe_program("static_program")});
    EXPECT_EQ(read_text("old"), "xxx");
}

TEST_F(VirtualBoard, without_a_temporary_folder_says_so)
{
    const Result result = run({"env", "TMPDIR=" + path("nowhere"), TOOL_VIRTUAL_BOARD, "true"});
    EXPECT_EQ(result.status, 125);
    EXPECT_TRUE(result.errors.starts_with("virtual-board: cannot create a temporary folder: "))
        << result.errors;
}

TEST_F(VirtualBoard, repairs_an_emptied_file_by_its_option)
{
    update({"-ver"});
    write_file("board/mode", {});
    EXPECT_EQ(update_with({"--mode", "boot loader"}, {"-state"}).output, "1\n");
}

TEST_F(VirtualBoard, is_made_once_by_commands_that_start_together)
{
    for (int i = 0; i < 20; ++i) {
        const std::string board = "board" + std::to_string(i);
        const Words words = {TOOL_VIRTUAL_BOARD, "--board", board, "true"};
        const std::vector<pid_t> pids = {start(words), start(words), start(words)};
        for (const pid_t pid : pids) {
            EXPECT_EQ(finish(pid).status, 0);
        }
        EXPECT_EQ(read_file(board + "/flash.bin"), Bytes(524288, 0xFF));
    }
}

TEST_F(VirtualBoard, leaves_arguments_behind_the_command_alone)
{
    EXPECT_EQ(run({TOOL_VIRTUAL_BOARD, "--", "echo", "--board", "-x"}).output, "--board -x\n");
}

TEST_F(VirtualBoard, takes_an_argument_behind_an_equals_sign)
{
    EXPECT_EQ(run({TOOL_VIRTUAL_BOARD, "--board=here", "true"}).status, 0);
    EXPECT_EQ(read_text("here/mode"), "application\n");
}

TEST_F(VirtualBoard, without_a_folder_lasts_as_long_as_its_command)
{
    const Result result = run(shell({"--version", "9"}, "echo $VIRTUAL_BOARD_DIRECTORY; "
                                                        "cat $VIRTUAL_BOARD_DIRECTORY/version"));
    const std::string folder = result.output.substr(0, result.output.find('\n'));
    EXPECT_EQ(result.output, folder + "\n9\n");
    EXPECT_FALSE(std::filesystem::exists(folder));
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(folder).parent_path()));
}

TEST_F(VirtualBoard, without_a_folder_hands_signals_on_and_cleans_up)
{
    const pid_t pid = start(shell({}, "trap 'echo caught; exit 5' TERM; "
                                      "echo $VIRTUAL_BOARD_DIRECTORY; touch up; "
                                      "while :; do sleep 0.01; done"));
    wait_until("the command at work", [this] { return std::filesystem::exists(path("up")); });
    kill(pid, SIGTERM);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 5);
    const std::string folder = result.output.substr(0, result.output.find('\n'));
    EXPECT_EQ(result.output, folder + "\ncaught\n");
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(VirtualBoard, without_a_folder_hands_every_signal_on_that_would_end_it)
{
    for (const std::string name :
         {"HUP", "INT", "QUIT", "TERM", "USR1", "USR2", "ALRM", "PIPE", "PROF", "XCPU", "VTALRM"}) {
        const Result result =
            run({"env", "--default-signal", "bash", "-c", "\"$@\"", "bash", TOOL_VIRTUAL_BOARD,
                 "bash", "-c",
                 "trap 'echo caught; exit 5' " + name + "; kill -" + name +
                     " $PPID; for ((i = 0; i < 3000; ++i)); do sleep 0.01; done"});
        EXPECT_EQ(result.status, 5) << name;
        EXPECT_EQ(result.output, "caught\n") << name;
    }
}

TEST_F(VirtualBoard, without_a_folder_leaves_ignored_ends_of_children_ignored_for_its_command)
{
    const Result result = run({"env", "--default-signal", "--ignore-signal=CHLD",
                               TOOL_VIRTUAL_BOARD, "grep", "SigIgn", "/proc/self/status"});
    EXPECT_EQ(result.output, "SigIgn:\t0000000000010000\n");
}

TEST_F(VirtualBoard, in_a_folder_is_the_same_board_for_one_command_after_another)
{
    EXPECT_EQ(update_with({"--version", "77"}, {"-start"}).status, 0);
    EXPECT_EQ(read_text("board/mode"), "boot loader\n");
    EXPECT_EQ(read_text("board/version"), "77\n");
    EXPECT_EQ(read_file("board/flash.bin"), Bytes(524288, 0xFF));
    EXPECT_EQ(update({"-ver"}).output, "Booter Version 1.77\n");
    EXPECT_EQ(update({"-state"}).output, "1\n");
    write_file("board/mode", {'u', 'n', 'k', 'n', 'o', 'w', 'n'});
    EXPECT_EQ(update({"-state"}).output, "0\n");
}

TEST_F(VirtualBoard, says_what_is_wrong_with_a_folder_that_is_no_board)
{
    update({"-ver"});
    write_file("board/mode", {'x'});
    expect_refused({"--board", "board", "true"},
                   path("board/mode: neither application nor boot loader nor unknown"));
    write_file("board/mode", {'u', 'n', 'k', 'n', 'o', 'w', 'n'});
    write_file("board/version", {'9', '9', '9'});
    expect_refused({"--board", "board", "true"}, path("board/version: not a number from 0 to 255"));
    write_file("board/version", {'9'});
    write_file("board/flash.bin", Bytes(100, 0));
    expect_refused({"--board", "board", "true"},
                   path("board/flash.bin: its size must be 524288 bytes"));
    write_file("file", {});
    expect_refused({"--board", "file", "true"}, path("file/flash.bin: Not a directory"));
    expect_refused({"--board", "no/where", "true"}, path("no/where: No such file or directory"));
}

// A program may have put something else in the place of standard error, as stmctl does in order to
// catch what the module says.
TEST_F(VirtualBoard, says_that_a_transcript_cannot_be_written_where_the_user_sees_it)
{
    const std::string sentence = "virtual-board: /dev/full: No space left on device\n";
    for (const Words &command : {Words{update_program(), "-state"}, Words{TOOL_STMCTL, "state"}}) {
        const Result result = run(on_board({"--transcript", "/dev/full"}, command));
        EXPECT_EQ(result.status, 125) << command[0];
        EXPECT_EQ(result.output, "") << command[0];
        EXPECT_EQ(result.errors, sentence) << command[0];
    }
    Words both = on_board({"--transcript", "/dev/full"}, {TOOL_STMCTL, "state"});
    Words shell_words = {"sh", "-c", "\"$@\" 2>&1 | cat", "sh"};
    shell_words.insert(shell_words.end(), both.begin(), both.end());
    EXPECT_EQ(run(shell_words).output, sentence);
}

TEST_F(VirtualBoard, lets_no_transcript_of_an_earlier_command_stay)
{
    update({"-ver"});
    EXPECT_EQ(transcript().size(), 3U);
    update({"-start"});
    EXPECT_EQ(transcript().size(), 2U);
}

TEST_F(VirtualBoard, writes_the_dialogue_line_by_line)
{
    update({"-state"});
    EXPECT_EQ(read_text(".transcript"),
              "    1     0.005461  4096 > 66*4096 < 00*4096 ; synchronised\n"
              "    2     0.005471     8 > 23 00*6 aa < 00*8 ; mode asked for\n"
              "    3     0.105473     1 > 44 < 02 ; answer\n");
    update_with({"--fault", "exchange@2=ESHUTDOWN"}, {"-reset"});
    EXPECT_EQ(read_text(".transcript"),
              "    1     0.005461  4096 > 66*4096 < 00*4096 ; synchronised\n"
              "    2     0.005461     1 > ! ESHUTDOWN\n");
}

TEST_F(VirtualBoard, writes_the_dialogue_to_standard_error_on_request)
{
    const Result result =
        run(virtual_board({"--count-time", "--transcript", "-", update_program(), "-reset"}));
    EXPECT_EQ(result.errors, "    1     0.005461  4096 > 66*4096 < 00*4096 ; synchronised\n"
                             "    2     0.005462     1 > 83 < 00 ; application started\n");
}

TEST_F(VirtualBoard, runs_several_programs_on_one_fresh_board)
{
    if (std::string(TOOL_EMULATOR).empty()) {
        const std::string update = update_program();
        EXPECT_EQ(run(shell({}, update + " -start; " + update + " -state")).output, "1\n");
    } else {
        GTEST_SKIP() << "the shell is not of the programs' architecture";
    }
}

TEST_F(VirtualBoard, runs_programs_that_are_instrumented_and_those_that_are_fortified)
{
    const Words device = {"/dev/spidev1.0", "2"};
    for (const char *name : {"fortified", "fortified64", "instrumented", "instrumented_static"}) {
        if (!std::filesystem::exists(probe_program(name))) {
            continue; // there is no sanitizer for programs of this architecture
        }
        const Result result = run(on_board({}, {probe_program(name), device[0], device[1]}));
        EXPECT_EQ(result.output, "open open\n") << name;
        EXPECT_EQ(result.errors, "") << name;
    }
}

TEST_F(VirtualBoard, lets_a_lock_on_the_device_end_with_its_descriptor)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the shell is not of the emulated architecture";
    }
    const Result result = run(virtual_board(
        {"bash", "-c",
         "exec 5</dev/spidev1.0; flock 5; exec 6</dev/spidev1.0; flock -n 6; echo $?\n"
         "exec 5<&-; flock -n 6; echo $?"}));
    EXPECT_EQ(result.output, "1\n0\n") << result.errors;
}

TEST_F(VirtualBoard, listens_to_a_real_device_without_touching_it)
{
    const std::string fake = probe_program("libfake_driver.so");
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "an emulator loads one library only";
    }
    Result result = run({"env", ADMIT_INSTRUMENTED, "LD_PRELOAD=" + fake, TOOL_VIRTUAL_BOARD,
                         "--through", update_program(), "-state"});
    EXPECT_EQ(result.output, "69\n"); // 0x44 and one
    EXPECT_NE(result.errors.find(" 4096 > 66*4096 < 67*4096\n"), std::string::npos);
    EXPECT_NE(result.errors.find("     8 > 23 00*6 aa < 24 01*6 ab\n"), std::string::npos);
    EXPECT_NE(result.errors.find("     1 > 44 < 45\n"), std::string::npos);
    result = run({"env", ADMIT_INSTRUMENTED, "LD_PRELOAD=" + fake, TOOL_VIRTUAL_BOARD, "--through",
                  "--transcript", path(".transcript"), update_program(), "-reset"});
    EXPECT_EQ(result.errors, "SPI command: Connection timed out\n");
    ASSERT_EQ(transcript().size(), 2U);
    EXPECT_EQ(transcript()[1].error, "ETIMEDOUT");
    EXPECT_EQ(transcript()[1].sent, Bytes{0x83});
}

TEST_F(VirtualBoard, files_of_a_board_must_be_regular)
{
    for (const std::string name :
         {"mode", "version", "settings", "answers", "spi-mode", "spidev1.0"}) {
        std::filesystem::remove_all(path("board"));
        std::filesystem::create_directory(path("board"));
        ASSERT_EQ(mkfifo(path("board/" + name).c_str(), 0600), 0);
        const Result result = run(on_board({}, {update_program(), "-state"}));
        EXPECT_EQ(result.errors,
                  "virtual-board: " + path("board/" + name) + ": not a regular file\n");
        EXPECT_EQ(result.status, 125);
    }
}

// However the tests themselves were started: some of them interrupt what they start.
TEST_F(VirtualBoard, command_of_a_test_ignores_no_signal)
{
    const auto before = signal(SIGINT, SIG_IGN);
    EXPECT_EQ(run({"bash", "-c", "trap"}).output, "");
    signal(SIGINT, before);
}

// The driver of the device must not wait for itself.
TEST_F(VirtualBoard, files_of_a_board_are_not_sought_on_it)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the shell is not of the programs' architecture";
    }
    const std::string answers = path("board/answers");
    const Result result = run({"timeout", "-s", "KILL", "60", TOOL_VIRTUAL_BOARD, "--board",
                               path("board"), "bash", "-c",
                               "exec 5<>/dev/spidev1.0; exec 5>&-; ln -sf /dev/spidev1.0 '" +
                                   answers + "'; exec 5<>/dev/spidev1.0"});
    EXPECT_EQ(result.status, 125);
    EXPECT_TRUE(result.errors.starts_with("virtual-board: " + answers + ": ")) << result.errors;
}

TEST_F(VirtualBoard, transcript_goes_to_standard_error_even_if_that_is_the_device)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the shell is not of the programs' architecture";
    }
    const Result result = run({"timeout", "-s", "KILL", "60", TOOL_VIRTUAL_BOARD, "--board",
                               path("board"), "--transcript", "-", "bash", "-c",
                               "exec 2>&-; exec '" + update_program() + "' -state"});
    EXPECT_EQ(result.output, "2\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(VirtualBoard, shows_a_device_to_the_tools_of_a_shell)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the shell is not of the programs' architecture";
    }
    std::filesystem::create_symlink("/dev/spidev1.0", path("link"));
    const Result result = run(virtual_board(
        {"bash", "-c",
         "LC_ALL=C; ls -l /dev/spidev1.0 | grep -o '^c\\|153, *0'; ls -lL link | cut -c 1\n"
         "stat -c '%F' /dev/spidev1.0; test -c link && test -w link && echo yes\n"
         "realpath link"}));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "c\n153, 0\nc\ncharacter special file\nyes\n/dev/spidev1.0\n");
}

// Its stand-in would refuse to seek; the file behind this device takes it.
TEST_F(VirtualBoard, leaves_a_real_device_all_its_calls)
{
    const std::string fake = probe_program("libfake_driver.so");
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "an emulator loads one library only";
    }
    const Result result =
        run({"env", ADMIT_INSTRUMENTED, "LD_PRELOAD=" + fake, TOOL_VIRTUAL_BOARD, "--through",
             "--transcript", ".transcript", probe_program("device_probe"), "other calls of files"});
    EXPECT_NE(result.output.find("lseek from the start: 0\n"), std::string::npos) << result.output;
    EXPECT_EQ(result.status, 0);
}

TEST_F(VirtualBoard, passes_a_missing_real_device_on)
{
    Words words = virtual_board({"--through", update_program(), "-ver"});
    const Result result = run(words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "Error: stm_com_func: Can't open device \n: No such file or directory\n");
}

} // namespace
