// Goal: virtual-board's options for measurements are understood, and refused if they make no sense.
#include "simulator/launcher/help.hpp"
#include "simulator/launcher/options.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace simulator
{

namespace
{

LaunchOptions parsed(std::vector<std::string> words)
{
    words.insert(words.begin(), "virtual-board");
    words.emplace_back("true");
    std::vector<char *> pointers;
    for (std::string &word : words) {
        pointers.push_back(word.data());
    }
    LaunchOptions options = parse_options(static_cast<int>(pointers.size()), pointers.data());
    options.command.clear(); // its words are gone
    return options;
}

TEST(Options, have_their_defaults)
{
    const LaunchOptions options = parsed({});
    EXPECT_EQ(options.error, "");
    EXPECT_EQ(options.run.behaviour.busy_polls, 0);
    EXPECT_EQ(options.run.behaviour.seed, 1);
    EXPECT_EQ(options.run.behaviour.adc_values, 200);
    EXPECT_EQ(options.run.behaviour.rate, 1000);
    EXPECT_EQ(options.run.behaviour.header_index, 0);
}

TEST(Options, set_numbers_up_to_their_limits)
{
    const Behaviour least = parsed({"--seed", "0", "--samples=0"}).run.behaviour;
    EXPECT_EQ(least.seed, 0);
    EXPECT_EQ(least.adc_values, 0);
    const Behaviour most = parsed({"--seed=1000000000", "--samples", "255"}).run.behaviour;
    EXPECT_EQ(most.seed, 1'000'000'000);
    EXPECT_EQ(most.adc_values, 255);
}

TEST(Options, set_rate_and_header_of_a_stream)
{
    const Behaviour least = parsed({"--rate", "1", "--header-index=0"}).run.behaviour;
    EXPECT_EQ(least.rate, 1);
    EXPECT_EQ(least.header_index, 0);
    const Behaviour most = parsed({"--rate=1000000", "--header-index", "19"}).run.behaviour;
    EXPECT_EQ(most.rate, 1'000'000);
    EXPECT_EQ(most.header_index, 19);
    EXPECT_EQ(parsed({"--header-index=any"}).run.behaviour.header_index, ANY_HEADER_INDEX);
}

TEST(Options, set_the_buffer_of_the_driver)
{
    EXPECT_EQ(parsed({}).run.behaviour.buffer_size, 4096);
    EXPECT_EQ(parsed({"--bufsiz", "1"}).run.behaviour.buffer_size, 1);
    EXPECT_EQ(parsed({"--bufsiz=1048576"}).run.behaviour.buffer_size, 1'048'576);
}

TEST(Options, make_the_file_of_an_intrusion_absolute)
{
    const std::string here = std::filesystem::current_path();
    const RunOptions run = parsed({"--fault", "intrusion@t=2s=a=b@c"}).run;
    EXPECT_EQ(run.fault_words, "intrusion@t=2s=" + here + "/a=b@c");
    ASSERT_EQ(run.behaviour.faults.size(), 1U);
    EXPECT_EQ(run.behaviour.faults[0].file, here + "/a=b@c");
    EXPECT_EQ(parsed({"--fault", "intrusion@t=2s=/a b"}).error,
              "fault 'intrusion@t=2s=/a b': it contains a blank, which cannot be passed on");
}

TEST(Options, refuse_what_is_no_such_number)
{
    for (const char *words : {"", "x", "-1", "1 ", "1000000001"}) {
        EXPECT_EQ(parsed({"--seed", words}).error,
                  std::string("--seed cannot be '") + words + "'; it must be 0 to 1000000000");
    }
    for (const char *words : {"", "x", "-1", "256"}) {
        EXPECT_EQ(parsed({"--samples", words}).error,
                  std::string("--samples cannot be '") + words + "'; it must be 0 to 255");
    }
    for (const char *words : {"", "x", "0", "-1", "1000001"}) {
        EXPECT_EQ(parsed({"--rate", words}).error,
                  std::string("--rate cannot be '") + words + "'; it must be 1 to 1000000");
    }
    for (const char *words : {"", "Any", "-1", "20", "21"}) {
        EXPECT_EQ(parsed({"--header-index", words}).error,
                  std::string("--header-index cannot be '") + words +
                      "'; it must be 0 to 19, or any");
    }
    for (const char *words : {"", "x", "0", "-1", "1048577"}) {
        EXPECT_EQ(parsed({"--bufsiz", words}).error,
                  std::string("--bufsiz cannot be '") + words + "'; it must be 1 to 1048576");
    }
    EXPECT_EQ(parsed({"--fault", "flip"}).error,
              "fault 'flip' does not have the form flip@RECORD[=BIT]");
}

TEST(Options, that_shape_a_board_do_not_go_with_a_real_one)
{
    for (const char *words :
         {"--board=x", "--mode=unknown", "--version=5", "--answer=0x21=x", "--busy=0", "--seed=1",
          "--samples=200", "--rate=1000", "--header-index=0", "--bufsiz=4096", "--fault=padded@1",
          "--count-time"}) {
        EXPECT_EQ(parsed({"--through", words}).error,
                  "--through uses the real device: it works only with --transcript")
            << words;
    }
    EXPECT_EQ(parsed({"--through", "--transcript=-"}).error, "");
}

TEST(Options, are_all_explained)
{
    for (const char *name : {"--seed N ", "--samples N ", "--rate N ", "--header-index I ",
                             "--bufsiz N ", "deaf@CODE=WAITS", "2s, 2.5s or 1500ms"}) {
        EXPECT_NE(help_text().find(name), std::string::npos) << name;
    }
}

} // namespace

} // namespace simulator
