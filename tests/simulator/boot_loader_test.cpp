// The virtual boot loader: what it takes into its flash, and what it refuses.
#include "tests/simulator/virtual_wire.hpp"

namespace simulator
{

namespace
{

constexpr uint32_t FIRMWARE = 0x08004000;
constexpr uint32_t BOOTER = 0x08000000;
constexpr uint8_t ACK = 0x55;
constexpr uint8_t CHECKSUM = 0xF0;
constexpr uint8_t ADDRESS = 0xF1;

const Bytes LOAD_FIRMWARE = {0x81};
const Bytes LOAD_BOOTER = {0x82, 0x66, 0x66, 0x66, 0x66, 0x66, 0x66, 0xAA};

using BootLoading = VirtualWire;

TEST_F(BootLoading, stores_blocks_one_behind_the_other)
{
    EXPECT_EQ(status_of(LOAD_FIRMWARE), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1030, {})), ACK);
    EXPECT_EQ(coprocessor->note(), "acknowledged");
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1024, Bytes(1024, 0x11))), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 6, Bytes(6, 0x22), 0x99)), ACK);
    EXPECT_EQ(flash_at(FIRMWARE, 1024), Bytes(1024, 0x11));
    EXPECT_EQ(flash_at(FIRMWARE + 1024, 8),
              (Bytes{0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0xFF, 0xFF}));
    EXPECT_EQ(flash_at(BOOTER, 16384), Bytes(16384, 0xEE));
}

TEST_F(BootLoading, tells_what_each_frame_was)
{
    send(LOAD_BOOTER);
    EXPECT_EQ(coprocessor->note(), "boot loader download begins");
    send(image_frame(BOOTER, 1030, {}));
    EXPECT_EQ(coprocessor->note(), "header: 1030 bytes at 0x08000000");
    send(image_frame(BOOTER, 1024, {}));
    EXPECT_EQ(coprocessor->note(), "block 0: 1024 bytes");
    send(image_frame(BOOTER, 6, {}));
    EXPECT_EQ(coprocessor->note(), "block 1: 6 bytes, the image is complete");
}

TEST_F(BootLoading, runs_in_boot_loader_mode)
{
    send(LOAD_FIRMWARE);
    EXPECT_EQ(coprocessor->mode(), Mode::boot_loader);
    send({0x83});
    send(LOAD_BOOTER);
    EXPECT_EQ(coprocessor->mode(), Mode::boot_loader);
}

TEST_F(BootLoading, erases_the_region_with_the_header_and_the_other_one_never)
{
    send(LOAD_BOOTER);
    EXPECT_EQ(flash_at(BOOTER, 16384), Bytes(16384, 0xEE));
    EXPECT_EQ(status_of(image_frame(BOOTER, 0, {})), ACK);
    EXPECT_EQ(flash_at(BOOTER, 16384), Bytes(16384, 0xFF));
    EXPECT_EQ(flash_at(FIRMWARE, 507904), Bytes(507904, 0xEE));
}

TEST_F(BootLoading, takes_images_that_just_fit_and_no_larger_ones)
{
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 507904, {})), ACK);
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 507905, {})), ADDRESS);
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 0xFFFFFFFF, {})), ADDRESS);
    send(LOAD_BOOTER);
    EXPECT_EQ(status_of(image_frame(BOOTER, 16384, {})), ACK);
    send(LOAD_BOOTER);
    EXPECT_EQ(status_of(image_frame(BOOTER, 16385, {})), ADDRESS);
}

TEST_F(BootLoading, refuses_addresses_other_than_the_announced_one)
{
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(BOOTER, 10, {})), ADDRESS);
    send(LOAD_BOOTER);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), ADDRESS);
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE + 1, 10, {})), ADDRESS);
    EXPECT_EQ(flash_at(FIRMWARE, 10), Bytes(10, 0xFF));
}

TEST_F(BootLoading, refuses_block_sizes_that_cannot_be)
{
    for (const uint32_t size : {0U, 1025U, 2000U, 0xFFFFFFFFU}) {
        send(LOAD_FIRMWARE);
        EXPECT_EQ(status_of(image_frame(FIRMWARE, 1500, {})), ACK);
        EXPECT_EQ(status_of(image_frame(FIRMWARE, size, {})), ADDRESS) << size;
    }
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1500, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1024, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 477, {})), ADDRESS);
}

