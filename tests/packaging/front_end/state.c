/* A front end of somebody else's: shows the mode that the co-processor runs in. */
#include <stm_com_funcs.h>

static int no_input(char *line)
{
    line[0] = '\0';
    return 0;
}

static int print(const char *text, int more)
{
    (void)more;
    return printf("%s", text);
}

int main(void)
{
    stm_open();
    stm_print_state(no_input, print);
    stm_close();
    return 0;
}
