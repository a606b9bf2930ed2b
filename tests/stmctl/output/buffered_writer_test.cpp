// Goal: text that does not fit ends in a whole line, however many pieces it was written in.
#include "stmctl/output/buffered_writer.hpp"
#include "tests/stmctl/output/small_disk.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

using namespace stmctl;

namespace
{

class BufferedWriting : public testing::Test
{
  protected:
    BufferedWriting() : file_(memfd_create("written", MFD_CLOEXEC)) {}
    ~BufferedWriting() override { close(file_); }

    int file() const { return file_; }

    std::string content() const
    {
        char piece[100];
        const ssize_t size = pread(file_, piece, sizeof(piece), 0);
        return {piece, static_cast<size_t>(size)};
    }

  private:
    int file_;
};

void write_now(BufferedWriter &writer, std::string_view text)
{
    writer.write(text);
    writer.flush();
}

TEST_F(BufferedWriting, an_incomplete_line_is_removed_with_all_of_its_pieces)
{
    const SmallDisk disk(10);
    BufferedWriter writer(file());
    write_now(writer, "ab\ncd");
    write_now(writer, "ef");
    EXPECT_EQ(content(), "ab\ncdef");
    write_now(writer, "ghijk");
    EXPECT_EQ(writer.error(), EFBIG);
    EXPECT_EQ(content(), "ab\n");
    EXPECT_EQ(lseek(file(), 0, SEEK_CUR), 3) << "others that share it go on there";
}

TEST_F(BufferedWriting, an_incomplete_line_stays_if_another_process_has_written_after_it)
{
    BufferedWriter writer(file());
    write_now(writer, "ab\ncd");
    EXPECT_EQ(pwrite(file(), "other", 5, 5), 5);
    const SmallDisk disk(5);
    write_now(writer, "ef");
    EXPECT_EQ(writer.error(), EFBIG);
    EXPECT_EQ(content(), "ab\ncdother");
}

} // namespace
