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

// Works on bytes owned by the caller, which decides how long they live.
class Flash
{
  public:
    explicit Flash(std::span<uint8_t, FLASH_SIZE> bytes) : bytes_(bytes) {}

    void erase(const FlashRegion &region);

    // address to address + data.size() must be inside the flash.
    void program(uint32_t address, std::span<const uint8_t> data);

  private:
    std::span<uint8_t, FLASH_SIZE> bytes_;
};

} // namespace simulator
