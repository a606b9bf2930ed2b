// Programs that use one virtual board at the same time: there is one wire and one co-processor, and
// whoever dies leaves both to the others.
#include "tests/tool/workbench.hpp"

#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace
{

constexpr int PROGRAMS = 8;
constexpr size_t FIRMWARE_AT = 16 * 1024; // in the flash
constexpr size_t BLOCK = 1024;            // of a download

class Sharing : public Workbench
{
  protected:
    // The words that run one of our programs on the workbench's board.
    static std::string quoted(const Words &words)
    {
        std::string line;
        for (const std::string &word : words) {
            line += '\'' + word + "' ";
        }
        return line;
    }
};

// A line that several programs write into, or that one of them loses, is no line of this kind.
TEST_F(Sharing, each_exchange_of_eight_programs_is_whole_and_none_is_lost)
{
    constexpr int COUNT = 300;
    const std::string count = std::to_string(COUNT);
    const pid_t holder =
        start(on_board_in_real_time({}, {probe_program("sharer"), "0", "1000000000"}));
    wait_for_lines(1); // so that it is one power for all, however long they take
    std::string script;
    for (int number = 1; number <= PROGRAMS; ++number) {
        script += quoted(on_board_in_real_time(
                      {}, {probe_program("sharer"), std::to_string(number), count})) +
                  "& programs+=($!)\n";
    }
    script += "for program in \"${programs[@]}\"; do wait $program || exit; done\n";
    const Result result = run({"bash", "-c", script});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    kill(holder, SIGKILL);
    finish(holder);
    std::map<int, int> next;
    int last_number = 0;
    for (const Line &line : transcript()) {
        ASSERT_EQ(line.number, ++last_number);
        ASSERT_EQ(line.sent.size(), 5U);
        EXPECT_EQ(line.received, Bytes(5, 0));
        if (line.sent[1] != 0) {
            EXPECT_EQ(line.sent[2] * 256 + line.sent[3], next[line.sent[1]]++);
        }
    }
    for (int number = 1; number <= PROGRAMS; ++number) {
        EXPECT_EQ(next[number], COUNT) << number;
    }
}

// As a program does that goes into the background after it has opened the device.
TEST_F(Sharing, power_lasts_while_anybody_has_the_device_open)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the shell is not of the programs' architecture";
    }
    const Result first =
        run(on_board_in_real_time({}, {"bash", "-c",
                                       "exec 5<>/dev/spidev1.0; '" + update_program() +
                                           "' -state; sleep 1000 >/dev/null 2>&1 & echo $!"}));
    ASSERT_EQ(first.output.substr(0, 2), "2\n");
    const pid_t holder = std::stoi(first.output.substr(2));
    const Words tell = {TOOL_VIRTUAL_BOARD, "tell", path("board"), "restart=boot-loader"};
    EXPECT_EQ(run(tell).status, 0);
    const size_t lines = transcript().size();
    EXPECT_EQ(run(on_board_in_real_time({}, {update_program(), "-state"})).output, "1\n");
    ASSERT_GT(transcript().size(), lines) << "it goes on";
    EXPECT_EQ(transcript()[lines].number, static_cast<int>(lines) + 1);
    kill(holder, SIGKILL);
    while (run(tell).status == 0) {
    }
    EXPECT_EQ(run(tell).errors,
              "virtual-board: " + path("board") + ": no program uses this board\n");
}

TEST_F(Sharing, damaged_state_in_use_is_refused)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the shell is not of the programs' architecture";
    }
    const pid_t holder = start(on_board_in_real_time(
        {}, {"bash", "-c", "exec 5<>/dev/spidev1.0; echo open; exec sleep 1000"}));
    while (read_text(".output").empty()) {
        usleep(1000);
    }
    std::fstream state(path("board/state"), std::ios::in | std::ios::out | std::ios::binary);
    const auto size = static_cast<std::streamoff>(std::filesystem::file_size(path("board/state")));
    for (const std::streamoff from_end : {100, 10000}) { // one in each copy
        state.seekg(size - from_end);
        const char damaged = static_cast<char>(state.get() ^ 0x40);
        state.seekp(size - from_end);
        state.put(damaged);
    }
    state.close();
    const pid_t other = start(on_board_in_real_time({}, {update_program(), "-state"}));
    const Result result = finish(other);
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.errors,
              "virtual-board: " + path("board/state") + ": damaged while the board is in use\n");
    kill(holder, SIGKILL);
    finish(holder);
    EXPECT_EQ(run(on_board_in_real_time({}, {update_program(), "-state"})).output, "2\n");
}

