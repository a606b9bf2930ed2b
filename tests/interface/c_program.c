/* Goal: a plain C program sees every function with its exact type and links the archive alone. */
#include "link/stm_com_funcs.h"

#include <stddef.h>

/* Each function through a pointer of its type; a difference does not compile. */
static const struct {
    void (*open)(void);
    void (*sync_transfer)(void);
    void (*close)(void);
    int (*start_bootloader)(void);
    int (*reset)(void);
    int (*query_byte)(uint8_t command, uint8_t *answer);
    int (*print_booter_version)(StmPollFn poll, StmOutputFn output);
    int (*print_state)(StmPollFn poll, StmOutputFn output);
    int (*wait_for_ack)(StmPollFn poll, StmOutputFn output);
    uint16_t (*crc16)(const uint8_t *data, uint16_t length);
    int32_t (*file_size)(FILE *stream);
    void (*download_image)(FILE *file, uint32_t address, StmPollFn poll, StmOutputFn output);
} stm = {
    stm_open,       stm_sync_transfer,        stm_close,       stm_start_bootloader, stm_reset,
    stm_query_byte, stm_print_booter_version, stm_print_state, stm_wait_for_ack,     stm_crc16,
    stm_file_size,  stm_download_image,
};

/* The callbacks are of these types. */
static int poll_line(char *line)
{
    line[STM_LINE_SIZE - 1] = '\0';
    return 0;
}

static int output_text(const char *text, int more)
{
    return text[0] + more;
}

static StmPollFn poll = poll_line;
static StmOutputFn output = output_text;

_Static_assert(STM_LINE_SIZE == 50, "a line has room for 50 characters");
_Static_assert(sizeof(STM_STOP_LINE) == 3, "the stop line is an s and a newline");
_Static_assert(STM_FLASH_FIRMWARE_ADDR == 0x08004000, "the application's place");
_Static_assert(STM_FLASH_BOOTER_ADDR == 0x08000000, "the boot loader's place");

static int failures = 0;

static void expect(int holds, const char *what)
{
    if (!holds) {
        fprintf(stderr, "not so: %s\n", what);
        ++failures;
    }
}

int main(void)
{
    const uint8_t digits[9] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    char line[STM_LINE_SIZE];
    size_t i;

    expect(stm.crc16(digits, 9) == 0xD64E, "the checksum of the digits is 0xD64E");
    expect(stm.crc16(NULL, 0) == 0, "the checksum of nothing is 0");
    expect(stm.file_size(NULL) == -1, "a null stream has the size -1");
    expect(poll(line) == 0 && output("", 1) == 1, "callbacks are called through their types");
    for (i = 0; i < sizeof(stm) / sizeof(stm.open); ++i) {
        expect(((void (*const *)(void))(const void *)&stm)[i] != NULL, "every function is there");
    }
    return failures != 0;
}
