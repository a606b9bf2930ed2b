// A disk that is soon full: files of this process may not grow beyond a size.
#pragma once

#include <sys/resource.h>

#include <csignal>

class SmallDisk
{
  public:
    explicit SmallDisk(rlim_t size)
    {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

  private:
    rlimit before_ = {};
};
