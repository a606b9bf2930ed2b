// stmctl's command line: help for everything, with examples, and status 2 for mistakes.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class Usage : public StmctlBench
{
  protected:
    Result bare(const Words &arguments)
    {
        Words words = directly({}, {program()});
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run(words);
    }

    std::string shown(const Words &arguments)
    {
        const Result result = bare(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
};

const char *const COMMANDS[] = {"flash",   "state",      "version", "start",   "reset", "get",
                                "set",     "list",       "peek",    "poke",    "dump",  "text",
                                "records", "follow",     "adc",     "raw",     "watch", "ring",
                                "plot",    "completion", "save",    "restore", "doctor"};

TEST_F(Usage, every_command_is_in_the_help_and_has_one_with_examples)
{
    const std::string all = shown({"--help"});
    for (const std::string command : COMMANDS) {
        EXPECT_NE(all.find("\n  " + command + " "), std::string::npos) << command;
        const std::string own = shown({command, "--help"});
        EXPECT_NE(own.find("Usage: stmctl " + command), std::string::npos) << command;
        EXPECT_NE(own.find("Examples:\n  s"), std::string::npos) << command;
        EXPECT_EQ(shown({command, "-h"}), own);
        EXPECT_EQ(shown({"--help", command}), own);
        EXPECT_EQ(shown({"help", command}), own);
    }
    EXPECT_EQ(shown({"-h"}), all);
    EXPECT_EQ(shown({"help"}), all);
}

TEST_F(Usage, help_sums_up_each_command)
{
    const std::string all = shown({"--help"});
    const std::pair<std::string, std::string> summaries[] = {
        {"flash", "write an image to the co-processor's flash"},
        {"state", "show what the co-processor is running"},
        {"version", "show the version of the boot loader"},
        {"start", "start the boot loader"},
        {"reset", "leave the boot loader and start the application"},
        {"get", "read a value"},
        {"set", "change a setting"},
        {"list", "list all settings and queries"},
        {"save", "save the settings to a file"},
        {"restore", "send the settings in a file"},
        {"peek", "read one or four bytes of co-processor memory"},
        {"poke", "write bytes to co-processor memory"},
        {"dump", "show a range of co-processor memory"},
        {"text", "read or write text byte by byte at one address"},
        {"records", "read measurement records"},
        {"follow", "show the live stream of records"},
        {"adc", "read a frame of converter values"},
        {"raw", "read 50 firmware-defined bytes (48 are shown)"},
        {"watch", "monitor the live stream of records"},
        {"ring", "pass records to other processes by shared memory"},
        {"plot", "draw columns of records"},
        {"doctor", "check the setup and report what is wrong"},
        {"completion", "print the completion script for a shell"},
    };
    for (const auto &[name, summary] : summaries) {
        const std::string line = "  " + name + std::string(28 - name.size(), ' ') + summary + "\n";
        EXPECT_NE(all.find("\n" + line), std::string::npos) << line;
    }
}

TEST_F(Usage, help_has_topics)
{
    EXPECT_NE(shown({"--help", "access"}).find("usermod -aG spi"), std::string::npos);
    EXPECT_NE(shown({"--help", "status"}).find("    4  the device"), std::string::npos);
    EXPECT_NE(shown({"--help", "stop"}).find("Ctrl-C ends stmctl at once"), std::string::npos);
    expect_failure(bare({"--help", "nonsense"}), 2,
                   "there is no help for 'nonsense'; see stmctl --help");
}

TEST_F(Usage, help_names_every_topic)
{
    const std::string all = shown({"--help"});
    for (const std::string topic : {"access", "status", "losses", "stop"}) {
        EXPECT_NE(all.find("\n  stmctl --help " + topic + "  "), std::string::npos) << topic;
        EXPECT_EQ(shown({"--help", topic}).find("Usage: "), std::string::npos) << topic;
    }
}

TEST_F(Usage, examples_of_a_command_are_of_that_command)
{
    for (const std::string command : COMMANDS) {
        const std::string help = shown({command, "--help"});
        const std::string title = "Examples:\n";
        std::istringstream lines(help.substr(help.find(title) + title.size()));
        for (std::string line; std::getline(lines, line) && !line.empty();) {
            EXPECT_NE(line.find("stmctl " + command), std::string::npos) << line;
        }
    }
    EXPECT_NE(shown({"ring", "--help"}).find("read --format csv     in another terminal\n"),
              std::string::npos)
        << "while the writer runs";
}

TEST_F(Usage, version_is_that_of_the_project)
{
    const std::string version = shown({"--version"});
    EXPECT_EQ(version.substr(0, 7), "stmctl ");
    EXPECT_NE(version.find('.'), std::string::npos);
    EXPECT_EQ(version.back(), '\n');
    EXPECT_EQ(shown({"-V"}), version);
    EXPECT_EQ(shown({"-V", "state"}), version);
}

TEST_F(Usage, wrong_command_lines_are_status_2)
{
    expect_failure(bare({}), 2, "no command given; see stmctl --help");
    expect_failure(bare({"nonsense"}), 2, "unknown command 'nonsense'; see stmctl --help");
    expect_failure(bare({"state", "x"}), 2, "unexpected argument: x; see stmctl state --help");
    expect_failure(bare({"state", "--nonsense"}), 2,
                   "unexpected argument: --nonsense; see stmctl state --help");
    expect_failure(bare({"records", "-n", "3", "x", "--odd", "y"}), 2,
                   "unexpected arguments: x --odd y; see stmctl records --help");
    expect_failure(bare({"--wait", "state"}), 2,
                   "unknown option '--wait' before the command; see stmctl --help");
    expect_failure(bare({"completion", "fish"}), 2,
                   "SHELL: 'fish' is not one of bash, zsh; see stmctl completion --help");
    for (const std::string command : {"flash", "get", "set", "peek", "poke", "dump", "text"}) {
        EXPECT_EQ(bare({command}).status, 2) << command;
        EXPECT_EQ(bare({command, "--nonsense"}).status, 2) << command;
    }
}

TEST_F(Usage, mistyped_words_are_answered_with_the_nearest_one)
{
    expect_failure(bare({"flahs"}), 2,
                   "unknown command 'flahs'; did you mean flash? See stmctl --help");
    expect_failure(bare({"ring", "raed"}), 2,
                   "unknown command 'raed'; did you mean read? See stmctl ring --help");
    expect_failure(
        bare({"--verison"}), 2,
        "unknown option '--verison' before the command; did you mean --version? See stmctl --help");
    expect_failure(
        bare({"records", "--formt", "csv"}), 2,
        "unexpected arguments: --formt csv; did you mean --format? See stmctl records --help");
    expect_failure(
        bare({"records", "x", "--durations=5"}), 2,
        "unexpected arguments: x --durations=5; did you mean --duration? See stmctl records "
        "--help");
    expect_failure(bare({"get", "sampeltime"}), 2,
                   "unknown query 'sampeltime'; did you mean sampletime? See stmctl list");
    expect_failure(bare({"set", "adc2-valeu", "1"}), 2,
                   "unknown setting 'adc2-valeu'; did you mean adc2-value? See stmctl list");
    expect_failure(bare({"--help", "acess"}), 2,
                   "there is no help for 'acess'; did you mean access? See stmctl --help");
    expect_failure(bare({"--help", "plto"}), 2,
                   "there is no help for 'plto'; did you mean plot? See stmctl --help");
    expect_failure(
        bare({"records", "--variant", "omeag"}), 2,
        "--variant: 'omeag' is not one of base, omega, temp; did you mean omega? See stmctl "
        "records --help");
}

TEST_F(Usage, words_that_resemble_no_other_get_no_suggestion)
{
    expect_failure(bare({"flaxxx"}), 2, "unknown command 'flaxxx'; see stmctl --help");
    expect_failure(bare({"ge"}), 2, "unknown command 'ge'; see stmctl --help");
    expect_failure(bare({"ad"}), 2, "unknown command 'ad'; see stmctl --help");
    expect_failure(bare({"statexxx"}), 2, "unknown command 'statexxx'; see stmctl --help");
    expect_failure(bare({"set", "text-2", "1"}), 2, "unknown setting 'text-2'; see stmctl list");
}

TEST_F(Usage, the_device_cannot_be_selected_and_that_is_explained)
{
    const std::string sentence =
        "the device cannot be selected: the module always opens /dev/spidev1.0; to use another "
        "one, make a link with that name, see stmctl --help access";
    for (const Words &words :
         {Words{"--device", "/dev/spidev0.0", "state"}, Words{"--device=/dev/spidev0.0", "state"},
          Words{"-d", "x", "state"}, Words{"-D", "x", "state"}, Words{"state", "--device", "x"},
          Words{"state", "--device=x"}, Words{"state", "-d", "x"}, Words{"state", "-D", "x"},
          Words{"get", "--device", "x", "sampletime", "y"}, Words{"get", "-D"},
          Words{"ring", "status", "--device", "x"}}) {
        expect_failure(bare(words), 2, sentence);
    }
    EXPECT_NE(shown({"--help", "access"}).find("cannot be selected"), std::string::npos);
    expect_failure(bare({"state", "--devices"}), 2,
                   "unexpected argument: --devices; see stmctl state --help");
}

// As in a script whose variable is not set.
TEST_F(Usage, an_empty_value_is_not_an_option_left_out)
{
    const Words options[] = {
        {"follow", "-n", ""},         {"records", "--duration", ""},
        {"records", "-o", ""},        {"watch", "--variant", ""},
        {"plot", "-o", ""},           {"plot", ""},
        {"text", "0", "--write", ""}, {"flash", "firmware", "image.bin", "--limit", ""},
    };
    for (const Words &words : options) {
        const Result result = bare(words);
        EXPECT_EQ(result.status, 2) << words[0];
        EXPECT_NE(result.errors.find(": the value is empty; see stmctl "), std::string::npos)
            << result.errors;
    }
}

TEST_F(Usage, no_help_is_wider_than_a_terminal)
{
    std::vector<Words> helps = {{"--help"}};
    for (const char *topic : {"access", "status", "losses", "stop"}) {
        helps.push_back({"--help", topic});
    }
    for (const char *command : COMMANDS) {
        helps.push_back({command, "--help"});
    }
    for (const char *command : {"write", "read", "status", "remove"}) {
        helps.push_back({"ring", command, "--help"});
    }
    for (const Words &words : helps) {
        std::istringstream lines(shown(words));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 79U) << line;
        }
    }
}

