// Goal: whatever kind of stream holds the image, the download takes what it can read from where the
// stream stands, and leaves it open there.
#include "link/stm_com_funcs.h"
#include "tests/download/download_fixture.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <unistd.h>

namespace
{

const Bytes OPENED(10, 0x66);

class DownloadStream : public Download
{
  protected:
    // The reading end of a pipe that holds these bytes and nothing more.
    FILE *pipe_with(const Bytes &image)
    {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        EXPECT_EQ(write(ends[1], image.data(), image.size()), static_cast<ssize_t>(image.size()));
        close(ends[1]);
        return keep(fdopen(ends[0], "rb"));
    }
};

// A file of size bytes that cannot be read beyond a place until that was tried so many times.
struct DamagedFile {
    off64_t size;
    off64_t good;
    off64_t position;
    int failures;
};

ssize_t read_damaged(void *cookie, char *to, size_t count)
{
    auto &file = *static_cast<DamagedFile *>(cookie);
    if (file.position >= file.good && file.failures > 0) {
        --file.failures;
        errno = EIO;
        return -1;
    }
    const off64_t end = file.failures > 0 ? file.good : file.size;
    const auto readable = std::min(static_cast<off64_t>(count), end - file.position);
    std::fill_n(to, readable, '\x5A');
    file.position += readable;
    return static_cast<ssize_t>(readable);
}

int seek_damaged(void *cookie, off64_t *offset, int whence)
{
    auto &file = *static_cast<DamagedFile *>(cookie);
    if (whence == SEEK_CUR) {
        *offset += file.position;
    } else if (whence == SEEK_END) {
        *offset += file.size;
    }
    file.position = *offset;
    return 0;
}

FILE *open_damaged(DamagedFile &file)
{
    return fopencookie(&file, "rb", {read_damaged, nullptr, seek_damaged, nullptr});
}

} // namespace

TEST_F(DownloadStream, that_does_not_stand_at_its_start_is_sent_from_there)
{
    const Bytes image = image_of(30);
    FILE *file = file_with(image);
    fseek(file, 10, SEEK_SET);
    load(file, FIRMWARE);
    const Bytes header = frame(0x08004000, 30, {}, OPENED);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {say("Filesize: 30 Byte\n"), say_header(30, checksum_of(header)), exchange(header)},
        WAIT,
        blocks(0x08004000, part_of(image, 10, 30), OPENED),
        {say("Transmitted data: 20 Byte\n")},
    })));
}

TEST_F(DownloadStream, that_stands_at_its_end_has_a_size_but_no_blocks)
{
    FILE *file = file_with(image_of(30));
    fseek(file, 0, SEEK_END);
    load(file, FIRMWARE);
    const Bytes header = frame(0x08004000, 30, {}, OPENED);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {say("Filesize: 30 Byte\n"), say_header(30, checksum_of(header)), exchange(header)},
        WAIT,
        {say("Transmitted data: 0 Byte\n")},
    })));
}

TEST_F(DownloadStream, is_left_open_where_reading_ended)
{
    FILE *file = file_with(image_of(1030));
    load(file, FIRMWARE);
    EXPECT_EQ(ftell(file), 1030);
    EXPECT_EQ(fseek(file, 0, SEEK_SET), 0);
    EXPECT_EQ(fgetc(file), image_of(1)[0]);
}

TEST_F(DownloadStream, is_left_behind_the_block_that_failed)
{
    FILE *file = file_with(image_of(5000));
    answer(8, {0xF0});
    load(file, FIRMWARE);
    EXPECT_EQ(ftell(file), 2048);
}

TEST_F(DownloadStream, is_not_read_before_the_header_is_acknowledged)
{
    FILE *file = file_with(image_of(5000));
    answer(4, {0xF0});
    load(file, FIRMWARE);
    EXPECT_EQ(ftell(file), 0);
}

