/*
 * A small front end: one operation of the co-processor's application per call.
 *
 *     cc -I. examples/front_end.c -Lbuild/lib -lstm_com_funcs -o front_end
 *     ./front_end mode 2
 *     ./front_end adc-pair 3 12.5 0.25
 *     ./front_end show 1
 *     ./front_end records 200 3 >records.csv
 *
 * A line "s" on standard input stops a wait for the co-processor, and with it the live stream.
 */
#include "link/stm_com_funcs.h"

#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* Reads a line if there is one. It is called between polls, so it must not block. */
static int typed_line(char *line)
{
    struct pollfd input = {STDIN_FILENO, POLLIN, 0};
    ssize_t length;

    if (poll(&input, 1, 0) <= 0) {
        return 0;
    }
    length = read(STDIN_FILENO, line, STM_LINE_SIZE - 1);
    if (length <= 0) {
        return 0;
    }
    line[length] = '\0';
    return 1;
}

/* Complete messages are shown at once, even if standard output is a pipe. */
static int print(const char *text, int more)
{
    const int written = fputs(text, stdout);

    return more ? written : fflush(stdout);
}

/* Results below 0 are failures, which the module has already reported. */

static int set_mode(const double *value)
{
    return stm_set_interpolation_mode((int)value[0], typed_line, print) < 0;
}

static int set_sampletime(const double *value)
{
    return stm_set_adc_sampletime((int)value[0], typed_line, print) < 0;
}

static int set_sampleskip(const double *value)
{
    return stm_set_adc_sampleskip((int)value[0], typed_line, print) < 0;
}

static int set_adc_pair(const double *value)
{
    return stm_set_adc_value_pair((int)value[0], (float)value[1], (float)value[2], typed_line,
                                  print) < 0;
}

static int set_word(const double *value)
{
    return stm_set_channel_word_56((int)value[0], (uint16_t)value[1], typed_line, print) < 0;
}

static int show(const double *value)
{
    const int channel = (int)value[0];

    stm_query_text_21(typed_line, print);
    stm_query_text_22(typed_line, print);
    stm_query_short(typed_line, print);
    stm_query_channel_08(channel, typed_line, print);
    stm_query_channel_06(channel, typed_line, print);
    return 0;
}

static int poke(const double *value)
{
    return stm_write_byte((uint16_t)value[0], (uint8_t)value[1], typed_line, print) < 0;
}

static int peek(const double *value)
{
    return stm_read_byte((uint16_t)value[0], typed_line, print) < 0;
}

static int dump(const double *value)
{
    return stm_dump_bytes((uint16_t)value[0], (uint16_t)value[1], typed_line, print) < 0;
}

static int show_text(const double *value)
{
    return stm_print_text_at((uint16_t)value[0], typed_line, print) < 0;
}

static int records(const double *value)
{
    stm_read_records((int)value[0], (int)value[1], typed_line, print);
    return 0;
}

static int records_omega(const double *value)
{
    stm_read_records_omega((int)value[0], (int)value[1], typed_line, print);
    return 0;
}

static int records_temp(const double *value)
{
    stm_read_records_temp((int)value[0], (int)value[1], typed_line, print);
    return 0;
}

static int samples(const double *value)
{
    stm_read_adc_samples((int)value[0], typed_line, print);
    return 0;
}

static int raw_bytes(const double *value)
{
    stm_read_raw_bytes((int)value[0], typed_line, print);
    return 0;
}

static int live(const double *value)
{
    stm_continuous_readout((int)value[0], typed_line, print);
    return 0;
}

static int live_omega(const double *value)
{
    stm_continuous_readout_omega((int)value[0], typed_line, print);
    return 0;
}

static int live_temp(const double *value)
{
    stm_continuous_readout_temp((int)value[0], typed_line, print);
    return 0;
}

static int watch(const double *value)
{
    (void)value;
    stm_stream_readout(typed_line, print);
    return 0;
}

static int ring_write(const double *value)
{
    (void)value;
    RingBuffer_Attach();
    stm_ringbuffer_acquire(typed_line, print);
    return 0;
}

static int ring_read(const double *value)
{
    RingBuffer_Attach();
    stm_ringbuffer_readout((int)value[0], typed_line, print);
    return 0;
}

static const struct operation {
    const char *name;
    const char *arguments;
    int count;
    int (*run)(const double *value); /* non-zero: failed */
} operations[] = {
    {"mode", "MODE", 1, set_mode},
    {"sampletime", "TIME", 1, set_sampletime},
    {"sampleskip", "SKIP", 1, set_sampleskip},
    {"adc-pair", "CHANNEL FIRST SECOND", 3, set_adc_pair},
    {"word", "CHANNEL VALUE", 2, set_word},
    {"show", "CHANNEL", 1, show},
    {"poke", "ADDRESS BYTE", 2, poke},
    {"peek", "ADDRESS", 1, peek},
    {"dump", "ADDRESS COUNT", 2, dump},
    {"text", "ADDRESS", 1, show_text},
    {"records", "COUNT MODE", 2, records},
    {"omega", "COUNT MODE", 2, records_omega},
    {"temp", "COUNT MODE", 2, records_temp},
    {"samples", "MODE", 1, samples},
    {"raw", "MODE", 1, raw_bytes},
    {"live", "MODE", 1, live},
    {"live-omega", "MODE", 1, live_omega},
    {"live-temp", "MODE", 1, live_temp},
    {"watch", "", 0, watch},
    {"ring-write", "", 0, ring_write},
    {"ring-read", "MODE", 1, ring_read},
};

#define OPERATIONS     (sizeof(operations) / sizeof(operations[0]))
#define MOST_ARGUMENTS 3

static int explain(void)
{
    size_t i;

    fputs("Usage: front_end OPERATION ARGUMENTS (numbers, decimal or with 0x)\n", stderr);
    for (i = 0; i < OPERATIONS; ++i) {
        fprintf(stderr, "  %-10s  %s\n", operations[i].name, operations[i].arguments);
    }
    fputs("MODE is 1 for bytes, 2 for labelled text, 3 for CSV\n", stderr);
    return 2;
}

static const struct operation *find_operation(const char *name)
{
    size_t i;

    for (i = 0; i < OPERATIONS; ++i) {
        if (strcmp(operations[i].name, name) == 0) {
            return &operations[i];
        }
    }
    return NULL;
}

int main(int argc, char **argv)
{
    const struct operation *operation = argc > 1 ? find_operation(argv[1]) : NULL;
    double value[MOST_ARGUMENTS];
    int failed;
    int i;

    if (operation == NULL || argc != 2 + operation->count) {
        return explain();
    }
    for (i = 0; i < operation->count; ++i) {
        char *end;

        value[i] = strtod(argv[2 + i], &end);
        if (*argv[2 + i] == '\0' || *end != '\0' || !(value[i] > -1e9 && value[i] < 1e9)) {
            return explain();
        }
    }
    stm_open();
    failed = operation->run(value);
    stm_close();
    return failed;
}
