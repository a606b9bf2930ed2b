/*
 * stm_com_funcs: the host's side of the conversation with the STM32 co-processor.
 *
 * The co-processor is an SPI slave behind /dev/spidev1.0. SPI is full duplex, so it can only answer
 * while the host clocks bytes: every answer is fetched by sending a poll byte and reading the byte
 * that comes back in the same exchange.
 *
 * Rules for every operation
 *
 *   Order       stm_open once, then any number of operations one after another, then stm_close.
 *               No operation checks that the link is open.
 *   State       one link per process, in static memory. No operation allocates memory; none may run
 *               while another one does, in another thread or in a signal handler.
 *   Arguments   the operation's own come first, then the poll callback, then the output callback.
 *               Neither callback may be null, even where it is documented as unused.
 *   Blocking    an operation runs in its caller's thread and waits by polling and usleep; the
 *               longest wait is stated for each operation that waits. Exchange times at 6 MHz are
 *               not included: 1.3 us per byte, 1.4 ms for a download frame.
 *   Results     unless stated otherwise, 0 or a positive value is success and -1 is failure; 0 can
 *               also mean that the operator stopped a wait.
 *   Reports     there are two channels. A failing system call (open, clock, exchange, shared
 *               memory) is reported on standard error through perror, with a fixed text. Everything
 *               else goes to the output callback, except for a few remarks that stm_stream_readout
 *               writes to standard error.
 *   Numbers     multi-byte numbers travel little-endian unless stated otherwise.
 */
#ifndef STM_COM_FUNCS_H
#define STM_COM_FUNCS_H

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C programs include this file */
#include <stdio.h>  /* NOLINT(modernize-deprecated-headers) */

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes in the line that a poll callback may fill, including the terminating NUL. */
#define STM_LINE_SIZE 50

/* The line with which a poll callback stops a running wait or read-out. */
#define STM_STOP_LINE "s\n"

/* Where the images begin in the co-processor's flash. */
#define STM_FLASH_BOOTER_ADDR   0x08000000u /* boot loader: the first 16 KiB of the flash */
#define STM_FLASH_FIRMWARE_ADDR 0x08004000u /* application firmware: after the boot loader */

/* Integers as the co-processor's records name them. */
typedef uint8_t stm_uint8;
typedef uint8_t stm_uint8_t;
typedef int8_t stm_int8_t;
typedef uint16_t stm_uint16_t;
typedef int16_t stm_int16_t;
typedef uint32_t stm_uint32_t;
typedef int32_t stm_int32_t;

/* How a read-out shows what it reads; passed as int. */
typedef enum {
    READOUT_HEX = 1,  /* bytes, each as "0x%02X " */
    READOUT_TEXT = 2, /* a line for each value, with its label */
    READOUT_CSV = 3   /* a ';' after each value; records after a header with the field names */
} ReadoutMode;

/*
 * Poll callback: asks the front end whether the operator has typed a line.
 *
 * line: STM_LINE_SIZE characters, owned by the module and valid only during the call.
 *
 * Returns non-zero if it has stored a NUL-terminated line there, else 0. The line STM_STOP_LINE
 * ends the current wait at once; any other line is ignored.
 */
typedef int (*StmPollFn)(char *line);

/*
 * Output callback: takes one text for the operator.
 *
 * text: NUL-terminated, valid only during the call; it contains its own newlines.
 * more: 0 for a complete message or the last piece of an output, 1 for data that may be followed
 *       by more of the same output.
 *
 * The return value matters only where an operation returns it as its own result.
 */
typedef int (*StmOutputFn)(const char *text, int more);

/* ---------------------------------------------------------------------------------------- link */

/*
 * Opens /dev/spidev1.0 for reading and writing, sets its clock to 6 MHz and synchronises the link
 * with stm_sync_transfer. SPI mode and word size are left unchanged.
 *
 * If the device cannot be opened, "Error: stm_com_func: Can't open device \n" is reported through
 * perror, and the process exits with status 1. A refused clock is reported as
 * "Error: writing speed failed\n"; the link then runs at the device's own clock.
 *
 * A second call opens the device again and forgets the first descriptor without closing it.
 */
void stm_open(void);

/*
 * Makes one exchange of 4096 bytes of 0x66, more than any frame the co-processor could be waiting
 * for. The bytes received are ignored; the transmit buffer is filled with 0x66 afterwards.
 *
 * A failing exchange is reported as "Error: stm_com_funcs: SPI datatransfer\n" through perror, but
 * not to the caller.
 */
void stm_sync_transfer(void);

/*
 * Closes the device. The descriptor keeps its number: a second call closes that number again, and
 * a call before stm_open closes descriptor 0. After a failed open, nothing happens.
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
 * command '#' (0x23) is sent as a frame of eight bytes (command, six zero bytes, 0xAA), every
 * other command as a single byte.
 *
 * command: 0x23 asks for the running mode, 0x91 for the boot-loader version.
 * answer:  receives the byte; unchanged on failure.
 *
 * Blocks for 100 ms at most. Returns 0 with the answer stored, or -1 after a failing exchange,
 * reported through perror as "SPI command" (the command) or "read data" (the answer).
 */
