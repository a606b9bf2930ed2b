// One frame of an image download.
#include "download/image_frame.hpp"

#include "link/bytes.hpp"
#include "link/stm_com_funcs.h"

#include <cstring>

namespace stm
{

namespace
{

constexpr int32_t CHECKSUM_OFFSET = 0;
constexpr int32_t ADDRESS_OFFSET = 2;
constexpr int32_t SIZE_OFFSET = 6;
constexpr int32_t DATA_OFFSET = 10;
constexpr int32_t CLEARED_BYTES = 1024;

static_assert(DATA_OFFSET + STM_BLOCK_SIZE == STM_FRAME_SIZE);
static_assert(STM_FRAME_SIZE <= STM_BUFFER_SIZE);

} // namespace

uint8_t *image_frame_begin()
{
    memset(stm_link.tx_buffer, 0, CLEARED_BYTES);
    return stm_link.tx_buffer + DATA_OFFSET;
}

uint16_t image_frame_finish(uint32_t address, uint32_t size)
{
    uint8_t *frame = stm_link.tx_buffer;
    put_le32(frame + ADDRESS_OFFSET, address);
    put_le32(frame + SIZE_OFFSET, size);
    const uint16_t checksum = stm_crc16(frame + ADDRESS_OFFSET, STM_FRAME_SIZE - ADDRESS_OFFSET);
    put_le16(frame + CHECKSUM_OFFSET, checksum);
    return checksum;
}

int image_frame_send()
{
    return stm_transfer(stm_link.transfer, STM_FRAME_SIZE);
}

} // namespace stm
