/* What all questions of the probe use: the device, and how an answer is printed. */
#pragma once

#include <linux/spi/spidev.h>
#include <stddef.h>
#include <stdint.h>

#define DEVICE "/dev/spidev1.0"

/* "what: 3", or "what: EINVAL" for a negative result. Returns the result. */
long say(const char *what, long result);
/* The same without the number, which may be another one each time. */
long say_whether(const char *what, long result);

int open_device(int flags);
struct spi_ioc_transfer transfer(const void *tx, void *rx, uint32_t length);
long exchange(int fd, const void *tx, void *rx, uint32_t length);
uint32_t speed_of(int fd);
long set_speed(int fd, uint32_t speed_hz);

#define BUFFER_SIZE 65536 /* bytes */

/* Two buffers; a page that may only be read; an address where nothing is. */
extern uint8_t sent[BUFFER_SIZE];
extern uint8_t received[BUFFER_SIZE];
extern void *const nowhere;
void *read_only_page(void);

void ask_paths(void);
void ask_flags(void);
void ask_names(void);
void ask_reads_and_writes(void);
void ask_file_calls(void);
void ask_descriptors(void);
void ask_waiting(void);
void ask_settings(void);
void ask_modes(void);
void ask_closes(void);
void ask_requests(void);
void ask_lengths(void);
void ask_buffers(void);
void ask_transfers(void);
