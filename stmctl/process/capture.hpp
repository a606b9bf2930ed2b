// Captures standard error.
//
// The module reports failed exchanges only through perror, and many of its operations return
// nothing: its output on standard error is the only sign that something went wrong.
#pragma once

#include <string>

namespace stmctl
{

// There is at most one at a time.
class Capture
{
  public:
    Capture();
    ~Capture(); // passes what was not taken on to standard error
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    // Takes what was captured since the last call.
    std::string take();

    int real_errors() const { return real_errors_; }

  private:
    int caught_;      // the file
    int real_errors_; // a copy of the descriptor that standard error had
};

// Where standard error really goes, captured or not.
int error_descriptor();

} // namespace stmctl