TEST_F(Usage, an_option_takes_one_value_and_a_flag_none)
{
    expect_failure(bare({"records", "--variant"}), 2,
                   "--variant needs a value; see stmctl records --help");
    expect_failure(bare({"records", "-n", "3", "-n", "4"}), 2,
                   "--count can be given only once; see stmctl records --help");
    expect_failure(bare({"state", "--json=maybe"}), 2,
                   "--json takes no value; see stmctl state --help");
}

TEST_F(Usage, the_version_is_asked_for_before_a_command_only)
{
    expect_failure(bare({"ring", "--version"}), 2,
                   "unknown option '--version' before the command; see stmctl ring --help");
}

TEST_F(Usage, without_a_board_there_is_no_device)
{
    for (const Words &words : {Words{"state"}, Words{"get", "sampletime"}, Words{"peek", "0"}}) {
        const Result result = bare(words);
        EXPECT_EQ(result.status, 4);
        EXPECT_EQ(result.errors.substr(0, 37), "stmctl: cannot open /dev/spidev1.0: N");
    }
}

TEST_F(Usage, topics_are_found_after_each_word_for_help)
{
    const std::string access = shown({"--help", "access"});
    EXPECT_EQ(shown({"-h", "access"}), access);
    EXPECT_EQ(shown({"help", "access"}), access);
}

TEST_F(Usage, more_than_one_word_after_help_is_not_a_topic)
{
    EXPECT_EQ(shown({"--help", "access", "status"}), shown({"--help"}));
    EXPECT_EQ(shown({"--help", "flash", "firmware"}), shown({"flash", "--help"}));
}

TEST_F(Usage, help_in_front_of_several_words_is_that_of_their_command)
{
    EXPECT_EQ(shown({"--help", "records", "-n", "5"}), shown({"records", "--help"}));
    EXPECT_EQ(shown({"--help", "ring", "read"}), shown({"ring", "read", "--help"}));
}

TEST_F(Usage, help_shows_defaults)
{
    EXPECT_NE(shown({"flash", "--help"}).find("--retries N=0 "), std::string::npos);
    EXPECT_NE(shown({"watch", "--help"}).find("{base,omega,temp}=temp"), std::string::npos);
    EXPECT_NE(shown({"plot", "--help"}).find("--columns NAMES=U1e,U2e,U3e"), std::string::npos);
}

} // namespace
