// The boot loader's side of an image download.
#include "simulator/board/boot_loader.hpp"

#include "simulator/faults/faults.hpp"
#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"
#include "simulator/words/text.hpp"

#include <utility>

namespace simulator
{

namespace
{

constexpr size_t ADDRESS_AT = 2;
constexpr size_t SIZE_AT = 6;
constexpr size_t DATA_AT = 10;

} // namespace

int BootLoader::next_step() const
{
    return stage_ == Stage::header ? STEP_HEADER : STEP_FIRST_BLOCK + blocks_;
}

Verdict BootLoader::open(Region region)
{
    region_ = region;
    stage_ = Stage::header;
    return {READY, text("%s download begins", bounds_of(region).name)};
}

Verdict BootLoader::take_frame(std::span<const uint8_t, IMAGE_FRAME_SIZE> frame,
                               FlashChange &change)
{
    const uint32_t sent = little_endian(frame.first(ADDRESS_AT));
    const uint16_t computed = bitwise_crc(frame.subspan(ADDRESS_AT));
    if (sent != computed) {
        return refuse(STATUS_CHECKSUM_ERROR,
                      text("checksum 0x%04X sent, 0x%04X computed", sent, computed));
    }
    const uint32_t address = little_endian(frame.subspan(ADDRESS_AT, 4));
    const uint32_t size = little_endian(frame.subspan(SIZE_AT, 4));
    return stage_ == Stage::header ? take_header(address, size, change)
                                   : take_block(address, size, frame.subspan(DATA_AT), change);
}

Verdict BootLoader::take_header(uint32_t address, uint32_t size, FlashChange &change)
{
    const FlashRegion &region = bounds_of(region_);
    if (address != region.start || size > region.size) {
        return refuse(STATUS_ADDRESS_ERROR,
                      text("header: %u bytes at 0x%08X, but the %s has %u at 0x%08X", size, address,
                           region.name, region.size, region.start));
    }
    change = erase(region_);
    image_size_ = size;
    received_ = 0;
    blocks_ = 0;
    stage_ = size == 0 ? Stage::closed : Stage::blocks;
    return {READY, text("header: %u bytes at 0x%08X", size, address)};
}

Verdict BootLoader::take_block(uint32_t address, uint32_t size, std::span<const uint8_t> data,
                               FlashChange &change)
{
    const uint32_t start = bounds_of(region_).start;
    const uint32_t missing = image_size_ - received_;
    if (address != start || size == 0 || size > IMAGE_BLOCK_SIZE || size > missing) {
        return refuse(STATUS_ADDRESS_ERROR, text("block %d: %u bytes for 0x%08X, %u are missing",
                                                 blocks_, size, address, missing));
    }
    change = program(start + received_, data.first(size));
    received_ += size;
    if (received_ == image_size_) {
        stage_ = Stage::closed;
    }
    const char *end = stage_ == Stage::closed ? ", the image is complete" : "";
    return {READY, text("block %d: %u bytes%s", blocks_++, size, end)};
}

Verdict BootLoader::refuse(uint8_t status, std::string note)
{
    close();
    return {status, std::move(note)};
}

} // namespace simulator
