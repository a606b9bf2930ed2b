// A board that outlasts the program talking to it: a directory with its flash and its state.
//
//     flash.bin    512 KiB; the byte at offset n lies at flash address 0x08000000 + n
//     mode         "application", "boot loader" or "unknown"
//     version      minor version of the boot loader, 0 to 255; 0 is unknown
//     spidev1.0    stands for the device node
//
// The text files may be edited while no program has the device open.
#pragma once

#include "simulator/coprocessor.hpp"
#include "simulator/flash.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

class BoardDirectory
{
  public:
    // The directory and what is missing in it are made: erased flash, a board fresh from its maker.
    // An empty string, or why it is no board.
    std::string open(const std::string &path);

    std::span<uint8_t, FLASH_SIZE> flash() const;

    // The file that stands for the device node of a board.
    static std::string stand_in(const std::string &path) { return path + "/spidev1.0"; }

    // Empty, or what is wrong with the files.
    std::string load(BoardIdentity &identity) const;
    std::string save_mode(Mode mode) const;
    std::string save_version(uint8_t version) const;

  private:
    std::string file(const char *name) const { return path_ + '/' + name; }
    std::string map_flash();

    std::string path_;
    uint8_t *flash_ = nullptr; // stays mapped as long as the process lives
};

// The mode's name in the file, and back; mode is untouched if the name is unknown.
const char *mode_name(Mode mode);
bool parse_mode(const std::string &name, Mode &mode);

// A version in words; version is untouched if it is none.
bool parse_version(const std::string &words, uint8_t &version);

} // namespace simulator
