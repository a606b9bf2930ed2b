// Goal: the size of a stream is told without disturbing it.
#include "link/stm_com_funcs.h"
#include "tests/download/download_fixture.hpp"

#include <unistd.h>

namespace
{

class FileSize : public Download
{
};

} // namespace

TEST_F(FileSize, of_a_null_stream_is_minus_1)
{
    EXPECT_EQ(stm_file_size(nullptr), -1);
}

TEST_F(FileSize, is_the_number_of_bytes)
{
    for (const size_t bytes : {0U, 1U, 1024U, 4096U, 4097U, 70000U}) {
        FILE *file = file_with(image_of(bytes));
        EXPECT_EQ(stm_file_size(file), static_cast<int32_t>(bytes));
        EXPECT_EQ(ftell(file), 0);
    }
}

TEST_F(FileSize, is_told_from_any_position_and_the_position_stays)
{
    const Bytes image = image_of(5000);
    FILE *file = file_with(image);
    for (const long position : {0L, 1L, 4095L, 4096L, 4999L}) {
        fseek(file, position, SEEK_SET);
        EXPECT_EQ(stm_file_size(file), 5000);
        EXPECT_EQ(ftell(file), position);
        EXPECT_EQ(fgetc(file), image[static_cast<size_t>(position)]);
    }
    fseek(file, 0, SEEK_END);
    EXPECT_EQ(stm_file_size(file), 5000);
    EXPECT_EQ(ftell(file), 5000);
}

TEST_F(FileSize, clears_the_end_of_file_flag)
{
    FILE *file = file_with(image_of(3));
    while (fgetc(file) != EOF) {
    }
    ASSERT_NE(feof(file), 0);
    EXPECT_EQ(stm_file_size(file), 3);
    EXPECT_EQ(feof(file), 0);
}

TEST_F(FileSize, of_a_pipe_is_minus_1)
{
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    FILE *file = keep(fdopen(ends[0], "rb"));
    EXPECT_EQ(stm_file_size(file), -1);
    close(ends[1]);
}

TEST_F(FileSize, makes_no_exchange_and_says_nothing)
{
    stm_file_size(file_with(image_of(3)));
    stm_file_size(nullptr);
    EXPECT_TRUE(happened({}));
}

TEST_F(FileSize, keeps_the_low_32_bits)
{
    if (sizeof(long) == 4) {
        GTEST_SKIP() << "a stream of this platform ends at 2 GiB";
    }
    FILE *file = file_with({});
    ASSERT_EQ(ftruncate(fileno(file), static_cast<off_t>(0x100000005)), 0);
    EXPECT_EQ(stm_file_size(file), 5);
    ASSERT_EQ(ftruncate(fileno(file), static_cast<off_t>(0x80000005)), 0);
    EXPECT_EQ(stm_file_size(file), -2147483643);
}
