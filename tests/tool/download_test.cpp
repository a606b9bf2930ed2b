// update loading images: every byte of them arrives, in frames whose checksums a second party
// confirms, and what the console shows is true.
#include "simulator/wire/crc.hpp"
#include "tests/tool/workbench.hpp"

#include <span>

namespace
{

constexpr size_t FRAME_SIZE = 1034;
constexpr size_t FIRMWARE_OFFSET = 16384;

std::string formatted(const char *format, auto... values)
{
    char text[128];
    snprintf(text, sizeof(text), format, values...);
    return text;
}

uint32_t number_at(const Bytes &frame, size_t offset, size_t width)
{
    uint32_t number = 0;
    for (size_t i = 0; i < width; ++i) {
        number |= static_cast<uint32_t>(frame[offset + i]) << (8 * i);
    }
    return number;
}

class Download : public Workbench
{
  protected:
    // The frames of the last download; each with a good checksum.
    std::vector<Bytes> frames() const
    {
        std::vector<Bytes> found;
        for (const Line &line : transcript()) {
            if (line.length == FRAME_SIZE) {
                EXPECT_EQ(number_at(line.sent, 0, 2),
                          simulator::bitwise_crc(std::span(line.sent).subspan(2)));
                found.push_back(line.sent);
            }
        }
        return found;
    }

    // What the console shows of a download in these frames.
    static std::string shown(const std::vector<Bytes> &frames, size_t size)
    {
        std::string text = formatted("Filesize: %zu Byte\n", size);
        text += formatted("Transmitting information header (size: 0x%04X, checksum: 0x%04X)\n",
                          static_cast<unsigned>(size & 0xFFFF), number_at(frames.at(0), 0, 2));
        for (size_t i = 1; i < frames.size(); ++i) {
            text += formatted("Transmitting datablock %zu (size: 0x%04X, checksum: 0x%04X)\n",
                              i - 1, number_at(frames[i], 6, 4), number_at(frames[i], 0, 2));
        }
        return text + formatted("Transmitted data: %zu Byte\n", size);
    }

    // Loads an image of so many bytes and compares everything that can be seen of it.
    void load(const std::string &option, size_t size, size_t offset)
    {
        const Bytes image = noise(size, static_cast<uint32_t>(size));
        write_file("image.bin", image);
        const Result result = update({option, "image.bin"});
        const std::vector<Bytes> sent = frames();
        ASSERT_EQ(sent.size(), 1 + (size + 1023) / 1024);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.output, shown(sent, size));
        EXPECT_TRUE(flash(offset, size) == image);
    }
};

class FirmwareOfSize : public Download, public testing::WithParamInterface<size_t>
{
};

TEST_P(FirmwareOfSize, arrives_whole)
{
    load("-firmware", GetParam(), FIRMWARE_OFFSET);
}

INSTANTIATE_TEST_SUITE_P(Sizes, FirmwareOfSize,
                         testing::Values(0, 1, 1014, 1015, 1023, 1024, 1025, 1030, 2048, 70000,
                                         204800, 507904));

class BootLoaderOfSize : public Download, public testing::WithParamInterface<size_t>
{
};

TEST_P(BootLoaderOfSize, arrives_whole)
{
    load("-booter", GetParam(), 0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, BootLoaderOfSize, testing::Values(0, 1, 1024, 1025, 16384));

TEST_F(Download, one_byte_more_than_fits_gets_an_address_error)
{
    for (const auto &[option, size] :
         {std::pair("-firmware", 507904 + 1), std::pair("-booter", 16384 + 1)}) {
        write_file("image.bin", Bytes(static_cast<size_t>(size), 0x5A));
        const Result result = update({option, "image.bin"});
        const std::vector<Bytes> sent = frames();
        ASSERT_EQ(sent.size(), 1U);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output,
                  formatted("Filesize: %d Byte\n", size) +
                      formatted("Transmitting information header (size: 0x%04X, "
                                "checksum: 0x%04X)\n",
                                static_cast<unsigned>(size & 0xFFFF), number_at(sent[0], 0, 2)) +
                      "Address error\n" +
                      formatted("Checksum sent: %X\n", number_at(sent[0], 0, 2)));
        EXPECT_EQ(flash(0, 524288), Bytes(524288, 0xFF));
    }
}

