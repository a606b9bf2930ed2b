// A board in a folder.
#include "simulator/board_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

class BoardFolder : public testing::Test
{
  protected:
    BoardFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "board-XXXXXX";
        parent = mkdtemp(name.data());
        path = parent / "board";
    }
    ~BoardFolder() override { std::filesystem::remove_all(parent); }

    std::string content(const char *name) const
    {
        std::ifstream file(path + '/' + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::filesystem::path parent;
    std::string path;
};

TEST_F(BoardFolder, is_made_with_erased_flash_and_a_board_fresh_from_its_maker)
{
    BoardDirectory directory;
    EXPECT_EQ(directory.open(path), "");
    EXPECT_EQ(content("flash.bin"), std::string(524288, '\xFF'));
    EXPECT_EQ(content("mode"), "application\n");
    EXPECT_EQ(content("version"), "5\n");
}

TEST_F(BoardFolder, holds_no_other_files_than_the_boards_own)
{
    BoardDirectory directory;
    directory.open(path);
    directory.save_mode(Mode::boot_loader);
    directory.save_version(7);
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"flash.bin", "mode", "spidev1.0", "version"}));
}

TEST_F(BoardFolder, keeps_what_is_written_to_its_flash)
{
    BoardDirectory first;
    first.open(path);
    first.flash()[524287] = 0x12;
    BoardDirectory second;
    second.open(path);
    EXPECT_EQ(second.flash()[524287], 0x12);
    EXPECT_EQ(content("flash.bin").back(), 0x12);
}

TEST_F(BoardFolder, keeps_mode_and_version)
{
    BoardDirectory directory;
    directory.open(path);
    for (const Mode mode : {Mode::unknown, Mode::boot_loader, Mode::application}) {
        EXPECT_EQ(directory.save_mode(mode), "");
        EXPECT_EQ(directory.save_version(200), "");
        BoardIdentity identity;
        EXPECT_EQ(directory.load(identity), "");
        EXPECT_EQ(identity.mode, mode);
        EXPECT_EQ(identity.boot_loader_version, 200);
    }
}

TEST_F(BoardFolder, versions_are_numbers_from_0_to_255)
{
    for (const auto &[words, expected] : {std::pair("0", 0), {"9", 9}, {"255", 255}, {"007", 7}}) {
        uint8_t version = 99;
        EXPECT_TRUE(parse_version(words, version)) << words;
        EXPECT_EQ(version, expected) << words;
    }
    for (const char *words : {"", "256", "999", "1000", "-1", "+1", " 1", "1 ", "x", "1x"}) {
        uint8_t version = 99;
        EXPECT_FALSE(parse_version(words, version)) << words;
        EXPECT_EQ(version, 99) << words;
    }
}

} // namespace

} // namespace simulator
