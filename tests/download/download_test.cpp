// Goal: a download that goes well makes exactly its exchanges and says exactly its texts, for every
// size at which a frame, a block or a number begins to look different.
#include "link/stm_com_funcs.h"
#include "tests/download/download_fixture.hpp"

#include <cstring>

namespace
{

struct Size {
    size_t bytes;
    const char *file_size;
    const char *header;
    const char *total;
};

class DownloadOfSize : public Download, public testing::WithParamInterface<Size>
{
};

class OtherAddress : public Download, public testing::WithParamInterface<uint32_t>
{
};

const Bytes OPENED(10, 0x66);

} // namespace

TEST_F(Download, empty_file_is_a_header_and_nothing_more)
{
    load(Bytes{}, FIRMWARE);
    EXPECT_TRUE(happened({
        "exchange 1: 81",
        "sleep 10000",
        "exchange 1: 33",
        "poll",
        "sleep 1000",
        R"(say 0 "Filesize: 0 Byte\n")",
        R"(say 0 "Transmitting information header (size: 0x0000, checksum: 0xF595)\n")",
        "exchange 1034: 95 F5 00 40 00 08 00*1018 66*10",
        "sleep 10000",
        "exchange 1: 33",
        "poll",
        "sleep 1000",
        R"(say 0 "Transmitted data: 0 Byte\n")",
    }));
}

TEST_F(Download, file_of_one_byte_as_it_looks_on_the_wire)
{
    load(Bytes{0x1E}, FIRMWARE);
    EXPECT_TRUE(happened({
        "exchange 1: 81",
        "sleep 10000",
        "exchange 1: 33",
        "poll",
        "sleep 1000",
        R"(say 0 "Filesize: 1 Byte\n")",
        R"(say 0 "Transmitting information header (size: 0x0001, checksum: 0x81FD)\n")",
        "exchange 1034: FD 81 00 40 00 08 01 00*1017 66*10",
        "sleep 10000",
        "exchange 1: 33",
        "poll",
        "sleep 1000",
        "exchange 1034: FD 06 00 40 00 08 01 00 00 00 1E 00*1013 66*10",
        R"(say 0 "Transmitting datablock 0 (size: 0x0001, checksum: 0x06FD)\n")",
        "sleep 10000",
        "exchange 1: 33",
        "poll",
        "sleep 1000",
        R"(say 0 "Transmitted data: 1 Byte\n")",
    }));
}

TEST_F(Download, boot_loader_begins_with_a_frame_of_eight_bytes)
{
    load(Bytes{}, BOOTER);
    EXPECT_TRUE(happened(joined({
        {"exchange 8: 82 66*6 AA"},
        WAIT,
        {R"(say 0 "Filesize: 0 Byte\n")",
         R"(say 0 "Transmitting information header (size: 0x0000, checksum: 0x5316)\n")",
         "exchange 1034: 16 53 00 00 00 08 00*1018 66*10"},
        WAIT,
        {R"(say 0 "Transmitted data: 0 Byte\n")"},
    })));
}

TEST_F(Download, blocks_carry_the_start_address_unchanged)
{
    const Bytes image = image_of(2500);
    load(image, BOOTER);
    const Bytes header = frame(0x08000000, 2500, {}, OPENED);
    EXPECT_TRUE(happened(joined({
        {"exchange 8: 82 66*6 AA"},
        WAIT,
        {say("Filesize: 2500 Byte\n"), say_header(0x09C4, checksum_of(header)), exchange(header)},
        WAIT,
        blocks(0x08000000, image, OPENED),
        {say("Transmitted data: 2500 Byte\n")},
    })));
}

