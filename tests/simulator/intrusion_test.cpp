// Goal: the exchanges of another program's transcript reach the co-processor at their times.
#include "simulator/driver/intrusion.hpp"
#include "simulator/driver/transcript_reader.hpp"
#include "tests/simulator/virtual_wire.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

TEST(TranscriptReader, reads_what_was_sent_and_when)
{
    const auto line =
        parse_transcript_line("    2     0.005471     8 > 23 00*6 aa < 00*8 ; mode asked for");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->time, nanoseconds(5'471'000));
    EXPECT_EQ(line->bytes, (Bytes{0x23, 0, 0, 0, 0, 0, 0, 0xAA}));
    const auto whole = parse_transcript_line("    1     0.005461  4096 > 66*4096 < 00*4096");
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->bytes, Bytes(4096, 0x66));
}

TEST(TranscriptReader, passes_over_what_never_reached_the_wire)
{
    for (const char *words :
         {"    8     0.000000  4097 > ! EMSGSIZE", "    2     0.000000     1 > 83 ! ETIMEDOUT",
          "    8     0.000000     0 > <", "    9     0.000000    16 > <"}) {
        const auto line = parse_transcript_line(words);
        ASSERT_TRUE(line) << words;
        EXPECT_EQ(line->bytes, Bytes()) << words;
    }
}

TEST(TranscriptReader, refuses_what_is_no_line_of_a_transcript)
{
    for (const char *words : {"",
                              "hello",
                              "1 0.1 1",
                              "1 0.1 1 >",
                              "1 0.1 1 > 81",
                              "1 0.1 1 < 81 >",
                              "x 0.1 1 > 81 < 00",
                              "1 x 1 > 81 < 00",
                              "1 -0.1 1 > 81 < 00",
                              "1 0.1 x > 81 < 00",
                              "1 0.1 2 > 81 < 00",
                              "1 0.1 1 > 8 < 00",
                              "1 0.1 1 > 810 < 00",
                              "1 0.1 1 > gg < 00",
                              "1 0.1 3 > 81* < 00",
                              "1 0.1 0 > 81*0 < 00",
                              "1 0.1 1 > 81*x < 00",
                              "1 0.1 1048577 > 81*1048577 < 00",
                              "1 0.1 1048577 > 81*1048576 82 < 00",
                              "0x1 0.1 1 > 81 < 00"}) {
        EXPECT_FALSE(parse_transcript_line(words).has_value()) << words;
    }
}

class IntrusionTest : public VirtualWire
{
  protected:
    IntrusionTest()
    {
        std::string name = std::filesystem::temp_directory_path() / "intrusion-XXXXXX";
        folder = mkdtemp(name.data());
    }
    ~IntrusionTest() override { std::filesystem::remove_all(folder); }

    Fault intrusion(const char *name, const char *content, const char *time)
    {
        const std::string path = folder / name;
        std::ofstream(path) << content;
        std::string reason;
        return parse_fault(std::string("intrusion@t=") + time + '=' + path, reason).value();
    }

    Mode mode_at(Intrusion &intrusion, nanoseconds time)
    {
        intrusion.play_until(time, *coprocessor);
        return coprocessor->mode();
    }

    std::filesystem::path folder;
};

constexpr char START_AT_1_5_SECONDS[] =
    "    1     0.005461  4096 > 66*4096 < 00*4096 ; synchronised\n"
    "    2     1.500000     8 > 81 00*6 aa < 00*8 ; boot loader started\n";
constexpr char RESET[] = "    1     0.000001     1 > 83 < 00\n";

TEST_F(IntrusionTest, plays_each_exchange_at_its_own_time_behind_that_of_the_fault)
{
    Intrusion played;
    ASSERT_EQ(played.load({intrusion("a=b@c", START_AT_1_5_SECONDS, "2s")}), "");
    EXPECT_EQ(mode_at(played, nanoseconds(3'499'999'999)), Mode::application);
    EXPECT_EQ(coprocessor->note(), "synchronised");
    EXPECT_EQ(mode_at(played, nanoseconds(3'500'000'000)), Mode::boot_loader);
    send({0x83});
    EXPECT_EQ(mode_at(played, seconds(100)), Mode::application) << "each is played once";
}

TEST_F(IntrusionTest, plays_several_in_the_order_of_their_times)
{
    Intrusion played;
    ASSERT_EQ(played.load({intrusion("reset", RESET, "5s"),
                           intrusion("start", START_AT_1_5_SECONDS, "1s")}),
              "");
    EXPECT_EQ(mode_at(played, seconds(3)), Mode::boot_loader);
    EXPECT_EQ(mode_at(played, seconds(6)), Mode::application);
}

TEST_F(IntrusionTest, keeps_the_order_of_a_transcript_in_which_the_time_begins_anew)
{
    Intrusion played;
    const std::string both = std::string(START_AT_1_5_SECONDS) + RESET;
    ASSERT_EQ(played.load({intrusion("both", both.c_str(), "0s")}), "");
    EXPECT_EQ(mode_at(played, milliseconds(1499)), Mode::application);
    EXPECT_EQ(coprocessor->note(), "synchronised") << "the reset comes behind the start";
    EXPECT_EQ(mode_at(played, milliseconds(1500)), Mode::application);
    EXPECT_EQ(coprocessor->note(), "application started");
}

TEST_F(IntrusionTest, lets_a_restart_happen_between_its_exchanges)
{
    Behaviour behaviour;
    std::string reason;
    behaviour.faults = {parse_fault("restart@t=3s=boot-loader", reason).value()};
    power_on({}, behaviour);
    Intrusion played;
    ASSERT_EQ(played.load({intrusion("reset", RESET, "5s")}), "");
    EXPECT_EQ(mode_at(played, seconds(9)), Mode::application) << "the reset is the last of them";
    coprocessor->advance_to(seconds(9));
    EXPECT_EQ(coprocessor->mode(), Mode::application);
}

TEST_F(IntrusionTest, says_what_is_wrong_with_a_file)
{
    Intrusion played;
    const Fault bad = intrusion("bad", "    1     0.000001     1 > 83 < 00\nwhat?\n", "1s");
    EXPECT_EQ(played.load({bad}), bad.file + ": line 2 is not a line of a transcript");
    const Fault empty = intrusion("empty", "", "1s");
    EXPECT_EQ(played.load({empty}), empty.file + ": it contains no exchange");
    std::filesystem::remove(empty.file);
    EXPECT_EQ(played.load({empty}), empty.file + ": No such file or directory");
    std::filesystem::create_directory(empty.file);
    EXPECT_EQ(played.load({empty}), empty.file + ": Is a directory");
}

} // namespace

} // namespace simulator