int stm_query_byte(uint8_t command, uint8_t *answer);

/*
 * Prints the version of the boot loader.
 *
 * Queries it with stm_query_byte and the command 0x91. The co-processor sends only the minor
 * number; the major number is always 1. Output, flag 0: "Booter Version 1.%d\n", or "Booter Version
 * unknown\n" for the answer 0 and after a failed query.
 *
 * poll: unused.
 *
 * Blocks for 100 ms at most. Returns what the output callback returns.
 */
int stm_print_booter_version(StmPollFn poll, StmOutputFn output);

/*
 * Prints the mode that the co-processor is running in: 0 unknown, 1 boot loader, 2 application.
 *
 * Queries it with stm_query_byte and the command 0x23. Output, flag 0: the number and a newline; 0
 * also after a failed query.
 *
 * poll: unused.
 *
 * Blocks for 100 ms at most. Returns what the output callback returns.
 */
int stm_print_state(StmPollFn poll, StmOutputFn output);

/* ----------------------------------------------------------------------- acknowledge handshake */

/*
 * Waits until the co-processor has processed the last frame.
 *
 * Polls with '3' (0x33) about every 11 ms until the status byte is 0x55 or one of 0xF0 to 0xFF, at
 * most 1501 times.
 *
 * Returns
 *    1  acknowledged: 0x55 or 0xF2 to 0xFE within the first 1500 polls;
 *    0  the poll callback delivered STM_STOP_LINE; the status of that poll is not checked;
 *   -1  a failing exchange, reported as "SPI wait for ACK" through perror, or one of these texts
 *       through the output callback, flag 0: "SPI Bus inactive\n" (0xFF), "Checksum error\n"
 *       (0xF0), "Address error\n" (0xF1), each also in the 1501st poll, or "SPI timeout\n" (none of
 *       them in 1501 polls and no acknowledge in 1500).
 *
 * Blocks for about 16.5 s at most; the poll callback, called once per poll, can end it early.
 */
int stm_wait_for_ack(StmPollFn poll, StmOutputFn output);

/* -------------------------------------------------------------------------- parameter commands */

/*
 * Sends a command to the application and fetches its answer. All settings and queries use it.
 *
 * Sends the code, the six parameter bytes and 0xAA in one exchange, polls with 'D' (0x44) every
 * millisecond until 0x55 comes back, at most 3001 times, then fetches two bytes, low byte first.
 * Their meaning depends on the command: a result, or the length of a reply that is fetched with one
 * more exchange of that length.
 *
 * params: six bytes; only read.
 *
 * Returns
 *    0 to 65535  the answer.
 *    0           also after the poll callback delivered STM_STOP_LINE, which takes precedence over
 *                a 0x55 in the same poll; the answer is not fetched. This cannot be distinguished
 *                from an answer of 0.
 *   -1           a failing exchange, after which nothing more is sent. Reported through perror as
 *                "Error stm_com_funcs: SPI command \n" (the frame),
 *                "Error stm_com_funcs: SPI wait for ACK\n" (a poll) or
 *                "Error stm_com_funcs: SPI datasize \n" (the answer).
 *
 * If no 0x55 comes in 3000 polls, "Error stm_com_funcs: SPI timeout\n" goes to the output callback,
 * flag 0; the answer to the 3001st poll is not checked. The two bytes are fetched and returned
 * anyway.
 *
 * Blocks for about 3 s at most; the poll callback, called once per poll, can end it early.
 */
int32_t stm_param_command(uint8_t code, const uint8_t params[6], StmPollFn poll,
                          StmOutputFn output);

/*
 * stm_param_command with the parameter bytes p0, p1, p2, p3, 0, 0. Results, reports and blocking
 * are the same.
 */
int32_t stm_command(uint8_t code, uint8_t p0, uint8_t p1, uint8_t p2, uint8_t p3, StmPollFn poll,
                    StmOutputFn output);

/*
 * stm_command with the code in the name and all parameters 0. The co-processor's firmware defines
 * what these six do; the host sends them and returns the answer.
 */
int32_t stm_command_r(StmPollFn poll, StmOutputFn output); /* 0x72 'r' */
int32_t stm_command_q(StmPollFn poll, StmOutputFn output); /* 0x71 'q' */
int32_t stm_command_c(StmPollFn poll, StmOutputFn output); /* 0x63 'c' */
int32_t stm_command_d(StmPollFn poll, StmOutputFn output); /* 0x64 'd' */
int32_t stm_command_3(StmPollFn poll, StmOutputFn output); /* 0x33 '3' */
int32_t stm_command_2(StmPollFn poll, StmOutputFn output); /* 0x32 '2' */

/*
 * Writes one byte to the co-processor's memory.
 *
 * stm_command with the code 'a' (0x61) and the parameters address low, address high, value, 0.
 * Results, reports and blocking are the same.
 */
int32_t stm_write_byte(uint16_t address, uint8_t value, StmPollFn poll, StmOutputFn output);

