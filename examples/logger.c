/*
 * Logs the live stream of records with a temperature as CSV, until Ctrl-C.
 *
 *     cc examples/logger.c $(pkg-config --cflags --libs stm_com_funcs) -o logger
 *     ./logger >records.csv
 */
#include <stm_com_funcs.h>

#include <signal.h>
#include <string.h>

static volatile sig_atomic_t stopped = 0;

static void stop(int signal_number)
{
    (void)signal_number;
    stopped = 1;
}

/* Called at every poll; the stop line ends the stream. */
static int ask(char *line)
{
    strcpy(line, stopped ? STM_STOP_LINE : "");
    return stopped;
}

/* Records have the flag 1; texts with the flag 0 are reports, such as a time-out. */
static int take(const char *text, int more)
{
    fputs(text, more ? stdout : stderr);
    return 0;
}

int main(void)
{
    signal(SIGINT, stop);
    stm_open();
    stm_continuous_readout_temp(READOUT_CSV, ask, take);
    stm_close();
    return fflush(stdout) == 0 && !ferror(stdout) ? 0 : 1;
}
