// Goal: a file of results keeps what is in it, however the run ends.
#include "stmctl/output/destination.hpp"
#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace stmctl;

namespace
{

namespace fs = std::filesystem;

class DestinationFile : public testing::Test
{
  protected:
    ~DestinationFile() override { fs::remove(file_); }

    const std::string &file() const { return file_; }

    std::string content() const
    {
        std::ifstream stream(file_);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

  private:
    std::string file_ = testing::TempDir() + "destination-" + std::to_string(getpid());
};

TEST_F(DestinationFile, has_what_was_written_though_the_run_did_not_finish)
{
    {
        Destination destination(file());
        destination.begin();
        destination.write("one\ntwo\n");
        EXPECT_EQ(content(), "") << "it is held";
    }
    EXPECT_EQ(content(), "one\ntwo\n");
}

TEST_F(DestinationFile, that_is_new_has_the_permissions_that_its_user_gives_new_files)
{
    for (const OldContent old : {OldContent::replaced, OldContent::continued}) {
        fs::remove(file());
        const mode_t before = umask(0);
        const Destination destination(file(), old);
        umask(before);
        EXPECT_EQ(fs::status(file()).permissions(), fs::perms(0666));
    }
}

TEST_F(DestinationFile, that_was_not_there_goes_again_if_the_run_did_not_begin)
{
    {
        const Destination destination(file());
        EXPECT_TRUE(fs::exists(file()));
    }
    EXPECT_FALSE(fs::exists(file()));
}

// That is known before the device is opened, and not only when the run begins.
TEST_F(DestinationFile, that_begins_otherwise_is_refused_at_once)
{
    std::ofstream(file()) << "other\nlines\n";
    try {
        const Destination destination(file(), OldContent::continued, "header\n");
        FAIL() << "not refused";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.status(), ExitStatus::failed);
        EXPECT_EQ(failure.what(),
                  "cannot append to '" + file() +
                      "': its first line does not match; was it written with another --format, "
                      "--variant, --separator or --timestamps?");
    }
    EXPECT_EQ(content(), "other\nlines\n");
}

TEST_F(DestinationFile, without_a_whole_line_is_refused_at_once)
{
    std::ofstream(file()) << "half";
    EXPECT_THROW(Destination(file(), OldContent::continued), Failure);
    EXPECT_EQ(content(), "half");
}

TEST_F(DestinationFile, stays_with_what_somebody_else_has_put_into_it)
{
    {
        const Destination destination(file());
        std::ofstream(file()) << "other\n";
    }
    EXPECT_EQ(content(), "other\n");
}

} // namespace