TEST_F(Sharing, two_that_make_the_same_board_at_once_both_get_it)
{
    for (int round = 0; round < 15; ++round) {
        std::filesystem::remove_all(path("board"));
        std::string script;
        for (const char *number : {"1", "2"}) {
            const Words command = {probe_program("sharer"), number, "3"};
            Words words = virtual_board({"--count-time", "--board", path("board")});
            words.insert(words.end(), command.begin(), command.end());
            script += quoted(words) + "& programs+=($!)\n";
        }
        const Result result =
            run({"bash", "-c", script + "wait ${programs[0]} && wait ${programs[1]}"});
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
    }
}

TEST_F(Sharing, one_transcript_goes_on_while_programs_come_and_go)
{
    const pid_t holder =
        start(on_board_in_real_time({}, {probe_program("sharer"), "1", "1000000", "1000"}));
    wait_for_lines(2);
    for (const char *number : {"2", "3"}) {
        run(on_board_in_real_time({}, {probe_program("sharer"), number, "2"}));
    }
    kill(holder, SIGKILL);
    finish(holder);
    const std::vector<Line> lines = transcript();
    int64_t before = 0;
    int next = 1;
    std::map<int, int> programs;
    for (const Line &line : lines) {
        EXPECT_EQ(line.number, next++);
        EXPECT_GE(line.microseconds, before);
        before = line.microseconds;
        ++programs[line.sent[1]];
    }
    EXPECT_EQ(programs.size(), 3U);
    EXPECT_EQ(programs[2] + programs[3], 4);
    run(on_board_in_real_time({}, {probe_program("sharer"), "4", "1"}));
    EXPECT_EQ(transcript().size(), 1U) << "the next power has a new one";
}

// One that counts its time takes 40 s for an exchange at 1 Hz, which pass for the board at once.
TEST_F(Sharing, the_boards_time_never_goes_back_whoever_counts_it)
{
    const pid_t holder =
        start(on_board_in_real_time({}, {probe_program("sharer"), "1", "1000000", "1000"}));
    wait_for_lines(2);
    EXPECT_EQ(run(on_board({}, {probe_program("sharer"), "2", "1", "1"})).status, 0);
    wait_for_lines(transcript().size() + 3);
    kill(holder, SIGKILL);
    finish(holder);
    int64_t before = 0;
    for (const Line &line : transcript()) {
        EXPECT_GE(line.microseconds, before) << line.number;
        before = line.microseconds;
    }
    EXPECT_GE(before, 40'000'000);
    EXPECT_EQ(transcript().back().sent[1], 1);
}

// Real time, in which the device is held for as long as it takes to kill the holder.
TEST_F(Sharing, one_that_is_killed_in_an_exchange_leaves_the_wire_to_the_next)
{
    const pid_t holder =
        start(on_board_in_real_time({}, {probe_program("sharer"), "1", "1000000", "1000"}));
    wait_for_lines(1);
    kill(holder, SIGKILL); // an exchange takes 40 ms
    const Result next = run(on_board_in_real_time({}, {probe_program("sharer"), "2", "1"}));
    EXPECT_EQ(next.status, 0) << next.errors;
    finish(holder);
    EXPECT_EQ(transcript().back().sent, (Bytes{0xEE, 2, 0, 0, 0xEE}));
}

// All of them keep the power on; the first one has closed the device.
TEST_F(Sharing, the_clock_lasts_as_long_as_any_program_has_the_device_open)
{
    const pid_t holder = start(on_board_in_real_time(
        {}, {probe_program("timeline"), "open", "ver", "0", "close", "0", "wait", "1000000000"}));
    wait_for_lines(2);
    const auto seen_by = [&](const Words &steps) {
        Words command = {probe_program("timeline")};
        command.insert(command.end(), steps.begin(), steps.end());
        return run(on_board_in_real_time({}, command)).output;
    };
    const std::string usual = joined({"open: done", "speed: done 1000000"});
    EXPECT_EQ(seen_by({"open", "speed", "0", "die", "9"}), "");
    EXPECT_EQ(seen_by({"open", "speed", "0"}), usual) << "a killed one has closed it, too";
    EXPECT_EQ(seen_by({"open", "speed", "0", "dup", "0", "close", "0", "speed", "1", "close", "1",
                       "open", "speed", "2"}),
              usual + joined({"dup: done", "close: done", "speed: done 2000000", "close: done",
                              "open: done", "speed: done 1000000"}));
    const pid_t opener = start(on_board_in_real_time(
        {}, {probe_program("timeline"), "openw", "speed", "0", "ver", "0", "wait", "1000000000"}));
    wait_for_lines(4);
    EXPECT_EQ(seen_by({"openw", "speed", "0"}), joined({"openw: done", "speed: done 2000000"}));
    for (const pid_t program : {holder, opener}) {
        kill(program, SIGKILL);
        finish(program);
    }
}

