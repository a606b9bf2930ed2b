/*
 * stm_com_funcs: the host's side of the conversation with the STM32 co-processor.
 *
 * The co-processor is an SPI slave behind /dev/spidev1.0. SPI is full duplex, so it can only answer
 * while the host clocks bytes: every answer is fetched by sending a poll byte and reading the byte
 * that came back in the same exchange.
 *
 * Rules for every operation
 *
 *   Order       stm_open once, then any number of operations one after another, then stm_close.
 *               An operation does not check that the link is open.
 *   State       one link per process, in static memory. No operation allocates; none may run while
 *               another one does, in another thread or in a signal handler.
 *   Arguments   the operation's own come first, then the poll callback, then the output callback.
 *               Neither callback may be null, not even where it is said to be unused.
 *   Blocking    an operation runs in its caller's thread and waits by polling and usleep; the
 *               longest wait is stated with each that waits. Exchange times at 6 MHz come on top:
 *               1.3 us a byte, 1.4 ms for a download frame.
 *   Results     where nothing else is stated, 0 or a positive value is success, -1 is failure; 0
 *               can also mean that the operator stopped a wait.
 *   Reports     there are two channels. A failing open, clock setting or exchange goes to standard
 *               error through perror, with a fixed text. Everything else goes to the output
 *               callback.
 *   Numbers     multi-byte numbers travel little-endian where nothing else is said.
 */
#ifndef STM_COM_FUNCS_H
#define STM_COM_FUNCS_H

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C programs include this file */
#include <stdio.h>  /* NOLINT(modernize-deprecated-headers) */

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes in the line that a poll callback may fill, the terminating NUL included. */
#define STM_LINE_SIZE 50

/* The line with which a poll callback stops a running wait or read-out. */
#define STM_STOP_LINE "s\n"

/* Where the images begin in the co-processor's flash. */
#define STM_FLASH_BOOTER_ADDR   0x08000000u /* boot loader: the first 16 KiB of the flash */
#define STM_FLASH_FIRMWARE_ADDR 0x08004000u /* application firmware: behind the boot loader */

/*
 * Input poll: asks the front end whether the operator has typed a line.
 *
 * line: STM_LINE_SIZE characters, owned by the module and valid during the call only.
 *
 * Returns non-zero after it has placed a NUL-terminated line there, else 0. The line STM_STOP_LINE
 * ends the running wait at once; every other line is ignored.
 */
typedef int (*StmPollFn)(char *line);

/*
 * Output: takes one text for the operator.
 *
 * text: NUL-terminated, valid during the call only; it carries its own newlines.
 * more: 0 for a complete message or the last piece of an output, 1 for data that may be followed
 *       by more of the same output.
 *
 * What it returns matters only where an operation hands it on as its own result.
 */
typedef int (*StmOutputFn)(const char *text, int more);

/* ---------------------------------------------------------------------------------------- link */

/*
 * Opens /dev/spidev1.0 for reading and writing, sets its clock to 6 MHz and synchronises the link
 * with stm_sync_transfer. SPI mode and word size stay as the device has them.
 *
 * A device that cannot be opened is reported as "Error: stm_com_func: Can't open device \n" through
 * perror, and the process exits with status 1. A refused clock is reported as
 * "Error: writing speed failed\n"; the link then runs at the device's own clock.
 *
 * Calling it again opens the device again and forgets the first descriptor without closing it.
 */
void stm_open(void);

/*
 * Makes one exchange of 4096 bytes of 0x66, more than any frame the co-processor could be waiting
 * for. Nobody looks at what comes back; the transmit buffer holds 0x66 throughout afterwards.
 *
 * A failing exchange is reported as "Error: stm_com_funcs: SPI datatransfer\n" through perror; the
 * caller is not told.
 */
void stm_sync_transfer(void);

/*
 * Closes the device. The descriptor keeps its number: a second call closes that number again, and
 * a call before stm_open closes descriptor 0. Nothing happens after an open that failed.
 */
void stm_close(void);

/* ------------------------------------------------------------------------ single-byte commands */

/*
 * Switches the co-processor into its boot loader.
 *
 * Sends 0x81, six zero bytes and 0xAA in one exchange. No answer is fetched.
 *
 * Returns 0, or -1 after a failing exchange, reported as "SPI command" through perror.
 */
int stm_start_bootloader(void);

/*
 * Leaves the boot loader and starts the application.
 *
 * Sends the single byte 0x83. No answer is fetched.
 *
 * Returns 0, or -1 after a failing exchange, reported as "SPI command" through perror.
 */
int stm_reset(void);

/*
 * Asks the co-processor for one byte.
 *
 * Sends the command, waits 100 ms, then sends 'D' (0x44) and takes the byte that comes back. The
 * command '#' (0x23) travels as a frame of eight bytes (command, six zero bytes, 0xAA), every
 * other command as a single byte.
 *
 * command: 0x23 asks for the running mode, 0x91 for the boot-loader version.
 * answer:  receives the byte; untouched on failure.
 *
 * Blocks for 100 ms at most. Returns 0 with the answer stored, or -1 after a failing exchange,
 * reported through perror as "SPI command" (the command) or "read data" (the answer).
 */
int stm_query_byte(uint8_t command, uint8_t *answer);