TEST_F(BootLoading, refuses_damaged_frames_wherever_they_are_damaged)
{
    for (const size_t at : {0U, 1U, 2U, 9U, 10U, 1023U, 1024U, 1033U}) {
        send(LOAD_FIRMWARE);
        Bytes header = image_frame(FIRMWARE, 100, {});
        header[at] ^= 0x10;
        EXPECT_EQ(status_of(header), CHECKSUM) << "byte " << at;
    }
    EXPECT_EQ(flash_at(FIRMWARE, 507904), Bytes(507904, 0xEE));
}

TEST_F(BootLoading, ends_with_a_refused_frame)
{
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(BOOTER, 10, {})), ADDRESS);
    send(image_frame(FIRMWARE, 10, {}));
    EXPECT_EQ(coprocessor->note(), "not understood");
    EXPECT_EQ(poll_status(), 0);
}

TEST_F(BootLoading, ends_with_the_last_block_of_the_image)
{
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), 0);
}

TEST_F(BootLoading, ends_when_the_link_is_synchronised)
{
    send(LOAD_FIRMWARE);
    send(Bytes(4096, 0x66));
    EXPECT_EQ(coprocessor->note(), "synchronised");
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), 0);
}

TEST_F(BootLoading, expects_no_frame_without_a_mode_command)
{
    send({0x81, 0, 0, 0, 0, 0, 0, 0xAA});
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 10, {})), 0);
    send({0x82});
    EXPECT_EQ(status_of(image_frame(BOOTER, 10, {})), 0);
}

TEST_F(BootLoading, is_busy_for_as_many_polls_as_it_is_told)
{
    power_on({}, {3, {}});
    send(LOAD_FIRMWARE);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(poll_status(), 0);
        EXPECT_EQ(coprocessor->note(), "busy");
    }
    EXPECT_EQ(poll_status(), ACK);
    EXPECT_EQ(poll_status(), 0);
}

TEST_F(BootLoading, answers_late_at_one_step_or_at_all)
{
    power_on({}, {1, {{FaultKind::late, STEP_HEADER, 2}, {FaultKind::late, ALWAYS, 1}}});
    const auto polls_until_status = [&] {
        int polls = 1;
        while (poll_status() == 0) {
            ++polls;
        }
        return polls;
    };
    send(LOAD_FIRMWARE);
    EXPECT_EQ(polls_until_status(), 3);
    send(image_frame(FIRMWARE, 10, {}));
    EXPECT_EQ(polls_until_status(), 5);
    send(image_frame(FIRMWARE, 10, {}));
    EXPECT_EQ(polls_until_status(), 3);
}

TEST_F(BootLoading, refuses_by_fault_at_just_one_step)
{
    power_on({}, {0, {{FaultKind::checksum_error, STEP_FIRST_BLOCK + 1, 0}}});
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 3072, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1024, Bytes(1024, 1))), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1024, Bytes(1024, 2))), CHECKSUM);
    EXPECT_EQ(flash_at(FIRMWARE + 1024, 1024), Bytes(1024, 0xFF));
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 1024, Bytes(1024, 3))), 0);
}

TEST_F(BootLoading, answers_an_odd_status_by_fault_and_stores_all_the_same)
{
    power_on({}, {0, {{FaultKind::status, STEP_FIRST_BLOCK, 0xF7}}});
    send(LOAD_FIRMWARE);
    send(image_frame(FIRMWARE, 3, {}));
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 3, {7, 8, 9})), 0xF7);
    EXPECT_EQ(flash_at(FIRMWARE, 4), (Bytes{7, 8, 9, 0xFF}));
}

TEST_F(BootLoading, dies_by_fault_before_it_stores)
{
    power_on({}, {0, {{FaultKind::bus_inactive, STEP_FIRST_BLOCK, 0}}});
    send(LOAD_FIRMWARE);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 3, {})), ACK);
    EXPECT_EQ(status_of(image_frame(FIRMWARE, 3, {7, 8, 9})), 0xFF);
    EXPECT_EQ(flash_at(FIRMWARE, 4), Bytes(4, 0xFF));
    EXPECT_EQ(exchange(Bytes(8, 1)), Bytes(8, 0xFF));
}

} // namespace

} // namespace simulator
