// The one exception of stmctl: a sentence for the user, and the exit status that goes with it.
//
// It never crosses the module's C functions; operation.hpp keeps it from doing so.
#pragma once

#include "stmctl/process/exit_status.hpp"

#include <stdexcept>
#include <string>

namespace stmctl
{

class Failure : public std::runtime_error
{
  public:
    Failure(ExitStatus status, const std::string &sentence)
        : std::runtime_error(sentence), status_(status)
    {
    }

    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

} // namespace stmctl