/*
 * Writes the characters of a text, without its NUL, one after another to the same address, each
 * with its own stm_write_byte. The answers are ignored, so neither a failure nor the operator's
 * stop prevents the remaining characters from being sent.
 *
 * text: shorter than 256 characters. A longer one is sent over and over again, without end.
 *
 * Blocks for about 3 s per character at most.
 */
void stm_write_string(uint16_t address, const char *text, StmPollFn poll, StmOutputFn output);

/*
 * Placeholder for an operation that a front end offers but the module lacks. Sends nothing and
 * passes "not implemented\n" to the output callback, flag 0.
 */
void stm_not_implemented(int unused1, int unused2, StmOutputFn output);

/* ------------------------------------------------------------------------------------ checksum */

/*
 * Computes the link's only kind of checksum, CRC-16/GENIBUS: polynomial 0x1021, start value 0xFFFF,
 * most significant bit first, result inverted. "123456789" gives 0xD64E, no bytes give 0x0000.
 * On the wire it travels low byte first.
 *
 * data:   length bytes; may be null if length is 0.
 */
uint16_t stm_crc16(const uint8_t *data, uint16_t length);

/* ----------------------------------------------------------------------------- numbers to text */

/*
 * Writes a number in digits 0 to 9 and a to z, with a leading '-' if it is negative, and a NUL.
 *
 * buffer: large enough for the text; 34 characters suffice for any number in any base.
 * base:   2 to 36; any other gives an empty text.
 *
 * Returns the buffer.
 */
char *stm_itoa(int32_t value, char *buffer, int32_t base);
char *stm_ltoa(long value, char *buffer, int32_t base); /* the low 32 bits, as a signed number */
char *stm_utoa(uint32_t value, char *buffer, int32_t base);

/* ------------------------------------------------------------------------------ image download */

/*
 * Returns the size of a stream in bytes, as the low 32 bits of its end position, or -1 for a null
 * stream or one that has no position (a pipe). The position is restored, and the end-of-file flag
 * cleared.
 */
int32_t stm_file_size(FILE *stream);

/*
 * Writes an image to the co-processor's flash.
 *
 * Sends the mode command, a header frame with address and size, then the file in blocks of up to
 * 1024 bytes, and waits with stm_wait_for_ack after each of these. The mode command is the byte
 * 0x81 for the firmware, and for the boot loader a frame of eight bytes: 0x82, the six bytes that
 * the transmit buffer holds there (0x66 after stm_open, 0 after a read-out that was stopped), 0xAA.
 * Every other frame has 1034 bytes:
 *
 *      0  checksum, stm_crc16 over bytes 2 to 1033
 *      2  flash address, 32 bits; the start address in every frame
 *      6  header: size of the file; block: number of its bytes, 1 to 1024; 32 bits
 *     10  header: zeros; block: its bytes, then zeros; both up to byte 1023
 *   1024  the bytes of a block beyond its first 1014; the rest is not cleared and repeats what was
 *         last sent there (0x66 after stm_open or a query's reply, 0 after a read-out that was
 *         stopped)
 *
 * file:    not null, open in binary mode at its start; left open at the place where reading ended.
 *          A read that yields nothing ends the file, whether by an error or at its end.
 * address: STM_FLASH_FIRMWARE_ADDR or STM_FLASH_BOOTER_ADDR. With any other address, the mode
 *          command is replaced by an exchange of no bytes, and the frames carry the address as it
 *          is.
 *
 * Output, flag 0:
 *
 *     "Filesize: %d Byte\n"                                  before the header is built
 *     "Transmitting information header (size: 0x%04hX, checksum: 0x%04hX)\n"
 *                                                            before the header is sent; low 16 bits
 *                                                            of the size
 *     "Transmitting datablock %d (size: 0x%04hX, checksum: 0x%04hX)\n"
 *                                                            after each block, numbered from 0
 *     "Transmitted data: %ld Byte\n"                         at the end of the file
 *
 * The last text gives the number of bytes whose waits did not fail. The image is in the flash if
 * that number is the file's size and the operator stopped no wait; there is no other indication.
 *
 * The first failure ends the download; nothing is retried. Failing exchanges are reported through
 * perror as "SPI command", "SPI send header information" or "SPI send data". A missing acknowledge
 * is reported by stm_wait_for_ack and then, for a frame, as "Checksum sent: %X\n" through the
 * output callback.
 *
 * STM_STOP_LINE ends only the wait in which it is typed, as if the co-processor had acknowledged.
 *
 * Blocks for one wait more than there are frames, each of at least 11 ms and at most about 16.5 s.
 */
void stm_download_image(FILE *file, uint32_t address, StmPollFn poll, StmOutputFn output);

/* ------------------------------------------------------------------------------------ settings */

