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

// What happens to the content of an existing file.
enum class OldContent { replaced, continued, protects_file };

class Destination
{
  public:
    // An empty name or "-" is standard output. Throws a Failure if the file cannot or must not be
    // written; its content stays until begin. A file to be continued must start with the beginning.
    explicit Destination(std::string name, OldContent old = OldContent::replaced,
                         std::string beginning = {});
    ~Destination();
    Destination(const Destination &) = delete;
    Destination &operator=(const Destination &) = delete;

    void begin();
    bool continues() const { return continues_; } // after what an earlier run has written

    // After a failure, which is kept, everything else is dropped.
    void write(std::string_view text);
    void flush();
    bool failed() const;

    void finish(); // writes everything, or throws a Failure

    // Whether both write to the same file or pipe.
    bool mixes_with(const Destination &other) const;

    // Whether it is a file rather than a terminal: the user sees nothing of it.
    bool is_out_of_sight() const;
    std::optional<uint64_t> size() const; // of a regular file, as written so far

  private:
    void check_beginning() const;
    void cut_half_line();
    int descriptor() const;
    [[noreturn]] void fail(int error) const;

    std::string name_;
    bool is_output_;
    OldContent old_;
    std::string beginning_;
    bool made_ = false; // by us, and still empty
    bool continues_ = false;
    BufferedWriter file_;
};

// Lets readers see the results soon; called often.
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
