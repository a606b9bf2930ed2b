// Where the results of a long run go: standard output, or a file.
#pragma once

#include "stmctl/output/buffered_writer.hpp"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stmctl
{

// What becomes of what a file holds.
enum class OldContent { replaced, continued, protects_file };

class Destination
{
  public:
    // An empty name, or "-": standard output. Throws a Failure if the file cannot be written, or
    // may not; what it holds stays until begin. One that is continued must begin with these words.
    explicit Destination(std::string name, OldContent old = OldContent::replaced,
                         std::string beginning = {});
    ~Destination();
    Destination(const Destination &) = delete;
    Destination &operator=(const Destination &) = delete;

    void begin();
    bool continues() const { return continues_; } // behind what an earlier run has written

    // A failure is kept, and everything else dropped.
    void write(std::string_view text);
    void flush();
    bool failed() const;

    void finish(); // all is written, or a Failure says that a file does not take it

    // What both write would stand in the same file or pipe.
    bool mixes_with(const Destination &other) const;

    // It is a file, and no terminal: whoever looks on sees nothing of it.
    bool is_out_of_sight() const;
    std::optional<uint64_t> size() const; // of a regular file, as far as it is written

  private:
    void check_beginning() const;
    void cut_half_line();
    int descriptor() const;
    [[noreturn]] void fail(int error) const;

    std::string name_;
    bool is_output_;
    OldContent old_;
    std::string beginning_;
    bool made_ = false; // by us, and nothing in it yet
    bool continues_ = false;
    BufferedWriter file_;
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
