/* Preloaded: no program can install a signal handler. */
#include <errno.h>
#include <signal.h>

int sigaction(int signal, const struct sigaction *action, struct sigaction *old)
{
    (void)signal;
    (void)action;
    (void)old;
    errno = EINVAL;
    return -1;
}
