/* Tries every call that a program can make on the device of the co-processor, and prints a line for each:
   what was tried, and its result or the name of its errno. What the kernel's own driver gives is written
   down beside it, and the virtual board has to give the same. It works in a folder of its own, with a
   board that has just been switched on. */
#include "tests/kernel/probe/answer.h"

#include <stdio.h>
#include <string.h>

struct question {
    const char *name;
    void (*ask)(void);
};

static const struct question QUESTIONS[] = {
    {"paths", ask_paths},
    {"flags", ask_flags},
    {"names", ask_names},
    {"read and write", ask_reads_and_writes},
    {"other calls of files", ask_file_calls},
    {"descriptors", ask_descriptors},
    {"waiting", ask_waiting},
    {"settings", ask_settings},
    {"modes", ask_modes},
    {"closes", ask_closes},
    {"requests", ask_requests},
    {"lengths", ask_lengths},
    {"buffers", ask_buffers},
    {"transfers", ask_transfers},
};

/* All questions, or those that the arguments name. */
int main(int argc, char **argv)
{
    setvbuf(stdout, NULL, _IOLBF, 0);
    for (size_t i = 0; i < sizeof(QUESTIONS) / sizeof(QUESTIONS[0]); ++i) {
        int is_asked = argc == 1;
        for (int n = 1; n < argc; ++n) {
            is_asked |= strcmp(argv[n], QUESTIONS[i].name) == 0;
        }
        if (is_asked) {
            printf("# %s\n", QUESTIONS[i].name);
            QUESTIONS[i].ask();
        }
    }
    return 0;
}