/*
 * Common to all stm_set_ operations
 *
 * The host tests the first argument. If it is out of range, nothing is sent, and the operation's
 * error text goes to the output callback, flag 0, with the whole argument for %d. Depending on the
 * operation, the low 8 bits, the low 16 bits or the whole argument is tested. A test of the low
 * bits ignores the high bits: 256 then passes as channel 0. A test of the whole argument refuses
 * every negative one.
 *
 * Arguments in range are sent in the six parameter bytes of one stm_param_command: the channel in
 * one byte, 16-bit values in two and 32-bit values in four, low byte first, then zeros.
 *
 * Returns the result of stm_param_command: the co-processor's answer from 0 to 65535, 0 after the
 * operator's stop, -1 after a failing exchange. For an argument out of range it returns what the
 * output callback returned; a front end that must distinguish the two returns a number below -1
 * there.
 *
 * Reports as stm_param_command does. Blocks for about 3 s at most. The co-processor's firmware
 * defines what a setting means, and in which unit.
 */

/*
 * Converts a number to hundredths, as settings send it: value * 100 in single precision, truncated.
 * Returns 0 for NaN and for a product below 0, 4294967295 for a product of 2^32 or more.
 */
uint32_t stm_scale100(float value);

/*
 * Set one or two values of an ADC channel. Codes 0xC5, 0xC2, 0xC6 and 0xC3. Each value is sent as
 * the low 16 bits of stm_scale100: 12.345 as 1234, and 700 as 4464, because values are not tested.
 *
 * channel: 0 to 1 for the adc2 operations, else 0 to 7; the low 8 bits are tested. Error text for
 *          both ranges: "Wrong ADC channel (%d)\n".
 */