TEST_F(Download, sends_mode_command_header_and_blocks_with_a_poll_after_each)
{
    write_file("image.bin", noise(1025, 1));
    update_with({"--busy", "2"}, {"-firmware", "image.bin"});
    std::vector<size_t> lengths;
    std::vector<uint8_t> statuses;
    for (const Line &line : transcript()) {
        lengths.push_back(line.length);
        statuses.push_back(line.received.at(0));
    }
    EXPECT_EQ(lengths, (std::vector<size_t>{4096, 1, 1, 1, 1, 1034, 1, 1, 1, 1034, 1, 1, 1, //
                                            1034, 1, 1, 1}));
    EXPECT_EQ(statuses, (std::vector<uint8_t>{0, 0, 0, 0, 0x55, 0, 0, 0, 0x55, 0, 0, 0, 0x55, //
                                              0, 0, 0, 0x55}));
    EXPECT_EQ(transcript()[1].sent, Bytes{0x81});
    EXPECT_EQ(transcript()[2].sent, Bytes{0x33});
}

TEST_F(Download, paces_its_polls_at_eleven_milliseconds)
{
    write_file("image.bin", noise(1, 1));
    update_with({"--busy", "1"}, {"-firmware", "image.bin"});
    const std::vector<Line> lines = transcript();
    ASSERT_EQ(lines.size(), 10U);
    const auto between = [&](size_t a, size_t b) {
        return static_cast<double>(lines[b].microseconds - lines[a].microseconds);
    };
    constexpr double BYTE = 8 / 6.0; // microseconds on the wire, in which times may be cut off
    EXPECT_NEAR(between(1, 2), 10'000 + BYTE, 1);
    EXPECT_NEAR(between(2, 3), 11'000 + BYTE, 1);
    EXPECT_NEAR(between(3, 4), 1'000 + 1034 * BYTE, 1);
    EXPECT_NEAR(between(4, 5), 10'000 + BYTE, 1);
}

TEST_F(Download, the_header_right_after_opening_sends_the_filler_in_its_tail)
{
    const Bytes image = noise(1030, 3);
    write_file("image.bin", image);
    update({"-firmware", "image.bin"});
    const std::vector<Bytes> sent = frames();
    ASSERT_EQ(sent.size(), 3U);
    const auto tail = [&](size_t i) { return Bytes(sent[i].begin() + 1024, sent[i].end()); };
    EXPECT_EQ(tail(0), Bytes(10, 0x66));
    EXPECT_EQ(tail(1), Bytes(image.begin() + 1014, image.begin() + 1024));
    EXPECT_EQ(tail(2), tail(1));
    EXPECT_EQ(Bytes(sent[2].begin() + 16, sent[2].begin() + 1024), Bytes(1008, 0));
}

TEST_F(Download, the_boot_loader_command_carries_the_filler)
{
    write_file("image.bin", noise(10, 3));
    update({"-booter", "image.bin"});
    EXPECT_EQ(transcript()[1].sent, (Bytes{0x82, 0x66, 0x66, 0x66, 0x66, 0x66, 0x66, 0xAA}));
    EXPECT_EQ(number_at(frames()[0], 2, 4), 0x08000000U);
    EXPECT_EQ(number_at(frames()[1], 2, 4), 0x08000000U);
}

TEST_F(Download, a_shorter_image_leaves_nothing_of_a_longer_one)
{
    load("-firmware", 5000, FIRMWARE_OFFSET);
    load("-firmware", 100, FIRMWARE_OFFSET);
    EXPECT_EQ(flash(FIRMWARE_OFFSET + 100, 4900), Bytes(4900, 0xFF));
}

TEST_F(Download, of_a_folder_announces_no_size_and_is_refused)
{
    const Result result = update({"-firmware", "."});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.starts_with("Filesize: -1 Byte\n"
                                          "Transmitting information header (size: 0xFFFF, "))
        << result.output;
    EXPECT_NE(result.output.find("Address error\n"), std::string::npos);
}

} // namespace
