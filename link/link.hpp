// The one link to the co-processor: its buffers, and the one function that exchanges bytes.
#pragma once

#include "link/protocol.hpp"

#include "link/stm_com_funcs.h"

#include <linux/spi/spidev.h>

#include <cstdint>

namespace stm
{

// Zero at program start.
// Kept: commands and downloads clear no more of tx_buffer than they need. Bytes that are not
// rewritten stay as the last synchronisation, reply or read-out left them, and frames long enough
// to reach them send them.
struct StmLink {
    RingBuffer *ring;                    // attached shared memory, null while there is none
    int32_t spi_fd;                      // as the last open returned it, failed or not
    uint8_t tx_buffer[STM_BUFFER_SIZE];  // long frames, single-byte commands and polls
    char message[STM_MESSAGE_SIZE];      // the last report, CSV text or ADC piece
    uint8_t tx_short[STM_TX_SHORT_SIZE]; // request frames of the read-outs
    spi_ioc_transfer transfer;           // shared by the acknowledge wait and the download
    uint8_t rx_short[STM_RX_SHORT_SIZE]; // received while tx_short is sent, as far as it is read
    uint8_t rx_buffer[STM_BUFFER_SIZE];  // byte i was received while tx_buffer[i] was sent
};

// NOLINTNEXTLINE(bugprone-dynamic-static-initializers): only declared here
extern StmLink stm_link;

// One full-duplex exchange of length bytes: tx[i] is sent while rx[i] is received. Clock, delay,
// word size and chip select are left as the device has them. Returns what the ioctl returns,
// negative on failure. A length that is negative or exceeds the long buffers is refused with
// EMSGSIZE before it reaches the driver, which answers a length beyond its default buffer in the
// same way.
int stm_transfer(const uint8_t *tx, uint8_t *rx, int32_t length);

// The same with a descriptor whose buffers the caller has set; only its length changes.
int stm_transfer(spi_ioc_transfer &descriptor, int32_t length);

// Zeroes a descriptor and points it at tx_buffer and rx_buffer.
void link_prepare_transfer(spi_ioc_transfer &descriptor);

// The exchanges of which the conversation with the application consists. Each returns what
// stm_transfer returns and leaves the bytes received at the start of rx_buffer.
int link_poll_data(int32_t bytes); // sends 'D's; the bytes received show whether an answer is ready
int link_fetch_pair();             // sends two zeros to fetch a 16-bit number
int link_fetch(int32_t length);    // sends filler, with which tx_buffer is filled

// The same, but the bytes go after the held bytes that rx_buffer already contains. More than it has
// room for is refused like any length that does not fit.
int link_fetch_behind(int32_t held, int32_t length);

// Clears both buffers.
void link_clear_buffers();

// Clears the bytes of both buffers in which a command is built and answered.
void link_clear_command_bytes();

} // namespace stm
