// A program's call into the driver of its device.
#include "simulator/preload/driver_call.hpp"

#include <pthread.h>

#include <cerrno>

namespace simulator
{

namespace
{

pthread_mutex_t driver = PTHREAD_MUTEX_INITIALIZER;
constinit thread_local bool is_in_driver = false;

[[gnu::constructor]] void keep_driver_whole_over_forks()
{
    pthread_atfork([] { pthread_mutex_lock(&driver); }, [] { pthread_mutex_unlock(&driver); },
                   [] { pthread_mutex_unlock(&driver); });
}

} // namespace

DriverCall::DriverCall()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
    pthread_mutex_lock(&driver);
    is_in_driver = true;
}

DriverCall::~DriverCall()
{
    is_in_driver = false;
    pthread_mutex_unlock(&driver);
    pthread_setcancelstate(cancel_state_, nullptr);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool is_in_driver_call()
{
    return is_in_driver;
}

int result_or_errno(int result, int errno_before)
{
    errno = result < 0 ? -result : errno_before;
    return result < 0 ? -1 : result;
}

int refuse(int error)
{
    errno = error;
    return -1;
}

} // namespace simulator
