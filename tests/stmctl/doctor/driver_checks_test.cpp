// Goal: the report about link settings and speeds that the virtual board never has.
#include "stmctl/doctor/checks.hpp"

#include <gtest/gtest.h>

#include <cerrno>

using namespace stmctl;

namespace
{

Examination with_bits(std::optional<uint8_t> bits_per_word)
{
    Examination examination;
    examination.left = {0, 6'000'000, bits_per_word};
    return examination;
}

// At a clock at which 4096 bytes take one second.
Finding exchange_of(double seconds)
{
    Examination examination;
    examination.dialogue = Dialogue();
    examination.dialogue->speed_hz = 32'768;
    examination.dialogue->exchange_seconds = {seconds, {}};
    return judge_exchange(examination);
}

TEST(WireMode, words_of_no_bits_are_words_of_eight)
{
    for (const std::optional<uint8_t> bits :
         {std::optional<uint8_t>(), std::optional<uint8_t>(0), std::optional<uint8_t>(8)}) {
        const Finding finding = judge_wire_mode(with_bits(bits));
        EXPECT_EQ(finding.health, Health::good);
        EXPECT_EQ(finding.words, "0, 8-bit words");
    }
}

TEST(WireMode, words_of_other_bits_are_bad)
{
    const Finding finding = judge_wire_mode(with_bits(16));
    EXPECT_EQ(finding.health, Health::bad);
    EXPECT_EQ(finding.words, "0, but 16-bit words, left by another program");
    EXPECT_EQ(finding.remedy, "set them back to 8 bits or restart the system");
}

TEST(Clock, that_was_the_same_before_is_named_once)
{
    Examination examination = with_bits(8);
    examination.dialogue = Dialogue();
    examination.dialogue->speed_hz = 6'000'000;
    EXPECT_EQ(judge_clock(examination).words, "6 MHz");
    examination.left.speed_hz = 500'000;
    EXPECT_EQ(judge_clock(examination).words, "6 MHz, previously 0.5 MHz");
    examination.left.speed_hz.reset();
    EXPECT_EQ(judge_clock(examination).words, "6 MHz");
}

TEST(Clock, as_it_is_now_is_shown_beside_why_nothing_was_sent)
{
    Examination examination = with_bits(8);
    examination.node.has_driver = true;
    examination.holder = "process 12 (update)";
    examination.left.speed_hz = 500'000;
    EXPECT_EQ(judge_clock(examination).health, Health::unknown);
    EXPECT_EQ(judge_clock(examination).words, "0.5 MHz now; process 12 (update) holds the lock");
    examination.left.speed_hz.reset();
    EXPECT_EQ(judge_clock(examination).words, "process 12 (update) holds the lock");
}

TEST(Examination, tells_the_first_reason_for_which_nothing_was_sent)
{
    Examination examination;
    examination.node.has_driver = true;
    examination.lock_failure = "cannot lock it";
    EXPECT_EQ(examination.why_silent(), "cannot lock it");
    examination.holder = "process 12 (update)";
    EXPECT_EQ(examination.why_silent(), "process 12 (update) holds the lock");
    examination.users.processes = {4'194'305}; // more than there can be
    EXPECT_EQ(examination.why_silent(), "process 4194305 (gone) has the device open");
    examination.users.processes.push_back(4'194'306);
    EXPECT_EQ(examination.why_silent(),
              "process 4194305 (gone) and process 4194306 (gone) have the device open");
    examination.node.has_driver = false;
    EXPECT_EQ(examination.why_silent(), "there is no driver to ask");
    examination.node.error = ENOENT;
    EXPECT_EQ(examination.why_silent(), "the device cannot be opened");
}

TEST(Clock, that_the_driver_does_not_tell_is_what_the_module_sets)
{
    Examination examination = with_bits(8);
    examination.dialogue = Dialogue();
    const Finding finding = judge_clock(examination);
    EXPECT_EQ(finding.health, Health::good);
    EXPECT_EQ(finding.words, "6 MHz");
}

TEST(Exchange, of_more_than_ten_times_the_time_of_the_wire_is_bad)
{
    EXPECT_EQ(exchange_of(10.0).health, Health::good);
    const Finding slow = exchange_of(10.5);
    EXPECT_EQ(slow.health, Health::bad);
    EXPECT_EQ(slow.words, "4096 bytes take 10500.00 ms, the wire alone 1000.00 ms");
    EXPECT_EQ(slow.remedy, "is the machine busy, or the controller without DMA?");
}

TEST(Exchange, that_fails_is_bad)
{
    Examination examination;
    examination.dialogue = Dialogue();
    examination.dialogue->exchange_seconds = {{}, "synchronising the link failed: I/O error"};
    const Finding finding = judge_exchange(examination);
    EXPECT_EQ(finding.health, Health::bad);
    EXPECT_EQ(finding.words, "synchronising the link failed: I/O error");
    EXPECT_EQ(finding.remedy, "see dmesg");
}

TEST(Users, of_which_some_are_hidden_are_unknown)
{
    Examination examination;
    examination.users.some_hidden = true;
    const Finding finding = judge_users(examination);
    EXPECT_EQ(finding.health, Health::unknown);
    EXPECT_EQ(finding.words, "no visible process has it open, but some are hidden");
    EXPECT_EQ(finding.remedy, "sudo stmctl doctor can see them all");
    examination.node.error = ENOENT;
    EXPECT_EQ(judge_users(examination).words, "the device cannot be opened");
}

TEST(Bufsiz, is_not_blamed_for_exchanges_that_fail_otherwise)
{
    if (driver_bufsiz()) {
        GTEST_SKIP() << "the driver is loaded here";
    }
    Examination examination;
    examination.dialogue = Dialogue();
    examination.dialogue->not_synchronised = Report{"text", "Input/output error", EIO};
    const Finding other = judge_bufsiz(examination);
    EXPECT_EQ(other.health, Health::unknown);
    EXPECT_EQ(other.words, "not shown and not tried: the link fails");
    examination.dialogue->not_synchronised = Report{"text", "Message too long", EMSGSIZE};
    const Finding refused = judge_bufsiz(examination);
    EXPECT_EQ(refused.health, Health::bad);
    EXPECT_EQ(refused.words, "the driver refuses 4096 bytes at once");
    EXPECT_EQ(refused.remedy, "set it where the driver is loaded, see stmctl --help access");
}

TEST(Lock, that_cannot_be_tried_is_bad_and_nothing_is_said_of_a_holder)
{
    Examination examination;
    examination.lock_failure = "cannot lock /dev/spidev1.0: No locks available";
    const Finding finding = judge_lock(examination);
    EXPECT_EQ(finding.health, Health::bad);
    EXPECT_EQ(finding.words, "cannot lock /dev/spidev1.0: No locks available");
    EXPECT_EQ(finding.remedy, "see dmesg");
}

} // namespace
