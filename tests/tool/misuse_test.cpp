// Programs that use the device, descriptors, signals and times in unusual ways: on the virtual
// board they get what they get on a real one.
#include "tests/tool/workbench.hpp"

namespace
{

const bool EMULATED = TOOL_EMULATOR[0] != '\0';

class Misuse : public Workbench
{
  protected:
    std::string of(const std::string &way, const Words &options = {})
    {
        const Result result = run(on_board(options, {probe_program("misuse"), way}));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
};

TEST_F(Misuse, addresses_that_are_none_are_refused)
{
    EXPECT_EQ(of("pointers"), joined({
                                  "bad tx: EFAULT",
                                  "bad rx: EFAULT",
                                  "constant rx: EFAULT",
                                  "bad descriptor: EFAULT",
                                  "no descriptor: EFAULT",
                                  "bad speed: EFAULT",
                                  "no speed: EFAULT",
                                  "too long: EMSGSIZE",
                                  "afterwards: version 5",
                                  "a good buffer: 1",
                                  "the same when it has gone: EFAULT",
                                  "from another one: version 5",
                              }));
}

TEST_F(Misuse, transfers_that_the_controller_cannot_make_are_refused)
{
    EXPECT_EQ(of("transfers"), joined({
                                   "9 bits per word: EINVAL",
                                   "4 lines: EINVAL",
                                   "2041 and 2049 bytes, rounded up: EMSGSIZE",
                                   "lowest bit first: 0",
                                   "asked for: 0",
                                   "which is: 1",
                                   "a message of half a transfer: EINVAL",
                                   "close at exec: 0",
                                   "2 GB without buffers: EMSGSIZE",
                               }));
}

TEST_F(Misuse, the_mode_that_it_sets_stays_for_the_next_program)
{
    EXPECT_EQ(read_text("board/spi-mode"), "");
    of("descriptors");
    EXPECT_EQ(read_text("board/spi-mode"), "") << "it sets none";
    of("transfers");
    EXPECT_EQ(read_text("board/spi-mode"), "8\n") << "lowest bit first";
    const Result gone =
        run(on_board({"--fault", "gone@t=0s..1s"}, {probe_program("misuse"), "descriptors"}));
    EXPECT_EQ(read_text("board/spi-mode"), "8\n");
    write_file("board/spi-mode", {'x', '\n'});
    const Result odd = run(on_board({}, {probe_program("misuse"), "descriptors"}));
    EXPECT_EQ(odd.status, 125);
    EXPECT_EQ(odd.errors, "virtual-board: " + path("board/spi-mode") + ": not a number\n");
}

TEST_F(Misuse, the_device_is_known_by_its_file_and_not_by_a_number_or_a_spelling)
{
    EXPECT_EQ(of("descriptors"), joined({
                                     "a duplicate: version 5",
                                     "the number again, for another file: refused",
                                     "from its folder: version 5",
                                     "with too many slashes: version 5",
                                     "from inside its folder: version 5",
                                     "in no folder: ENOENT",
                                     "after all is closed: version 5",
                                 }));
}

TEST_F(Misuse, a_signal_waits_until_the_exchange_is_over)
{
    EXPECT_EQ(of("interrupts"), "exchanges that went wrong: 0\n");
}

TEST_F(Misuse, a_child_of_a_threaded_program_can_use_the_device)
{
    if (EMULATED) {
        GTEST_SKIP() << "the emulator's own locks do not survive such forks";
    }
    EXPECT_EQ(of("forks"), "children that could use the device: 50\n");
}

TEST_F(Misuse, a_child_of_which_nobody_heard_sends_its_own_bytes)
{
    EXPECT_EQ(of("unheard"), "the child gets version 5\n");
}

TEST_F(Misuse, odd_times_are_refused_and_times_left_are_told)
{
    EXPECT_EQ(of("times"), joined({
                               "unknown clock: EINVAL",
                               "unknown clock shown: EINVAL",
                               "too many nanoseconds: EINVAL",
                               "too few: EINVAL",
                               "less than no time: EINVAL",
                               "ready: 1",
                               "with time left: 1",
                               "read: 1",
                               "not ready: 0",
                               "with time left: 0, and descriptors: 0",
                           }));
}

TEST_F(Misuse, a_real_device_is_listened_to_whatever_addresses_it_is_given)
{
    if (EMULATED) {
        GTEST_SKIP() << "an emulator loads one library only";
    }
    const std::string fake = probe_program("libfake_driver.so");
    const Result result = run({"env", ADMIT_INSTRUMENTED, "LD_PRELOAD=" + fake, TOOL_VIRTUAL_BOARD,
                               "--through", probe_program("misuse"), "pointers"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.starts_with("bad tx: EFAULT\nbad rx: EFAULT\n")) << result.output;
    EXPECT_NE(result.errors.find("     1 > 91 ! EFAULT\n"), std::string::npos) << result.errors;
}

} // namespace
