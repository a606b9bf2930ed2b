// The calls of update that leave no trace on the wire or on the console.
#include "tests/tool/workbench.hpp"

#include <csignal>

namespace
{

const std::string CATCHES_INTERRUPT = "catch 2: flags 0, mask empty, old action left\n";
const std::string CLOSES_DEVICE = "close the device\n";

class UpdateCalls : public Workbench
{
  protected:
    void SetUp() override
    {
        if (TOOL_EMULATOR[0] != '\0') {
            GTEST_SKIP() << "an emulator loads one library only";
        }
        write_file("image.bin", noise(1500, 2));
    }

    Words watched(const Words &options, const Words &arguments)
    {
        Words words = {"env", ADMIT_INSTRUMENTED, "WATCH_LOG=" + path("calls"),
                       "LD_PRELOAD=" + probe_program("libwatch_calls.so")};
        Words command = {update_program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Words board = on_board_in_real_time(options, command);
        words.insert(words.end(), board.begin(), board.end());
        return words;
    }

    std::string calls_of(const Words &options, const Words &arguments)
    {
        write_file("calls", {});
        Words all = options;
        all.emplace_back("--count-time");
        run(watched(all, arguments));
        return read_text("calls");
    }
};

TEST_F(UpdateCalls, it_catches_the_interrupt_and_closes_the_device_whatever_came_of_the_operation)
{
    const std::string usual = CATCHES_INTERRUPT + CLOSES_DEVICE;
    for (const char *option : {"-ver", "-state", "-start", "-reset"}) {
        EXPECT_EQ(calls_of({}, {option}), usual) << option;
        EXPECT_EQ(calls_of({"--fault", "exchange@2"}, {option}), usual) << option;
    }
    for (const char *fault : {"late=1", "silence", "exchange@4", "checksum-error@1"}) {
        EXPECT_EQ(calls_of({"--fault", fault}, {"-firmware", "image.bin"}), usual) << fault;
    }
    EXPECT_EQ(calls_of({}, {"-booter", "image.bin"}), usual);
}

TEST_F(UpdateCalls, it_leaves_the_device_to_its_exit_when_it_ends_early)
{
    EXPECT_EQ(calls_of({}, {"-firmware", "no.bin"}), CATCHES_INTERRUPT);
    EXPECT_EQ(calls_of({"--fault", "no-device"}, {"-ver"}), CATCHES_INTERRUPT);
    EXPECT_EQ(calls_of({}, {"-wrong"}), "");
}

TEST_F(UpdateCalls, its_interrupt_handler_closes_nothing)
{
    write_file("calls", {});
    const pid_t pid = start(watched({"--fault", "silence"}, {"-firmware", "image.bin"}));
    wait_for_lines(4);
    kill(pid, SIGINT);
    EXPECT_EQ(finish(pid).status, 1);
    EXPECT_EQ(read_text("calls"), CATCHES_INTERRUPT);
}

} // namespace