// Whatever was removed or spoilt while nobody used the board is made anew.
TEST_F(Sharing, the_power_comes_again_whatever_became_of_the_shared_files)
{
    const Words sharer = {probe_program("sharer"), "1", "3"};
    const auto works = [&] { return run(on_board({}, sharer)).status == 0; };
    ASSERT_TRUE(works());
    for (const char *name : {"board/counts", "board/lives", "board/state", "board/spidev1.0"}) {
        std::filesystem::remove(path(name));
        EXPECT_TRUE(works()) << name;
        EXPECT_TRUE(std::filesystem::exists(path(name))) << name;
    }
    const size_t size = read_file("board/state").size();
    Bytes of_ones = read_file("board/state");
    std::fill(of_ones.begin() + 16, of_ones.end(), 0xFF); // behind the name of its layout
    Bytes longer = of_ones;
    longer.push_back(0);
    for (const Bytes &spoilt :
         {Bytes(), Bytes(16, 'x'), Bytes(size, 0), Bytes(size, 0xFF), of_ones, longer}) {
        write_file("board/state", spoilt);
        EXPECT_TRUE(works()) << spoilt.size();
        EXPECT_EQ(read_file("board/state").size(), size);
    }
}

// The next command works, and each block of the flash is erased, old or new.
TEST_F(Sharing, the_board_survives_whoever_is_killed_at_any_moment)
{
    constexpr size_t SIZE = 40 * BLOCK;
    const Bytes images[] = {noise(SIZE, 1), noise(SIZE, 2)};
    write_file("0.bin", images[0]);
    write_file("1.bin", images[1]);
    for (int round = 0; round < 24; ++round) {
        const std::string image = std::to_string(round % 2) + ".bin";
        const pid_t flashing = start(on_board({}, {update_program(), "-firmware", image}));
        usleep(static_cast<useconds_t>(round * 1500));
        kill(flashing, SIGKILL);
        finish(flashing);
        const Result next = run(on_board({}, {probe_program("sharer"), "2", "1"}));
        ASSERT_EQ(next.status, 0) << next.errors;
        const Bytes found = flash(FIRMWARE_AT, SIZE);
        for (size_t at = 0; at < SIZE; at += BLOCK) {
            const auto is_of = [&](const Bytes &one) {
                return memcmp(&found[at], &one[at], BLOCK) == 0;
            };
            ASSERT_TRUE(is_of(Bytes(SIZE, 0xFF)) || is_of(images[0]) || is_of(images[1]))
                << "round " << round << ", block " << at / BLOCK;
        }
    }
    std::set<std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator(path("board"))) {
        files.insert(entry.path().filename());
    }
    EXPECT_EQ(files, (std::set<std::string>{"answers", "counts", "flash.bin", "lives", "memory.bin",
                                            "mode", "settings", "spidev1.0", "state", "version"}));
}

TEST_F(Sharing, options_are_those_of_the_first_for_whoever_gives_none_or_the_same)
{
    const pid_t first = start(on_board_in_real_time({"--fault", "exchange@3=EIO", "--busy", "2"},
                                                    {probe_program("sharer"), "1", "100000"}));
    wait_for_words("ioctl: Input/output error", ".errors");
    finish(first);
    std::filesystem::remove(path(".transcript"));
    const pid_t holder = start(
        on_board_in_real_time({"--busy", "2"}, {probe_program("sharer"), "1", "1000000", "1000"}));
    wait_for_lines(2);
    const Words sharing = {probe_program("sharer"), "2", "1"};
    const auto other = [&](const Words &options) {
        Words words = virtual_board({"--board", path("board")});
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), sharing.begin(), sharing.end());
        return quoted(words) + "; echo [$?]\n";
    };
    const Result others = run(
        {"bash", "-c",
         other({}) + other({"--busy", "2"}) + other({"--busy", "3"}) + other({"--count-time"})});
    kill(holder, SIGKILL);
    finish(holder);
    EXPECT_EQ(others.output, "[0]\n[0]\n[125]\n[0]\n");
    EXPECT_EQ(others.errors, "virtual-board: " + path("board") +
                                 ": another program uses this board with other options; give the "
                                 "same, or none\n");
}

} // namespace