TEST_F(DownloadStream, without_a_size_is_announced_as_minus_1_and_sent_all_the_same)
{
    const Bytes image = image_of(1500);
    load(pipe_with(image), FIRMWARE);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {R"(say 0 "Filesize: -1 Byte\n")",
         R"(say 0 "Transmitting information header (size: 0xFFFF, checksum: 0xF8E0)\n")",
         "exchange 1034: E0 F8 00 40 00 08 FF*4 00*1014 66*10"},
        WAIT,
        blocks(0x08004000, image, OPENED),
        {say("Transmitted data: 1500 Byte\n")},
    })));
}

TEST_F(DownloadStream, without_a_size_and_without_bytes)
{
    load(pipe_with({}), FIRMWARE);
    EXPECT_EQ(texts.back(), R"(say 0 "Transmitted data: 0 Byte\n")");
}

TEST_F(DownloadStream, read_error_counts_as_its_end)
{
    DamagedFile damaged = {3000, 1500, 0, INT_MAX};
    load(keep(open_damaged(damaged)), FIRMWARE);
    const Bytes header = frame(0x08004000, 3000, {}, OPENED);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {say("Filesize: 3000 Byte\n"), say_header(3000, checksum_of(header)), exchange(header)},
        WAIT,
        blocks(0x08004000, bytes_of(1500, 0x5A), OPENED),
        {say("Transmitted data: 1500 Byte\n")},
    })));
}

TEST_F(DownloadStream, read_error_at_its_first_byte_leaves_the_header_alone)
{
    DamagedFile damaged = {3000, 0, 0, INT_MAX};
    load(keep(open_damaged(damaged)), FIRMWARE);
    const Bytes header = frame(0x08004000, 3000, {}, OPENED);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {say("Filesize: 3000 Byte\n"), say_header(3000, checksum_of(header)), exchange(header)},
        WAIT,
        {say("Transmitted data: 0 Byte\n")},
    })));
}

TEST_F(DownloadStream, read_error_between_two_blocks_ends_behind_the_first)
{
    DamagedFile damaged = {3000, 1024, 0, INT_MAX};
    load(keep(open_damaged(damaged)), FIRMWARE);
    EXPECT_EQ(texts.back(), R"(say 0 "Transmitted data: 1024 Byte\n")");
}

TEST_F(DownloadStream, that_is_null_has_no_size_either_but_is_not_read_when_the_mode_fails)
{
    fail_exchange(1, EIO);
    load(static_cast<FILE *>(nullptr), FIRMWARE);
    EXPECT_TRUE(happened({"exchange 1: 81", "perror \"SPI command\" EIO"}));
}

TEST_F(DownloadStream, that_fails_once_in_a_block_is_read_on_behind_it)
{
    DamagedFile damaged = {1600, 1500, 0, 1};
    FILE *file = keep(open_damaged(damaged));
    setvbuf(file, nullptr, _IONBF, 0);
    load(file, FIRMWARE);
    const Bytes header = frame(0x08004000, 1600, {}, OPENED);
    const Bytes first = frame(0x08004000, 1024, Bytes(1024, 0x5A), OPENED);
    const Bytes tail(10, 0x5A);
    const Bytes second = frame(0x08004000, 476, Bytes(476, 0x5A), tail);
    const Bytes third = frame(0x08004000, 100, Bytes(100, 0x5A), tail);
    EXPECT_TRUE(happened(joined({
        {"exchange 1: 81"},
        WAIT,
        {say("Filesize: 1600 Byte\n"), say_header(1600, checksum_of(header)), exchange(header)},
        WAIT,
        {exchange(first), say_block(0, 1024, checksum_of(first))},
        WAIT,
        {exchange(second), say_block(1, 476, checksum_of(second))},
        WAIT,
        {exchange(third), say_block(2, 100, checksum_of(third))},
        WAIT,
        {say("Transmitted data: 1600 Byte\n")},
    })));
}
