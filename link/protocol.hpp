// The named numbers of the wire protocol. Those that front ends need are in stm_com_funcs.h, the
// offsets within a frame where it is built. Multi-byte numbers are little-endian.
#pragma once

#include <cstdint>

namespace stm
{

// The device and its clock. SPI mode and word size are the device's own.
constexpr char STM_SPI_DEVICE[] = "/dev/spidev1.0";
constexpr uint32_t STM_SPI_SPEED_HZ = 6'000'000;

// Sizes of the link's buffers, in bytes.
constexpr int32_t STM_BUFFER_SIZE = 4096; // the most that the kernel's driver takes by default
constexpr int32_t STM_MESSAGE_SIZE = 255; // one text for the output callback, NUL included
constexpr int32_t STM_TX_SHORT_SIZE = 13; // request frames of the read-outs
constexpr int32_t STM_RX_SHORT_SIZE = 10;
constexpr int32_t STM_COMMAND_BYTES = 48; // cleared in both buffers before a command

// Bytes that the host sends.
constexpr uint8_t STM_SYNC_FILL = 0x66;            // filler, and the synchronising exchange
constexpr uint8_t STM_POLL_ACK = 0x33;             // '3' fetches the status of a frame
constexpr uint8_t STM_POLL_DATA = 0x44;            // 'D' fetches an answer byte
constexpr uint8_t STM_CMD_START_BOOTLOADER = 0x81; // frame: boot loader; byte: load firmware
constexpr uint8_t STM_CMD_LOAD_BOOTER = 0x82;      // frame: load a boot loader
constexpr uint8_t STM_CMD_RESET = 0x83;            // byte: start the application
constexpr uint8_t STM_CMD_STATE = 0x23;            // '#', frame: ask for the running mode
constexpr uint8_t STM_CMD_VERSION = 0x91;          // byte: ask for the boot-loader version

// Command frame: command, six parameter bytes, end byte.
constexpr int32_t STM_FRAME_BYTES = 8;
constexpr int32_t STM_PARAM_BYTES = 6;
constexpr uint8_t STM_FRAME_END = 0xAA;

// Commands that carry an address. The codes of settings and queries are in their tables.
constexpr uint8_t STM_CMD_WRITE_BYTE = 0x61; // 'a'
constexpr uint8_t STM_CMD_READ_BYTE = 0x62;  // 'b'
constexpr uint8_t STM_CMD_READ_RANGE = 0x75; // 'u'
constexpr uint16_t STM_TOP_BLOCK_ADDR = 0xFFCF;
constexpr int32_t STM_TOP_BLOCK_WORDS = 12;

// Requests of the read-outs; those for records are in the formats of the records.
constexpr uint8_t STM_CMD_RAW_BYTES = 0x01;
constexpr uint8_t STM_CMD_ADC_SAMPLES = 0xC4;
constexpr uint8_t STM_RECORD_MARKER = 0x55; // 'U', the first byte of each record

// Status bytes with which the co-processor answers STM_POLL_ACK. As an answer to STM_POLL_DATA,
// STM_ACK means that an answer is ready. Any from 0xF0 on ends a wait for an acknowledge.
constexpr uint8_t STM_ACK = 0x55; // 'U'
constexpr uint8_t STM_ERR_CHECKSUM = 0xF0;
constexpr uint8_t STM_ERR_ADDRESS = 0xF1;
constexpr uint8_t STM_BUS_INACTIVE = 0xFF; // nothing drives the line
constexpr uint8_t STM_STATUS_ERROR_BITS = 0xF0;

// Pauses in microseconds, limits in polls.
constexpr uint32_t STM_ANSWER_PAUSE_US = 100'000;  // between a query and its answer
constexpr uint32_t STM_ACK_POLL_US = 10'000;       // before each poll for an acknowledge
constexpr uint32_t STM_ACK_AFTER_POLL_US = 1'000;  // and after it
constexpr int STM_ACK_POLL_LIMIT = 1501;           // the last of them can no longer succeed
constexpr uint32_t STM_PARAM_POLL_US = 1'000;      // after each poll for an answer
constexpr int STM_PARAM_POLL_LIMIT = 3001;         // the last answer is not checked
constexpr int STM_BLOCK_POLL_LIMIT = 301;          // polls for a block follow without pauses
constexpr uint32_t STM_BLOCK_TIMEOUT_US = 500'000; // after that many in vain

// Image download.
constexpr int32_t STM_BLOCK_SIZE = 1024;
constexpr int32_t STM_FRAME_SIZE = 1034;

} // namespace stm
