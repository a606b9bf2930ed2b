/* Yardstick: a front end that does nothing but write what the module passes to it. */
#include "link/stm_com_funcs.h"

#include <stdlib.h>
#include <string.h>

static FILE *output;

static int no_input(char *line)
{
    (void)line;
    return 0;
}

static int write_text(const char *text, int more)
{
    (void)more;
    return fwrite(text, 1, strlen(text), output) > 0;
}

/* bare_front_end COUNT MODE FILE */
int main(int argc, char **argv)
{
    if (argc != 4) {
        return 2;
    }
    output = fopen(argv[3], "w");
    if (output == NULL) {
        return 1;
    }
    stm_open();
    stm_read_records(atoi(argv[1]), atoi(argv[2]), no_input, write_text);
    stm_close();
    return fclose(output) != 0;
}
