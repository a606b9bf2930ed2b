// The co-processor's flash.
#include "simulator/board/flash.hpp"

#include <algorithm>

namespace simulator
{

void Flash::erase(const FlashRegion &region)
{
    std::ranges::fill(bytes_.subspan(region.start - FLASH_START, region.size), FLASH_ERASED);
}

void Flash::program(uint32_t address, std::span<const uint8_t> data)
{
    std::ranges::copy(data, bytes_.subspan(address - FLASH_START, data.size()).begin());
}

} // namespace simulator
