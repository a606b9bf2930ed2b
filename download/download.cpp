// Image download: mode command, header frame, a frame for each block; each one is acknowledged.
//
//     host          0x81 | 0x82 frame    header frame    block 0    block 1 ...
//     co-processor                   ACK             ACK        ACK
#include "download/image_frame.hpp"
#include "link/report.hpp"
#include "link/stm_com_funcs.h"

using namespace stm;

namespace
{

// Kept: an operator's stop (0) is no failure here; the download continues.
bool acknowledged(StmPollFn poll, StmOutputFn output)
{
    return stm_wait_for_ack(poll, output) >= 0;
}

bool frame_acknowledged(uint16_t checksum, StmPollFn poll, StmOutputFn output)
{
    if (!acknowledged(poll, output)) {
        // Kept: no leading zeros, unlike the same checksum in the texts before.
        report_message(output, "Checksum sent: %X\n", checksum);
        return false;
    }
    return true;
}

// Returns the number of bytes of the mode command.
// Kept: bytes 1 to 6 of the boot loader's frame are whatever the transmit buffer holds, and an
// address without a mode command still causes an exchange, of no bytes.
int32_t build_mode_command(uint32_t address)
{
    switch (address) {
    case STM_FLASH_FIRMWARE_ADDR:
        stm_link.tx_buffer[0] = STM_CMD_START_BOOTLOADER;
        return 1;
    case STM_FLASH_BOOTER_ADDR:
        stm_link.tx_buffer[0] = STM_CMD_LOAD_BOOTER;
        stm_link.tx_buffer[STM_FRAME_BYTES - 1] = STM_FRAME_END;
        return STM_FRAME_BYTES;
    default:
        return 0;
    }
}

bool send_mode_command(uint32_t address, StmPollFn poll, StmOutputFn output)
{
    link_prepare_transfer(stm_link.transfer);
    if (stm_transfer(stm_link.transfer, build_mode_command(address)) < 0) {
        report_errno("SPI command");
        return false;
    }
    return acknowledged(poll, output);
}

bool send_header(FILE *file, uint32_t address, StmPollFn poll, StmOutputFn output)
{
    const int32_t size = stm_file_size(file);
    report_message(output, "Filesize: %d Byte\n", size);
    image_frame_begin();
    const uint16_t checksum = image_frame_finish(address, static_cast<uint32_t>(size));
    // Kept: the text shows the low 16 bits of the size and comes before the exchange.
    report_message(output, "Transmitting information header (size: 0x%04hX, checksum: 0x%04hX)\n",
                   static_cast<uint16_t>(size), checksum);
    if (image_frame_send() < 0) {
        report_errno("SPI send header information");
        return false;
    }
    return frame_acknowledged(checksum, poll, output);
}

bool send_block(int32_t number, uint32_t address, uint32_t size, StmPollFn poll, StmOutputFn output)
{
    // Kept: every block carries the start address; the co-processor counts.
    const uint16_t checksum = image_frame_finish(address, size);
    if (image_frame_send() < 0) {
        report_errno("SPI send data");
        return false;
    }
    // Kept: a block's text comes after the exchange.
    report_message(output, "Transmitting datablock %d (size: 0x%04hX, checksum: 0x%04hX)\n", number,
                   static_cast<uint16_t>(size), checksum);
    return frame_acknowledged(checksum, poll, output);
}

// Reads the next block into a fresh frame; 0 at the end of the file.
// Kept: only the end-of-file flag is checked. A read error ends the file where nothing could be
// read; after a short block that is not the end, reading continues.
uint32_t read_block(FILE *file)
{
    if (feof(file) != 0) {
        return 0;
    }
    return static_cast<uint32_t>(fread(image_frame_begin(), 1, STM_BLOCK_SIZE, file));
}

} // namespace

int32_t stm_file_size(FILE *stream)
{
    if (stream == nullptr) {
        return -1;
    }
    const long position = ftell(stream);
    fseek(stream, 0, SEEK_END);
    const long size = ftell(stream);
    fseek(stream, position, SEEK_SET);
    return static_cast<int32_t>(size);
}

void stm_download_image(FILE *file, uint32_t address, StmPollFn poll, StmOutputFn output)
{
    if (!send_mode_command(address, poll, output) || !send_header(file, address, poll, output)) {
        return;
    }
    uint32_t total = 0;
    for (int32_t number = 0;; ++number) {
        const uint32_t size = read_block(file);
        if (size == 0) {
            // long has 64 bits on some hosts: the total goes through its 32-bit type.
            report_message(output, "Transmitted data: %ld Byte\n",
                           static_cast<long>(static_cast<int32_t>(total)));
            return;
        }
        if (!send_block(number, address, size, poll, output)) {
            return;
        }
        total += size;
    }
}