int32_t stm_set_adc2_value(int channel, float value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_adc_value(int channel, float value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_adc2_value_pair(int channel, float first, float second, StmPollFn poll,
                                StmOutputFn output);
int32_t stm_set_adc_value_pair(int channel, float first, float second, StmPollFn poll,
                               StmOutputFn output);

/*
 * Set a 32-bit value of a channel. Codes 0x9C and 0x9B.
 *
 * channel: tested as a whole. BE: 0 to 1, error text "Wrong BE channel (%d)\n". ADC: 0 to 7,
 * error text "Wrong ADC channel (%d)\n".
 */
int32_t stm_set_be_u32(int channel, uint32_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_adc_u32(int channel, uint32_t value, StmPollFn poll, StmOutputFn output);

/*
 * Set a 16-bit value of a channel. The name ends in the code.
 *
 * channel: tested as a whole. BE: 0 to 1, error text "Wrong BE channel (%d)\n". ADC: 0 to 7,
 * error text "Wrong ADC channel (%d)\n". Others: 0 to 1, error text "Wrong channel (%d)\n".
 */
int32_t stm_set_be_word_97(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_be_word_98(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_adc_word_54(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_adc_word_55(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_channel_word_56(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_channel_word_57(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_channel_word_58(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_channel_word_59(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_channel_word_5A(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
int32_t stm_set_channel_word_5B(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);

/*
 * Sets the interpolation mode, which is sent as one byte. Code 0x53.
 *
 * mode: 0 to 3; tested as a whole. Error text "Wrong interpolation mode (%d)\n".
 */
int32_t stm_set_interpolation_mode(int mode, StmPollFn poll, StmOutputFn output);

/*
 * Sets the ADC sample skip, as a 16-bit value. Code 0x52.
 *
 * skip: 3 to 32000; tested as a whole. Error text "Wrong ADC sampleskip (%d)\n".
 */
int32_t stm_set_adc_sampleskip(int skip, StmPollFn poll, StmOutputFn output);

/*
 * Sets the ADC sample time, as a 16-bit value. Code 0x51.
 *
 * time: 0 to 32000; the low 16 bits are tested and sent, so that 65636 passes as 100. Error text
 *       "Wrong ADC sampletime (%d)\n".
 */
int32_t stm_set_adc_sampletime(int time, StmPollFn poll, StmOutputFn output);

/* ------------------------------------------------------------------------------------- queries */

/*
 * Common to all stm_query_ operations below, and to the reads by address after them
 *
 * One stm_command gives the length N of the reply. The reply is fetched with one more exchange:
 * the transmit buffer is filled with 0x66, and N bytes of it are sent.
 *
 * If the exchange of the reply fails, "SPI datatransfer" is reported through perror and nothing is
 * printed; a length above 4096 is treated in the same way, without an exchange. If an exchange of
 * stm_command fails, there is no length, and therefore neither a reply nor a second report.
 *
 * After a time-out the operation continues with the length that was fetched anyway. After the
 * operator's stop, and for a length of 0, it continues with an empty reply, which is fetched and
 * printed like any other: a number is 0, a text is empty, and a first byte is the byte received
 * last, which is 0 for a length of 0 and that of the poll after a stop.
 *
 * Texts are built in the operation's own buffers; flag 0 unless stated otherwise. Each stm_command
 * blocks for about 3 s at most.
 */

/* Print the first byte of the reply as "%d\n", 0 to 255. The name ends in the code. */
void stm_query_byte_value_73(StmPollFn poll, StmOutputFn output);
void stm_query_byte_value_C7(StmPollFn poll, StmOutputFn output);
void stm_query_byte_value_05(StmPollFn poll, StmOutputFn output);
void stm_query_byte_value_04(StmPollFn poll, StmOutputFn output);

/*
 * Print the reply as a signed number of 32 bits ("%ld\n") or 16 bits ("%d\n"), low byte first.
 * Missing bytes count as 0, surplus ones are ignored. Codes 0xA0 and 0x03.
 */
void stm_query_long(StmPollFn poll, StmOutputFn output);
void stm_query_short(StmPollFn poll, StmOutputFn output);

/*
 * Print the reply as a text, followed by a newline; only its first 126 bytes if it is longer. After
 * a NUL in it, the output callback sees nothing, not even the newline. The name ends in the code.
 */
void stm_query_text_21(StmPollFn poll, StmOutputFn output);
void stm_query_text_22(StmPollFn poll, StmOutputFn output);

/*
 * Print a number of a channel, as stm_query_long (32 bits) and stm_query_short (16 bits) do. The
 * channel is sent as the first parameter byte; the name ends in the code.
 *
 * channel: tested as a whole; if it is out of range, nothing is sent, and the error text goes to
 * the output callback.
 *
 *     code             bits   channels   error text
 *     06 07 99          32     0 to 7    "Wrong ADC channel (%d)\n"
 *     9A                32     0 to 7    "Wrong BE channel (%d)\n"
 *     08 to 0D          16     0 to 1    "Wrong channel (%d)\n"
 *     95 96             16     0 to 1    "Wrong BE channel (%d)\n"
 */
void stm_query_channel_06(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_07(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_08(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_09(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_0A(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_0B(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_0C(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_0D(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_95(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_96(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_99(int channel, StmPollFn poll, StmOutputFn output);
void stm_query_channel_9A(int channel, StmPollFn poll, StmOutputFn output);

/* --------------------------------------------------------------------------- reads by address */

/*
 * Reads the byte at an address of the co-processor's memory and prints it as a character, "%c\n".
 *
 * Code 'b' (0x62) with the parameters address low, address high, 0, 0. Only the first byte of the
 * reply is used.
 *
 * Returns the byte, 0 to 255; also 255 if there is no reply.
 */
int32_t stm_read_char(uint16_t address, StmPollFn poll, StmOutputFn output);

/*
 * The same, printed as a number, "%d\n". Returns the byte, 0 to 255, or -1 if there is no reply.
 */
int16_t stm_read_byte(uint16_t address, StmPollFn poll, StmOutputFn output);

/*
 * Reads four bytes from an address on with stm_read_byte, which prints a line for each, and returns
 * them as one number, with the first byte as the most significant. Addresses wrap from 0xFFFF to 0.
 *
 * Any byte without a reply, and all bytes before it, are 0xFF in the result. The operator's stop
 * ends only the wait for one byte; the byte that came back with the poll then takes its place.
 *
 * Blocks for about 12 s at most.
 */
uint32_t stm_read_u32_be(uint16_t address, StmPollFn poll, StmOutputFn output);

/*
 * Reads the 48 bytes from 0xFFCF to 0xFFFE with twelve calls of stm_read_u32_be, which print 48
 * lines.
 *
 * destination: 48 bytes; each of the twelve numbers is stored low byte first, so that each group of
 *              four bytes is reversed.
 *
 * Returns the last number. Blocks for about 145 s at most; a stop ends the wait for one byte only.
 */
uint32_t stm_read_top_block(uint8_t destination[48], StmPollFn poll, StmOutputFn output);

/*
 * Prints the text that repeated reads of one address give: sends code 'b', as in stm_read_char,
 * until a byte is 0 or 50 have been read, and prints each byte as a piece of its own with flag 1.
 * The 0 gives an empty piece. A newline follows, flag 0.
 *
 * Returns the number of bytes read, 1 to 50, or -1 at the first byte without a reply; then no
 * newline follows. Blocks for about 150 s at most; a stop ends the wait for one byte only.
 */
int32_t stm_print_text_at(uint16_t address, StmPollFn poll, StmOutputFn output);

/*
 * Prints the bytes of a range of memory: code 'u' (0x75) with the parameters address low, address
 * high, count low, count high.
 *
 * Prints count bytes of the receive buffer, whatever the length of the reply: each as "0x%X;" with
 * flag 1, the last as "0x%X\n" with flag 0; at most 4096, and nothing if count is 0. Bytes after
 * the end of the reply are those of earlier exchanges; after a stop, all of them are.
 *
 * Returns the length of the reply, or -1 if there is none.
 */
int32_t stm_dump_bytes(uint16_t address, uint16_t count, StmPollFn poll, StmOutputFn output);

/* ----------------------------------------------------------------------------------- read-outs */

/*
 * Common to all read-outs
 *
 * A request frame of eight bytes is sent: command, parameters, 0xAA. Parameters that a request does
 * not use repeat what earlier ones sent there. Then the co-processor is polled with 'D' (0x44), one
 * byte at a time and without pauses, until 0x55 comes back, at most 301 times; the answer to the
 * 301st poll is not checked. If no 0x55 comes, "SPI timeout\n" goes to the output callback, flag 0.
 *
 * A failing exchange is reported through perror, as "SPI datatransfer" unless stated otherwise, and
 * ends the operation at once. A length above 4096 is treated in the same way, without an exchange.
 *
 * STM_STOP_LINE ends the operation at once. The poll callback is called once per poll and at no
 * other time: not while something is shown, and not in a pause.
 *
 * mode: a ReadoutMode. With any other value everything is read and checked, and only errors are
 * shown.
 */

/*
 * Reads measurement records in blocks and shows them: base records of 56 bytes (request 0xC8, at
 * most 73 per block), records with a rotation time of 52 bytes (0xC1, 78), records with a
 * temperature of 48 bytes (0x02, 85).
 *
 * Requests the records wanted, but at most the number that a block can hold. When the co-processor
 * is ready, fetches the block's length (two bytes, high byte first) and the block, requests the
 * next one if more are wanted, and only then checks and shows the records of this one. After the
 * last block the link is synchronised with stm_sync_transfer. A time-out is followed by a pause of
 * 500 ms and another wait for the same block, without limit.
 *
 * count: number of records wanted. The whole records that fit into a block's length are counted,
 *        good or bad; a block shorter than a record counts as none, and the same number is
 *        requested again. For a count of 0 or less, its low 8 bits are requested and one block is
 *        still read.
 *
 * Output, flag 1: in READOUT_CSV the header, before the first request; then each record in one
 * text. The header names the fields in their order. Labelled text shows all of them as signed, CSV
 * shows rel_t and BE32_01_ext as unsigned. READOUT_CSV leaves out records whose number is 0.
 * READOUT_HEX shows the first 48 bytes of the block once for each of its records.
 *
 * The first record of a block is accepted whatever its first byte is, each further one if it starts
 * with 0x55. The records end not with the block's length but at the zeros after it, or at the end
 * of the 4096 bytes. A record whose checksum (its last two bytes, stm_crc16 over the others) is
 * wrong is reported as "Wrong checksum detected (iCurrentBlockIndex = %d)\n", flag 0, with its byte
 * offset in the block; it and the rest of the block are lost, and nothing is requested again.
 *
 * Failing exchanges of stm_read_records after the first request are reported as
 * "SPI datatransfer (1)" (a poll), "(2)" (the length), "(3)" (the block) and "(4)" (the next
 * request).
 *
 * Blocks until all blocks have arrived, however long the co-processor takes; only STM_STOP_LINE and
 * a failing exchange end it early, without the synchronisation.
 */
void stm_read_records(int count, int mode, StmPollFn poll, StmOutputFn output);
void stm_read_records_omega(int count, int mode, StmPollFn poll, StmOutputFn output);
void stm_read_records_temp(int count, int mode, StmPollFn poll, StmOutputFn output);

/*
 * Reads one frame of ADC samples and shows it.
 *
 * Request 0xC4. The frame's length comes low byte first; the frame is treated as 1203 bytes
 * whatever that length is, and missing bytes are 0: number of samples (one byte); 300 signed
 * samples of 32 bits, of which that number is shown; stm_crc16 over all bytes before it. A time-out
 * is followed by a pause of 500 ms, and the frame is fetched anyway. After the frame has been
 * shown, the link is synchronised with stm_sync_transfer.
 *
 * Output, flag 1:
 *    READOUT_CSV   the header "\"value\";\n", before the request, appended to what the link's
 *                  message buffer still holds of earlier reports and CSV texts, up to 254
 *                  characters in all; then each sample, and an empty text
 *    READOUT_TEXT  the number of samples and the first one, each further sample, the checksum
 *    READOUT_HEX   a heading and the first byte, each of the other 1202 bytes, a newline
 *
 * A wrong checksum is reported as "Wrong checksum detected (expected: %X, received: %X\n", flag 0:
 * first the frame's own, then the computed one. Then no sample is shown, and the link is not
 * synchronised.
 *
 * Blocks for about 0.5 s at most.
 */
void stm_read_adc_samples(int mode, StmPollFn poll, StmOutputFn output);

/*
 * Reads 50 bytes that have a meaning only to the co-processor's firmware, and shows them in one
 * text.
 *
 * Request 0x01 with all parameters 0, from the long buffers. The bytes are fetched without a
 * length, even after a time-out, which is not followed by a pause here. The link is not
 * synchronised.
 *
 * Output, flag 0:
 *    READOUT_TEXT  a heading, and "%d.Byte 0x%02X \n" for each of the first 48 bytes
 *    READOUT_CSV   "\"%d.Byte\";0x%02X;" for each of them, in one line without a header
 *    READOUT_HEX   a heading, and all 4096 bytes of the receive buffer, 0 after the first 50
 *
 * Blocks for at most 301 exchanges of one byte.
 */
void stm_read_raw_bytes(int mode, StmPollFn poll, StmOutputFn output);

/* --------------------------------------------------------------------------------- ring buffer */

#define RINGBUFFER_KEY       5676 /* of the System V shared-memory segment */
#define RINGBUFFER_SIZE      7704 /* bytes of the segment */
#define RINGBUFFER_SLOTS     160
#define RINGBUFFER_SLOT_SIZE 48

/* Handles: the side that an operation serves. */
#define RINGBUFFER_WRITER 1
#define RINGBUFFER_READER 2

/*
 * The record in a slot: one with a temperature, with its fields in this order, which is not the
 * wire's, and in the machine's byte order. The checksum is the wire's: stm_crc16 over bytes 0 to 45
 * as received, where Uen comes before U1e and negIe before I1.
 */
typedef struct {
    stm_uint8_t marker; /* as received: 0x55, or anything in the first record of a block */
    stm_uint8_t nr;     /* the co-processor's number; 0 is none */
    stm_uint16_t temp;
    stm_int32_t rel_t;
    stm_int32_t U1e;
    stm_int32_t U2e;
    stm_int32_t U3e;
    stm_int32_t Uen;
    stm_int32_t I1;
    stm_int32_t I2;
    stm_int32_t I3;
    stm_int32_t negIe;
    stm_int16_t BE1;
    stm_int16_t BE2;
    stm_int8_t BE;
    stm_uint8_t buffered; /* how full the co-processor's own buffer was */
    stm_uint16_t checksum;
} RingRecord;

/* The segment. Two processes use it without a lock; any field may change at any time. */
typedef struct RingBuffer {
    RingRecord slots[RINGBUFFER_SLOTS];
    uint8_t writer_open; /* 1 keeps RingBuffer_Open("w") out; no operation sets it */
    uint8_t reader_open; /* the same for "r" */
    int32_t write_index; /* slot that the next put fills, 0 to 159 */
    int32_t mark;        /* the reader's snapshot of write_index */
    int32_t read_pos;    /* the reader's current slot */
    int32_t count;       /* records put and not yet taken, 159 at most; both sides change it */
    int32_t values_left; /* the reader's snapshot of count, less what it has taken */
} RingBuffer;

/*
 * Common to all RingBuffer_ operations
 *
 * Before RingBuffer_Attach, and with a handle other than the side's own, the result is -1 or null,
 * and nothing happens. An index outside 0 to 159, which can result only from a damaged segment or
 * an n out of range, is stored as computed but never used: then the slot is null. Nothing is
 * printed, nothing blocks.
 *
 * Slots are in the segment, where the writer may overwrite them at any time.
 */

/*
 * Attaches the segment, creating it if there is none. It remains until it is removed. Each call
 * attaches it once more.
 *
 * Returns 7680 if this process created the segment, whose writer_open and reader_open are then
 * cleared; else 0. A failure is reported through perror as "shmget (ringbuffer space)",
 * "shmat (ringbuffer space)" or "shmctl (ringbuffer space)", and the process exits with status 1.
 */
int RingBuffer_Attach(void);

/*
 * Opens one side of the ring. "w" opens the writer's and sets write_index to 0; "r" opens the
 * reader's and sets mark, read_pos, values_left and also the writer's count to 0. Anything else
 * gives the writer's handle and changes nothing.
 *
 * mode: not null.
 *
 * Returns the handle, or -1 while the side's flag is 1.
 */
int RingBuffer_Open(const char *mode);

/* Clears the flag of the handle's side. Returns 1, or -1 for any other handle. */
int RingBuffer_Close(int handle);

/*
 * Writer: copies a record into the slot at write_index and advances that. A reader that lags loses
 * the oldest records.
 *
 * record: not null, and not a slot.
 *
 * Returns 1, or -1, which also means a damaged write_index; then nothing is changed.
 */
int RingBuffer_PutValue(int handle, const RingRecord *record);

/*
 * Reader: 1 if write_index differs from the mark, else 0. Exactly 160 new records look like none.
 */
int RingBuffer_NewValueAvailable(int handle);

/* Reader: takes the snapshots values_left and mark. Returns 1. */
int RingBuffer_MarkLastValue(int handle);

/*
 * Reader: goes to the slot values_left before the mark and returns it. The first record to read is
 * the one after it: of n records, at least two, n - 1 are read the first time, and after that
 * exactly the new ones, as long as each batch is read to its end and the reader does not lag.
 */
RingRecord *RingBuffer_GetFirstValue(int handle);

/*
 * Reader: advances by one slot, subtracts one from each of count and values_left that is above 0,
 * and returns the slot, or null with a damaged read_pos.
 */
RingRecord *RingBuffer_GetNextValue(int handle);

/* Reader: returns values_left. The reader continues while it is above 1. */
int RingBuffer_GetValuesLeft(int handle);

/* Reader: returns the slot that the writer fills next. */
RingRecord *RingBuffer_GetWriteSlot(int handle);

/* Reader: goes to the slot n before the mark, n from 0 to 160, and returns it. */
RingRecord *RingBuffer_SeekValue(int handle, int n);

/* Reader: returns the slot n before the mark without going there. */
RingRecord *RingBuffer_PeekValue(int handle, int n);

/* --------------------------------------------------------------------------------- live stream */

/*
 * Common to the operations on the live stream
 *
 * A request is sent from the short buffers: 0x02 and 0x55 (records with a temperature), 0xC1 and
 * 0x4E (rotation time) or 0xC8 and 0x49 (base records), what earlier requests left there, 0xAA.
 * Then 20 bytes of 'D' (0x44) are exchanged repeatedly, without pauses, until 0x55 is among those
 * that come back, at most 301 times; the last answer is not checked. After 0x55 come the block's
 * length, two bytes, high byte first, and its data, of which the rest is fetched with one more
 * exchange. The next block is requested before this one is processed.
 *
 * If no 0x55 comes, "SPI timeout\n" goes to the output callback, flag 0; after a pause of 500 ms
 * the wait starts again, without limit. A failing exchange is reported through perror and ends the
 * operation. A block longer than 4096 bytes, or shorter than what came with its header, is reported
 * as a failing exchange of its data. An empty block therefore ends the operation, except
 * stm_stream_readout, unless 0x55 was one of the header's last three bytes.
 *
 * The records of a block are found as stm_read_records finds them. One whose checksum is wrong is
 * reported as "Wrong checksum detected (crc = %X, checksum= %X)\n", flag 0, the computed one first;
 * it and the rest of its block are lost.
 *
 * The poll callback is called once per poll. Only STM_STOP_LINE and a failure end the operation,
 * at once.
 */

/*
 * Show the live stream, as stm_read_records and its variants do: base records, records with a
 * rotation time, records with a temperature.
 *
 * format: a ReadoutMode. READOUT_CSV calls the temperature "omega_t" in its header. READOUT_HEX
 *         shows the first 48 bytes of the block once for each of its records. With any other value
 *         records are checked, and only errors are shown.
 *
 * Failing exchanges are reported as "SPI datatransfer". The operation for records with a
 * temperature pauses for 20 ms after each block, and for 60 ms more after every tenth; the others
 * do not pause.
 */
void stm_continuous_readout(int format, StmPollFn poll, StmOutputFn output);
void stm_continuous_readout_omega(int format, StmPollFn poll, StmOutputFn output);
void stm_continuous_readout_temp(int format, StmPollFn poll, StmOutputFn output);

/*
 * Writes the live stream of records with a temperature into the ring. RingBuffer_Attach must have
 * been called in this process.
 *
 * Reports, flag 0: "Cannot open ringbuffer for write\n", after which nothing is sent, and
 * "Error: Writing to ringbuffer\n" for each record that cannot be put. That closes the ring but
 * does not end the operation: a damaged write_index is reported for every record. Failing exchanges
 * are reported as "SPI datatransfer". The ring is closed at the end.
 */
void stm_ringbuffer_acquire(StmPollFn poll, StmOutputFn output);

/*
 * Watches the live stream of records with a temperature and reports what is missing from it.
 *
 * Reports, each line a text of its own with flag 0: a gap in rel_t as "\nlost sample:\n",
 * "difference   : %d\n", "nr   : %d\n", "rel_t: %ld\n" and "count: %d\n" (good records so far); a
 * field buffered above 190 as "\nbuffer overflow:\n", "nr   : %d\n", "rel_t: %ld\n",
 * "count: %d\n" and "buffered: %d\n". The first record counts as a gap unless its rel_t is 1.
 *
 * On standard error: a dot for every thousandth good record; "No data available\n" for an empty
 * block, after which the next is requested at once.
 *
 * Failing exchanges are reported as "SPI datatransfer" (a request), "SPI datatransfer (wait)" (a
 * poll), "SPI datatransfer (ACK a)" and "(ACK b)" (two bytes and one byte of the length), and, each
 * followed on standard error by "datasize: %d\n" with the length attempted, "SPI datatransfer (1)"
 * (the data) and "(2)" (the request after them).
 *
 * Pauses for 20 ms after each block and for 40 ms after every thousandth good record.
 */
void stm_stream_readout(StmPollFn poll, StmOutputFn output);

/*
 * Shows the records that another process writes into the ring. RingBuffer_Attach must have been
 * called in this process; the link is not used.
 *
 * format: READOUT_TEXT or READOUT_CSV, shown with flag 1 as elsewhere, but BE from 0 to 255; with
 * any other value records are only read and checked. The CSV header is printed first of all. poll:
 * never called; nothing stops the operation while records arrive.
 *
 * The checksum is computed over the bytes of the slot, although the one stored is the wire's: it is
 * wrong unless the moved fields are equal. A wrong checksum is reported as for the live stream and
 * ends the batch; the next batch starts after that record. With a damaged count a batch can be very
 * long.
 *
 * Other reports, flag 0: "Cannot open Ringbuffer for read\n"; after 5001 checks in all, 1 ms apart,
 * that found nothing new, "Timeout while reading ring buffer (buffer empty?)\n", which leaves the
 * ring open; "Error: RingBuffer_NewValueAvailable() (fd: %d)\n", "Error:
 * RingBuffer_MarkLastValue()\n" and "RingBuffer_GetFirstValue()\n" when the ring fails. All of
 * these end the operation; nothing else does.
 */
void stm_ringbuffer_readout(int format, StmPollFn poll, StmOutputFn output);

#ifdef __cplusplus
}
#endif

#endif
