// Where the results of a long run go: standard output, or a file.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

namespace stmctl
{

class Destination
{
  public:
    // An empty name, or "-": standard output. Throws a Failure if the file cannot be written; what
    // it holds stays until begin.
    explicit Destination(std::string name);
    ~Destination();
    Destination(const Destination &) = delete;
    Destination &operator=(const Destination &) = delete;

    void begin();
    void write(std::string_view text); // throws a Failure if a file does not take it
    void flush();
    void finish(); // all is written, or a Failure says that it is not

  private:
    [[noreturn]] void fail() const;

    std::string name_;
    FILE *file_ = nullptr;
    bool made_ = false; // by us, and nothing in it yet
};

// Lets readers of the results see them soon; called often.
class RegularFlush
{
  public:
    explicit RegularFlush(Destination &destination) : destination_(destination) {}
    void operator()(std::chrono::steady_clock::time_point now);

  private:
    Destination &destination_;
    std::chrono::steady_clock::time_point next_;
};

} // namespace stmctl
