// The boot loader's side of an image download:
//
//     closed --mode command--> header expected --header--> blocks expected --last block--> closed
//
// A frame that does not fit ends the download; a mode command starts a new one.
#pragma once

#include "simulator/board/flash.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

inline constexpr size_t IMAGE_FRAME_SIZE = 1034;
inline constexpr uint32_t IMAGE_BLOCK_SIZE = LARGEST_PROGRAM;

// How a frame was received.
struct Verdict {
    uint8_t status;
    std::string note; // for people who read the dialogue
};

class BootLoader
{
  public:
    // A mode command has arrived: the next frame is a header for this region.
    Verdict open(Region region);

    // A frame has arrived while one was expected. What it does to the flash is yet to be made.
    Verdict take_frame(std::span<const uint8_t, IMAGE_FRAME_SIZE> frame, FlashChange &change);

    void close() { stage_ = Stage::closed; }
    bool expects_frame() const { return stage_ != Stage::closed; }

    // The step of the download that the next frame is: STEP_HEADER, or STEP_FIRST_BLOCK and on.
    int next_step() const;

  private:
    enum class Stage : uint8_t { closed, header, blocks };

    Verdict take_header(uint32_t address, uint32_t size, FlashChange &change);
    Verdict take_block(uint32_t address, uint32_t size, std::span<const uint8_t> data,
                       FlashChange &change);
    Verdict refuse(uint8_t status, std::string note);

    Stage stage_ = Stage::closed;
    Region region_ = Region::boot_loader;
    [[maybe_unused]] uint16_t unused_ = 0;
    uint32_t image_size_ = 0;
    uint32_t received_ = 0;
    int32_t blocks_ = 0;
};

} // namespace simulator
