// What a board's folder keeps while a program uses the board.
#include "simulator/store/kept_state.hpp"
#include "tests/simulator/board_folder.hpp"
#include "tests/stmctl/output/small_disk.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace simulator
{

namespace
{

class KeptBoard : public BoardFolder
{
  protected:
    KeptBoard()
    {
        EXPECT_EQ(kept.open(path), "");
        EXPECT_EQ(kept.begin(), "");
    }

    ino_t stand_in() const
    {
        struct stat file = {};
        EXPECT_EQ(stat(BoardDirectory::stand_in(path).c_str(), &file), 0);
        return file.st_ino;
    }

    KeptState kept;
};

TEST_F(KeptBoard, has_each_new_mode_in_its_file)
{
    Coprocessor coprocessor(kept.bytes(), {}, {});
    SpiDevice device(
        coprocessor, {}, [](std::chrono::nanoseconds) {}, [](const Exchange &) {});
    ASSERT_EQ(kept.load(coprocessor, device), "");
    const auto mode_after = [&](const std::vector<uint8_t> &sent) {
        std::vector<uint8_t> unheard(sent.size());
        coprocessor.exchange(sent, unheard);
        EXPECT_EQ(kept.save(coprocessor, device), "");
        return content("mode");
    };
    EXPECT_EQ(mode_after({0x81, 0, 0, 0, 0, 0, 0, 0xAA}), "boot loader\n");
    EXPECT_EQ(mode_after({0x83}), "application\n");
    EXPECT_EQ(mode_after({0x81, 0, 0, 0, 0, 0, 0, 0xAA}), "boot loader\n");
    for (const uint32_t spi_mode : {8U, 0U, 8U}) {
        device.keep_mode(spi_mode);
        EXPECT_EQ(kept.save(coprocessor, device), "");
        EXPECT_EQ(content("spi-mode"), std::to_string(spi_mode) + '\n');
    }
}

TEST_F(KeptBoard, saves_what_did_not_fit_on_the_disk_as_soon_as_it_does)
{
    Coprocessor coprocessor(kept.bytes(), {}, {});
    SpiDevice device(
        coprocessor, {}, [](std::chrono::nanoseconds) {}, [](const Exchange &) {});
    ASSERT_EQ(kept.load(coprocessor, device), "");
    std::vector<uint8_t> unheard(8);
    coprocessor.exchange(std::vector<uint8_t>{0x81, 0, 0, 0, 0, 0, 0, 0xAA}, unheard);
    device.keep_mode(8);
    {
        const SmallDisk disk(0);
        EXPECT_NE(kept.save(coprocessor, device), "");
    }
    EXPECT_EQ(content("mode"), "application\n");
    EXPECT_EQ(kept.save(coprocessor, device), "");
    EXPECT_EQ(content("mode"), "boot loader\n");
    {
        const SmallDisk disk(0);
        device.keep_mode(0);
        EXPECT_NE(kept.save(coprocessor, device), "");
    }
    EXPECT_EQ(kept.save(coprocessor, device), "");
    EXPECT_EQ(content("spi-mode"), "0\n");
}

TEST_F(KeptBoard, loses_only_what_killed_programs_have_left_when_its_power_comes)
{
    const std::string own = path + "/mode.new-" + std::to_string(getpid());
    const std::string others[] = {path + "/settings.1", path + "/mode.new-x", path + "/new-1", own};
    const std::string left = path + "/flash.bin.new-999999999";
    for (const std::string &name : others) {
        std::ofstream(name) << "kept";
    }
    std::ofstream(left) << "half a file";
    EXPECT_EQ(kept.begin(), "");
    for (const std::string &name : others) {
        EXPECT_TRUE(std::filesystem::exists(name)) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(left));
}

TEST_F(KeptBoard, has_one_device_file_for_each_time_that_the_device_is_there)
{
    const ino_t first = stand_in();
    EXPECT_EQ(kept.renew_stand_in(0), "");
    EXPECT_EQ(stand_in(), first);
    EXPECT_EQ(kept.renew_stand_in(1), "");
    const ino_t second = stand_in();
    EXPECT_NE(second, first);
    EXPECT_EQ(kept.renew_stand_in(1), "");
    EXPECT_EQ(stand_in(), second);
}

} // namespace

} // namespace simulator
