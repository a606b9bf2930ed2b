// The co-processor's flash.
#include "simulator/board/flash.hpp"

#include <algorithm>

namespace simulator
{

FlashChange erase(Region region)
{
    FlashChange change;
    change.kind = FlashChange::Kind::erase;
    change.region = region;
    return change;
}

FlashChange program(uint32_t address, std::span<const uint8_t> data)
{
    FlashChange change;
    change.kind = FlashChange::Kind::program;
    change.address = address;
    change.size = static_cast<uint16_t>(data.size());
    std::ranges::copy(data, change.data);
    return change;
}

bool can_be_made(const FlashChange &change)
{
    switch (change.kind) {
    case FlashChange::Kind::none:
        return true;
    case FlashChange::Kind::erase:
        return change.region <= Region::firmware;
    case FlashChange::Kind::program:
        return change.size <= LARGEST_PROGRAM && change.address >= FLASH_START &&
               change.address - FLASH_START <= FLASH_SIZE - change.size;
    }
    return false;
}

void make(const FlashChange &change, std::span<uint8_t, FLASH_SIZE> flash)
{
    const FlashRegion &region = bounds_of(change.region);
    switch (change.kind) {
    case FlashChange::Kind::none:
        break;
    case FlashChange::Kind::erase:
        std::ranges::fill(flash.subspan(region.start - FLASH_START, region.size), FLASH_ERASED);
        break;
    case FlashChange::Kind::program:
        std::ranges::copy_n(change.data, change.size,
                            flash.subspan(change.address - FLASH_START).begin());
        break;
    }
}

} // namespace simulator
