// The one link to the co-processor: its buffers and the one exchange through which all bytes go.
#pragma once

#include "link/protocol.hpp"

#include "link/stm_com_funcs.h"

#include <linux/spi/spidev.h>

#include <cstdint>

namespace stm
{

// Zero at program start.
// Kept: commands and downloads clear no more of tx_buffer than they need. Bytes that none rewrites
// stay as the last synchronisation, reply or read-out left them, and frames long enough to reach
// them send them.
struct StmLink {
    RingBuffer *ring;                    // attached shared memory, null while there is none
    int32_t spi_fd;                      // as the last open returned it, failed or not
    uint8_t tx_buffer[STM_BUFFER_SIZE];  // long frames, single-byte commands and polls
    char message[STM_MESSAGE_SIZE];      // the last report, CSV text or ADC piece
    uint8_t tx_short[STM_TX_SHORT_SIZE]; // request frames of the read-outs
    spi_ioc_transfer transfer;           // shared by the acknowledge wait and the download
    uint8_t rx_short[STM_RX_SHORT_SIZE]; // what comes back while tx_short goes out, as far as read
    uint8_t rx_buffer[STM_BUFFER_SIZE];  // byte i came back while tx_buffer[i] went out
};

// NOLINTNEXTLINE(bugprone-dynamic-static-initializers): only declared here
extern StmLink stm_link;

// One full-duplex exchange of length bytes: tx[i] goes out while rx[i] comes in. Clock, delay, word
// size and chip select stay the device's. Returns what the ioctl returns, negative on failure. A
// length that the long buffers cannot hold, or below 0, is refused with EMSGSIZE before the driver
// sees it, which is also how the driver answers more than its default buffer.
int stm_transfer(const uint8_t *tx, uint8_t *rx, int32_t length);

// The same with a descriptor whose buffers the caller has set; only its length changes.
int stm_transfer(spi_ioc_transfer &descriptor, int32_t length);

// Zeroes a descriptor and points it at tx_buffer and rx_buffer.
void link_prepare_transfer(spi_ioc_transfer &descriptor);

// The exchanges of which the conversation with the application consists. Each returns what
// stm_transfer returns and leaves what came back at the start of rx_buffer.
int link_poll_data(int32_t bytes); // 'D's, for the bytes that tell whether an answer is ready
int link_fetch_pair();             // two zeros, for a number of 16 bits
int link_fetch(int32_t length);    // filler; all of tx_buffer then holds it

// The same behind so many bytes that rx_buffer holds already. More than it has room for are refused
// like any length that does not fit.
int link_fetch_behind(int32_t held, int32_t length);

// Clears both buffers.
void link_clear_buffers();

// Clears the bytes of both buffers in which a command is built and answered.
void link_clear_command_bytes();

} // namespace stm
