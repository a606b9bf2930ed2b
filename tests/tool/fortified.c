/* Opens the device as fortified programs do, whose compiler puts other names into the calls. */
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv)
{
    const char *path = argc > 1 ? argv[1] : "";
    const int flags = atoi(argc > 2 ? argv[2] : "0"); /* unknown to the compiler */
    const int opened = open(path, flags);
    const int opened_at = openat(AT_FDCWD, path, flags);
    printf("%s %s\n", opened >= 0 ? "open" : "failed", opened_at >= 0 ? "open" : "failed");
    return 0;
}
