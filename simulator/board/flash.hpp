// The co-processor's flash: 512 KiB from 0x08000000, the boot loader in the first 16 KiB.
#pragma once

#include <cstdint>
#include <span>

namespace simulator
{

struct FlashRegion {
    const char *name;
    uint32_t start;
    uint32_t size;
};

inline constexpr uint32_t FLASH_START = 0x08000000;
inline constexpr uint32_t FLASH_SIZE = 512 * 1024;
inline constexpr uint8_t FLASH_ERASED = 0xFF;

inline constexpr FlashRegion BOOT_LOADER_REGION = {"boot loader", 0x08000000, 16 * 1024};
inline constexpr FlashRegion FIRMWARE_REGION = {"firmware", 0x08004000, 496 * 1024};

enum class Region : uint8_t { boot_loader, firmware };

constexpr const FlashRegion &bounds_of(Region region)
{
    return region == Region::boot_loader ? BOOT_LOADER_REGION : FIRMWARE_REGION;
}

static_assert(BOOT_LOADER_REGION.start == FLASH_START);
static_assert(FIRMWARE_REGION.start == FLASH_START + BOOT_LOADER_REGION.size);
static_assert(BOOT_LOADER_REGION.size + FIRMWARE_REGION.size == FLASH_SIZE);

inline constexpr uint32_t LARGEST_PROGRAM = 1024; // bytes written at once

// A change of the flash that has been decided on, and is made afterwards. It can be made again without
// harm, so that one during which a program was killed is made whole by the next.
struct FlashChange {
    enum class Kind : uint8_t { none, erase, program };

    Kind kind = Kind::none;
    Region region = Region::boot_loader; // erased
    uint16_t size = 0;                   // programmed
    uint32_t address = 0;
    uint8_t data[LARGEST_PROGRAM] = {};
};

FlashChange erase(Region region);

// address to address + data.size() must be inside the flash.
FlashChange program(uint32_t address, std::span<const uint8_t> data);

// Whether it is one that can be made; what was read from a file may be anything.
bool can_be_made(const FlashChange &change);
void make(const FlashChange &change, std::span<uint8_t, FLASH_SIZE> flash);

} // namespace simulator
