// Goal: a file that cannot be written whole stays as it was, and nothing is left beside it.
#include "stmctl/output/whole_file.hpp"
#include "stmctl/process/failure.hpp"
#include "tests/stmctl/output/small_disk.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
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

    std::string make_folder(const std::string &name, fs::perms rights) const
    {
        fs::create_directory(folder_ + "/" + name);
        fs::permissions(folder_ + "/" + name, rights);
        return folder_ + "/" + name;
    }

    // root may write everywhere: so it becomes another user.
    static bool is_refused_to_a_user(const std::string &path)
    {
        constexpr uid_t USER = 65534;
        const pid_t child = fork();
        if (child == 0) {
            bool refused = getuid() == 0 && setuid(USER) != 0;
            try {
                expect_writable(path);
            } catch (const Failure &) {
                refused = true;
            }
            _exit(refused ? 1 : 0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status));
        return WEXITSTATUS(status) == 1;
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

TEST_F(WholeFile, that_is_new_has_the_permissions_that_its_user_gives_new_files)
{
    fs::remove(file());
    const mode_t before = umask(0);
    write_whole(file(), "new");
    umask(before);
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms(0666));
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

// What a link leads to is replaced in its own folder; that of the link does not matter.
TEST_F(WholeFile, behind_a_link_needs_the_folder_where_it_is_to_be_writable)
{
    const std::string other = make_folder("other", fs::perms::all);
    std::ofstream(other + "/file") << "old";
    fs::permissions(other + "/file", fs::perms::all);
    const std::string links = make_folder("links", fs::perms::all);
    fs::create_symlink(other + "/file", links + "/link");

    fs::permissions(links, fs::perms(0555));
    EXPECT_FALSE(is_refused_to_a_user(links + "/link"));
    fs::permissions(links, fs::perms::all);
    fs::permissions(other, fs::perms(0555));
    EXPECT_TRUE(is_refused_to_a_user(links + "/link"));
    fs::permissions(other, fs::perms::all);
    EXPECT_FALSE(is_refused_to_a_user(links + "/link"));
}

} // namespace
