// Goal: a file that cannot be written whole stays as it was, and nothing is left beside it.
#include "stmctl/output/whole_file.hpp"
#include "stmctl/process/failure.hpp"
#include "tests/stmctl/output/small_disk.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace stmctl;

namespace
{

namespace fs = std::filesystem;

class WholeFile : public testing::Test
{
  protected:
    WholeFile() : folder_(testing::TempDir() + "whole-" + std::to_string(getpid()))
    {
        fs::create_directory(folder_);
        std::ofstream(file()) << "old";
    }
    ~WholeFile() override { fs::remove_all(folder_); }

    std::string file() const { return folder_ + "/file"; }

    std::string content() const
    {
        std::ifstream stream(file());
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    auto files() const
    {
        return std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
    }

  private:
    std::string folder_;
};

TEST_F(WholeFile, gets_all_of_the_text)
{
    write_whole(file(), std::string(100000, 'x'));
    EXPECT_EQ(content(), std::string(100000, 'x'));
    write_whole(file(), "");
    EXPECT_EQ(content(), "");
    EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, keeps_its_permissions)
{
    for (const auto rights : {fs::perms(0600), fs::perms(0751)}) {
        fs::permissions(file(), rights);
        write_whole(file(), "new");
        EXPECT_EQ(fs::status(file()).permissions(), rights);
    }
}

TEST_F(WholeFile, stays_as_it_was_on_a_disk_that_is_full)
{
    try {
        const SmallDisk disk(1000);
        write_whole(file(), std::string(1001, 'x'));
        FAIL() << "not refused";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.what(), "cannot write '" + file() + "': File too large");
        EXPECT_EQ(failure.status(), ExitStatus::failed);
    }
    EXPECT_EQ(content(), "old");
    EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, that_cannot_be_made_is_told_with_the_reason)
{
    try {
        write_whole(file() + "/below", "new");
        FAIL() << "not refused";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.what(), "cannot write '" + file() + "/below': Not a directory");
    }
    EXPECT_EQ(content(), "old");
}

} // namespace
