// What a board's folder keeps of it: read when the power comes or a program that is alone opens the
// device, written after each call as far as it has changed.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/driver/spi_device.hpp"
#include "simulator/store/board_directory.hpp"
#include "simulator/store/counts_file.hpp"
#include "simulator/store/shared_state.hpp"

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
    SharedState &shared() { return shared_; }

    // The power comes: records are counted anew, and what killed programs have left is removed.
    std::string begin();

    // The files may have been edited since they were last read; what they say holds.
    std::string load(Coprocessor &coprocessor, SpiDevice &device);

    // The same for a program that goes on with a board's state: only what is in no state.
    std::string go_on(Coprocessor &coprocessor) const;
    std::string go_on_counting() { return counts_.join(path_); }

    std::string save(const Coprocessor &coprocessor, const SpiDevice &device);

    // A device that comes back has a new file, just as a device node would be a new one.
    std::string renew_stand_in(int generation);

  private:
    using Take = void (Coprocessor::*)(CommandValues settings, CommandValues answers);
    std::string load_texts(Coprocessor &coprocessor, Take take) const;
    std::string save_settings(const Coprocessor &coprocessor);
    std::string save_mode(Mode mode);
    std::string save_spi_mode(uint32_t mode);

    std::string path_;
    BoardDirectory directory_;
    CountsFile counts_;
    SharedState shared_;
};

} // namespace simulator