TEST_F(Download, file_of_1030_bytes_ends_in_a_block_of_six_that_repeats_the_tail_before)
{
    const Bytes image = image_of(1030);
    std::vector<Bytes> sent;
    watch = [&sent](const spi_ioc_transfer &descriptor) {
        sent.emplace_back(stm_link.tx_buffer, stm_link.tx_buffer + descriptor.len);
    };
    load(image, FIRMWARE);
    ASSERT_EQ(sent.size(), 8U);
    EXPECT_EQ(part_of(sent[4], 6, 10), Bytes({0x00, 0x04, 0x00, 0x00}));
    EXPECT_EQ(part_of(sent[4], 10, 1034), part_of(image, 0, 1024));
    EXPECT_EQ(part_of(sent[6], 6, 10), Bytes({0x06, 0x00, 0x00, 0x00}));
    EXPECT_EQ(part_of(sent[6], 10, 16), part_of(image, 1024, 1030));
    EXPECT_EQ(part_of(sent[6], 16, 1024), bytes_of(1008, 0x00));
    EXPECT_EQ(part_of(sent[6], 1024, 1034), part_of(image, 1014, 1024));
}

TEST_P(DownloadOfSize, is_sent_whole)
{
    const Bytes image = image_of(GetParam().bytes);
    load(image, FIRMWARE);
    const auto size = static_cast<uint32_t>(image.size());
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {say(GetParam().file_size), say(GetParam().header),
         exchange(frame(0x08004000, size, {}, OPENED))},
        WAIT,
        blocks(0x08004000, image, OPENED),
        {say(GetParam().total)},
    })));
    EXPECT_EQ(messages, texts);
}

INSTANTIATE_TEST_SUITE_P(
    Each, DownloadOfSize,
    testing::Values(Size{1, "Filesize: 1 Byte\n",
                         "Transmitting information header (size: 0x0001, checksum: 0x81FD)\n",
                         "Transmitted data: 1 Byte\n"},
                    Size{1014, "Filesize: 1014 Byte\n",
                         "Transmitting information header (size: 0x03F6, checksum: 0x4FE3)\n",
                         "Transmitted data: 1014 Byte\n"},
                    Size{1015, "Filesize: 1015 Byte\n",
                         "Transmitting information header (size: 0x03F7, checksum: 0x3B8B)\n",
                         "Transmitted data: 1015 Byte\n"},
                    Size{1023, "Filesize: 1023 Byte\n",
                         "Transmitting information header (size: 0x03FF, checksum: 0xA8A8)\n",
                         "Transmitted data: 1023 Byte\n"},
                    Size{1024, "Filesize: 1024 Byte\n",
                         "Transmitting information header (size: 0x0400, checksum: 0x5E50)\n",
                         "Transmitted data: 1024 Byte\n"},
                    Size{1025, "Filesize: 1025 Byte\n",
                         "Transmitting information header (size: 0x0401, checksum: 0x2A38)\n",
                         "Transmitted data: 1025 Byte\n"},
                    Size{1030, "Filesize: 1030 Byte\n",
                         "Transmitting information header (size: 0x0406, checksum: 0x7701)\n",
                         "Transmitted data: 1030 Byte\n"},
                    Size{2048, "Filesize: 2048 Byte\n",
                         "Transmitting information header (size: 0x0800, checksum: 0xB23E)\n",
                         "Transmitted data: 2048 Byte\n"},
                    // The header's text shows the low 16 bits of the size.
                    Size{70000, "Filesize: 70000 Byte\n",
                         "Transmitting information header (size: 0x1170, checksum: 0x43EA)\n",
                         "Transmitted data: 70000 Byte\n"},
                    Size{507904, "Filesize: 507904 Byte\n",
                         "Transmitting information header (size: 0xC000, checksum: 0xDC42)\n",
                         "Transmitted data: 507904 Byte\n"},
                    Size{507905, "Filesize: 507905 Byte\n",
                         "Transmitting information header (size: 0xC001, checksum: 0xA82A)\n",
                         "Transmitted data: 507905 Byte\n"}),
    [](const auto &each) { return std::to_string(each.param.bytes) + "_bytes"; });

TEST_P(OtherAddress, has_no_mode_command_but_is_sent_in_every_frame)
{
    const Bytes image = image_of(1025);
    load(image, GetParam());
    const Bytes header = frame(GetParam(), 1025, {}, OPENED);
    EXPECT_TRUE(happened(joined({
        {"exchange 0:"},
        WAIT,
        {say("Filesize: 1025 Byte\n"), say_header(0x0401, checksum_of(header)), exchange(header)},
        WAIT,
        blocks(GetParam(), image, OPENED),
        {say("Transmitted data: 1025 Byte\n")},
    })));
}

