// A board in a folder.
#include "simulator/store/board_directory.hpp"
#include "tests/simulator/board_folder.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

TEST_F(BoardFolder, is_made_with_erased_flash_and_a_board_fresh_from_its_maker)
{
    BoardDirectory directory;
    EXPECT_EQ(directory.open(path), "");
    EXPECT_EQ(content("flash.bin"), std::string(524288, '\xFF'));
    EXPECT_EQ(content("mode"), "application\n");
    EXPECT_EQ(content("version"), "5\n");
    EXPECT_EQ(content("memory.bin"), std::string(65536, '\0'));
    EXPECT_EQ(content("settings"), "");
    EXPECT_EQ(content("answers"), "");
}

TEST_F(BoardFolder, keeps_the_spi_mode_that_was_set)
{
    BoardDirectory directory;
    directory.open(path);
    uint32_t mode = 7;
    EXPECT_EQ(directory.load_spi_mode(mode), "");
    EXPECT_EQ(mode, 0U) << "none was set";
    EXPECT_EQ(directory.save_spi_mode(3), "");
    EXPECT_EQ(content("spi-mode"), "3\n");
    EXPECT_EQ(directory.load_spi_mode(mode), "");
    EXPECT_EQ(mode, 3U);
    std::ofstream(path + "/spi-mode") << "three\n";
    EXPECT_EQ(directory.load_spi_mode(mode), path + "/spi-mode: not a number");
}

TEST_F(BoardFolder, holds_no_other_files_than_the_boards_own)
{
    BoardDirectory directory;
    directory.open(path);
    directory.save_mode(Mode::boot_loader);
    directory.save_version(7);
    directory.save(ValuesOf::settings, {{{0x53, NO_PLACE}, "2"}});
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"answers", "flash.bin", "memory.bin", "mode",
                                               "settings", "spidev1.0", "version"}));
}

TEST_F(BoardFolder, keeps_what_is_written_to_its_flash)
{
    BoardDirectory first;
    first.open(path);
    first.bytes().flash[524287] = 0x12;
    BoardDirectory second;
    second.open(path);
    EXPECT_EQ(second.bytes().flash[524287], 0x12);
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

TEST_F(BoardFolder, keeps_what_is_written_to_its_memory)
{
    BoardDirectory first;
    first.open(path);
    first.bytes().memory[65535] = 0x12;
    BoardDirectory second;
    second.open(path);
    EXPECT_EQ(second.bytes().memory[65535], 0x12);
    EXPECT_EQ(content("memory.bin").back(), 0x12);
}

TEST_F(BoardFolder, with_a_memory_of_another_size_is_no_board)
{
    BoardDirectory directory;
    directory.open(path);
    std::filesystem::resize_file(path + "/memory.bin", 65535);
    EXPECT_EQ(BoardDirectory().open(path), path + "/memory.bin: its size must be 65536 bytes");
}

TEST_F(BoardFolder, keeps_settings_and_answers_apart)
{
    BoardDirectory directory;
    directory.open(path);
    const CommandValues settings = {{{0xC3, 7}, "1 2"}};
    const CommandValues answers = {{{0x21, NO_PLACE}, "ok"}};
    EXPECT_EQ(directory.save(ValuesOf::settings, settings), "");
    EXPECT_EQ(directory.save(ValuesOf::answers, answers), "");
    EXPECT_EQ(content("settings"), "0xC3/7 = 1 2\n");
    EXPECT_EQ(content("answers"), "0x21 = ok\n");
    CommandValues values;
    EXPECT_EQ(directory.load(ValuesOf::settings, values), "");
    EXPECT_EQ(values, settings);
    EXPECT_EQ(directory.load(ValuesOf::answers, values), "");
    EXPECT_EQ(values, answers);
}

TEST_F(BoardFolder, says_in_which_file_a_value_is_not_understood)
{
    BoardDirectory directory;
    directory.open(path);
    std::ofstream(path + "/answers") << "0x21 = ok\n0x21 ok\n";
    CommandValues values;
    EXPECT_EQ(directory.load(ValuesOf::answers, values),
              path + "/answers: '0x21 ok': it does not have the form CODE[/CHANNEL]=VALUE");
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
