/* Goal: a plain C program sees every function with its exact type and links the archive alone. */
#include "link/stm_com_funcs.h"

#include <stddef.h>
#include <string.h>

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
    int32_t (*param_command)(uint8_t code, const uint8_t params[6], StmPollFn poll,
                             StmOutputFn output);
    int32_t (*command)(uint8_t code, uint8_t p0, uint8_t p1, uint8_t p2, uint8_t p3, StmPollFn poll,
                       StmOutputFn output);
    int32_t (*command_r)(StmPollFn poll, StmOutputFn output);
    int32_t (*command_q)(StmPollFn poll, StmOutputFn output);
    int32_t (*command_c)(StmPollFn poll, StmOutputFn output);
    int32_t (*command_d)(StmPollFn poll, StmOutputFn output);
    int32_t (*command_3)(StmPollFn poll, StmOutputFn output);
    int32_t (*command_2)(StmPollFn poll, StmOutputFn output);
    int32_t (*write_byte)(uint16_t address, uint8_t value, StmPollFn poll, StmOutputFn output);
    void (*write_string)(uint16_t address, const char *text, StmPollFn poll, StmOutputFn output);
    void (*not_implemented)(int unused1, int unused2, StmOutputFn output);
    uint16_t (*crc16)(const uint8_t *data, uint16_t length);
    char *(*itoa)(int32_t value, char *buffer, int32_t base);
    char *(*ltoa)(long value, char *buffer, int32_t base);
    char *(*utoa)(uint32_t value, char *buffer, int32_t base);
    int32_t (*file_size)(FILE *stream);
    void (*download_image)(FILE *file, uint32_t address, StmPollFn poll, StmOutputFn output);
    uint32_t (*scale100)(float value);
    int32_t (*set_adc2_value)(int channel, float value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc_value)(int channel, float value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc2_value_pair)(int channel, float first, float second, StmPollFn poll,
                                   StmOutputFn output);
    int32_t (*set_adc_value_pair)(int channel, float first, float second, StmPollFn poll,
                                  StmOutputFn output);
    int32_t (*set_be_u32)(int channel, uint32_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc_u32)(int channel, uint32_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_be_word_97)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_be_word_98)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc_word_54)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc_word_55)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_channel_word_56)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_channel_word_57)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_channel_word_58)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_channel_word_59)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_channel_word_5A)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_channel_word_5B)(int channel, uint16_t value, StmPollFn poll, StmOutputFn output);
    int32_t (*set_interpolation_mode)(int mode, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc_sampleskip)(int skip, StmPollFn poll, StmOutputFn output);
    int32_t (*set_adc_sampletime)(int time, StmPollFn poll, StmOutputFn output);
    void (*query_byte_value_73)(StmPollFn poll, StmOutputFn output);
    void (*query_byte_value_C7)(StmPollFn poll, StmOutputFn output);
    void (*query_byte_value_05)(StmPollFn poll, StmOutputFn output);
    void (*query_byte_value_04)(StmPollFn poll, StmOutputFn output);
    void (*query_long)(StmPollFn poll, StmOutputFn output);
    void (*query_short)(StmPollFn poll, StmOutputFn output);
    void (*query_text_21)(StmPollFn poll, StmOutputFn output);
    void (*query_text_22)(StmPollFn poll, StmOutputFn output);
    void (*query_channel_06)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_07)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_08)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_09)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_0A)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_0B)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_0C)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_0D)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_95)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_96)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_99)(int channel, StmPollFn poll, StmOutputFn output);
    void (*query_channel_9A)(int channel, StmPollFn poll, StmOutputFn output);
    int32_t (*read_char)(uint16_t address, StmPollFn poll, StmOutputFn output);
    int16_t (*read_byte)(uint16_t address, StmPollFn poll, StmOutputFn output);
    uint32_t (*read_u32_be)(uint16_t address, StmPollFn poll, StmOutputFn output);
    uint32_t (*read_top_block)(uint8_t destination[48], StmPollFn poll, StmOutputFn output);
    int32_t (*print_text_at)(uint16_t address, StmPollFn poll, StmOutputFn output);
    int32_t (*dump_bytes)(uint16_t address, uint16_t count, StmPollFn poll, StmOutputFn output);
} stm = {
    stm_open,
    stm_sync_transfer,
    stm_close,
    stm_start_bootloader,
    stm_reset,
    stm_query_byte,
    stm_print_booter_version,
    stm_print_state,
    stm_wait_for_ack,
    stm_param_command,
    stm_command,
    stm_command_r,
    stm_command_q,
    stm_command_c,
    stm_command_d,
    stm_command_3,
    stm_command_2,
    stm_write_byte,
    stm_write_string,
    stm_not_implemented,
    stm_crc16,
    stm_itoa,
    stm_ltoa,
    stm_utoa,
    stm_file_size,
    stm_download_image,
    stm_scale100,
    stm_set_adc2_value,
    stm_set_adc_value,
    stm_set_adc2_value_pair,
    stm_set_adc_value_pair,
    stm_set_be_u32,
    stm_set_adc_u32,
    stm_set_be_word_97,
    stm_set_be_word_98,
    stm_set_adc_word_54,
    stm_set_adc_word_55,
    stm_set_channel_word_56,
    stm_set_channel_word_57,
    stm_set_channel_word_58,
    stm_set_channel_word_59,
    stm_set_channel_word_5A,
    stm_set_channel_word_5B,
    stm_set_interpolation_mode,
    stm_set_adc_sampleskip,
    stm_set_adc_sampletime,
    stm_query_byte_value_73,
    stm_query_byte_value_C7,
    stm_query_byte_value_05,
    stm_query_byte_value_04,
    stm_query_long,
    stm_query_short,
    stm_query_text_21,
    stm_query_text_22,
    stm_query_channel_06,
    stm_query_channel_07,
    stm_query_channel_08,
    stm_query_channel_09,
    stm_query_channel_0A,
    stm_query_channel_0B,
    stm_query_channel_0C,
    stm_query_channel_0D,
    stm_query_channel_95,
    stm_query_channel_96,
    stm_query_channel_99,
    stm_query_channel_9A,
    stm_read_char,
    stm_read_byte,
    stm_read_u32_be,
    stm_read_top_block,
    stm_print_text_at,
    stm_dump_bytes,
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
    char text[34];
    size_t i;

    expect(stm.crc16(digits, 9) == 0xD64E, "the checksum of the digits is 0xD64E");
    expect(stm.crc16(NULL, 0) == 0, "the checksum of nothing is 0");
    expect(stm.file_size(NULL) == -1, "a null stream has the size -1");
    expect(strcmp(stm.itoa(-255, text, 16), "-ff") == 0, "-255 in base 16 is -ff");
    expect(strcmp(stm.ltoa(-1L, text, 2), "-1") == 0, "-1 in base 2 is -1");
    expect(strcmp(stm.utoa(4294967295u, text, 36), "1z141z3") == 0, "the highest number has z's");
    expect(stm.utoa(7, text, 10) == text && text[0] == '7', "the buffer comes back");
    expect(stm.itoa(7, text, 37)[0] == '\0', "base 37 gives the empty text");
    expect(stm.scale100(12.345f) == 1234, "12.345 is sent as 1234");
    expect(poll(line) == 0 && output("", 1) == 1, "callbacks are called through their types");
    for (i = 0; i < sizeof(stm) / sizeof(stm.open); ++i) {
        expect(((void (*const *)(void))(const void *)&stm)[i] != NULL, "every function is there");
    }
    return failures != 0;
}