INSTANTIATE_TEST_SUITE_P(Each, OtherAddress,
                         testing::Values(0U, 0x08000001U, 0x08003FFFU, 0x08004001U, 0x20000000U,
                                         0xFFFFFFFFU));

TEST_F(Download, waits_as_long_as_the_co_processor_is_busy)
{
    for (const int busy : {2, 3, 5}) {
        answer(busy, {0x00});
    }
    load(Bytes{}, FIRMWARE);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        times(3, WAIT),
        {R"(say 0 "Filesize: 0 Byte\n")",
         R"(say 0 "Transmitting information header (size: 0x0000, checksum: 0xF595)\n")",
         "exchange 1034: 95 F5 00 40 00 08 00*1018 66*10"},
        WAIT,
        {R"(say 0 "Transmitted data: 0 Byte\n")"},
    })));
}

TEST_F(Download, operator_cannot_stop_it)
{
    for (const int each : {1, 2, 3, 4}) {
        type_line(each, "s\n");
    }
    const Bytes image = image_of(1100);
    const Bytes header = frame(0x08004000, 1100, {}, OPENED);
    const Bytes first = frame(0x08004000, 1024, part_of(image, 0, 1024), OPENED);
    const Bytes second =
        frame(0x08004000, 76, part_of(image, 1024, 1100), part_of(image, 1014, 1024));
    load(image, FIRMWARE);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        STOPPED_WAIT,
        {say("Filesize: 1100 Byte\n"), say_header(0x044C, checksum_of(header)), exchange(header)},
        STOPPED_WAIT,
        {exchange(first), say_block(0, 0x0400, checksum_of(first))},
        STOPPED_WAIT,
        {exchange(second), say_block(1, 0x004C, checksum_of(second))},
        STOPPED_WAIT,
        {say("Transmitted data: 1100 Byte\n")},
    })));
}

TEST_F(Download, a_stop_counts_even_before_an_error_of_the_same_poll)
{
    answer(4, {0xF0});
    type_line(2, "s\n");
    load(Bytes{}, FIRMWARE);
    EXPECT_EQ(texts.back(), R"(say 0 "Transmitted data: 0 Byte\n")");
}

TEST_F(Download, statuses_0xF2_to_0xFE_are_acknowledges)
{
    answer_always({0xF7});
    load(Bytes{0x1E}, FIRMWARE);
    EXPECT_EQ(texts.back(), R"(say 0 "Transmitted data: 1 Byte\n")");
}

TEST_F(Download, every_exchange_uses_the_shared_descriptor)
{
    int counted = 0;
    watch = [&counted](const spi_ioc_transfer &used) {
        EXPECT_EQ(&used, &stm_link.transfer);
        ++counted;
    };
    load(Bytes{0x1E}, FIRMWARE);
    EXPECT_EQ(counted, 6);
}

TEST_F(Download, shared_descriptor_is_prepared_whatever_it_held)
{
    memset(static_cast<void *>(&stm_link.transfer), 0xEE, sizeof(stm_link.transfer));
    load(Bytes{}, FIRMWARE);
    EXPECT_EQ(texts.back(), R"(say 0 "Transmitted data: 0 Byte\n")");
}

TEST_F(Download, result_of_the_output_changes_nothing)
{
    output_result = -1;
    load(Bytes{0x1E}, FIRMWARE);
    EXPECT_EQ(texts.back(), R"(say 0 "Transmitted data: 1 Byte\n")");
}

TEST_F(Download, link_stays_open)
{
    load(Bytes{}, FIRMWARE);
    EXPECT_EQ(stm_link.spi_fd, 7);
    forget();
    EXPECT_EQ(stm_reset(), 0);
    EXPECT_TRUE(happened({"exchange 1: 83"}));
}
