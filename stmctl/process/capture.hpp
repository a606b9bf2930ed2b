// Catches what goes to standard error.
//
// The module tells failing exchanges to perror only, and many of its operations return nothing:
// what stands on standard error afterwards is the one sign that something went wrong.
#pragma once

#include <string>

namespace stmctl
{

// There is one at a time.
class Capture
{
  public:
    Capture();
    ~Capture(); // what was not taken by then goes on to standard error
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    // Takes what was caught since the last call.
    std::string take();

    int real_errors() const { return real_errors_; }

  private:
    int caught_;      // the file
    int real_errors_; // a copy of the descriptor that standard error had
};

// Where standard error really goes, captured or not.
int error_descriptor();

} // namespace stmctl
