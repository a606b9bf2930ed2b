/* Preloaded: no file can be locked. */
#include <errno.h>
#include <sys/file.h>

int flock(int descriptor, int operation)
{
    (void)descriptor;
    (void)operation;
    errno = ENOLCK;
    return -1;
}