/*
 * Prints the version of the boot loader.
 *
 * Asks for byte 0x91 with stm_query_byte. The co-processor sends the minor number only; the major
 * number is always 1. Output, flag 0: "Booter Version 1.%d\n", or "Booter Version unknown\n" for
 * the answer 0 and after a failed query.
 *
 * poll: unused.
 *
 * Blocks for 100 ms at most. Returns what the output callback returns.
 */
int stm_print_booter_version(StmPollFn poll, StmOutputFn output);

/*
 * Prints the mode that the co-processor runs in: 0 unknown, 1 boot loader, 2 application.
 *
 * Asks for byte 0x23 with stm_query_byte. Output, flag 0: the number and a newline; 0 also after
 * a failed query.
 *
 * poll: unused.
 *
 * Blocks for 100 ms at most. Returns what the output callback returns.
 */
int stm_print_state(StmPollFn poll, StmOutputFn output);

/* ----------------------------------------------------------------------- acknowledge handshake */

/*
 * Waits until the co-processor has dealt with the frame sent before.
 *
 * Polls with '3' (0x33) about every 11 ms until the status byte is 0x55 or one of 0xF0 to 0xFF, at
 * most 1501 times.
 *
 * Returns
 *    1  acknowledged: 0x55, and likewise 0xF2 to 0xFE, within the first 1500 polls;
 *    0  the poll callback delivered STM_STOP_LINE; the status of that poll is not looked at;
 *   -1  a failing exchange, reported as "SPI wait for ACK" through perror, or one of these texts
 *       through the output callback, flag 0: "SPI Bus inactive\n" (0xFF), "Checksum error\n"
 *       (0xF0), "Address error\n" (0xF1), each also in the 1501st poll, or "SPI timeout\n" (none of
 *       them in 1501 polls and no acknowledge in 1500).
 *
 * Blocks for about 16.5 s at most; ends early through the poll callback, which is called once a
 * poll.
 */
int stm_wait_for_ack(StmPollFn poll, StmOutputFn output);

/* ------------------------------------------------------------------------------------ checksum */

/*
 * Computes the one checksum of the link, CRC-16/GENIBUS: polynomial 0x1021, start value 0xFFFF,
 * most significant bit first, result inverted. "123456789" gives 0xD64E, no bytes give 0x0000.
 * On the wire it travels low byte first.
 *
 * data:   length bytes; may be null if length is 0.
 */
uint16_t stm_crc16(const uint8_t *data, uint16_t length);

/* ------------------------------------------------------------------------------ image download */

/*
 * Returns the size of a stream in bytes, as the low 32 bits of its end position, or -1 for a null
 * stream or one that has no position (a pipe). A stream with a position keeps it, and has its
 * end-of-file flag cleared.
 */
int32_t stm_file_size(FILE *stream);

/*
 * Writes an image into the co-processor's flash.
 *
 * Sends the mode command, a header frame with address and size, then the file in blocks of up to
 * 1024 bytes, and waits with stm_wait_for_ack after each of them. The mode command is the byte 0x81
 * for the firmware, and for the boot loader a frame of eight bytes: 0x82, the six bytes that the
 * transmit buffer holds there (0x66 after stm_open), 0xAA. Every other frame has 1034 bytes:
 *
 *      0  checksum, stm_crc16 over bytes 2 to 1033
 *      2  flash address, 32 bits; the start address in every frame
 *      6  header: size of the file; block: number of its bytes, 1 to 1024; 32 bits
 *     10  header: zeros; block: its bytes, then zeros; both up to byte 1023
 *   1024  the block's last ten bytes, as far as it has so many; the others are not cleared and
 *         repeat what was last sent there (0x66 after stm_open)
 *
 * file:    not null, open in binary mode at its start; left open, at the place where reading ended.
 *          A read that yields nothing ends the file, be it by an error or by its end.
 * address: STM_FLASH_FIRMWARE_ADDR or STM_FLASH_BOOTER_ADDR. Any other address makes an exchange of
 *          no bytes in place of the mode command and is sent in the frames as it is.
 *
 * Output, flag 0:
 *
 *     "Filesize: %d Byte\n"                                  before the header is built
 *     "Transmitting information header (size: 0x%04hX, checksum: 0x%04hX)\n"
 *                                                            before the header is sent; the size's
 *                                                            low 16 bits
 *     "Transmitting datablock %d (size: 0x%04hX, checksum: 0x%04hX)\n"
 *                                                            after each block, numbered from 0
 *     "Transmitted data: %ld Byte\n"                         at the end of the file
 *
 * The last text gives the number of bytes whose waits did not fail. The image is in the flash if
 * that number is the file's size, and the operator stopped no wait; there is no other sign of it.
 *
 * The first failure ends the download; nothing is retried. Failing exchanges are reported through
 * perror as "SPI command", "SPI send header information" or "SPI send data"; a missing acknowledge
 * by stm_wait_for_ack and then, for a frame, as "Checksum sent: %X\n" to the output callback.
 *
 * STM_STOP_LINE ends only the wait in which it is typed, as if the co-processor had acknowledged.
 *
 * Blocks for one wait more than there are frames: 11 ms each at least, about 16.5 s at most.
 */
void stm_download_image(FILE *file, uint32_t address, StmPollFn poll, StmOutputFn output);

#ifdef __cplusplus
}
#endif

#endif
