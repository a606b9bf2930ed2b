// A board that outlives the program talking to it: a directory with its flash and its state.
//
//     flash.bin    512 KiB; the byte at offset n is at flash address 0x08000000 + n
//     mode         "application", "boot loader" or "unknown"
//     version      minor version of the boot loader, 0 to 255; 0 is unknown
//     memory.bin   64 KiB, the memory that the application's commands read and write
//     settings     what each setting last received, one per line:  0xC2/3 = 1234
//     answers      the answers that the board was given, in the same form
//     spi-mode     the mode that the driver was last set to; absent before that
//     spidev1.0    stands in for the device node
//     counts       what became of the records since the power came the last time
//     lives        the same for each life that a restart has ended
//     state        what the programs that use the board at the same time share; theirs alone
//
// The text files may be edited while no program has the device open.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/board/flash.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

class BoardDirectory
{
  public:
    // Creates the directory and what is missing in it: erased flash, a factory-new board. Returns
    // an empty string, or why it is not a board.
    std::string open(const std::string &path);

    // Removes what programs have left that were killed while they wrote a file.
    void clear() const;

    BoardBytes bytes() const;

    // Maps the file that programs share; the fresh bytes are a new one. Empty, or why it cannot be.
    std::string map_shared(const std::string &fresh, uint8_t *&bytes) const;

    // The file that stands in for the device node of a board.
    static std::string stand_in(const std::string &path) { return path + "/spidev1.0"; }

    // Replaces the file that stands in for the device by a new one. Empty, or why not.
    std::string renew_stand_in() const;

    // Empty, or what is wrong with the files.
    std::string load(BoardIdentity &identity) const;
    std::string load(ValuesOf kind, CommandValues &values) const;
    std::string save_mode(Mode mode) const;
    std::string load_spi_mode(uint32_t &mode) const;
    std::string save_spi_mode(uint32_t mode) const;
    std::string save_version(uint8_t version) const;
    std::string save(ValuesOf kind, const CommandValues &values) const;

  private:
    std::string file(const char *name) const { return path_ + '/' + name; }
    std::string make_files();
    std::string map(const char *name, size_t size, uint8_t *&bytes) const;

    std::string path_;
    uint8_t *flash_ = nullptr; // both stay mapped until the process ends
    uint8_t *memory_ = nullptr;
};

// The mode's name in the file, and back; mode is unchanged if the name is unknown.
const char *mode_name(Mode mode);
bool parse_mode(const std::string &name, Mode &mode);

// Reads a version; it is unchanged if the words are not a version.
bool parse_version(const std::string &words, uint8_t &version);

} // namespace simulator
