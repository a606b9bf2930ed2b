// What a board's folder keeps of it: read when a program opens the device, written after each of its
// calls as far as it has changed.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/driver/spi_device.hpp"
#include "simulator/store/board_directory.hpp"
#include "simulator/store/counts_file.hpp"

#include <cstdint>
#include <string>

namespace simulator
{

// Each operation returns an empty string, or what is wrong with the folder.
class KeptState
{
  public:
    std::string open(const std::string &path);
    BoardBytes bytes() const { return directory_.bytes(); }

    // Starts counting records anew.
    std::string begin_counts();

    // The files may have been edited since they were last read; what they say holds.
    std::string load(Coprocessor &coprocessor, SpiDevice &device);
    std::string save(const Coprocessor &coprocessor, const SpiDevice &device);

    // A device that comes back has a new file, just as a device node would be a new one.
    std::string renew_stand_in(int generation);

    // The counts are another process's from now on.
    void leave_counts() { counts_.leave(); }

  private:
    std::string load_values(Coprocessor &coprocessor);
    std::string save_settings(const Coprocessor &coprocessor);
    std::string save_mode(Mode mode);
    std::string save_spi_mode(uint32_t mode);

    std::string path_;
    BoardDirectory directory_;
    CountsFile counts_;
    bool is_loaded_ = false; // before that, no state can be newer than the files
    BoardIdentity identity_; // this and the next two as they are in the files
    CommandValues settings_;
    uint32_t received_settings_ = 0; // that are in the file
    uint32_t spi_mode_ = 0;
    int stand_in_generation_ = 0;
};

} // namespace simulator
