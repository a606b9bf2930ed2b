// Faults in words.
#include "simulator/faults/fault_plan.hpp"
#include "simulator/faults/faults.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace simulator
{

namespace
{

void expect_fault(const char *words, FaultKind kind, int place, int value)
{
    std::string reason;
    const std::optional<Fault> fault = parse_fault(words, reason);
    ASSERT_TRUE(fault) << words << ": " << reason;
    EXPECT_EQ(fault->kind, kind) << words;
    EXPECT_EQ(fault->place, place) << words;
    EXPECT_EQ(fault->value, value) << words;
}

TEST(Faults, read_like_their_kind_place_and_value)
{
    expect_fault("bus-inactive", FaultKind::bus_inactive, ALWAYS, 0);
    expect_fault("bus-inactive@mode", FaultKind::bus_inactive, STEP_MODE, 0);
    expect_fault("silence", FaultKind::silence, ALWAYS, 0);
    expect_fault("silence@header", FaultKind::silence, STEP_HEADER, 0);
    expect_fault("checksum-error@0", FaultKind::checksum_error, STEP_FIRST_BLOCK, 0);
    expect_fault("address-error@495", FaultKind::address_error, STEP_FIRST_BLOCK + 495, 0);
    expect_fault("status@mode=0xF7", FaultKind::status, STEP_MODE, 0xF7);
    expect_fault("status@mode=255", FaultKind::status, STEP_MODE, 255);
    expect_fault("status@mode=0", FaultKind::status, STEP_MODE, 0);
    expect_fault("late=20", FaultKind::late, ALWAYS, 20);
    expect_fault("late@7=1501", FaultKind::late, STEP_FIRST_BLOCK + 7, 1501);
    expect_fault("late@0x06=3000", FaultKind::late, command_place(0x06), 3000);
    expect_fault("silence@0xA0", FaultKind::silence, command_place(0xA0), 0);
    expect_fault("bus-inactive@0xff", FaultKind::bus_inactive, command_place(0xFF), 0);
    expect_fault("length=0", FaultKind::length, ALWAYS, 0);
    expect_fault("length@0x00=65535", FaultKind::length, command_place(0), 65535);
    expect_fault("deaf@0xC8=1", FaultKind::deaf, command_place(0xC8), 1);
    expect_fault("flip@1", FaultKind::flip, 1, 64);
    expect_fault("flip@1000000000=0", FaultKind::flip, 1'000'000'000, 0);
    expect_fault("flip@7=447", FaultKind::flip, 7, 447);
    expect_fault("unnumbered@2", FaultKind::unnumbered, 2, 0);
    expect_fault("stuck@2", FaultKind::stuck, 2, 0);
    expect_fault("short@1=1", FaultKind::short_block, 1, 1);
    expect_fault("short@3=4096", FaultKind::short_block, 3, 4096);
    expect_fault("block-length@1=0", FaultKind::block_length, 1, 0);
    expect_fault("block-length@2=65535", FaultKind::block_length, 2, 65535);
    expect_fault("padded@4", FaultKind::padded, 4, 0);
    expect_fault("exchange@1", FaultKind::exchange, 1, EIO);
    expect_fault("exchange@99=ESHUTDOWN", FaultKind::exchange, 99, ESHUTDOWN);
    expect_fault("exchange@99=110", FaultKind::exchange, 99, 110);
    expect_fault("no-device", FaultKind::no_device, ALWAYS, ENOENT);
    expect_fault("no-device=EACCES", FaultKind::no_device, ALWAYS, EACCES);
    expect_fault("speed-refused", FaultKind::speed_refused, ALWAYS, EINVAL);
    expect_fault("speed-refused=1", FaultKind::speed_refused, ALWAYS, 1);
}

void expect_timed(const char *words, FaultKind kind, int64_t from_ns, int64_t until_ns, int value,
                  const char *file)
{
    expect_fault(words, kind, ALWAYS, value);
    std::string reason;
    const Fault fault = parse_fault(words, reason).value_or(Fault{});
    EXPECT_EQ(fault.span.from.count(), from_ns) << words;
    EXPECT_EQ(fault.span.until.count(), until_ns) << words;
    EXPECT_EQ(fault.file, file) << words;
}

TEST(Faults, that_stand_at_a_time_read_like_their_time_and_value)
{
    constexpr int BOOT_LOADER = 1;
    constexpr int APPLICATION = 2;
    expect_timed("restart@t=2.5s=boot-loader", FaultKind::restart, 2'500'000'000, 2'500'000'000,
                 BOOT_LOADER, "");
    expect_timed("restart@t=0s=application", FaultKind::restart, 0, 0, APPLICATION, "");
    expect_timed("silence@t=2s..4s", FaultKind::silent_spell, 2'000'000'000, 4'000'000'000, 0, "");
    expect_timed("gone@t=1500ms..2.000000001s", FaultKind::absence, 1'500'000'000, 2'000'000'001, 0,
                 "");
    expect_timed("gone@t=0.5ms..1000000000s", FaultKind::absence, 500'000,
                 1'000'000'000'000'000'000, 0, "");
    expect_timed("intrusion@t=3s=/a=b@c", FaultKind::intrusion, 3'000'000'000, 3'000'000'000, 0,
                 "/a=b@c");
}

TEST(Faults, come_in_the_order_of_their_times)
{
    std::string reason;
    Faults faults;
    for (const char *words : {"restart@t=3s=application", "gone@t=1s..2s",
                              "restart@t=2s=boot-loader", "silence", "restart@t=3s=boot-loader"}) {
        faults.push_back(parse_fault(words, reason).value());
    }
    const Faults restarts = faults_by_time(faults, FaultKind::restart);
    ASSERT_EQ(restarts.size(), 3U);
    EXPECT_EQ(restarts[0].span.from, std::chrono::seconds(2));
    EXPECT_EQ(restarts[1].value, 2) << "of two at once, the one that was given first";
    EXPECT_EQ(restarts[2].value, 1);
}

TEST(Faults, that_make_no_sense_are_refused_with_a_reason)
{
    for (const char *words : {"",
                              "fire",
                              "Silence",
                              "silence@",
                              "silence@t",
                              "silence@t=",
                              "silence@t=2s",
                              "silence@t=2s..",
                              "silence@t=..4s",
                              "silence@t=2s..2s",
                              "silence@t=4s..2s",
                              "silence@t=2..4",
                              "silence@t=2s...4s",
                              "silence@t=2s..4s=1",
                              "silence@t=-2s..4s",
                              "silence@t=0x2s..4s",
                              "silence@t=2.s..4s",
                              "silence@t=.2s..4s",
                              "silence@t=2.0000000001s..4s",
                              "silence@t=2s..1000000001s",
                              "silence@t=2us..4s",
                              "silence@2s..4s",
                              "gone",
                              "gone=1",
                              "gone@t",
                              "gone@t=2s",
                              "gone@header=2s..4s",
                              "restart",
                              "restart@t",
                              "restart@t=2s",
                              "restart@t=2s=",
                              "restart@t=2s=unknown",
                              "restart@t=2s='boot loader'",
                              "restart@t=boot-loader",
                              "restart@0x06=2s=application",
                              "restart=2s=application",
                              "intrusion",
                              "intrusion=file",
                              "intrusion@t",
                              "intrusion@t=file",
                              "intrusion@t=2s",
                              "intrusion@t=2s=",
                              "late@t=2s",
                              "flip@t=2s..4s",
                              "silence@tail",
                              "silence@-1",
                              "silence=3",
                              "silence@1=",
                              "checksum-error",
                              "checksum-error@",
                              "checksum-error@1x",
                              "checksum-error@0x06",
                              "length",
                              "length@0x06",
                              "length@6=1",
                              "length@header=1",
                              "length=65536",
                              "length=-1",
                              "late@0x100=1",
                              "status@mode",
                              "status@mode=256",
                              "status@mode=-1",
                              "status=5",
                              "late",
                              "late@header",
                              "late=0",
                              "late=x",
                              "late=0x",
                              "deaf",
                              "deaf=1",
                              "deaf@0xC8",
                              "deaf@200=1",
                              "deaf@0xC8=0",
                              "flip",
                              "flip=1",
                              "flip@0",
                              "flip@mode",
                              "flip@1=448",
                              "flip@1=-1",
                              "unnumbered",
                              "unnumbered@0",
                              "unnumbered@1=0",
                              "stuck",
                              "stuck@1=1",
                              "short@1",
                              "short@1=0",
                              "short@1=4097",
                              "short=1",
                              "block-length@1",
                              "block-length@0=1",
                              "block-length@1=65536",
                              "padded",
                              "padded@1=2",
                              "exchange",
                              "exchange@0",
                              "exchange@mode",
                              "exchange@1=EFOO",
                              "exchange@1=0",
                              "exchange@1=134",
                              "exchange@99999999999",
                              "no-device@1",
                              "no-device=ENONSENSE"}) {
        std::string reason;
        const std::optional<Fault> fault = parse_fault(words, reason);
        EXPECT_FALSE(fault.has_value()) << words;
        EXPECT_FALSE(reason.empty()) << words;
    }
}

TEST(Faults, are_found_at_their_very_place)
{
    const Faults faults = {{FaultKind::late, STEP_HEADER, 1}, {FaultKind::late, ALWAYS, 2}};
    EXPECT_EQ(find_fault(faults, FaultKind::late, STEP_HEADER)->value, 1);
    EXPECT_EQ(find_fault(faults, FaultKind::late, ALWAYS)->value, 2);
    EXPECT_EQ(find_fault(faults, FaultKind::late, STEP_MODE), nullptr);
    EXPECT_EQ(find_fault(faults, FaultKind::silence, ALWAYS), nullptr);
    EXPECT_EQ(find_fault({}, FaultKind::late, ALWAYS), nullptr);
}

TEST(Faults, are_all_described)
{
    const std::string description = describe_faults();
    for (const char *form :
         {"bus-inactive[@WHERE]", "silence[@WHERE]",       "checksum-error@STEP",
          "address-error@STEP",   "status@STEP=BYTE",      "late[@WHERE]=POLLS",
          "length[@CODE]=N",      "exchange@N[=ERRNO]",    "deaf@CODE=WAITS",
          "flip@RECORD[=BIT]",    "unnumbered@RECORD",     "stuck@RECORD",
          "short@BLOCK=BYTES",    "block-length@BLOCK=N",  "padded@BLOCK",
          "no-device[=ERRNO]",    "restart@t=TIME=MODE",   "silence@t=FROM..TO",
          "gone@t=FROM..TO",      "intrusion@t=TIME=FILE", "speed-refused[=ERRNO]"}) {
        EXPECT_NE(description.find(form), std::string::npos) << form;
    }
}

TEST(FaultPlans, let_the_length_of_a_place_count_and_add_its_delay)
{
    const int place = command_place(0x21);
    const Faults faults = {{FaultKind::length, place, 3},
                           {FaultKind::length, ALWAYS, 9},
                           {FaultKind::late, ALWAYS, 20},
                           {FaultKind::late, place, 400}};
    EXPECT_EQ(length_at(faults, place, 7), 3);
    EXPECT_EQ(length_at(faults, command_place(0x22), 7), 9);
    EXPECT_EQ(length_at({}, place, 7), 7);
    EXPECT_EQ(delay_at(faults, place, 1), 421);
    EXPECT_EQ(delay_at(faults, STEP_HEADER, 1), 21);
}

} // namespace

} // namespace simulator
