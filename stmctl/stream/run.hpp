// How long a run lasts, and what is done meanwhile.
#pragma once

#include "stmctl/module/operation.hpp"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace CLI
{
class App;
}

namespace stmctl
{

struct RunOptions {
    std::string count;    // empty: not given
    std::string duration; // empty: not given
    std::string silence;  // empty: not given
    std::string summary;  // a file
    bool keep_going = false;
    bool fail_on_loss = false;

    // Throw a Failure for anything but a number in range.
    std::optional<uint32_t> wanted() const;
    std::optional<std::chrono::milliseconds> time() const;
    std::optional<std::chrono::milliseconds> silence_given() const;

    bool is_endless() const { return count.empty() && duration.empty(); }
};

// "-n", with counted as its help, and "--duration".
void add_run_limits(CLI::App &command, RunOptions &options, const char *counted);
void add_duration(CLI::App &command, RunOptions &options);
void add_keep_going(CLI::App &command, RunOptions &options);

// The help of "--silence" for runs that may keep going.
inline constexpr char SILENCE_HELP[] = "shortest silence (10 s; 2 s with --keep-going)";

// "--silence", with the default in its help, "--fail-on-loss" and "--summary".
void add_judgement(CLI::App &command, RunOptions &options, const char *silence_default);

// A run. Its operations ask it whether to end; the run itself may continue after that.
class Run
{
  public:
    using Time = std::chrono::steady_clock::time_point;
    using Tick = std::function<void(Time now)>;

    // tick is called about whenever the module polls.
    explicit Run(std::optional<std::chrono::milliseconds> time, Tick tick = {});

    void finish() { finished_ = true; }       // nothing more is wanted
    void give_up() { given_up_ = true; }      // nothing comes
    void interrupt() { interrupted_ = true; } // the operation is to end and to be run again
    bool given_up() const { return given_up_; }

    // An operation begins: the interruption was for the previous one.
    void begin_operation() { interrupted_ = false; }

    // Whether it is finished or given up, its time is over, or the output failed.
    bool over();

    // The question that operations ask. Only the user's wish counts as a stop.
    Wish ask();

    // Waits. False if the run was over, or the user wanted to stop, before the end of the wait.
    bool pause(std::chrono::milliseconds time);

  private:
    std::optional<Time> end_;
    Tick tick_;
    bool finished_ = false;
    bool given_up_ = false;
    bool interrupted_ = false;
};

} // namespace stmctl
